// 2D solids and traces: keyed by their first corner; compared on thickness and the plane they lie in.
#include "comparers/CVkAcDbSolidOrTrace.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"厚度不一样,", capture::real2<Accessor::thickness>},                // thickness
    {"仅有一个平面包含实体不一样,", capture::vector3<Accessor::normal>},  // normal of the one plane
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

}  // namespace

CVkAcDbSolidOrTrace::CVkAcDbSolidOrTrace() : CVkDetailedEntity(kTraits) {}
