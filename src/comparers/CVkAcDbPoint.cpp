// Points: keyed by their position; compared on thickness, normal, angle and the plane that holds them.
#include "comparers/CVkAcDbPoint.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

void pointKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
              KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // AcDbPoint::position
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f", p.z);
}

const DetailProperty kDetails[] = {
    {"厚度不一样,", capture::real2<Accessor::thickness>},      // AcDbPoint::thickness
    {"法向量不一样,", capture::vector3<Accessor::normal>},     // AcDbPoint::normal
    {"角度不一样,", capture::real2<Accessor::ecsRotation>},    // AcDbPoint::ecsRotation
    {"平面包含实体不一样,", capture::int1<Accessor::getPlane>},  // AcDbPoint::getPlane (its planarity)
};

const ComparerTraits kTraits{pointKey, kDetails};

}  // namespace

CVkAcDbPoint::CVkAcDbPoint() : CVkDetailedEntity(kTraits) {}
