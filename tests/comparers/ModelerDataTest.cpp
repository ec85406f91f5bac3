// Modeler data read as records from SAT text and from SAB (kept in the ACDSDATA section of newer DXF): the same
// shape gives the same records, extents and digest; damaged SAB is refused; a real drawing saved by two releases.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

#include "comparers/ComparerTestSupport.h"
#include "comparers/DiffRecord.h"
#include "platform/headless/modeler_data.h"
#include "platform/text.h"

using platform::Accessor;
using vktest::compareText;
using vktest::loadComparers;

namespace {

// Writes SAB values with their tags.
class SabWriter {
 public:
  SabWriter(int version, int bodies) {
    bytes_ = "ACIS BinaryFile";
    for (int v : {version, 0, bodies, 0}) raw(static_cast<std::int32_t>(v));
    text(7, "unit-test");
    text(7, "ASM 223.0.1.1930 NT");
    text(7, "Mon Jan  1 00:00:00 2024");
    for (double d : {1.0, 1e-6, 1e-10}) real(d);
  }
  SabWriter& name(std::string_view n) {
    // "torus-surface" is written as the part "torus" and the name "surface".
    const std::size_t dash = n.rfind('-');
    if (dash != std::string_view::npos) {
      std::size_t from = 0;
      for (std::size_t at = n.find('-'); at != std::string_view::npos && at <= dash; at = n.find('-', from)) {
        text(14, n.substr(from, at - from));
        from = at + 1;
      }
      return text(13, n.substr(dash + 1));
    }
    return text(13, n);
  }
  SabWriter& text(std::uint8_t tag, std::string_view s) {
    bytes_ += static_cast<char>(tag);
    bytes_ += static_cast<char>(s.size());
    bytes_ += s;
    return *this;
  }
  SabWriter& pointer(std::int32_t p) { return tagged(12, p); }
  SabWriter& integer(std::int32_t v) { return tagged(4, v); }
  SabWriter& integer64(std::int64_t v) { return tagged(23, v); }
  SabWriter& real(double d) { return tagged(6, d); }
  SabWriter& flag(bool b) {
    bytes_ += static_cast<char>(b ? 11 : 10);
    return *this;
  }
  SabWriter& position(double x, double y, double z, std::uint8_t tag = 19) {
    bytes_ += static_cast<char>(tag);
    for (double d : {x, y, z}) raw(d);
    return *this;
  }
  SabWriter& end() {
    bytes_ += '\x11';
    return *this;
  }
  // The closing record, encoded as the modeler writes it.
  std::string close() {
    text(14, "End").text(14, "of").text(14, "ASM").text(13, "data");
    return bytes_;
  }
  // A record's entity header (attribute, history, one more pointer), as from the ASM modeler on.
  SabWriter& head() { return pointer(-1).integer(-1).pointer(-1); }

 private:
  template <typename T>
  SabWriter& tagged(std::uint8_t tag, T v) {
    bytes_ += static_cast<char>(tag);
    return raw(v);
  }
  template <typename T>
  SabWriter& raw(T v) {
    char b[sizeof(T)];
    std::memcpy(b, &v, sizeof(T));
    bytes_.append(b, sizeof(T));
    return *this;
  }
  std::string bytes_;
};

// A torus (centre (5, 6, 7), radii 32 and 10) and one vertex's point: the same shape as SAT text and as SAB.
const std::vector<std::string> kTorusSat = {
    "21800 0 1 0", "9 unit-test 19 ASM 223.0.1.1930 NT 24 Mon Jan  1 00:00:00 2024", "1 9.9999999999999995e-07 1e-10",
    "asmheader $-1 -1 @12 223.0.1.1930 #", "body $-1 -1 $-1 $2 $-1 $-1 #", "lump $-1 -1 $-1 $-1 $3 $1 #",
    "shell $-1 -1 $-1 $-1 $-1 $4 $-1 $2 #", "face $-1 -1 $-1 $-1 $-1 $3 $-1 $5 forward single #",
    "torus-surface $-1 -1 $-1 5 6 7 0 0 1 32 10 1 0 0 forward_v I I I I #",
    "point $-1 -1 $-1 5 6 17.000000000000001 #", "End-of-ASM-data"};

std::string torusSab(double minor = 10) {
  SabWriter w(21800, 1);
  w.name("asmheader").pointer(-1).integer(-1).text(7, "223.0.1.1930").end();
  w.name("body").head().pointer(2).pointer(-1).pointer(-1).end();
  w.name("lump").head().pointer(-1).pointer(3).pointer(1).end();
  w.name("shell").head().pointer(-1).pointer(-1).pointer(4).pointer(-1).pointer(2).end();
  w.name("face").head().pointer(-1).pointer(-1).pointer(3).pointer(-1).pointer(5).flag(true).flag(false).end();
  w.name("torus-surface").head().position(5, 6, 7).position(0, 0, 1, 20).real(32).real(minor).position(1, 0, 0, 20);
  w.flag(true).flag(true).flag(true).flag(true).flag(true).end();
  w.name("point").head().position(5, 6, 17).end();
  return w.close();
}

std::string joinLines(const std::vector<std::string>& lines) {
  std::string s;
  for (const std::string& l : lines) s += l + "\n";
  return s;
}

std::string hex(std::string_view bytes) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (char c : bytes) {
    out += kHex[static_cast<unsigned char>(c) >> 4];
    out += kHex[static_cast<unsigned char>(c) & 15];
  }
  return out;
}

// A DXF R2013 drawing whose entities keep their SAB in the ACDSDATA section, by handle.
std::string drawingWithSab(const std::string& entities, const std::map<std::string, std::string>& sabByHandle) {
  std::string section = "0|SECTION|2|HEADER|9|$ACADVER|1|AC1027|0|ENDSEC|0|SECTION|2|ENTITIES|" + entities +
                        "|0|ENDSEC|0|SECTION|2|ACDSDATA|70|2|71|2";
  for (const auto& [handle, sab] : sabByHandle) {
    section += "|0|ACDSRECORD|90|1|2|AcDbDs::ID|280|10|320|" + handle + "|2|ASM_Data|280|15|94|" +
               std::to_string(sab.size());
    const std::string h = hex(sab);
    for (std::size_t i = 0; i < h.size(); i += 254) section += "|310|" + h.substr(i, 254);
  }
  section += "|0|ENDSEC|0|EOF";
  return vktest::dxfFromPairs(section);
}

std::string satEntity(const std::string& name, const std::string& handle, const std::vector<std::string>& lines) {
  std::string s = "0|" + name + "|5|" + handle + "|8|0|100|AcDbEntity|100|AcDbModelerGeometry|70|1";
  for (const std::string& l : lines) s += "|1|" + l;
  return s;
}

std::string sabEntity(const std::string& name, const std::string& handle) {
  return "0|" + name + "|5|" + handle + "|8|0|100|AcDbEntity|100|AcDbModelerGeometry|290|1|2|{00000000-0000-0000-0000-000000000000}";
}

struct ModelerDataFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;
  vktest::LoadedDrawing drawing(const std::string& dxf) { return loadComparers(dir, "s" + std::to_string(files++) + ".dxf", dxf, all); }
  static platform::Entity entity(const vktest::LoadedDrawing& d, std::size_t i) {
    return d.db->openEntity(d.db->blockRecord(d.db->modelSpaceId()).entityIds().at(i));
  }
};

}  // namespace

TEST(ModelerRecords, SatAndSabOfOneShapeGiveTheSameRecords) {
  headless::modeler::Model sat, sab;
  ASSERT_TRUE(sat.readSat(joinLines(kTorusSat)));
  std::string error;
  ASSERT_TRUE(sab.readSab(torusSab(), &error)) << error;
  EXPECT_EQ(sat.version(), 21800);
  EXPECT_EQ(sab.version(), 21800);
  ASSERT_EQ(sat.size(), 7u);
  ASSERT_EQ(sab.size(), sat.size());
  for (std::size_t i = 0; i < sat.size(); ++i) {
    SCOPED_TRACE(sat[i].name);
    EXPECT_EQ(sab[i].name, sat[i].name);
    EXPECT_EQ(sab[i].head, sat[i].head);
    const auto a = sat.data(sat[i]), b = sab.data(sab[i]);
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); ++k) {
      // Pointers and numbers read alike; words differ in spelling only (SAB keeps flags where SAT has words).
      const auto x = headless::modeler::number(a[k]), y = headless::modeler::number(b[k]);
      EXPECT_EQ(x.has_value(), y.has_value()) << a[k] << " / " << b[k];
      if (x && y) {
        EXPECT_DOUBLE_EQ(*x, *y);
      }
      EXPECT_EQ(headless::modeler::pointer(a[k]), headless::modeler::pointer(b[k]));
    }
  }
  EXPECT_EQ(sab.shape(), sat.shape());
  // The face names its surface through the pointer both forms give.
  const auto* face = sab.first("face");
  ASSERT_NE(face, nullptr);
  EXPECT_NE(sab.follow(sab.data(*face)[4], "torus-surface"), nullptr);
  // Another shape, another digest text; the header (product, date) is no part of it.
  headless::modeler::Model thinner;
  ASSERT_TRUE(thinner.readSab(torusSab(8)));
  EXPECT_NE(thinner.shape(), sab.shape());
  auto otherHeader = kTorusSat;
  otherHeader[1] = "9 elsewhere 19 ASM 224.0.0.0000 NT 24 Tue Jan  2 00:00:00 2024";
  headless::modeler::Model moved;
  ASSERT_TRUE(moved.readSat(joinLines(otherHeader)));
  EXPECT_EQ(moved.shape(), sat.shape());
}

// Newer modelers keep some attributes' integers in eight bytes (the index of a profile's edge).
TEST(ModelerRecords, EightByteIntegersAreRead) {
  SabWriter w(21800, 1);
  w.name("asmheader").pointer(-1).integer(-1).text(7, "223.0.1.1930").end();
  w.name("int64_attrib-name_attrib-gen-attrib").head().pointer(-1).text(7, "AcProfileEdgeIndex");
  w.integer64(5'000'000'001).end();
  w.name("point").head().position(1, 2, 3).end();
  const std::string sab = w.close();
  headless::modeler::Model m;
  std::string error;
  ASSERT_TRUE(m.readSab(sab, &error)) << error;
  ASSERT_EQ(m.size(), 3u);
  const auto* attribute = m.first("int64_attrib-name_attrib-gen-attrib");
  ASSERT_NE(attribute, nullptr);
  const auto fields = m.data(*attribute);
  ASSERT_FALSE(fields.empty());
  EXPECT_EQ(headless::modeler::number(fields.back()), 5'000'000'001.0);
  // The record after it is read whole: the integer took its eight bytes.
  const auto* point = m.first("point");
  ASSERT_NE(point, nullptr);
  EXPECT_EQ(headless::modeler::number(m.data(*point)[0]), 1.0);
  // Cut inside the integer, the data are refused.
  const std::size_t at = sab.find('\x17', sab.find("AcProfileEdgeIndex"));
  for (std::size_t n = at + 1; n < at + 9; ++n) {
    EXPECT_FALSE(m.readSab(std::string_view(sab).substr(0, n), &error)) << n;
  }
}

TEST(ModelerRecords, DamagedSabIsRefusedWithAReason) {
  const std::string good = torusSab();
  headless::modeler::Model m;
  std::string error;
  // Cut anywhere before the closing record, the data are refused, never read past their end.
  const std::size_t closing = good.rfind("End") - 2;
  for (std::size_t n = 0; n < closing; ++n) {
    error.clear();
    EXPECT_FALSE(m.readSab(std::string_view(good).substr(0, n), &error)) << n;
    EXPECT_FALSE(error.empty()) << n;
  }
  // A string whose length says more than is left.
  std::string lying = good;
  const std::size_t header = lying.find("223.0.1.1930", lying.find("asmheader")) - 2;  // the modeler's version
  ASSERT_EQ(lying[header], '\x07');
  lying[header + 1] = '\x7f';
  EXPECT_FALSE(m.readSab(lying.substr(0, header + 40), &error));
  EXPECT_NE(error.find("past"), std::string::npos) << error;
  // A value of a type that does not exist, and a record that starts with no name.
  std::string unknown = good;
  unknown[lying.find("body") - 2] = '\x7e';
  EXPECT_FALSE(m.readSab(unknown, &error));
  std::string nameless = good;
  nameless.insert(good.find("body") - 2, "\x04\x01\x00\x00\x00", 5);
  EXPECT_FALSE(m.readSab(nameless, &error));
  EXPECT_NE(error.find("without a name"), std::string::npos) << error;
  EXPECT_FALSE(m.readSab("not SAB at all", &error));
  // The good data are read, and say where they end.
  std::size_t used = 0;
  EXPECT_TRUE(m.readSab(good + "trailing bytes", &error, &used)) << error;
  EXPECT_EQ(used, good.size());
}

TEST_F(ModelerDataFixture, SabKeptApartMeasuresAndDigestsAsTheSatText) {
  auto sat = drawing(vktest::dxfDrawing(satEntity("3DSOLID", "A1", kTorusSat), "AC1021"));
  auto sab = drawing(drawingWithSab(sabEntity("3DSOLID", "A1") + "|100|AcDb3dSolid|350|0", {{"A1", torusSab()}}));
  ASSERT_EQ(sat.comparers.size(), 1u);
  ASSERT_EQ(sab.comparers.size(), 1u);
  const platform::Extents3d& box = sab.comparers[0]->placedExtents();
  ASSERT_FALSE(box.isEmpty());
  // The torus reaches 32 + 10 around its centre in x and y, 10 in z.
  EXPECT_DOUBLE_EQ(box.min.x, 5 - 42.0);
  EXPECT_DOUBLE_EQ(box.max.y, 6 + 42.0);
  EXPECT_DOUBLE_EQ(box.max.z, 17.0);
  EXPECT_EQ(box, sat.comparers[0]->placedExtents());
  const platform::Entity a = entity(sat, 0), b = entity(sab, 0);
  EXPECT_EQ(b.text(Accessor::acisDigest), a.text(Accessor::acisDigest));
  EXPECT_EQ(b.text(Accessor::acisData).substr(0, 6), "21800 ");
  EXPECT_EQ(compareText(*sab.comparers[0], *sat.comparers[0]), "楔形实体图元 ");
  // A different shape in the section is seen.
  auto thinner = drawing(drawingWithSab(sabEntity("REGION", "B2"), {{"B2", torusSab(8)}}));
  auto region = drawing(drawingWithSab(sabEntity("REGION", "B2"), {{"B2", torusSab()}}));
  EXPECT_EQ(compareText(*thinner.comparers[0], *region.comparers[0]), "面域图元 Z坐标不相同,权 reference DXF不一样,");
}

TEST_F(ModelerDataFixture, UnreadableDataLeaveNoEmptyBoxInTheRecord) {
  // Damaged SAB in the section: the entity has no extents, and its record sits at the origin.
  std::string damaged = torusSab();
  damaged.resize(damaged.size() / 2);
  auto d = drawing(drawingWithSab(sabEntity("REGION", "C3"), {{"C3", damaged}}));
  ASSERT_EQ(d.comparers.size(), 1u);
  EXPECT_TRUE(d.comparers[0]->placedExtents().isEmpty());
  EXPECT_EQ(entity(d, 0).text(Accessor::acisDigest), "");
  auto other = drawing(drawingWithSab(sabEntity("REGION", "C3"), {{"C3", torusSab()}}));
  const auto record = d.comparers[0]->compare(*other.comparers[0]);
  EXPECT_EQ(record->extents, (std::array<double, 6>{}));
  CDiffType direct;
  direct.setExtents(platform::Extents3d());
  EXPECT_EQ(direct.extents, (std::array<double, 6>{}));
}

TEST_F(ModelerDataFixture, ASolidDrawingSavedByTwoReleasesComparesEqual) {
  const std::string base = vktest::corpusDir() + "/same_drawing/libredwg_example/libredwg_example_";
  if (vktest::corpusDir().empty() || !std::filesystem::exists(base + "2013.dxf")) GTEST_SKIP() << "no corpus";
  // R2000 keeps SAT text (version 400) in the entities, R2007 SAT of the ASM modeler, R2013 SAB in ACDSDATA.
  auto r2000 = drawing(vktest::readFile(base + "2000.dxf"));
  for (const char* release : {"2007", "2013"}) {
    SCOPED_TRACE(release);
    auto newer = drawing(vktest::readFile(base + release + ".dxf"));
    std::map<platform::Handle, const CVkAcadEntityBase*> byHandle;
    for (const auto& c : r2000.comparers)
      if (c) byHandle[c->handle()] = c.get();
    int modeled = 0;
    for (const auto& c : newer.comparers) {
      if (!c || (c->dxfName() != "3DSOLID" && c->dxfName() != "REGION")) continue;
      ++modeled;
      SCOPED_TRACE(c->handle());
      const auto it = byHandle.find(c->handle());
      ASSERT_NE(it, byHandle.end());
      EXPECT_FALSE(c->placedExtents().isEmpty());
      const platform::Extents3d &a = it->second->placedExtents(), &b = c->placedExtents();
      EXPECT_NEAR(a.min.x, b.min.x, 1e-6);
      EXPECT_NEAR(a.max.y, b.max.y, 1e-6);
      EXPECT_NEAR(a.max.z, b.max.z, 1e-6);
      EXPECT_EQ(compareText(*c, *it->second), c->description());
    }
    EXPECT_EQ(modeled, 3);
  }
  // R14 writes version 106 (no product line, flags as numbers, axes a little less precise): its layers differ
  // from the later saves', its shapes do not.
  auto r14 = drawing(vktest::readFile(base + "r14.dxf"));
  const auto digests = [](const vktest::LoadedDrawing& d) {
    std::map<platform::Handle, std::string> out;
    for (const platform::Entity& e : vktest::modelEntities(*d.db))
      if (e.dxfName() == "REGION" || e.dxfName() == "3DSOLID") out[e.handle()] = e.text(Accessor::acisDigest);
    return out;
  };
  const auto old = digests(r14);
  EXPECT_EQ(old.size(), 3u);
  EXPECT_EQ(old, digests(r2000));
}
