// Key and text captures that only block references, hatches, solids, surfaces and the other kinds of this family use.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "comparers/CVkDetailedEntity.h"
#include "comparers/Captures.h"

namespace capture {

// Keyed by the placed extents: "%s,%.2f,%.2f,%.2f,%.2f" of the DXF name, minimum x, y and maximum x, y;
// the Z text is "%.2f,%.2f" of the minimum and maximum Z.
inline void extentsKey(const Entity&, const Matrix3d&, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Extents3d& e = out.placed;
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f", self.dxfName(), e.min.x, e.min.y, e.max.x, e.max.y);
  platform::fmtTo(out.zText, "%.2f,%.2f", out.minZ, out.maxZ);
}

// Keyed by the position: "%s,%.2f,%.2f" of the DXF name and the position's x, y after the load transform;
// the Z text is "%.2f" of its z.
inline void positionKey(const Entity& e, const Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // position
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f", p.z);
}

// The area of a surface for its key, "%f": 0 where its faces cannot be measured (curved faces).
inline double surfaceArea(const Entity& e) {
  const double a = e.real(Accessor::modelerArea);  // AcDbSurface::getArea
  return std::isnan(a) ? 0.0 : a;
}

// Surfaces: "%s,%f,%.2f,%.2f,%.2f,%.2f" of the DXF name, the area and the placed extents' minimum x, y and
// maximum x, y; the Z text is "%.2f,%.2f" of the minimum and maximum Z.
inline void surfaceKey(const Entity& e, const Matrix3d&, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Extents3d& x = out.placed;
  platform::fmtTo(out.fullKey, "%s,%f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), surfaceArea(e), x.min.x, x.min.y, x.max.x,
                              x.max.y);
  platform::fmtTo(out.zText, "%.2f,%.2f", out.minZ, out.maxZ);
}

// "%.2f" of a quantity measured from the ACIS data; where the faces cannot be measured (curved faces), the
// digest of the ACIS data stands for it, so that the texts are equal exactly for equal shapes.
template <Accessor A>
std::string measured(const Entity& e, const Matrix3d&) {
  const double v = e.real(A);
  return std::isnan(v) ? e.text(Accessor::acisDigest) : platform::fmt("%.2f", v);
}

// "%d" of one bit of a flag accessor: 1 when set.
template <Accessor A, long long Bit>
std::string bit(const Entity& e, const Matrix3d&) {
  return platform::fmt("%d", (e.integer(A) & Bit) != 0 ? 1 : 0);
}

// A text the headless host cannot read from a DXF drawing: empty, so it never differs (the comparer's
// source says which).
inline std::string unreadable(const Entity&, const Matrix3d&) { return {}; }

// "%.2f,%.2f" of every point of a list as stored (points that are not drawing coordinates, such as pixels).
template <Accessor A>
std::vector<std::string> rawPoints2(const Entity& e, const Matrix3d&) {
  std::vector<std::string> out;
  for (const platform::Point3d& p : e.points(A)) out.push_back(platform::fmt("%.2f,%.2f", p.x, p.y));
  return out;
}

}  // namespace capture
