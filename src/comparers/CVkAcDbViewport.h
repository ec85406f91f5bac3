// Comparer of viewports.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbViewport final : public CVkDetailedEntity {
 public:
  CVkAcDbViewport();
};
