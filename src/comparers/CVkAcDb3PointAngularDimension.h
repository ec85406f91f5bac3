// Comparer of angular dimensions defined by three points.
#pragma once

#include "comparers/CVkAcDbDimension.h"

class CVkAcDb3PointAngularDimension final : public CVkAcDbDimension {
 public:
  CVkAcDb3PointAngularDimension();
};
