// Comparer of regions.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbRegion final : public CVkDetailedEntity {
 public:
  CVkAcDbRegion();
};
