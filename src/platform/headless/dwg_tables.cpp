// DWG table entries (linetypes, layers, text styles, applications, dimension styles, block headers) and
// layouts, as far as the host uses them.
#include "platform/headless/dwg_tables.h"

#include <cmath>

namespace headless {

namespace {

// The fields every table entry starts with: its name and its dependence on an external reference.
struct EntryStart {
  bool xrefDependent = false;
};
EntryStart readEntryStart(DwgObjectReader& o, std::string& name) {
  o.readText(name);
  EntryStart start;
  o.bits.readBit();  // 64-flag
  // The external reference index is gone from R2007 on (real drawings have no bits for it).
  if (!o.atLeast(DwgVersion::R2007)) o.bits.readBitShort();
  start.xrefDependent = o.bits.readBit();
  return start;
}

void recordStart(DwgObjectReader& o, DwgTagList& out, std::string_view type, const char* marker, int handleCode = 5) {
  out.record(type, o.common.handle);
  out.handle(handleCode, o.common.handle);
  out.handle(330, o.common.owner);
  out.text(100, "AcDbSymbolTableRecord");
  out.text(100, marker);
}

bool decodeLayer(DwgObjectReader& o, DwgTagList& out, DwgNames& names) {
  DwgBitReader& b = o.bits;
  std::string name;
  const EntryStart start = readEntryStart(o, name);
  bool frozen, off, frozenInNew, locked, plots = true;
  int lineWeight = -3;
  if (o.atLeast(DwgVersion::R2000)) {
    const int flags = b.readBitShort();
    frozen = flags & 1;
    off = flags & 2;
    frozenInNew = flags & 4;
    locked = flags & 8;
    plots = flags & 16;
    lineWeight = dwgLineWeight((flags >> 5) & 31);
  } else {
    frozen = b.readBit();
    off = !b.readBit();
    frozenInNew = b.readBit();
    locked = b.readBit();
  }
  const DwgColor color = b.readColor();
  std::string ignored;
  if (color.hasName()) o.readText(ignored);
  if (color.hasBookName()) o.readText(ignored);
  o.readCommonHandles();
  o.readHandle();  // external reference block
  if (o.atLeast(DwgVersion::R2000)) o.readHandle();  // plot style
  if (o.atLeast(DwgVersion::R2007)) o.readHandle();  // material
  const std::uint64_t linetype = o.readHandle();
  if (o.failed()) return false;
  recordStart(o, out, "LAYER", "AcDbLayerTableRecord");
  out.text(2, name);
  out.integer(70, (frozen ? 1 : 0) | (frozenInNew ? 2 : 0) | (locked ? 4 : 0) | (start.xrefDependent ? 16 : 0));
  const int index = std::abs(color.index);
  out.integer(62, (off || color.index < 0) ? -index : index);
  if (o.atLeast(DwgVersion::R2004) && (color.rgb >> 24) == 0xC2) out.integer(420, color.rgb & 0xFFFFFF);
  auto it = names.find(linetype);
  out.text(6, it == names.end() ? std::string_view("Continuous") : std::string_view(it->second));
  if (!plots) out.integer(290, 0);
  out.integer(370, lineWeight);
  names[o.common.handle] = std::move(name);
  return true;
}

bool decodeStyle(DwgObjectReader& o, DwgTagList& out, DwgNames& names) {
  DwgBitReader& b = o.bits;
  std::string name, font, bigFont;
  const EntryStart start = readEntryStart(o, name);
  const bool vertical = b.readBit();
  const bool shapes = b.readBit();
  const double height = b.readBitDouble();
  const double width = b.readBitDouble();
  const double oblique = b.readBitDouble();
  const int generation = b.readRawChar();
  const double lastHeight = b.readBitDouble();
  o.readText(font);
  o.readText(bigFont);
  o.readCommonHandles();
  if (o.failed()) return false;
  recordStart(o, out, "STYLE", "AcDbTextStyleTableRecord");
  out.text(2, name);
  out.integer(70, (shapes ? 1 : 0) | (vertical ? 4 : 0) | (start.xrefDependent ? 16 : 0));
  out.real(40, height);
  out.real(41, width);
  out.real(50, oblique * 180.0 / 3.14159265358979323846);
  out.integer(71, generation);
  out.real(42, lastHeight);
  out.text(3, font);
  out.text(4, bigFont);
  names[o.common.handle] = std::move(name);
  return true;
}

// Entries whose name is all the host takes from them: linetypes and applications.
bool decodeNamedEntry(DwgObjectReader& o, std::string_view type, DwgTagList& out, DwgNames& names) {
  std::string name;
  const EntryStart start = readEntryStart(o, name);
  if (o.failed()) return false;
  recordStart(o, out, type, type == "LTYPE" ? "AcDbLinetypeTableRecord" : "AcDbRegAppTableRecord");
  out.text(2, name);
  out.integer(70, start.xrefDependent ? 16 : 0);
  names[o.common.handle] = std::move(name);
  return true;
}

bool decodeBlockHeader(DwgObjectReader& o, DwgNames& names, std::vector<DwgBlockHeader>& blocks) {
  DwgBitReader& b = o.bits;
  DwgBlockHeader block;
  block.handle = o.common.handle;
  readEntryStart(o, block.name);
  block.anonymous = b.readBit();
  block.hasAttributes = b.readBit();
  block.xref = b.readBit();
  block.overlaid = b.readBit();
  if (o.atLeast(DwgVersion::R2000)) b.readBit();  // loaded
  std::int32_t owned = 0;
  const bool listsEntities = !block.xref && !block.overlaid;
  if (o.atLeast(DwgVersion::R2004) && listsEntities) owned = b.readBitLong();
  // Each owned handle takes at least a byte of the handle stream.
  if (owned < 0 || std::size_t(owned) > o.handles.bitsLeft() / 8) return false;
  block.base = b.read3BitDoubles();
  o.readText(block.xrefPath);
  std::size_t inserts = 0;
  if (o.atLeast(DwgVersion::R2000)) {
    while (b.readRawChar() != 0 && !b.failed()) ++inserts;
    o.skipText();  // description
    const std::int32_t preview = b.readBitLong();
    if (preview < 0 || std::size_t(preview) > b.bitsLeft() / 8) return false;
    b.setBitPosition(b.bitPosition() + std::size_t(preview) * 8);
  }
  o.readCommonHandles();
  o.readHandle();  // external reference block
  block.blockEntity = o.readHandle();
  if (listsEntities) {
    if (o.atLeast(DwgVersion::R2004)) {
      block.entities.reserve(static_cast<std::size_t>(owned));
      for (std::int32_t i = 0; i < owned && !o.handles.failed(); ++i) block.entities.push_back(o.readHandle());
    } else {
      block.firstEntity = o.readHandle();
      o.readHandle();  // the last entity
    }
  }
  block.endEntity = o.readHandle();
  for (std::size_t i = 0; i < inserts && !o.handles.failed(); ++i) o.readHandle();
  if (o.atLeast(DwgVersion::R2000)) block.layout = o.readHandle();
  if (o.failed()) return false;
  names[block.handle] = block.name;
  blocks.push_back(std::move(block));
  return true;
}

bool decodeLayout(DwgObjectReader& o, std::vector<DwgLayout>& layouts) {
  DwgBitReader& b = o.bits;
  // The plot settings come first; the layout's name and tab order follow them.
  o.skipText();  // page setup
  o.skipText();  // printer
  b.readBitShort();
  for (int i = 0; i < 6; ++i) b.readBitDouble();  // margins, paper size
  o.skipText();  // paper name
  for (int i = 0; i < 2; ++i) b.readBitDouble();  // plot origin
  b.readBitShort();
  b.readBitShort();
  b.readBitShort();
  for (int i = 0; i < 4; ++i) b.readBitDouble();  // window
  if (!o.atLeast(DwgVersion::R2004)) o.skipText();  // plot view
  b.readBitDouble();
  b.readBitDouble();
  o.skipText();  // plot style sheet
  b.readBitShort();
  b.readBitDouble();
  for (int i = 0; i < 2; ++i) b.readBitDouble();  // paper image origin
  if (o.atLeast(DwgVersion::R2004)) {
    b.readBitShort();
    b.readBitShort();
    b.readBitShort();
  }
  DwgLayout layout;
  layout.handle = o.common.handle;
  o.readText(layout.name);
  layout.tabOrder = b.readBitShort();
  if (o.failed()) return false;
  layouts.push_back(std::move(layout));
  return true;
}

// A dimension style: its name and the variables the host takes from it (DIMSCALE, DIMASZ, DIMTXT, DIMGAP
// and the text style, DIMTXSTY), written as DXF writers write them: only where they differ from the
// defaults of a new drawing.
bool decodeDimStyle(DwgObjectReader& o, DwgTagList& out, DwgNames& names) {
  DwgBitReader& b = o.bits;
  std::string name;
  const EntryStart start = readEntryStart(o, name);
  if (!o.atLeast(DwgVersion::R2000)) {
    for (int i = 0; i < 11; ++i) b.readBit();  // DIMTOL to DIMSOXD
    b.readRawChar();                           // DIMALTD
    b.readRawChar();                           // DIMZIN
    b.readBit();                               // DIMSD1, DIMSD2
    b.readBit();
    b.readRawChar();  // DIMTOLJ, DIMJUST, DIMFIT
    b.readRawChar();
    b.readRawChar();
    b.readBit();                               // DIMUPT
    for (int i = 0; i < 4; ++i) b.readRawChar();  // DIMTZIN, DIMALTZ, DIMALTTZ, DIMTAD
    for (int i = 0; i < 6; ++i) b.readBitShort();  // DIMUNIT to DIMALTTD
  } else {
    o.skipText();  // DIMPOST, DIMAPOST
    o.skipText();
  }
  const double scale = b.readBitDouble();  // DIMSCALE
  const double arrow = b.readBitDouble();  // DIMASZ
  for (int i = 0; i < 7; ++i) b.readBitDouble();  // DIMEXO to DIMTM
  if (o.atLeast(DwgVersion::R2000)) {
    if (o.atLeast(DwgVersion::R2007)) {
      b.readBitDouble();  // DIMFXL, DIMJOGANG
      b.readBitDouble();
      b.readBitShort();  // DIMTFILL
      const DwgColor fill = b.readColor();
      if (fill.hasName()) o.skipText();
      if (fill.hasBookName()) o.skipText();
    }
    for (int i = 0; i < 6; ++i) b.readBit();  // DIMTOL to DIMSE2
    for (int i = 0; i < 3; ++i) b.readBitShort();  // DIMTAD, DIMZIN, DIMAZIN
    if (o.atLeast(DwgVersion::R2007)) b.readBitShort();  // DIMARCSYM
  }
  const double text = b.readBitDouble();  // DIMTXT
  for (int i = 0; i < 6; ++i) b.readBitDouble();  // DIMCEN to DIMTFAC
  const double gap = b.readBitDouble();           // DIMGAP
  o.readHandle();                                 // external reference block
  const std::uint64_t textStyle = o.readHandle();
  if (o.failed()) return false;
  recordStart(o, out, "DIMSTYLE", "AcDbDimStyleTableRecord", 105);
  out.text(2, name);
  out.integer(70, start.xrefDependent ? 16 : 0);
  if (scale != 1.0) out.real(40, scale);
  if (arrow != 0.18) out.real(41, arrow);
  if (text != 0.18) out.real(140, text);
  if (gap != 0.09) out.real(147, gap);
  if (textStyle) out.handle(340, textStyle);
  names[o.common.handle] = std::move(name);
  return true;
}

}  // namespace

bool decodeDwgTableEntry(DwgObjectReader& object, std::string_view type, DwgTagList& out, DwgNames& names,
                         std::vector<DwgBlockHeader>& blocks, std::vector<DwgLayout>& layouts) {
  if (type == "LAYER") return decodeLayer(object, out, names);
  if (type == "STYLE") return decodeStyle(object, out, names);
  if (type == "BLOCK_HEADER") return decodeBlockHeader(object, names, blocks);
  if (type == "LAYOUT") return decodeLayout(object, layouts);
  object.readCommonHandles();
  if (type == "DIMSTYLE") return decodeDimStyle(object, out, names);
  return decodeNamedEntry(object, type, out, names);
}

std::unordered_map<std::uint64_t, double> dwgHookLengths(const DwgTagList& records) {
  std::unordered_map<std::uint64_t, double> lengths;
  std::uint64_t style = 0;
  double scale = 1.0, arrow = 0.18;
  auto finish = [&] {
    if (style) lengths[style] = arrow * scale;
  };
  for (std::size_t i = 0; i < records.size(); ++i) {
    const DwgTagList::Tag& t = records[i];
    if (t.code == 0) {
      finish();
      style = records.handleAt(i);
      scale = 1.0;
      arrow = 0.18;
    } else if (t.code == 40) {
      scale = t.real;
    } else if (t.code == 41) {
      arrow = t.real;
    }
  }
  finish();
  return lengths;
}

}  // namespace headless
