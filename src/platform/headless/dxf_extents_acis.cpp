// Extents of solids, regions, bodies and surfaces from the SAT text of their modeler data (groups 1 and 3).
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

#include "platform/headless/dxf_extents_parts.h"

namespace headless::extents {

using platform::Matrix3d;
using platform::Point3d;
using platform::Vector3d;

std::string satText(const Groups& g) {
  std::string text;
  bool any = false;
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    const int code = g.at(i).code;
    if (code != 1 && code != 3) continue;
    // Group 1 starts a line of the SAT text; group 3 continues a line longer than a group can hold.
    if (code == 1 && any) text += '\n';
    text += g.textAt(i);
    any = true;
  }
  // Plain SAT starts with its version number. Otherwise the text is stored with the character transform of
  // R2000-R2004 files: every printable character c (33..126) written as 159 - c, which is its own inverse.
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first != std::string::npos && !(text[first] >= '0' && text[first] <= '9')) {
    for (char& c : text) {
      const int u = static_cast<unsigned char>(c);
      if (u >= 33 && u <= 126) c = static_cast<char>(159 - u);
    }
  }
  return text;
}

namespace {

struct Record {
  std::string_view name;
  std::vector<std::string_view> fields;  // after the name
};

std::optional<double> number(std::string_view s) {
  if (s.empty() || s[0] == '$') return std::nullopt;
  double v = 0.0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || !isFinite(v)) return std::nullopt;
  return v;
}

// The record a pointer field ("$12") names, or -1.
long pointer(std::string_view s) {
  if (s.size() < 2 || s[0] != '$') return -1;
  long v = -1;
  const auto [end, ec] = std::from_chars(s.data() + 1, s.data() + s.size(), v);
  return ec == std::errc() && end == s.data() + s.size() ? v : -1;
}

bool isInteger(std::string_view s) {
  if (s.empty()) return false;
  std::size_t i = (s[0] == '-' || s[0] == '+') ? 1 : 0;
  if (i == s.size()) return false;
  for (; i < s.size(); ++i)
    if (s[i] < '0' || s[i] > '9') return false;
  return true;
}

// Splits the records after the three header lines; "@N text" strings are one field even with spaces.
std::vector<Record> parseRecords(std::string_view sat) {
  std::vector<Record> records;
  std::size_t pos = 0;
  for (int line = 0; line < 3 && pos != std::string_view::npos; ++line) {
    pos = sat.find('\n', pos);
    if (pos != std::string_view::npos) ++pos;
  }
  if (pos == std::string_view::npos) return records;
  Record cur;
  bool started = false;
  while (pos < sat.size()) {
    while (pos < sat.size() && std::isspace(static_cast<unsigned char>(sat[pos]))) ++pos;
    if (pos >= sat.size()) break;
    std::size_t end = pos;
    while (end < sat.size() && !std::isspace(static_cast<unsigned char>(sat[end]))) ++end;
    std::string_view token = sat.substr(pos, end - pos);
    if (token.size() > 1 && token[0] == '@' && isInteger(token.substr(1))) {
      // A counted string: its length follows the '@'; the text starts after one space.
      const auto len = std::strtoul(std::string(token.substr(1)).c_str(), nullptr, 10);
      end = std::min(sat.size(), end + 1 + static_cast<std::size_t>(std::min<unsigned long>(len, sat.size())));
      token = sat.substr(pos, end - pos);
    }
    pos = end;
    if (!started) {
      if (token.starts_with("End-of-")) break;
      // With sequence numbers switched on, each record starts with "-N".
      if (token.size() > 1 && token[0] == '-' && isInteger(token)) continue;
      cur = Record{token, {}};
      started = true;
      if (token == "#") started = false;
      continue;
    }
    if (token == "#") {
      records.push_back(std::move(cur));
      started = false;
      continue;
    }
    cur.fields.push_back(token);
  }
  return records;
}

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
void addSplineSurfacePoints(const std::vector<std::string_view>& f, std::size_t i, BoxSink& sink) {
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

}  // namespace

bool addSatGeometry(std::string_view sat, BoxSink& out) {
  const std::vector<Record> records = parseRecords(sat);
  if (records.empty()) return false;
  // Since ACIS 7 every record starts with three fields (attribute, id, history); before, with the attribute
  // alone. The body record tells which: its second field is a pointer only in the old layout.
  std::size_t head = 1;
  for (const Record& r : records)
    if (r.name == "body" && r.fields.size() > 1) {
      head = r.fields[1].starts_with("$") ? 1 : 3;
      break;
    }
  const auto numbersAfterHead = [&](const Record& r, std::size_t count, std::vector<double>& v) {
    v.clear();
    for (std::size_t i = head; i < r.fields.size() && v.size() < count; ++i) {
      const auto n = number(r.fields[i]);
      if (!n) return false;
      v.push_back(*n);
    }
    return v.size() == count;
  };

  // The body's transform places everything: three rows (the images of the axes), a translation and a scale.
  Matrix3d place;
  for (const Record& r : records) {
    if (r.name != "body" || r.fields.size() < head + 3) continue;
    const long t = pointer(r.fields[head + 2]);
    if (t < 0 || static_cast<std::size_t>(t) >= records.size() || records[static_cast<std::size_t>(t)].name != "transform") break;
    std::vector<double> v;
    const Record& tr = records[static_cast<std::size_t>(t)];
    const auto read = [&](std::size_t from) {
      v.clear();
      for (std::size_t i = from; i < tr.fields.size() && v.size() < 13; ++i)
        if (const auto n = number(tr.fields[i])) v.push_back(*n);
        else break;
    };
    read(head);
    if (v.size() < 13) read(1);
    if (v.size() == 13 && v[12] != 0.0) {
      const double s = v[12];
      place = Matrix3d::fromAxes({v[9], v[10], v[11]}, Vector3d(v[0], v[1], v[2]) * s, Vector3d(v[3], v[4], v[5]) * s,
                                 Vector3d(v[6], v[7], v[8]) * s);
    }
    break;
  }
  BoxSink sink = out.placed(place);

  std::vector<std::optional<Point3d>> points(records.size());
  std::vector<std::optional<Ellipse>> ellipses(records.size());
  std::vector<long> vertexPoint(records.size(), -1);
  std::vector<double> v;
  bool found = false;
  for (std::size_t i = 0; i < records.size(); ++i) {
    const Record& r = records[i];
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
      for (auto it = r.fields.rbegin(); it != r.fields.rend(); ++it)
        if (pointer(*it) >= 0) {
          vertexPoint[i] = pointer(*it);
          break;
        }
    } else if (r.name == "spline-surface") {
      for (std::size_t k = 0; k < r.fields.size(); ++k)
        if (r.fields[k] == "nubs" || r.fields[k] == "nurbs") {
          addSplineSurfacePoints(r.fields, k, sink);
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

  for (const Record& r : records) {
    const auto& f = r.fields;
    if (r.name == "edge" && f.size() >= head + 5) {
      // edge: start vertex, [start parameter], end vertex, [end parameter], coedge, curve, sense.
      const bool withParams = f[head].starts_with("$") && number(f[head + 1]).has_value();
      const std::size_t curveAt = head + (withParams ? 5 : 3);
      if (curveAt + 1 > f.size()) continue;
      const long curve = pointer(f[curveAt]);
      if (curve < 0 || static_cast<std::size_t>(curve) >= records.size() || !ellipses[static_cast<std::size_t>(curve)]) continue;
      const Ellipse& e = *ellipses[static_cast<std::size_t>(curve)];
      const auto a = pointOfVertex(pointer(f[head]));
      const auto b = pointOfVertex(pointer(f[head + (withParams ? 2 : 1)]));
      const bool reversed = curveAt + 1 < f.size() && f[curveAt + 1] == "reversed";
      double span = -1.0;
      if (withParams) {
        const auto t0 = number(f[head + 1]), t1 = number(f[head + 3]);
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
    } else if (r.name == "face" && f.size() >= head + 5 && pointer(f[head + 1]) < 0) {
      // A face without loops is its whole surface: closed spheres and tori have no edges to show them.
      const long s = pointer(f[head + 4]);
      if (s < 0 || static_cast<std::size_t>(s) >= records.size()) continue;
      const Record& surface = records[static_cast<std::size_t>(s)];
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

bool addModelerGeometry(const Groups& g, BoxSink& sink) {
  const std::string sat = satText(g);
  if (sat.empty()) return false;
  return addSatGeometry(sat, sink);
}

}  // namespace headless::extents
