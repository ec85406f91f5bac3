// Comparer of radial dimensions.
#pragma once

#include "comparers/CVkAcDbDimension.h"

class CVkAcDbRadialDimension final : public CVkAcDbDimension {
 public:
  CVkAcDbRadialDimension();
};
