// Comparer of ellipses.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbEllipse final : public CVkDetailedEntity {
 public:
  CVkAcDbEllipse();
};
