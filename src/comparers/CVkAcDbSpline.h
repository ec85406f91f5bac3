// Comparer of splines.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbSpline final : public CVkDetailedEntity {
 public:
  CVkAcDbSpline();
};
