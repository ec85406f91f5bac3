// The DWG entities whose shape is modeler data: regions, 3D solids, bodies and the surface classes.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/headless/dwg_entities.h"
#include "platform/headless/modeler_data.h"

namespace headless {

namespace {

// DXF holds a line of SAT text in one group 1 of at most this many characters, the rest in groups 3.
constexpr std::size_t kLineChunk = 255;

// Appends SAT text as DXF writes it: a group 1 a line, long lines continued in groups 3.
void emitSatLines(DwgTagList& out, std::string_view text) {
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t end = text.find('\n', pos);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(pos, end - pos);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    pos = end + 1;
    if (line.empty()) continue;
    out.text(1, line.substr(0, kLineChunk));
    for (std::size_t i = kLineChunk; i < line.size(); i += kLineChunk) out.text(3, line.substr(i, kLineChunk));
  }
}

// After the wireframe R2013 and later store a revision GUID, flagged as in use or not; DXF writes both.
void readRevision(DwgObjectReader& o, DwgTagList& out) {
  if (!o.atLeast(DwgVersion::R2013)) return;
  DwgBitReader& b = o.bits;
  const bool used = b.readBit();
  const auto d1 = static_cast<std::uint32_t>(b.readBitLong());
  const auto d2 = static_cast<std::uint16_t>(b.readBitShort()), d3 = static_cast<std::uint16_t>(b.readBitShort());
  std::uint8_t d4[8];
  for (std::uint8_t& v : d4) v = b.readRawChar();
  char guid[40];
  std::snprintf(guid, sizeof guid, "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", d1, d2, d3, d4[0], d4[1], d4[2],
                d4[3], d4[4], d4[5], d4[6], d4[7]);
  out.integer(290, used ? 1 : 0);
  out.text(2, guid);
}

// The data after an ACIS empty bit of 0 and the bit that follows it: a version, then for version 1 (what
// releases before R2007 write) the SAT text in blocks, each led by its size, with the character transform DXF
// of those releases keeps too (each printable c as 159 - c): it is passed on as stored. For version 2 (later
// writers, in R2004 drawings too) the data follow unsized, as SAT text or as SAB, written out as SAT text here.
// Appended as groups 1/3 when out is given, else only stepped over.
bool readModelerText(DwgObjectReader& o, DwgTagList* out, std::string& scratch) {
  DwgBitReader& b = o.bits;
  const int version = b.readBitShort();
  scratch.clear();
  if (version == 1) {
    // Blocks until one of size 0; each fits in what is left of the data.
    for (std::size_t blocks = 0;; ++blocks) {
      const std::int32_t size = b.readBitLong();
      if (size == 0) break;
      if (size < 0 || static_cast<std::size_t>(size) > b.bitsLeft() / 8 || blocks > b.bitSize()) return false;
      for (std::int32_t i = 0; i < size; ++i) scratch += static_cast<char>(b.readRawChar());
    }
    if (out) emitSatLines(*out, scratch);
    return !b.failed();
  }
  if (version != 2) return false;
  // Unsized: everything up to the end of the data is taken, and the data's own end found in it.
  const std::size_t start = b.bitPosition();
  const std::size_t end = std::min(o.dataEndBit, b.bitSize());
  if (end <= start) return false;
  const std::size_t available = (end - start) / 8;
  for (std::size_t i = 0; i < available; ++i) scratch += static_cast<char>(b.readRawChar());
  std::size_t used = 0;
  modeler::Model model;
  if (std::string_view(scratch).starts_with("ACIS BinaryFile")) {
    if (!model.readSab(scratch, nullptr, &used)) return false;
    if (out) emitSatLines(*out, model.text());
  } else {
    std::size_t marker = scratch.find("End-of-ACIS-data");
    if (marker == std::string::npos) marker = scratch.find("End-of-ASM-data");
    if (marker == std::string::npos) return false;
    used = scratch.find("data", marker) + 4;
    if (out) emitSatLines(*out, std::string_view(scratch).substr(0, used));
  }
  b.setBitPosition(start + used * 8);
  return !b.failed();
}

// The modeler data every region, solid, body and surface starts with, appended as groups 70 and 1/3.
bool readModelerData(DwgObjectReader& o, DwgTagList& out, std::string& scratch) {
  DwgBitReader& b = o.bits;
  out.text(100, "AcDbModelerGeometry");
  // R2013 and later keep the data in the drawing's data store (dwg_datastore.h): the wireframe comes first.
  if (o.atLeast(DwgVersion::R2013)) return true;
  const bool empty = b.readBit();
  b.readBit();
  if (empty) return !b.failed();
  out.integer(70, 1);
  return readModelerText(o, &out, scratch);
}

// A wire of the wireframe or silhouettes kept with the data.
void skipWire(DwgBitReader& b) {
  b.readRawChar();   // type
  b.readBitLong();   // selection marker
  b.readBitShort();  // colour
  b.readBitLong();   // index in the data
  const std::int32_t points = b.readBitLong();
  if (points < 0 || static_cast<std::size_t>(points) > b.bitsLeft() / 2) return b.fail();
  for (std::int32_t i = 0; i < points && !b.failed(); ++i) b.read3BitDoubles();
  if (b.readBit()) {
    for (int i = 0; i < 4; ++i) b.read3BitDoubles();  // axes and translation
    b.readBitDouble();                                  // scale
    b.readBit();
    b.readBit();
    b.readBit();
  }
}

void skipWires(DwgBitReader& b) {
  const std::int32_t wires = b.readBitLong();
  if (wires < 0 || static_cast<std::size_t>(wires) > b.bitsLeft() / 8) return b.fail();
  for (std::int32_t i = 0; i < wires && !b.failed(); ++i) skipWire(b);
}

// What follows the data: the wireframe, the silhouettes of viewports, the empty bit again, and (R2007+) one more
// number. An empty bit of 0 there says the data follow once more, in the same form but for the wireframe:
// extruded and lofted surfaces keep the edges of their isolines so. DXF leaves them out.
void skipWireframe(DwgObjectReader& o, std::string& scratch) {
  DwgBitReader& b = o.bits;
  if (b.readBit()) {
    if (b.readBit()) b.read3BitDoubles();
    b.readBitLong();  // isolines
    b.readBit();
    skipWires(b);
    const std::int32_t silhouettes = b.readBitLong();
    if (silhouettes < 0 || static_cast<std::size_t>(silhouettes) > b.bitsLeft() / 8) return b.fail();
    for (std::int32_t i = 0; i < silhouettes && !b.failed(); ++i) {
      b.readBitLong();
      for (int k = 0; k < 3; ++k) b.read3BitDoubles();
      b.readBit();
      skipWires(b);
    }
  }
  if (!b.readBit()) {
    b.readBit();
    if (!readModelerText(o, nullptr, scratch)) return b.fail();
  }
  if (o.atLeast(DwgVersion::R2007)) b.readBitLong();
}

bool decodeModeler(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const char* subclass) {
  if (!readModelerData(o, out, context.text)) return false;
  skipWireframe(o, context.text);
  readRevision(o, out);
  o.readCommonHandles();
  // Solids name their history from R2007 on; regions (and bodies) store no such handle.
  if (subclass && o.atLeast(DwgVersion::R2007)) {
    const std::uint64_t history = o.readHandle();
    out.text(100, subclass);
    out.handle(350, history);
  }
  return true;
}

bool decodeRegion(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  return decodeModeler(o, out, context, nullptr);
}
bool decodeSolid(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  return decodeModeler(o, out, context, "AcDb3dSolid");
}

// Surfaces: the modeler data, then their isoline counts (71, 72). Where R2013 and later put the counts beside
// the revision GUID is not known yet: those are refused.
bool readSurfaceStart(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, int isolines[2]) {
  if (o.atLeast(DwgVersion::R2013)) {
    context.notDecoded = "R2013 surface";
    return false;
  }
  if (!readModelerData(o, out, context.text)) return false;
  skipWireframe(o, context.text);
  isolines[0] = o.bits.readBitShort();
  isolines[1] = o.bits.readBitShort();
  return !o.bits.failed();
}

void appendIsolines(DwgTagList& out, const int isolines[2]) {
  out.text(100, "AcDbSurface");
  out.integer(71, isolines[0]);
  out.integer(72, isolines[1]);
}

// Plane and NURBS surfaces hold nothing more.
bool decodeSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  int isolines[2];
  if (!readSurfaceStart(o, out, context, isolines)) return false;
  o.readCommonHandles();
  appendIsolines(out, isolines);
  return true;
}

// Extruded, lofted, revolved and swept surfaces go on with how they were made: the options of the sweep, the
// transforms, and the curves they came from, each kept whole as an entity of its own in DWG form (its type
// number, its size in bits, its bits), which DXF passes on as binary groups.

// Steps over count such curves stored one after the other; false when one does not fit in the data.
bool skipCurves(DwgBitReader& b, std::int32_t count) {
  if (!countFits(count, 4, b)) return false;  // each at least two empty bit longs
  for (std::int32_t i = 0; i < count; ++i) {
    b.readBitLong();
    const std::int32_t bits = b.readBitLong();
    if (!countFits(bits, 1, b)) return false;
    b.setBitPosition(b.bitPosition() + static_cast<std::size_t>(bits));
  }
  return !b.failed();
}

// Appends count curves read by skipCurves from bit begin on: the type (typeCode), the size (90), then the bits
// as DXF writers give them, one byte more than whole bytes hold (0xCC where the bits fill their last byte).
// Returns where the curves end.
std::size_t appendCurves(const DwgBitReader& stream, std::size_t begin, std::int32_t count, int typeCode,
                         DwgTagList& out, std::string& scratch) {
  DwgBitReader b = stream;
  b.setBitPosition(begin);
  for (std::int32_t i = 0; i < count && !b.failed(); ++i) {
    const std::int32_t type = b.readBitLong(), bits = b.readBitLong();
    const std::size_t at = b.bitPosition();
    out.integer(typeCode, type);
    out.integer(90, bits);
    dwgBinaryGroups(b, at, at + static_cast<std::size_t>(bits), 310, out, scratch, bits % 8 == 0 ? 1 : 0);
    b.setBitPosition(at + static_cast<std::size_t>(bits));
  }
  return b.bitPosition();
}

// The curves end a made surface's data: steps over count of them (curves is set to where they start), reads
// the common handles and appends the surface's groups up to its own subclass marker. False when damaged.
// Before R2007 the data's size is kept to the bit, and the curves end exactly there; where they do not, the
// drawing holds a form of the type not known here, and it is refused.
bool finishSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const int isolines[2],
                   std::int32_t count, std::string_view marker, std::size_t& curves) {
  curves = o.bits.bitPosition();
  if (!skipCurves(o.bits, count)) return false;
  if (!o.atLeast(DwgVersion::R2007) && o.bits.bitPosition() != o.dataEndBit) {
    context.notDecoded = context.objectClass ? context.objectClass->dxfName : std::string(marker);
    context.notDecoded += " of a layout not known";
    return false;
  }
  o.readCommonHandles();
  appendIsolines(out, isolines);
  out.text(100, marker);
  return true;
}

// finishSurface for the surfaces made from one curve, which DXF gives first after the subclass marker.
bool finishSurfaceOfOneCurve(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const int isolines[2],
                             std::string_view marker) {
  std::size_t curve = 0;
  if (!finishSurface(o, out, context, isolines, 1, marker, curve)) return false;
  appendCurves(o.bits, curve, 1, 90, out, context.scratch);
  return true;
}

// A transform as 16 reals, row by row.
struct Transform {
  double m[16];
  void read(DwgBitReader& b) {
    for (double& v : m) v = b.readBitDouble();
  }
  void append(DwgTagList& out, int code) const {
    for (double v : m) out.real(code, v);
  }
};

// The options of a sweep, which extruded and swept surfaces share. DWG puts the twist reference vector
// among the flags and the transforms last; DXF the transforms after the reals and the vector last.
struct SweepOptions {
  double reals[6];        // draft angle, draft start and end distances, twist angle, scale, align angle
  bool solid;             // 290
  int alignment, other;   // 70 (alignment option) and 71
  bool flags[5];          // 292-296: align start, bank, base point set, sweep and path transforms computed
  DwgPoint3 reference;    // 11: the twist's reference vector
  Transform sweep, path;  // 46, 47

  void read(DwgBitReader& b) {
    for (double& v : reals) v = b.readBitDouble();
    solid = b.readBit();
    alignment = b.readBitShort();
    other = b.readBitShort();
    for (int i = 0; i < 3; ++i) flags[i] = b.readBit();
    reference = b.read3BitDoubles();
    for (int i = 3; i < 5; ++i) flags[i] = b.readBit();
    sweep.read(b);
    path.read(b);
  }
  void append(DwgTagList& out) const {
    constexpr int kRealCodes[] = {42, 43, 44, 45, 48, 49};
    for (int i = 0; i < 6; ++i) out.real(kRealCodes[i], reals[i]);
    sweep.append(out, 46);
    path.append(out, 47);
    out.integer(290, solid ? 1 : 0);
    out.integer(70, alignment);
    out.integer(71, other);
    for (int i = 0; i < 5; ++i) out.integer(292 + i, flags[i] ? 1 : 0);
    out.point(11, reference);
  }
};

// EXTRUDEDSURFACE: the sweep options, the sweep vector (10), the extruded curve's transform (40), the curve.
bool extrudedSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const int isolines[2]) {
  DwgBitReader& b = o.bits;
  SweepOptions options;
  options.read(b);
  const DwgPoint3 vector = b.read3BitDoubles();
  Transform transform;
  transform.read(b);
  if (!finishSurfaceOfOneCurve(o, out, context, isolines, "AcDbExtrudedSurface")) return false;
  out.point(10, vector);
  transform.append(out, 40);
  options.append(out);
  return true;
}

// LOFTEDSURFACE: the transform of the curves (40), the counts of cross sections and guides, the loft options
// (draft angles and magnitudes 41-44, flags 290-297, the normal option 70), then the curves, cross sections
// first. The bit after the counts is 0 in every lofted surface seen; what follows when it is set (a path
// curve, it seems) is not known, and such surfaces are refused.
bool loftedSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const int isolines[2]) {
  DwgBitReader& b = o.bits;
  Transform transform;
  transform.read(b);
  const std::int32_t sections = b.readBitLong(), guides = b.readBitLong();
  if (b.readBit()) {
    context.notDecoded = "LOFTEDSURFACE with a path";
    return false;
  }
  double reals[4];
  for (double& v : reals) v = b.readBitDouble();
  bool flags[8];
  for (bool& f : flags) f = b.readBit();
  const int normal = b.readBitShort();
  std::size_t curves = 0;
  // Each count fits in what is left; their sum, which could pass a bit long's range, is checked too.
  if (!countFits(sections, 4, b) || !countFits(guides, 4, b) || guides > INT32_MAX - sections) return false;
  if (!finishSurface(o, out, context, isolines, sections + guides, "AcDbLoftedSurface", curves)) return false;
  transform.append(out, 40);
  appendCurves(b, curves, sections + guides, 90, out, context.scratch);
  out.integer(70, normal);
  for (int i = 0; i < 4; ++i) out.real(41 + i, reals[i]);
  for (int i = 0; i < 8; ++i) out.integer(290 + i, flags[i] ? 1 : 0);
  return true;
}

// REVOLVEDSURFACE: draft angle, start and end distances and twist (43-46), the solid and close-to-axis flags
// (290, 291), the axis point and vector (10, 11), the revolve and start angles (40, 41), the revolved curve's
// transform (42), the curve.
bool revolvedSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const int isolines[2]) {
  DwgBitReader& b = o.bits;
  double drafts[4];
  for (double& v : drafts) v = b.readBitDouble();
  const bool solid = b.readBit(), closeToAxis = b.readBit();
  const DwgPoint3 axisPoint = b.read3BitDoubles(), axisVector = b.read3BitDoubles();
  const double angle = b.readBitDouble(), start = b.readBitDouble();
  Transform transform;
  transform.read(b);
  if (!finishSurfaceOfOneCurve(o, out, context, isolines, "AcDbRevolvedSurface")) return false;
  out.point(10, axisPoint);
  out.point(11, axisVector);
  out.real(40, angle);
  out.real(41, start);
  transform.append(out, 42);
  for (int i = 0; i < 4; ++i) out.real(43 + i, drafts[i]);
  out.integer(290, solid ? 1 : 0);
  out.integer(291, closeToAxis ? 1 : 0);
  return true;
}

// SWEPTSURFACE: the sweep options, the transforms of the swept curve (40) and of the path (41), the swept curve
// and the path (its type as 91).
bool sweptSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const int isolines[2]) {
  DwgBitReader& b = o.bits;
  SweepOptions options;
  options.read(b);
  Transform sweep, path;
  sweep.read(b);
  path.read(b);
  std::size_t curves = 0;
  if (!finishSurface(o, out, context, isolines, 2, "AcDbSweptSurface", curves)) return false;
  appendCurves(b, appendCurves(b, curves, 1, 90, out, context.scratch), 1, 91, out, context.scratch);
  sweep.append(out, 40);
  path.append(out, 41);
  options.append(out);
  return true;
}

// A made surface: what every surface starts with, then what its kind holds after the isoline counts.
using MadeSurfaceBody = bool (*)(DwgObjectReader&, DwgTagList&, DwgDecodeContext&, const int isolines[2]);
template <MadeSurfaceBody Body>
bool decodeMadeSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  int isolines[2];
  return readSurfaceStart(o, out, context, isolines) && Body(o, out, context, isolines);
}

constexpr DwgEntityEntry kTypes[] = {
    {37, {"REGION", decodeRegion}},
    {38, {"3DSOLID", decodeSolid}},
    {39, {"BODY", decodeRegion}},
    {0, {"EXTRUDEDSURFACE", decodeMadeSurface<extrudedSurface>}},
    {0, {"LOFTEDSURFACE", decodeMadeSurface<loftedSurface>}},
    {0, {"REVOLVEDSURFACE", decodeMadeSurface<revolvedSurface>}},
    {0, {"SWEPTSURFACE", decodeMadeSurface<sweptSurface>}},
    {0, {"SURFACE", decodeSurface}},
    {0, {"PLANESURFACE", decodeSurface}},
    {0, {"NURBSURFACE", decodeSurface}},
};

}  // namespace

DwgEntityFamily dwgSolidEntities() { return kTypes; }

}  // namespace headless
