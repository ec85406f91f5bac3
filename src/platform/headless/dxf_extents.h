// Geometric extents of stored entities, computed per entity type as the host computes them.
#pragma once

#include <cstdint>

#include "platform/database.h"
#include "platform/headless/dxf_data.h"

namespace headless {

// The WCS extents of entity `index`; a non-zero status when they cannot be computed.
platform::ErrorStatus computeGeomExtents(const platform::DatabaseData& data, std::uint32_t index,
                                         platform::Extents3d& extents);

}  // namespace headless
