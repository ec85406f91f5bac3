// libFuzzer harness: a whole silent comparison of a fuzzed drawing with itself and with a fixed drawing.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "FuzzInput.h"
#include "platform/headless/console.h"
#include "shell/exports.h"

namespace {

// Runs one comparison and removes the log it may have written, so that the scratch folder stays empty.
void compare(const std::string& source, const std::string& destination) {
  I_VkCompareFiles_Silent(source.c_str(), destination.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  if (VkLastLogWritten()) std::remove(VkLastLogPath());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::InputFile input("vk-fuzz-compare");
  static const bool prepared = [] {
    const char* dir = std::getenv("TMPDIR");
    VkSetLogFolder(dir && *dir ? dir : "/tmp");
    headless::Console::instance().setEcho(nullptr);
    return true;
  }();
  (void)prepared;
  const std::string& path = input.write(data, size);
  compare(path, path);
  compare(path, VK_FUZZ_FIXED_DRAWING);
  compare(VK_FUZZ_FIXED_DRAWING, path);
  headless::Console::instance().reset();  // the transcript would otherwise grow with every input
  return 0;
}
