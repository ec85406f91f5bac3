// The module's toolbar and message hook in the headless host: made at load and removed at unload, shown and
// hidden, its buttons pressed from the command line, and the two compared views kept in step.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "engine/ComparisonState.h"
#include "platform/headless/console.h"
#include "platform/headless/dialogs.h"
#include "platform/headless/host_session.h"
#include "platform/menus.h"
#include "platform/views.h"
#include "results/ViewMatching.h"
#include "shell/exports.h"
#include "shell/ToolbarHookIn.h"
#include "LoadedModule.h"

namespace {

using headless::HostSession;

const std::string kData = VK_TEST_DATA_DIR;

struct ToolbarHook : LoadedModule {
  void SetUp() override {
    CViewMatching::instance().Forget();
    // Dialogs read their answers from the lines typed, as in the shell.
    headless::Dialogs::instance().setTerminalInput([this](std::string_view prompt) { return host.readLine(prompt); });
    load("vk_toolbar_hook");
  }
  void TearDown() override {
    LoadedModule::TearDown();
    CViewMatching::instance().Forget();
    headless::Dialogs::instance().reset();
  }
  static std::optional<platform::ToolbarInfo> toolbar() {
    for (platform::ToolbarId id : platform::toolbars("Acad"))
      if (platform::toolbarInfo(id)->name == kToolbarName) return platform::toolbarInfo(id);
    return std::nullopt;
  }
  // The comparison of the two test drawings, run as a user runs it: the file dialog and the settings dialog
  // answered on the command line.
  void comparePair(const std::string& source = kData + "/two_entities.dxf",
                   const std::string& destination = kData + "/two_entities_recoloured.dxf") {
    const std::string shown = type("VkCompareFile\nset 101 " + source + "\nset 102 " + destination + "\nok\nok\n");
    ASSERT_TRUE(state.source && state.destination) << shown;
    ASSERT_NE(state.source->document, state.destination->document);
  }
  headless::HeadlessDocument& documentOf(const std::unique_ptr<CDrawingRecord>& record) {
    return *host.find(record->document);
  }
  static void expectSameWindow(const platform::Extents3d& a, const platform::Extents3d& b, double dx = 0.0,
                               double dy = 0.0) {
    EXPECT_NEAR(a.min.x + dx, b.min.x, 1e-5);
    EXPECT_NEAR(a.min.y + dy, b.min.y, 1e-5);
    EXPECT_NEAR(a.max.x + dx, b.max.x, 1e-5);
    EXPECT_NEAR(a.max.y + dy, b.max.y, 1e-5);
  }
};

}  // namespace

TEST_F(ToolbarHook, LoadMakesTheToolbarOnceAndUnloadTakesItAway) {
  ASSERT_TRUE(toolbar().has_value());
  EXPECT_EQ(toolbar()->buttons.size(), 8u);
  EXPECT_EQ(toolbar()->group, "Acad");
  host.unloadModule(module);
  EXPECT_FALSE(toolbar().has_value());
  std::string error;
  ASSERT_NE(host.loadModule(VK_MODULE_PATH, error), nullptr) << error;
  EXPECT_EQ(toolbar()->buttons.size(), 8u);
  EXPECT_EQ(platform::toolbars("Acad").size(), 1u);
}

TEST_F(ToolbarHook, TheExportAndShowccHidecc) {
  int value = 2;
  I_VkVisbleTooBar(value);
  EXPECT_FALSE(toolbar()->visible);
  value = 1;
  I_VkVisbleTooBar(value);
  EXPECT_TRUE(toolbar()->visible);
  value = 0;
  I_VkVisbleTooBar(value);
  EXPECT_FALSE(toolbar()->visible);
  type("Showcc\n");
  EXPECT_TRUE(toolbar()->visible);
  type("Hidecc\n");
  EXPECT_FALSE(toolbar()->visible);
  // The host's own command shows it too, and lists it as hidden before.
  EXPECT_NE(type("TOOLBAR\n\n").find("工具栏“Morvane图纸比较”（菜单组 Acad，隐藏），8 个按钮"), std::string::npos);
  type("-TOOLBAR\nMorvane图纸比较\nS\n");
  EXPECT_TRUE(toolbar()->visible);
  // Once it is gone, showing it says so and nothing else happens.
  RemoveCompareToolbar();
  EXPECT_NE(type("Showcc\n").find("没有工具栏“Morvane图纸比较”"), std::string::npos);
  value = 1;
  I_VkVisbleTooBar(value);
  EXPECT_FALSE(toolbar().has_value());
}

TEST_F(ToolbarHook, PressedButtonsRunTheirCommandsAsTyped) {
  // The first button opens the pair; its file dialog reads the lines typed after the press.
  const std::string opened = type("TOOLBAR 打开文件\nset 101 " + kData + "/two_entities.dxf\nset 102 " + kData +
                                  "/two_entities_recoloured.dxf\nok\n");
  EXPECT_NE(opened.find("命令: _VKOpenDwgFiles"), std::string::npos) << opened;
  EXPECT_EQ(host.documentList().size(), 2u);
  ASSERT_TRUE(state.source && state.destination);
  EXPECT_EQ(state.viewSync, 1);
  // The last one ends the comparison; a hidden toolbar's buttons cannot be pressed.
  type("Hidecc\n");
  EXPECT_NE(type("TOOLBAR 结束比图\n").find("已隐藏"), std::string::npos);
  EXPECT_EQ(state.compareEnded, 0);
  type("Showcc\n");
  const std::string ended = type("TOOLBAR\n结束比图\n");
  EXPECT_NE(ended.find("命令: _VkEndCompare"), std::string::npos) << ended;
  EXPECT_EQ(state.compareEnded, 1);
  EXPECT_EQ(state.viewSync, 0);
  EXPECT_NE(type("TOOLBAR 没有这个\n").find("没有标题为“没有这个”的按钮"), std::string::npos);
}

TEST_F(ToolbarHook, AWheelOnAnotherWindowPassesUntouched) {
  comparePair();
  std::string error;
  headless::HeadlessDocument* third = host.openDocument(kData + "/two_entities.dxf", error);
  ASSERT_NE(third, nullptr) << error;
  headless::HeadlessDocument& source = documentOf(state.source);
  headless::HeadlessDocument& destination = documentOf(state.destination);
  const platform::ViewState before[3] = {platform::viewState(source.view.window),
                                         platform::viewState(destination.view.window),
                                         platform::viewState(third->view.window)};
  host.wheel(*third, 1);
  host.runQueued();
  // The host zooms the third view as it zooms any view; the compared ones are left alone.
  EXPECT_NEAR(platform::viewState(third->view.window).height, before[2].height / 1.25, 1e-9);
  EXPECT_FALSE(platform::viewChanged(before[0], platform::viewState(source.view.window)));
  EXPECT_FALSE(platform::viewChanged(before[1], platform::viewState(destination.view.window)));
  // With the views not kept in step, a wheel on a compared view moves that view alone.
  state.viewSync = 0;
  host.wheel(source, 1);
  host.runQueued();
  EXPECT_TRUE(platform::viewChanged(before[0], platform::viewState(source.view.window)));
  EXPECT_FALSE(platform::viewChanged(before[1], platform::viewState(destination.view.window)));
}

TEST_F(ToolbarHook, TheViewsStayInStepAfterAWheelZoomOrAPan) {
  comparePair();
  ASSERT_EQ(state.viewSync, 1);
  headless::HeadlessDocument& source = documentOf(state.source);
  headless::HeadlessDocument& destination = documentOf(state.destination);
  const double heightBefore = source.view.height;
  host.wheel(source, 2);
  host.runQueued();
  EXPECT_NEAR(source.view.height, heightBefore / (1.25 * 1.25), 1e-9);
  expectSameWindow(source.view.extents(), destination.view.extents());
  // A pan with the middle button in the destination takes the source along.
  host.middleButtonPan(destination, 3.5, -2.0);
  host.runQueued();
  expectSameWindow(destination.view.extents(), source.view.extents());
  // A release that moved nothing sends nothing.
  const platform::ViewState still = platform::viewState(source.view.window);
  host.middleButtonPan(destination, 0.0, 0.0);
  EXPECT_TRUE(source.queue.empty());
  host.runQueued();
  EXPECT_FALSE(platform::viewChanged(still, platform::viewState(source.view.window)));
}

TEST_F(ToolbarHook, ARunEndsWithTheDestinationOnTheSourcesWindow) {
  // Two drawings of different extents: each opens on a window of its own.
  comparePair(kData + "/two_entities.dxf", kData + "/../../examples/door_rev_a.dxf");
  headless::HeadlessDocument& source = documentOf(state.source);
  headless::HeadlessDocument& destination = documentOf(state.destination);
  host.runQueued();
  expectSameWindow(source.view.extents(), destination.view.extents());
  // Compare-the-open-pair matches them again, whatever the destination showed before.
  state.viewSync = 0;
  host.wheel(destination, 3);
  host.runQueued();
  ASSERT_NEAR(destination.view.height, source.view.height / (1.25 * 1.25 * 1.25), 1e-9);
  type("VKUniversallyCompareFile\nok\n");
  ASSERT_EQ(state.resultReady, 1);
  host.runQueued();
  expectSameWindow(source.view.extents(), destination.view.extents());
}

TEST_F(ToolbarHook, TheOffsetsPlaceTheMatchedWindow) {
  comparePair();
  state.sourceOffset = {1.0, 2.0, 0.0};
  state.destinationOffset = {11.0, -3.0, 0.0};
  headless::HeadlessDocument& source = documentOf(state.source);
  headless::HeadlessDocument& destination = documentOf(state.destination);
  host.wheel(source, -1);
  host.runQueued();
  expectSameWindow(source.view.extents(), destination.view.extents(), 10.0, -5.0);
  host.wheel(destination, 1);
  host.runQueued();
  expectSameWindow(destination.view.extents(), source.view.extents(), -10.0, 5.0);
}

TEST_F(ToolbarHook, MenuGroupsComeAndGoWithTheirToolbarsAndCaretCCancels) {
  // A button of the user's own, its macro written with "^C" as menu files write it.
  const platform::ToolbarId mine = platform::addToolbar("Acad", "Mine");
  platform::addToolbarButton(mine, 100, "End", "", "^C^C_VkEndCompare ");
  const std::string pressed = type("TOOLBAR End\n");
  EXPECT_NE(pressed.find("命令: *取消*\n命令: *取消*\n命令: _VkEndCompare"), std::string::npos) << pressed;
  EXPECT_EQ(state.compareEnded, 1);
  const std::string listed = type("TOOLBAR L\n");
  EXPECT_NE(listed.find("宏: \"^C^C_VkEndCompare \""), std::string::npos) << listed;
  EXPECT_NE(listed.find("图标: 默认"), std::string::npos);
  type("-TOOLBAR\nALL\nH\n");
  EXPECT_FALSE(toolbar()->visible);
  EXPECT_FALSE(platform::toolbarInfo(mine)->visible);
  EXPECT_NE(type("-TOOLBAR nowhere\n").find("没有这个工具栏：nowhere"), std::string::npos);

  type("MENUUNLOAD Acad\n");
  EXPECT_TRUE(platform::menuGroups().empty());
  EXPECT_NE(type("TOOLBAR\n\n").find("没有工具栏。"), std::string::npos);
  EXPECT_NE(type("MENUUNLOAD Acad\n").find("没有这个菜单组：Acad"), std::string::npos);
  type("MENULOAD Acad\n");
  EXPECT_NE(type("MENULOAD acad\n").find("已加载"), std::string::npos);
  EXPECT_EQ(platform::menuGroups(), std::vector<std::string>{"Acad"});
  EXPECT_TRUE(platform::toolbars("Acad").empty());
}
