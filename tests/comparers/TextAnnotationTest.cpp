// Leaders, geometric tolerances and tables: keys, messages in their order, the dimension variables of a
// tolerance, and the cell-by-cell listing of tables (R2000 cells, R2007 values, TABLECONTENT objects).
#include <gtest/gtest.h>

#include "comparers/CVkAcDbFcf.h"
#include "comparers/CVkAcDbLeader.h"
#include "comparers/CVkAcDbTable.h"
#include "comparers/ComparerTestSupport.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

const std::string kBlocks =
    "0|BLOCK|8|0|2|*T1|70|1|10|0|20|0|0|ENDBLK|0|BLOCK|8|0|2|*T2|70|1|10|0|20|0|0|ENDBLK";

struct AnnotationFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;

  vktest::LoadedDrawing load(const std::string& entities, const std::string& header = "", const std::string& tables = "",
                             const std::string& objects = "", const CompareOptions* options = nullptr) {
    std::string dxf = vktest::dxfDrawing(entities, "AC1018", header, tables, kBlocks);
    if (!objects.empty())
      dxf.insert(dxf.rfind("0\nEOF"), vktest::dxfFromPairs("0|SECTION|2|OBJECTS|" + objects + "|0|ENDSEC"));
    return loadComparers(dir, "d" + std::to_string(files++) + ".dxf", dxf, options ? *options : all);
  }
  std::string compare(const std::string& src, const std::string& dst, const CompareOptions* options = nullptr) {
    auto a = load(src, "", "", "", options);
    auto b = load(dst, "", "", "", options);
    return compareText(*b.comparers.at(0), *a.comparers.at(0));
  }
  std::vector<std::string> details(const vktest::LoadedDrawing& d) {
    return dynamic_cast<const CVkDetailedEntity&>(*d.comparers.at(0)).detailTexts();
  }
};

std::string leader(const std::string& flags, const std::string& vertices) {
  return "0|LEADER|8|0|100|AcDbEntity|100|AcDbLeader|3|Standard|" + flags + "|" + vertices;
}

std::string tolerance(const std::string& props, const std::string& xdata = "") {
  return "0|TOLERANCE|8|0|100|AcDbEntity|100|AcDbFcf|3|Standard|10|1|20|2|30|0|" + props + (xdata.empty() ? "" : "|" + xdata);
}

// A table of R2000 to R2007 drawings: its table-wide groups, then one cell per 171 group.
std::string table(int rows, int columns, const std::vector<double>& heights, const std::vector<double>& widths,
                  const std::vector<std::string>& cells, const std::string& head = "2|*T1|10|1|20|2|30|0") {
  std::string s = "0|ACAD_TABLE|8|0|100|AcDbEntity|100|AcDbBlockReference|" + head +
                  "|100|AcDbTable|11|1|21|0|31|0|90|22|91|" + std::to_string(rows) + "|92|" + std::to_string(columns) +
                  "|93|0|94|0|95|0|96|0|40|0.06|41|0.06";  // cell margins
  for (double h : heights) s += "|141|" + std::to_string(h);
  for (double w : widths) s += "|142|" + std::to_string(w);
  for (const std::string& c : cells) s += "|171|1|172|0|173|0|174|0|175|1|176|1|177|0|178|0|145|0|" + c;
  return s;
}
std::string textCell(const std::string& t) { return "1|" + t; }

}  // namespace

TEST_F(AnnotationFixture, LeaderMessagesFollowInTheirOrder) {
  const std::string src = leader("71|1|72|0|75|0|76|3", "10|0|20|0|30|0|10|5|20|5|30|0|10|8|20|5|30|1");
  auto d = load(src);
  EXPECT_NE(dynamic_cast<CVkAcDbLeader*>(d.comparers.at(0).get()), nullptr);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("LEADER,0.00,0.00"));
  EXPECT_EQ(d.comparers[0]->zText(), "0.00,1.00");
  EXPECT_EQ(details(d).back(), "8.00, 5.00");  // the last vertex, with a blank after the comma
  EXPECT_EQ(compare(src, leader("71|0|72|1|75|1|76|4", "10|0|20|0|30|0|10|5|20|5|30|0|10|8|20|5|30|1|10|9|20|5|30|1")),
            "引线图元 使用箭头不一样,HookLine的有无不一样,样条拟合不一样,顶点数不一样,最后一个索引顶点不一样,");
  // The arrow is on unless the drawing says otherwise.
  EXPECT_EQ(compare(src, leader("72|0|76|3", "10|0|20|0|30|0|10|5|20|5|30|0|10|8|20|5|30|1")), "引线图元 ");
}

TEST_F(AnnotationFixture, ToleranceMessagesFollowInTheirOrder) {
  const std::string src = tolerance("1|{\\Fgdt;j}%%v0.1|11|1|21|0|31|0");
  auto d = load(src);
  EXPECT_NE(dynamic_cast<CVkAcDbFcf*>(d.comparers.at(0).get()), nullptr);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("TOLERANCE,1.00,2.00"));
  EXPECT_EQ(d.comparers[0]->textStyleText(), "");  // not a text-bearing type
  EXPECT_EQ(compare(src, tolerance("1|{\\Fgdt;j}%%v0.2|11|0|21|1|31|0|210|0|220|0|230|-1",
                                   "1001|ACAD|1000|DSTYLE|1002|{|1070|147|1040|1|1070|40|1040|2|1070|140|1040|3|1002|}")),
            "公差图元 文本不一样,边法向量不一样,X矢量方向不一样,DIMGAP不一样,DIMSCALE不一样,DIMTXT不一样,");
}

TEST_F(AnnotationFixture, ToleranceDimensionVariablesResolveOverrideStyleHeaderDefault) {
  const std::string fcf = tolerance("1|x");
  const std::string header = "9|$DIMGAP|40|0.5|9|$DIMSCALE|40|2|9|$DIMTXT|40|0.25";
  const std::string styles = "0|TABLE|2|DIMSTYLE|0|DIMSTYLE|105|20|2|Standard|70|0|147|0.7|140|0.3|0|ENDTAB";
  auto dimvars = [this](const vktest::LoadedDrawing& d) {
    const auto& t = details(d);
    return t.at(3) + " " + t.at(4) + " " + t.at(5);
  };
  EXPECT_EQ(dimvars(load(fcf)), "0.09 1.00 0.18");  // the host's defaults
  EXPECT_EQ(dimvars(load(fcf, header)), "0.50 2.00 0.25");
  EXPECT_EQ(dimvars(load(fcf, header, styles)), "0.70 2.00 0.30");  // the style lacks DIMSCALE
  EXPECT_EQ(dimvars(load(tolerance("1|x", "1001|ACAD|1000|DSTYLE|1002|{|1070|147|1040|0.9|1002|}"), header, styles)),
            "0.90 2.00 0.30");
}

TEST_F(AnnotationFixture, EqualTablesAreListedCellByCell) {
  const std::string one = table(1, 1, {2}, {5}, {textCell("a")});
  auto d = load(one);
  auto* t = dynamic_cast<CVkAcDbTable*>(d.comparers.at(0).get());
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->keyText(), "0," + keyDigest("ACAD_TABLE,1.00,2.00"));
  EXPECT_EQ(t->zText(), "0.00");
  EXPECT_EQ(t->rotationText(), "0.00");
  EXPECT_EQ(t->scaleText(), "1.00,1.00,1.00");
  EXPECT_EQ(t->blockNameText(), "*T1");
  EXPECT_EQ(t->tableText(), "0,22,0,0,0,0");
  // Two equal 1 x 1 tables: the cell's position is listed, so the pair is reported as changed.
  EXPECT_EQ(compare(one, one), "表格图元 第0行,第0列:");
  CompareOptions noDetails;
  noDetails.excludedCodes = {kCodeDetails};
  EXPECT_EQ(compare(one, one, &noDetails), "表格图元 ");
}

TEST_F(AnnotationFixture, TablesOfTheSameCellCountAreListedByThisTablesRowsAndColumns) {
  const std::vector<std::string> six(6, textCell("x"));
  EXPECT_EQ(compare(table(2, 3, {1, 1}, {1, 1, 1}, six), table(3, 2, {1, 1, 1}, {1, 1}, six)),
            "表格图元 表中的行数不一样,表中的列数不一样,表的宽度不一样,表的高度不一样,"
            "第0行,第0列:第0行,第1列:第1行,第0列:第1行,第1列:第2行,第0列:第2行,第1列:");
  // Different cell counts give one message and no listing.
  EXPECT_EQ(compare(table(1, 1, {1}, {1}, {textCell("x")}), table(1, 2, {1}, {1, 1}, {textCell("x"), textCell("x")})),
            "表格图元 表中的列数不一样,表的宽度不一样,单元格数量不一样,");
}

TEST_F(AnnotationFixture, TableAndCellMessagesFollowInTheirOrder) {
  EXPECT_EQ(compare(table(1, 2, {1}, {1, 2}, {textCell("a"), textCell("b")}),
                    table(1, 2, {2}, {1, 3}, {textCell("a"), textCell("c")})),
            "表格图元 表的宽度不一样,表的高度不一样,第0行,第0列:单元格的高度不一样,"
            "第0行,第1列:单元格的高度不一样,单元格的宽度不一样,外部单元格不一样,");
  const auto one = [](const std::string& head, const std::string& direction) {
    std::string t = table(1, 1, {1}, {1}, {textCell("a")}, head);
    return t.replace(t.find("11|1|21|0"), 9, direction);
  };
  EXPECT_EQ(compare(one("2|*T1|10|1|20|2|30|0", "11|1|21|0"), one("2|*T2|10|1|20|2|30|0|41|2", "11|0|21|1")),
            "表格图元 旋转角度不一样,比例因子不一样,块表记录的名字不一样,第0行,第0列:");
}

TEST_F(AnnotationFixture, CellValuesOfLaterDrawingsGiveTextAndDate) {
  auto value = [](const std::string& type, const std::string& data, const std::string& shown) {
    return "92|0|301|CELL_VALUE|93|6|90|" + type + "|" + data + "|94|0|300||302|" + shown + "|304|ACVALUE_END";
  };
  // A string keeps its stored text whatever its format shows; other types give what they show; a date
  // value also fills the date text.
  const std::string a = table(1, 3, {1}, {1, 1, 1},
                              {value("4", "1|abc", "ABC"), value("2", "140|0.5", "0.50"), value("8", "92|16", "1/2/2024")});
  const std::string b = table(1, 3, {1}, {1, 1, 1},
                              {value("4", "1|abc", "abc"), value("2", "140|0.5", "0.50"), value("8", "92|16", "1/3/2024")});
  auto d = load(a);
  const auto& t = dynamic_cast<CVkAcDbTable&>(*d.comparers.at(0));
  const auto& cells = t.cells();
  ASSERT_EQ(cells.size(), 3u);
  EXPECT_EQ(t.cellText(cells[0].outerCellText), "abc");
  EXPECT_EQ(t.cellText(cells[1].outerCellText), "0.50");
  EXPECT_EQ(t.cellText(cells[2].outerCellText), "1/2/2024");
  EXPECT_EQ(t.cellText(cells[2].dateText), "1/2/2024");
  EXPECT_EQ(t.cellText(cells[0].dateText), "");
  EXPECT_EQ(compare(a, b), "表格图元 第0行,第0列:第0行,第1列:第0行,第2列:外部单元格不一样,日期不一样,");
}

TEST_F(AnnotationFixture, TableWithoutCellDataIsReadFromItsTableContent) {
  // R2010 and later: the extension dictionary names a round-trip record that names the TABLECONTENT;
  // the flow direction comes from the table style.
  const std::string entity =
      "0|ACAD_TABLE|5|A1|102|{ACAD_XDICTIONARY|360|D1|102|}|8|0|100|AcDbEntity|100|AcDbBlockReference|2|*T1|"
      "10|0|20|0|30|0|100|AcDbTable|280|0|342|5A|11|1|21|0|31|0|90|22|91|1|92|2|93|0|94|0|95|0|96|0";
  const std::string objects =
      "0|DICTIONARY|5|D1|100|AcDbDictionary|3|ACAD_XREC_ROUNDTRIP|360|E1|"
      "0|XRECORD|5|E1|100|AcDbXrecord|280|1|102|ACAD_ROUNDTRIP_2008_TABLE_ENTITY|360|C1|"
      "0|TABLESTYLE|5|5A|100|AcDbTableStyle|3|style|70|1|71|0|"
      "0|TABLECONTENT|5|C1|100|AcDbLinkedData|100|AcDbLinkedTableData|90|2|"
      "300|COLUMN|1|LINKEDTABLEDATACOLUMN_BEGIN|309|LINKEDTABLEDATACOLUMN_END|1|TABLECOLUMN_BEGIN|90|0|40|4|"
      "309|TABLECOLUMN_END|300|COLUMN|1|TABLECOLUMN_BEGIN|90|0|40|6|309|TABLECOLUMN_END|91|1|"
      "301|ROW|1|LINKEDTABLEDATAROW_BEGIN|90|2|"
      "300|CELL|1|LINKEDTABLEDATACELL_BEGIN|90|0|302|CONTENT|1|CELLCONTENT_BEGIN|90|1|300|VALUE|93|6|90|4|1|left|"
      "94|0|300||302|left|304|ACVALUE_END|91|0|309|CELLCONTENT_END|309|LINKEDTABLEDATACELL_END|"
      "300|CELL|1|LINKEDTABLEDATACELL_BEGIN|90|0|302|CONTENT|1|CELLCONTENT_BEGIN|90|4|340|30|91|0|309|CELLCONTENT_END|"
      "309|LINKEDTABLEDATACELL_END|309|LINKEDTABLEDATAROW_END|1|TABLEROW_BEGIN|90|1|40|3|309|TABLEROW_END";
  const std::string blockRecords = "0|TABLE|2|BLOCK_RECORD|0|BLOCK_RECORD|5|30|2|Bolt|0|ENDTAB";
  auto d = load(entity, "", blockRecords, objects);
  const auto& t = dynamic_cast<CVkAcDbTable&>(*d.comparers.at(0));
  ASSERT_EQ(t.cells().size(), 2u);
  EXPECT_EQ(t.cellText(t.cells()[0].outerCellText), "left");
  EXPECT_EQ(t.cellText(t.cells()[1].outerCellText), "Bolt");  // a block cell shows its block's name
  EXPECT_EQ(t.cellText(t.cells()[1].widthText), "6.00");
  EXPECT_EQ(t.cellText(t.cells()[1].heightText), "3.00");
  EXPECT_EQ(t.widthText(), "10.00");
  EXPECT_EQ(t.heightText(), "3.00");
  EXPECT_EQ(t.tableText(), "1,22,0,0,0,0");
}
