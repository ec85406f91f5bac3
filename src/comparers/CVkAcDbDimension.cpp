// Dimensions: keyed by their text position; compared on the text and its layout, the block position and
// the dynamic flag. The text style is the one the dimension style gives its text (DIMTXSTY).
#include "comparers/CVkAcDbDimension.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void dimensionKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                  KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::textPosition));  // AcDbDimension::textPosition
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbDimension::dimensionStyle -> DIMTXSTY
}

const ComparerTraits kTraits{dimensionKey, kDimensionDetails};

}  // namespace

CVkAcDbDimension::CVkAcDbDimension() : CVkAcDbDimension(kTraits) {}
