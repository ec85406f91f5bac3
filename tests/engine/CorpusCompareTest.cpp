// The whole pipeline on the shared corpus: every drawing compared with itself finds nothing (tables, whose
// cells are always listed, excepted), and every pair of revisions compares without trouble.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/CompareLog.h"
#include "engine/ComparisonState.h"
#include "engine/CompareRun.h"
#include "platform/headless/console.h"
#include "platform/text.h"
#include "support/TestSupport.h"
#include "ui/CompareConfigFile.h"

namespace {

struct CorpusFixture : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override {
    if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
    vktest::prepareSilentRuns(dir.path());
  }
};

}  // namespace

TEST_F(CorpusFixture, EveryDrawingEqualsItself) {
  for (const std::string& path : vktest::corpusDxfFiles()) {
    RunSilentCompare(path, path);
    const RunOutcome outcome = CComparisonState::instance().lastOutcome;
    headless::Console::instance().reset();
    if (outcome == RunOutcome::Identical || outcome == RunOutcome::NothingToCompare) continue;
    ASSERT_EQ(outcome, RunOutcome::Different) << path << ": " << CComparisonState::instance().lastError;
    // Tables are always reported: their cells are listed whether they differ or not.
    const std::string log = CComparisonState::instance().lastLogPath;
    const std::string text = vktest::readFile(log);
    std::size_t lines = 0, tables = 0;
    for (std::size_t at = text.find("\n差异"); at != std::string::npos; at = text.find("\n差异", at + 1)) {
      ++lines;
      if (text.find("------表格图元 ", at) < text.find('\n', at + 1)) ++tables;
    }
    EXPECT_EQ(lines, tables) << path << " compared with itself:\n" << text;
  }
}

TEST_F(CorpusFixture, EveryPairComparesWithoutTrouble) {
  const auto pairs = vktest::corpusDxfFiles("/pairs");
  for (std::size_t i = 0; i + 1 < pairs.size(); ++i) {
    const auto folder = std::filesystem::path(pairs[i]).parent_path();
    if (std::filesystem::path(pairs[i + 1]).parent_path() != folder) continue;
    RunSilentCompare(pairs[i], pairs[i + 1]);
    const RunOutcome outcome = CComparisonState::instance().lastOutcome;
    headless::Console::instance().reset();
    EXPECT_TRUE(outcome == RunOutcome::Identical || outcome == RunOutcome::Different)
        << pairs[i] << " against " << pairs[i + 1] << ": " << CComparisonState::instance().lastError;
  }
}
