// The DWG entities that cover areas or run in bands: hatches with their boundary paths, patterns and
// gradients, multilines, images and wipeouts.
#include "platform/headless/dwg_entities.h"

namespace headless {

namespace {

// The smallest number of bits each repeated item of the hatch takes, to check counts against what is left.
constexpr std::size_t kMinPathBits = 2 + 2;    // flags and a count, both bit longs of value 0
constexpr std::size_t kMinEdgeBits = 8 + 8;    // the type byte and a spline without points
constexpr std::size_t kMinPointBits = 2 * 64;  // a raw 2D point

// A 2D point as boundary paths give it: groups code and code + 10 only.
void point2(DwgTagList& out, int code, const DwgPoint2& p) {
  out.real(code, p.x);
  out.real(code + 10, p.y);
}

// One spline edge of a boundary path: its degree, knots, control points (with weights when rational) and,
// from R2010 on, its fit points and end tangents.
bool readSplineEdge(DwgObjectReader& o, DwgTagList& out) {
  DwgBitReader& b = o.bits;
  const std::int32_t degree = b.readBitLong();
  const bool rational = b.readBit();
  const bool periodic = b.readBit();
  const std::int32_t knots = b.readBitLong();
  const std::int32_t points = b.readBitLong();
  if (!countFits(knots, 2, b) || !countFits(points, kMinPointBits, b)) return false;
  out.integer(94, degree);
  out.integer(73, rational ? 1 : 0);
  out.integer(74, periodic ? 1 : 0);
  out.integer(95, knots);
  out.integer(96, points);
  for (std::int32_t k = 0; k < knots && !b.failed(); ++k) out.real(40, b.readBitDouble());
  for (std::int32_t k = 0; k < points && !b.failed(); ++k) {
    point2(out, 10, b.readRaw2Doubles());
    if (rational) out.real(42, b.readBitDouble());
  }
  if (o.atLeast(DwgVersion::R2010)) {
    const std::int32_t fit = b.readBitLong();
    if (!countFits(fit, kMinPointBits, b)) return false;
    out.integer(97, fit);
    if (fit > 0) {
      for (std::int32_t k = 0; k < fit && !b.failed(); ++k) point2(out, 11, b.readRaw2Doubles());
      point2(out, 12, b.readRaw2Doubles());
      point2(out, 13, b.readRaw2Doubles());
    }
  }
  return !b.failed();
}

// A boundary path made of edges: lines, circular and elliptic arcs, splines.
bool readEdgePath(DwgObjectReader& o, DwgTagList& out) {
  DwgBitReader& b = o.bits;
  const std::int32_t edges = b.readBitLong();
  if (!countFits(edges, kMinEdgeBits, b)) return false;
  out.integer(93, edges);
  for (std::int32_t k = 0; k < edges; ++k) {
    const int type = b.readRawChar();
    out.integer(72, type);
    switch (type) {
      case 1:
        point2(out, 10, b.readRaw2Doubles());
        point2(out, 11, b.readRaw2Doubles());
        break;
      case 2:  // a circular arc: centre and radius
      case 3:  // an elliptic arc: centre, end of the major axis and ratio of the axes
        point2(out, 10, b.readRaw2Doubles());
        if (type == 3) point2(out, 11, b.readRaw2Doubles());
        out.real(40, b.readBitDouble());
        out.real(50, b.readBitDouble() * kDwgDegrees);
        out.real(51, b.readBitDouble() * kDwgDegrees);
        out.integer(73, b.readBit() ? 1 : 0);  // counter-clockwise
        break;
      case 4:
        if (!readSplineEdge(o, out)) return false;
        break;
      default: return false;
    }
    if (b.failed()) return false;
  }
  return true;
}

// A boundary path given as a polyline: vertices with optional bulges. Its bulge and closed bits come in that
// order in a hatch, the other way round in an MPOLYGON (closedFirst).
bool readPolylinePath(DwgObjectReader& o, DwgTagList& out, bool closedFirst = false) {
  DwgBitReader& b = o.bits;
  const bool first = b.readBit(), second = b.readBit();
  const bool bulges = closedFirst ? second : first, closed = closedFirst ? first : second;
  const std::int32_t vertices = b.readBitLong();
  if (!countFits(vertices, kMinPointBits, b)) return false;
  out.integer(72, bulges ? 1 : 0);
  out.integer(73, closed ? 1 : 0);
  out.integer(93, vertices);
  for (std::int32_t k = 0; k < vertices && !b.failed(); ++k) {
    point2(out, 10, b.readRaw2Doubles());
    if (bulges) out.real(42, b.readBitDouble());
  }
  return !b.failed();
}

// A gradient fill as R2004 and later store it: it comes first in the data and last in DXF, its colours'
// groups kept aside (in context.vertices) until then.
struct Gradient {
  bool stored = false;
  std::int32_t kind = 0, reserved = 0, singleColor = 0;
  double angle = 0, shift = 0, tint = 0;
  std::string name;
};
bool readGradient(DwgObjectReader& o, Gradient& g, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  DwgTagList& colors = context.vertices;
  colors.truncate(0);
  g.stored = o.atLeast(DwgVersion::R2004);
  if (!g.stored) return true;
  g.kind = b.readBitLong();
  g.reserved = b.readBitLong();
  g.angle = b.readBitDouble();
  g.shift = b.readBitDouble();
  g.singleColor = b.readBitLong();
  g.tint = b.readBitDouble();
  const std::int32_t count = b.readBitLong();
  if (!countFits(count, 2 + 2 + 2 + 8, b)) return false;
  colors.integer(453, count);
  for (std::int32_t k = 0; k < count && !b.failed(); ++k) {
    colors.real(463, b.readBitDouble());
    const DwgColor c = readColorAndNames(o, context.text);
    colors.integer(63, c.index);
    colors.integer(421, c.rgb & 0xFFFFFF);
  }
  o.readText(g.name);
  return !b.failed();
}
// Writers give the gradient groups of gradient fills; for the others they say nothing the defaults do not.
void appendGradient(DwgTagList& out, const Gradient& g, const DwgDecodeContext& context) {
  if (!g.stored || g.kind == 0) return;
  const DwgTagList& colors = context.vertices;
  out.integer(450, g.kind);
  out.integer(451, g.reserved);
  out.integer(452, g.singleColor);
  out.append(colors, 0, 1);  // 453
  out.real(460, g.angle);
  out.real(461, g.shift);
  out.real(462, g.tint);
  out.append(colors, 1, colors.size());
  out.text(470, g.name);
}

// A fill pattern's angle, scale, doubling and lines with their dashes.
bool readPattern(DwgBitReader& b, DwgTagList& out) {
  out.real(52, b.readBitDouble() * kDwgDegrees);
  out.real(41, b.readBitDouble());
  out.integer(77, b.readBit() ? 1 : 0);
  const int lines = b.readBitShort();
  if (!countFits(lines, 2 + 4 * 2 + 2, b)) return false;
  out.integer(78, lines);
  for (int k = 0; k < lines && !b.failed(); ++k) {
    out.real(53, b.readBitDouble() * kDwgDegrees);
    out.real(43, b.readBitDouble());
    out.real(44, b.readBitDouble());
    out.real(45, b.readBitDouble());
    out.real(46, b.readBitDouble());
    const int dashes = b.readBitShort();
    if (!countFits(dashes, 2, b)) return false;
    out.integer(79, dashes);
    for (int d = 0; d < dashes && !b.failed(); ++d) out.real(49, b.readBitDouble());
  }
  return !b.failed();
}

// What hatches and multi-polygons store first alike: the gradient, the plane and the pattern's name, and
// whether the fill is solid.
struct FillStart {
  Gradient gradient;
  double elevation = 0;
  DwgPoint3 extrusion;
  bool solid = false;
};

// Reads the fields FillStart holds, the pattern's name into context.text. False for damage.
bool readFillStart(DwgObjectReader& o, FillStart& f, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  if (!readGradient(o, f.gradient, context)) return false;
  f.elevation = b.readBitDouble();
  f.extrusion = b.read3BitDoubles();
  o.readText(context.text);
  f.solid = b.readBit();
  return !b.failed();
}

// The plane (10 at the elevation, 210) and the pattern's name (2) as DXF gives them.
void appendFillPlane(DwgTagList& out, const FillStart& f, std::string_view name) {
  out.point(10, DwgPoint2{}, f.elevation);
  out.point(210, f.extrusion);
  out.text(2, name);
}

bool decodeHatch(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const std::size_t first = out.size();
  FillStart f;
  if (!readFillStart(o, f, context)) return false;
  const bool associative = b.readBit();
  const std::int32_t paths = b.readBitLong();
  if (!countFits(paths, kMinPathBits, b)) return false;
  out.text(100, "AcDbHatch");
  appendFillPlane(out, f, context.text);
  out.integer(70, f.solid ? 1 : 0);
  out.integer(71, associative ? 1 : 0);
  out.integer(91, paths);
  // Each path ends with the count of its source objects, whose handles come after the common ones; the
  // places of the counts are kept to slot the handles in.
  std::vector<std::pair<std::size_t, std::int32_t>>& sources = context.slots;
  sources.clear();
  bool pixelSize = false;
  for (std::int32_t p = 0; p < paths; ++p) {
    const std::int32_t flags = b.readBitLong();
    out.integer(92, flags);
    if (!((flags & 2) ? readPolylinePath(o, out) : readEdgePath(o, out))) return false;
    pixelSize = pixelSize || (flags & 4);
    const std::int32_t count = b.readBitLong();
    if (count < 0 || std::size_t(count) > o.handles.bitsLeft() / 8) return false;
    out.integer(97, count);
    sources.emplace_back(out.size(), count);
  }
  out.integer(75, b.readBitShort());
  out.integer(76, b.readBitShort());
  if (!f.solid && !readPattern(b, out)) return false;
  if (pixelSize) out.real(47, b.readBitDouble());
  const std::int32_t seeds = b.readBitLong();
  if (!countFits(seeds, kMinPointBits, b)) return false;
  out.integer(98, seeds);
  for (std::int32_t k = 0; k < seeds && !b.failed(); ++k) point2(out, 10, b.readRaw2Doubles());
  appendGradient(out, f.gradient, context);
  o.readCommonHandles();
  if (b.failed()) return false;
  // The source objects' handles go after their paths' counts.
  DwgTagList& spliced = context.spliced;
  spliced.truncate(0);
  std::size_t from = first;
  for (const auto& [at, count] : sources) {
    spliced.append(out, from, at);
    for (std::int32_t k = 0; k < count && !o.handles.failed(); ++k) spliced.handle(330, o.readHandle());
    from = at;
  }
  spliced.append(out, from, out.size());
  out.truncate(first);
  out.append(spliced, 0, spliced.size());
  return true;
}

// MPOLYGON: a hatch whose boundary paths are drawn too and have no source objects. Its style leads, the
// gradient as a hatch stores it follows; after the paths come the pattern, the fill colour and the
// pattern's direction.
bool decodeMpolygon(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int style = b.readBitShort();
  FillStart f;
  if (!readFillStart(o, f, context)) return false;
  const std::int32_t paths = b.readBitLong();
  if (!countFits(paths, 2 + 2, b)) return false;
  out.text(100, "AcDbMPolygon");
  out.integer(70, 1);
  appendFillPlane(out, f, context.text);
  out.integer(71, f.solid ? 1 : 0);
  out.integer(91, paths);
  // Its paths are all polylines, their flags not stored.
  for (std::int32_t p = 0; p < paths; ++p) {
    out.integer(92, 2);
    if (!readPolylinePath(o, out, true)) return false;
  }
  out.integer(75, style);
  out.integer(76, b.readBitShort());
  if (!f.solid && !readPattern(b, out)) return false;
  const DwgColor fill = readColorAndNames(o, context.text);
  out.integer(63, fill.index);
  point2(out, 11, b.readRaw2Doubles());
  out.integer(99, b.readBitLong());
  appendGradient(out, f.gradient, context);
  o.readCommonHandles();
  return !b.failed();
}

bool decodeMline(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const double scale = b.readBitDouble();
  const int justification = b.readRawChar();
  const DwgPoint3 base = b.read3BitDoubles();
  const DwgPoint3 e = b.read3BitDoubles();
  const int flags = b.readBitShort();
  const int lines = b.readRawChar();
  const int vertices = b.readBitShort();
  // A vertex takes at least three points of three bit doubles; each line at least two counts.
  if (vertices < 0 || std::size_t(vertices) > b.bitsLeft() / (9 * 2 + std::size_t(lines) * 4) || b.failed())
    return false;
  DwgTagList& body = context.spliced;
  body.truncate(0);
  for (int v = 0; v < vertices && !b.failed(); ++v) {
    body.point(11, b.read3BitDoubles());
    body.point(12, b.read3BitDoubles());
    body.point(13, b.read3BitDoubles());
    for (int l = 0; l < lines && !b.failed(); ++l) {
      for (int kind = 0; kind < 2; ++kind) {
        const int count = b.readBitShort();
        if (!countFits(count, 2, b)) return false;
        body.integer(74 + kind, count);
        for (int k = 0; k < count && !b.failed(); ++k) body.real(41 + kind, b.readBitDouble());
      }
    }
  }
  o.readCommonHandles();
  const std::uint64_t style = o.readHandle();
  out.text(100, "AcDbMline");
  if (const std::string_view name = context.nameOf(style); !name.empty()) out.text(2, name);
  out.handle(340, style);
  out.real(40, scale);
  out.integer(70, justification);
  out.integer(71, flags);
  out.integer(72, vertices);
  out.integer(73, lines);
  out.point(10, base);
  out.point(210, e);
  out.append(body, 0, body.size());
  return !b.failed();
}

// IMAGE and WIPEOUT: a picture (or a masking area) placed by its corner and pixel vectors, clipped by a
// rectangle or a polygon in pixels.
bool decodeImageOrWipeout(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const char* marker) {
  DwgBitReader& b = o.bits;
  const std::int32_t version = b.readBitLong();
  const DwgPoint3 corner = b.read3BitDoubles();
  const DwgPoint3 u = b.read3BitDoubles();
  const DwgPoint3 v = b.read3BitDoubles();
  const DwgPoint2 size = b.readRaw2Doubles();
  const int display = b.readBitShort();
  const bool clipping = b.readBit();
  const int brightness = b.readRawChar();
  const int contrast = b.readRawChar();
  const int fade = b.readRawChar();
  const bool clipInside = o.atLeast(DwgVersion::R2010) && b.readBit();
  const int clipType = b.readBitShort();
  const std::int32_t vertices = clipType == 1 ? 2 : b.readBitLong();
  if (!countFits(vertices, kMinPointBits, b)) return false;
  DwgTagList& boundary = context.spliced;
  boundary.truncate(0);
  DwgPoint2 first, last;
  for (std::int32_t k = 0; k < vertices && !b.failed(); ++k) {
    last = b.readRaw2Doubles();
    if (k == 0) first = last;
    point2(boundary, 14, last);
  }
  // DXF closes a polygon by repeating its first vertex.
  std::int32_t written = vertices;
  if (clipType != 1 && vertices >= 3 && (first.x != last.x || first.y != last.y)) {
    point2(boundary, 14, first);
    ++written;
  }
  o.readCommonHandles();
  const std::uint64_t definition = o.readHandle();
  const std::uint64_t reactor = o.readHandle();
  out.text(100, marker);
  out.integer(90, version);
  out.point(10, corner);
  out.point(11, u);
  out.point(12, v);
  point2(out, 13, size);
  out.handle(340, definition);
  out.integer(70, display);
  out.integer(280, clipping ? 1 : 0);
  out.integer(281, brightness);
  out.integer(282, contrast);
  out.integer(283, fade);
  if (o.atLeast(DwgVersion::R2010)) out.integer(290, clipInside ? 1 : 0);
  out.handle(360, reactor);
  out.integer(71, clipType);
  out.integer(91, written);
  out.append(boundary, 0, boundary.size());
  return !b.failed();
}
bool decodeImage(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  return decodeImageOrWipeout(o, out, context, "AcDbRasterImage");
}
bool decodeWipeout(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  return decodeImageOrWipeout(o, out, context, "AcDbWipeout");
}

constexpr DwgEntityEntry kTypes[] = {
    {47, {"MLINE", decodeMline}},
    {78, {"HATCH", decodeHatch}},
    {0, {"IMAGE", decodeImage}},
    {0, {"WIPEOUT", decodeWipeout}},
    {0, {"MPOLYGON", decodeMpolygon}},
};

}  // namespace

DwgEntityFamily dwgAreaEntities() { return kTypes; }

}  // namespace headless
