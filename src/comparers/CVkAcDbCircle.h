// Comparer of circles.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbCircle final : public CVkDetailedEntity {
 public:
  CVkAcDbCircle();
};
