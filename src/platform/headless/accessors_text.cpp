// Accessors of text, multiline text, attributes, dimensions, leaders, tolerances and tables, from the stored groups.
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/headless/accessor_table.h"
#include "platform/text.h"

namespace headless {

using platform::Accessor;
using platform::DatabaseData;
using platform::DbClass;
using platform::Handle;
using platform::ObjectRec;
using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

namespace {

// Drawings store most entity angles in degrees; the host answers radians.
constexpr double kRadiansPerDegree = M_PI / 180.0;

// ---- reading groups ----

double realOf(const StoredTag& t) { return t.type == TagType::Real ? t.real : static_cast<double>(t.integer); }
long long integerOf(const StoredTag& t) { return t.type == TagType::Real ? platform::saturatingInteger(t.real) : t.integer; }

// The first group with this code among the record's own groups, up to an embedded object (101: the
// multiline part of an attribute, the columns of a multiline text), whose codes mean something else.
// With a subclass, only the groups after that subclass marker count, unless the record has no markers
// at all (R12 drawings), where every own group counts.
const StoredTag* findOwn(const EntityView& e, int code, std::string_view subclass = {}) {
  const Groups& g = e.g;
  const StoredTag* anywhere = nullptr;
  const StoredTag* inside = nullptr;
  bool markers = false;
  g.visitOwn([&](std::uint32_t i, std::string_view current) {
    const StoredTag& t = g.at(i);
    if (t.code == 101) return false;
    if (t.code == 100) {
      markers = true;
      return true;
    }
    if (t.code == code) {
      if (!anywhere) anywhere = &t;
      if (current == subclass && !inside) inside = &t;
    }
    return true;
  });
  if (subclass.empty() || !markers) return anywhere;
  return inside;
}

double ownReal(const EntityView& e, int code, double def, std::string_view subclass = {}) {
  const StoredTag* t = findOwn(e, code, subclass);
  return t ? realOf(*t) : def;
}
long long ownInteger(const EntityView& e, int code, long long def, std::string_view subclass = {}) {
  const StoredTag* t = findOwn(e, code, subclass);
  return t ? integerOf(*t) : def;
}
std::string ownText(const EntityView& e, int code, std::string_view subclass = {}) {
  const StoredTag* t = findOwn(e, code, subclass);
  return t ? std::string(e.data.text(*t)) : std::string();
}
// The point whose x has this code among the own groups (y and z follow it).
bool ownPoint(const EntityView& e, int xCode, Point3d& p, std::string_view subclass = {}) {
  const StoredTag* t = findOwn(e, xCode, subclass);
  if (!t) return false;
  p = {t->real, 0.0, 0.0};
  const StoredTag* end = e.data.tags.data() + e.rec.tagBegin + e.g.ownCount();
  if (t + 1 < end && t[1].code == xCode + 10) {
    p.y = t[1].real;
    if (t + 2 < end && t[2].code == xCode + 20) p.z = t[2].real;
  }
  return true;
}
Point3d wcsPoint(const EntityView& e, int xCode) {
  Point3d p;
  ownPoint(e, xCode, p);
  return p;
}
Point3d ocsPoint(const EntityView& e, int xCode) { return e.toWcs(wcsPoint(e, xCode)); }

// A long text: its chunks (group 3) followed by its last part (group 1).
std::string chunkedText(const EntityView& e) {
  std::string out;
  const Groups& g = e.g;
  g.visitOwn([&](std::uint32_t i, std::string_view) {
    const int code = g.at(i).code;
    if (code == 101) return false;
    if (code == 3 || code == 1) out += g.textAt(i);
    return code != 1;
  });
  return out;
}

// ---- tables, objects and header variables ----

// The table entry (STYLE, DIMSTYLE, ...) of this name, compared without regard to case, or null.
const ObjectRec* tableEntry(const DatabaseData& d, std::string_view type, std::string_view name) {
  return d.tableEntry(type, name);
}

std::string entryName(const DatabaseData& d, const ObjectRec& o) {
  const StoredTag* n = d.find(o.tagBegin, o.tagCount, 2);
  return n ? std::string(d.text(*n)) : std::string();
}

// A text style name as the STYLE table spells it; a name the table lacks stays as written.
std::string styleSpelling(const DatabaseData& d, std::string_view name) {
  const ObjectRec* o = tableEntry(d, "STYLE", name);
  return o ? entryName(d, *o) : std::string(name);
}

// The value of a dimension variable overridden in the entity's extension data (1001 ACAD, 1000 DSTYLE,
// then 1070 code / value pairs between 1002 braces), or null.
const StoredTag* dstyleOverride(const EntityView& e, int dimvarCode) {
  const Groups& g = e.g;
  bool acad = false, dstyle = false;
  for (std::uint32_t i = g.ownCount(); i < g.size(); ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 1001) {
      acad = g.textAt(i) == "ACAD";
      dstyle = false;
    } else if (acad && t.code == 1000) {
      dstyle = g.textAt(i) == "DSTYLE";
    } else if (dstyle && t.code == 1070 && i + 1 < g.size() && integerOf(t) == dimvarCode) {
      return &g.at(i + 1);
    } else if (dstyle && t.code == 1070) {
      ++i;  // the value of another variable
    }
  }
  return nullptr;
}

// The DIMSTYLE entry an entity names (group 3; "Standard" when it names none), or null.
const ObjectRec* dimensionStyle(const EntityView& e) {
  const StoredTag* t = findOwn(e, 3, "AcDbDimension");
  if (!t && e.rec.cls == DbClass::Fcf) t = findOwn(e, 3, "AcDbFcf");
  if (!t && e.rec.cls == DbClass::Leader) t = findOwn(e, 3, "AcDbLeader");
  return tableEntry(e.data, "DIMSTYLE", t ? e.data.text(*t) : std::string_view("Standard"));
}

// A real dimension variable: the entity's override, its dimension style, the drawing's header
// variable, the host's default, in that order.
double dimvar(const EntityView& e, int code, std::string_view headerName, double hostDefault) {
  if (const StoredTag* t = dstyleOverride(e, code)) return realOf(*t);
  if (const ObjectRec* s = dimensionStyle(e)) {
    const Groups g(e.data, s->tagBegin, s->tagCount);
    if (g.has(code)) return g.real(code);
  }
  if (const platform::HeaderVar* v = e.data.headerVar(headerName)) {
    const Groups g(e.data, v->tagBegin, v->tagCount);
    if (g.has(40)) return g.real(40);
  }
  return hostDefault;
}

// The text style of a dimension: DIMTXSTY (340, a STYLE handle) of its override, then of its dimension
// style, then the drawing's $DIMTXSTY, then "Standard".
std::string dimensionTextStyle(const EntityView& e) {
  const DatabaseData& d = e.data;
  auto styleByHandle = [&d](const StoredTag* t) -> std::string {
    if (!t || (t->type != TagType::Handle && t->type != TagType::Text)) return {};
    const ObjectRec* o = d.object(parseHandle(d.text(*t)));
    return o && d.name(o->type) == "STYLE" ? entryName(d, *o) : std::string();
  };
  std::string name = styleByHandle(dstyleOverride(e, 340));
  if (name.empty())
    if (const ObjectRec* s = dimensionStyle(e)) name = styleByHandle(d.find(s->tagBegin, s->tagCount, 340));
  if (name.empty())
    if (const platform::HeaderVar* v = d.headerVar("$DIMTXSTY")) {
      const Groups g(d, v->tagBegin, v->tagCount);
      if (g.has(7)) name = styleSpelling(d, g.text(7));
    }
  return name.empty() ? styleSpelling(d, "Standard") : name;
}

// The object that the entity's extension dictionary (named in its {ACAD_XDICTIONARY group) files under
// this entry name, or null.
const ObjectRec* extensionEntry(const EntityView& e, std::string_view entryName) {
  const Groups& g = e.g;
  Handle dictionary = 0;
  bool inXdict = false;
  for (std::uint32_t i = 0; i < g.ownCount() && !dictionary; ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 102) {
      inXdict = g.textAt(i) == "{ACAD_XDICTIONARY";
    } else if (inXdict && t.code == 360) {
      dictionary = parseHandle(g.textAt(i));
    }
  }
  const ObjectRec* dict = dictionary ? e.data.object(dictionary) : nullptr;
  if (!dict) return nullptr;
  const Groups dg(e.data, dict->tagBegin, dict->tagCount);
  for (std::uint32_t i = 0; i + 1 < dg.size(); ++i)
    if (dg.at(i).code == 3 && dg.textAt(i) == entryName && (dg.at(i + 1).code == 350 || dg.at(i + 1).code == 360))
      return e.data.object(parseHandle(dg.textAt(i + 1)));
  return nullptr;
}

// ---- text ----

// The subclass that holds an attribute's own groups (tag, prompt, lock flag).
std::string_view attributeSubclass(const EntityView& e) {
  return e.rec.cls == DbClass::Attribute ? "AcDbAttribute" : "AcDbAttributeDefinition";
}

// The lock flag is the 280 after the tag (the first 280 of R2010 and later drawings is a version number).
long long lockFlag(const EntityView& e) {
  const Groups& g = e.g;
  const std::string_view subclass = attributeSubclass(e);
  bool inSubclass = false, afterTag = false;
  const bool subclassless = !g.has(100);
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 101) break;
    if (t.code == 100) {
      inSubclass = g.textAt(i) == subclass;
    } else if (t.code == 2 && (inSubclass || subclassless)) {
      afterTag = true;
    } else if (afterTag && t.code == 280) {
      return integerOf(t);
    }
  }
  return 0;
}

// A multiline attribute carries its multiline part as an embedded object (R2018) or, in older drawings,
// in an "ACAD_MLATT" record of its extension dictionary whose first flag (70) is not 0.
bool isMultiline(const EntityView& e) {
  for (std::uint32_t i = 0; i < e.g.ownCount(); ++i)
    if (e.g.at(i).code == 101) return true;
  const ObjectRec* record = extensionEntry(e, "ACAD_MLATT");
  if (!record) return false;
  const StoredTag* flag = e.data.find(record->tagBegin, record->tagCount, 70);
  return flag && integerOf(*flag) != 0;
}

// The text of the embedded multiline part (its chunks 3 and last part 1 after the 101 group), if any.
bool embeddedText(const EntityView& e, std::string& out) {
  const Groups& g = e.g;
  std::uint32_t i = 0;
  while (i < g.ownCount() && g.at(i).code != 101) ++i;
  if (i == g.ownCount()) return false;
  std::string text;
  for (++i; i < g.ownCount(); ++i) {
    if (g.at(i).code == 3) {
      text += g.textAt(i);
    } else if (g.at(i).code == 1) {
      text += g.textAt(i);
      out = std::move(text);
      return true;
    }
  }
  return false;
}

// ---- multiline text ----

// The contents of a multiline text; a multi-column text of R2000 to R2013 drawings is stored as one
// record per column, the later ones owned by the first: their contents follow the first's, in the order
// the first names them (each column but the last ends with its column break).
std::string mtextContents(const EntityView& e) {
  std::string out = chunkedText(e);
  const Groups& g = e.g;
  bool inColumns = false;
  for (std::uint32_t i = g.ownCount(); i < g.size(); ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 1000 && g.textAt(i) == "ACAD_MTEXT_COLUMNS_BEGIN") {
      inColumns = true;
    } else if (t.code == 1000 && g.textAt(i) == "ACAD_MTEXT_COLUMNS_END") {
      break;
    } else if (inColumns && t.code == 1005) {
      const platform::ObjectId id = e.data.byHandle.find(parseHandle(g.textAt(i)));
      if (platform::idKind(id) != platform::IdKind::Entity) continue;
      const std::uint32_t part = platform::idIndex(id);
      if (part != e.index && e.data.entities[part].owner == e.index) out += chunkedText(EntityView(e.data, part));
    }
  }
  return out;
}

// Paragraphs of a multiline text: its "\P" breaks (an escaped backslash "\\" is not one) plus one.
int paragraphCount(std::string_view contents) {
  int n = 1;
  for (std::size_t i = 0; i + 1 < contents.size(); ++i) {
    if (contents[i] != '\\') continue;
    if (contents[i + 1] == 'P') ++n;
    ++i;
  }
  return n;
}

// The rotation of a multiline text: its direction (11, WCS) measured in its plane, else its angle (50,
// radians).
double mtextRotation(const EntityView& e) {
  if (!findOwn(e, 11)) return ownReal(e, 50, 0.0);
  const Vector3d dir = wcsPoint(e, 11).asVector();
  const Vector3d n = e.normal();
  const Vector3d ax = platform::arbitraryAxisX(n);
  const Vector3d ay = n.cross(ax);
  return std::atan2(dir.dot(ay), dir.dot(ax));
}

// ---- tables ----

struct TableData {
  long long rows = 0, columns = 0;
  std::vector<double> rowHeights, columnWidths;
  std::vector<std::string> texts, dates;
  std::vector<double> flags{0, 0, 0, 0, 0};
  long long flowDirection = 0;
  bool flowOverridden = false;
  Vector3d direction{1, 0, 0};
};

// Value data types of table cells.
constexpr long long kValueString = 4;
constexpr long long kValueDate = 8;
// Content types of table cells in TABLECONTENT objects.
constexpr long long kContentBlock = 4;

std::string blockNameOf(const DatabaseData& d, std::string_view hex) {
  const platform::ObjectId id = d.byHandle.find(parseHandle(hex));
  if (platform::idKind(id) != platform::IdKind::BlockRecord) return {};
  return d.blocks[platform::idIndex(id)].name;
}

// One cell being read: its text parts, its value (R2007 and later drawings) and its block.
struct CellReader {
  explicit CellReader(const DatabaseData& data) : d(data) {}
  const DatabaseData& d;
  std::string chunks, text, valueText, formatted, block;
  long long cellType = 1;  // 1 text, 2 block
  long long valueType = -1;
  bool inValue = false, sawValue = false, sawText = false;

  void tag(const Groups& g, std::uint32_t i) {
    const StoredTag& t = g.at(i);
    const std::string_view v = t.type == TagType::Text || t.type == TagType::Handle ? g.textAt(i) : std::string_view();
    if (t.code == 301 && v == "CELL_VALUE") {
      inValue = sawValue = true;
      chunks.clear();
    } else if (t.code == 304 && v == "ACVALUE_END") {
      inValue = false;
    } else if (inValue) {
      if (t.code == 90 && valueType < 0) {
        valueType = integerOf(t);
      } else if (t.code == 2 || t.code == 3) {
        chunks += v;
      } else if (t.code == 1) {
        valueText = chunks + std::string(v);
      } else if (t.code == 302) {
        formatted = v;
      }
    } else if (t.code == 2 || t.code == 3) {
      chunks += v;
    } else if (t.code == 1 && !sawText) {
      text = chunks + std::string(v);
      sawText = true;
    } else if (t.code == 340 && cellType == 2 && block.empty()) {
      block = blockNameOf(d, v);
    }
  }
  // The cell's text: a block cell's block name, a value's text (as stored for strings, as shown for
  // other types), else the cell's text.
  std::string cellText() const {
    if (!block.empty()) return block;
    if (sawValue) return valueType == kValueString || valueType < 0 ? valueText : formatted;
    return text;
  }
  std::string dateText() const { return valueType == kValueDate ? formatted : std::string(); }
};

// The TABLECONTENT object of a table: named by an "ACAD_XREC_ROUNDTRIP" record of its extension
// dictionary, which drawings of R2010 and later write.
const ObjectRec* tableContent(const EntityView& e) {
  const ObjectRec* record = extensionEntry(e, "ACAD_XREC_ROUNDTRIP");
  if (!record) return nullptr;
  const Groups g(e.data, record->tagBegin, record->tagCount);
  for (std::uint32_t i = 0; i < g.size(); ++i) {
    if (g.at(i).code != 360 && g.at(i).code != 340) continue;
    const ObjectRec* o = e.data.object(parseHandle(g.textAt(i)));
    if (o && e.data.name(o->type) == "TABLECONTENT") return o;
  }
  return nullptr;
}

// Reads rows, columns, their sizes and the cells of a TABLECONTENT object: columns ("300 COLUMN", width
// 40 inside TABLECOLUMN_BEGIN/END), rows ("301 ROW", height 40 inside TABLEROW_BEGIN/END) and cells
// ("300 CELL", their first content inside CELLCONTENT_BEGIN/END: a value or a block).
void readTableContent(const DatabaseData& d, const ObjectRec& o, TableData& out) {
  const Groups g(d, o.tagBegin, o.tagCount);
  std::vector<double> widths, heights;
  std::vector<std::string> texts, dates;
  long long rows = 0, columns = 0;
  std::string block;  // the begin/end block we are in: "COLUMN", "ROW", "CONTENT" or ""
  bool cellDone = false;
  std::optional<CellReader> cell;
  long long contentType = -1;
  auto finishCell = [&] {
    if (!cell) return;
    texts.push_back(cell->cellText());
    dates.push_back(cell->dateText());
    cell.reset();
  };
  for (std::uint32_t i = 0; i < g.size(); ++i) {
    const StoredTag& t = g.at(i);
    const std::string_view v = t.type == TagType::Text || t.type == TagType::Handle ? g.textAt(i) : std::string_view();
    if (t.code == 300 && v == "COLUMN") {
      ++columns;
    } else if (t.code == 301 && v == "ROW") {
      finishCell();
      ++rows;
    } else if (t.code == 300 && v == "CELL") {
      finishCell();
      cell.emplace(d);
      cellDone = false;
      contentType = -1;
    } else if (t.code == 1 && (v == "TABLECOLUMN_BEGIN" || v == "TABLEROW_BEGIN" || v == "CELLCONTENT_BEGIN")) {
      block = v == "TABLECOLUMN_BEGIN" ? "COLUMN" : v == "TABLEROW_BEGIN" ? "ROW" : "CONTENT";
    } else if (t.code == 309 && (v == "TABLECOLUMN_END" || v == "TABLEROW_END" || v == "CELLCONTENT_END")) {
      if (block == "CONTENT") cellDone = true;
      block.clear();
    } else if (block == "COLUMN" && t.code == 40) {
      widths.push_back(realOf(t));
    } else if (block == "ROW" && t.code == 40) {
      heights.push_back(realOf(t));
    } else if (block == "CONTENT" && cell && !cellDone) {
      if (t.code == 90 && contentType < 0) {
        contentType = integerOf(t);
      } else if (t.code == 340 && contentType == kContentBlock) {
        cell->block = blockNameOf(d, v);
      } else if (t.code == 300 && v == "VALUE") {
        cell->inValue = cell->sawValue = true;
      } else if (cell->inValue) {
        cell->tag(g, i);
      }
    }
  }
  finishCell();
  if (out.rows == 0) out.rows = rows;
  if (out.columns == 0) out.columns = columns;
  if (out.rowHeights.empty()) out.rowHeights = std::move(heights);
  if (out.columnWidths.empty()) out.columnWidths = std::move(widths);
  out.texts = std::move(texts);
  out.dates = std::move(dates);
}

// A table's rows, columns, sizes, flags and cells. The AcDbTable part gives the table-wide groups before
// its first cell (rows 91, columns 92, row heights 141, column widths 142, flags 90 and 93 to 96, flow
// direction 70) and then one cell per 171 group, row by row; a table without cells there (drawings of
// R2010 and later need not write them) is read from its TABLECONTENT object.
TableData readTable(const EntityView& e) {
  TableData out;
  const Groups& g = e.g;
  bool inTable = false, markers = false, sawRows = false, sawColumns = false;
  bool flagSeen[5] = {false, false, false, false, false};
  std::optional<CellReader> cell;
  auto finishCell = [&] {
    if (!cell) return;
    out.texts.push_back(cell->cellText());
    out.dates.push_back(cell->dateText());
    cell.reset();
  };
  int depth = 0;
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 102) {
      depth += g.textAt(i).starts_with("{") ? 1 : -1;
      continue;
    }
    if (depth > 0) continue;
    if (t.code == 100) {
      markers = true;
      inTable = g.textAt(i) == "AcDbTable";
      continue;
    }
    if (markers && !inTable) continue;
    if (t.code == 171) {
      finishCell();
      cell.emplace(e.data);
      cell->cellType = integerOf(t);
      continue;
    }
    if (cell) {
      cell->tag(g, i);
      continue;
    }
    switch (t.code) {
      case 91:
        if (!sawRows) out.rows = integerOf(t);
        sawRows = true;
        break;
      case 92:
        if (!sawColumns) out.columns = integerOf(t);
        sawColumns = true;
        break;
      case 11:
        out.direction = {realOf(t), i + 1 < g.ownCount() && g.at(i + 1).code == 21 ? realOf(g.at(i + 1)) : 0.0,
                         i + 2 < g.ownCount() && g.at(i + 2).code == 31 ? realOf(g.at(i + 2)) : 0.0};
        break;
      case 141:
        out.rowHeights.push_back(realOf(t));
        break;
      case 142:
        out.columnWidths.push_back(realOf(t));
        break;
      case 70:
        if (!out.flowOverridden) out.flowDirection = integerOf(t);
        out.flowOverridden = true;
        break;
      case 90:
      case 93:
      case 94:
      case 95:
      case 96: {
        const std::size_t k = t.code == 90 ? 0 : static_cast<std::size_t>(t.code - 92);
        if (!flagSeen[k]) out.flags[k] = static_cast<double>(integerOf(t));
        flagSeen[k] = true;
        break;
      }
      default:
        break;
    }
  }
  finishCell();
  if (out.texts.empty())
    if (const ObjectRec* content = tableContent(e)) readTableContent(e.data, *content, out);
  if (!out.flowOverridden) {
    // The flow direction of the table's style (342 names the TABLESTYLE).
    if (const StoredTag* s = findOwn(e, 342))
      if (const ObjectRec* style = e.data.object(parseHandle(e.data.text(*s)))) {
        const Groups sg(e.data, style->tagBegin, style->tagCount);
        out.flowDirection = sg.integer(70);
      }
  }
  return out;
}

}  // namespace

std::span<const AccessorImpl> textAccessors() {
  static const AccessorImpl table[] = {
      // ---- single-line text, attributes and attribute definitions (AcDbText and its subclasses) ----
      // The first alignment point (10) and the second (11) are OCS points; without a second point (left
      // justified text) the alignment point is the position.
      pointOf(Accessor::position, DbClass::Text, [](const EntityView& e) { return ocsPoint(e, 10); }),
      pointOf(Accessor::alignmentPoint, DbClass::Text,
              [](const EntityView& e) {
                Point3d p;
                return ownPoint(e, 11, p, "AcDbText") ? e.toWcs(p) : ocsPoint(e, 10);
              }),
      realOf(Accessor::textHeight, DbClass::Text, [](const EntityView& e) { return ownReal(e, 40, 0.0, "AcDbText"); }),
      realOf(Accessor::textWidthFactor, DbClass::Text,
             [](const EntityView& e) { return ownReal(e, 41, 1.0, "AcDbText"); }),
      realOf(Accessor::textOblique, DbClass::Text,
             [](const EntityView& e) { return ownReal(e, 51, 0.0, "AcDbText") * kRadiansPerDegree; }),
      realOf(Accessor::textRotation, DbClass::Text,
             [](const EntityView& e) { return ownReal(e, 50, 0.0, "AcDbText") * kRadiansPerDegree; }),
      integerOf(Accessor::horizontalMode, DbClass::Text,
                [](const EntityView& e) { return ownInteger(e, 72, 0, "AcDbText"); }),
      // Text keeps its vertical mode in 73; attributes and their definitions in 74 (their 73 is a field length).
      integerOf(Accessor::verticalMode, DbClass::Text,
                [](const EntityView& e) { return ownInteger(e, 73, 0, "AcDbText"); }),
      integerOf(Accessor::verticalMode, DbClass::Attribute, [](const EntityView& e) { return ownInteger(e, 74, 0); }),
      integerOf(Accessor::verticalMode, DbClass::AttributeDefinition,
                [](const EntityView& e) { return ownInteger(e, 74, 0); }),
      textOf(Accessor::textString, DbClass::Text, [](const EntityView& e) { return ownText(e, 1, "AcDbText"); }),
      // A multiline attribute's text is that of its multiline part.
      textOf(Accessor::textString, DbClass::Attribute,
             [](const EntityView& e) {
               std::string text;
               return embeddedText(e, text) ? text : ownText(e, 1, "AcDbText");
             }),
      textOf(Accessor::textStyleName, DbClass::Text,
             [](const EntityView& e) {
               const StoredTag* t = findOwn(e, 7);
               return styleSpelling(e.data, t ? e.data.text(*t) : std::string_view("Standard"));
             }),
      integerOf(Accessor::lockPositionInBlock, DbClass::Attribute, lockFlag),
      integerOf(Accessor::lockPositionInBlock, DbClass::AttributeDefinition, lockFlag),
      integerOf(Accessor::isMTextAttribute, DbClass::Attribute,
                [](const EntityView& e) -> long long { return isMultiline(e); }),
      integerOf(Accessor::isMTextAttribute, DbClass::AttributeDefinition,
                [](const EntityView& e) -> long long { return isMultiline(e); }),
      textOf(Accessor::tag, DbClass::Attribute, [](const EntityView& e) { return ownText(e, 2, "AcDbAttribute"); }),
      textOf(Accessor::tag, DbClass::AttributeDefinition,
             [](const EntityView& e) { return ownText(e, 2, "AcDbAttributeDefinition"); }),
      textOf(Accessor::prompt, DbClass::AttributeDefinition,
             [](const EntityView& e) { return ownText(e, 3, "AcDbAttributeDefinition"); }),

      // ---- multiline text: location (10), direction (11) and normal are WCS ----
      pointOf(Accessor::position, DbClass::MText, [](const EntityView& e) { return wcsPoint(e, 10); }),
      realOf(Accessor::textHeight, DbClass::MText, [](const EntityView& e) { return ownReal(e, 40, 0.0); }),
      realOf(Accessor::textRotation, DbClass::MText, mtextRotation),
      vectorOf(Accessor::direction, DbClass::MText,
               [](const EntityView& e) {
                 if (findOwn(e, 11)) return wcsPoint(e, 11).asVector();
                 const double a = ownReal(e, 50, 0.0);
                 return platform::ocsToWcs(e.normal()).transform(Vector3d(std::cos(a), std::sin(a), 0.0));
               }),
      realOf(Accessor::mtextWidth, DbClass::MText, [](const EntityView& e) { return ownReal(e, 41, 0.0); }),
      // The height the text takes (43, written by the host); a drawing without it gets the height of its
      // paragraphs: the first line's height and, for each further paragraph, the line spacing of 5/3 of
      // the text height times the spacing factor (lines wrapped by the width are not counted).
      realOf(Accessor::actualHeight, DbClass::MText,
             [](const EntityView& e) {
               if (const StoredTag* t = findOwn(e, 43)) return realOf(*t);
               const double h = ownReal(e, 40, 0.0);
               return h + (paragraphCount(mtextContents(e)) - 1) * h * 5.0 / 3.0 * ownReal(e, 44, 1.0);
             }),
      realOf(Accessor::lineSpacingFactor, DbClass::MText, [](const EntityView& e) { return ownReal(e, 44, 1.0); }),
      integerOf(Accessor::lineSpacingStyle, DbClass::MText, [](const EntityView& e) { return ownInteger(e, 73, 1); }),
      textOf(Accessor::contents, DbClass::MText, mtextContents),
      textOf(Accessor::textStyleName, DbClass::MText,
             [](const EntityView& e) {
               const StoredTag* t = findOwn(e, 7);
               return styleSpelling(e.data, t ? e.data.text(*t) : std::string_view("Standard"));
             }),

      // ---- dimensions: definition points 10, 13 to 15 are WCS; the text position (11) and the block
      // position (12) are OCS ----
      textOf(Accessor::dimensionText, DbClass::Dimension,
             [](const EntityView& e) { return ownText(e, 1, "AcDbDimension"); }),
      realOf(Accessor::textRotation, DbClass::Dimension,
             [](const EntityView& e) { return ownReal(e, 53, 0.0, "AcDbDimension") * kRadiansPerDegree; }),
      integerOf(Accessor::lineSpacingStyle, DbClass::Dimension,
                [](const EntityView& e) { return ownInteger(e, 72, 1, "AcDbDimension"); }),
      realOf(Accessor::lineSpacingFactor, DbClass::Dimension,
             [](const EntityView& e) { return ownReal(e, 41, 1.0, "AcDbDimension"); }),
      // Middle centre (5) is the host's attachment of dimension text.
      integerOf(Accessor::textAttachment, DbClass::Dimension,
                [](const EntityView& e) { return ownInteger(e, 71, 5, "AcDbDimension"); }),
      realOf(Accessor::horizontalRotation, DbClass::Dimension,
             [](const EntityView& e) { return ownReal(e, 51, 0.0, "AcDbDimension") * kRadiansPerDegree; }),
      pointOf(Accessor::textPosition, DbClass::Dimension, [](const EntityView& e) { return ocsPoint(e, 11); }),
      pointOf(Accessor::dimBlockPosition, DbClass::Dimension, [](const EntityView& e) { return ocsPoint(e, 12); }),
      // Dynamic dimensions exist only while an entity is being edited; a drawing never stores one.
      integerOf(Accessor::isDynamicDimension, DbClass::Dimension, [](const EntityView&) -> long long { return 0; }),
      textOf(Accessor::textStyleName, DbClass::Dimension, dimensionTextStyle),
      pointOf(Accessor::xLine1Point, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 13); }),
      pointOf(Accessor::xLine2Point, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 14); }),
      pointOf(Accessor::dimLinePoint, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 10); }),
      realOf(Accessor::dimensionOblique, DbClass::Dimension,
             [](const EntityView& e) { return ownReal(e, 52, 0.0) * kRadiansPerDegree; }),
      // Radial: centre 10, chord point 15. Diametric: far chord point 10, chord point 15. Angular: arc
      // point 10, centre 15.
      pointOf(Accessor::centerPoint, DbClass::RadialDimension, [](const EntityView& e) { return wcsPoint(e, 10); }),
      pointOf(Accessor::centerPoint, DbClass::ThreePointAngularDimension,
              [](const EntityView& e) { return wcsPoint(e, 15); }),
      pointOf(Accessor::chordPoint, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 15); }),
      pointOf(Accessor::farChordPoint, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 10); }),
      pointOf(Accessor::arcPoint, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 10); }),
      realOf(Accessor::leaderLength, DbClass::Dimension, [](const EntityView& e) { return ownReal(e, 40, 0.0); }),
      // Extension arcs of radial and angular dimensions are not written to DXF; the host's defaults are
      // no arc (angles 0, flag off).
      realOf(Accessor::extArcStartAngle, DbClass::Dimension, [](const EntityView&) { return 0.0; }),
      realOf(Accessor::extArcEndAngle, DbClass::Dimension, [](const EntityView&) { return 0.0; }),
      integerOf(Accessor::extArcOn, DbClass::Dimension, [](const EntityView&) -> long long { return 0; }),
      pointOf(Accessor::ordinateOrigin, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 10); }),
      pointOf(Accessor::definingPoint, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 13); }),
      pointOf(Accessor::leaderEndPoint, DbClass::Dimension, [](const EntityView& e) { return wcsPoint(e, 14); }),

      // ---- leaders: vertices (10) are WCS ----
      integerOf(Accessor::hasArrowHead, DbClass::Leader, [](const EntityView& e) { return ownInteger(e, 71, 1); }),
      integerOf(Accessor::hasHookLine, DbClass::Leader, [](const EntityView& e) { return ownInteger(e, 75, 0); }),
      integerOf(Accessor::isSplined, DbClass::Leader, [](const EntityView& e) { return ownInteger(e, 72, 0); }),
      pointsOf(Accessor::leaderVertices, DbClass::Leader, [](const EntityView& e) { return e.g.points(10); }),

      // ---- geometric tolerances: location (10) and direction (11) are WCS ----
      pointOf(Accessor::position, DbClass::Fcf, [](const EntityView& e) { return wcsPoint(e, 10); }),
      textOf(Accessor::toleranceText, DbClass::Fcf, [](const EntityView& e) { return ownText(e, 1); }),
      vectorOf(Accessor::direction, DbClass::Fcf,
               [](const EntityView& e) {
                 return e.g.vector(11, {1, 0, 0});
               }),
      realOf(Accessor::dimgap, DbClass::Fcf, [](const EntityView& e) { return dimvar(e, 147, "$DIMGAP", 0.09); }),
      realOf(Accessor::dimscale, DbClass::Fcf, [](const EntityView& e) { return dimvar(e, 40, "$DIMSCALE", 1.0); }),
      realOf(Accessor::dimtxt, DbClass::Fcf, [](const EntityView& e) { return dimvar(e, 140, "$DIMTXT", 0.18); }),

      // ---- tables: the insertion point (10) is OCS, the direction (11) WCS ----
      pointOf(Accessor::position, DbClass::Table, [](const EntityView& e) { return ocsPoint(e, 10); }),
      vectorOf(Accessor::direction, DbClass::Table, [](const EntityView& e) { return readTable(e).direction; }),
      integerOf(Accessor::numRows, DbClass::Table, [](const EntityView& e) { return readTable(e).rows; }),
      integerOf(Accessor::numColumns, DbClass::Table, [](const EntityView& e) { return readTable(e).columns; }),
      realsOf(Accessor::rowHeights, DbClass::Table, [](const EntityView& e) { return readTable(e).rowHeights; }),
      realsOf(Accessor::columnWidths, DbClass::Table, [](const EntityView& e) { return readTable(e).columnWidths; }),
      textsOf(Accessor::cellTexts, DbClass::Table, [](const EntityView& e) { return readTable(e).texts; }),
      textsOf(Accessor::cellDates, DbClass::Table, [](const EntityView& e) { return readTable(e).dates; }),
      integerOf(Accessor::flowDirection, DbClass::Table,
                [](const EntityView& e) { return readTable(e).flowDirection; }),
      realsOf(Accessor::tableFlags, DbClass::Table, [](const EntityView& e) { return readTable(e).flags; }),
  };
  return table;
}

}  // namespace headless
