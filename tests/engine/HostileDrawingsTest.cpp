// Silent runs on hostile drawings: blocks nested far beyond any real drawing, reference cycles, tables whose
// counts claim far more than they hold, and every drawing kept under tests/data/hostile (inputs that once
// crashed, hung or ran away with memory, most found by fuzzing).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/ComparisonState.h"
#include "platform/headless/console.h"
#include "shell/exports.h"
#include "support/TestSupport.h"

namespace {

struct HostileFixture : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override { vktest::prepareSilentRuns(dir.path()); }
  std::string write(const std::string& name, const std::string& dxf) {
    vktest::writeFile(dir.file(name), dxf);
    return dir.file(name);
  }
  int run(const std::string& a, const std::string& b) {
    const int result =
        I_VkCompareFiles_Silent(a.c_str(), b.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    output = headless::Console::instance().takeTranscript();
    return result;
  }
  std::vector<std::string> warnings() const {
    std::vector<std::string> out;
    for (int i = 0; i < VkLastSilentWarningCount(); ++i) out.emplace_back(VkLastSilentWarning(i));
    return out;
  }
  std::string output;
};

}  // namespace

TEST_F(HostileFixture, BlocksNestedBeyondTheBudgetCompareWithOneWarningPerDrawing) {
  const std::string a = write("a.dxf", vktest::nestedBlocksDrawing(7, 10));
  const std::string b = write("b.dxf", vktest::nestedBlocksDrawing(7, 10));
  EXPECT_EQ(run(a, b), 1);
  EXPECT_TRUE(output.ends_with("文件完全相同\n。")) << output;
  const std::vector<std::string> w = warnings();
  ASSERT_EQ(w.size(), 2u);
  EXPECT_TRUE(w[0].starts_with(a + ": block 'N")) << w[0];
  EXPECT_TRUE(w[1].starts_with(b + ": block 'N")) << w[1];
  EXPECT_NE(w[0].find("references past it are compared on their own properties"), std::string::npos);
}

TEST_F(HostileFixture, ReferenceCyclesComplete) {
  const std::string line = "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0";
  const auto blk = [](const std::string& name, const std::string& entities) {
    return "0|BLOCK|8|0|2|" + name + "|70|0|10|0|20|0|30|0|3|" + name + "|" + entities + "|0|ENDBLK|8|0";
  };
  const auto ins = [](const std::string& name, int x) {
    return "0|INSERT|8|0|2|" + name + "|10|" + std::to_string(x) + "|20|0|30|0";
  };
  // A contains itself ten times over; B and C contain each other.
  std::string selfish = line;
  for (int i = 1; i <= 10; ++i) selfish += "|" + ins("A", i);
  const std::string blocks = blk("A", selfish) + "|" + blk("B", line + "|" + ins("C", 1)) + "|" + blk("C", ins("B", 2));
  const std::string a = write("a.dxf", vktest::dxfDrawing(ins("A", 0) + "|" + ins("B", 5), "AC1015", "", "", blocks));
  const std::string redLine = "0|LINE|8|0|62|1|10|0|20|0|30|0|11|1|21|0|31|0";
  const std::string changed =
      blk("A", selfish) + "|" + blk("B", redLine + "|" + ins("C", 1)) + "|" + blk("C", ins("B", 2));
  const std::string b = write("b.dxf", vktest::dxfDrawing(ins("A", 0) + "|" + ins("B", 5), "AC1015", "", "", changed));
  EXPECT_EQ(run(a, a), 1);
  // Each reading of the drawing names the first block found holding itself, once.
  const std::vector<std::string> w = warnings();
  ASSERT_EQ(w.size(), 2u);
  EXPECT_EQ(w[0], a + ": block 'A' holds a reference to itself, directly or through other blocks; such references "
                      "are compared on their own properties");
  EXPECT_EQ(run(a, b), 0);
  EXPECT_NE(output.find("发现有(1)个实体不同"), std::string::npos) << output;
}

TEST_F(HostileFixture, TablesClaimingAMillionCellsListTheCellsTheyHold) {
  // Three tables claim 1024 x 1024 cells and hold three each.
  const std::string a = vktest::dataDir() + "/hostile/tables_1024.dxf";
  std::string text = vktest::readFile(a);
  text.replace(text.find("\nc2\n"), 4, "\ncX\n");
  const std::string b = write("b.dxf", text);
  EXPECT_EQ(run(a, b), 0);
  EXPECT_NE(output.find("发现有(3)个实体不同"), std::string::npos) << output;
  // Each drawing's reading names the first lying table; rows and columns lack their sizes too.
  std::string all;
  for (const std::string& w : warnings()) all += w + "\n";
  EXPECT_NE(all.find(a + ": line 15: ACAD_TABLE A1: groups 91 and 92 say 1024 x 1024 cells, the record "
                         "holds 3; those present are read (3 times; the first is shown)\n"),
            std::string::npos)
      << all;
  EXPECT_NE(all.find(a + ": line 15: ACAD_TABLE A1: group 91 says 1024 row heights, the record holds 0"),
            std::string::npos)
      << all;
  // Every cell held is listed, and no more: the log stays small.
  const std::string log = vktest::readFile(VkLastLogPath());
  EXPECT_LT(log.size(), 2000u);
  EXPECT_NE(log.find("第0行,第2列:外部单元格不一样,"), std::string::npos) << log;
  EXPECT_EQ(log.find("第1行"), std::string::npos) << log;
}

namespace {

std::vector<std::string> hostileDrawings() {
  std::vector<std::string> out;
  const std::filesystem::path dir = vktest::dataDir() + "/hostile";
  if (std::filesystem::is_directory(dir))
    for (const auto& e : std::filesystem::directory_iterator(dir))
      if (e.is_regular_file()) out.push_back(e.path().string());
  std::sort(out.begin(), out.end());
  return out;
}

// Runs one silent comparison; its outcome code (0 identical, 1 differences, 2 trouble, 3 nothing to compare).
int compare(const std::string& a, const std::string& b) {
  I_VkCompareFiles_Silent(a.c_str(), b.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  return VkLastSilentOutcome();
}

}  // namespace

TEST(HostileDrawings, EachEndsInAnOutcomeAndIsReportedAsDamaged) {
  vktest::TempDir logs;
  vktest::prepareSilentRuns(logs.path());
  const std::string sound = vktest::dataDir() + "/../../examples/door_rev_a.dxf";
  const auto files = hostileDrawings();
  ASSERT_FALSE(files.empty());
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    const int self = compare(file, file);
    EXPECT_TRUE(self >= 0 && self <= 3);
    // A damaged drawing is never read in silence: the reader's error or at least one warning names it.
    const bool named = std::string(VkLastSilentError()).find(file) != std::string::npos ||
                       (VkLastSilentWarningCount() > 0 && std::string(VkLastSilentWarning(0)).find(file) != std::string::npos);
    EXPECT_TRUE(named) << "error: " << VkLastSilentError();
    EXPECT_TRUE(compare(file, sound) >= 0);
    EXPECT_TRUE(compare(sound, file) >= 0);
  }
}
