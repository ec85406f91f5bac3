// Comparer of underlays (PDF, DWF and DGN references).
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbUnderlayReference final : public CVkDetailedEntity {
 public:
  CVkAcDbUnderlayReference();
};
