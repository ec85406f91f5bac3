// Comparer of 3D polyline vertices.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDb3dPolylineVertex final : public CVkDetailedEntity {
 public:
  CVkAcDb3dPolylineVertex();
};
