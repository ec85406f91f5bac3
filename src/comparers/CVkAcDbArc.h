// Comparer of arcs.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbArc final : public CVkDetailedEntity {
 public:
  CVkAcDbArc();
};
