// The host's palette sets (dockable panels): a titled set holding one tree of labelled items, whose
// double-clicked item is handed to its owner.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace platform {

// A palette set; 0 is none.
using PaletteSetId = std::uint64_t;
// An item of a palette set's tree; 0 is the tree's root (the parent of its top items) and never an item.
using PaletteItemId = std::uint64_t;
// Called with the item the user double-clicks.
using PaletteItemActivated = std::function<void(PaletteItemId item)>;

// Creates a palette set with this title, hidden and with an empty tree; onActivate hears its double-clicks.
PaletteSetId createPaletteSet(std::string_view title, PaletteItemActivated onActivate);
// Removes a palette set with its tree; false when there is no such set.
bool destroyPaletteSet(PaletteSetId set);
// Appends an item below parent (0 for a top item); 0 when the set or the parent does not exist.
PaletteItemId insertPaletteItem(PaletteSetId set, PaletteItemId parent, std::string_view label);
// Deletes every item of the set's tree; false when there is no such set.
bool deleteAllPaletteItems(PaletteSetId set);
// Shows or hides the set; false when there is no such set.
bool showPaletteSet(PaletteSetId set, bool visible);

}  // namespace platform
