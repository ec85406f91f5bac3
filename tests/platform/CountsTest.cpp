// Counts written in entity records (vertices, knots, loops, rows and columns) that claim more than the
// record holds: one warning naming the file, the line and the entity, and readers keep what is there.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/database.h"
#include "support/TestSupport.h"

using platform::Accessor;

namespace {

struct Read {
  std::unique_ptr<platform::Database> db;
  platform::ReadReport report;
  platform::Entity first() const { return db->openEntity(db->blockRecord(db->modelSpaceId()).entityIds().at(0)); }
  std::string warnings() const {
    std::string all;
    for (const std::string& w : report.warnings) all += w + "\n";
    return all;
  }
};

Read read(const vktest::TempDir& dir, const std::string& entities) {
  Read r;
  r.db = vktest::readDxfText(dir, "counts.dxf", vktest::dxfDrawing(entities), &r.report);
  return r;
}

const std::string kThreeVertices = "10|0|20|0|10|1|20|0|10|1|20|1";

}  // namespace

TEST(Counts, APolylineClaimingAMillionVerticesKeepsItsThree) {
  vktest::TempDir dir;
  const Read r = read(dir, "0|LWPOLYLINE|5|2A|8|0|100|AcDbEntity|100|AcDbPolyline|90|1000000|70|0|" + kThreeVertices);
  ASSERT_TRUE(r.db);
  ASSERT_EQ(r.report.warnings.size(), 1u);
  // The header takes lines 1 to 10, the section opens on 11 to 14: the polyline starts on line 15.
  EXPECT_EQ(r.report.warnings[0], dir.file("counts.dxf") +
                                      ": line 15: LWPOLYLINE 2A: group 90 says 1000000 vertices, the record "
                                      "holds 3; those present are read");
  EXPECT_EQ(r.first().integer(Accessor::numVerts), 3);
  EXPECT_EQ(r.first().points(Accessor::getPointAt).size(), 3u);
}

TEST(Counts, EveryCountedKindIsCheckedAgainstItsGroups) {
  struct Case {
    std::string record, expected;
  };
  const Case cases[] = {
      {"0|SPLINE|5|B1|100|AcDbSpline|70|8|71|1|72|40|73|2|74|0|40|0|40|0|40|1|40|1|10|0|20|0|30|0|10|1|20|0|30|0",
       "SPLINE B1: group 72 says 40 knots, the record holds 4"},
      {"0|SPLINE|5|B2|100|AcDbSpline|70|8|71|1|72|4|73|900|74|0|40|0|40|0|40|1|40|1|10|0|20|0|30|0|10|1|20|0|30|0",
       "SPLINE B2: group 73 says 900 control points, the record holds 2"},
      {"0|SPLINE|5|B3|100|AcDbSpline|70|8|71|3|72|0|73|0|74|7|11|0|21|0|31|0|11|1|21|1|31|0",
       "SPLINE B3: group 74 says 7 fit points, the record holds 2"},
      {"0|HATCH|5|B4|100|AcDbHatch|10|0|20|0|30|0|2|SOLID|70|1|71|0|91|5000|92|2|72|0|73|1|93|3|" + kThreeVertices +
           "|97|0|75|0|76|1|98|0",
       "HATCH B4: group 91 says 5000 boundary paths, the record holds 1"},
      {"0|MLINE|5|B5|100|AcDbMline|2|STANDARD|40|1|70|0|71|1|72|64|73|2|10|0|20|0|30|0|11|0|21|0|31|0|11|5|21|0|31|0",
       "MLINE B5: group 72 says 64 vertices, the record holds 2"},
      {"0|LEADER|5|B6|100|AcDbLeader|71|1|72|0|76|300|10|0|20|0|30|0|10|5|20|5|30|0",
       "LEADER B6: group 76 says 300 vertices, the record holds 2"},
      {"0|MESH|5|B7|100|AcDbSubDMesh|71|2|72|0|91|0|92|1000|10|0|20|0|30|0|10|4|20|0|30|1|10|0|20|3|30|0",
       "MESH B7: group 92 says 1000 vertices, the record holds 3"},
  };
  for (const Case& c : cases) {
    vktest::TempDir dir;
    const Read r = read(dir, c.record);
    ASSERT_TRUE(r.db) << c.record;
    ASSERT_EQ(r.report.warnings.size(), 1u) << r.warnings();
    EXPECT_NE(r.report.warnings[0].find(c.expected), std::string::npos) << r.report.warnings[0];
  }
  // Accessors answer by what is held, not by the claim.
  vktest::TempDir dir;
  EXPECT_EQ(read(dir, cases[3].record).first().integer(Accessor::numLoops), 1);
  EXPECT_EQ(read(dir, cases[6].record).first().integer(Accessor::numOfVertices), 3);
}

TEST(Counts, HonestCountsAndTablesKeptInTheirContentObjectGiveNoWarning) {
  vktest::TempDir dir;
  EXPECT_EQ(read(dir, "0|LWPOLYLINE|100|AcDbPolyline|90|3|70|0|" + kThreeVertices).warnings(), "");
  // A count below what is held claims nothing beyond it.
  EXPECT_EQ(read(dir, "0|LWPOLYLINE|100|AcDbPolyline|90|2|70|0|" + kThreeVertices).warnings(), "");
  // Tables of R2010 and later may keep rows, columns and cells in the TABLECONTENT object their extension
  // dictionary links; without such a link, the cells are missing.
  const std::string table =
      "0|ACAD_TABLE|5|C1|%|100|AcDbEntity|100|AcDbBlockReference|2|*T1|10|0|20|0|100|AcDbTable|91|4|92|5";
  std::string linked = table, unlinked = table;
  linked.replace(linked.find('%'), 1, "102|{ACAD_XDICTIONARY|360|FF|102|}");
  unlinked.replace(unlinked.find('%'), 1, "8|0");
  EXPECT_EQ(read(dir, linked).warnings(), "");
  EXPECT_NE(read(dir, unlinked).warnings().find("ACAD_TABLE C1: groups 91 and 92 say 4 x 5 cells, the record holds 0"),
            std::string::npos);
}

TEST(Counts, ManyLyingRecordsGiveOneLine) {
  vktest::TempDir dir;
  std::string entities;
  for (int i = 0; i < 50; ++i)
    entities += (i ? "|" : "") + std::string("0|LWPOLYLINE|100|AcDbPolyline|90|99|70|0|") + kThreeVertices;
  const Read r = read(dir, entities);
  ASSERT_EQ(r.report.warnings.size(), 1u);
  EXPECT_TRUE(r.report.warnings[0].ends_with("(50 times; the first is shown)")) << r.report.warnings[0];
}
