// Vertices of 2D polylines: keyed by their position; compared on widths, bulge, tangent and identifier.
#include "comparers/CVkAcDb2dVertex.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

// The Z text: the position's Z, then the minimum and maximum Z of the load extents, as the line's.
void vertexKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
               KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // AcDb2dVertex::position
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
}

const DetailProperty kDetails[] = {
    {"顶点的开始宽度不一样,", capture::real2<Accessor::startWidth>},             // AcDb2dVertex::startWidth
    {"顶点的结束宽度不一样,", capture::real2<Accessor::endWidth>},               // AcDb2dVertex::endWidth
    {"顶点的凸出值不一样,", capture::real2<Accessor::bulge>},                    // AcDb2dVertex::bulge
    {"曲线拟合的切线方向这点不一样,", capture::int1<Accessor::isTangentUsed>},  // AcDb2dVertex::isTangentUsed
    {"曲线拟合切线方向不一样,", capture::real2<Accessor::tangent>},              // AcDb2dVertex::tangent
    {"顶点标识不一样,", capture::int1<Accessor::vertexIdentifier>},              // AcDb2dVertex::vertexIdentifier
};

const ComparerTraits kTraits{vertexKey, kDetails};

}  // namespace

CVkAcDb2dVertex::CVkAcDb2dVertex() : CVkDetailedEntity(kTraits) {}
