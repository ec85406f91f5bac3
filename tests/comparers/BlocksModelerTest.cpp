// Regions, bodies, 3D solids and surfaces (whose DXF names fall to the fallback display name): what their ACIS data measures (plain and encrypted), the digest
// standing for shapes that cannot be measured, and the surfaces' keys, messages and factory rule.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "comparers/CVkAcDb3dSolid.h"
#include "comparers/CVkAcDbRegion.h"
#include "comparers/CVkAcDbRevolvedSurface.h"
#include "comparers/ComparerTestSupport.h"
#include "platform/text.h"

using platform::Accessor;
using vktest::compareText;
using vktest::loadComparers;

namespace {

using Faces = std::vector<std::vector<int>>;

// SAT text (version 400) of a body whose faces are planar polygons: each face lists its loops, each loop
// its vertex indices counter-clockwise seen from outside (holes clockwise).
std::vector<std::string> polyhedronSat(const std::vector<platform::Point3d>& v, const std::vector<Faces>& faces) {
  int loopCount = 0, coedgeCount = 0;
  for (const Faces& f : faces) {
    loopCount += static_cast<int>(f.size());
    for (const auto& l : f) coedgeCount += static_cast<int>(l.size());
  }
  const int nf = static_cast<int>(faces.size());
  const int face0 = 3, surf0 = face0 + nf, loop0 = surf0 + nf, coedge0 = loop0 + loopCount, edge0 = coedge0 + coedgeCount;
  std::map<std::pair<int, int>, int> edges;  // (low, high) -> edge number
  std::vector<std::string> coedges, edgeRecords, faceRecords, loopRecords;
  int loop = 0, coedge = 0;
  for (int f = 0; f < nf; ++f) {
    faceRecords.push_back(platform::fmt("face $-1 $%d $%d $2 $-1 $%d forward single #", f + 1 < nf ? face0 + f + 1 : -1,
                                        loop0 + loop, surf0 + f));
    for (std::size_t l = 0; l < faces[f].size(); ++l, ++loop) {
      const auto& ids = faces[f][l];
      const int n = static_cast<int>(ids.size());
      loopRecords.push_back(platform::fmt("loop $-1 $%d $%d $%d #", l + 1 < faces[f].size() ? loop0 + loop + 1 : -1,
                                          coedge0 + coedge, face0 + f));
      for (int k = 0; k < n; ++k) {
        const int a = ids[k], b = ids[(k + 1) % n];
        const auto key = std::make_pair(std::min(a, b), std::max(a, b));
        if (!edges.count(key)) edges[key] = static_cast<int>(edges.size());
        coedges.push_back(platform::fmt("coedge $-1 $%d $%d $-1 $%d %s $%d $-1 #", coedge0 + coedge + (k + 1) % n,
                                        coedge0 + coedge + (k + n - 1) % n, edge0 + edges[key], a < b ? "forward" : "reversed",
                                        loop0 + loop));
      }
      coedge += n;
    }
  }
  const int ne = static_cast<int>(edges.size()), curve0 = edge0 + ne, vertex0 = curve0 + ne,
            point0 = vertex0 + static_cast<int>(v.size());
  edgeRecords.resize(edges.size());
  for (const auto& [key, e] : edges)
    edgeRecords[static_cast<std::size_t>(e)] =
        platform::fmt("edge $-1 $%d $%d $-1 $%d forward #", vertex0 + key.first, vertex0 + key.second, curve0 + e);
  std::vector<std::string> out = {"400 0 1 0", "9 unit-test 14 ACIS 4.00 NT 0", "1 9.9999999999999995e-007 1e-010",
                                  "body $-1 $1 $-1 $-1 #", "lump $-1 $-1 $2 $0 #",
                                  platform::fmt("shell $-1 $-1 $-1 $%d $-1 $1 #", face0)};
  out.insert(out.end(), faceRecords.begin(), faceRecords.end());
  for (int f = 0; f < nf; ++f) out.push_back("plane-surface $-1 0 0 0 0 0 1 1 0 0 forward_v I I I I #");
  out.insert(out.end(), loopRecords.begin(), loopRecords.end());
  out.insert(out.end(), coedges.begin(), coedges.end());
  out.insert(out.end(), edgeRecords.begin(), edgeRecords.end());
  for (int e = 0; e < ne; ++e) out.push_back("straight-curve $-1 0 0 0 1 0 0 I I #");
  for (std::size_t i = 0; i < v.size(); ++i) out.push_back(platform::fmt("vertex $-1 $%d $%d #", edge0, point0 + static_cast<int>(i)));
  for (const auto& p : v) out.push_back(platform::fmt("point $-1 %f %f %f #", p.x, p.y, p.z));
  out.push_back("End-of-ACIS-data");
  return out;
}

// A box [0,a] x [0,b] x [0,c].
std::vector<std::string> boxSat(double a, double b, double c) {
  const std::vector<platform::Point3d> v = {{0, 0, 0}, {a, 0, 0}, {a, b, 0}, {0, b, 0}, {0, 0, c}, {a, 0, c}, {a, b, c}, {0, b, c}};
  return polyhedronSat(v, {{{0, 3, 2, 1}}, {{4, 5, 6, 7}}, {{0, 1, 5, 4}}, {{3, 7, 6, 2}}, {{0, 4, 7, 3}}, {{1, 2, 6, 5}}});
}

// Stands for '|' inside group values (the fixtures' separator); encryption never yields it.
constexpr char kBar = '\x7f';

// The entity's groups holding the SAT lines, "encrypted" as DXF R2000 to R2004 write them when asked.
std::string satGroups(const std::vector<std::string>& lines, bool encrypt) {
  std::string out;
  for (std::string line : lines) {
    if (encrypt)
      for (char& c : line)
        if (c > 32) c = static_cast<char>(159 - c) == '|' ? kBar : static_cast<char>(159 - c);
    out += "|1|" + line;
  }
  return out;
}

std::string solid(const std::vector<std::string>& sat, bool encrypt = false, const std::string& name = "3DSOLID") {
  return "0|" + name + "|8|0|100|AcDbEntity|100|AcDbModelerGeometry|70|1" + satGroups(sat, encrypt);
}

struct ModelerFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;
  vktest::LoadedDrawing drawing(const std::string& entities) {
    std::string dxf = vktest::dxfDrawing(entities);
    std::replace(dxf.begin(), dxf.end(), kBar, '|');
    return loadComparers(dir, "m" + std::to_string(files++) + ".dxf", dxf, all);
  }
  static const CVkDetailedEntity& detailed(const vktest::LoadedDrawing& d, std::size_t i = 0) {
    return dynamic_cast<const CVkDetailedEntity&>(*d.comparers.at(i));
  }
};

}  // namespace

TEST_F(ModelerFixture, PolygonalSolidsAreMeasuredWhetherEncryptedOrNot) {
  auto plain = drawing(solid(boxSat(2, 3, 4)));
  auto encrypted = drawing(solid(boxSat(2, 3, 4), true));
  ASSERT_NE(dynamic_cast<const CVkAcDb3dSolid*>(plain.comparers[0].get()), nullptr);
  // Area 2(6 + 8 + 12), volume 24, radii of gyration sqrt((b² + c²) / 3) and sqrt((a² + c²) / 3).
  const std::vector<std::string> expected = {"52.00", "24.00", "2.89,2.58"};
  EXPECT_EQ(detailed(plain).detailTexts(), expected);
  EXPECT_EQ(detailed(encrypted).detailTexts(), expected);
  EXPECT_EQ(compareText(*encrypted.comparers[0], *plain.comparers[0]), "楔形实体图元 ");
  // A taller box also reaches higher: its extents change the Z text.
  auto taller = drawing(solid(boxSat(2, 3, 5)));
  EXPECT_EQ(compareText(*taller.comparers[0], *plain.comparers[0]),
            "楔形实体图元 Z坐标不相同,面积不一样,体积不一样,回转半径不一样,");
}

TEST_F(ModelerFixture, RegionAreaCountsHolesAndTheDigestStandsForTheShape) {
  // A 10 x 10 square with a 2 x 2 hole: one face, two loops.
  const std::vector<platform::Point3d> v = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0},
                                            {4, 4, 0}, {6, 4, 0},  {6, 6, 0},   {4, 6, 0}};
  const auto sat = polyhedronSat(v, {{{0, 1, 2, 3}, {4, 7, 6, 5}}});
  auto d = drawing(solid(sat, false, "REGION"));
  ASSERT_NE(dynamic_cast<const CVkAcDbRegion*>(d.comparers[0].get()), nullptr);
  const platform::Entity e = d.db->openEntity(d.db->blockRecord(d.db->modelSpaceId()).entityIds()[0]);
  EXPECT_DOUBLE_EQ(e.real(Accessor::modelerArea), 96.0);
  EXPECT_EQ(e.text(Accessor::acisData).substr(0, 9), "400 0 1 0");
  // The header (product and date) is not part of the shape.
  auto otherHeader = sat;
  otherHeader[1] = "9 elsewhere 14 ACIS 4.00 NT 1";
  EXPECT_EQ(compareText(*drawing(solid(otherHeader, false, "REGION")).comparers[0], *d.comparers[0]), "面域图元 ");
  auto moved = v;
  moved[5].x = 7;
  moved[6].x = 7;
  EXPECT_EQ(compareText(*drawing(solid(polyhedronSat(moved, {{{0, 1, 2, 3}, {4, 7, 6, 5}}}), false, "REGION")).comparers[0],
                        *d.comparers[0]),
            "面域图元 权 reference DXF不一样,");
}

TEST_F(ModelerFixture, CurvedShapesAreComparedByTheirData) {
  const std::vector<std::string> torus = {"400 0 1 0", "9 unit-test 14 ACIS 4.00 NT 0", "1 1e-06 1e-10",
                                          "body $-1 $1 $-1 $-1 #", "lump $-1 $-1 $2 $0 #", "shell $-1 $-1 $-1 $3 $-1 $1 #",
                                          "face $-1 $-1 $-1 $2 $-1 $4 forward single #",
                                          "torus-surface $-1 0 0 0 0 0 1 32 10 1 0 0 forward_v I I I I #",
                                          "End-of-ACIS-data"};
  auto a = drawing(solid(torus));
  const auto& texts = detailed(a).detailTexts();
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[0].size(), 16u);  // the digest
  EXPECT_EQ(texts[0], texts[1]);
  auto thicker = torus;
  thicker[7] = "torus-surface $-1 0 0 0 0 0 1 32 12 1 0 0 forward_v I I I I #";
  EXPECT_EQ(compareText(*drawing(solid(thicker)).comparers[0], *a.comparers[0]),
            "楔形实体图元 Z坐标不相同,面积不一样,体积不一样,回转半径不一样,");
  // Without ACIS data in the entity (DXF R2013 and later keep it elsewhere) there is nothing to differ.
  auto bare = drawing("0|BODY|8|0|100|AcDbEntity|100|AcDbModelerGeometry|70|1");
  EXPECT_EQ(detailed(bare).detailTexts(), (std::vector<std::string>{"0", ""}));
  auto body = drawing(solid(torus, false, "BODY"));
  // The body without data has no extents, the torus has: their Z texts differ too.
  EXPECT_EQ(compareText(*body.comparers[0], *bare.comparers[0]),
            "体图元 Z坐标不相同,形状管理器对象有无的情况不一样,更改的数量不一样,");
}

TEST_F(ModelerFixture, SurfacesByKindWithTheirKeysAndMessages) {
  const std::string head = "|8|0|100|AcDbEntity|100|AcDbModelerGeometry|70|1|100|AcDbSurface|71|6|72|6";
  auto a = drawing("0|EXTRUDEDSURFACE" + head + "|100|AcDbExtrudedSurface|10|0|20|0|30|200|0|NURBSURFACE" + head +
                   "|0|REVOLVEDSURFACE" + head + "|100|AcDbRevolvedSurface|10|1|20|2|30|0|11|0|21|1|31|0|40|0.5" +
                   "|0|PLANESURFACE" + head);
  ASSERT_EQ(a.comparers.size(), 4u);
  EXPECT_EQ(a.comparers[1], nullptr);  // a surface of another kind takes no part
  EXPECT_EQ(detailed(a, 0).detailTexts(), (std::vector<std::string>{"200.00", "0.00,0.00,200.00"}));
  const platform::Extents3d& x = a.comparers[2]->placedExtents();
  EXPECT_EQ(a.comparers[2]->keyText(), "0," + keyDigest(platform::fmt("REVOLVEDSURFACE,0.000000,%.2f,%.2f,%.2f,%.2f,1.00,2.00,0.00", x.min.x,
                                                     x.min.y, x.max.x, x.max.y)));
  EXPECT_NE(dynamic_cast<const CVkAcDbRevolvedSurface*>(a.comparers[2].get()), nullptr);
  auto b = drawing("0|EXTRUDEDSURFACE" + head + "|100|AcDbExtrudedSurface|10|0|20|5|30|200|0|NURBSURFACE" + head +
                   "|0|REVOLVEDSURFACE|102|{ACAD_REACTORS|330|99|102|}" + head +
                   "|100|AcDbRevolvedSurface|10|1|20|2|30|0|11|1|21|0|31|0|40|0.75" + "|0|PLANESURFACE" + head);
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "代理实体图元挤压高度不一样,扫描向量不一样,");
  EXPECT_EQ(compareText(*b.comparers[2], *a.comparers[2]), "代理实体图元旋转轴的向量不一样,旋转角度不一样,独立性F不一样,");
  EXPECT_EQ(compareText(*b.comparers[3], *a.comparers[3]), "代理实体图元");
}
