// The generic comparer: the sorted group text, groups left to the common properties or switched off, and
// the one message naming the destination's groups.
#include <gtest/gtest.h>

#include "comparers/CVkCustomEntity.h"
#include "comparers/ComparerTestSupport.h"
#include "platform/text.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

struct CustomFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  const CVkCustomEntity& custom(const vktest::LoadedDrawing& d, std::size_t i = 0) {
    return dynamic_cast<const CVkCustomEntity&>(*d.comparers.at(i));
  }
};

}  // namespace

TEST_F(CustomFixture, GroupTextIsSortedAndLeavesOutIdentityAndCommonGroups) {
  auto d = loadComparers(dir, "c.dxf",
                         vktest::dxfDrawing("0|MYCUSTOM|5|2A|330|1F|100|AcDbEntity|8|L|62|3|100|MyThing|70|4|40|1.5|"
                                            "10|1|20|2|30|0|11|3|21|4|31|5|340|2B|1|label|1001|APP|1000|ignored"),
                         all);
  EXPECT_EQ(custom(d).groupText(), ",0,MYCUSTOM,1,label,11,3.00,4.00,5.00,40,1.50,70,4,100,AcDbEntity,100,MyThing");
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("MYCUSTOM,1.00,2.00"));
  EXPECT_EQ(d.comparers[0]->zText(), "0.00");
}

TEST_F(CustomFixture, OneMessageNamesTheDestinationsGroups) {
  auto a = loadComparers(dir, "a.dxf", vktest::dxfDrawing("0|MYCUSTOM|8|0|10|0|20|0|40|1|70|2"), all);
  auto b = loadComparers(dir, "b.dxf", vktest::dxfDrawing("0|MYCUSTOM|8|0|10|0|20|0|40|1.25|70|2"), all);
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "代理实体图元,0,MYCUSTOM,40,1.25,70,2不同");
  // A group whose property code is switched off is not compared.
  CompareOptions no40;
  no40.excludedCodes = {40};
  auto a2 = loadComparers(dir, "a2.dxf", vktest::dxfDrawing("0|MYCUSTOM|8|0|10|0|20|0|40|1|70|2"), no40);
  auto b2 = loadComparers(dir, "b2.dxf", vktest::dxfDrawing("0|MYCUSTOM|8|0|10|0|20|0|40|9|70|2"), no40);
  EXPECT_EQ(compareText(*b2.comparers[0], *a2.comparers[0]), "代理实体图元");
  // So are all of them with details off.
  CompareOptions noDetails;
  noDetails.excludedCodes = {kCodeDetails};
  auto a3 = loadComparers(dir, "a3.dxf", vktest::dxfDrawing("0|MYCUSTOM|8|0|10|0|20|0|40|1"), noDetails);
  auto b3 = loadComparers(dir, "b3.dxf", vktest::dxfDrawing("0|MYCUSTOM|8|0|10|0|20|0|40|2"), noDetails);
  EXPECT_EQ(compareText(*b3.comparers[0], *a3.comparers[0]), "代理实体图元");
}

TEST_F(CustomFixture, HandlesAndCachedGraphicsDoNotMakeEqualEntitiesDiffer) {
  auto a = loadComparers(dir, "a.dxf", vktest::dxfDrawing("0|MYCUSTOM|5|10|330|1F|8|0|10|0|20|0|360|11|40|1"), all);
  auto b = loadComparers(dir, "b.dxf", vktest::dxfDrawing("0|MYCUSTOM|5|99|330|2F|8|0|10|0|20|0|360|77|40|1"), all);
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "代理实体图元");
  // Proxy graphics in the common part are a cached picture whose padding bytes vary from save to save.
  auto c = loadComparers(dir, "c.dxf", vktest::dxfDrawing("0|MULTILEADER|100|AcDbEntity|8|0|92|4|310|00430000|100|AcDbMLeader|40|1"), all);
  auto d = loadComparers(dir, "d.dxf", vktest::dxfDrawing("0|MULTILEADER|100|AcDbEntity|8|0|92|4|310|00000000|100|AcDbMLeader|40|1"), all);
  EXPECT_EQ(compareText(*d.comparers[0], *c.comparers[0]), "代理实体图元");
}

TEST_F(CustomFixture, PolylinesAndEntitiesWithoutPositionAreKeyedByExtents) {
  auto d = loadComparers(dir, "p.dxf",
                         vktest::dxfDrawing("0|POLYLINE|8|0|66|1|10|0|20|0|30|0|70|8|0|VERTEX|8|0|10|1|20|2|30|3|70|32|"
                                            "0|VERTEX|8|0|10|4|20|5|30|6|70|32|0|SEQEND|8|0"),
                         all);
  ASSERT_EQ(d.comparers.size(), 1u);
  const platform::Extents3d& e = d.comparers[0]->placedExtents();
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest(platform::fmt("POLYLINE,%.2f,%.2f,%.2f,%.2f", e.min.x, e.min.y, e.max.x, e.max.y)));
  EXPECT_EQ(d.comparers[0]->description(), "多段线图元 ");
}
