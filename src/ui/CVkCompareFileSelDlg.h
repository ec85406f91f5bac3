// The file selection dialog: the source and destination drawings by typed path, browser or open drawing.
#pragma once

#include <string>
#include <vector>

#include "platform/dialog.h"

// Control identifiers of the file selection dialog.
namespace filesel {
inline constexpr int kFirstLabel = 128;
inline constexpr int kFirstPath = 101;
inline constexpr int kFirstBrowse = 104;
inline constexpr int kFirstOpenList = 106;
inline constexpr int kSecondLabel = 129;
inline constexpr int kSecondPath = 102;
inline constexpr int kSecondBrowse = 109;
inline constexpr int kSecondOpenList = 112;
// The pop-up menu of open drawings that buttons 106 and 112 show.
inline constexpr int kOpenDrawingsMenu = 3072;
// Command identifiers of its items: 2048 + index for the first file, 1024 + index for the second.
inline constexpr int kFirstItemBase = 2048;
inline constexpr int kSecondItemBase = 1024;
}  // namespace filesel

// The drawings the host opens, as the browser offers them and as validation accepts them: DWG, and DXF,
// which the headless host reads as well.
inline constexpr const char* kDrawingFilter = "DWG文件 (*.dwg)|*.dwg|DXF文件 (*.dxf)|*.dxf||";

class CVkCompareFileSelDlg : public platform::Dialog {
 public:
  CVkCompareFileSelDlg();

  // The two paths as the dialog holds them (after OK, the store holds them too).
  const std::string& firstPath() const { return firstPath_; }
  const std::string& secondPath() const { return secondPath_; }

  // The first problem with the two paths as validation sees it: the message shown, empty when they pass.
  static std::string ValidationMessage(const std::string& first, const std::string& second);

 protected:
  void onInitDialog() override;
  void onOK() override;
  void onClicked(int id) override;
  void onMenuCommand(int popup, int command) override;

 private:
  void browse(int id);
  void showOpenDrawings(int itemBase);
  void refreshEdits();

  std::string firstPath_;
  std::string secondPath_;
  std::vector<std::string> openPaths_;
  std::vector<std::string> openNames_;
};
