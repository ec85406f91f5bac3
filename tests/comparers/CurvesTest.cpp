// Curve and point comparers on small drawings read by the real reader: keys, Z and detail texts per class
// (WCS, radians, computed ellipse and helix values), one message per differing property, canonical order
// of leading points, the load transform, vertices opened on their own, and the family's factory rows.
#include <gtest/gtest.h>

#include <deque>

#include "comparers/CVkAcDb2dPolyline.h"
#include "comparers/CVkAcDb2dVertex.h"
#include "comparers/CVkAcDb3dPolylineVertex.h"
#include "comparers/CVkAcDbArc.h"
#include "comparers/CVkAcDbCircle.h"
#include "comparers/CVkAcDbEllipse.h"
#include "comparers/CVkAcDbHelix.h"
#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkAcDbMline.h"
#include "comparers/CVkAcDbPoint.h"
#include "comparers/CVkAcDbPolyline.h"
#include "comparers/CVkAcDbRay.h"
#include "comparers/CVkAcDbSpline.h"
#include "comparers/CVkAcDbXline.h"
#include "comparers/CVkCustomEntity.h"
#include "comparers/ComparerTestSupport.h"
#include "platform/text.h"

using platform::fmt;

namespace {

constexpr double kPi = 3.14159265358979323846;

const std::string kArc = "0|ARC|8|0|10|1|20|2|30|3|40|5|50|30|51|120";
const std::string kCircle = "0|CIRCLE|8|0|10|0|20|0|30|0|40|2";
const std::string kRay = "0|RAY|8|0|10|1|20|2|30|3|11|1|21|0|31|0";
const std::string kXline = "0|XLINE|8|0|10|1|20|2|30|3|11|0|21|1|31|0";
const std::string kPoint = "0|POINT|8|0|10|1|20|2|30|3";

// An ellipse centred at (1, 2, 3), major axis 4 along X, ratio 0.5, between two parameters.
std::string ellipse(double from, double to, const std::string& ratio = "0.5") {
  return fmt("0|ELLIPSE|8|0|10|1|20|2|30|3|11|4|21|0|31|0|40|%s|41|%.15f|42|%.15f", ratio, from, to);
}
std::string lwpolyline(const std::string& vertices, const std::string& props = "") {
  return "0|LWPOLYLINE|8|0|" + props + vertices;
}
const std::string kSquare = "10|0|20|0|10|10|20|0|10|10|20|5|10|0|20|5";
// A 2D polyline at an elevation, its vertex records given as groups separated by "/".
std::string polyline2d(const std::string& vertices, const std::string& props = "", double elevation = 0) {
  std::string s = fmt("0|POLYLINE|8|0|66|1|10|0|20|0|30|%f", elevation) + props;
  std::size_t at = 0;
  for (std::size_t end; at != std::string::npos; at = end == std::string::npos ? end : end + 1) {
    end = vertices.find('/', at);
    s += "|0|VERTEX|8|0|" + vertices.substr(at, end == std::string::npos ? std::string::npos : end - at);
  }
  return s + "|0|SEQEND|8|0";
}
const std::string kTriangle = "10|0|20|0/10|10|20|0/10|10|20|5";
std::string spline(const std::string& groups) { return "0|SPLINE|8|0|100|AcDbEntity|100|AcDbSpline|70|8|" + groups; }
const std::string kKnots = "40|0|40|0|40|0|40|0|40|1|40|1|40|1|40|1|";
const std::string kControl = "10|0|20|0|30|0|10|1|20|1|30|0|10|2|20|1|30|0|10|3|20|0|30|0";
const std::string kSpline = spline("71|3|" + kKnots + kControl);
// A helix round the Z axis starting at (5, 0, 0), two turns of 3; its spline part (with its own codes 10
// and 40) ends at `end`, its AcDbHelix groups follow.
std::string helix(const std::string& end = "10|5|20|0|30|6", const std::string& groups = "40|5|41|2|42|3",
                  const std::string& start = "11|5|21|0|31|0", const std::string& axis = "12|0|22|0|32|1") {
  return "0|HELIX|8|0|100|AcDbEntity|100|AcDbSpline|70|0|71|1|40|0|40|0|40|1|40|1|10|5|20|0|30|0|" + end +
         "|100|AcDbHelix|90|33|91|29|10|0|20|0|30|0|" + start + "|" + axis + "|" + groups + "|290|1|280|1";
}
std::string mline(const std::string& props, const std::string& last = "11|10|21|5|31|0") {
  return "0|MLINE|8|0|100|AcDbEntity|100|AcDbMline|2|STANDARD|" + props +
         "|10|0|20|0|30|0|11|0|21|0|31|0|12|1|22|0|32|0|11|10|21|0|31|0|12|0|22|1|32|0|" + last;
}

struct CurvesFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  CompareOptions noDetails{{kCodeDetails}};
  int files = 0;

  vktest::LoadedDrawing load(const std::string& entities, const CompareOptions& options,
                             const platform::Matrix3d& transform = platform::Matrix3d()) {
    return vktest::loadComparers(dir, fmt("d%d.dxf", files++), vktest::dxfDrawing(entities), options, transform);
  }
  // The drawings read so far: a comparer lives no longer than its drawing's texts.
  std::deque<vktest::LoadedDrawing> drawings;
  CVkAcadEntityBase* one(const std::string& entity, const CompareOptions& options,
                         const platform::Matrix3d& transform = platform::Matrix3d()) {
    vktest::LoadedDrawing& d = drawings.emplace_back(load(entity, options, transform));
    return d.comparers.size() == 1 ? d.comparers[0].get() : nullptr;
  }
  // destination.compare(source).
  std::string compare(const std::string& source, const std::string& destination, const CompareOptions& options) {
    auto a = one(source, options), b = one(destination, options);
    return a && b ? b->compare(*a)->text : "<not one entity each>";
  }
};

// The detail texts joined by "|", each list after them in brackets.
std::string detailsOf(const CVkAcadEntityBase& c) {
  const auto& d = dynamic_cast<const CVkDetailedEntity&>(c);
  std::string out;
  for (const std::string& t : d.detailTexts()) out += (out.empty() ? "" : "|") + t;
  for (const auto& list : d.detailLists()) {
    out += " [";
    for (std::size_t i = 0; i < list.size(); ++i) out += (i ? " " : "") + list[i];
    out += "]";
  }
  return out;
}

}  // namespace

TEST_F(CurvesFixture, KeysZAndDetailTextsPerClass) {
  struct Row {
    std::string entity, key, z, details;
  };
  const Row rows[] = {
      // Arcs: angles in radians; the centre in the arc's OCS (turned over by the normal (0, 0, -1)).
      {kArc, "ARC,1.00,2.00,5.00,0.52", "3.00", "0.00|2.09"},
      {"0|ARC|8|0|10|1|20|2|30|3|40|5|50|-330|51|480|210|0|220|0|230|-1", "ARC,-1.00,2.00,5.00,0.52", "-3.00",
       "0.00|2.09"},
      {kCircle, "CIRCLE,0.00,0.00,2.00", "0.00", "0.00|0.00,0.00,1.00"},
      // Ellipses: angles from the major axis (parameter pi/4 at ratio 0.5 is atan 0.5), axes "%.2f, %.2f",
      // the area pi a b, or for an arc the region its chord closes, a b (sweep - sin sweep) / 2.
      {ellipse(0, 2 * kPi), "ELLIPSE,1.00,2.00", "3.00,3.00,3.00", "0.50|0.00|6.28|4.00, 0.00|0.00, 2.00|25.13"},
      {ellipse(kPi / 4, 3 * kPi / 4), "ELLIPSE,1.00,2.00", "3.00,3.00,3.00",
       "0.50|0.46|2.68|4.00, 0.00|0.00, 2.00|2.28"},
      {ellipse(3 * kPi / 2, kPi / 2), "ELLIPSE,1.00,2.00", "3.00,3.00,3.00",
       "0.50|4.71|1.57|4.00, 0.00|0.00, 2.00|12.57"},
      // Upright (normal X, major axis Y): the minor axis points up, a quarter round ends 2 higher.
      {fmt("0|ELLIPSE|8|0|10|1|20|2|30|3|11|0|21|4|31|0|210|1|220|0|230|0|40|0.5|41|0|42|%.15f", kPi / 2),
       "ELLIPSE,1.00,2.00", "3.00,3.00,5.00", "0.50|0.00|1.57|0.00, 4.00|0.00, 0.00|2.28"},
      // Rays: the extents' Z follow the base and second point's, as for a line.
      {kRay, "RAY,1.00,2.00", "3.00,3.00,*", "1.00,0.00"},
      {kXline, "XLINE,1.00,2.00", "3.00,3.00,0.00", "0.00,1.00,0.00"},
      {kPoint + "|50|90", "POINT,1.00,2.00", "3.00", "0.00|0.00,0.00,1.00|1.57|1"},
      // Lightweight polylines: the bulge text is always "0.00"; the vertices from the third on.
      {lwpolyline(kSquare), "LWPOLYLINE,4,0.00,0.00,10.00,0.00", "", "0.00|0|1|0|0.00|0.00,0.00|10.00,0.00 [10.00,5.00 0.00,5.00]"},
      {lwpolyline("10|3|20|4"), "", "", "0.00|0|1|0|0.00|| []"},
      // The key takes OCS points, the vertices are in WCS at the elevation: normal (0, 0, -1) turns x over.
      {lwpolyline("10|1|20|1|10|11|20|1|10|11|20|6|10|1|20|6", "38|2|210|0|220|0|230|-1|"),
       "LWPOLYLINE,4,1.00,1.00,11.00,1.00", "", "0.00|0|1|0|0.00|1.00,1.00|11.00,1.00 [-11.00,6.00 -1.00,6.00]"},
      // 2D polylines: every vertex with its bulge; vertices lie in the polyline's OCS at its elevation.
      {polyline2d("10|0|20|0/10|10|20|0|42|1/10|10|20|5"), "POLYLINE,3,0.00,0.00,10.00,0.00", "0.00,0.00",
       "0|0.00|0.00|0.00|0.00|0 [0.00,0.00,0.00,0.00 10.00,0.00,0.00,1.00 10.00,5.00,0.00,0.00]"},
      {polyline2d("10|1|20|0|30|9/10|4|20|2", "|70|4|75|5|210|0|220|0|230|-1", 3), "POLYLINE,2,-4.00,2.00,-1.00,0.00",
       "-3.00,-3.00", "2|0.00|0.00|0.00|3.00|0 [-1.00,0.00,-3.00,0.00 -4.00,2.00,-3.00,0.00]"},
      // Splines: knots folded by "%s,%.2f"; keyed by fit points when there are no control points.
      {kSpline, "SPLINE,4,0.00,0.00,1.00,1.00", "0.00,0.00",
       "3|0.00|,0.00,0.00,0.00,0.00,1.00,1.00,1.00,1.00|4|0 [0.00,0.00 1.00,1.00 2.00,1.00 3.00,0.00] []"},
      {spline("71|3|44|0.5|11|0|21|0|31|1|11|5|21|5|31|2|11|9|21|0|31|0"), "SPLINE,3,0.00,0.00,5.00,5.00", "1.00,2.00",
       "3|0.50||0|3 [] [0.00,0.00 5.00,5.00 9.00,0.00]"},
      // Helices: base radius from the start point (not the spline's first point), top radius stored,
      // slope atan(3 / 10 pi), length 2 sqrt((10 pi)^2 + 3^2); a cone's length follows its radius.
      {helix(), "HELIX,5.00,0.00", "0.00,0.00,6.00,1.00,6.00",
       "5.00,0.00,0.00|0.00,0.00,1.00|6.00|5.00|5.00|2.00|3.00|0.10|63.12"},
      {helix("10|10|20|0|30|6", "40|10|41|2|42|3"), "HELIX,5.00,0.00", "0.00,0.00,6.00,1.00,6.00",
       "5.00,0.00,0.00|0.00,0.00,1.00|6.00|5.00|10.00|2.00|3.00|0.10|94.58"},
      // Without the stored radius the top radius is where the curve ends.
      {helix("10|8|20|0|30|6", "41|2|42|3"), "HELIX,5.00,0.00", "0.00,0.00,6.00,1.00,6.00",
       "5.00,0.00,0.00|0.00,0.00,1.00|6.00|5.00|8.00|2.00|3.00|0.10|81.96"},
      {mline("40|1|71|1"), "MLINE,3,0.00,0.00,10.00,0.00", "0.00,0.00", "1.00|0 [0.00,0.00 10.00,0.00 10.00,5.00]"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.entity);
    auto c = one(r.entity, all);
    ASSERT_TRUE(c);
    EXPECT_EQ(c->keyText(), "0," + keyDigest(r.key));
    EXPECT_EQ(c->keyText(), "0," + keyDigest(r.key));
    if (r.z.ends_with('*')) EXPECT_TRUE(c->zText().starts_with(r.z.substr(0, r.z.size() - 1))) << c->zText();
    else EXPECT_EQ(c->zText(), r.z);
    EXPECT_EQ(detailsOf(*c), r.details);
    EXPECT_EQ(c->compare(*one(r.entity, all))->text, c->description());
  }
}

TEST_F(CurvesFixture, EachPropertyItsOwnMessage) {
  const std::string poly2d = polyline2d(kTriangle);
  const std::string square = lwpolyline(kSquare);
  struct Row {
    std::string source, destination, expected;
  };
  const Row rows[] = {
      {kArc, kArc + "|39|1", "弧线图元 厚度不一样,"},
      {kArc, "0|ARC|8|0|10|1|20|2|30|3|40|5|50|30|51|150", "弧线图元 端点角度不一样,"},
      {kCircle, kCircle + "|39|1", "圆图元 厚度不一样,"},
      {kCircle, kCircle + "|210|0|220|0|230|-1", "圆图元 WCS单位正常含圆平面不一样,"},  // turned over in place
      {ellipse(0, kPi), ellipse(0, kPi, "0.25"), "椭圆图元 椭圆主半径对其小半径的比值不一样,小轴矢量不一样,面积不一样,"},
      {ellipse(0, kPi), ellipse(kPi / 2, kPi), "椭圆图元 起始角不一样,面积不一样,"},
      {ellipse(0, kPi), ellipse(0, kPi / 2), "椭圆图元 端点角不一样,面积不一样,"},
      {ellipse(0, kPi), fmt("0|ELLIPSE|8|0|10|1|20|2|30|3|11|0|21|4|31|0|40|0.5|41|0|42|%.15f", kPi),
       "椭圆图元 大轴矢量不一样,小轴矢量不一样,"},
      {kRay, "0|RAY|8|0|10|1|20|2|30|3|11|0|21|1|31|0", "射线图元 单位矢量方向不一样,"},
      {kRay, "0|RAY|8|0|10|1|20|2|30|3|11|7|21|0|31|0", "射线图元 "},  // a direction is a unit vector
      {kXline, "0|XLINE|8|0|10|1|20|2|30|3|11|1|21|0|31|0", "代理实体图元单位矢量方向不一样,"},
      {kPoint, kPoint + "|39|2", "点图元 厚度不一样,"},
      {kPoint, kPoint + "|210|0|220|1|230|0", "点图元 法向量不一样,"},
      {kPoint, kPoint + "|50|45", "点图元 角度不一样,"},
      {kPoint, "0|POINT|8|0|10|1|20|2|30|4", "点图元 Z坐标不相同,"},
      {square, lwpolyline(kSquare, "39|2|"), "多段线图元 厚度不一样,"},
      {square, lwpolyline(kSquare, "70|1|"), "多段线图元 闭合的情况不一样,"},
      {square, lwpolyline(kSquare, "43|0.5|"), "多段线图元 宽度设置不一样,"},
      {square, lwpolyline("10|0|20|0|40|1|10|10|20|0|10|10|20|5|10|0|20|5"), "多段线图元 宽度设置不一样,"},
      // Bulges are never reported as such: only the only-lines flag tells an arc from a line.
      {square, lwpolyline("10|0|20|0|42|0.5|10|10|20|0|10|10|20|5|10|0|20|5"), "多段线图元 只有一条线存在的情况不一样,"},
      {lwpolyline("10|0|20|0|42|0.5|10|10|20|0|10|10|20|5|10|0|20|5"),
       lwpolyline("10|0|20|0|42|-1|10|10|20|0|10|10|20|5|10|0|20|5"), "多段线图元 "},
      {square, lwpolyline("10|0|20|1|10|10|20|0|10|10|20|5|10|0|20|5"), "多段线图元 第0点坐标不一样,"},
      {square, lwpolyline("10|0|20|0|10|10|20|1|10|10|20|5|10|0|20|5"), "多段线图元 第1点坐标不一样,"},
      // The third vertex on is numbered from 0; 3 against 4 vertices is a count, not numbers.
      {square, lwpolyline("10|0|20|0|10|10|20|0|10|10|20|5|10|0|20|6"), "多段线图元 第1个顶点位置不一样,"},
      {lwpolyline("10|0|20|0|10|10|20|0|10|10|20|5"), square, "多段线图元 顶点个数不一样,"},
      // The same closed square drawn the other way from its second corner.
      {lwpolyline(kSquare, "70|1|"), lwpolyline("10|10|20|0|10|0|20|0|10|0|20|5|10|10|20|5", "70|1|"),
       "多段线图元 第0个顶点位置不一样,第1个顶点位置不一样,"},
      {poly2d, polyline2d(kTriangle, "|70|2"), "多段线图元 类型不一样,"},
      {polyline2d(kTriangle, "|70|4|75|5"), polyline2d(kTriangle, "|70|4|75|6"), "多段线图元 类型不一样,"},
      {poly2d, polyline2d(kTriangle, "|40|1"), "多段线图元 折线段开始宽度值不一样,"},
      {poly2d, polyline2d(kTriangle, "|41|1"), "多段线图元 折线段结束宽度值不一样,"},
      {poly2d, polyline2d(kTriangle, "|39|1"), "多段线图元 厚度不一样,"},
      {poly2d, polyline2d(kTriangle, "|70|128"), "多段线图元 生成线型的情况不一样,"},
      {poly2d, polyline2d(kTriangle, "", 2), "多段线图元 Z坐标不相同,折线标高不一样,第0个顶点位置不一样,第1个顶点位置不一样,第2个顶点位置不一样,"},
      {poly2d, polyline2d(kTriangle + "|42|0.5"), "多段线图元 第2个顶点位置不一样,"},
      {poly2d, polyline2d(kTriangle + "/10|0|20|5"), "多段线图元 顶点个数不一样,"},
      {poly2d, polyline2d("10|10|20|0/10|0|20|0/10|10|20|5"), "多段线图元 第0个顶点位置不一样,第1个顶点位置不一样,"},
      {kSpline, spline("71|2|" + kKnots + kControl), "样条曲线图元 度不一样,"},
      {kSpline, spline("71|3|44|0.5|" + kKnots + kControl), "样条曲线图元 曲线拟合的公差值不一样,"},
      {kSpline, spline("71|3|40|0|40|0|40|0|40|0|40|2|40|2|40|2|40|2|" + kControl), "样条曲线图元 样条拟合数据不一样,"},
      {kSpline, spline("71|3|" + kKnots + kControl + "|10|4|20|0|30|0"), "样条曲线图元 控制点数量不一样,顶点个数不一样,"},
      {kSpline, spline("71|3|" + kKnots + kControl + "|11|0|21|0|31|0|11|3|21|0|31|0"),
       "样条曲线图元 拟合点数量不一样,顶点个数不一样,"},
      {kSpline, spline("71|3|" + kKnots + "10|0|20|0|30|0|10|1|20|1|30|0|10|2|20|1|30|0|10|3|20|1|30|0"),
       "样条曲线图元 第3个顶点位置不一样,"},
      {kSpline, spline("71|3|" + kKnots + "10|1|20|1|30|0|10|0|20|0|30|0|10|2|20|1|30|0|10|3|20|0|30|0"),
       "样条曲线图元 第0个顶点位置不一样,第1个顶点位置不一样,"},
      {helix(), helix("10|5|20|0|30|6", "40|5|41|2|42|3", "11|0|21|5|31|0"), "螺旋线图元 起点不一样,"},
      {helix(), helix("10|5|20|0|30|6", "40|5|41|2|42|3", "11|5|21|0|31|0", "12|0|22|0|32|-1"),
       "螺旋线图元 Z坐标不相同,向量不一样,"},
      {helix(), helix("10|5|20|0|30|6", "40|7|41|2|42|3"), "螺旋线图元 顶部半径不一样,总长度不一样,"},
      {helix(), helix("10|5|20|0|30|6", "40|5|41|3|42|3"), "螺旋线图元 Z坐标不相同,高度不一样,旋转数不一样,总长度不一样,"},
      {helix(), helix("10|5|20|0|30|6", "40|5|41|4|42|1.5"), "螺旋线图元 旋转数不一样,转弯高度不一样,转弯倾斜角不一样,总长度不一样,"},
      {helix(), helix("10|5|20|0|30|6", "40|5|41|2|42|3", "11|2|21|0|31|0"), "螺旋线图元 起点不一样,基半径不一样,转弯倾斜角不一样,总长度不一样,"},
      {mline("40|1|71|1"), mline("40|2|71|1"), "多段线图元 比例不一样,"},
      {mline("40|1|71|1"), mline("40|1|71|3"), "多段线图元 闭合不一样,"},
      {mline("40|1|71|1"), mline("40|1|71|13"), "多段线图元 "},  // suppressed caps are not compared
      {mline("40|1|71|1"), mline("40|1|71|1", "11|10|21|6|31|0"), "多段线图元 第2个顶点位置不一样,"},
      {mline("40|1|71|1"), mline("40|1|71|1", "11|10|21|5|31|0|11|20|21|5|31|0"), "多段线图元 顶点个数不一样,"},
  };
  for (const Row& r : rows) EXPECT_EQ(compare(r.source, r.destination, all), r.expected) << r.destination;

  // With detail comparison off, only the common properties count.
  const Row off[] = {
      {kArc, "0|ARC|8|0|10|1|20|2|30|3|39|1|40|5|50|30|51|150", "弧线图元 "},
      {kCircle, kCircle + "|39|1|210|0|220|0|230|-1", "圆图元 "},
      {ellipse(0, kPi), ellipse(0, kPi / 2, "0.25"), "椭圆图元 "},
      {kXline, "0|XLINE|8|0|10|1|20|2|30|3|11|1|21|0|31|0", "代理实体图元"},
      {kPoint, kPoint + "|39|2|50|45", "点图元 "},
      {square, lwpolyline("10|0|20|0|10|10|20|0|10|10|20|5", "39|2|70|1|"), "多段线图元 "},
      {poly2d, polyline2d(kTriangle, "|39|1|40|1"), "多段线图元 "},
      {kSpline, spline("71|2|44|0.5|" + kKnots + kControl), "样条曲线图元 "},
      {helix(), helix("10|5|20|0|30|6", "40|7|41|4|42|1.5"), "螺旋线图元 "},
      {mline("40|1|71|1"), mline("40|2|71|3"), "多段线图元 "},
  };
  for (const Row& r : off) EXPECT_EQ(compare(r.source, r.destination, noDetails), r.expected) << r.destination;
}

TEST_F(CurvesFixture, LeadingPointsInCanonicalOrderGiveOneKey) {
  const std::pair<std::string, std::string> same[] = {
      {"0|LINE|8|0|10|0|20|0|30|1|11|10|21|5|31|2", "0|LINE|8|0|10|10|20|5|30|2|11|0|21|0|31|1"},
      {lwpolyline(kSquare), lwpolyline("10|10|20|0|10|0|20|0|10|10|20|5|10|0|20|5")},
      {polyline2d(kTriangle), polyline2d("10|10|20|0/10|0|20|0/10|10|20|5")},
      {kSpline, spline("71|3|" + kKnots + "10|1|20|1|30|0|10|0|20|0|30|0|10|2|20|1|30|0|10|3|20|0|30|0")},
      {mline("40|1|71|1"), "0|MLINE|8|0|40|1|11|10|21|0|31|0|11|0|21|0|31|0|11|10|21|5|31|0"},
  };
  for (const auto& [a, b] : same) {
    auto ca = one(a, all), cb = one(b, all);
    EXPECT_EQ(ca->keyText(), cb->keyText()) << b;
    EXPECT_EQ(ca->zText(), cb->zText()) << b;
  }
}

TEST_F(CurvesFixture, LoadTransformMovesKeysAndTexts) {
  const auto moved = platform::Matrix3d::translation({-1, -2, -3});
  auto arc = one(kArc, all, moved);
  EXPECT_EQ(arc->keyText(), "0," + keyDigest("ARC,0.00,0.00,5.00,0.52"));
  EXPECT_EQ(arc->zText(), "0.00");
  auto square = one(lwpolyline(kSquare), all, moved);
  EXPECT_EQ(square->keyText(), "0," + keyDigest("LWPOLYLINE,4,-1.00,-2.00,9.00,-2.00"));
  EXPECT_EQ(detailsOf(*square), "0.00|0|1|0|0.00|-1.00,-2.00|9.00,-2.00 [9.00,3.00 -1.00,3.00]");
  EXPECT_EQ(one(helix(), all, moved)->zText(), "-3.00,-3.00,3.00,1.00,6.00");
  EXPECT_EQ(detailsOf(*one(mline("40|1|71|1"), all, moved)), "1.00|0 [-1.00,-2.00 9.00,-2.00 9.00,3.00]");
}

TEST_F(CurvesFixture, VerticesOpenedOnTheirOwn) {
  auto d = load(polyline2d("10|0|20|0/10|10|20|0|40|1|41|2|42|0.5|70|2|50|90|91|7") +
                    "|0|POLYLINE|8|0|66|1|10|0|20|0|30|0|70|8|0|VERTEX|8|0|10|1|20|2|30|3|70|32|"
                    "0|VERTEX|8|0|10|4|20|5|30|6|70|48|0|SEQEND|8|0",
                all);
  ASSERT_EQ(d.comparers.size(), 2u);
  EXPECT_NE(dynamic_cast<CVkCustomEntity*>(d.comparers[1].get()), nullptr);  // 3D polylines are generic
  const auto ids = d.db->blockRecord(d.db->modelSpaceId()).entityIds();
  auto vertex = [&](std::size_t entity, std::size_t i) {
    const platform::Entity v = d.db->openEntity(d.db->openEntity(ids[entity]).vertices().at(i));
    return createComparer(v, platform::Matrix3d(), d.context.get(), nullptr);
  };
  auto plain = vertex(0, 0), rich = vertex(0, 1);
  ASSERT_NE(dynamic_cast<CVkAcDb2dVertex*>(rich.get()), nullptr);
  EXPECT_EQ(rich->description(), "顶点图元 ");
  EXPECT_EQ(rich->keyText(), "0," + keyDigest("VERTEX,10.00,0.00"));
  EXPECT_EQ(detailsOf(*rich), "1.00|2.00|0.50|1|1.57|7");
  EXPECT_EQ(rich->compare(*plain)->text,
            "顶点图元 顶点的开始宽度不一样,顶点的结束宽度不一样,顶点的凸出值不一样,曲线拟合的切线方向这点不一样,"
            "曲线拟合切线方向不一样,顶点标识不一样,");
  auto simple = vertex(1, 0), control = vertex(1, 1);
  ASSERT_NE(dynamic_cast<CVkAcDb3dPolylineVertex*>(control.get()), nullptr);
  EXPECT_EQ(simple->keyText(), "0," + keyDigest("VERTEX,1.00,2.00"));
  EXPECT_TRUE(simple->zText().starts_with("3.00,"));
  EXPECT_EQ(detailsOf(*control), "1");  // a spline frame control point
  EXPECT_EQ(control->compare(*simple)->text, "顶点图元 Z坐标不相同,类型不一样,");
}

TEST_F(CurvesFixture, FactoryRowsOfTheFamily) {
  auto d = load(kArc + "|" + kCircle + "|" + ellipse(0, kPi) + "|" + helix() + "|" + lwpolyline(kSquare) + "|" +
                    mline("40|1|71|1") + "|" + kPoint + "|" + polyline2d(kTriangle) + "|" + kRay + "|" + kSpline +
                    "|" + kXline,
                all);
  ASSERT_EQ(d.comparers.size(), 11u);
  const auto& c = d.comparers;
  EXPECT_NE(dynamic_cast<CVkAcDbArc*>(c[0].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbCircle*>(c[1].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbEllipse*>(c[2].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbHelix*>(c[3].get()), nullptr);  // caught before the spline it derives from
  EXPECT_NE(dynamic_cast<CVkAcDbPolyline*>(c[4].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbMline*>(c[5].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbPoint*>(c[6].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDb2dPolyline*>(c[7].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbRay*>(c[8].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbSpline*>(c[9].get()), nullptr);
  EXPECT_NE(dynamic_cast<CVkAcDbXline*>(c[10].get()), nullptr);
  EXPECT_EQ(c[3]->description(), "螺旋线图元 ");
  EXPECT_EQ(c[5]->description(), "多段线图元 ");
  EXPECT_EQ(c[10]->description(), "代理实体图元");
}
