// The table of R2010 and later drawings: the table content it stores inline, turned into the cell layout
// DXF keeps (rows, columns, their sizes, each cell's type, merge spans, block and value).
#include <cstdio>
#include <cstdlib>

#include "platform/headless/dwg_entities_table.h"

namespace headless {

namespace {

// The least each repeated part takes of the data stream (texts are in the string stream, handles in the
// handle stream): bit longs and bit shorts take 2 bits, bit doubles 2, 3 bit doubles 6.
constexpr std::size_t kMinValueBits = 2 + 2 + 2;            // flags, type, unit type
constexpr std::size_t kMinCustomItemBits = kMinValueBits;   // a name and a value
constexpr std::size_t kMinStyleBits = 2 + 2;                // type, data flag
constexpr std::size_t kMinColumnBits = 2 + 2 + kMinStyleBits + 2 + 2;
constexpr std::size_t kMinRowBits = 2 + 2 + 2 + kMinStyleBits + 2 + 2;
constexpr std::size_t kMinCellBits = 2 + 2 + 2 + 2 + 2 + kMinStyleBits + 2 + 2;
constexpr std::size_t kMinContentBits = 2 + 2 + 2;          // type, attribute count, format flag
constexpr std::size_t kMinAttributeBits = 2;                // its text and handle are elsewhere; its index
constexpr std::size_t kMinBorderBits = 2;                   // edge flags
constexpr std::size_t kMinGeometryBits = 6 + 6 + 2 * 4 + 2;
constexpr std::size_t kMinRangeBits = 2 * 4;
constexpr std::size_t kMinBreakBits = 6 + 2 + 2;

// What the cell layout DXF keeps takes from a content format.
struct ContentFormat {
  std::int32_t overrides = 0, propertyFlags = 0, alignment = 0;
  double rotation = 0, blockScale = 1, textHeight = 0;
};

bool readContentFormat(DwgObjectReader& o, ContentFormat& f, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  f.overrides = b.readBitLong();
  f.propertyFlags = b.readBitLong();
  b.readBitLong();  // value data type
  b.readBitLong();  // value unit type
  o.readText(context.text);  // value format
  f.rotation = b.readBitDouble();
  f.blockScale = b.readBitDouble();
  f.alignment = b.readBitLong();
  readDwgTableColor(o, context.text);
  o.readHandle();  // text style
  f.textHeight = b.readBitDouble();
  return !o.failed();
}

// A cell style of a cell, row, column or the table: its overrides, what it shares with content formats,
// margins and borders.
struct CellStyle {
  bool hasData = false;
  std::int32_t overrides = 0;
  ContentFormat format;
  std::int32_t marginFlags = 0;
  double margins[6] = {};
};

bool readCellStyle(DwgObjectReader& o, CellStyle& s, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  s = CellStyle{};
  b.readBitLong();  // the kind of style
  s.hasData = b.readBitShort() != 0;
  if (!s.hasData) return !b.failed();
  s.overrides = b.readBitLong();
  b.readBitLong();  // merge flags
  readDwgTableColor(o, context.text);  // background
  b.readBitLong();  // content layout
  if (!readContentFormat(o, s.format, context)) return false;
  s.marginFlags = b.readBitShort();
  if (s.marginFlags & 1)
    for (double& m : s.margins) m = b.readBitDouble();
  const std::int32_t borders = b.readBitLong();
  if (!countFits(borders, kMinBorderBits, b)) return false;
  for (std::int32_t k = 0; k < borders && !o.failed(); ++k) {
    if (b.readBitLong() == 0) continue;  // no edge: nothing follows
    b.readBitLong();  // overrides
    b.readBitLong();  // single or double
    readDwgTableColor(o, context.text);
    b.readBitLong();  // lineweight
    o.readHandle();   // linetype
    b.readBitLong();  // invisibility
    b.readBitDouble();  // spacing of double lines
  }
  return !o.failed();
}

// A collection of named values (cells, rows and columns have one), read past; scratch takes the values.
bool skipCustomData(DwgObjectReader& o, DwgTagList& scratch, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const std::int32_t items = b.readBitLong();
  if (!countFits(items, kMinCustomItemBits, b)) return false;
  for (std::int32_t k = 0; k < items; ++k) {
    o.readText(context.text);
    scratch.truncate(0);
    if (!readDwgTableValue(o, scratch, context, true)) return false;
  }
  return !o.failed();
}

bool debugOn() {
  static const bool on = std::getenv("TABLEDBG") != nullptr;
  return on;
}

// One cell of the content, appended to cells in the old layout; its merge groups (173, 175, 176) are
// left as for a cell on its own and set once the merged ranges are read. Returns false for damage.
bool readCell(DwgObjectReader& o, DwgTagList& cells, DwgTagList& scratch, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const std::int32_t state = b.readBitLong();
  o.readText(context.text);  // tooltip
  b.readBitLong();           // custom data
  if (!skipCustomData(o, scratch, context)) return false;
  if (b.readBitLong()) {  // linked data
    o.readHandle();
    b.readBitLong();
    b.readBitLong();
    b.readBitLong();
  }
  const std::int32_t contents = b.readBitLong();
  if (!countFits(contents, kMinContentBits, b)) return false;
  // The first content makes the cell: a value, or a block with its scale and attributes.
  std::int32_t firstType = 0, attributes = 0;
  std::uint64_t block = 0;
  ContentFormat format;
  bool formatted = false;
  DwgTagList& value = context.spliced;
  value.truncate(0);
  for (std::int32_t k = 0; k < contents; ++k) {
    const std::int32_t type = b.readBitLong();
    DwgTagList& into = k == 0 ? value : scratch;
    scratch.truncate(0);
    if (type == 1) {
      if (!readDwgTableValue(o, into, context, true)) return false;
    } else if (type == 2 || type == 4) {
      const std::uint64_t h = o.readHandle();  // a field or a block
      if (k == 0 && type == 4) block = h;
    }
    const std::int32_t count = b.readBitLong();
    if (!countFits(count, kMinAttributeBits, b) || std::size_t(count) > o.handles.bitsLeft() / 8) return false;
    for (std::int32_t a = 0; a < count; ++a) {
      o.readHandle();
      o.readText(context.text);
      b.readBitLong();
    }
    ContentFormat f;
    const bool hasFormat = b.readBitShort() != 0;
    if (hasFormat && !readContentFormat(o, f, context)) return false;
    if (k == 0) {
      firstType = type;
      attributes = count;
      format = f;
      formatted = hasFormat;
    }
  }
  CellStyle style;
  if (!readCellStyle(o, style, context)) return false;
  b.readBitLong();  // the cell style in the table's style
  if (b.readBitLong()) {  // geometry
    b.readBitLong();
    b.readBitDouble();
    b.readBitDouble();
    const std::int32_t geometries = b.readBitLong();
    o.readHandle();
    if (!countFits(geometries, kMinGeometryBits, b)) return false;
    for (std::int32_t k = 0; k < geometries; ++k) {
      b.read3BitDoubles();
      b.read3BitDoubles();
      for (int n = 0; n < 4; ++n) b.readBitDouble();
      b.readBitLong();
    }
  }
  if (o.failed()) return false;
  if (debugOn())
    std::fprintf(stderr, "cell state=%d contents=%d first=%d attrs=%d fmt=%d fo=%x fp=%x fa=%d fs=%g styled=%d so=%x sfo=%x sfp=%x sfa=%d sfs=%g sh=%g\n",
                 state, contents, firstType, attributes, formatted, format.overrides, format.propertyFlags,
                 format.alignment, format.blockScale, style.hasData, style.overrides, style.format.overrides,
                 style.format.propertyFlags, style.format.alignment, style.format.blockScale, style.format.textHeight);
  const bool isBlock = firstType == 4;
  cells.integer(171, isBlock ? 2 : 1);
  cells.integer(172, 0);
  context.slots.emplace_back(cells.size(), 0);
  cells.integer(173, 0);
  cells.integer(174, 0);
  cells.integer(175, 1);
  cells.integer(176, 1);
  cells.integer(91, isBlock ? 1 : firstType == 1 ? 0x40000 : 0);
  cells.integer(178, 0);
  cells.real(145, 0.0);
  if (isBlock) {
    cells.handle(340, block);
    cells.real(144, format.blockScale);
    cells.integer(179, attributes);
    cells.integer(170, 1);
  }
  cells.integer(92, 0);
  if (firstType == 1) {
    cells.append(value, 0, value.size());
  } else {
    cells.text(301, "CELL_VALUE");
    cells.integer(93, isBlock ? 1 : 7);
    cells.integer(90, isBlock ? 4 : 0);
    cells.integer(94, 0);
    cells.text(300, "");
    cells.text(302, "");
    cells.text(304, "ACVALUE_END");
  }
  return true;
}

}  // namespace

bool decodeDwgTableContent(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  DwgInsertPart part;
  if (!readDwgInsertPart(o, part)) return false;
  // The handle stream holds the common handles and the block's before the table's own, which come in the
  // order of the data; the common handles also read the entity's colour names, texts stored after the
  // table's, so they are read here for their place in the handle stream and again at the end.
  const DwgBitReader stringsAt = o.strings, handlesAt = o.handles;
  o.readCommonHandles();
  const std::uint64_t block = o.readHandle();
  skipDwgAttributeHandles(o, part);
  o.strings = stringsAt;

  b.readRawChar();
  o.readHandle();
  b.readBitLong();
  if (o.atLeast(DwgVersion::R2013)) b.readBitLong();
  else b.readBit();
  // The linked data's name and description.
  o.readText(context.text);
  o.readText(context.text);
  DwgTagList sizes, cells, scratch;
  const std::int32_t columns = b.readBitLong();
  if (!countFits(columns, kMinColumnBits, b)) return false;
  CellStyle style;
  for (std::int32_t k = 0; k < columns; ++k) {
    o.readText(context.text);
    b.readBitLong();
    if (!skipCustomData(o, scratch, context) || !readCellStyle(o, style, context)) return false;
    b.readBitLong();
    sizes.real(142, b.readBitDouble());
  }
  const std::size_t widthsEnd = sizes.size();
  const std::int32_t rows = b.readBitLong();
  if (!countFits(rows, kMinRowBits, b)) return false;
  context.slots.clear();
  for (std::int32_t r = 0; r < rows; ++r) {
    const std::int32_t count = b.readBitLong();
    // The layout DXF keeps has a cell for every row and column.
    if (count != columns || !countFits(count, kMinCellBits, b)) return false;
    for (std::int32_t c = 0; c < count; ++c)
      if (!readCell(o, cells, scratch, context)) return false;
    b.readBitLong();
    if (!skipCustomData(o, scratch, context) || !readCellStyle(o, style, context)) return false;
    if (debugOn())
      std::fprintf(stderr, "row styled=%d so=%x sfo=%x th=%g\n", style.hasData, style.overrides, style.format.overrides,
                   style.format.textHeight);
    b.readBitLong();
    sizes.real(141, b.readBitDouble());
  }
  const std::int32_t fields = b.readBitLong();
  if (fields < 0 || b.failed() || std::size_t(fields) > o.handles.bitsLeft() / 8) return false;
  for (std::int32_t k = 0; k < fields; ++k) o.readHandle();
  if (!readCellStyle(o, style, context)) return false;
  if (debugOn())
    std::fprintf(stderr, "table styled=%d so=%x sfo=%x th=%g mf=%x\n", style.hasData, style.overrides,
                 style.format.overrides, style.format.textHeight, style.marginFlags);
  const std::int32_t ranges = b.readBitLong();
  if (!countFits(ranges, kMinRangeBits, b)) return false;
  for (std::int32_t k = 0; k < ranges; ++k) {
    const std::int32_t top = b.readBitLong(), left = b.readBitLong();
    const std::int32_t bottom = b.readBitLong(), right = b.readBitLong();
    if (top < 0 || left < 0 || top > bottom || left > right || bottom >= rows || right >= columns) return false;
    for (std::int32_t r = top; r <= bottom; ++r)
      for (std::int32_t c = left; c <= right; ++c) {
        const std::size_t at = context.slots[std::size_t(r) * std::size_t(columns) + std::size_t(c)].first;
        if (r == top && c == left) {
          cells.setInteger(at + 2, right - left + 1);
          cells.setInteger(at + 3, bottom - top + 1);
        } else {
          cells.setInteger(at, 1);
        }
      }
  }
  const std::uint64_t tableStyle = o.readHandle();

  const int unknown = b.readBitShort();
  const DwgPoint3 direction = b.read3BitDoubles();
  if (b.readBitLong()) {  // break data
    b.readBitLong();
    b.readBitLong();
    b.readBitDouble();
    b.readBitLong();
    b.readBitLong();
    const std::int32_t heights = b.readBitLong();
    if (!countFits(heights, kMinBreakBits, b)) return false;
    for (std::int32_t k = 0; k < heights; ++k) {
      b.read3BitDoubles();
      b.readBitDouble();
      b.readBitLong();
    }
  }
  const std::int32_t breakRows = b.readBitLong();
  if (!countFits(breakRows, kMinBreakBits, b)) return false;
  for (std::int32_t k = 0; k < breakRows; ++k) {
    b.read3BitDoubles();
    b.readBitLong();
    b.readBitLong();
  }
  if (o.failed()) return false;
  const DwgBitReader tableHandlesEnd = o.handles;
  o.handles = handlesAt;
  o.readCommonHandles();
  o.handles = tableHandlesEnd;
  if (debugOn())
    std::fprintf(stderr, "end h=%llX unknown=%d bits %zu strings [%zu,%zu) data end %zu; strings at %zu; handles at %zu of %zu\n",
                 (unsigned long long)o.common.handle, unknown, b.bitPosition(), o.stringsBeginBit, o.stringsEndBit,
                 o.dataEndBit, o.strings.bitPosition(), o.handles.bitPosition(), o.handles.bitSize());

  appendDwgInsertPart(out, part, "AcDbBlockReference", context.nameOf(block));
  extrusion(out, part.extrusion);
  out.text(100, "AcDbTable");
  out.integer(280, 0);
  out.handle(342, tableStyle);
  out.handle(343, block);
  out.point(11, direction);
  out.integer(90, 22);
  out.integer(91, rows);
  out.integer(92, columns);
  for (int code = 93; code <= 96; ++code) out.integer(code, 0);
  out.append(sizes, widthsEnd, sizes.size());
  out.append(sizes, 0, widthsEnd);
  out.append(cells, 0, cells.size());
  return !o.failed();
}

}  // namespace headless
