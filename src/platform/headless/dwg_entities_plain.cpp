// The DWG entities of plain geometry and text: lines, points, circles, arcs, ellipses, rays, traces and
// faces, light polylines, single-line text and attributes, block references and sequence ends.
#include "platform/headless/dwg_entities.h"

namespace headless {

namespace {

bool decodeLine(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  DwgPoint3 start, end;
  if (o.atLeast(DwgVersion::R2000)) {
    const bool flat = b.readBit();
    start.x = b.readRawDouble();
    end.x = b.readDoubleWithDefault(start.x);
    start.y = b.readRawDouble();
    end.y = b.readDoubleWithDefault(start.y);
    if (!flat) {
      start.z = b.readRawDouble();
      end.z = b.readDoubleWithDefault(start.z);
    }
  } else {
    start = b.read3BitDoubles();
    end = b.read3BitDoubles();
  }
  const double t = b.readThickness();
  const DwgPoint3 e = b.readExtrusion();
  o.readCommonHandles();
  out.text(100, "AcDbLine");
  thickness(out, t);
  out.point(10, start);
  out.point(11, end);
  extrusion(out, e);
  return true;
}

bool decodePoint(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  const DwgPoint3 p = b.read3BitDoubles();
  const double t = b.readThickness();
  const DwgPoint3 e = b.readExtrusion();
  const double angle = b.readBitDouble();
  o.readCommonHandles();
  out.text(100, "AcDbPoint");
  out.point(10, p);
  thickness(out, t);
  extrusion(out, e);
  if (angle != 0.0) out.real(50, angle * kDwgDegrees);
  return true;
}

// Circles and arcs share their first fields; arcs add their angles.
bool decodeCircleOrArc(DwgObjectReader& o, DwgTagList& out, bool arc) {
  DwgBitReader& b = o.bits;
  const DwgPoint3 center = b.read3BitDoubles();
  const double radius = b.readBitDouble();
  const double t = b.readThickness();
  const DwgPoint3 e = b.readExtrusion();
  double startAngle = 0, endAngle = 0;
  if (arc) {
    startAngle = b.readBitDouble();
    endAngle = b.readBitDouble();
  }
  o.readCommonHandles();
  out.text(100, "AcDbCircle");
  thickness(out, t);
  out.point(10, center);
  out.real(40, radius);
  extrusion(out, e);
  if (arc) {
    out.text(100, "AcDbArc");
    out.real(50, startAngle * kDwgDegrees);
    out.real(51, endAngle * kDwgDegrees);
  }
  return true;
}
bool decodeCircle(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) { return decodeCircleOrArc(o, out, false); }
bool decodeArc(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) { return decodeCircleOrArc(o, out, true); }

bool decodeEllipse(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  const DwgPoint3 center = b.read3BitDoubles();
  const DwgPoint3 major = b.read3BitDoubles();
  const DwgPoint3 e = b.read3BitDoubles();
  const double ratio = b.readBitDouble();
  const double start = b.readBitDouble();
  const double end = b.readBitDouble();
  o.readCommonHandles();
  out.text(100, "AcDbEllipse");
  out.point(10, center);
  out.point(11, major);
  extrusion(out, e);
  out.real(40, ratio);
  out.real(41, start);
  out.real(42, end);
  return true;
}

// Rays and construction lines: a point and a direction.
bool decodeRayOrXline(DwgObjectReader& o, DwgTagList& out, const char* marker) {
  const DwgPoint3 p = o.bits.read3BitDoubles();
  const DwgPoint3 v = o.bits.read3BitDoubles();
  o.readCommonHandles();
  out.text(100, marker);
  out.point(10, p);
  out.point(11, v);
  return true;
}
bool decodeRay(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) { return decodeRayOrXline(o, out, "AcDbRay"); }
bool decodeXline(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) { return decodeRayOrXline(o, out, "AcDbXline"); }

// SOLID and TRACE: four corners in their plane.
bool decodeTrace(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  const double t = b.readThickness();
  const double elevation = b.readBitDouble();
  DwgPoint2 corners[4];
  for (DwgPoint2& c : corners) c = b.readRaw2Doubles();
  const DwgPoint3 e = b.readExtrusion();
  o.readCommonHandles();
  out.text(100, "AcDbTrace");
  for (int i = 0; i < 4; ++i) out.point(10 + i, corners[i], elevation);
  thickness(out, t);
  extrusion(out, e);
  return true;
}

bool decodeFace(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  DwgPoint3 corners[4];
  int flags = 0;
  if (o.atLeast(DwgVersion::R2000)) {
    const bool noFlags = b.readBit();
    const bool flat = b.readBit();
    corners[0].x = b.readRawDouble();
    corners[0].y = b.readRawDouble();
    if (!flat) corners[0].z = b.readRawDouble();
    for (int i = 1; i < 4; ++i) corners[i] = b.read3DoublesWithDefault(corners[i - 1]);
    if (!noFlags) flags = b.readBitShort();
  } else {
    for (DwgPoint3& c : corners) c = b.read3BitDoubles();
    flags = b.readBitShort();
  }
  o.readCommonHandles();
  out.text(100, "AcDbFace");
  for (int i = 0; i < 4; ++i) out.point(10 + i, corners[i]);
  if (flags != 0) out.integer(70, flags);
  return true;
}

bool decodeLightPolyline(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int flags = static_cast<std::uint16_t>(b.readBitShort());
  const double constantWidth = (flags & 4) ? b.readBitDouble() : 0.0;
  const double elevation = (flags & 8) ? b.readBitDouble() : 0.0;
  const double t = (flags & 2) ? b.readBitDouble() : 0.0;
  const DwgPoint3 e = (flags & 1) ? b.read3BitDoubles() : DwgPoint3{0, 0, 1};
  const std::int32_t points = b.readBitLong();
  const std::int32_t bulges = (flags & 16) ? b.readBitLong() : 0;
  const std::int32_t ids = (o.atLeast(DwgVersion::R2010) && (flags & 1024)) ? b.readBitLong() : 0;
  const std::int32_t widths = (flags & 32) ? b.readBitLong() : 0;
  // A point takes at least 2 bits (two defaulted doubles), a bulge 2, an id 2, a width pair 4.
  const std::size_t room = b.bitsLeft() / 2;
  if (points < 0 || bulges < 0 || ids < 0 || widths < 0 || std::size_t(points) > room || std::size_t(bulges) > room ||
      std::size_t(ids) > room || std::size_t(widths) > room || b.failed())
    return false;
  out.text(100, "AcDbPolyline");
  out.integer(90, points);
  out.integer(70, ((flags & 512) ? 1 : 0) | ((flags & 256) ? 128 : 0));
  if (flags & 4) out.real(43, constantWidth);
  if (flags & 8) out.real(38, elevation);
  thickness(out, t);
  // The values come in arrays (points, bulges, ids, widths); DXF gives them vertex by vertex. The points
  // are put down first and the others slotted in after them, vertex by vertex.
  const std::size_t first = out.size();
  DwgPoint2 previous;
  for (std::int32_t i = 0; i < points; ++i) {
    DwgPoint2 p;
    if (o.atLeast(DwgVersion::R2000) && i > 0) p = b.read2DoublesWithDefault(previous);
    else p = b.readRaw2Doubles();
    previous = p;
    out.real(10, p.x);
    out.real(20, p.y);
  }
  // The arrays are read whole before the vertices are put together, into buffers kept across polylines.
  std::vector<double>& bulge = context.bulges;
  bulge.resize(static_cast<std::size_t>(bulges));
  for (double& v : bulge) v = b.readBitDouble();
  std::vector<std::int32_t>& id = context.vertexIds;
  id.resize(static_cast<std::size_t>(ids));
  for (std::int32_t& v : id) v = b.readBitLong();
  std::vector<DwgPoint2>& width = context.widths;
  width.resize(static_cast<std::size_t>(widths));
  for (DwgPoint2& w : width) {
    w.x = b.readBitDouble();
    w.y = b.readBitDouble();
  }
  if (b.failed()) return false;
  if (bulges || ids || widths) {
    DwgTagList& vertices = context.vertices;
    vertices.truncate(0);
    for (std::int32_t i = 0; i < points; ++i) {
      const auto k = static_cast<std::size_t>(i);
      vertices.append(out, first + 2 * k, first + 2 * k + 2);
      if (k < id.size()) vertices.integer(91, id[k]);
      if (k < width.size()) {
        vertices.real(40, width[k].x);
        vertices.real(41, width[k].y);
      }
      if (k < bulge.size() && bulge[k] != 0.0) vertices.real(42, bulge[k]);
    }
    out.truncate(first);
    out.append(vertices, 0, vertices.size());
  }
  extrusion(out, e);
  o.readCommonHandles();
  return true;
}

// The fields TEXT, ATTRIB and ATTDEF share.
struct TextData {
  double elevation = 0, oblique = 0, rotation = 0, height = 0, width = 1, thickness = 0;
  DwgPoint2 insertion, alignment;
  DwgPoint3 extrusion{0, 0, 1};
  int generation = 0, horizontal = 0, vertical = 0;
};

// Reads the shared fields, the text itself into context.text.
void readTextData(DwgObjectReader& o, TextData& d, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  if (o.atLeast(DwgVersion::R2000)) {
    const std::uint8_t flags = b.readRawChar();
    if (!(flags & 1)) d.elevation = b.readRawDouble();
    d.insertion = b.readRaw2Doubles();
    d.alignment = (flags & 2) ? d.insertion : b.read2DoublesWithDefault(d.insertion);
    d.extrusion = b.readExtrusion();
    d.thickness = b.readThickness();
    if (!(flags & 4)) d.oblique = b.readRawDouble();
    if (!(flags & 8)) d.rotation = b.readRawDouble();
    d.height = b.readRawDouble();
    if (!(flags & 16)) d.width = b.readRawDouble();
    o.readText(context.text);
    if (!(flags & 32)) d.generation = b.readBitShort();
    if (!(flags & 64)) d.horizontal = b.readBitShort();
    if (!(flags & 128)) d.vertical = b.readBitShort();
  } else {
    d.elevation = b.readBitDouble();
    d.insertion = b.readRaw2Doubles();
    d.alignment = b.readRaw2Doubles();
    d.extrusion = b.read3BitDoubles();
    d.thickness = b.readBitDouble();
    d.oblique = b.readBitDouble();
    d.rotation = b.readBitDouble();
    d.height = b.readBitDouble();
    d.width = b.readBitDouble();
    o.readText(context.text);
    d.generation = b.readBitShort();
    d.horizontal = b.readBitShort();
    d.vertical = b.readBitShort();
  }
}

// The AcDbText groups, all but the vertical alignment, whose place differs between text and attributes.
void emitTextData(DwgTagList& out, const TextData& d, std::string_view text, std::string_view style) {
  out.text(100, "AcDbText");
  thickness(out, d.thickness);
  out.point(10, d.insertion, d.elevation);
  out.real(40, d.height);
  out.text(1, text);
  if (d.rotation != 0.0) out.real(50, d.rotation * kDwgDegrees);
  if (d.width != 1.0) out.real(41, d.width);
  if (d.oblique != 0.0) out.real(51, d.oblique * kDwgDegrees);
  out.text(7, style);
  if (d.generation != 0) out.integer(71, d.generation);
  if (d.horizontal != 0) out.integer(72, d.horizontal);
  if (d.horizontal != 0 || d.vertical != 0) out.point(11, d.alignment, d.elevation);
  extrusion(out, d.extrusion);
}

bool decodeText(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  TextData d;
  readTextData(o, d, context);
  o.readCommonHandles();
  const std::uint64_t style = o.readHandle();
  emitTextData(out, d, context.text, context.nameOf(style));
  out.text(100, "AcDbText");
  if (d.vertical != 0) out.integer(73, d.vertical);
  return true;
}

// ATTRIB and ATTDEF: a text with a tag (and for definitions a prompt). Multi-line attributes embed a
// multiline text from R2018 on, which DXF gives after the attribute's own groups.
bool decodeAttribute(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const bool definition = o.type == 3;
  TextData d;
  readTextData(o, d, context);
  const std::string value = context.text;
  int version = 0;
  if (o.atLeast(DwgVersion::R2010)) version = b.readRawChar();
  // R2018 attributes say whether they are single-line (1) or carry a multiline text (2, 4 definitions).
  const int lines = o.atLeast(DwgVersion::R2018) ? b.readRawChar() : 1;
  DwgMTextData mtext;
  int annotationFlag = 0;
  if (lines != 1) {
    if (!readDwgEmbeddedMText(o, mtext, context)) return false;
    const int annotationSize = b.readBitShort();
    if (annotationSize < 0 || std::size_t(annotationSize) > b.bitsLeft() / 8) return false;
    if (annotationSize > 0) {
      b.setBitPosition(b.bitPosition() + std::size_t(annotationSize) * 8);
      annotationFlag = b.readBitShort();
    }
  }
  std::string tag;
  o.readText(tag);
  const int fieldLength = b.readBitShort();
  const int flags = b.readRawChar();
  const bool lockPosition = o.atLeast(DwgVersion::R2007) && b.readBit();
  std::string prompt;
  if (definition) {
    if (o.atLeast(DwgVersion::R2010)) version = b.readRawChar();
    o.readText(prompt);
  }
  o.readCommonHandles();
  const std::uint64_t style = o.readHandle();
  emitTextData(out, d, value, context.nameOf(style));
  out.text(100, definition ? "AcDbAttributeDefinition" : "AcDbAttribute");
  if (o.atLeast(DwgVersion::R2010)) out.integer(280, version);
  if (definition) out.text(3, prompt);
  out.text(2, tag);
  out.integer(70, flags);
  if (fieldLength != 0) out.integer(73, fieldLength);
  if (d.vertical != 0) out.integer(74, d.vertical);
  if (lockPosition) out.integer(280, 1);
  if (lines != 1) {
    out.integer(71, lines);
    out.integer(72, annotationFlag);
    out.point(11, d.alignment, d.elevation);
    appendDwgEmbeddedMText(o, out, mtext, context);
  }
  return true;
}

bool decodeInsert(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  DwgInsertPart part;
  if (!readDwgInsertPart(o, part)) return false;
  const DwgPoint3& e = part.extrusion;
  const bool minsert = o.type == 8;
  int columns = 1, rows = 1;
  double columnSpacing = 0, rowSpacing = 0;
  if (minsert) {
    columns = b.readBitShort();
    rows = b.readBitShort();
    columnSpacing = b.readBitDouble();
    rowSpacing = b.readBitDouble();
  }
  o.readCommonHandles();
  const std::uint64_t block = o.readHandle();
  skipDwgAttributeHandles(o, part);
  appendDwgInsertPart(out, part, minsert ? "AcDbMInsertBlock" : "AcDbBlockReference", context.nameOf(block));
  if (minsert) {
    out.integer(70, columns);
    out.integer(71, rows);
    out.real(44, columnSpacing);
    out.real(45, rowSpacing);
  }
  extrusion(out, e);
  return true;
}

bool decodeSequenceEnd(DwgObjectReader& o, DwgTagList&, DwgDecodeContext&) {
  o.readCommonHandles();
  return true;
}

constexpr DwgEntityEntry kTypes[] = {
    {1, {"TEXT", decodeText}},         {2, {"ATTRIB", decodeAttribute}},  {3, {"ATTDEF", decodeAttribute}},
    {6, {"SEQEND", decodeSequenceEnd}}, {7, {"INSERT", decodeInsert}},
    {8, {"MINSERT", decodeInsert}},    {17, {"ARC", decodeArc}},          {18, {"CIRCLE", decodeCircle}},
    {19, {"LINE", decodeLine}},        {27, {"POINT", decodePoint}},      {28, {"3DFACE", decodeFace}},
    {31, {"SOLID", decodeTrace}},      {32, {"TRACE", decodeTrace}},      {35, {"ELLIPSE", decodeEllipse}},
    {40, {"RAY", decodeRay}},          {41, {"XLINE", decodeXline}},      {77, {"LWPOLYLINE", decodeLightPolyline}},
};

}  // namespace

DwgEntityFamily dwgPlainEntities() { return kTypes; }

void skipDwgAttributeHandles(DwgObjectReader& o, const DwgInsertPart& part) {
  if (!part.attributes) return;
  const std::int32_t skipped = o.atLeast(DwgVersion::R2004) ? part.owned : 2;
  for (std::int32_t i = 0; i < skipped + 1 && !o.handles.failed(); ++i) o.readHandle();
}

void appendDwgInsertPart(DwgTagList& out, const DwgInsertPart& part, std::string_view marker,
                         std::string_view block) {
  out.text(100, marker);
  if (part.attributes) out.integer(66, 1);
  out.text(2, block);
  out.point(10, part.at);
  if (part.scale.x != 1.0) out.real(41, part.scale.x);
  if (part.scale.y != 1.0) out.real(42, part.scale.y);
  if (part.scale.z != 1.0) out.real(43, part.scale.z);
  if (part.rotation != 0.0) out.real(50, part.rotation * kDwgDegrees);
}

bool readDwgInsertPart(DwgObjectReader& o, DwgInsertPart& part) {
  DwgBitReader& b = o.bits;
  part.at = b.read3BitDoubles();
  DwgPoint3& scale = part.scale;
  scale = {1, 1, 1};
  if (!o.atLeast(DwgVersion::R2000)) {
    scale = b.read3BitDoubles();
  } else {
    switch (b.readBitPair()) {
      case 3: break;  // (1, 1, 1)
      case 1:         // x is 1
        scale.y = b.readDoubleWithDefault(1.0);
        scale.z = b.readDoubleWithDefault(1.0);
        break;
      case 2: scale.x = scale.y = scale.z = b.readRawDouble(); break;
      default:
        scale.x = b.readRawDouble();
        scale.y = b.readDoubleWithDefault(scale.x);
        scale.z = b.readDoubleWithDefault(scale.x);
        break;
    }
  }
  part.rotation = b.readBitDouble();
  part.extrusion = b.read3BitDoubles();
  part.attributes = b.readBit();
  part.owned = 0;
  if (part.attributes && o.atLeast(DwgVersion::R2004)) {
    part.owned = b.readBitLong();
    if (part.owned < 0 || std::size_t(part.owned) > o.handles.bitsLeft() / 8) return false;
  }
  return !b.failed();
}

}  // namespace headless
