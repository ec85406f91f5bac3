// Helpers shared by the test suites.
#include "support/TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace vktest {

TempDir::TempDir() {
  std::string templ = (std::filesystem::temp_directory_path() / "vktest_XXXXXX").string();
  if (!::mkdtemp(templ.data())) throw std::runtime_error("cannot make a temporary folder");
  path_ = templ;
}

TempDir::~TempDir() {
  std::error_code ec;
  // Restore write permission so that read-only fixtures can be removed.
  for (auto it = std::filesystem::recursive_directory_iterator(path_, ec);
       it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
    std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all, std::filesystem::perm_options::add, ec);
  std::filesystem::remove_all(path_, ec);
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  if (const char* old = std::getenv(name)) {
    had_ = true;
    old_ = old;
  }
  if (value) ::setenv(name, value, 1);
  else ::unsetenv(name);
}

ScopedEnv::~ScopedEnv() {
  if (had_) ::setenv(name_.c_str(), old_.c_str(), 1);
  else ::unsetenv(name_.c_str());
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void writeFile(const std::string& path, std::string_view contents) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
}

std::string corpusDir() {
  const char* env = std::getenv("VK_CORPUS");
  const std::string dir = env && *env ? env : VK_CORPUS_DIR;
  return std::filesystem::is_directory(dir) ? dir : std::string();
}

std::string dataDir() { return VK_TEST_DATA_DIR; }

}  // namespace vktest
