// Regions: keyed by their extents; their one detail stands for the region's shape, the digest of its ACIS data.
#include "comparers/CVkAcDbRegion.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"权 reference DXF不一样,", capture::text<Accessor::acisDigest>},  // AcDbRegion's ACIS data
};

const ComparerTraits kTraits{capture::extentsKey, kDetails};

}  // namespace

CVkAcDbRegion::CVkAcDbRegion() : CVkDetailedEntity(kTraits) {}
