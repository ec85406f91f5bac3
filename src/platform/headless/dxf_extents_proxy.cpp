// Extents from the proxy graphics that custom and proxy entities store in binary groups 310.
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "platform/headless/dxf_extents_parts.h"

namespace headless::extents {

using platform::Extents3d;
using platform::Matrix3d;
using platform::Point3d;
using platform::Vector3d;

namespace {

// Command numbers of the proxy graphics stream.
enum Command : std::uint32_t {
  kExtents = 1,
  kCircle = 2,
  kCircle3p = 3,
  kArc = 4,
  kArc3p = 5,
  kPolyline = 6,
  kPolygon = 7,
  kMesh = 8,
  kShell = 9,
  kText = 10,
  kText2 = 11,
  kXline = 12,
  kRay = 13,
  kPushMatrix = 29,
  kPopMatrix = 31,
  kPolylineWithNormals = 32,
  kUnicodeText = 36,
  kUnicodeText2 = 38,
  kEllipticArc = 44,
};

// Streams longer than this many commands are damaged; the reader stops there.
constexpr std::uint32_t kMaxCommands = 1u << 20;

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Little-endian values from one command's data; reading past the end marks the reader failed and yields 0.
class Bytes {
 public:
  Bytes(const std::vector<unsigned char>& b, std::size_t begin, std::size_t end) : b_(b), pos_(begin), end_(end) {}
  bool ok() const { return ok_; }
  std::uint32_t u32() {
    if (!need(4)) return 0;
    std::uint32_t v = 0;
    for (int k = 3; k >= 0; --k) v = (v << 8) | b_[pos_ + static_cast<std::size_t>(k)];
    pos_ += 4;
    return v;
  }
  double f64() {
    if (!need(8)) return 0.0;
    std::uint64_t v = 0;
    for (int k = 7; k >= 0; --k) v = (v << 8) | b_[pos_ + static_cast<std::size_t>(k)];
    pos_ += 8;
    double d;
    std::memcpy(&d, &v, sizeof d);
    return d;
  }
  Point3d point() {
    const double x = f64(), y = f64(), z = f64();
    return {x, y, z};
  }
  // A NUL-terminated string padded to four bytes; two-byte characters when wide.
  std::string text(bool wide) {
    std::string s;
    const std::size_t unit = wide ? 2 : 1;
    std::size_t p = pos_;
    while (p + unit <= end_) {
      const unsigned c = wide ? (b_[p] | (b_[p + 1] << 8)) : b_[p];
      p += unit;
      if (c == 0) break;
      // Characters beyond ASCII only count for their width here: one narrow or one wide stands for each.
      if (c < 0x80) s += static_cast<char>(c);
      else if (c < 0x1100) s += 'x';
      else s += "\xE4\xB8\x80";
    }
    const std::size_t used = p - pos_;
    pos_ = std::min(end_, pos_ + ((used + 3) & ~static_cast<std::size_t>(3)));
    return s;
  }

 private:
  bool need(std::size_t n) {
    if (ok_ && pos_ + n <= end_) return true;
    ok_ = false;
    return false;
  }
  const std::vector<unsigned char>& b_;
  std::size_t pos_, end_;
  bool ok_ = true;
};

// The circle through three points: centre, normal (unit, oriented so that a -> b -> c runs counter-clockwise)
// and radius; false when the points are in line.
bool circleThrough(const Point3d& a, const Point3d& b, const Point3d& c, Point3d& centre, Vector3d& normal, double& r) {
  const Vector3d ab = b - a, ac = c - a;
  const Vector3d n = ab.cross(ac);
  const double nn = n.dot(n);
  if (!(nn > 0.0) || !isFinite(nn)) return false;
  const Vector3d toCentre = (n.cross(ab) * ac.dot(ac) + ac.cross(n) * ab.dot(ab)) * (1.0 / (2.0 * nn));
  centre = a + toCentre;
  normal = n.normal();
  r = toCentre.length();
  return true;
}

void addTextBox(BoxSink& sink, const Point3d& start, const Vector3d& normal, const Vector3d& direction, double height,
                double widthFactor, const std::string& text) {
  sink.add(start);
  if (!(height > 0.0) || !isFinite(height)) return;
  const double w = estimateTextWidth(text) * height * (widthFactor > 0.0 ? widthFactor : 1.0);
  Vector3d x = direction.normal();
  const Vector3d n = normal.length() > 0.0 ? normal.normal() : Vector3d{0, 0, 1};
  if (x.length() == 0.0) x = platform::arbitraryAxisX(n);
  const Vector3d y = n.cross(x).normal();
  sink.add(start + x * w);
  sink.add(start + y * height);
  sink.add(start + x * w + y * height);
}

}  // namespace

bool addProxyGraphics(const Groups& g, BoxSink& out) {
  // The graphics follow their size (92, or 160 since R2010) as a run of binary groups.
  std::vector<unsigned char> bytes;
  for (std::uint32_t i = 0; i + 1 < g.ownCount(); ++i) {
    if ((g.at(i).code != 92 && g.at(i).code != 160) || g.at(i + 1).code != 310) continue;
    for (std::uint32_t k = i + 1; k < g.ownCount() && g.at(k).code == 310; ++k) {
      const std::string_view hex = g.textAt(k);
      for (std::size_t j = 0; j + 1 < hex.size(); j += 2) {
        const int hi = hexDigit(hex[j]), lo = hexDigit(hex[j + 1]);
        if (hi < 0 || lo < 0) break;
        bytes.push_back(static_cast<unsigned char>(hi * 16 + lo));
      }
    }
    break;
  }
  if (bytes.size() < 8) return false;
  std::vector<Matrix3d> matrices;
  std::size_t pos = 8;  // after the stream's size and command count
  bool any = false;
  for (std::uint32_t n = 0; n < kMaxCommands && pos + 8 <= bytes.size(); ++n) {
    Bytes head(bytes, pos, pos + 8);
    const std::uint32_t size = head.u32(), type = head.u32();
    if (size < 8 || size > bytes.size() - pos) break;
    Bytes d(bytes, pos + 8, pos + size);
    pos += size;
    BoxSink sink = matrices.empty() ? out : out.placed(matrices.back());
    Extents3d piece;
    BoxSink into = sink.into(piece);
    switch (type) {
      case kExtents:
      case kXline:
      case kRay: {
        // Rays and construction lines keep their base point only, as the entities do.
        const Point3d a = d.point(), b = d.point();
        into.add(a);
        if (type == kExtents) into.add(b);
        break;
      }
      case kCircle: {
        const Point3d c = d.point();
        const double r = d.f64();
        const Vector3d nrm = d.point().asVector().normal();
        if (r > 0.0 && nrm.length() > 0.0) {
          const Vector3d u = platform::arbitraryAxisX(nrm);
          into.addArc(c, u * r, nrm.cross(u) * r, 0.0, kTwoPi);
        }
        break;
      }
      case kCircle3p:
      case kArc3p: {
        const Point3d a = d.point(), b = d.point(), c = d.point();
        Point3d centre;
        Vector3d nrm;
        double r;
        if (!d.ok()) break;
        if (!circleThrough(a, b, c, centre, nrm, r)) {
          into.add(a);
          into.add(b);
          into.add(c);
          break;
        }
        const Vector3d u = (a - centre).normal(), v = nrm.cross(u);
        double sweep = kTwoPi;
        if (type == kArc3p) sweep = ccwSweep(0.0, std::atan2((c - centre).dot(v), (c - centre).dot(u)));
        into.addArc(centre, u * r, v * r, 0.0, sweep);
        break;
      }
      case kArc: {
        const Point3d c = d.point();
        const double r = d.f64();
        const Vector3d nrm = d.point().asVector().normal(), startDir = d.point().asVector().normal();
        double sweep = d.f64();
        if (!(r > 0.0) || nrm.length() == 0.0 || startDir.length() == 0.0) break;
        double start = 0.0;
        if (sweep < 0.0) {
          start = sweep;
          sweep = -sweep;
        }
        into.addArc(c, startDir * r, nrm.cross(startDir) * r, start, std::min(sweep, kTwoPi));
        break;
      }
      case kPolyline:
      case kPolygon:
      case kPolylineWithNormals:
      case kShell: {
        const std::uint32_t count = d.u32();
        for (std::uint32_t k = 0; k < count && d.ok(); ++k) {
          const Point3d p = d.point();
          if (d.ok()) into.add(p);
        }
        break;
      }
      case kMesh: {
        const std::uint32_t rows = d.u32(), columns = d.u32();
        const std::uint64_t count = static_cast<std::uint64_t>(rows) * columns;
        for (std::uint64_t k = 0; k < count && d.ok(); ++k) {
          const Point3d p = d.point();
          if (d.ok()) into.add(p);
        }
        break;
      }
      case kText:
      case kUnicodeText: {
        const Point3d start = d.point();
        const Vector3d nrm = d.point().asVector(), dir = d.point().asVector();
        const double h = d.f64(), wf = d.f64();
        d.f64();  // oblique angle
        const std::string s = d.text(type == kUnicodeText);
        if (d.ok()) addTextBox(into, start, nrm, dir, h, wf, s);
        break;
      }
      case kText2:
      case kUnicodeText2: {
        const Point3d start = d.point();
        const Vector3d nrm = d.point().asVector(), dir = d.point().asVector();
        const std::string s = d.text(type == kUnicodeText2);
        d.u32();  // length of the string
        d.u32();  // raw flag
        const double h = d.f64(), wf = d.f64();
        if (d.ok()) addTextBox(into, start, nrm, dir, h, wf, s);
        break;
      }
      case kEllipticArc: {
        const Point3d c = d.point();
        const Vector3d nrm = d.point().asVector();
        const double major = d.f64(), minor = d.f64(), t0 = d.f64(), t1 = d.f64(), angle = d.f64();
        if (!d.ok() || !(major > 0.0) || nrm.length() == 0.0) break;
        const Vector3d a = platform::ocsToWcs(Point3d(std::cos(angle) * major, std::sin(angle) * major, 0.0), nrm).asVector();
        const Vector3d b = nrm.normal().cross(a.normal()) * std::fabs(minor);
        into.addArc(c, a, b, t0, ccwSweep(t0, t1));
        break;
      }
      case kPushMatrix: {
        Matrix3d m;
        for (int r = 0; r < 4; ++r)
          for (int col = 0; col < 4; ++col) m(r, col) = d.f64();
        // Only affine matrices are met; a projective last row is taken as affine.
        m(3, 0) = m(3, 1) = m(3, 2) = 0.0;
        m(3, 3) = 1.0;
        if (d.ok()) matrices.push_back(m);
        break;
      }
      case kPopMatrix:
        if (!matrices.empty()) matrices.pop_back();
        break;
      default:
        break;
    }
    if (!piece.isEmpty()) {
      sink.addPlaced(piece);
      any = true;
    }
  }
  return any;
}

}  // namespace headless::extents
