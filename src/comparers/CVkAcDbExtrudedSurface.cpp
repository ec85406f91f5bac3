// Extruded surfaces: keyed by area and extents; compared on the extrusion's height and direction.
#include "comparers/CVkAcDbExtrudedSurface.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// "%.2f" of the extrusion height: the length of the sweep vector.
std::string height(const platform::Entity& e, const platform::Matrix3d&) {
  return platform::fmt("%.2f", e.vector(Accessor::sweepVec).length());
}

const DetailProperty kDetails[] = {
    {"挤压高度不一样,", height},                                 // AcDbExtrudedSurface::getHeight
    {"扫描向量不一样,", capture::vector3<Accessor::sweepVec>},  // AcDbExtrudedSurface::getSweepVec
};

const ComparerTraits kTraits{capture::surfaceKey, kDetails};

}  // namespace

CVkAcDbExtrudedSurface::CVkAcDbExtrudedSurface() : CVkDetailedEntity(kTraits) {}
