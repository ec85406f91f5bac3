// Geometric extents of entities read from small drawings written here, and of every entity of the shared corpus.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/database.h"
#include "support/TestSupport.h"

using namespace platform;

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Found {
  std::string type;
  ErrorStatus status;
  Extents3d box;
};

// The extents of every model-space entity of a drawing made of these groups (and block definitions).
std::vector<Found> extentsOf(std::string_view entities, std::string_view blocks = "") {
  vktest::TempDir dir;
  auto db = vktest::readDxfText(dir, "e.dxf", vktest::dxfDrawing(entities, "AC1015", "", "", blocks));
  std::vector<Found> out;
  if (!db) return out;
  for (ObjectId id : db->blockRecord(db->modelSpaceId()).entityIds()) {
    const Entity e = db->openEntity(id);
    Found f{std::string(e.dxfName()), ErrorStatus::eOk, {}};
    f.status = e.getGeomExtents(f.box);
    out.push_back(f);
  }
  return out;
}

// The extents of the one entity of a drawing; fails the test unless they could be computed.
Extents3d boxOf(std::string_view entity, std::string_view blocks = "") {
  const std::vector<Found> all = extentsOf(entity, blocks);
  if (all.size() != 1) {
    ADD_FAILURE() << "expected one entity, read " << all.size();
    return {};
  }
  EXPECT_EQ(all[0].status, ErrorStatus::eOk) << all[0].type;
  return all[0].box;
}

ErrorStatus statusOf(std::string_view entity, std::string_view blocks = "") {
  const std::vector<Found> all = extentsOf(entity, blocks);
  return all.size() == 1 ? all[0].status : ErrorStatus::eNotApplicable;
}

void expectBox(const Extents3d& e, const Point3d& min, const Point3d& max, double tol = 1e-9) {
  EXPECT_NEAR(e.min.x, min.x, tol);
  EXPECT_NEAR(e.min.y, min.y, tol);
  EXPECT_NEAR(e.min.z, min.z, tol);
  EXPECT_NEAR(e.max.x, max.x, tol);
  EXPECT_NEAR(e.max.y, max.y, tol);
  EXPECT_NEAR(e.max.z, max.z, tol);
}

std::string num(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

std::string block(std::string_view name, std::string_view entities, std::string_view base = "0|20|0|30|0") {
  return "0|BLOCK|2|" + std::string(name) + "|70|0|10|" + std::string(base) + "|" + std::string(entities) + "|0|ENDBLK";
}

}  // namespace

// ---- circles, arcs and ellipses ----

TEST(ExtentsArcs, SweepDecidesWhichAxisExtremesCount) {
  // 45 to 135 degrees crosses 90: the top of the circle is reached; the sides are not.
  const double s = std::sqrt(0.5);
  expectBox(boxOf("0|ARC|10|5|20|5|30|0|40|2|50|45|51|135"), {5 - 2 * s, 5 + 2 * s, 0}, {5 + 2 * s, 7, 0});
  // 10 to 80 degrees crosses no axis: neither x = 10 nor y = 10 is reached.
  const double c10 = 10 * std::cos(10 * kPi / 180), c80 = 10 * std::cos(80 * kPi / 180);
  expectBox(boxOf("0|ARC|10|0|20|0|30|0|40|10|50|10|51|80"), {c80, c80, 0}, {c10, c10, 0});
  // 300 to 60 degrees runs through 0 (counter-clockwise from the start), so x reaches centre + r.
  expectBox(boxOf("0|ARC|10|0|20|0|30|0|40|1|50|300|51|60"), {0.5, -std::sin(kPi / 3), 0}, {1, std::sin(kPi / 3), 0});
  // Ends that meet make the whole circle.
  expectBox(boxOf("0|ARC|10|0|20|0|30|0|40|1|50|30|51|30"), {-1, -1, 0}, {1, 1, 0});
}

TEST(ExtentsArcs, CircleInMirroredAndTiltedPlanes) {
  // Normal (0, 0, -1): the OCS x axis is -X, so the centre (3, 4, 1) lies at (-3, 4, -1).
  expectBox(boxOf("0|CIRCLE|10|3|20|4|30|1|40|2|210|0|220|0|230|-1"), {-5, 2, -1}, {-1, 6, -1});
  // A circle of radius 1 at the origin in the plane normal to (1, 0, 1): flat along the normal, not a sphere.
  const double s = std::sqrt(0.5);
  expectBox(boxOf("0|CIRCLE|10|0|20|0|30|0|40|1|210|" + num(s) + "|220|0|230|" + num(s)), {-s, -1, -s}, {s, 1, s}, 1e-12);
}

TEST(ExtentsArcs, RotatedEllipseMatchesDenseEvaluation) {
  const double a = 30 * kPi / 180;
  const Point3d c{10, 5, 0};
  const Vector3d major{4 * std::cos(a), 4 * std::sin(a), 0};
  const double ratio = 0.5;
  // Start and end parameters, and the sweep between them counter-clockwise (an end below the start wraps).
  struct Case {
    double t0, t1, sweep;
  };
  for (const Case& k : {Case{0.0, 2 * kPi, 2 * kPi}, Case{0.3, 2.0, 1.7}, Case{5.0, 1.0, 2 * kPi - 4.0}}) {
    SCOPED_TRACE(k.t0);
    const Extents3d e = boxOf("0|ELLIPSE|10|10|20|5|30|0|11|" + num(major.x) + "|21|" + num(major.y) + "|31|0|40|" +
                              num(ratio) + "|41|" + num(k.t0) + "|42|" + num(k.t1));
    // The minor axis is the normal turned onto the major axis.
    const Vector3d minor{-major.y * ratio, major.x * ratio, 0};
    Extents3d dense;
    const double t0 = k.t0, sweep = k.sweep;
    for (int i = 0; i <= 200000; ++i) {
      const double t = t0 + sweep * i / 200000.0;
      dense.addPoint(c + major * std::cos(t) + minor * std::sin(t));
    }
    expectBox(e, dense.min, dense.max, 1e-8);
  }
}

TEST(ExtentsArcs, DegenerateRadiiAndAxesHaveNoExtents) {
  EXPECT_EQ(statusOf("0|CIRCLE|10|1|20|1|30|0|40|0"), ErrorStatus::eInvalidExtents);
  EXPECT_EQ(statusOf("0|CIRCLE|10|1|20|1|30|0|40|-3"), ErrorStatus::eInvalidExtents);
  EXPECT_EQ(statusOf("0|ARC|10|1|20|1|30|0|50|0|51|90"), ErrorStatus::eInvalidExtents);
  EXPECT_EQ(statusOf("0|ELLIPSE|10|1|20|1|30|0|11|0|21|0|31|0|40|0.5"), ErrorStatus::eInvalidExtents);
}

// ---- polylines and splines ----

TEST(ExtentsPolylines, BulgedSegmentsFollowTheirArcs) {
  // Bulge 1 from (0, 0) to (2, 0) is a half circle run counter-clockwise: below the chord.
  expectBox(boxOf("0|LWPOLYLINE|100|AcDbPolyline|90|2|70|0|10|0|20|0|42|1|10|2|20|0"), {0, -1, 0}, {2, 0, 0});
  // Bulge -1 runs clockwise: above.
  expectBox(boxOf("0|LWPOLYLINE|100|AcDbPolyline|90|2|70|0|10|0|20|0|42|-1|10|2|20|0"), {0, 0, 0}, {2, 1, 0});
  // A closed square whose closing segment (from the last vertex back) bulges outwards on the left, at an
  // elevation in the mirrored OCS (x and z turn round).
  const std::string square = "0|LWPOLYLINE|100|AcDbPolyline|90|4|70|1|38|3|10|0|20|0|10|2|20|0|10|2|20|2|10|0|20|2|42|1";
  expectBox(boxOf(square), {-1, 0, 3}, {2, 2, 3});
  expectBox(boxOf(square + "|210|0|220|0|230|-1"), {-2, 0, -3}, {1, 2, -3});
  // The vertex count is not trusted: only stored vertices count.
  expectBox(boxOf("0|LWPOLYLINE|100|AcDbPolyline|90|1000000000|70|0|10|1|20|1|10|3|20|2"), {1, 1, 0}, {3, 2, 0});
}

TEST(ExtentsPolylines, OldStylePolylinesUseTheirVertices) {
  // A 2D polyline: vertices in its OCS at the elevation of its own point, bulges on the vertices.
  expectBox(boxOf("0|POLYLINE|66|1|10|0|20|0|30|5|70|0|0|VERTEX|10|0|20|0|42|1|0|VERTEX|10|2|20|0|0|SEQEND"),
            {0, -1, 5}, {2, 0, 5});
  // A polyface mesh: face records carry no point and must not pull the box to the origin.
  expectBox(boxOf("0|POLYLINE|66|1|10|0|20|0|30|0|70|64|0|VERTEX|10|5|20|5|30|1|70|192|0|VERTEX|10|6|20|7|30|2|70|192|"
                  "0|VERTEX|10|0|20|0|30|0|70|128|71|1|72|2|0|SEQEND"),
            {5, 5, 1}, {6, 7, 2});
}

TEST(ExtentsSplines, CurveStaysInsideItsControlPolygon) {
  // The cubic Bezier (0,0) (1,2) (3,2) (4,0) peaks at y = 1.5 at its middle, below its control points.
  const std::string cps = "10|0|20|0|30|0|10|1|20|2|30|0|10|3|20|2|30|0|10|4|20|0|30|0";
  const Extents3d e = boxOf("0|SPLINE|100|AcDbSpline|70|8|71|3|72|8|73|4|40|0|40|0|40|0|40|0|40|1|40|1|40|1|40|1|" + cps);
  expectBox(e, {0, 0, 0}, {4, 1.5, 0}, 1e-6);
  // Too few knots make no curve: the control points frame it instead.
  expectBox(boxOf("0|SPLINE|100|AcDbSpline|70|8|71|3|72|3|73|4|40|0|40|0|40|1|" + cps), {0, 0, 0}, {4, 2, 0});
  // Equal weights change nothing; a heavier middle point pulls the curve towards it.
  const std::string knots = "0|SPLINE|100|AcDbSpline|70|12|71|3|72|8|73|4|40|0|40|0|40|0|40|0|40|1|40|1|40|1|40|1|";
  expectBox(boxOf(knots + "41|2|41|2|41|2|41|2|" + cps), {0, 0, 0}, {4, 1.5, 0}, 1e-6);
  const Extents3d heavy = boxOf(knots + "41|1|41|4|41|4|41|1|" + cps);
  EXPECT_GT(heavy.max.y, 1.5);
  EXPECT_LT(heavy.max.y, 2.0);
  // Without control points the fit points frame the curve.
  expectBox(boxOf("0|SPLINE|100|AcDbSpline|70|8|71|3|74|3|11|0|21|0|31|0|11|5|21|1|31|0|11|9|21|-2|31|0"), {0, -2, 0},
            {9, 1, 0});
}

// ---- block references ----

TEST(ExtentsBlocks, NestedReferenceIsScaledRotatedAndMoved) {
  // INNER: a unit line. OUTER (base point (1, 0)): a line and INNER turned 90 degrees, doubled, at (1, 1).
  const std::string blocks = block("INNER", "0|LINE|10|0|20|0|30|0|11|1|21|0|31|0") + "|" +
                             block("OUTER",
                                   "0|LINE|10|1|20|0|30|0|11|3|21|0|31|0|"
                                   "0|INSERT|2|INNER|10|1|20|1|30|0|41|2|42|2|43|2|50|90",
                                   "1|20|0|30|0");
  // OUTER at (10, 20), halved and turned half round: q -> (10, 20) - (q - (1, 0)) / 2.
  expectBox(boxOf("0|INSERT|2|OUTER|10|10|20|20|30|0|41|0.5|42|0.5|43|0.5|50|180", blocks), {9, 18.5, 0}, {10, 20, 0}, 1e-12);
  // A rotated circle stays a circle of the scaled radius: rotation does not grow its box.
  const std::string round = block("ROUND", "0|CIRCLE|10|0|20|0|30|0|40|1");
  expectBox(boxOf("0|INSERT|2|ROUND|10|5|20|5|30|0|41|2|42|2|43|2|50|33", round), {3, 3, 0}, {7, 7, 0}, 1e-12);
}

TEST(ExtentsBlocks, SelfReferenceTerminates) {
  const std::string loop = block("LOOP", "0|LINE|10|0|20|0|30|0|11|1|21|1|31|0|0|INSERT|2|LOOP|10|5|20|5|30|0");
  expectBox(boxOf("0|INSERT|2|LOOP|10|0|20|0|30|0", loop), {0, 0, 0}, {1, 1, 0});
  // A cycle through two blocks ends too.
  const std::string pair = block("A", "0|LINE|10|0|20|0|30|0|11|1|21|0|31|0|0|INSERT|2|B|10|0|20|2|30|0|50|45") + "|" +
                           block("B", "0|LINE|10|0|20|0|30|0|11|0|21|1|31|0|0|INSERT|2|A|10|3|20|0|30|0|50|30");
  const Extents3d e = boxOf("0|INSERT|2|A|10|0|20|0|30|0", pair);
  EXPECT_LE(e.min.x, 0.0);
  EXPECT_GE(e.max.y, 2.0);
}

TEST(ExtentsBlocks, MultipleInsertCoversEveryCell) {
  const std::string cell = block("CELL", "0|LINE|10|0|20|0|30|0|11|1|21|1|31|0");
  // Two columns 5 apart, three rows 4 apart.
  expectBox(boxOf("0|INSERT|2|CELL|10|10|20|10|30|0|70|2|71|3|44|5|45|4", cell), {10, 10, 0}, {16, 19, 0});
  // Turned 90 degrees, columns run along +Y and rows along -X.
  expectBox(boxOf("0|INSERT|2|CELL|10|10|20|10|30|0|50|90|70|2|71|3|44|5|45|4", cell), {1, 10, 0}, {10, 16, 0}, 1e-12);
}

TEST(ExtentsBlocks, AttributesAndDefinitions) {
  // Definitions other than constant ones show through the reference's attributes, not by themselves.
  const std::string tagged = block("TAGGED",
                                   "0|LINE|10|0|20|0|30|0|11|1|21|1|31|0|"
                                   "0|ATTDEF|10|50|20|50|30|0|40|1|1|x|3|prompt|2|TAG|70|0");
  expectBox(boxOf("0|INSERT|2|TAGGED|10|0|20|0|30|0", tagged), {0, 0, 0}, {1, 1, 0});
  // The reference's own attribute widens the box (it is in world coordinates already).
  const Extents3d e = boxOf("0|INSERT|66|1|2|TAGGED|10|0|20|0|30|0|0|ATTRIB|10|-10|20|-10|30|0|40|1|1|V|2|TAG|70|0|0|SEQEND", tagged);
  EXPECT_NEAR(e.min.x, -10, 1e-12);
  EXPECT_NEAR(e.min.y, -10, 1e-12);
  EXPECT_NEAR(e.max.y, 1, 1e-12);
}

TEST(ExtentsBlocks, MissingOrEmptyBlockHasNoExtents) {
  EXPECT_EQ(statusOf("0|INSERT|2|NOWHERE|10|0|20|0|30|0"), ErrorStatus::eInvalidExtents);
  EXPECT_EQ(statusOf("0|INSERT|2|EMPTY|10|0|20|0|30|0", "0|BLOCK|2|EMPTY|70|0|10|0|20|0|30|0|0|ENDBLK"),
            ErrorStatus::eInvalidExtents);
}

TEST(ExtentsBlocks, DimensionShowsItsBlockElseItsDefinitionPoints) {
  const std::string geometry = block("*D1", "0|LINE|10|0|20|0|30|0|11|10|21|0|31|0|0|LINE|10|0|20|0|30|0|11|0|21|3|31|0");
  expectBox(boxOf("0|DIMENSION|2|*D1|10|10|20|3|30|0|11|5|21|3|31|0|70|0", geometry), {0, 0, 0}, {10, 3, 0});
  // Without its block: the definition points (13 and 14 are where the measured points are).
  expectBox(boxOf("0|DIMENSION|2|*D9|10|10|20|3|30|0|11|5|21|3|31|0|13|0|23|0|33|0|14|10|24|0|34|0|70|0"), {0, 0, 0},
            {10, 3, 0});
}

// ---- texts ----

TEST(ExtentsTexts, RotatedAndJustifiedText) {
  // "ABCD" 2 high: 4 characters of 0.6 of the height, from (1, 2), turned 90 degrees.
  expectBox(boxOf("0|TEXT|10|1|20|2|30|0|40|2|1|ABCD|50|90"), {-1, 2, 0}, {1, 6.8, 0}, 1e-12);
  // Centred on the alignment point (11); control codes are one character each.
  expectBox(boxOf("0|TEXT|10|0|20|0|30|0|40|1|1|45%%d|72|1|11|10|21|10|31|0"), {9.1, 10, 0}, {10.9, 11, 0}, 1e-12);
  // A width factor stretches the text; ideographs (written as escapes in an R2000 drawing) are square.
  expectBox(boxOf("0|TEXT|10|0|20|0|30|0|40|1|41|2|1|\\U+4E2D\\U+6587"), {0, 0, 0}, {4, 1, 0}, 1e-12);
  // Text with nothing visible has no extents.
  EXPECT_EQ(statusOf("0|TEXT|10|0|20|0|30|0|40|1|1|   "), ErrorStatus::eInvalidExtents);
}

TEST(ExtentsTexts, MultilineTextFromAttachmentPoint) {
  // Two paragraphs of two characters, middle centre at (10, 10): 1.2 wide, 1 + 5/3 high.
  const double h = 1 + 5.0 / 3.0;
  expectBox(boxOf("0|MTEXT|10|10|20|10|30|0|40|1|71|5|1|{\\LAB}\\PCD"), {9.4, 10 - h / 2, 0}, {10.6, 10 + h / 2, 0}, 1e-12);
  // Bottom right, along the direction (0, 1): the line runs up to the insertion point and its height lies to
  // the left of it.
  expectBox(boxOf("0|MTEXT|10|0|20|0|30|0|40|1|71|9|11|0|21|1|31|0|1|AB"), {-1, -1.2, 0}, {0, 0, 0}, 1e-12);
}

TEST(ExtentsTexts, ControlCodesCountAsTheyShow) {
  // %%c, %%p and %%% are one symbol each, %%u and %%o switch lines on and off, %%nnn is one character.
  expectBox(boxOf("0|TEXT|10|0|20|0|30|0|40|1|1|%%c10%%p%%%"), {0, 0, 0}, {3, 1, 0}, 1e-12);
  expectBox(boxOf("0|TEXT|10|0|20|0|30|0|40|1|1|%%uAB%%u%%o"), {0, 0, 0}, {1.2, 1, 0}, 1e-12);
  expectBox(boxOf("0|TEXT|10|0|20|0|30|0|40|1|1|%%065B"), {0, 0, 0}, {1.2, 1, 0}, 1e-12);
  // Descenders reach below the baseline.
  expectBox(boxOf("0|TEXT|10|0|20|0|30|0|40|1|1|gy"), {0, -0.3, 0}, {1.2, 1, 0}, 1e-12);
  // An attribute definition shows its tag, not its default value.
  expectBox(boxOf("0|ATTDEF|10|0|20|0|30|0|40|1|1|long default value|3|prompt|2|T|70|0"), {0, 0, 0}, {0.6, 1, 0}, 1e-12);
}

TEST(ExtentsTexts, MultilineTextWrapsAndUsesStoredExtents) {
  // Ten characters (6 units) wrap at the reference width 2.5 into three lines.
  const double h3 = 1 + 2 * 5.0 / 3.0;
  expectBox(boxOf("0|MTEXT|10|0|20|0|30|0|40|1|41|2.5|71|1|1|AAAAAAAAAA"), {0, -h3, 0}, {2.5, 0, 0}, 1e-12);
  // The extents a later release stores after its embedded object (42 wide, 43 high) are used as they are.
  expectBox(boxOf("0|MTEXT|100|AcDbMText|10|0|20|0|30|0|40|1|41|20|71|1|1|AB|101|Embedded Object|70|1|10|1|20|0|30|0|"
                  "11|0|21|0|31|0|40|20|41|100|42|62|43|100"),
            {0, -100, 0}, {62, 0, 0}, 1e-12);
}

// ---- other entities ----

TEST(ExtentsOthers, CornerAndVertexEntities) {
  // A solid's corners are in its OCS (mirrored here); a 3D face's in WCS.
  expectBox(boxOf("0|SOLID|10|1|20|1|30|2|11|3|21|1|31|2|12|1|22|4|32|2|13|3|23|4|33|2|210|0|220|0|230|-1"), {-3, 1, -2},
            {-1, 4, -2});
  expectBox(boxOf("0|3DFACE|10|0|20|0|30|0|11|1|21|0|31|1|12|1|22|1|32|2|13|0|23|1|33|3"), {0, 0, 0}, {1, 1, 3});
  // A shape is a square of its size, turned with it.
  expectBox(boxOf("0|SHAPE|10|5|20|5|30|0|40|2|2|BOX|50|90"), {3, 5, 0}, {5, 7, 0}, 1e-12);
  expectBox(boxOf("0|VIEWPORT|10|10|20|10|30|0|40|4|41|2|68|1|69|2"), {8, 9, 0}, {12, 11, 0});
  expectBox(boxOf("0|LEADER|100|AcDbLeader|76|3|10|0|20|0|30|0|10|2|20|3|30|0|10|5|20|3|30|0"), {0, 0, 0}, {5, 3, 0});
  expectBox(boxOf("0|OLE2FRAME|70|2|10|1|20|9|30|0|11|6|21|2|31|0"), {1, 2, 0}, {6, 9, 0});
  expectBox(boxOf("0|MESH|100|AcDbSubDMesh|71|2|72|0|91|0|92|3|10|0|20|0|30|0|10|4|20|0|30|1|10|0|20|3|30|0"), {0, 0, 0},
            {4, 3, 1});
  // A multiline's element lines lie at their offsets along the miters (here 1 and 2 above the vertices).
  const std::string vertex = "|12|1|22|0|32|0|13|0|23|1|33|0|74|2|41|1|41|0|75|0|74|2|41|2|41|0|75|0";
  expectBox(boxOf("0|MLINE|100|AcDbMline|2|STANDARD|40|1|70|0|71|1|72|2|73|2|10|0|20|0|30|0|11|0|21|0|31|0" + vertex +
                  "|11|10|21|0|31|0" + vertex),
            {0, 1, 0}, {10, 2, 0});
}

TEST(ExtentsOthers, VertexOpenedOnItsOwnLiesInItsPolylineOcs) {
  vktest::TempDir dir;
  auto db = vktest::readDxfText(dir, "v.dxf", vktest::dxfDrawing("0|POLYLINE|66|1|10|0|20|0|30|4|70|0|210|0|220|0|230|-1|"
                                                                 "0|VERTEX|10|1|20|2|0|VERTEX|10|3|20|5|0|SEQEND"));
  ASSERT_TRUE(db);
  const std::vector<ObjectId> ids = db->blockRecord(db->modelSpaceId()).entityIds();
  ASSERT_EQ(ids.size(), 1u);
  const std::vector<ObjectId> vertices = db->openEntity(ids[0]).vertices();
  ASSERT_EQ(vertices.size(), 2u);
  Extents3d e;
  ASSERT_EQ(db->openEntity(vertices[1]).getGeomExtents(e), ErrorStatus::eOk);
  expectBox(e, {-3, 5, -4}, {-3, 5, -4});
}


TEST(ExtentsOthers, InfiniteAndPointEntitiesHaveZeroSizeBoxes) {
  for (const char* type : {"RAY", "XLINE", "POINT"}) {
    SCOPED_TRACE(type);
    const Extents3d e = boxOf("0|" + std::string(type) + "|10|3|20|4|30|5|11|1|21|0|31|0");
    EXPECT_FALSE(e.isEmpty());
    expectBox(e, {3, 4, 5}, {3, 4, 5}, 0);
  }
}

TEST(ExtentsOthers, ImageFrameAndClipBoundary) {
  const std::string image = "0|IMAGE|100|AcDbRasterImage|10|1|20|1|30|0|11|0.1|21|0|31|0|12|0|22|0.2|32|0|13|100|23|50";
  expectBox(boxOf(image), {1, 1, 0}, {11, 11, 0}, 1e-12);
  // Clipped to pixels 9.5 .. 19.5 from the left and 9.5 .. 29.5 from the top.
  expectBox(boxOf(image + "|280|1|71|1|91|2|14|9.5|24|9.5|14|19.5|24|29.5"), {2, 5, 0}, {3, 9, 0}, 1e-12);
}

TEST(ExtentsOthers, HatchBoundaryPaths) {
  // A polyline path with a bulged side at elevation 2, and an edge path with a line and a clockwise arc: its
  // stored angles 270 to 360 are the complements of its ends, so it is the quarter from 0 to 90 degrees.
  const std::string hatch =
      "0|HATCH|100|AcDbHatch|10|0|20|0|30|2|210|0|220|0|230|1|2|SOLID|70|1|71|0|91|2|"
      "92|2|72|1|73|1|93|2|10|0|20|0|42|1|10|2|20|0|97|0|"
      "92|0|93|2|72|1|10|10|20|10|11|20|21|10|72|2|10|20|20|10|40|5|50|270|51|360|73|0|97|0|"
      "75|0|76|1|98|1|10|100|20|100";
  // The seed point (100, 100) after the paths is not boundary.
  expectBox(boxOf(hatch), {0, -1, 2}, {25, 15, 2}, 1e-12);
  // An elliptic edge stores angles seen from its centre, not parameters: 45 to 90 degrees on an ellipse 2 by 1
  // starts where the 45 degree ray meets it, (2 / sqrt 5, 2 / sqrt 5).
  const double k = 2 / std::sqrt(5.0);
  expectBox(boxOf("0|HATCH|100|AcDbHatch|10|0|20|0|30|0|91|1|92|0|93|1|72|3|10|0|20|0|11|2|21|0|40|0.5|50|45|51|90|73|1|"
                  "97|0"),
            {0, k, 0}, {k, 1, 0}, 1e-12);
  // Counts larger than the data stop at the record's end.
  EXPECT_EQ(statusOf("0|HATCH|100|AcDbHatch|10|0|20|0|30|0|91|2147483647|92|2|72|0|73|1|93|2147483647|10|1|20|1"),
            ErrorStatus::eOk);
}

TEST(ExtentsOthers, MultileaderPointsAndText) {
  // Points: content base (4, 4), text location (4, 5), plane origin, landing point and two leader vertices.
  // The text "AB" hangs from its top-left corner at the text location. The normal (0, 0, 1), the directions
  // and the block scale (1, 1, 1) after the context are no points: the box stays flat.
  const std::string mleader =
      "0|MULTILEADER|100|AcDbEntity|100|AcDbMLeader|300|CONTEXT_DATA{|40|1|10|4|20|4|30|0|41|1|290|1|304|AB|"
      "11|0|21|0|31|1|12|4|22|5|32|0|13|1|23|0|33|0|171|1|110|4|120|4|130|0|111|1|121|0|131|0|"
      "302|LEADER{|10|4|20|4|30|0|11|1|21|0|31|0|304|LEADER_LINE{|10|0|20|0|30|0|10|2|20|1|30|0|305|}|303|}|"
      "301|}|10|1|20|1|30|1";
  expectBox(boxOf(mleader), {0, 0, 0}, {5.2, 5, 0}, 1e-12);
}

TEST(ExtentsOthers, UnderlayNeedsItsClipBoundary) {
  expectBox(boxOf("0|PDFUNDERLAY|10|100|20|0|30|0|41|2|42|2|43|1|50|90|11|0|21|0|11|3|21|1"), {98, 0, 0}, {100, 6, 0}, 1e-12);
  EXPECT_EQ(statusOf("0|PDFUNDERLAY|10|100|20|0|30|0|41|2|42|2|43|1"), ErrorStatus::eInvalidExtents);
}

namespace {

// Little-endian binary values as the hex digits of a group 310.
std::string hexOf(const void* data, std::size_t n) {
  static const char* digits = "0123456789ABCDEF";
  std::string out;
  const auto* b = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < n; ++i) {
    out += digits[b[i] >> 4];
    out += digits[b[i] & 15];
  }
  return out;
}
std::string u32(std::uint32_t v) { return hexOf(&v, 4); }
std::string f64s(std::initializer_list<double> values) {
  std::string out;
  for (double v : values) out += hexOf(&v, 8);
  return out;
}

}  // namespace

TEST(ExtentsOthers, ProxyGraphicsShowTheProxy) {
  // A polyline (command 6) from (0, 0) to (10, 5) and a circle (command 2) of radius 2 at (20, 0).
  const std::string polyline = u32(60) + u32(6) + u32(2) + f64s({0, 0, 0, 10, 5, 0});
  const std::string circle = u32(64) + u32(2) + f64s({20, 0, 0, 2, 0, 0, 1});
  const std::string stream = u32(8 + 60 + 64) + u32(2) + polyline + circle;
  expectBox(boxOf("0|ACAD_PROXY_ENTITY|100|AcDbEntity|100|AcDbProxyEntity|90|498|91|500|92|132|310|" + stream +
                  "|93|0|94|0"),
            {0, -2, 0}, {22, 5, 0}, 1e-12);
  // A command claiming more bytes than there are ends the stream without reading past it.
  const std::string cut = u32(8 + 60) + u32(1) + u32(600) + u32(6) + u32(2) + f64s({0, 0, 0});
  EXPECT_EQ(statusOf("0|ACAD_PROXY_ENTITY|100|AcDbEntity|100|AcDbProxyEntity|90|498|91|500|92|40|310|" + cut + "|93|0"),
            ErrorStatus::eInvalidExtents);
}

TEST(ExtentsOthers, UnknownEntitiesUseTheirPoints) {
  expectBox(boxOf("0|ACME_WIDGET|100|AcDbEntity|10|1|20|2|30|3|40|99|12|-4|22|5|32|0"), {-4, 2, 0}, {1, 5, 3});
  EXPECT_EQ(statusOf("0|ACAD_PROXY_ENTITY|100|AcDbProxyEntity|90|498|91|500|40|3"), ErrorStatus::eInvalidExtents);
}

// ---- modeler geometry ----

namespace {

// SAT text (ACIS 4.0 layout) of a body whose one face is a whole sphere of radius 5 at (1, 2, 3), with two
// free points.
const char* const kSat[] = {
    "400 0 1 0",
    "@4 test 7 ACIS 4.0 NT 0",
    "1 9.9999999999999995e-007 1e-010",
    "body $-1 $1 $-1 $-1 #",
    "lump $-1 $-1 $2 $0 #",
    "shell $-1 $-1 $-1 $3 $-1 $1 #",
    "face $-1 $-1 $-1 $2 $-1 $4 forward single #",
    "sphere-surface $-1 1 2 3 5 1 0 0 0 0 1 forward_v I I I I #",
    "point $-1 20 0 0 #",
    "point $-1 -7 1 1 #",
    "End-of-ACIS-data",
};

// A 3DSOLID whose SAT lines are written as groups 1, encoded or not.
std::string solid(bool encode, const std::vector<std::string>& sat = {std::begin(kSat), std::end(kSat)}) {
  std::string dxf = vktest::dxfDrawing("0|3DSOLID|100|AcDbEntity|100|AcDbModelerGeometry|70|1|1|@SAT@");
  std::string lines;
  for (const std::string& line : sat) {
    std::string s = line;
    if (encode)
      for (char& c : s)
        if (c > 32 && c < 127) c = static_cast<char>(159 - c);
    lines += (lines.empty() ? "" : "\n  1\n") + s;
  }
  dxf.replace(dxf.find("@SAT@"), 5, lines);
  return dxf;
}

Found solidExtents(const std::string& dxf) {
  vktest::TempDir dir;
  auto db = vktest::readDxfText(dir, "s.dxf", dxf);
  Found f{"", ErrorStatus::eNotApplicable, {}};
  if (!db) return f;
  const std::vector<ObjectId> ids = db->blockRecord(db->modelSpaceId()).entityIds();
  if (ids.size() == 1) f.status = db->openEntity(ids[0]).getGeomExtents(f.box);
  return f;
}

}  // namespace

TEST(ExtentsSolids, SatTextPlainAndEncoded) {
  for (bool encode : {false, true}) {
    SCOPED_TRACE(encode);
    const Found f = solidExtents(solid(encode));
    ASSERT_EQ(f.status, ErrorStatus::eOk);
    expectBox(f.box, {-7, -3, -2}, {20, 7, 8});
  }
}

TEST(ExtentsSolids, EllipticEdgesFollowTheirVerticesAndTheBodyTransform) {
  // An edge on the unit circle from (1, 0) to (0, 1); the body is doubled and moved by (100, 0, 0).
  const auto sat = [](const char* sense) {
    return std::vector<std::string>{"400 0 1 0", "@4 test 7 ACIS 4.0 NT 0", "1 1e-06 1e-10",
                                    "body $-1 $-1 $-1 $1 #",
                                    "transform $-1 1 0 0 0 1 0 0 0 1 100 0 0 2 no_rotate no_reflect no_shear #",
                                    std::string("edge $-1 $3 $4 $-1 $5 ") + sense + " #",
                                    "vertex $-1 $2 $6 #", "vertex $-1 $2 $7 #",
                                    "ellipse-curve $-1 0 0 0 0 0 1 1 0 0 1 I I #", "point $-1 1 0 0 #",
                                    "point $-1 0 1 0 #", "End-of-ACIS-data"};
  };
  // Forward: the quarter counter-clockwise from the start vertex.
  Found f = solidExtents(solid(false, sat("forward")));
  ASSERT_EQ(f.status, ErrorStatus::eOk);
  expectBox(f.box, {100, 0, 0}, {102, 2, 0}, 1e-12);
  // Reversed: the edge runs against the circle, so it is the other three quarters.
  f = solidExtents(solid(false, sat("reversed")));
  ASSERT_EQ(f.status, ErrorStatus::eOk);
  expectBox(f.box, {98, -2, 0}, {102, 2, 0}, 1e-12);
}

TEST(ExtentsSolids, WithoutReadableDataThereAreNoExtents) {
  // R2007 and later keep the modeler data outside the entity.
  EXPECT_NE(statusOf("0|3DSOLID|100|AcDbEntity|100|AcDbModelerGeometry|70|1|290|0"), ErrorStatus::eOk);
  EXPECT_NE(statusOf("0|REGION|100|AcDbEntity|100|AcDbModelerGeometry|70|1|1|not acis|3|at all"), ErrorStatus::eOk);
}

// ---- damaged input ----

TEST(ExtentsRobustness, DamagedValuesGiveFiniteBoxesOrAStatus) {
  // Values a damaged or hostile file may hold: not-a-number, infinities, huge and zero sizes, missing groups.
  const std::vector<std::string> entities = {
      "0|LINE|10|nan|20|0|30|0|11|1|21|1|31|0",
      "0|LINE|10|inf|20|0|30|0",
      "0|ARC|10|0|20|0|30|0|40|1|50|nan|51|90",
      "0|ARC|10|0|20|0|30|0|40|1e308|50|0|51|90|210|1e308|220|1e308|230|0",
      "0|CIRCLE|10|0|20|0|30|0|40|nan",
      "0|ELLIPSE|10|0|20|0|30|0|11|1|21|0|31|0|40|nan|41|0|42|inf",
      "0|SPLINE|100|AcDbSpline|71|-5|40|nan|40|1|10|0|20|0|30|0|10|1|20|nan|30|0",
      "0|SPLINE|100|AcDbSpline|71|3|72|8|40|0|40|0|40|0|40|0|40|1|40|1|40|1|40|1|41|0|41|0|41|0|41|0|"
      "10|0|20|0|30|0|10|1|20|2|30|0|10|3|20|2|30|0|10|4|20|0|30|0",
      "0|LWPOLYLINE|100|AcDbPolyline|90|2|70|1|10|0|20|0|42|nan|10|1|20|0|42|1e300",
      "0|TEXT|10|0|20|0|30|0|40|nan|1|x",
      "0|TEXT|10|0|20|0|30|0|40|1|41|-1|50|inf|51|90|1|x",
      "0|MTEXT|10|0|20|0|30|0|40|1|41|1e-300|1|" + std::string(300, 'W'),
      "0|MTEXT|10|0|20|0|30|0|40|1|71|99|1|\\Sx^",
      "0|HATCH|100|AcDbHatch|10|0|20|0|30|0|91|1|92|0|93|3|72|2|10|0|20|0|40|nan|50|0|51|90|73|1|72|3|10|0|20|0|"
      "11|0|21|0|40|0|50|0|51|90|73|0|72|4|94|3|95|1|96|1|40|0|10|1|20|1",
      "0|INSERT|2|NOWHERE|10|nan|20|0|30|0",
      "0|DIMENSION|2|*D404|70|0",
      "0|IMAGE|100|AcDbRasterImage|10|0|20|0|30|0|11|inf|21|0|31|0|13|1e308|23|1e308|280|1|91|1|14|0|24|0",
      "0|VIEWPORT|10|0|20|0|30|0|40|nan|41|1",
      "0|3DSOLID|100|AcDbModelerGeometry|70|1|1|400 0 1 0|1|x|1|y|1|point $-1 nan 1 1 #|1|edge $-1 $9 $9 $1 $2 #",
      "0|MULTILEADER|100|AcDbMLeader|300|CONTEXT_DATA{|10|1|20|1|30|0|41|nan|290|1|304|text|12|2|22|2|32|0|301|}",
      "0|TOLERANCE|100|AcDbFcf|10|0|20|0|30|0|1|%%v%%v^J^J|11|0|21|0|31|0",
  };
  std::string all;
  for (const std::string& e : entities) all += (all.empty() ? "" : "|") + e;
  const std::vector<Found> found = extentsOf(all);
  EXPECT_EQ(found.size(), entities.size());
  for (const Found& f : found) {
    if (f.status != ErrorStatus::eOk) continue;
    SCOPED_TRACE(f.type);
    for (double v : {f.box.min.x, f.box.min.y, f.box.min.z, f.box.max.x, f.box.max.y, f.box.max.z}) EXPECT_TRUE(std::isfinite(v));
    EXPECT_FALSE(f.box.isEmpty());
  }
}

// ---- the corpus ----

TEST(ExtentsCorpus, EveryEntityGivesFiniteExtentsOrAStatus) {
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty()) GTEST_SKIP() << "no drawing corpus";
  int files = 0;
  long computed = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    std::string ext = entry.path().extension().string();
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (!entry.is_regular_file() || ext != ".dxf") continue;
    const std::string path = entry.path().string();
    SCOPED_TRACE(path);
    ReadReport report;
    auto db = Database::read(path, report);
    if (!db) {
      if (path.find("/malformed/") == std::string::npos) ADD_FAILURE() << report.error;
      continue;
    }
    ++files;
    for (ObjectId b : db->blockRecordIds()) {
      for (ObjectId id : db->blockRecord(b).entityIds()) {
        const Entity e = db->openEntity(id);
        std::vector<ObjectId> all{id};
        for (ObjectId a : e.attributes()) all.push_back(a);
        for (ObjectId v : e.vertices()) all.push_back(v);
        for (ObjectId one : all) {
          Extents3d box;
          if (db->openEntity(one).getGeomExtents(box) != ErrorStatus::eOk) continue;
          ++computed;
          for (double v : {box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z})
            ASSERT_TRUE(std::isfinite(v)) << db->openEntity(one).dxfName() << " " << std::hex << db->openEntity(one).handle();
          ASSERT_FALSE(box.isEmpty()) << db->openEntity(one).dxfName();
        }
      }
    }
  }
  EXPECT_GT(files, 0);
  EXPECT_GT(computed, 0);
}
