// The settings dialog: opening from the settings store, the scope routines, confirmation.
#include "ui/CVkCompareSettingDlg.h"

#include "platform/text.h"
#include "ui/CompareConfigFile.h"

using namespace setting;

std::vector<std::string> LayerNames(const platform::Database* database) {
  std::vector<std::string> names;
  if (database)
    for (const platform::LayerRecord& layer : database->layers()) names.push_back(layer.name);
  return names;
}

std::vector<std::string> MergeLayerNames(const std::vector<std::string>& source,
                                         const std::vector<std::string>& destination) {
  std::vector<std::string> merged;
  auto listed = [&](const std::string& name) {
    for (const std::string& m : merged)
      if (platform::equalsIgnoreCase(m, name)) return true;
    return false;
  };
  for (const auto* names : {&source, &destination})
    for (const std::string& name : *names)
      if (!listed(name)) merged.push_back(name);
  return merged;
}

CVkCompareSettingDlg::CVkCompareSettingDlg(const platform::Database* source, const platform::Database* destination)
    : Dialog("Morvane比图参数设置"), layerNames_(MergeLayerNames(LayerNames(source), LayerNames(destination))) {
  addLabel(1001, "实体比较内容");
  addCheckBox(kLayer, "图层");
  addCheckBox(kColor, "颜色");
  addCheckBox(kLineType, "线型");
  addCheckBox(kLineWidth, "线宽");
  addCheckBox(kTextStyle, "文字样式");
  addCheckBox(kZ, "Z坐标");
  addCheckBox(kTypicalValue, "典型特征");
  addLabel(1002, "比较条件");
  addCheckBox(kExterEntity, "外部参照");
  addRadioButton(kAllLayers, kScopeGroup, "所有图层");
  addRadioButton(kChosenLayers, kScopeGroup, "部分图层");
  addList(kLayerList, "选择图层(选中图层中的实体参加比较)", {"图层名称", "权重"}, true);
  addCheckBox(kShow, "");
  addPopupMenu(kLayerMenu, "图层",
               {{kCheckAllLayers, "全部选中"}, {kClearAllLayers, "全部不选", false}, {kInvertLayers, "反向选择"}});
  addButton(platform::kIdOkButton, "确定(&O)");
  addButton(platform::kIdCancelButton, "取消(&C)");
}

int CVkCompareSettingDlg::DoModal(int openedBeforeCompare) {
  openedBeforeCompare_ = openedBeforeCompare;
  return doModal();
}

void CVkCompareSettingDlg::onInitDialog() {
  CCompareConfigFile& store = CCompareConfigFile::instance();
  store.ReadSettings();
  int flags[7];
  store.GetCompareFlags(flags[0], flags[1], flags[2], flags[3], flags[4], flags[5], flags[6]);
  const int boxes[7] = {kLayer, kColor, kLineType, kLineWidth, kTextStyle, kZ, kTypicalValue};
  for (int i = 0; i < 7; ++i) setChecked(boxes[i], flags[i] != 0);
  setChecked(kExterEntity, store.GetExterEntity() != 0);
  const int scope = store.GetLayerScope();
  setChecked(scope, true);
  for (const std::string& name : layerNames_) insertRow(kLayerList, {name, ""}, true);
  showScope(scope);
  // Opened before a comparison the box asks the opposite question, so it shows the inverted flag.
  const int isShow = store.GetIsShow();
  if (openedBeforeCompare_) {
    setText(kShow, "下次不显示");
    setChecked(kShow, isShow == 0);
  } else {
    setText(kShow, "每次都显示");
    setChecked(kShow, isShow == 1);
  }
}

// Under "所有图层" every layer takes part, so the list is disabled; "部分图层" lets the rows be chosen.
void CVkCompareSettingDlg::showScope(int scope) { enable(kLayerList, scope == kChosenLayers); }

void CVkCompareSettingDlg::onCheckChanged(int id) {
  if (id == kAllLayers || id == kChosenLayers) showScope(id);
}

// The context menu checks every row, clears every row or inverts the checks: with many layers, choosing
// the few to compare row by row is tedious. Clearing all is disabled in the menu resource and enabled here.
void CVkCompareSettingDlg::onContextMenu(int list) {
  if (list != kLayerList) return;
  enableMenuItem(kLayerMenu, kClearAllLayers, true);
  trackPopupMenu(kLayerMenu);
}

void CVkCompareSettingDlg::onMenuCommand(int popup, int command) {
  if (popup != kLayerMenu) return;
  for (int row = 0; row < rowCount(kLayerList); ++row) {
    const bool now = rowChecked(kLayerList, row);
    setRowChecked(kLayerList, row, command == kCheckAllLayers ? true : command == kClearAllLayers ? false : !now);
  }
}

void CVkCompareSettingDlg::onOK() {
  CCompareConfigFile& store = CCompareConfigFile::instance();
  store.SetCompareFlags(checked(kLayer), checked(kColor), checked(kLineType), checked(kLineWidth), checked(kTextStyle),
                        checked(kZ), checked(kTypicalValue));
  store.SetExterEntity(checked(kExterEntity));
  const int scope = checkedRadio(kScopeGroup);
  store.SetLayerScope(scope);
  store.WriteSettings();
  std::vector<std::string>& excluded = ExcludedLayers();
  excluded.clear();
  if (scope == kChosenLayers)
    for (int row = 0; row < rowCount(kLayerList); ++row)
      if (!rowChecked(kLayerList, row)) excluded.push_back(rowText(kLayerList, row));
  const int shown = checked(kShow) ? 1 : 0;
  store.SetIsShow(openedBeforeCompare_ ? 1 - shown : shown);
  endDialog(platform::kIdOk);
}
