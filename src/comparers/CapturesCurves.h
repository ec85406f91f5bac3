// Captures the curve comparers share: keys of entities drawn through a list of points (count and leading
// pair in canonical order), point lists and folded lists of reals.
#pragma once

#include <string>
#include <vector>

#include "comparers/CVkDetailedEntity.h"
#include "comparers/Captures.h"

namespace capture {

using platform::Point3d;

// The first two points of a list after the load transform, in the canonical order of a line's end points;
// false with fewer than two points.
inline bool leadingPair(const std::vector<Point3d>& points, const Matrix3d& load, Point3d& first, Point3d& second) {
  if (points.size() < 2) return false;
  first = load.transform(points[0]);
  second = load.transform(points[1]);
  orderCanonically(first, second);
  return true;
}

// The key of an entity drawn through points: "%s,%d,%.2f,%.2f,%.2f,%.2f" of the DXF name, the point count
// and the leading pair, and the Z text "%.2f,%.2f" of the pair's Z. With fewer than two points both stay
// empty (the key text is then "0,0").
inline void pointListKey(const std::vector<Point3d>& points, const Matrix3d& load, const CVkAcadEntityBase& self,
                         KeyTexts& out) {
  Point3d a, b;
  if (!leadingPair(points, load, a, b)) return;
  platform::fmtTo(out.fullKey, "%s,%d,%.2f,%.2f,%.2f,%.2f", self.dxfName(), points.size(), a.x, a.y, b.x, b.y);
  platform::fmtTo(out.zText, "%.2f,%.2f", a.z, b.z);
}

// "%.2f,%.2f" of the first or second point of the leading pair; empty with fewer than two points.
template <Accessor A, int Which>
std::string leadingPointText(const Entity& e, const Matrix3d& load) {
  Point3d pair[2];
  if (!leadingPair(e.points(A), load, pair[0], pair[1])) return {};
  return platform::fmt("%.2f,%.2f", pair[Which].x, pair[Which].y);
}
template <Accessor A, int Which>
void leadingPointValues(const Entity& e, const Matrix3d& load, TextDigest& digest) {
  Point3d pair[2];
  const bool found = leadingPair(e.points(A), load, pair[0], pair[1]);
  digest.add(std::uint64_t{found});
  if (!found) return;
  addBits(digest, pair[Which].x);
  addBits(digest, pair[Which].y);
}
template <Accessor A, int Which>
inline constexpr TextCapture leadingPoint{leadingPointText<A, Which>, leadingPointValues<A, Which>};

// A list of reals folded into one text by "%s,%.2f" (the text so far, a comma, the next value), so that it
// starts with a comma: ",0.00,0.00,1.00".
template <Accessor A>
std::string realsFolded(const Entity& e, const Matrix3d&) {
  std::string out;
  for (double v : e.reals(A)) platform::formatTo(out, ",%.2f", {v});
  return out;
}

// "%.2f, %.2f" of a vector's x and y, with a blank after the comma.
template <Accessor A>
std::string vector2Spaced(const Entity& e, const Matrix3d&) {
  const platform::Vector3d v = e.vector(A);
  return platform::fmt("%.2f, %.2f", v.x, v.y);
}

}  // namespace capture
