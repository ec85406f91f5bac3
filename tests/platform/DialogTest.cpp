// Modal dialogs in the headless host: one dialog's logic answered from a script and from the terminal.
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/headless/console.h"
#include "platform/headless/dialogs.h"
#include "support/TestSupport.h"

namespace {

using headless::DialogCommand;
using headless::DialogEvent;
using headless::DialogPresentation;
using headless::Dialogs;

// A dialog of every kind of control: two file names, a property switch, a layer scope with its list, a
// button that swaps the names, and a pop-up of recent files that a button opens.
class SampleDialog : public platform::Dialog {
 public:
  enum : int {
    kFirst = 1001,
    kSecond = 1002,
    kLayers = 1003,
    kAllLayers = 1004,
    kSomeLayers = 1005,
    kSwap = 1006,
    kPick = 1007,
    kList = 1010,
    kRecent = 1020,
    kFirstRecent = 2048,
  };

  SampleDialog() : Dialog("Sample") {
    addEdit(kFirst, "First:");
    addEdit(kSecond, "Second:");
    addCheckBox(kLayers, "Compare layers", true);
    addRadioButton(kAllLayers, kAllLayers, "All layers");
    addRadioButton(kSomeLayers, kAllLayers, "Some layers");
    addButton(kSwap, "Swap");
    addButton(kPick, "...");
    addList(kList, "Layers", {"Name", "Weight"}, true);
    addPopupMenu(kRecent, "Recent files");
    addButton(platform::kIdOkButton, "OK");
    addButton(platform::kIdCancelButton, "Cancel");
  }

  std::vector<std::string> recent{"/d/a.dxf", "/d/b.dxf", "/d/c.dxf"};
  std::vector<std::string> excluded;  // the layers left unchecked, taken on OK
  std::vector<int> checkChanges;
  int cancels = 0;
  bool throwOnSwap = false;
  bool throwOnInit = false;

 protected:
  void onInitDialog() override {
    if (throwOnInit) throw std::runtime_error("settings unreadable");
    setText(kFirst, "a.dxf");
    setChecked(kAllLayers, true);
    for (const char* name : {"0", "WALL", "DOOR"}) insertRow(kList, {name, "1"}, true);
    enable(kList, false);
    fillRecent();
  }
  void fillRecent() {
    std::vector<platform::MenuItem> items;
    for (std::size_t i = 0; i < recent.size(); ++i) {
      items.push_back({kFirstRecent + static_cast<int>(i), std::string(platform::fileNamePart(recent[i])), i != 2});
    }
    setMenuItems(kRecent, items);
  }
  void onCheckChanged(int id) override {
    checkChanges.push_back(id);
    if (id == kAllLayers || id == kSomeLayers) enable(kList, id == kSomeLayers);
  }
  void onClicked(int id) override {
    if (id == kSwap) {
      if (throwOnSwap) throw std::length_error("swap failed");
      const std::string first = text(kFirst);
      setText(kFirst, text(kSecond));
      setText(kSecond, first);
    } else if (id == kPick) {
      fillRecent();
      trackPopupMenu(kRecent);
    }
  }
  void onMenuCommand(int, int command) override {
    setText(kSecond, recent.at(static_cast<std::size_t>(command - kFirstRecent)));
  }
  void onOK() override {
    if (text(kFirst).empty() || text(kSecond).empty()) {
      platform::showMessageBox("Both files are needed", "Warning", platform::kMbOk | platform::kMbIconWarning);
      return;
    }
    excluded.clear();
    if (checkedRadio(kAllLayers) == kSomeLayers) {
      for (int row = 0; row < rowCount(kList); ++row) {
        if (!rowChecked(kList, row)) excluded.push_back(rowText(kList, row));
      }
    }
    endDialog(platform::kIdOk);
  }
  void onCancel() override {
    ++cancels;
    Dialog::onCancel();
  }
};

class DialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    vktest::quietConsole();
    Dialogs::instance().reset();
  }
  void TearDown() override { Dialogs::instance().reset(); }

  static std::string transcript() { return headless::Console::instance().takeTranscript(); }
  // Runs the sample dialog on the terminal presentation fed with these lines.
  static int onTerminal(SampleDialog& dialog, const std::string& lines, bool echo = false) {
    std::istringstream in(lines);
    Dialogs::instance().setTerminalInput(headless::streamLineSource(in), echo);
    const int result = dialog.doModal();
    Dialogs::instance().setTerminalInput(nullptr);
    return result;
  }
  static DialogEvent onlyEvent() {
    std::vector<DialogEvent> events = Dialogs::instance().takeDialogs();
    EXPECT_EQ(events.size(), 1u);
    return events.empty() ? DialogEvent{} : events.front();
  }
};

// The answers a user gives to the sample dialog, one per line, and what they leave behind.
const std::vector<std::string> kAnswers = {"set 1002 b.dxf", "click 1006",   "check 1005",
                                           "row 1010 2 off", "uncheck 1003", "ok"};

void expectAnswered(const SampleDialog& dialog) {
  EXPECT_EQ(dialog.result(), platform::kIdOk);
  EXPECT_EQ(dialog.text(SampleDialog::kFirst), "b.dxf");
  EXPECT_EQ(dialog.text(SampleDialog::kSecond), "a.dxf");
  EXPECT_FALSE(dialog.checked(SampleDialog::kLayers));
  EXPECT_EQ(dialog.checkedRadio(SampleDialog::kAllLayers), SampleDialog::kSomeLayers);
  EXPECT_FALSE(dialog.checked(SampleDialog::kAllLayers));
  EXPECT_TRUE(dialog.enabled(SampleDialog::kList));
  EXPECT_EQ(dialog.excluded, std::vector<std::string>{"WALL"});
  EXPECT_EQ(dialog.checkChanges, (std::vector<int>{SampleDialog::kSomeLayers, SampleDialog::kLayers}));
  EXPECT_TRUE(dialog.failure().empty());
}

TEST_F(DialogTest, ScriptAndTerminalLeaveTheSameStateAndRecord) {
  Dialogs::instance().scriptAnswers(kAnswers);
  SampleDialog scripted;
  EXPECT_EQ(scripted.doModal(), platform::kIdOk);
  expectAnswered(scripted);
  EXPECT_EQ(Dialogs::instance().pendingAnswers(), 0u);
  const DialogEvent fromScript = onlyEvent();
  EXPECT_EQ(fromScript.title, "Sample");
  EXPECT_EQ(fromScript.result, platform::kIdOk);
  EXPECT_EQ(fromScript.presentation, DialogPresentation::Scripted);
  ASSERT_NE(fromScript.find(SampleDialog::kFirst), nullptr);
  EXPECT_EQ(fromScript.find(SampleDialog::kFirst)->text, "b.dxf");
  ASSERT_NE(fromScript.find(SampleDialog::kList), nullptr);
  EXPECT_FALSE(fromScript.find(SampleDialog::kList)->rows.at(1).checked);
  EXPECT_EQ(transcript(), "");  // a script shows nothing

  std::string lines;
  for (const std::string& answer : kAnswers) lines += answer + "\n";
  SampleDialog typed;
  EXPECT_EQ(onTerminal(typed, lines), platform::kIdOk);
  expectAnswered(typed);
  const DialogEvent fromTerminal = onlyEvent();
  EXPECT_EQ(fromTerminal.presentation, DialogPresentation::Terminal);
  ASSERT_EQ(fromTerminal.controls.size(), fromScript.controls.size());
  for (std::size_t i = 0; i < fromScript.controls.size(); ++i) {
    EXPECT_EQ(headless::renderControl(fromTerminal.controls[i]), headless::renderControl(fromScript.controls[i]));
  }
}

TEST_F(DialogTest, TerminalShowsTheFormAndWhatEachAnswerChanged) {
  SampleDialog dialog;
  EXPECT_EQ(onTerminal(dialog, "click 1006\nhelp\nshow\ncancel\n", true), platform::kIdCancel);
  const std::string out = transcript();
  // The form: title, every control numbered with its state, rows and the disabled list.
  EXPECT_NE(out.find("== Sample ==\n"), std::string::npos);
  EXPECT_NE(out.find("  1001  First: [a.dxf]\n"), std::string::npos);
  EXPECT_NE(out.find("  1003  [x] Compare layers\n"), std::string::npos);
  EXPECT_NE(out.find("  1004  (*) All layers\n  1005  ( ) Some layers\n"), std::string::npos);
  EXPECT_NE(out.find("  1010  Layers (Name | Weight)  (disabled)\n        row 1 [x] 0 | 1\n"), std::string::npos);
  // Echoed input after its prompt, then both edit boxes the swap changed.
  EXPECT_NE(out.find("Sample> click 1006\n  1001  First: []\n  1002  Second: [a.dxf]\nSample> help\n"),
            std::string::npos);
  EXPECT_NE(out.find("  menu ID N "), std::string::npos);
  EXPECT_NE(out.find("Sample> cancel\n== Sample: Cancel ==\n"), std::string::npos);
  EXPECT_EQ(dialog.cancels, 1);
  EXPECT_TRUE(dialog.failure().empty());
}

TEST_F(DialogTest, PopupOpenedByAHandlerIsAnsweredUnderEitherPresentation) {
  // Scripted: the step after the click chooses from the menu the handler opened.
  Dialogs::instance().scriptAnswers({"click 1007", "menu 1020 2", "ok"});
  SampleDialog scripted;
  EXPECT_EQ(scripted.doModal(), platform::kIdOk);
  EXPECT_EQ(scripted.text(SampleDialog::kSecond), "/d/b.dxf");

  // A step for something else dismisses the menu and is then taken by the dialog.
  Dialogs::instance().scriptAnswers({"click 1007", "set 1002 x.dxf", "ok"});
  SampleDialog dismissed;
  EXPECT_EQ(dismissed.doModal(), platform::kIdOk);
  EXPECT_EQ(dismissed.text(SampleDialog::kSecond), "x.dxf");

  // Choosing from the menu without a handler opening it (a context menu) goes to the same handler.
  Dialogs::instance().scriptAnswers({"menu 1020 1", "ok"});
  SampleDialog direct;
  EXPECT_EQ(direct.doModal(), platform::kIdOk);
  EXPECT_EQ(direct.text(SampleDialog::kSecond), "/d/a.dxf");

  // A disabled item chosen by a script cancels the dialog.
  Dialogs::instance().scriptAnswers({"click 1007", "menu 1020 3"});
  SampleDialog disabled;
  EXPECT_EQ(disabled.doModal(), platform::kIdCancel);
  EXPECT_EQ(disabled.failure(), "scripted answer \"menu 1020 3\": no such item to choose");
  Dialogs::instance().takeDialogs();

  // Terminal: the menu's items are listed and asked for; wrong numbers are asked again.
  SampleDialog typed;
  EXPECT_EQ(onTerminal(typed, "click 1007\n7\n3\nmenu 1020 1\nok\n"), platform::kIdOk);
  EXPECT_EQ(typed.text(SampleDialog::kSecond), "/d/a.dxf");
  const std::string out = transcript();
  EXPECT_NE(out.find("        item 3 c.dxf  (disabled)\n"), std::string::npos);
  EXPECT_NE(out.find("  choose an item number from 1 to 3\n"), std::string::npos);
  EXPECT_NE(out.find("  item 3 is disabled\n"), std::string::npos);
}

TEST_F(DialogTest, MalformedAndRefusedAnswersAreExplained) {
  struct Case {
    std::string line;
    std::string why;
  };
  const std::vector<Case> cases = {
      {"frobnicate 3", "\"frobnicate\" is no command; help lists them"},
      {"click", "a control number is missing; use: click ID"},
      {"click x1", "\"x1\" is no control number; use: click ID"},
      {"click 1006 1007", "unexpected \"1007\"; use: click ID"},
      {"ok now", "unexpected \"now\"; use: ok"},
      {"row 1010 0 on", "\"0\" is no row number (from 1)"},
      {"row 1010 2 maybe", "\"maybe\" is neither on nor off"},
      {"menu 1020", "an item number is missing; use: menu ID N"},
      {"click 999", "there is no control 999"},
      {"set 1003 text", "control 1003 is a check box"},
      {"click 1001", "control 1001 is an edit box"},
      {"row 2 off", "control 1010 is disabled"},
      {"uncheck 1004", "radio button 1004 is cleared by checking another of its group"},
      {"menu 1020 9", "menu 1020 has 3 items"},
      {"menu 1020 3", "item \"c.dxf\" of menu 1020 is disabled"},
  };
  for (const Case& c : cases) {
    Dialogs::instance().scriptAnswers({c.line, "ok"});
    SampleDialog dialog;
    EXPECT_EQ(dialog.doModal(), platform::kIdCancel) << c.line;
    EXPECT_EQ(dialog.failure(), "scripted answer \"" + c.line + "\": " + c.why);
    EXPECT_EQ(dialog.cancels, 1) << c.line;
    EXPECT_EQ(Dialogs::instance().pendingAnswers(), 1u) << c.line;  // "ok" is left for the next dialog
    EXPECT_EQ(transcript(), "\nDialog \"Sample\" cancelled: " + dialog.failure() + "\n");
    Dialogs::instance().reset();

    // The terminal explains in one line and asks again.
    SampleDialog typed;
    typed.setText(SampleDialog::kSecond, "b.dxf");
    EXPECT_EQ(onTerminal(typed, c.line + "\nok\n"), platform::kIdOk) << c.line;
    EXPECT_NE(transcript().find("Sample>   " + c.why + "\nSample> "), std::string::npos) << c.line;
  }

  // A disabled OK button is neither clicked nor reached by Enter.
  for (const char* step : {"ok", "click 1"}) {
    Dialogs::instance().scriptAnswers({step});
    SampleDialog locked;
    locked.enable(platform::kIdOkButton, false);
    EXPECT_EQ(locked.doModal(), platform::kIdCancel);
    EXPECT_EQ(locked.failure(), "scripted answer \"" + std::string(step) +
                                    "\": " + (step == std::string("ok") ? "OK is disabled" : "control 1 is disabled"));
  }

  // An empty step is no answer in a script (the terminal simply asks again).
  Dialogs::instance().scriptAnswers({""});
  SampleDialog empty;
  EXPECT_EQ(empty.doModal(), platform::kIdCancel);
  EXPECT_EQ(empty.failure(), "scripted answer \"\": an empty line is no command; help lists them");
}

TEST_F(DialogTest, RowsNeedTheirListNamedWhenThereAreSeveral) {
  class TwoLists : public platform::Dialog {
   public:
    TwoLists() : Dialog("Two lists") {
      addList(1, "left", {}, true);
      addList(2, "right", {}, false);
      insertRow(1, {"a"});
      insertRow(2, {"b"});
    }
  };
  TwoLists dialog;
  EXPECT_EQ(headless::applyDialogCommand(dialog, {DialogCommand::Verb::Row, 0, 1, true, ""}),
            "the dialog has 2 lists: name one (row LIST N on|off)");
  EXPECT_EQ(headless::applyDialogCommand(dialog, {DialogCommand::Verb::Row, 2, 1, true, ""}),
            "list 2 has no check boxes");
  EXPECT_EQ(headless::applyDialogCommand(dialog, {DialogCommand::Verb::Row, 1, 2, true, ""}), "list 1 has 1 rows");
  EXPECT_EQ(headless::applyDialogCommand(dialog, {DialogCommand::Verb::Row, 1, 1, true, ""}), "");
  EXPECT_TRUE(dialog.rowChecked(1, 0));
}

TEST_F(DialogTest, SetKeepsTheRestOfTheLineAndQuotedEnds) {
  std::string why;
  const auto parsed = [&](std::string_view line) {
    const auto command = headless::parseDialogCommand(line, why);
    return command ? command->text : "<" + why + ">";
  };
  EXPECT_EQ(parsed("set 101 C:/My Drawings/a b.dwg"), "C:/My Drawings/a b.dwg");
  EXPECT_EQ(parsed("SET 101 \" padded \""), " padded ");
  EXPECT_EQ(parsed("set 101"), "");
  EXPECT_EQ(parsed("set 101 \"\""), "");
  EXPECT_EQ(parsed("set"), "<a control number is missing; use: set ID TEXT>");
}

TEST_F(DialogTest, HandlerRefusingOkKeepsTheDialogOpen) {
  Dialogs::instance().scriptAnswers({"set 1001", "ok", "set 1001 a.dxf", "set 1002 b.dxf", "ok"});
  headless::Console::instance().scriptMessageBoxAnswer(platform::kIdOk);
  SampleDialog dialog;
  EXPECT_EQ(dialog.doModal(), platform::kIdOk);
  const auto boxes = headless::Console::instance().takeMessageBoxes();
  ASSERT_EQ(boxes.size(), 1u);
  EXPECT_EQ(boxes[0].text, "Both files are needed");
  EXPECT_EQ(boxes[0].title, "Warning");
}

TEST_F(DialogTest, EndOfInputCancelsAndNothingHangs) {
  // The terminal's input ends before the dialog is closed.
  SampleDialog typed;
  EXPECT_EQ(onTerminal(typed, "set 1002 b.dxf\n"), platform::kIdCancel);
  EXPECT_EQ(typed.failure(), "end of input");
  EXPECT_EQ(typed.cancels, 1);
  EXPECT_NE(transcript().find("\nDialog \"Sample\" cancelled: end of input\n"), std::string::npos);
  EXPECT_EQ(onlyEvent().failure, "end of input");

  // It ends while the handler's menu is asked for: the menu is dismissed, then the dialog cancelled.
  SampleDialog inMenu;
  EXPECT_EQ(onTerminal(inMenu, "click 1007\n"), platform::kIdCancel);
  EXPECT_EQ(inMenu.text(SampleDialog::kSecond), "");
  EXPECT_EQ(inMenu.failure(), "end of input");
  Dialogs::instance().takeDialogs();

  // A script that runs out.
  Dialogs::instance().scriptAnswers({"check 1005"});
  SampleDialog scripted;
  EXPECT_EQ(scripted.doModal(), platform::kIdCancel);
  EXPECT_EQ(scripted.failure(), "the scripted answers ran out");
  EXPECT_TRUE(scripted.checked(SampleDialog::kSomeLayers));
  Dialogs::instance().takeDialogs();

  // Neither a script nor a terminal: cancelled at once, without running the logic.
  transcript();
  SampleDialog unseen;
  EXPECT_EQ(unseen.doModal(), platform::kIdCancel);
  EXPECT_EQ(unseen.cancels, 0);
  EXPECT_EQ(transcript(), "\nDialog \"Sample\" cancelled: no scripted answers and no terminal to show it on\n");
  EXPECT_EQ(onlyEvent().presentation, DialogPresentation::None);

  // A dialog whose Cancel refuses to close still ends when its input does.
  class Stubborn : public platform::Dialog {
   public:
    Stubborn() : Dialog("Stubborn") {}
    void onCancel() override {}
  };
  Dialogs::instance().scriptAnswers({"cancel"});
  Stubborn stubborn;
  EXPECT_EQ(stubborn.doModal(), platform::kIdCancel);
  EXPECT_EQ(stubborn.failure(), "the scripted answers ran out");
}

TEST_F(DialogTest, ThrowingHandlerCancelsTheDialogWithItsReason) {
  Dialogs::instance().scriptAnswers({"click 1006", "ok"});
  SampleDialog swapping;
  swapping.throwOnSwap = true;
  EXPECT_EQ(swapping.doModal(), platform::kIdCancel);
  EXPECT_EQ(swapping.failure(), "swap failed");
  EXPECT_EQ(transcript(), "\nDialog \"Sample\" cancelled: swap failed\n");
  EXPECT_EQ(Dialogs::instance().pendingAnswers(), 1u);
  Dialogs::instance().reset();

  SampleDialog starting;
  starting.throwOnInit = true;
  EXPECT_EQ(onTerminal(starting, "ok\n"), platform::kIdCancel);
  EXPECT_EQ(starting.failure(), "settings unreadable");
  EXPECT_EQ(transcript(), "\nDialog \"Sample\" cancelled: settings unreadable\n");  // never shown

  // The terminal's input failing is no different.
  Dialogs::instance().setTerminalInput(
      [](std::string_view) -> std::optional<std::string> { throw std::runtime_error("terminal lost"); });
  SampleDialog unread;
  EXPECT_EQ(unread.doModal(), platform::kIdCancel);
  EXPECT_EQ(unread.failure(), "terminal lost");
  Dialogs::instance().setTerminalInput(nullptr);

  // A handler asking for a control the dialog does not have.
  class Careless : public platform::Dialog {
   public:
    Careless() : Dialog("Careless") { addButton(5, "Go"); }
    void onClicked(int) override { setChecked(6, true); }
  };
  Dialogs::instance().scriptAnswers({"click 5"});
  Careless careless;
  EXPECT_EQ(careless.doModal(), platform::kIdCancel);
  EXPECT_EQ(careless.failure(), "dialog \"Careless\" has no control 6");
}

TEST_F(DialogTest, LogicApiRefusesWrongIdentifiersAndKinds) {
  SampleDialog dialog;
  EXPECT_THROW(dialog.addButton(SampleDialog::kFirst, "again"), std::invalid_argument);
  EXPECT_THROW(dialog.text(42), std::invalid_argument);
  EXPECT_THROW(dialog.checked(SampleDialog::kFirst), std::invalid_argument);
  EXPECT_THROW(dialog.rowCount(SampleDialog::kFirst), std::invalid_argument);
  EXPECT_THROW(dialog.rowChecked(SampleDialog::kList, 0), std::out_of_range);
  // Captions of other controls are their text; radio groups stay exclusive however they are set.
  dialog.setText(SampleDialog::kLayers, "Layers too");
  EXPECT_EQ(dialog.find(SampleDialog::kLayers)->label, "Layers too");
  dialog.setChecked(SampleDialog::kSomeLayers, true);
  dialog.setChecked(SampleDialog::kAllLayers, true);
  EXPECT_EQ(dialog.checkedRadio(SampleDialog::kAllLayers), SampleDialog::kAllLayers);
  EXPECT_FALSE(dialog.checked(SampleDialog::kSomeLayers));
  // Not running: nothing to show a menu with.
  dialog.setMenuItems(SampleDialog::kRecent, {{7, "x"}});
  EXPECT_FALSE(dialog.trackPopupMenu(SampleDialog::kRecent).has_value());
}

}  // namespace
