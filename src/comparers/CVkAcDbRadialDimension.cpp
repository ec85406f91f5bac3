// Radial dimensions: keyed by their centre, chord point and the radius between them; compared as every
// dimension and on their leader length and extension arc.
#include "comparers/CVkAcDbRadialDimension.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void radialKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
               KeyTexts& out) {
  const platform::Point3d c = load.transform(e.point(Accessor::centerPoint));  // AcDbRadialDimension::center
  const platform::Point3d p = load.transform(e.point(Accessor::chordPoint));   // AcDbRadialDimension::chordPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), c.x, c.y, p.x, p.y, c.distanceTo(p));
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f", c.z, p.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbDimension::dimensionStyle -> DIMTXSTY
}

constexpr auto kDetails = withDimensionDetails<2>({{
    {"LeaderLength不一样,", capture::real2<Accessor::leaderLength>},    // AcDbRadialDimension::leaderLength
    {"扩展弧端角度不一样,", capture::real2<Accessor::extArcEndAngle>},  // AcDbRadialDimension::extArcEndAngle
}});

const ComparerTraits kTraits{radialKey, kDetails};

}  // namespace

CVkAcDbRadialDimension::CVkAcDbRadialDimension() : CVkAcDbDimension(kTraits) {}
