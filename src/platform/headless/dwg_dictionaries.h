// DWG dictionaries and extended records: the extension dictionaries of entities, as DXF writes them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/headless/dwg_objects.h"

namespace headless {

// Appends the DICTIONARY record of a dictionary object (its entries by name) to out, and the handles of
// its entries to entries. False when the object is damaged (nothing is then appended).
bool decodeDwgDictionary(DwgObjectReader& object, DwgTagList& out, std::vector<std::uint64_t>& entries,
                         std::string& scratch);

// Appends the XRECORD record of an extended record object to out: its groups as stored. Groups after one
// whose code has no known layout are left out. False when the object is damaged.
bool decodeDwgXrecord(DwgObjectReader& object, DwgTagList& out, std::vector<std::uint8_t>& scratch);

}  // namespace headless
