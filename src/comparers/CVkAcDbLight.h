// Comparer of lights (made by the factory but not kept: lights are compared as custom entities).
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbLight final : public CVkDetailedEntity {
 public:
  CVkAcDbLight();
};
