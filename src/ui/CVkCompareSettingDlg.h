// The settings dialog: compared properties, external references, the layer scope and the layers compared.
#pragma once

#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/dialog.h"

// Control identifiers of the settings dialog.
namespace setting {
inline constexpr int kLayer = 105;
inline constexpr int kColor = 107;
inline constexpr int kLineType = 110;
inline constexpr int kLineWidth = 113;
inline constexpr int kTextStyle = 115;
inline constexpr int kZ = 117;
inline constexpr int kExterEntity = 123;
inline constexpr int kTypicalValue = 124;
inline constexpr int kAllLayers = 120;
inline constexpr int kChosenLayers = 122;
inline constexpr int kLayerList = 130;
inline constexpr int kShow = 131;
inline constexpr int kScopeGroup = 1;  // the radio group of 120 and 122
// The layer list's context menu (menu resource 124; as a control it needs an identifier of its own, since 124
// is the typical-value box) and its commands.
inline constexpr int kLayerMenu = 4124;
inline constexpr int kCheckAllLayers = 32771;
inline constexpr int kClearAllLayers = 32772;
inline constexpr int kInvertLayers = 32773;
}  // namespace setting

// The layer names of one drawing in its layer table's order; none without a drawing.
std::vector<std::string> LayerNames(const platform::Database* database);
// The names of both drawings in one list: the source's in their order, then the destination's that the
// source lacks. Layer names are compared without regard to case, as the host compares them, so a layer
// present in both drawings is listed once, as the source spells it.
std::vector<std::string> MergeLayerNames(const std::vector<std::string>& source,
                                         const std::vector<std::string>& destination);

class CVkCompareSettingDlg : public platform::Dialog {
 public:
  // The layer list offers the layers of these drawings (either may be absent).
  CVkCompareSettingDlg(const platform::Database* source, const platform::Database* destination);

  // openedBeforeCompare: 1 when a comparison opens it (the show box reads "下次不显示"), 0 from the settings
  // command ("每次都显示"). Returns kIdOk or kIdCancel.
  int DoModal(int openedBeforeCompare);

 protected:
  void onInitDialog() override;
  void onOK() override;
  void onCheckChanged(int id) override;
  void onContextMenu(int list) override;
  void onMenuCommand(int popup, int command) override;

 private:
  void showScope(int scope);

  int openedBeforeCompare_ = 0;
  std::vector<std::string> layerNames_;
};
