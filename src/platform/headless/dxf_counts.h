// The check of counts written in entity records against the groups the records hold.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/headless/dxf_data.h"

namespace headless {

// Calls warn(key, text) for every count of the entity (vertices, knots, rows, ...) that claims more than
// its record holds; the text names the entity and the count, the caller adds the file and the place. Readers of the record never trust such counts: they go by the groups present.
// Whether records of this DXF name state any count that checkCounts checks.
bool statesCounts(std::string_view dxfName);

void checkCounts(const platform::DatabaseData& data, const platform::EntityRec& e,
                 const std::function<void(const std::string& key, const std::string& text)>& warn);

}  // namespace headless
