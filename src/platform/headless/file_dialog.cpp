// The headless host's file-open dialog: a dialog of its own with the file name, answered like any other.
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/dialog.h"
#include "platform/files.h"
#include "platform/text.h"

namespace {

// The control identifiers of the host's common file dialog.
constexpr int kFileTypes = 1089;
constexpr int kReadOnly = 1040;
constexpr int kFileName = 1152;

// The descriptions of a filter "Text (*.a)|*.a|Other (*.b)|*.b||", joined by "; ".
std::string filterDescriptions(std::string_view filter) {
  std::string out;
  bool description = true;
  while (!filter.empty()) {
    const std::size_t bar = filter.find('|');
    const std::string_view part = filter.substr(0, bar);
    if (description && !part.empty()) out += (out.empty() ? "" : "; ") + std::string(part);
    description = !description;
    filter = bar == std::string_view::npos ? std::string_view() : filter.substr(bar + 1);
  }
  return out;
}

class FileOpenDialog : public platform::Dialog {
 public:
  FileOpenDialog(std::string_view filter, std::string_view defaultExtension, std::string_view initialName,
                 unsigned flags)
      : Dialog("Open"), defaultExtension_(defaultExtension) {
    addEdit(kFileName, "File name:", std::string(initialName));
    addLabel(kFileTypes, "Files of type: " + filterDescriptions(filter));
    if (!(flags & platform::kOfnHideReadOnly)) addCheckBox(kReadOnly, "Open as read-only");
    addButton(platform::kIdOkButton, "Open");
    addButton(platform::kIdCancelButton, "Cancel");
  }

  std::string path;

 protected:
  // An empty name keeps the dialog open; any other is taken, made absolute against the current folder.
  void onOK() override {
    std::string name = text(kFileName);
    if (name.empty()) return;
    if (!defaultExtension_.empty() && platform::fileNamePart(name).find('.') == std::string_view::npos) {
      name += "." + defaultExtension_;
    }
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(name, error);
    path = error ? name : full.lexically_normal().string();
    endDialog(platform::kIdOk);
  }

 private:
  std::string defaultExtension_;
};

}  // namespace

namespace platform {

std::optional<std::string> showFileOpenDialog(std::string_view filter, std::string_view defaultExtension,
                                              std::string_view initialName, unsigned flags, std::size_t bufferChars) {
  FileOpenDialog dialog(filter, defaultExtension, initialName, flags);
  if (dialog.doModal() != kIdOk) return std::nullopt;
  if (utf8ToUtf16(dialog.path).size() >= bufferChars) {
    printToCommandLine("\nThe file name is longer than the " + std::to_string(bufferChars) +
                       " characters the caller can take: " + dialog.path + "\n");
    return std::nullopt;
  }
  return dialog.path;
}

}  // namespace platform
