// The automation objects of the host's menu groups, toolbars and toolbar items, over platform/menus.h.
#include "ui/HostMenus.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "platform/menus.h"
#include "platform/text.h"

namespace {

// An automation object whose members are found by name in a fixed list (identifiers from 1).
class CMembersObject : public CAutomationObject {
 public:
  HResult GetIDsOfNames(std::string_view name, long& dispId) override {
    const std::vector<const char*>& names = Members();
    for (std::size_t i = 0; i < names.size(); ++i)
      if (platform::equalsIgnoreCase(name, names[i])) return dispId = static_cast<long>(i) + 1, kSOk;
    return kDispEUnknownName;
  }

 protected:
  virtual const std::vector<const char*>& Members() const = 0;

  // The argument at a place in the caller's order (automation passes the last argument first).
  static const AutomationValue& Arg(const DispatchParams& params, std::size_t place) {
    return params.args[params.args.size() - 1 - place];
  }
  static HResult Get(int flags, AutomationValue* result, AutomationValue value) {
    if (!(flags & kDispatchPropertyGet)) return kDispEMemberNotFound;
    if (result) *result = std::move(value);
    return kSOk;
  }
  static HResult Answer(AutomationValue* result, CAutomationObject* object) {
    if (!object) return kEFail;
    if (result) *result = object;
    return kSOk;
  }
  // "Item" of a collection of count members: by an index from 0, or by a name (the first member whose
  // name matches(place, name)); object(place) gives the member's object.
  template <class Matches, class Object>
  static HResult ItemOf(const DispatchParams& params, AutomationValue* result, std::size_t count,
                        Matches matches, Object object) {
    if (params.args.size() != 1) return kDispEBadParamCount;
    const AutomationValue& which = Arg(params, 0);
    if (const long long* index = std::get_if<long long>(&which)) {
      if (*index < 0 || *index >= static_cast<long long>(count)) return kEFail;
      return Answer(result, object(static_cast<std::size_t>(*index)));
    }
    const std::string* name = std::get_if<std::string>(&which);
    if (!name) return kDispETypeMismatch;
    for (std::size_t place = 0; place < count; ++place)
      if (matches(place, *name)) return Answer(result, object(place));
    return kEFail;
  }
};

class CToolbarItemObject;
class CToolbarObject;
class CToolbarsObject;
class CMenuGroupObject;

// One object per host group, toolbar and button, kept for the process: callers hold plain pointers, as
// they would hold interface pointers, and an object outliving its host item answers kEFail.
struct Objects {
  std::map<std::string, std::unique_ptr<CMenuGroupObject>> groups;  // by name as the host spells it
  std::map<platform::ToolbarId, std::unique_ptr<CToolbarObject>> toolbars;
  std::map<platform::ToolbarButtonId, std::unique_ptr<CToolbarItemObject>> items;

  CMenuGroupObject* group(const std::string& name);
  CToolbarObject* toolbar(platform::ToolbarId id);
  CToolbarItemObject* item(platform::ToolbarId toolbar, platform::ToolbarButtonId button);
};
Objects& objects() {
  static Objects all;
  return all;
}

class CToolbarItemObject final : public CMembersObject {
 public:
  CToolbarItemObject(platform::ToolbarId toolbar, platform::ToolbarButtonId button)
      : toolbar_(toolbar), button_(button) {}

  HResult Invoke(long dispId, int flags, const DispatchParams& params, AutomationValue* result) override {
    const std::optional<platform::ToolbarInfo> info = platform::toolbarInfo(toolbar_);
    const platform::ToolbarButton* button = nullptr;
    if (info)
      for (const platform::ToolbarButton& b : info->buttons)
        if (b.id == button_) button = &b;
    if (!button) return kEFail;
    switch (dispId) {
      case 1: return Get(flags, result, button->name);
      case 2: return Get(flags, result, button->helpString);
      case 3: return Get(flags, result, button->macro);
      case 4: {
        if (!(flags & kDispatchMethod)) return kDispEMemberNotFound;
        if (params.args.size() != 2) return kDispEBadParamCount;
        const std::string* small = std::get_if<std::string>(&Arg(params, 0));
        const std::string* large = std::get_if<std::string>(&Arg(params, 1));
        if (!small || !large) return kDispETypeMismatch;
        return platform::setToolbarButtonBitmaps(toolbar_, button_, *small, *large) ? kSOk : kEFail;
      }
      default: return kDispEMemberNotFound;
    }
  }

 protected:
  const std::vector<const char*>& Members() const override {
    static const std::vector<const char*> names = {"Name", "HelpString", "Macro", "SetBitmaps"};
    return names;
  }

 private:
  platform::ToolbarId toolbar_;
  platform::ToolbarButtonId button_;
};

class CToolbarObject final : public CMembersObject {
 public:
  explicit CToolbarObject(platform::ToolbarId id) : id_(id) {}

  HResult Invoke(long dispId, int flags, const DispatchParams& params, AutomationValue* result) override {
    const std::optional<platform::ToolbarInfo> info = platform::toolbarInfo(id_);
    if (!info) return kEFail;
    switch (dispId) {
      case 1: return Get(flags, result, info->name);
      case 2:
        if (flags & kDispatchPropertyPut) {
          if (params.args.size() != 1) return kDispEBadParamCount;
          const long long* visible = std::get_if<long long>(&Arg(params, 0));
          if (!visible) return kDispETypeMismatch;
          return platform::setToolbarVisible(id_, *visible != 0) ? kSOk : kEFail;
        }
        return Get(flags, result, static_cast<long long>(info->visible ? 1 : 0));
      case 3: return Get(flags, result, static_cast<long long>(info->buttons.size()));
      case 4:
        return ItemOf(
            params, result, info->buttons.size(),
            [&](std::size_t i, const std::string& name) { return info->buttons[i].name == name; },
            [&](std::size_t i) { return objects().item(id_, info->buttons[i].id); });
      case 5:
        if (!(flags & kDispatchMethod)) return kDispEMemberNotFound;
        return platform::deleteToolbar(id_) ? kSOk : kEFail;
      case 6: {
        if (!(flags & kDispatchMethod)) return kDispEMemberNotFound;
        if (params.args.size() != 4) return kDispEBadParamCount;
        const long long* index = std::get_if<long long>(&Arg(params, 0));
        const std::string* name = std::get_if<std::string>(&Arg(params, 1));
        const std::string* help = std::get_if<std::string>(&Arg(params, 2));
        const std::string* macro = std::get_if<std::string>(&Arg(params, 3));
        if (!index || !name || !help || !macro) return kDispETypeMismatch;
        const platform::ToolbarButtonId button =
            platform::addToolbarButton(id_, static_cast<int>(std::min<long long>(*index, 1 << 30)), *name, *help, *macro);
        return button ? Answer(result, objects().item(id_, button)) : kEFail;
      }
      default: return kDispEMemberNotFound;
    }
  }

 protected:
  const std::vector<const char*>& Members() const override {
    static const std::vector<const char*> names = {"Name", "Visible", "Count", "Item", "Delete", "AddToolbarButton"};
    return names;
  }

 private:
  platform::ToolbarId id_;
};

bool groupLoaded(const std::string& name) {
  for (const std::string& g : platform::menuGroups())
    if (platform::equalsIgnoreCase(g, name)) return true;
  return false;
}

class CToolbarsObject final : public CMembersObject {
 public:
  explicit CToolbarsObject(std::string group) : group_(std::move(group)) {}

  HResult Invoke(long dispId, int flags, const DispatchParams& params, AutomationValue* result) override {
    if (!groupLoaded(group_)) return kEFail;
    const std::vector<platform::ToolbarId> ids = platform::toolbars(group_);
    switch (dispId) {
      case 1: return Get(flags, result, static_cast<long long>(ids.size()));
      case 2:
        return ItemOf(
            params, result, ids.size(),
            [&](std::size_t i, const std::string& name) { return platform::toolbarInfo(ids[i])->name == name; },
            [&](std::size_t i) { return objects().toolbar(ids[i]); });
      case 3: {
        if (!(flags & kDispatchMethod)) return kDispEMemberNotFound;
        if (params.args.size() != 1) return kDispEBadParamCount;
        const std::string* name = std::get_if<std::string>(&Arg(params, 0));
        if (!name) return kDispETypeMismatch;
        const platform::ToolbarId id = platform::addToolbar(group_, *name);
        return id ? Answer(result, objects().toolbar(id)) : kEFail;
      }
      default: return kDispEMemberNotFound;
    }
  }

 protected:
  const std::vector<const char*>& Members() const override {
    static const std::vector<const char*> names = {"Count", "Item", "Add"};
    return names;
  }

 private:
  std::string group_;
};

class CMenuGroupObject final : public CMembersObject {
 public:
  explicit CMenuGroupObject(std::string name) : name_(std::move(name)), toolbars_(name_) {}

  HResult Invoke(long dispId, int flags, const DispatchParams&, AutomationValue* result) override {
    if (!groupLoaded(name_)) return kEFail;
    switch (dispId) {
      case 1: return Get(flags, result, name_);
      case 2: return Get(flags, result, static_cast<CAutomationObject*>(&toolbars_));
      default: return kDispEMemberNotFound;
    }
  }

 protected:
  const std::vector<const char*>& Members() const override {
    static const std::vector<const char*> names = {"Name", "Toolbars"};
    return names;
  }

 private:
  std::string name_;
  CToolbarsObject toolbars_;
};

class CMenuGroupsObject final : public CMembersObject {
 public:
  HResult Invoke(long dispId, int flags, const DispatchParams& params, AutomationValue* result) override {
    const std::vector<std::string> names = platform::menuGroups();
    switch (dispId) {
      case 1: return Get(flags, result, static_cast<long long>(names.size()));
      case 2:
        return ItemOf(
            params, result, names.size(),
            [&](std::size_t i, const std::string& name) { return platform::equalsIgnoreCase(names[i], name); },
            [&](std::size_t i) { return objects().group(names[i]); });
      default: return kDispEMemberNotFound;
    }
  }

 protected:
  const std::vector<const char*>& Members() const override {
    static const std::vector<const char*> names = {"Count", "Item"};
    return names;
  }
};

CMenuGroupObject* Objects::group(const std::string& name) {
  auto& slot = groups[name];
  if (!slot) slot = std::make_unique<CMenuGroupObject>(name);
  return slot.get();
}

CToolbarObject* Objects::toolbar(platform::ToolbarId id) {
  auto& slot = toolbars[id];
  if (!slot) slot = std::make_unique<CToolbarObject>(id);
  return slot.get();
}

CToolbarItemObject* Objects::item(platform::ToolbarId toolbar, platform::ToolbarButtonId button) {
  auto& slot = items[button];
  if (!slot) slot = std::make_unique<CToolbarItemObject>(toolbar, button);
  return slot.get();
}

}  // namespace

CAutomationObject& HostMenuGroups() {
  static CMenuGroupsObject groups;
  return groups;
}
