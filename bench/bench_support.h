// What the benchmarks share: the resident memory of this process, CPU time, and the folder of generated
// drawings they measure on.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>

#include "drawing_generator.h"

namespace vkbench {

namespace fs = std::filesystem;

struct Memory {
  long long rssKb = 0;  // VmRSS: resident now
  long long hwmKb = 0;  // VmHWM: the peak resident size since the start or the last reset
};

inline Memory memoryNow() {
  Memory m;
  std::FILE* f = std::fopen("/proc/self/status", "r");
  if (!f) return m;
  char line[256];
  while (std::fgets(line, sizeof line, f)) {
    if (std::strncmp(line, "VmRSS:", 6) == 0) m.rssKb = std::atoll(line + 6);
    else if (std::strncmp(line, "VmHWM:", 6) == 0) m.hwmKb = std::atoll(line + 6);
  }
  std::fclose(f);
  return m;
}

// Resets VmHWM to the current resident size (Linux 4.0 and later); false where the kernel does not allow it.
inline bool resetPeak() {
  std::FILE* f = std::fopen("/proc/self/clear_refs", "w");
  if (!f) return false;
  const bool ok = std::fputs("5", f) >= 0;
  return std::fclose(f) == 0 && ok;
}

inline double cpuSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

struct Drawing {
  std::string path;
  std::uint64_t bytes = 0;
};

// The folder of generated drawings: the one VK_BENCH_DIR names (kept), else a temporary one removed at the end.
class DrawingFolder {
 public:
  explicit DrawingFolder(const std::string& tag) {
    if (const char* dir = std::getenv("VK_BENCH_DIR"); dir && *dir) {
      dir_ = dir;
    } else {
      dir_ = fs::temp_directory_path() / (tag + "_" + std::to_string(::getpid()));
      owned_ = true;
    }
    fs::create_directories(dir_);
  }
  ~DrawingFolder() {
    std::error_code ec;
    if (owned_) fs::remove_all(dir_, ec);
  }
  DrawingFolder(const DrawingFolder&) = delete;
  DrawingFolder& operator=(const DrawingFolder&) = delete;

  const fs::path& path() const { return dir_; }

  // The drawing the options describe, under this name; generated when the folder lacks it.
  const Drawing* get(const std::string& name, const GeneratorOptions& options, std::string& error) {
    if (auto it = drawings_.find(name); it != drawings_.end()) return &it->second;
    Drawing d;
    d.path = (dir_ / name).string();
    if (!fs::exists(d.path)) {
      GeneratorStats stats;
      std::fprintf(stderr, "generating %s ...\n", d.path.c_str());
      if (!generateDrawing(options, d.path, stats, error)) return nullptr;
    }
    d.bytes = fs::file_size(d.path);
    return &drawings_.emplace(name, d).first->second;
  }

 private:
  fs::path dir_;
  bool owned_ = false;
  std::map<std::string, Drawing> drawings_;
};

}  // namespace vkbench
