// Revolved surfaces: keyed by area, extents and the axis point; compared on the axis, the angle and their
// independence.
#include "comparers/CVkAcDbRevolvedSurface.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

void revolvedKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Extents3d& x = out.placed;
  const platform::Point3d axis = load.transform(e.point(Accessor::revolveAxisPoint));  // getAxisPnt
  platform::fmtTo(out.fullKey, "%s,%f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), capture::surfaceArea(e), x.min.x,
                              x.min.y, x.max.x, x.max.y, axis.x, axis.y, axis.z);
  platform::fmtTo(out.zText, "%.2f,%.2f", out.minZ, out.maxZ);
}

const DetailProperty kDetails[] = {
    {"旋转轴的向量不一样,", capture::vector3<Accessor::revolveAxisVec>},  // AcDbRevolvedSurface::getAxisVec
    {"旋转角度不一样,", capture::real2<Accessor::revolveAngle>},          // AcDbRevolvedSurface::getRevolveAngle
    {"独立性F不一样,", capture::int1<Accessor::isIndependent>},           // the surface's associativity
};

const ComparerTraits kTraits{revolvedKey, kDetails};

}  // namespace

CVkAcDbRevolvedSurface::CVkAcDbRevolvedSurface() : CVkDetailedEntity(kTraits) {}
