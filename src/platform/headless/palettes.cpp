// The headless host's palette sets and their trees.
#include "platform/headless/palettes.h"

#include <algorithm>
#include <cstdlib>

#include "platform/headless/host_session.h"

namespace headless {

Palettes& Palettes::instance() {
  static Palettes palettes;
  return palettes;
}

PaletteSet* Palettes::findMutable(platform::PaletteSetId id) {
  for (PaletteSet& s : sets_)
    if (s.id == id) return &s;
  return nullptr;
}

const PaletteSet* Palettes::find(platform::PaletteSetId id) const {
  for (const PaletteSet& s : sets_)
    if (s.id == id) return &s;
  return nullptr;
}

platform::PaletteSetId Palettes::create(std::string_view title, platform::PaletteItemActivated onActivate,
                                        Module* owner) {
  PaletteSet set;
  set.id = nextSet_++;
  set.title = title;
  set.onActivate = std::move(onActivate);
  set.owner = owner;
  sets_.push_back(std::move(set));
  return sets_.back().id;
}

bool Palettes::destroy(platform::PaletteSetId id) {
  return std::erase_if(sets_, [id](const PaletteSet& s) { return s.id == id; }) > 0;
}

platform::PaletteItemId Palettes::insert(platform::PaletteSetId id, platform::PaletteItemId parent,
                                         std::string_view label) {
  PaletteSet* set = findMutable(id);
  if (!set) return 0;
  // The new item goes after the parent's last descendant, so that the list stays in tree order.
  auto at = set->items.end();
  if (parent != 0) {
    auto p = std::find_if(set->items.begin(), set->items.end(), [parent](const PaletteItem& i) { return i.id == parent; });
    if (p == set->items.end()) return 0;
    std::vector<platform::PaletteItemId> lineage{parent};
    at = p + 1;
    while (at != set->items.end() && std::find(lineage.begin(), lineage.end(), at->parent) != lineage.end()) {
      lineage.push_back(at->id);
      ++at;
    }
  }
  const platform::PaletteItemId item = nextItem_++;
  set->items.insert(at, PaletteItem{item, parent, std::string(label)});
  return item;
}

bool Palettes::clear(platform::PaletteSetId id) {
  PaletteSet* set = findMutable(id);
  if (!set) return false;
  set->items.clear();
  return true;
}

bool Palettes::show(platform::PaletteSetId id, bool visible) {
  PaletteSet* set = findMutable(id);
  if (!set) return false;
  set->visible = visible;
  if (visible) set->shownAt = ++showCount_;
  return true;
}

void Palettes::dropOwnedBy(Module* module) {
  std::erase_if(sets_, [module](const PaletteSet& s) { return s.owner == module; });
}

const PaletteSet* Palettes::shown() const {
  const PaletteSet* newest = nullptr;
  for (const PaletteSet& s : sets_)
    if (s.visible && (!newest || s.shownAt > newest->shownAt)) newest = &s;
  return newest;
}

namespace {

int depthOf(const PaletteSet& set, const PaletteItem& item) {
  int depth = 0;
  for (platform::PaletteItemId parent = item.parent; parent != 0; ++depth) {
    auto p = std::find_if(set.items.begin(), set.items.end(), [parent](const PaletteItem& i) { return i.id == parent; });
    if (p == set.items.end()) break;
    parent = p->parent;
  }
  return depth;
}

}  // namespace

std::string Palettes::render(const PaletteSet& set) {
  std::string out = set.title + "\n";
  if (set.items.empty()) out += "  (空)\n";
  for (std::size_t i = 0; i < set.items.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    out += std::string(2 + 4 * static_cast<std::size_t>(depthOf(set, set.items[i])), ' ') + number +
           std::string(number.size() < 4 ? 4 - number.size() : 1, ' ') + set.items[i].label + "\n";
  }
  return out;
}

std::optional<platform::PaletteItemId> Palettes::itemNamed(const PaletteSet& set, std::string_view numberOrLabel) {
  const std::string text(numberOrLabel);
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  if (!text.empty() && *end == '\0' && number >= 1 && static_cast<std::size_t>(number) <= set.items.size())
    return set.items[static_cast<std::size_t>(number) - 1].id;
  for (const PaletteItem& item : set.items)
    if (item.label == numberOrLabel) return item.id;
  return std::nullopt;
}

bool Palettes::activate(platform::PaletteSetId id, platform::PaletteItemId item) {
  PaletteSet* set = findMutable(id);
  if (!set || std::none_of(set->items.begin(), set->items.end(), [item](const PaletteItem& i) { return i.id == item; }))
    return false;
  // A copy: the owner may clear or refill the tree, or destroy the set, while it handles the choice.
  const platform::PaletteItemActivated handler = set->onActivate;
  if (handler) handler(item);
  return true;
}

}  // namespace headless

namespace platform {

using headless::Palettes;

PaletteSetId createPaletteSet(std::string_view title, PaletteItemActivated onActivate) {
  return Palettes::instance().create(title, std::move(onActivate), headless::HostSession::instance().actingModule());
}
bool destroyPaletteSet(PaletteSetId set) { return Palettes::instance().destroy(set); }
PaletteItemId insertPaletteItem(PaletteSetId set, PaletteItemId parent, std::string_view label) {
  return Palettes::instance().insert(set, parent, label);
}
bool deleteAllPaletteItems(PaletteSetId set) { return Palettes::instance().clear(set); }
bool showPaletteSet(PaletteSetId set, bool visible) { return Palettes::instance().show(set, visible); }

}  // namespace platform
