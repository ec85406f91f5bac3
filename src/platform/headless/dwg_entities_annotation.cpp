// The DWG entities of annotation: multiline text, the dimensions, leaders, tolerance frames and text along arcs.
#include "platform/headless/dwg_entities.h"

#include <charconv>
#include <cmath>
#include <numbers>
#include <string>

#include "platform/text.h"

namespace headless {

namespace {

bool isXAxis(const DwgPoint3& p) { return p.x == 1.0 && p.y == 0.0 && p.z == 0.0; }

// Reads the fields up to the background, the text into context.text.
void readMTextData(DwgObjectReader& o, DwgMTextData& d, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  d.insertion = b.read3BitDoubles();
  d.extrusion = b.read3BitDoubles();
  d.xAxis = b.read3BitDoubles();
  d.rectWidth = b.readBitDouble();
  if (o.atLeast(DwgVersion::R2007)) d.rectHeight = b.readBitDouble();
  d.textHeight = b.readBitDouble();
  d.attachment = b.readBitShort();
  d.direction = b.readBitShort();
  d.extentsHeight = b.readBitDouble();
  d.extentsWidth = b.readBitDouble();
  o.readText(context.text);
  if (o.atLeast(DwgVersion::R2000)) {
    d.spacingStyle = b.readBitShort();
    d.spacingFactor = b.readBitDouble();
    b.readBit();
  }
  if (o.atLeast(DwgVersion::R2004)) {
    d.background = b.readBitLong();
    if (d.background & 1) {
      d.backgroundScale = b.readBitDouble();
      d.backgroundColor = b.readColor();
      if (d.backgroundColor.hasName()) o.skipText();
      if (d.backgroundColor.hasBookName()) o.skipText();
      d.backgroundTransparency = b.readBitLong();
    }
  }
}

// The columns and the repeated fields of an R2018 text, as DXF gives them after "101 Embedded Object"
// (texts with columns only).
struct MTextColumns {
  bool present = false;
  int attachment = 1;
  DwgPoint3 xAxis, insertion;
  double rectWidth = 0, rectHeight = 0, extentsWidth = 0, extentsHeight = 0;
  int type = 0;
  std::int32_t count = 0;
  double width = 0, gutter = 0;
  bool autoHeight = false, flowReversed = false;
  std::size_t heightsBegin = 0;  // bit position of the column heights
};

bool readMTextColumns(DwgBitReader& b, MTextColumns& c) {
  if (!b.readBit()) return true;  // annotative: no columns of its own
  c.present = true;
  b.readBitShort();  // version
  b.readBit();       // default flag
  c.attachment = b.readBitLong();
  c.xAxis = b.read3BitDoubles();
  c.insertion = b.read3BitDoubles();
  c.rectWidth = b.readBitDouble();
  c.rectHeight = b.readBitDouble();
  c.extentsWidth = b.readBitDouble();
  c.extentsHeight = b.readBitDouble();
  c.type = b.readBitShort();
  if (c.type == 0) return !b.failed();
  c.count = b.readBitLong();
  c.width = b.readBitDouble();
  c.gutter = b.readBitDouble();
  c.autoHeight = b.readBit();
  c.flowReversed = b.readBit();
  // A height takes at least two bits.
  if (c.count < 0 || std::size_t(c.count) > b.bitsLeft() / 2) return false;
  c.heightsBegin = b.bitPosition();
  if (!c.autoHeight && c.type == 2)
    for (std::int32_t i = 0; i < c.count; ++i) b.readBitDouble();
  return !b.failed();
}

}  // namespace

// An R2018 multi-line attribute's text: the common data of an entity but its handles, then the fields of
// a multiline text up to its background.
bool readDwgEmbeddedMText(DwgObjectReader& o, DwgMTextData& m, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  b.readBitPair();  // entity mode
  const std::int32_t reactors = b.readBitLong();
  b.readBit();  // no extension dictionary
  b.readBit();  // data in the data store
  b.readEntityColor();
  b.readBitDouble();  // linetype scale
  b.readBitPair();    // linetype, plot style and material kinds
  b.readBitPair();
  b.readBitPair();
  b.readRawChar();  // shadows
  b.readBit();      // visual styles
  b.readBit();
  b.readBit();
  b.readBitShort();  // invisible
  b.readRawChar();   // lineweight
  if (reactors != 0) return false;
  readMTextData(o, m, context);
  MTextColumns columns;  // DXF gives none for these
  return readMTextColumns(b, columns) && !b.failed();
}

namespace {

void emitMTextColumns(DwgBitReader& b, DwgTagList& out, const MTextColumns& c) {
  out.text(101, "Embedded Object");
  out.integer(70, c.attachment);
  out.point(10, c.xAxis);
  out.point(11, c.insertion);
  out.real(40, c.rectWidth);
  out.real(41, c.rectHeight);
  out.real(42, c.extentsWidth);
  out.real(43, c.extentsHeight);
  out.integer(71, c.type);
  out.integer(72, c.count);
  out.real(44, c.width);
  out.real(45, c.gutter);
  out.integer(73, c.autoHeight ? 1 : 0);
  out.integer(74, c.flowReversed ? 1 : 0);
  if (c.autoHeight || c.type != 2) return;
  // The heights are read again where they stand, so that no array is kept for them.
  const std::size_t end = b.bitPosition();
  b.setBitPosition(c.heightsBegin);
  for (std::int32_t i = 0; i < c.count; ++i) out.real(46, b.readBitDouble());
  b.setBitPosition(end);
}

// The AcDbMText groups of the fields before the columns, but its marker.
void emitMTextBody(DwgObjectReader& o, DwgTagList& out, const DwgMTextData& d, DwgDecodeContext& context,
                   std::string_view style) {
  out.point(10, d.insertion);
  out.real(40, d.textHeight);
  out.real(41, d.rectWidth);
  if (o.atLeast(DwgVersion::R2007)) out.real(46, d.rectHeight);
  out.integer(71, d.attachment);
  out.integer(72, d.direction);
  longText(out, context.text, o.atLeast(DwgVersion::R2007), context.codePage, context.scratch);
  // DXF leaves out the default style, the default direction and the extents the text was last drawn with.
  if (!platform::equalsIgnoreCase(style, "Standard")) out.text(7, style);
  extrusion(out, d.extrusion);
  if (!isXAxis(d.xAxis)) out.point(11, d.xAxis);
  if (o.atLeast(DwgVersion::R2000)) {
    out.integer(73, d.spacingStyle);
    out.real(44, d.spacingFactor);
  }
  if (d.background != 0) {
    out.integer(90, d.background);
    if (d.background & 1) {
      // From R2004 on the method byte says how the colour is given: 0xC3 an index in the low byte, 0xC2
      // a true colour (whose nearest index DXF writers add; it is not stored).
      const DwgColor& c = d.backgroundColor;
      const std::uint32_t method = c.rgb >> 24;
      out.integer(63, method == 0xC3 ? int(c.rgb & 0xFF) : c.index);
      if (method == 0xC2) out.integer(421, c.rgb & 0xFFFFFF);
      out.real(45, d.backgroundScale);
      out.integer(441, d.backgroundTransparency);
    }
  }
}

bool decodeMText(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgMTextData d;
  readMTextData(o, d, context);
  MTextColumns columns;
  if (o.atLeast(DwgVersion::R2018) && !readMTextColumns(o.bits, columns)) return false;
  o.readCommonHandles();
  const std::uint64_t style = o.readHandle();
  out.text(100, "AcDbMText");
  emitMTextBody(o, out, d, context, context.nameOf(style));
  // DXF gives the repeated fields only with the columns.
  if (columns.present && columns.type != 0) emitMTextColumns(o.bits, out, columns);
  return true;
}

// ---- dimensions ----

// The fields all dimensions share.
struct DimensionData {
  int version = 0;
  DwgPoint3 extrusion{0, 0, 1};
  DwgPoint2 textMidpoint, cloneInsertion;
  double elevation = 0;
  int flags = 0;
  double textRotation = 0, horizontalDirection = 0, insertionRotation = 0;
  DwgPoint3 insertionScale{1, 1, 1};
  int attachment = 5, spacingStyle = 1;
  double spacingFactor = 1, measurement = 0;
  bool unknown = false, flipArrow1 = false, flipArrow2 = false;
};

// Reads the shared fields, the user text into context.text.
void readDimensionData(DwgObjectReader& o, DimensionData& d, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  if (o.atLeast(DwgVersion::R2010)) d.version = b.readRawChar();
  d.extrusion = b.read3BitDoubles();
  d.textMidpoint = b.readRaw2Doubles();
  d.elevation = b.readBitDouble();
  d.flags = b.readRawChar();
  o.readText(context.text);
  d.textRotation = b.readBitDouble();
  d.horizontalDirection = b.readBitDouble();
  d.insertionScale = b.read3BitDoubles();
  d.insertionRotation = b.readBitDouble();
  if (o.atLeast(DwgVersion::R2000)) {
    d.attachment = b.readBitShort();
    d.spacingStyle = b.readBitShort();
    d.spacingFactor = b.readBitDouble();
    d.measurement = b.readBitDouble();
  }
  if (o.atLeast(DwgVersion::R2007)) {
    d.unknown = b.readBit();
    d.flipArrow1 = b.readBit();
    d.flipArrow2 = b.readBit();
  }
  d.cloneInsertion = b.readRaw2Doubles();
}

// The dimension style and the anonymous block after the common handles.
struct DimensionHandles {
  std::uint64_t style = 0, block = 0;
};
DimensionHandles readDimensionHandles(DwgObjectReader& o) {
  o.readCommonHandles();
  DimensionHandles h;
  h.style = o.readHandle();
  h.block = o.readHandle();
  return h;
}

// The AcDbDimension groups. kind is the type of 70; the stored flags give "the block is this
// dimension's own" (32) and, inverted, "the text stands where the user put it" (128); ordinates add
// their axis (64).
void emitDimensionData(DwgObjectReader& o, DwgTagList& out, const DimensionData& d, DwgDecodeContext& context,
                       const DimensionHandles& h, int kind, const DwgPoint3& definition) {
  out.text(100, "AcDbDimension");
  if (o.atLeast(DwgVersion::R2010)) out.integer(280, d.version);
  out.text(2, context.nameOf(h.block));
  out.point(10, definition);
  out.point(11, d.textMidpoint, d.elevation);
  if (d.cloneInsertion.x != 0.0 || d.cloneInsertion.y != 0.0) out.point(12, d.cloneInsertion, d.elevation);
  out.integer(70, kind | ((d.flags & 2) ? 32 : 0) | ((d.flags & 1) ? 0 : 128));
  if (!context.text.empty()) out.text(1, caretText(context.text, context.scratch));
  if (o.atLeast(DwgVersion::R2000)) {
    out.integer(71, d.attachment);
    if (d.spacingStyle != 1) out.integer(72, d.spacingStyle);
    if (d.spacingFactor != 1.0) out.real(41, d.spacingFactor);
    out.real(42, d.measurement);
  }
  if (o.atLeast(DwgVersion::R2007)) {
    out.integer(73, d.unknown ? 1 : 0);
    out.integer(74, d.flipArrow1 ? 1 : 0);
    out.integer(75, d.flipArrow2 ? 1 : 0);
  }
  if (d.textRotation != 0.0) out.real(53, d.textRotation * kDwgDegrees);
  if (d.horizontalDirection != 0.0) out.real(51, d.horizontalDirection * kDwgDegrees);
  if (d.insertionRotation != 0.0) out.real(54, d.insertionRotation * kDwgDegrees);
  extrusion(out, d.extrusion);
  out.text(3, context.nameOf(h.style));
}

// How each kind of dimension stores the fields of its own after the shared ones, and in which order DXF
// gives them. A field is stored as a point (3BD), a point in the dimension's plane (2RD, at its elevation),
// a number (BD), an angle (BD, in degrees in DXF and left out when 0), a bit or a byte of flags.
enum class Stored : std::uint8_t { End, Point, PlanePoint, Number, Angle, Bit, Flags };
struct DimensionField {
  Stored kind = Stored::End;
  std::int16_t code = 0;
};
constexpr std::size_t kDimensionFields = 11;
struct DimensionLayout {
  std::uint16_t type;         // the fixed type; 0 for the class types
  int kind;                   // the type in the low bits of 70
  const char* subclass;
  const char* trailer;                      // a second marker after the fields (rotated dimensions), or null
  DimensionField stored[kDimensionFields];  // in file order; 10, the definition point, goes to AcDbDimension
  std::int16_t written[10];                 // in DXF order, 0 ending the list
};
constexpr Stored P = Stored::Point, Q = Stored::PlanePoint, N = Stored::Number, A = Stored::Angle,
                 B = Stored::Bit, F = Stored::Flags;
constexpr DimensionLayout kDimensions[] = {
    {20, 6, "AcDbOrdinateDimension", nullptr, {{P, 10}, {P, 13}, {P, 14}, {F, 70}}, {13, 14}},
    {21, 0, "AcDbAlignedDimension", "AcDbRotatedDimension", {{P, 13}, {P, 14}, {P, 10}, {A, 52}, {A, 50}},
     {13, 14, 50, 52}},
    {22, 1, "AcDbAlignedDimension", nullptr, {{P, 13}, {P, 14}, {P, 10}, {A, 52}}, {13, 14, 52}},
    {23, 5, "AcDb3PointAngularDimension", nullptr, {{P, 10}, {P, 13}, {P, 14}, {P, 15}}, {13, 14, 15}},
    // Two lines: the arc point first, in the dimension's plane; the second line's end last.
    {24, 2, "AcDb2LineAngularDimension", nullptr, {{Q, 16}, {P, 13}, {P, 14}, {P, 15}, {P, 10}}, {13, 14, 15, 16}},
    {25, 4, "AcDbRadialDimension", nullptr, {{P, 10}, {P, 15}, {N, 40}}, {15, 40}},
    {26, 3, "AcDbDiametricDimension", nullptr, {{P, 15}, {P, 10}, {N, 40}}, {15, 40}},
    {0, 5, "AcDbArcDimension", nullptr,
     {{P, 10}, {P, 13}, {P, 14}, {P, 15}, {B, 70}, {N, 40}, {N, 41}, {B, 71}, {P, 16}, {P, 17}},
     {13, 14, 15, 70, 40, 41, 71, 16, 17}},
    // A jogged radius: the centre, the chord point, the jog angle, the centre drawn and the jog.
    {0, 9, "AcDbRadialDimensionLarge", nullptr, {{P, 10}, {P, 15}, {N, 40}, {P, 13}, {P, 14}}, {13, 14, 15, 40}},
};

bool decodeDimension(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, const DimensionLayout& layout) {
  DimensionData d;
  readDimensionData(o, d, context);
  DwgBitReader& b = o.bits;
  struct Value {
    DwgPoint3 point;
    double number = 0;
  } values[kDimensionFields];
  DwgPoint3 definition;
  int kind = layout.kind;
  for (std::size_t i = 0; i < kDimensionFields && layout.stored[i].kind != Stored::End; ++i) {
    Value& v = values[i];
    switch (layout.stored[i].kind) {
      case Stored::Point: v.point = b.read3BitDoubles(); break;
      case Stored::PlanePoint: {
        const DwgPoint2 p = b.readRaw2Doubles();
        v.point = {p.x, p.y, d.elevation};
        break;
      }
      case Stored::Number: case Stored::Angle: v.number = b.readBitDouble(); break;
      case Stored::Bit: v.number = b.readBit() ? 1 : 0; break;
      case Stored::Flags: kind |= (b.readRawChar() & 1) ? 64 : 0; break;  // ordinates: along X
      case Stored::End: break;
    }
    if (layout.stored[i].code == 10) definition = v.point;
  }
  const DimensionHandles h = readDimensionHandles(o);
  emitDimensionData(o, out, d, context, h, kind, definition);
  out.text(100, layout.subclass);
  for (std::int16_t code : layout.written) {
    std::size_t i = 0;
    while (i + 1 < kDimensionFields && layout.stored[i].code != code) ++i;
    if (code == 0 || layout.stored[i].code != code) break;
    const Value& v = values[i];
    switch (layout.stored[i].kind) {
      case Stored::Point: case Stored::PlanePoint: out.point(code, v.point); break;
      case Stored::Number: out.real(code, v.number); break;
      case Stored::Angle:
        if (v.number != 0.0) out.real(code, v.number * kDwgDegrees);
        break;
      case Stored::Bit: out.integer(code, static_cast<int>(v.number)); break;
      case Stored::Flags: case Stored::End: break;
    }
  }
  if (layout.trailer) out.text(100, layout.trailer);
  return true;
}

// The decoder of each kind: its layout found by type (the class types by their place in the table).
template <std::size_t kIndex>
bool decodeDimensionOf(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  return decodeDimension(o, out, context, kDimensions[kIndex]);
}

// ---- leaders and tolerances ----

// A leader: its vertices, its plane and the annotation it leads to, drawn with its dimension style.
bool decodeLeader(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  b.readBit();
  const int annotation = b.readBitShort();
  const int path = b.readBitShort();
  const std::int32_t count = b.readBitLong();
  // A point takes at least six bits.
  if (count < 0 || std::size_t(count) > b.bitsLeft() / 6 || b.failed()) return false;
  const std::size_t pointsBegin = b.bitPosition();
  DwgPoint3 previous, last;
  for (std::int32_t i = 0; i < count; ++i) {
    previous = last;
    last = b.read3BitDoubles();
  }
  b.read3BitDoubles();  // origin
  const DwgPoint3 e = b.read3BitDoubles();
  const DwgPoint3 xDirection = b.read3BitDoubles();
  const DwgPoint3 blockOffset = b.read3BitDoubles();
  DwgPoint3 endOffset;
  if (o.atLeast(DwgVersion::R14)) endOffset = b.read3BitDoubles();
  if (!o.atLeast(DwgVersion::R2000)) b.readBitDouble();  // the gap of its style when made
  // The size of the annotation's box is gone from R2010 on.
  const bool box = !o.atLeast(DwgVersion::R2010);
  const double boxHeight = box ? b.readBitDouble() : 0.0;
  const double boxWidth = box ? b.readBitDouble() : 0.0;
  const bool hookOnX = b.readBit();
  const bool arrowhead = b.readBit();
  b.readBitShort();  // arrowhead type
  int byBlockColor = -1;
  double arrowSize = 0;  // R13 and R14: its style's, times its scale, when made
  if (!o.atLeast(DwgVersion::R2000)) {
    arrowSize = b.readBitDouble();
    b.readBit();
    b.readBit();
    b.readBitShort();
    byBlockColor = b.readBitShort();
    b.readBit();
    b.readBit();
  } else {
    b.readBit();
    b.readBit();
  }
  const std::size_t end = b.bitPosition();
  o.readCommonHandles();
  const std::uint64_t annotationHandle = o.readHandle();
  const std::uint64_t style = o.readHandle();
  if (b.failed()) return false;
  out.text(100, "AcDbLeader");
  out.text(3, context.nameOf(style));
  if (!arrowhead) out.integer(71, 0);
  if (path != 0) out.integer(72, path);
  out.integer(73, annotation);
  out.integer(74, hookOnX ? 1 : 0);
  // A straight leader to a multiline text gets a hook line, drawn toward the text, when its last segment is
  // more than 15 degrees off the text's direction. DXF gives the hook's start as a vertex before the last,
  // as long as the arrows of the leader's dimension style.
  bool hook = false;
  if (annotation == 0 && path == 0 && count >= 2) {
    const DwgPoint3 v{last.x - previous.x, last.y - previous.y, last.z - previous.z};
    const DwgPoint3& x = xDirection;
    const double along = v.x * x.x + v.y * x.y + v.z * x.z;
    const double across = std::hypot(v.y * x.z - v.z * x.y, v.z * x.x - v.x * x.z, v.x * x.y - v.y * x.x);
    const double angle = std::atan2(across, along);
    constexpr double kTolerance = std::numbers::pi / 12;
    hook = angle > kTolerance && angle < std::numbers::pi - kTolerance;
  }
  if (hook) out.integer(75, 1);
  if (box) {
    out.real(40, boxHeight);
    out.real(41, boxWidth);
  }
  out.integer(76, count + (hook ? 1 : 0));
  b.setBitPosition(pointsBegin);
  for (std::int32_t i = 0; i + 1 < count; ++i) out.point(10, b.read3BitDoubles());
  b.setBitPosition(end);
  if (hook) {
    // The hook runs from its start toward the text: along the text's direction, or against it (74).
    if (o.atLeast(DwgVersion::R2000)) {
      auto it = context.hookLengths.find(style);
      arrowSize = it == context.hookLengths.end() ? 0.18 : it->second;
    }
    const double toward = hookOnX ? arrowSize : -arrowSize;
    out.point(10, DwgPoint3{last.x + toward * xDirection.x, last.y + toward * xDirection.y,
                            last.z + toward * xDirection.z});
  }
  if (count > 0) out.point(10, last);
  if (byBlockColor >= 0) out.integer(77, byBlockColor);
  if (annotationHandle) out.handle(340, annotationHandle);
  extrusion(out, e);
  if (!isXAxis(xDirection)) out.point(211, xDirection);
  if (blockOffset.x != 0.0 || blockOffset.y != 0.0 || blockOffset.z != 0.0) out.point(212, blockOffset);
  if (endOffset.x != 0.0 || endOffset.y != 0.0 || endOffset.z != 0.0) out.point(213, endOffset);
  return true;
}

bool decodeTolerance(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  if (!o.atLeast(DwgVersion::R2000)) {
    b.readBitShort();
    b.readBitDouble();  // height
    b.readBitDouble();  // gap
  }
  const DwgPoint3 at = b.read3BitDoubles();
  const DwgPoint3 xDirection = b.read3BitDoubles();
  const DwgPoint3 e = b.read3BitDoubles();
  o.readText(context.text);
  o.readCommonHandles();
  const std::uint64_t style = o.readHandle();
  out.text(100, "AcDbFcf");
  out.text(3, context.nameOf(style));
  out.point(10, at);
  out.text(1, caretText(context.text, context.scratch));
  extrusion(out, e);
  if (!isXAxis(xDirection)) out.point(11, xDirection);
  return true;
}

// A number the entity keeps as a text ("2.5"); false when the text is not one.
bool readNumberText(DwgObjectReader& o, std::string& buffer, double& value) {
  o.readText(buffer);
  const char* end = buffer.data() + buffer.size();
  const auto [stop, error] = std::from_chars(buffer.data(), end, value);
  return error == std::errc() && stop == end && std::isfinite(value);
}

// ARCALIGNEDTEXT, text set along an arc (a class of an application, stored in full by the drawing): its height,
// width factor and character spacing as texts, the style's name, the font and big font, the text, the offsets
// from the arc and from its right and left ends as texts, the arc's centre, radius and start and end angles,
// the extrusion, a colour (bit long), eleven flags (bit shorts), and the arc as a handle. Which stored flag
// is which DXF group (70-79, 280), and how the colour becomes group 90, the drawings read so far do not tell
// (their flags are all but one 0): those groups are left out. DXF gives the angles in degrees and the
// extrusion even when it is the default. The texts' places among the other fields, which releases before
// R2007 store together, are not known either: such drawings are refused.
bool decodeArcAlignedText(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  if (!o.atLeast(DwgVersion::R2007)) {
    context.notDecoded = "ARCALIGNEDTEXT before R2007";
    return false;
  }
  DwgBitReader& b = o.bits;
  double sizes[3];  // height, width factor, character spacing
  for (double& v : sizes)
    if (!readNumberText(o, context.text, v)) return false;
  std::string style, font, bigFont, text;
  o.readText(style);
  o.readText(font);
  o.readText(bigFont);
  o.readText(text);
  double offsets[3];  // from the arc, from its right end, from its left end
  for (double& v : offsets)
    if (!readNumberText(o, context.text, v)) return false;
  const DwgPoint3 centre = b.read3BitDoubles();
  const double radius = b.readBitDouble(), start = b.readBitDouble(), end = b.readBitDouble();
  const DwgPoint3 normal = b.read3BitDoubles();
  b.readBitLong();  // colour
  for (int i = 0; i < 11; ++i) b.readBitShort();
  o.readCommonHandles();
  const std::uint64_t arc = o.readHandle();
  if (o.failed()) return false;
  out.text(100, "AcDbArcAlignedText");
  out.text(1, caretText(text, context.scratch));
  out.text(2, font);
  out.text(3, bigFont);
  out.text(7, style);
  out.point(10, centre);
  out.real(40, radius);
  out.real(41, sizes[1]);
  out.real(42, sizes[0]);
  out.real(43, sizes[2]);
  for (int i = 0; i < 3; ++i) out.real(44 + i, offsets[i]);
  out.real(50, start * kDwgDegrees);
  out.real(51, end * kDwgDegrees);
  out.point(210, normal);
  if (arc) out.handle(330, arc);
  return true;
}

constexpr DwgEntityEntry kTypes[] = {
    {0, {"ARCALIGNEDTEXT", decodeArcAlignedText}},
    {20, {"DIMENSION", decodeDimensionOf<0>}},
    {21, {"DIMENSION", decodeDimensionOf<1>}},
    {22, {"DIMENSION", decodeDimensionOf<2>}},
    {23, {"DIMENSION", decodeDimensionOf<3>}},
    {24, {"DIMENSION", decodeDimensionOf<4>}},
    {25, {"DIMENSION", decodeDimensionOf<5>}},
    {26, {"DIMENSION", decodeDimensionOf<6>}},
    {0, {"ARC_DIMENSION", decodeDimensionOf<7>}},
    {0, {"LARGE_RADIAL_DIMENSION", decodeDimensionOf<8>}},
    {44, {"MTEXT", decodeMText}},
    {45, {"LEADER", decodeLeader}},
    {46, {"TOLERANCE", decodeTolerance}},
};

}  // namespace

DwgEntityFamily dwgAnnotationEntities() { return kTypes; }

// The text's own style is not named: its handles, among those of its entity data, are not read.
void appendDwgEmbeddedMText(DwgObjectReader& o, DwgTagList& out, const DwgMTextData& m, DwgDecodeContext& context) {
  out.text(101, "Embedded Object");
  emitMTextBody(o, out, m, context, "Standard");
}

}  // namespace headless
