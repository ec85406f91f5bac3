// Ordinate dimensions: keyed by their origin and defining point; compared as every dimension and on the
// end point of their leader.
#include "comparers/CVkAcDbOrdinateDimension.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void ordinateKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                 KeyTexts& out) {
  const platform::Point3d o = load.transform(e.point(Accessor::ordinateOrigin));  // AcDbOrdinateDimension::origin
  const platform::Point3d d = load.transform(e.point(Accessor::definingPoint));   // ::definingPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f", self.dxfName(), o.x, o.y, d.x, d.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f", o.z, d.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbDimension::dimensionStyle -> DIMTXSTY
}

constexpr auto kDetails = withDimensionDetails<1>({{
    {"Leader的端点不一样,", capture::point2<Accessor::leaderEndPoint>},  // AcDbOrdinateDimension::leaderEndPoint
}});

const ComparerTraits kTraits{ordinateKey, kDetails};

}  // namespace

CVkAcDbOrdinateDimension::CVkAcDbOrdinateDimension() : CVkAcDbDimension(kTraits) {}
