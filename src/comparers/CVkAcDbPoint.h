// Comparer of points.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbPoint final : public CVkDetailedEntity {
 public:
  CVkAcDbPoint();
};
