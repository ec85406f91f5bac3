// Comparer of aligned dimensions.
#pragma once

#include "comparers/CVkAcDbDimension.h"

class CVkAcDbAlignedDimension final : public CVkAcDbDimension {
 public:
  CVkAcDbAlignedDimension();
};
