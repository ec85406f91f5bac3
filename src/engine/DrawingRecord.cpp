// Drawing reading and the compare-area tests.
#include "engine/DrawingRecord.h"

#include <algorithm>
#include <cmath>

#include "comparers/ComparerFactory.h"
#include "platform/host.h"
#include "platform/text.h"

namespace {

// Coordinates within this distance count as equal for the area; an entity must clear the area's border
// by more than it to count as outside.
constexpr double kAreaTolerance = 0.0001;

struct Box {
  double minX, minY, maxX, maxY;
};

Box normalised(const platform::Point3d& a, const platform::Point3d& b) {
  return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

}  // namespace

std::unique_ptr<CDrawingRecord> CDrawingRecord::fromDatabase(const platform::Database& db) {
  auto record = std::make_unique<CDrawingRecord>();
  record->database = &db;
  record->fileName = db.fileName();
  return record;
}

std::unique_ptr<CDrawingRecord> CDrawingRecord::fromDocument(platform::Document& document) {
  auto record = fromDatabase(document.database());
  record->document = &document;
  record->fileName = document.fileName();
  return record;
}

bool IsWholeDrawing(const platform::Point3d& c1, const platform::Point3d& c2) {
  return std::fabs(c1.x - c2.x) < kAreaTolerance && std::fabs(c1.y - c2.y) < kAreaTolerance &&
         std::fabs(c1.z - c2.z) < kAreaTolerance;
}

bool PassesAreaTest(const platform::Extents3d& entity, const platform::Point3d& c1, const platform::Point3d& c2) {
  const Box e = normalised(entity.min, entity.max);
  const Box a = normalised(c1, c2);
  // An entity that surrounds the whole area with room to spare on every side (a frame drawn round it)
  // is deliberately not compared.
  if (e.maxX - a.maxX > kAreaTolerance && a.minX - e.minX > kAreaTolerance && e.maxY - a.maxY > kAreaTolerance &&
      a.minY - e.minY > kAreaTolerance)
    return false;
  // A gap of at least the tolerance on any side leaves the entity out; so, deliberately, does a separation
  // of exactly +0.0001.
  const double separations[] = {e.maxX - a.minX, a.maxX - e.minX, e.maxY - a.minY, a.maxY - e.minY};
  for (double s : separations)
    if (!(s > kAreaTolerance) && !(std::fabs(s) < kAreaTolerance)) return false;
  return true;
}

void PrepareReading(CDrawingRecord& record) {
  if (!record.database) return;
  const platform::Database& db = *record.database;
  record.entityMap.clear();
  record.outsideSet.clear();
  // The layer filter: the layers of this drawing named in the excluded-layer list.
  record.layerFilter.clear();
  for (const platform::LayerRecord& layer : db.layers())
    for (const std::string& name : ExcludedLayers())
      if (platform::equalsIgnoreCase(name, layer.name)) record.layerFilter.insert(layer.id.value);
  record.layerContext = std::make_unique<CLayerContext>(db);
  record.readContext = std::make_unique<CReadContext>(db, record.fileName);
  const platform::Point3d& b = record.basePoint;
  record.baseMatrix = platform::Matrix3d::translation({-b.x, -b.y, -b.z});
  record.combinedMatrix = record.baseMatrix * record.placementMatrix;
  record.entityCount = static_cast<int>(db.blockRecord(db.currentSpaceId()).entityCount());
}

void AnnounceReading(CDrawingRecord& record, int mode) {
  if (!record.database) return;
  const bool source = mode == kReadSource;
  record.namesBeingRead.push_back(record.fileName);
  platform::setStatusBarProgressMeter(source ? "正在计算源文件实体数量：" : "正在计算目标文件实体数量：", 0, 100);
  platform::restoreStatusBar();
  platform::printToCommandLine(platform::fmt("\n实体数量：%d个", record.entityCount));
  platform::setStatusBarProgressMeter(source ? "1/3 正在读取源文件：" : "2/3 正在读取目标文件：", 0, record.entityCount);
}

void CollectComparers(CDrawingRecord& record, const CompareOptions& options, bool showProgress) {
  if (!record.database) return;
  const platform::Database& db = *record.database;
  const platform::BlockRecord space = db.blockRecord(db.currentSpaceId());
  const std::size_t count = space.entityCount();
  const bool whole = IsWholeDrawing(record.areaCorner1, record.areaCorner2);
  // Comparers are gathered in reading order and sorted by key at the end: a stable sort keeps the reading
  // order of equal keys.
  record.entityMap.reserve(count);
  record.readContext->use(record.layerContext.get(), &options);
  for (std::size_t i = 0; i < count; ++i) {
    if (showProgress) platform::setStatusBarProgressMeterPos(static_cast<int>(i));
    const platform::Entity entity = db.openEntity(space.entityIdAt(i));
    if (!entity) continue;
    if (!entity.isVisible() || record.layerFilter.count(entity.layerId().value)) continue;
    if (!whole) {
      platform::Extents3d ext;
      if (entity.getGeomExtents(ext) == platform::ErrorStatus::eOk &&
          !PassesAreaTest(ext.transformed(record.combinedMatrix), record.areaCorner1, record.areaCorner2)) {
        record.outsideSet.push_back(entity.handle());
        continue;
      }
    }
    ComparerPtr comparer = createComparer(entity, record.combinedMatrix, record.readContext.get(), &record.combinedMatrix);
    if (!comparer) continue;
    // The comparer's own extents (for a block reference those of its expanded contents) face the area too.
    if (!whole && comparer->extentsStatus() == platform::ErrorStatus::eOk &&
        !PassesAreaTest(comparer->placedExtents(), record.areaCorner1, record.areaCorner2)) {
      record.outsideSet.push_back(entity.handle());
      continue;
    }
    addByKey(record.entityMap, std::move(comparer));
  }
  sortByKey(record.entityMap);
}

void EndReading(CDrawingRecord& record) {
  if (!record.database) return;
  platform::restoreStatusBar();
  record.namesBeingRead.clear();
}

void ReadDrawing(CDrawingRecord& record, int mode, const CompareOptions& options) {
  PrepareReading(record);
  AnnounceReading(record, mode);
  CollectComparers(record, options, true);
  EndReading(record);
}
