// The file-open dialog of the headless host: alone, and opened by a button of another dialog.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "platform/dialog.h"
#include "platform/headless/console.h"
#include "platform/headless/dialogs.h"
#include "support/TestSupport.h"

namespace {

using headless::Dialogs;

constexpr std::string_view kDwgFilter = "DWG文件 (*.dwg)|*.dwg||";
constexpr int kFileName = 1152;

class FileDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    vktest::quietConsole();
    Dialogs::instance().reset();
  }
  void TearDown() override { Dialogs::instance().reset(); }
  static std::optional<std::string> open(std::string_view defaultExtension = "",
                                         unsigned flags = platform::kOfnHideReadOnly, std::size_t bufferChars = 2562) {
    return platform::showFileOpenDialog(kDwgFilter, defaultExtension, "", flags, bufferChars);
  }
};

TEST_F(FileDialogTest, TypedNameBecomesAFullPath) {
  Dialogs::instance().scriptAnswers({"set 1152 sub/../drawing", "ok"});
  const std::string expected = (std::filesystem::current_path() / "drawing.dwg").string();
  EXPECT_EQ(open("dwg"), expected);

  // A name with an extension keeps it; an absolute one stays as typed.
  Dialogs::instance().scriptAnswers({"set 1152 /d/a.DXF", "ok"});
  EXPECT_EQ(open("dwg"), "/d/a.DXF");

  const auto events = Dialogs::instance().takeDialogs();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0].title, "Open");
  ASSERT_NE(events[0].find(1089), nullptr);
  EXPECT_EQ(events[0].find(1089)->label, "Files of type: DWG文件 (*.dwg)");
  EXPECT_EQ(events[0].find(1040), nullptr);  // the read-only box is hidden
}

TEST_F(FileDialogTest, EmptyNameKeepsItOpenAndCancelGivesNothing) {
  Dialogs::instance().scriptAnswers({"ok", "set 1152 /d/a.dwg", "ok"});
  EXPECT_EQ(open(), "/d/a.dwg");
  Dialogs::instance().scriptAnswers({"set 1152 /d/a.dwg", "cancel"});
  EXPECT_EQ(open(), std::nullopt);
  Dialogs::instance().scriptAnswers({"ok"});
  EXPECT_EQ(open(), std::nullopt);  // the answers ran out with the dialog open

  // Without the flag the read-only box is offered.
  Dialogs::instance().scriptAnswers({"check 1040", "set 1152 /d/a.dwg", "ok"});
  EXPECT_EQ(open("", 0), "/d/a.dwg");
}

TEST_F(FileDialogTest, PathLongerThanTheBufferIsRefused) {
  Dialogs::instance().scriptAnswers({"set 1152 /d/abcdef.dwg", "ok"});
  EXPECT_EQ(open("", platform::kOfnHideReadOnly, 13), std::nullopt);
  EXPECT_EQ(headless::Console::instance().takeTranscript(),
            "\nThe file name is longer than the 13 characters the caller can take: /d/abcdef.dwg\n");
  Dialogs::instance().scriptAnswers({"set 1152 /d/abcdef.dwg", "ok"});
  EXPECT_EQ(open("", platform::kOfnHideReadOnly, 14), "/d/abcdef.dwg");
}

// A dialog whose button browses for the file its edit box holds.
class BrowseDialog : public platform::Dialog {
 public:
  BrowseDialog() : Dialog("Browse") {
    addEdit(101, "File:", "/d/old.dwg");
    addButton(104, "...");
    addButton(platform::kIdOkButton, "OK");
  }

 protected:
  void onClicked(int) override {
    if (auto path = platform::showFileOpenDialog(kDwgFilter, "", "", platform::kOfnHideReadOnly, 2562)) {
      setText(101, *path);
    }
  }
};

TEST_F(FileDialogTest, OpenedFromAHandlerUnderEitherPresentation) {
  Dialogs::instance().scriptAnswers({"click 104", "set 1152 /d/new.dwg", "ok", "ok"});
  BrowseDialog chosen;
  EXPECT_EQ(chosen.doModal(), platform::kIdOk);
  EXPECT_EQ(chosen.text(101), "/d/new.dwg");
  Dialogs::instance().scriptAnswers({"click 104", "cancel", "ok"});
  BrowseDialog cancelled;
  EXPECT_EQ(cancelled.doModal(), platform::kIdOk);
  EXPECT_EQ(cancelled.text(101), "/d/old.dwg");
  const auto events = Dialogs::instance().takeDialogs();
  ASSERT_EQ(events.size(), 4u);  // each file dialog ends, and is recorded, before its owner
  EXPECT_EQ(events[0].title, "Open");
  EXPECT_EQ(events[1].title, "Browse");

  std::istringstream in("click 104\nset 1152 /d/typed.dwg\nok\nok\n");
  Dialogs::instance().setTerminalInput(headless::streamLineSource(in));
  BrowseDialog typed;
  EXPECT_EQ(typed.doModal(), platform::kIdOk);
  EXPECT_EQ(typed.text(101), "/d/typed.dwg");
  const std::string out = headless::Console::instance().takeTranscript();
  EXPECT_NE(out.find("== Open ==\n  1152  File name: []\n  1089  Files of type: DWG文件 (*.dwg)\n"), std::string::npos);
  EXPECT_NE(out.find("Open> == Open: OK ==\n   101  File: [/d/typed.dwg]\nBrowse> "), std::string::npos);
  EXPECT_NE(out.find("   101  File: [/d/typed.dwg]\n"), std::string::npos);
}

}  // namespace
