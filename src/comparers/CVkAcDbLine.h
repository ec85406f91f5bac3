// Comparer of lines.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbLine final : public CVkDetailedEntity {
 public:
  CVkAcDbLine();
};
