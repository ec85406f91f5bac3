// Geometric extents per entity type.
#include "platform/headless/dxf_extents.h"

#include "platform/headless/dxf_groups.h"

namespace headless {

using namespace platform;

ErrorStatus computeGeomExtents(const DatabaseData& data, std::uint32_t index, Extents3d& extents) {
  const EntityRec& e = data.entities[index];
  const Groups g(data, e);
  extents = Extents3d();
  switch (e.cls) {
    case DbClass::Line:
      extents.addPoint(g.point(10));
      extents.addPoint(g.point(11));
      return ErrorStatus::eOk;
    default:
      return ErrorStatus::eInvalidExtents;
  }
}

}  // namespace headless
