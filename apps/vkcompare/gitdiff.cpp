// vkcompare git-diff: git's external diff driver for drawings. Git gives the path and both sides (file,
// blob id, mode); the driver prints a header and the records, and answers 0 unless it failed itself, as git
// stops at a driver that answers otherwise.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "commands.h"
#include "engine/ComparisonState.h"
#include "platform/boundary.h"
#include "platform/database.h"
#include "platform/headless/console.h"
#include "results.h"
#include "shell/exports.h"

namespace vkcompare {

namespace {

constexpr const char* kNoFile = "/dev/null";

// "N entities" in the current space of a drawing standing alone on one side, or the reader's reason.
std::string entityCount(const std::string& file) {
  platform::ReadReport report;
  const auto db = platform::Database::read(file, report);
  if (!db) return "it cannot be read: " + report.error;
  const std::size_t n = db->blockRecord(db->currentSpaceId()).entityIds().size();
  return std::to_string(n) + (n == 1 ? " entity" : " entities") + " in its current space";
}

// The comparison of both sides, its logs in a temporary folder that goes with it: git's working tree is
// no place for them.
void compareSides(const std::string& oldFile, const std::string& newFile) {
  const char* tmp = std::getenv("TMPDIR");
  std::string logs = std::string(tmp && *tmp ? tmp : "/tmp") + "/vkcompare-git-XXXXXX";
  if (!::mkdtemp(logs.data())) logs.clear();
  headless::Console::instance().setEcho(nullptr);
  VkSetLogFolder(logs.empty() ? nullptr : logs.c_str());
  CJsonOutput result;
  CResultSink* const sinks[] = {&result};
  CompareFilesSilent(oldFile.c_str(), newFile.c_str(), sinks);
  if (!logs.empty()) {
    std::error_code ec;
    std::filesystem::remove_all(logs, ec);
  }
  const Json document = result.published ? result.document : ResultDocument(CComparisonState::instance());
  int counts[4] = {0, 0, 0, 0};
  for (const Json& r : document["records"]) {
    const int kind = r.value("kind_number", 0);
    ++counts[kind >= 1 && kind <= 3 ? kind : 0];
    std::fputs(ListLine(kind, r["source_handle"], r["destination_handle"], r.value("text", std::string()), false).c_str(),
               stdout);
  }
  const std::string outcome = document.value("outcome", std::string());
  if (outcome == "identical") {
    std::printf("no entity differs\n");
  } else if (outcome == "different") {
    const std::size_t n = document["records"].size();
    std::printf("%zu record%s: %d changed, %d added, %d deleted\n", n, n == 1 ? "" : "s", counts[kDiffChanged],
                counts[kDiffAdded], counts[kDiffDeleted]);
  } else if (outcome == "nothing_to_compare") {
    std::printf("the old drawing's current space has no entities to compare\n");
  } else {
    const Json error = document.value("error", Json());
    std::printf("the drawings could not be compared: %s\n",
                error.is_string() ? error.get<std::string>().c_str() : "the comparison failed");
  }
}

int gitDiff(int argc, char** argv) {
  if (argc == 1) {
    // An unmerged path: git gives its name alone.
    std::printf("vkcompare: %s is unmerged\n", argv[0]);
    return 0;
  }
  if (argc != 7) {
    std::fprintf(stderr,
                 "usage: vkcompare git-diff PATH OLD-FILE OLD-HEX OLD-MODE NEW-FILE NEW-HEX NEW-MODE\n"
                 "(git's diff driver: set diff.vkcompare.command to \"vkcompare git-diff\")\n");
    return 2;
  }
  const std::string path = argv[0], oldFile = argv[1], oldHex = argv[2], newFile = argv[4], newHex = argv[5];
  std::printf("diff --vkcompare a/%s b/%s\n", path.c_str(), path.c_str());
  // A missing side is /dev/null, its blob id "." (or zeros).
  const auto side = [&path](const char* marker, const char* prefix, const std::string& file, const std::string& hex) {
    const std::string blob = hex.empty() || hex == "." ? "" : " (" + hex + ")";
    if (file == kNoFile) std::printf("%s %s%s\n", marker, kNoFile, blob.c_str());
    else std::printf("%s %s%s%s\n", marker, prefix, path.c_str(), blob.c_str());
  };
  side("---", "a/", oldFile, oldHex);
  side("+++", "b/", newFile, newHex);
  std::fflush(stdout);
  if (oldFile == kNoFile && newFile == kNoFile) std::printf("neither side holds a drawing\n");
  else if (oldFile == kNoFile) std::printf("new drawing: %s\n", entityCount(newFile).c_str());
  else if (newFile == kNoFile) std::printf("deleted drawing: %s\n", entityCount(oldFile).c_str());
  else compareSides(oldFile, newFile);
  std::fflush(stdout);
  return 0;
}

}  // namespace

int runGitDiff(int argc, char** argv) {
  return RunGuarded(
      2, [&] { return gitDiff(argc, argv); },
      [&](const char* reason) { std::fprintf(stderr, "vkcompare git-diff: %s\n", reason); });
}

}  // namespace vkcompare
