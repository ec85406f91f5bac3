// Multilines: keyed by vertex count and their two leading vertices in canonical order; compared on scale,
// closed flag and every vertex.
#include "comparers/CVkAcDbMline.h"

#include "comparers/CapturesCurves.h"

namespace {

using platform::Accessor;

void mlineKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
              KeyTexts& out) {
  capture::pointListKey(e.points(Accessor::vertexAt), load, self, out);  // AcDbMline::numVertices, vertexAt
}

const DetailProperty kDetails[] = {
    {"比例不一样,", capture::real2<Accessor::scale>},                   // AcDbMline::scale
    {"闭合不一样,", capture::int1<Accessor::isClosed>},                 // AcDbMline::closedMline
    {"顶点位置不一样,", nullptr, capture::points2<Accessor::vertexAt>},  // AcDbMline::numVertices, vertexAt
};

const ComparerTraits kTraits{mlineKey, kDetails};

}  // namespace

CVkAcDbMline::CVkAcDbMline() : CVkDetailedEntity(kTraits) {}
