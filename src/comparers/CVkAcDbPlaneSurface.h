// Comparer of plane surfaces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbPlaneSurface final : public CVkDetailedEntity {
 public:
  CVkAcDbPlaneSurface();
};
