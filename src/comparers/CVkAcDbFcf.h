// Comparer of geometric tolerances (feature control frames).
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbFcf final : public CVkDetailedEntity {
 public:
  CVkAcDbFcf();
};
