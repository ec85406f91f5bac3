// The silent run end to end on small drawings: its outcome texts, failure lines, the settings it reads,
// the filters of reading, and the log it writes.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/CompareLog.h"
#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "platform/headless/console.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "shell/exports.h"
#include "support/TestSupport.h"
#include "ui/CompareConfigFile.h"

namespace {

const std::string kBase =
    "0|LINE|8|0|10|0|20|0|11|10|21|0|"
    "0|LINE|8|0|10|0|20|5|11|10|21|5|"
    "0|MYCUSTOM|8|0|10|3|20|3|40|1";

struct SilentFixture : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override {
    // Every property compared, as for a fresh user.
    vktest::prepareSilentRuns(dir.path());
  }
  std::string drawing(const std::string& name, const std::string& entities, const std::string& header = "") {
    vktest::writeFile(dir.file(name), vktest::dxfDrawing(entities, "AC1015", header));
    return dir.file(name);
  }
  int run(const std::string& a, const std::string& b) {
    return I_VkCompareFiles_Silent(a.c_str(), b.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  std::string output() { return headless::Console::instance().takeTranscript(); }
  std::vector<std::string> logs() const {
    std::vector<std::string> out;
    for (const auto& e : std::filesystem::directory_iterator(dir.path()))
      if (e.path().extension() == ".ini") out.push_back(e.path().string());
    return out;
  }
};

}  // namespace

TEST_F(SilentFixture, IdenticalDrawingsAndTheSameFileTwice) {
  const std::string a = drawing("a.dxf", kBase);
  EXPECT_EQ(run(a, a), 1);
  EXPECT_EQ(output(), "\n实体数量：3个\n实体数量：3个\n文件完全相同\n。");
  // The status bar shows every stage, in order.
  EXPECT_EQ(headless::Console::instance().progressLabels(),
            (std::vector<std::string>{"正在准备读取源文件：", "正在计算源文件实体数量：", "1/3 正在读取源文件：",
                                      "正在准备读取目标文件：", "正在计算目标文件实体数量：", "2/3 正在读取目标文件：",
                                      "3/3 实体比较"}));
  EXPECT_EQ(VkLastSilentOutcome(), 0);
  EXPECT_TRUE(logs().empty());
  // Nothing of the run stays in the comparison state but the names.
  EXPECT_FALSE(CComparisonState::instance().source);
  EXPECT_TRUE(CComparisonState::instance().differences.empty());
  EXPECT_EQ(CComparisonState::instance().sourceFileName, a);
}

TEST_F(SilentFixture, DifferencesAreCountedLoggedAndSorted) {
  const std::string a = drawing("a.dxf", kBase);
  // Second line moved, custom entity changed, a line added far to the right.
  const std::string b = drawing("b.dxf",
                                "0|LINE|8|0|10|0|20|0|11|10|21|0|"
                                "0|LINE|8|0|10|0|20|6|11|10|21|6|"
                                "0|MYCUSTOM|8|0|10|3|20|3|40|2|"
                                "0|LINE|8|0|62|1|10|50|20|0|11|60|21|0");
  EXPECT_EQ(run(a, b), 0);
  const std::string out = output();
  EXPECT_NE(out.find("发现有(4)个实体不同。请使用工具条定位到详细差异位置。"), std::string::npos) << out;
  ASSERT_EQ(logs().size(), 1u);
  const std::string log = logs()[0];
  EXPECT_NE(out.find("\n日志文件:" + log + "\n"), std::string::npos);
  EXPECT_TRUE(std::filesystem::path(log).filename().string().starts_with("a.dxf_b.dxf_"));
  std::vector<std::string> values;
  for (int i = 0; i < 4; ++i)
    values.push_back(platform::getPrivateProfileString("差异内容", platform::fmt("差异%d", i), "", 4096, log));
  // Sorted by the centre of each box clamped towards the origin: the custom entity at (3, 3), the deleted
  // line (x 5, y 2.5), the moved line (x 5, y 3), the red line (x 30).
  EXPECT_NE(values[0].find("代理实体图元,0,MYCUSTOM,40,2.00不同"), std::string::npos) << values[0];
  EXPECT_EQ(values[1], "-----差异范围：Min = x:0.000000 y:5.000000, Max = x:10.000000 y:5.000000 ------直线图元 删除,");
  EXPECT_EQ(values[2], "-----差异范围：Min = x:0.000000 y:6.000000, Max = x:10.000000 y:6.000000 ------直线图元 新增,");
  EXPECT_EQ(values[3], "-----差异范围：Min = x:50.000000 y:0.000000, Max = x:60.000000 y:0.000000 ------直线图元 新增,");
  EXPECT_EQ(VkLastSilentOutcome(), 1);
}

namespace {

// What an output of the run sees of its result.
struct SeenRecord {
  int kind;
  platform::Handle source, destination;
  bool sourceId, destinationId;
  std::vector<std::string> messages;
  int range, member;
  bool operator==(const SeenRecord&) const = default;
};

struct CapturingOutput : CResultSink {
  std::vector<SeenRecord> records;
  std::vector<std::string> ranges;
  RunOutcome outcome = RunOutcome::None;
  bool drawingsAtHand = false;
  void publish(const CComparisonState& state) override {
    for (const auto& r : state.differences) {
      const std::vector<std::string_view> messages = r->messages();
      records.push_back({r->kind, r->sourceHandle, r->destinationHandle, !r->sourceId.isNull(),
                         !r->destinationId.isNull(), {messages.begin(), messages.end()}, r->range, r->member});
    }
    for (const auto& range : state.ranges.ranges) ranges.push_back(*range.summary);
    outcome = state.lastOutcome;
    drawingsAtHand = state.sideSource && state.sideDestination;
  }
};

}  // namespace

TEST_F(SilentFixture, OutputsSeeRecordsWithTheirEntitiesMessagesAndRanges) {
  const std::string a = drawing("a.dxf", "0|LINE|5|1A|8|0|10|0|20|0|11|10|21|0|0|LINE|5|1B|8|0|10|0|20|0|11|10|21|5");
  const std::string b = drawing("b.dxf",
                                "0|LINE|5|2A|8|0|62|1|10|0|20|0|11|10|21|0|"
                                "0|LINE|5|2C|8|0|10|100|20|0|11|110|21|0");
  CapturingOutput seen;
  CResultSink* outputs[] = {&seen};
  EXPECT_EQ(RunSilentCompare(a, b, outputs), 0);
  EXPECT_EQ(seen.outcome, RunOutcome::Different);
  EXPECT_TRUE(seen.drawingsAtHand);
  // The changed line names both entities; the deleted one its source, the added one its destination. The
  // deleted diagonal's box holds the changed line: range 1; the far line is range 2 alone.
  EXPECT_EQ(seen.records, (std::vector<SeenRecord>{
                              {kDiffChanged, 0x1A, 0x2A, true, true, {"颜色不相同"}, 1, 1},
                              {kDiffDeleted, 0x1B, 0, true, false, {"删除"}, 1, 2},
                              {kDiffAdded, 0, 0x2C, false, true, {"新增"}, 2, 1},
                          }));
  EXPECT_EQ(seen.ranges, (std::vector<std::string>{"范围1,2", "范围2,1"}));
  // An output hears of a refused run too.
  CapturingOutput refused;
  CResultSink* again[] = {&refused};
  EXPECT_EQ(RunSilentCompare(a, dir.file("missing.dxf"), again), 1);
  EXPECT_EQ(refused.outcome, RunOutcome::Trouble);
  EXPECT_TRUE(refused.records.empty());
}

TEST_F(SilentFixture, FailureLinesKeepTheirPunctuation) {
  const std::string good = drawing("good.dxf", kBase);
  const std::string broken = dir.file("broken.dxf");
  vktest::writeFile(broken, "0\nSECTION\n2\nENTITIES\n0\nLINE\n10\nnot-a-number\n");
  EXPECT_EQ(run(broken, good), 1);
  EXPECT_EQ(output(), "源图形文件无效,退出比图");
  EXPECT_NE(std::string(VkLastSilentError()).find(broken + ":"), std::string::npos);
  EXPECT_EQ(VkLastSilentOutcome(), 2);
  EXPECT_EQ(run(good, broken), 1);
  EXPECT_EQ(output(), "目标图形文件无效，退出比图");
  const std::string layout = drawing("layout.dxf", kBase, "9|$TILEMODE|70|0");
  EXPECT_EQ(run(good, layout), 1);
  EXPECT_EQ(output(), "两个文件的当前空间不同，不能进行比较,退出比图");
  vktest::writeFile(dir.file("new.dwg"), std::string("AC1033") + std::string(20, '\0'));  // past R2018
  EXPECT_EQ(run(dir.file("new.dwg"), good), 1);
  EXPECT_EQ(output(), "文件不合法，退出比图");
  EXPECT_EQ(headless::Console::instance().takeMessageBoxes().size(), 1u);
  EXPECT_EQ(I_VkCompareFiles_Silent("", "", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(output(), "文件名不能为空");
  EXPECT_TRUE(logs().empty());
  // What the reader survives is kept for the front end.
  const std::string odd = drawing("odd.dxf", kBase + "|0|LINE|8|0|0|-1.5|20|0");
  EXPECT_EQ(run(good, odd), 0);
  output();
  ASSERT_EQ(VkLastSilentWarningCount(), 1);
  EXPECT_NE(std::string(VkLastSilentWarning(0)).find("no entity type"), std::string::npos);
  EXPECT_STREQ(VkLastSilentWarning(1), "");
}

TEST_F(SilentFixture, EmptySourceStopsAnEmptyDestinationDoesNot) {
  const std::string empty = drawing("empty.dxf", "");
  const std::string full = drawing("full.dxf", kBase);
  EXPECT_EQ(run(empty, full), 1);
  EXPECT_EQ(output(), "\n实体数量：0个\n实体数量：3个原图无可比较实体");
  EXPECT_EQ(run(full, empty), 0);
  EXPECT_NE(output().find("发现有(3)个实体不同。"), std::string::npos);
}

TEST_F(SilentFixture, InvisibleEntitiesAndExcludedLayersTakeNoPart) {
  const std::string a = drawing("a.dxf", kBase);
  const std::string b = drawing("b.dxf", kBase + "|0|LINE|8|0|60|1|10|0|20|9|11|1|21|9|0|LINE|8|Skip|10|0|20|8|11|1|21|8");
  EXPECT_EQ(run(a, b), 0);  // the line on layer Skip is new
  EXPECT_NE(output().find("发现有(1)个实体不同。"), std::string::npos);
  ExcludedLayers() = {"SKIP"};  // matched without regard to case
  EXPECT_EQ(run(a, b), 1);
  EXPECT_NE(output().find("文件完全相同"), std::string::npos);
}

TEST_F(SilentFixture, SettingsFileSwitchesPropertiesOff) {
  const std::string a = drawing("a.dxf", "0|LINE|8|0|62|1|10|0|20|0|11|1|21|1");
  const std::string b = drawing("b.dxf", "0|LINE|8|0|62|2|10|0|20|0|11|1|21|1");
  EXPECT_EQ(run(a, b), 0);
  output();
  platform::writePrivateProfileString("CFGDATA", "Color", "0", CCompareConfigFile::instance().IniPath());
  EXPECT_EQ(run(a, b), 1);
  EXPECT_NE(output().find("文件完全相同"), std::string::npos);
}
