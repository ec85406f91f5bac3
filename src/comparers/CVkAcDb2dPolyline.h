// Comparer of 2D polylines.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDb2dPolyline final : public CVkDetailedEntity {
 public:
  CVkAcDb2dPolyline();
};
