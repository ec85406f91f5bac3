// Comparer of bodies.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbBody final : public CVkDetailedEntity {
 public:
  CVkAcDbBody();
};
