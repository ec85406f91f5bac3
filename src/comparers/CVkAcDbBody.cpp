// Bodies: keyed by their extents; compared on whether they carry modeler data and on that data. A drawing
// file does not count a body's changes, so the change count stands for the data itself (its digest): it
// differs exactly when the shape does.
#include "comparers/CVkAcDbBody.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// "%d": 1 when the body carries ACIS data.
std::string hasModelerData(const platform::Entity& e, const platform::Matrix3d&) {
  return platform::fmt("%d", e.text(Accessor::acisData).empty() ? 0 : 1);
}

const DetailProperty kDetails[] = {
    {"形状管理器对象有无的情况不一样,", hasModelerData},            // AcDbBody's ACIS data present
    {"更改的数量不一样,", capture::text<Accessor::acisDigest>},     // AcDbBody::numChanges, as the data's digest
};

const ComparerTraits kTraits{capture::extentsKey, kDetails};

}  // namespace

CVkAcDbBody::CVkAcDbBody() : CVkDetailedEntity(kTraits) {}
