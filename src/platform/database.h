// The host's drawing database as the system reads it: databases, block records, layers and entities.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessors.h"
#include "platform/dbclass.h"
#include "platform/geometry.h"

namespace platform {

// Identifies an object of an open database (the host's AcDbObjectId); 0 is the null id.
struct ObjectId {
  std::uint64_t value = 0;
  constexpr bool isNull() const { return value == 0; }
  constexpr auto operator<=>(const ObjectId&) const = default;
};

// The persistent handle of an object, unique within its drawing.
using Handle = std::uint64_t;

// Results of host calls that can fail; eOk is 0 as in the host.
enum class ErrorStatus : int {
  eOk = 0,
  eInvalidExtents = 1,
  eNullExtents = 2,
  eNotApplicable = 3,
  eInvalidInput = 4,     // an id, a document or an argument that names nothing
  eFileAccessErr = 5,    // a drawing file that cannot be read
  eLockViolation = 6,    // a change to a document that is not locked, or an unlock without a lock
  eInvalidContext = 7,   // a call that needs the application context made from a command's
};

// One group of an entity's group list (what acdbEntGet returns): points are merged into one group.
struct ResBuf {
  enum class Type : std::uint8_t { Real, Integer, Text, Point, Handle, Name, Binary };
  int code = 0;
  Type type = Type::Text;
  double real = 0.0;
  long long integer = 0;
  Point3d point;
  std::string text;  // text values; handles and binary chunks as hex digits
  ObjectId id;       // entity names (-1, 330 ...) resolved to ids where possible
};
using ResBufList = std::vector<ResBuf>;

struct LayerRecord {
  ObjectId id;
  std::string name;
  int colorIndex = 7;  // the absolute colour; the layer is off when the stored value is negative
  std::string linetype = "Continuous";
  int lineWeight = -3;  // -3 is the host's default lineweight
  bool isOff = false;
  bool isFrozen = false;
  bool isLocked = false;
};

class Database;

// An entity opened for read. Cheap to create; valid while its database lives.
class Entity {
 public:
  Entity() = default;
  bool isNull() const { return db_ == nullptr; }
  explicit operator bool() const { return db_ != nullptr; }

  const Database& database() const { return *db_; }
  ObjectId objectId() const;
  Handle handle() const;
  // isA()->dxfName(): "LINE", "INSERT", ...
  std::string_view dxfName() const;
  DbClass dbClass() const;
  bool isKindOf(DbClass base) const { return platform::isKindOf(dbClass(), base); }

  // acdbEntGet: the entity's groups in the host's order, points merged, without extension data.
  ResBufList entGet() const;

  bool isVisible() const;
  std::string_view layer() const;
  ObjectId layerId() const;
  int colorIndex() const;            // 256 ByLayer, 0 ByBlock
  std::string_view linetype() const;  // "ByLayer", "ByBlock" or the linetype's name
  double linetypeScale() const;
  int lineWeight() const;            // -1 ByLayer, -2 ByBlock, -3 default
  // getGeomExtents: the entity's extents in WCS; a non-zero status when they cannot be computed.
  ErrorStatus getGeomExtents(Extents3d& extents) const;

  // Block references: the block table record they show, the transform from the block's coordinates to
  // WCS (AcDbBlockReference::blockTransform), and their attributes in order.
  ObjectId blockTableRecord() const;
  Matrix3d blockTransform() const;
  std::vector<ObjectId> attributes() const;
  // 2D and 3D polylines, polyface and polygon meshes: their vertices in order.
  std::vector<ObjectId> vertices() const;
  // The entity that owns this one (a block reference for an attribute, a polyline for a vertex), or null.
  ObjectId ownerEntity() const;

  // Typed accessors; an accessor that does not apply to the entity's class answers 0, empty or the default.
  double real(Accessor a) const;
  long long integer(Accessor a) const;
  Point3d point(Accessor a) const;
  Vector3d vector(Accessor a) const;
  std::string text(Accessor a) const;
  std::vector<Point3d> points(Accessor a) const;
  std::vector<double> reals(Accessor a) const;
  std::vector<std::string> texts(Accessor a) const;

 private:
  friend class Database;
  Entity(const Database* db, std::uint32_t index) : db_(db), index_(index) {}
  const Database* db_ = nullptr;
  std::uint32_t index_ = 0;
};

// A block table record: model space, a paper-space layout or a block definition.
class BlockRecord {
 public:
  BlockRecord() = default;
  bool isNull() const { return db_ == nullptr; }
  explicit operator bool() const { return db_ != nullptr; }

  ObjectId objectId() const;
  Handle handle() const;
  std::string_view name() const;
  bool isLayout() const;
  std::string_view layoutName() const;
  bool isAnonymous() const;
  bool isFromExternalReference() const;
  Point3d origin() const;
  // The record's entities in drawing order, erased ones skipped (attributes and vertices are not among them).
  std::vector<ObjectId> entityIds() const;
  std::size_t entityCount() const;
  // Entry i (below entityCount()) of entityIds(), without making the list.
  ObjectId entityIdAt(std::size_t i) const;

 private:
  friend class Database;
  BlockRecord(const Database* db, std::uint32_t index) : db_(db), index_(index) {}
  const Database* db_ = nullptr;
  std::uint32_t index_ = 0;
};

// What reading a drawing file found: a fatal error, or warnings about oddities that were survived.
struct ReadReport {
  std::string error;  // "<file>:<line N | byte offset N>: <what was expected>" when reading failed
  std::vector<std::string> warnings;
  bool ok() const { return error.empty(); }
};

struct DatabaseData;  // the implementation's storage

// The newest DWG release the host reads, as characters 5 and 6 of a DWG file's version code ("AC1032": 32).
// The headless host reads up to R2018 (32); a host whose SDK stops at R2010 answers 24.
int newestReadableRelease();

class Database {
 public:
  // readDwgFile: reads a drawing file. Returns null with report.error set when it cannot be read.
  static std::unique_ptr<Database> read(const std::string& path, ReadReport& report);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const std::string& fileName() const;
  // "dxf-ascii", "dxf-binary" or "dwg".
  std::string_view format() const;
  // $ACADVER, for example "AC1015" ("" when the drawing does not say).
  std::string_view version() const;
  // $DWGCODEPAGE as written ("" when absent).
  std::string_view codepage() const;
  // $TILEMODE: 1 when model space is current.
  int tilemode() const;

  ObjectId currentSpaceId() const;
  ObjectId modelSpaceId() const;
  std::vector<ObjectId> blockRecordIds() const;
  BlockRecord blockRecord(ObjectId id) const;
  BlockRecord blockRecord(std::string_view name) const;  // by name, without regard to case

  Entity openEntity(ObjectId id) const;
  // AcDbEntity::setVisibility on the entity opened for write; the entity's stored group list is kept as read.
  ErrorStatus setVisibility(ObjectId id, bool visible);

  std::vector<LayerRecord> layers() const;
  const LayerRecord* layer(ObjectId id) const;
  const LayerRecord* layer(std::string_view name) const;
  // AcDbLayerTable::add on the table opened for write: appends the record (its id is given to it and answered
  // in id). eInvalidInput when the name is empty, holds a character a layer name may not hold (<>/\":;?*|=`)
  // or is already taken (without regard to case).
  ErrorStatus addLayer(const LayerRecord& record, ObjectId& id);

  // Header extents ($EXTMIN/$EXTMAX) when valid, else the extents of the current space's entities.
  Extents3d extents() const;

  const DatabaseData& data() const { return *data_; }

 private:
  explicit Database(std::unique_ptr<DatabaseData> data);
  std::unique_ptr<DatabaseData> data_;
};

}  // namespace platform
