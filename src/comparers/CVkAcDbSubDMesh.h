// Comparer of subdivision meshes.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbSubDMesh final : public CVkDetailedEntity {
 public:
  CVkAcDbSubDMesh();
};
