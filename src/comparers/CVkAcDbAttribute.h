// Comparer of attributes (the values a block reference carries).
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbAttribute final : public CVkDetailedEntity {
 public:
  CVkAcDbAttribute();
};
