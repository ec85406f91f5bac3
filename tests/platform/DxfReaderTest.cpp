// The headless drawing reader: both DXF encodings, code pages, spaces and layouts, owned records, the class
// tree, the group list, and clear errors or warnings for damaged files.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <set>

#include "platform/database.h"
#include "platform/headless/dxf_data.h"
#include "platform/headless/dxf_reader.h"
#include "platform/text.h"
#include "support/TestSupport.h"

using namespace platform;
using vktest::dxfDrawing;
using vktest::modelEntities;
using vktest::dxfFromPairs;
using vktest::readDxfText;
using vktest::TempDir;

namespace {

// Binary DXF writer for tests: R13+ files use two-byte group codes, R12 files one byte.
class BinaryDxf {
 public:
  explicit BinaryDxf(bool twoByteCodes) : two_(twoByteCodes) { bytes_.append("AutoCAD Binary DXF\r\n\x1a", 21).push_back('\0'); }
  BinaryDxf& code(int c) {
    if (two_) {
      bytes_ += static_cast<char>(c & 0xFF);
      bytes_ += static_cast<char>((c >> 8) & 0xFF);
    } else if (c < 255) {
      bytes_ += static_cast<char>(c);
    } else {
      bytes_ += '\xFF';
      bytes_ += static_cast<char>(c & 0xFF);
      bytes_ += static_cast<char>((c >> 8) & 0xFF);
    }
    return *this;
  }
  BinaryDxf& text(int c, std::string_view s) {
    code(c);
    bytes_.append(s);
    bytes_ += '\0';
    return *this;
  }
  BinaryDxf& real(int c, double v) {
    code(c);
    char b[8];
    std::memcpy(b, &v, 8);
    bytes_.append(b, 8);
    return *this;
  }
  BinaryDxf& int16(int c, int v) {
    code(c);
    bytes_ += static_cast<char>(v & 0xFF);
    bytes_ += static_cast<char>((v >> 8) & 0xFF);
    return *this;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  bool two_;
  std::string bytes_;
};

std::string binaryDrawing(bool twoByteCodes, std::string_view version) {
  BinaryDxf b(twoByteCodes);
  b.text(0, "SECTION").text(2, "HEADER").text(9, "$ACADVER").text(1, version).text(0, "ENDSEC");
  b.text(0, "SECTION").text(2, "ENTITIES");
  b.text(0, "LINE").text(8, "Walls").int16(62, 3).real(10, 1.5).real(20, 2.5).real(30, 0).real(11, 4).real(21, 6).real(31, 0);
  b.text(0, "CIRCLE").text(8, "0").real(10, 0).real(20, 0).real(30, 0).real(40, 2.25);
  b.text(0, "ENDSEC").text(0, "EOF");
  return b.bytes();
}

}  // namespace

TEST(DxfReader, AsciiToleratesCrlfPaddedCodesAndIntegersWrittenAsReals) {
  TempDir dir;
  std::string dxf = dxfDrawing("0|LINE|  8  |Walls| 62|3.0|10|1.25|20|-2|30|0|11|4e1|21|+5|31|0");
  std::string crlf;
  for (char c : dxf) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  auto db = readDxfText(dir, "crlf.dxf", crlf);
  ASSERT_TRUE(db);
  const auto ents = modelEntities(*db);
  ASSERT_EQ(ents.size(), 1u);
  EXPECT_EQ(ents[0].dxfName(), "LINE");
  EXPECT_EQ(ents[0].layer(), "Walls");
  EXPECT_EQ(ents[0].colorIndex(), 3);
  EXPECT_EQ(ents[0].point(Accessor::startPoint), Point3d(1.25, -2, 0));
  EXPECT_EQ(ents[0].point(Accessor::endPoint), Point3d(40, 5, 0));
}

TEST(DxfReader, RealsReadAsTheNearestDoubleOfTheirText) {
  // Texts of every kind the reader takes apart by hand: the shortest text of a double (most writers give
  // seventeen digits), fixed texts of many places, nineteen-digit texts at random, and nineteen-digit texts
  // cut from the exact midpoint between two doubles, where reading twice rounded would go wrong.
  std::vector<std::string> texts;
  std::mt19937_64 rng(20261123);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-8, 12);
  for (int i = 0; i < 4000; ++i) {
    const double v = unit(rng) * std::pow(10.0, exponent(rng));
    char buf[128];
    const auto shortest = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed);
    texts.emplace_back(buf, shortest.ptr);
    std::snprintf(buf, sizeof buf, "%.*f", static_cast<int>(rng() % 28), v);
    texts.emplace_back(buf);
    const std::string digits = std::to_string(rng() % 10000000000000000000ULL);
    const std::size_t decimals = rng() % std::min<std::size_t>(digits.size() + 1, 28);
    texts.push_back(digits.substr(0, digits.size() - decimals) + "." + digits.substr(digits.size() - decimals));
    const double d = std::fabs(v) + 1.0;
    const long double midpoint = (static_cast<long double>(d) + std::nextafter(d, 2 * d)) / 2;
    std::snprintf(buf, sizeof buf, "%.40Lf", midpoint);
    std::string near(buf);
    std::size_t significant = 0, cut = 0;
    while (cut < near.size() && significant < 19) significant += near[cut++] != '.';
    texts.push_back(near.substr(0, cut));
  }
  std::string entities;
  for (std::size_t i = 0; i + 1 < texts.size(); i += 2)
    entities += "0|LINE|8|0|10|" + texts[i] + "|20|0|30|0|11|" + texts[i + 1] + "|21|0|31|0|";
  entities.pop_back();
  TempDir dir;
  auto db = readDxfText(dir, "reals.dxf", dxfDrawing(entities));
  ASSERT_TRUE(db);
  const auto lines = modelEntities(*db);
  ASSERT_EQ(lines.size(), texts.size() / 2);
  const auto expected = [](const std::string& text) {
    double value = 0.0;
    const char* begin = text.data() + (text[0] == '-');
    std::from_chars(begin, text.data() + text.size(), value);
    return text[0] == '-' ? -value : value;
  };
  for (std::size_t i = 0; i < lines.size(); ++i) {
    ASSERT_EQ(lines[i].point(Accessor::startPoint).x, expected(texts[2 * i])) << texts[2 * i];
    ASSERT_EQ(lines[i].point(Accessor::endPoint).x, expected(texts[2 * i + 1])) << texts[2 * i + 1];
  }
}

TEST(DxfReader, BinaryFilesOfBothCodeWidthsReadAlike) {
  TempDir dir;
  for (bool two : {true, false}) {
    const std::string name = two ? "r2000.dxf" : "r12.dxf";
    vktest::writeFile(dir.file(name), binaryDrawing(two, two ? "AC1015" : "AC1009"));
    ReadReport report;
    auto db = Database::read(dir.file(name), report);
    ASSERT_TRUE(db) << report.error;
    EXPECT_EQ(db->format(), "dxf-binary");
    EXPECT_EQ(db->version(), two ? "AC1015" : "AC1009");
    const auto ents = modelEntities(*db);
    ASSERT_EQ(ents.size(), 2u);
    EXPECT_EQ(ents[0].layer(), "Walls");
    EXPECT_EQ(ents[0].colorIndex(), 3);
    EXPECT_EQ(ents[0].point(Accessor::endPoint), Point3d(4, 6, 0));
    EXPECT_EQ(ents[1].dxfName(), "CIRCLE");
    EXPECT_TRUE(report.warnings.empty());
  }
}

// Control characters and carets: an ASCII file writes them as "^J" and "^ ", a binary file as they are;
// both read as the ASCII file holds them, so that the two forms of one drawing compare alike.
TEST(DxfReader, BinaryTextsHoldControlCharactersAsAsciiFilesWriteThem) {
  TempDir dir;
  BinaryDxf b(true);
  b.text(0, "SECTION").text(2, "HEADER").text(9, "$ACADVER").text(1, "AC1018").text(0, "ENDSEC");
  b.text(0, "SECTION").text(2, "ENTITIES");
  b.text(0, "TEXT").text(8, "0").real(10, 0).real(20, 0).real(30, 0).real(40, 1).text(1, "a\nb^c\td");
  b.text(0, "ENDSEC").text(0, "EOF");
  vktest::writeFile(dir.file("binary.dxf"), b.bytes());
  ReadReport report;
  auto binary = Database::read(dir.file("binary.dxf"), report);
  ASSERT_TRUE(binary) << report.error;
  auto ascii = readDxfText(dir, "ascii.dxf", dxfDrawing("0|TEXT|8|0|10|0|20|0|30|0|40|1|1|a^Jb^ c^Id"));
  ASSERT_TRUE(ascii);
  ASSERT_EQ(modelEntities(*binary).size(), 1u);
  ASSERT_EQ(modelEntities(*ascii).size(), 1u);
  EXPECT_EQ(modelEntities(*binary)[0].text(Accessor::textString), "a^Jb^ c^Id");
  EXPECT_EQ(modelEntities(*ascii)[0].text(Accessor::textString), "a^Jb^ c^Id");
}

TEST(DxfReader, BinaryDamagedGroupsAreDroppedAtTheirByteOffset) {
  TempDir dir;
  BinaryDxf b(true);
  b.text(0, "SECTION").text(2, "HEADER").text(9, "$ACADVER").text(1, "AC1015").text(0, "ENDSEC");
  b.text(0, "SECTION").text(2, "ENTITIES");
  const std::size_t nanAt = b.bytes().size() + 2 + 5;  // after the LINE record: its code and "LINE" with a NUL
  b.text(0, "LINE").real(10, std::nan("")).real(20, 2).real(11, 3).real(21, 4).text(-100, "lost").real(31, 5);
  b.text(0, "ENDSEC").text(0, "EOF");
  vktest::writeFile(dir.file("damaged.dxf"), b.bytes());
  ReadReport report;
  auto db = Database::read(dir.file("damaged.dxf"), report);
  ASSERT_TRUE(db) << report.error;
  const auto ents = modelEntities(*db);
  ASSERT_EQ(ents.size(), 1u);
  EXPECT_EQ(ents[0].point(Accessor::endPoint), Point3d(3, 4, 5)) << "the groups after the damaged ones stay in step";
  ASSERT_EQ(report.warnings.size(), 2u);
  EXPECT_NE(report.warnings[0].find("byte offset " + std::to_string(nanAt) +
                                    ": group code 10 holds a real that is not a finite number; the group is dropped"),
            std::string::npos) << report.warnings[0];
  EXPECT_NE(report.warnings[1].find("group code -100 is outside the valid range"), std::string::npos) << report.warnings[1];
}

TEST(DxfReader, TextsAreDecodedByCodePageAndEscapes) {
  TempDir dir;
  // "中文" in GBK bytes, in an R2000 drawing whose code page is ANSI_936.
  auto gbk = readDxfText(dir, "gbk.dxf",
                         dxfDrawing("0|TEXT|8|\xB2\xE3|10|0|20|0|30|0|40|1|1|\xD6\xD0\xCE\xC4", "AC1015", "9|$DWGCODEPAGE|3|ANSI_936"));
  ASSERT_TRUE(gbk);
  const auto g = modelEntities(*gbk);
  EXPECT_EQ(g[0].layer(), "层");
  const auto groups = g[0].entGet();
  const auto text = std::find_if(groups.begin(), groups.end(), [](const ResBuf& r) { return r.code == 1; });
  ASSERT_NE(text, groups.end());
  EXPECT_EQ(text->text, "中文");
  // The same text as UTF-8 in an R2007 drawing (whose stale code page is ignored), and as escapes.
  auto utf8 = readDxfText(dir, "utf8.dxf",
                          dxfDrawing("0|TEXT|8|层|1|中文|0|TEXT|8|0|1|\\U+4E2D\\U+6587|0|TEXT|8|0|1|\\M+5D6D0x", "AC1021",
                                     "9|$DWGCODEPAGE|3|ANSI_936"));
  ASSERT_TRUE(utf8);
  const auto u = modelEntities(*utf8);
  EXPECT_EQ(u[0].layer(), "层");
  auto textOf = [](const Entity& e) {
    for (const ResBuf& r : e.entGet())
      if (r.code == 1) return r.text;
    return std::string();
  };
  EXPECT_EQ(textOf(u[0]), "中文");
  EXPECT_EQ(textOf(u[1]), "中文");
  EXPECT_EQ(textOf(u[2]), "中x");  // \M+5 names a GBK character; the rest stays as written
  // Bytes a code page cannot map become U+FFFD and never abort the read.
  auto bad = readDxfText(dir, "bad.dxf", dxfDrawing("0|TEXT|8|0|1|a\xFF", "AC1015", "9|$DWGCODEPAGE|3|ANSI_936"));
  ASSERT_TRUE(bad);
  EXPECT_EQ(textOf(modelEntities(*bad)[0]), "a\xEF\xBF\xBD");
}

TEST(DxfReader, SpacesLayoutsAndCurrentSpace) {
  TempDir dir;
  const std::string tables =
      "0|TABLE|2|BLOCK_RECORD|0|BLOCK_RECORD|5|1F|2|*Model_Space|0|BLOCK_RECORD|5|1E|2|*Paper_Space|"
      "0|BLOCK_RECORD|5|2A|2|*Paper_Space0|0|ENDTAB";
  const std::string blocks = "0|BLOCK|5|30|330|2A|2|*Paper_Space0|70|0|10|0|20|0|30|0|0|CIRCLE|330|2A|8|0|10|0|20|0|40|1|0|ENDBLK";
  const std::string entities =
      "0|LINE|5|40|330|1F|8|0|10|0|20|0|11|1|21|1|"
      "0|LINE|5|41|330|1E|67|1|8|0|10|0|20|0|11|1|21|1|"
      "0|LINE|5|42|67|1|8|0|10|0|20|0|11|1|21|1";  // no owner: the space flag decides
  std::string objects =
      "|0|SECTION|2|OBJECTS|0|LAYOUT|5|50|100|AcDbLayout|1|Sheet A|71|1|330|1E|0|LAYOUT|5|51|100|AcDbLayout|1|Sheet B|71|2|330|2A|0|ENDSEC";
  std::string dxf = dxfDrawing(entities, "AC1015", "9|$TILEMODE|70|0", tables, blocks);
  dxf.insert(dxf.rfind("0\nEOF"), dxfFromPairs(objects.substr(1)));
  auto db = readDxfText(dir, "spaces.dxf", dxf);
  ASSERT_TRUE(db);
  EXPECT_EQ(db->tilemode(), 0);
  const BlockRecord current = db->blockRecord(db->currentSpaceId());
  EXPECT_EQ(current.name(), "*Paper_Space");
  EXPECT_EQ(current.layoutName(), "Sheet A");
  EXPECT_EQ(current.entityCount(), 2u);
  EXPECT_EQ(db->blockRecord(db->modelSpaceId()).entityCount(), 1u);
  const BlockRecord other = db->blockRecord("*PAPER_SPACE0");
  ASSERT_TRUE(other);
  EXPECT_TRUE(other.isLayout());
  EXPECT_EQ(other.layoutName(), "Sheet B");
  EXPECT_EQ(other.entityCount(), 1u);
}

TEST(DxfReader, R12WithoutHandlesOwnedRecordsAndFlagsGiveTheClass) {
  TempDir dir;
  const std::string blocks = "0|BLOCK|8|0|2|DOOR|70|2|10|0|20|0|30|0|0|ATTDEF|8|0|10|0|20|0|40|1|1|x|2|TAG|3|?|70|0|0|ENDBLK|8|0";
  const std::string entities =
      "0|POLYLINE|8|0|66|1|70|8|0|VERTEX|8|0|10|0|20|0|30|0|70|32|0|VERTEX|8|0|10|1|20|1|30|1|70|32|0|SEQEND|8|0|"
      "0|INSERT|8|0|66|1|2|DOOR|10|5|20|5|30|0|0|ATTRIB|8|0|10|5|20|5|40|1|1|V|2|TAG|70|0|0|SEQEND|8|0|"
      "0|DIMENSION|8|0|2|*D1|70|4|10|0|20|0|0|DIMENSION|8|0|70|33|10|0|20|0|0|LINE|8|0|10|0|20|0|11|1|21|1";
  ReadReport report;
  auto db = readDxfText(dir, "r12.dxf", dxfDrawing(entities, "AC1009", "", "", blocks), &report);
  ASSERT_TRUE(db);
  EXPECT_TRUE(report.warnings.empty());
  const auto ents = modelEntities(*db);
  ASSERT_EQ(ents.size(), 5u);  // vertices, attributes and SEQENDs are not entities of the space
  EXPECT_EQ(ents[0].dbClass(), DbClass::Polyline3d);
  ASSERT_EQ(ents[0].vertices().size(), 2u);
  EXPECT_EQ(db->openEntity(ents[0].vertices()[1]).dbClass(), DbClass::Polyline3dVertex);
  EXPECT_EQ(db->openEntity(ents[0].vertices()[1]).ownerEntity(), ents[0].objectId());
  EXPECT_EQ(ents[1].dbClass(), DbClass::BlockReference);
  ASSERT_EQ(ents[1].attributes().size(), 1u);
  EXPECT_EQ(db->blockRecord(ents[1].blockTableRecord()).name(), "DOOR");
  EXPECT_EQ(ents[2].dbClass(), DbClass::RadialDimension);
  EXPECT_EQ(ents[3].dbClass(), DbClass::AlignedDimension);  // type 1 with the "block referenced" bit 32
  // Every entity gets a handle of its own, unused by anything else in the drawing.
  std::set<Handle> handles;
  for (const Entity& e : ents) EXPECT_TRUE(handles.insert(e.handle()).second);
  EXPECT_EQ(handles.count(0), 0u);
}

TEST(DxfReader, ClassTreeFollowsTheHost) {
  EXPECT_TRUE(isKindOf(DbClass::Helix, DbClass::Spline));
  EXPECT_TRUE(isKindOf(DbClass::Table, DbClass::BlockReference));
  EXPECT_TRUE(isKindOf(DbClass::MInsertBlock, DbClass::BlockReference));
  EXPECT_TRUE(isKindOf(DbClass::Ole2Frame, DbClass::OleFrame));
  EXPECT_TRUE(isKindOf(DbClass::Wipeout, DbClass::RasterImage));
  EXPECT_TRUE(isKindOf(DbClass::Attribute, DbClass::Text));
  EXPECT_TRUE(isKindOf(DbClass::OrdinateDimension, DbClass::Dimension));
  EXPECT_TRUE(isKindOf(DbClass::PdfReference, DbClass::UnderlayReference));
  EXPECT_FALSE(isKindOf(DbClass::Arc, DbClass::Circle));
  EXPECT_FALSE(isKindOf(DbClass::Region, DbClass::Body));
  EXPECT_FALSE(isKindOf(DbClass::Spline, DbClass::Helix));
  EXPECT_EQ(className(DbClass::ThreePointAngularDimension), "AcDb3PointAngularDimension");

  TempDir dir;
  auto db = readDxfText(dir, "classes.dxf",
                        dxfDrawing("0|DIMENSION|100|AcDbEntity|8|0|100|AcDbDimension|70|32|100|AcDbAlignedDimension|"
                                   "100|AcDbRotatedDimension|0|INSERT|8|0|2|X|70|3|71|2|0|HELIX|8|0|0|ACAD_TABLE|8|0|"
                                   "0|WIPEOUT|8|0|0|OLE2FRAME|8|0|0|MYCUSTOM|8|0"));
  ASSERT_TRUE(db);
  const auto ents = modelEntities(*db);
  const std::vector<DbClass> expected = {DbClass::RotatedDimension, DbClass::MInsertBlock, DbClass::Helix,
                                         DbClass::Table, DbClass::Wipeout, DbClass::Ole2Frame, DbClass::Entity};
  ASSERT_EQ(ents.size(), expected.size());
  for (std::size_t i = 0; i < ents.size(); ++i) EXPECT_EQ(ents[i].dbClass(), expected[i]) << ents[i].dxfName();
}

TEST(DxfReader, CommonPropertiesAndTheirDefaults) {
  TempDir dir;
  const std::string tables =
      "0|TABLE|2|LTYPE|0|LTYPE|2|Continuous|0|LTYPE|2|DASHED|0|ENDTAB|"
      "0|TABLE|2|LAYER|0|LAYER|2|Walls|62|-5|6|dashed|370|50|70|1|0|ENDTAB";
  auto db = readDxfText(dir, "props.dxf",
                        dxfDrawing("0|LINE|8|walls|10|0|20|0|11|1|21|1|"
                                   "0|LINE|8|Nowhere|6|BYBLOCK|48|2.5|62|0|370|-2|60|1|10|0|20|0|11|1|21|1|"
                                   "0|LINE|8|0|6|bylayer|10|0|20|0|11|1|21|1",
                                   "AC1015", "", tables));
  ASSERT_TRUE(db);
  const auto ents = modelEntities(*db);
  // Layer names match without regard to case and read back in the table's spelling.
  EXPECT_EQ(ents[0].layer(), "Walls");
  EXPECT_EQ(ents[0].colorIndex(), 256);
  EXPECT_EQ(ents[0].linetype(), "ByLayer");
  EXPECT_EQ(ents[0].lineWeight(), -1);
  EXPECT_EQ(ents[0].linetypeScale(), 1.0);
  EXPECT_TRUE(ents[0].isVisible());
  const LayerRecord* walls = db->layer(ents[0].layerId());
  ASSERT_NE(walls, nullptr);
  EXPECT_EQ(walls->colorIndex, 5);
  EXPECT_TRUE(walls->isOff);
  EXPECT_TRUE(walls->isFrozen);
  EXPECT_EQ(walls->linetype, "DASHED");
  EXPECT_EQ(walls->lineWeight, 50);
  // A layer missing from the table exists with the defaults.
  EXPECT_EQ(ents[1].layer(), "Nowhere");
  ASSERT_NE(db->layer("NOWHERE"), nullptr);
  EXPECT_EQ(db->layer("Nowhere")->colorIndex, 7);
  EXPECT_EQ(ents[1].linetype(), "ByBlock");
  EXPECT_EQ(ents[1].linetypeScale(), 2.5);
  EXPECT_EQ(ents[1].colorIndex(), 0);
  EXPECT_EQ(ents[1].lineWeight(), -2);
  EXPECT_FALSE(ents[1].isVisible());
  EXPECT_EQ(ents[2].linetype(), "ByLayer");
}

TEST(DxfReader, HandleAndOwnerAreTheFirstOfTheCommonPartThatNameOne) {
  TempDir dir;
  const std::string tables =
      "0|TABLE|2|BLOCK_RECORD|0|BLOCK_RECORD|5|1F|2|*Model_Space|0|BLOCK_RECORD|5|1E|2|*Paper_Space|0|ENDTAB";
  // An empty handle or owner gives way to the next; the owner among the reactors is not the entity's; a
  // proxy without an owner of its own names its objects in its own part, where they stay its data.
  const std::string entities =
      "0|LINE|5||5|2B|330||330|1E|8|0|10|0|20|0|11|1|21|1|"
      "0|LINE|5|2C|102|{ACAD_REACTORS|330|1E|102|}|330|1F|100|AcDbEntity|8|0|100|AcDbLine|10|0|20|0|11|1|21|1|"
      "0|ACAD_PROXY_ENTITY|5|2D|100|AcDbEntity|8|0|100|AcDbProxyEntity|90|498|330|1E|340|2C|330|1F";
  const std::string path = dir.file("owners.dxf");
  vktest::writeFile(path, dxfDrawing(entities, "AC1015", "9|$TILEMODE|70|1", tables));
  DatabaseData data;
  ReadReport report;
  ASSERT_TRUE(headless::readDxf(path, data, report)) << report.error;
  ASSERT_EQ(data.entities.size(), 3u);
  ASSERT_EQ(report.warnings.size(), 1u);
  EXPECT_NE(report.warnings[0].find("empty or invalid handle"), std::string::npos) << report.warnings[0];
  const EntityRec &line = data.entities[0], &reacting = data.entities[1], &proxy = data.entities[2];
  EXPECT_EQ(line.handle, 0x2Bu);
  EXPECT_EQ(line.block, data.paperSpace);
  EXPECT_EQ(reacting.handle, 0x2Cu);
  EXPECT_EQ(reacting.block, data.modelSpace);
  EXPECT_EQ(proxy.handle, 0x2Du);
  EXPECT_EQ(proxy.block, data.paperSpace) << "the first owner among its groups places it";
  std::vector<int> proxyPart;
  bool inProxy = false;
  for (std::uint32_t i = 0; i < proxy.tagCount; ++i) {
    const StoredTag& t = data.tagsOf(proxy)[i];
    if (t.code == 100) inProxy = data.text(t) == "AcDbProxyEntity";
    else if (inProxy) proxyPart.push_back(t.code);
  }
  EXPECT_EQ(proxyPart, (std::vector<int>{90, 330, 340, 330}));
  // The group list reads the same whatever is kept where.
  auto db = readDxfText(dir, "owners2.dxf", dxfDrawing(entities, "AC1015", "9|$TILEMODE|70|1", tables));
  ASSERT_TRUE(db);
  const ResBufList list = modelEntities(*db)[0].entGet();
  ASSERT_GE(list.size(), 4u);
  EXPECT_EQ(list[2].id, db->modelSpaceId());
  EXPECT_EQ(list[3].code, 5);
  EXPECT_EQ(list[3].text, "2C");
}

TEST(DxfReader, GroupListMergesPointsAndLeavesOutBookkeeping) {
  TempDir dir;
  auto db = readDxfText(dir, "entget.dxf",
                        dxfDrawing("0|LINE|5|2F|102|{ACAD_REACTORS|330|99|102|}|330|1F|100|AcDbEntity|8|0|100|AcDbLine|"
                                   "10|1|20|2|30|3|11|4|21|5|31|6|210|0|220|0|230|1|1001|APP|1040|9.5"));
  ASSERT_TRUE(db);
  const ResBufList list = modelEntities(*db)[0].entGet();
  std::vector<int> codes;
  for (const ResBuf& r : list) codes.push_back(r.code);
  EXPECT_EQ(codes, (std::vector<int>{-1, 0, 330, 5, 100, 8, 100, 10, 11, 210}));
  EXPECT_EQ(list[3].text, "2F");
  EXPECT_EQ(list[7].type, ResBuf::Type::Point);
  EXPECT_EQ(list[7].point, Point3d(1, 2, 3));
  EXPECT_EQ(list[8].point, Point3d(4, 5, 6));
}

TEST(DxfReader, DamagedFilesGiveOneClearError) {
  TempDir dir;
  struct Case {
    const char* name;
    std::string content;
    const char* expected;  // part of the error
  };
  const std::string good = dxfDrawing("0|LINE|8|0|10|0|20|0|11|1|21|1");
  const std::vector<Case> cases = {
      {"truncated.dxf", good.substr(0, good.find("0\nENDSEC", good.find("LINE"))), "the file ends inside a record of section ENTITIES"},
      {"badcode.dxf", dxfFromPairs("0|SECTION|2|ENTITIES|0|LINE|eight|0|0|ENDSEC|0|EOF"), "line 7: expected a group code"},
      {"badreal.dxf", dxfFromPairs("0|SECTION|2|ENTITIES|0|LINE|10|1.2.3|0|ENDSEC|0|EOF"), "expected a real number for group code 10"},
      {"novalue.dxf", dxfFromPairs("0|SECTION|2|ENTITIES|0|LINE|8"), "before its value"},
      {"text.dxf", "Hello, this is not a drawing\n", "line 1: expected a group code"},
      {"empty.dxf", "", ""},
      {"binary.dxf", binaryDrawing(true, "AC1015").substr(0, 120), "byte offset"},
      {"drawing.dwg", "AC1032\0\0\0\0", "file header is cut short"},
      {"nosection.dxf", dxfFromPairs("0|SECTION|0|ENDSEC|0|EOF"), "expected the section's name"},
  };
  for (const Case& c : cases) {
    vktest::writeFile(dir.file(c.name), c.content);
    ReadReport report;
    auto db = Database::read(dir.file(c.name), report);
    if (std::string(c.name) == "empty.dxf") {
      // An empty file is no drawing: it reads as an empty one, with the missing end reported.
      ASSERT_TRUE(db);
      EXPECT_FALSE(report.warnings.empty());
      continue;
    }
    EXPECT_FALSE(db) << c.name;
    EXPECT_NE(report.error.find(dir.file(c.name)), std::string::npos) << report.error;
    EXPECT_NE(report.error.find(c.expected), std::string::npos) << c.name << ": " << report.error;
  }
  ReadReport missing;
  EXPECT_FALSE(Database::read(dir.file("absent.dxf"), missing));
  EXPECT_NE(missing.error.find("cannot open"), std::string::npos);
}

TEST(DxfReader, SurvivableOdditiesAreReadWithWarnings) {
  TempDir dir;
  ReadReport report;
  const std::string entities =
      "0|LINE|5|A1|8|0|10|0|20|0|11|1|21|1|0|LINE|5|A1|8|0|10|0|20|0|11|2|21|2|"
      "0|ATTRIB|8|0|1|lost|0|SEQEND|8|0";
  std::string dxf = dxfDrawing(entities) + "trailing garbage\n";
  dxf.insert(0, dxfFromPairs("9|$STRAY|70|1"));
  auto db = readDxfText(dir, "odd.dxf", dxf, &report);
  ASSERT_TRUE(db);
  EXPECT_EQ(modelEntities(*db).size(), 2u);
  std::string all;
  for (const auto& w : report.warnings) all += w + "\n";
  EXPECT_NE(all.find("repeat a handle"), std::string::npos) << all;
  EXPECT_NE(all.find("ATTRIB that follows no INSERT"), std::string::npos) << all;
  EXPECT_NE(all.find("SEQEND without"), std::string::npos) << all;
  EXPECT_NE(all.find("outside any section"), std::string::npos) << all;
  EXPECT_NE(all.find("after 0/EOF"), std::string::npos) << all;
  // A file of entities alone that ends after a complete section but without EOF.
  ReadReport noEof;
  auto db2 = readDxfText(dir, "noeof.dxf", dxfFromPairs("0|SECTION|2|ENTITIES|0|LINE|8|0|0|ENDSEC"), &noEof);
  ASSERT_TRUE(db2);
  ASSERT_EQ(noEof.warnings.size(), 2u);
  EXPECT_NE(noEof.warnings[0].find("no HEADER section"), std::string::npos);
  EXPECT_NE(noEof.warnings[1].find("without 0/EOF"), std::string::npos);
  // Values a careful reader can survive: an empty handle, a circle without a positive radius, and a record
  // whose name is a number (a lost group code turned a coordinate into a record).
  ReadReport odd;
  auto db3 = readDxfText(dir, "odd2.dxf",
                         dxfDrawing("0|LINE|5||8|0|0|CIRCLE|5|1A|8|0|10|0|20|0|40|-1|0|LINE|8|0|0|-191.92|20|-240"), &odd);
  ASSERT_TRUE(db3);
  ASSERT_EQ(odd.warnings.size(), 3u);
  EXPECT_NE(odd.warnings[0].find("empty or invalid handle"), std::string::npos);
  EXPECT_NE(odd.warnings[1].find("radius of 0 or less"), std::string::npos);
  EXPECT_NE(odd.warnings[2].find("a record named '-191.92' is no entity type"), std::string::npos);
  EXPECT_NE(modelEntities(*db3)[0].handle(), 0u);
}

TEST(DxfReader, OwnersAreKnownWhenTheirRecordsOutgrowTheReadBuffer) {
  // A polyline and a block reference whose own groups run past the reader's one-megabyte buffer: their
  // vertices and attributes must still be recognised as theirs.
  TempDir dir;
  const std::string bulk(700000, 'x');
  const std::string entities = "0|POLYLINE|8|0|66|1|70|8|1001|APP|1000|" + bulk + "|1000|" + bulk +
                               "|0|VERTEX|8|0|10|1|20|1|30|0|70|32|0|VERTEX|8|0|10|2|20|2|30|0|70|32|0|SEQEND|8|0|"
                               "0|INSERT|8|0|66|1|2|B|10|0|20|0|1001|APP|1000|" + bulk + "|1000|" + bulk +
                               "|0|ATTRIB|8|0|10|0|20|0|40|1|1|v|2|T|70|0|0|SEQEND|8|0";
  ReadReport report;
  auto db = readDxfText(dir, "big.dxf", dxfDrawing(entities), &report);
  ASSERT_TRUE(db);
  EXPECT_TRUE(report.warnings.empty()) << report.warnings.front();
  const auto ents = modelEntities(*db);
  ASSERT_EQ(ents.size(), 2u);
  EXPECT_EQ(ents[0].vertices().size(), 2u);
  EXPECT_EQ(ents[1].attributes().size(), 1u);
}

TEST(DxfReader, MultiColumnTextPartsJoinTheirFirstColumn) {
  TempDir dir;
  auto db = readDxfText(dir, "columns.dxf",
                        dxfDrawing("0|MTEXT|5|2D|8|0|10|0|20|0|1|first|1001|ACAD|1000|ACAD_MTEXT_COLUMNS_BEGIN|1070|47|"
                                   "1070|2|1005|2E|1000|ACAD_MTEXT_COLUMNS_END|0|MTEXT|5|2E|8|0|10|21|20|0|1|second",
                                   "AC1015"));
  ASSERT_TRUE(db);
  const auto ents = modelEntities(*db);
  ASSERT_EQ(ents.size(), 1u);
  EXPECT_EQ(ents[0].handle(), 0x2Du);
}

// Every drawing of the shared corpus reads (the damaged ones end in an error or warnings), and every
// entity answers the common questions.
TEST(DxfReaderCorpus, EveryDrawingReadsOrFailsCleanly) {
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  int read = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    const std::string path = entry.path().string();
    if (!entry.is_regular_file() || !equalsIgnoreCase(entry.path().extension().string(), ".dxf")) continue;
    ReadReport report;
    auto db = Database::read(path, report);
    const bool malformed = path.find("/malformed/") != std::string::npos;
    if (!db) {
      EXPECT_TRUE(malformed) << report.error;
      EXPECT_NE(report.error.find(path), std::string::npos);
      continue;
    }
    ++read;
    for (ObjectId bid : db->blockRecordIds())
      for (ObjectId id : db->blockRecord(bid).entityIds()) {
        const Entity e = db->openEntity(id);
        ASSERT_TRUE(e) << path;
        EXPECT_FALSE(e.dxfName().empty()) << path;
        EXPECT_FALSE(e.entGet().empty());
      }
  }
  EXPECT_GT(read, 50);
}
