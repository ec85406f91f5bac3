// Hatches: keyed by their extents; compared on the fill type and the pattern.
#include "comparers/CVkAcDbHatch.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"填充类型不一样,", capture::int1<Accessor::hatchObjectType>},   // AcDbHatch::hatchObjectType
    {"模式角度不一样,", capture::real2<Accessor::patternAngle>},     // AcDbHatch::patternAngle
    {"模式比例不一样,", capture::real2<Accessor::patternScale>},     // AcDbHatch::patternScale
    {"模式空间不一样,", capture::real2<Accessor::patternSpace>},     // AcDbHatch::patternSpace
    {"模式类型不一样,", capture::int1<Accessor::patternType>},       // AcDbHatch::patternType
    {"边界循环的总数不一样,", capture::int1<Accessor::numLoops>},    // AcDbHatch::numLoops
    {"模式名称不一样,", capture::text<Accessor::patternName>},       // AcDbHatch::patternName
};

const ComparerTraits kTraits{capture::extentsKey, kDetails};

}  // namespace

CVkAcDbHatch::CVkAcDbHatch() : CVkDetailedEntity(kTraits) {}
