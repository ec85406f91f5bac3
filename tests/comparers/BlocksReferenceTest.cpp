// Block references: their own messages, the factory's reference settings, and the contents (block entities
// and attributes) compared as drawings are, in drawing coordinates, without endless nesting.
#include <gtest/gtest.h>

#include "comparers/CVkAcDbBlockReference.h"
#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkCustomEntity.h"
#include "comparers/ComparerTestSupport.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

// A block definition in '|' form: "0|BLOCK|...|<entities>|0|ENDBLK".
std::string block(const std::string& name, const std::string& entities, int flags = 0) {
  return "0|BLOCK|8|0|2|" + name + "|70|" + std::to_string(flags) + "|10|0|20|0|30|0|3|" + name +
         (entities.empty() ? "" : "|" + entities) + "|0|ENDBLK|8|0";
}

std::string insert(const std::string& name, const std::string& extra = "10|5|20|5|30|0") {
  return "0|INSERT|8|0|2|" + name + "|" + extra;
}

const std::string kLine = "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0";
const std::string kRedLine = "0|LINE|8|0|62|1|10|0|20|0|30|0|11|1|21|0|31|0";

struct BlockFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;
  vktest::LoadedDrawing drawing(const std::string& entities, const std::string& blocks,
                                const CompareOptions* options = nullptr) {
    return loadComparers(dir, "d" + std::to_string(files++) + ".dxf",
                         vktest::dxfDrawing(entities, "AC1015", "", "", blocks), options ? *options : all);
  }
  static CVkAcDbBlockReference& reference(const vktest::LoadedDrawing& d, std::size_t i = 0) {
    return dynamic_cast<CVkAcDbBlockReference&>(*d.comparers.at(i));
  }
};

}  // namespace

TEST_F(BlockFixture, OwnMessagesAndKey) {
  auto a = drawing(insert("B1", "10|5|20|6|30|1|41|2|50|90"), block("B1", kLine) + "|" + block("B2", kLine));
  auto b = drawing(insert("B2", "10|5|20|6|30|1|41|3|50|45"), block("B1", kLine) + "|" + block("B2", kLine));
  EXPECT_EQ(a.comparers[0]->keyText(), "0," + keyDigest("INSERT,5.00,6.00"));
  EXPECT_EQ(a.comparers[0]->zText(), "1.00");
  EXPECT_EQ(reference(a).detailTexts(), (std::vector<std::string>{"1.57", "2.00,1.00,1.00", "B1"}));
  // Turned and scaled otherwise, the block's line lies elsewhere in the drawing.
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]),
            "块或参照图元旋转角度不相同,比例因子不相同,块名不相同,块内[直线图元 新增,直线图元 删除,]");
}

TEST_F(BlockFixture, ContentsArePairedWhateverTheBlocksAreNamed) {
  const std::string blocks = block("B1", kLine) + "|" + block("B2", kRedLine) + "|" + block("B3", kLine);
  auto a = drawing(insert("B1"), blocks);
  EXPECT_EQ(compareText(*drawing(insert("B2"), blocks).comparers[0], *a.comparers[0]),
            "块或参照图元块名不相同,块内[直线图元 颜色不相同,]");
  EXPECT_EQ(compareText(*drawing(insert("B3"), blocks).comparers[0], *a.comparers[0]), "块或参照图元块名不相同,");
}

TEST_F(BlockFixture, ChangedAddedAndDeletedBlockEntitiesAreReported) {
  auto a = drawing(insert("B"), block("B", kLine + "|0|CIRCLE|8|0|10|0|20|0|40|1"));
  auto changed = drawing(insert("B"), block("B", kRedLine + "|0|CIRCLE|8|0|10|0|20|0|40|1"));
  EXPECT_EQ(compareText(*changed.comparers[0], *a.comparers[0]), "块或参照图元块内[直线图元 颜色不相同,]");
  auto added = drawing(insert("B"), block("B", kLine + "|0|CIRCLE|8|0|10|0|20|0|40|1|0|LINE|8|0|10|7|20|7|11|8|21|8"));
  EXPECT_EQ(compareText(*added.comparers[0], *a.comparers[0]), "块或参照图元块内[直线图元 新增,]");
  auto deleted = drawing(insert("B"), block("B", kLine));
  const std::string text = compareText(*deleted.comparers[0], *a.comparers[0]);
  EXPECT_TRUE(text.starts_with("块或参照图元块内[")) << text;
  EXPECT_TRUE(text.ends_with("删除,]")) << text;
  // Equal references stay equal, however often they are compared.
  auto same = drawing(insert("B"), block("B", kLine + "|0|CIRCLE|8|0|10|0|20|0|40|1"));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(compareText(*same.comparers[0], *a.comparers[0]), "块或参照图元");
}

TEST_F(BlockFixture, ContentsAreInDrawingCoordinates) {
  // Inserted at (10, 20), turned a quarter turn: the block's line (0,0)-(1,0) lies from (10,20) to (10,21).
  auto d = drawing(insert("B", "10|10|20|20|30|0|50|90"), block("B", kLine));
  const CVkAcDbBlockReference& ref = reference(d);
  ASSERT_TRUE(ref.contentLoaded());
  ASSERT_EQ(ref.blockEntities().size(), 1u);
  EXPECT_EQ(ref.blockEntities().begin()->comparer->keyText(), "0," + keyDigest("LINE,10.00,20.00,10.00,21.00"));
  EXPECT_NE(dynamic_cast<const CVkAcDbLine*>(ref.blockEntities().begin()->comparer.get()), nullptr);
}

TEST_F(BlockFixture, NestedReferencesRecurse) {
  const std::string inner = block("INNER", kLine);
  auto a = drawing(insert("OUTER"), inner + "|" + block("OUTER", insert("INNER", "10|0|20|0|30|0")));
  auto b = drawing(insert("OUTER"), block("INNER", kRedLine) + "|" + block("OUTER", insert("INNER", "10|0|20|0|30|0")));
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "块或参照图元块内[块或参照图元块内[直线图元 颜色不相同,]]");
}

TEST_F(BlockFixture, BlocksContainingThemselvesDoNotHang) {
  auto self = drawing(insert("A"), block("A", kLine + "|" + insert("A")));
  const CVkAcDbBlockReference& outer = reference(self);
  ASSERT_EQ(outer.blockEntities().size(), 2u);
  for (const auto& [key, nested] : outer.blockEntities()) {
    if (auto* ref = dynamic_cast<const CVkAcDbBlockReference*>(nested.get())) {
      EXPECT_FALSE(ref->contentLoaded());
    }
  }
  auto mutual = drawing(insert("A"), block("A", insert("B")) + "|" + block("B", insert("A")));
  EXPECT_EQ(compareText(*mutual.comparers[0], *mutual.comparers[0]), "块或参照图元");
}

TEST_F(BlockFixture, AttributesAreComparedAfterTheBlock) {
  auto withValue = [&](const std::string& value) {
    return drawing("0|INSERT|8|0|66|1|2|B|10|5|20|5|30|0|0|ATTRIB|8|0|10|5|20|5|30|0|40|1|1|" + value +
                       "|2|TAG|70|0|0|SEQEND|8|0",
                   block("B", kLine));
  };
  auto a = withValue("ONE");
  auto b = withValue("TWO");
  ASSERT_EQ(reference(a).attributeEntities().size(), 1u);
  const std::string text = compareText(*b.comparers[0], *a.comparers[0]);
  EXPECT_TRUE(text.starts_with("块或参照图元属性[属性图元 ")) << text;
  EXPECT_TRUE(text.ends_with("]")) << text;
  EXPECT_EQ(compareText(*withValue("ONE").comparers[0], *a.comparers[0]), "块或参照图元");
}

TEST_F(BlockFixture, AnonymousBlocksCompareByContents) {
  auto a = drawing(insert("*U1"), block("*U1", kLine, 1));
  auto b = drawing(insert("*U7"), block("*U7", kLine, 1));
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "块或参照图元");
  auto c = drawing(insert("*U7"), block("*U7", kRedLine, 1));
  EXPECT_EQ(compareText(*c.comparers[0], *a.comparers[0]), "块或参照图元块内[直线图元 颜色不相同,]");
}

TEST_F(BlockFixture, WithoutDetailsOnlyTheCommonPropertiesCount) {
  CompareOptions noDetails;
  noDetails.excludedCodes = {kCodeDetails};
  auto a = drawing(insert("B", "10|5|20|5|30|0|50|10"), block("B", kLine), &noDetails);
  auto b = drawing(insert("B", "10|5|20|5|30|0|50|20"), block("B", kRedLine), &noDetails);
  EXPECT_TRUE(reference(a).blockEntities().empty());
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "块或参照图元");
}

TEST_F(BlockFixture, FactorySettingsForBlockAndExternalReferences) {
  const std::string entities = insert("B") + "|" + insert("X") + "|" + insert("MISSING");
  const std::string blocks = block("B", kLine) + "|" + block("X", "", 4);
  auto kinds = [&](bool blocksOn, bool xrefsOn) {
    CompareOptions o;
    o.compareBlockReferences = blocksOn;
    o.compareExternalReferences = xrefsOn;
    auto d = drawing(entities, blocks, &o);
    std::string out;
    for (const auto& c : d.comparers)
      out += !c ? "null," : dynamic_cast<CVkAcDbBlockReference*>(c.get()) ? "ref," : dynamic_cast<CVkCustomEntity*>(c.get()) ? "custom," : "other,";
    return out;
  };
  EXPECT_EQ(kinds(true, true), "ref,ref,null,");
  EXPECT_EQ(kinds(true, false), "ref,null,null,");
  // With block references off every reference is left out, external ones too.
  EXPECT_EQ(kinds(false, true), "null,null,null,");
  // With both off they go on to the last rule.
  EXPECT_EQ(kinds(false, false), "custom,custom,custom,");
}

TEST_F(BlockFixture, NestingBeyondTheDrawingsBudgetIsComparedByTheReferencesOwnProperties) {
  // Ten references per level, seven levels deep: ten million lines, were every level walked.
  const std::string nested = vktest::nestedBlocksDrawing(7, 10);
  auto a = loadComparers(dir, "a.dxf", nested, all);
  auto b = loadComparers(dir, "b.dxf", nested, all);
  ASSERT_EQ(a.comparers.size(), 10u);
  const CReadContext& context = *a.context;
  EXPECT_EQ(context.budget(), CReadContext::kBudgetFloor);
  EXPECT_LE(context.used(), context.budget());
  EXPECT_GT(context.used(), context.budget() / 2);
  ASSERT_EQ(context.warnings().size(), 1u);
  EXPECT_TRUE(context.warnings()[0].starts_with(dir.file("a.dxf") + ": block 'N")) << context.warnings()[0];
  EXPECT_NE(context.warnings()[0].find("beyond the work budget is not compared"), std::string::npos);
  // The first reference was walked until the budget ran out; the last ones keep their own properties only.
  EXPECT_TRUE(reference(a, 0).contentLoaded());
  EXPECT_FALSE(reference(a, 9).contentLoaded());
  EXPECT_EQ(reference(a, 9).detailTexts(), (std::vector<std::string>{"0.00", "1.00,1.00,1.00", "N0"}));
  // Both drawings stop at the same place, so equal drawings stay equal.
  for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(compareText(*b.comparers[i], *a.comparers[i]), "块或参照图元");
}

TEST_F(BlockFixture, ReferencesLeftUnwalkedOnOneSideAreNotReportedAsEmptied) {
  // The destination's block contains itself: its inner reference is not walked, and its contents are not
  // reported as deleted against the source's walked ones.
  auto a = drawing(insert("A"), block("A", kLine + "|" + insert("B")) + "|" + block("B", kLine));
  auto b = drawing(insert("A"), block("A", kLine + "|" + insert("A")) + "|" + block("B", kLine));
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "块或参照图元块内[块或参照图元块名不相同,]");
}

TEST_F(BlockFixture, PlacedExtentsComputedAgainAreThoseOfTheLoad) {
  // Loaded as a run loads a drawing's own entities, most comparers compute their extents again from the
  // entity when asked; loaded as a block's contents are, they keep them. Both give the same extents.
  const std::string entities = insert("A", "10|5|20|5|30|0|50|30|41|2|42|2") + "|0|CIRCLE|8|0|10|2|20|3|30|0|40|1" +
                               "|0|TEXT|8|0|10|1|20|1|30|0|40|2.5|1|ABC|50|15" + "|0|LINE|8|0|10|0|20|0|30|2|11|4|21|1|31|2";
  const std::string dxf = vktest::dxfDrawing(entities, "AC1015", "", "", block("A", kLine + "|0|CIRCLE|8|0|10|1|20|1|30|0|40|0.5"));
  const platform::Matrix3d base = platform::Matrix3d::translation({-3, 4, 0});
  auto computed = loadComparers(dir, "a.dxf", dxf, all, base, &base);
  auto kept = loadComparers(dir, "b.dxf", dxf, all, base);
  ASSERT_EQ(computed.comparers.size(), 4u);
  ASSERT_EQ(kept.comparers.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    const platform::Extents3d a = computed.comparers[i]->placedExtents(), b = kept.comparers[i]->placedExtents();
    EXPECT_EQ(a.min, b.min);
    EXPECT_EQ(a.max, b.max);
    EXPECT_LT(a.min.x, a.max.x);
  }
  const platform::Extents3d circle = computed.comparers[1]->placedExtents();
  EXPECT_EQ(circle.min, platform::Point3d(-2, 6, 0));
  EXPECT_EQ(circle.max, platform::Point3d(0, 8, 0));
  // The record of a differing pair carries the destination's.
  const auto record = computed.comparers[1]->compare(*computed.comparers[2]);
  EXPECT_EQ(record->extents, (std::array<double, 6>{-2, 6, 0, 0, 8, 0}));
}
