// Text captures that only the text, dimension and annotation comparers need, and the detail properties
// that every dimension comparer shares.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "comparers/CVkDetailedEntity.h"
#include "comparers/Captures.h"

namespace capture {

// "%.2f,%.2f,%.2f" of a point that is not moved by the load transform (a position relative to its entity).
template <Accessor A>
std::string relativePoint3(const Entity& e, const Matrix3d&) {
  const platform::Point3d p = e.point(A);
  return platform::fmt("%.2f,%.2f,%.2f", p.x, p.y, p.z);
}

// "%d" of the number of points of a list.
template <Accessor A>
std::string pointCount(const Entity& e, const Matrix3d&) {
  return platform::fmt("%d", e.points(A).size());
}

// "%.2f, %.2f" (with a blank) of the last point of a list after the load transform; "" for an empty list.
template <Accessor A>
std::string lastPoint2Spaced(const Entity& e, const Matrix3d& load) {
  const std::vector<platform::Point3d> points = e.points(A);
  if (points.empty()) return {};
  const platform::Point3d p = load.transform(points.back());
  return platform::fmt("%.2f, %.2f", p.x, p.y);
}

}  // namespace capture

// The key of attributes and attribute definitions: the DXF name and the position (x, y) after the load
// transform; Z text of the position and the extents; the text style.
void attributeKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                  KeyTexts& out);

// The eight detail properties of every dimension, in their order.
inline constexpr std::array<DetailProperty, 8> kDimensionDetails{{
    {"用户提供尺寸标注的文本字符串不一样,",
     capture::text<platform::Accessor::dimensionText>},                                // AcDbDimension::dimensionText
    {"旋转角度不一样,", capture::real2<platform::Accessor::textRotation>},             // AcDbDimension::textRotation
    {"维度的行间距样式不一样,", capture::int1<platform::Accessor::lineSpacingStyle>},  // textLineSpacingStyle
    {"附着点值不一样,", capture::int1<platform::Accessor::textAttachment>},            // AcDbDimension::textAttachment
    {"行间距因子不一样,", capture::real2<platform::Accessor::lineSpacingFactor>},      // textLineSpacingFactor
    {"水平旋转（弧度）的尺寸不一样,", capture::real2<platform::Accessor::horizontalRotation>},     // horizontalRotation
    {"参考块的相对位置点不一样,", capture::relativePoint3<platform::Accessor::dimBlockPosition>},  // dimBlockPosition
    {"动态维度类型不一样,", capture::int1<platform::Accessor::isDynamicDimension>},                // isDynamicDimension
}};

// The dimension details followed by a subclass's own.
template <std::size_t N>
constexpr std::array<DetailProperty, 8 + N> withDimensionDetails(const std::array<DetailProperty, N>& own) {
  std::array<DetailProperty, 8 + N> all{};
  for (std::size_t i = 0; i < 8; ++i) all[i] = kDimensionDetails[i];
  for (std::size_t i = 0; i < N; ++i) all[8 + i] = own[i];
  return all;
}

// The text style of a text-bearing entity: the name of its text style record.
inline std::string textStyleText(const platform::Entity& e) { return e.text(platform::Accessor::textStyleName); }
