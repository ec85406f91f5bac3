// vkcompare shell: the headless host's command line, with the module loaded and the drawings open.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "commands.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "shell/exports.h"
#include "shell/version.h"

namespace vkcompare {

namespace {

// The module this program was linked with: the file that holds one of its exports.
std::string linkedModulePath() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&I_VkCompareCurFile), &info) && info.dli_fname) return info.dli_fname;
  return {};
}

}  // namespace

int runShell(int argc, char** argv) {
  std::string modulePath;
  std::vector<std::string> files;
  int release = 0;
  for (int i = 0; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--module" && i + 1 < argc) {
      modulePath = argv[++i];
    } else if (a == "--release" && i + 1 < argc) {
      char* end = nullptr;
      const long value = std::strtol(argv[++i], &end, 10);
      if (*end != '\0' || value < 12 || value > 99) {
        std::fprintf(stderr, "vkcompare shell: --release takes a release number such as 24 or 32\n");
        return 2;
      }
      release = static_cast<int>(value);
    } else if (!a.empty() && a[0] == '-') {
      std::fprintf(stderr, "vkcompare shell: unknown option '%s'\n", a.c_str());
      return 2;
    } else {
      files.push_back(a);
    }
  }
  if (modulePath.empty()) modulePath = linkedModulePath();

  headless::Console& console = headless::Console::instance();
  console.setEcho(stdout);
  if (::isatty(STDERR_FILENO)) console.setProgressStream(stderr);
  headless::HostSession& host = headless::HostSession::instance();
  if (release) host.setRelease(release);

  std::string error;
  if (!host.loadModule(modulePath, error)) {
    std::fprintf(stderr, "vkcompare shell: %s\n", error.c_str());
    return 2;
  }
  for (const std::string& file : files) {
    if (!host.openDocument(file, error)) {
      std::fprintf(stderr, "vkcompare shell: %s\n", error.c_str());
      host.shutdown();
      return 2;
    }
  }
  if (files.size() == 2) {
    // Source on the left, destination on the right, the destination active: as a comparison leaves them.
    const auto& documents = host.documentList();
    host.tile(documents[0]->docTitle(), documents[1]->docTitle());
  }
  if (::isatty(STDIN_FILENO))
    console.print(std::string(kProductName) + " " + kProductVersion + " — 输入 HELP 列出命令，QUIT 退出。\n");
  host.setInput(headless::standardInput());
  host.runCommandLine();
  return 0;
}

}  // namespace vkcompare
