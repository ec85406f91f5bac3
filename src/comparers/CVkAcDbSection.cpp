// Section planes: keyed by their extents; compared on their state, the live section and their vertices.
#include "comparers/CVkAcDbSection.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"对象的状态不一样,", capture::int1<Accessor::sectionState>},              // AcDbSection::state
    {"启用活切面的操作不一样,", capture::int1<Accessor::isLiveSectionEnabled>},  // AcDbSection::isLiveSectionEnabled
    {"顶点位置不一样,", nullptr, capture::points2<Accessor::sectionVertices>},   // AcDbSection::getVertex
};

const ComparerTraits kTraits{capture::extentsKey, kDetails};

}  // namespace

CVkAcDbSection::CVkAcDbSection() : CVkDetailedEntity(kTraits) {}
