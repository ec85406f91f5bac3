// Attribute definitions: keyed by their position; compared on prompt, tag and the multiline flag.
#include "comparers/CVkAcDbAttributeDefinition.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"提示不一样,", capture::text<Accessor::prompt>},                // AcDbAttributeDefinition::prompt
    {"标记不一样,", capture::text<Accessor::tag>},                   // AcDbAttributeDefinition::tag
    {"多行文字不一样,", capture::int1<Accessor::isMTextAttribute>},  // ::isMTextAttributeDefinition
};

const ComparerTraits kTraits{attributeKey, kDetails};

}  // namespace

CVkAcDbAttributeDefinition::CVkAcDbAttributeDefinition() : CVkDetailedEntity(kTraits) {}
