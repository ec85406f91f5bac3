// Ellipses and elliptic arcs: keyed by their centre; compared on axis ratio, start and end angles, both
// axes and area.
#include "comparers/CVkAcDbEllipse.h"

#include "comparers/CapturesCurves.h"

namespace {

using platform::Accessor;

void ellipseKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                KeyTexts& out) {
  const platform::Point3d c = load.transform(e.point(Accessor::center));      // AcDbEllipse::center
  const platform::Point3d s = load.transform(e.point(Accessor::startPoint));  // AcDbEllipse::getStartPoint
  const platform::Point3d t = load.transform(e.point(Accessor::endPoint));    // AcDbEllipse::getEndPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), c.x, c.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", c.z, s.z, t.z);
}

const DetailProperty kDetails[] = {
    {"椭圆主半径对其小半径的比值不一样,", capture::real2<Accessor::radiusRatio>},  // AcDbEllipse::radiusRatio
    {"起始角不一样,", capture::real2<Accessor::startAngle>},                      // AcDbEllipse::startAngle
    {"端点角不一样,", capture::real2<Accessor::endAngle>},                        // AcDbEllipse::endAngle
    {"大轴矢量不一样,", capture::vector2Spaced<Accessor::majorAxis>},             // AcDbEllipse::majorAxis
    {"小轴矢量不一样,", capture::vector2Spaced<Accessor::minorAxis>},             // AcDbEllipse::minorAxis
    {"面积不一样,", capture::real2<Accessor::getArea>},                           // AcDbEllipse::getArea
};

const ComparerTraits kTraits{ellipseKey, kDetails};

}  // namespace

CVkAcDbEllipse::CVkAcDbEllipse() : CVkDetailedEntity(kTraits) {}
