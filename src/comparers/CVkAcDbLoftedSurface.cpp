// Lofted surfaces: keyed by area and extents; compared on their curves and their independence.
#include "comparers/CVkAcDbLoftedSurface.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"截面曲线的数目不一样,", capture::int1<Accessor::numCrossSections>},  // AcDbLoftedSurface::numCrossSections
    {"引导曲线的数目不一样,", capture::int1<Accessor::numGuideCurves>},    // AcDbLoftedSurface::numGuideCurves
    {"独立性不一样,", capture::int1<Accessor::isIndependent>},             // the surface's associativity
};

const ComparerTraits kTraits{capture::surfaceKey, kDetails};

}  // namespace

CVkAcDbLoftedSurface::CVkAcDbLoftedSurface() : CVkDetailedEntity(kTraits) {}
