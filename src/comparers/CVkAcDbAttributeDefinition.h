// Comparer of attribute definitions.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbAttributeDefinition final : public CVkDetailedEntity {
 public:
  CVkAcDbAttributeDefinition();
};
