// Comparer of lightweight polylines.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbPolyline final : public CVkDetailedEntity {
 public:
  CVkAcDbPolyline();
};
