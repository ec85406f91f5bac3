// Single-line text, multiline text, attributes and attribute definitions: keys, messages in their order,
// text styles, code pages and multi-column text, on drawings read by the real reader.
#include <gtest/gtest.h>

#include "comparers/CVkAcDbAttribute.h"
#include "comparers/CVkAcDbAttributeDefinition.h"
#include "comparers/CVkAcDbMText.h"
#include "comparers/CVkAcDbText.h"
#include "comparers/ComparerTestSupport.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

const std::string kStyles =
    "0|TABLE|2|STYLE|0|STYLE|5|11|2|Standard|70|0|40|0|41|1|0|STYLE|5|12|2|Fancy|70|0|40|0|41|1|0|ENDTAB";

struct TextFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;

  vktest::LoadedDrawing load(const std::string& entities, const std::string& version = "AC1015",
                             const std::string& header = "", const CompareOptions* options = nullptr) {
    return loadComparers(dir, "d" + std::to_string(files++) + ".dxf",
                         vktest::dxfDrawing(entities, version, header, kStyles), options ? *options : all);
  }
  // Two one-entity drawings compared: destination.compare(source).
  std::string compare(const std::string& src, const std::string& dst, const CompareOptions* options = nullptr,
                      const std::string& srcVersion = "AC1015", const std::string& dstVersion = "AC1015",
                      const std::string& srcHeader = "", const std::string& dstHeader = "") {
    auto a = load(src, srcVersion, srcHeader, options);
    auto b = load(dst, dstVersion, dstHeader, options);
    EXPECT_EQ(a.comparers.size(), 1u);
    EXPECT_EQ(b.comparers.size(), 1u);
    if (a.comparers.size() != 1 || b.comparers.size() != 1) return {};
    return compareText(*b.comparers[0], *a.comparers[0]);
  }
  // The comparers of the attributes of every block reference of model space.
  std::vector<ComparerPtr> attributes(const vktest::LoadedDrawing& d) {
    std::vector<ComparerPtr> out;
    for (platform::ObjectId id : d.db->blockRecord(d.db->modelSpaceId()).entityIds())
      for (platform::ObjectId a : d.db->openEntity(id).attributes())
        out.push_back(createComparer(d.db->openEntity(a), platform::Matrix3d(), d.context.get(), nullptr));
    return out;
  }
};

std::string text(const std::string& props) { return "0|TEXT|8|0|100|AcDbEntity|100|AcDbText|" + props; }
std::string mtext(const std::string& props) { return "0|MTEXT|8|0|100|AcDbEntity|100|AcDbMText|" + props; }

}  // namespace

TEST_F(TextFixture, TextKeyFollowsTheVerticalMode) {
  // Baseline text is keyed by its position; any other vertical mode by its alignment point.
  auto d = load(text("10|1|20|2|30|3|40|1|1|a") + "|" + text("10|1|20|2|30|3|40|1|1|a|11|5|21|6|31|3|72|1|100|AcDbText|73|2"));
  ASSERT_EQ(d.comparers.size(), 2u);
  EXPECT_NE(dynamic_cast<CVkAcDbText*>(d.comparers[0].get()), nullptr);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("TEXT,1.00,2.00"));
  EXPECT_EQ(d.comparers[1]->keyText(), "0," + keyDigest("TEXT,5.00,6.00"));
  EXPECT_TRUE(d.comparers[0]->zText().starts_with("3.00,"));
  // A horizontal mode on the baseline keeps the position.
  auto e = load(text("10|1|20|2|40|1|1|a|11|5|21|6|72|2"));
  EXPECT_EQ(e.comparers[0]->keyText(), "0," + keyDigest("TEXT,1.00,2.00"));
}

TEST_F(TextFixture, TextMessagesFollowInTheirOrder) {
  const std::string src = text("10|0|20|0|11|0|21|0|40|1|50|0|51|0|1|alpha|72|0|100|AcDbText|73|1");
  const std::string dst = text("10|0|20|0|11|0|21|0|40|2|50|30|51|15|1|beta|72|1|100|AcDbText|73|2");
  EXPECT_EQ(compare(src, dst),
            "文字图元 高度不一样,水平模式不一样,垂直模式不一样,倾斜角不一样,旋转角度不一样,文本信息不一样,");
  // The width factor is not compared; angles compare in radians at two decimals (0.1 degree is 0.00).
  EXPECT_EQ(compare(text("10|0|20|0|40|1|41|1|50|0|1|a"), text("10|0|20|0|40|1|41|2|50|0.1|1|a")), "文字图元 ");
}

TEST_F(TextFixture, StyleOnlyDifferenceIsReportedEvenWithoutDetails) {
  CompareOptions noDetails;
  noDetails.excludedCodes = {kCodeDetails};
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|a|7|Standard"), text("10|0|20|0|40|9|1|a|7|Fancy"), &noDetails),
            "文字图元 文本类型不相同,");
  CompareOptions noStyle;
  noStyle.excludedCodes = {kCodeTextStyle};
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|a|7|Standard"), text("10|0|20|0|40|1|1|a|7|Fancy"), &noStyle), "文字图元 ");
  // Names resolve to the STYLE table's spelling; no name is the standard style.
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|a|7|FANCY"), text("10|0|20|0|40|1|1|a|7|fancy")), "文字图元 ");
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|a"), text("10|0|20|0|40|1|1|a|7|STANDARD")), "文字图元 ");
  EXPECT_EQ(load(text("10|0|20|0|40|1|1|a|7|FANCY")).comparers[0]->textStyleText(), "Fancy");
}

TEST_F(TextFixture, ChineseTextIsEqualWhateverTheDrawingsEncoding) {
  // "中文说明" in GBK bytes under ANSI_936, in UTF-8 (R2018) and as \U+ escapes.
  const std::string gbk = "\xD6\xD0\xCE\xC4\xCB\xB5\xC3\xF7";
  const std::string utf8 = "中文说明";
  const std::string escaped = "\\U+4E2D\\U+6587\\U+8BF4\\U+660E";
  const std::string page = "9|$DWGCODEPAGE|3|ANSI_936";
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|" + gbk), text("10|0|20|0|40|1|1|" + utf8), nullptr, "AC1015", "AC1032", page),
            "文字图元 ");
  EXPECT_EQ(compare(mtext("10|0|20|0|40|1|1|" + gbk), mtext("10|0|20|0|40|1|1|" + utf8), nullptr, "AC1015", "AC1032",
                    page),
            "多行文字图元 ");
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|" + escaped), text("10|0|20|0|40|1|1|" + utf8), nullptr, "AC1015", "AC1032"),
            "文字图元 ");
  EXPECT_EQ(compare(text("10|0|20|0|40|1|1|" + gbk), text("10|0|20|0|40|1|1|中文说明书"), nullptr, "AC1015", "AC1032",
                    page),
            "文字图元 文本信息不一样,");
}

TEST_F(TextFixture, MTextMessagesFollowInTheirOrder) {
  const std::string src = mtext("10|4|20|5|30|0|40|1|41|10|43|1|44|1|73|1|50|0|1|one");
  const std::string dst = mtext("10|4|20|5|30|0|40|2|41|12|43|3|44|1.5|73|2|50|0.5|1|two");
  EXPECT_EQ(compare(src, dst),
            "多行文字图元 文字高度不一样,角度不一样,总宽度不一样,总高度不一样,行间距因子不一样,行间距类型不一样,"
            "文本内容不一样,");
  auto d = load(src);
  EXPECT_NE(dynamic_cast<CVkAcDbMText*>(d.comparers[0].get()), nullptr);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("MTEXT,4.00,5.00"));
  EXPECT_EQ(d.comparers[0]->textStyleText(), "Standard");
}

TEST_F(TextFixture, MTextReadsChunksDirectionAndItsHeightWithoutTheHostsValue) {
  // Chunks (3) come before the last part (1); the direction vector gives the same angle as group 50.
  EXPECT_EQ(compare(mtext("10|0|20|0|40|1|3|first |3|second |1|third|50|1.5707963"),
                    mtext("10|0|20|0|40|1|1|first second third|11|0|21|1|31|0")),
            "多行文字图元 ");
  // Without group 43 the height is that of its paragraphs: 1 + 2 * 5/3 for three of height 1.
  auto d = load(mtext("10|0|20|0|40|1|1|a\\Pb\\Pc") + "|" + mtext("10|0|20|0|40|1|43|4.33|1|a\\Pb\\Pc"));
  EXPECT_EQ(compareText(*d.comparers[1], *d.comparers[0]), "多行文字图元 ");
  auto e = load(mtext("10|0|20|0|40|1|1|a\\\\Pb"));  // an escaped backslash before P is no break
  EXPECT_EQ(compareText(*d.comparers[0], *e.comparers[0]), "多行文字图元 总高度不一样,文本内容不一样,");
}

TEST_F(TextFixture, MultiColumnTextOfOlderDrawingsReadsAsOne) {
  // R2000: the first column names the second in its extension data; R2018: one record.
  const std::string r2000 =
      mtext("5|2D|10|0|20|0|40|1|41|20|1|Column one.\\N|1001|ACAD|1000|ACAD_MTEXT_COLUMNS_BEGIN|1070|47|1070|2|"
            "1005|2E|1000|ACAD_MTEXT_COLUMNS_END") +
      "|" + mtext("5|2E|10|21|20|0|40|1|41|20|1|Column two.");
  const std::string r2018 = mtext("5|2D|10|0|20|0|40|1|41|20|3|Column one.\\N|1|Column two.");
  auto a = load(r2000, "AC1015");
  ASSERT_EQ(a.comparers.size(), 1u);  // the second column is a part of the first
  EXPECT_EQ(compare(r2000, r2018, nullptr, "AC1015", "AC1032"), "多行文字图元 ");
  EXPECT_EQ(compare(r2000, mtext("5|2D|10|0|20|0|40|1|41|20|1|Column one.\\N"), nullptr, "AC1015", "AC1032"),
            "多行文字图元 文本内容不一样,");
}

TEST_F(TextFixture, AttributesCompareLockMultilineAndText) {
  auto insertWith = [](const std::string& attrib) {
    return "0|INSERT|8|0|66|1|2|B|10|0|20|0|0|ATTRIB|8|0|100|AcDbEntity|100|AcDbText|10|3|20|4|40|1|1|" + attrib +
           "|0|SEQEND|8|0";
  };
  const std::string src = insertWith("v1|100|AcDbAttribute|280|0|2|TAG|70|0|280|0");
  const std::string dst = insertWith(
      "v1|100|AcDbAttribute|280|0|2|TAG|70|0|280|1|101|Embedded Object|10|3|20|4|40|1|1|line one\\Pline two");
  auto a = load(src, "AC1032");
  auto b = load(dst, "AC1032");
  auto sa = attributes(a);
  auto sb = attributes(b);
  ASSERT_EQ(sa.size(), 1u);
  ASSERT_EQ(sb.size(), 1u);
  EXPECT_NE(dynamic_cast<CVkAcDbAttribute*>(sa[0].get()), nullptr);
  EXPECT_EQ(sa[0]->keyText(), "0," + keyDigest("ATTRIB,3.00,4.00"));
  EXPECT_EQ(compareText(*sb[0], *sa[0]), "属性图元 锁定情况不一样,多行文本显示不一样,文本内容不一样,");
  // The tag is not compared; the version number (the first 280) is not the lock flag.
  auto c = load(insertWith("v1|100|AcDbAttribute|280|1|2|OTHER|70|0|280|0"), "AC1032");
  EXPECT_EQ(compareText(*attributes(c)[0], *sa[0]), "属性图元 ");
}

TEST_F(TextFixture, AttributeDefinitionsComparePromptTagAndMultiline) {
  const std::string head = "0|ATTDEF|8|0|100|AcDbEntity|100|AcDbText|10|1|20|1|40|1|1|default|100|AcDbAttributeDefinition|";
  const std::string src = head + "280|0|3|Prompt|2|TAG|70|0|280|0";
  const std::string dst = head + "280|0|3|Other prompt|2|TAG2|70|0|280|0|101|Embedded Object|10|1|20|1|1|x";
  EXPECT_EQ(compare(src, dst, nullptr, "AC1032", "AC1032"), "属性定义图元 提示不一样,标记不一样,多行文字不一样,");
  auto d = load(src, "AC1032");
  EXPECT_NE(dynamic_cast<CVkAcDbAttributeDefinition*>(d.comparers[0].get()), nullptr);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("ATTDEF,1.00,1.00"));
}

TEST_F(TextFixture, OlderDrawingsKeepTheMultilineFlagInTheExtensionDictionary) {
  // R2000 to R2013: an "ACAD_MLATT" record of the extension dictionary carries the flag (70).
  auto withObjects = [](std::string dxf, const std::string& objects) {
    return dxf.insert(dxf.rfind("0\nEOF"), vktest::dxfFromPairs("0|SECTION|2|OBJECTS|" + objects + "|0|ENDSEC"));
  };
  const std::string attdef =
      "0|ATTDEF|5|96|102|{ACAD_XDICTIONARY|360|97|102|}|8|0|100|AcDbEntity|100|AcDbText|10|1|20|1|40|1|1||"
      "100|AcDbAttributeDefinition|3|Prompt|2|TAG|70|0";
  const std::string objects = "0|DICTIONARY|5|97|100|AcDbDictionary|3|ACAD_MLATT|360|98|0|XRECORD|5|98|100|AcDbXrecord|";
  vktest::TempDir tmp;
  for (const char* flag : {"4", "0"}) {
    const std::string dxf =
        withObjects(vktest::dxfDrawing(attdef, "AC1015", "", kStyles), objects + "280|1|70|" + flag + "|70|0|2|TAG");
    auto d = loadComparers(tmp, std::string("ml") + flag + ".dxf", dxf, all);
    ASSERT_EQ(d.comparers.size(), 1u);
    auto plain = load(attdef, "AC1015");
    EXPECT_EQ(compareText(*d.comparers[0], *plain.comparers[0]),
              std::string(flag) == "0" ? "属性定义图元 " : "属性定义图元 多行文字不一样,");
  }
}
