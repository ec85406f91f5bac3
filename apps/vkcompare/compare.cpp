// vkcompare SOURCE DESTINATION: the silent comparison through the module's export, with exit statuses for
// scripts (0 identical, 1 differences, 2 trouble).
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "commands.h"
#include "platform/headless/console.h"
#include "platform/boundary.h"
#include "shell/exports.h"

namespace vkcompare {

namespace {

std::string currentFolder() {
  std::vector<char> buf(4096);
  if (::getcwd(buf.data(), buf.size())) return buf.data();
  return ".";
}

int compareFiles(const std::string& source, const std::string& destination, const std::string& logFolder) {
  headless::Console& console = headless::Console::instance();
  console.setEcho(stdout);
  // The progress bar goes to the terminal only; redirected output stays clean.
  console.setProgressStream(::isatty(STDERR_FILENO) ? stderr : nullptr);
  // The module's own rule puts logs beside its installation, which need not be writable for a user of
  // the command line; its logs go to the folder it is run in unless told otherwise.
  VkSetLogFolder(logFolder.empty() ? currentFolder().c_str() : logFolder.c_str());

  I_VkCompareFiles_Silent(source.c_str(), destination.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  if (!console.transcript().empty() && console.transcript().back() != '\n') std::fputc('\n', stdout);
  std::fflush(stdout);

  const int outcome = VkLastSilentOutcome();
  for (int i = 0; i < VkLastSilentWarningCount(); ++i) std::fprintf(stderr, "vkcompare: warning: %s\n", VkLastSilentWarning(i));
  const std::string error = VkLastSilentError();
  if (!error.empty()) std::fprintf(stderr, "vkcompare: %s\n", error.c_str());
  if (outcome == 1 && !VkLastLogWritten())
    std::fprintf(stderr, "vkcompare: warning: the log could not be written to %s\n", VkLastLogPath());
  switch (outcome) {
    case 0: return 0;
    case 1: return 1;
    case 3:
      std::fprintf(stderr, "vkcompare: the source drawing's current space has no entities to compare\n");
      return 2;
    default: return 2;
  }
}

}  // namespace

int runCompare(const std::string& source, const std::string& destination, const std::string& logFolder) {
  return RunGuarded(
      2, [&] { return compareFiles(source, destination, logFolder); },
      [&](const char* reason) {
        std::fprintf(stderr, "vkcompare: %s against %s: %s\n", source.c_str(), destination.c_str(), reason);
      });
}

}  // namespace vkcompare
