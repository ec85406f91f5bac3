// The file selection dialog: opening from the settings store, browsing, the open-drawing menu, validation.
#include "ui/CVkCompareFileSelDlg.h"

#include "platform/documents.h"
#include "platform/files.h"
#include "platform/text.h"
#include "ui/CompareConfigFile.h"

namespace {

using namespace filesel;

constexpr const char* kWarning = "警告";
constexpr std::size_t kFileNameBufferChars = 2562;

// The extension of a path: the text after its last ".", wherever that stands (a dot in a folder name
// counts); empty when there is none.
std::string extensionOf(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos ? std::string() : path.substr(dot + 1);
}

bool isDrawingExtension(const std::string& path) {
  const std::string ext = extensionOf(path);
  return platform::equalsIgnoreCase(ext, "dwg") || platform::equalsIgnoreCase(ext, "dxf");
}

}  // namespace

CVkCompareFileSelDlg::CVkCompareFileSelDlg() : Dialog("Morvane比图文件选择") {
  addLabel(kFirstLabel, "第一个文件：");
  addEdit(kFirstPath, "第一个文件");
  addButton(kFirstBrowse, "...");
  addButton(kFirstOpenList, "...");
  addLabel(kSecondLabel, "第二个文件：");
  addEdit(kSecondPath, "第二个文件");
  addButton(kSecondBrowse, "...");
  addButton(kSecondOpenList, "...");
  addButton(platform::kIdOkButton, "确定");
  addPopupMenu(kOpenDrawingsMenu, "打开的图纸");
}

void CVkCompareFileSelDlg::onInitDialog() {
  CCompareConfigFile& store = CCompareConfigFile::instance();
  store.ReadCompareFiles();
  firstPath_ = store.SourceFile();
  secondPath_ = store.DestinationFile();
  refreshEdits();
}

void CVkCompareFileSelDlg::refreshEdits() {
  setText(kFirstPath, firstPath_);
  setText(kSecondPath, secondPath_);
}

std::string CVkCompareFileSelDlg::ValidationMessage(const std::string& first, const std::string& second) {
  if (first.empty() || second.empty()) return "比较文件不能为空！";
  for (const std::string* path : {&first, &second})
    if (platform::fileKind(*path) == platform::FileKind::Missing) return platform::fmt("文件不存在：%s", path->c_str());
  for (const std::string* path : {&first, &second})
    if (!isDrawingExtension(*path)) return platform::fmt("文件不是DWG文件:%s", path->c_str());
  return {};
}

void CVkCompareFileSelDlg::onOK() {
  firstPath_ = text(kFirstPath);
  secondPath_ = text(kSecondPath);
  const std::string problem = ValidationMessage(firstPath_, secondPath_);
  if (!problem.empty()) {
    platform::showMessageBox(problem, kWarning, platform::kMbOk | platform::kMbIconWarning);
    return;
  }
  CCompareConfigFile& store = CCompareConfigFile::instance();
  store.SetSourceFile(firstPath_);
  store.SetDestinationFile(secondPath_);
  store.WriteCompareFiles();
  endDialog(platform::kIdOk);
}

void CVkCompareFileSelDlg::onClicked(int id) {
  if (id == kFirstBrowse || id == kSecondBrowse) browse(id);
  if (id == kFirstOpenList) showOpenDrawings(kFirstItemBase);
  if (id == kSecondOpenList) showOpenDrawings(kSecondItemBase);
}

void CVkCompareFileSelDlg::browse(int id) {
  // While the second file is chosen the current document stays locked, so that no document switch
  // happens under the file dialog.
  platform::Document* held = id == kSecondBrowse ? platform::curDocument() : nullptr;
  if (held) platform::lockDocument(held, platform::LockMode::kWrite);
  const auto chosen = platform::showFileOpenDialog(kDrawingFilter, "", "", platform::kOfnHideReadOnly,
                                                   kFileNameBufferChars);
  if (held) platform::unlockDocument(held);
  if (!chosen) return;
  (id == kFirstBrowse ? firstPath_ : secondPath_) = *chosen;
  refreshEdits();
}

void CVkCompareFileSelDlg::showOpenDrawings(int itemBase) {
  openPaths_.clear();
  openNames_.clear();
  // A drawing never saved has no folder part: its name is its own file-name part and it is left out.
  for (const platform::Document* document : platform::documents()) {
    const std::string& path = document->fileName();
    const std::string name(platform::fileNamePart(path));
    if (name != path) {
      openPaths_.push_back(path);
      openNames_.push_back(name);
    }
  }
  std::vector<platform::MenuItem> items;
  for (std::size_t i = 0; i < openNames_.size(); ++i)
    items.push_back({itemBase + static_cast<int>(i), openNames_[i], true});
  setMenuItems(kOpenDrawingsMenu, std::move(items));
  trackPopupMenu(kOpenDrawingsMenu);
}

void CVkCompareFileSelDlg::onMenuCommand(int, int command) {
  // An index past the list is a program error: at() throws and the dialog ends as cancelled.
  if (command >= kSecondItemBase && command < kFirstItemBase) {
    secondPath_ = openPaths_.at(static_cast<std::size_t>(command - kSecondItemBase));
  } else if (command >= kFirstItemBase && command < kFirstItemBase + 1024) {
    firstPath_ = openPaths_.at(static_cast<std::size_t>(command - kFirstItemBase));
  } else {
    return;
  }
  refreshEdits();
}
