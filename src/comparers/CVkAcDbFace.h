// Comparer of 3D faces.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbFace final : public CVkDetailedEntity {
 public:
  CVkAcDbFace();
};
