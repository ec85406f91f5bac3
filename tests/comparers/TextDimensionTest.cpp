// Dimensions: every kind through the dimension comparer, its eight messages, its text style through the
// dimension style, and the comparers of the dimension kinds made directly.
#include <gtest/gtest.h>

#include <typeinfo>

#include "comparers/CVkAcDb3PointAngularDimension.h"
#include "comparers/CVkAcDbAlignedDimension.h"
#include "comparers/CVkAcDbDiametricDimension.h"
#include "comparers/CVkAcDbDimension.h"
#include "comparers/CVkAcDbOrdinateDimension.h"
#include "comparers/CVkAcDbRadialDimension.h"
#include "comparers/ComparerTestSupport.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

const std::string kTables =
    "0|TABLE|2|STYLE|0|STYLE|5|11|2|Standard|70|0|40|0|0|STYLE|5|12|2|Fancy|70|0|40|0|0|ENDTAB|"
    "0|TABLE|2|DIMSTYLE|0|DIMSTYLE|105|20|2|Standard|70|0|340|11|0|DIMSTYLE|105|21|2|Fancy|70|0|340|12|"
    "0|DIMSTYLE|105|22|2|Plain|70|0|0|ENDTAB";

// A dimension: its common part (text position 11, block position 12 and the text's layout) and the groups
// of its kind.
std::string dimension(const std::string& common, const std::string& kind) {
  return "0|DIMENSION|8|0|100|AcDbEntity|100|AcDbDimension|2|*D1|11|5|21|6|31|0|" + common + "|" + kind;
}
const std::string kRotated = "70|32|100|AcDbAlignedDimension|13|0|23|0|33|0|14|10|24|0|34|0|10|10|20|5|30|0|"
                             "100|AcDbRotatedDimension|50|0";
const std::string kAligned = "70|33|100|AcDbAlignedDimension|13|0|23|0|33|0|14|10|24|0|34|0|10|10|20|5|30|0";
const std::string kCommon = "3|Standard|1|<>|53|0|72|1|71|5|41|1|51|0";

struct DimensionFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;

  vktest::LoadedDrawing load(const std::string& entities, const std::string& header = "") {
    return loadComparers(dir, "d" + std::to_string(files++) + ".dxf",
                         vktest::dxfDrawing(entities, "AC1015", header, kTables), all);
  }
  std::string compare(const std::string& src, const std::string& dst) {
    auto a = load(src);
    auto b = load(dst);
    return compareText(*b.comparers.at(0), *a.comparers.at(0));
  }
  // A comparer of the given class made directly for the drawing's first entity, as a factory that tests
  // the exact class would make it.
  template <typename T>
  ComparerPtr direct(const vktest::LoadedDrawing& d) {
    auto c = std::make_unique<T>();
    c->setContexts(d.context.get(), nullptr);
    c->load(d.db->openEntity(d.db->blockRecord(d.db->modelSpaceId()).entityIds().at(0)), platform::Matrix3d());
    return c;
  }
  template <typename T>
  std::string compareDirect(const std::string& src, const std::string& dst) {
    auto a = load(src);
    auto b = load(dst);
    return compareText(*direct<T>(b), *direct<T>(a));
  }
};

}  // namespace

TEST_F(DimensionFixture, EveryKindGoesToTheDimensionComparer) {
  const char* kinds[] = {
      "70|32|100|AcDbAlignedDimension|13|0|23|0|14|10|24|0|10|10|20|5|100|AcDbRotatedDimension|50|0",
      "70|33|100|AcDbAlignedDimension|13|0|23|0|14|10|24|0|10|10|20|5",
      "70|36|100|AcDbRadialDimension|10|0|20|0|15|3|25|4|40|1",
      "70|35|100|AcDbDiametricDimension|10|-3|20|-4|15|3|25|4|40|1",
      "70|37|100|AcDb3PointAngularDimension|10|1|20|1|13|1|23|0|14|0|24|1|15|0|25|0",
      "70|38|100|AcDbOrdinateDimension|10|0|20|0|13|1|23|1|14|3|24|3",
  };
  for (const char* kind : kinds) {
    auto d = load(dimension(kCommon, kind));
    ASSERT_EQ(d.comparers.size(), 1u);
    EXPECT_EQ(typeid(*d.comparers[0]), typeid(CVkAcDbDimension)) << kind;
    EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("DIMENSION,5.00,6.00"));  // the text position
    EXPECT_EQ(d.comparers[0]->description(), "尺寸标注图元 ");
  }
}

TEST_F(DimensionFixture, EightMessagesFollowInTheirOrder) {
  const std::string changed = "3|Standard|1|12.5|53|30|72|2|71|1|41|1.5|51|45|12|1|22|2|32|0";
  EXPECT_EQ(compare(dimension(kCommon, kRotated), dimension(changed, kRotated)),
            "尺寸标注图元 用户提供尺寸标注的文本字符串不一样,旋转角度不一样,维度的行间距样式不一样,附着点值不一样,"
            "行间距因子不一样,水平旋转（弧度）的尺寸不一样,参考块的相对位置点不一样,");
  // A rotated and an aligned dimension with the same text are compared alike; the host's defaults fill
  // groups a drawing leaves out (attachment 5, spacing style 1, factor 1).
  EXPECT_EQ(compare(dimension(kCommon, kRotated), dimension("3|Standard|1|<>", kAligned)), "尺寸标注图元 ");
}

TEST_F(DimensionFixture, TextStyleComesFromTheDimensionStyle) {
  auto d = load(dimension("3|Fancy", kRotated) + "|" + dimension("3|Standard", kRotated) + "|" +
                dimension("3|Standard", kRotated + "|1001|ACAD|1000|DSTYLE|1002|{|1070|140|1040|2|1070|340|1005|12|1002|}"));
  ASSERT_EQ(d.comparers.size(), 3u);
  EXPECT_EQ(d.comparers[0]->textStyleText(), "Fancy");
  EXPECT_EQ(d.comparers[1]->textStyleText(), "Standard");
  EXPECT_EQ(d.comparers[2]->textStyleText(), "Fancy");  // the override first
  EXPECT_EQ(compareText(*d.comparers[1], *d.comparers[0]), "尺寸标注图元 文本类型不相同,");
  // A style without DIMTXSTY falls back to the drawing's $DIMTXSTY.
  auto e = load(dimension("3|Plain", kRotated), "9|$DIMTXSTY|7|FANCY");
  EXPECT_EQ(e.comparers[0]->textStyleText(), "Fancy");
}

TEST_F(DimensionFixture, AlignedDimensionComparer) {
  const std::string src = dimension(kCommon, kAligned);
  auto d = load(src);
  auto c = direct<CVkAcDbAlignedDimension>(d);
  EXPECT_EQ(c->keyText(), "0," + keyDigest("DIMENSION,0.00,0.00,10.00,0.00,10.00,5.00"));
  EXPECT_TRUE(c->zText().starts_with("0.00,0.00,0.00,"));
  EXPECT_EQ(c->textStyleText(), "Standard");
  EXPECT_EQ(compareDirect<CVkAcDbAlignedDimension>(src, dimension(kCommon, kAligned + "|52|15")),
            "尺寸标注图元 延长线的倾斜角度不一样,");
  EXPECT_EQ(compareDirect<CVkAcDbAlignedDimension>(src, dimension("3|Standard|1|x", kAligned + "|52|15")),
            "尺寸标注图元 用户提供尺寸标注的文本字符串不一样,延长线的倾斜角度不一样,");
}

TEST_F(DimensionFixture, RadialAndDiametricComparersSpellTheirLeaderLengthDifferently) {
  const std::string radial = "70|36|100|AcDbRadialDimension|10|0|20|0|30|0|15|3|25|4|35|0|40|";
  const std::string diametric = "70|35|100|AcDbDiametricDimension|10|-3|20|-4|30|0|15|3|25|4|35|0|40|";
  auto r = load(dimension(kCommon, radial + "1"));
  EXPECT_EQ(direct<CVkAcDbRadialDimension>(r)->keyText(), "0," + keyDigest("DIMENSION,0.00,0.00,3.00,4.00,5.00"));
  EXPECT_EQ(compareDirect<CVkAcDbRadialDimension>(dimension(kCommon, radial + "1"), dimension(kCommon, radial + "2")),
            "尺寸标注图元 LeaderLength不一样,");
  auto m = load(dimension(kCommon, diametric + "1"));
  EXPECT_EQ(direct<CVkAcDbDiametricDimension>(m)->keyText(), "0," + keyDigest("DIMENSION,3.00,4.00,-3.00,-4.00,10.00"));
  EXPECT_EQ(compareDirect<CVkAcDbDiametricDimension>(dimension(kCommon, diametric + "1"),
                                                     dimension(kCommon, diametric + "2")),
            "尺寸标注图元 leaderLength不一样,");
}

TEST_F(DimensionFixture, AngularAndOrdinateComparers) {
  auto a = load(dimension(kCommon, "70|37|100|AcDb3PointAngularDimension|10|1|20|2|30|0|13|3|23|4|33|0|14|5|24|6|34|0|"
                                   "15|7|25|8|35|0"));
  auto angular = direct<CVkAcDb3PointAngularDimension>(a);
  EXPECT_EQ(angular->keyText(), "0," + keyDigest("DIMENSION,7.00,8.00,3.00,4.00,5.00,6.00,1.00,2.00"));
  EXPECT_TRUE(angular->zText().starts_with("0.00,0.00,0.00,0.00,"));
  const std::string ordinate = "70|38|100|AcDbOrdinateDimension|10|0|20|0|30|0|13|1|23|2|33|0|14|";
  auto o = load(dimension(kCommon, ordinate + "3|24|3|34|0"));
  EXPECT_EQ(direct<CVkAcDbOrdinateDimension>(o)->keyText(), "0," + keyDigest("DIMENSION,0.00,0.00,1.00,2.00"));
  EXPECT_EQ(compareDirect<CVkAcDbOrdinateDimension>(dimension(kCommon, ordinate + "3|24|3|34|0"),
                                                    dimension("3|Standard|1|9", ordinate + "4|24|3|34|0")),
            "尺寸标注图元 用户提供尺寸标注的文本字符串不一样,Leader的端点不一样,");
}
