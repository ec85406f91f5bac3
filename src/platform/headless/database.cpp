// The headless host's drawing database: answers the platform's questions from the stored groups.
#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "platform/headless/dwg_container.h"
#include "platform/headless/dwg_reader.h"
#include "platform/headless/dxf_data.h"
#include "platform/headless/dxf_extents.h"
#include "platform/headless/dxf_groups.h"
#include "platform/headless/dxf_reader.h"
#include "platform/text.h"

namespace platform {

using headless::Groups;
using headless::TagType;

// ---- storage helpers ----

std::uint32_t DatabaseData::intern(std::string_view s) {
  auto it = nameIndex.find(s);
  if (it != nameIndex.end()) return it->second;
  const auto index = static_cast<std::uint32_t>(names.size());
  names.emplace_back(s);
  nameIndex.emplace(names.back(), index);
  return index;
}

const HeaderVar* DatabaseData::headerVar(std::string_view name) const {
  for (const HeaderVar& v : header)
    if (equalsIgnoreCase(v.name, name)) return &v;
  return nullptr;
}

const StoredTag* DatabaseData::find(std::uint32_t begin, std::uint32_t count, int code) const {
  for (std::uint32_t i = 0; i < count; ++i)
    if (tags[begin + i].code == code) return &tags[begin + i];
  return nullptr;
}

const ObjectRec* DatabaseData::object(Handle handle) const {
  const ObjectId id = byHandle.find(handle);
  if (idKind(id) != IdKind::Object) return nullptr;
  return &objects[idIndex(id)];
}

const ObjectRec* DatabaseData::tableEntry(std::string_view type, std::string_view name) const {
  std::string key(type);
  key += '\x1f';
  key += toUpperAscii(name);
  auto it = tableEntries.find(key);
  return it == tableEntries.end() ? nullptr : &objects[it->second];
}

// ---- Database ----

Database::Database(std::unique_ptr<DatabaseData> data) : data_(std::move(data)) {
  // Lookups may remember what they found in a database by its serial: no two databases share one.
  static std::atomic<std::uint64_t> serials{0};
  data_->serial = ++serials;
}
Database::~Database() = default;

std::unique_ptr<Database> Database::read(const std::string& path, ReadReport& report) {
  report = ReadReport();
  const std::string_view ext = path.size() >= 4 ? std::string_view(path).substr(path.size() - 4) : std::string_view();
  if (equalsIgnoreCase(ext, ".dwg")) {
    // Files that are no R13+ DWG are told apart by their first bytes, so their message says what they are.
    std::array<std::uint8_t, 6> signature{};
    std::string problem;
    if (std::ifstream in(path, std::ios::binary); in.is_open()) {
      in.read(reinterpret_cast<char*>(signature.data()), signature.size());
      problem = headless::dwgSignatureProblem(std::span(signature).first(static_cast<std::size_t>(in.gcount())));
    }
    if (!problem.empty()) {
      report.error = path + ": " + problem;
      return nullptr;
    }
    auto data = std::make_unique<DatabaseData>();
    try {
      if (!headless::readDwg(path, *data, report)) return nullptr;
    } catch (const std::exception& e) {
      report.error = path + ": the drawing cannot be read: " + e.what();
      return nullptr;
    }
    // Without its header variables a drawing's current space is unknown: guessing model space would compare
    // the wrong space of a drawing saved with a layout showing.
    if (!data->dwgHeaderDecoded) {
      report = ReadReport();
      report.error = path + ": the drawing's header variables (the current space among them) could not be "
                            "decoded; save the drawing as DXF (any release from R12 to R2018)";
      return nullptr;
    }
    return std::unique_ptr<Database>(new Database(std::move(data)));
  }
  auto data = std::make_unique<DatabaseData>();
  if (!headless::readDxf(path, *data, report)) return nullptr;
  return std::unique_ptr<Database>(new Database(std::move(data)));
}

const std::string& Database::fileName() const { return data_->fileName; }
std::string_view Database::format() const { return data_->format; }
std::string_view Database::version() const { return data_->version; }
std::string_view Database::codepage() const { return data_->codepage; }
int Database::tilemode() const { return data_->tilemode; }

ObjectId Database::currentSpaceId() const {
  return makeId(IdKind::BlockRecord, data_->tilemode == 1 ? data_->modelSpace : data_->paperSpace);
}
ObjectId Database::modelSpaceId() const { return makeId(IdKind::BlockRecord, data_->modelSpace); }

std::vector<ObjectId> Database::blockRecordIds() const {
  std::vector<ObjectId> ids;
  for (std::uint32_t i = 0; i < data_->blocks.size(); ++i) ids.push_back(makeId(IdKind::BlockRecord, i));
  return ids;
}

BlockRecord Database::blockRecord(ObjectId id) const {
  if (idKind(id) != IdKind::BlockRecord || idIndex(id) >= data_->blocks.size()) return {};
  return BlockRecord(this, idIndex(id));
}

BlockRecord Database::blockRecord(std::string_view name) const {
  auto it = data_->blockIndex.find(toUpperAscii(name));
  return it == data_->blockIndex.end() ? BlockRecord() : BlockRecord(this, it->second);
}

Entity Database::openEntity(ObjectId id) const {
  if (idKind(id) != IdKind::Entity || idIndex(id) >= data_->entities.size()) return {};
  return Entity(this, idIndex(id));
}

ErrorStatus Database::setVisibility(ObjectId id, bool visible) {
  if (idKind(id) != IdKind::Entity || idIndex(id) >= data_->entities.size()) return ErrorStatus::eInvalidInput;
  data_->entities[idIndex(id)].invisible = !visible;
  return ErrorStatus::eOk;
}

std::vector<LayerRecord> Database::layers() const { return data_->layerTable; }

const LayerRecord* Database::layer(ObjectId id) const {
  if (idKind(id) != IdKind::Layer || idIndex(id) >= data_->layerTable.size()) return nullptr;
  return &data_->layerTable[idIndex(id)];
}

const LayerRecord* Database::layer(std::string_view name) const {
  auto it = data_->layerIndex.find(toUpperAscii(name));
  return it == data_->layerIndex.end() ? nullptr : &data_->layerTable[it->second];
}

ErrorStatus Database::addLayer(const LayerRecord& record, ObjectId& id) {
  id = ObjectId();
  if (record.name.empty() || record.name.find_first_of("<>/\\\":;?*|=`") != std::string::npos ||
      layer(record.name) != nullptr)
    return ErrorStatus::eInvalidInput;
  const auto index = static_cast<std::uint32_t>(data_->layerTable.size());
  LayerRecord added = record;
  added.id = makeId(IdKind::Layer, index);
  data_->layerTable.push_back(std::move(added));
  data_->layerIndex.emplace(toUpperAscii(record.name), index);
  id = data_->layerTable.back().id;
  return ErrorStatus::eOk;
}

Extents3d Database::extents() const {
  const HeaderVar* mn = data_->headerVar("$EXTMIN");
  const HeaderVar* mx = data_->headerVar("$EXTMAX");
  if (mn && mx) {
    const Groups a(*data_, mn->tagBegin, mn->tagCount), b(*data_, mx->tagBegin, mx->tagCount);
    const Extents3d e(a.point(10), b.point(10));
    // An empty drawing stores inverted extents (1e20, -1e20).
    if (!e.isEmpty() && e.max.x - e.min.x < 1e19) return e;
  }
  Extents3d e;
  const BlockRecord space = blockRecord(currentSpaceId());
  for (ObjectId id : space.entityIds()) {
    const Entity entity = openEntity(id);
    // Rays and construction lines are infinite: their base points say nothing of the drawing's size.
    if (entity.isKindOf(DbClass::Ray) || entity.isKindOf(DbClass::Xline)) continue;
    Extents3d one;
    if (entity.getGeomExtents(one) == ErrorStatus::eOk) e.addExtents(one);
  }
  return e;
}

// ---- BlockRecord ----

ObjectId BlockRecord::objectId() const { return makeId(IdKind::BlockRecord, index_); }
Handle BlockRecord::handle() const { return db_->data().blocks[index_].handle; }
std::string_view BlockRecord::name() const { return db_->data().blocks[index_].name; }
bool BlockRecord::isLayout() const { return db_->data().blocks[index_].isLayout; }
std::string_view BlockRecord::layoutName() const { return db_->data().blocks[index_].layoutName; }
bool BlockRecord::isAnonymous() const { return db_->data().blocks[index_].isAnonymous; }
bool BlockRecord::isFromExternalReference() const { return db_->data().blocks[index_].isXref; }
Point3d BlockRecord::origin() const { return db_->data().blocks[index_].origin; }
std::size_t BlockRecord::entityCount() const { return db_->data().blocks[index_].entities.size(); }
ObjectId BlockRecord::entityIdAt(std::size_t i) const {
  return makeId(IdKind::Entity, db_->data().blocks[index_].entities[i]);
}

std::vector<ObjectId> BlockRecord::entityIds() const {
  const auto& list = db_->data().blocks[index_].entities;
  std::vector<ObjectId> ids;
  ids.reserve(list.size());
  for (std::uint32_t i : list) ids.push_back(makeId(IdKind::Entity, i));
  return ids;
}

// ---- Entity: identity and common properties ----

namespace {
const EntityRec& rec(const Database& db, std::uint32_t index) { return db.data().entities[index]; }
}  // namespace

ObjectId Entity::objectId() const { return makeId(IdKind::Entity, index_); }
Handle Entity::handle() const { return rec(*db_, index_).handle; }
std::string_view Entity::dxfName() const { return db_->data().name(rec(*db_, index_).dxfName); }
DbClass Entity::dbClass() const { return rec(*db_, index_).cls; }
bool Entity::isVisible() const { return !rec(*db_, index_).invisible; }
std::string_view Entity::layer() const { return db_->data().layerTable[rec(*db_, index_).layer].name; }
ObjectId Entity::layerId() const { return makeId(IdKind::Layer, rec(*db_, index_).layer); }
int Entity::colorIndex() const { return rec(*db_, index_).color; }
std::string_view Entity::linetype() const { return db_->data().name(rec(*db_, index_).linetype); }
double Entity::linetypeScale() const { return rec(*db_, index_).linetypeScale; }
int Entity::lineWeight() const { return rec(*db_, index_).lineWeight; }

ErrorStatus Entity::getGeomExtents(Extents3d& extents) const {
  return headless::computeGeomExtents(db_->data(), index_, extents);
}

ObjectId Entity::blockTableRecord() const {
  if (!isKindOf(DbClass::BlockReference)) return {};
  const Groups g(db_->data(), rec(*db_, index_));
  const BlockRecord b = db_->blockRecord(g.text(2));
  return b ? b.objectId() : ObjectId();
}

Matrix3d Entity::blockTransform() const {
  if (!isKindOf(DbClass::BlockReference)) return Matrix3d();
  const DatabaseData& d = db_->data();
  const Groups g(d, rec(*db_, index_));
  const BlockRecord b = db_->blockRecord(g.text(2));
  const Point3d origin = b ? b.origin() : Point3d();
  const Point3d insert = g.point(10);
  // A table gives its direction as a vector; a block reference its rotation in degrees.
  double rotation = g.real(50) * M_PI / 180.0;
  if (isKindOf(DbClass::Table) && g.has(11)) {
    const Vector3d dir = g.vector(11, {1, 0, 0});
    rotation = std::atan2(dir.y, dir.x);
  }
  // A table's own part reuses 40 and 41 for its cell margins: its scale is read in its block reference part.
  auto scale = [&](int code) {
    const StoredTag* t = isKindOf(DbClass::Table) ? g.findIn("AcDbBlockReference", code) : g.find(code);
    return t ? (t->type == TagType::Real ? t->real : static_cast<double>(t->integer)) : 1.0;
  };
  return ocsToWcs(g.normal()) * Matrix3d::translation(insert.asVector()) * Matrix3d::rotationZ(rotation) *
         Matrix3d::scaling(scale(41), scale(42), scale(43)) * Matrix3d::translation(-origin.asVector());
}

std::vector<ObjectId> Entity::attributes() const {
  std::vector<ObjectId> ids;
  if (!isKindOf(DbClass::BlockReference)) return ids;
  const EntityRec& e = rec(*db_, index_);
  for (std::uint32_t i = 1; i <= e.subCount; ++i) ids.push_back(makeId(IdKind::Entity, index_ + i));
  return ids;
}

std::vector<ObjectId> Entity::vertices() const {
  std::vector<ObjectId> ids;
  const DbClass c = dbClass();
  if (c != DbClass::Polyline2d && c != DbClass::Polyline3d && c != DbClass::PolyFaceMesh && c != DbClass::PolygonMesh)
    return ids;
  const EntityRec& e = rec(*db_, index_);
  for (std::uint32_t i = 1; i <= e.subCount; ++i) ids.push_back(makeId(IdKind::Entity, index_ + i));
  return ids;
}

ObjectId Entity::ownerEntity() const {
  const EntityRec& e = rec(*db_, index_);
  return e.owner == kNone ? ObjectId() : makeId(IdKind::Entity, e.owner);
}

// ---- acdbEntGet ----

namespace {

std::string hexHandle(Handle h) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  do {
    out.insert(out.begin(), kHex[h & 15]);
    h >>= 4;
  } while (h);
  return out;
}

bool isPointCode(int code) {
  return (code >= 10 && code <= 18) || (code >= 110 && code <= 112) || (code >= 210 && code <= 213) ||
         (code >= 1010 && code <= 1013);
}

}  // namespace

ResBufList Entity::entGet() const {
  const DatabaseData& d = db_->data();
  const EntityRec& e = rec(*db_, index_);
  ResBufList list;
  list.reserve(e.tagCount + 4);
  auto push = [&list](int code, ResBuf::Type type) -> ResBuf& {
    list.emplace_back();
    list.back().code = code;
    list.back().type = type;
    return list.back();
  };
  push(-1, ResBuf::Type::Name).id = objectId();
  push(0, ResBuf::Type::Text).text = std::string(dxfName());
  ResBuf& owner = push(330, ResBuf::Type::Name);
  owner.id = e.owner != kNone ? makeId(IdKind::Entity, e.owner) : makeId(IdKind::BlockRecord, e.block);
  push(5, ResBuf::Type::Handle).text = hexHandle(e.handle);
  const StoredTag* tags = d.tagsOf(e);
  const Groups g(d, e);
  int depth = 0;
  bool inEntityPart = false;
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    const StoredTag& t = tags[i];
    if (t.code == 102) {
      // Application groups (reactors, extension dictionary) are the host's bookkeeping.
      depth += d.text(t).starts_with("{") ? 1 : -1;
      continue;
    }
    if (t.code == 100) inEntityPart = d.text(t) == "AcDbEntity";
    if (depth > 0 || t.code == 5 || t.code == 330 || t.code == 999) continue;
    // The proxy graphics in the entity's common part (their size in 92 or 160, their bytes in 310) are a
    // picture cached by the program that wrote the file, not part of the entity.
    if (inEntityPart && (t.code == 92 || t.code == 160 || t.code == 310)) continue;
    if (isPointCode(t.code) && t.type == TagType::Real) {
      ResBuf& p = push(t.code, ResBuf::Type::Point);
      p.point.x = t.real;
      if (i + 1 < g.ownCount() && tags[i + 1].code == t.code + 10) {
        p.point.y = tags[++i].real;
        if (i + 1 < g.ownCount() && tags[i + 1].code == t.code + 20) p.point.z = tags[++i].real;
      }
      continue;
    }
    switch (t.type) {
      case TagType::Real: push(t.code, ResBuf::Type::Real).real = t.real; break;
      case TagType::Text: push(t.code, ResBuf::Type::Text).text = std::string(d.text(t)); break;
      case TagType::Handle: {
        ResBuf& h = push(t.code, ResBuf::Type::Handle);
        h.text = std::string(d.text(t));
        if (t.code >= 320 && t.code <= 369) {
          // Pointers become entity names of the objects they point to.
          h.type = ResBuf::Type::Name;
          if (const ObjectId id = d.byHandle.find(headless::parseHandle(h.text)); !id.isNull()) h.id = id;
        }
        break;
      }
      case TagType::Binary: push(t.code, ResBuf::Type::Binary).text = std::string(d.text(t)); break;
      default: push(t.code, ResBuf::Type::Integer).integer = t.integer; break;
    }
  }
  return list;
}

}  // namespace platform
