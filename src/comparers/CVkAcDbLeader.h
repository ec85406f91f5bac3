// Comparer of leaders.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbLeader final : public CVkDetailedEntity {
 public:
  CVkAcDbLeader();
};
