// Fuzz input handed to the readers as a file: they read from paths, as the host does.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace fuzz {

// One scratch file per process, rewritten for every input.
class InputFile {
 public:
  explicit InputFile(const char* name) {
    const char* dir = std::getenv("TMPDIR");
    path_ = std::string(dir && *dir ? dir : "/tmp") + "/" + name + "-" + std::to_string(::getpid()) + ".dxf";
  }
  ~InputFile() { std::remove(path_.c_str()); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& write(const std::uint8_t* data, std::size_t size) {
    if (std::FILE* f = std::fopen(path_.c_str(), "wb")) {
      if (size > 0) std::fwrite(data, 1, size, f);
      std::fclose(f);
    }
    return path_;
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace fuzz
