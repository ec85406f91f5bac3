// Geometry value types and the arbitrary-axis rule.
#include "platform/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace platform {

Vector3d Vector3d::normal() const {
  const double len = length();
  if (len == 0.0) return *this;
  return {x / len, y / len, z / len};
}

Matrix3d Matrix3d::translation(const Vector3d& v) {
  Matrix3d m;
  m.m_[0][3] = v.x;
  m.m_[1][3] = v.y;
  m.m_[2][3] = v.z;
  return m;
}

Matrix3d Matrix3d::scaling(double sx, double sy, double sz) {
  Matrix3d m;
  m.m_[0][0] = sx;
  m.m_[1][1] = sy;
  m.m_[2][2] = sz;
  return m;
}

Matrix3d Matrix3d::rotationZ(double angle) {
  Matrix3d m;
  const double c = std::cos(angle), s = std::sin(angle);
  m.m_[0][0] = c;
  m.m_[0][1] = -s;
  m.m_[1][0] = s;
  m.m_[1][1] = c;
  return m;
}

Matrix3d Matrix3d::fromAxes(const Point3d& o, const Vector3d& xa, const Vector3d& ya, const Vector3d& za) {
  Matrix3d m;
  m.m_[0] = {xa.x, ya.x, za.x, o.x};
  m.m_[1] = {xa.y, ya.y, za.y, o.y};
  m.m_[2] = {xa.z, ya.z, za.z, o.z};
  return m;
}

Matrix3d Matrix3d::operator*(const Matrix3d& o) const {
  Matrix3d r;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) {
      double s = 0.0;
      for (int k = 0; k < 4; ++k) s += m_[i][k] * o.m_[k][j];
      r.m_[i][j] = s;
    }
  return r;
}

Point3d Matrix3d::transform(const Point3d& p) const {
  return {m_[0][0] * p.x + m_[0][1] * p.y + m_[0][2] * p.z + m_[0][3],
          m_[1][0] * p.x + m_[1][1] * p.y + m_[1][2] * p.z + m_[1][3],
          m_[2][0] * p.x + m_[2][1] * p.y + m_[2][2] * p.z + m_[2][3]};
}

Vector3d Matrix3d::transform(const Vector3d& v) const {
  return {m_[0][0] * v.x + m_[0][1] * v.y + m_[0][2] * v.z,
          m_[1][0] * v.x + m_[1][1] * v.y + m_[1][2] * v.z,
          m_[2][0] * v.x + m_[2][1] * v.y + m_[2][2] * v.z};
}

bool Matrix3d::isIdentity() const {
  // Boxes ask this of their transform once or twice each: the identity's own bits answer at once, and
  // only a matrix with a negative zero somewhere needs its elements compared.
  static constexpr Matrix3d kIdentity;
  if (std::memcmp(&m_, &kIdentity.m_, sizeof m_) == 0) return true;
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c)
      if (m_[r][c] != kIdentity.m_[r][c]) return false;
  return true;
}

void Extents3d::addPoint(const Point3d& p) {
  min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
  max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
}

void Extents3d::addExtents(const Extents3d& e) {
  if (e.isEmpty()) return;
  addPoint(e.min);
  addPoint(e.max);
}

void Extents3d::transformBy(const Matrix3d& m) {
  if (isEmpty()) return;
  // Most boxes are moved by no transform at all. For finite coordinates the identity's products and sums
  // come to the coordinate plus zero (which turns -0 into 0), exactly what the full transform gives.
  const auto finite = [](const Point3d& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); };
  if (finite(min) && finite(max) && m.isIdentity()) {
    const Point3d low{min.x + 0.0, min.y + 0.0, min.z + 0.0}, high{max.x + 0.0, max.y + 0.0, max.z + 0.0};
    *this = Extents3d();
    addPoint(low);
    addPoint(high);
    return;
  }
  const Extents3d src = *this;
  *this = Extents3d();
  for (int i = 0; i < 8; ++i) {
    const Point3d corner{(i & 1) ? src.max.x : src.min.x, (i & 2) ? src.max.y : src.min.y,
                         (i & 4) ? src.max.z : src.min.z};
    addPoint(m.transform(corner));
  }
}

Vector3d arbitraryAxisX(const Vector3d& normal) {
  // 1/64: the threshold the DXF reference fixes for "close to the world Z axis".
  constexpr double kNearZ = 1.0 / 64.0;
  const Vector3d n = normal.normal();
  const Vector3d ax = (std::fabs(n.x) < kNearZ && std::fabs(n.y) < kNearZ) ? Vector3d{0, 1, 0}.cross(n)
                                                                           : Vector3d{0, 0, 1}.cross(n);
  return ax.normal();
}

Matrix3d ocsToWcs(const Vector3d& normal) {
  const Vector3d n = normal.normal();
  if (n.length() == 0.0 || (n.x == 0.0 && n.y == 0.0 && n.z > 0.0)) return Matrix3d();
  const Vector3d ax = arbitraryAxisX(n);
  const Vector3d ay = n.cross(ax).normal();
  return Matrix3d::fromAxes(Point3d(), ax, ay, n);
}

Point3d ocsToWcs(const Point3d& p, const Vector3d& normal) { return ocsToWcs(normal).transform(p); }

}  // namespace platform
