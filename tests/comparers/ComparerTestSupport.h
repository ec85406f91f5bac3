// Helpers for comparer tests: comparers made by the real factory from small drawings.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "comparers/ComparerFactory.h"
#include "support/TestSupport.h"

namespace vktest {

// A drawing read from DXF text, with a comparer made for each entity of its model space, sharing one read
// context as the comparers of a drawing do.
struct LoadedDrawing {
  std::unique_ptr<platform::Database> db;
  std::unique_ptr<CLayerContext> layers;
  std::unique_ptr<CReadContext> context;
  std::vector<ComparerPtr> comparers;
};

// With drawingTransform, the comparers are loaded as a run loads a drawing's own entities (the transform must
// outlive them); without, as the contents of a block are.
inline LoadedDrawing loadComparers(const TempDir& dir, const std::string& name, const std::string& dxf,
                                   const CompareOptions& options,
                                   const platform::Matrix3d& transform = platform::Matrix3d(),
                                   const platform::Matrix3d* drawingTransform = nullptr) {
  LoadedDrawing d;
  d.db = readDxfText(dir, name, dxf);
  if (!d.db) return d;
  d.layers = std::make_unique<CLayerContext>(*d.db);
  d.context = std::make_unique<CReadContext>(*d.db, d.db->fileName());
  d.context->use(d.layers.get(), &options);
  for (platform::ObjectId id : d.db->blockRecord(d.db->modelSpaceId()).entityIds())
    d.comparers.push_back(
        createComparer(d.db->openEntity(id), transform, d.context.get(), drawingTransform));
  return d;
}

// The record text of comparing destination with source (destination.compare(source)).
inline std::string compareText(CVkAcadEntityBase& destination, const CVkAcadEntityBase& source) {
  return destination.compare(source)->text;
}

}  // namespace vktest
