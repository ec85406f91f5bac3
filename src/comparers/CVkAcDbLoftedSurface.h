// Comparer of lofted surfaces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbLoftedSurface final : public CVkDetailedEntity {
 public:
  CVkAcDbLoftedSurface();
};
