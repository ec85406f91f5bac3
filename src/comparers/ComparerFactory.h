// The factory that chooses a comparer class for an entity, and the one list of comparer classes.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "comparers/CVkAcadEntityBase.h"

// How a row of the factory decides.
enum class FactoryRule {
  Class,           // the entity is of the row's class: the row's comparer
  Surface,         // a surface: the comparer of its kind, or none for another kind
  BlockReference,  // a block reference, under the block and external-reference settings
};

// One row of the factory, tested in order with isKindOf; the first hit decides.
struct FactoryRow {
  int order;
  platform::DbClass cls;
  std::string_view comparer;  // the comparer class's name
  FactoryRule rule;
  // Makes the comparer in the read context's store (on the heap without one); null while the class is not
  // built, so that its entities go on to the last rule.
  ComparerPtr (*make)(CReadContext*);
};

// The rows of the factory in their order, then the last rule: by DXF name ("LIGHT", "REGION",
// "SOLID"/"TRACE"), every other name to the custom-entity comparer.
std::span<const FactoryRow> factoryRows();

// Makes, sets up and loads the comparer for an entity; null when the entity takes no part (a surface of an
// unknown kind, a block reference filtered out by the settings or whose block cannot be opened). The read
// context is the drawing's, shared by every comparer made for it; block contents are walked only with one.
ComparerPtr createComparer(const platform::Entity& entity, const platform::Matrix3d& transform,
                           CReadContext* readerContext, const platform::Matrix3d* drawingTransform);
