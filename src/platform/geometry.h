// Geometry value types: 3D points and vectors, 4x4 matrices, extents, and the arbitrary-axis rule (OCS to WCS).
#pragma once

#include <array>
#include <cmath>

namespace platform {

// A real as an integer, toward zero, as a C cast does; where the cast is undefined the answer saturates
// (NaN is 0), because a damaged drawing may hold any real where an integer is read.
constexpr long long saturatingInteger(double v) {
  constexpr double kLimit = 9223372036854774784.0;  // the largest double below 2^63
  if (!(v == v)) return 0;
  if (v >= kLimit) return 9223372036854774784LL;
  if (v <= -kLimit) return -9223372036854774784LL;
  return static_cast<long long>(v);
}

struct Vector3d {
  double x = 0.0, y = 0.0, z = 0.0;

  constexpr Vector3d() = default;
  constexpr Vector3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

  double length() const { return std::sqrt(x * x + y * y + z * z); }
  constexpr double dot(const Vector3d& o) const { return x * o.x + y * o.y + z * o.z; }
  constexpr Vector3d cross(const Vector3d& o) const {
    return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
  }
  // The unit vector in this direction; the zero vector stays zero.
  Vector3d normal() const;
  constexpr Vector3d operator*(double s) const { return {x * s, y * s, z * s}; }
  constexpr Vector3d operator+(const Vector3d& o) const { return {x + o.x, y + o.y, z + o.z}; }
  constexpr Vector3d operator-(const Vector3d& o) const { return {x - o.x, y - o.y, z - o.z}; }
  constexpr Vector3d operator-() const { return {-x, -y, -z}; }
  constexpr bool operator==(const Vector3d&) const = default;
};

struct Point3d {
  double x = 0.0, y = 0.0, z = 0.0;

  constexpr Point3d() = default;
  constexpr Point3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

  constexpr Point3d operator+(const Vector3d& v) const { return {x + v.x, y + v.y, z + v.z}; }
  constexpr Point3d operator-(const Vector3d& v) const { return {x - v.x, y - v.y, z - v.z}; }
  constexpr Vector3d operator-(const Point3d& p) const { return {x - p.x, y - p.y, z - p.z}; }
  constexpr Vector3d asVector() const { return {x, y, z}; }
  double distanceTo(const Point3d& p) const { return (*this - p).length(); }
  constexpr bool operator==(const Point3d&) const = default;
};

// A 4x4 affine matrix acting on column vectors: p' = M * p. Row 3 stays (0, 0, 0, 1).
class Matrix3d {
 public:
  constexpr Matrix3d() : m_{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}} {}

  static constexpr Matrix3d identity() { return Matrix3d(); }
  static Matrix3d translation(const Vector3d& v);
  static Matrix3d scaling(double sx, double sy, double sz);
  // Rotation by angle (radians, counter-clockwise) about the Z axis.
  static Matrix3d rotationZ(double angle);
  // The matrix whose columns are the three axes and whose translation is origin.
  static Matrix3d fromAxes(const Point3d& origin, const Vector3d& xAxis, const Vector3d& yAxis, const Vector3d& zAxis);

  double operator()(int row, int col) const { return m_[row][col]; }
  double& operator()(int row, int col) { return m_[row][col]; }

  // Product: (a * b) applied to p is a applied to (b applied to p).
  Matrix3d operator*(const Matrix3d& o) const;
  Point3d transform(const Point3d& p) const;
  // Vectors are not moved by the translation part.
  Vector3d transform(const Vector3d& v) const;
  bool isIdentity() const;
  bool operator==(const Matrix3d&) const = default;

 private:
  std::array<std::array<double, 4>, 4> m_;
};

// Axis-aligned extents. A fresh box is empty (min above max, as the host's default-constructed extents).
struct Extents3d {
  static constexpr double kEmpty = 1e20;
  Point3d min{kEmpty, kEmpty, kEmpty};
  Point3d max{-kEmpty, -kEmpty, -kEmpty};

  constexpr Extents3d() = default;
  constexpr Extents3d(const Point3d& a, const Point3d& b) : min(a), max(b) {}

  bool isEmpty() const { return min.x > max.x || min.y > max.y || min.z > max.z; }
  void addPoint(const Point3d& p);
  void addExtents(const Extents3d& e);
  // Transforms the eight corners and keeps their bounding box.
  void transformBy(const Matrix3d& m);
  Extents3d transformed(const Matrix3d& m) const {
    Extents3d e = *this;
    e.transformBy(m);
    return e;
  }
  bool operator==(const Extents3d&) const = default;
};

// The arbitrary-axis rule of the DXF object coordinate system: the X axis of the OCS of an entity with
// extrusion normal n is Wy x n when |n.x| and |n.y| are both below 1/64, else Wz x n; Y is n x X.
Vector3d arbitraryAxisX(const Vector3d& normal);
// The matrix taking OCS coordinates of an entity with this normal to WCS (identity for (0, 0, 1)).
Matrix3d ocsToWcs(const Vector3d& normal);
Point3d ocsToWcs(const Point3d& p, const Vector3d& normal);

}  // namespace platform
