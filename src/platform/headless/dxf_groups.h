// Reading the stored groups of one entity or object: values by group code, points, OCS conversion.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/geometry.h"
#include "platform/headless/dxf_data.h"

namespace headless {

// A view of the groups of one record. Lookups stop at extension data (1001 and after) and skip
// application groups ({ACAD_REACTORS ... }), whose codes mean something else.
class Groups {
 public:
  Groups(const platform::DatabaseData& data, std::uint32_t begin, std::uint32_t count);
  Groups(const platform::DatabaseData& data, const platform::EntityRec& e) : Groups(data, e.tagBegin, e.tagCount) {}

  const platform::DatabaseData& data() const { return data_; }
  std::uint32_t size() const { return count_; }
  const platform::StoredTag& at(std::uint32_t i) const { return tags_[i]; }
  std::string_view textAt(std::uint32_t i) const { return data_.text(tags_[i]); }

  // The first group with this code (in the entity's own groups), or null.
  const platform::StoredTag* find(int code) const;
  // The first group with this code after the subclass marker (100) with this name, or null.
  const platform::StoredTag* findIn(std::string_view subclass, int code) const;
  bool has(int code) const { return find(code) != nullptr; }

  double real(int code, double def = 0.0) const;
  long long integer(int code, long long def = 0) const;
  std::string_view text(int code, std::string_view def = {}) const;
  // The point whose x has this code (y and z follow with code + 10 and code + 20; absent ones are 0).
  platform::Point3d point(int xCode, platform::Point3d def = {}) const;
  platform::Vector3d vector(int xCode, platform::Vector3d def) const;
  // Every point with this x code, in order (vertex lists).
  std::vector<platform::Point3d> points(int xCode) const;
  // Every value with this code, in order.
  std::vector<double> reals(int code) const;
  // The extrusion direction (210), (0, 0, 1) by default.
  platform::Vector3d normal() const;
  // The number of groups before extension data.
  std::uint32_t ownCount() const { return own_; }

  // Calls visit(i, subclass) for each own group outside application groups ("{ACAD_REACTORS" ... "}"),
  // with the subclass marker it follows ("" before the first). Markers themselves are visited too. The
  // visitor returns false to stop.
  template <typename Visit>
  void visitOwn(Visit&& visit) const {
    int depth = 0;
    std::string_view subclass;
    for (std::uint32_t i = 0; i < own_; ++i) {
      const platform::StoredTag& t = tags_[i];
      if (t.code == 102) {
        depth += data_.text(t).starts_with("{") ? 1 : -1;
        continue;
      }
      if (depth > 0) continue;
      if (t.code == 100) subclass = data_.text(t);
      if (!visit(i, subclass)) return;
    }
  }

 private:
  const platform::DatabaseData& data_;
  const platform::StoredTag* tags_;
  std::uint32_t count_;
  std::uint32_t own_;  // groups before extension data
  std::uint32_t begin_ = 0;  // the record's first group in the database
  // The records this thread indexed by code, when the database is read to the end (see find), and the
  // index of this record among them with its stamp, which changes once the index is given to another.
  struct RecentRecords* recent_ = nullptr;
  mutable const struct FirstGroups* index_ = nullptr;
  mutable std::uint32_t indexStamp_ = 0;

  // The index of this record, indexed anew when another has taken its place; null when it has none.
  const FirstGroups* index() const;
  // The point whose x group is x.
  platform::Point3d pointAt(const platform::StoredTag* x, int xCode) const;
};

}  // namespace headless
