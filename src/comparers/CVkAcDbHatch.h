// Comparer of hatches.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbHatch final : public CVkDetailedEntity {
 public:
  CVkAcDbHatch();
};
