// Accessors of block references, hatches, solids, surfaces, meshes, faces, shapes, lights, sections, images, frames, underlays, viewports, answered from the stored groups.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "platform/headless/accessor_table.h"
#include "platform/headless/modeler_data.h"
#include "platform/text.h"

namespace headless {

using platform::Accessor;
using platform::DbClass;
using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

namespace {

constexpr double kDegree = M_PI / 180.0;
constexpr double kNotMeasured = std::numeric_limits<double>::quiet_NaN();

double degrees(const EntityView& e, int code) { return e.g.real(code) * kDegree; }

// The groups of the object that this entity's 340 group points to (an image or underlay definition).
std::string definitionFileName(const EntityView& e) {
  const StoredTag* t = e.g.find(340);
  if (!t || t->type != TagType::Handle) return {};
  const platform::ObjectRec* def = e.data.object(parseHandle(e.data.text(*t)));
  if (!def) return {};
  const Groups g(e.data, def->tagBegin, def->tagCount);
  return std::string(g.text(1));
}

// The group 10 point of entities stored in their OCS, in WCS.
Point3d ocsPosition(const EntityView& e) { return e.ocsPoint(10); }

// 64-bit FNV-1a, written as 16 hex digits: a digest of stored data that is equal for equal data.
std::string digestOf(std::string_view data) {
  platform::Fnv1a fnv;
  fnv.add(data);
  std::uint64_t h = fnv.value();
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out(16, '0');
  for (int i = 15; i >= 0; --i, h >>= 4) out[static_cast<std::size_t>(i)] = kHex[h & 15];
  return out;
}

// ---- hatches ----

// The type flags (92) of the boundary loops, which all come before the pattern data (75 and on).
std::vector<double> hatchLoopTypes(const EntityView& e) {
  std::vector<double> out;
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i) {
    const StoredTag& t = e.g.at(i);
    if (t.code == 75) break;
    if (t.code == 92) out.push_back(static_cast<double>(t.integer));
  }
  return out;
}

// ---- modeler geometry (ACIS) ----

using modeler::Model;
using ModelFields = std::span<const std::string_view>;

// The SAT text of the entity's modeler data, decrypted; for SAB data, the same records written as SAT text.
std::string acisText(const EntityView& e) {
  std::string sat = modeler::satText(e.g);
  if (!sat.empty()) return sat;
  Model model;
  return modeler::readEntity(e.data, e.index, model) ? model.text() : std::string();
}

std::vector<std::string_view> pointers(ModelFields fields) {
  std::vector<std::string_view> out;
  for (std::string_view f : fields)
    if (f.starts_with('$')) out.push_back(f);
  return out;
}

std::vector<double> numbers(ModelFields fields) {
  std::vector<double> out;
  for (std::string_view f : fields)
    if (const auto v = modeler::number(f)) out.push_back(*v);
  return out;
}

// What the faces of a body measure when every face is a planar polygon (planes bounded by straight edges):
// the area of all faces, and for closed shells the volume and second moments, by the divergence theorem over
// the tetrahedra from the origin to a fan of each loop.
struct Measures {
  bool polygonal = false;
  double area = 0.0;
  double volume = 0.0;
  Vector3d second;  // integrals of x², y², z² over the volume
};

Measures measure(const EntityView& e) {
  Measures m;
  Model sat;
  if (!modeler::readEntity(e.data, e.index, sat)) return m;
  const modeler::Record* body = sat.first("body");
  if (!body) return m;
  // The body's transform (its rows, then the translation, then a scale) places every point.
  const std::vector<std::string_view> bodyPtrs = pointers(sat.data(*body));
  double rot[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  Vector3d shift;
  double scale = 1.0;
  if (bodyPtrs.size() >= 3) {
    if (const modeler::Record* tr = sat.follow(bodyPtrs[2], "transform")) {
      const std::vector<double> v = numbers(sat.data(*tr));
      if (v.size() >= 13) {
        for (int r = 0; r < 3; ++r)
          for (int c = 0; c < 3; ++c) rot[r][c] = v[static_cast<std::size_t>(r * 3 + c)];
        shift = {v[9], v[10], v[11]};
        scale = v[12];
      }
    }
  }
  auto place = [&](const Point3d& p) {
    const Vector3d q{p.x * rot[0][0] + p.y * rot[1][0] + p.z * rot[2][0],
                     p.x * rot[0][1] + p.y * rot[1][1] + p.z * rot[2][1],
                     p.x * rot[0][2] + p.y * rot[1][2] + p.z * rot[2][2]};
    return Point3d{} + q * scale + shift;
  };
  const std::size_t guard = sat.size() + 1;  // no chain of a well-formed body is longer than its records
  bool anyFace = false;
  for (std::size_t r = 0; r < sat.size(); ++r) {
    const modeler::Record& face = sat[r];
    if (face.name != "face") continue;
    anyFace = true;
    const std::vector<std::string_view> fp = pointers(sat.data(face));  // next, loop, shell, subshell, surface
    if (fp.size() < 5 || !sat.follow(fp[4], "plane-surface")) return m;
    Vector3d faceArea;
    const modeler::Record* loop = sat.follow(fp[1], "loop");
    if (!loop) return m;
    for (std::size_t loops = 0; loop && loops < guard; ++loops) {
      const std::vector<std::string_view> lp = pointers(sat.data(*loop));  // next, coedge, face
      if (lp.size() < 2) return m;
      std::vector<Point3d> points;
      const modeler::Record* start = sat.follow(lp[1], "coedge");
      const modeler::Record* coedge = start;
      for (std::size_t n = 0; coedge && n < guard; ++n) {
        const std::vector<std::string_view> cp = pointers(sat.data(*coedge));  // next, previous, partner, edge, loop
        if (cp.size() < 4) return m;
        const modeler::Record* edge = sat.follow(cp[3], "edge");
        if (!edge) return m;
        const std::vector<std::string_view> ep = pointers(sat.data(*edge));  // start, end, coedge, curve
        if (ep.size() < 4 || !sat.follow(ep[3], "straight-curve")) return m;
        // The sense follows the pointers: "forward" or "reversed" (0 or 1 in old versions, a flag in SAB).
        bool reversed = false;
        for (std::string_view f : sat.data(*coedge))
          if (!f.starts_with('$')) {
            reversed = modeler::isReversed(f);
            break;
          }
        const modeler::Record* vertex = sat.follow(reversed ? ep[1] : ep[0], "vertex");
        if (!vertex) return m;
        const std::vector<std::string_view> vp = pointers(sat.data(*vertex));
        const modeler::Record* point = vp.empty() ? nullptr : sat.follow(vp.back(), "point");
        if (!point) return m;
        const std::vector<double> xyz = numbers(sat.data(*point));
        if (xyz.size() < 3) return m;
        points.push_back(place({xyz[0], xyz[1], xyz[2]}));
        coedge = sat.follow(cp[0], "coedge");
        if (coedge == start) break;
      }
      if (coedge != start) return m;
      for (std::size_t i = 0; i < points.size(); ++i)
        faceArea = faceArea + points[i].asVector().cross(points[(i + 1) % points.size()].asVector()) * 0.5;
      for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const Vector3d a = points[0].asVector(), b = points[i].asVector(), c = points[i + 1].asVector();
        const double v = a.dot(b.cross(c)) / 6.0;
        m.volume += v;
        auto moment = [&](double p, double q, double s) { return v / 10.0 * (p * p + q * q + s * s + p * q + p * s + q * s); };
        m.second = m.second + Vector3d{moment(a.x, b.x, c.x), moment(a.y, b.y, c.y), moment(a.z, b.z, c.z)};
      }
      loop = sat.follow(lp[0], "loop");
    }
    m.area += faceArea.length();
  }
  m.polygonal = anyFace;
  if (m.volume < 0) {
    m.volume = -m.volume;
    m.second = -m.second;
  }
  return m;
}

double modelerArea(const EntityView& e) {
  const Measures m = measure(e);
  return m.polygonal ? m.area : kNotMeasured;
}

double modelerVolume(const EntityView& e) {
  const Measures m = measure(e);
  return m.polygonal ? m.volume : kNotMeasured;
}

Vector3d radiiGyration(const EntityView& e) {
  const Measures m = measure(e);
  if (!m.polygonal || m.volume <= 0.0) return {kNotMeasured, kNotMeasured, kNotMeasured};
  const Vector3d s = m.second;
  return {std::sqrt((s.y + s.z) / m.volume), std::sqrt((s.x + s.z) / m.volume), std::sqrt((s.x + s.y) / m.volume)};
}

// The digest of the shape the data describe (Model::shape): the same for SAT and SAB, and for data written by
// different modeler versions, of the same shape. Text whose records cannot be read is digested as stored.
std::string acisDigest(const EntityView& e) {
  Model model;
  if (modeler::readEntity(e.data, e.index, model)) return digestOf(model.shape());
  const std::string sat = modeler::satText(e.g);
  return sat.empty() ? std::string() : digestOf(sat);
}

// ---- surfaces ----

// Surfaces keep the curves they were made from as embedded entities: a class id (90), a size (90) and
// binary chunks (310), in order (lofted surfaces their cross sections, swept ones the profile then the path).
std::vector<std::string> embeddedEntities(const EntityView& e) {
  std::vector<std::string> out;
  bool sized = false;
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i) {
    const StoredTag& t = e.g.at(i);
    if (t.code == 90) {
      sized = i + 1 < e.g.ownCount() && e.g.at(i + 1).code == 310;
      if (sized) out.emplace_back();
    } else if (t.code == 310 && sized && !out.empty()) {
      out.back() += e.g.textAt(i);
    } else {
      sized = false;
    }
  }
  return out;
}

// A surface made by a command stays associated with what it was made from; the association reacts to it.
long long isIndependent(const EntityView& e) {
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i)
    if (e.g.at(i).code == 102 && e.g.textAt(i) == "{ACAD_REACTORS") return 0;
  return 1;
}

// ---- subdivision meshes ----

struct Mesh {
  std::vector<std::vector<long long>> faces;
  long long edgeCount = -1;  // the stored edge list's count, -1 without one
  long long level = 0;
  long long vertexCount = 0;
};

// A group of the mesh's own part (the common part may hold a proxy graphics size under 92).
long long meshInteger(const EntityView& e, int code) {
  const StoredTag* t = e.g.findIn("AcDbSubDMesh", code);
  return t ? t->integer : 0;
}

// The mesh's vertex count (92), no more than the vertices (10) its record holds.
long long meshVertexCount(const EntityView& e) {
  long long present = 0;
  e.g.visitOwn([&](std::uint32_t i, std::string_view subclass) {
    if (subclass == "AcDbSubDMesh" && e.g.at(i).code == 10) ++present;
    return true;
  });
  return std::min(meshInteger(e, 92), present);
}

Mesh readMesh(const EntityView& e) {
  Mesh m;
  m.level = meshInteger(e, 91);
  m.vertexCount = meshVertexCount(e);
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i) {
    const StoredTag& t = e.g.at(i);
    if (t.code == 93) {
      // The face list: for each face its vertex count, then its vertex indices.
      const long long size = t.integer;
      std::uint32_t k = i + 1;
      long long read = 0;
      while (read < size && k < e.g.ownCount() && e.g.at(k).code == 90) {
        const long long n = e.g.at(k++).integer;
        ++read;
        std::vector<long long> face;
        for (long long j = 0; j < n && k < e.g.ownCount() && e.g.at(k).code == 90; ++j, ++k, ++read) {
          const long long vertex = e.g.at(k).integer;  // a copy: no reference may bind to a packed value
          face.push_back(vertex);
        }
        m.faces.push_back(std::move(face));
      }
      i = k - 1;
    } else if (t.code == 94) {
      // The edge count, trusted only when the pairs of vertex indices (90) after it list that many edges;
      // otherwise the edges are counted from the faces.
      std::uint32_t k = i + 1;
      while (k < e.g.ownCount() && e.g.at(k).code == 90) ++k;
      m.edgeCount = static_cast<long long>(k - i - 1) / 2 >= t.integer ? t.integer : -1;
      i = k - 1;
    }
  }
  return m;
}

std::map<std::pair<long long, long long>, int> edgeUse(const Mesh& m) {
  std::map<std::pair<long long, long long>, int> use;
  for (const auto& f : m.faces)
    for (std::size_t i = 0; i < f.size(); ++i) {
      long long a = f[i], b = f[(i + 1) % f.size()];
      if (a > b) std::swap(a, b);
      if (a != b) ++use[{a, b}];
    }
  return use;
}

// Each subdivision level adds a point per face and per edge to the vertices, and splits every face of n
// sides into n quadrilaterals.
long long subdividedVertices(const Mesh& m) {
  long long v = m.vertexCount, e = static_cast<long long>(edgeUse(m).size()), f = static_cast<long long>(m.faces.size());
  long long sides = 0;
  for (const auto& face : m.faces) sides += static_cast<long long>(face.size());
  for (long long level = 0; level < m.level && level < 8; ++level) {
    v = v + e + f;
    e = 2 * e + sides;
    f = sides;
    sides = 4 * f;
  }
  return v;
}

// ---- proxies ----

std::string proxyGraphics(const EntityView& e) {
  std::string data;
  bool inGraphics = false;
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i) {
    const StoredTag& t = e.g.at(i);
    if (t.code == 92) inGraphics = t.integer > 0;
    else if (t.code == 310 && inGraphics) data += e.g.textAt(i);
    else if (t.code == 93) break;
  }
  return data.empty() ? std::string() : digestOf(data);
}

long long proxyObjectIds(const EntityView& e) {
  long long n = 0;
  bool inProxy = false;
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i) {
    const StoredTag& t = e.g.at(i);
    if (t.code == 100) inProxy = e.g.textAt(i) == "AcDbProxyEntity";
    else if (inProxy && t.code >= 330 && t.code <= 369) ++n;
  }
  return n;
}

}  // namespace

std::span<const AccessorImpl> blockAccessors() {
  static const std::vector<AccessorImpl> table = {
      // Block references: the insertion point is stored in the reference's OCS, the rotation in degrees.
      pointOf(Accessor::position, DbClass::BlockReference, ocsPosition),
      textOf(Accessor::blockName, DbClass::BlockReference,
             [](const EntityView& e) {
               const std::string_view stored = e.g.text(2);
               auto it = e.data.blockIndex.find(platform::toUpperAscii(stored));
               return it == e.data.blockIndex.end() ? std::string(stored) : e.data.blocks[it->second].name;
             }),
      realOf(Accessor::blockRotation, DbClass::BlockReference, [](const EntityView& e) { return degrees(e, 50); }),
      vectorOf(Accessor::blockScaleFactors, DbClass::BlockReference,
               [](const EntityView& e) { return Vector3d{e.g.real(41, 1.0), e.g.real(42, 1.0), e.g.real(43, 1.0)}; }),

      // Hatches: group 41 is the scale of a predefined or custom pattern and the line spacing of a
      // user-defined one; the host keeps the other of the two at 1.
      integerOf(Accessor::hatchObjectType, DbClass::Hatch, [](const EntityView& e) { return e.g.integer(450); }),
      realOf(Accessor::patternAngle, DbClass::Hatch, [](const EntityView& e) { return degrees(e, 52); }),
      realOf(Accessor::patternScale, DbClass::Hatch,
             [](const EntityView& e) { return e.g.integer(76, 1) == 0 ? 1.0 : e.g.real(41, 1.0); }),
      realOf(Accessor::patternSpace, DbClass::Hatch,
             [](const EntityView& e) { return e.g.integer(76, 1) == 0 ? e.g.real(41, 1.0) : 1.0; }),
      integerOf(Accessor::patternType, DbClass::Hatch, [](const EntityView& e) { return e.g.integer(76, 1); }),
      textOf(Accessor::patternName, DbClass::Hatch, [](const EntityView& e) { return std::string(e.g.text(2)); }),
      integerOf(Accessor::numLoops, DbClass::Hatch,
                [](const EntityView& e) {
                  // The count (91) says no more than the loops present.
                  const auto present = static_cast<long long>(hatchLoopTypes(e).size());
                  return e.g.has(91) ? std::min(e.g.integer(91), present) : present;
                }),
      realsOf(Accessor::loopTypes, DbClass::Hatch, hatchLoopTypes),

      // Regions, bodies, 3D solids and surfaces carry their shape as ACIS data.
      textOf(Accessor::acisData, DbClass::Region, acisText),
      textOf(Accessor::acisData, DbClass::Body, acisText),
      textOf(Accessor::acisData, DbClass::Solid3d, acisText),
      textOf(Accessor::acisData, DbClass::Surface, acisText),
      textOf(Accessor::acisDigest, DbClass::Region, acisDigest),
      textOf(Accessor::acisDigest, DbClass::Body, acisDigest),
      textOf(Accessor::acisDigest, DbClass::Solid3d, acisDigest),
      textOf(Accessor::acisDigest, DbClass::Surface, acisDigest),
      realOf(Accessor::modelerArea, DbClass::Region, modelerArea),
      realOf(Accessor::modelerArea, DbClass::Body, modelerArea),
      realOf(Accessor::modelerArea, DbClass::Solid3d, modelerArea),
      realOf(Accessor::modelerArea, DbClass::Surface, modelerArea),
      realOf(Accessor::modelerVolume, DbClass::Solid3d, modelerVolume),
      vectorOf(Accessor::radiiGyration, DbClass::Solid3d, radiiGyration),

      // Surfaces.
      vectorOf(Accessor::sweepVec, DbClass::ExtrudedSurface, [](const EntityView& e) { return e.g.vector(10, {}); }),
      pointOf(Accessor::revolveAxisPoint, DbClass::RevolvedSurface, [](const EntityView& e) { return e.g.point(10); }),
      vectorOf(Accessor::revolveAxisVec, DbClass::RevolvedSurface,
               [](const EntityView& e) { return e.g.vector(11, {}); }),
      realOf(Accessor::revolveAngle, DbClass::RevolvedSurface, [](const EntityView& e) { return e.g.real(40); }),
      // The DXF stores a lofted surface's cross sections and guides as one list of curves: all count as
      // cross sections; the guides cannot be told apart and count 0.
      integerOf(Accessor::numCrossSections, DbClass::LoftedSurface,
                [](const EntityView& e) { return static_cast<long long>(embeddedEntities(e).size()); }),
      integerOf(Accessor::numGuideCurves, DbClass::LoftedSurface, [](const EntityView&) { return 0LL; }),
      // The path is the second stored curve (after the profile); its length would need the curve decoded.
      textOf(Accessor::sweepPathData, DbClass::SweptSurface,
             [](const EntityView& e) {
               const std::vector<std::string> curves = embeddedEntities(e);
               return curves.size() >= 2 ? digestOf(curves[1]) : std::string();
             }),
      integerOf(Accessor::isIndependent, DbClass::Surface, isIndependent),

      // Subdivision meshes.
      pointsOf(Accessor::meshVertices, DbClass::SubDMesh, [](const EntityView& e) { return e.g.points(10); }),
      integerOf(Accessor::isWatertight, DbClass::SubDMesh,
                [](const EntityView& e) {
                  const auto use = edgeUse(readMesh(e));
                  if (use.empty()) return 0LL;
                  for (const auto& [edge, count] : use)
                    if (count != 2) return 0LL;
                  return 1LL;
                }),
      integerOf(Accessor::numOfFaces, DbClass::SubDMesh,
                [](const EntityView& e) { return static_cast<long long>(readMesh(e).faces.size()); }),
      integerOf(Accessor::numOfVertices, DbClass::SubDMesh, meshVertexCount),
      integerOf(Accessor::numOfSubDividedVertices, DbClass::SubDMesh,
                [](const EntityView& e) { return subdividedVertices(readMesh(e)); }),
      integerOf(Accessor::numOfEdges, DbClass::SubDMesh,
                [](const EntityView& e) {
                  const Mesh m = readMesh(e);
                  return m.edgeCount >= 0 ? m.edgeCount : static_cast<long long>(edgeUse(m).size());
                }),

      // 3D faces are stored in WCS; a 2D solid or trace in its OCS. A face's fourth corner defaults to its third.
      pointsOf(Accessor::cornerPoints, DbClass::Face,
               [](const EntityView& e) {
                 const Point3d third = e.g.point(12);
                 return std::vector<Point3d>{e.g.point(10), e.g.point(11), third, e.g.point(13, third)};
               }),
      integerOf(Accessor::invisibleEdgeFlags, DbClass::Face, [](const EntityView& e) { return e.g.integer(70); }),
      pointOf(Accessor::position, DbClass::Solid, ocsPosition),
      pointOf(Accessor::position, DbClass::Trace, ocsPosition),
      pointsOf(Accessor::cornerPoints, DbClass::Solid,
               [](const EntityView& e) {
                 const Point3d third = e.ocsPoint(12);
                 return std::vector<Point3d>{e.ocsPoint(10), e.ocsPoint(11), third, e.g.has(13) ? e.ocsPoint(13) : third};
               }),
      pointsOf(Accessor::cornerPoints, DbClass::Trace,
               [](const EntityView& e) {
                 return std::vector<Point3d>{e.ocsPoint(10), e.ocsPoint(11), e.ocsPoint(12), e.ocsPoint(13)};
               }),

      // Shapes: stored in their OCS, angles in degrees.
      pointOf(Accessor::position, DbClass::Shape, ocsPosition),
      textOf(Accessor::shapeName, DbClass::Shape, [](const EntityView& e) { return std::string(e.g.text(2)); }),
      realOf(Accessor::shapeSize, DbClass::Shape, [](const EntityView& e) { return e.g.real(40); }),
      realOf(Accessor::shapeRotation, DbClass::Shape, [](const EntityView& e) { return degrees(e, 50); }),
      realOf(Accessor::shapeWidthFactor, DbClass::Shape, [](const EntityView& e) { return e.g.real(41, 1.0); }),
      realOf(Accessor::shapeOblique, DbClass::Shape, [](const EntityView& e) { return degrees(e, 51); }),

      // Lights: stored in WCS.
      textOf(Accessor::lightName, DbClass::Light, [](const EntityView& e) { return std::string(e.g.text(1)); }),
      pointOf(Accessor::lightTargetLocation, DbClass::Light, [](const EntityView& e) { return e.g.point(11); }),
      integerOf(Accessor::lightType, DbClass::Light, [](const EntityView& e) { return e.g.integer(70, 2); }),

      // Sections: the state (1 plane, 2 boundary, 4 volume) and the flags, whose first bit is the live section.
      integerOf(Accessor::sectionState, DbClass::Section, [](const EntityView& e) { return e.g.integer(90, 1); }),
      integerOf(Accessor::isLiveSectionEnabled, DbClass::Section,
                [](const EntityView& e) { return e.g.integer(91) & 1; }),
      pointsOf(Accessor::sectionVertices, DbClass::Section, [](const EntityView& e) { return e.g.points(11); }),

      // Raster images and wipeouts: U and V are one pixel's vectors, scaled here to the whole image.
      vectorOf(Accessor::imageUVector, DbClass::RasterImage,
               [](const EntityView& e) { return e.g.vector(11, {1, 0, 0}) * e.g.real(13, 1.0); }),
      vectorOf(Accessor::imageVVector, DbClass::RasterImage,
               [](const EntityView& e) { return e.g.vector(12, {0, 1, 0}) * e.g.real(23, 1.0); }),
      textOf(Accessor::imageFileName, DbClass::RasterImage, definitionFileName),
      pointsOf(Accessor::clipBoundary, DbClass::RasterImage, [](const EntityView& e) { return e.g.points(14); }),

      // Underlays: stored in WCS, the rotation in degrees; contrast 100 and fade 0 unless the drawing says.
      realOf(Accessor::underlayRotation, DbClass::UnderlayReference, [](const EntityView& e) { return degrees(e, 50); }),
      vectorOf(Accessor::underlayScaleFactors, DbClass::UnderlayReference,
               [](const EntityView& e) { return Vector3d{e.g.real(41, 1.0), e.g.real(42, 1.0), e.g.real(43, 1.0)}; }),
      integerOf(Accessor::underlayFlags, DbClass::UnderlayReference, [](const EntityView& e) { return e.g.integer(280, 2); }),
      integerOf(Accessor::underlayContrast, DbClass::UnderlayReference,
                [](const EntityView& e) { return e.g.integer(281, 100); }),
      integerOf(Accessor::underlayFade, DbClass::UnderlayReference, [](const EntityView& e) { return e.g.integer(282); }),
      textOf(Accessor::underlayFileName, DbClass::UnderlayReference, definitionFileName),
      pointsOf(Accessor::underlayClipBoundary, DbClass::UnderlayReference, [](const EntityView& e) { return e.g.points(11); }),

      // OLE frames: two corners in WCS.
      pointOf(Accessor::oleUpperLeft, DbClass::Ole2Frame, [](const EntityView& e) { return e.g.point(10); }),
      pointOf(Accessor::oleLowerRight, DbClass::Ole2Frame, [](const EntityView& e) { return e.g.point(11); }),
      integerOf(Accessor::oleObjectType, DbClass::Ole2Frame, [](const EntityView& e) { return e.g.integer(71, 2); }),

      // Viewports: angles in degrees.
      realOf(Accessor::viewportWidth, DbClass::Viewport, [](const EntityView& e) { return e.g.real(40); }),
      realOf(Accessor::viewportHeight, DbClass::Viewport, [](const EntityView& e) { return e.g.real(41); }),
      integerOf(Accessor::viewportNumber, DbClass::Viewport, [](const EntityView& e) { return e.g.integer(69); }),
      realOf(Accessor::viewportBrightness, DbClass::Viewport, [](const EntityView& e) { return e.g.real(141); }),
      realOf(Accessor::viewportContrast, DbClass::Viewport, [](const EntityView& e) { return e.g.real(142); }),
      realOf(Accessor::viewHeight, DbClass::Viewport, [](const EntityView& e) { return e.g.real(45); }),
      pointOf(Accessor::viewCenter, DbClass::Viewport, [](const EntityView& e) { return e.g.point(12); }),
      realOf(Accessor::twistAngle, DbClass::Viewport, [](const EntityView& e) { return degrees(e, 51); }),
      realOf(Accessor::lensLength, DbClass::Viewport, [](const EntityView& e) { return e.g.real(42, 50.0); }),
      integerOf(Accessor::viewportStatusFlags, DbClass::Viewport, [](const EntityView& e) { return e.g.integer(90); }),
      realOf(Accessor::snapAngle, DbClass::Viewport, [](const EntityView& e) { return degrees(e, 50); }),

      // Proxy entities.
      integerOf(Accessor::proxyDataFormat, DbClass::ProxyEntity, [](const EntityView& e) { return e.g.integer(70); }),
      integerOf(Accessor::proxyApplicationClassId, DbClass::ProxyEntity,
                [](const EntityView& e) { return e.g.integer(91); }),
      integerOf(Accessor::proxyObjectIdCount, DbClass::ProxyEntity, proxyObjectIds),
      textOf(Accessor::proxyGraphicsData, DbClass::ProxyEntity, proxyGraphics),
  };
  return table;
}

}  // namespace headless
