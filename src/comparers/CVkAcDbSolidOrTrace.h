// Comparer of 2D solids and traces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbSolidOrTrace final : public CVkDetailedEntity {
 public:
  CVkAcDbSolidOrTrace();
};
