// Geometric extents per entity type: dispatch on the host class, block references, dimensions, point entities.
#include "platform/headless/dxf_extents.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/headless/dxf_extents_parts.h"
#include "platform/text.h"

namespace headless {

using namespace platform;

namespace extents {

namespace {

// Block references nest a few levels in real drawings; deeper nesting only comes from damaged or cyclic
// references, which this depth stops.
constexpr std::size_t kMaxBlockDepth = 64;
// Entities walked before nested references fall back to their blocks' boxes, transformed as boxes (looser
// under rotation, but bounded work for deeply nested, widely repeated blocks): so many in one computation,
// and in all computations of a drawing together a number growing with its size, with a floor that drawings
// of a few entities and many nested references reach only when hostile.
constexpr std::size_t kVisitBudget = 200000;
constexpr std::size_t kDrawingVisitFloor = 2000000;
constexpr std::size_t kDrawingVisitsPerEntity = 256;

bool workSpent(const Context& ctx) {
  const std::size_t drawing = std::max(kDrawingVisitFloor, kDrawingVisitsPerEntity * ctx.data.entities.size());
  return ctx.visits > kVisitBudget || ctx.data.extentsWork.visits.load(std::memory_order_relaxed) > drawing;
}
// Stands for a group that is absent.
constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

std::uint32_t findBlock(const DatabaseData& data, std::string_view name) {
  if (name.empty()) return kNone;
  auto it = data.blockIndex.find(toUpperAscii(name));
  return it == data.blockIndex.end() ? kNone : it->second;
}

// True when the matrix takes each axis onto an axis: a box then transforms to the exact box.
bool isAxisAligned(const Matrix3d& m) {
  for (int col = 0; col < 3; ++col) {
    double big = 0.0;
    for (int row = 0; row < 3; ++row) big = std::max(big, std::fabs(m(row, col)));
    int nonZero = 0;
    // Entries this much smaller than the column's largest come from rounding (cos 90 degrees).
    for (int row = 0; row < 3; ++row)
      if (std::fabs(m(row, col)) > big * 1e-12) ++nonZero;
    if (nonZero > 1) return false;
  }
  return true;
}

// Entities of a block definition that a reference shows: not invisible ones, and attribute definitions only
// when constant (the others show through the reference's own attributes).
bool shownInReference(const DatabaseData& data, std::uint32_t index) {
  const EntityRec& e = data.entities[index];
  if (e.invisible) return false;
  if (e.cls == DbClass::AttributeDefinition) return (Groups(data, e).integer(70) & 2) != 0;
  return true;
}

Extents3d blockBox(Context& ctx, std::uint32_t block);

// Adds the entities of a block placed by m (block coordinates to the sink's frame); false when the block is
// missing, empty, already being walked (a reference cycle) or nested too deep.
bool addBlock(Context& ctx, std::uint32_t block, const Matrix3d& m, BoxSink& sink) {
  if (block >= ctx.data.blocks.size() || ctx.data.blocks[block].entities.empty()) return false;
  if (std::find(ctx.blockStack.begin(), ctx.blockStack.end(), block) != ctx.blockStack.end()) return false;
  if (ctx.blockStack.size() >= kMaxBlockDepth) return false;
  BoxSink placed = sink.placed(m);
  if (workSpent(ctx) || isAxisAligned(placed.matrix())) {
    placed.addBox(blockBox(ctx, block));
    return true;
  }
  ctx.blockStack.push_back(block);
  for (std::uint32_t e : ctx.data.blocks[block].entities)
    if (shownInReference(ctx.data, e)) addEntity(ctx, e, placed);
  ctx.blockStack.pop_back();
  return true;
}

// The box of a block's entities in the block's own coordinates, computed once per drawing.
Extents3d blockBox(Context& ctx, std::uint32_t block) {
  auto& boxes = ctx.data.extentsWork.blockBoxes;
  if (auto it = boxes.find(block); it != boxes.end()) return it->second;
  Extents3d box;
  BoxSink sink(box);
  ctx.blockStack.push_back(block);
  for (std::uint32_t e : ctx.data.blocks[block].entities)
    if (shownInReference(ctx.data, e)) addEntity(ctx, e, sink);
  ctx.blockStack.pop_back();
  boxes.emplace(block, box);
  return box;
}

// INSERT, MINSERT and ACAD_TABLE: the block's entities placed by the reference (block origin to 0, scale,
// rotation, insertion point, OCS), over every cell of a multiple insert; then the reference's attributes.
bool addInsert(Context& ctx, std::uint32_t index, const Groups& g, BoxSink& sink) {
  const DatabaseData& data = ctx.data;
  const DbClass cls = data.entities[index].cls;
  // The reference's own groups; a table's later groups reuse their codes for other things.
  GroupRange r = subclassRange(g, "AcDbBlockReference");
  if (r.begin == 0) r = subclassRange(g, "AcDbMInsertBlock");
  const auto value = [&](int code, double def) {
    for (std::uint32_t i = r.begin; i < r.end; ++i)
      if (g.at(i).code == code) return numberOf(g.at(i));
    return def;
  };
  const auto point = [&](int code) {
    for (std::uint32_t i = r.begin; i < r.end; ++i)
      if (g.at(i).code == code) return pointAt(g, i);
    return Point3d();
  };
  std::string_view name;
  for (std::uint32_t i = r.begin; i < r.end && name.empty(); ++i)
    if (g.at(i).code == 2) name = g.textAt(i);
  const std::uint32_t block = findBlock(data, name);
  if (block == kNone || data.blocks[block].entities.empty()) return false;
  const Vector3d normal = g.normal();
  double rotation = radians(value(50, 0.0));
  if (cls == DbClass::Table && !isFinite(value(50, kNoValue))) {
    // A table gives its direction as a vector (11) instead.
    const GroupRange t = subclassRange(g, "AcDbTable");
    for (std::uint32_t i = t.begin; i < t.end; ++i) {
      if (g.at(i).code != 11) continue;
      const Vector3d dir = pointAt(g, i).asVector();
      const Vector3d ax = arbitraryAxisX(normal), ay = normal.normal().cross(ax);
      if (dir.length() > 0.0) rotation = std::atan2(dir.dot(ay), dir.dot(ax));
      break;
    }
  }
  const Matrix3d base = ocsToWcs(normal) * Matrix3d::translation(point(10).asVector()) * Matrix3d::rotationZ(rotation);
  const Matrix3d tail = Matrix3d::scaling(value(41, 1.0), value(42, 1.0), value(43, 1.0)) *
                        Matrix3d::translation(-data.blocks[block].origin.asVector());
  // Only a multiple insert repeats its block over columns (70) and rows (71).
  const bool grid = cls == DbClass::MInsertBlock;
  const int columns = grid ? clampedInt(value(70, 1.0), 1, 1 << 30) : 1;
  const int rows = grid ? clampedInt(value(71, 1.0), 1, 1 << 30) : 1;
  const double dx = value(44, 0.0), dy = value(45, 0.0);
  // The copies of a multiple insert differ by translations linear in the column and row, so the corner
  // cells reach the extremes of them all.
  bool any = false;
  for (int row : {0, rows - 1}) {
    for (int c : {0, columns - 1}) {
      any = addBlock(ctx, block, base * Matrix3d::translation({c * dx, row * dy, 0.0}) * tail, sink) || any;
      if (columns == 1) break;
    }
    if (rows == 1) break;
  }
  const EntityRec& e = data.entities[index];
  for (std::uint32_t i = 1; i <= e.subCount && index + i < data.entities.size(); ++i) addEntity(ctx, index + i, sink);
  return any;
}

// Dimensions show their anonymous block, whose entities are in the dimension's OCS; without it, the
// definition points frame the dimension.
bool addDimension(Context& ctx, const Groups& g, BoxSink& sink) {
  const DatabaseData& data = ctx.data;
  const Vector3d normal = g.normal();
  const std::uint32_t block = findBlock(data, g.text(2));
  if (block != kNone) {
    Extents3d shown;
    BoxSink part = sink.into(shown);
    addBlock(ctx, block, ocsToWcs(normal) * Matrix3d::translation(-data.blocks[block].origin.asVector()), part);
    if (!shown.isEmpty()) {
      sink.addPlaced(shown);
      return true;
    }
  }
  bool any = false;
  BoxSink ocs = sink.placed(ocsToWcs(normal));
  for (int code : {10, 11, 12, 13, 14, 15, 16}) {
    if (!g.has(code)) continue;
    // 11, 12 and 16 are in the OCS; the others in WCS.
    if (code == 11 || code == 12 || code == 16) ocs.add(g.point(code));
    else sink.add(g.point(code));
    any = true;
  }
  return any;
}

bool addPoints(const Groups& g, BoxSink& sink, std::initializer_list<int> codes) {
  bool any = false;
  for (int code : codes)
    if (g.has(code)) {
      sink.add(g.point(code));
      any = true;
    }
  return any;
}

// Every point with this code in a subclass's groups.
bool addAllPoints(const Groups& g, BoxSink& sink, std::string_view subclass, int code) {
  const GroupRange r = subclassRange(g, subclass);
  bool any = false;
  for (std::uint32_t i = r.begin; i < r.end; ++i)
    if (g.at(i).code == code) {
      sink.add(pointAt(g, i));
      any = true;
    }
  return any;
}

bool addShape(const Groups& g, BoxSink& sink) {
  const Point3d insertion = g.point(10);
  const double size = g.real(40);
  if (!(size > 0.0) || !isFinite(size)) {
    sink.add(insertion);
    return true;
  }
  const double width = size * g.real(41, 1.0);
  BoxSink placed = sink.placed(Matrix3d::translation(insertion.asVector()) * ocsToWcs(g.normal()) *
                               Matrix3d::rotationZ(radians(g.real(50))));
  for (const Point3d& p : {Point3d(0, 0, 0), Point3d(width, 0, 0), Point3d(0, size, 0), Point3d(width, size, 0)})
    placed.add(p);
  return true;
}

// Images and wipeouts: the frame spanned by the pixel vectors u (11) and v (12) over the size in pixels (13),
// or the clip boundary (14) when clipping is on (280). Clip vertices are pixel coordinates from the top-left
// corner with y downwards, pixel centres at whole numbers; two vertices are opposite corners of a rectangle.
bool addImage(const Groups& g, BoxSink& sink) {
  const Point3d p = g.point(10);
  const Vector3d u = g.vector(11, {1, 0, 0}), v = g.vector(12, {0, 1, 0});
  const Point3d size = g.point(13, {1, 1, 0});
  std::vector<Point3d> clip = g.integer(280) == 1 ? g.points(14) : std::vector<Point3d>();
  if (clip.size() == 2) {
    const Point3d a = clip[0], b = clip[1];
    clip.push_back({a.x, b.y, 0});
    clip.push_back({b.x, a.y, 0});
  }
  if (clip.size() >= 3) {
    for (const Point3d& c : clip) sink.add(p + u * (c.x + 0.5) + v * (size.y - c.y - 0.5));
    return true;
  }
  sink.add(p);
  sink.add(p + u * size.x);
  sink.add(p + v * size.y);
  sink.add(p + u * size.x + v * size.y);
  return true;
}

// Underlays: the clip boundary (11) in the underlay's plane, scaled, rotated and moved to the insertion point;
// two points are opposite corners of a rectangle. Without a boundary the extents of the underlying file are
// unknown here.
bool addUnderlay(const Groups& g, BoxSink& sink) {
  std::vector<Point3d> boundary = g.points(11);
  if (boundary.empty()) return false;
  if (boundary.size() == 2) {
    const Point3d a = boundary[0], b = boundary[1];
    boundary.push_back({a.x, b.y, 0});
    boundary.push_back({b.x, a.y, 0});
  }
  BoxSink placed = sink.placed(Matrix3d::translation(g.point(10).asVector()) * ocsToWcs(g.normal()) *
                               Matrix3d::rotationZ(radians(g.real(50))) *
                               Matrix3d::scaling(g.real(41, 1.0), g.real(42, 1.0), g.real(43, 1.0)));
  for (const Point3d& p : boundary) placed.add({p.x, p.y, 0.0});
  return true;
}

bool addViewport(const Groups& g, BoxSink& sink) {
  const Point3d c = g.point(10);
  const double hw = std::fabs(g.real(40)) / 2.0, hh = std::fabs(g.real(41)) / 2.0;
  sink.add({c.x - hw, c.y - hh, c.z});
  sink.add({c.x + hw, c.y + hh, c.z});
  return true;
}

// Multilines: each element's line passes at its offset (the first of its parameters, 41) along the vertex's
// miter direction (13); without element data, the vertices (11).
bool addMline(const Groups& g, BoxSink& sink) {
  const GroupRange r = subclassRange(g, "AcDbMline");
  Point3d vertex;
  Vector3d miter;
  std::vector<Point3d> vertices;
  bool elements = false;
  for (std::uint32_t i = r.begin; i < r.end; ++i) {
    const int code = g.at(i).code;
    if (code == 11) {
      vertex = pointAt(g, i);
      vertices.push_back(vertex);
    } else if (code == 13) {
      miter = pointAt(g, i).asVector();
    } else if (code == 74 && !vertices.empty() && numberOf(g.at(i)) > 0 && i + 1 < r.end && g.at(i + 1).code == 41) {
      sink.add(vertex + miter * numberOf(g.at(i + 1)));
      elements = true;
    }
  }
  if (!elements)
    for (const Point3d& p : vertices) sink.add(p);
  return elements || !vertices.empty();
}

// A vertex opened on its own: a 2D vertex lies in its polyline's OCS at the polyline's elevation.
bool addVertex(const DatabaseData& data, const EntityRec& e, const Groups& g, BoxSink& sink) {
  Point3d p = g.point(10);
  if (e.cls == DbClass::Vertex2d && e.owner != kNone) {
    const Groups owner(data, data.entities[e.owner]);
    p.z = owner.point(10).z;
    p = ocsToWcs(p, owner.normal());
  }
  sink.add(p);
  return true;
}

// Unknown and proxy entities: every point (10-18 with their 20-38 partners) among their own groups.
bool addGenericPoints(const Groups& g, BoxSink& sink) {
  bool any = false;
  int depth = 0;
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    const int code = g.at(i).code;
    if (code == 102) {
      depth += g.textAt(i).starts_with("{") ? 1 : -1;
      continue;
    }
    if (depth > 0 || code < 10 || code > 18 || i + 1 >= g.ownCount() || g.at(i + 1).code != code + 10) continue;
    std::uint32_t next = i + 1;
    sink.add(pointAt(g, i, &next));
    i = next - 1;
    any = true;
  }
  return any;
}

}  // namespace

bool addEntity(Context& ctx, std::uint32_t index, BoxSink& sink) {
  const DatabaseData& data = ctx.data;
  const EntityRec& e = data.entities[index];
  const Groups g(data, e);
  ++ctx.visits;
  data.extentsWork.visits.fetch_add(1, std::memory_order_relaxed);
  switch (e.cls) {
    case DbClass::Line: return addPoints(g, sink, {10, 11});
    case DbClass::Point:
    case DbClass::Ray:
    case DbClass::Xline:
      // Rays and construction lines are infinite: their base point keeps them comparable.
      sink.add(g.point(10));
      return true;
    case DbClass::Circle: return addArcEntity(g, sink, true);
    case DbClass::Arc: return addArcEntity(g, sink, false);
    case DbClass::Ellipse: return addEllipse(g, sink);
    case DbClass::Spline:
    case DbClass::Helix: return addSpline(g, sink);
    case DbClass::Polyline: return addLwPolyline(g, sink);
    case DbClass::Polyline2d:
    case DbClass::Polyline3d:
    case DbClass::PolyFaceMesh:
    case DbClass::PolygonMesh: return addPolyline(data, index, sink);
    case DbClass::Vertex:
    case DbClass::Vertex2d:
    case DbClass::Polyline3dVertex:
    case DbClass::PolyFaceMeshVertex:
    case DbClass::PolygonMeshVertex: return addVertex(data, e, g, sink);
    case DbClass::FaceRecord:
    case DbClass::SequenceEnd: return false;
    case DbClass::Text:
    case DbClass::AttributeDefinition:
    case DbClass::Attribute: return addText(g, sink, e.cls);
    case DbClass::MText: return addMText(g, sink);
    case DbClass::Leader: return addAllPoints(g, sink, "AcDbLeader", 10);
    case DbClass::MLeader: return addMLeader(g, sink);
    case DbClass::Fcf: return addTolerance(g, sink);
    case DbClass::BlockReference:
    case DbClass::MInsertBlock:
    case DbClass::Table: return addInsert(ctx, index, g, sink);
    case DbClass::Hatch: return addHatch(g, sink, false);
    case DbClass::MPolygon: return addHatch(g, sink, true);
    case DbClass::Face: return addPoints(g, sink, {10, 11, 12, 13});
    case DbClass::Solid:
    case DbClass::Trace: {
      BoxSink ocs = sink.placed(ocsToWcs(g.normal()));
      return addPoints(g, ocs, {10, 11, 12, 13});
    }
    case DbClass::Solid3d:
    case DbClass::Body:
    case DbClass::Region:
    case DbClass::Surface:
    case DbClass::ExtrudedSurface:
    case DbClass::LoftedSurface:
    case DbClass::RevolvedSurface:
    case DbClass::SweptSurface:
    case DbClass::PlaneSurface:
    case DbClass::NurbSurface: return addModelerGeometry(data, index, sink);
    case DbClass::SubDMesh: return addAllPoints(g, sink, "AcDbSubDMesh", 10);
    case DbClass::Shape: return addShape(g, sink);
    case DbClass::Light: return addAllPoints(g, sink, "AcDbLight", 10);
    case DbClass::Section: {
      const bool front = addAllPoints(g, sink, "AcDbSection", 11);
      return addAllPoints(g, sink, "AcDbSection", 12) || front;
    }
    case DbClass::Image:
    case DbClass::RasterImage:
    case DbClass::Wipeout: return addImage(g, sink);
    case DbClass::Frame:
    case DbClass::OleFrame:
    case DbClass::Ole2Frame: return addPoints(g, sink, {10, 11});
    case DbClass::UnderlayReference:
    case DbClass::DwfReference:
    case DbClass::DgnReference:
    case DbClass::PdfReference: return addUnderlay(g, sink);
    case DbClass::Viewport: return addViewport(g, sink);
    case DbClass::Mline: return addMline(g, sink);
    default:
      if (isKindOf(e.cls, DbClass::Dimension)) return addDimension(ctx, g, sink);
      // Proxies and entities of unknown applications: the graphics they carry for hosts without the
      // application, else the points among their groups.
      return addProxyGraphics(g, sink) || addGenericPoints(g, sink);
  }
}

}  // namespace extents

ErrorStatus computeGeomExtents(const DatabaseData& data, std::uint32_t index, Extents3d& extents) {
  extents = Extents3d();
  if (index >= data.entities.size()) return ErrorStatus::eInvalidExtents;
  extents::Context ctx{data, {}, 0};
  Extents3d box;
  extents::BoxSink sink(box);
  if (!extents::addEntity(ctx, index, sink) || box.isEmpty()) return ErrorStatus::eInvalidExtents;
  extents = box;
  return ErrorStatus::eOk;
}

}  // namespace headless
