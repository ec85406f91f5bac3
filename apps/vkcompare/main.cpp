// vkcompare: the command line of the headless host.
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "platform/boundary.h"
#include "shell/version.h"

namespace {

constexpr const char* kUsage =
    "Usage: vkcompare [--log-dir DIR] SOURCE DESTINATION\n"
    "       vkcompare info [--json] FILE\n"
    "       vkcompare shell [--module PATH] [--release N] [SOURCE DESTINATION]\n"
    "       vkcompare comparers\n"
    "       vkcompare [--help] [--version]\n"
    "\n"
    "Compares the current space of SOURCE with that of DESTINATION (DXF or DWG drawings), prints the\n"
    "outcome and writes a log of every difference. Exit status: 0 identical, 1 differences found, 2 trouble.\n"
    "\n"
    "Commands:\n"
    "  info FILE      what a drawing holds: version, code page, spaces, layers, blocks, entity counts\n"
    "                 (--json: one JSON object)\n"
    "  comparers      which comparer class each entity class is compared by, in the factory's order\n"
    "  shell          the host's command line: loads the module (--module: another one), opens the\n"
    "                 drawings as documents (two side by side), and reads commands (OPEN, CLOSE, ZOOM, PAN, SETVAR, DOCUMENT,\n"
    "                 HELP, QUIT, the module's) and LISP calls such as (lsp_CompareFiles_Silent \"a\" \"b\")\n"
    "                 until QUIT or the end of the input; --release N: the newest DWG release it reads\n"
    "\n"
    "Options:\n"
    "  --log-dir DIR  write the comparison log into DIR (default: the current folder)\n"
    "  --help         show this help and exit\n"
    "  --version      show the version and exit\n";

int run(int argc, char** argv) {
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
  if (arg == "comparers") return vkcompare::runComparers();
  if (arg == "shell") return vkcompare::runShell(argc - 2, argv + 2);
  std::vector<std::string> files;
  std::string logFolder;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--log-dir" && i + 1 < argc) {
      logFolder = argv[++i];
    } else if (!a.empty() && a[0] == '-' && a != "-") {
      std::fprintf(stderr, "vkcompare: unknown option '%s'\n\n%s", a.c_str(), kUsage);
      return 2;
    } else {
      files.push_back(a);
    }
  }
  if (files.size() != 2) {
    std::fprintf(stderr, "vkcompare: give two drawings, the source and the destination\n\n%s", kUsage);
    return 2;
  }
  return vkcompare::runCompare(files[0], files[1], logFolder);
}

}  // namespace

int main(int argc, char** argv) {
  // The commands say which file they were at when something is thrown; this is the last stop.
  return RunGuarded(2, [&] { return run(argc, argv); },
                    [](const char* reason) { std::fprintf(stderr, "vkcompare: %s\n", reason); });
}
