// The headless host's menu groups and toolbars, as the session keeps them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/menus.h"

namespace headless {

class MenuBar {
 public:
  struct Group {
    std::string name;
    std::vector<platform::ToolbarInfo> toolbars;
  };

  static MenuBar& instance();
  // Back to the host's start: the group "Acad" alone, without toolbars.
  void reset();

  std::vector<Group>& groups() { return groups_; }
  Group* group(std::string_view name);
  platform::ToolbarInfo* toolbar(platform::ToolbarId id);
  // Every toolbar of every group, groups in load order.
  std::vector<const platform::ToolbarInfo*> all() const;
  bool load(std::string_view name);
  bool unload(std::string_view name);
  std::uint64_t nextId() { return nextId_++; }

  // A button's macro as the command line takes it ("^C" becomes U+0003), and as a listing shows it.
  static std::string typedMacro(std::string_view macro);
  static std::string shownMacro(std::string_view macro);

 private:
  MenuBar();
  std::vector<Group> groups_;
  std::uint64_t nextId_ = 1;
};

}  // namespace headless
