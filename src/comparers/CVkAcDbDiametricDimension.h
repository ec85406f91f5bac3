// Comparer of diametric dimensions.
#pragma once

#include "comparers/CVkAcDbDimension.h"

class CVkAcDbDiametricDimension final : public CVkAcDbDimension {
 public:
  CVkAcDbDiametricDimension();
};
