// DWG drawings read against their DXF twins of the corpus: the same header variables, the same entities in
// the same spaces with the same group values, the same shapes of solids and regions; annotation entities
// decoded one by one against their twins and across releases; and entity types not decoded yet are
// refused by name.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include "platform/database.h"
#include "platform/headless/codepage.h"
#include "platform/headless/dwg_container.h"
#include "platform/headless/dwg_datastore.h"
#include "platform/headless/dwg_entities.h"
#include "platform/headless/dwg_header.h"
#include "platform/headless/dwg_reader.h"
#include "platform/headless/dwg_tables.h"
#include "platform/headless/dxf_reader.h"
#include "platform/headless/dxf_storage.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;
using platform::Accessor;
using platform::DatabaseData;

using vktest::corpusFile;

// Entity counts by DXF name: of each layout by its name, and of the other blocks as a sorted list (writers
// number anonymous blocks as they like).
std::pair<std::map<std::string, std::map<std::string, int>>, std::multiset<std::map<std::string, int>>> countsOf(
    const DatabaseData& db) {
  std::map<std::string, std::map<std::string, int>> layouts;
  std::multiset<std::map<std::string, int>> blocks;
  for (const platform::BlockRec& b : db.blocks) {
    std::map<std::string, int> counts;
    for (std::uint32_t i : b.entities) ++counts[std::string(db.name(db.entities[i].dxfName))];
    if (b.isLayout) layouts[b.name] = counts;
    else blocks.insert(counts);
  }
  return {layouts, blocks};
}

// The handles of each layout's entities in drawing order.
std::map<std::string, std::vector<platform::Handle>> layoutOrder(const DatabaseData& db) {
  std::map<std::string, std::vector<platform::Handle>> order;
  for (const platform::BlockRec& b : db.blocks)
    if (b.isLayout)
      for (std::uint32_t i : b.entities) order[b.name].push_back(db.entities[i].handle);
  return order;
}

TEST(DwgReader, EntitiesMatchTheirDxfTwins) {
  const char* twins[] = {"same_drawing/libredwg_sample_2018/libredwg_sample_2018",
                         "same_drawing/zcad_nonregular2/zcad_nonregular2",
                         "same_drawing/acadsharp_dynblock_visibility/acadsharp_BLOCKVISIBILITYPARAMETER",
                         "same_drawing/acadsharp_hatch_pattern/acadsharp_hatch_pattern"};
  for (const char* twin : twins) {
    const std::string dwg = corpusFile(std::string(twin) + ".dwg"), dxf = corpusFile(std::string(twin) + ".dxf");
    if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(twin);
    DatabaseData a, b;
    platform::ReadReport ra, rb;
    ASSERT_TRUE(headless::readDwg(dwg, a, ra)) << ra.error;
    ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
    // These are whole: every section, class and object reads without a word.
    EXPECT_EQ(ra.warnings, std::vector<std::string>());
    // Every entity of these decodes, so the database reads them as it reads their twins.
    EXPECT_NE(platform::Database::read(dwg, ra), nullptr) << ra.error;
    EXPECT_EQ(countsOf(a), countsOf(b));
    EXPECT_EQ(layoutOrder(a), layoutOrder(b));
    EXPECT_EQ(a.layerTable.size(), b.layerTable.size());
    // Every group of these codes the DXF twin has, the DWG entity of the same handle has with the same value
    // (the first of each; 1001 and 1005 those of the extended data).
    std::map<platform::Handle, std::uint32_t> byHandle;
    for (std::uint32_t i = 0; i < b.entities.size(); ++i) byHandle[b.entities[i].handle] = i;
    int compared = 0;
    for (std::uint32_t i = 0; i < a.entities.size(); ++i) {
      const platform::EntityRec& e = a.entities[i];
      auto it = byHandle.find(e.handle);
      ASSERT_NE(it, byHandle.end()) << "handle " << std::hex << e.handle;
      const platform::EntityRec& t = b.entities[it->second];
      EXPECT_EQ(e.layer, t.layer);
      EXPECT_EQ(e.color, t.color);
      EXPECT_EQ(a.name(e.linetype), b.name(t.linetype));
      EXPECT_EQ(e.cls, t.cls);
      for (int code : {10, 20, 30, 11, 21, 31, 40, 41, 42, 50, 51, 1, 7, 72, 90, 70, 68, 69, 1001, 1005}) {
        const platform::StoredTag* want = b.find(t.tagBegin, t.tagCount, code);
        if (!want) continue;
        const platform::StoredTag* got = a.find(e.tagBegin, e.tagCount, code);
        ASSERT_NE(got, nullptr) << "code " << code << " of handle " << std::hex << e.handle;
        if (want->type == headless::TagType::Real)
          EXPECT_NEAR(got->real, want->real, 1e-9 * std::max(1.0, std::abs(want->real))) << "code " << code;
        else if (want->type == headless::TagType::Text || want->type == headless::TagType::Handle)
          EXPECT_EQ(a.text(*got), b.text(*want)) << "code " << code;
        else
          EXPECT_EQ(static_cast<long long>(got->integer), static_cast<long long>(want->integer)) << "code " << code;
        ++compared;
      }
    }
    EXPECT_GT(compared, 0);
  }
}

// The value of a header variable's group code, or NaN when the drawing lacks it.
double headerValue(const DatabaseData& db, const char* name, int code) {
  const platform::HeaderVar* var = db.headerVar(name);
  const platform::StoredTag* tag = var ? db.find(var->tagBegin, var->tagCount, code) : nullptr;
  if (!tag) return std::nan("");
  return tag->type == headless::TagType::Real ? tag->real : static_cast<double>(tag->integer);
}

TEST(DwgReader, HeaderVariablesMatchTheirDxfTwins) {
  const std::string corpus = corpusFile("same_drawing");
  if (corpus.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  // These DXF twins were written by programs that worked out the extents afresh (every coordinate of the
  // one, the heights of the other differ); their DWGs keep what the drawing was saved with.
  const std::set<std::string> extentsRecomputed = {"zcad_nonregular2.dwg", "libredwg_example_2000.dwg"};
  std::set<std::string> releases;
  int read = 0;
  for (const auto& dir : fs::directory_iterator(corpus)) {
    for (const auto& file : fs::directory_iterator(dir.path())) {
      const fs::path dwg = file.path();
      fs::path twin;
      // One drawing saved by one program in several releases shares its header variables; the R2010 one
      // of these has no DXF of its own release.
      for (std::string name : {dwg.stem().string() + ".dxf", dwg.stem().string() + "_ascii.dxf",
                               std::string("acadsharp_sample_AC1015_ascii.dxf")})
        if (twin.empty() && fs::exists(dwg.parent_path() / name)) twin = dwg.parent_path() / name;
      if (dwg.extension() != ".dwg" || twin.empty()) continue;
      SCOPED_TRACE(dwg.string());
      headless::DwgSections sections;
      std::string error;
      if (!headless::readDwgContainer(dwg.string(), sections, error)) {
        EXPECT_NE(error.find("older than R13"), std::string::npos) << error;
        continue;
      }
      DatabaseData b;
      platform::ReadReport rb;
      ASSERT_TRUE(headless::readDxf(twin.string(), b, rb)) << rb.error;
      headless::DwgHeaderVariables h;
      ASSERT_TRUE(headless::readDwgHeaderVariables(sections, h, error)) << error;
      releases.insert(sections.versionString);
      EXPECT_EQ(h.tilemode ? 1 : 0, b.tilemode);
      EXPECT_EQ(h.ltscale, headerValue(b, "$LTSCALE", 40));
      std::vector<std::pair<const char*, headless::DwgPoint3>> points = {{"$INSBASE", h.insbase}};
      if (!extentsRecomputed.contains(dwg.filename().string()))
        points.insert(points.end(), {{"$EXTMIN", h.extmin}, {"$EXTMAX", h.extmax}});
      for (const auto& [name, p] : points) {
        const double got[] = {p.x, p.y, p.z};
        for (int i = 0; i < 3; ++i) {
          const double want = headerValue(b, name, 10 * (i + 1));
          EXPECT_NEAR(got[i], want, 1e-9 * std::max(1.0, std::abs(want))) << name << " " << 10 * (i + 1);
        }
      }
      // Where the entities decode too, the values reach the drawing as its header groups.
      DatabaseData a;
      platform::ReadReport ra;
      if (!headless::readDwg(dwg.string(), a, ra)) {
        EXPECT_NE(ra.error.find("cannot decode"), std::string::npos) << ra.error;
        continue;
      }
      EXPECT_TRUE(a.dwgHeaderDecoded);
      EXPECT_EQ(a.tilemode, b.tilemode);
      EXPECT_EQ(headerValue(a, "$EXTMAX", 20), h.extmax.y);
      EXPECT_EQ(headerValue(a, "$PEXTMIN", 10), h.paperExtmin.x);
      ++read;
    }
  }
  EXPECT_EQ(releases, (std::set<std::string>{"AC1014", "AC1015", "AC1018", "AC1021", "AC1024", "AC1027", "AC1032"}));
  EXPECT_GE(read, 2);
}

// No twin holds attributes whose other entities all decode; this drawing's tags and values are known.
TEST(DwgReader, AttributesAndTheirDefinitionsKeepTagAndValue) {
  const std::string dwg = corpusFile("dwg/R2010/libredwg_2010_gh209_1.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData db;
  platform::ReadReport report;
  ASSERT_TRUE(headless::readDwg(dwg, db, report)) << report.error;
  std::multiset<std::string> seen;
  for (const platform::EntityRec& e : db.entities) {
    const std::string_view type = db.name(e.dxfName);
    if (type != "ATTRIB" && type != "ATTDEF") continue;
    const platform::StoredTag* tag = db.find(e.tagBegin, e.tagCount, 2);
    const platform::StoredTag* value = db.find(e.tagBegin, e.tagCount, 1);
    ASSERT_TRUE(tag && value);
    seen.insert(std::string(type) + " " + std::string(db.text(*tag)) + "=" + std::string(db.text(*value)));
  }
  EXPECT_EQ(seen, (std::multiset<std::string>{"ATTDEF TEST=", "ATTDEF MISPAR_TIK=", "ATTRIB TEST=888",
                                              "ATTRIB TEST=456", "ATTRIB MISPAR_TIK=9456/23"}));
  EXPECT_NE(platform::Database::read(dwg, report), nullptr) << report.error;
}

// Reads a drawing whose entities may not all decode yet: false (with the refusal checked) when they do not.
bool readIfDecoded(const std::string& dwg, DatabaseData& db) {
  platform::ReadReport report;
  if (headless::readDwg(dwg, db, report)) return true;
  EXPECT_NE(report.error.find("cannot decode"), std::string::npos) << report.error;
  return false;
}

const platform::EntityRec* entityOf(const DatabaseData& db, platform::Handle handle) {
  for (const platform::EntityRec& e : db.entities)
    if (e.handle == handle) return &e;
  return nullptr;
}

// The values of one group code of an entity, in order (a point's x, y and z are codes 10, 20 and 30).
std::vector<double> valuesOf(const DatabaseData& db, const platform::EntityRec& e, int code) {
  std::vector<double> out;
  const platform::StoredTag* t = db.tagsOf(e);
  for (std::uint32_t k = 0; k < e.tagCount; ++k)
    if (t[k].code == code) out.push_back(t[k].type == headless::TagType::Real ? t[k].real : double(t[k].integer));
  return out;
}

void expectNear(const std::vector<double>& got, const std::vector<double>& want, const std::string& what) {
  ASSERT_EQ(got.size(), want.size()) << what;
  for (std::size_t i = 0; i < got.size(); ++i)
    EXPECT_NEAR(got[i], want[i], 1e-9 * std::max(1.0, std::abs(want[i]))) << what << " [" << i << "]";
}

// Each old-style polyline's vertices: their handles and points in the order the drawing holds them.
std::map<platform::Handle, std::vector<std::pair<platform::Handle, std::array<double, 3>>>> verticesOf(
    const DatabaseData& db) {
  std::map<platform::Handle, std::vector<std::pair<platform::Handle, std::array<double, 3>>>> out;
  for (std::uint32_t i = 0; i < db.entities.size(); ++i) {
    const platform::EntityRec& e = db.entities[i];
    if (db.name(e.dxfName) != "POLYLINE") continue;
    auto& vertices = out[e.handle];
    for (std::uint32_t k = i + 1; k <= i + e.subCount; ++k) {
      const platform::EntityRec& v = db.entities[k];
      EXPECT_EQ(db.name(v.dxfName), "VERTEX");
      EXPECT_EQ(v.owner, i);
      EXPECT_EQ(v.block, e.block);
      const double x = valuesOf(db, v, 10).at(0), y = valuesOf(db, v, 20).at(0), z = valuesOf(db, v, 30).at(0);
      vertices.push_back({v.handle, {x, y, z}});
    }
  }
  return out;
}

TEST(DwgReader, PolylineVerticesBelongToTheirPolylineInOrder) {
  // R2004 and later list a polyline's vertices; this one's 3D polyline has six.
  const std::string listed = corpusFile("dwg/R2010/libredwg_2010_PolyLine3D.dwg");
  if (listed.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData db;
  platform::ReadReport report;
  ASSERT_TRUE(headless::readDwg(listed, db, report)) << report.error;
  const auto polylines = verticesOf(db);
  ASSERT_EQ(polylines.size(), 1u);
  const auto& vertices = polylines.begin()->second;
  ASSERT_EQ(vertices.size(), 6u);
  for (std::size_t k = 1; k < vertices.size(); ++k) EXPECT_GT(vertices[k].first, vertices[k - 1].first);
  EXPECT_NEAR(vertices.front().second[0], 21.440931863, 1e-8);
  EXPECT_NEAR(vertices[1].second[1], 5.6537775303, 1e-8);
  const platform::EntityRec* polyline = entityOf(db, polylines.begin()->first);
  ASSERT_NE(polyline, nullptr);
  EXPECT_EQ(polyline->cls, platform::DbClass::Polyline3d);
  EXPECT_EQ(db.entities[polyline - db.entities.data() + 1].cls, platform::DbClass::Polyline3dVertex);
  // Earlier releases give the first and last vertex and link the others; the twins place them alike, faces
  // of polyface meshes after the mesh's points.
  for (const char* twin : {"same_drawing/libredwg_example/libredwg_example_r14",
                           "same_drawing/libredwg_example/libredwg_example_2000",
                           "same_drawing/libredwg_example/libredwg_example_2013",
                           "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015"}) {
    SCOPED_TRACE(twin);
    const std::string dwg = corpusFile(std::string(twin) + ".dwg");
    std::string dxf = corpusFile(std::string(twin) + ".dxf");
    if (dxf.empty()) dxf = corpusFile(std::string(twin) + "_ascii.dxf");
    DatabaseData a, b;
    platform::ReadReport rb;
    if (dwg.empty() || dxf.empty() || !readIfDecoded(dwg, a)) continue;
    ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
    const auto got = verticesOf(a), want = verticesOf(b);
    ASSERT_EQ(got.size(), want.size());
    for (const auto& [handle, vertices] : want) {
      auto it = got.find(handle);
      ASSERT_NE(it, got.end()) << std::hex << handle;
      ASSERT_EQ(it->second.size(), vertices.size());
      for (std::size_t k = 0; k < vertices.size(); ++k) {
        EXPECT_EQ(it->second[k].first, vertices[k].first);
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(it->second[k].second[c], vertices[k].second[c], 1e-9);
      }
    }
  }
}

// The groups of an entity type from a subclass marker on: codes and values, handles left out.
std::vector<std::pair<int, double>> subclassGroups(const DatabaseData& db, std::string_view type,
                                                   std::string_view subclass) {
  std::vector<std::pair<int, double>> out;
  for (const platform::EntityRec& e : db.entities) {
    if (db.name(e.dxfName) != type) continue;
    const platform::StoredTag* t = db.tagsOf(e);
    bool inside = false;
    for (std::uint32_t k = 0; k < e.tagCount; ++k) {
      if (t[k].code == 100) inside = inside || db.text(t[k]) == subclass;
      else if (inside && t[k].type != headless::TagType::Text && t[k].type != headless::TagType::Handle)
        out.push_back({t[k].code, t[k].type == headless::TagType::Real ? t[k].real : double(t[k].integer)});
    }
  }
  return out;
}

TEST(DwgReader, SplinesAndHelicesReadAlikeInEveryRelease) {
  // A helix is the same in every release; the spline that draws it may be fitted anew (R2018 stores
  // fewer control points).
  const std::vector<std::pair<const char*, std::vector<const char*>>> drawings = {
      {"SPLINE", {"dwg/R2000/libredwg_2000_Spline.dwg", "dwg/R2007/libredwg_2007_Spline.dwg",
                  "dwg/R2010/libredwg_2010_Spline.dwg"}},
      {"HELIX", {"dwg/R2004/libredwg_2004_Helix.dwg", "dwg/R2007/libredwg_2007_Helix.dwg",
                 "dwg/R2013/libredwg_2013_Helix.dwg", "dwg/R2018/libredwg_2018_Helix.dwg"}}};
  for (const auto& [type, files] : drawings) {
    std::vector<std::pair<int, double>> first;
    for (const char* file : files) {
      const std::string dwg = corpusFile(file);
      if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
      SCOPED_TRACE(file);
      DatabaseData db;
      platform::ReadReport report;
      ASSERT_TRUE(headless::readDwg(dwg, db, report)) << report.error;
      const auto groups = subclassGroups(db, type, type == std::string_view("HELIX") ? "AcDbHelix" : "AcDbSpline");
      ASSERT_FALSE(groups.empty());
      if (first.empty()) first = groups;
      else EXPECT_EQ(groups, first);
    }
  }
}

TEST(DwgReader, SplinesStoredByFitPointsGetTheControlPointsOfTheirTwin) {
  // The fit data of these splines (with both end tangents, and with none), through the fitting, gives the
  // control points and knots their DXF files hold.
  const std::pair<const char*, platform::Handle> splines[] = {
      {"same_drawing/libredwg_example/libredwg_example_2000.dxf", 0x16E}, {"dxf/R2018/ezdxf_uncommon.dxf", 0x251}};
  for (const auto& [file, handle] : splines) {
    const std::string dxf = corpusFile(file);
    if (dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(file);
    DatabaseData b;
    platform::ReadReport rb;
    ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
    const platform::EntityRec* spline = entityOf(b, handle);
    ASSERT_NE(spline, nullptr);
    const auto point = [&](int code, std::size_t i) {
      const std::vector<double> x = valuesOf(b, *spline, code);
      if (i >= x.size()) return headless::DwgPoint3{};
      return headless::DwgPoint3{x[i], valuesOf(b, *spline, code + 10)[i], valuesOf(b, *spline, code + 20)[i]};
    };
    std::vector<headless::DwgPoint3> fit;
    for (std::size_t i = 0; i < valuesOf(b, *spline, 11).size(); ++i) fit.push_back(point(11, i));
    std::vector<headless::DwgPoint3> control;
    std::vector<double> knots, scratch;
    ASSERT_TRUE(headless::dwgFitCubicSpline(fit, point(12, 0), point(13, 0), 0, control, knots, scratch));
    expectNear(knots, valuesOf(b, *spline, 40), "knots");
    std::vector<double> coordinates[3];
    for (const headless::DwgPoint3& p : control) {
      coordinates[0].push_back(p.x);
      coordinates[1].push_back(p.y);
      coordinates[2].push_back(p.z);
    }
    for (int c = 0; c < 3; ++c)
      expectNear(coordinates[c], valuesOf(b, *spline, 10 * (c + 1)), "control " + std::to_string(10 * (c + 1)));
    // Repeated fit points have no parameters between them.
    fit[1] = fit[0];
    EXPECT_FALSE(headless::dwgFitCubicSpline(fit, point(12, 0), point(13, 0), 0, control, knots, scratch));
  }
  // The drawing itself, once all its entities decode.
  DatabaseData a, b;
  platform::ReadReport rb;
  const std::string dwg = corpusFile("same_drawing/libredwg_example/libredwg_example_2000.dwg");
  if (dwg.empty() || !readIfDecoded(dwg, a)) return;
  ASSERT_TRUE(headless::readDxf(corpusFile("same_drawing/libredwg_example/libredwg_example_2000.dxf"), b, rb));
  const platform::EntityRec *decoded = entityOf(a, 0x16E), *twin = entityOf(b, 0x16E);
  ASSERT_TRUE(decoded && twin);
  for (int code : {10, 20, 40, 11, 21, 70})
    expectNear(valuesOf(a, *decoded, code), valuesOf(b, *twin, code), "code " + std::to_string(code));
}

// The viewports of the current layout are numbered from 1; those of the other layouts keep 0. All of them
// are in paper space, in the block of their layout.
TEST(DwgReader, ViewportsOfTheCurrentLayoutAreNumbered) {
  const std::string dwg = corpusFile("dwg/R2007/qcad_din_a3_inch_landscape.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData db;
  platform::ReadReport report;
  ASSERT_TRUE(headless::readDwg(dwg, db, report)) << report.error;
  std::map<std::string, std::vector<double>> numbers;  // by layout block
  for (const platform::EntityRec& e : db.entities) {
    if (db.name(e.dxfName) != "VIEWPORT") continue;
    EXPECT_EQ(e.cls, platform::DbClass::Viewport);
    EXPECT_EQ(valuesOf(db, e, 67), std::vector<double>{1});
    EXPECT_TRUE(db.blocks[e.block].isLayout);
    auto& n = numbers[db.blocks[e.block].name];
    n.push_back(valuesOf(db, e, 68).at(0));
    n.push_back(valuesOf(db, e, 69).at(0));
    EXPECT_GT(valuesOf(db, e, 41).at(0), 0.0);
  }
  EXPECT_EQ(numbers, (std::map<std::string, std::vector<double>>{{"*Paper_Space", {1, 1}}, {"*Paper_Space0", {0, 0}}}));
  // Where the block table's paper space is not the first block of that name (R2007 here), the twins once
  // their other entities decode: each viewport in the same layout, with the same number and view.
  for (const char* twin : {"same_drawing/libredwg_example/libredwg_example_2000",
                           "same_drawing/libredwg_example/libredwg_example_2007",
                           "same_drawing/libredwg_example/libredwg_example_2013"}) {
    SCOPED_TRACE(twin);
    DatabaseData a, b;
    platform::ReadReport rb;
    const std::string file = corpusFile(std::string(twin) + ".dwg");
    if (file.empty() || !readIfDecoded(file, a)) continue;
    ASSERT_TRUE(headless::readDxf(corpusFile(std::string(twin) + ".dxf"), b, rb)) << rb.error;
    for (const platform::EntityRec& t : b.entities) {
      if (b.name(t.dxfName) != "VIEWPORT") continue;
      const platform::EntityRec* e = entityOf(a, t.handle);
      ASSERT_NE(e, nullptr) << std::hex << t.handle;
      EXPECT_EQ(a.blocks[e->block].name, b.blocks[t.block].name);
      for (int code : {68, 69, 12, 22, 45, 90})
        expectNear(valuesOf(a, *e, code), valuesOf(b, t, code), "code " + std::to_string(code));
    }
  }
}

// One group as the comparisons below see it: its code and its value as text (numbers kept apart).
struct Group {
  int code = 0;
  std::string text;
  double number = 0;
};
using Groups = std::vector<Group>;

// The codes of the annotation entities' own data that the comparisons look at: points, sizes, flags and
// texts. Names (block 2, styles 3 and 7) are left out: this decodes entities without the whole drawing.
bool compared(int code) {
  static const std::set<int> codes = {1,  3,  10, 20, 30, 11, 21, 31, 12, 22, 13, 23, 33, 14, 24, 34, 15, 25, 35,  16,
                                      26, 36, 17, 27, 40, 41, 42, 44, 46, 50, 52, 53, 70, 71, 72, 73, 74, 75, 76, 90,
                                      140, 147, 340};
  return codes.contains(code);
}

// The groups of the entities of these types, decoded one at a time with the registry's decoders, by handle,
// so that a drawing whose other types do not decode yet still shows these. Dimension styles are named.
std::map<std::uint64_t, Groups> decodeEntities(const std::string& path, const std::set<std::string>& types,
                                               std::map<std::string, Groups>* dimensionStyles = nullptr) {
  std::map<std::uint64_t, Groups> found;
  headless::DwgSections sections;
  std::string error;
  if (!headless::readDwgContainer(path, sections, error)) return found;
  std::vector<std::string> warnings;
  const std::vector<headless::DwgClass> classes = headless::readDwgClasses(sections, warnings);
  const headless::DwgObjectWalk walk = headless::walkObjects(sections);
  auto typeName = [&](std::uint16_t type) -> std::string {
    if (type < 500) return std::string(headless::dwgFixedTypeName(type));
    return type - 500u < classes.size() ? classes[type - 500u].dxfName : std::string();
  };
  headless::DwgNames names;
  headless::DwgTagList ignored;
  std::vector<headless::DwgBlockHeader> blocks;
  std::vector<headless::DwgLayout> layouts;
  headless::DwgObjectReader object;
  for (const headless::DwgObjectHeader& h : walk.objects)
    if (typeName(h.type) == "DIMSTYLE" && object.open(sections, h, false))
      headless::decodeDwgTableEntry(object, "DIMSTYLE", ignored, names, blocks, layouts);
  // Each dimension style's groups after its name, by name.
  if (dimensionStyles) {
    std::string style;
    for (std::size_t i = 0; i < ignored.size(); ++i) {
      const headless::DwgTagList::Tag& t = ignored[i];
      if (t.code == 2) style = ignored.textOf(t);
      else if (!style.empty() && t.type == headless::TagType::Real) (*dimensionStyles)[style].push_back({t.code, {}, t.real});
      else if (!style.empty() && t.code == 340) (*dimensionStyles)[style].push_back({t.code, std::string(ignored.textOf(t)), 0});
      if (t.code == 0) style.clear();
    }
  }
  headless::DwgDecodeContext context(names);
  context.hookLengths = headless::dwgHookLengths(ignored);
  // Texts as the DXF reader makes them: UTF-8, escapes resolved.
  headless::TextDecoder texts(sections.codepageName(), sections.version >= headless::DwgVersion::R2007
                                                           ? headless::TextEncoding::Utf8
                                                           : headless::TextEncoding::CodePage);
  for (const headless::DwgObjectHeader& h : walk.objects) {
    const std::string type = typeName(h.type);
    if (!types.contains(type)) continue;
    const headless::DwgEntityType* decoder = headless::findDwgEntityType(h.type, type);
    headless::DwgTagList out;
    EXPECT_TRUE(decoder && object.open(sections, h, true) && decoder->decode(object, out, context) && !object.failed())
        << type << " " << std::hex << h.handle;
    Groups& groups = found[h.handle];
    for (std::size_t i = 0; i < out.size(); ++i) {
      const headless::DwgTagList::Tag& t = out[i];
      if (t.type == headless::TagType::Real) groups.push_back({t.code, {}, t.real});
      else if (t.holdsText()) groups.push_back({t.code, {}, 0});
      else groups.push_back({t.code, {}, static_cast<double>(t.integer)});
      if (t.type == headless::TagType::Text || t.type == headless::TagType::Handle)
        texts.decode(out.textOf(t), groups.back().text);
    }
  }
  return found;
}

// The groups of a DXF entity from its first own subclass marker to its extended data.
Groups dxfGroups(const DatabaseData& db, const platform::EntityRec& e) {
  Groups groups;
  const platform::StoredTag* tags = db.tagsOf(e);
  bool own = false;
  for (std::uint32_t i = 0; i < e.tagCount && tags[i].code < 1000; ++i) {
    const platform::StoredTag& t = tags[i];
    if (t.code == 100 && db.text(t) != "AcDbEntity") own = true;
    if (!own) continue;
    if (t.type == headless::TagType::Real) groups.push_back({t.code, {}, t.real});
    else if (t.type == headless::TagType::Text || t.type == headless::TagType::Handle)
      groups.push_back({t.code, std::string(db.text(t)), 0});
    else groups.push_back({t.code, {}, static_cast<double>(t.integer)});
  }
  return groups;
}

// Each compared code's values, in order, agree: texts exactly, numbers to the DXF writers' precision.
void expectSameGroups(const Groups& got, const Groups& want) {
  for (int code = 0; code < 1000; ++code) {
    if (!compared(code)) continue;
    Groups a, b;
    std::copy_if(got.begin(), got.end(), std::back_inserter(a), [&](const Group& g) { return g.code == code; });
    std::copy_if(want.begin(), want.end(), std::back_inserter(b), [&](const Group& g) { return g.code == code; });
    ASSERT_EQ(a.size(), b.size()) << "code " << code;
    for (std::size_t i = 0; i < a.size(); ++i) {
      EXPECT_EQ(a[i].text, b[i].text) << "code " << code;
      EXPECT_NEAR(a[i].number, b[i].number, 1e-9 * std::max(1.0, std::abs(b[i].number))) << "code " << code;
    }
  }
}

Groups without(const Groups& groups, std::initializer_list<int> codes) {
  Groups kept;
  for (const Group& g : groups)
    if (std::find(codes.begin(), codes.end(), g.code) == codes.end()) kept.push_back(g);
  return kept;
}

TEST(DwgReader, AnnotationEntitiesMatchTheirDxfTwins) {
  // Dimensions of every kind, arc dimensions, tolerances and multiline texts from R14 to R2013; leaders (one
  // with a hook line) and texts long enough to be cut into 3 groups (R14, R2000); Chinese texts read from
  // UTF-16 (R2013).
  // Each drawing's stem, and how its DXF's name ends.
  const std::pair<const char*, const char*> twins[] = {{"libredwg_example/libredwg_example_r14", ".dxf"},
                                                       {"libredwg_example/libredwg_example_2000", ".dxf"},
                                                       {"libredwg_example/libredwg_example_2007", ".dxf"},
                                                       {"libredwg_example/libredwg_example_2013", ".dxf"},
                                                       {"libredwg_r14_Leader/libredwg_r14_Leader", ".dxf"},
                                                       {"acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015", "_ascii.dxf"},
                                                       {"../chinese/libredwg_gh109_1/libredwg_2013_gh109_1", ".dxf"}};
  const std::set<std::string> types = {"MTEXT", "DIMENSION", "ARC_DIMENSION", "LEADER", "TOLERANCE"};
  std::multiset<std::string> seen;
  bool chunked = false, chinese = false, hooked = false;
  for (const auto& [stem, ending] : twins) {
    const std::string path = std::string("same_drawing/") + stem;
    const std::string dwg = corpusFile(path + ".dwg"), dxf = corpusFile(path + ending);
    if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(stem);
    DatabaseData b;
    platform::ReadReport rb;
    ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
    std::map<std::string, Groups> styles;
    const std::map<std::uint64_t, Groups> decoded = decodeEntities(dwg, types, &styles);
    // The dimension styles give the variables the host takes from them (scale, arrow size, text height,
    // gap, text style) as the twin's do.
    for (const platform::ObjectRec& o : b.objects) {
      if (b.name(o.type) != "DIMSTYLE") continue;
      const platform::StoredTag* name = b.find(o.tagBegin, o.tagCount, 2);
      ASSERT_TRUE(name && styles.contains(std::string(b.text(*name))));
      // Writers leave out the variables of a new drawing's value, some (R14) write them all.
      const Groups& got = styles[std::string(b.text(*name))];
      SCOPED_TRACE(b.text(*name));
      for (const auto& [code, byDefault] : {std::pair{40, 1.0}, {41, 0.18}, {140, 0.18}, {147, 0.09}}) {
        const platform::StoredTag* t = b.find(o.tagBegin, o.tagCount, code);
        auto it = std::find_if(got.begin(), got.end(), [code](const Group& g) { return g.code == code; });
        EXPECT_DOUBLE_EQ(it == got.end() ? byDefault : it->number, t ? t->real : byDefault) << "code " << code;
      }
      if (const platform::StoredTag* t = b.find(o.tagBegin, o.tagCount, 340))
        expectSameGroups(without(got, {40, 41, 140, 147}), {{340, std::string(b.text(*t)), 0}});
      seen.insert("DIMSTYLE");
    }
    for (const platform::EntityRec& t : b.entities) {
      const std::string type(b.name(t.dxfName));
      auto it = decoded.find(t.handle);
      if (!types.contains(type) || it == decoded.end()) continue;
      SCOPED_TRACE(type + " " + std::to_string(t.handle));
      const Groups want = dxfGroups(b, t);
      // A leader's text box (40, 41) is worked out afresh by some DXF writers.
      if (type == "LEADER") expectSameGroups(without(it->second, {40, 41}), without(want, {40, 41}));
      else expectSameGroups(it->second, want);
      hooked = hooked || std::any_of(want.begin(), want.end(), [](const Group& g) { return g.code == 75; });
      seen.insert(type);
      for (const Group& g : want) {
        chunked = chunked || (type == "MTEXT" && g.code == 3);
        chinese = chinese || (g.code == 1 && g.text.find("\xe5\xa4\xa9") != std::string::npos);
      }
    }
  }
  for (const char* type : {"MTEXT", "DIMENSION", "ARC_DIMENSION", "LEADER", "TOLERANCE"}) EXPECT_GT(seen.count(type), 0u) << type;
  EXPECT_GE(seen.count("DIMENSION"), 30u);
  EXPECT_TRUE(chunked);
  EXPECT_TRUE(chinese);
  EXPECT_TRUE(hooked);
}

// The extended records filed in entities' extension dictionaries hold the groups of their twin's, entry by
// entry: the multiline part of attribute definitions (R2000), the round-trip data of tables and viewports.
TEST(DwgReader, ExtensionDictionaryRecordsMatchTheirDxfTwins) {
  const std::string stem = "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015";
  const std::string dwg = corpusFile(stem + ".dwg"), dxf = corpusFile(stem + "_ascii.dxf");
  if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData a, b;
  platform::ReadReport ra, rb;
  ASSERT_TRUE(headless::readDwg(dwg, a, ra)) << ra.error;
  ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
  EXPECT_TRUE(ra.warnings.empty()) << ra.warnings.front();
  auto text = [](const DatabaseData& db, std::uint32_t i) { return std::string(db.text(db.tags[i])); };
  // The records an entity's extension dictionary files, by entry name.
  auto entries = [&](const DatabaseData& db, const platform::EntityRec& e) {
    std::map<std::string, const platform::ObjectRec*> found;
    const platform::ObjectRec* dictionary = nullptr;
    for (std::uint32_t i = e.tagBegin; i + 1 < e.tagBegin + e.tagCount && !dictionary; ++i)
      if (db.tags[i].code == 102 && text(db, i) == "{ACAD_XDICTIONARY")
        dictionary = db.object(headless::parseHandle(text(db, i + 1)));
    for (std::uint32_t i = dictionary ? dictionary->tagBegin : 0; dictionary && i + 1 < dictionary->tagBegin + dictionary->tagCount; ++i)
      if (db.tags[i].code == 3)
        if (const platform::ObjectRec* o = db.object(headless::parseHandle(text(db, i + 1))); o && db.name(o->type) == "XRECORD")
          found.emplace(text(db, i), o);
    return found;
  };
  // A record's groups after its subclass marker; handles are left out, as the twin's writer numbered some
  // objects anew.
  auto groupsOf = [](const DatabaseData& db, const platform::ObjectRec& o) {
    Groups groups;
    bool own = false;
    for (std::uint32_t i = 0; i < o.tagCount; ++i) {
      const platform::StoredTag& t = db.tags[o.tagBegin + i];
      if (own && t.type == headless::TagType::Real) groups.push_back({t.code, {}, t.real});
      else if (own && t.type == headless::TagType::Handle) groups.push_back({t.code, {}, 0});
      else if (own && (t.type == headless::TagType::Text || t.type == headless::TagType::Binary))
        groups.push_back({t.code, std::string(db.text(t)), 0});
      else if (own) groups.push_back({t.code, {}, static_cast<double>(t.integer)});
      own = own || t.code == 100;
    }
    return groups;
  };
  std::map<platform::Handle, const platform::EntityRec*> twins;
  for (const platform::EntityRec& e : b.entities) twins.emplace(e.handle, &e);
  std::multiset<std::string> seen;
  for (const platform::EntityRec& e : a.entities) {
    auto twin = twins.find(e.handle);
    if (twin == twins.end()) continue;
    const auto want = entries(b, *twin->second);
    for (const auto& [name, record] : entries(a, e)) {
      SCOPED_TRACE(name + " of " + headless::dwgHex(e.handle));
      ASSERT_TRUE(want.contains(name));
      const Groups got = groupsOf(a, *record), expected = groupsOf(b, *want.at(name));
      // The twin's writer keeps only the first groups of a viewport's round-trip record.
      ASSERT_GE(got.size(), expected.size());
      for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(got[i].code, expected[i].code) << i;
        EXPECT_EQ(got[i].text, expected[i].text) << i;
        EXPECT_NEAR(got[i].number, expected[i].number, 1e-9 * std::max(1.0, std::abs(expected[i].number))) << i;
      }
      seen.insert(name);
    }
  }
  EXPECT_GE(seen.count("ACAD_MLATT"), 2u);
  EXPECT_GE(seen.size(), 4u);
}

// One drawing saved in each release reads alike: a leader from R14 to R2018 (its style named in capitals in
// R14 only; its box size no longer stored from R2010 on), a multiline text from R2004 to R2018 (the
// rectangle height of R2007 and the columns of R2018 on top).
TEST(DwgReader, AnnotationEntitiesReadAlikeInEveryRelease) {
  const std::string r14 = corpusFile("same_drawing/libredwg_r14_Leader/libredwg_r14_Leader.dwg");
  if (r14.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  const std::set<std::string> types = {"LEADER"};
  const Groups leader = without(decodeEntities(r14, types)[0x72E], {3});
  ASSERT_FALSE(leader.empty());
  for (const char* year : {"2000", "2004", "2010", "2013", "2018"}) {
    SCOPED_TRACE(year);
    const std::string path = corpusFile("dwg/R" + std::string(year) + "/libredwg_" + year + "_Leader.dwg");
    ASSERT_FALSE(path.empty());
    const Groups got = without(decodeEntities(path, types)[0x72E], {3});
    if (std::string(year) < "2010") expectSameGroups(got, leader);
    else expectSameGroups(got, without(leader, {40, 41}));
  }
  Groups first;
  for (const char* year : {"2004", "2007", "2010", "2013", "2018"}) {
    SCOPED_TRACE(year);
    const std::string path = corpusFile("dwg/R" + std::string(year) + "/libredwg_" + year + "_Text.dwg");
    ASSERT_FALSE(path.empty());
    DatabaseData db;
    platform::ReadReport report;
    ASSERT_TRUE(headless::readDwg(path, db, report)) << report.error;
    ASSERT_EQ(db.entities.size(), 1u);
    Groups common;
    for (const Group& g : dxfGroups(db, db.entities[0])) {
      if (g.code == 101) break;
      if (g.code != 46) common.push_back(g);
    }
    if (first.empty()) first = common;
    expectSameGroups(common, first);
    EXPECT_EQ(std::string(year) >= "2018", db.find(db.entities[0].tagBegin, db.entities[0].tagCount, 101) != nullptr);
  }
}

// Anonymous blocks are numbered as DXF writers number them, by their place in the block table: the same
// names as the twins', so that a block reference names the same block in both.
TEST(DwgReader, AnonymousBlocksAreNamedAsInTheirTwins) {
  const std::pair<const char*, const char*> twins[] = {
      {"same_drawing/libredwg_example/libredwg_example_2000.dwg", "same_drawing/libredwg_example/libredwg_example_2000.dxf"},
      {"same_drawing/libredwg_example/libredwg_example_2007.dwg", "same_drawing/libredwg_example/libredwg_example_2007.dxf"},
      {"same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015.dwg",
       "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015_ascii.dxf"}};
  auto namesOf = [](const DatabaseData& db) {
    std::set<std::string> names;
    for (const platform::BlockRec& b : db.blocks) names.insert(b.name);
    return names;
  };
  for (const auto& [dwgName, dxfName] : twins) {
    const std::string dwg = corpusFile(dwgName), dxf = corpusFile(dxfName);
    if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(dwgName);
    DatabaseData a, b;
    platform::ReadReport ra, rb;
    ASSERT_TRUE(headless::readDwg(dwg, a, ra)) << ra.error;
    ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
    const std::set<std::string> names = namesOf(a);
    EXPECT_EQ(names, namesOf(b));
    EXPECT_GT(std::count_if(names.begin(), names.end(), [](const std::string& n) { return n.rfind("*D", 0) == 0; }), 5);
  }
}

struct Shape {
  std::string type, digest;
  platform::Extents3d box;
};

// The regions, solids, bodies and surfaces of a drawing's model space by handle.
std::map<platform::Handle, Shape> shapesOf(const platform::Database& db) {
  std::map<platform::Handle, Shape> out;
  for (const platform::Entity& e : vktest::modelEntities(db)) {
    const std::string type(e.dxfName());
    if (type != "REGION" && type != "3DSOLID" && type != "BODY" && !type.ends_with("SURFACE")) continue;
    Shape s{type, e.text(Accessor::acisDigest), {}};
    if (e.getGeomExtents(s.box) != platform::ErrorStatus::eOk) s.box = {};
    out[e.handle()] = s;
  }
  return out;
}

// Each shape of the twin has its match by handle: the same type, digest (never empty) and extents.
void expectSameShapes(const std::map<platform::Handle, Shape>& got, const std::map<platform::Handle, Shape>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (const auto& [handle, w] : want) {
    SCOPED_TRACE(handle);
    const auto it = got.find(handle);
    ASSERT_NE(it, got.end());
    EXPECT_EQ(it->second.type, w.type);
    EXPECT_FALSE(w.digest.empty());
    EXPECT_EQ(it->second.digest, w.digest);
    ASSERT_FALSE(it->second.box.isEmpty());
    const platform::Point3d corners[] = {it->second.box.min, w.box.min, it->second.box.max, w.box.max};
    for (int c = 0; c < 4; c += 2) {
      EXPECT_NEAR(corners[c].x, corners[c + 1].x, 1e-6);
      EXPECT_NEAR(corners[c].y, corners[c + 1].y, 1e-6);
      EXPECT_NEAR(corners[c].z, corners[c + 1].z, 1e-6);
    }
  }
}

}  // namespace

TEST(DwgReader, ShapesMatchTheirDxfTwins) {
  // R2000 stores transformed SAT text in blocks; R2007 SAB, where its DXF twin has SAT text of another version;
  // R2013 SAB in its data store, where its DXF twin has the ACDSDATA section.
  int read = 0;
  for (const char* release : {"2000", "2007", "2013"}) {
    const std::string base = std::string("same_drawing/libredwg_example/libredwg_example_") + release;
    const std::string dwg = corpusFile(base + ".dwg"), dxf = corpusFile(base + ".dxf");
    if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(release);
    platform::ReadReport ra, rb;
    const auto a = platform::Database::read(dwg, ra);
    // The drawings hold other types, decoded elsewhere; until then the drawing is refused for one of them.
    if (!a) {
      EXPECT_EQ(ra.error.find("REGION"), std::string::npos) << ra.error;
      EXPECT_EQ(ra.error.find("3DSOLID"), std::string::npos) << ra.error;
      EXPECT_EQ(ra.error.find("damaged"), std::string::npos) << ra.error;
      continue;
    }
    const auto b = platform::Database::read(dxf, rb);
    ASSERT_NE(b, nullptr) << rb.error;
    ++read;
    const auto got = shapesOf(*a);
    ASSERT_EQ(got.size(), 3u);
    expectSameShapes(got, shapesOf(*b));
  }
  if (read == 0) GTEST_SKIP() << "the example drawings still hold types not decoded";
}

TEST(DwgReader, SurfacesOfSabDataHaveExtentsAndDigests) {
  // Two surfaces whose data are SAB; the drawing holds nothing else.
  const std::string dwg = corpusFile("dwg/R2010/acadsharp_surfaces_2010.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  platform::ReadReport report;
  const auto db = platform::Database::read(dwg, report);
  ASSERT_NE(db, nullptr) << report.error;
  const auto shapes = shapesOf(*db);
  ASSERT_EQ(shapes.size(), 2u);
  for (const auto& [handle, s] : shapes) {
    SCOPED_TRACE(handle);
    EXPECT_EQ(s.type, "SURFACE");
    EXPECT_EQ(s.digest.size(), 16u);
    EXPECT_FALSE(s.box.isEmpty());
  }
  EXPECT_NE(shapes.begin()->second.digest, std::next(shapes.begin())->second.digest);
}

TEST(DwgReader, MadeSurfacesHaveTheShapesOfTheirDxfTwin) {
  // Extruded, lofted, revolved and swept surfaces and a plane one, each with SAB data where its twin has SAT
  // text of another modeler version, and extruded and lofted ones with their isolines' edges stored again.
  const std::string dwg = corpusFile("dwg/R2004/libredwg_2004_Surface.dwg");
  const std::string dxf = corpusFile("dxf/R2004/libredwg_2004_Surface.dxf");
  if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  platform::ReadReport ra, rb;
  const auto a = platform::Database::read(dwg, ra), b = platform::Database::read(dxf, rb);
  ASSERT_NE(a, nullptr) << ra.error;
  ASSERT_NE(b, nullptr) << rb.error;
  EXPECT_TRUE(ra.warnings.empty()) << ra.warnings.front();
  const auto got = shapesOf(*a), want = shapesOf(*b);
  std::set<std::string> types;
  for (const auto& [handle, s] : got) types.insert(s.type);
  EXPECT_EQ(types, (std::set<std::string>{"EXTRUDEDSURFACE", "LOFTEDSURFACE", "REVOLVEDSURFACE", "SWEPTSURFACE",
                                          "PLANESURFACE"}));
  expectSameShapes(got, want);
  // The extruded one: an elliptical profile extruded 200 up from z = 0.
  const Shape& extruded = got.at(0x2D8);
  EXPECT_NEAR(extruded.box.min.z, 0.0, 1e-9);
  EXPECT_NEAR(extruded.box.max.z, 200.0, 1e-9);
}

TEST(DwgReader, TheDataStoreGivesSabByHandleAndSurvivesDamage) {
  const auto read = vktest::corpusDwgSections("same_drawing/libredwg_example/libredwg_example_2013.dwg");
  if (!read) GTEST_SKIP() << "the corpus is not beside this checkout";
  const headless::DwgSections& sections = *read;
  std::vector<std::string> warnings;
  const auto data = headless::readDwgModelerData(sections, warnings);
  EXPECT_TRUE(warnings.empty());
  std::set<std::uint64_t> handles;
  for (const auto& [handle, bytes] : data) {
    handles.insert(handle);
    EXPECT_TRUE(bytes.starts_with("ACIS BinaryFile"));
  }
  EXPECT_EQ(handles, (std::set<std::uint64_t>{0x176, 0x2E1, 0x37D}));
  // The store cut short anywhere, or with its counts and offsets overwritten, is refused with a warning.
  const headless::DwgSection* store = sections.section("AcDb:AcDsPrototype_1b");
  ASSERT_NE(store, nullptr);
  const std::vector<std::uint8_t> original(store->data.begin(), store->data.end());
  auto readWith = [&](const std::vector<std::uint8_t>& bytes) {
    headless::DwgSections damaged;
    damaged.fileName = "damaged.dwg";
    damaged.sections.push_back({"AcDb:AcDsPrototype_1b", bytes});
    warnings.clear();
    return headless::readDwgModelerData(damaged, warnings);
  };
  for (std::size_t n = 0; n < original.size(); n += 97) {
    const auto cut = readWith(std::vector<std::uint8_t>(original.begin(), original.begin() + static_cast<long>(n)));
    EXPECT_TRUE(cut == data || (cut.empty() && !warnings.empty())) << n;
  }
  // Headers, indexes and record headers overwritten word by word: read to the end or refused, never past it.
  for (std::size_t at = 0; at + 4 <= 0x1500; at += 4) {
    auto bytes = original;
    for (int k = 0; k < 4; ++k) bytes[at + static_cast<std::size_t>(k)] = 0xFF;
    EXPECT_LE(readWith(bytes).size(), data.size()) << at;
  }
  // A record kept in blob pages (its size word says so) is left out, and the reader says so.
  auto bytes = original;
  const std::string_view magic = "ACIS BinaryFile";
  const auto first = std::search(bytes.begin(), bytes.end(), magic.begin(), magic.end());
  ASSERT_NE(first, bytes.end());
  const std::uint8_t blobReference[] = {0xB1, 0x6B, 0x10, 0xBB};
  std::copy(std::begin(blobReference), std::end(blobReference), first - 4);
  EXPECT_EQ(readWith(bytes).size(), data.size() - 1);
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_NE(warnings[0].find("1 object is kept in blob pages"), std::string::npos) << warnings[0];
}

namespace {

// What the table comparer reads of each table in model space, by handle: sizes, then cell texts and dates.
struct TableRead {
  long long rows = 0, columns = 0;
  std::vector<double> rowHeights, columnWidths;
  std::vector<std::string> texts, dates;
  long long flow = 0;
  std::vector<double> flags;  // 90 and the override flags 93 to 96
};
// Block cells name their block; writers number anonymous blocks as they like, so "*U25" is kept as "*U".
std::map<platform::Handle, TableRead> tablesOf(const platform::Database& db) {
  std::map<platform::Handle, TableRead> out;
  for (const platform::Entity& e : vktest::modelEntities(db)) {
    if (e.dxfName() != "ACAD_TABLE") continue;
    TableRead& t = out[e.handle()];
    t = {e.integer(Accessor::numRows),      e.integer(Accessor::numColumns), e.reals(Accessor::rowHeights),
         e.reals(Accessor::columnWidths),   e.texts(Accessor::cellTexts),    e.texts(Accessor::cellDates),
         e.integer(Accessor::flowDirection), e.reals(Accessor::tableFlags)};
    for (std::string& text : t.texts)
      if (text.size() > 2 && text[0] == '*' && text.find_first_not_of("0123456789", 2) == std::string::npos)
        text.resize(2);
  }
  return out;
}

}  // namespace

TEST(DwgReader, TablesMatchTheirDxfTwins) {
  // Text and block cells with cell and table-wide overrides (R2000), cells holding values (R2007); from
  // R2010 on the cells come from the table content: merged cells, block cells, values of every type.
  const std::pair<const char*, const char*> twins[] = {
      {"same_drawing/libredwg_example/libredwg_example_2000.dwg", "same_drawing/libredwg_example/libredwg_example_2000.dxf"},
      {"same_drawing/libredwg_example/libredwg_example_2007.dwg", "same_drawing/libredwg_example/libredwg_example_2007.dxf"},
      {"same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015.dwg",
       "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1015_ascii.dxf"},
      {"same_drawing/libredwg_example/libredwg_example_2013.dwg", "same_drawing/libredwg_example/libredwg_example_2013.dxf"},
      {"same_drawing/acadsharp_table/acadsharp_table_AC1032.dwg", "same_drawing/acadsharp_table/acadsharp_table_AC1032.dxf"},
      {"same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1024.dwg",
       "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1027_binary.dxf"},
      {"same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1032.dwg",
       "same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1027_binary.dxf"},
  };
  for (const auto& [dwgName, dxfName] : twins) {
    const std::string dwg = corpusFile(dwgName), dxf = corpusFile(dxfName);
    if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(dwgName);
    platform::ReadReport ra, rb;
    const auto a = platform::Database::read(dwg, ra);
    ASSERT_NE(a, nullptr) << ra.error;
    EXPECT_TRUE(ra.warnings.empty());
    const auto b = platform::Database::read(dxf, rb);
    ASSERT_NE(b, nullptr) << rb.error;
    const auto got = tablesOf(*a), want = tablesOf(*b);
    ASSERT_FALSE(want.empty());
    ASSERT_EQ(got.size(), want.size());
    for (const auto& [handle, w] : want) {
      SCOPED_TRACE(handle);
      const auto it = got.find(handle);
      ASSERT_NE(it, got.end());
      EXPECT_EQ(it->second.rows, w.rows);
      EXPECT_EQ(it->second.columns, w.columns);
      expectNear(it->second.rowHeights, w.rowHeights, "row heights");
      expectNear(it->second.columnWidths, w.columnWidths, "column widths");
      EXPECT_EQ(it->second.texts, w.texts);
      EXPECT_EQ(it->second.dates, w.dates);
      EXPECT_EQ(it->second.flow, w.flow);
      EXPECT_EQ(it->second.flags, w.flags);
    }
  }
}

// No DXF of this drawing is in the corpus; its one MPOLYGON is a solid-filled 10 by 10 square.
TEST(DwgReader, MpolygonsKeepTheirBoundaryPaths) {
  const std::string dwg = corpusFile("chinese/librecad_mpolygon_solid.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  DatabaseData db;
  platform::ReadReport report;
  ASSERT_TRUE(headless::readDwg(dwg, db, report)) << report.error;
  EXPECT_TRUE(report.warnings.empty());
  const platform::EntityRec* e = entityOf(db, 0x2F);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(db.name(e->dxfName), "MPOLYGON");
  EXPECT_EQ(valuesOf(db, *e, 71), std::vector<double>{1});  // solid fill
  EXPECT_EQ(valuesOf(db, *e, 91), std::vector<double>{1});  // one path
  EXPECT_EQ(valuesOf(db, *e, 92), std::vector<double>{2});  // given as a polyline
  EXPECT_EQ(valuesOf(db, *e, 73), std::vector<double>{1});  // closed
  EXPECT_EQ(valuesOf(db, *e, 93), std::vector<double>{4});
  // The elevation point first, then the vertices.
  expectNear(valuesOf(db, *e, 10), {0, 0, 10, 10, 0}, "x");
  expectNear(valuesOf(db, *e, 20), {0, 0, 0, 10, 10}, "y");
  EXPECT_EQ(valuesOf(db, *e, 75), std::vector<double>{1});  // outer style
  EXPECT_EQ(valuesOf(db, *e, 63), std::vector<double>{3});  // fill colour
}
