// The DWG table entity (ACAD_TABLE) up to R2007: its insert part, sizes, cells and overrides as DXF gives them.
#include "platform/headless/dwg_entities_table.h"

#include <array>

#include "platform/text.h"

namespace headless {

namespace {

// Handles a cell or the table leaves in the handle stream, slotted into the groups where DXF has them.
constexpr int kDropHandle = 0;  // read and left out (a text cell's field)

// The smallest cell: its type and flags as bit shorts and bits, merge counts and rotation.
constexpr std::size_t kMinCellBits = 2 + 8 + 1 + 1 + 2 + 2 + 2 + 1;

void colorGroup(DwgObjectReader& o, DwgTagList& out, int code, std::string& scratch) {
  out.integer(code, readDwgTableColor(o, scratch));
}

// The overrides of one cell, by the bits of its override flags; the edges' lineweights and colours in the
// order DXF writes them (their visibilities it leaves out).
void readCellOverrides(DwgObjectReader& o, DwgTagList& out, std::int32_t flags, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  if (flags & 0x01) out.integer(170, b.readBitShort());
  const bool fillNone = (flags & 0x02) && b.readBit();
  if (flags & 0x04) colorGroup(o, out, 63, context.text);
  if (flags & 0x08) colorGroup(o, out, 64, context.text);
  if (flags & 0x02) out.integer(283, fillNone ? 1 : 0);
  if (flags & 0x10) context.slots.emplace_back(out.size(), 7);
  if (flags & 0x20) out.real(140, b.readBitDouble());
  // The edges as stored: top, right, bottom, left, each with its colour, lineweight and visibility bits;
  // DXF gives right, bottom, left, top.
  struct Edge {
    int color = 0, lineweight = 0;
    bool hasColor = false, hasWeight = false;
  };
  std::array<Edge, 4> edges;
  constexpr int kColorCodes[] = {69, 65, 66, 68};
  for (int k = 0; k < 4; ++k) {
    Edge& e = edges[k];
    if ((e.hasColor = (flags & (0x40 << k)) != 0)) e.color = readDwgTableColor(o, context.text);
    if ((e.hasWeight = (flags & (0x400 << k)) != 0)) e.lineweight = b.readBitShort();
    if (flags & (0x4000 << k)) b.readBitShort();  // visibility
  }
  for (int k : {1, 2, 3, 0}) {
    const Edge& e = edges[k];
    const int color = kColorCodes[k];
    if (e.hasWeight) out.integer(color + 210, e.lineweight);
    if (e.hasColor) out.integer(color, e.color);
  }
}

// One cell of the old layout: type, edge and merge flags, rotation, its text or block, its overrides and,
// from R2007 on, its value. Handles it leaves for later are slotted in context.slots.
bool readCell(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int type = b.readBitShort();
  out.integer(171, type);
  out.integer(172, b.readRawChar());
  out.integer(173, b.readBit() ? 1 : 0);
  out.integer(174, b.readBit() ? 1 : 0);
  out.integer(175, b.readBitLong());
  out.integer(176, b.readBitLong());
  const double rotation = b.readBitDouble();
  const std::size_t flagsAt = out.size();
  std::int32_t attributes = 0;
  DwgTagList& cell = context.vertices;  // the groups after the override flags, which come later in the data
  cell.truncate(0);
  const bool values = o.atLeast(DwgVersion::R2007);  // from R2007 on a value holds a text cell's text
  if (type == 1) {
    if (!values) {
      o.readText(context.text);
      cell.text(1, context.text);
    }
    context.slots.emplace_back(flagsAt, kDropHandle);
  } else if (type == 2) {
    context.slots.emplace_back(flagsAt, 340);
    cell.real(144, b.readBitDouble());
    if (b.readBit()) {
      attributes = b.readBitShort();
      if (!countFits(attributes, 2 + 2, b)) return false;
    }
    cell.integer(179, attributes);
    for (std::int32_t k = 0; k < attributes && !b.failed(); ++k) {
      b.readBitShort();  // the attribute definition's index
      context.slots.emplace_back(flagsAt, 331);
      o.readText(context.text);
      cell.text(300, context.text);
    }
  } else {
    return false;
  }
  std::int32_t flags = 0;
  int virtualEdges = 0;
  if (b.readBit()) {
    flags = b.readBitLong();
    virtualEdges = b.readRawChar();
  }
  // DXF gives the flags' low 16 bits before R2007 (177), the whole word after (91).
  out.integer(values ? 91 : 177, values ? flags : std::int16_t(flags & 0xFFFF));
  out.integer(178, virtualEdges);
  out.real(145, rotation * kDwgDegrees);
  // The cell's handles (its block, attribute definitions) go before its other groups: the slots above point
  // at flagsAt, which the groups now written move to the end of this part.
  for (auto& slot : context.slots)
    if (slot.first == flagsAt) slot.first = out.size();
  out.append(cell, 0, cell.size());
  readCellOverrides(o, out, flags, context);
  if (values) {
    b.readBitLong();
    out.integer(92, 0);
    if (!readDwgTableValue(o, out, context, false)) return false;
  }
  return !b.failed();
}

// The table-wide overrides: flags 93 and what they name, then the borders' colours (94), lineweights (95)
// and visibilities (96), each row kind's horizontal and vertical edges.
void readTableOverrides(DwgObjectReader& o, DwgTagList& flagsOut, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  std::int32_t flags = 0;
  if (b.readBit()) flags = b.readBitLong();
  flagsOut.integer(93, flags);
  if (flags & 0x0001) out.integer(280, b.readBit() ? 1 : 0);
  if (flags & 0x0004) out.integer(70, b.readBitShort());
  if (flags & 0x0008) out.real(40, b.readBitDouble());
  if (flags & 0x0010) out.real(41, b.readBitDouble());
  // Each of these is stored for the title, header and data rows; DXF lists the data row's first.
  constexpr int kDxfOrder[] = {2, 0, 1};
  std::array<double, 3> values{};
  auto rows = [&](std::int32_t firstBit, int code, auto read) {
    for (int k = 0; k < 3; ++k)
      if (flags & (firstBit << k)) values[k] = read();
    for (int k : kDxfOrder) {
      if (!(flags & (firstBit << k))) continue;
      if (code == 7) context.slots.emplace_back(out.size(), k);  // a text style: its handle comes later
      if (code == 140) out.real(code, values[k]);
      else out.integer(code, static_cast<long long>(values[k]));
    }
  };
  rows(0x20, 64, [&] { return double(readDwgTableColor(o, context.text)); });
  rows(0x100, 283, [&] { return b.readBit() ? 1.0 : 0.0; });
  rows(0x800, 63, [&] { return double(readDwgTableColor(o, context.text)); });
  rows(0x4000, 170, [&] { return double(b.readBitShort()); });
  rows(0x20000, 7, [] { return 0.0; });
  rows(0x100000, 140, [&] { return b.readBitDouble(); });
  constexpr int kBorderCodes[] = {64, 65, 66, 63, 68, 69};
  std::int32_t colors = 0;
  if (b.readBit()) colors = b.readBitLong();
  flagsOut.integer(94, colors);
  for (int k = 0; k < 18; ++k)
    if (colors & (1 << k)) colorGroup(o, out, kBorderCodes[k % 6], context.text);
  std::int32_t weights = 0;
  if (b.readBit()) weights = b.readBitLong();
  flagsOut.integer(95, weights);
  for (int k = 0; k < 18; ++k)
    if (weights & (1 << k)) out.integer(274 + k % 6, b.readBitShort());
  std::int32_t visibility = 0;
  if (b.readBit()) visibility = b.readBitLong();
  flagsOut.integer(96, visibility);
  for (int k = 0; k < 18; ++k)
    if (visibility & (1 << k)) out.integer(284 + k % 6, b.readBitShort());
}

bool decodeTable(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  if (o.atLeast(DwgVersion::R2010)) return decodeDwgTableContent(o, out, context);
  DwgBitReader& b = o.bits;
  DwgInsertPart part;
  if (!readDwgInsertPart(o, part)) return false;
  const DwgPoint3& e = part.extrusion;
  const std::int32_t flags = b.readBitShort();
  const DwgPoint3 direction = b.read3BitDoubles();
  const std::int32_t columns = b.readBitLong();
  const std::int32_t rows = b.readBitLong();
  if (!countFits(columns, 2, b) || !countFits(rows, 2, b)) return false;
  DwgTagList sizes;
  for (std::int32_t k = 0; k < columns && !b.failed(); ++k) sizes.real(142, b.readBitDouble());
  const std::size_t widthsEnd = sizes.size();
  for (std::int32_t k = 0; k < rows && !b.failed(); ++k) sizes.real(141, b.readBitDouble());
  const std::int64_t cellCount = std::int64_t(rows) * columns;
  if (b.failed() || cellCount < 0 || std::uint64_t(cellCount) > b.bitsLeft() / kMinCellBits) return false;
  DwgTagList cells;
  context.slots.clear();
  for (std::int64_t k = 0; k < cellCount; ++k)
    if (!readCell(o, cells, context)) return false;
  const std::size_t cellSlots = context.slots.size();
  DwgTagList tableFlags, overrides;
  readTableOverrides(o, tableFlags, overrides, context);
  if (b.failed()) return false;

  o.readCommonHandles();
  const std::uint64_t block = o.readHandle();
  skipDwgAttributeHandles(o, part);
  const std::uint64_t style = o.readHandle();
  appendDwgInsertPart(out, part, "AcDbBlockReference", context.nameOf(block));
  extrusion(out, e);
  out.text(100, "AcDbTable");
  out.handle(342, style);
  out.handle(343, block);
  out.point(11, direction);
  out.integer(90, flags);
  out.integer(91, rows);
  out.integer(92, columns);
  out.append(tableFlags, 0, tableFlags.size());
  // The cells' handles come first in the stream, then the table's text styles.
  DwgTagList& assembled = context.spliced;
  assembled.truncate(0);
  std::size_t from = 0;
  for (std::size_t k = 0; k < cellSlots; ++k) {
    const auto [place, code] = context.slots[k];
    assembled.append(cells, from, place);
    from = place;
    const std::uint64_t h = o.readHandle();
    if (code != kDropHandle) assembled.handle(code, h);
  }
  assembled.append(cells, from, cells.size());
  // The row kinds' text styles, stored title, header, data, take the places left for them.
  std::array<bool, 3> styled{};
  for (std::size_t k = cellSlots; k < context.slots.size(); ++k) styled[context.slots[k].second] = true;
  std::array<std::uint64_t, 3> styles{};
  for (int kind = 0; kind < 3; ++kind)
    if (styled[kind]) styles[kind] = o.readHandle();
  from = 0;
  for (std::size_t k = cellSlots; k < context.slots.size(); ++k) {
    const auto [place, kind] = context.slots[k];
    out.append(overrides, from, place);
    out.handle(7, styles[kind]);
    from = place + 1;
  }
  out.append(overrides, from, overrides.size());
  out.append(sizes, widthsEnd, sizes.size());
  out.append(sizes, 0, widthsEnd);
  out.append(assembled, 0, assembled.size());
  return !o.failed();
}

constexpr DwgEntityEntry kTypes[] = {
    {0, {"ACAD_TABLE", decodeTable}},
};

}  // namespace

DwgEntityFamily dwgTableEntities() { return kTypes; }

int readDwgTableColor(DwgObjectReader& o, std::string& scratch) {
  DwgBitReader& b = o.bits;
  int index = b.readBitShort();
  const auto value = static_cast<std::uint32_t>(b.readBitLong());
  const int flags = b.readRawChar();
  if (flags & 1) o.readText(scratch);
  if (flags & 2) o.readText(scratch);
  switch (value >> 24) {
    case 0xC0: return 256;
    case 0xC1: return 0;
    case 0xC3: return int(value & 0xFF);
    default: return index;
  }
}

bool readDwgTableValue(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, bool handleNow) {
  DwgBitReader& b = o.bits;
  const std::int32_t flags = b.readBitLong();
  const std::int32_t type = b.readBitLong();
  out.text(301, "CELL_VALUE");
  out.integer(93, flags);
  out.integer(90, type);
  if (!(flags & 1)) {
    switch (type) {
      case 0: b.readBitLong(); break;
      case 1: out.integer(91, b.readBitLong()); break;
      case 2: out.real(140, b.readBitDouble()); break;
      case 4: {  // a string: its size in bytes and its UTF-16 units
        const std::int32_t size = b.readBitLong();
        if (!countFits(size, 8, b)) return false;
        std::string& text = context.text;
        text.clear();
        char32_t high = 0;  // the first half of a surrogate pair
        for (std::int32_t k = 0; k + 1 < size && !b.failed(); k += 2) {
          char32_t c = b.readRawChar();
          c |= char32_t(b.readRawChar()) << 8;
          if (c >= 0xD800 && c < 0xDC00) {
            high = c;
            continue;
          }
          if (high && c >= 0xDC00 && c < 0xE000) c = 0x10000 + ((high - 0xD800) << 10) + (c - 0xDC00);
          high = 0;
          if (c != 0) platform::appendUtf8(text, c);
        }
        if (size % 2) b.readRawChar();
        out.text(1, text);
        break;
      }
      case 8:    // a date: its bytes
      case 16:   // a 2D point
      case 32:   // a 3D point
      case 512: {  // general data
        const std::int32_t size = b.readBitLong();
        if (!countFits(size, 8, b)) return false;
        if (type == 16 && size == 16) {
          out.point(11, b.readRaw2Doubles(), 0.0);
        } else if (type == 32 && size == 24) {
          out.point(11, b.readRaw3Doubles());
        } else {
          out.integer(92, size);
          const std::size_t begin = b.bitPosition(), end = begin + 8 * std::size_t(size);
          dwgBinaryGroups(b, begin, end, 310, out, context.scratch);
          b.setBitPosition(end);
        }
        break;
      }
      case 64:  // an object's handle
        if (handleNow) out.handle(330, o.readHandle());
        else context.slots.emplace_back(out.size(), 330);
        break;
      default: context.notDecoded = "ACAD_TABLE (cell values of type " + std::to_string(type) + ")"; return false;
    }
  }
  out.integer(94, b.readBitLong());
  o.readText(context.text);
  out.text(300, context.text);
  o.readText(context.text);
  out.text(302, context.text);
  out.text(304, "ACVALUE_END");
  return !b.failed();
}

}  // namespace headless

