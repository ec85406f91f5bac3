// The data store of R2013 and later drawings (section AcDb:AcDsPrototype_1b): the modeler data of solids and
// regions kept apart from their objects, by handle.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/headless/dwg_container.h"

namespace headless {

// The SAB data the store holds, each with the handle of its entity, in store order. Damage ends the list
// with a warning; data kept in blob pages are not read yet, and a warning counts them.
std::vector<std::pair<std::uint64_t, std::string>> readDwgModelerData(const DwgSections& sections,
                                                                      std::vector<std::string>& warnings);

}  // namespace headless
