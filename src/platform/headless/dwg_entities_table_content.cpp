// The table of R2010 and later drawings: the table content it stores inline, turned into the cell layout
// DXF keeps (rows, columns, their sizes, each cell's type, merge spans, block and value).
#include "platform/headless/dwg_entities_table.h"

#include <array>
#include <vector>

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
  int color = 0;
  std::uint64_t textStyle = 0;
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
  f.color = readDwgTableColor(o, context.text);
  f.textStyle = o.readHandle();
  f.textHeight = b.readBitDouble();
  return !o.failed();
}

// The overrides of one edge of a cell: its lineweight, colour and visibility when overridden.
struct Edge {
  std::int32_t overrides = 0;  // 2 lineweight, 8 colour, 0x10 visibility
  int color = 0, lineweight = 0;
};

// A cell style of a cell, row, column or the table: its overrides, what it shares with content formats,
// margins and the outer edges' overrides (top, right, bottom, left).
struct CellStyle {
  bool hasData = false;
  std::int32_t overrides = 0, values = 0;  // which properties it overrides; the values of flag properties
  int background = 0;
  ContentFormat format;
  std::int32_t marginFlags = 0;
  double margins[6] = {};
  Edge edges[4];
};

bool readCellStyle(DwgObjectReader& o, CellStyle& s, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  s = CellStyle{};
  b.readBitLong();  // the kind of style
  s.hasData = b.readBitShort() != 0;
  if (!s.hasData) return !b.failed();
  s.overrides = b.readBitLong();
  s.values = b.readBitLong();
  s.background = readDwgTableColor(o, context.text);
  b.readBitLong();  // content layout
  if (!readContentFormat(o, s.format, context)) return false;
  s.marginFlags = b.readBitShort();
  if (s.marginFlags & 1)
    for (double& m : s.margins) m = b.readBitDouble();
  const std::int32_t borders = b.readBitLong();
  if (!countFits(borders, kMinBorderBits, b)) return false;
  for (std::int32_t k = 0; k < borders && !o.failed(); ++k) {
    const std::int32_t which = b.readBitLong();  // 1 top, 2 right, 4 bottom, 8 left, 0x10 and 0x20 inside
    if (which == 0) continue;                     // nothing follows
    Edge e;
    e.overrides = b.readBitLong();
    b.readBitLong();  // single or double
    e.color = readDwgTableColor(o, context.text);
    e.lineweight = b.readBitLong();
    o.readHandle();     // linetype
    b.readBitLong();    // invisibility
    b.readBitDouble();  // spacing of double lines
    for (int edge = 0; edge < 4; ++edge)
      if (which == 1 << edge) s.edges[edge] = e;
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

// What the cell layout DXF keeps takes from a cell: its first content (a value, or a block with its
// attributes), that content's format overrides, and the cell's style overrides; value marks its value's
// groups in the row's list of values.
struct CellRead {
  std::int32_t type = 0, attributes = 0;
  std::uint64_t block = 0;
  ContentFormat format;
  CellStyle style;
  std::size_t valueBegin = 0, valueEnd = 0;
};

// Reads one cell, its value's groups appended to values. False for damage.
bool readCell(DwgObjectReader& o, CellRead& cell, DwgTagList& values, DwgTagList& scratch,
              DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  cell = CellRead{};
  b.readBitLong();           // state
  o.readText(context.text);  // tooltip
  b.readBitLong();           // custom data
  if (!skipCustomData(o, scratch, context)) return false;
  if (b.readBitLong()) {  // linked data: its link, rows, columns and a number
    o.readHandle();
    b.readBitLong();
    b.readBitLong();
    b.readBitLong();
  }
  const std::int32_t contents = b.readBitLong();
  if (!countFits(contents, kMinContentBits, b)) return false;
  cell.valueBegin = cell.valueEnd = values.size();
  for (std::int32_t k = 0; k < contents; ++k) {
    const std::int32_t type = b.readBitLong();
    const bool first = k == 0;
    if (type == 1) {
      scratch.truncate(0);
      if (!readDwgTableValue(o, first ? values : scratch, context, true)) return false;
    } else if (type == 2 || type == 4) {
      const std::uint64_t h = o.readHandle();  // a field or a block
      if (first && type == 4) cell.block = h;
    }
    if (first) cell.valueEnd = values.size();
    const std::int32_t attributes = b.readBitLong();
    if (!countFits(attributes, kMinAttributeBits, b) || std::size_t(attributes) > o.handles.bitsLeft() / 8)
      return false;
    for (std::int32_t a = 0; a < attributes; ++a) {
      o.readHandle();  // its definition
      o.readText(context.text);
      b.readBitLong();  // its index
    }
    ContentFormat format;
    if (b.readBitShort() != 0 && !readContentFormat(o, format, context)) return false;
    if (first) {
      cell.type = type;
      cell.attributes = attributes;
      cell.format = format;
    }
  }
  if (!readCellStyle(o, cell.style, context)) return false;
  b.readBitLong();        // the cell style of the table's style it starts from
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
  return !o.failed();
}

// The property bits of cell styles and content formats this layout takes.
constexpr std::int32_t kDataType = 0x01, kDataFormat = 0x02, kScale = 0x08, kAlignment = 0x10,
                       kContentColor = 0x20, kTextStyle = 0x40, kTextHeight = 0x80, kAutoScale = 0x100,
                       kBackground = 0x200, kFlowUp = 0x10000;
// And those of an edge.
constexpr std::int32_t kEdgeLineweight = 0x02, kEdgeColor = 0x08, kEdgeVisibility = 0x10;

// A cell in the layout DXF keeps: type, flags, merge spans (left for a cell on its own; slots takes the
// place of its 173 group for the merged ranges read later), its overrides, its block and its value.
// rowHeight is the text height the cell's row overrides, 0 when it does not.
void appendCell(const CellRead& cell, const DwgTagList& values, double rowHeight, DwgTagList& out,
                DwgDecodeContext& context) {
  const bool isBlock = cell.type == 4;
  const ContentFormat& f = cell.format;
  const CellStyle& s = cell.style;
  const std::int32_t styled = s.hasData ? s.overrides : 0;
  // The cell's override flags as older releases store them (alignment 1, background 2 and 4, content colour
  // 8, text style 0x10, text height 0x20, each edge's colour, lineweight and visibility from 0x40 on), and
  // 0x40000, which DXF writers set for contents whose data type or format is their own.
  const double textHeight = (f.overrides & kTextHeight) ? f.textHeight : rowHeight;
  std::int32_t flags = 0;
  if (styled & kAlignment) flags |= 0x01;
  if (styled & kBackground) flags |= 0x02 | 0x04;
  // The content's own colour, else the cell's.
  const bool contentColor = (f.overrides & kContentColor) != 0;
  if (contentColor || (styled & kContentColor)) flags |= 0x08;
  if (f.overrides & kTextStyle) flags |= 0x10;
  if (textHeight != 0) flags |= 0x20;
  int edgeFlags = 0;
  for (int k = 0; k < 4; ++k) {
    const std::int32_t e = s.edges[k].overrides;
    if (e & (kEdgeColor | kEdgeLineweight)) edgeFlags |= 1 << k;
    if (e & kEdgeColor) flags |= 0x40 << k;
    if (e & kEdgeLineweight) flags |= 0x400 << k;
    if (e & (kEdgeColor | kEdgeLineweight | kEdgeVisibility)) flags |= 0x4000 << k;
  }
  if (f.overrides & (kDataType | kDataFormat)) flags |= 0x40000;
  out.integer(171, isBlock ? 2 : 1);
  out.integer(172, edgeFlags);
  context.slots.emplace_back(out.size(), 0);
  out.integer(173, 0);
  out.integer(174, isBlock && (f.overrides & kAutoScale) && (f.propertyFlags & kAutoScale) ? 1 : 0);
  out.integer(175, 1);
  out.integer(176, 1);
  out.integer(91, flags);
  out.integer(178, 0);
  out.real(145, f.rotation * kDwgDegrees);
  if (isBlock) {
    out.handle(340, cell.block);
    out.real(144, (f.overrides & kScale) ? f.blockScale : 1.0);
    out.integer(179, cell.attributes);
  }
  if (flags & 0x01) out.integer(170, s.format.alignment);
  if (flags & 0x04) out.integer(63, s.background);
  if (flags & 0x08) out.integer(64, contentColor ? f.color : s.format.color);
  if (flags & 0x02) out.integer(283, 0);  // a background colour, so not filled with nothing
  if (flags & 0x10) out.handle(7, f.textStyle);
  if (flags & 0x20) out.real(140, textHeight);
  // The edges right, bottom, left, top, as DXF lists them: lineweight, then colour.
  constexpr int kColorCodes[] = {69, 65, 66, 68};
  for (int k : {1, 2, 3, 0}) {
    const Edge& e = s.edges[k];
    if (e.overrides & kEdgeLineweight) out.integer(kColorCodes[k] + 210, e.lineweight);
    if (e.overrides & kEdgeColor) out.integer(kColorCodes[k], e.color);
  }
  out.integer(92, 0);
  if (cell.valueEnd > cell.valueBegin) {
    out.append(values, cell.valueBegin, cell.valueEnd);
    return;
  }
  // A cell without a value: DXF writers give a block cell an empty text, other cells an empty value.
  out.text(301, "CELL_VALUE");
  out.integer(93, isBlock ? 1 : 7);
  out.integer(90, isBlock ? 4 : 0);
  out.integer(94, 0);
  out.text(300, "");
  out.text(302, "");
  out.text(304, "ACVALUE_END");
}

}  // namespace

bool decodeDwgTableContent(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  DwgInsertPart part;
  if (!readDwgInsertPart(o, part)) return false;
  // The handle stream holds the common handles and the block's before the table's own, which come in the
  // order of the data: the handles are read as the data names them. The common handles also read the
  // entity's colour names, texts stored after the table's, so they are read again at the end.
  const DwgBitReader stringsAt = o.strings, handlesAt = o.handles;
  o.readCommonHandles();
  const std::uint64_t block = o.readHandle();
  skipDwgAttributeHandles(o, part);
  o.strings = stringsAt;

  // Fields of unknown use: a byte, a handle, a long, then a bit (R2010) or a long (from R2013 on).
  b.readRawChar();
  o.readHandle();
  b.readBitLong();
  if (o.atLeast(DwgVersion::R2013)) b.readBitLong();
  else b.readBit();
  o.readText(context.text);  // the linked data's name
  o.readText(context.text);  // and description
  DwgTagList sizes, cells, values, scratch;
  const std::int32_t columns = b.readBitLong();
  if (!countFits(columns, kMinColumnBits, b)) return false;
  CellStyle style;
  for (std::int32_t k = 0; k < columns; ++k) {
    o.readText(context.text);  // name
    b.readBitLong();           // custom data
    if (!skipCustomData(o, scratch, context) || !readCellStyle(o, style, context)) return false;
    b.readBitLong();  // the cell style of the table's style it starts from
    sizes.real(142, b.readBitDouble());
  }
  const std::size_t widthsEnd = sizes.size();
  const std::int32_t rows = b.readBitLong();
  if (!countFits(rows, kMinRowBits, b)) return false;
  // The layout DXF keeps has a cell for every row and column.
  if (std::uint64_t(rows) * std::uint64_t(columns) > b.bitsLeft() / kMinCellBits) return false;
  context.slots.clear();
  std::vector<CellRead> row(rows > 0 ? static_cast<std::size_t>(columns) : 0);
  // The text height each kind of row (title, header, data) overrides, from the first such row.
  std::array<double, 3> rowHeights{};
  for (std::int32_t r = 0; r < rows; ++r) {
    if (b.readBitLong() != columns) return false;
    values.truncate(0);
    for (CellRead& cell : row)
      if (!readCell(o, cell, values, scratch, context)) return false;
    b.readBitLong();  // custom data
    if (!skipCustomData(o, scratch, context) || !readCellStyle(o, style, context)) return false;
    const std::int32_t kind = b.readBitLong();  // 1 title, 2 header, 3 data
    sizes.real(141, b.readBitDouble());
    const double height = style.hasData && (style.overrides & kTextHeight) ? style.format.textHeight : 0.0;
    if (kind >= 1 && kind <= 3 && rowHeights[kind - 1] == 0) rowHeights[kind - 1] = height;
    for (const CellRead& cell : row) appendCell(cell, values, height, cells, context);
  }
  const std::int32_t fields = b.readBitLong();
  if (fields < 0 || b.failed() || std::size_t(fields) > o.handles.bitsLeft() / 8) return false;
  for (std::int32_t k = 0; k < fields; ++k) o.readHandle();
  CellStyle table;
  if (!readCellStyle(o, table, context)) return false;
  // The merged ranges, which never overlap: together they cover no more cells than the table has.
  const std::int32_t ranges = b.readBitLong();
  if (!countFits(ranges, kMinRangeBits, b)) return false;
  std::uint64_t merged = 0;
  for (std::int32_t k = 0; k < ranges; ++k) {
    const std::int32_t top = b.readBitLong(), left = b.readBitLong();
    const std::int32_t bottom = b.readBitLong(), right = b.readBitLong();
    if (top < 0 || left < 0 || top > bottom || left > right || bottom >= rows || right >= columns) return false;
    merged += std::uint64_t(bottom - top + 1) * std::uint64_t(right - left + 1);
    if (merged > std::uint64_t(rows) * std::uint64_t(columns)) return false;
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

  const std::int32_t flags = b.readBitShort();
  const DwgPoint3 direction = b.read3BitDoubles();
  // The break data: options, flow, spacing and two flags, then the manual break heights (a position, the
  // height and flags); then the row ranges of the table's parts (a position, the first and the last row).
  auto skipBreaks = [&](bool heights) {
    const std::int32_t count = b.readBitLong();
    if (!countFits(count, kMinBreakBits, b)) return false;
    for (std::int32_t k = 0; k < count; ++k) {
      b.read3BitDoubles();
      if (heights) b.readBitDouble();
      else b.readBitLong();
      b.readBitLong();
    }
    return true;
  };
  if (b.readBitLong()) {
    b.readBitLong();
    b.readBitLong();
    b.readBitDouble();
    b.readBitLong();
    b.readBitLong();
    if (!skipBreaks(true)) return false;
  }
  if (!skipBreaks(false)) return false;
  if (o.failed()) return false;
  const DwgBitReader tableHandlesEnd = o.handles;
  o.handles = handlesAt;
  o.readCommonHandles();
  o.handles = tableHandlesEnd;

  appendDwgInsertPart(out, part, "AcDbBlockReference", context.nameOf(block));
  extrusion(out, part.extrusion);
  out.text(100, "AcDbTable");
  out.integer(280, 0);  // not stored; the version of the table data DXF writers give
  out.handle(342, tableStyle);
  out.handle(343, block);
  out.point(11, direction);
  // The flags of older releases: 6 (a block), 0x10 for a table flowing down, 0x20 for its title left out.
  // The R2010 data has 0x10 for some tables only; DXF writers set it for every table flowing down.
  const bool flow = table.hasData && (table.overrides & kFlowUp);
  const bool up = flow && (table.values & kFlowUp);
  out.integer(90, up ? flags & ~0x10 : flags | 0x10);
  out.integer(91, rows);
  out.integer(92, columns);
  // The table-wide overrides of older releases: the flow direction and cell margins of the table's own
  // style, the text height of each kind of row; no border overrides (94 to 96).
  std::int32_t overrides = 0;
  const bool margins = table.hasData && (table.marginFlags & 1);
  if (margins && (table.overrides & (0x400 | 0x1000))) overrides |= 0x08;
  if (margins && (table.overrides & (0x800 | 0x2000))) overrides |= 0x10;
  if (flow) overrides |= 0x04;
  for (int kind = 0; kind < 3; ++kind)
    if (rowHeights[kind] != 0) overrides |= 0x100000 << kind;
  out.integer(93, overrides);
  for (int code = 94; code <= 96; ++code) out.integer(code, 0);
  if (flow) out.integer(70, up ? 1 : 0);
  if (overrides & 0x08) out.real(40, table.margins[1]);
  if (overrides & 0x10) out.real(41, table.margins[0]);
  for (int kind : {2, 0, 1})  // DXF lists the data rows' first
    if (rowHeights[kind] != 0) out.real(140, rowHeights[kind]);
  out.append(sizes, widthsEnd, sizes.size());
  out.append(sizes, 0, widthsEnd);
  out.append(cells, 0, cells.size());
  return !o.failed();
}

}  // namespace headless
