// Text captures for detail properties: each formats one accessor's answer as the comparers' texts do, and
// the common ones also digest the values they format.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "comparers/CVkDetailedEntity.h"
#include "platform/database.h"
#include "platform/text.h"

namespace capture {

using platform::Accessor;
using platform::Entity;
using platform::Matrix3d;

// A real's bits, for the values captures.
inline void addBits(TextDigest& digest, double v) { digest.add(std::bit_cast<std::uint64_t>(v)); }

// "%.2f" of a real.
template <Accessor A>
std::string real2Text(const Entity& e, const Matrix3d&) {
  return platform::fmt("%.2f", e.real(A));
}
template <Accessor A>
void realValue(const Entity& e, const Matrix3d&, TextDigest& digest) {
  addBits(digest, e.real(A));
}
template <Accessor A>
inline constexpr TextCapture real2{real2Text<A>, realValue<A>};

// "%d" of an integer or flag.
template <Accessor A>
std::string int1Text(const Entity& e, const Matrix3d&) {
  return platform::fmt("%d", e.integer(A));
}
template <Accessor A>
void integerValue(const Entity& e, const Matrix3d&, TextDigest& digest) {
  digest.add(static_cast<std::uint64_t>(e.integer(A)));
}
template <Accessor A>
inline constexpr TextCapture int1{int1Text<A>, integerValue<A>};

// A text as it is.
template <Accessor A>
std::string text(const Entity& e, const Matrix3d&) {
  return e.text(A);
}

// "%.2f,%.2f,%.2f" of a vector (directions are not moved by the load transform).
template <Accessor A>
std::string vector3Text(const Entity& e, const Matrix3d&) {
  const platform::Vector3d v = e.vector(A);
  return platform::fmt("%.2f,%.2f,%.2f", v.x, v.y, v.z);
}
template <Accessor A>
void vectorValues(const Entity& e, const Matrix3d&, TextDigest& digest) {
  const platform::Vector3d v = e.vector(A);
  addBits(digest, v.x);
  addBits(digest, v.y);
  addBits(digest, v.z);
}
template <Accessor A>
inline constexpr TextCapture vector3{vector3Text<A>, vectorValues<A>};

// "%.2f,%.2f" of a vector's x and y.
template <Accessor A>
std::string vector2(const Entity& e, const Matrix3d&) {
  const platform::Vector3d v = e.vector(A);
  return platform::fmt("%.2f,%.2f", v.x, v.y);
}

// The values of a point after the load transform.
template <Accessor A>
void pointValues(const Entity& e, const Matrix3d& load, TextDigest& digest) {
  const platform::Point3d p = load.transform(e.point(A));
  addBits(digest, p.x);
  addBits(digest, p.y);
  addBits(digest, p.z);
}
// "%.2f,%.2f" of a point after the load transform.
template <Accessor A>
std::string point2Text(const Entity& e, const Matrix3d& load) {
  const platform::Point3d p = load.transform(e.point(A));
  return platform::fmt("%.2f,%.2f", p.x, p.y);
}
template <Accessor A>
inline constexpr TextCapture point2{point2Text<A>, pointValues<A>};
// "%.2f,%.2f,%.2f" of a point after the load transform.
template <Accessor A>
std::string point3Text(const Entity& e, const Matrix3d& load) {
  const platform::Point3d p = load.transform(e.point(A));
  return platform::fmt("%.2f,%.2f,%.2f", p.x, p.y, p.z);
}
template <Accessor A>
inline constexpr TextCapture point3{point3Text<A>, pointValues<A>};

// The values of points [from, end) of a list after the load transform, x and y, after their count.
inline void pointsValues(const std::vector<platform::Point3d>& points, std::size_t from, const Matrix3d& load,
                         TextDigest& digest) {
  digest.add(static_cast<std::uint64_t>(points.size() > from ? points.size() - from : 0));
  for (std::size_t i = from; i < points.size(); ++i) {
    const platform::Point3d q = load.transform(points[i]);
    addBits(digest, q.x);
    addBits(digest, q.y);
  }
}
// "%.2f,%.2f" of every point of a list after the load transform.
template <Accessor A>
std::vector<std::string> points2Texts(const Entity& e, const Matrix3d& load) {
  std::vector<std::string> out;
  for (const platform::Point3d& p : e.points(A)) {
    const platform::Point3d q = load.transform(p);
    out.push_back(platform::fmt("%.2f,%.2f", q.x, q.y));
  }
  return out;
}
template <Accessor A>
void points2Values(const Entity& e, const Matrix3d& load, TextDigest& digest) {
  pointsValues(e.points(A), 0, load, digest);
}
template <Accessor A>
inline constexpr ListCapture points2{points2Texts<A>, points2Values<A>};

}  // namespace capture
