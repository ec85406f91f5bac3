// A whole silent comparison of two generated revisions of a drawing: both read, every entity loaded into its
// comparer, paired, compared, sorted and logged.
//
// Revision B is revision A with 1 % of its entities edited, deleted or added. The drawings are generated on
// first use (into VK_BENCH_DIR when set). Memory is the peak resident growth during a comparison.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include "bench_support.h"
#include "engine/CompareLog.h"
#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "platform/headless/console.h"

namespace {

// The share of entities a revision changes: enough differences to pair, record, sort and log.
constexpr double kEditFraction = 0.01;

vkbench::DrawingFolder* folder = nullptr;

void BM_Compare(benchmark::State& state) {
  const auto entities = static_cast<std::uint64_t>(state.range(0));
  std::string error;
  vkbench::GeneratorOptions a;
  a.entities = entities;
  const vkbench::Drawing* revA = folder->get("drawing_" + std::to_string(entities) + "_AC1015.dxf", a, error);
  vkbench::GeneratorOptions b = a;
  b.revision = true;
  b.editFraction = kEditFraction;
  b.baseSeed = a.seed;
  b.seed = 2;
  const vkbench::Drawing* revB =
      revA ? folder->get("revision_" + std::to_string(entities) + "_AC1015.dxf", b, error) : nullptr;
  if (!revA || !revB) {
    state.SkipWithError(error.c_str());
    return;
  }
  headless::Console::instance().setEcho(nullptr);
  LogFolder() = folder->path().string();
  double peakKb = 0.0;
  int outcome = 0;
  for (auto _ : state) {
    state.PauseTiming();
    malloc_trim(0);
    vkbench::resetPeak();
    const vkbench::Memory before = vkbench::memoryNow();
    state.ResumeTiming();
    outcome = RunSilentCompare(revA->path, revB->path);
    state.PauseTiming();
    peakKb = std::max(peakKb, static_cast<double>(vkbench::memoryNow().hwmKb - before.rssKb));
    headless::Console::instance().reset();
    state.ResumeTiming();
  }
  if (outcome != 0) state.SkipWithError("the revisions compared as identical, or the comparison failed");
  const double bytes = static_cast<double>(revA->bytes + revB->bytes);
  state.counters["entities"] = benchmark::Counter(2.0 * static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["MB/s"] = benchmark::Counter(bytes / 1e6, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["peak_MB"] = peakKb * 1024.0 / 1e6;
  state.counters["peak/files"] = peakKb * 1024.0 / bytes;
}

// A comparison of two million-entity drawings takes seconds: one is enough.
constexpr int kLargeIterations = 1;

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  // Settings of a fresh user, in a folder of this run, never the user's own.
  vkbench::DrawingFolder settings("vk_bench_compare_settings");
  ::setenv("APPDATA", settings.path().c_str(), 1);
  vkbench::DrawingFolder drawings("vk_bench_compare");
  folder = &drawings;
  benchmark::RegisterBenchmark("compare/AC1015", BM_Compare)->Arg(100'000)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("compare/AC1015", BM_Compare)
      ->Arg(1'000'000)
      ->Unit(benchmark::kMillisecond)
      ->Iterations(kLargeIterations);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  folder = nullptr;
  return 0;
}
