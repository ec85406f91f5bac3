// Modal dialogs: the controls' state, the user's actions turned into handler calls, and the guard around them.
#include "platform/dialog.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/boundary.h"

namespace platform {

const char* controlKindName(ControlKind kind) {
  switch (kind) {
    case ControlKind::Label:
      return "label";
    case ControlKind::Edit:
      return "edit box";
    case ControlKind::CheckBox:
      return "check box";
    case ControlKind::RadioButton:
      return "radio button";
    case ControlKind::Button:
      return "button";
    case ControlKind::List:
      return "list";
    case ControlKind::PopupMenu:
      return "pop-up menu";
  }
  return "control";
}

namespace {

// "an edit box", "a check box", ...
std::string withArticle(ControlKind kind) {
  const std::string name = controlKindName(kind);
  return (name.front() == 'e' ? "an " : "a ") + name;
}

}  // namespace

Dialog::Dialog(std::string title) : title_(std::move(title)) {}

int Dialog::doModal() noexcept { return runModalDialog(*this); }

// Declaring controls ---------------------------------------------------------------------------------------

Control& Dialog::add(int id, ControlKind kind, std::string label) {
  if (find(id)) {
    throw std::invalid_argument("dialog \"" + title_ + "\" declares control " + std::to_string(id) + " twice");
  }
  Control& c = controls_.emplace_back();
  c.id = id;
  c.kind = kind;
  c.label = std::move(label);
  return c;
}

void Dialog::addLabel(int id, std::string text) { add(id, ControlKind::Label, std::move(text)); }

void Dialog::addEdit(int id, std::string label, std::string text) {
  add(id, ControlKind::Edit, std::move(label)).text = std::move(text);
}

void Dialog::addCheckBox(int id, std::string label, bool checked) {
  add(id, ControlKind::CheckBox, std::move(label)).checked = checked;
}

void Dialog::addRadioButton(int id, int group, std::string label, bool checked) {
  add(id, ControlKind::RadioButton, std::move(label)).group = group;
  if (checked) setChecked(id, true);
}

void Dialog::addButton(int id, std::string label) { add(id, ControlKind::Button, std::move(label)); }

void Dialog::addList(int id, std::string label, std::vector<std::string> columns, bool rowCheckBoxes) {
  Control& c = add(id, ControlKind::List, std::move(label));
  c.columns = std::move(columns);
  c.rowCheckBoxes = rowCheckBoxes;
}

void Dialog::addPopupMenu(int id, std::string label, std::vector<MenuItem> items) {
  add(id, ControlKind::PopupMenu, std::move(label)).items = std::move(items);
}

// Control state --------------------------------------------------------------------------------------------

const Control* Dialog::find(int id) const {
  const auto it = std::find_if(controls_.begin(), controls_.end(), [id](const Control& c) { return c.id == id; });
  return it == controls_.end() ? nullptr : &*it;
}

const Control& Dialog::at(int id) const {
  if (const Control* c = find(id)) return *c;
  throw std::invalid_argument("dialog \"" + title_ + "\" has no control " + std::to_string(id));
}

Control& Dialog::at(int id) { return const_cast<Control&>(std::as_const(*this).at(id)); }

const Control& Dialog::at(int id, ControlKind kind) const {
  const Control& c = at(id);
  if (c.kind != kind) {
    throw std::invalid_argument("control " + std::to_string(id) + " of dialog \"" + title_ + "\" is " +
                                withArticle(c.kind) + ", not " + withArticle(kind));
  }
  return c;
}

Control& Dialog::at(int id, ControlKind kind) { return const_cast<Control&>(std::as_const(*this).at(id, kind)); }

std::string Dialog::text(int id) const {
  const Control& c = at(id);
  return c.kind == ControlKind::Edit ? c.text : c.label;
}

void Dialog::setText(int id, std::string text) {
  Control& c = at(id);
  (c.kind == ControlKind::Edit ? c.text : c.label) = std::move(text);
}

bool Dialog::checked(int id) const {
  const Control& c = at(id);
  if (c.kind != ControlKind::CheckBox && c.kind != ControlKind::RadioButton) (void)at(id, ControlKind::CheckBox);
  return c.checked;
}

void Dialog::setChecked(int id, bool checked) {
  Control& c = at(id);
  if (c.kind == ControlKind::RadioButton && checked) {
    for (Control& other : controls_) {
      if (other.kind == ControlKind::RadioButton && other.group == c.group) other.checked = false;
    }
  } else if (c.kind != ControlKind::CheckBox && c.kind != ControlKind::RadioButton) {
    (void)at(id, ControlKind::CheckBox);
  }
  c.checked = checked;
}

int Dialog::checkedRadio(int group) const {
  for (const Control& c : controls_) {
    if (c.kind == ControlKind::RadioButton && c.group == group && c.checked) return c.id;
  }
  return 0;
}

bool Dialog::enabled(int id) const { return at(id).enabled; }
void Dialog::enable(int id, bool enabled) { at(id).enabled = enabled; }

namespace {

std::size_t checkedIndex(const std::vector<ListRow>& rows, int row, int list) {
  if (row < 0 || static_cast<std::size_t>(row) >= rows.size()) {
    throw std::out_of_range("list " + std::to_string(list) + " has no row " + std::to_string(row));
  }
  return static_cast<std::size_t>(row);
}

}  // namespace

int Dialog::rowCount(int list) const { return static_cast<int>(at(list, ControlKind::List).rows.size()); }

int Dialog::insertRow(int list, std::vector<std::string> cells, bool checked) {
  Control& c = at(list, ControlKind::List);
  c.rows.push_back({std::move(cells), checked});
  return static_cast<int>(c.rows.size()) - 1;
}

void Dialog::deleteAllRows(int list) { at(list, ControlKind::List).rows.clear(); }

std::string Dialog::rowText(int list, int row, int column) const {
  const Control& c = at(list, ControlKind::List);
  const ListRow& r = c.rows[checkedIndex(c.rows, row, list)];
  return column >= 0 && static_cast<std::size_t>(column) < r.cells.size() ? r.cells[static_cast<std::size_t>(column)]
                                                                          : std::string();
}

bool Dialog::rowChecked(int list, int row) const {
  const Control& c = at(list, ControlKind::List);
  return c.rows[checkedIndex(c.rows, row, list)].checked;
}

void Dialog::setRowChecked(int list, int row, bool checked) {
  Control& c = at(list, ControlKind::List);
  c.rows[checkedIndex(c.rows, row, list)].checked = checked;
}

void Dialog::setMenuItems(int popup, std::vector<MenuItem> items) {
  at(popup, ControlKind::PopupMenu).items = std::move(items);
}

void Dialog::enableMenuItem(int popup, int command, bool enabled) {
  for (MenuItem& item : at(popup, ControlKind::PopupMenu).items) {
    if (item.command == command) item.enabled = enabled;
  }
}

std::optional<int> Dialog::trackPopupMenu(int popup) {
  const Control& menu = at(popup, ControlKind::PopupMenu);
  if (!presenter_ || ended_ || menu.items.empty()) return std::nullopt;
  const std::optional<int> index = presenter_->choosePopupItem(*this, popup);
  if (!index || *index < 0 || static_cast<std::size_t>(*index) >= menu.items.size()) return std::nullopt;
  const MenuItem& item = menu.items[static_cast<std::size_t>(*index)];
  if (!item.enabled || ended_) return std::nullopt;
  const int command = item.command;
  onMenuCommand(popup, command);
  return command;
}

void Dialog::endDialog(int result) {
  ended_ = true;
  result_ = result;
}

// Running --------------------------------------------------------------------------------------------------

void Dialog::fail(std::string_view reason) noexcept {
  ended_ = true;
  result_ = kIdCancel;
  RunGuarded(
      0,
      [&] {
        failure_ = std::string(reason);
        printToCommandLine("\nDialog \"" + title_ + "\" cancelled: " + failure_ + "\n");
        return 0;
      },
      [](const char*) {});
}

template <class Body>
void Dialog::guarded(Body&& body) noexcept {
  try {
    body();
  } catch (...) {
    fail(CurrentExceptionReason());
  }
}

int Dialog::runWith(DialogPresenter& presenter) noexcept {
  ended_ = false;
  result_ = kIdCancel;
  failure_.clear();
  presenter_ = &presenter;
  guarded([&] { onInitDialog(); });
  if (!ended_) guarded([&] { presenter.run(*this); });
  if (!ended_) abandon("the presentation stopped before the dialog was closed");
  presenter_ = nullptr;
  return result_;
}

void Dialog::refuse(std::string_view reason) noexcept { fail(reason); }

void Dialog::abandon(std::string_view reason) noexcept {
  if (ended_) return;
  guarded([&] { onCancel(); });
  if (failure_.empty()) fail(reason);
}

// The user's actions --------------------------------------------------------------------------------------

std::string Dialog::refusal(int id, std::initializer_list<ControlKind> kinds) const {
  if (ended_) return "the dialog has ended";
  const Control* c = find(id);
  if (!c) return "there is no control " + std::to_string(id);
  if (std::find(kinds.begin(), kinds.end(), c->kind) == kinds.end()) {
    return "control " + std::to_string(id) + " is " + withArticle(c->kind);
  }
  if (!c->enabled) return "control " + std::to_string(id) + " is disabled";
  return {};
}

std::string Dialog::userSetText(int id, std::string text) {
  if (std::string why = refusal(id, {ControlKind::Edit}); !why.empty()) return why;
  at(id).text = std::move(text);
  return {};
}

std::string Dialog::userSetChecked(int id, bool checked) {
  if (std::string why = refusal(id, {ControlKind::CheckBox, ControlKind::RadioButton}); !why.empty()) return why;
  Control& c = at(id);
  if (c.kind == ControlKind::RadioButton) {
    if (!checked) return "radio button " + std::to_string(id) + " is cleared by checking another of its group";
    return userClick(id);
  }
  if (c.checked == checked) return {};
  c.checked = checked;
  guarded([&] { onCheckChanged(id); });
  return {};
}

std::string Dialog::userContextMenu(int list) {
  if (std::string why = refusal(list, {ControlKind::List}); !why.empty()) return why;
  guarded([&] { onContextMenu(list); });
  return {};
}

std::string Dialog::userClick(int id) {
  if (std::string why = refusal(id, {ControlKind::Button, ControlKind::CheckBox, ControlKind::RadioButton});
      !why.empty()) {
    return why;
  }
  Control& c = at(id);
  switch (c.kind) {
    case ControlKind::CheckBox:
      c.checked = !c.checked;
      guarded([&] { onCheckChanged(id); });
      break;
    case ControlKind::RadioButton:
      setChecked(id, true);
      guarded([&] { onCheckChanged(id); });
      break;
    default:
      if (id == kIdOkButton) {
        guarded([&] { onOK(); });
      } else if (id == kIdCancelButton) {
        guarded([&] { onCancel(); });
      } else {
        guarded([&] { onClicked(id); });
      }
  }
  return {};
}

std::string Dialog::userSetRowChecked(int list, int row, bool checked) {
  if (std::string why = refusal(list, {ControlKind::List}); !why.empty()) return why;
  Control& c = at(list);
  if (!c.rowCheckBoxes) return "list " + std::to_string(list) + " has no check boxes";
  if (row < 0 || static_cast<std::size_t>(row) >= c.rows.size()) {
    return "list " + std::to_string(list) + " has " + std::to_string(c.rows.size()) + " rows";
  }
  ListRow& r = c.rows[static_cast<std::size_t>(row)];
  if (r.checked == checked) return {};
  r.checked = checked;
  guarded([&] { onRowCheckChanged(list, row); });
  return {};
}

std::string Dialog::userChooseMenuItem(int popup, int index) {
  if (std::string why = refusal(popup, {ControlKind::PopupMenu}); !why.empty()) return why;
  const Control& c = at(popup);
  if (index < 0 || static_cast<std::size_t>(index) >= c.items.size()) {
    return "menu " + std::to_string(popup) + " has " + std::to_string(c.items.size()) + " items";
  }
  const MenuItem& item = c.items[static_cast<std::size_t>(index)];
  if (!item.enabled) return "item \"" + item.text + "\" of menu " + std::to_string(popup) + " is disabled";
  const int command = item.command;
  guarded([&] { onMenuCommand(popup, command); });
  return {};
}

std::string Dialog::userOk() {
  if (ended_) return "the dialog has ended";
  if (const Control* ok = find(kIdOkButton); ok && !ok->enabled) return "OK is disabled";
  guarded([&] { onOK(); });
  return {};
}

std::string Dialog::userCancel() {
  if (ended_) return "the dialog has ended";
  guarded([&] { onCancel(); });
  return {};
}

}  // namespace platform
