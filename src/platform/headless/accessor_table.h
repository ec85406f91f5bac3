// How the headless host answers typed accessors: tables of implementations per entity family, each
// entry serving a class and its subclasses (a more derived entry wins).
#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/headless/dxf_data.h"
#include "platform/headless/dxf_groups.h"

namespace headless {

// One entity as the accessor implementations see it.
struct EntityView {
  const platform::DatabaseData& data;
  std::uint32_t index;
  const platform::EntityRec& rec;
  Groups g;

  EntityView(const platform::DatabaseData& d, std::uint32_t i)
      : data(d), index(i), rec(d.entities[i]), g(d, d.entities[i]) {}
  platform::Vector3d normal() const { return g.normal(); }
  // An OCS point of this entity in WCS.
  platform::Point3d toWcs(const platform::Point3d& ocs) const { return platform::ocsToWcs(ocs, normal()); }
  // The point with this x code, read in the entity's OCS and returned in WCS.
  platform::Point3d ocsPoint(int xCode) const { return toWcs(g.point(xCode)); }
};

struct AccessorImpl {
  platform::Accessor accessor;
  platform::DbClass cls;
  double (*real)(const EntityView&) = nullptr;
  long long (*integer)(const EntityView&) = nullptr;
  platform::Point3d (*point)(const EntityView&) = nullptr;
  platform::Vector3d (*vector)(const EntityView&) = nullptr;
  std::string (*text)(const EntityView&) = nullptr;
  std::vector<platform::Point3d> (*points)(const EntityView&) = nullptr;
  std::vector<double> (*reals)(const EntityView&) = nullptr;
  std::vector<std::string> (*texts)(const EntityView&) = nullptr;
};

// Builders for table entries, one per kind.
inline AccessorImpl realOf(platform::Accessor a, platform::DbClass c, double (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.real = f;
  return i;
}
inline AccessorImpl integerOf(platform::Accessor a, platform::DbClass c, long long (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.integer = f;
  return i;
}
inline AccessorImpl pointOf(platform::Accessor a, platform::DbClass c, platform::Point3d (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.point = f;
  return i;
}
inline AccessorImpl vectorOf(platform::Accessor a, platform::DbClass c, platform::Vector3d (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.vector = f;
  return i;
}
inline AccessorImpl textOf(platform::Accessor a, platform::DbClass c, std::string (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.text = f;
  return i;
}
inline AccessorImpl pointsOf(platform::Accessor a, platform::DbClass c,
                             std::vector<platform::Point3d> (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.points = f;
  return i;
}
inline AccessorImpl realsOf(platform::Accessor a, platform::DbClass c, std::vector<double> (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.reals = f;
  return i;
}
inline AccessorImpl textsOf(platform::Accessor a, platform::DbClass c,
                            std::vector<std::string> (*f)(const EntityView&)) {
  AccessorImpl i{a, c};
  i.texts = f;
  return i;
}

// The families' tables; each lives in its own source file.
std::span<const AccessorImpl> commonAccessors();
std::span<const AccessorImpl> curveAccessors();
std::span<const AccessorImpl> textAccessors();
std::span<const AccessorImpl> blockAccessors();

}  // namespace headless
