// Comparer of single-line text.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbText final : public CVkDetailedEntity {
 public:
  CVkAcDbText();
};
