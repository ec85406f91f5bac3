// vkcompare: the command line of the headless host.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "commands.h"
#include "shell/version.h"

namespace {

constexpr const char* kUsage =
    "Usage: vkcompare info [--json] FILE\n"
    "       vkcompare [--help] [--version]\n"
    "\n"
    "Compares two revisions of a drawing entity by entity.\n"
    "\n"
    "Commands:\n"
    "  info FILE    what a drawing holds: version, code page, spaces, layers, blocks, entity counts\n"
    "               (--json: one JSON object)\n"
    "\n"
    "Options:\n"
    "  --help       show this help and exit\n"
    "  --version    show the version and exit\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const std::string_view arg = argv[1];
  if (arg == "--help" || arg == "-h") {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (arg == "--version") {
    std::printf("vkcompare (%s) %s\n", kProductName, kProductVersion);
    return 0;
  }
  if (arg == "info") return vkcompare::runInfo(argc - 2, argv + 2);
  std::fprintf(stderr, "vkcompare: unknown argument '%s'\n\n%s", argv[1], kUsage);
  return 2;
}
