// Comparer of 3D solids.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDb3dSolid final : public CVkDetailedEntity {
 public:
  CVkAcDb3dSolid();
};
