// Synthetic DXF drawings: tables, block definitions and a grid of mixed entities, written as a stream.
#include "drawing_generator.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

namespace vkbench {

namespace {

// ---- deterministic random numbers (the standard distributions differ between libraries) ----

constexpr std::uint64_t splitmix(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ULL;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
  return x ^ (x >> 31);
}

class Rng {
 public:
  explicit Rng(std::uint64_t seed) : state_(splitmix(seed)) {}
  Rng(std::uint64_t seed, std::uint64_t stream) : state_(splitmix(splitmix(seed) ^ splitmix(stream + 0x5851F42D4C957F2DULL))) {}
  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15ULL;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }  // [0, 1)
  double uniform(double a, double b) { return a + (b - a) * unit(); }
  int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
  int between(int a, int b) { return a + below(b - a + 1); }  // [a, b]
  bool chance(double p) { return unit() < p; }

 private:
  std::uint64_t state_;
};

// Streams of the random numbers: each entity draws from its own, so that an entity is the same whatever
// the drawing's size, and a revision reproduces its base entity by entity.
constexpr std::uint64_t kEditStream = 0xED17ED17ED17ULL;
constexpr std::uint64_t kAddStream = 0xADDADDADDULL;

// ---- the drawing's vocabulary ----

enum class Kind : std::uint8_t { Line, Circle, Arc, LwPolyline, Text, MText, Point, Ellipse, Spline, Insert, Hatch, Dimension, Polyline, Solid };
constexpr int kKinds = 14;
constexpr std::array<const char*, kKinds> kKindNames = {"LINE",  "CIRCLE",  "ARC",       "LWPOLYLINE", "TEXT",
                                                         "MTEXT", "POINT",   "ELLIPSE",   "SPLINE",     "INSERT",
                                                         "HATCH", "DIMENSION", "POLYLINE", "SOLID"};
// How often each kind occurs, in percent: lines and polylines dominate plans, then text and blocks.
constexpr std::array<int, kKinds> kKindWeights = {24, 8, 8, 12, 10, 5, 3, 3, 3, 9, 4, 5, 3, 3};
// The simple mix: the five plainest kinds, mostly lines, in percent; about 180 bytes an entity in R2000.
constexpr std::array<int, kKinds> kSimpleKindWeights = {45, 20, 15, 5, 15, 0, 0, 0, 0, 0, 0, 0, 0, 0};

constexpr int weightTotal(const std::array<int, kKinds>& weights) {
  int total = 0;
  for (const int w : weights) total += w;
  return total;
}
static_assert(weightTotal(kKindWeights) == 100 && weightTotal(kSimpleKindWeights) == 100, "weights are percentages");

struct LayerDef {
  const char* name;
  int color;
  const char* linetype;
  int lineweight;  // hundredths of a millimetre; -3 the default
};
constexpr std::array<LayerDef, 20> kLayers = {{
    {"0", 7, "Continuous", -3},          {"A-WALL", 2, "Continuous", 50},    {"A-DOOR", 4, "Continuous", 25},
    {"A-GLAZ", 5, "Continuous", 18},     {"A-FURN", 8, "Continuous", 13},    {"A-ANNO-TEXT", 7, "Continuous", 18},
    {"A-ANNO-DIMS", 3, "Continuous", 13}, {"A-HATCH", 253, "Continuous", 9}, {"S-GRID", 1, "DASHED", 13},
    {"S-COLS", 6, "Continuous", 35},     {"M-DUCT", 140, "Continuous", 25},  {"M-PIPE", 30, "DASHED", 25},
    {"E-LITE", 40, "Continuous", 18},    {"E-POWR", 210, "DASHED", 18},     {"P-FIXT", 150, "Continuous", 25},
    {"C-TOPO", 92, "DASHED", 9},         {"C-PROP", 12, "DASHED", 35},      {"L-PLNT", 84, "Continuous", 13},
    {"G-TTLB", 7, "Continuous", 50},     {"G-NOTE", 1, "Continuous", 18},
}};

// Lineweights in hundredths of a millimetre: only the host's standard values are valid.
constexpr std::array<int, 8> kLineweights = {0, 9, 13, 18, 25, 35, 50, 70};
constexpr std::array<const char*, 2> kStyles = {"Standard", "ROMANS"};

struct AttDef {
  const char* tag;
  const char* prompt;
  const char* value;  // the default
  double x, y, height;
  bool numeric;  // the inserts fill in numbers rather than words
};

// A block definition: its geometry in block units, around the origin, and its attribute definitions.
struct BlockDef {
  const char* name;
  std::array<AttDef, 3> attdefs;
  int attdefCount;
};
constexpr int kBlocks = 10;
constexpr std::array<BlockDef, kBlocks> kBlockDefs = {{
    {"DOOR_900", {}, 0},
    {"WINDOW_1200", {}, 0},
    {"COLUMN_400", {}, 0},
    {"GRID_BUBBLE", {{{"GRID", "Grid label", "A", 0.0, -0.9, 1.8, true}}}, 1},
    {"ROOM_TAG",
     {{{"NAME", "Room name", "OFFICE", -4.5, 0.8, 1.2, false}, {"NUMBER", "Room number", "101", -4.5, -1.0, 1.0, true},
       {"AREA", "Area", "12.50 m2", -4.5, -2.4, 0.8, true}}},
     3},
    {"NORTH_ARROW", {}, 0},
    {"VALVE", {}, 0},
    {"LIGHT_FIXTURE", {{{"TYPE", "Fixture type", "L1", 2.5, 0.0, 0.8, false}}}, 1},
    {"SECTION_MARK", {{{"DETAIL", "Detail number", "1", 0.0, 0.4, 1.0, true}, {"SHEET", "Sheet", "A-501", 0.0, -1.4, 0.8, false}}}, 2},
    {"TREE", {}, 0},
}};

constexpr std::array<const char*, 24> kWords = {
    "OFFICE", "CORRIDOR", "STAIR", "LOBBY", "STORE",  "PLANT", "WC",     "KITCHEN",
    "MEETING", "ROOM",    "LEVEL", "GRID",  "DETAIL", "SEE",   "SECTION", "TYP.",
    "FFL",    "SSL",      "NEW",   "EXISTING", "WALL", "DOOR", "WINDOW", "RISER"};

// ---- revisions: how the edited entities are edited ----

// Shares of the edits, in order: deleted, moved, recoloured, given another text (when the entity has one;
// otherwise resized or reshaped), and resized or reshaped for the rest. Deleting a little keeps the pairs
// of drawings mostly matched, as real revisions are.
constexpr double kDeleteShare = 0.15;
constexpr double kMoveShare = 0.30;
constexpr double kRecolourShare = 0.20;
constexpr double kRetextShare = 0.20;
// A revision adds about as many entities as it deletes, so that both drawings are about the same size.
constexpr double kAddShare = kDeleteShare;

// ---- the drawing's layout: entities sit on a grid so that their extents spread out ----

constexpr double kCell = 100.0;      // drawing units per grid cell; an entity stays well inside its cell
constexpr double kOriginX = 25000.0;  // where the grid starts, as a site plan placed in survey coordinates
constexpr double kOriginY = 10000.0;

// Handles: the tables, blocks and objects take the small handles; every top-level entity owns a range of
// 16, enough for a polyline's 8 vertices and SEQEND or an insert's 3 attributes and SEQEND.
constexpr std::uint64_t kFirstEntityHandle = 0x1000;
constexpr std::uint64_t kHandlesPerEntity = 16;

struct Pt {
  double x = 0.0, y = 0.0;
};

struct Attrib {
  int def = 0;  // index into its block's attribute definitions
  std::string value;
};

// One top-level entity. Its points are relative to `base`, so that moving it moves all of them.
struct Ent {
  Kind kind = Kind::Line;
  std::uint64_t slot = 0;
  int layer = 0;
  int color = 256;       // 256 ByLayer
  int trueColor = -1;    // 0xRRGGBB, or -1 for none
  int linetype = -1;     // -1 ByLayer (not written), 0 Continuous, 1 DASHED, 2 ByBlock
  int lineweight = -1;   // -1 ByLayer (not written)
  double ltscale = 1.0;
  Pt base;
  std::vector<Pt> pts;
  std::vector<double> bulges;
  std::vector<double> knots;
  double radius = 0.0, start = 0.0, end = 0.0, height = 0.0, rotation = 0.0, ratio = 1.0, width = 0.0;
  double scale = 1.0;
  bool closed = false;
  int style = 0, attach = 1, block = 0, justify = 0;
  bool solidFill = true;
  std::string text;
  std::vector<Attrib> attribs;

  void reset() {
    pts.clear();
    bulges.clear();
    knots.clear();
    text.clear();
    attribs.clear();
    color = 256;
    trueColor = -1;
    linetype = -1;
    lineweight = -1;
    ltscale = 1.0;
    radius = start = end = height = rotation = width = 0.0;
    ratio = scale = 1.0;
    closed = false;
    style = block = justify = 0;
    attach = 1;
    solidFill = true;
  }
};

// ---- output: a buffered writer of group code / value lines ----

class Writer {
 public:
  Writer(std::FILE* file, bool crlf) : file_(file), eol_(crlf ? "\r\n" : "\n"), buf_(kBufferSize) {}

  bool ok() const { return ok_; }
  std::uint64_t bytes() const { return written_ + used_; }
  bool flush() {
    if (used_ > 0 && std::fwrite(buf_.data(), 1, used_, file_) != used_) ok_ = false;
    written_ += used_;
    used_ = 0;
    return ok_;
  }

  void str(int code, std::string_view value) {
    room(value.size() + 16);
    putCode(code);
    if (value.size() > buf_.size() / 2) {
      flush();
      if (std::fwrite(value.data(), 1, value.size(), file_) != value.size()) ok_ = false;
      written_ += value.size();
    } else {
      std::memcpy(buf_.data() + used_, value.data(), value.size());
      used_ += value.size();
    }
    putEol();
  }
  void integer(int code, long long value) {
    room(48);
    putCode(code);
    used_ = static_cast<std::size_t>(std::to_chars(buf_.data() + used_, buf_.data() + buf_.size(), value).ptr - buf_.data());
    putEol();
  }
  // Reals as the shortest text that reads back to the same double, always with a decimal point.
  void real(int code, double value) {
    room(400);
    putCode(code);
    char* const begin = buf_.data() + used_;
    // Adding 0.0 turns -0.0 into 0.0, which readers show without the sign.
    char* const end = std::to_chars(begin, buf_.data() + buf_.size(), value + 0.0, std::chars_format::fixed).ptr;
    used_ = static_cast<std::size_t>(end - buf_.data());
    if (!std::memchr(begin, '.', static_cast<std::size_t>(end - begin))) {
      buf_[used_++] = '.';
      buf_[used_++] = '0';
    }
    putEol();
  }
  // Handles in upper-case hexadecimal.
  void handle(int code, std::uint64_t h) {
    room(48);
    putCode(code);
    char digits[16];
    int n = 0;
    do {
      digits[n++] = "0123456789ABCDEF"[h & 15];
      h >>= 4;
    } while (h);
    while (n > 0) buf_[used_++] = digits[--n];
    putEol();
  }
  void point(int code, double x, double y, double z = 0.0) {
    real(code, x);
    real(code + 10, y);
    real(code + 20, z);
  }
  void point2(int code, double x, double y) {
    real(code, x);
    real(code + 10, y);
  }

 private:
  static constexpr std::size_t kBufferSize = 1 << 20;  // a megabyte per write keeps the system calls rare

  void room(std::size_t n) {
    if (used_ + n + 16 > buf_.size()) flush();
  }
  // Group codes right-aligned in three columns, as the host writes them.
  void putCode(int code) {
    char* p = buf_.data() + used_;
    if (code >= 0 && code < 10) {
      *p++ = ' ';
      *p++ = ' ';
    } else if (code >= 10 && code < 100) {
      *p++ = ' ';
    }
    p = std::to_chars(p, buf_.data() + buf_.size(), code).ptr;
    used_ = static_cast<std::size_t>(p - buf_.data());
    putEol();
  }
  void putEol() {
    buf_[used_++] = eol_[0];
    if (eol_[1]) buf_[used_++] = eol_[1];
  }

  std::FILE* file_;
  const char* eol_;
  std::vector<char> buf_;
  std::size_t used_ = 0;
  std::uint64_t written_ = 0;
  bool ok_ = true;
};

// ---- the generator ----

class Generator {
 public:
  Generator(const GeneratorOptions& options, Writer& out, GeneratorStats& stats)
      : opt_(options),
        out_(out),
        stats_(stats),
        modern_(options.version != "AC1009"),
        utf8_(options.version >= "AC1021"),
        weights_(options.mix == "simple" ? kSimpleKindWeights : kKindWeights),
        weightTotal_(weightTotal(weights_)) {}

  void run();

 private:
  std::uint64_t fixedHandle() { return nextFixed_++; }

  // Sections.
  void header(std::uint64_t slots);
  void classes();
  void tables();
  void tableHead(const char* name, std::uint64_t handle, int count);
  void tableRecord(const char* type, const char* subclass, std::uint64_t handle, std::uint64_t table);
  void blocks();
  void blockDefinition(int b);
  void entities();
  void objects();

  // Entities.
  void makeEntity(Ent& e, std::uint64_t slot, Rng& rng) const;
  void makeText(std::string& out, Rng& rng) const;
  void makeMText(std::string& out, Rng& rng) const;
  bool applyEdit(Ent& e, Rng& rng);
  void writeEntity(const Ent& e);
  void common(const char* name, std::uint64_t handle, std::uint64_t owner, const Ent& e, const char* subclass);
  void blockCommon(const char* name, std::uint64_t owner, const char* subclass);

  const GeneratorOptions& opt_;
  Writer& out_;
  GeneratorStats& stats_;
  const bool modern_;  // R2000 and later: handles, owners and subclass markers
  const bool utf8_;    // R2007 and later store texts as UTF-8
  const std::array<int, kKinds>& weights_;  // how often each kind occurs, out of weightTotal_
  const int weightTotal_;
  std::uint64_t nextFixed_ = 0x20;
  std::uint64_t cols_ = 1, rows_ = 1, added_ = 0;
  // Handles of the records the entities point to.
  std::uint64_t modelSpaceRecord_ = 0, paperSpaceRecord_ = 0, modelLayout_ = 0, paperLayout_ = 0;
  std::uint64_t layoutDictionary_ = 0, rootDictionary_ = 0, groupDictionary_ = 0;
  std::array<std::uint64_t, kBlocks> blockRecords_{};
  std::array<std::uint64_t, kKinds> counts_{};  // top-level entities written, by kind
};

void Generator::run() {
  const std::uint64_t n = opt_.entities;
  added_ = opt_.revision ? static_cast<std::uint64_t>(std::llround(static_cast<double>(n) * opt_.editFraction * kAddShare)) : 0;
  cols_ = std::max<std::uint64_t>(1, static_cast<std::uint64_t>(std::ceil(std::sqrt(static_cast<double>(n)))));
  rows_ = std::max<std::uint64_t>(1, (n + added_ + cols_ - 1) / cols_);
  // The records that everything refers to get their handles first.
  if (modern_) {
    rootDictionary_ = fixedHandle();
    groupDictionary_ = fixedHandle();
    layoutDictionary_ = fixedHandle();
    modelLayout_ = fixedHandle();
    paperLayout_ = fixedHandle();
    modelSpaceRecord_ = fixedHandle();
    paperSpaceRecord_ = fixedHandle();
    for (std::uint64_t& h : blockRecords_) h = fixedHandle();
  }
  header(n + added_);
  if (modern_) classes();
  tables();
  blocks();
  entities();
  if (modern_) objects();
  out_.str(0, "EOF");
  for (int k = 0; k < kKinds; ++k)
    if (counts_[static_cast<std::size_t>(k)]) stats_.byType[kKindNames[static_cast<std::size_t>(k)]] = counts_[static_cast<std::size_t>(k)];
}

void Generator::header(std::uint64_t slots) {
  out_.str(0, "SECTION");
  out_.str(2, "HEADER");
  out_.str(9, "$ACADVER");
  out_.str(1, opt_.version);
  out_.str(9, "$DWGCODEPAGE");
  out_.str(3, "ANSI_1252");
  out_.str(9, "$INSBASE");
  out_.point(10, 0.0, 0.0);
  // The grid with a margin of one cell: long texts and edited entities may reach past their own cells.
  out_.str(9, "$EXTMIN");
  out_.point(10, kOriginX - kCell, kOriginY - kCell);
  out_.str(9, "$EXTMAX");
  out_.point(10, kOriginX + static_cast<double>(cols_ + 1) * kCell, kOriginY + static_cast<double>(rows_ + 1) * kCell);
  out_.str(9, "$LIMMIN");
  out_.point2(10, 0.0, 0.0);
  out_.str(9, "$LIMMAX");
  out_.point2(10, 420.0, 297.0);
  out_.str(9, "$LTSCALE");
  out_.real(40, 1.0);
  out_.str(9, "$TILEMODE");
  out_.integer(70, 1);
  if (modern_) {
    out_.str(9, "$INSUNITS");
    out_.integer(70, 4);
    out_.str(9, "$HANDSEED");
    out_.handle(5, entityHandle(slots));
  }
  out_.str(0, "ENDSEC");
}

void Generator::classes() {
  out_.str(0, "SECTION");
  out_.str(2, "CLASSES");
  out_.str(0, "ENDSEC");
}

void Generator::tableHead(const char* name, std::uint64_t handle, int count) {
  out_.str(0, "TABLE");
  out_.str(2, name);
  if (modern_) {
    out_.handle(5, handle);
    out_.handle(330, 0);
    out_.str(100, "AcDbSymbolTable");
  }
  out_.integer(70, count);
}

void Generator::tableRecord(const char* type, const char* subclass, std::uint64_t handle, std::uint64_t table) {
  out_.str(0, type);
  if (!modern_) return;
  out_.handle(std::strcmp(type, "DIMSTYLE") == 0 ? 105 : 5, handle);
  out_.handle(330, table);
  out_.str(100, "AcDbSymbolTableRecord");
  out_.str(100, subclass);
}

void Generator::tables() {
  out_.str(0, "SECTION");
  out_.str(2, "TABLES");

  std::uint64_t t = fixedHandle();
  tableHead("VPORT", t, 1);
  tableRecord("VPORT", "AcDbViewportTableRecord", fixedHandle(), t);
  out_.str(2, "*Active");
  out_.integer(70, 0);
  out_.point2(10, 0.0, 0.0);
  out_.point2(11, 1.0, 1.0);
  out_.point2(12, kOriginX + static_cast<double>(cols_) * kCell / 2, kOriginY + static_cast<double>(rows_) * kCell / 2);
  out_.real(40, static_cast<double>(rows_) * kCell * 1.1);
  out_.real(41, 1.6);
  out_.str(0, "ENDTAB");

  t = fixedHandle();
  tableHead("LTYPE", t, 4);
  struct Ltype {
    const char* name;
    const char* description;
    std::array<double, 2> dashes;
    int count;
  };
  for (const Ltype& lt : {Ltype{"ByBlock", "", {}, 0}, Ltype{"ByLayer", "", {}, 0}, Ltype{"Continuous", "Solid line", {}, 0},
                          Ltype{"DASHED", "Dashed __ __ __ __ __ __ __ __ __ __ __", {0.5, -0.25}, 2}}) {
    tableRecord("LTYPE", "AcDbLinetypeTableRecord", fixedHandle(), t);
    out_.str(2, lt.name);
    out_.integer(70, 0);
    out_.str(3, lt.description);
    out_.integer(72, 65);
    out_.integer(73, lt.count);
    out_.real(40, std::abs(lt.dashes[0]) + std::abs(lt.dashes[1]));
    for (int i = 0; i < lt.count; ++i) {
      out_.real(49, lt.dashes[i]);
      if (modern_) out_.integer(74, 0);
    }
  }
  out_.str(0, "ENDTAB");

  t = fixedHandle();
  tableHead("LAYER", t, static_cast<int>(kLayers.size()));
  for (const LayerDef& l : kLayers) {
    tableRecord("LAYER", "AcDbLayerTableRecord", fixedHandle(), t);
    out_.str(2, l.name);
    out_.integer(70, 0);
    out_.integer(62, l.color);
    out_.str(6, l.linetype);
    if (modern_) out_.integer(370, l.lineweight);
  }
  out_.str(0, "ENDTAB");

  t = fixedHandle();
  tableHead("STYLE", t, static_cast<int>(kStyles.size()));
  for (const char* s : kStyles) {
    tableRecord("STYLE", "AcDbTextStyleTableRecord", fixedHandle(), t);
    out_.str(2, s);
    out_.integer(70, 0);
    out_.real(40, 0.0);
    out_.real(41, 1.0);
    out_.real(50, 0.0);
    out_.integer(71, 0);
    out_.real(42, 2.5);
    out_.str(3, std::strcmp(s, "Standard") == 0 ? "txt" : "romans.shx");
    out_.str(4, "");
  }
  out_.str(0, "ENDTAB");

  t = fixedHandle();
  tableHead("APPID", t, 1);
  tableRecord("APPID", "AcDbRegAppTableRecord", fixedHandle(), t);
  out_.str(2, "ACAD");
  out_.integer(70, 0);
  out_.str(0, "ENDTAB");

  t = fixedHandle();
  tableHead("DIMSTYLE", t, 1);
  if (modern_) out_.str(100, "AcDbDimStyleTable");
  tableRecord("DIMSTYLE", "AcDbDimStyleTableRecord", fixedHandle(), t);
  out_.str(2, "Standard");
  out_.integer(70, 0);
  out_.real(41, 2.5);   // arrow size
  out_.real(140, 2.5);  // text height
  out_.str(0, "ENDTAB");

  if (modern_) {
    t = fixedHandle();
    tableHead("BLOCK_RECORD", t, 2 + kBlocks);
    tableRecord("BLOCK_RECORD", "AcDbBlockTableRecord", modelSpaceRecord_, t);
    out_.str(2, "*Model_Space");
    out_.handle(340, modelLayout_);
    tableRecord("BLOCK_RECORD", "AcDbBlockTableRecord", paperSpaceRecord_, t);
    out_.str(2, "*Paper_Space");
    out_.handle(340, paperLayout_);
    for (int b = 0; b < kBlocks; ++b) {
      tableRecord("BLOCK_RECORD", "AcDbBlockTableRecord", blockRecords_[b], t);
      out_.str(2, kBlockDefs[b].name);
    }
    out_.str(0, "ENDTAB");
  }
  out_.str(0, "ENDSEC");
}

// The start of an entity of a block definition (on layer 0, so that it takes the insert's layer).
void Generator::blockCommon(const char* name, std::uint64_t owner, const char* subclass) {
  out_.str(0, name);
  if (modern_) {
    out_.handle(5, fixedHandle());
    out_.handle(330, owner);
    out_.str(100, "AcDbEntity");
  }
  out_.str(8, "0");
  if (modern_ && *subclass) out_.str(100, subclass);
}

void Generator::blocks() {
  out_.str(0, "SECTION");
  out_.str(2, "BLOCKS");
  if (modern_) {
    // The two spaces have their block definitions too; their entities are written in ENTITIES.
    for (int paper = 0; paper < 2; ++paper) {
      const char* name = paper ? "*Paper_Space" : "*Model_Space";
      const std::uint64_t record = paper ? paperSpaceRecord_ : modelSpaceRecord_;
      out_.str(0, "BLOCK");
      out_.handle(5, fixedHandle());
      out_.handle(330, record);
      out_.str(100, "AcDbEntity");
      if (paper) out_.integer(67, 1);
      out_.str(8, "0");
      out_.str(100, "AcDbBlockBegin");
      out_.str(2, name);
      out_.integer(70, 0);
      out_.point(10, 0.0, 0.0);
      out_.str(3, name);
      out_.str(1, "");
      out_.str(0, "ENDBLK");
      out_.handle(5, fixedHandle());
      out_.handle(330, record);
      out_.str(100, "AcDbEntity");
      if (paper) out_.integer(67, 1);
      out_.str(8, "0");
      out_.str(100, "AcDbBlockEnd");
    }
  }
  for (int b = 0; b < kBlocks; ++b) blockDefinition(b);
  out_.str(0, "ENDSEC");
}

void Generator::blockDefinition(int b) {
  const BlockDef& def = kBlockDefs[b];
  const std::uint64_t owner = modern_ ? blockRecords_[b] : 0;
  out_.str(0, "BLOCK");
  if (modern_) {
    out_.handle(5, fixedHandle());
    out_.handle(330, owner);
    out_.str(100, "AcDbEntity");
  }
  out_.str(8, "0");
  if (modern_) out_.str(100, "AcDbBlockBegin");
  out_.str(2, def.name);
  out_.integer(70, def.attdefCount > 0 ? 2 : 0);  // 2: the block has attribute definitions
  out_.point(10, 0.0, 0.0);
  out_.str(3, def.name);
  out_.str(1, "");

  const auto line = [&](double x1, double y1, double x2, double y2) {
    blockCommon("LINE", owner, "AcDbLine");
    out_.point(10, x1, y1);
    out_.point(11, x2, y2);
  };
  const auto circle = [&](double x, double y, double r) {
    blockCommon("CIRCLE", owner, "AcDbCircle");
    out_.point(10, x, y);
    out_.real(40, r);
  };
  const auto arc = [&](double x, double y, double r, double a0, double a1) {
    blockCommon("ARC", owner, "AcDbCircle");
    out_.point(10, x, y);
    out_.real(40, r);
    if (modern_) out_.str(100, "AcDbArc");
    out_.real(50, a0);
    out_.real(51, a1);
  };
  const auto rectangle = [&](double x0, double y0, double x1, double y1) {
    const std::array<Pt, 4> p = {{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}}};
    if (modern_) {
      blockCommon("LWPOLYLINE", owner, "AcDbPolyline");
      out_.integer(90, 4);
      out_.integer(70, 1);
      for (const Pt& v : p) out_.point2(10, v.x, v.y);
    } else {
      blockCommon("POLYLINE", owner, "");
      out_.integer(66, 1);
      out_.point(10, 0.0, 0.0);
      out_.integer(70, 1);
      for (const Pt& v : p) {
        blockCommon("VERTEX", owner, "");
        out_.point(10, v.x, v.y);
        out_.integer(70, 0);
      }
      blockCommon("SEQEND", owner, "");
    }
  };
  const auto solid = [&](Pt a, Pt b2, Pt c, Pt d) {
    blockCommon("SOLID", owner, "AcDbTrace");
    out_.point(10, a.x, a.y);
    out_.point(11, b2.x, b2.y);
    out_.point(12, c.x, c.y);
    out_.point(13, d.x, d.y);
  };

  switch (b) {
    case 0:  // a door leaf and its swing
      line(0.0, 0.0, 0.0, 9.0);
      arc(0.0, 0.0, 9.0, 0.0, 90.0);
      break;
    case 1:  // a window in its opening
      rectangle(-6.0, -0.75, 6.0, 0.75);
      line(-6.0, 0.0, 6.0, 0.0);
      break;
    case 2:  // a column with its centre lines
      rectangle(-2.0, -2.0, 2.0, 2.0);
      line(-2.0, -2.0, 2.0, 2.0);
      line(-2.0, 2.0, 2.0, -2.0);
      break;
    case 3:
      circle(0.0, 0.0, 3.0);
      break;
    case 4:
      rectangle(-5.0, -3.0, 5.0, 2.5);
      break;
    case 5:
      circle(0.0, 0.0, 4.0);
      solid({0.0, 4.0}, {-1.5, -2.0}, {0.0, -1.0}, {0.0, -1.0});
      line(0.0, -4.0, 0.0, 4.0);
      break;
    case 6:  // a valve: two triangles point to point
      solid({-3.0, -1.5}, {-3.0, 1.5}, {0.0, 0.0}, {0.0, 0.0});
      solid({3.0, -1.5}, {3.0, 1.5}, {0.0, 0.0}, {0.0, 0.0});
      line(-5.0, 0.0, 5.0, 0.0);
      break;
    case 7:
      circle(0.0, 0.0, 1.5);
      line(-1.06066017177982, -1.06066017177982, 1.06066017177982, 1.06066017177982);
      line(-1.06066017177982, 1.06066017177982, 1.06066017177982, -1.06066017177982);
      break;
    case 8:
      circle(0.0, 0.0, 2.5);
      line(-2.5, 0.0, 2.5, 0.0);
      arc(0.0, 0.0, 2.5, 300.0, 60.0);
      break;
    default:  // a tree: a canopy of three arcs around a trunk
      circle(0.0, 0.0, 0.5);
      arc(0.0, 2.0, 2.5, 20.0, 160.0);
      arc(-1.8, -1.0, 2.5, 140.0, 280.0);
      arc(1.8, -1.0, 2.5, 260.0, 40.0);
      break;
  }
  for (int a = 0; a < def.attdefCount; ++a) {
    const AttDef& ad = def.attdefs[a];
    blockCommon("ATTDEF", owner, "AcDbText");
    out_.point(10, ad.x, ad.y);
    out_.real(40, ad.height);
    out_.str(1, ad.value);
    if (modern_) out_.str(100, "AcDbAttributeDefinition");
    out_.str(3, ad.prompt);
    out_.str(2, ad.tag);
    out_.integer(70, 0);
  }

  out_.str(0, "ENDBLK");
  if (modern_) {
    out_.handle(5, fixedHandle());
    out_.handle(330, owner);
    out_.str(100, "AcDbEntity");
  }
  out_.str(8, "0");
  if (modern_) out_.str(100, "AcDbBlockEnd");
}

void Generator::makeText(std::string& out, Rng& rng) const {
  out.clear();
  const int words = rng.between(1, 4);
  for (int w = 0; w < words; ++w) {
    if (w) out += ' ';
    out += kWords[static_cast<std::size_t>(rng.below(static_cast<int>(kWords.size())))];
  }
  if (rng.chance(0.4)) {
    out += ' ';
    char digits[24];
    const auto r = std::to_chars(digits, digits + sizeof digits, rng.between(1, 999));
    out.append(digits, r.ptr);
  }
  // Now and then a diameter sign: a control code, or a character outside the code page.
  const double special = rng.unit();
  if (special < 0.03) out += " %%c200";
  else if (special < 0.05) out += utf8_ ? " \xE2\x8C\x80" "150" : " \\U+2300150";
}

void Generator::makeMText(std::string& out, Rng& rng) const {
  out.clear();
  if (rng.chance(0.5)) out += "{\\fArial|b1|i0|c0|p34;";
  std::string line;
  const int paragraphs = rng.between(1, 3);
  for (int p = 0; p < paragraphs; ++p) {
    if (p) out += "\\P";
    makeText(line, rng);
    out += line;
    if (p == 0 && out.front() == '{') out += '}';
  }
  // Some notes are long enough to need continuation groups.
  if (rng.chance(0.05)) {
    out += "\\P";
    while (out.size() < 600) {
      out += "NOTES: ALL DIMENSIONS IN MILLIMETRES UNLESS NOTED OTHERWISE. DO NOT SCALE FROM THIS DRAWING. ";
    }
  }
}

void Generator::makeEntity(Ent& e, std::uint64_t slot, Rng& rng) const {
  e.reset();
  e.slot = slot;
  // The kind, by weight; R12 lacks some kinds and writes their older relatives instead.
  int pick = rng.below(weightTotal_), k = 0;
  while (pick >= weights_[static_cast<std::size_t>(k)]) pick -= weights_[static_cast<std::size_t>(k++)];
  e.kind = static_cast<Kind>(k);
  if (!modern_) {
    switch (e.kind) {
      case Kind::LwPolyline:
      case Kind::Spline: e.kind = Kind::Polyline; break;
      case Kind::MText: e.kind = Kind::Text; break;
      case Kind::Ellipse: e.kind = Kind::Arc; break;
      case Kind::Hatch: e.kind = Kind::Solid; break;
      default: break;
    }
  }
  // Mostly by layer; some entities carry their own colour, linetype or lineweight.
  e.layer = rng.chance(0.05) ? 0 : rng.between(1, static_cast<int>(kLayers.size()) - 1);
  if (rng.chance(0.15)) e.color = rng.chance(0.7) ? rng.between(1, 7) : rng.between(8, 255);
  if (utf8_ && rng.chance(0.03)) e.trueColor = static_cast<int>(rng.next() & 0xFFFFFF);
  if (rng.chance(0.06)) e.linetype = rng.below(3);
  if (modern_ && rng.chance(0.08)) e.lineweight = kLineweights[static_cast<std::size_t>(rng.below(static_cast<int>(kLineweights.size())))];
  if (modern_ && rng.chance(0.03)) e.ltscale = rng.uniform(0.5, 5.0);

  const std::uint64_t col = slot % cols_, row = slot / cols_;
  e.base = {kOriginX + static_cast<double>(col) * kCell + rng.uniform(30.0, 45.0),
            kOriginY + static_cast<double>(row) * kCell + rng.uniform(30.0, 45.0)};
  const auto offset = [&rng](double reach) { return Pt{rng.uniform(-reach, reach), rng.uniform(-reach, reach)}; };

  switch (e.kind) {
    case Kind::Line:
      e.pts.push_back(offset(25.0));
      break;
    case Kind::Circle:
      e.radius = rng.uniform(0.5, 20.0);
      break;
    case Kind::Arc:
      e.radius = rng.uniform(0.5, 20.0);
      e.start = rng.uniform(0.0, 360.0);
      e.end = std::fmod(e.start + rng.uniform(10.0, 300.0), 360.0);
      break;
    case Kind::LwPolyline:
    case Kind::Polyline: {
      const int n = rng.between(3, 8);
      Pt p;
      for (int i = 0; i < n; ++i) {
        e.pts.push_back(p);
        e.bulges.push_back(rng.chance(0.2) ? rng.uniform(-1.0, 1.0) : 0.0);
        p.x = std::clamp(p.x + rng.uniform(-12.0, 12.0), -25.0, 25.0);
        p.y = std::clamp(p.y + rng.uniform(-12.0, 12.0), -25.0, 25.0);
      }
      e.closed = rng.chance(0.4);
      if (rng.chance(0.1)) e.width = rng.uniform(0.1, 1.0);
      break;
    }
    case Kind::Text:
      makeText(e.text, rng);
      e.height = rng.chance(0.7) ? 2.5 : rng.uniform(1.0, 10.0);
      if (rng.chance(0.2)) e.rotation = rng.chance(0.5) ? 90.0 : rng.uniform(0.0, 360.0);
      e.style = rng.below(2);
      if (rng.chance(0.3)) e.justify = rng.between(1, 2);
      break;
    case Kind::MText:
      makeMText(e.text, rng);
      e.height = rng.uniform(1.5, 5.0);
      e.width = rng.uniform(20.0, 60.0);
      e.attach = rng.between(1, 9);
      e.style = rng.below(2);
      break;
    case Kind::Point:
      break;
    case Kind::Ellipse: {
      const double a = rng.uniform(0.0, 2.0 * std::numbers::pi), r = rng.uniform(2.0, 20.0);
      e.pts.push_back({r * std::cos(a), r * std::sin(a)});
      e.ratio = rng.uniform(0.1, 1.0);
      if (rng.chance(0.3)) {
        e.start = rng.uniform(0.0, std::numbers::pi);
        e.end = e.start + rng.uniform(0.5, std::numbers::pi);
      } else {
        e.start = 0.0;
        e.end = 2.0 * std::numbers::pi;
      }
      break;
    }
    case Kind::Spline: {
      const int n = rng.between(4, 8);
      Pt p;
      for (int i = 0; i < n; ++i) {
        e.pts.push_back(p);
        p.x += rng.uniform(2.0, 6.0);
        p.y = std::clamp(p.y + rng.uniform(-8.0, 8.0), -25.0, 25.0);
      }
      // A clamped cubic: four zero knots, the inner ones evenly spaced, four end knots.
      const int inner = n - 4;
      for (int i = 0; i < 4; ++i) e.knots.push_back(0.0);
      for (int i = 1; i <= inner; ++i) e.knots.push_back(static_cast<double>(i) / (inner + 1));
      for (int i = 0; i < 4; ++i) e.knots.push_back(1.0);
      break;
    }
    case Kind::Insert: {
      e.block = rng.below(kBlocks);
      e.scale = rng.chance(0.6) ? 1.0 : rng.uniform(0.5, 3.0);
      if (rng.chance(0.3)) e.rotation = rng.chance(0.5) ? 90.0 * rng.between(1, 3) : rng.uniform(0.0, 360.0);
      const BlockDef& def = kBlockDefs[static_cast<std::size_t>(e.block)];
      for (int a = 0; a < def.attdefCount; ++a) {
        e.attribs.push_back({a, def.attdefs[static_cast<std::size_t>(a)].numeric
                                    ? std::to_string(rng.between(1, 999))
                                    : std::string(kWords[static_cast<std::size_t>(rng.below(static_cast<int>(kWords.size())))])});
      }
      break;
    }
    case Kind::Hatch: {
      const int n = rng.between(3, 6);
      const double r = rng.uniform(4.0, 20.0);
      for (int i = 0; i < n; ++i) {
        const double a = 2.0 * std::numbers::pi * (i + rng.uniform(0.0, 0.6)) / n;
        e.pts.push_back({r * std::cos(a), r * std::sin(a)});
      }
      e.solidFill = rng.chance(0.5);
      e.scale = rng.uniform(0.5, 4.0);
      break;
    }
    case Kind::Dimension: {
      // A rotated (linear) dimension: two measured points and where the dimension line passes.
      const bool vertical = rng.chance(0.3);
      const Pt a = offset(5.0), b = {a.x + rng.uniform(5.0, 40.0), a.y + rng.uniform(-5.0, 5.0)};
      const double d = rng.uniform(5.0, 15.0);
      if (vertical) {
        e.pts = {{a.y, a.x}, {b.y, b.x}, {std::min(a.y, b.y) - d, b.x}};
        e.rotation = 90.0;
      } else {
        e.pts = {a, b, {b.x, std::max(a.y, b.y) + d}};
        e.rotation = 0.0;
      }
      const Pt mid = {(e.pts[0].x + e.pts[1].x) / 2, (e.pts[0].y + e.pts[1].y) / 2};
      e.pts.push_back(vertical ? Pt{e.pts[2].x - 1.5, mid.y} : Pt{mid.x, e.pts[2].y + 1.5});
      if (rng.chance(0.1)) e.text = "<> TYP.";
      break;
    }
    case Kind::Solid: {
      const double w = rng.uniform(1.0, 15.0), h = rng.uniform(1.0, 15.0);
      e.pts = {{0.0, 0.0}, {w, 0.0}, {0.0, h}, {rng.chance(0.3) ? 0.0 : w, h}};
      break;
    }
  }
}

// Edits one entity of a revision; false when the edit deletes it.
bool Generator::applyEdit(Ent& e, Rng& rng) {
  const double what = rng.unit();
  if (what < kDeleteShare) {
    ++stats_.deleted;
    return false;
  }
  if (what < kDeleteShare + kMoveShare) {
    const double dx = rng.uniform(1.0, 15.0) * (rng.chance(0.5) ? 1 : -1), dy = rng.uniform(-15.0, 15.0);
    e.base.x += dx;
    e.base.y += dy;
    ++stats_.moved;
    return true;
  }
  if (what < kDeleteShare + kMoveShare + kRecolourShare) {
    e.color = e.color == 256 ? rng.between(1, 7) : (e.color == 1 ? 256 : 1);
    e.trueColor = -1;
    ++stats_.recoloured;
    return true;
  }
  const bool hasText = e.kind == Kind::Text || e.kind == Kind::MText || e.kind == Kind::Dimension ||
                       (e.kind == Kind::Insert && !e.attribs.empty());
  if (what < kDeleteShare + kMoveShare + kRecolourShare + kRetextShare && hasText) {
    std::string& t = e.kind == Kind::Insert ? e.attribs[static_cast<std::size_t>(rng.below(static_cast<int>(e.attribs.size())))].value : e.text;
    t += e.kind == Kind::MText ? "\\PREVISED" : " (REV B)";
    ++stats_.retexted;
    return true;
  }
  // A change of shape: a radius, a size, or one vertex.
  const double f = rng.uniform(1.1, 1.5);
  switch (e.kind) {
    case Kind::Circle:
    case Kind::Arc: e.radius *= f; break;
    case Kind::Text:
    case Kind::MText: e.height *= f; break;
    case Kind::Insert: e.scale *= f; break;
    case Kind::Point: e.base.x += f; break;
    case Kind::Ellipse: e.ratio = e.ratio > 0.5 ? e.ratio / f : e.ratio * f; break;
    default: {
      Pt& p = e.pts[static_cast<std::size_t>(rng.below(static_cast<int>(e.pts.size())))];
      p.x += f;
      p.y -= f;
      break;
    }
  }
  ++stats_.reshaped;
  return true;
}

void Generator::common(const char* name, std::uint64_t handle, std::uint64_t owner, const Ent& e, const char* subclass) {
  out_.str(0, name);
  if (modern_) {
    out_.handle(5, handle);
    out_.handle(330, owner);
    out_.str(100, "AcDbEntity");
  }
  out_.str(8, kLayers[static_cast<std::size_t>(e.layer)].name);
  if (e.linetype >= 0) out_.str(6, e.linetype == 0 ? "Continuous" : e.linetype == 1 ? "DASHED" : "ByBlock");
  if (e.color != 256) out_.integer(62, e.color);
  if (e.trueColor >= 0) out_.integer(420, e.trueColor);
  if (modern_ && e.lineweight >= 0) out_.integer(370, e.lineweight);
  if (modern_ && e.ltscale != 1.0) out_.real(48, e.ltscale);
  if (modern_ && *subclass) out_.str(100, subclass);
}

void Generator::writeEntity(const Ent& e) {
  const std::uint64_t h = entityHandle(e.slot);
  const std::uint64_t ms = modelSpaceRecord_;
  const double x = e.base.x, y = e.base.y;
  const auto at = [&e](std::size_t i) { return Pt{e.base.x + e.pts[i].x, e.base.y + e.pts[i].y}; };
  ++stats_.entities;
  ++counts_[static_cast<std::size_t>(e.kind)];
  switch (e.kind) {
    case Kind::Line: {
      common("LINE", h, ms, e, "AcDbLine");
      out_.point(10, x, y);
      const Pt p = at(0);
      out_.point(11, p.x, p.y);
      break;
    }
    case Kind::Circle:
      common("CIRCLE", h, ms, e, "AcDbCircle");
      out_.point(10, x, y);
      out_.real(40, e.radius);
      break;
    case Kind::Arc:
      common("ARC", h, ms, e, "AcDbCircle");
      out_.point(10, x, y);
      out_.real(40, e.radius);
      if (modern_) out_.str(100, "AcDbArc");
      out_.real(50, e.start);
      out_.real(51, e.end);
      break;
    case Kind::Point:
      common("POINT", h, ms, e, "AcDbPoint");
      out_.point(10, x, y);
      break;
    case Kind::LwPolyline:
      common("LWPOLYLINE", h, ms, e, "AcDbPolyline");
      out_.integer(90, static_cast<long long>(e.pts.size()));
      out_.integer(70, (e.closed ? 1 : 0) | 128);  // 128: the linetype runs on across vertices
      if (e.width > 0.0) out_.real(43, e.width);
      for (std::size_t i = 0; i < e.pts.size(); ++i) {
        const Pt p = at(i);
        out_.point2(10, p.x, p.y);
        if (e.bulges[i] != 0.0) out_.real(42, e.bulges[i]);
      }
      break;
    case Kind::Polyline: {
      common("POLYLINE", h, ms, e, "AcDb2dPolyline");
      out_.integer(66, 1);
      out_.point(10, 0.0, 0.0);
      out_.integer(70, e.closed ? 1 : 0);
      if (e.width > 0.0) {
        out_.real(40, e.width);
        out_.real(41, e.width);
      }
      for (std::size_t i = 0; i < e.pts.size(); ++i) {
        common("VERTEX", h + 1 + i, h, e, "AcDbVertex");
        if (modern_) out_.str(100, "AcDb2dVertex");
        const Pt p = at(i);
        out_.point(10, p.x, p.y);
        if (e.bulges[i] != 0.0) out_.real(42, e.bulges[i]);
        out_.integer(70, 0);
        ++stats_.subEntities;
      }
      common("SEQEND", h + 1 + e.pts.size(), h, e, "");
      break;
    }
    case Kind::Text:
      common("TEXT", h, ms, e, "AcDbText");
      out_.point(10, x, y);
      out_.real(40, e.height);
      out_.str(1, e.text);
      if (e.rotation != 0.0) out_.real(50, e.rotation);
      out_.str(7, kStyles[static_cast<std::size_t>(e.style)]);
      if (e.justify) {
        out_.integer(72, e.justify);
        out_.point(11, x, y);
      }
      if (modern_) out_.str(100, "AcDbText");
      break;
    case Kind::MText: {
      common("MTEXT", h, ms, e, "AcDbMText");
      out_.point(10, x, y);
      out_.real(40, e.height);
      out_.real(41, e.width);
      out_.integer(71, e.attach);
      out_.integer(72, 1);
      // Texts longer than 250 characters go in chunks of 250 (group 3) before the last part (group 1).
      std::string_view rest = e.text;
      while (rest.size() > 250) {
        out_.str(3, rest.substr(0, 250));
        rest.remove_prefix(250);
      }
      out_.str(1, rest);
      out_.str(7, kStyles[static_cast<std::size_t>(e.style)]);
      break;
    }
    case Kind::Ellipse:
      common("ELLIPSE", h, ms, e, "AcDbEllipse");
      out_.point(10, x, y);
      out_.point(11, e.pts[0].x, e.pts[0].y);
      out_.point(210, 0.0, 0.0, 1.0);
      out_.real(40, e.ratio);
      out_.real(41, e.start);
      out_.real(42, e.end);
      break;
    case Kind::Spline:
      common("SPLINE", h, ms, e, "AcDbSpline");
      out_.point(210, 0.0, 0.0, 1.0);
      out_.integer(70, 8);  // planar
      out_.integer(71, 3);
      out_.integer(72, static_cast<long long>(e.knots.size()));
      out_.integer(73, static_cast<long long>(e.pts.size()));
      out_.integer(74, 0);
      out_.real(42, 0.0000001);
      out_.real(43, 0.0000001);
      for (double k : e.knots) out_.real(40, k);
      for (std::size_t i = 0; i < e.pts.size(); ++i) {
        const Pt p = at(i);
        out_.point(10, p.x, p.y);
      }
      break;
    case Kind::Insert: {
      const BlockDef& def = kBlockDefs[static_cast<std::size_t>(e.block)];
      common("INSERT", h, ms, e, "AcDbBlockReference");
      if (!e.attribs.empty()) out_.integer(66, 1);
      out_.str(2, def.name);
      out_.point(10, x, y);
      if (e.scale != 1.0) {
        out_.real(41, e.scale);
        out_.real(42, e.scale);
        out_.real(43, e.scale);
      }
      if (e.rotation != 0.0) out_.real(50, e.rotation);
      if (e.attribs.empty()) break;
      const double c = std::cos(e.rotation * std::numbers::pi / 180.0), s = std::sin(e.rotation * std::numbers::pi / 180.0);
      for (std::size_t i = 0; i < e.attribs.size(); ++i) {
        const AttDef& ad = def.attdefs[static_cast<std::size_t>(e.attribs[i].def)];
        common("ATTRIB", h + 1 + i, h, e, "AcDbText");
        out_.point(10, x + e.scale * (ad.x * c - ad.y * s), y + e.scale * (ad.x * s + ad.y * c));
        out_.real(40, ad.height * e.scale);
        out_.str(1, e.attribs[i].value);
        if (e.rotation != 0.0) out_.real(50, e.rotation);
        if (modern_) out_.str(100, "AcDbAttribute");
        out_.str(2, ad.tag);
        out_.integer(70, 0);
        ++stats_.subEntities;
      }
      common("SEQEND", h + 1 + e.attribs.size(), h, e, "");
      break;
    }
    case Kind::Hatch:
      common("HATCH", h, ms, e, "AcDbHatch");
      out_.point(10, 0.0, 0.0);
      out_.point(210, 0.0, 0.0, 1.0);
      out_.str(2, e.solidFill ? "SOLID" : "ANSI31");
      out_.integer(70, e.solidFill ? 1 : 0);
      out_.integer(71, 0);
      out_.integer(91, 1);
      out_.integer(92, 3);  // an external boundary given as a polyline
      out_.integer(72, 0);
      out_.integer(73, 1);
      out_.integer(93, static_cast<long long>(e.pts.size()));
      for (std::size_t i = 0; i < e.pts.size(); ++i) {
        const Pt p = at(i);
        out_.point2(10, p.x, p.y);
      }
      out_.integer(97, 0);
      out_.integer(75, 0);
      out_.integer(76, 1);
      if (!e.solidFill) {
        // ANSI31: one family of lines at 45 degrees, 3.175 apart at scale 1.
        out_.real(52, 0.0);
        out_.real(41, e.scale);
        out_.integer(77, 0);
        out_.integer(78, 1);
        out_.real(53, 45.0);
        out_.real(43, 0.0);
        out_.real(44, 0.0);
        out_.real(45, -2.24506236614 * e.scale);
        out_.real(46, 2.24506236614 * e.scale);
        out_.integer(79, 0);
      }
      out_.integer(98, 0);
      break;
    case Kind::Dimension: {
      common("DIMENSION", h, ms, e, "AcDbDimension");
      const Pt line = at(2), text = at(3), p1 = at(0), p2 = at(1);
      out_.point(10, line.x, line.y);
      out_.point(11, text.x, text.y);
      out_.integer(70, 0);  // rotated
      if (modern_) out_.integer(71, 5);
      if (!e.text.empty()) out_.str(1, e.text);
      out_.str(3, "Standard");
      if (modern_) out_.str(100, "AcDbAlignedDimension");
      out_.point(13, p1.x, p1.y);
      out_.point(14, p2.x, p2.y);
      out_.real(50, e.rotation);
      if (modern_) out_.str(100, "AcDbRotatedDimension");
      break;
    }
    case Kind::Solid: {
      common("SOLID", h, ms, e, "AcDbTrace");
      for (int i = 0; i < 4; ++i) {
        const Pt p = at(static_cast<std::size_t>(i));
        out_.point(10 + i, p.x, p.y);
      }
      break;
    }
  }
}

void Generator::entities() {
  out_.str(0, "SECTION");
  out_.str(2, "ENTITIES");
  Ent e;
  const std::uint64_t n = opt_.entities;
  const std::uint64_t seed = opt_.revision ? opt_.baseSeed : opt_.seed;
  for (std::uint64_t i = 0; i < n; ++i) {
    Rng rng(seed, i);
    makeEntity(e, i, rng);
    if (opt_.revision) {
      Rng edit(opt_.seed ^ kEditStream, i);
      if (edit.chance(opt_.editFraction) && !applyEdit(e, edit)) continue;
    }
    writeEntity(e);
    if ((i & 0xFFF) == 0 && !out_.ok()) return;
  }
  for (std::uint64_t j = 0; j < added_; ++j) {
    Rng rng(opt_.seed ^ kAddStream, n + j);
    makeEntity(e, n + j, rng);
    writeEntity(e);
    ++stats_.added;
  }
  out_.str(0, "ENDSEC");
}

void Generator::objects() {
  out_.str(0, "SECTION");
  out_.str(2, "OBJECTS");
  out_.str(0, "DICTIONARY");
  out_.handle(5, rootDictionary_);
  out_.handle(330, 0);
  out_.str(100, "AcDbDictionary");
  out_.integer(281, 1);
  out_.str(3, "ACAD_GROUP");
  out_.handle(350, groupDictionary_);
  out_.str(3, "ACAD_LAYOUT");
  out_.handle(350, layoutDictionary_);
  const auto child = [&](std::uint64_t handle) {
    out_.str(0, "DICTIONARY");
    out_.handle(5, handle);
    out_.str(102, "{ACAD_REACTORS");
    out_.handle(330, rootDictionary_);
    out_.str(102, "}");
    out_.handle(330, rootDictionary_);
    out_.str(100, "AcDbDictionary");
    out_.integer(281, 1);
  };
  child(groupDictionary_);
  child(layoutDictionary_);
  out_.str(3, "Layout1");
  out_.handle(350, paperLayout_);
  out_.str(3, "Model");
  out_.handle(350, modelLayout_);
  for (int paper = 0; paper < 2; ++paper) {
    out_.str(0, "LAYOUT");
    out_.handle(5, paper ? paperLayout_ : modelLayout_);
    out_.str(102, "{ACAD_REACTORS");
    out_.handle(330, layoutDictionary_);
    out_.str(102, "}");
    out_.handle(330, layoutDictionary_);
    out_.str(100, "AcDbPlotSettings");
    out_.str(1, "");
    out_.str(2, "none_device");
    out_.str(4, "ISO_A3_(420.00_x_297.00_MM)");
    out_.str(6, "");
    for (int code = 40; code <= 47; ++code) out_.real(code, 0.0);
    out_.real(142, 1.0);
    out_.real(143, 1.0);
    out_.integer(70, paper ? 688 : 1712);
    out_.integer(72, 1);
    out_.integer(73, 0);
    out_.integer(74, paper ? 5 : 0);
    out_.str(7, "");
    out_.integer(75, 16);
    out_.real(147, 1.0);
    out_.str(100, "AcDbLayout");
    out_.str(1, paper ? "Layout1" : "Model");
    out_.integer(70, 1);
    out_.integer(71, paper ? 1 : 0);
    out_.point2(10, 0.0, 0.0);
    out_.point2(11, 420.0, 297.0);
    out_.point(12, 0.0, 0.0);
    out_.point(14, kOriginX, kOriginY);
    out_.point(15, kOriginX + static_cast<double>(cols_) * kCell, kOriginY + static_cast<double>(rows_) * kCell);
    out_.real(146, 0.0);
    out_.point(13, 0.0, 0.0);
    out_.point(16, 1.0, 0.0);
    out_.point(17, 0.0, 1.0);
    out_.integer(76, 0);
    out_.handle(330, paper ? paperSpaceRecord_ : modelSpaceRecord_);
  }
  out_.str(0, "ENDSEC");
}

}  // namespace

bool isSupportedVersion(std::string_view version) {
  return version == "AC1009" || version == "AC1015" || version == "AC1032";
}

bool isSupportedMix(std::string_view mix) { return mix == "full" || mix == "simple"; }

std::uint64_t entityHandle(std::uint64_t slot) { return kFirstEntityHandle + slot * kHandlesPerEntity; }

bool generateDrawing(const GeneratorOptions& options, const std::string& path, GeneratorStats& stats, std::string& error) {
  stats = GeneratorStats();
  if (!isSupportedVersion(options.version)) {
    error = "unsupported version '" + options.version + "' (AC1009, AC1015 or AC1032)";
    return false;
  }
  if (!isSupportedMix(options.mix)) {
    error = "unknown mix '" + options.mix + "' (full or simple)";
    return false;
  }
  if (options.revision && !(options.editFraction >= 0.0 && options.editFraction <= 1.0)) {
    error = "the edit fraction must lie between 0 and 1";
    return false;
  }
  // Every slot's handle range must fit in 64 bits.
  if (options.entities > (1ULL << 40)) {
    error = "too many entities";
    return false;
  }
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
  if (!file) {
    error = path + ": cannot create the file: " + std::strerror(errno);
    return false;
  }
  Writer out(file.get(), options.crlf);
  Generator gen(options, out, stats);
  gen.run();
  const bool flushed = out.flush();
  stats.bytes = out.bytes();
  if (!flushed || std::fclose(file.release()) != 0) {
    error = path + ": cannot write the file: " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace vkbench
