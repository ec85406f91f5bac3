// Comparer of shapes.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbShape final : public CVkDetailedEntity {
 public:
  CVkAcDbShape();
};
