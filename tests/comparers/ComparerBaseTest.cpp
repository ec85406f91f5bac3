// The comparer base: keys and their digest, canonical end points, common properties and the settings
// switches, the display names and the pair tests, on lines read by the real drawing reader.
#include <gtest/gtest.h>

#include <random>

#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkCustomEntity.h"
#include "comparers/ComparerTestSupport.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

const std::string kLayers =
    "0|TABLE|2|LTYPE|0|LTYPE|2|Continuous|0|LTYPE|2|DASHED|0|ENDTAB|"
    "0|TABLE|2|LAYER|0|LAYER|2|A|62|5|6|DASHED|370|25|0|LAYER|2|B|62|1|6|Continuous|0|ENDTAB";

std::string line(const std::string& props, double x1, double y1, double x2, double y2) {
  return "0|LINE|" + props + "|10|" + std::to_string(x1) + "|20|" + std::to_string(y1) + "|11|" + std::to_string(x2) +
         "|21|" + std::to_string(y2);
}

struct BaseFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  // Two one-entity drawings compared: destination.compare(source).
  std::string compareLines(const std::string& src, const std::string& dst, const CompareOptions& options) {
    auto a = loadComparers(dir, "a.dxf", vktest::dxfDrawing(src, "AC1015", "", kLayers), options);
    auto b = loadComparers(dir, "b.dxf", vktest::dxfDrawing(dst, "AC1015", "", kLayers), options);
    EXPECT_EQ(a.comparers.size(), 1u);
    EXPECT_EQ(b.comparers.size(), 1u);
    return compareText(*b.comparers[0], *a.comparers[0]);
  }
};

}  // namespace

TEST(KeyDigest, HashesUtf16CodeUnits) {
  EXPECT_EQ(keyDigest(""), "0");
  EXPECT_EQ(keyDigest("A"), "65");
  EXPECT_EQ(keyDigest("AB"), "8581");  // 65 * 131 + 66
  EXPECT_EQ(keyDigest("中"), "20013");  // one code unit, U+4E2D
  // Long texts wrap in 32 bits and keep only the low 31.
  const std::string digest = keyDigest(std::string(200, 'z'));
  EXPECT_LT(std::stoll(digest), 2147483648LL);
  EXPECT_GE(std::stoll(digest), 0);
  // Every length, each position of a non-ASCII character among the bytes read four at a time, against the
  // rule unit by unit.
  std::mt19937 rng(131);
  for (std::size_t n = 0; n < 40; ++n) {
    std::string ascii;
    for (std::size_t i = 0; i < n; ++i) ascii += static_cast<char>(' ' + rng() % 95);
    for (std::size_t at = 0; at <= n; ++at) {
      const std::string text = at == n ? ascii : ascii.substr(0, at) + "中" + ascii.substr(at);
      std::uint32_t h = 0;
      for (char16_t unit : platform::utf8ToUtf16(text)) h = h * 131u + unit;
      ASSERT_EQ(keyDigestValue(text), h & 0x7FFFFFFFu) << text;
    }
  }
}

TEST(TypeDisplayName, KeepsTheProgramsWording) {
  EXPECT_EQ(typeDisplayName("LINE"), "直线图元 ");
  EXPECT_EQ(typeDisplayName("INSERT"), "块或参照图元");
  EXPECT_EQ(typeDisplayName("OLEFRAME"), " OLEFRAME 图元 ");
  EXPECT_EQ(typeDisplayName("3DSOLID"), "楔形实体图元 ");
  EXPECT_EQ(typeDisplayName("SOLID"), "三维实体图元 ");
  EXPECT_EQ(typeDisplayName("MLINE"), typeDisplayName("LWPOLYLINE"));
  EXPECT_EQ(typeDisplayName("XLINE"), "代理实体图元");
  EXPECT_EQ(typeDisplayName(""), "代理实体图元");
  EXPECT_EQ(typeDisplayName("line"), "代理实体图元");  // names match exactly
}

TEST(OrderCanonically, SwapsByXThenYThenZ) {
  using platform::Point3d;
  Point3d a(10, 5, 0), b(0, 0, 0);
  orderCanonically(a, b);
  EXPECT_EQ(a, Point3d(0, 0, 0));
  EXPECT_EQ(b, Point3d(10, 5, 0));
  // x equal within 1e-5: y decides and only y and z are exchanged.
  a = {0.000001, 5, 1};
  b = {0, 0, 2};
  orderCanonically(a, b);
  EXPECT_EQ(a, Point3d(0.000001, 0, 2));
  EXPECT_EQ(b, Point3d(0, 5, 1));
  // x and y equal: z alone.
  a = {1, 1, 9};
  b = {1, 1, 3};
  orderCanonically(a, b);
  EXPECT_EQ(a, Point3d(1, 1, 3));
  EXPECT_EQ(b, Point3d(1, 1, 9));
}

TEST_F(BaseFixture, OppositeDirectionsGiveOneKeyAndNoMessage) {
  auto a = loadComparers(dir, "a.dxf",
                         vktest::dxfDrawing(line("8|A", 0, 0, 10, 5) + "|" + line("8|A", 10, 5, 0, 0) + "|" +
                                            line("8|A", 0, 0, 0, 5) + "|" + line("8|A", 0, 5, 0, 0)),
                         all);
  ASSERT_EQ(a.comparers.size(), 4u);
  EXPECT_EQ(a.comparers[0]->keyText(), "0," + keyDigest("LINE,0.00,0.00,10.00,5.00"));
  EXPECT_EQ(a.comparers[1]->keyText(), a.comparers[0]->keyText());
  EXPECT_EQ(a.comparers[1]->keyText(), a.comparers[0]->keyText());
  EXPECT_EQ(a.comparers[0]->keyText(), "0," + keyDigest("LINE,0.00,0.00,10.00,5.00"));
  EXPECT_EQ(a.comparers[2]->keyText(), "0," + keyDigest("LINE,0.00,0.00,0.00,5.00"));
  EXPECT_EQ(a.comparers[3]->keyText(), a.comparers[2]->keyText());
  EXPECT_EQ(compareText(*a.comparers[1], *a.comparers[0]), "直线图元 ");
}

TEST_F(BaseFixture, CoordinatesCompareAtTwoDecimals) {
  auto a = loadComparers(dir, "a.dxf",
                         vktest::dxfDrawing(line("8|A", 1.001, 0, 5, 0) + "|" + line("8|A", 1.004, 0, 5, 0) + "|" +
                                            line("8|A", 1.006, 0, 5, 0)),
                         all);
  EXPECT_EQ(a.comparers[0]->keyText(), a.comparers[1]->keyText());
  EXPECT_NE(a.comparers[1]->keyText(), a.comparers[2]->keyText());  // 1.00 against 1.01
}

TEST_F(BaseFixture, ByLayerValuesResolveThroughTheLayer) {
  // ByLayer colour on layer A (colour 5) equals an explicit 5; the ByLayer linetype is the layer's with the
  // entity's scale; lineweight ByLayer is the layer's 25.
  EXPECT_EQ(compareLines(line("8|A", 0, 0, 1, 1), line("8|A|62|5|6|DASHED|370|25", 0, 0, 1, 1), all), "直线图元 ");
  EXPECT_EQ(compareLines(line("8|A", 0, 0, 1, 1), line("8|A|62|6", 0, 0, 1, 1), all), "直线图元 颜色不相同,");
  EXPECT_EQ(compareLines(line("8|A", 0, 0, 1, 1), line("8|A|48|2", 0, 0, 1, 1), all), "直线图元 线型或线型比例不相同,");
  // ByBlock ignores the scale; a named linetype keeps it.
  EXPECT_EQ(compareLines(line("8|A|6|BYBLOCK|48|3", 0, 0, 1, 1), line("8|A|6|ByBlock", 0, 0, 1, 1), all), "直线图元 ");
  EXPECT_EQ(compareLines(line("8|A|6|DASHED|48|3", 0, 0, 1, 1), line("8|A|6|DASHED", 0, 0, 1, 1), all),
            "直线图元 线型或线型比例不相同,");
  // -3 (the default) is its own text, not the layer's.
  EXPECT_EQ(compareLines(line("8|A|370|-3", 0, 0, 1, 1), line("8|A", 0, 0, 1, 1), all), "直线图元 线宽不相同,");
  EXPECT_EQ(compareLines(line("8|A|62|0", 0, 0, 1, 1), line("8|A|62|7", 0, 0, 1, 1), all), "直线图元 颜色不相同,");
}

TEST_F(BaseFixture, MessagesFollowInTheirOrderAndSettingsSwitchThemOff) {
  const std::string src = line("8|A|39|1", 0, 0, 1, 1);
  const std::string dst = line("8|B|62|3|39|2", 0, 0, 1, 1);
  EXPECT_EQ(compareLines(src, dst, all), "直线图元 所在层不相同,颜色不相同,线型或线型比例不相同,线宽不相同,厚度不一样,");
  CompareOptions noLayer;
  noLayer.excludedCodes = {kCodeLayer, kCodeColor, kCodeLinetype, kCodeLineweight};
  EXPECT_EQ(compareLines(src, dst, noLayer), "直线图元 厚度不一样,");
  CompareOptions noDetails;
  noDetails.excludedCodes = {kCodeDetails};
  EXPECT_EQ(compareLines(line("8|A|39|1", 0, 0, 1, 1), line("8|A|39|2|210|0|220|0|230|-1", 0, 0, 1, 1), noDetails),
            "直线图元 ");
  EXPECT_EQ(compareLines(line("8|A|39|1", 0, 0, 1, 1), line("8|A|39|1|210|0|220|0|230|-1", 0, 0, 1, 1), all),
            "直线图元 法向量不一样,");
}

TEST_F(BaseFixture, ZTextHoldsEndPointsAndExtents) {
  auto a = loadComparers(dir, "z.dxf", vktest::dxfDrawing("0|LINE|8|0|10|0|20|0|30|2|11|1|21|1|31|-0.004"), all);
  // The Z accessors read a magnitude below 0.009 as 0, so no "-0.00" appears for the extents.
  EXPECT_EQ(a.comparers[0]->zText(), "2.00,-0.00,0.00,2.00");
  EXPECT_EQ(compareLines("0|LINE|8|A|10|0|20|0|30|0|11|1|21|1|31|0", "0|LINE|8|A|10|0|20|0|30|1|11|1|21|1|31|0", all),
            "直线图元 Z坐标不相同,");
  CompareOptions noZ;
  noZ.excludedCodes = {kCodeZ};
  EXPECT_EQ(compareLines("0|LINE|8|A|10|0|20|0|30|0|11|1|21|1|31|0", "0|LINE|8|A|10|0|20|0|30|1|11|1|21|1|31|0", noZ),
            "直线图元 ");
}

TEST_F(BaseFixture, PairTestsMarkMatchedAndHandOutDifferences) {
  auto a = loadComparers(dir, "a.dxf", vktest::dxfDrawing(line("8|A", 0, 0, 1, 1) + "|" + line("8|A|62|1", 0, 0, 1, 1)), all);
  auto& plain = *a.comparers[0];
  auto& red = *a.comparers[1];
  EXPECT_FALSE(isSameAs(plain, red));
  EXPECT_EQ(plain.matched + red.matched, 0);
  std::unique_ptr<CDiffType> record;
  EXPECT_FALSE(compareWith(plain, red, record));
  ASSERT_TRUE(record);
  EXPECT_EQ(record->text, "直线图元 颜色不相同,");
  EXPECT_EQ(plain.matched + red.matched, 2);
  plain.matched = red.matched = 0;
  EXPECT_TRUE(compareWith(plain, plain, record));
  EXPECT_FALSE(record);
  EXPECT_TRUE(isSameAs(red, red));
}

TEST(ComparerFactory, RowsInOrderAndTheLastRule) {
  const auto rows = factoryRows();
  ASSERT_EQ(rows.size(), 41u);
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].order, static_cast<int>(i + 1));
  // Every dimension is caught by row 8, before the rows of its kinds.
  EXPECT_EQ(rows[7].cls, platform::DbClass::Dimension);
  EXPECT_EQ(rows[15].cls, platform::DbClass::Helix);  // before the spline of row 30
  EXPECT_EQ(rows[39].cls, platform::DbClass::Table);  // before the block reference of row 41

  vktest::TempDir dir;
  CompareOptions all;
  auto d = loadComparers(dir, "f.dxf", vktest::dxfDrawing("0|LINE|8|0|10|0|20|0|11|1|21|1|0|MYCUSTOM|8|0|10|1|20|2|0|XLINE|8|0"), all);
  ASSERT_EQ(d.comparers.size(), 3u);
  EXPECT_NE(dynamic_cast<CVkAcDbLine*>(d.comparers[0].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkCustomEntity*>(d.comparers[1].get()), nullptr);
  EXPECT_EQ(d.comparers[1]->description(), "代理实体图元");
  EXPECT_EQ(d.comparers[1]->keyText(), "0," + keyDigest("MYCUSTOM,1.00,2.00"));
}

// Comparers of a drawing's own entities keep only a digest of their detail texts and capture them again from
// the entity when a pair differs: every pair must give the record that texts kept in the pool give, under a
// base-point transform too, and alike pairs none.
TEST_F(BaseFixture, DetailsKeptAsDigestsCompareAsKeptTexts) {
  const std::string common = "8|A|";
  const std::string source = "0|LINE|" + common + "39|1|10|0|20|0|11|10|21|0|0|CIRCLE|" + common +
                             "10|5|20|5|40|2|0|ARC|" + common + "10|9|20|9|40|3|50|0|51|90|0|LWPOLYLINE|" + common +
                             "10|0|20|0|10|10|20|0|10|10|20|5|10|0|20|5|0|TEXT|" + common +
                             "10|1|20|1|40|2.5|1|ABC|0|LWPOLYLINE|" + common + "10|20|20|0|10|30|20|0|10|30|20|5";
  const std::string destination = "0|LINE|" + common + "39|2|10|0|20|0|11|10|21|0|0|CIRCLE|" + common +
                                  "39|1|10|5|20|5|40|2|0|ARC|" + common + "10|9|20|9|40|3|50|0|51|95|0|LWPOLYLINE|" +
                                  common + "10|0|20|0|10|10|20|0|10|10|20|6|10|0|20|5|0|TEXT|" + common +
                                  "10|1|20|1|40|2.5|1|ABD|0|LWPOLYLINE|" + common +
                                  "10|20|20|0|10|30|20|0|10|30|20|5|10|20|20|5";
  const platform::Matrix3d base = platform::Matrix3d::translation({-3, 4, 0});
  auto load = [&](const std::string& name, const std::string& entities, bool digests) {
    return loadComparers(dir, name, vktest::dxfDrawing(entities, "AC1015", "", kLayers), all, base,
                         digests ? &base : nullptr);
  };
  auto kept = std::pair{load("a.dxf", source, false), load("b.dxf", destination, false)};
  auto digested = std::pair{load("c.dxf", source, true), load("d.dxf", destination, true)};
  ASSERT_EQ(kept.first.comparers.size(), 6u);
  ASSERT_EQ(digested.second.comparers.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) {
    SCOPED_TRACE(i);
    CVkAcadEntityBase& a = *kept.first.comparers[i];
    CVkAcadEntityBase& b = *kept.second.comparers[i];
    CVkAcadEntityBase& c = *digested.first.comparers[i];
    CVkAcadEntityBase& d = *digested.second.comparers[i];
    const std::string expected = compareText(b, a);
    EXPECT_NE(expected, std::string(b.description())) << "every pair differs in a detail";
    EXPECT_EQ(compareText(d, c), expected);
    EXPECT_EQ(compareText(d, a), expected);  // one digest against texts kept
    EXPECT_EQ(compareText(b, c), expected);
    EXPECT_EQ(compareText(d, *load("e.dxf", destination, true).comparers[i]), d.description());
    const auto& keptDetails = dynamic_cast<const CVkDetailedEntity&>(b);
    const auto& digestDetails = dynamic_cast<const CVkDetailedEntity&>(d);
    EXPECT_EQ(digestDetails.detailTexts(), keptDetails.detailTexts());
    EXPECT_EQ(digestDetails.detailLists(), keptDetails.detailLists());
  }
}

// Digests of detail values that differ only past the second decimal differ, but the texts do not: such pairs
// give no detail message, and their text digests (by which stacked keys find alike pairs) stay equal.
TEST_F(BaseFixture, ValuesThatFormatAlikeAreAlike) {
  const std::string common = "8|A|";
  const std::string source = "0|LINE|" + common + "39|1|10|0|20|0|11|10|21|0|0|ARC|" + common +
                             "10|9|20|9|40|3|50|0|51|90|0|LWPOLYLINE|" + common +
                             "10|0|20|0|10|10|20|0|10|10|20|5|0|TEXT|" + common + "10|1|20|1|40|2.5|1|ABC";
  const std::string near = "0|LINE|" + common + "39|1.001|10|0|20|0|11|10|21|0|0|ARC|" + common +
                           "10|9|20|9|40|3|50|0|51|90.004|0|LWPOLYLINE|" + common +
                           "10|0|20|0|10|10|20|0|10|10.001|20|4.999|0|TEXT|" + common + "10|1|20|1|40|2.501|1|ABC";
  const platform::Matrix3d base = platform::Matrix3d::translation({-3, 4, 0});
  auto load = [&](const std::string& name, const std::string& entities, bool digests) {
    return loadComparers(dir, name, vktest::dxfDrawing(entities, "AC1015", "", kLayers), all, base,
                         digests ? &base : nullptr);
  };
  auto a = load("a.dxf", source, true), b = load("b.dxf", near, true), kept = load("c.dxf", near, false);
  ASSERT_EQ(b.comparers.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(compareText(*b.comparers[i], *a.comparers[i]), b.comparers[i]->description());
    EXPECT_EQ(b.comparers[i]->digests().full, a.comparers[i]->digests().full);
    EXPECT_EQ(kept.comparers[i]->digests().full, a.comparers[i]->digests().full);
  }
}
