// Comparer of 2D polyline vertices.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDb2dVertex final : public CVkDetailedEntity {
 public:
  CVkAcDb2dVertex();
};
