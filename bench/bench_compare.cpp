// A whole silent comparison of two generated revisions of a drawing: both read, every entity loaded into its
// comparer, paired, compared, sorted and logged.
//
// Revision B is revision A with 1 % of its entities edited, deleted or added. The drawings are generated on
// first use (into VK_BENCH_DIR when set). Memory is the peak resident growth during a comparison.
//
// Stacked drawings put many lines on few keys (the same end points), told apart by their thickness only: the
// pairing of entities sharing a key, all differing, all alike in another order, or ten to a key.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <functional>

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

// Writes an ASCII DXF of `count` lines: line i runs from (0, y) to (100, y) with y = 10 * (i / perKey), so
// that perKey lines share each key, and has the thickness thickness(i).
bool writeStackedDrawing(const std::string& path, int count, int perKey, const std::function<double(int)>& thickness) {
  std::FILE* f = std::fopen(path.c_str(), "w");
  if (!f) return false;
  std::fputs("  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1015\n  0\nENDSEC\n  0\nSECTION\n  2\nENTITIES\n", f);
  for (int i = 0; i < count; ++i) {
    const double y = 10.0 * (i / perKey);
    std::fprintf(f, "  0\nLINE\n  5\n%X\n  8\n0\n 39\n%.2f\n 10\n0\n 20\n%g\n 30\n0\n 11\n100\n 21\n%g\n 31\n0\n",
                 0x100 + i, thickness(i), y, y);
  }
  std::fputs("  0\nENDSEC\n  0\nEOF\n", f);
  return std::fclose(f) == 0;
}

// Times silent comparisons of src with dst, logs in the run's folder; the last must end as expected.
void runSilentComparisons(benchmark::State& state, const std::string& src, const std::string& dst, RunOutcome expected) {
  headless::Console::instance().setEcho(nullptr);
  LogFolder() = folder->path().string();
  for (auto _ : state) {
    RunSilentCompare(src, dst);
    state.PauseTiming();
    headless::Console::instance().reset();
    state.ResumeTiming();
  }
  if (CComparisonState::instance().lastOutcome != expected) state.SkipWithError("the comparison ended otherwise");
}

enum Stack : int { kAllDiffering, kAllAlike, kTenPerKey };

void BM_Stacked(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const auto stack = static_cast<Stack>(state.range(1));
  const int perKey = stack == kTenPerKey ? 10 : count;
  const std::string tag = std::to_string(count) + "_" + std::to_string(stack);
  const std::string src = (folder->path() / ("stacked_a_" + tag + ".dxf")).string();
  const std::string dst = (folder->path() / ("stacked_b_" + tag + ".dxf")).string();
  const auto mine = [](int i) { return 0.01 * i; };
  // Differing: no source line is alike to any destination line. Alike: the same lines, in reverse order.
  // Ten per key: each key's lines in reverse order, every tenth key with one line thicker.
  const std::function<double(int)> theirs =
      stack == kAllDiffering ? std::function<double(int)>([](int i) { return 1000.0 + 0.01 * i; })
      : stack == kAllAlike   ? std::function<double(int)>([count](int i) { return 0.01 * (count - 1 - i); })
                             : std::function<double(int)>([](int i) {
                                 const int key = i / 10, k = 9 - i % 10;
                                 return 0.01 * (key * 10 + k) + (key % 10 == 0 && k == 0 ? 500.0 : 0.0);
                               });
  if (!writeStackedDrawing(src, count, perKey, mine) || !writeStackedDrawing(dst, count, perKey, theirs)) {
    state.SkipWithError("the stacked drawings could not be written");
    return;
  }
  runSilentComparisons(state, src, dst, stack == kAllAlike ? RunOutcome::Identical : RunOutcome::Different);
  state.counters["entities"] = benchmark::Counter(2.0 * count, benchmark::Counter::kIsIterationInvariantRate);
}

// Writes an ASCII DXF of one light polyline of `vertices` bulged vertices, the last one at height `lastY`.
bool writePolylineDrawing(const std::string& path, int vertices, double lastY) {
  std::FILE* f = std::fopen(path.c_str(), "w");
  if (!f) return false;
  std::fputs("  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1015\n  0\nENDSEC\n  0\nSECTION\n  2\nENTITIES\n", f);
  std::fprintf(f, "  0\nLWPOLYLINE\n  5\n100\n  8\n0\n 90\n%d\n 70\n0\n", vertices);
  for (int i = 0; i < vertices; ++i)
    std::fprintf(f, " 10\n%d\n 20\n%g\n 42\n0.5\n", i, i + 1 == vertices ? lastY : 0.1 * (i % 7));
  std::fputs("  0\nENDSEC\n  0\nEOF\n", f);
  return std::fclose(f) == 0;
}

// One polyline of many vertices, its last vertex moved: what every vertex costs, which must not grow with
// their number.
void BM_OnePolyline(benchmark::State& state) {
  const int vertices = static_cast<int>(state.range(0));
  const std::string src = (folder->path() / ("polyline_a_" + std::to_string(vertices) + ".dxf")).string();
  const std::string dst = (folder->path() / ("polyline_b_" + std::to_string(vertices) + ".dxf")).string();
  if (!writePolylineDrawing(src, vertices, 0.0) || !writePolylineDrawing(dst, vertices, 5.0)) {
    state.SkipWithError("the polyline drawings could not be written");
    return;
  }
  runSilentComparisons(state, src, dst, RunOutcome::Different);
  state.counters["vertices"] = benchmark::Counter(2.0 * vertices, benchmark::Counter::kIsIterationInvariantRate);
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
  benchmark::RegisterBenchmark("stacked/differing", BM_Stacked)
      ->Args({20'000, kAllDiffering})
      ->Unit(benchmark::kMillisecond)
      ->Iterations(kLargeIterations);
  benchmark::RegisterBenchmark("stacked/alike", BM_Stacked)
      ->Args({20'000, kAllAlike})
      ->Unit(benchmark::kMillisecond)
      ->Iterations(kLargeIterations);
  benchmark::RegisterBenchmark("stacked/ten_per_key", BM_Stacked)->Args({20'000, kTenPerKey})->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("one_polyline", BM_OnePolyline)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  folder = nullptr;
  return 0;
}
