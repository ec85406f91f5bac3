// The headless host's dialogs: answered from a script in tests or from the terminal, and recorded.
#pragma once

#include <deque>
#include <functional>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/dialog.h"

namespace headless {

// The next line typed for a prompt, or nothing at the end of input. It shows the prompt itself.
using LineSource = std::function<std::optional<std::string>(std::string_view prompt)>;

// One answer to a dialog, in the words typed on the terminal and queued by scripts:
//   set ID TEXT          TEXT (the rest of the line; "..." keeps spaces at its ends) into edit box ID
//   check ID, uncheck ID a check box; check also selects a radio button
//   click ID             a button (1 is OK, 2 Cancel); a check box toggles, a radio button is selected
//   row [LIST] N on|off  row N (from 1) of a list; LIST may be left out when the dialog has one list
//   menu ID N            item N (from 1) of pop-up menu ID
//   ok, cancel           Enter and Escape
//   help, show           the commands; the dialog again (terminal only, no effect in a script)
struct DialogCommand {
  enum class Verb { Set, Check, Uncheck, Click, RightClick, Row, Menu, Ok, Cancel, Help, Show };
  Verb verb = Verb::Ok;
  int id = 0;      // the control (0 for a row of the dialog's only list)
  int number = 0;  // row or item number, from 1
  bool on = false;
  std::string text;
};

// Reads one answer line; nothing and an explanation when it is not one.
std::optional<DialogCommand> parseDialogCommand(std::string_view line, std::string& error);
// Performs an answer on a dialog as a user's action; returns why it was refused, empty when it was taken.
std::string applyDialogCommand(platform::Dialog& dialog, const DialogCommand& command);

// The dialog drawn as text: the title, then one or more lines per control with its identifier and state.
std::string renderDialog(const platform::Dialog& dialog);
// The lines that draw one control.
std::string renderControl(const platform::Control& control);
// The commands understood, one per line.
std::string dialogHelp();

enum class DialogPresentation { None, Scripted, Terminal };

// A dialog as it ended, for tests to read.
struct DialogEvent {
  std::string title;
  std::vector<platform::Control> controls;
  int result = 0;
  std::string failure;  // why it was cancelled by a failure; empty when the user or its logic closed it
  DialogPresentation presentation = DialogPresentation::None;

  // The control with this identifier, nullptr when there is none.
  const platform::Control* find(int id) const;
};

// Answers from the queue of scripted answers, in order: a dialog takes steps until it ends. A step that is
// not an answer or is refused, or a queue that runs out, cancels the dialog with the reason.
class ScriptedPresenter : public platform::DialogPresenter {
 public:
  explicit ScriptedPresenter(std::deque<std::string>& steps) : steps_(steps) {}
  void run(platform::Dialog& dialog) override;
  // Takes the next step when it chooses from this menu; otherwise the menu is dismissed.
  std::optional<int> choosePopupItem(platform::Dialog& dialog, int popupId) override;

 private:
  std::deque<std::string>& steps_;
};

// Shows the dialog on the command line and reads the user's commands from a line source. A command that is
// not understood or is refused is explained in one line and asked again; the end of input cancels.
class TerminalPresenter : public platform::DialogPresenter {
 public:
  // echo: print each line read after its prompt, so that input fed from a file shows in the transcript.
  TerminalPresenter(LineSource input, bool echo) : input_(std::move(input)), echo_(echo) {}
  void run(platform::Dialog& dialog) override;
  std::optional<int> choosePopupItem(platform::Dialog& dialog, int popupId) override;

 private:
  std::optional<std::string> readLine(const std::string& prompt);
  LineSource input_;
  bool echo_;
};

// The host's dialog service, one per process: which presentation a dialog gets, the scripted answers,
// and the record of every dialog shown.
class Dialogs {
 public:
  static Dialogs& instance();

  // Queues answers (in DialogCommand's words) for the next dialogs. While any is queued, dialogs are
  // answered from the queue.
  void scriptAnswers(const std::vector<std::string>& steps);
  std::size_t pendingAnswers() const { return steps_.size(); }
  // Where the terminal presentation reads its lines; an empty source disconnects it. Without scripted
  // answers and without a terminal a dialog is cancelled with a line on the command line.
  void setTerminalInput(LineSource input, bool echo = false);
  bool terminalConnected() const { return static_cast<bool>(input_); }

  std::vector<DialogEvent> takeDialogs();
  const std::vector<DialogEvent>& dialogs() const { return events_; }
  // Forgets the queued answers, the recorded dialogs and the terminal input.
  void reset();

  // Runs a dialog with the presentation the settings give it and records it (platform::runModalDialog).
  int run(platform::Dialog& dialog) noexcept;

 private:
  Dialogs() = default;
  std::deque<std::string> steps_;
  LineSource input_;
  bool echo_ = false;
  std::vector<DialogEvent> events_;
};

// A line source reading a stream: prints the prompt on the command line, then returns the next line.
LineSource streamLineSource(std::istream& in);

}  // namespace headless
