// Swept surfaces: keyed by area and extents; compared on their path and their independence. The path is
// stored as an encoded curve, so its digest stands for its length.
#include "comparers/CVkAcDbSweptSurface.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"网路径曲线的长度不一样,", capture::text<Accessor::sweepPathData>},  // AcDbSweptSurface::getPathLength
    {"独立性不一样,", capture::int1<Accessor::isIndependent>},            // the surface's associativity
};

const ComparerTraits kTraits{capture::surfaceKey, kDetails};

}  // namespace

CVkAcDbSweptSurface::CVkAcDbSweptSurface() : CVkDetailedEntity(kTraits) {}
