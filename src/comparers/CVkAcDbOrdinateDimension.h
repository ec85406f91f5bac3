// Comparer of ordinate dimensions.
#pragma once

#include "comparers/CVkAcDbDimension.h"

class CVkAcDbOrdinateDimension final : public CVkAcDbDimension {
 public:
  CVkAcDbOrdinateDimension();
};
