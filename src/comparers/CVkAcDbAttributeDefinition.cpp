// Attribute definitions: keyed by their position; compared on prompt, tag and the multiline flag.
#include "comparers/CVkAcDbAttributeDefinition.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void definitionKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                   KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // AcDbText::position
  out.fullKey = platform::fmt("%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  out.zText = platform::fmt("%.2f,%.2f,%.2f", p.z, self.minZ(), self.maxZ());
  out.textStyle = textStyleText(e);  // AcDbText::textStyle
}

const DetailProperty kDetails[] = {
    {"提示不一样,", capture::text<Accessor::prompt>},                // AcDbAttributeDefinition::prompt
    {"标记不一样,", capture::text<Accessor::tag>},                   // AcDbAttributeDefinition::tag
    {"多行文字不一样,", capture::int1<Accessor::isMTextAttribute>},  // ::isMTextAttributeDefinition
};

const ComparerTraits kTraits{definitionKey, kDetails};

}  // namespace

CVkAcDbAttributeDefinition::CVkAcDbAttributeDefinition() : CVkDetailedEntity(kTraits) {}
