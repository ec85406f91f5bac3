// The runs on documents open in the headless host: the interactive comparison (names given or chosen in
// the file selection dialog), open only, and comparing the open pair with area and base points.
#include <gtest/gtest.h>

#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "platform/commands.h"
#include "platform/documents.h"
#include "platform/headless/console.h"
#include "platform/headless/dialogs.h"
#include "platform/headless/host_session.h"
#include "platform/views.h"
#include "support/TestSupport.h"
#include "ui/CompareConfigFile.h"

using headless::Dialogs;
using headless::HostSession;

namespace {

struct RunFixture : ::testing::Test {
  vktest::TempDir dir;
  HostSession& host = HostSession::instance();
  headless::Console& console = headless::Console::instance();
  CComparisonState& state = CComparisonState::instance();
  const std::string a = vktest::dataDir() + "/two_entities.dxf";
  const std::string b = vktest::dataDir() + "/two_entities_recoloured.dxf";

  void SetUp() override {
    host.shutdown();
    Dialogs::instance().reset();
    vktest::prepareSilentRuns(dir.path());
    CCompareConfigFile::instance().SetIsShow(0);
    state.Prepare();
    state.openedDrawings.clear();
    state.resultReady = 0;
  }
  void TearDown() override {
    state.ReleaseDrawings();
    host.shutdown();
    Dialogs::instance().reset();
  }
  // The message boxes shown since the last call, as "title|text".
  std::vector<std::string> boxes() {
    std::vector<std::string> out;
    for (const auto& box : console.takeMessageBoxes()) out.push_back(box.title + "|" + box.text);
    return out;
  }
  std::string file(const std::string& name, const std::string& entities) {
    vktest::writeFile(dir.file(name), vktest::dxfDrawing(entities));
    return dir.file(name);
  }
};

std::string lines(double dx, double dy) {
  auto n = [](double v) { return std::to_string(v); };
  return "0|LINE|8|0|10|" + n(dx) + "|20|" + n(dy) + "|30|0|11|" + n(10 + dx) + "|21|" + n(dy) + "|31|0|" +
         "0|CIRCLE|8|0|10|" + n(5 + dx) + "|20|" + n(5 + dy) + "|30|0|40|2.5";
}

}  // namespace

TEST_F(RunFixture, InteractiveRunWithBothNamesOpensTilesComparesAndReports) {
  RunInteractiveCompare(a, b);
  EXPECT_EQ(boxes(), std::vector<std::string>{"图纸比较结果|发现有(1)个实体不同。请使用工具条定位到详细差异位置。"});
  const std::vector<platform::Document*> open = platform::documents();
  ASSERT_EQ(open.size(), 2u);
  ASSERT_TRUE(state.source && state.destination);
  EXPECT_EQ(state.source->document->fileName(), a);
  EXPECT_EQ(state.destination->document->fileName(), b);
  EXPECT_EQ(state.differences.size(), 1u);
  EXPECT_EQ(state.paletteSourceName, a);
  EXPECT_EQ(state.paletteDestinationName, b);
  // The destination was opened first; both are listed as opened by the comparison.
  EXPECT_EQ(state.openedDrawings, (std::vector<std::string>{b, a}));
  // Side by side, the source on the left.
  EXPECT_EQ(platform::getWindowRect(platform::documentWindow(state.source->document)).left, 0);
  EXPECT_GT(platform::getWindowRect(platform::documentWindow(state.destination->document)).left, 0);
  // Each opened drawing's DBMOD was pushed: popping it brings back the unchanged state.
  headless::HeadlessDocument* source = host.find(state.source->document);
  source->markModified();
  source->popDbmod();
  EXPECT_EQ(source->dbmod(), 0);
  // A second run finds both open: nothing is opened again, and the documents are not locked after reading.
  RunInteractiveCompare(a, b);
  EXPECT_EQ(platform::documents().size(), 2u);
  EXPECT_EQ(state.openedDrawings.size(), 2u);
  EXPECT_EQ(source->lockMode(), platform::LockMode::kNotLocked);
  EXPECT_EQ(boxes().size(), 1u);
}

TEST_F(RunFixture, IdenticalSameFileAndEmptySource) {
  RunInteractiveCompare(a, a);
  EXPECT_EQ(boxes(), std::vector<std::string>{"图纸比较结果|文件完全相同。"});
  // One document; the second record reads the file into a database of its own.
  EXPECT_EQ(platform::documents().size(), 1u);
  ASSERT_TRUE(state.source && state.destination);
  EXPECT_NE(state.source->database, state.destination->database);

  const std::string empty = file("empty.dxf", "");
  RunInteractiveCompare(empty, a);
  EXPECT_EQ(boxes(), std::vector<std::string>{"Morvane比图工具|原图无可比较实体"});
}

TEST_F(RunFixture, EmptyNamesAreAskedForAndCancelEndsTheRun) {
  Dialogs::instance().scriptAnswers({"cancel"});
  RunInteractiveCompare("", b);
  EXPECT_TRUE(boxes().empty());
  EXPECT_TRUE(platform::documents().empty());
  EXPECT_FALSE(state.source);

  // A drawing too new is refused by its message and the dialog comes again.
  const std::string tooNew = dir.file("new.dwg");
  vktest::writeFile(tooNew, "AC1099" + std::string(40, '\0'));
  Dialogs::instance().scriptAnswers({"set 101 " + tooNew, "set 102 " + b, "ok", "set 101 " + a, "ok"});
  RunInteractiveCompare(a, "");
  const auto shown = boxes();
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0], "Morvane比图工具|不能比较文件，因为它是使用更新版本的AutoCAD创建的。\n" + tooNew);
  EXPECT_EQ(shown[1], "图纸比较结果|发现有(1)个实体不同。请使用工具条定位到详细差异位置。");
  EXPECT_EQ(Dialogs::instance().takeDialogs().size(), 3u);  // the cancelled one, then the two of this run
  EXPECT_EQ(state.sourceFileName, a);
}

TEST_F(RunFixture, SettingsDialogBeforeTheComparisonCanCancelIt) {
  CCompareConfigFile::instance().SetIsShow(1);
  Dialogs::instance().scriptAnswers({"cancel"});
  RunInteractiveCompare(a, b);
  EXPECT_TRUE(boxes().empty());
  EXPECT_FALSE(state.source);
  // Confirmed with the colour unchecked, the recoloured line compares equal.
  Dialogs::instance().scriptAnswers({"uncheck 107", "ok"});
  RunInteractiveCompare(a, b);
  EXPECT_EQ(boxes(), std::vector<std::string>{"图纸比较结果|文件完全相同。"});
  const auto events = Dialogs::instance().takeDialogs();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[1].title, "Morvane比图参数设置");
}

TEST_F(RunFixture, RunFromADocumentCommandOpensInTheApplicationContext) {
  const std::string other = file("other.dxf", lines(0, 0));
  std::string error;
  ASSERT_NE(host.openDocument(other, error), nullptr) << error;
  ASSERT_EQ(platform::addCommand("VKTESTRUN", "RunIt", "RunIt", platform::kCmdModal,
                                 [&] { RunInteractiveCompare(a, b); }),
            platform::ErrorStatus::eOk);
  host.execute("RunIt\n");
  EXPECT_EQ(platform::documents().size(), 3u);
  EXPECT_EQ(boxes(), std::vector<std::string>{"图纸比较结果|发现有(1)个实体不同。请使用工具条定位到详细差异位置。"});
}

TEST_F(RunFixture, OpenOnlyLeavesTheCheckedPairWithoutComparing) {
  Dialogs::instance().scriptAnswers({"set 101 " + a, "set 102 " + b, "ok"});
  RunOpenOnly();
  EXPECT_TRUE(boxes().empty());
  EXPECT_EQ(platform::documents().size(), 2u);
  ASSERT_TRUE(state.source && state.destination);
  EXPECT_TRUE(state.differences.empty());
  EXPECT_TRUE(state.source->entityMap.empty());
}

TEST_F(RunFixture, OpenPairComparesWithTheAreaAndBasePointsOfItsRecords) {
  // The destination is the source moved by (100, 50), with a line far off the compared area.
  const std::string source = file("src.dxf", lines(0, 0));
  const std::string moved = file("moved.dxf", lines(100, 50) + "|0|LINE|8|0|10|300|20|300|30|0|11|310|21|300|31|0");
  Dialogs::instance().scriptAnswers({"set 101 " + source, "set 102 " + moved, "ok"});
  RunOpenOnly();
  ASSERT_TRUE(state.source && state.destination);

  // Without base points everything differs.
  RunCompareOpenPair();
  EXPECT_EQ(boxes(), std::vector<std::string>{
                         "图纸比较结果|发现有(5)个实体不同。请在左侧 比图结果显示面板 上双击，进行定位。"});
  // With the base points only the line off the area differs; the records made afresh kept the points.
  state.destination->basePoint = {100, 50, 0};
  RunCompareOpenPair();
  EXPECT_EQ(boxes(), std::vector<std::string>{
                         "图纸比较结果|发现有(1)个实体不同。请在左侧 比图结果显示面板 上双击，进行定位。"});
  // With the area as well the two compare equal.
  for (CDrawingRecord* record : {state.source.get(), state.destination.get()}) {
    record->areaCorner1 = {-1, -1, 0};
    record->areaCorner2 = {11, 11, 0};
  }
  RunCompareOpenPair();
  EXPECT_EQ(boxes(), std::vector<std::string>{"图纸比较结果|文件完全相同"});
  EXPECT_EQ(state.destination->basePoint.x, 100);
  EXPECT_EQ(state.resultReady, 1);
  EXPECT_EQ(state.allRectangles, 1);
  EXPECT_DOUBLE_EQ(state.sourceExtentsMin[0], 0);
  EXPECT_DOUBLE_EQ(state.destinationExtentsMin[0], 100);
  EXPECT_EQ(state.paletteDestinationName, moved);

  // Once one of the pair is closed the command does nothing.
  host.closeDocument(host.find(state.destination->document));
  RunCompareOpenPair();
  EXPECT_TRUE(boxes().empty());
}
