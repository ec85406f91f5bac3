// Extents of hatches and multi-polygons from their boundary paths, in the entity's OCS at its elevation.
#include <cmath>

#include "platform/headless/dxf_extents_parts.h"

namespace headless::extents {

using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

namespace {

// Counts above this are damaged; the loops stop at the record's end long before anyway.
constexpr int kMaxCount = 1 << 30;

// Reads the boundary groups in order. Counts come from the file, so every step checks what is really there
// and stops at the end of the record.
class Cursor {
 public:
  Cursor(const Groups& g, std::uint32_t begin, std::uint32_t end) : g_(g), i_(begin), end_(end) {}
  bool done() const { return i_ >= end_; }
  bool at(int code) const { return i_ < end_ && g_.at(i_).code == code; }
  int code() const { return done() ? -1 : g_.at(i_).code; }
  int codeAfter() const { return i_ + 1 < end_ ? g_.at(i_ + 1).code : -1; }
  double value() const { return done() ? 0.0 : numberOf(g_.at(i_)); }
  void skip() { ++i_; }
  // The value of a group with this code when it comes next (consumed), else the default (nothing consumed).
  double take(int code, double def = 0.0) {
    if (!at(code)) return def;
    return numberOf(g_.at(i_++));
  }
  bool takePoint(int code, Point3d& p) {
    if (!at(code)) return false;
    std::uint32_t next = i_ + 1;
    p = pointAt(g_, i_, &next);
    i_ = std::min(next, end_);
    return true;
  }

 private:
  const Groups& g_;
  std::uint32_t i_, end_;
};

// Source boundary objects close a path: 97 count, then that many handles (330).
void skipSources(Cursor& c) {
  if (!c.at(97)) return;
  c.skip();
  while (c.at(330)) c.skip();
}

void readPolylinePath(Cursor& c, BoxSink& sink, double elevation) {
  c.take(72);
  c.take(73);
  const int count = clampedInt(c.take(93), 0, kMaxCount);
  std::vector<BulgeVertex> vertices;
  for (int k = 0; k < count; ++k) {
    Point3d p;
    if (!c.takePoint(10, p)) break;
    vertices.push_back({{p.x, p.y, elevation}, c.take(42)});
  }
  // A boundary is a closed loop whatever its flag says.
  addBulgeChain(sink, vertices, true);
}

// Arc and ellipse edges that run clockwise store the complements (360 - angle) of their ends: the same arc run
// counter-clockwise goes from 360 - end to 360 - start.
void counterClockwise(double& start, double& end, bool ccw) {
  if (ccw) return;
  const double s = start;
  start = 360.0 - end;
  end = 360.0 - s;
}

double edgeSweep(double startDeg, double endDeg) {
  // Ends a whole turn apart (within what written angles drift) make the whole curve.
  constexpr double kWholeTurnTolerance = 1e-9;
  if (std::fabs(std::fabs(endDeg - startDeg) - 360.0) < kWholeTurnTolerance) return kTwoPi;
  return ccwSweep(radians(startDeg), radians(endDeg));
}

void readSplineEdge(Cursor& c, BoxSink& sink, double elevation, bool moreEdges) {
  Nurbs curve;
  curve.degree = clampedInt(c.take(94, 3), -1, 64);
  c.take(73);
  c.take(74);
  c.take(95);
  c.take(96);
  std::vector<Point3d> fit;
  while (!c.done()) {
    Point3d p;
    if (c.at(40)) curve.knots.push_back(c.take(40));
    else if (c.at(42)) curve.weights.push_back(c.take(42));
    else if (c.takePoint(10, p)) curve.points.push_back({p.x, p.y, elevation});
    else break;
  }
  // Fit data (R2010 and later) also starts with 97, as do the source objects after the last edge: it is fit
  // data when fit points or tangents follow, or when another edge does.
  if (c.at(97)) {
    const int after = c.codeAfter();
    if (after == 11 || after == 12 || after == 13 || after == 97 || (moreEdges && after == 72 && c.value() == 0.0)) {
      c.skip();
      Point3d p;
      while (c.takePoint(11, p)) fit.push_back({p.x, p.y, elevation});
      c.takePoint(12, p);
      c.takePoint(13, p);
    }
  }
  if (!curve.points.empty()) addNurbs(sink, curve);
  else
    for (const Point3d& p : fit) sink.add(p);
}

void readEdgePath(Cursor& c, BoxSink& sink, double elevation) {
  const int count = clampedInt(c.take(93), 0, kMaxCount);
  for (int k = 0; k < count && c.at(72); ++k) {
    const int type = clampedInt(c.take(72), 0, 5);
    Point3d a, b;
    switch (type) {
      case 1:  // line
        if (c.takePoint(10, a)) sink.add({a.x, a.y, elevation});
        if (c.takePoint(11, b)) sink.add({b.x, b.y, elevation});
        break;
      case 2: {  // circular arc
        c.takePoint(10, a);
        const double r = c.take(40);
        double start = c.take(50), end = c.take(51, 360.0);
        const bool ccw = c.take(73, 1.0) != 0.0;
        counterClockwise(start, end, ccw);
        if (r > 0.0)
          sink.addArc({a.x, a.y, elevation}, {r, 0, 0}, {0, r, 0}, radians(start), edgeSweep(start, end), !ccw);
        break;
      }
      case 3: {  // elliptic arc: the major axis' end relative to the centre, and the minor to major ratio
        c.takePoint(10, a);
        c.takePoint(11, b);
        const double ratio = std::fabs(c.take(40, 1.0));
        double start = c.take(50), end = c.take(51, 360.0);
        const bool ccw = c.take(73, 1.0) != 0.0;
        counterClockwise(start, end, ccw);
        const Vector3d major{b.x, b.y, 0.0};
        const Vector3d minor{-b.y * ratio, b.x * ratio, 0.0};
        // The stored ends are angles seen from the centre; the curve is traced by its parameter.
        const auto param = [&](double deg) {
          const double t = radians(deg);
          return ratio > 0.0 ? std::atan2(std::sin(t) / ratio, std::cos(t)) : t;
        };
        const double sweep = edgeSweep(start, end);
        const double t0 = param(start);
        sink.addArc({a.x, a.y, elevation}, major, minor, t0, sweep >= kTwoPi ? kTwoPi : ccwSweep(t0, param(end)),
                    !ccw);
        break;
      }
      case 4:
        readSplineEdge(c, sink, elevation, k + 1 < count);
        break;
      default:
        return;  // an unknown edge type: its groups cannot be told from the next path's
    }
  }
}

}  // namespace

bool addHatch(const Groups& g, BoxSink& sink, bool isMPolygon) {
  const GroupRange r = subclassRange(g, isMPolygon ? "AcDbMPolygon" : "AcDbHatch");
  // The elevation point (10) comes before the boundary paths and the path count (91).
  double elevation = 0.0;
  std::uint32_t i = r.begin;
  for (; i < r.end && g.at(i).code != 91; ++i)
    if (g.at(i).code == 10) elevation = pointAt(g, i).z;
  if (i >= r.end) return false;
  const int paths = clampedInt(numberOf(g.at(i)), 0, kMaxCount);
  Cursor c(g, i + 1, r.end);
  BoxSink ocs = sink.placed(platform::ocsToWcs(g.normal()));
  bool any = false;
  for (int p = 0; p < paths && c.at(92); ++p) {
    const int flags = clampedInt(c.take(92), 0, kMaxCount);
    if (flags & 2) readPolylinePath(c, ocs, elevation);
    else readEdgePath(c, ocs, elevation);
    if (Tracer* tracer = ocs.tracer()) tracer->endLoop();
    skipSources(c);
    any = true;
  }
  return any;
}

}  // namespace headless::extents
