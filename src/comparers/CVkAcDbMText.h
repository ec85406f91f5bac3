// Comparer of multiline text.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbMText final : public CVkDetailedEntity {
 public:
  CVkAcDbMText();
};
