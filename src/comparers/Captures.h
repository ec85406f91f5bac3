// Text captures for detail properties: each formats one accessor's answer as the comparers' texts do.
#pragma once

#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/text.h"

namespace capture {

using platform::Accessor;
using platform::Entity;
using platform::Matrix3d;

// "%.2f" of a real.
template <Accessor A>
std::string real2(const Entity& e, const Matrix3d&) {
  return platform::fmt("%.2f", e.real(A));
}
// "%d" of an integer or flag.
template <Accessor A>
std::string int1(const Entity& e, const Matrix3d&) {
  return platform::fmt("%d", e.integer(A));
}
// A text as it is.
template <Accessor A>
std::string text(const Entity& e, const Matrix3d&) {
  return e.text(A);
}
// "%.2f,%.2f,%.2f" of a vector (directions are not moved by the load transform).
template <Accessor A>
std::string vector3(const Entity& e, const Matrix3d&) {
  const platform::Vector3d v = e.vector(A);
  return platform::fmt("%.2f,%.2f,%.2f", v.x, v.y, v.z);
}
// "%.2f,%.2f" of a vector's x and y.
template <Accessor A>
std::string vector2(const Entity& e, const Matrix3d&) {
  const platform::Vector3d v = e.vector(A);
  return platform::fmt("%.2f,%.2f", v.x, v.y);
}
// "%.2f,%.2f" of a point after the load transform.
template <Accessor A>
std::string point2(const Entity& e, const Matrix3d& load) {
  const platform::Point3d p = load.transform(e.point(A));
  return platform::fmt("%.2f,%.2f", p.x, p.y);
}
// "%.2f,%.2f,%.2f" of a point after the load transform.
template <Accessor A>
std::string point3(const Entity& e, const Matrix3d& load) {
  const platform::Point3d p = load.transform(e.point(A));
  return platform::fmt("%.2f,%.2f,%.2f", p.x, p.y, p.z);
}
// "%.2f,%.2f" of every point of a list after the load transform.
template <Accessor A>
std::vector<std::string> points2(const Entity& e, const Matrix3d& load) {
  std::vector<std::string> out;
  for (const platform::Point3d& p : e.points(A)) {
    const platform::Point3d q = load.transform(p);
    out.push_back(platform::fmt("%.2f,%.2f", q.x, q.y));
  }
  return out;
}

}  // namespace capture
