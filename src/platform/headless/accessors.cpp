// Dispatch of typed accessors to the families' implementations, by accessor and entity class.
#include <array>
#include <cassert>
#include <vector>

#include "platform/headless/accessor_table.h"

namespace platform {

namespace {

constexpr std::size_t kAccessorCount = 0
#define VK_COUNT_ACCESSOR(name, kind) +1
    VK_ACCESSORS(VK_COUNT_ACCESSOR)
#undef VK_COUNT_ACCESSOR
    ;
constexpr std::size_t kClassCount = 0
#define VK_COUNT_CLASS(cls, parent, name) +1
    VK_DB_CLASSES(VK_COUNT_CLASS)
#undef VK_COUNT_CLASS
    ;

int depthOf(DbClass c) {
  int d = 0;
  while (parentClass(c) != c) {
    c = parentClass(c);
    ++d;
  }
  return d;
}

// [accessor][class] -> the implementation for that class: the entry of the most derived class that
// the class is a kind of.
const std::vector<std::array<const headless::AccessorImpl*, kClassCount>>& dispatch() {
  static const auto table = [] {
    std::vector<std::array<const headless::AccessorImpl*, kClassCount>> t(kAccessorCount);
    for (auto& row : t) row.fill(nullptr);
    const std::span<const headless::AccessorImpl> families[] = {headless::commonAccessors(), headless::curveAccessors(),
                                                                headless::textAccessors(), headless::blockAccessors()};
    std::vector<const headless::AccessorImpl*> all;
    for (auto family : families)
      for (const auto& impl : family) all.push_back(&impl);
    std::array<int, kClassCount> depthSet{};
    depthSet.fill(-1);
    std::vector<std::array<int, kClassCount>> best(kAccessorCount, depthSet);
    for (const headless::AccessorImpl* impl : all) {
      const int depth = depthOf(impl->cls);
      const auto a = static_cast<std::size_t>(impl->accessor);
      for (std::size_t c = 0; c < kClassCount; ++c) {
        if (!isKindOf(static_cast<DbClass>(c), impl->cls) || depth <= best[a][c]) continue;
        best[a][c] = depth;
        t[a][c] = impl;
      }
    }
    return t;
  }();
  return table;
}

const headless::AccessorImpl* implFor(Accessor a, DbClass c) {
  return dispatch()[static_cast<std::size_t>(a)][static_cast<std::size_t>(c)];
}

}  // namespace

// Asking an accessor for another kind than it is declared with is a fault of the caller (it would always
// read the default); debug builds stop on it.
#define VK_ACCESSOR_METHOD(type, member, kind, fallback)                \
  type Entity::member(Accessor a) const {                               \
    assert(accessorKind(a) == AccessorKind::kind);                      \
    const headless::AccessorImpl* impl = implFor(a, dbClass());         \
    if (!impl || !impl->member) return fallback;                        \
    return impl->member(headless::EntityView(db_->data(), index_));     \
  }

VK_ACCESSOR_METHOD(double, real, Real, 0.0)
VK_ACCESSOR_METHOD(long long, integer, Integer, 0)
VK_ACCESSOR_METHOD(Point3d, point, Point, Point3d())
VK_ACCESSOR_METHOD(Vector3d, vector, Vector, Vector3d())
VK_ACCESSOR_METHOD(std::string, text, Text, std::string())
VK_ACCESSOR_METHOD(std::vector<Point3d>, points, Points, {})
VK_ACCESSOR_METHOD(std::vector<double>, reals, Reals, {})
VK_ACCESSOR_METHOD(std::vector<std::string>, texts, Texts, {})

#undef VK_ACCESSOR_METHOD

}  // namespace platform
