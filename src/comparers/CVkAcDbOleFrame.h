// Comparer of OLE frames (also OLE2 frames, through the factory): the common properties only.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbOleFrame final : public CVkDetailedEntity {
 public:
  CVkAcDbOleFrame();
};
