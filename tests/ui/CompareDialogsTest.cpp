// The file selection and settings dialogs driven through scripted controls: validation, browsing, the
// open-drawing menu, the layer list, the show flag and Cancel.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/headless/console.h"
#include "platform/headless/dialogs.h"
#include "platform/headless/host_session.h"
#include "platform/profile.h"
#include "support/TestSupport.h"
#include "ui/CVkCompareFileSelDlg.h"
#include "ui/CVkCompareSettingDlg.h"
#include "ui/CompareConfigFile.h"

using headless::Dialogs;

namespace {

struct DialogFixture : ::testing::Test {
  vktest::TempDir dir;
  headless::Console& console = headless::Console::instance();
  CCompareConfigFile* store = nullptr;

  void SetUp() override {
    vktest::isolateSettings();
    vktest::quietConsole();
    Dialogs::instance().reset();
    headless::HostSession::instance().shutdown();
    store = &CCompareConfigFile::instance();
    store->SetSourceFile("");
    store->SetDestinationFile("");
    store->WriteCompareFiles();
    ExcludedLayers().clear();
  }
  void TearDown() override {
    Dialogs::instance().reset();
    headless::HostSession::instance().shutdown();
    ExcludedLayers().clear();
  }
  std::string drawing(const std::string& name) {
    std::filesystem::create_directories(std::filesystem::path(dir.file(name)).parent_path());
    vktest::writeFile(dir.file(name), vktest::dxfDrawing("0|LINE|8|0|10|0|20|0|11|1|21|0"));
    return dir.file(name);
  }
  // Runs the file selection dialog on scripted answers; the messages it showed come back in messages.
  int selectFiles(const std::vector<std::string>& answers, std::vector<std::string>* messages = nullptr) {
    Dialogs::instance().scriptAnswers(answers);
    CVkCompareFileSelDlg dialog;
    const int result = dialog.doModal();
    for (const auto& box : console.takeMessageBoxes()) {
      EXPECT_EQ(box.title, "警告");
      EXPECT_EQ(box.style, platform::kMbOk | platform::kMbIconWarning);
      if (messages) messages->push_back(box.text);
    }
    return result;
  }
};

}  // namespace

TEST_F(DialogFixture, ValidationStopsAtTheFirstProblemAndKeepsTheDialogOpen) {
  const std::string a = drawing("a.dwg"), b = drawing("b.DXF"), text = drawing("notes.txt");
  std::vector<std::string> messages;
  // Both empty: one message, not one per field.
  EXPECT_EQ(selectFiles({"ok", "cancel"}, &messages), platform::kIdCancel);
  EXPECT_EQ(messages, std::vector<std::string>{"比较文件不能为空！"});
  // A missing first file and a second that is no drawing: only the first problem.
  messages.clear();
  EXPECT_EQ(selectFiles({"set 101 " + dir.file("absent.dwg"), "set 102 " + text, "ok", "cancel"}, &messages),
            platform::kIdCancel);
  EXPECT_EQ(messages, std::vector<std::string>{"文件不存在：" + dir.file("absent.dwg")});
  // The second is checked for existence before the first's extension.
  messages.clear();
  selectFiles({"set 101 " + text, "set 102 " + dir.file("gone.dwg"), "ok", "cancel"}, &messages);
  EXPECT_EQ(messages, std::vector<std::string>{"文件不存在：" + dir.file("gone.dwg")});
  // A dot that stands only in a folder name is no extension of the file.
  const std::string plain = drawing("a.b/drawing");
  messages.clear();
  selectFiles({"set 101 " + a, "set 102 " + plain, "ok", "cancel"}, &messages);
  EXPECT_EQ(messages, std::vector<std::string>{"文件不是DWG文件:" + plain});
  // Nothing was stored by the refusals.
  store->ReadCompareFiles();
  EXPECT_EQ(store->SourceFile(), "");
  // Upper case passes, DXF passes, and the same file may be given twice.
  messages.clear();
  EXPECT_EQ(selectFiles({"set 101 " + a, "set 102 " + b, "ok"}, &messages), platform::kIdOk);
  EXPECT_TRUE(messages.empty());
  EXPECT_EQ(selectFiles({"set 102 " + a, "ok"}), platform::kIdOk);  // the first path comes from the store
  store->SetSourceFile("");
  store->ReadCompareFiles();
  EXPECT_EQ(store->SourceFile(), a);
  EXPECT_EQ(store->DestinationFile(), a);
}

TEST_F(DialogFixture, OpeningShowsTheStoredPathsAndBrowsingFillsOne) {
  const std::string a = drawing("a.dwg"), b = drawing("b.dwg");
  store->SetSourceFile(a);
  store->SetDestinationFile("");
  store->WriteCompareFiles();
  // The browser for the second file; a cancelled browser changes nothing.
  EXPECT_EQ(selectFiles({"click 104", "cancel", "click 109", "set 1152 " + b, "ok", "ok"}), platform::kIdOk);
  const auto events = Dialogs::instance().takeDialogs();
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[0].title, "Open");
  EXPECT_EQ(events[1].find(1089)->label, "Files of type: DWG文件 (*.dwg); DXF文件 (*.dxf)");
  EXPECT_EQ(events[2].title, "Morvane比图文件选择");
  EXPECT_EQ(events[2].find(101)->text, a);
  EXPECT_EQ(events[2].find(102)->text, b);
  EXPECT_EQ(events[2].find(128)->label, "第一个文件：");
  EXPECT_EQ(store->DestinationFile(), b);
}

TEST_F(DialogFixture, OpenDrawingMenuOffersSavedDrawingsByShortName) {
  headless::HostSession& host = headless::HostSession::instance();
  // With no drawing open the menu is empty.
  EXPECT_EQ(selectFiles({"click 106", "cancel"}), platform::kIdCancel);
  auto empty = Dialogs::instance().takeDialogs();
  ASSERT_EQ(empty.size(), 1u);
  EXPECT_TRUE(empty[0].find(filesel::kOpenDrawingsMenu)->items.empty());
  const std::string a = drawing("one.dxf"), b = drawing("two.dxf");
  std::string error;
  ASSERT_NE(host.openDocument(a, error), nullptr) << error;
  ASSERT_NE(host.openDocument(b, error), nullptr) << error;
  // The second item for the second file, the first item for the first file.
  EXPECT_EQ(selectFiles({"click 112", "menu 3072 2", "click 106", "menu 3072 1", "ok"}), platform::kIdOk);
  const auto events = Dialogs::instance().takeDialogs();
  ASSERT_EQ(events.size(), 1u);
  const platform::Control* menu = events[0].find(filesel::kOpenDrawingsMenu);
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->items.size(), 2u);
  EXPECT_EQ(menu->items[0].command, 2048);  // the last menu shown was the first file's
  EXPECT_EQ(menu->items[1].text, "two.dxf");
  EXPECT_EQ(store->SourceFile(), a);
  EXPECT_EQ(store->DestinationFile(), b);
}

namespace {

struct SettingFixture : DialogFixture {
  std::unique_ptr<platform::Database> source, destination;
  void SetUp() override {
    DialogFixture::SetUp();
    store->SetCompareFlags(1, 1, 1, 1, 1, 1, 1);
    store->SetExterEntity(1);
    store->SetLayerScope(kLayerScopeChosen);
    store->WriteSettings();
    store->SetIsShow(1);
    source = vktest::readDxfText(dir, "s.dxf", vktest::dxfDrawing("", "AC1015", "", layers({"0", "Walls", "Doors"})));
    destination = vktest::readDxfText(dir, "d.dxf", vktest::dxfDrawing("", "AC1015", "", layers({"0", "DOORS", "Roof"})));
  }
  static std::string layers(const std::vector<std::string>& names) {
    std::string s = "0|TABLE|2|LAYER";
    for (const auto& n : names) s += "|0|LAYER|2|" + n + "|62|7|6|Continuous";
    return s + "|0|ENDTAB";
  }
  int settings(int openedBeforeCompare, const std::vector<std::string>& answers) {
    Dialogs::instance().scriptAnswers(answers);
    CVkCompareSettingDlg dialog(source.get(), destination.get());
    return dialog.DoModal(openedBeforeCompare);
  }
};

}  // namespace

TEST_F(SettingFixture, LayerListMergesBothDrawingsAndUncheckedRowsAreExcluded) {
  EXPECT_EQ(MergeLayerNames(LayerNames(source.get()), LayerNames(destination.get())),
            (std::vector<std::string>{"0", "Walls", "Doors", "Roof"}));
  // Rows 2 and 4 unchecked under "部分图层".
  EXPECT_EQ(settings(0, {"row 2 off", "row 4 off", "uncheck 107", "ok"}), platform::kIdOk);
  EXPECT_EQ(ExcludedLayers(), (std::vector<std::string>{"Walls", "Roof"}));
  int l, c, lt, lw, ts, z, tv;
  store->ReadSettings();
  store->GetCompareFlags(l, c, lt, lw, ts, z, tv);
  EXPECT_EQ(c, 0);
  EXPECT_EQ(l, 1);
  // Every row checked: the list is rebuilt empty.
  EXPECT_EQ(settings(0, {"ok"}), platform::kIdOk);
  EXPECT_TRUE(ExcludedLayers().empty());
  // Rows unchecked, then "所有图层": empty all the same, and the scope is stored.
  EXPECT_EQ(settings(0, {"row 1 off", "row 3 off", "check 120", "ok"}), platform::kIdOk);
  EXPECT_TRUE(ExcludedLayers().empty());
  EXPECT_EQ(store->GetLayerScope(), kLayerScopeAll);
  // Under "所有图层" the list cannot be changed.
  const auto events = Dialogs::instance().takeDialogs();
  EXPECT_FALSE(events.back().find(setting::kLayerList)->enabled);
}

TEST_F(SettingFixture, LayerContextMenuClearsInvertsAndChecksRows) {
  // Clear all, check the second row back, invert: only "Walls" stays unchecked.
  EXPECT_EQ(settings(0, {"rclick 130", "menu 4124 2", "row 2 on", "rclick 130", "menu 4124 3", "ok"}),
            platform::kIdOk);
  EXPECT_EQ(ExcludedLayers(), (std::vector<std::string>{"Walls"}));
  EXPECT_EQ(settings(0, {"row 1 off", "rclick 130", "menu 4124 1", "ok"}), platform::kIdOk);
  EXPECT_TRUE(ExcludedLayers().empty());
  // Under "所有图层" the disabled list has no context menu: the script's right click is refused, which
  // ends a scripted dialog as cancelled.
  store->SetLayerScope(kLayerScopeAll);
  store->WriteSettings();
  EXPECT_EQ(settings(0, {"rclick 130", "ok"}), platform::kIdCancel);
  EXPECT_NE(Dialogs::instance().takeDialogs().back().failure.find("disabled"), std::string::npos);
}

TEST_F(SettingFixture, ShowFlagIsInvertedOnlyBeforeAComparison) {
  EXPECT_EQ(settings(1, {"check 131", "ok"}), platform::kIdOk);
  auto events = Dialogs::instance().takeDialogs();
  EXPECT_EQ(events[0].find(131)->label, "下次不显示");
  EXPECT_EQ(store->GetIsShow(), 0);
  // Shown again before a comparison, the box stands checked for IsShow 0; clearing it saves 1.
  EXPECT_EQ(settings(1, {"uncheck 131", "ok"}), platform::kIdOk);
  EXPECT_EQ(store->GetIsShow(), 1);
  // From the settings command the box is "每次都显示", checked for 1; clearing it saves 0.
  EXPECT_EQ(settings(0, {"uncheck 131", "ok"}), platform::kIdOk);
  EXPECT_EQ(store->GetIsShow(), 0);
  events = Dialogs::instance().takeDialogs();
  EXPECT_EQ(events[0].find(131)->label, "下次不显示");
  EXPECT_TRUE(events[0].find(131)->checked == false);
  EXPECT_EQ(events[1].find(131)->label, "每次都显示");
}

TEST_F(SettingFixture, CancelWritesNothingAndKeepsTheExcludedLayers) {
  ExcludedLayers() = {"Walls"};
  const std::string before = vktest::readFile(store->IniPath());
  EXPECT_EQ(settings(1, {"uncheck 105", "check 120", "check 131", "row 1 off", "cancel"}), platform::kIdCancel);
  EXPECT_EQ(vktest::readFile(store->IniPath()), before);
  EXPECT_EQ(ExcludedLayers(), std::vector<std::string>{"Walls"});
}
