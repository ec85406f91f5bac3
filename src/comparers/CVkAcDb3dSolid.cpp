// 3D solids: keyed by their extents; compared on area, volume and radii of gyration, measured from the ACIS
// data where every face is a planar polygon, else standing for the data by its digest.
#include "comparers/CVkAcDb3dSolid.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// "%.2f,%.2f" of the radii of gyration about the X and Y axes.
std::string radii(const platform::Entity& e, const platform::Matrix3d&) {
  const platform::Vector3d r = e.vector(Accessor::radiiGyration);
  return std::isnan(r.x) ? e.text(Accessor::acisDigest) : platform::fmt("%.2f,%.2f", r.x, r.y);
}

const DetailProperty kDetails[] = {
    {"面积不一样,", capture::measured<Accessor::modelerArea>},    // AcDb3dSolid::getArea
    {"体积不一样,", capture::measured<Accessor::modelerVolume>},  // AcDb3dSolid::getMassProp volume
    {"回转半径不一样,", radii},                                    // AcDb3dSolid::getMassProp radiiGyration
};

const ComparerTraits kTraits{capture::extentsKey, kDetails};

}  // namespace

CVkAcDb3dSolid::CVkAcDb3dSolid() : CVkDetailedEntity(kTraits) {}
