// Comparer of OLE2 frames.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbOle2Frame final : public CVkDetailedEntity {
 public:
  CVkAcDbOle2Frame();
};
