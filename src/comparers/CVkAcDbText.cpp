// Single-line text: keyed by the point its justification anchors it to (the position for baseline text,
// the alignment point for every other vertical mode); compared on height, modes, angles and text.
#include "comparers/CVkAcDbText.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void textKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  // AcDbText::verticalMode: kTextBase (0) places the text by its position, the others by its alignment point.
  const bool baseline = e.integer(Accessor::verticalMode) == 0;
  const platform::Point3d p = load.transform(
      e.point(baseline ? Accessor::position : Accessor::alignmentPoint));  // AcDbText::position / alignmentPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbText::textStyle
}

const DetailProperty kDetails[] = {
    {"高度不一样,", capture::real2<Accessor::textHeight>},         // AcDbText::height
    {"水平模式不一样,", capture::int1<Accessor::horizontalMode>},  // AcDbText::horizontalMode
    {"垂直模式不一样,", capture::int1<Accessor::verticalMode>},    // AcDbText::verticalMode
    {"倾斜角不一样,", capture::real2<Accessor::textOblique>},      // AcDbText::oblique
    {"旋转角度不一样,", capture::real2<Accessor::textRotation>},   // AcDbText::rotation
    {"文本信息不一样,", capture::text<Accessor::textString>},      // AcDbText::textString
};

const ComparerTraits kTraits{textKey, kDetails};

}  // namespace

CVkAcDbText::CVkAcDbText() : CVkDetailedEntity(kTraits) {}
