// Comparer of dimensions: every dimension, whatever its kind, through the factory; the comparers of the
// dimension kinds derive from it.
#pragma once

#include "comparers/CVkDetailedEntity.h"

class CVkAcDbDimension : public CVkDetailedEntity {
 public:
  CVkAcDbDimension();

 protected:
  explicit CVkAcDbDimension(const ComparerTraits& traits) : CVkDetailedEntity(traits) {}
};
