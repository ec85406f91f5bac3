// Plane surfaces: keyed by area and extents; compared on their independence.
#include "comparers/CVkAcDbPlaneSurface.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"独立性不一样,", capture::int1<Accessor::isIndependent>},  // the surface's associativity
};

const ComparerTraits kTraits{capture::surfaceKey, kDetails};

}  // namespace

CVkAcDbPlaneSurface::CVkAcDbPlaneSurface() : CVkDetailedEntity(kTraits) {}
