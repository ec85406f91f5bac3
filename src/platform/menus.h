// The host's menu groups and their toolbars: toolbars by name, their visibility, their buttons with macros
// and pictures.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// A toolbar or a button of the host; 0 is none. Ids are never reused within a process.
using ToolbarId = std::uint64_t;
using ToolbarButtonId = std::uint64_t;

struct ToolbarButton {
  ToolbarButtonId id = 0;
  std::string name;        // the caption
  std::string helpString;  // the tooltip
  std::string macro;       // what pressing it types; U+0003 (or "^C") cancels the command that runs
  std::string smallBitmap, largeBitmap;  // picture files; empty: the host's default picture
};

struct ToolbarInfo {
  ToolbarId id = 0;
  std::string group;
  std::string name;
  bool visible = true;
  std::vector<ToolbarButton> buttons;  // left to right
};

// The names of the loaded menu groups, in load order. The host starts with its own group "Acad".
std::vector<std::string> menuGroups();
// MENULOAD and MENUUNLOAD: a group by name. Loading a name already loaded, or unloading one that is not,
// fails. Unloading a group takes its toolbars away.
bool loadMenuGroup(std::string_view name);
bool unloadMenuGroup(std::string_view name);

// The toolbars of a group, in the order they were added (empty when the group is not loaded).
std::vector<ToolbarId> toolbars(std::string_view group);
// A toolbar as it stands now; nullopt when it is gone.
std::optional<ToolbarInfo> toolbarInfo(ToolbarId toolbar);
// Adds an empty, visible toolbar to a group; 0 when the group is not loaded or the name is empty.
ToolbarId addToolbar(std::string_view group, std::string_view name);
bool deleteToolbar(ToolbarId toolbar);
bool setToolbarVisible(ToolbarId toolbar, bool visible);
// Inserts a button before the button at index (an index past the end appends it); 0 when the toolbar is
// gone or the index is negative.
ToolbarButtonId addToolbarButton(ToolbarId toolbar, int index, std::string_view name, std::string_view helpString,
                                 std::string_view macro);
// Gives a button its small and large pictures (paths of image files); false when the button is gone.
bool setToolbarButtonBitmaps(ToolbarId toolbar, ToolbarButtonId button, std::string_view smallBitmap,
                             std::string_view largeBitmap);

}  // namespace platform
