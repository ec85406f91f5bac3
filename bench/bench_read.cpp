// Reading speed and memory of the headless host's DXF reader on large generated drawings.
// `vk_bench_read --read-once FILE` instead reads one drawing once and prints its figures.
//
// The drawings are generated on first use into a temporary folder that is removed at the end, or taken from
// (and, when missing, generated into) the folder VK_BENCH_DIR names. Reads go from a warm page cache into the
// finished database; destroying the database is not measured. Throughput is per CPU second of the process
// (user and system time, so page faults and copies out of the page cache count): the reader uses one core,
// and CPU time stays meaningful on a machine shared with builds, where wall-clock time does not.
//
// Memory is the growth of the resident size during a read, the largest over all iterations. The later reads
// of a process are the costlier ones: once the first large block has been freed, the C library serves
// blocks of up to 32 MB from its heap, where the capacities a growing vector leaves behind stay resident.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "bench_support.h"
#include "platform/database.h"

namespace {

using vkbench::cpuSeconds;
using vkbench::Drawing;
using vkbench::Memory;
using vkbench::memoryNow;
using vkbench::resetPeak;
namespace fs = std::filesystem;

// The drawing of `entities` entities (seed 1) in `version`.
class Corpus {
 public:
  const Drawing* get(std::uint64_t entities, const std::string& version, std::string& error) {
    vkbench::GeneratorOptions opt;
    opt.entities = entities;
    opt.version = version;
    return folder_.get("drawing_" + std::to_string(entities) + "_" + version + ".dxf", opt, error);
  }

 private:
  vkbench::DrawingFolder folder_{"vk_bench_read"};
};

Corpus* corpus = nullptr;

const Drawing* drawingFor(benchmark::State& state, const std::string& version) {
  std::string error;
  const Drawing* d = corpus->get(static_cast<std::uint64_t>(state.range(0)), version, error);
  if (!d) state.SkipWithError(error.c_str());
  return d;
}

// Reads the drawing; a read that fails ends the benchmark, and warnings (the generated drawings have no
// oddities, so they point at the reader) are shown in the benchmark's label.
std::unique_ptr<platform::Database> readOrFail(benchmark::State& state, const Drawing& d, std::string& warning) {
  platform::ReadReport report;
  auto db = platform::Database::read(d.path, report);
  if (!db) state.SkipWithError(report.error.c_str());
  else if (!report.warnings.empty() && warning.empty())
    warning = std::to_string(report.warnings.size()) + " reader warnings, the first: " + report.warnings.front();
  return db;
}

// What an iteration over model space touches per entity: its class name, its layer and its colour.
std::size_t visitModelSpace(const platform::Database& db) {
  std::size_t sum = 0;
  for (platform::ObjectId id : db.blockRecord(db.modelSpaceId()).entityIds()) {
    const platform::Entity e = db.openEntity(id);
    sum += e.dxfName().size() + e.layer().size() + static_cast<std::size_t>(e.colorIndex());
  }
  return sum;
}

// Reads the drawing into a finished database; with `iterate`, then opens every model-space entity too.
void readDrawing(benchmark::State& state, const std::string& version, bool iterate) {
  const Drawing* d = drawingFor(state, version);
  if (!d) return;
  const bool peakResets = resetPeak();
  double peakGrowthKb = 0.0, heldKb = 0.0;
  std::size_t entities = 0;
  std::string warning;
  for (auto _ : state) {
    state.PauseTiming();
    malloc_trim(0);  // hand back what the last iteration freed, so that it cannot hide this one's growth
    resetPeak();
    const Memory before = memoryNow();
    state.ResumeTiming();

    auto db = readOrFail(state, *d, warning);
    if (!db) break;
    if (iterate) benchmark::DoNotOptimize(visitModelSpace(*db));

    state.PauseTiming();
    const Memory after = memoryNow();
    entities = db->blockRecord(db->modelSpaceId()).entityCount();
    heldKb = std::max(heldKb, static_cast<double>(after.rssKb - before.rssKb));
    peakGrowthKb = std::max(peakGrowthKb, static_cast<double>((peakResets ? after.hwmKb : after.rssKb) - before.rssKb));
    db.reset();
    state.ResumeTiming();
  }
  const double fileKb = static_cast<double>(d->bytes) / 1024.0;
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(d->bytes));
  state.counters["entities"] = benchmark::Counter(static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["file_MB"] = static_cast<double>(d->bytes) / 1e6;
  // The peak resident growth during a read, and what the finished database holds, each over the file size.
  state.counters["peak/file"] = peakGrowthKb / fileKb;
  state.counters["peak_MB"] = peakGrowthKb * 1024.0 / 1e6;
  state.counters["db/file"] = heldKb / fileKb;
  std::string label = warning;
  if (!peakResets) label += std::string(label.empty() ? "" : "; ") + "peak not resettable here: RSS growth after the read";
  if (!label.empty()) state.SetLabel(label);
}

void BM_Read(benchmark::State& state, const std::string& version) { readDrawing(state, version, false); }
void BM_ReadAndIterate(benchmark::State& state, const std::string& version) { readDrawing(state, version, true); }

// Iterating model space of a database already read, on its own.
void BM_IterateModelSpace(benchmark::State& state, const std::string& version) {
  const Drawing* d = drawingFor(state, version);
  if (!d) return;
  std::string warning;
  const auto db = readOrFail(state, *d, warning);
  if (!db) return;
  if (!warning.empty()) state.SetLabel(warning);
  const std::size_t entities = db->blockRecord(db->modelSpaceId()).entityCount();
  for (auto _ : state) benchmark::DoNotOptimize(visitModelSpace(*db));
  state.counters["entities"] = benchmark::Counter(static_cast<double>(entities), benchmark::Counter::kIsIterationInvariantRate);
}

// Real drawings of the corpus (VK_CORPUS, or the folder beside the checkout), DWG beside the DXF of the same
// drawing where there is one: the CPU time of a read per model-space entity, which is what compares the two
// readers on drawings of different sizes. Cases whose drawing is absent skip.
void BM_ReadReal(benchmark::State& state, const std::string& relative) {
  const char* env = std::getenv("VK_CORPUS");
  const fs::path path = fs::path(env && *env ? env : VK_CORPUS_DIR) / relative;
  std::error_code ec;
  const auto bytes = fs::file_size(path, ec);
  if (ec) {
    state.SkipWithError(("absent: " + path.string()).c_str());
    return;
  }
  std::size_t entities = 0;
  double cpu = 0.0;
  for (auto _ : state) {
    const double t0 = cpuSeconds();
    platform::ReadReport report;
    auto db = platform::Database::read(path.string(), report);
    cpu += cpuSeconds() - t0;
    if (!db) {
      state.SkipWithError(report.error.c_str());
      return;
    }
    entities = db->blockRecord(db->modelSpaceId()).entityCount();
    state.PauseTiming();
    db.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
  state.counters["entities"] = static_cast<double>(entities);
  state.counters["us_per_entity"] = entities ? cpu * 1e6 / static_cast<double>(state.iterations()) / static_cast<double>(entities) : 0.0;
}

// A million entities take seconds a read: a few reads are enough, and keep the run short.
constexpr int kLargeIterations = 3;

void registerAll() {
  for (const std::int64_t n : {10'000, 100'000, 1'000'000}) {
    auto* b = benchmark::RegisterBenchmark("read/AC1015", BM_Read, std::string("AC1015"));
    b->Arg(n)->Unit(benchmark::kMillisecond);
    if (n >= 1'000'000) b->Iterations(kLargeIterations);
  }
  // The other versions: R12 lacks handles and subclass markers, R2018 decodes its texts as UTF-8.
  for (const char* version : {"AC1009", "AC1032"})
    benchmark::RegisterBenchmark((std::string("read/") + version).c_str(), BM_Read, std::string(version))
        ->Arg(100'000)->Unit(benchmark::kMillisecond);
  for (const std::int64_t n : {10'000, 100'000, 1'000'000}) {
    auto* b = benchmark::RegisterBenchmark("read_and_iterate/AC1015", BM_ReadAndIterate, std::string("AC1015"));
    b->Arg(n)->Unit(benchmark::kMillisecond);
    if (n >= 1'000'000) b->Iterations(kLargeIterations);
  }
  for (const std::int64_t n : {100'000, 1'000'000})
    benchmark::RegisterBenchmark("iterate_model_space/AC1015", BM_IterateModelSpace, std::string("AC1015"))
        ->Arg(n)->Unit(benchmark::kMillisecond);
  for (const char* drawing :
       {"large/zcad_regular.dwg", "same_drawing/zcad_nonregular2/zcad_nonregular2.dwg",
        "same_drawing/zcad_nonregular2/zcad_nonregular2.dxf", "same_drawing/libredwg_example/libredwg_example_2000.dwg",
        "same_drawing/libredwg_example/libredwg_example_2000.dxf",
        "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015.dwg",
        "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015_ascii.dxf"})
    benchmark::RegisterBenchmark((std::string("read_real/") + drawing).c_str(), BM_ReadReal, std::string(drawing))
        ->Unit(benchmark::kMillisecond);
}

// One read of one drawing in this fresh process: the figures a command that opens a drawing once sees.
int readOnce(const std::string& path) {
  std::error_code ec;
  const auto bytes = static_cast<double>(fs::file_size(path, ec));
  if (ec) {
    std::fprintf(stderr, "vk_bench_read: %s: %s\n", path.c_str(), ec.message().c_str());
    return 1;
  }
  const bool peakResets = resetPeak();
  const Memory before = memoryNow();
  const double t0 = cpuSeconds();
  platform::ReadReport report;
  const auto db = platform::Database::read(path, report);
  const double seconds = cpuSeconds() - t0;
  const Memory after = memoryNow();
  if (!db) {
    std::fprintf(stderr, "vk_bench_read: %s\n", report.error.c_str());
    return 1;
  }
  const double peak = static_cast<double>((peakResets ? after.hwmKb : after.rssKb) - before.rssKb) * 1024.0;
  const double held = static_cast<double>(after.rssKb - before.rssKb) * 1024.0;
  std::printf("%s: %.1f MB, %zu model-space entities, %zu warnings\n", path.c_str(), bytes / 1e6,
              db->blockRecord(db->modelSpaceId()).entityCount(), report.warnings.size());
  std::printf("  read in %.3f s of CPU: %.1f MB/s\n", seconds, bytes / 1e6 / seconds);
  std::printf("  peak growth %.1f MB (%.2f x the file), held by the database %.1f MB (%.2f x the file)%s\n", peak / 1e6,
              peak / bytes, held / 1e6, held / bytes, peakResets ? "" : " [peak not resettable: growth after the read]");
  for (const std::string& w : report.warnings) std::printf("  warning: %s\n", w.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--read-once") == 0) return readOnce(argv[2]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  Corpus c;
  corpus = &c;
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  corpus = nullptr;
  return 0;
}
