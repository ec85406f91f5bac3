// vkcompare: the command line of the headless host.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "platform/boundary.h"
#include "platform/files.h"
#include "shell/version.h"

namespace {

constexpr const char* kUsage =
    "Usage: vkcompare [--log-dir DIR] [--json FILE|-] [--html FILE] [--list] SOURCE DESTINATION\n"
    "       vkcompare [--log-dir DIR] [--json FILE|-] [--html DIR] [--list] FOLDER_A FOLDER_B\n"
    "       vkcompare git-diff PATH OLD-FILE OLD-HEX OLD-MODE NEW-FILE NEW-HEX NEW-MODE\n"
    "       vkcompare info [--json] FILE\n"
    "       vkcompare shell [--module PATH] [--release N] [SOURCE DESTINATION]\n"
    "       vkcompare comparers\n"
    "       vkcompare [--help] [--version]\n"
    "\n"
    "Compares the current space of SOURCE with that of DESTINATION (DXF or DWG drawings), prints the\n"
    "outcome and writes a log of every difference. Exit status: 0 identical, 1 differences found, 2 trouble.\n"
    "Given two folders, compares the drawings they share by relative path (in parallel), names those only in\n"
    "one of them, prints a line per pair and a total; exit status 2 when any pair could not be compared.\n"
    "\n"
    "Commands:\n"
    "  git-diff       git's diff driver for drawings (diff.vkcompare.command): a header and the records;\n"
    "                 exit status 0 unless the driver itself failed\n"
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
    "  --json FILE    also write the result as a JSON document (schema vkcompare-result/1) to FILE, whole\n"
    "                 or not at all; \"-\" writes it to stdout and what the run prints to stderr\n"
    "  --html FILE    also write a report page to FILE, whole or not at all: both drawings side by side with\n"
    "                 the differences framed, the ranges and their records, stepping and zoom; it needs\n"
    "                 nothing but a browser; with two folders, DIR gets a report a pair (at its relative\n"
    "                 path, .html added) and index.html\n"
    "  --jobs N       with two folders, compare at most N pairs at once (default: one per core)\n"
    "  --list         also print the records one a line: kind, source and destination handles, text\n"
    "                 (coloured by kind on a terminal)\n"
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
  if (arg == "git-diff") return vkcompare::runGitDiff(argc - 2, argv + 2);
  std::vector<std::string> files;
  vkcompare::Outputs outputs;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if ((a == "--log-dir" || a == "--json" || a == "--html" || a == "--jobs") && i + 1 >= argc) {
      std::fprintf(stderr, "vkcompare: %s needs a value\n\n%s", a.c_str(), kUsage);
      return 2;
    }
    if (a == "--log-dir") {
      outputs.logFolder = argv[++i];
    } else if (a == "--json") {
      outputs.jsonPath = argv[++i];
    } else if (a == "--list") {
      outputs.list = true;
    } else if (a == "--html") {
      outputs.htmlPath = argv[++i];
    } else if (a == "--jobs") {
      const std::string n = argv[++i];
      char* end = nullptr;
      const unsigned long jobs = std::strtoul(n.c_str(), &end, 10);
      if (n.empty() || !std::isdigit(static_cast<unsigned char>(n[0])) || *end != '\0' || jobs == 0 || jobs > 256) {
        std::fprintf(stderr, "vkcompare: --jobs wants a number from 1 to 256, not '%s'\n", n.c_str());
        return 2;
      }
      outputs.jobs = static_cast<unsigned>(jobs);
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
  const bool folderA = platform::fileKind(files[0]) == platform::FileKind::Folder;
  const bool folderB = platform::fileKind(files[1]) == platform::FileKind::Folder;
  if (folderA && folderB) return vkcompare::runFolders(files[0], files[1], outputs);
  return vkcompare::runCompare(files[0], files[1], outputs);
}

}  // namespace

int main(int argc, char** argv) {
  // The commands say which file they were at when something is thrown; this is the last stop.
  return RunGuarded(2, [&] { return run(argc, argv); },
                    [](const char* reason) { std::fprintf(stderr, "vkcompare: %s\n", reason); });
}
