// Guards the output of large silent comparisons byte for byte: the log, its records in order, and the command line.
//
// Two generated drawings of 20,000 entities of the full mix (a base and a revision with 2 % of its entities
// edited, deleted or added) are compared both ways round, as R2000 and as R2018 drawings. What the runs
// write is held against the expectations in tests/data/large_compare/, which record the output as it must
// stay: any change to a record's text, to the order of the records or to what the command line shows fails.
// Collections this large are paired on two threads, so the expectations also hold that path to the order
// one walk of the keys gives.
//
// Each expectation file holds, for each of the three outputs, its line count and the FNV-1a digest of all
// its bytes, and the full text of its first and last lines (the whole text when it is short). Stored lines
// start with "| " and escape '\\', carriage returns and other control characters, so that the files stay
// plain text whatever the output holds.
//
// To write the expectations anew after an intended change of the output, run the engine tests with
// VK_REWRITE_LARGE_EXPECTATIONS=1 and review the difference of the files before committing them.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "drawing_generator.h"
#include "engine/CompareLog.h"
#include "platform/headless/console.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "shell/exports.h"
#include "support/TestSupport.h"

namespace {

constexpr std::uint64_t kEntities = 20'000;
constexpr double kEditFraction = 0.02;
// Lines kept in full at each end of a long output; the middle is held by the digest and the line count.
constexpr std::size_t kKeptLines = 100;

// One output of a run, normalised: its lines (split at '\n'; the last one is what follows the last '\n').
struct Output {
  std::string kind;
  std::string text;
};

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
    lines.push_back(text.substr(start, end - start));
  lines.push_back(text.substr(start));
  return lines;
}

std::string escapeLine(const std::string& line) {
  std::string out = "| ";
  for (const char ch : line) {
    const auto c = static_cast<unsigned char>(ch);
    if (c == '\\') out += "\\\\";
    else if (c == '\r') out += "\\r";
    else if (c == '\t') out += "\\t";
    else if (c < 0x20 || c == 0x7f) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
    } else {
      out += ch;
    }
  }
  return out;
}

std::string digestOf(const std::string& text) {
  platform::Fnv1a h;
  h.add(text);
  char hex[24];
  std::snprintf(hex, sizeof hex, "%016" PRIx64, h.value());
  return hex;
}

// The expectation text of one output: "@@ kind N lines fnv1a HEX", then its lines, or its first and last
// kKeptLines lines around "@@ ...".
std::string expectationOf(const Output& output) {
  const std::vector<std::string> lines = splitLines(output.text);
  std::string out = "@@ " + output.kind + " " + std::to_string(lines.size()) + " lines fnv1a " + digestOf(output.text) + "\n";
  const bool whole = lines.size() <= 2 * kKeptLines;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!whole && i == kKeptLines) {
      out += "@@ ...\n";
      i = lines.size() - kKeptLines;
    }
    out += escapeLine(lines[i]) + "\n";
  }
  return out;
}

// Splits an expectation file into the expectations of its outputs, by kind.
std::vector<std::pair<std::string, std::string>> sections(const std::string& file) {
  std::vector<std::pair<std::string, std::string>> out;
  std::istringstream in(file);
  std::string line;
  while (std::getline(in, line)) {
    if (line.starts_with("@@ ") && line != "@@ ...") {
      const std::size_t space = line.find(' ', 3);
      out.emplace_back(line.substr(3, space - 3), "");
    }
    if (!out.empty()) out.back().second += line + "\n";
  }
  return out;
}

// Fails with the first line where the expected and the actual expectation texts part.
void expectSameOutput(const std::string& expected, const std::string& actual, const std::string& what) {
  if (expected == actual) return;
  const std::vector<std::string> e = splitLines(expected), a = splitLines(actual);
  std::size_t i = 0;
  while (i < e.size() && i < a.size() && e[i] == a[i]) ++i;
  ADD_FAILURE() << what << " differs from its expectation at stored line " << i + 1 << "\n  expected: "
                << (i < e.size() ? e[i] : "(end)") << "\n  actual:   " << (i < a.size() ? a[i] : "(end)");
}

std::string expectationPath(const std::string& name) {
  return vktest::dataDir() + "/large_compare/" + name + ".expected";
}

struct LargeOutputGuard : ::testing::Test {
  static vktest::TempDir* dir;

  static void SetUpTestSuite() {
    dir = new vktest::TempDir;
    for (const char* version : {"AC1015", "AC1032"}) {
      vkbench::GeneratorOptions base;
      base.entities = kEntities;
      base.seed = 1;
      base.version = version;
      vkbench::GeneratorOptions revision = base;
      revision.revision = true;
      revision.editFraction = kEditFraction;
      revision.baseSeed = base.seed;
      revision.seed = 2;
      vkbench::GeneratorStats stats;
      std::string error;
      if (!vkbench::generateDrawing(base, basePath(version), stats, error) ||
          !vkbench::generateDrawing(revision, revisionPath(version), stats, error))
        FAIL() << "the drawings could not be generated: " << error;
    }
  }
  static void TearDownTestSuite() {
    delete dir;
    dir = nullptr;
  }
  static std::string basePath(const std::string& version) { return dir->file("base_" + version + ".dxf"); }
  static std::string revisionPath(const std::string& version) { return dir->file("revision_" + version + ".dxf"); }

  void SetUp() override {
    logs = std::make_unique<vktest::TempDir>();
    vktest::prepareSilentRuns(logs->path());
  }

  // Runs the silent comparison of src with dst and returns its three outputs, normalised.
  std::vector<Output> compare(const std::string& src, const std::string& dst) {
    EXPECT_EQ(I_VkCompareFiles_Silent(src.c_str(), dst.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(VkLastSilentOutcome(), 1) << "the drawings must compare as different";
    EXPECT_EQ(VkLastSilentWarningCount(), 0) << VkLastSilentWarning(0);
    std::string console = headless::Console::instance().takeTranscript();
    const std::string logPath = VkLastLogPath();
    EXPECT_EQ(VkLastLogWritten(), 1);

    // What varies from run to run, and only that, is normalised: the log's path (the folder of this run
    // and the time in its name) where the command line shows it. The log's contents name no path.
    const std::filesystem::path log(logPath);
    const std::string name = log.filename().string();
    const std::string prefix = std::filesystem::path(src).filename().string() + "_" +
                               std::filesystem::path(dst).filename().string() + "_";
    EXPECT_EQ(log.parent_path().string(), logs->path());
    const bool named = name.starts_with(prefix) && name.ends_with(".ini") &&
                       std::regex_match(name.substr(prefix.size(), name.size() - prefix.size() - 4), std::regex("-?[0-9]+"));
    EXPECT_TRUE(named) << name;
    const std::string shown = "\n日志文件:" + logPath + "\n";
    const std::size_t at = console.find(shown);
    EXPECT_NE(at, std::string::npos) << console;
    if (at != std::string::npos) console.replace(at, shown.size(), "\n日志文件:<log folder>/" + prefix + "<time>.ini\n");

    const std::string logText = vktest::readFile(logPath);
    // The records in order, as the log's keys give them back.
    const std::string counted = "发现有(";
    const std::size_t countAt = console.find(counted);
    EXPECT_NE(countAt, std::string::npos) << console;
    const int count = countAt == std::string::npos ? 0 : std::atoi(console.c_str() + countAt + counted.size());
    EXPECT_GT(count, 100);
    std::string records;
    for (int i = 0; i < count; ++i)
      records += platform::getPrivateProfileString("差异内容", platform::fmt("差异%d", i), "<missing>", 1 << 20, logPath) + "\n";
    return {{"log", logText}, {"records", records}, {"console", console}};
  }

  // Holds the outputs against the stored expectation `name`, or writes it when asked to.
  void expectOutputs(const std::string& name, const std::vector<Output>& outputs) {
    std::string actual;
    for (const Output& o : outputs) actual += expectationOf(o);
    const std::string path = expectationPath(name);
    if (const char* rewrite = std::getenv("VK_REWRITE_LARGE_EXPECTATIONS"); rewrite && std::string(rewrite) == "1") {
      std::filesystem::create_directories(std::filesystem::path(path).parent_path());
      vktest::writeFile(path, actual);
      GTEST_SKIP() << "wrote " << path;
    }
    ASSERT_TRUE(std::filesystem::exists(path)) << path;
    const auto expected = sections(vktest::readFile(path));
    const auto got = sections(actual);
    ASSERT_EQ(expected.size(), got.size()) << path;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(expected[i].first, got[i].first);
      expectSameOutput(expected[i].second, got[i].second, name + ", " + got[i].first);
    }
  }

  std::unique_ptr<vktest::TempDir> logs;
};

vktest::TempDir* LargeOutputGuard::dir = nullptr;

}  // namespace

TEST_F(LargeOutputGuard, R2000RevisionAgainstItsBase) {
  expectOutputs("r2000_base_to_revision", compare(basePath("AC1015"), revisionPath("AC1015")));
}

TEST_F(LargeOutputGuard, R2000BaseAgainstItsRevision) {
  expectOutputs("r2000_revision_to_base", compare(revisionPath("AC1015"), basePath("AC1015")));
}

TEST_F(LargeOutputGuard, R2018RevisionAgainstItsBase) {
  expectOutputs("r2018_base_to_revision", compare(basePath("AC1032"), revisionPath("AC1032")));
}

TEST_F(LargeOutputGuard, R2018BaseAgainstItsRevision) {
  expectOutputs("r2018_revision_to_base", compare(revisionPath("AC1032"), basePath("AC1032")));
}

// The expectation format itself must tell apart what the guard is there to catch.
TEST(LargeOutputExpectation, OneCharacterOrTwoLinesSwappedChangeIt) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "差异" + std::to_string(i) + "=record text " + std::to_string(i * 7) + "\r\n";
  const std::string stored = expectationOf({"log", text});
  // Long outputs keep their ends only; the middle changes below must show in the digest line.
  EXPECT_NE(stored.find("@@ ...\n"), std::string::npos);
  std::string oneCharacter = text;
  oneCharacter[text.size() / 2] ^= 1;
  EXPECT_NE(expectationOf({"log", oneCharacter}), stored);
  std::vector<std::string> lines = splitLines(text);
  std::swap(lines[500], lines[501]);
  std::string swapped;
  for (std::size_t i = 0; i < lines.size(); ++i) swapped += lines[i] + (i + 1 < lines.size() ? "\n" : "");
  EXPECT_NE(expectationOf({"log", swapped}), stored);
  // A lost line break at the very end, and a carriage return, are kept apart from what they resemble.
  EXPECT_NE(expectationOf({"log", text.substr(0, text.size() - 1)}), stored);
  EXPECT_NE(escapeLine("a\rb"), escapeLine("a\\rb"));
}
