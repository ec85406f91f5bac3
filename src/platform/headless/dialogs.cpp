// The headless host's dialogs: the answer language, the scripted and terminal presentations, the record.
#include "platform/headless/dialogs.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "platform/boundary.h"
#include "platform/headless/console.h"

namespace headless {

using platform::Control;
using platform::ControlKind;
using platform::Dialog;

// The answer language -------------------------------------------------------------------------------------

namespace {

std::string_view trimmed(std::string_view s) {
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
  return s;
}

// Splits off the first word of s (s keeps the rest, its leading blanks removed).
std::string_view nextWord(std::string_view& s) {
  s = trimmed(s);
  const std::size_t end = std::min(s.size(), s.find_first_of(" \t"));
  const std::string_view word = s.substr(0, end);
  s = trimmed(s.substr(end));
  return word;
}

std::optional<int> number(std::string_view word) {
  int value = 0;
  const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (word.empty() || ec != std::errc() || end != word.data() + word.size()) return std::nullopt;
  return value;
}

std::string lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

}  // namespace

std::optional<DialogCommand> parseDialogCommand(std::string_view line, std::string& error) {
  using Verb = DialogCommand::Verb;
  std::string_view rest = line;
  const std::string verb = lower(nextWord(rest));
  DialogCommand command;
  const auto fail = [&](std::string why) -> std::optional<DialogCommand> {
    error = std::move(why);
    return std::nullopt;
  };
  const auto noMore = [&](std::string_view usage) -> bool {
    if (rest.empty()) return true;
    error = "unexpected \"" + std::string(rest) + "\"; use: " + std::string(usage);
    return false;
  };
  const auto id = [&](std::string_view usage) -> bool {
    const std::string_view word = nextWord(rest);
    const std::optional<int> value = number(word);
    if (!value) {
      error = (word.empty() ? std::string("a control number is missing")
                            : "\"" + std::string(word) + "\" is no control number") +
              "; use: " + std::string(usage);
      return false;
    }
    command.id = *value;
    return true;
  };

  if (verb.empty()) return fail("an empty line is no command; help lists them");
  if (verb == "ok" || verb == "cancel" || verb == "help" || verb == "show") {
    command.verb = verb == "ok" ? Verb::Ok : verb == "cancel" ? Verb::Cancel : verb == "help" ? Verb::Help : Verb::Show;
    if (!noMore(verb)) return std::nullopt;
    return command;
  }
  if (verb == "set") {
    command.verb = Verb::Set;
    if (!id("set ID TEXT")) return std::nullopt;
    std::string_view text = rest;
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    command.text = std::string(text);
    return command;
  }
  if (verb == "check" || verb == "uncheck" || verb == "click" || verb == "rclick") {
    command.verb = verb == "check"     ? Verb::Check
                   : verb == "uncheck" ? Verb::Uncheck
                   : verb == "click"   ? Verb::Click
                                       : Verb::RightClick;
    const std::string usage = verb + " ID";
    if (!id(usage) || !noMore(usage)) return std::nullopt;
    return command;
  }
  if (verb == "row") {
    command.verb = Verb::Row;
    constexpr std::string_view usage = "row [LIST] N on|off";
    std::vector<std::string_view> words;
    while (!rest.empty()) words.push_back(nextWord(rest));
    if (words.size() < 2 || words.size() > 3) return fail("use: " + std::string(usage));
    const std::string state = lower(words.back());
    if (state != "on" && state != "off") return fail("\"" + std::string(words.back()) + "\" is neither on nor off");
    command.on = state == "on";
    const std::optional<int> row = number(words[words.size() - 2]);
    if (!row || *row < 1) return fail("\"" + std::string(words[words.size() - 2]) + "\" is no row number (from 1)");
    command.number = *row;
    if (words.size() == 3) {
      const std::optional<int> list = number(words[0]);
      if (!list) return fail("\"" + std::string(words[0]) + "\" is no list number; use: " + std::string(usage));
      command.id = *list;
    }
    return command;
  }
  if (verb == "menu") {
    command.verb = Verb::Menu;
    constexpr std::string_view usage = "menu ID N";
    if (!id(usage)) return std::nullopt;
    const std::string_view word = nextWord(rest);
    const std::optional<int> item = number(word);
    if (word.empty()) return fail("an item number is missing; use: menu ID N");
    if (!item || *item < 1) return fail("\"" + std::string(word) + "\" is no item number (from 1); use: menu ID N");
    command.number = *item;
    if (!noMore(usage)) return std::nullopt;
    return command;
  }
  return fail("\"" + verb + "\" is no command; help lists them");
}

std::string applyDialogCommand(Dialog& dialog, const DialogCommand& command) {
  using Verb = DialogCommand::Verb;
  switch (command.verb) {
    case Verb::Set:
      return dialog.userSetText(command.id, command.text);
    case Verb::Check:
      return dialog.userSetChecked(command.id, true);
    case Verb::Uncheck:
      return dialog.userSetChecked(command.id, false);
    case Verb::Click:
      return dialog.userClick(command.id);
    case Verb::RightClick:
      return dialog.userContextMenu(command.id);
    case Verb::Row: {
      int list = command.id;
      if (list == 0) {
        const auto lists = std::count_if(dialog.controls().begin(), dialog.controls().end(),
                                         [](const Control& c) { return c.kind == ControlKind::List; });
        if (lists != 1) return "the dialog has " + std::to_string(lists) + " lists: name one (row LIST N on|off)";
        list = std::find_if(dialog.controls().begin(), dialog.controls().end(), [](const Control& c) {
                 return c.kind == ControlKind::List;
               })->id;
      }
      return dialog.userSetRowChecked(list, command.number - 1, command.on);
    }
    case Verb::Menu:
      return dialog.userChooseMenuItem(command.id, command.number - 1);
    case Verb::Ok:
      return dialog.userOk();
    case Verb::Cancel:
      return dialog.userCancel();
    case Verb::Help:
    case Verb::Show:
      return {};
  }
  return {};
}

// Drawing a dialog as text -------------------------------------------------------------------------------

std::string renderControl(const Control& c) {
  // Identifiers right-aligned in six columns, rows and items indented below them.
  std::string out = std::to_string(c.id);
  out = std::string(out.size() < 6 ? 6 - out.size() : 0, ' ') + out + "  ";
  switch (c.kind) {
    case ControlKind::Label:
      out += c.label;
      break;
    case ControlKind::Edit:
      out += (c.label.empty() ? "" : c.label + " ") + "[" + c.text + "]";
      break;
    case ControlKind::CheckBox:
      out += (c.checked ? "[x] " : "[ ] ") + c.label;
      break;
    case ControlKind::RadioButton:
      out += (c.checked ? "(*) " : "( ) ") + c.label;
      break;
    case ControlKind::Button:
      out += "<" + c.label + ">";
      break;
    case ControlKind::List: {
      out += c.label.empty() ? std::string("list") : c.label;
      if (!c.columns.empty()) {
        out += " (";
        for (std::size_t i = 0; i < c.columns.size(); ++i) out += (i ? " | " : "") + c.columns[i];
        out += ")";
      }
      out += c.rows.empty() ? ", no rows" : "";
      break;
    }
    case ControlKind::PopupMenu:
      out += (c.label.empty() ? std::string("menu") : c.label) + " (menu)";
      break;
  }
  if (!c.enabled) out += "  (disabled)";
  out += "\n";
  for (std::size_t i = 0; i < c.rows.size(); ++i) {
    out += "        row " + std::to_string(i + 1) + (c.rowCheckBoxes ? (c.rows[i].checked ? " [x] " : " [ ] ") : " ");
    for (std::size_t j = 0; j < c.rows[i].cells.size(); ++j) out += (j ? " | " : "") + c.rows[i].cells[j];
    out += "\n";
  }
  for (std::size_t i = 0; i < c.items.size(); ++i) {
    out += "        item " + std::to_string(i + 1) + " " + c.items[i].text +
           (c.items[i].enabled ? "" : "  (disabled)") + "\n";
  }
  return out;
}

std::string renderDialog(const Dialog& dialog) {
  std::string out = "\n== " + dialog.title() + " ==\n";
  for (const Control& c : dialog.controls()) out += renderControl(c);
  return out;
}

std::string dialogHelp() {
  return "  set ID TEXT          type TEXT into edit box ID (\"...\" keeps spaces at its ends)\n"
         "  check ID             check a check box, select a radio button\n"
         "  uncheck ID           clear a check box\n"
         "  click ID             click a button (a check box toggles)\n"
         "  rclick ID            right-click list ID for its context menu\n"
         "  row [LIST] N on|off  check or clear row N of a list\n"
         "  menu ID N            choose item N of pop-up menu ID\n"
         "  ok, cancel           close the dialog with OK or Cancel\n"
         "  show                 show the dialog again\n";
}

const Control* DialogEvent::find(int id) const {
  const auto it = std::find_if(controls.begin(), controls.end(), [id](const Control& c) { return c.id == id; });
  return it == controls.end() ? nullptr : &*it;
}

// Scripted answers ---------------------------------------------------------------------------------------

void ScriptedPresenter::run(Dialog& dialog) {
  while (!dialog.ended()) {
    if (steps_.empty()) {
      dialog.abandon("the scripted answers ran out");
      return;
    }
    const std::string step = std::move(steps_.front());
    steps_.pop_front();
    std::string why;
    if (const std::optional<DialogCommand> command = parseDialogCommand(step, why))
      why = applyDialogCommand(dialog, *command);
    if (!why.empty()) dialog.abandon("scripted answer \"" + step + "\": " + why);
  }
}

std::optional<int> ScriptedPresenter::choosePopupItem(Dialog& dialog, int popupId) {
  if (steps_.empty()) return std::nullopt;
  std::string why;
  const std::optional<DialogCommand> command = parseDialogCommand(steps_.front(), why);
  if (!command || command->verb != DialogCommand::Verb::Menu || command->id != popupId) return std::nullopt;
  const std::string step = std::move(steps_.front());
  steps_.pop_front();
  const Control* menu = dialog.find(popupId);
  const std::size_t index = static_cast<std::size_t>(command->number - 1);
  if (!menu || index >= menu->items.size() || !menu->items[index].enabled) {
    dialog.abandon("scripted answer \"" + step + "\": no such item to choose");
    return std::nullopt;
  }
  return static_cast<int>(index);
}

// The terminal -------------------------------------------------------------------------------------------

std::optional<std::string> TerminalPresenter::readLine(const std::string& prompt) {
  std::optional<std::string> line = input_(prompt);
  if (line) {
    while (!line->empty() && (line->back() == '\n' || line->back() == '\r')) line->pop_back();
    if (echo_) Console::instance().print(*line + "\n");
  }
  return line;
}

void TerminalPresenter::run(Dialog& dialog) {
  Console& console = Console::instance();
  console.print(renderDialog(dialog) + "  (help lists the commands)\n");
  const std::string prompt = dialog.title() + "> ";
  while (!dialog.ended()) {
    const std::optional<std::string> line = readLine(prompt);
    if (!line) {
      dialog.abandon("end of input");
      break;
    }
    if (trimmed(*line).empty()) continue;
    std::string why;
    const std::optional<DialogCommand> command = parseDialogCommand(*line, why);
    if (!command) {
      console.print("  " + why + "\n");
      continue;
    }
    if (command->verb == DialogCommand::Verb::Help) {
      console.print(dialogHelp());
      continue;
    }
    if (command->verb == DialogCommand::Verb::Show) {
      console.print(renderDialog(dialog));
      continue;
    }
    // The controls the action changed (the one acted on, and any its handler touched) are shown again.
    const std::vector<Control> before = dialog.controls();
    why = applyDialogCommand(dialog, *command);
    if (!why.empty()) {
      console.print("  " + why + "\n");
      continue;
    }
    if (dialog.ended()) break;
    std::string changed;
    for (const Control& c : dialog.controls()) {
      const std::string now = renderControl(c);
      const auto old = std::find_if(before.begin(), before.end(), [&](const Control& b) { return b.id == c.id; });
      if (old == before.end() || renderControl(*old) != now) changed += now;
    }
    console.print(changed);
  }
  // How it ended, so that a dialog opened by another one is seen to give way to it.
  if (dialog.failure().empty()) {
    const int result = dialog.result();
    console.print("== " + dialog.title() + ": " +
                  (result == platform::kIdOk       ? std::string("OK")
                   : result == platform::kIdCancel ? std::string("Cancel")
                                                   : "result " + std::to_string(result)) +
                  " ==\n");
  }
}

std::optional<int> TerminalPresenter::choosePopupItem(Dialog& dialog, int popupId) {
  Console& console = Console::instance();
  const Control* menu = dialog.find(popupId);
  if (!menu) return std::nullopt;
  console.print(renderControl(*menu));
  const std::string prompt =
      "item of " + (menu->label.empty() ? std::string("the menu") : menu->label) + " (empty line: none)> ";
  for (;;) {
    const std::optional<std::string> line = readLine(prompt);
    if (!line || trimmed(*line).empty()) return std::nullopt;
    std::string_view rest = *line;
    std::string_view word = nextWord(rest);
    if (lower(word) == "menu" && number(nextWord(rest)) == popupId) word = nextWord(rest);
    const std::optional<int> item = number(word);
    if (!item || !rest.empty() || *item < 1 || static_cast<std::size_t>(*item) > menu->items.size()) {
      console.print("  choose an item number from 1 to " + std::to_string(menu->items.size()) + "\n");
    } else if (!menu->items[static_cast<std::size_t>(*item - 1)].enabled) {
      console.print("  item " + std::to_string(*item) + " is disabled\n");
    } else {
      return *item - 1;
    }
  }
}

LineSource streamLineSource(std::istream& in) {
  return [&in](std::string_view prompt) -> std::optional<std::string> {
    Console::instance().print(prompt);
    std::string line;
    if (!std::getline(in, line)) return std::nullopt;
    return line;
  };
}

// The service ---------------------------------------------------------------------------------------------

Dialogs& Dialogs::instance() {
  static Dialogs dialogs;
  return dialogs;
}

void Dialogs::scriptAnswers(const std::vector<std::string>& steps) {
  steps_.insert(steps_.end(), steps.begin(), steps.end());
}

void Dialogs::setTerminalInput(LineSource input, bool echo) {
  input_ = std::move(input);
  echo_ = echo;
}

std::vector<DialogEvent> Dialogs::takeDialogs() {
  std::vector<DialogEvent> out;
  out.swap(events_);
  return out;
}

void Dialogs::reset() {
  steps_.clear();
  events_.clear();
  input_ = nullptr;
  echo_ = false;
}

int Dialogs::run(Dialog& dialog) noexcept {
  DialogPresentation presentation = DialogPresentation::None;
  RunGuarded(
      0,
      [&] {
        if (!steps_.empty()) {
          presentation = DialogPresentation::Scripted;
          ScriptedPresenter presenter(steps_);
          dialog.runWith(presenter);
        } else if (input_) {
          presentation = DialogPresentation::Terminal;
          // A copy: a handler may connect another source while this one is reading.
          TerminalPresenter presenter(input_, echo_);
          dialog.runWith(presenter);
        } else {
          dialog.refuse("no scripted answers and no terminal to show it on");
        }
        events_.push_back({dialog.title(), dialog.controls(), dialog.result(), dialog.failure(), presentation});
        return 0;
      },
      [&](const char* reason) {
        if (!dialog.ended()) dialog.refuse(reason);
      });
  return dialog.result();
}

}  // namespace headless

namespace platform {

int runModalDialog(Dialog& dialog) noexcept { return headless::Dialogs::instance().run(dialog); }

}  // namespace platform
