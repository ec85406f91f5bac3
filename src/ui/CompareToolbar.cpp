// Making, showing and removing the toolbar "Morvane图纸比较" through the host's automation model.
#include "ui/CompareToolbar.h"

#include "platform/files.h"
#include "ui/CompareConfigFile.h"

namespace {

constexpr const char* kMenuGroup = "Acad";
constexpr long long kAppendIndex = 100;  // past the end of any toolbar: the button is appended

// One call that answers an object; null when the call fails or answers something else.
CAutomationObject* objectOf(int flags, CAutomationObject* from, std::string_view member,
                            std::vector<AutomationValue> arguments = {}) {
  if (!from) return nullptr;
  AutomationValue value;
  if (AutoWrap(flags, &value, from, member, std::move(arguments)) != kSOk) return nullptr;
  CAutomationObject* const* object = std::get_if<CAutomationObject*>(&value);
  return object ? *object : nullptr;
}

std::optional<long long> countOf(CAutomationObject* collection) {
  AutomationValue value;
  if (AutoWrap(kDispatchPropertyGet, &value, collection, "Count") != kSOk) return std::nullopt;
  const long long* count = std::get_if<long long>(&value);
  return count ? std::optional<long long>(*count) : std::nullopt;
}

bool nameIs(CAutomationObject* object, std::string_view wanted) {
  AutomationValue value;
  if (AutoWrap(kDispatchPropertyGet, &value, object, "Name") != kSOk) return false;
  const std::string* name = std::get_if<std::string>(&value);
  return name && *name == wanted;
}

// The toolbars of the menu group "Acad": the first group of that exact name, walked from index 0.
CAutomationObject* acadToolbars(CAutomationObject& application) {
  CAutomationObject* groups = objectOf(kDispatchPropertyGet, &application, "MenuGroups");
  if (!groups) return nullptr;
  const std::optional<long long> count = countOf(groups);
  if (!count || *count <= 0) return nullptr;
  for (long long i = 0; i < *count; ++i) {
    CAutomationObject* group = objectOf(kDispatchMethod | kDispatchPropertyGet, groups, "Item", {i});
    if (group && nameIs(group, kMenuGroup)) return objectOf(kDispatchPropertyGet, group, "Toolbars");
  }
  return nullptr;
}

// The toolbar among them, looked for from the last index down; null when there is none.
CAutomationObject* findToolbar(CAutomationObject* toolbars) {
  if (!toolbars) return nullptr;
  const std::optional<long long> count = countOf(toolbars);
  if (!count) return nullptr;
  for (long long i = *count - 1; i >= 0; --i) {
    CAutomationObject* toolbar = objectOf(kDispatchMethod | kDispatchPropertyGet, toolbars, "Item", {i});
    if (toolbar && nameIs(toolbar, kCompareToolbarName)) return toolbar;
  }
  return nullptr;
}

}  // namespace

int CreateCompareToolbar(CAutomationObject& application, const std::string& dataFolder) {
  CAutomationObject* toolbars = acadToolbars(application);
  if (!toolbars) return 0;
  // A toolbar already there, perhaps rearranged by the user, stays exactly as it is.
  if (findToolbar(toolbars)) return 1;
  CAutomationObject* toolbar = objectOf(kDispatchMethod, toolbars, "Add", {std::string(kCompareToolbarName)});
  if (!toolbar) return 0;
  const std::string bitmapFolder = dataFolder.empty() ? std::string() : platform::joinPath(dataFolder, "ToosBmp");
  for (const CompareToolbarButton& row : CompareToolbarButtons()) {
    CAutomationObject* item =
        objectOf(kDispatchMethod, toolbar, "AddToolbarButton",
                 {kAppendIndex, std::string(row.caption), std::string(row.tooltip), std::string(row.macro)});
    if (!item) return 0;
    // Without a data folder there is nowhere to put the pictures: the buttons keep the host's own.
    if (bitmapFolder.empty()) continue;
    const std::string path = platform::joinPath(bitmapFolder, row.bitmapFile);
    if (WriteBitmapFile(row.resourceId, path) &&
        AutoWrap(kDispatchMethod, nullptr, item, "SetBitmaps", {path, path}) != kSOk)
      return 0;
  }
  return 1;
}

int CreateCompareToolbar() {
  return CreateCompareToolbar(HostApplication(), CCompareConfigFile::instance().DataFolder());
}

bool SetCompareToolbarVisible(CAutomationObject& application, bool visible) {
  CAutomationObject* toolbar = findToolbar(acadToolbars(application));
  return toolbar &&
         AutoWrap(kDispatchPropertyPut, nullptr, toolbar, "Visible", {static_cast<long long>(visible ? 1 : 0)}) == kSOk;
}

bool DeleteCompareToolbar(CAutomationObject& application) {
  CAutomationObject* toolbar = findToolbar(acadToolbars(application));
  return toolbar && AutoWrap(kDispatchMethod, nullptr, toolbar, "Delete") == kSOk;
}
