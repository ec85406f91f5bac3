// Aligned dimensions: keyed by their two extension line points and their dimension line point; compared
// as every dimension and on the oblique angle of their extension lines.
#include "comparers/CVkAcDbAlignedDimension.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void alignedKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                KeyTexts& out) {
  const platform::Point3d a = load.transform(e.point(Accessor::xLine1Point));   // AcDbAlignedDimension::xLine1Point
  const platform::Point3d b = load.transform(e.point(Accessor::xLine2Point));   // AcDbAlignedDimension::xLine2Point
  const platform::Point3d d = load.transform(e.point(Accessor::dimLinePoint));  // AcDbAlignedDimension::dimLinePoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), a.x, a.y, b.x, b.y, d.x, d.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f,%.2f", a.z, b.z, d.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbDimension::dimensionStyle -> DIMTXSTY
}

constexpr auto kDetails = withDimensionDetails<1>({{
    {"延长线的倾斜角度不一样,", capture::real2<Accessor::dimensionOblique>},  // AcDbAlignedDimension::oblique
}});

const ComparerTraits kTraits{alignedKey, kDetails};

}  // namespace

CVkAcDbAlignedDimension::CVkAcDbAlignedDimension() : CVkAcDbDimension(kTraits) {}
