// Comparer of multilines.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbMline final : public CVkDetailedEntity {
 public:
  CVkAcDbMline();
};
