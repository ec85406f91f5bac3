// Multiline text: keyed by its location; compared on height, angle, size, line spacing and contents.
#include "comparers/CVkAcDbMText.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void mtextKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // AcDbMText::location
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbMText::textStyle
}

const DetailProperty kDetails[] = {
    {"文字高度不一样,", capture::real2<Accessor::textHeight>},           // AcDbMText::textHeight
    {"角度不一样,", capture::real2<Accessor::textRotation>},             // AcDbMText::rotation
    {"总宽度不一样,", capture::real2<Accessor::mtextWidth>},             // AcDbMText::width
    {"总高度不一样,", capture::real2<Accessor::actualHeight>},           // AcDbMText::actualHeight
    {"行间距因子不一样,", capture::real2<Accessor::lineSpacingFactor>},  // AcDbMText::lineSpacingFactor
    {"行间距类型不一样,", capture::int1<Accessor::lineSpacingStyle>},    // AcDbMText::lineSpacingStyle
    {"文本内容不一样,", capture::text<Accessor::contents>},              // AcDbMText::contents
};

const ComparerTraits kTraits{mtextKey, kDetails};

}  // namespace

CVkAcDbMText::CVkAcDbMText() : CVkDetailedEntity(kTraits) {}
