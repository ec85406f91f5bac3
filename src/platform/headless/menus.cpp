// The headless host's menu groups and toolbars: kept in memory for the session, listed and pressed from
// the command line (TOOLBAR), reached by modules through platform/menus.h.
#include "platform/menus.h"

#include <algorithm>

#include "platform/headless/menu_bar.h"
#include "platform/text.h"

namespace headless {

MenuBar& MenuBar::instance() {
  static MenuBar bar;
  return bar;
}

MenuBar::MenuBar() { reset(); }

void MenuBar::reset() {
  groups_.clear();
  groups_.push_back({"Acad", {}});
}

MenuBar::Group* MenuBar::group(std::string_view name) {
  for (Group& g : groups_)
    if (platform::equalsIgnoreCase(g.name, name)) return &g;
  return nullptr;
}

platform::ToolbarInfo* MenuBar::toolbar(platform::ToolbarId id) {
  for (Group& g : groups_)
    for (platform::ToolbarInfo& t : g.toolbars)
      if (t.id == id) return &t;
  return nullptr;
}

std::vector<const platform::ToolbarInfo*> MenuBar::all() const {
  std::vector<const platform::ToolbarInfo*> list;
  for (const Group& g : groups_)
    for (const platform::ToolbarInfo& t : g.toolbars) list.push_back(&t);
  return list;
}

bool MenuBar::load(std::string_view name) {
  if (name.empty() || group(name)) return false;
  groups_.push_back({std::string(name), {}});
  return true;
}

bool MenuBar::unload(std::string_view name) {
  return std::erase_if(groups_, [&](const Group& g) { return platform::equalsIgnoreCase(g.name, name); }) > 0;
}

std::string MenuBar::typedMacro(std::string_view macro) {
  // Menu macros write the cancel as the two characters "^C"; the command line takes U+0003.
  std::string typed;
  for (std::size_t i = 0; i < macro.size(); ++i) {
    if (macro[i] == '^' && i + 1 < macro.size() && (macro[i + 1] == 'C' || macro[i + 1] == 'c')) {
      typed += '\x03';
      ++i;
    } else {
      typed += macro[i];
    }
  }
  return typed;
}

std::string MenuBar::shownMacro(std::string_view macro) {
  std::string shown;
  for (char c : macro) shown += c == '\x03' ? std::string("^C") : std::string(1, c);
  return shown;
}

}  // namespace headless

namespace platform {

using headless::MenuBar;

std::vector<std::string> menuGroups() {
  std::vector<std::string> names;
  for (const MenuBar::Group& g : MenuBar::instance().groups()) names.push_back(g.name);
  return names;
}

bool loadMenuGroup(std::string_view name) { return MenuBar::instance().load(name); }
bool unloadMenuGroup(std::string_view name) { return MenuBar::instance().unload(name); }

std::vector<ToolbarId> toolbars(std::string_view group) {
  std::vector<ToolbarId> ids;
  if (const MenuBar::Group* g = MenuBar::instance().group(group))
    for (const ToolbarInfo& t : g->toolbars) ids.push_back(t.id);
  return ids;
}

std::optional<ToolbarInfo> toolbarInfo(ToolbarId toolbar) {
  if (const ToolbarInfo* t = MenuBar::instance().toolbar(toolbar)) return *t;
  return std::nullopt;
}

ToolbarId addToolbar(std::string_view group, std::string_view name) {
  MenuBar& bar = MenuBar::instance();
  MenuBar::Group* g = bar.group(group);
  if (!g || name.empty()) return 0;
  ToolbarInfo toolbar;
  toolbar.id = bar.nextId();
  toolbar.group = g->name;
  toolbar.name = std::string(name);
  g->toolbars.push_back(std::move(toolbar));
  return g->toolbars.back().id;
}

bool deleteToolbar(ToolbarId toolbar) {
  for (MenuBar::Group& g : MenuBar::instance().groups())
    if (std::erase_if(g.toolbars, [&](const ToolbarInfo& t) { return t.id == toolbar; }) > 0) return true;
  return false;
}

bool setToolbarVisible(ToolbarId toolbar, bool visible) {
  ToolbarInfo* t = MenuBar::instance().toolbar(toolbar);
  if (!t) return false;
  t->visible = visible;
  return true;
}

ToolbarButtonId addToolbarButton(ToolbarId toolbar, int index, std::string_view name, std::string_view helpString,
                                 std::string_view macro) {
  MenuBar& bar = MenuBar::instance();
  ToolbarInfo* t = bar.toolbar(toolbar);
  if (!t || index < 0) return 0;
  ToolbarButton button;
  button.id = bar.nextId();
  button.name = std::string(name);
  button.helpString = std::string(helpString);
  button.macro = std::string(macro);
  const std::size_t at = std::min(static_cast<std::size_t>(index), t->buttons.size());
  t->buttons.insert(t->buttons.begin() + static_cast<std::ptrdiff_t>(at), std::move(button));
  return t->buttons[at].id;
}

bool setToolbarButtonBitmaps(ToolbarId toolbar, ToolbarButtonId button, std::string_view smallBitmap,
                             std::string_view largeBitmap) {
  ToolbarInfo* t = MenuBar::instance().toolbar(toolbar);
  if (!t) return false;
  for (ToolbarButton& b : t->buttons)
    if (b.id == button) {
      b.smallBitmap = std::string(smallBitmap);
      b.largeBitmap = std::string(largeBitmap);
      return true;
    }
  return false;
}

}  // namespace platform
