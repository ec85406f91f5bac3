// Extents of solids, regions, bodies and surfaces from the records of their modeler data (SAT or SAB).
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

#include "platform/headless/dxf_extents_parts.h"
#include "platform/headless/modeler_data.h"

namespace headless::extents {

using platform::Matrix3d;
using platform::Point3d;
using platform::Vector3d;

namespace {

using modeler::Model;
using modeler::number;
using modeler::pointer;
using Fields = std::span<const std::string_view>;

struct Ellipse {
  Point3d centre;
  Vector3d normal, major;
  double ratio = 1.0;
};

Vector3d minorAxis(const Ellipse& e) { return e.normal.cross(e.major).normal() * (e.major.length() * std::fabs(e.ratio)); }

// The parameter of a point projected on an ellipse.
double parameterOf(const Ellipse& e, const Point3d& p) {
  const Vector3d d = p - e.centre;
  const Vector3d minor = minorAxis(e);
  const double a = e.major.length(), b = minor.length();
  if (a == 0.0 || b == 0.0) return 0.0;
  return std::atan2(d.dot(minor) / (b * b), d.dot(e.major) / (a * a));
}

// Knot counts beyond this come from damaged data; the fields run out long before anyway.
constexpr double kMaxKnots = 1e6;

// Reads the control points of a spline surface ("nubs"/"nurbs" data inside braces) from field i on.
void addSplineSurfacePoints(Fields f, std::size_t i, BoxSink& sink) {
  // nubs|nurbs <deg u> <deg v> <closure u> <closure v> <singularity u> <singularity v> <knots u> <knots v>
  // then the knot values with their multiplicities, then the control points (x y z, and w for nurbs).
  if (i + 8 >= f.size()) return;
  const bool rational = f[i] == "nurbs";
  const auto du = number(f[i + 1]), dv = number(f[i + 2]), ku = number(f[i + 7]), kv = number(f[i + 8]);
  if (!du || !dv || !ku || !kv || *ku < 0 || *kv < 0 || *ku > kMaxKnots || *kv > kMaxKnots) return;
  std::size_t j = i + 9;
  double mu = 0.0, mv = 0.0;
  for (int k = 0; k < static_cast<int>(*ku); ++k, j += 2) {
    if (j + 1 >= f.size()) return;
    mu += number(f[j + 1]).value_or(0.0);
  }
  for (int k = 0; k < static_cast<int>(*kv); ++k, j += 2) {
    if (j + 1 >= f.size()) return;
    mv += number(f[j + 1]).value_or(0.0);
  }
  const double nu = mu - *du + 1.0, nv = mv - *dv + 1.0;
  if (!(nu >= 1.0) || !(nv >= 1.0) || nu * nv > kMaxKnots * kMaxKnots) return;
  const std::size_t count = static_cast<std::size_t>(nu * nv), stride = rational ? 4 : 3;
  for (std::size_t k = 0; k < count; ++k, j += stride) {
    if (j + 2 >= f.size()) return;
    const auto x = number(f[j]), y = number(f[j + 1]), z = number(f[j + 2]);
    if (!x || !y || !z) return;
    sink.add({*x, *y, *z});
  }
}

bool addModelGeometry(const Model& model, BoxSink& out) {
  const std::vector<modeler::Record>& records = model.records();
  if (records.empty()) return false;
  // The numbers after a record's entity header, when the first `count` of them are numbers.
  const auto numbersAfterHead = [&](const modeler::Record& r, std::size_t count, std::vector<double>& v) {
    v.clear();
    for (std::string_view field : model.data(r)) {
      if (v.size() == count) break;
      const auto n = number(field);
      if (!n) return false;
      v.push_back(*n);
    }
    return v.size() == count;
  };

  // The body's transform places everything: three rows (the images of the axes), a translation and a scale.
  Matrix3d place;
  if (const modeler::Record* body = model.first("body")) {
    const Fields bf = model.data(*body);
    const modeler::Record* tr = bf.size() >= 3 ? model.follow(bf[2], "transform") : nullptr;
    if (tr) {
      std::vector<double> v;
      const auto read = [&](Fields f) {
        v.clear();
        for (std::size_t i = 0; i < f.size() && v.size() < 13; ++i)
          if (const auto n = number(f[i])) v.push_back(*n);
          else break;
      };
      read(model.data(*tr));
      if (v.size() < 13 && tr->count > 0) read(model.fields(*tr).subspan(1));
      if (v.size() == 13 && v[12] != 0.0) {
        const double s = v[12];
        place = Matrix3d::fromAxes({v[9], v[10], v[11]}, Vector3d(v[0], v[1], v[2]) * s, Vector3d(v[3], v[4], v[5]) * s,
                                   Vector3d(v[6], v[7], v[8]) * s);
      }
    }
  }
  BoxSink sink = out.placed(place);

  std::vector<std::optional<Point3d>> points(records.size());
  std::vector<std::optional<Ellipse>> ellipses(records.size());
  std::vector<long> vertexPoint(records.size(), -1);
  std::vector<double> v;
  bool found = false;
  for (std::size_t i = 0; i < records.size(); ++i) {
    const modeler::Record& r = records[i];
    if (r.name == "point") {
      if (numbersAfterHead(r, 3, v)) {
        points[i] = Point3d{v[0], v[1], v[2]};
        sink.add(*points[i]);
        found = true;
      }
    } else if (r.name == "ellipse-curve") {
      if (numbersAfterHead(r, 10, v)) ellipses[i] = Ellipse{{v[0], v[1], v[2]}, {v[3], v[4], v[5]}, {v[6], v[7], v[8]}, v[9]};
    } else if (r.name == "vertex") {
      // The point is the vertex's last pointer.
      const Fields f = model.fields(r);
      for (auto it = f.rbegin(); it != f.rend(); ++it)
        if (pointer(*it) >= 0) {
          vertexPoint[i] = pointer(*it);
          break;
        }
    } else if (r.name == "spline-surface") {
      const Fields f = model.fields(r);
      for (std::size_t k = 0; k < f.size(); ++k)
        if (f[k] == "nubs" || f[k] == "nurbs") {
          addSplineSurfacePoints(f, k, sink);
          break;
        }
    }
  }
  const auto pointOfVertex = [&](long vertex) -> std::optional<Point3d> {
    if (vertex < 0 || static_cast<std::size_t>(vertex) >= records.size()) return std::nullopt;
    const long p = vertexPoint[static_cast<std::size_t>(vertex)];
    if (p < 0 || static_cast<std::size_t>(p) >= records.size()) return std::nullopt;
    return points[static_cast<std::size_t>(p)];
  };

  for (const modeler::Record& r : records) {
    const Fields f = model.data(r);
    if (r.name == "edge" && f.size() >= 5) {
      // edge: start vertex, [start parameter], end vertex, [end parameter], coedge, curve, sense.
      const bool withParams = f[0].starts_with("$") && number(f[1]).has_value();
      const std::size_t curveAt = withParams ? 5 : 3;
      if (curveAt + 1 > f.size()) continue;
      const long curve = pointer(f[curveAt]);
      if (curve < 0 || static_cast<std::size_t>(curve) >= records.size() || !ellipses[static_cast<std::size_t>(curve)]) continue;
      const Ellipse& e = *ellipses[static_cast<std::size_t>(curve)];
      const auto a = pointOfVertex(pointer(f[0]));
      const auto b = pointOfVertex(pointer(f[withParams ? 2 : 1]));
      const bool reversed = curveAt + 1 < f.size() && modeler::isReversed(f[curveAt + 1]);
      double span = -1.0;
      if (withParams) {
        const auto t0 = number(f[1]), t1 = number(f[3]);
        if (t0 && t1) span = std::fabs(*t1 - *t0);
      }
      double start = 0.0, sweep = kTwoPi;
      if (a && b && !(span >= kTwoPi - 1e-9)) {
        // The edge runs from its start vertex to its end vertex along the curve, against the curve's direction
        // when reversed; the arc between the two is measured counter-clockwise on the curve.
        const double ta = parameterOf(e, reversed ? *b : *a), tb = parameterOf(e, reversed ? *a : *b);
        start = ta;
        sweep = span > 0.0 ? span : ccwSweep(ta, tb);
      }
      sink.addArc(e.centre, e.major, minorAxis(e), start, sweep);
      found = true;
    } else if (r.name == "face" && f.size() >= 5 && pointer(f[1]) < 0) {
      // A face without loops is its whole surface: closed spheres and tori have no edges to show them.
      const long s = pointer(f[4]);
      if (s < 0 || static_cast<std::size_t>(s) >= records.size()) continue;
      const modeler::Record& surface = records[static_cast<std::size_t>(s)];
      if (surface.name == "sphere-surface" && numbersAfterHead(surface, 4, v)) {
        const double rad = std::fabs(v[3]);
        sink.addBox({{v[0] - rad, v[1] - rad, v[2] - rad}, {v[0] + rad, v[1] + rad, v[2] + rad}});
        found = true;
      } else if (surface.name == "torus-surface" && numbersAfterHead(surface, 8, v)) {
        // Along each axis a torus reaches its major radius times the sine of the axis' angle to the torus'
        // axis, plus the minor radius.
        const Vector3d n = Vector3d(v[3], v[4], v[5]).normal();
        const double major = std::fabs(v[6]), minor = std::fabs(v[7]);
        const double ex = major * std::sqrt(std::max(0.0, 1.0 - n.x * n.x)) + minor;
        const double ey = major * std::sqrt(std::max(0.0, 1.0 - n.y * n.y)) + minor;
        const double ez = major * std::sqrt(std::max(0.0, 1.0 - n.z * n.z)) + minor;
        sink.addBox({{v[0] - ex, v[1] - ey, v[2] - ez}, {v[0] + ex, v[1] + ey, v[2] + ez}});
        found = true;
      }
    }
  }
  return found;
}

}  // namespace

bool addModelerGeometry(const platform::DatabaseData& data, std::uint32_t index, BoxSink& sink) {
  Model model;
  return modeler::readEntity(data, index, model) && addModelGeometry(model, sink);
}

}  // namespace headless::extents
