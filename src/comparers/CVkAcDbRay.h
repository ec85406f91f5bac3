// Comparer of rays.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbRay final : public CVkDetailedEntity {
 public:
  CVkAcDbRay();
};
