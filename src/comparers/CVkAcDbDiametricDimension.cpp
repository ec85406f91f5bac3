// Diametric dimensions: keyed by their two chord points and the diameter between them; compared as every
// dimension and on their leader length and extension arc.
#include "comparers/CVkAcDbDiametricDimension.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void diametricKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                  KeyTexts& out) {
  const platform::Point3d a = load.transform(e.point(Accessor::chordPoint));     // AcDbDiametricDimension::chordPoint
  const platform::Point3d b = load.transform(e.point(Accessor::farChordPoint));  // ::farChordPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), a.x, a.y, b.x, b.y, a.distanceTo(b));
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f", a.z, b.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbDimension::dimensionStyle -> DIMTXSTY
}

// The diametric comparer spells its leader length with a lower-case l, unlike the radial one.
constexpr auto kDetails = withDimensionDetails<2>({{
    {"leaderLength不一样,", capture::real2<Accessor::leaderLength>},    // AcDbDiametricDimension::leaderLength
    {"扩展弧端角度不一样,", capture::real2<Accessor::extArcEndAngle>},  // AcDbDiametricDimension::extArcEndAngle
}});

const ComparerTraits kTraits{diametricKey, kDetails};

}  // namespace

CVkAcDbDiametricDimension::CVkAcDbDiametricDimension() : CVkAcDbDimension(kTraits) {}
