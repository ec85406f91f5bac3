// Comparer of swept surfaces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbSweptSurface final : public CVkDetailedEntity {
 public:
  CVkAcDbSweptSurface();
};
