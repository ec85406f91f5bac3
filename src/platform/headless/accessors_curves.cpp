// Accessors of arcs, circles, ellipses, rays, construction lines, points, polylines and their vertices, splines, helices, multilines, answered from the stored groups.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <string_view>

#include "platform/headless/accessor_table.h"

namespace headless {

using platform::Accessor;
using platform::DbClass;
using platform::Point3d;
using platform::Vector3d;

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
// DXF stores the angles of arcs, points and vertices in degrees; the host answers radians.
constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;
// An ellipse without start and end parameters is whole: 0 to 2 pi.
constexpr double kWholeEllipseEnd = kTwoPi;
// The host's fit tolerance of a spline that does not state one.
constexpr double kDefaultFitTolerance = 1e-10;
// Intervals of the Simpson rule for a helix's length: the integrand is the square root of a quadratic
// without oscillation, however many turns, so this is exact far beyond the two decimals written.
constexpr int kLengthSteps = 256;

double radians(double degrees) { return degrees * kRadiansPerDegree; }

// An angle brought into [0, 2 pi), as the host keeps the angles of arcs.
double normalizedAngle(double a) {
  a = std::fmod(a, kTwoPi);
  return a < 0.0 ? a + kTwoPi : a;
}

double numberOf(const platform::StoredTag& t) {
  return t.type == TagType::Real ? t.real : static_cast<double>(t.integer);
}

// The stored groups [begin, end) of one subclass: after its marker (100) up to the next marker.
struct GroupRange {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

// The groups of a subclass; when the record has no such marker (writers that leave markers out), all its
// groups, or none when `wholeWithout` is false.
GroupRange subclassGroups(const Groups& g, std::string_view subclass, bool wholeWithout = true) {
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    if (g.at(i).code != 100 || g.textAt(i) != subclass) continue;
    std::uint32_t end = i + 1;
    while (end < g.ownCount() && g.at(end).code != 100) ++end;
    return {i + 1, end};
  }
  return wholeWithout ? GroupRange{0, g.ownCount()} : GroupRange{};
}

// Every point with this x code within a range (y and z follow as code + 10 and code + 20).
std::vector<Point3d> pointsIn(const Groups& g, GroupRange r, int xCode) {
  std::vector<Point3d> out;
  for (std::uint32_t i = r.begin; i < r.end; ++i) {
    if (g.at(i).code != xCode) continue;
    Point3d p{numberOf(g.at(i)), 0.0, 0.0};
    if (i + 1 < r.end && g.at(i + 1).code == xCode + 10) {
      p.y = numberOf(g.at(i + 1));
      if (i + 2 < r.end && g.at(i + 2).code == xCode + 20) p.z = numberOf(g.at(i + 2));
    }
    out.push_back(p);
  }
  return out;
}

Point3d pointIn(const Groups& g, GroupRange r, int xCode, Point3d def = {}) {
  const std::vector<Point3d> all = pointsIn(g, r, xCode);
  return all.empty() ? def : all.front();
}

std::vector<double> realsIn(const Groups& g, GroupRange r, int code) {
  std::vector<double> out;
  for (std::uint32_t i = r.begin; i < r.end; ++i)
    if (g.at(i).code == code) out.push_back(numberOf(g.at(i)));
  return out;
}

const platform::StoredTag* tagIn(const Groups& g, GroupRange r, int code) {
  for (std::uint32_t i = r.begin; i < r.end; ++i)
    if (g.at(i).code == code) return &g.at(i);
  return nullptr;
}

double realIn(const Groups& g, GroupRange r, int code, double def) {
  const platform::StoredTag* t = tagIn(g, r, code);
  return t ? numberOf(*t) : def;
}

bool anyNonZero(const std::vector<double>& values) {
  return std::any_of(values.begin(), values.end(), [](double v) { return v != 0.0; });
}

// ---- ellipses ----

struct EllipseData {
  Point3d center;
  Vector3d major;
  Vector3d minor;
  double ratio = 1.0;
  double startParam = 0.0;
  double endParam = kWholeEllipseEnd;
};

EllipseData ellipseOf(const EntityView& e) {
  EllipseData d;
  d.center = e.g.point(10);
  d.major = e.g.vector(11, {1, 0, 0});
  d.ratio = e.g.real(40, 1.0);
  d.startParam = e.g.real(41, 0.0);
  d.endParam = e.g.real(42, kWholeEllipseEnd);
  // The minor axis is the major axis turned a quarter about the normal and shortened by the ratio.
  d.minor = e.normal().normal().cross(d.major) * d.ratio;
  return d;
}

Point3d ellipsePoint(const EllipseData& d, double param) {
  return d.center + d.major * std::cos(param) + d.minor * std::sin(param);
}

// The host's angle (from the major axis) of an ellipse parameter: atan2(ratio sin p, cos p), kept in the
// parameter's own turn so that a whole ellipse ends at 2 pi as its parameter does.
double ellipseAngle(const EllipseData& d, double param) {
  const double a = std::atan2(d.ratio * std::sin(param), std::cos(param));
  return param + std::remainder(a - param, kTwoPi);
}

// The parameter sweep from start to end, in (0, 2 pi].
double ellipseSweep(const EllipseData& d) {
  double sweep = std::fmod(d.endParam - d.startParam, kTwoPi);
  if (sweep <= 0.0) sweep += kTwoPi;
  return sweep;
}

// ---- lightweight polylines ----

std::vector<Point3d> lwVertices2d(const EntityView& e) {
  std::vector<Point3d> pts = e.g.points(10);
  for (Point3d& p : pts) p.z = 0.0;
  return pts;
}

// ---- 2D polylines and vertices ----

// The 2D polyline's type from its flags: spline-fit (4) is quadratic with surface type 5, else cubic;
// curve-fit (2) is a fit curve; otherwise simple. Values as the host's Poly2dType.
constexpr long long kSimplePoly = 0, kFitCurvePoly = 1, kQuadSplinePoly = 2, kCubicSplinePoly = 3;
constexpr long long kQuadraticSurfaceType = 5;

long long polyTypeOf(const EntityView& e) {
  const long long flags = e.g.integer(70);
  if (flags & 4) return e.g.integer(75) == kQuadraticSurfaceType ? kQuadSplinePoly : kCubicSplinePoly;
  if (flags & 2) return kFitCurvePoly;
  return kSimplePoly;
}

// A 2D vertex lies in its polyline's OCS at the polyline's elevation.
Point3d vertex2dPosition(const EntityView& e) {
  Point3d p = e.g.point(10);
  if (e.rec.owner == platform::kNone) return e.toWcs(p);
  const Groups owner(e.data, e.data.entities[e.rec.owner]);
  p.z = owner.point(10).z;
  return platform::ocsToWcs(p, owner.normal());
}

// ---- splines and helices ----

GroupRange splineGroups(const EntityView& e) { return subclassGroups(e.g, "AcDbSpline"); }
GroupRange helixGroups(const EntityView& e) { return subclassGroups(e.g, "AcDbHelix", false); }

std::vector<Point3d> controlPointsOf(const EntityView& e) { return pointsIn(e.g, splineGroups(e), 10); }

Vector3d helixAxis(const EntityView& e) {
  const Vector3d v = pointIn(e.g, helixGroups(e), 12, {0, 0, 1}).asVector().normal();
  return v.length() == 0.0 ? Vector3d{0, 0, 1} : v;
}

Point3d helixStart(const EntityView& e) { return pointIn(e.g, helixGroups(e), 11); }

// The end of the helix is the end of its curve: the last control point of the clamped spline.
Point3d helixEnd(const EntityView& e) {
  const std::vector<Point3d> cps = controlPointsOf(e);
  return cps.empty() ? helixStart(e) : cps.back();
}

// The distance of a point from the helix's axis line.
double distanceFromAxis(const EntityView& e, const Point3d& p) {
  const Vector3d d = p - pointIn(e.g, helixGroups(e), 10);
  return (d - helixAxis(e) * d.dot(helixAxis(e))).length();
}

double helixTurns(const EntityView& e) { return realIn(e.g, helixGroups(e), 41, 0.0); }
double helixTurnHeight(const EntityView& e) { return realIn(e.g, helixGroups(e), 42, 0.0); }
// The base radius is where the helix starts: its start point's distance from the axis.
double helixBaseRadius(const EntityView& e) { return distanceFromAxis(e, helixStart(e)); }
// The top radius is the one radius a helix stores (40): the start point already gives the base radius.
// Without it, where the curve ends: its end point's distance from the axis.
double helixTopRadius(const EntityView& e) {
  if (const platform::StoredTag* t = tagIn(e.g, helixGroups(e), 40)) return numberOf(*t);
  return distanceFromAxis(e, helixEnd(e));
}

// The length of the helix as the curve it describes: the radius goes linearly from base to top while the
// curve turns `turns` times and rises turns * turn height. The arc length integral over t in [0, 1] of
// sqrt(dr^2 + (2 pi turns r(t))^2 + h^2) is taken by Simpson's rule.
double helixLength(const EntityView& e) {
  const double r0 = helixBaseRadius(e), r1 = helixTopRadius(e);
  const double turns = helixTurns(e), h = turns * helixTurnHeight(e);
  const auto speed = [&](double t) {
    const double r = r0 + (r1 - r0) * t;
    const double around = kTwoPi * turns * r;
    return std::sqrt((r1 - r0) * (r1 - r0) + around * around + h * h);
  };
  const double dt = 1.0 / kLengthSteps;
  double sum = speed(0.0) + speed(1.0);
  for (int i = 1; i < kLengthSteps; ++i) sum += (i % 2 ? 4.0 : 2.0) * speed(i * dt);
  return sum * dt / 3.0;
}

}  // namespace

std::span<const AccessorImpl> curveAccessors() {
  static const AccessorImpl table[] = {
      // Arcs and circles: centre in their OCS, angles in degrees.
      pointOf(Accessor::center, DbClass::Arc, [](const EntityView& e) { return e.ocsPoint(10); }),
      realOf(Accessor::radius, DbClass::Arc, [](const EntityView& e) { return e.g.real(40); }),
      realOf(Accessor::startAngle, DbClass::Arc,
             [](const EntityView& e) { return normalizedAngle(radians(e.g.real(50))); }),
      realOf(Accessor::endAngle, DbClass::Arc, [](const EntityView& e) { return normalizedAngle(radians(e.g.real(51))); }),
      pointOf(Accessor::center, DbClass::Circle, [](const EntityView& e) { return e.ocsPoint(10); }),
      realOf(Accessor::radius, DbClass::Circle, [](const EntityView& e) { return e.g.real(40); }),

      // Ellipses are stored in WCS; their parameters are radians already.
      pointOf(Accessor::center, DbClass::Ellipse, [](const EntityView& e) { return ellipseOf(e).center; }),
      vectorOf(Accessor::majorAxis, DbClass::Ellipse, [](const EntityView& e) { return ellipseOf(e).major; }),
      vectorOf(Accessor::minorAxis, DbClass::Ellipse, [](const EntityView& e) { return ellipseOf(e).minor; }),
      realOf(Accessor::radiusRatio, DbClass::Ellipse, [](const EntityView& e) { return ellipseOf(e).ratio; }),
      realOf(Accessor::startAngle, DbClass::Ellipse,
             [](const EntityView& e) {
               const EllipseData d = ellipseOf(e);
               return ellipseAngle(d, d.startParam);
             }),
      realOf(Accessor::endAngle, DbClass::Ellipse,
             [](const EntityView& e) {
               const EllipseData d = ellipseOf(e);
               return ellipseAngle(d, d.endParam);
             }),
      pointOf(Accessor::startPoint, DbClass::Ellipse,
              [](const EntityView& e) {
                const EllipseData d = ellipseOf(e);
                return ellipsePoint(d, d.startParam);
              }),
      pointOf(Accessor::endPoint, DbClass::Ellipse,
              [](const EntityView& e) {
                const EllipseData d = ellipseOf(e);
                return ellipsePoint(d, d.endParam);
              }),
      // The area of a whole ellipse is pi a b. An elliptic arc is an open curve, whose area the host takes
      // as that of the region closed by the chord from its end to its start: the parameter sector less the
      // triangle of the centre and the two ends, a b (sweep - sin sweep) / 2 (which is pi a b at 2 pi).
      realOf(Accessor::getArea, DbClass::Ellipse,
             [](const EntityView& e) {
               const EllipseData d = ellipseOf(e);
               const double a = d.major.length(), b = a * d.ratio, sweep = ellipseSweep(d);
               return a * b * (sweep - std::sin(sweep)) / 2.0;
             }),

      // Rays and construction lines: base point and direction in WCS.
      pointOf(Accessor::basePoint, DbClass::Ray, [](const EntityView& e) { return e.g.point(10); }),
      vectorOf(Accessor::unitDir, DbClass::Ray, [](const EntityView& e) { return e.g.vector(11, {1, 0, 0}).normal(); }),
      pointOf(Accessor::secondPoint, DbClass::Ray,
              [](const EntityView& e) { return e.g.point(10) + e.g.vector(11, {1, 0, 0}).normal(); }),
      pointOf(Accessor::basePoint, DbClass::Xline, [](const EntityView& e) { return e.g.point(10); }),
      vectorOf(Accessor::unitDir, DbClass::Xline,
               [](const EntityView& e) { return e.g.vector(11, {1, 0, 0}).normal(); }),
      pointOf(Accessor::secondPoint, DbClass::Xline,
              [](const EntityView& e) { return e.g.point(10) + e.g.vector(11, {1, 0, 0}).normal(); }),

      // Points: in WCS; the angle of the X axis of the UCS they were drawn in; a point always lies in the
      // plane through it normal to its extrusion, so its planarity is "planar".
      realOf(Accessor::ecsRotation, DbClass::Point, [](const EntityView& e) { return radians(e.g.real(50)); }),
      integerOf(Accessor::getPlane, DbClass::Point, [](const EntityView&) { return 1LL; }),

      // Lightweight polylines: vertices in their OCS at the elevation (38).
      integerOf(Accessor::numVerts, DbClass::Polyline,
                [](const EntityView& e) { return static_cast<long long>(e.g.points(10).size()); }),
      pointsOf(Accessor::getPoint2dAt, DbClass::Polyline, lwVertices2d),
      pointsOf(Accessor::getPointAt, DbClass::Polyline,
               [](const EntityView& e) {
                 std::vector<Point3d> pts = lwVertices2d(e);
                 const double elevation = e.g.real(38);
                 const platform::Vector3d normal = e.normal();  // looked up once: a polyline may have 10^5 vertices
                 for (Point3d& p : pts) p = platform::ocsToWcs({p.x, p.y, elevation}, normal);
                 return pts;
               }),
      integerOf(Accessor::isClosed, DbClass::Polyline, [](const EntityView& e) { return e.g.integer(70) & 1; }),
      integerOf(Accessor::isOnlyLines, DbClass::Polyline,
                [](const EntityView& e) { return anyNonZero(e.g.reals(42)) ? 0LL : 1LL; }),
      // Widths per vertex (40, 41) or one constant width (43).
      integerOf(Accessor::hasWidth, DbClass::Polyline,
                [](const EntityView& e) {
                  return anyNonZero(e.g.reals(40)) || anyNonZero(e.g.reals(41)) || anyNonZero(e.g.reals(43)) ? 1LL
                                                                                                             : 0LL;
                }),

      // 2D polylines: group 10 carries only the elevation; the vertices are the VERTEX records after them.
      integerOf(Accessor::polyType, DbClass::Polyline2d, polyTypeOf),
      realOf(Accessor::defaultStartWidth, DbClass::Polyline2d, [](const EntityView& e) { return e.g.real(40); }),
      realOf(Accessor::defaultEndWidth, DbClass::Polyline2d, [](const EntityView& e) { return e.g.real(41); }),
      realOf(Accessor::elevation, DbClass::Polyline2d, [](const EntityView& e) { return e.g.point(10).z; }),
      integerOf(Accessor::isLinetypeGenerationOn, DbClass::Polyline2d,
                [](const EntityView& e) { return (e.g.integer(70) & 128) ? 1LL : 0LL; }),

      // 2D vertices: positioned by their polyline; widths, bulge, tangent (degrees) and identifier.
      pointOf(Accessor::position, DbClass::Vertex2d, vertex2dPosition),
      realOf(Accessor::startWidth, DbClass::Vertex2d, [](const EntityView& e) { return e.g.real(40); }),
      realOf(Accessor::endWidth, DbClass::Vertex2d, [](const EntityView& e) { return e.g.real(41); }),
      realOf(Accessor::bulge, DbClass::Vertex2d, [](const EntityView& e) { return e.g.real(42); }),
      integerOf(Accessor::isTangentUsed, DbClass::Vertex2d,
                [](const EntityView& e) { return (e.g.integer(70) & 2) ? 1LL : 0LL; }),
      realOf(Accessor::tangent, DbClass::Vertex2d, [](const EntityView& e) { return radians(e.g.real(50)); }),
      integerOf(Accessor::vertexIdentifier, DbClass::Vertex2d, [](const EntityView& e) { return e.g.integer(91); }),
      // 3D polyline vertices: a spline frame control point (16) or a spline-fit vertex (8), else simple, as
      // the host's Vertex3dType (0 simple, 1 control, 2 fit).
      integerOf(Accessor::vertexType, DbClass::Polyline3dVertex,
                [](const EntityView& e) {
                  const long long flags = e.g.integer(70);
                  return (flags & 16) ? 1LL : (flags & 8) ? 2LL : 0LL;
                }),

      // Splines: the groups of the AcDbSpline subclass (a helix adds groups with the same codes after it).
      integerOf(Accessor::degree, DbClass::Spline,
                [](const EntityView& e) { return platform::saturatingInteger(realIn(e.g, splineGroups(e), 71, 0.0)); }),
      realOf(Accessor::fitTolerance, DbClass::Spline,
             [](const EntityView& e) { return realIn(e.g, splineGroups(e), 44, kDefaultFitTolerance); }),
      realsOf(Accessor::knots, DbClass::Spline, [](const EntityView& e) { return realsIn(e.g, splineGroups(e), 40); }),
      pointsOf(Accessor::controlPoints, DbClass::Spline, controlPointsOf),
      pointsOf(Accessor::fitPoints, DbClass::Spline, [](const EntityView& e) { return pointsIn(e.g, splineGroups(e), 11); }),
      integerOf(Accessor::numControlPoints, DbClass::Spline,
                [](const EntityView& e) { return static_cast<long long>(controlPointsOf(e).size()); }),
      integerOf(Accessor::numFitPoints, DbClass::Spline,
                [](const EntityView& e) { return static_cast<long long>(pointsIn(e.g, splineGroups(e), 11).size()); }),

      // Helices: the groups of the AcDbHelix subclass, which follow the spline that draws them.
      pointOf(Accessor::axisPoint, DbClass::Helix, [](const EntityView& e) { return pointIn(e.g, helixGroups(e), 10); }),
      vectorOf(Accessor::axisVector, DbClass::Helix, helixAxis),
      pointOf(Accessor::startPoint, DbClass::Helix, helixStart),
      pointOf(Accessor::endPoint, DbClass::Helix, helixEnd),
      realOf(Accessor::turns, DbClass::Helix, helixTurns),
      realOf(Accessor::turnHeight, DbClass::Helix, helixTurnHeight),
      // The total height: every turn rises by the turn height.
      realOf(Accessor::height, DbClass::Helix, [](const EntityView& e) { return helixTurns(e) * helixTurnHeight(e); }),
      realOf(Accessor::baseRadius, DbClass::Helix, helixBaseRadius),
      realOf(Accessor::topRadius, DbClass::Helix, helixTopRadius),
      // The slope of a turn at the base: its rise against the length of the base circle.
      realOf(Accessor::turnSlope, DbClass::Helix,
             [](const EntityView& e) { return std::atan2(helixTurnHeight(e), kTwoPi * helixBaseRadius(e)); }),
      realOf(Accessor::totalLength, DbClass::Helix, helixLength),

      // Multilines: scale (40), the closed flag (bit 2 of 71), vertices (11) in WCS.
      realOf(Accessor::scale, DbClass::Mline, [](const EntityView& e) { return e.g.real(40, 1.0); }),
      integerOf(Accessor::isClosed, DbClass::Mline, [](const EntityView& e) { return (e.g.integer(71) & 2) ? 1LL : 0LL; }),
      pointsOf(Accessor::vertexAt, DbClass::Mline, [](const EntityView& e) { return e.g.points(11); }),
  };
  return table;
}

}  // namespace headless
