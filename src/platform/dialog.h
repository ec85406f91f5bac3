// Modal dialogs of the host: controls by identifier, their handlers, and the seam to the host that shows them.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"

namespace platform {

// The identifiers of the OK and Cancel buttons, which are also a dialog's results (kIdOk, kIdCancel of host.h).
inline constexpr int kIdOkButton = kIdOk;
inline constexpr int kIdCancelButton = kIdCancel;

enum class ControlKind { Label, Edit, CheckBox, RadioButton, Button, List, PopupMenu };
// "label", "edit box", "check box", "radio button", "button", "list", "pop-up menu".
const char* controlKindName(ControlKind kind);

// One row of a list: its cells (the first is the row's text) and its check box.
struct ListRow {
  std::vector<std::string> cells;
  bool checked = false;
};

// One item of a pop-up menu: the command identifier its choice sends to the dialog.
struct MenuItem {
  int command = 0;
  std::string text;
  bool enabled = true;
};

// A control as declared and as it stands now.
struct Control {
  int id = 0;
  ControlKind kind = ControlKind::Label;
  std::string label;     // the caption: a label's text, a button's or check box's text, a list's or menu's title
  std::string text;      // an edit box's contents
  bool checked = false;  // check boxes and radio buttons
  int group = 0;         // radio buttons: the group within which one is checked
  bool enabled = true;
  std::vector<std::string> columns;  // lists
  std::vector<ListRow> rows;         // lists
  bool rowCheckBoxes = false;        // lists
  std::vector<MenuItem> items;       // pop-up menus
};

class Dialog;

// How a host shows a running dialog and takes the user's actions to it. The host chooses one for each
// doModal; the dialog's logic never sees which.
class DialogPresenter {
 public:
  virtual ~DialogPresenter() = default;
  // Shows the dialog and passes the user's actions to its user* functions until it has ended.
  virtual void run(Dialog& dialog) = 0;
  // Shows a pop-up menu of the dialog (opened by one of its handlers) and returns the index of the item
  // chosen, or nothing when the menu is dismissed.
  virtual std::optional<int> choosePopupItem(Dialog& dialog, int popupId) = 0;
};

// Runs a dialog modally in the host: initialises it, presents it until it ends and returns its result.
// Never throws; a dialog that cannot be presented is cancelled with a line on the command line.
int runModalDialog(Dialog& dialog) noexcept;

// The host's file-open dialog. filter is in the host's form, pairs of description and patterns ending in
// "||" ("DWG文件 (*.dwg)|*.dwg||"); a name typed without extension gets defaultExtension when one is given;
// the read-only check box is left out under kOfnHideReadOnly. Returns the full path chosen, or nothing when
// cancelled or when the path does not fit bufferChars UTF-16 units with its terminator.
enum FileDialogFlags : unsigned { kOfnHideReadOnly = 0x4 };
std::optional<std::string> showFileOpenDialog(std::string_view filter, std::string_view defaultExtension,
                                              std::string_view initialName, unsigned flags, std::size_t bufferChars);

// A modal dialog. Its logic derives from it: declares the controls (in the constructor or onInitDialog),
// overrides the handlers, and reads and writes control state through the functions below. Asking for an
// identifier the dialog does not have, or for a control of another kind, throws std::invalid_argument;
// inside a handler that ends the dialog as cancelled. An object serves one doModal: its controls keep the
// state they ended with, for the caller to read.
class Dialog {
 public:
  explicit Dialog(std::string title);
  virtual ~Dialog() = default;
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  // Runs the dialog until OK, Cancel or endDialog; returns kIdOk, kIdCancel or the value given to endDialog.
  // Nothing thrown by a handler leaves it: such a dialog ends as cancelled with a line naming it and the reason.
  int doModal() noexcept;

  // Declaring controls. Identifiers are unique within a dialog.
  void addLabel(int id, std::string text);
  void addEdit(int id, std::string label, std::string text = "");
  void addCheckBox(int id, std::string label, bool checked = false);
  // Radio buttons of one group: checking one clears the others.
  void addRadioButton(int id, int group, std::string label, bool checked = false);
  void addButton(int id, std::string label);
  void addList(int id, std::string label, std::vector<std::string> columns, bool rowCheckBoxes);
  void addPopupMenu(int id, std::string label, std::vector<MenuItem> items = {});

  // Text: an edit box's contents, the caption of any other control.
  std::string text(int id) const;
  void setText(int id, std::string text);
  // Check boxes and radio buttons; checking a radio button clears the others of its group.
  bool checked(int id) const;
  void setChecked(int id, bool checked);
  // The checked radio button of a group, 0 when none is.
  int checkedRadio(int group) const;
  bool enabled(int id) const;
  void enable(int id, bool enabled);

  // Lists; rows are counted from 0.
  int rowCount(int list) const;
  int insertRow(int list, std::vector<std::string> cells, bool checked = false);
  void deleteAllRows(int list);
  std::string rowText(int list, int row, int column = 0) const;
  bool rowChecked(int list, int row) const;
  void setRowChecked(int list, int row, bool checked);

  // Pop-up menus.
  void setMenuItems(int popup, std::vector<MenuItem> items);
  void enableMenuItem(int popup, int command, bool enabled);
  // Shows the menu (from a handler) and, when an item is chosen, sends its command to onMenuCommand;
  // returns that command, or nothing when the menu was dismissed or the dialog ended meanwhile.
  std::optional<int> trackPopupMenu(int popup);

  // Ends the dialog with a result once the current handler returns.
  void endDialog(int result);

  const std::string& title() const { return title_; }
  const std::vector<Control>& controls() const { return controls_; }
  // The control with this identifier, nullptr when there is none.
  const Control* find(int id) const;
  bool ended() const { return ended_; }
  int result() const { return result_; }
  // Why the dialog was cancelled by a failure (a handler that threw, input that ran out); empty otherwise.
  const std::string& failure() const { return failure_; }

  // The presentation side: what the user does, as the host's presenter reports it. Each runs the handler a
  // user's action triggers and returns an empty text, or says why the action is refused (the dialog has no
  // such control, it is disabled, the row or item does not exist, the dialog has ended). A handler that
  // throws ends the dialog as cancelled.
  std::string userSetText(int id, std::string text);
  std::string userSetChecked(int id, bool checked);
  std::string userClick(int id);
  std::string userSetRowChecked(int list, int row, bool checked);
  std::string userChooseMenuItem(int popup, int index);
  // A right click on a list: its context menu, as the dialog offers one.
  std::string userContextMenu(int list);
  std::string userOk();
  std::string userCancel();

  // The host's side of doModal (runModalDialog): calls onInitDialog, lets the presenter run the dialog,
  // and when it comes back with the dialog still open, cancels it; returns the result.
  int runWith(DialogPresenter& presenter) noexcept;
  // Ends a dialog that nothing can present, as cancelled with the reason, without running it.
  void refuse(std::string_view reason) noexcept;
  // Ends a running dialog that must stop now (input ran out): onCancel, and Cancel if that does not end it.
  void abandon(std::string_view reason) noexcept;

 protected:
  // Handlers. onOK and onCancel end the dialog by default; the others do nothing.
  virtual void onInitDialog() {}
  virtual void onOK() { endDialog(kIdOk); }
  virtual void onCancel() { endDialog(kIdCancel); }
  // A push button other than OK and Cancel was clicked.
  virtual void onClicked(int /*id*/) {}
  // The user changed a check box, or checked a radio button (id is the one now checked).
  virtual void onCheckChanged(int /*id*/) {}
  virtual void onRowCheckChanged(int /*list*/, int /*row*/) {}
  virtual void onMenuCommand(int /*popup*/, int /*command*/) {}
  // A list was right-clicked.
  virtual void onContextMenu(int /*list*/) {}

 private:
  Control& at(int id);
  const Control& at(int id) const;
  Control& at(int id, ControlKind kind);
  const Control& at(int id, ControlKind kind) const;
  Control& add(int id, ControlKind kind, std::string label);
  // Runs a handler; when it throws the dialog ends as cancelled and the reason is printed.
  template <class Body>
  void guarded(Body&& body) noexcept;
  // Ends the dialog as cancelled by a failure and says so on the command line.
  void fail(std::string_view reason) noexcept;
  // What refuses a user's action on a control: "" when it may be acted on.
  std::string refusal(int id, std::initializer_list<ControlKind> kinds) const;

  std::string title_;
  std::vector<Control> controls_;
  DialogPresenter* presenter_ = nullptr;
  bool ended_ = false;
  int result_ = kIdCancel;
  std::string failure_;
};

}  // namespace platform
