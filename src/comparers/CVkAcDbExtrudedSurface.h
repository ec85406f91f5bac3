// Comparer of extruded surfaces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbExtrudedSurface final : public CVkDetailedEntity {
 public:
  CVkAcDbExtrudedSurface();
};
