// Group lookups over stored records.
#include "platform/headless/dxf_groups.h"

namespace headless {

using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

Groups::Groups(const platform::DatabaseData& data, std::uint32_t begin, std::uint32_t count)
    : data_(data), tags_(data.tags.data() + begin), count_(count), own_(count) {
  for (std::uint32_t i = 0; i < count; ++i)
    if (tags_[i].code == 1001) {
      own_ = i;
      break;
    }
}

const StoredTag* Groups::find(int code) const {
  const StoredTag* found = nullptr;
  visitOwn([&](std::uint32_t i, std::string_view) {
    if (tags_[i].code == code) found = &tags_[i];
    return found == nullptr;
  });
  return found;
}

const StoredTag* Groups::findIn(std::string_view subclass, int code) const {
  bool inside = false;
  for (std::uint32_t i = 0; i < own_; ++i) {
    const StoredTag& t = tags_[i];
    if (t.code == 100) inside = data_.text(t) == subclass;
    else if (inside && t.code == code) return &t;
  }
  return nullptr;
}

double Groups::real(int code, double def) const {
  const StoredTag* t = find(code);
  if (!t) return def;
  return t->type == TagType::Real ? t->real : static_cast<double>(t->integer);
}

long long Groups::integer(int code, long long def) const {
  const StoredTag* t = find(code);
  if (!t) return def;
  return t->type == TagType::Real ? platform::saturatingInteger(t->real) : t->integer;
}

std::string_view Groups::text(int code, std::string_view def) const {
  const StoredTag* t = find(code);
  return t ? data_.text(*t) : def;
}

Point3d Groups::point(int xCode, Point3d def) const {
  const StoredTag* x = find(xCode);
  if (!x) return def;
  const std::uint32_t i = static_cast<std::uint32_t>(x - tags_);
  Point3d p{x->real, 0.0, 0.0};
  if (i + 1 < own_ && tags_[i + 1].code == xCode + 10) {
    p.y = tags_[i + 1].real;
    if (i + 2 < own_ && tags_[i + 2].code == xCode + 20) p.z = tags_[i + 2].real;
  }
  return p;
}

Vector3d Groups::vector(int xCode, Vector3d def) const {
  if (!find(xCode)) return def;
  return point(xCode).asVector();
}

std::vector<Point3d> Groups::points(int xCode) const {
  std::vector<Point3d> out;
  for (std::uint32_t i = 0; i < own_; ++i) {
    if (tags_[i].code != xCode) continue;
    Point3d p{tags_[i].real, 0.0, 0.0};
    if (i + 1 < own_ && tags_[i + 1].code == xCode + 10) {
      p.y = tags_[i + 1].real;
      if (i + 2 < own_ && tags_[i + 2].code == xCode + 20) p.z = tags_[i + 2].real;
    }
    out.push_back(p);
  }
  return out;
}

std::vector<double> Groups::reals(int code) const {
  std::vector<double> out;
  for (std::uint32_t i = 0; i < own_; ++i)
    if (tags_[i].code == code) out.push_back(tags_[i].type == TagType::Real ? tags_[i].real : static_cast<double>(tags_[i].integer));
  return out;
}

Vector3d Groups::normal() const {
  const Vector3d n = vector(210, {0, 0, 1});
  return n.length() == 0.0 ? Vector3d{0, 0, 1} : n;
}

}  // namespace headless
