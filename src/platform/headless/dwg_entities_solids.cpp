// The DWG entities whose shape is modeler data: regions, 3D solids, bodies and the surface classes.
#include <algorithm>
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

// The modeler data every region, solid, body and surface starts with, appended as groups 70 and 1/3. Before
// R2007 the SAT text comes in blocks, each led by its size, with the character transform DXF of those
// releases keeps too (each printable c as 159 - c): it is passed on as stored. From R2007 on the data follow
// unsized, as SAT text or as SAB (written out as SAT text here, the form DXF of those releases holds).
bool readModelerData(DwgObjectReader& o, DwgTagList& out, std::string& scratch) {
  DwgBitReader& b = o.bits;
  out.text(100, "AcDbModelerGeometry");
  // R2013 and later keep the data in the drawing's data store (dwg_datastore.h): the wireframe comes first.
  if (o.atLeast(DwgVersion::R2013)) return true;
  const bool empty = b.readBit();
  b.readBit();
  if (empty) return !b.failed();
  const int version = b.readBitShort();
  out.integer(70, 1);
  scratch.clear();
  if (version == 1) {
    // Blocks until one of size 0; each fits in what is left of the data.
    for (std::size_t blocks = 0;; ++blocks) {
      const std::int32_t size = b.readBitLong();
      if (size == 0) break;
      if (size < 0 || static_cast<std::size_t>(size) > b.bitsLeft() / 8 || blocks > b.bitSize()) return false;
      for (std::int32_t i = 0; i < size; ++i) scratch += static_cast<char>(b.readRawChar());
    }
    emitSatLines(out, scratch);
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
    emitSatLines(out, model.text());
  } else {
    std::size_t marker = scratch.find("End-of-ACIS-data");
    if (marker == std::string::npos) marker = scratch.find("End-of-ASM-data");
    if (marker == std::string::npos) return false;
    used = scratch.find("data", marker) + 4;
    emitSatLines(out, std::string_view(scratch).substr(0, used));
  }
  b.setBitPosition(start + used * 8);
  return !b.failed();
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

// What follows the data: the wireframe, the silhouettes of viewports, and (R2007+) one more number.
void skipWireframe(DwgObjectReader& o) {
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
  b.readBit();  // the data again: never stored by the releases read here
  if (o.atLeast(DwgVersion::R2007)) b.readBitLong();
}

bool decodeModeler(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const char* subclass) {
  if (!readModelerData(o, out, context.text)) return false;
  skipWireframe(o);
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

// Surfaces: the modeler data, then their isoline counts. Plane and NURBS surfaces hold nothing more. Where
// R2013 and later put the counts beside the revision GUID is not known yet: those are refused.
bool decodeSurface(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  if (o.atLeast(DwgVersion::R2013)) {
    context.notDecoded = "R2013 surface";
    return false;
  }
  if (!readModelerData(o, out, context.text)) return false;
  skipWireframe(o);
  DwgBitReader& b = o.bits;
  const int u = b.readBitShort(), v = b.readBitShort();
  o.readCommonHandles();
  out.text(100, "AcDbSurface");
  out.integer(71, u);
  out.integer(72, v);
  return true;
}

// Extruded, lofted, revolved and swept surfaces go on with how they were made (transforms, sweep options, the
// curves they came from), which is not decoded yet: such drawings are refused rather than read without it.
template <const char* Name>
bool decodeMadeSurface(DwgObjectReader&, DwgTagList&, DwgDecodeContext& context) {
  context.notDecoded = Name;
  return false;
}
constexpr char kExtruded[] = "EXTRUDEDSURFACE", kLofted[] = "LOFTEDSURFACE", kRevolved[] = "REVOLVEDSURFACE",
               kSwept[] = "SWEPTSURFACE";

constexpr DwgEntityEntry kTypes[] = {
    {37, {"REGION", decodeRegion}},
    {38, {"3DSOLID", decodeSolid}},
    {39, {"BODY", decodeRegion}},
    {0, {kExtruded, decodeMadeSurface<kExtruded>}},
    {0, {kLofted, decodeMadeSurface<kLofted>}},
    {0, {kRevolved, decodeMadeSurface<kRevolved>}},
    {0, {kSwept, decodeMadeSurface<kSwept>}},
    {0, {"SURFACE", decodeSurface}},
    {0, {"PLANESURFACE", decodeSurface}},
    {0, {"NURBSURFACE", decodeSurface}},
};

}  // namespace

DwgEntityFamily dwgSolidEntities() { return kTypes; }

}  // namespace headless
