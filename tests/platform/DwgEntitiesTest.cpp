// DWG entities of the richer kinds against what DXF gives of the same drawing: hatch boundary paths and
// gradients, multileader context data across releases, proxy records of custom entities, surfaces with the
// curves they were made from, and text along arcs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/database.h"
#include "platform/headless/codepage.h"
#include "platform/headless/dwg_container.h"
#include "platform/headless/dwg_entities.h"
#include "platform/headless/dwg_reader.h"
#include "platform/headless/dxf_reader.h"
#include "support/TestSupport.h"

namespace {

using platform::DatabaseData;
using platform::StoredTag;

using vktest::corpusFile;

// One group as compared: its code and its value, numbers equal within what DXF writers round them to.
struct Group {
  int code;
  std::string text;
  double number = 0;
  bool operator==(const Group& o) const {
    return code == o.code && text == o.text &&
           std::abs(number - o.number) <= 1e-9 * std::max(1.0, std::abs(number));
  }
};
std::ostream& operator<<(std::ostream& os, const Group& g) {
  return g.text.empty() ? os << g.code << ":" << g.number : os << g.code << ":" << g.text;
}

Group groupOf(const DatabaseData& db, const StoredTag& t) {
  if (t.type == headless::TagType::Real) return {t.code, {}, t.real};
  if (headless::isNumeric(t.type)) return {t.code, {}, static_cast<double>(t.integer)};
  return {t.code, std::string(db.text(t))};
}

// The groups of an entity from the first group of code `from` up to (not including) the first of code `to`
// after it, kept when keep says so.
template <typename Keep>
std::vector<Group> groupsBetween(const DatabaseData& db, const platform::EntityRec& e, int from, int to, Keep keep) {
  std::vector<Group> out;
  const StoredTag* tags = db.tagsOf(e);
  bool inside = false;
  for (std::uint32_t i = 0; i < e.tagCount; ++i) {
    if (!inside && tags[i].code == from) inside = true;
    else if (inside && tags[i].code == to) break;
    if (inside && keep(tags[i].code)) out.push_back(groupOf(db, tags[i]));
  }
  return out;
}

std::map<platform::Handle, std::uint32_t> entitiesOfType(const DatabaseData& db, std::string_view type) {
  std::map<platform::Handle, std::uint32_t> out;
  for (std::uint32_t i = 0; i < db.entities.size(); ++i)
    if (db.name(db.entities[i].dxfName) == type) out[db.entities[i].handle] = i;
  return out;
}

// A drawing of the corpus read from its DWG and from its DXF twin (path without extension), with the
// entities of one type of each by handle; null when the corpus is absent or either does not read (a test
// failure then).
struct Twin {
  DatabaseData dwg, dxf;
  std::map<platform::Handle, std::uint32_t> ofDwg, ofDxf;
};
std::unique_ptr<Twin> readTwin(const std::string& path, std::string_view type) {
  const std::string dwg = corpusFile(path + ".dwg"), dxf = corpusFile(path + ".dxf");
  if (dwg.empty() || dxf.empty()) return nullptr;
  auto twin = std::make_unique<Twin>();
  platform::ReadReport ra, rb;
  if (!headless::readDwg(dwg, twin->dwg, ra) || !headless::readDxf(dxf, twin->dxf, rb)) {
    ADD_FAILURE() << ra.error << rb.error;
    return nullptr;
  }
  twin->ofDwg = entitiesOfType(twin->dwg, type);
  twin->ofDxf = entitiesOfType(twin->dxf, type);
  return twin;
}

TEST(DwgEntities, HatchBoundaryPathsAndPatternsMatchTheDxfTwin) {
  const auto twin = readTwin("same_drawing/acadsharp_hatch_pattern/acadsharp_hatch_pattern", "HATCH");
  if (!twin) GTEST_SKIP() << "the corpus is not beside this checkout";
  const DatabaseData &a = twin->dwg, &b = twin->dxf;
  const auto &hatchesA = twin->ofDwg, &hatchesB = twin->ofDxf;
  ASSERT_EQ(hatchesA.size(), 4u);
  ASSERT_EQ(hatchesA.size(), hatchesB.size());
  // Polyline and edge paths with their source objects, then the style, the pattern lines and the seeds.
  auto all = [](int) { return true; };
  for (const auto& [handle, i] : hatchesA) {
    SCOPED_TRACE(handle);
    ASSERT_TRUE(hatchesB.contains(handle));
    const platform::EntityRec& e = a.entities[i];
    const platform::EntityRec& t = b.entities[hatchesB.at(handle)];
    const std::vector<Group> got = groupsBetween(a, e, 2, 1001, all), want = groupsBetween(b, t, 2, 1001, all);
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t k = 0; k < got.size(); ++k) EXPECT_EQ(got[k], want[k]) << "group " << k;
  }
}

TEST(DwgEntities, GradientHatchesKeepTheirGradient) {
  const std::string dwg = corpusFile("dwg/R2004/libredwg_2004_HatchG.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData db;
  platform::ReadReport report;
  ASSERT_TRUE(headless::readDwg(dwg, db, report)) << report.error;
  std::multiset<std::string> gradients;
  for (const auto& [handle, i] : entitiesOfType(db, "HATCH")) {
    const platform::EntityRec& e = db.entities[i];
    const StoredTag* kind = db.find(e.tagBegin, e.tagCount, 450);
    const StoredTag* name = db.find(e.tagBegin, e.tagCount, 470);
    const StoredTag* colors = db.find(e.tagBegin, e.tagCount, 453);
    ASSERT_TRUE(kind && name && colors);
    EXPECT_EQ(static_cast<long long>(kind->integer), 1);
    EXPECT_EQ(static_cast<long long>(colors->integer), 2);
    gradients.insert(std::string(db.text(*name)));
    // Solid fills give no pattern lines, and the boundary still reads: one closed polyline path.
    EXPECT_EQ(db.find(e.tagBegin, e.tagCount, 78), nullptr);
    const StoredTag* paths = db.find(e.tagBegin, e.tagCount, 91);
    ASSERT_NE(paths, nullptr);
    EXPECT_EQ(static_cast<long long>(paths->integer), 1);
  }
  EXPECT_EQ(gradients, (std::multiset<std::string>{"LINEAR", "INVCYLINDER"}));
}

// What every release stores of a multileader's context: the content, its frame and the leaders' points.
bool sharedContextCode(int code) {
  static const std::set<int> codes = {10,  20,  30,  11,  21,  31,  12,  22,  32,  13,  23,  33,  14,  24,  34,
                                      15,  25,  35,  16,  26,  36,  110, 120, 130, 111, 121, 131, 112, 122, 132,
                                      41,  140, 145, 174, 175, 176, 177, 290, 296, 297, 300, 302, 303, 304, 305};
  return codes.contains(code);
}

TEST(DwgEntities, MultileaderContextsAgreeAcrossReleases) {
  const char* files[] = {"dwg/R14/acadsharp_sample_MLeader_AC1015.dwg", "dwg/R2007/acadsharp_sample_MLeader_AC1021.dwg",
                         "dwg/R2013/acadsharp_sample_MLeader_AC1027.dwg"};
  std::vector<std::map<platform::Handle, std::vector<Group>>> contexts;
  std::set<platform::Handle> vertical;  // attached above or below their content, which R2010 brought
  for (const char* file : files) {
    const std::string path = corpusFile(file);
    if (path.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(file);
    DatabaseData db;
    platform::ReadReport report;
    ASSERT_TRUE(headless::readDwg(path, db, report)) << report.error;
    EXPECT_TRUE(report.warnings.empty()) << report.warnings.front();
    auto& byHandle = contexts.emplace_back();
    for (const auto& [handle, i] : entitiesOfType(db, "MULTILEADER")) {
      const platform::EntityRec& e = db.entities[i];
      byHandle[handle] = groupsBetween(db, e, 300, 301, sharedContextCode);
      // The multileader's own attachment direction follows its context data.
      const std::vector<Group> own = groupsBetween(db, e, 301, -1, [](int code) { return code == 271; });
      if (!own.empty() && own.front().number == 1) vertical.insert(handle);
    }
  }
  ASSERT_EQ(contexts[0].size(), 14u);
  EXPECT_EQ(contexts[1], contexts[0]) << files[1];
  // Older releases store a vertically attached multileader as a horizontal one: only the others agree.
  EXPECT_EQ(vertical.size(), 1u);
  ASSERT_EQ(contexts[2].size(), contexts[0].size());
  for (const auto& [handle, groups] : contexts[2])
    if (!vertical.contains(handle)) {
      EXPECT_EQ(groups, contexts[0][handle]) << files[2] << " " << handle;
    }
  // The text content and the leader line of the first one.
  const std::vector<Group>& first = contexts[0].begin()->second;
  EXPECT_NE(std::find(first.begin(), first.end(), Group{304, "MULTILEADER TEST"}), first.end());
  EXPECT_NE(std::find(first.begin(), first.end(), Group{304, "LEADER_LINE{"}), first.end());
}

// The groups of a table from its AcDbTable marker on, but for the blocks of block cells (340), whose
// handles writers give anew.
std::vector<Group> tableGroups(const DatabaseData& db, const platform::EntityRec& e) {
  std::vector<Group> out;
  const StoredTag* tags = db.tagsOf(e);
  bool inTable = false;
  for (std::uint32_t i = 0; i < e.tagCount; ++i) {
    if (tags[i].code == 100) inTable = db.text(tags[i]) == "AcDbTable";
    else if (inTable && tags[i].code != 340) out.push_back(groupOf(db, tags[i]));
  }
  return out;
}

// An R2018 table holds table content: its cells come out in the layout of older releases as DXF gives
// them, merged cells, block cells (scaled to fit or not) and values of every type included.
TEST(DwgEntities, TableContentBecomesTheCellsOfTheDxfTwin) {
  const auto twin = readTwin("same_drawing/acadsharp_table/acadsharp_table_AC1032", "ACAD_TABLE");
  if (!twin) GTEST_SKIP() << "the corpus is not beside this checkout";
  ASSERT_EQ(twin->ofDwg.size(), 1u);
  const auto [handle, index] = *twin->ofDwg.begin();
  ASSERT_TRUE(twin->ofDxf.contains(handle));
  const std::vector<Group> got = tableGroups(twin->dwg, twin->dwg.entities[index]);
  const std::vector<Group> want = tableGroups(twin->dxf, twin->dxf.entities[twin->ofDxf.at(handle)]);
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t k = 0; k < got.size(); ++k) EXPECT_EQ(got[k], want[k]) << "group " << k;
  // 4 rows of 5 cells: the title spans the first row, the third row holds the block cells.
  EXPECT_EQ(std::count(got.begin(), got.end(), Group{171, {}, 1}), 18);
  EXPECT_EQ(std::count(got.begin(), got.end(), Group{171, {}, 2}), 2);
  EXPECT_NE(std::find(got.begin(), got.end(), Group{175, {}, 5}), got.end());
}

// Damage anywhere in a table's data, a count grown past what is left among the likeliest, is refused or read
// within the object: the decoder never reads outside its streams.
TEST(DwgEntities, DamagedTableContentIsRefusedOrReadWithinTheObject) {
  const auto opened = vktest::corpusDwgSections("same_drawing/acadsharp_table/acadsharp_table_AC1032.dwg");
  if (!opened) GTEST_SKIP() << "the corpus is not beside this checkout";
  headless::DwgSections& sections = *opened;
  std::vector<std::string> warnings;
  const std::vector<headless::DwgClass> classes = headless::readDwgClasses(sections, warnings);
  const headless::DwgObjectWalk walk = headless::walkObjects(sections);
  const auto table = std::find_if(walk.objects.begin(), walk.objects.end(),
                                  [](const headless::DwgObjectHeader& h) { return h.handle == 0x23A; });
  ASSERT_NE(table, walk.objects.end());
  ASSERT_GE(table->type, 500);
  headless::DwgNames names;
  headless::DwgDecodeContext context(names);
  context.objectClass = &classes.at(table->type - 500u);
  const headless::DwgEntityType* decoder = headless::findDwgEntityType(table->type, "ACAD_TABLE");
  ASSERT_NE(decoder, nullptr);
  // The objects' bytes copied, so that the table's can be damaged one at a time.
  std::vector<std::uint8_t> bytes(sections.objects.begin(), sections.objects.end());
  sections.objects = bytes;
  headless::DwgObjectReader object;
  headless::DwgTagList out;
  auto decode = [&] {
    out.truncate(0);
    return object.open(sections, *table, true) && decoder->decode(object, out, context) && !object.failed();
  };
  ASSERT_TRUE(decode());
  const std::size_t whole = out.size();
  // From the end of the entity's graphics, which the decoder passes by their size, to the end of its data.
  const std::size_t data = table->offset + table->dataOffset;
  const std::size_t begin = data + (object.common.graphicsBegin + 7) / 8 + object.common.graphicsSize;
  const std::size_t end = data + table->size;
  ASSERT_LT(begin, end);
  int refused = 0, read = 0;
  for (std::size_t at = begin; at < end; ++at) {
    const std::uint8_t kept = bytes[at];
    for (std::uint8_t damage : {std::uint8_t(0xFF), std::uint8_t(0x3F), std::uint8_t(kept ^ 0x10)}) {
      bytes[at] = damage;
      if (decode()) {
        ++read;
        EXPECT_LT(out.size(), 4 * whole) << "byte " << at;  // no more cells than the data can hold
      } else {
        ++refused;
      }
    }
    bytes[at] = kept;
  }
  EXPECT_GT(refused, 0);
  EXPECT_GT(read, 0);
  ASSERT_TRUE(decode());
  EXPECT_EQ(out.size(), whole);
}

// A decoded entity's groups replayed as a drawing of that one entity.
bool replay(const headless::DwgTagList& groups, std::string_view type, DatabaseData& one) {
  headless::DwgTagList record;
  record.record("SECTION");
  record.text(2, "ENTITIES");
  record.record(type, 1);
  record.handle(5, 1);
  record.text(100, "AcDbEntity");
  record.text(8, "0");
  record.append(groups, 0, groups.size());
  record.record("ENDSEC");
  record.record("EOF");
  headless::DwgTagSource source(record, 1);
  platform::ReadReport report;
  return headless::readTagStream(source, one, report) && one.entities.size() == 1;
}

// The groups of a proxy record that say what it holds: class, format, and the sizes of its parts.
std::vector<Group> proxyShape(const DatabaseData& db, const platform::EntityRec& e) {
  static const std::set<int> kept = {90, 91, 95, 70, 161, 162, 94};
  std::vector<Group> out;
  int ids = 0;
  const StoredTag* tags = db.tagsOf(e);
  bool inProxy = false;
  for (std::uint32_t i = 0; i < e.tagCount; ++i) {
    const int code = tags[i].code;
    if (code == 100) inProxy = db.text(tags[i]) == "AcDbProxyEntity";
    else if (inProxy && code >= 330 && code <= 369) ++ids;
    else if (inProxy && kept.contains(code)) out.push_back(groupOf(db, tags[i]));
  }
  out.push_back({-1, std::to_string(ids)});
  return out;
}

// The drawing holds other types not decoded here, so its custom entities are decoded one by one.
TEST(DwgEntities, CustomEntitiesBecomeTheProxyRecordsOfTheDxfTwin) {
  const std::string dwg = corpusFile("chinese/libredwg_gh109_1/libredwg_2013_gh109_1.dwg");
  const std::string dxf = corpusFile("chinese/libredwg_gh109_1/libredwg_2013_gh109_1.dxf");
  if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData twin;
  platform::ReadReport report;
  ASSERT_TRUE(headless::readDxf(dxf, twin, report)) << report.error;
  const auto proxies = entitiesOfType(twin, "ACAD_PROXY_ENTITY");
  const auto read = vktest::corpusDwgSections("chinese/libredwg_gh109_1/libredwg_2013_gh109_1.dwg");
  ASSERT_NE(read, nullptr);
  const headless::DwgSections& sections = *read;
  std::vector<std::string> warnings;
  const std::vector<headless::DwgClass> classes = headless::readDwgClasses(sections, warnings);
  const headless::DwgObjectWalk walk = headless::walkObjects(sections);
  headless::DwgNames names;
  headless::DwgDecodeContext context(names);
  context.maintenanceVersion = sections.maintenanceVersion;
  headless::DwgObjectReader object;
  headless::DwgTagList groups;
  int decoded = 0;
  for (const headless::DwgObjectHeader& h : walk.objects) {
    if (h.type < 500 || h.type - 500u >= classes.size()) continue;
    const headless::DwgClass& c = classes[h.type - 500u];
    if (!c.isEntity || !c.dxfName.starts_with("TCH_")) continue;
    SCOPED_TRACE(h.handle);
    context.objectClass = &c;
    ASSERT_EQ(headless::findDwgEntityType(h.type, context.objectClass->dxfName), nullptr);
    groups.truncate(0);
    ASSERT_TRUE(object.open(sections, h, true));
    ASSERT_TRUE(headless::dwgCustomEntityType()->decode(object, groups, context));
    ASSERT_FALSE(object.failed());
    // Replayed into a record of its own, so the shape can be read as the twin's is.
    DatabaseData one;
    ASSERT_TRUE(replay(groups, "ACAD_PROXY_ENTITY", one));
    ASSERT_TRUE(proxies.contains(h.handle));
    EXPECT_EQ(proxyShape(one, one.entities[0]), proxyShape(twin, twin.entities[proxies.at(h.handle)]));
    ++decoded;
  }
  EXPECT_EQ(decoded, 25);
}

// The objects of a drawing's classes of the given DXF names, decoded one by one.
struct ClassObjects {
  headless::DwgSections sections;
  std::vector<headless::DwgClass> classes;
  std::vector<std::pair<headless::DwgObjectHeader, const headless::DwgClass*>> objects;
  headless::DwgNames names;
  headless::DwgObjectReader object;
  std::vector<std::uint8_t> patched;       // the objects as lengthen() leaves them
  std::span<const std::uint8_t> original;  // the drawing's own, once lengthen() was called

  bool load(const std::string& path, const std::set<std::string>& dxfNames) {
    std::string error;
    if (!headless::readDwgContainer(path, sections, error)) return false;
    std::vector<std::string> warnings;
    classes = headless::readDwgClasses(sections, warnings);
    for (const headless::DwgObjectHeader& h : headless::walkObjects(sections).objects)
      if (h.type >= 500 && h.type - 500u < classes.size() && dxfNames.contains(classes[h.type - 500u].dxfName))
        objects.emplace_back(h, &classes[h.type - 500u]);
    return true;
  }
  // Decodes object i with its data cut to `bytes` bytes from where the entity's own data start (all of them
  // when bytes is npos); true when it decodes whole.
  bool decode(std::size_t i, headless::DwgTagList& out, std::size_t bytes = std::string::npos,
              std::string* notDecoded = nullptr) {
    const auto& [h, c] = objects[i];
    headless::DwgDecodeContext context(names);
    context.objectClass = c;
    const headless::DwgEntityType* type = headless::findDwgEntityType(h.type, c->dxfName);
    if (!type || !object.open(sections, h, true)) return false;
    if (bytes != std::string::npos) {
      const auto data = sections.objects.subspan(static_cast<std::size_t>(h.offset) + h.dataOffset, h.size);
      const std::size_t at = object.bits.bitPosition();
      object.bits = headless::DwgBitReader(data.first(std::min(data.size(), at / 8 + bytes)), sections.version);
      object.bits.setBitPosition(at);
    }
    out.truncate(0);
    const bool decoded = type->decode(object, out, context) && !object.failed();
    if (notDecoded) *notDecoded = context.notDecoded;
    return decoded;
  }
  // Makes the size R2000-R2004 keep of object i's data (in bits, a raw long after the type) say `more` bits
  // more, in a copy of the objects the drawing then reads; restore() goes back to the drawing's own.
  void lengthen(std::size_t i, std::uint32_t more) {
    const headless::DwgObjectHeader& h = objects[i].first;
    if (original.empty()) original = sections.objects;
    patched.assign(original.begin(), original.end());
    const std::size_t base = static_cast<std::size_t>(h.offset) + h.dataOffset;
    headless::DwgBitReader b(std::span<const std::uint8_t>(patched).subspan(base, h.size), sections.version);
    b.readObjectType();
    const std::size_t at = 8 * base + b.bitPosition();
    const std::uint32_t size = static_cast<std::uint32_t>(b.readRawLong()) + more;
    // Four bytes, the lowest first, each from its highest bit.
    for (unsigned k = 0; k < 32; ++k) {
      const unsigned bit = (size >> (8 * (k / 8) + 7 - k % 8)) & 1u;
      std::uint8_t& byte = patched[(at + k) / 8];
      const auto mask = static_cast<std::uint8_t>(0x80u >> ((at + k) % 8));
      byte = static_cast<std::uint8_t>(bit ? byte | mask : byte & ~mask);
    }
    sections.objects = patched;
  }
  void restore() {
    if (!original.empty()) sections.objects = original;
  }
  // How many bits the entity's own fields but its texts take, for object i.
  std::size_t ownBits(std::size_t i) {
    const auto& [h, c] = objects[i];
    if (!object.open(sections, h, true)) return 0;
    // From R2007 on the texts follow the other fields, in a stream of their own.
    const std::size_t end = object.stringsBeginBit ? std::min(object.stringsBeginBit, object.dataEndBit)
                                                   : object.dataEndBit;
    return end - object.bits.bitPosition();
  }
};

double realOf(const DatabaseData& db, const platform::EntityRec& e, int code) {
  const StoredTag* t = db.find(e.tagBegin, e.tagCount, code);
  return t ? t->real : std::nan("");
}

TEST(DwgEntities, MadeSurfacesMatchTheDxfTwin) {
  const std::string dwg = corpusFile("dwg/R2004/libredwg_2004_Surface.dwg");
  const std::string dxf = corpusFile("dxf/R2004/libredwg_2004_Surface.dxf");
  if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData a, b;
  platform::ReadReport ra, rb;
  ASSERT_TRUE(headless::readDwg(dwg, a, ra)) << ra.error;
  ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
  auto all = [](int) { return true; };
  // From the isoline counts on: the curves made from (class, size in bits, bits), the transforms, the sweep
  // or loft options, in DXF's order.
  for (const char* type : {"EXTRUDEDSURFACE", "LOFTEDSURFACE", "REVOLVEDSURFACE", "SWEPTSURFACE"}) {
    SCOPED_TRACE(type);
    const auto got = entitiesOfType(a, type), want = entitiesOfType(b, type);
    ASSERT_EQ(got.size(), 1u);
    ASSERT_EQ(want.size(), 1u);
    ASSERT_EQ(got.begin()->first, want.begin()->first);
    const std::vector<Group> g = groupsBetween(a, a.entities[got.begin()->second], 71, 1001, all);
    const std::vector<Group> w = groupsBetween(b, b.entities[want.begin()->second], 71, 1001, all);
    ASSERT_EQ(g.size(), w.size());
    for (std::size_t k = 0; k < g.size(); ++k) EXPECT_EQ(g[k], w[k]) << "group " << k;
    EXPECT_EQ(g[0], (Group{71, {}, 6}));
    EXPECT_EQ(g[1], (Group{72, {}, 6}));
  }
  // Values a shifted read would miss: the extrusion's vector, the revolution's axis and angle, the curves
  // (two polylines lofted; a polyline swept along a line).
  const platform::EntityRec& extruded = a.entities[entitiesOfType(a, "EXTRUDEDSURFACE").begin()->second];
  EXPECT_EQ(realOf(a, extruded, 30), 200.0);
  const platform::EntityRec& revolved = a.entities[entitiesOfType(a, "REVOLVEDSURFACE").begin()->second];
  EXPECT_DOUBLE_EQ(realOf(a, revolved, 10), 1230.6914510613042);
  EXPECT_DOUBLE_EQ(realOf(a, revolved, 40), 0.19298733382364475);
  const platform::EntityRec& lofted = a.entities[entitiesOfType(a, "LOFTEDSURFACE").begin()->second];
  // Its transparency of its own (alpha 160), which the others, by layer, leave out.
  EXPECT_EQ(groupsBetween(a, lofted, 8, 100, [](int code) { return code == 440; }),
            (std::vector<Group>{{440, {}, 0x020000A0}}));
  EXPECT_TRUE(groupsBetween(a, extruded, 8, 100, [](int code) { return code == 440; }).empty());
  const std::vector<Group> sizes = groupsBetween(a, lofted, 90, 70, [](int code) { return code == 90; });
  EXPECT_EQ(sizes, (std::vector<Group>{{90, {}, 77}, {90, {}, 544}, {90, {}, 77}, {90, {}, 608}}));
  const platform::EntityRec& swept = a.entities[entitiesOfType(a, "SWEPTSURFACE").begin()->second];
  EXPECT_EQ(groupsBetween(a, swept, 91, 310, [](int code) { return code == 91 || code == 90; }),
            (std::vector<Group>{{91, {}, 19}, {90, {}, 344}}));
}

TEST(DwgEntities, MadeSurfacesCutShortOrLongerAreRefused) {
  const std::string dwg = corpusFile("dwg/R2004/libredwg_2004_Surface.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  ClassObjects drawing;
  ASSERT_TRUE(drawing.load(dwg, {"EXTRUDEDSURFACE", "LOFTEDSURFACE", "REVOLVEDSURFACE", "SWEPTSURFACE"}));
  ASSERT_EQ(drawing.objects.size(), 4u);
  headless::DwgTagList groups;
  for (std::size_t i = 0; i < drawing.objects.size(); ++i) {
    SCOPED_TRACE(drawing.objects[i].second->dxfName);
    ASSERT_TRUE(drawing.decode(i, groups));
    // The curves end the data: a cut anywhere, in the modeler data or in the surface's own fields, is seen.
    const std::size_t whole = drawing.ownBits(i) / 8;
    ASSERT_GT(whole, 100u);
    for (std::size_t n = 0; n < whole; n += n + 40 < whole ? 37 : 1) EXPECT_FALSE(drawing.decode(i, groups, n)) << n;
    // Data said to go on after the curves: a layout not known, for which the drawing is refused by name.
    std::string notDecoded;
    drawing.lengthen(i, 8);
    EXPECT_FALSE(drawing.decode(i, groups, std::string::npos, &notDecoded));
    EXPECT_EQ(notDecoded, drawing.objects[i].second->dxfName + " of a layout not known");
    drawing.restore();
    EXPECT_TRUE(drawing.decode(i, groups));
  }
}

TEST(DwgEntities, TextAlongAnArcKeepsItsTextArcAndSizes) {
  const std::string dwg = corpusFile("dwg/R2018/librecad_rtext_arctext.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  ClassObjects drawing;
  ASSERT_TRUE(drawing.load(dwg, {"ARCALIGNEDTEXT"}));
  ASSERT_EQ(drawing.objects.size(), 1u);
  headless::DwgTagList groups;
  ASSERT_TRUE(drawing.decode(0, groups));
  DatabaseData one;
  ASSERT_TRUE(replay(groups, "ARCALIGNEDTEXT", one));
  const platform::EntityRec& e = one.entities[0];
  auto text = [&](int code) {
    const StoredTag* t = one.find(e.tagBegin, e.tagCount, code);
    return t ? std::string(one.text(*t)) : "(none)";
  };
  EXPECT_EQ(text(1), "ARC-TEXT-TEST");
  EXPECT_EQ(text(2), "Arial");
  EXPECT_EQ(text(3), "");
  EXPECT_EQ(text(7), "Standard");
  // The centre, radius and angles (degrees, as DXF gives them); height and width factor, stored as texts.
  const std::vector<double> want = {50, 60, 0, 25, 0, 90, 2.5, 1, 0, 0};
  const int codes[] = {10, 20, 30, 40, 50, 51, 42, 41, 43, 44};
  for (std::size_t k = 0; k < want.size(); ++k) EXPECT_DOUBLE_EQ(realOf(one, e, codes[k]), want[k]) << codes[k];
  // Cut short anywhere in its own data, it is refused.
  const std::size_t whole = drawing.ownBits(0) / 8;
  for (std::size_t n = 0; n < whole; ++n) EXPECT_FALSE(drawing.decode(0, groups, n)) << n;
  // The whole drawing reads, the text counted with the custom entity beside it.
  platform::ReadReport report;
  const auto db = platform::Database::read(dwg, report);
  ASSERT_NE(db, nullptr) << report.error;
  std::multiset<std::string> types;
  for (const platform::Entity& entity : vktest::modelEntities(*db)) types.insert(std::string(entity.dxfName()));
  EXPECT_EQ(types, (std::multiset<std::string>{"ARCALIGNEDTEXT", "ACAD_PROXY_ENTITY"}));
}

}  // namespace

namespace {

// The pieces a long text is cut into, as (code, text).
std::vector<std::pair<int, std::string>> piecesOf(const std::string& text, bool utf8, const headless::TextDecoder* codePage) {
  headless::DwgTagList out;
  std::string buffer;
  headless::longText(out, text, utf8, codePage, buffer);
  std::vector<std::pair<int, std::string>> pieces;
  for (std::size_t i = 0; i < out.size(); ++i) pieces.emplace_back(out[i].code, std::string(out.textOf(out[i])));
  return pieces;
}

}  // namespace

// Long texts are cut every 250 characters: bytes of a single-byte code page, code points of UTF-8, and in
// a double-byte code page never inside a character, which would then read as two replacement characters.
TEST(DwgEntities, LongTextsAreCutBetweenCharacters) {
  const std::string gbk = std::string(249, 'a') + "\xD6\xD0" + std::string(10, 'b');  // "中" at byte 249
  const headless::TextDecoder chinese("ANSI_936", headless::TextEncoding::CodePage);
  const headless::TextDecoder western("ANSI_1252", headless::TextEncoding::CodePage);
  auto pieces = piecesOf(gbk, false, &chinese);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0], std::make_pair(3, std::string(249, 'a')));
  EXPECT_EQ(pieces[1], std::make_pair(1, "\xD6\xD0" + std::string(10, 'b')));
  // In ANSI_1252 the same bytes are two characters: the cut falls between them.
  pieces = piecesOf(gbk, false, &western);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0].second.size(), 250u);
  const std::string utf8 = std::string(249, 'a') + "\xE4\xB8\xAD" + "b";
  pieces = piecesOf(utf8, true, nullptr);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0].second, std::string(249, 'a') + "\xE4\xB8\xAD");
  EXPECT_EQ(pieces[1], std::make_pair(1, std::string("b")));
  // A text of exactly one piece, and a control character written as DXF writes it.
  pieces = piecesOf(std::string(250, 'c') + "\n", false, &western);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[1], std::make_pair(1, std::string("^J")));
}
