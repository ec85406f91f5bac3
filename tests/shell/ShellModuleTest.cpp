// The module loaded into the headless host as the host loads it: its commands, LISP functions, service,
// reactor and prompts, driven from the command line with the comparison state read and set beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/ComparisonState.h"
#include "platform/application.h"
#include "platform/documents.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "shell/CVkAcadCompareDwgApp.h"
#include "shell/CVkAcadReactor.h"
#include "shell/CommandTable.h"
#include "shell/IdArray.h"
#include "LoadedModule.h"
#include "ui/CompareConfigFile.h"

namespace {

using headless::HostSession;

const std::string kData = VK_TEST_DATA_DIR;
constexpr const char* kNotComparing = "非比图环境，请选择要比较的图纸";
constexpr const char* kRestoreFirst = "先还原所有实体,才能进行此操作";

// The commands that run the guarded test.
const std::vector<std::string> kGuarded = {"VKSetCompareArea", "VKSetCompareBasePt", "VKUniversallyCompareFile",
                                           "VkCompareSet", "VkShowAllDiffRect"};

struct ShellModule : LoadedModule {
  headless::HeadlessDocument* source = nullptr;
  headless::HeadlessDocument* destination = nullptr;

  void SetUp() override { load("vk_shell_module"); }
  headless::HeadlessDocument* open(const std::string& name) {
    std::string error;
    headless::HeadlessDocument* d = host.openDocument(kData + "/" + name, error);
    EXPECT_NE(d, nullptr) << error;
    return d;
  }
  // Both drawings open and held by the comparison, as a run on open documents leaves them.
  void holdPair() {
    source = open("two_entities.dxf");
    destination = open("two_entities_recoloured.dxf");
    for (auto [record, document] : {std::pair{&state.source, source}, std::pair{&state.destination, destination}}) {
      *record = CDrawingRecord::fromDatabase(document->database());
      (*record)->document = static_cast<platform::Document*>(document);
      (*record)->fileName = document->fileName();
    }
    console.takeTranscript();
  }
};

TEST_F(ShellModule, LoadRegistersTheTableTheServiceAndTheHookAndUnloadTakesThemAway) {
  const auto table = CommandTable();
  ASSERT_EQ(table.size(), 25u);
  for (const ShellCommand& c : table) {
    const headless::Command* found = host.findCommand(std::string("_") + c.localName);
    ASSERT_NE(found, nullptr) << c.localName;
    EXPECT_EQ(found->group, kCommandGroup);
    EXPECT_EQ(found->localName, c.localName);
    EXPECT_EQ(found->flags, c.flags) << c.localName;
  }
  for (const char* session : {"VkCompareFile", "VKOpenDwgFiles"})
    EXPECT_EQ(host.findCommand(session)->flags, platform::kCmdSession);
  EXPECT_EQ(host.findCommand("VKShowAll")->flags, platform::kCmdModal);
  auto* services = static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary"));
  EXPECT_NE(services->at("VkAcadCompareDwg"), nullptr);
  EXPECT_TRUE(CVkAcadCompareDwgApp::instance().HookInstalled());
  EXPECT_TRUE(ModuleReactor().IsAttached());
  // The module folder ends with its separator; the upper folder is two levels above the module file.
  const std::string folder = CVkAcadCompareDwgApp::instance().ModuleFolder();
  EXPECT_EQ(std::filesystem::path(VK_MODULE_PATH).parent_path().string() + "/", folder);
  EXPECT_EQ(std::filesystem::path(VK_MODULE_PATH).parent_path().parent_path().string(),
            CVkAcadCompareDwgApp::instance().UpperFolder());

  host.unloadModule(module);
  EXPECT_EQ(host.findCommand("VkCompareFile"), nullptr);
  EXPECT_EQ(services->at("VkAcadCompareDwg"), nullptr);
  EXPECT_FALSE(CVkAcadCompareDwgApp::instance().HookInstalled());
}

TEST_F(ShellModule, LispFunctionsRefuseTwoEmptyNamesAndPassOneOn) {
  open("two_entities.dxf");
  console.takeTranscript();
  EXPECT_NE(type("(lsp_CompareFile \"\" \"\")\n").find("文件名不能为空"), std::string::npos);
  EXPECT_NE(type("(lsp_CompareFiles_Silent \"\" \"\")\n").find("文件名不能为空"), std::string::npos);
  // One empty name goes on to the run, which asks for that file.
  const std::string one = type("(lsp_CompareFile \"" + kData + "/two_entities.dxf\" \"\")\n");
  EXPECT_EQ(one.find("文件名不能为空"), std::string::npos) << one;
  EXPECT_NE(one.find("Morvane比图文件选择"), std::string::npos) << one;  // the file selection dialog asks
  // No argument list at all: the call fails.
  EXPECT_NE(type("(lsp_CompareFile)\n").find("; 错误: 函数 lsp_CompareFile 调用失败"), std::string::npos);
  // The silent function still compares, and answers the run's result.
  const std::string silent = type("(lsp_CompareFiles_Silent \"" + kData + "/two_entities.dxf\" \"" + kData +
                                  "/two_entities_recoloured.dxf\")\n");
  EXPECT_NE(silent.find("发现有(1)个实体不同"), std::string::npos) << silent;
  EXPECT_NE(silent.find("\n0\n"), std::string::npos) << silent;
  // Both functions are defined for every drawing that loads, and go with it.
  open("two_entities_recoloured.dxf");
  EXPECT_NE(type("(lsp_CompareFile \"\" \"\")\n").find("文件名不能为空"), std::string::npos);
  type("CLOSE\nCLOSE\n");
  EXPECT_NE(type("(lsp_CompareFile \"\" \"\")\n").find("; 错误: 无函数定义: LSP_COMPAREFILE"), std::string::npos);
}

TEST_F(ShellModule, GuardedCommandsDoNothingBeforeAComparisonAndRefuseAfterItsEnd) {
  open("two_entities.dxf");
  for (const std::string& name : kGuarded)
    EXPECT_EQ(type(name + "\n"), "命令: " + name + "\n") << name;

  holdPair();
  type("VkEndCompare\n");
  EXPECT_EQ(state.compareEnded, 1);
  // The refusal leaves its line open, as the program prints it; the next prompt begins a line of its own.
  bool first = true;
  for (const std::string& name : kGuarded) {
    const std::string shown = type(name + "\n");
    EXPECT_EQ(shown, (first ? "" : "\n") + ("命令: " + name + "\n" + kNotComparing)) << name;
    first = false;
  }
  // The navigation commands test the end of the comparison alone.
  for (const char* name : {"VkPrevDiff", "VkNextDiff", "VkOnlyDiff"})
    EXPECT_NE(type(std::string(name) + "\n").find(kNotComparing), std::string::npos) << name;

  // Hidden entities are named before the end of the comparison; VkShowAllDiffRect tests the end first.
  state.entitiesHidden = 1;
  EXPECT_NE(type("VKSetCompareArea\n").find(kRestoreFirst), std::string::npos);
  const std::string rect = type("VkShowAllDiffRect\n");
  EXPECT_NE(rect.find(kNotComparing), std::string::npos);
  EXPECT_EQ(rect.find(kRestoreFirst), std::string::npos);
}

TEST_F(ShellModule, EndCompareClearsTheFlagsAndQueuesShowAllToBothDrawings) {
  holdPair();
  state.viewSync = state.allRectangles = state.entitiesHidden = 1;
  state.paletteIndex = 4;
  const std::string shown = type("VkEndCompare\n");
  EXPECT_EQ(state.compareEnded, 1);
  EXPECT_EQ(state.viewSync, 0);
  EXPECT_EQ(state.allRectangles, 0);
  EXPECT_EQ(state.entitiesHidden, 0);
  EXPECT_EQ(state.paletteIndex, 0);
  // Both drawings ran ShowAll, the destination's first; the records stay.
  const std::size_t first = shown.find("命令: ShowAll\n");
  ASSERT_NE(first, std::string::npos) << shown;
  EXPECT_NE(shown.find("命令: ShowAll\n", first + 1), std::string::npos) << shown;
  EXPECT_NE(state.source, nullptr);

  // With a result ready, or without the views in step, nothing is queued.
  state.viewSync = 1;
  state.resultReady = 1;
  EXPECT_EQ(type("VkEndCompare\n").find("ShowAll"), std::string::npos);
  EXPECT_EQ(type("VkEndCompare\n").find("ShowAll"), std::string::npos);
}

TEST_F(ShellModule, AreaOfTheSourceIsAskedAfterTheEndAndKeptNormalised) {
  holdPair();
  type("VkEndCompare\n");
  // Coinciding corners ask again; the corners kept are the per-axis minimum and maximum.
  const std::string shown = type("VKSetCompareAreaSrc\n5,5\n5,5\n10,8\n2,3\n");
  EXPECT_NE(shown.find("指定比较范围\n指定范围第一个角点<全图>：5,5\n指定对角点：\n5,5\n"), std::string::npos) << shown;
  EXPECT_EQ(state.source->areaCorner1, (platform::Point3d{2, 3, 0}));
  EXPECT_EQ(state.source->areaCorner2, (platform::Point3d{10, 8, 0}));
  EXPECT_EQ(state.destination->areaCorner2, platform::Point3d());
  EXPECT_EQ(state.viewSync, 1);
  EXPECT_EQ(platform::curDocument(), static_cast<platform::Document*>(source));
  // Enter keeps the whole drawing.
  type("VKSetCompareAreaSrc\n\n");
  EXPECT_EQ(state.source->areaCorner2, platform::Point3d());
  // The variant for both drawings refuses after the end.
  EXPECT_NE(type("VKSetCompareArea\n").find(kNotComparing), std::string::npos);
}

TEST_F(ShellModule, AreaAndBasePointOfBothDrawingsAskSourceThenDestination) {
  holdPair();
  state.viewSync = 1;
  type("VKSetCompareArea\n0,0\n4,4\n1,1,1\n-1,-1,0\n");
  EXPECT_EQ(state.source->areaCorner2, (platform::Point3d{4, 4, 0}));
  EXPECT_EQ(state.destination->areaCorner1, (platform::Point3d{-1, -1, 0}));
  EXPECT_EQ(state.destination->areaCorner2, (platform::Point3d{1, 1, 1}));
  const std::string shown = type("VKSetCompareBasePt\n3,4\n\n");
  EXPECT_NE(shown.find("指定比较基点<原点>：3,4\n"), std::string::npos) << shown;
  EXPECT_EQ(state.source->basePoint, (platform::Point3d{3, 4, 0}));
  EXPECT_EQ(state.destination->basePoint, platform::Point3d());
  type("VKSetCompareBasePtDes\n7,7,7\n");
  EXPECT_EQ(state.destination->basePoint, (platform::Point3d{7, 7, 7}));
  EXPECT_EQ(state.viewSync, 1);
  // Without the drawings there is nothing to ask in, and the command says so.
  resetState();
  EXPECT_NE(type("VKSetCompareBasePtSrc\n").find("no source drawing"), std::string::npos);
}

TEST_F(ShellModule, ClosingACompareDrawingTakesItOffTheOpenedListOnce) {
  headless::HeadlessDocument* mine = open("two_entities.dxf");
  headless::HeadlessDocument* compared = open("two_entities_recoloured.dxf");
  const std::string other = mine->fileName() + ".other";
  state.openedDrawings = {compared->fileName(), other};
  // The user's own drawing is not on the list: closing it changes nothing.
  host.activate(mine);
  type("CLOSE\n");
  EXPECT_EQ(state.openedDrawings.size(), 2u);
  type("CLOSE\n");
  EXPECT_EQ(state.openedDrawings, std::vector<std::string>{other});
  // Opened again by the user, closed again: no entry left to find.
  open("two_entities_recoloured.dxf");
  type("CLOSE\n");
  EXPECT_EQ(state.openedDrawings, std::vector<std::string>{other});
}

TEST_F(ShellModule, ReactorTakesBackTheDbmodOfTheCurrentDrawingOnlyAndIgnoresOtherCommands) {
  headless::HeadlessDocument* a = open("two_entities.dxf");
  headless::HeadlessDocument* b = open("two_entities_recoloured.dxf");
  state.openedDrawings = {a->fileName(), b->fileName()};
  for (headless::HeadlessDocument* d : {a, b}) {
    d->pushDbmod();
    d->markModified();
  }
  CVkAcadReactor reactor(false);
  EXPECT_FALSE(reactor.IsAttached());
  for (const char* ignored : {"ZOOM", "close", "Quit", "OPEN"}) reactor.commandWillStart(ignored);
  EXPECT_EQ(state.openedDrawings.size(), 2u);
  EXPECT_EQ(b->dbmod(), 1);
  reactor.commandWillStart("SETVAR");
  EXPECT_EQ(reactor.LastSetvar(), "SETVAR");
  reactor.commandWillStart("QUIT");  // b is current
  EXPECT_EQ(state.openedDrawings, std::vector<std::string>{a->fileName()});
  EXPECT_EQ(b->dbmod(), 0);
  EXPECT_EQ(a->dbmod(), 1);
  reactor.commandWillStart("QUIT");
  EXPECT_EQ(state.openedDrawings.size(), 1u);
}

TEST_F(ShellModule, ShowAllMakesEveryEntityOfTheCurrentDrawingVisible) {
  headless::HeadlessDocument* d = open("two_entities.dxf");
  const std::vector<platform::ObjectId> ids = d->database().blockRecord(d->database().modelSpaceId()).entityIds();
  ASSERT_FALSE(ids.empty());
  for (platform::ObjectId id : ids) ASSERT_EQ(d->database().setVisibility(id, false), platform::ErrorStatus::eOk);
  EXPECT_EQ(type("VKShowAll\n"), "命令: VKShowAll\n");
  for (platform::ObjectId id : ids) EXPECT_TRUE(d->database().openEntity(id).isVisible());
  EXPECT_EQ(d->dbmod() & 1, 1);
}

TEST_F(ShellModule, ResultCommandsStepDrawToggleAndEndWithThePalette) {
  holdPair();
  // VkResultShow does nothing while the views are not kept in step.
  EXPECT_EQ(type("VkResultShow\n"), "命令: VkResultShow\n");
  EXPECT_EQ(state.entitiesHidden, 0);
  // Without records the steps and the rectangle commands do nothing at all.
  for (const char* name : {"VkNextDiff", "VkPrevDiff", "VkDrawDiffRectDes", "VkDrawDiffRectSrc"})
    EXPECT_EQ(type(std::string(name) + "\n"), std::string("命令: ") + name + "\n") << name;

  // Compared as the open pair: the palette is filled, shown and its index kept.
  CCompareConfigFile::instance().SetIsShow(0);
  state.viewSync = 1;
  type("VKUniversallyCompareFile\n");
  ASSERT_EQ(state.differences.size(), 1u);
  EXPECT_NE(state.paletteIndex, 0);
  const std::string tree = type("PALETTE\n\n");
  EXPECT_NE(tree.find("比图结果显示面板\n  1   范围1\n      2   "), std::string::npos) << tree;
  // A step reports, zooms both drawings and draws the rectangle in the destination.
  const std::string step = type("VkNextDiff\n");
  EXPECT_NE(step.find("\n定位到第1个不同点(共1不同点),差异:" + state.differences[0]->text), std::string::npos) << step;
  EXPECT_NE(step.find("命令: _VkDrawDiffRectDes\n"), std::string::npos) << step;
  EXPECT_EQ(destination->view.vectors.size(), 4u);
  EXPECT_NE(type("PALETTE 2\n").find("定位到第1个不同点"), std::string::npos);
  // The source drawing's rectangle, in the source's view.
  host.activate(source);
  type("VkDrawDiffRectSrc\n");
  EXPECT_EQ(source->view.vectors.size(), 4u);

  // The result toggle hides what no record names, and the guarded commands wait for everything back.
  type("VkResultShow\n");
  EXPECT_EQ(state.entitiesHidden, 1);
  EXPECT_NE(type("VkCompareSet\n").find(kRestoreFirst), std::string::npos);
  type("VkResultShow\n");
  EXPECT_EQ(state.entitiesHidden, 0);

  type("VkEndCompare\n");
  EXPECT_EQ(state.paletteIndex, 0);
  EXPECT_EQ(type("PALETTE\n\n").find("范围1"), std::string::npos);
  EXPECT_NE(type("VkNextDiff\n").find(kNotComparing), std::string::npos);
}

TEST(ShellParts, EntryPointSlotsFollowTheMessageCodes) {
  for (int code = 1; code <= 16; ++code) EXPECT_EQ(CAcRxArxApp::SlotOf(code), code - 1);
  EXPECT_EQ(CAcRxArxApp::SlotOf(platform::kNullMsg), 16);
  for (int code : {-1, 17, 1000}) EXPECT_EQ(CAcRxArxApp::SlotOf(code), -1);
}

TEST(ShellParts, ModuleFoldersCutAtTheSeparators) {
  EXPECT_EQ(ModuleFolderOf("/opt/vk/lib/VkAcadCompareDwg.so"), "/opt/vk/lib/");
  EXPECT_EQ(UpperFolderOf("/opt/vk/lib/"), "/opt/vk");
  EXPECT_EQ(ModuleFolderOf("VkAcadCompareDwg.so"), "");
  EXPECT_EQ(UpperFolderOf(""), "");
  EXPECT_EQ(UpperFolderOf("/lib/"), "");
}

TEST(ShellParts, IdArrayDoublesUnder64KiBThenGrowsBy8192) {
  std::vector<std::size_t> steps;
  for (std::size_t c = 0; c < 40000; c = CIdArray::NextCapacity(c)) steps.push_back(c);
  EXPECT_EQ(steps, (std::vector<std::size_t>{0, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 24576,
                                            32768}));
  CIdArray ids;
  for (std::uint64_t v = 1; v <= 20; ++v) ids.append(platform::ObjectId{v});
  EXPECT_EQ(ids.length(), 20u);
  EXPECT_EQ(ids.capacity(), 32u);
  EXPECT_EQ(ids[0].value, 1u);
  EXPECT_EQ(ids[19].value, 20u);
}

}  // namespace
