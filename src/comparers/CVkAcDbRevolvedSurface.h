// Comparer of revolved surfaces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbRevolvedSurface final : public CVkDetailedEntity {
 public:
  CVkAcDbRevolvedSurface();
};
