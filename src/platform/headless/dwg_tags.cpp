// The groups made from a DWG drawing's objects and their replay to the DXF reader.
#include "platform/headless/dwg_tags.h"

#include <algorithm>

namespace headless {

std::string dwgHex(std::uint64_t value) {
  char digits[17];
  int n = 0;
  do {
    digits[n++] = "0123456789ABCDEF"[value & 15];
    value >>= 4;
  } while (value);
  std::string out;
  while (n > 0) out += digits[--n];
  return out;
}

void DwgTagList::text(int code, std::string_view value) {
  Tag t;
  t.code = static_cast<std::int16_t>(code);
  t.type = tagTypeOf(code);
  if (t.type != TagType::Handle && t.type != TagType::Binary) t.type = TagType::Text;
  t.text.begin = static_cast<std::uint32_t>(texts_.size());
  t.text.length = static_cast<std::uint32_t>(value.size());
  texts_.append(value.data(), value.size());
  tags_.push_back(t);
}

void DwgTagList::real(int code, double value) {
  Tag t;
  t.code = static_cast<std::int16_t>(code);
  t.type = TagType::Real;
  t.real = value;
  tags_.push_back(t);
}

void DwgTagList::integer(int code, long long value) {
  Tag t;
  t.code = static_cast<std::int16_t>(code);
  t.type = tagTypeOf(code);
  if (!isIntegral(t.type)) t.type = TagType::Int32;
  t.integer = value;
  tags_.push_back(t);
}

void DwgTagList::handle(int code, std::uint64_t value) {
  text(code, dwgHex(value));  // at most 16 digits: no allocation
  tags_.back().type = TagType::Handle;
}

void DwgTagList::point(int code, const DwgPoint3& p) {
  real(code, p.x);
  real(code + 10, p.y);
  real(code + 20, p.z);
}

void DwgTagList::point(int code, const DwgPoint2& p, double z) { point(code, DwgPoint3{p.x, p.y, z}); }

void DwgTagList::record(std::string_view type, std::uint64_t handle) {
  records_.emplace_back(tags_.size(), handle);
  text(0, type);
}

void DwgTagList::append(const DwgTagList& other, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) {
    Tag t = other.tags_[i];
    if (t.code == 0) {
      // Records keep their handles for messages.
      auto it = std::upper_bound(other.records_.begin(), other.records_.end(), std::make_pair(i, ~std::uint64_t(0)));
      records_.emplace_back(tags_.size(), it == other.records_.begin() ? 0 : std::prev(it)->second);
    }
    if (t.holdsText()) {
      const std::string_view s = other.textOf(t);
      t.text.begin = static_cast<std::uint32_t>(texts_.size());
      texts_.append(s.data(), s.size());
    }
    tags_.push_back(t);
  }
}

void DwgTagList::link(const DwgTagList& other, std::size_t begin, std::size_t end) {
  if (begin < end) links_.push_back({tags_.size(), &other, begin, end});
}

void DwgTagList::truncate(std::size_t begin) {
  // Texts are appended in the order of their tags: the first dropped tag with a text starts the texts dropped.
  for (std::size_t i = begin; i < tags_.size(); ++i)
    if (tags_[i].holdsText()) {
      texts_.truncate(tags_[i].text.begin);
      break;
    }
  tags_.truncate(begin);
  while (!records_.empty() && records_.back().first >= begin) records_.pop_back();
  while (!links_.empty() && links_.back().at > begin) links_.pop_back();
}

std::uint64_t DwgTagList::handleAt(std::size_t i) const {
  auto it = std::upper_bound(records_.begin(), records_.end(), std::make_pair(i, ~std::uint64_t(0)));
  return it == records_.begin() ? 0 : std::prev(it)->second;
}

DwgTagSource::DwgTagSource(const DwgTagList& tags, long long fileSize) : fileSize_(fileSize) {
  std::size_t position = 0, own = 0;
  auto add = [&](const DwgTagList* list, std::size_t begin, std::size_t end) {
    if (begin >= end) return;
    segments_.push_back({list, begin, end, position});
    position += end - begin;
  };
  for (const DwgTagList::Link& l : tags.links_) {
    add(&tags, own, l.at);
    own = l.at;
    add(l.list, l.begin, l.end);
  }
  add(&tags, own, tags.size());
  if (!segments_.empty()) next_ = segments_[0].begin;
}

bool DwgTagSource::next(RawTag& tag) {
  if (segment_ >= segments_.size()) return false;
  const Segment& s = segments_[segment_];
  const DwgTagList& list = *s.list;
  const DwgTagList::Tag& t = list[next_];
  if (++next_ == s.end && ++segment_ < segments_.size()) next_ = segments_[segment_].begin;
  ++replayed_;
  tag = RawTag();
  tag.code = t.code;
  tag.type = t.type;
  // As the tokenizer gives them: an integral group's value also as a real.
  if (t.holdsText()) {
    tag.text = list.textOf(t);
  } else if (t.type == TagType::Real) {
    tag.real = t.real;
  } else {
    tag.integer = t.integer;
    tag.real = static_cast<double>(t.integer);
  }
  return true;
}

std::string DwgTagSource::place(long long position) const {
  const auto at = static_cast<std::size_t>(position);
  auto s = std::upper_bound(segments_.begin(), segments_.end(), at,
                            [](std::size_t p, const Segment& x) { return p < x.firstPosition; });
  if (s == segments_.begin()) return "the drawing's header";
  --s;
  const std::uint64_t handle = s->list->handleAt(s->begin + (at - s->firstPosition));
  return handle ? "object " + dwgHex(handle) : "the drawing's header";
}

}  // namespace headless
