// The host's class of an entity read from DXF: by DXF name, refined by subclass markers and flags
// (R12 files have no markers, so their flags decide), and for custom records by the CLASSES section.
#include <array>
#include <string_view>
#include <unordered_map>

#include "platform/headless/dxf_reader.h"

namespace headless {

using platform::DbClass;

namespace {

const std::unordered_map<std::string_view, DbClass>& byDxfName() {
  static const std::unordered_map<std::string_view, DbClass> table = {
      {"LINE", DbClass::Line},
      {"ARC", DbClass::Arc},
      {"CIRCLE", DbClass::Circle},
      {"ELLIPSE", DbClass::Ellipse},
      {"SPLINE", DbClass::Spline},
      {"HELIX", DbClass::Helix},
      {"LWPOLYLINE", DbClass::Polyline},
      {"RAY", DbClass::Ray},
      {"XLINE", DbClass::Xline},
      {"LEADER", DbClass::Leader},
      {"POINT", DbClass::Point},
      {"TEXT", DbClass::Text},
      {"ATTDEF", DbClass::AttributeDefinition},
      {"ATTRIB", DbClass::Attribute},
      {"MTEXT", DbClass::MText},
      {"ARC_DIMENSION", DbClass::ArcDimension},
      {"LARGE_RADIAL_DIMENSION", DbClass::RadialDimensionLarge},
      {"MULTILEADER", DbClass::MLeader},
      {"MLEADER", DbClass::MLeader},
      {"TOLERANCE", DbClass::Fcf},
      {"ACAD_TABLE", DbClass::Table},
      {"HATCH", DbClass::Hatch},
      {"MPOLYGON", DbClass::MPolygon},
      {"3DFACE", DbClass::Face},
      {"3DSOLID", DbClass::Solid3d},
      {"BODY", DbClass::Body},
      {"REGION", DbClass::Region},
      {"SURFACE", DbClass::Surface},
      {"EXTRUDEDSURFACE", DbClass::ExtrudedSurface},
      {"LOFTEDSURFACE", DbClass::LoftedSurface},
      {"REVOLVEDSURFACE", DbClass::RevolvedSurface},
      {"SWEPTSURFACE", DbClass::SweptSurface},
      {"PLANESURFACE", DbClass::PlaneSurface},
      {"NURBSURFACE", DbClass::NurbSurface},
      {"MESH", DbClass::SubDMesh},
      {"SOLID", DbClass::Solid},
      {"TRACE", DbClass::Trace},
      {"SHAPE", DbClass::Shape},
      {"LIGHT", DbClass::Light},
      {"SECTIONOBJECT", DbClass::Section},
      {"IMAGE", DbClass::RasterImage},
      {"WIPEOUT", DbClass::Wipeout},
      {"OLEFRAME", DbClass::OleFrame},
      {"OLE2FRAME", DbClass::Ole2Frame},
      {"PDFUNDERLAY", DbClass::PdfReference},
      {"DWFUNDERLAY", DbClass::DwfReference},
      {"DGNUNDERLAY", DbClass::DgnReference},
      {"VIEWPORT", DbClass::Viewport},
      {"MLINE", DbClass::Mline},
      {"ACAD_PROXY_ENTITY", DbClass::ProxyEntity},
      {"SEQEND", DbClass::SequenceEnd},
  };
  return table;
}

long long flagsOf(const platform::DatabaseData& data, const platform::EntityRec& e, int code = 70) {
  const platform::StoredTag* t = data.find(e.tagBegin, e.tagCount, code);
  return t ? t->integer : 0;
}

bool hasMarker(const platform::DatabaseData& data, const platform::EntityRec& e, std::string_view marker) {
  const platform::StoredTag* tags = data.tagsOf(e);
  for (std::uint32_t i = 0; i < e.tagCount; ++i)
    if (tags[i].code == 100 && data.text(tags[i]) == marker) return true;
  return false;
}

DbClass dimensionClass(const platform::DatabaseData& data, const platform::EntityRec& e) {
  // The most derived subclass marker names the class; without markers the type in flags 0-2 does.
  static const std::array<std::pair<std::string_view, DbClass>, 8> markers = {{
      {"AcDbRotatedDimension", DbClass::RotatedDimension},
      {"AcDbAlignedDimension", DbClass::AlignedDimension},
      {"AcDb3PointAngularDimension", DbClass::ThreePointAngularDimension},
      {"AcDb2LineAngularDimension", DbClass::TwoLineAngularDimension},
      {"AcDbDiametricDimension", DbClass::DiametricDimension},
      {"AcDbRadialDimension", DbClass::RadialDimension},
      {"AcDbOrdinateDimension", DbClass::OrdinateDimension},
      {"AcDbArcDimension", DbClass::ArcDimension},
  }};
  for (const auto& [marker, cls] : markers)
    if (hasMarker(data, e, marker)) return cls;
  switch (flagsOf(data, e) & 7) {
    case 0: return DbClass::RotatedDimension;
    case 1: return DbClass::AlignedDimension;
    case 2: return DbClass::TwoLineAngularDimension;
    case 3: return DbClass::DiametricDimension;
    case 4: return DbClass::RadialDimension;
    case 5: return DbClass::ThreePointAngularDimension;
    case 6: return DbClass::OrdinateDimension;
    default: return DbClass::Dimension;
  }
}

}  // namespace

bool classDependsOnGroups(std::string_view dxfName) {
  return dxfName == "POLYLINE" || dxfName == "VERTEX" || dxfName == "DIMENSION" || dxfName == "INSERT";
}

DbClass classifyEntity(const platform::DatabaseData& data, const platform::EntityRec& e) {
  const std::string_view name = data.name(e.dxfName);
  if (name == "POLYLINE") {
    const long long f = flagsOf(data, e);
    if (f & 8) return DbClass::Polyline3d;
    if (f & 16) return DbClass::PolygonMesh;
    if (f & 64) return DbClass::PolyFaceMesh;
    return DbClass::Polyline2d;
  }
  if (name == "VERTEX") {
    const long long f = flagsOf(data, e);
    if ((f & 128) && (f & 64)) return DbClass::PolyFaceMeshVertex;
    if (f & 128) return DbClass::FaceRecord;
    if (f & 64) return DbClass::PolygonMeshVertex;
    if (f & 32) return DbClass::Polyline3dVertex;
    // A vertex without flags takes its kind from its polyline.
    if (e.owner != platform::kNone) {
      switch (data.entities[e.owner].cls) {
        case DbClass::Polyline3d: return DbClass::Polyline3dVertex;
        case DbClass::PolygonMesh: return DbClass::PolygonMeshVertex;
        case DbClass::PolyFaceMesh: return DbClass::PolyFaceMeshVertex;
        default: break;
      }
    }
    return DbClass::Vertex2d;
  }
  if (name == "DIMENSION") return dimensionClass(data, e);
  if (name == "INSERT") {
    // A block reference with rows or columns is a multiple insert.
    const long long cols = flagsOf(data, e, 70), rows = flagsOf(data, e, 71);
    return (cols > 1 || rows > 1) ? DbClass::MInsertBlock : DbClass::BlockReference;
  }
  const auto& table = byDxfName();
  if (auto it = table.find(name); it != table.end()) return it->second;
  // A record declared in the CLASSES section with a class the host knows.
  if (auto it = data.classes.find(std::string(name)); it != data.classes.end()) {
#define VK_CLASS_BY_NAME(cls, parent, clsName) \
  if (it->second == clsName) return DbClass::cls;
    VK_DB_CLASSES(VK_CLASS_BY_NAME)
#undef VK_CLASS_BY_NAME
  }
  return DbClass::Entity;
}

}  // namespace headless
