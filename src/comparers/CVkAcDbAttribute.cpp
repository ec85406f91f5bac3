// Attributes: keyed by their position; compared on the lock and multiline flags and their text.
#include "comparers/CVkAcDbAttribute.h"

#include "comparers/CapturesText.h"

void attributeKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                  KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(platform::Accessor::position));  // AcDbText::position
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
  out.textStyle = textStyleText(e);  // AcDbText::textStyle
}

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"锁定情况不一样,", capture::int1<Accessor::lockPositionInBlock>},   // AcDbAttribute::lockPositionInBlock
    {"多行文本显示不一样,", capture::int1<Accessor::isMTextAttribute>},  // AcDbAttribute::isMTextAttribute
    {"文本内容不一样,", capture::text<Accessor::textString>},            // AcDbAttribute::textString
};

const ComparerTraits kTraits{attributeKey, kDetails};

}  // namespace

CVkAcDbAttribute::CVkAcDbAttribute() : CVkDetailedEntity(kTraits) {}
