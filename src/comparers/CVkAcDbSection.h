// Comparer of section planes.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbSection final : public CVkDetailedEntity {
 public:
  CVkAcDbSection();
};
