// Stepping through the records in two drawings open in the headless host: the steps, their messages and
// lines, what each drawing is sent, the rectangles, the differences-only view, the result palette, layers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/ComparisonState.h"
#include "platform/commands.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "platform/headless/palettes.h"
#include "platform/host.h"
#include "results/DiffNavigator.h"
#include "results/ResultPalette.h"
#include "support/TestSupport.h"

namespace {

using headless::HostSession;

constexpr const char* kGroup = "VKNAVIGATIONTEST";

struct Navigation : ::testing::Test {
  HostSession& host = HostSession::instance();
  headless::Console& console = headless::Console::instance();
  CComparisonState& state = CComparisonState::instance();
  CDiffNavigator& navigator = CDiffNavigator::instance();
  headless::HeadlessDocument* source = nullptr;
  headless::HeadlessDocument* destination = nullptr;

  void SetUp() override {
    host.shutdown();
    vktest::quietConsole();
    console.reset();
    state.ReleaseDrawings();
    state.Prepare();
    state.compareEnded = state.entitiesHidden = state.viewSync = state.allRectangles = 0;
    state.sourceOffset = state.destinationOffset = {};
    std::string error;
    source = host.openDocument(vktest::dataDir() + "/two_entities.dxf", error);
    destination = host.openDocument(vktest::dataDir() + "/two_entities_recoloured.dxf", error);
    ASSERT_TRUE(source && destination) << error;
    state.source = CDrawingRecord::fromDocument(*source);
    state.destination = CDrawingRecord::fromDocument(*destination);
    // The commands the navigation queues to the drawings, as the module registers them.
    const auto add = [](const char* name, void (*run)()) { platform::addCommand(kGroup, name, name, platform::kCmdModal, run); };
    add("VkDrawDiffRectDes", [] { CDiffNavigator::instance().DrawCurrentRectangle(DrawingSide::Destination); });
    add("VkDrawAllDiffRectDes", [] { CDiffNavigator::instance().DrawAllRectangles(DrawingSide::Destination); });
    add("VkDrawAllDiffRectSrc", [] { CDiffNavigator::instance().DrawAllRectangles(DrawingSide::Source); });
    add("ShowDiff", [] { CDiffNavigator::instance().ShowDiff(); });
    add("ShowAll", [] { CDiffNavigator::instance().ShowAll(); });
    console.takeTranscript();
  }
  void TearDown() override {
    platform::removeGroup(kGroup);
    CResultPalette::instance().Destroy();
    state.ReleaseDrawings();
    state.Prepare();
    host.shutdown();
    console.reset();
  }

  CDiffType& add(int kind, double minX, double minY, double maxX, double maxY, const std::string& text) {
    auto record = std::make_unique<CDiffType>();
    record->kind = kind;
    record->extents = {minX, minY, 0, maxX, maxY, 0};
    record->text = text;
    state.differences.push_back(std::move(record));
    return *state.differences.back();
  }
  // What was printed since the last look.
  std::string printed() { return console.takeTranscript(); }
  // Runs what was queued to the drawings and answers what it printed.
  std::string runQueued() {
    printed();
    host.runQueued();
    return printed();
  }
  std::vector<std::string> boxes() {
    std::vector<std::string> out;
    for (const auto& box : console.takeMessageBoxes()) out.push_back(box.text);
    return out;
  }
  static std::vector<platform::ObjectId> entities(headless::HeadlessDocument* d) {
    return d->database().blockRecord(d->database().modelSpaceId()).entityIds();
  }
  static bool visible(headless::HeadlessDocument* d, platform::ObjectId id) {
    return d->database().openEntity(id).isVisible();
  }
};

// The text of a ZOOM Window as the host echoes the queued answers.
std::string zoomEcho(const char* first, const char* second) {
  return std::string("W\n指定第一个角点: ") + first + "\n指定对角点: " + second + "\n";
}

TEST_F(Navigation, OneRecordNextNextPreviousStopsAtBothEndsWithoutWrapping) {
  add(kDiffChanged, 0, 0, 20, 10, "直线颜色不相同,");
  const std::string line = "\n定位到第1个不同点(共1不同点),差异:直线颜色不相同,";
  EXPECT_EQ(navigator.NextDiff(), 1);
  EXPECT_EQ(printed(), line);
  EXPECT_TRUE(boxes().empty());
  EXPECT_EQ(navigator.NextDiff(), 1);
  EXPECT_EQ(printed(), line);
  const auto last = console.takeMessageBoxes();
  ASSERT_EQ(last.size(), 1u);
  EXPECT_EQ(last[0].text, "已到最后一个不同点(共1不同点)");
  EXPECT_EQ(last[0].style, platform::kMbOk);
  EXPECT_EQ(navigator.PrevDiff(), 1);
  EXPECT_EQ(printed(), line);
  EXPECT_EQ(boxes(), std::vector<std::string>{"已到第一个不同点(共1不同点)"});
  EXPECT_EQ(navigator.CurrentIndex(), 0);
  EXPECT_EQ(navigator.CurrentRecord(), state.differences[0].get());
}

TEST_F(Navigation, PreviousFirstLocatesTheFirstRecordAndTheShownNumberFollowsTheIndex) {
  add(kDiffAdded, 0, 0, 1, 1, "圆新增,");
  add(kDiffChanged, 10, 0, 11, 1, "直线图层不相同,");
  add(kDiffAdded, 20, 0, 21, 1, "文字新增,");
  navigator.PrevDiff();
  EXPECT_EQ(printed(), "\n定位到第1个不同点(共3不同点),差异:圆新增,");
  EXPECT_TRUE(boxes().empty());
  navigator.NextDiff();
  navigator.NextDiff();
  EXPECT_EQ(printed(), "\n定位到第2个不同点(共3不同点),差异:直线图层不相同,\n定位到第3个不同点(共3不同点),差异:文字新增,");
  navigator.NextDiff();
  EXPECT_EQ(boxes(), std::vector<std::string>{"已到最后一个不同点(共3不同点)"});
  navigator.PrevDiff();
  EXPECT_EQ(printed(), "\n定位到第3个不同点(共3不同点),差异:文字新增,\n定位到第2个不同点(共3不同点),差异:直线图层不相同,");
  // A new result starts afresh; ending the comparison releases the current record.
  state.Prepare();
  add(kDiffAdded, 0, 0, 1, 1, "圆新增,");
  EXPECT_EQ(navigator.CurrentIndex(), -1);
  EXPECT_EQ(navigator.CurrentRecord(), nullptr);
  navigator.NextDiff();
  EXPECT_NE(printed().find("第1个不同点(共1不同点)"), std::string::npos);
  navigator.Release();
  EXPECT_EQ(navigator.CurrentRecord(), nullptr);
}

TEST_F(Navigation, AnEmptyResultMakesBothStepsDoNothing) {
  EXPECT_EQ(navigator.NextDiff(), 0);
  EXPECT_EQ(navigator.PrevDiff(), 0);
  EXPECT_EQ(printed(), "");
  EXPECT_TRUE(boxes().empty());
  EXPECT_EQ(runQueued(), "");
  EXPECT_EQ(navigator.CurrentIndex(), -1);
}

TEST_F(Navigation, LocateZoomsEachDrawingByItsOffsetThenTheDestinationDrawsTheRectangle) {
  state.destinationOffset = {100, 0, 0};
  add(kDiffChanged, 7, 8, 7, 8, "点颜色不相同,");  // a point: 13 units beyond it on every side
  navigator.NextDiff();
  printed();
  host.activate(source);  // the source's queue runs first
  const std::string shown = runQueued();
  const std::string sourceZoom = zoomEcho("-6.00,-5.00", "20.00,21.00");
  const std::string destinationZoom = zoomEcho("94.00,-5.00", "120.00,21.00");
  // Each text begins with a cancel: the source gets its window and then the cancel alone, the destination
  // its window and then the rectangle's command.
  const std::size_t a = shown.find(sourceZoom), b = shown.find("命令: *取消*\n命令: *取消*\n", a),
                    c = shown.find(destinationZoom, b), d = shown.find("命令: *取消*\n命令: _VkDrawDiffRectDes\n点颜色不相同, ", c);
  ASSERT_NE(a, std::string::npos) << shown;
  EXPECT_TRUE(b != std::string::npos && c != std::string::npos && d != std::string::npos) << shown;
  // 26 units across in both views, each centred on the point in its own drawing.
  for (auto [document, x] : {std::pair{source, 7.0}, std::pair{destination, 107.0}}) {
    const platform::Extents3d view = document->view.extents();
    EXPECT_NEAR(view.min.x + view.max.x, 2 * x, 1e-9);
    EXPECT_GE(view.max.x - view.min.x, 26.0 - 1e-9);
    EXPECT_GE(view.max.y - view.min.y, 26.0 - 1e-9);
    EXPECT_TRUE(view.max.x - view.min.x < 26.0 + 1e-9 || view.max.y - view.min.y < 26.0 + 1e-9);
  }
}

TEST_F(Navigation, ADeletedRecordIsLocatedTwiceAndReportedOnce) {
  add(kDiffDeleted, 0, 0, 50, 50, "圆删除,");
  navigator.NextDiff();
  EXPECT_EQ(printed(), "\n定位到第1个不同点(共1不同点),差异:圆删除,");
  const std::string shown = runQueued();
  const std::string zoom = zoomEcho("-65.00,-65.00", "115.00,115.00");
  std::size_t zooms = 0;
  for (std::size_t at = shown.find(zoom); at != std::string::npos; at = shown.find(zoom, at + 1)) ++zooms;
  EXPECT_EQ(zooms, 4u) << shown;  // twice in each drawing
}

TEST_F(Navigation, TheDestinationRectangleHasItsKindsColourAndItsEdgesInOrder) {
  state.destinationOffset = {1, 2, 0};
  add(kDiffAdded, 0, 0, 100, 2, "直线新增,");
  navigator.NextDiff();
  runQueued();
  EXPECT_TRUE(source->view.vectors.empty());
  const auto& v = destination->view.vectors;
  ASSERT_EQ(v.size(), 4u);
  // Margins of a twentieth of the framed size: 5 in x, and 0.5 in y (2 high is framed as 10).
  const platform::Point3d ll{-4, 1.5, 0}, lr{106, 1.5, 0}, ur{106, 4.5, 0}, ul{-4, 4.5, 0};
  const platform::Point3d order[] = {ll, lr, ur, ul, ll};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(v[i].from.x, order[i].x, 1e-9) << i;
    EXPECT_NEAR(v[i].from.y, order[i].y, 1e-9) << i;
    EXPECT_NEAR(v[i].to.x, order[i + 1].x, 1e-9) << i;
    EXPECT_NEAR(v[i].to.y, order[i + 1].y, 1e-9) << i;
    EXPECT_EQ(v[i].from.z, 0.0);
    EXPECT_EQ(v[i].colorIndex, 1);
    EXPECT_TRUE(v[i].highlight);
  }
  // Changed records are green (3) and deleted ones yellow (2); with the rectangles of all records wanted,
  // the others come first, plain, and the current one last, highlighted.
  add(kDiffDeleted, 500, 500, 510, 510, "圆删除,");
  state.allRectangles = 1;
  navigator.NextDiff();
  runQueued();
  ASSERT_EQ(v.size(), 8u);
  EXPECT_EQ(v[0].colorIndex, 1);
  EXPECT_FALSE(v[0].highlight);
  EXPECT_EQ(v[4].colorIndex, 2);
  EXPECT_TRUE(v[4].highlight);
  EXPECT_NEAR(v[4].from.x, 501 - 0.5, 1e-9);
}

TEST_F(Navigation, AllRectanglesToggleDrawsThemInBothDrawingsAndRegeneratesWhenCleared) {
  state.sourceOffset = {-10, 0, 0};
  add(kDiffChanged, 0, 0, 10, 10, "直线颜色不相同,");
  add(kDiffAdded, 30, 0, 40, 10, "圆新增,");
  navigator.ToggleAllRectangles();
  EXPECT_EQ(state.allRectangles, 1);
  runQueued();
  ASSERT_EQ(source->view.vectors.size(), 8u);
  ASSERT_EQ(destination->view.vectors.size(), 8u);
  EXPECT_NEAR(source->view.vectors[0].from.x, -10 - 0.5, 1e-9);
  EXPECT_NEAR(destination->view.vectors[0].from.x, -0.5, 1e-9);
  EXPECT_EQ(destination->view.vectors[4].colorIndex, 1);
  navigator.ToggleAllRectangles();
  EXPECT_EQ(state.allRectangles, 0);
  runQueued();
  EXPECT_TRUE(source->view.vectors.empty());
  EXPECT_TRUE(destination->view.vectors.empty());
}

TEST_F(Navigation, DifferencesOnlyHidesWhatNoRecordNamesAndBackShowsItAgain) {
  const auto src = entities(source), dst = entities(destination);
  ASSERT_EQ(src.size(), 2u);
  ASSERT_EQ(dst.size(), 2u);
  CDiffType& changed = add(kDiffChanged, 0, 0, 10, 10, "直线颜色不相同,");
  changed.sourceId = src[0];
  changed.destinationId = dst[0];
  // An entity hidden in the drawing already stays hidden when everything is shown again.
  ASSERT_EQ(destination->database().setVisibility(dst[1], false), platform::ErrorStatus::eOk);

  navigator.ToggleShow();
  EXPECT_EQ(navigator.OnlyDifferences(), 0);
  const std::string first = runQueued();
  EXPECT_LT(first.find("命令: ShowDiff"), first.rfind("命令: ShowDiff")) << first;  // in both drawings
  EXPECT_TRUE(visible(source, src[0]));
  EXPECT_FALSE(visible(source, src[1]));
  EXPECT_TRUE(visible(destination, dst[0]));
  EXPECT_FALSE(visible(destination, dst[1]));
  EXPECT_EQ(state.entitiesHidden, 1);

  navigator.ToggleShow();
  EXPECT_NE(runQueued().find("命令: ShowAll"), std::string::npos);
  EXPECT_TRUE(visible(source, src[1]));
  EXPECT_FALSE(visible(destination, dst[1]));
  EXPECT_EQ(state.entitiesHidden, 0);
  EXPECT_EQ(navigator.OnlyDifferences(), 1);

  // The result toggle works on the entities-hidden flag: set, differences only; clear, everything.
  navigator.ResultShow();
  runQueued();
  EXPECT_EQ(state.entitiesHidden, 1);
  EXPECT_FALSE(visible(source, src[1]));
  navigator.ResultShow();
  runQueued();
  EXPECT_EQ(state.entitiesHidden, 0);
  EXPECT_TRUE(visible(source, src[1]));

  // A drawing outside the comparison is left alone.
  std::string error;
  headless::HeadlessDocument* other = host.openDocument(vktest::dataDir() + "/two_entities.dxf", error);
  ASSERT_NE(other, nullptr) << error;
  printed();
  host.execute("ShowDiff\n");
  EXPECT_NE(printed().find("not one of the two compared drawings"), std::string::npos);
  for (platform::ObjectId id : entities(other)) EXPECT_TRUE(visible(other, id));
}

TEST_F(Navigation, PaletteListsRangesWithTheirMembersAndAChoiceLocatesTheRecord) {
  add(kDiffChanged, 0, 0, 10, 10, "直线颜色不相同,");
  add(kDiffAdded, 5, 5, 12, 12, "圆新增,");
  add(kDiffAdded, 100, 100, 110, 110, "文字新增,");
  state.ranges.Build(state.sourceOffset, state.destinationOffset);
  CResultPalette& palette = CResultPalette::instance();
  const int first = palette.Fill(state);
  EXPECT_EQ(palette.Fill(state), first + 1);  // each fill gets an index of its own
  palette.Show();
  const headless::PaletteSet* set = headless::Palettes::instance().find(palette.Set());
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(set->title, "比图结果显示面板");
  EXPECT_TRUE(set->visible);
  EXPECT_EQ(headless::Palettes::render(*set),
            "比图结果显示面板\n"
            "  1   范围1\n"
            "      2   直线颜色不相同,,1,1\n"
            "      3   圆新增,,1,2\n"
            "  4   范围2\n"
            "      5   文字新增,,2,1\n");

  // The host's command draws the tree; choosing a member locates its record; a range locates nothing.
  printed();
  host.execute("PALETTE\n\n");
  EXPECT_NE(printed().find("  4   范围2\n"), std::string::npos);
  host.execute("PALETTE 5\n");
  EXPECT_NE(printed().find("\n定位到第3个不同点(共3不同点),差异:文字新增,"), std::string::npos);
  EXPECT_EQ(navigator.CurrentIndex(), 2);
  runQueued();
  host.execute("PALETTE 范围1\n");
  EXPECT_EQ(printed().find("定位到"), std::string::npos);
  host.execute("PALETTE 圆新增,,1,2\n");
  EXPECT_NE(printed().find("定位到第2个不同点"), std::string::npos);
  // The next step goes on from the record chosen.
  navigator.NextDiff();
  EXPECT_NE(printed().find("定位到第3个不同点"), std::string::npos);
  host.execute("PALETTE 9\n");
  EXPECT_NE(printed().find("选项板上没有这个条目：9"), std::string::npos);

  // Entries of an earlier result locate nothing; clearing empties the tree.
  state.Prepare();
  add(kDiffAdded, 0, 0, 1, 1, "圆新增,");
  host.execute("PALETTE 2\n");
  EXPECT_EQ(printed().find("定位到"), std::string::npos);
  palette.Clear();
  EXPECT_TRUE(palette.Entries().empty());
  EXPECT_TRUE(headless::Palettes::instance().find(palette.Set())->items.empty());
}

TEST_F(Navigation, CreateLayerAddsItOnceWithColour30AndRefusesABadName) {
  const std::size_t before = destination->database().layers().size();
  const platform::ObjectId id = CreateLayer(*destination, "比图差异");
  ASSERT_FALSE(id.isNull());
  const platform::LayerRecord* layer = destination->database().layer("比图差异");
  ASSERT_NE(layer, nullptr);
  EXPECT_EQ(layer->id, id);
  EXPECT_EQ(layer->colorIndex, 30);
  EXPECT_EQ(CreateLayer(*destination, "比图差异"), id);
  EXPECT_EQ(destination->database().layers().size(), before + 1);
  printed();
  EXPECT_TRUE(CreateLayer(*destination, "a<b").isNull());
  EXPECT_EQ(printed(), "图层创建失败");
  EXPECT_EQ(destination->database().layers().size(), before + 1);
}

}  // namespace
