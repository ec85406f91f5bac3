// Extents of curves: the box collector, exact elliptic arcs, bulges, NURBS evaluation, circles to polylines.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "platform/headless/dxf_extents_parts.h"

namespace headless::extents {

using platform::DatabaseData;
using platform::EntityRec;
using platform::Extents3d;
using platform::Matrix3d;
using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

// ---- the box collector ----

BoxSink BoxSink::placed(const Matrix3d& inner) const {
  if (inner.isIdentity()) return *this;
  return BoxSink(box_, identity_ ? inner : m_ * inner, false, tracer_);
}

void BoxSink::add(const Point3d& p) {
  if (!isFinite(p)) return;
  const Point3d w = identity_ ? p : m_.transform(p);
  if (!isFinite(w)) return;
  box_->addPoint(w);
  if (tracer_) tracer_->point(w);
}

void BoxSink::addToBox(const Point3d& p) {
  if (!isFinite(p)) return;
  const Point3d w = identity_ ? p : m_.transform(p);
  if (isFinite(w)) box_->addPoint(w);
}

namespace {

// The cosine and sine of an angle. Circles in their plane ask for the quarter turns every time; those are
// worked out once by the same functions, so the values are the very ones a call would give.
struct CosSin {
  double cos, sin;
};
CosSin cosSin(double t) {
  struct Known {
    double t;
    CosSin value;
  };
  static const std::array<Known, 4> kQuarters = [] {
    const double quarter = std::atan2(1.0, 0.0);
    std::array<Known, 4> known{};
    std::size_t i = 0;
    for (double angle : {0.0, kPi, quarter, quarter + kPi}) known[i++] = {angle, {std::cos(angle), std::sin(angle)}};
    return known;
  }();
  for (const Known& k : kQuarters)
    if (std::bit_cast<std::uint64_t>(k.t) == std::bit_cast<std::uint64_t>(t)) return k.value;
  return {std::cos(t), std::sin(t)};
}

// atan2(y, x), with the cases of an axis-aligned vector, which the standard fixes, answered without a call.
double angleOf(double y, double x) {
  static const double kQuarter = std::atan2(1.0, 0.0);
  if (y == 0.0 && !std::signbit(y) && x > 0.0) return 0.0;
  if (x == 0.0 && y > 0.0) return kQuarter;
  return std::atan2(y, x);
}

}  // namespace

void BoxSink::addArc(const Point3d& centre, const Vector3d& u, const Vector3d& v, double start, double sweep,
                     bool backward) {
  if (!isFinite(centre) || !isFinite(u) || !isFinite(v) || !isFinite(start) || !isFinite(sweep) || sweep < 0.0) return;
  const Point3d c = identity_ ? centre : m_.transform(centre);
  const Vector3d a = identity_ ? u : m_.transform(u);
  const Vector3d b = identity_ ? v : m_.transform(v);
  if (tracer_ && isFinite(c) && isFinite(a) && isFinite(b)) tracer_->arc(c, a, b, start, sweep, backward);
  const auto at = [&](double t) {
    const CosSin cs = cosSin(t);
    return c + a * cs.cos + b * cs.sin;
  };
  const auto put = [&](const Point3d& p) {
    if (isFinite(p)) box_->addPoint(p);
  };
  const bool whole = sweep >= kTwoPi;
  put(at(start));
  if (!whole) put(at(start + sweep));
  // Along each world axis the coordinate is c + a cos t + b sin t, extreme where tan t = b / a: at that angle
  // and half a turn further. Each extreme inside the sweep is a point of the arc that widens the box.
  const double as[3] = {a.x, a.y, a.z}, bs[3] = {b.x, b.y, b.z};
  for (int k = 0; k < 3; ++k) {
    if (as[k] == 0.0 && bs[k] == 0.0) continue;
    const double t0 = angleOf(bs[k], as[k]);
    for (double t : {t0, t0 + kPi}) {
      if (!whole) {
        double d = std::fmod(t - start, kTwoPi);
        if (d < 0.0) d += kTwoPi;
        if (d > sweep) continue;
      }
      put(at(t));
    }
  }
}

void BoxSink::addBox(const Extents3d& e) {
  if (e.isEmpty()) return;
  for (int i = 0; i < 8; ++i)
    add({(i & 1) ? e.max.x : e.min.x, (i & 2) ? e.max.y : e.min.y, (i & 4) ? e.max.z : e.min.z});
}

double ccwSweep(double start, double end) {
  double s = std::fmod(end - start, kTwoPi);
  if (s < 0.0) s += kTwoPi;
  // Ends closer than this (radians) are taken as meeting: angles written with a few digits drift by about this.
  constexpr double kMeet = 1e-12;
  return s <= kMeet ? kTwoPi : s;
}

void addBulgeSegment(BoxSink& sink, const Point3d& a, const Point3d& b, double bulge) {
  sink.add(a);
  const double dx = b.x - a.x, dy = b.y - a.y;
  const double chord = std::hypot(dx, dy);
  if (bulge == 0.0 || !isFinite(bulge) || chord == 0.0 || !isFinite(chord)) {
    sink.add(b);
    return;
  }
  // The arc's outline reaches b itself.
  sink.addToBox(b);
  // The centre lies on the chord's perpendicular bisector, left of a -> b for a counter-clockwise (positive)
  // bulge, at (1 - bulge^2) / (4 bulge) chords from the chord's middle.
  const double offset = (1.0 - bulge * bulge) / (4.0 * bulge);
  const Point3d centre{(a.x + b.x) / 2.0 - dy * offset, (a.y + b.y) / 2.0 + dx * offset, a.z};
  const double r = std::hypot(a.x - centre.x, a.y - centre.y);
  const double included = 4.0 * std::atan(bulge);
  double start = std::atan2(a.y - centre.y, a.x - centre.x);
  double sweep = included;
  const bool clockwise = sweep < 0.0;
  if (clockwise) {  // the same arc run counter-clockwise from b
    start += sweep;
    sweep = -sweep;
  }
  sink.addArc(centre, {r, 0, 0}, {0, r, 0}, start, sweep, clockwise);
}

void addBulgeChain(BoxSink& sink, const std::vector<BulgeVertex>& vertices, bool closed) {
  const std::size_t n = vertices.size();
  if (n == 0) return;
  sink.add(vertices[0].p);
  for (std::size_t i = 0; i + 1 < n; ++i) addBulgeSegment(sink, vertices[i].p, vertices[i + 1].p, vertices[i].bulge);
  if (closed && n > 1) addBulgeSegment(sink, vertices[n - 1].p, vertices[0].p, vertices[n - 1].bulge);
}

int clampedInt(double v, int lo, int hi) {
  if (!(v >= lo)) return lo;  // also NaN
  if (v > hi) return hi;
  return static_cast<int>(v);
}

// ---- NURBS ----

namespace {

// Samples per knot span, and a ceiling on all evaluations of one curve: 32 samples frame a cubic span to a few
// millionths of its size; the ceiling keeps curves with very many spans cheap.
constexpr int kSamplesPerSpan = 32;
constexpr long kMaxSamples = 65536;
// Degrees above this are not met in drawings and would make evaluation costly.
constexpr int kMaxDegree = 32;

struct Homogeneous {
  double x, y, z, w;
};

// de Boor's algorithm in homogeneous coordinates, for a parameter u of span k (knots[k] <= u <= knots[k + 1]).
Point3d evaluate(const Nurbs& c, bool rational, std::size_t k, double u, std::vector<Homogeneous>& d) {
  const std::size_t p = static_cast<std::size_t>(c.degree);
  for (std::size_t j = 0; j <= p; ++j) {
    const Point3d& q = c.points[j + k - p];
    const double w = rational ? c.weights[j + k - p] : 1.0;
    d[j] = {q.x * w, q.y * w, q.z * w, w};
  }
  for (std::size_t r = 1; r <= p; ++r)
    for (std::size_t j = p; j >= r; --j) {
      const double lo = c.knots[j + k - p], hi = c.knots[j + 1 + k - r];
      const double alpha = hi > lo ? (u - lo) / (hi - lo) : 0.0;
      d[j] = {(1.0 - alpha) * d[j - 1].x + alpha * d[j].x, (1.0 - alpha) * d[j - 1].y + alpha * d[j].y,
              (1.0 - alpha) * d[j - 1].z + alpha * d[j].z, (1.0 - alpha) * d[j - 1].w + alpha * d[j].w};
    }
  const Homogeneous& h = d[p];
  return {h.x / h.w, h.y / h.w, h.z / h.w};
}

bool isValidCurve(const Nurbs& c, bool& rational) {
  const std::size_t n = c.points.size();
  if (c.degree < 1 || c.degree > kMaxDegree || n < static_cast<std::size_t>(c.degree) + 1) return false;
  if (c.knots.size() != n + static_cast<std::size_t>(c.degree) + 1) return false;
  for (std::size_t i = 0; i < c.knots.size(); ++i) {
    if (!isFinite(c.knots[i])) return false;
    if (i > 0 && c.knots[i] < c.knots[i - 1]) return false;
  }
  if (!(c.knots[n] > c.knots[static_cast<std::size_t>(c.degree)])) return false;
  rational = false;
  if (c.weights.size() == n) {
    // Non-positive weights leave the control hull; such a curve is framed by its control points instead.
    for (double w : c.weights)
      if (!(w > 0.0) || !isFinite(w)) return false;
    rational = std::any_of(c.weights.begin(), c.weights.end(), [&](double w) { return w != c.weights[0]; });
  }
  return true;
}

}  // namespace

void addNurbs(BoxSink& sink, const Nurbs& c) {
  bool rational = false;
  if (!isValidCurve(c, rational)) {
    for (const Point3d& p : c.points) sink.add(p);
    return;
  }
  const std::size_t p = static_cast<std::size_t>(c.degree), n = c.points.size();
  long spans = 0;
  for (std::size_t k = p; k < n; ++k)
    if (c.knots[k + 1] > c.knots[k]) ++spans;
  const long perSpan = std::clamp<long>(kMaxSamples / std::max<long>(spans, 1), 2, kSamplesPerSpan);
  std::vector<Homogeneous> d(p + 1);
  for (std::size_t k = p; k < n; ++k) {
    const double lo = c.knots[k], hi = c.knots[k + 1];
    if (!(hi > lo)) continue;
    for (long i = 0; i <= perSpan; ++i) {
      const double u = i == perSpan ? hi : lo + (hi - lo) * static_cast<double>(i) / static_cast<double>(perSpan);
      sink.add(evaluate(c, rational, k, u, d));
    }
  }
}

// ---- reading groups ----

double numberOf(const StoredTag& t) {
  if (t.type == TagType::Real) return t.real;
  if (isIntegral(t.type)) return static_cast<double>(t.integer);
  return 0.0;
}

Point3d pointAt(const Groups& g, std::uint32_t i, std::uint32_t* next) {
  const int code = g.at(i).code;
  Point3d p{numberOf(g.at(i)), 0.0, 0.0};
  std::uint32_t j = i + 1;
  if (j < g.ownCount() && g.at(j).code == code + 10) {
    p.y = numberOf(g.at(j++));
    if (j < g.ownCount() && g.at(j).code == code + 20) p.z = numberOf(g.at(j++));
  }
  if (next) *next = j;
  return p;
}

GroupRange subclassRange(const Groups& g, std::string_view subclass) {
  const std::uint32_t own = g.ownCount();
  for (std::uint32_t i = 0; i < own; ++i) {
    if (g.at(i).code != 100 || g.textAt(i) != subclass) continue;
    std::uint32_t end = i + 1;
    while (end < own && g.at(end).code != 100) ++end;
    return {i + 1, end};
  }
  return {0, own};
}

// ---- curve entities ----

bool addArcEntity(const Groups& g, BoxSink& sink, bool isCircle) {
  const double r = g.real(40);
  // A circle or arc needs a positive radius; the host does not make one without.
  if (!(r > 0.0) || !isFinite(r)) return false;
  const Point3d c = g.point(10);
  double start = 0.0, sweep = kTwoPi;
  if (!isCircle) {
    start = radians(g.real(50));
    sweep = ccwSweep(start, radians(g.real(51, 360.0)));
  }
  BoxSink ocs = sink.placed(platform::ocsToWcs(g.normal()));
  ocs.addArc(c, {r, 0, 0}, {0, r, 0}, start, sweep);
  return true;
}

bool addEllipse(const Groups& g, BoxSink& sink) {
  const Point3d c = g.point(10);
  const Vector3d major = g.vector(11, {1, 0, 0});
  const double ratio = g.real(40, 1.0);
  const double len = major.length();
  if (!(len > 0.0) || !isFinite(len) || !isFinite(ratio)) return false;
  // The minor axis is the normal turned onto the major axis, scaled by the ratio.
  const Vector3d minor = g.normal().cross(major).normal() * (len * std::fabs(ratio));
  double start = g.real(41, 0.0), end = g.real(42, kTwoPi);
  double sweep = ccwSweep(start, end);
  // Parameters of a whole ellipse run 0 .. 2 pi; written ones drift in the last digits.
  if (std::fabs(end - start - kTwoPi) < 1e-9) sweep = kTwoPi;
  sink.addArc(c, major, minor, start, sweep);
  return true;
}

bool addSpline(const Groups& g, BoxSink& sink) {
  const GroupRange r = subclassRange(g, "AcDbSpline");
  Nurbs curve;
  std::vector<Point3d> fit;
  for (std::uint32_t i = r.begin; i < r.end;) {
    const StoredTag& t = g.at(i);
    std::uint32_t next = i + 1;
    switch (t.code) {
      case 71: curve.degree = clampedInt(numberOf(t), -1, kMaxDegree + 1); break;
      case 40: curve.knots.push_back(numberOf(t)); break;
      case 41: curve.weights.push_back(numberOf(t)); break;
      case 10: curve.points.push_back(pointAt(g, i, &next)); break;
      case 11: fit.push_back(pointAt(g, i, &next)); break;
      default: break;
    }
    i = next;
  }
  if (!curve.points.empty()) {
    addNurbs(sink, curve);
  } else {
    // Without control points the fit points, which the curve passes through, frame it.
    for (const Point3d& p : fit) sink.add(p);
  }
  return !curve.points.empty() || !fit.empty();
}

bool addLwPolyline(const Groups& g, BoxSink& sink) {
  const GroupRange r = subclassRange(g, "AcDbPolyline");
  double elevation = 0.0;
  bool closed = false;
  std::vector<BulgeVertex> vertices;
  for (std::uint32_t i = r.begin; i < r.end; ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 38) elevation = numberOf(t);
    else if (t.code == 70) closed = (platform::saturatingInteger(numberOf(t)) & 1) != 0;
    else if (t.code == 10) vertices.push_back({pointAt(g, i), 0.0});
    else if (t.code == 42 && !vertices.empty()) vertices.back().bulge = numberOf(t);
  }
  if (vertices.empty()) return false;
  for (BulgeVertex& v : vertices) v.p.z = elevation;
  BoxSink ocs = sink.placed(platform::ocsToWcs(g.normal()));
  addBulgeChain(ocs, vertices, closed);
  return true;
}

bool addPolyline(const DatabaseData& data, std::uint32_t index, BoxSink& sink) {
  const EntityRec& e = data.entities[index];
  const Groups g(data, e);
  const long long flags = g.integer(70);
  // The vertices are stored right after their polyline.
  const std::size_t end = std::min<std::size_t>(std::size_t{index} + 1 + e.subCount, data.entities.size());
  struct Vertex {
    Point3d p;
    double bulge;
    long long flags;
  };
  std::vector<Vertex> vertices;
  for (std::size_t i = std::size_t{index} + 1; i < end; ++i) {
    const Groups v(data, data.entities[i]);
    vertices.push_back({v.point(10), v.real(42), v.integer(70)});
  }
  const auto keep = [&](long long vertexFlags) {
    if (flags & 64) return (vertexFlags & 64) != 0;  // polyface mesh: face records (128 alone) carry no point
    return (vertexFlags & 16) == 0;                   // spline frame control points are not drawn
  };
  std::vector<Vertex> drawn;
  for (const Vertex& v : vertices)
    if (keep(v.flags)) drawn.push_back(v);
  // A spline-fit polyline holding only its frame still shows where it is.
  if (drawn.empty() && !(flags & 64)) drawn = vertices;
  if (drawn.empty()) return false;
  const bool is3d = (flags & (8 | 16 | 64)) != 0;
  if (is3d) {
    for (const Vertex& v : drawn) sink.add(v.p);
    return true;
  }
  // A 2D polyline: vertices in its OCS at the elevation its own point gives.
  const double elevation = g.point(10).z;
  std::vector<BulgeVertex> chain;
  for (const Vertex& v : drawn) chain.push_back({{v.p.x, v.p.y, elevation}, v.bulge});
  BoxSink ocs = sink.placed(platform::ocsToWcs(g.normal()));
  addBulgeChain(ocs, chain, (flags & 1) != 0);
  return true;
}

}  // namespace headless::extents
