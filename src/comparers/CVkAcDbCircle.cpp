// Circles: keyed by centre and radius; compared on thickness and the normal of their plane.
#include "comparers/CVkAcDbCircle.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

void circleKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
               KeyTexts& out) {
  const platform::Point3d c = load.transform(e.point(Accessor::center));  // AcDbCircle::center
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f", self.dxfName(), c.x, c.y,
                              e.real(Accessor::radius));  // AcDbCircle::radius
  platform::fmtTo(out.zText, "%.2f", c.z);
}

const DetailProperty kDetails[] = {
    {"厚度不一样,", capture::real2<Accessor::thickness>},               // AcDbCircle::thickness
    {"WCS单位正常含圆平面不一样,", capture::vector3<Accessor::normal>},  // AcDbCircle::normal
};

const ComparerTraits kTraits{circleKey, kDetails};

}  // namespace

CVkAcDbCircle::CVkAcDbCircle() : CVkDetailedEntity(kTraits) {}
