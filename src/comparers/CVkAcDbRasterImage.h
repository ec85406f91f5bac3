// Comparer of raster images and wipeouts.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbRasterImage final : public CVkDetailedEntity {
 public:
  CVkAcDbRasterImage();
};
