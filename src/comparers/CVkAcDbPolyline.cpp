// Lightweight polylines: keyed by vertex count and their two leading vertices in canonical order; compared
// on thickness, the closed, only-lines and width flags, the leading vertices and every vertex after them.
#include "comparers/CVkAcDbPolyline.h"

#include "comparers/CapturesCurves.h"

namespace {

using platform::Accessor;

// The key takes the leading vertices as 2D points (OCS x and y, Z 0) after the load transform; with one
// vertex or none it stays empty. The Z text is empty.
void polylineKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                 KeyTexts& out) {
  platform::Point3d a, b;
  if (!capture::leadingPair(e.points(Accessor::getPoint2dAt), load, a, b)) return;  // AcDbPolyline::getPoint2dAt
  platform::fmtTo(out.fullKey, "%s,%d,%.2f,%.2f,%.2f,%.2f", self.dxfName(),
                              e.integer(Accessor::numVerts),  // AcDbPolyline::numVerts
                              a.x, a.y, b.x, b.y);
}

// AcDbPolyline::hasBulges: the flag reaches "%.2f" as an integer, which prints "0.00" whatever it is. Kept
// so on purpose: two polylines never differ by their bulge text.
std::string bulgeText(const platform::Entity&, const platform::Matrix3d&) { return "0.00"; }
void noValues(const platform::Entity&, const platform::Matrix3d&, TextDigest&) {}  // the text never changes
constexpr TextCapture bulge{bulgeText, noValues};

// "%.2f,%.2f" of every vertex from the third on, after the load transform; the list's numbering starts
// there, so the third vertex is reported as number 0.
std::vector<std::string> verticesAfterLeadingPairTexts(const platform::Entity& e, const platform::Matrix3d& load) {
  std::vector<std::string> out;
  const std::vector<platform::Point3d> points = e.points(Accessor::getPointAt);  // AcDbPolyline::getPointAt
  for (std::size_t i = 2; i < points.size(); ++i) {
    const platform::Point3d p = load.transform(points[i]);
    out.push_back(platform::fmt("%.2f,%.2f", p.x, p.y));
  }
  return out;
}
void verticesAfterLeadingPairValues(const platform::Entity& e, const platform::Matrix3d& load, TextDigest& digest) {
  capture::pointsValues(e.points(Accessor::getPointAt), 2, load, digest);
}
constexpr ListCapture verticesAfterLeadingPair{verticesAfterLeadingPairTexts, verticesAfterLeadingPairValues};

const DetailProperty kDetails[] = {
    {"厚度不一样,", capture::real2<Accessor::thickness>},                         // AcDbPolyline::thickness
    {"闭合的情况不一样,", capture::int1<Accessor::isClosed>},                     // AcDbPolyline::isClosed
    {"只有一条线存在的情况不一样,", capture::int1<Accessor::isOnlyLines>},        // AcDbPolyline::isOnlyLines
    {"宽度设置不一样,", capture::int1<Accessor::hasWidth>},                       // AcDbPolyline::hasWidth
    {"凸起因素不一样,", bulge},                                                   // AcDbPolyline::hasBulges
    {"第0点坐标不一样,", capture::leadingPoint<Accessor::getPoint2dAt, 0>},       // AcDbPolyline::getPoint2dAt
    {"第1点坐标不一样,", capture::leadingPoint<Accessor::getPoint2dAt, 1>},       // AcDbPolyline::getPoint2dAt
    {"顶点位置不一样,", nullptr, verticesAfterLeadingPair},                       // AcDbPolyline::getPointAt
};

const ComparerTraits kTraits{polylineKey, kDetails};

}  // namespace

CVkAcDbPolyline::CVkAcDbPolyline() : CVkDetailedEntity(kTraits) {}
