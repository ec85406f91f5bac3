// Comparer of construction lines.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbXline final : public CVkDetailedEntity {
 public:
  CVkAcDbXline();
};
