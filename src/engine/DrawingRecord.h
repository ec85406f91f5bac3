// Drawing reading: one drawing's current space turned into comparers filed by key, filtered by visibility,
// layers and the compare area, and moved by the base-point transform.
#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "comparers/CVkAcadEntityBase.h"
#include "comparers/LayerContext.h"
#include "comparers/PairingRules.h"
#include "comparers/ReadContext.h"
#include "platform/database.h"
#include "platform/documents.h"
#include "platform/geometry.h"
#include "ui/CompareConfigFile.h"  // ExcludedLayers

// Reading modes.
enum ReadMode : int { kReadSource = 1, kReadDestination = 2 };

// One compared drawing.
struct CDrawingRecord {
  platform::Document* document = nullptr;  // the host document, or none for a side database
  std::string fileName;
  // The drawing's texts and walk budget; declared before the comparers that point into it.
  std::unique_ptr<CReadContext> readContext;
  KeyedComparers entityMap;
  std::vector<std::string> namesBeingRead;
  std::unordered_set<std::uint64_t> layerFilter;  // ids of the layers whose entities are left out
  platform::Point3d areaCorner1;
  platform::Point3d areaCorner2;
  platform::Point3d basePoint;
  int entityCount = 0;
  std::vector<platform::Handle> outsideSet;
  const platform::Database* database = nullptr;
  platform::Matrix3d placementMatrix;
  platform::Matrix3d combinedMatrix;
  platform::Matrix3d baseMatrix;
  std::unique_ptr<CLayerContext> layerContext;

  // A record of a drawing read from disk (a side database).
  static std::unique_ptr<CDrawingRecord> fromDatabase(const platform::Database& db);
  // A record of a drawing open in the host.
  static std::unique_ptr<CDrawingRecord> fromDocument(platform::Document& document);
};

// Reads the record's current space into its entity map and entity count: the four stages below in order.
// Mode 1 is the source, any other value the destination. A record without a database is not read.
void ReadDrawing(CDrawingRecord& record, int mode, const CompareOptions& options);

// The stages of reading. Preparing and collecting make no call to the host: the two drawings of a
// comparison may collect on two threads, each touching only its own record and database. Announcing and
// ending talk to the host (the count on the command line, the progress meter) and belong on its thread.
//
// Prepares the layer filter, the contexts and the transforms, and counts the current space's entities.
void PrepareReading(CDrawingRecord& record);
// Shows the entity count and opens the progress meter of the reading.
void AnnounceReading(CDrawingRecord& record, int mode);
// Makes a comparer for every entity of the current space that takes part and files them by key; with
// showProgress the meter follows (host thread only).
void CollectComparers(CDrawingRecord& record, const CompareOptions& options, bool showProgress);
// Closes the progress meter.
void EndReading(CDrawingRecord& record);

// The area is the whole drawing when its two corners are equal within 0.0001 in x, y and z.
bool IsWholeDrawing(const platform::Point3d& corner1, const platform::Point3d& corner2);
// Whether an entity with these extents takes part when the compare area is set (x and y only).
bool PassesAreaTest(const platform::Extents3d& entity, const platform::Point3d& corner1, const platform::Point3d& corner2);
