// The DWG entities of the remaining kinds: multileaders, shapes, meshes, underlays, section objects, lights,
// OLE frames, and the proxies and custom entities of applications this host lacks, which DXF carries as
// proxy records.
#include "platform/headless/dwg_entities.h"

#include <algorithm>

namespace headless {

namespace {

constexpr char kHex[] = "0123456789ABCDEF";
constexpr std::size_t kBinaryChunk = 127;  // bytes a binary group holds, as DXF writers cut them

}  // namespace

void dwgBinaryGroups(const DwgBitReader& stream, std::size_t begin, std::size_t end, int code, DwgTagList& out,
                     std::string& scratch, std::size_t filler) {
  DwgBitReader b = stream;  // a copy: the stream's own position stays
  b.setBitPosition(begin);
  scratch.clear();
  auto put = [&](unsigned byte) {
    scratch += kHex[byte >> 4];
    scratch += kHex[byte & 15];
    if (scratch.size() == 2 * kBinaryChunk) {
      out.text(code, scratch);
      scratch.clear();
    }
  };
  for (std::size_t bit = begin; bit < end && !b.failed(); bit += 8) {
    const std::size_t n = std::min<std::size_t>(8, end - bit);
    unsigned byte = 0;
    if (n == 8) byte = b.readRawChar();
    else
      for (std::size_t k = 0; k < n; ++k) byte |= unsigned(b.readBit()) << (7 - k);
    put(byte);
  }
  for (std::size_t i = 0; i < filler; ++i) put(0xCC);
  if (!scratch.empty()) out.text(code, scratch);
}

void appendDwgGraphics(DwgObjectReader& o, DwgTagList& out, std::string& scratch) {
  const std::size_t size = o.common.graphicsSize;
  if (size == 0) return;
  out.integer(o.atLeast(DwgVersion::R2010) ? 160 : 92, static_cast<long long>(size));
  dwgBinaryGroups(o.bits, o.common.graphicsBegin, o.common.graphicsBegin + 8 * size, 310, out, scratch);
}

namespace {

// What proxies and custom entities share after their class and format: the graphics, the data (from R2007
// on its texts apart), the objects referred to, all as DXF proxy records give them.
bool proxyBody(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  const std::size_t dataBegin = o.bits.bitPosition();
  o.readCommonHandles();
  if (o.failed()) return false;
  appendDwgGraphics(o, out, context.text);
  if (o.atLeast(DwgVersion::R2007)) {
    // The texts first (162, 311), then the rest of the data (161, 310).
    if (o.stringsBeginBit < dataBegin || o.stringsEndBit > o.dataEndBit) return false;
    out.integer(162, static_cast<long long>(o.stringsEndBit - o.stringsBeginBit));
    dwgBinaryGroups(o.bits, o.stringsBeginBit, o.stringsEndBit, 311, out, context.text);
    out.integer(161, static_cast<long long>(o.stringsBeginBit - dataBegin));
    dwgBinaryGroups(o.bits, dataBegin, o.stringsBeginBit, 310, out, context.text);
  } else {
    if (o.dataEndBit < dataBegin) return false;
    out.integer(93, static_cast<long long>(o.dataEndBit - dataBegin));
    dwgBinaryGroups(o.bits, dataBegin, o.dataEndBit, 310, out, context.text);
  }
  // The handles left are the objects referred to, each group by its kind of reference.
  DwgBitReader& h = o.handles;
  while (h.bitsLeft() >= 8 && !h.failed()) {
    const DwgHandleRef ref = h.readHandle(o.common.handle);
    if (h.failed()) break;
    const int kind = ref.code >= 2 && ref.code <= 5 ? ref.code : 4;
    constexpr int kGroups[] = {0, 0, 350, 360, 330, 340};
    out.handle(kGroups[kind], ref.handle);
  }
  out.integer(94, 0);
  return true;
}

void proxyFormat(DwgObjectReader& o, DwgTagList& out, int version, int maintenance) {
  if (o.atLeast(DwgVersion::R2018)) {
    out.integer(71, version);
    out.integer(97, maintenance);
  } else {
    out.integer(95, static_cast<long long>(std::uint32_t(version) | (std::uint32_t(maintenance) << 16)));
  }
}

bool decodeProxy(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  std::int32_t classId = 0;
  int version = 0, maintenance = 0;
  bool dxfData = false;
  if (o.atLeast(DwgVersion::R2000)) {
    classId = b.readBitLong();
    if (o.atLeast(DwgVersion::R2018)) {
      version = b.readBitLong();
      maintenance = b.readBitLong();
    } else {
      const auto format = static_cast<std::uint32_t>(b.readBitLong());
      version = static_cast<int>(format & 0xFFFF);
      maintenance = static_cast<int>(format >> 16);
    }
    dxfData = b.readBit();
  }
  if (b.failed()) return false;
  out.text(100, "AcDbProxyEntity");
  out.integer(90, 498);
  out.integer(91, classId);
  proxyFormat(o, out, version, maintenance);
  out.integer(70, dxfData ? 1 : 0);
  return proxyBody(o, out, context);
}

// An entity of a class this host does not know: carried, as DXF writers without its application carry it,
// as a proxy record of its class number.
bool decodeCustom(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  out.text(100, "AcDbProxyEntity");
  out.integer(90, 498);
  out.integer(91, o.type);
  const DwgClass* c = context.objectClass;
  proxyFormat(o, out, c ? c->dwgVersion : 0, context.maintenanceVersion);
  out.integer(70, 0);
  return proxyBody(o, out, context);
}

constexpr std::size_t kMinPointBits = 3 * 2;  // three bit doubles of value 0

// A colour as multileaders give it in DXF: the whole value (method byte and colour) as one number. Before
// R2004 only the index is stored; it becomes the value of the same method.
void colorGroup(DwgObjectReader& o, DwgTagList& out, int code, std::string& scratch) {
  const DwgColor c = readColorAndNames(o, scratch);
  std::uint32_t value = c.rgb;
  if (!o.atLeast(DwgVersion::R2004))
    value = c.index == 256 ? 0xC0000000u : c.index == 0 ? 0xC1000000u : 0xC3000000u | (std::uint32_t(c.index) & 0xFF);
  out.integer(code, static_cast<std::int32_t>(value));
}

// One line of a leader root: its vertices, the breaks along it and, from R2010 on, its own style.
bool readLeaderLine(DwgObjectReader& o, DwgTagList& out, std::string& scratch) {
  DwgBitReader& b = o.bits;
  out.text(304, "LEADER_LINE{");
  const std::int32_t points = b.readBitLong();
  if (!countFits(points, kMinPointBits, b)) return false;
  for (std::int32_t k = 0; k < points && !b.failed(); ++k) out.point(10, b.read3BitDoubles());
  // Breaks: a count, and when there are any the segment they are on and their start and end points.
  if (b.readBitLong() > 0) {
    out.integer(90, b.readBitLong());
    const std::int32_t pairs = b.readBitLong();
    if (!countFits(pairs, 2 * kMinPointBits, b)) return false;
    for (std::int32_t m = 0; m < pairs && !b.failed(); ++m) {
      out.point(11, b.read3BitDoubles());
      out.point(12, b.read3BitDoubles());
    }
  }
  out.integer(91, b.readBitLong());
  if (o.atLeast(DwgVersion::R2010)) {
    out.integer(170, b.readBitShort());
    colorGroup(o, out, 92, scratch);
    out.handle(340, o.readHandle());
    out.integer(171, b.readBitLong());
    out.real(40, b.readBitDouble());
    out.handle(341, o.readHandle());
    out.integer(93, b.readBitLong());
  }
  out.text(305, "}");
  return !b.failed();
}

// A multileader's leader roots, each with its lines, as LEADER{ groups.
bool readLeaderRoots(DwgObjectReader& o, DwgTagList& out, std::string& scratch) {
  DwgBitReader& b = o.bits;
  const std::int32_t roots = b.readBitLong();
  if (!countFits(roots, 2 * kMinPointBits, b)) return false;
  for (std::int32_t r = 0; r < roots; ++r) {
    out.text(302, "LEADER{");
    out.integer(290, b.readBit() ? 1 : 0);
    out.integer(291, b.readBit() ? 1 : 0);
    out.point(10, b.read3BitDoubles());
    out.point(11, b.read3BitDoubles());
    const std::int32_t breaks = b.readBitLong();
    if (!countFits(breaks, 2 * kMinPointBits, b)) return false;
    for (std::int32_t k = 0; k < breaks && !b.failed(); ++k) {
      out.point(12, b.read3BitDoubles());
      out.point(13, b.read3BitDoubles());
    }
    out.integer(90, b.readBitLong());
    out.real(40, b.readBitDouble());
    const std::int32_t lines = b.readBitLong();
    if (!countFits(lines, 6, b)) return false;
    for (std::int32_t l = 0; l < lines; ++l)
      if (!readLeaderLine(o, out, scratch)) return false;
    if (o.atLeast(DwgVersion::R2010)) out.integer(271, b.readBitShort());
    out.text(303, "}");
  }
  return !b.failed();
}

// The content of a multileader's context: its text (as an MTEXT would hold it) or its block.
bool readMLeaderContent(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const bool text = b.readBit();
  out.integer(290, text ? 1 : 0);
  if (text) {
    o.readText(context.text);
    out.text(304, context.text);
    out.point(11, b.read3BitDoubles());
    out.handle(340, o.readHandle());
    out.point(12, b.read3BitDoubles());
    out.point(13, b.read3BitDoubles());
    for (int code : {42, 43, 44, 45}) out.real(code, b.readBitDouble());
    out.integer(170, b.readBitShort());
    colorGroup(o, out, 90, context.text);
    out.integer(171, b.readBitShort());
    out.integer(172, b.readBitShort());
    colorGroup(o, out, 91, context.text);
    out.real(141, b.readBitDouble());
    out.integer(92, b.readBitLong());
    out.integer(291, b.readBit() ? 1 : 0);
    out.integer(292, b.readBit() ? 1 : 0);
    out.integer(173, b.readBitShort());
    out.integer(293, b.readBit() ? 1 : 0);
    out.real(142, b.readBitDouble());
    out.real(143, b.readBitDouble());
    out.integer(294, b.readBit() ? 1 : 0);
    const std::int32_t columns = b.readBitLong();
    if (!countFits(columns, 2, b)) return false;
    for (std::int32_t k = 0; k < columns && !b.failed(); ++k) out.real(144, b.readBitDouble());
    out.integer(295, b.readBit() ? 1 : 0);
    b.readBit();
    out.integer(296, 0);
    return !b.failed();
  }
  const bool block = b.readBit();
  out.integer(296, block ? 1 : 0);
  if (block) {
    out.handle(341, o.readHandle());
    out.point(14, b.read3BitDoubles());
    out.point(15, b.read3BitDoubles());
    out.point(16, b.read3BitDoubles());
    out.real(46, b.readBitDouble());
    colorGroup(o, out, 93, context.text);
    for (int k = 0; k < 16; ++k) out.real(47, b.readBitDouble());
  }
  return !b.failed();
}

// The multileader's context data: the leaders come first in the data, after the content in DXF.
bool readMLeaderContext(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  DwgTagList& leaders = context.spliced;
  leaders.truncate(0);
  if (!readLeaderRoots(o, leaders, context.text)) return false;
  out.text(300, "CONTEXT_DATA{");
  out.real(40, b.readBitDouble());
  out.point(10, b.read3BitDoubles());
  out.real(41, b.readBitDouble());
  out.real(140, b.readBitDouble());
  out.real(145, b.readBitDouble());
  for (int code : {174, 175, 176, 177}) out.integer(code, b.readBitShort());
  if (!readMLeaderContent(o, out, context)) return false;
  out.point(110, b.read3BitDoubles());
  out.point(111, b.read3BitDoubles());
  out.point(112, b.read3BitDoubles());
  out.integer(297, b.readBit() ? 1 : 0);
  if (o.atLeast(DwgVersion::R2010)) {
    out.integer(273, b.readBitShort());
    out.integer(272, b.readBitShort());
  }
  out.append(leaders, 0, leaders.size());
  out.text(301, "}");
  return !b.failed();
}

// A handle group left out when the handle is null, as DXF writers leave out the optional ones.
void optionalHandle(DwgTagList& out, int code, std::uint64_t handle) {
  if (handle != 0) out.handle(code, handle);
}

bool decodeMLeader(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  // The handles are read along with the data, so the common ones come first.
  o.readCommonHandles();
  out.text(100, "AcDbMLeader");
  if (o.atLeast(DwgVersion::R2010)) out.integer(270, b.readBitShort());
  if (!readMLeaderContext(o, out, context)) return false;
  out.handle(340, o.readHandle());
  out.integer(90, b.readBitLong());
  out.integer(170, b.readBitShort());
  colorGroup(o, out, 91, context.text);
  out.handle(341, o.readHandle());
  out.integer(171, b.readBitLong());
  out.integer(290, b.readBit() ? 1 : 0);
  out.integer(291, b.readBit() ? 1 : 0);
  out.real(41, b.readBitDouble());
  optionalHandle(out, 342, o.readHandle());
  out.real(42, b.readBitDouble());
  out.integer(172, b.readBitShort());
  out.handle(343, o.readHandle());
  for (int code : {173, 95, 174, 175}) out.integer(code, b.readBitShort());
  colorGroup(o, out, 92, context.text);
  out.integer(292, b.readBit() ? 1 : 0);
  optionalHandle(out, 344, o.readHandle());
  colorGroup(o, out, 93, context.text);
  out.point(10, b.read3BitDoubles());
  out.real(43, b.readBitDouble());
  out.integer(176, b.readBitShort());
  out.integer(293, b.readBit() ? 1 : 0);
  // Before R2010 the arrowheads of the leaders are listed here.
  if (!o.atLeast(DwgVersion::R2010)) {
    const std::int32_t arrows = b.readBitLong();
    if (!countFits(arrows, 1, b)) return false;
    for (std::int32_t k = 0; k < arrows && !b.failed(); ++k) {
      out.integer(94, b.readBit() ? 1 : 0);
      out.handle(345, o.readHandle());
    }
  }
  const std::int32_t labels = b.readBitLong();
  if (!countFits(labels, 2 + 2, b)) return false;  // an index and a width; the text may be elsewhere
  for (std::int32_t k = 0; k < labels && !b.failed(); ++k) {
    out.handle(330, o.readHandle());
    o.readText(context.text);
    out.text(302, context.text);
    out.integer(177, b.readBitShort());
    out.real(44, b.readBitDouble());
  }
  out.integer(294, b.readBit() ? 1 : 0);
  out.integer(178, b.readBitShort());
  out.integer(179, b.readBitShort());
  out.real(45, b.readBitDouble());
  if (o.atLeast(DwgVersion::R2010)) {
    for (int code : {271, 273, 272}) out.integer(code, b.readBitShort());
  }
  if (o.atLeast(DwgVersion::R2013)) out.integer(295, b.readBit() ? 1 : 0);
  return !o.failed();
}

// SHAPE: a shape of a shape file placed like a text. The file names the shape; the drawing stores only its
// number, so the name (group 2) is left out.
bool decodeShape(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  const DwgPoint3 at = b.read3BitDoubles();
  const double size = b.readBitDouble();
  const double rotation = b.readBitDouble();
  const double width = b.readBitDouble();
  const double oblique = b.readBitDouble();
  const double t = b.readBitDouble();
  b.readBitShort();  // the shape's number in its file
  const DwgPoint3 e = b.read3BitDoubles();
  o.readCommonHandles();
  o.readHandle();  // the text style of the shape file
  out.text(100, "AcDbShape");
  thickness(out, t);
  out.point(10, at);
  out.real(40, size);
  if (rotation != 0.0) out.real(50, rotation * kDwgDegrees);
  if (width != 1.0) out.real(41, width);
  if (oblique != 0.0) out.real(51, oblique * kDwgDegrees);
  extrusion(out, e);
  return true;
}

// MESH: subdivision meshes, their vertices, faces (each a count and that many vertex indices), edges and
// creases.
bool decodeMesh(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  out.text(100, "AcDbSubDMesh");
  out.integer(71, b.readBitShort());
  out.integer(72, b.readBit() ? 1 : 0);
  out.integer(91, b.readBitLong());
  const std::int32_t vertices = b.readBitLong();
  if (!countFits(vertices, kMinPointBits, b)) return false;
  out.integer(92, vertices);
  for (std::int32_t k = 0; k < vertices && !b.failed(); ++k) out.point(10, b.read3BitDoubles());
  // The face list, edge list and crease list: counts of bit longs (two per edge) and bit doubles.
  const std::int32_t faceList = b.readBitLong();
  if (!countFits(faceList, 2, b)) return false;
  out.integer(93, faceList);
  for (std::int32_t k = 0; k < faceList && !b.failed(); ++k) out.integer(90, b.readBitLong());
  const std::int32_t edges = b.readBitLong();
  if (!countFits(edges, 4, b)) return false;
  out.integer(94, edges);
  for (std::int32_t k = 0; k < 2 * edges && !b.failed(); ++k) out.integer(90, b.readBitLong());
  const std::int32_t creases = b.readBitLong();
  if (!countFits(creases, 2, b)) return false;
  out.integer(95, creases);
  for (std::int32_t k = 0; k < creases && !b.failed(); ++k) out.real(140, b.readBitDouble());
  out.integer(90, b.readBitLong());  // the count of overridden subentities
  o.readCommonHandles();
  return !b.failed();
}

// PDF, DWF and DGN underlays: a page of another file placed, scaled, rotated and clipped.
bool decodeUnderlay(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  const DwgPoint3 normal = b.read3BitDoubles();
  const DwgPoint3 at = b.read3BitDoubles();
  const double rotation = b.readBitDouble();
  DwgPoint3 scale;
  scale.x = b.readBitDouble();
  scale.y = b.readBitDouble();
  scale.z = b.readBitDouble();
  const int flags = b.readRawChar();
  const int contrast = b.readRawChar();
  const int fade = b.readRawChar();
  const std::int32_t vertices = b.readBitLong();
  if (!countFits(vertices, 2 * 64, b)) return false;
  o.readCommonHandles();
  const std::uint64_t definition = o.readHandle();
  out.text(100, "AcDbUnderlayReference");
  out.handle(340, definition);
  out.point(10, at);
  out.real(41, scale.x);
  out.real(42, scale.y);
  out.real(43, scale.z);
  out.real(50, rotation * kDwgDegrees);
  out.point(210, normal);
  out.integer(280, flags);
  out.integer(281, contrast);
  out.integer(282, fade);
  for (std::int32_t k = 0; k < vertices && !b.failed(); ++k) {
    const DwgPoint2 p = b.readRaw2Doubles();
    out.real(11, p.x);
    out.real(21, p.y);
  }
  return !b.failed();
}

// SECTIONOBJECT: a section plane or boundary, its vertices and the bounds of its volume.
bool decodeSection(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  out.text(100, "AcDbSection");
  out.integer(90, b.readBitLong());
  out.integer(91, b.readBitLong());
  o.readText(context.text);
  out.text(1, context.text);
  out.point(10, b.read3BitDoubles());
  out.real(40, b.readBitDouble());
  out.real(41, b.readBitDouble());
  out.integer(70, b.readBitShort());
  const DwgColor c = readColorAndNames(o, context.text);
  out.integer(62, c.index);
  if ((c.rgb >> 24) == 0xC2) out.integer(420, c.rgb & 0xFFFFFF);
  for (int code : {11, 12}) {
    const std::int32_t count = b.readBitLong();
    if (!countFits(count, kMinPointBits, b)) return false;
    out.integer(code == 11 ? 92 : 93, count);
    for (std::int32_t k = 0; k < count && !b.failed(); ++k) out.point(code, b.read3BitDoubles());
  }
  o.readCommonHandles();
  out.handle(360, o.readHandle());
  return !b.failed();
}

// LIGHT: a light's kind, colour, intensity, place and target, its attenuation and its shadows. The
// photometric data of drawings in photometric lighting units, which follows, is not given.
bool decodeLight(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  out.text(100, "AcDbLight");
  out.integer(90, b.readBitLong());
  o.readText(context.text);
  out.text(1, context.text);
  out.integer(70, b.readBitLong());
  out.integer(290, b.readBit() ? 1 : 0);
  if (o.atLeast(DwgVersion::R2004)) {
    // From R2004 on DXF gives the colour as an index, and a true colour besides.
    const DwgColor c = readColorAndNames(o, context.text);
    out.integer(63, c.index);
    if ((c.rgb >> 24) == 0xC2) out.integer(421, c.rgb & 0xFFFFFF);
  } else {
    colorGroup(o, out, 90, context.text);
  }
  out.integer(291, b.readBit() ? 1 : 0);
  out.real(40, b.readBitDouble());
  out.point(10, b.read3BitDoubles());
  out.point(11, b.read3BitDoubles());
  out.integer(72, b.readBitLong());
  out.integer(292, b.readBit() ? 1 : 0);
  out.real(41, b.readBitDouble());
  out.real(42, b.readBitDouble());
  out.real(50, b.readBitDouble() * kDwgDegrees);
  out.real(51, b.readBitDouble() * kDwgDegrees);
  out.integer(293, b.readBit() ? 1 : 0);
  out.integer(73, b.readBitLong());
  out.integer(91, b.readBitShort());
  out.integer(280, b.readRawChar());
  o.readCommonHandles();
  return !b.failed();
}

// OLE2FRAME: an embedded or linked object, its data kept whole. The data starts with the frame's corners
// (after a two-byte header, four points of three raw doubles from the upper left round to the lower left),
// which give DXF's upper left (10) and lower right (11) corners.
bool decodeOle2Frame(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int type = b.readBitShort();
  const int mode = o.atLeast(DwgVersion::R2000) ? b.readBitShort() : 0;
  const std::int32_t size = b.readBitLong();
  if (!countFits(size, 8, b)) return false;
  const std::size_t data = b.bitPosition();
  constexpr std::size_t kCornersBytes = 2 + 4 * 3 * 8;
  DwgPoint3 corner[4];
  if (std::size_t(size) >= kCornersBytes) {
    DwgBitReader corners = b;
    corners.setBitPosition(data + 16);
    for (DwgPoint3& c : corner) c = corners.readRaw3Doubles();
  }
  b.setBitPosition(data + std::size_t(size) * 8);
  if (o.atLeast(DwgVersion::R2000)) b.readRawChar();  // whether the aspect ratio is locked
  o.readCommonHandles();
  if (b.failed()) return false;
  out.text(100, "AcDbOle2Frame");
  out.integer(70, 2);
  out.point(10, corner[0]);
  out.point(11, corner[2]);
  out.integer(71, type);
  if (o.atLeast(DwgVersion::R2000)) out.integer(72, mode);
  out.integer(90, size);
  dwgBinaryGroups(b, data, data + std::size_t(size) * 8, 310, out, context.text);
  out.text(1, "OLE");
  return true;
}

constexpr DwgEntityType kCustom{"ACAD_PROXY_ENTITY", decodeCustom};

constexpr DwgEntityEntry kTypes[] = {
    {0x1F2, {"ACAD_PROXY_ENTITY", decodeProxy}},
    {0, {"MULTILEADER", decodeMLeader}},
    {33, {"SHAPE", decodeShape}},
    {0, {"MESH", decodeMesh}},
    {0, {"PDFUNDERLAY", decodeUnderlay}},
    {0, {"DWFUNDERLAY", decodeUnderlay}},
    {0, {"DGNUNDERLAY", decodeUnderlay}},
    {0, {"SECTIONOBJECT", decodeSection}},
    {0, {"LIGHT", decodeLight}},
    {74, {"OLE2FRAME", decodeOle2Frame}},
};

}  // namespace

DwgEntityFamily dwgOtherEntities() { return kTypes; }
const DwgEntityType* dwgCustomEntityType() { return &kCustom; }

}  // namespace headless
