// Splines: keyed by their point count and two leading points in canonical order; compared on degree, fit
// tolerance, knots, point counts and every control and fit point.
#include "comparers/CVkAcDbSpline.h"

#include "comparers/CapturesCurves.h"

namespace {

using platform::Accessor;

// The points that draw the spline: its control points, or its fit points when it has fewer than two
// control points (a spline given by fit points alone).
void splineKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
               KeyTexts& out) {
  std::vector<platform::Point3d> points = e.points(Accessor::controlPoints);  // AcDbSpline::getControlPointAt
  if (points.size() < 2) points = e.points(Accessor::fitPoints);              // AcDbSpline::getFitPointAt
  capture::pointListKey(points, load, self, out);
}

const DetailProperty kDetails[] = {
    {"度不一样,", capture::int1<Accessor::degree>},                          // AcDbSpline::degree
    {"曲线拟合的公差值不一样,", capture::real2<Accessor::fitTolerance>},     // AcDbSpline::fitTolerance
    {"样条拟合数据不一样,", capture::realsFolded<Accessor::knots>},          // AcDbSpline::getNurbsData (knots)
    {"控制点数量不一样,", capture::int1<Accessor::numControlPoints>},        // AcDbSpline::numControlPoints
    {"拟合点数量不一样,", capture::int1<Accessor::numFitPoints>},            // AcDbSpline::numFitPoints
    {"顶点位置不一样,", nullptr, capture::points2<Accessor::controlPoints>},  // AcDbSpline::getControlPointAt
    {"顶点位置不一样,", nullptr, capture::points2<Accessor::fitPoints>},      // AcDbSpline::getFitPointAt
};

const ComparerTraits kTraits{splineKey, kDetails};

}  // namespace

CVkAcDbSpline::CVkAcDbSpline() : CVkDetailedEntity(kTraits) {}
