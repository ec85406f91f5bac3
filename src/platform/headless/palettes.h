// The headless host's palette sets: each keeps its title, whether it shows, and its tree; a double-click is
// a choice made on the command line (the PALETTE command).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/palette.h"

namespace headless {

struct Module;

struct PaletteItem {
  platform::PaletteItemId id = 0;
  platform::PaletteItemId parent = 0;
  std::string label;
};

struct PaletteSet {
  platform::PaletteSetId id = 0;
  std::string title;
  bool visible = false;
  std::vector<PaletteItem> items;  // in tree order: each item follows its parent and its earlier siblings
  platform::PaletteItemActivated onActivate;
  Module* owner = nullptr;
  std::uint64_t shownAt = 0;  // when it was last shown; the newest shown set is the one the command line uses
};

class Palettes {
 public:
  static Palettes& instance();

  platform::PaletteSetId create(std::string_view title, platform::PaletteItemActivated onActivate, Module* owner);
  bool destroy(platform::PaletteSetId id);
  platform::PaletteItemId insert(platform::PaletteSetId set, platform::PaletteItemId parent, std::string_view label);
  bool clear(platform::PaletteSetId id);
  bool show(platform::PaletteSetId id, bool visible);
  // The sets a module left behind go with it.
  void dropOwnedBy(Module* module);
  // Every set goes (the end of a session).
  void reset() { sets_.clear(); }

  const PaletteSet* find(platform::PaletteSetId id) const;
  // The set shown last that still shows; null when none shows.
  const PaletteSet* shown() const;
  // The tree drawn as text: the title, then one line per item numbered from 1 in tree order and indented
  // by its depth.
  static std::string render(const PaletteSet& set);
  // The item chosen by its number in the drawing above or by its label (the first item that has it);
  // nothing when neither names an item.
  static std::optional<platform::PaletteItemId> itemNamed(const PaletteSet& set, std::string_view numberOrLabel);
  // A double-click on an item: its set's owner hears of it. False when the set or the item does not exist.
  bool activate(platform::PaletteSetId set, platform::PaletteItemId item);

 private:
  Palettes() = default;
  PaletteSet* findMutable(platform::PaletteSetId id);
  std::vector<PaletteSet> sets_;
  platform::PaletteSetId nextSet_ = 1;
  platform::PaletteItemId nextItem_ = 1;
  std::uint64_t showCount_ = 0;
};

}  // namespace headless
