// Three-point angular dimensions: keyed by their centre, two extension line points and arc point; compared
// as every dimension and on their extension arc.
#include "comparers/CVkAcDb3PointAngularDimension.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void angularKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                KeyTexts& out) {
  const platform::Point3d c =
      load.transform(e.point(Accessor::centerPoint));  // AcDb3PointAngularDimension::centerPoint
  const platform::Point3d a = load.transform(e.point(Accessor::xLine1Point));  // ::xLine1Point
  const platform::Point3d b = load.transform(e.point(Accessor::xLine2Point));  // ::xLine2Point
  const platform::Point3d r = load.transform(e.point(Accessor::arcPoint));     // ::arcPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), c.x, c.y, a.x, a.y, b.x,
                              b.y, r.x, r.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f,%.2f,%.2f", c.z, a.z, b.z, r.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbDimension::dimensionStyle -> DIMTXSTY
}

constexpr auto kDetails = withDimensionDetails<1>({{
    {"在扩展弧上的情况不一样,", capture::int1<Accessor::extArcOn>},  // AcDb3PointAngularDimension::extArcOn
}});

const ComparerTraits kTraits{angularKey, kDetails};

}  // namespace

CVkAcDb3PointAngularDimension::CVkAcDb3PointAngularDimension() : CVkAcDbDimension(kTraits) {}
