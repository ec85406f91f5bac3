// Comparer of helices.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbHelix final : public CVkDetailedEntity {
 public:
  CVkAcDbHelix();
};
