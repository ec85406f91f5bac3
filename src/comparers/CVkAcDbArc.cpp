// Arcs: keyed by centre, radius and start angle; compared on thickness and end angle.
#include "comparers/CVkAcDbArc.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

void arcKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Point3d c = load.transform(e.point(Accessor::center));  // AcDbArc::center
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f", self.dxfName(), c.x, c.y,
                              e.real(Accessor::radius),      // AcDbArc::radius
                              e.real(Accessor::startAngle));  // AcDbArc::startAngle
  platform::fmtTo(out.zText, "%.2f", c.z);
}

const DetailProperty kDetails[] = {
    {"厚度不一样,", capture::real2<Accessor::thickness>},     // AcDbArc::thickness
    {"端点角度不一样,", capture::real2<Accessor::endAngle>},  // AcDbArc::endAngle
};

const ComparerTraits kTraits{arcKey, kDetails};

}  // namespace

CVkAcDbArc::CVkAcDbArc() : CVkDetailedEntity(kTraits) {}
