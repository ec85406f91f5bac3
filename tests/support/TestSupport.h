// Helpers shared by the test suites: temporary folders, environment overrides, the corpus location.
#pragma once

#include <string>
#include <string_view>

namespace vktest {

// A fresh folder under the system's temporary folder, removed with everything in it at destruction.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string file(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

// Sets (or, with nullptr, unsets) an environment variable for the scope, restoring it afterwards.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool had_ = false;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view contents);

// The shared corpus of real drawings ("" when absent: such tests skip), and the project's own fixtures.
std::string corpusDir();
std::string dataDir();

}  // namespace vktest
