// Group lookups over stored records.
#include "platform/headless/dxf_groups.h"

#include <array>

namespace headless {

using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

// The first own group of each code of one record. An entity is asked for a dozen values in a row (its key,
// its details, its extents), each of which would scan its groups; the record last asked about is indexed
// once per thread instead. Records of a database still being read are not indexed.
struct FirstGroups {
  static constexpr std::size_t kSlots = 128;  // a power of two, well above the distinct codes of a record
  static constexpr std::uint16_t kAbsent = 0xFFFF;
  std::uint64_t database = 0;
  std::uint32_t begin = 0, count = 0;
  std::uint32_t own = 0;  // groups before extension data
  std::uint32_t stamp = 0;
  struct Slot {
    std::int16_t code;
    std::uint16_t first;
    std::uint32_t stamp;
  };
  std::array<Slot, kSlots> slots{};

  static std::size_t slotOf(int code) { return static_cast<std::size_t>(code * 0x9E37) >> 4 & (kSlots - 1); }
  // The first index of the code, or kAbsent.
  std::uint16_t first(int code) const {
    for (std::size_t i = slotOf(code);; i = (i + 1) & (kSlots - 1)) {
      const Slot& s = slots[i];
      if (s.stamp != stamp) return kAbsent;
      if (s.code == code) return s.first;
    }
  }
};

// Records larger than this, or with more distinct codes than half the slots, are scanned as before.
inline constexpr std::uint32_t kIndexedGroups = 0xFFFF;

// The records last indexed by this thread. An entity's groups are often read alongside those of its owner
// or owned entities (a polyline and its vertices), so a few are kept, the oldest replaced first.
struct RecentRecords {
  static constexpr std::size_t kKept = 4;
  std::array<FirstGroups, kKept> records;
  std::size_t next = 0;

  const FirstGroups* find(std::uint64_t database, std::uint32_t begin, std::uint32_t count) const {
    for (const FirstGroups& r : records)
      if (r.database == database && r.begin == begin && r.count == count) return &r;
    return nullptr;
  }
  // Indexes the record in place of the oldest; null when it has too many groups or codes.
  const FirstGroups* index(const Groups& g, std::uint64_t database, std::uint32_t begin);
};

const FirstGroups* RecentRecords::index(const Groups& g, std::uint64_t database, std::uint32_t begin) {
  if (g.size() > kIndexedGroups) return nullptr;
  FirstGroups& index = records[next];
  next = (next + 1) % kKept;
  index.database = 0;
  if (++index.stamp == 0) {  // the stamps went round: forget every slot
    index.slots.fill({});
    index.stamp = 1;
  }
  std::size_t distinct = 0;
  bool fits = true;
  g.visitOwn([&](std::uint32_t i, std::string_view) {
    const int code = g.at(i).code;
    for (std::size_t s = FirstGroups::slotOf(code);; s = (s + 1) & (FirstGroups::kSlots - 1)) {
      FirstGroups::Slot& slot = index.slots[s];
      if (slot.stamp != index.stamp) {
        if (++distinct > FirstGroups::kSlots / 2) return fits = false;
        slot = {static_cast<std::int16_t>(code), static_cast<std::uint16_t>(i), index.stamp};
        break;
      }
      if (slot.code == code) break;
    }
    return true;
  });
  if (!fits) return nullptr;
  index.database = database;
  index.begin = begin;
  index.count = g.size();
  index.own = g.ownCount();
  return &index;
}

namespace {

RecentRecords& recentRecords() {
  thread_local RecentRecords recent;
  return recent;
}

}  // namespace

Groups::Groups(const platform::DatabaseData& data, std::uint32_t begin, std::uint32_t count)
    : data_(data), tags_(data.tags.data() + begin), count_(count), own_(count), begin_(begin) {
  if (data.serial != 0) {
    recent_ = &recentRecords();
    if ((index_ = recent_->find(data.serial, begin, count))) {
      indexStamp_ = index_->stamp;
      own_ = index_->own;
      return;
    }
  }
  for (std::uint32_t i = 0; i < count; ++i)
    if (tags_[i].code == 1001) {
      own_ = i;
      break;
    }
  if (recent_ && (index_ = recent_->index(*this, data.serial, begin))) indexStamp_ = index_->stamp;
}

const FirstGroups* Groups::index() const {
  // Another record indexed meanwhile (by a Groups made while this one lives) may have taken its place.
  if (index_ && index_->stamp == indexStamp_) return index_;
  index_ = recent_->find(data_.serial, begin_, count_);
  if (!index_) index_ = recent_->index(*this, data_.serial, begin_);
  if (index_) indexStamp_ = index_->stamp;
  return index_;
}

const StoredTag* Groups::find(int code) const {
  if (recent_) {
    if (const FirstGroups* index = this->index()) {
      const std::uint16_t first = index->first(code);
      return first == FirstGroups::kAbsent ? nullptr : &tags_[first];
    }
  }
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
  return x ? pointAt(x, xCode) : def;
}

Point3d Groups::pointAt(const StoredTag* x, int xCode) const {
  const std::uint32_t i = static_cast<std::uint32_t>(x - tags_);
  Point3d p{x->real, 0.0, 0.0};
  if (i + 1 < own_ && tags_[i + 1].code == xCode + 10) {
    p.y = tags_[i + 1].real;
    if (i + 2 < own_ && tags_[i + 2].code == xCode + 20) p.z = tags_[i + 2].real;
  }
  return p;
}

Vector3d Groups::vector(int xCode, Vector3d def) const {
  const StoredTag* x = find(xCode);
  return x ? pointAt(x, xCode).asVector() : def;
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
