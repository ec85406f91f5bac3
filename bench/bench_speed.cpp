// vk_bench_speed: whole silent comparisons of generated drawings from 10^4 to 10^6 entities, side by side with
// the time ezdxf takes to load one of the two drawings, in one table.
//
// For each mix (simple: lines, circles, arcs, light polylines and texts; full: every kind the generator
// writes) and each size, the drawing of seed 1 is compared with its revision B (seed 2, 1 % of the entities
// edited, deleted or added). A row gives the wall-clock and CPU time of the comparison (the median over its
// iterations) and the wall-clock time of its first iteration (memory no earlier iteration of the row has
// touched costs more to fault in on a virtual machine), the peak resident growth during it, the throughput of reading the source drawing alone into
// the finished database (per CPU second, as vk_bench_read gives it), and the wall time ezdxf's readfile takes
// on the source drawing, in a Python process of its own. Every comparison must end with differences and a
// log; a run that does not ends the program with an error, so that a failure is never measured as a fast
// comparison.
//
// ezdxf loads about 4 MB a second: its figure is measured once per drawing, and for drawings of 10^6 entities
// only when VK_BENCH_EZDXF_LARGE=1. The drawings are generated on first use, into VK_BENCH_DIR when set.
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "bench_support.h"
#include "engine/CompareLog.h"
#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "platform/database.h"
#include "platform/headless/console.h"

namespace {

constexpr const char* kUsage =
    "Usage: vk_bench_speed [--mix simple|full] [--entities N[,N...]] [--no-ezdxf]\n"
    "\n"
    "Times silent comparisons of generated drawings and ezdxf's load of one of them, in one table.\n"
    "  --mix M         only the simple or only the full mix (default: both)\n"
    "  --entities N,.. only these sizes (default: 10000,100000,200000,1000000)\n"
    "  --no-ezdxf      leave ezdxf out\n"
    "Environment: VK_BENCH_DIR keeps the drawings; VK_BENCH_EZDXF_LARGE=1 also times ezdxf on 10^6\n"
    "entities (over a minute a drawing); VK_BENCH_PYTHON names the Python with ezdxf (/usr/bin/python3).\n";

// The share of entities a revision changes, as in vk_bench_compare.
constexpr double kEditFraction = 0.01;
// Sizes from which ezdxf is left out unless asked for.
constexpr std::uint64_t kLargeEntities = 1'000'000;

double seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Iterations of a comparison: enough for a median at small sizes, one at 10^6.
// Three at least below 10^6: the median of two would be their mean, and the first comparison of a process,
// which touches fresh memory, would weigh half (it has a column of its own).
int iterationsFor(std::uint64_t entities) {
  if (entities <= 10'000) return 5;
  if (entities < kLargeEntities) return 3;
  return 1;
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t n = v.size();
  return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2.0;
}

std::string shellQuoted(const std::string& s) {
  std::string out = "'";
  for (const char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

// Runs a shell command and returns what it printed; false when it could not run or failed.
bool runCommand(const std::string& command, std::string& output) {
  output.clear();
  std::FILE* p = ::popen(command.c_str(), "r");
  if (!p) return false;
  char buf[4096];
  for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) output.append(buf, n);
  const int status = ::pclose(p);
  return status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class Ezdxf {
 public:
  explicit Ezdxf(bool wanted) {
    const char* python = std::getenv("VK_BENCH_PYTHON");
    python_ = python && *python ? python : "/usr/bin/python3";
    if (!wanted) {
      why_ = "left out (--no-ezdxf)";
      return;
    }
    std::string out;
    if (runCommand(shellQuoted(python_) + " -c 'import ezdxf; print(ezdxf.__version__)' 2>&1", out)) {
      version_ = out.substr(0, out.find('\n'));
      available_ = true;
    } else {
      why_ = "skipped: 'import ezdxf' fails with " + python_ + (out.empty() ? "" : ": " + out.substr(0, out.find('\n')));
    }
  }
  bool available() const { return available_; }
  const std::string& why() const { return why_; }
  const std::string& version() const { return version_; }
  const std::string& python() const { return python_; }

  // The seconds ezdxf.readfile takes on the drawing, timed inside its process (the interpreter's start and
  // the import are left out); negative when it failed.
  double load(const std::string& path, std::string& error) const {
    const std::string script =
        "import sys, time, ezdxf\n"
        "t = time.perf_counter()\n"
        "doc = ezdxf.readfile(sys.argv[1])\n"
        "print('seconds', time.perf_counter() - t, len(doc.modelspace()))\n";
    std::string out;
    if (!runCommand(shellQuoted(python_) + " -c " + shellQuoted(script) + " " + shellQuoted(path) + " 2>&1", out)) {
      error = "ezdxf could not load " + path + ": " + out.substr(0, 300);
      return -1.0;
    }
    // What ezdxf may have warned about comes first; the figure is on the line that starts "seconds ".
    const std::size_t at = out.rfind("seconds ");
    if (at == std::string::npos || (at > 0 && out[at - 1] != '\n')) {
      error = "ezdxf printed no time for " + path + ": " + out.substr(0, 300);
      return -1.0;
    }
    return std::atof(out.c_str() + at + 8);
  }

 private:
  std::string python_;
  std::string version_;
  std::string why_;
  bool available_ = false;
};

// A folder of this run under the temporary folder, removed with what it holds at the end: the settings of a
// fresh user and the comparisons' logs never land in VK_BENCH_DIR, where they would outlive the run.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::string& tag)
      : path_(vkbench::fs::temp_directory_path() / (tag + "_" + std::to_string(::getpid()))) {
    vkbench::fs::create_directories(path_);
  }
  ~ScratchFolder() {
    std::error_code ec;
    vkbench::fs::remove_all(path_, ec);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  std::string path() const { return path_.string(); }

 private:
  vkbench::fs::path path_;
};

struct Row {
  std::string mix;
  std::uint64_t entities = 0;
  double filesMb = 0.0, wall = 0.0, first = 0.0, cpu = 0.0, peakMb = 0.0, peakPerFiles = 0.0, readMbPerS = 0.0;
  double ezdxf = -1.0;  // seconds; negative when not measured
  int differences = 0, iterations = 0;
};

// The differences the last comparison reported on the command line ("发现有(n)个实体不同"), or -1.
int reportedDifferences(const std::string& transcript) {
  const std::string_view marker = "发现有(";
  const std::size_t at = transcript.rfind(marker);
  return at == std::string::npos ? -1 : std::atoi(transcript.c_str() + at + marker.size());
}

bool measure(vkbench::DrawingFolder& folder, const std::string& mix, std::uint64_t entities, const Ezdxf& ezdxf,
             bool ezdxfLarge, Row& row, std::string& error) {
  vkbench::GeneratorOptions a;
  a.entities = entities;
  a.mix = mix;
  const std::string stem = (mix == "full" ? "" : mix + "_") + std::to_string(entities) + "_AC1015.dxf";
  const vkbench::Drawing* src = folder.get("drawing_" + stem, a, error);
  vkbench::GeneratorOptions b = a;
  b.revision = true;
  b.editFraction = kEditFraction;
  b.baseSeed = a.seed;
  b.seed = 2;
  const vkbench::Drawing* dst = src ? folder.get("revision_" + stem, b, error) : nullptr;
  if (!src || !dst) return false;

  row.mix = mix;
  row.entities = entities;
  const double bytes = static_cast<double>(src->bytes + dst->bytes);
  row.filesMb = bytes / 1e6;
  row.iterations = iterationsFor(entities);
  std::vector<double> walls, cpus;
  double peakKb = 0.0;
  for (int i = 0; i < row.iterations; ++i) {
    malloc_trim(0);
    vkbench::resetPeak();
    const vkbench::Memory before = vkbench::memoryNow();
    const double cpu0 = vkbench::cpuSeconds();
    const auto t0 = std::chrono::steady_clock::now();
    const int result = RunSilentCompare(src->path, dst->path);
    walls.push_back(seconds(t0));
    cpus.push_back(vkbench::cpuSeconds() - cpu0);
    peakKb = std::max(peakKb, static_cast<double>(vkbench::memoryNow().hwmKb - before.rssKb));
    const CComparisonState& state = CComparisonState::instance();
    const int reported = reportedDifferences(headless::Console::instance().takeTranscript());
    headless::Console::instance().reset();
    if (result != 0 || state.lastOutcome != RunOutcome::Different || !state.lastLogWritten || reported <= 0) {
      error = "the comparison of " + src->path + " with " + dst->path + " did not end with differences and a log" +
              (state.lastError.empty() ? "" : ": " + state.lastError);
      return false;
    }
    if (i > 0 && reported != row.differences) {
      error = "the comparison reported " + std::to_string(reported) + " differences, before " + std::to_string(row.differences);
      return false;
    }
    row.differences = reported;
  }
  row.wall = median(walls);
  row.first = walls.front();
  row.cpu = median(cpus);
  row.peakMb = peakKb * 1024.0 / 1e6;
  row.peakPerFiles = peakKb * 1024.0 / bytes;

  // Reading the source drawing alone into the finished database (its release not timed), per CPU second
  // as vk_bench_read measures it: the median over as many reads as comparisons.
  std::vector<double> reads;
  for (int i = 0; i < row.iterations; ++i) {
    malloc_trim(0);
    platform::ReadReport report;
    const double cpu0 = vkbench::cpuSeconds();
    auto db = platform::Database::read(src->path, report);
    reads.push_back(vkbench::cpuSeconds() - cpu0);
    if (!db) {
      error = report.error;
      return false;
    }
  }
  row.readMbPerS = static_cast<double>(src->bytes) / 1e6 / median(reads);

  if (ezdxf.available() && (entities < kLargeEntities || ezdxfLarge)) {
    std::fprintf(stderr, "ezdxf loading %s ...\n", src->path.c_str());
    row.ezdxf = ezdxf.load(src->path, error);
    if (row.ezdxf < 0.0) return false;
  }
  return true;
}

std::string sizeLabel(std::uint64_t n) {
  if (n % 1'000'000 == 0) return std::to_string(n / 1'000'000) + "e6";
  if (n % 100'000 == 0 && n < 1'000'000) return n == 100'000 ? "1e5" : std::to_string(n / 100'000) + "e5";
  if (n == 10'000) return "1e4";
  return std::to_string(n);
}

void printHeader() {
  std::printf(
      "| mix    | entities | files MB | diffs | it | compare s | first s | CPU s  | peak MB | peak/files | read MB/s | ezdxf s | ezdxf/compare |\n"
      "| ------ | -------- | -------- | ----- | -- | --------- | ------- | ------ | ------- | ---------- | --------- | ------- | ------------- |\n");
}

void printRow(const Row& r) {
  char ez[32] = "-", ratio[32] = "-";
  if (r.ezdxf >= 0.0) {
    std::snprintf(ez, sizeof ez, "%.2f", r.ezdxf);
    std::snprintf(ratio, sizeof ratio, "%.1f", r.ezdxf / r.wall);
  }
  std::printf("| %-6s | %-8s | %8.1f | %5d | %2d | %9.3f | %7.3f | %6.3f | %7.0f | %10.2f | %9.0f | %7s | %13s |\n",
              r.mix.c_str(), sizeLabel(r.entities).c_str(), r.filesMb, r.differences, r.iterations, r.wall, r.first, r.cpu, r.peakMb,
              r.peakPerFiles, r.readMbPerS, ez, ratio);
  std::fflush(stdout);
}

// The load averages, to print beside the figures: a shared machine's figures are read with them.
std::string loadAverage() {
  std::FILE* f = std::fopen("/proc/loadavg", "r");
  if (!f) return "unknown";
  char line[128] = "";
  const bool ok = std::fgets(line, sizeof line, f) != nullptr;
  std::fclose(f);
  std::string text = ok ? line : "unknown";
  // The first three fields: over 1, 5 and 15 minutes.
  std::size_t end = 0;
  for (int field = 0; field < 3 && end != std::string::npos; ++field) end = text.find(' ', end + (field ? 1 : 0));
  return text.substr(0, end);
}

bool parseSizes(std::string_view text, std::vector<std::uint64_t>& sizes) {
  sizes.clear();
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    const std::string item(text.substr(0, comma));
    char* end = nullptr;
    const double v = std::strtod(item.c_str(), &end);
    if (item.empty() || *end || !(v >= 1.0) || v > 1e8) return false;
    sizes.push_back(static_cast<std::uint64_t>(v));
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
  }
  return !sizes.empty();
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> mixes = {"simple", "full"};
  std::vector<std::uint64_t> sizes = {10'000, 100'000, 200'000, 1'000'000};
  bool withEzdxf = true;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    } else if (arg == "--mix" && i + 1 < argc && (std::string_view(argv[i + 1]) == "simple" || std::string_view(argv[i + 1]) == "full")) {
      mixes = {argv[++i]};
    } else if (arg == "--entities" && i + 1 < argc && parseSizes(argv[i + 1], sizes)) {
      ++i;
    } else if (arg == "--no-ezdxf") {
      withEzdxf = false;
    } else {
      std::fprintf(stderr, "vk_bench_speed: cannot use '%s'\n\n%s", argv[i], kUsage);
      return 2;
    }
  }
  const char* large = std::getenv("VK_BENCH_EZDXF_LARGE");
  const bool ezdxfLarge = large && std::string_view(large) == "1";

  // Settings of a fresh user, in a folder of this run, never the user's own.
  const ScratchFolder settings("vk_bench_speed_settings");
  ::setenv("APPDATA", settings.path().c_str(), 1);
  const ScratchFolder logs("vk_bench_speed_logs");
  LogFolder() = logs.path();
  vkbench::DrawingFolder drawings("vk_bench_speed");
  headless::Console::instance().setEcho(nullptr);
  headless::Console::instance().setProgressStream(nullptr);

  const Ezdxf ezdxf(withEzdxf);
  if (ezdxf.available())
    std::printf("ezdxf %s (%s)%s\n", ezdxf.version().c_str(), ezdxf.python().c_str(),
                ezdxfLarge ? "" : "; not on 10^6 entities (VK_BENCH_EZDXF_LARGE=1 to include them)");
  else
    std::printf("ezdxf %s\n", ezdxf.why().c_str());
  std::printf("load average at the start: %s\n\n", loadAverage().c_str());
  printHeader();
  for (const std::string& mix : mixes) {
    for (const std::uint64_t n : sizes) {
      Row row;
      std::string error;
      if (!measure(drawings, mix, n, ezdxf, ezdxfLarge, row, error)) {
        std::fprintf(stderr, "vk_bench_speed: %s\n", error.c_str());
        return 1;
      }
      printRow(row);
    }
  }
  std::printf("\nload average at the end: %s\n", loadAverage().c_str());
  return 0;
}
