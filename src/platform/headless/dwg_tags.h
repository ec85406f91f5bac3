// The groups a DWG drawing's objects become, in DXF order, and the tag source that hands them to the reader.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/headless/dwg_bits.h"
#include "platform/headless/dxf_tokenizer.h"
#include "platform/pages.h"

namespace headless {

// Groups stored as the DXF reader receives them; texts live in one buffer, referred to by offset.
class DwgTagList {
 public:
  // A drawing makes a few dozen groups an entity: the value shares its room with the text's place.
  struct TextPlace {
    std::uint32_t begin, length;
  };
  struct Tag {
    std::int16_t code = 0;
    TagType type = TagType::Text;
    union {
      double real = 0.0;  // Real
      long long integer;  // the integral types
      TextPlace text;     // Text, Handle and Binary: the place in the list's buffer
    };
    bool holdsText() const { return type == TagType::Text || type == TagType::Handle || type == TagType::Binary; }
  };
  static_assert(sizeof(Tag) == 16);

  void text(int code, std::string_view value);
  void real(int code, double value);
  void integer(int code, long long value);
  // A handle as DXF writes it: upper-case hex digits without leading zeros.
  void handle(int code, std::uint64_t value);
  // The three groups code, code + 10 and code + 20.
  void point(int code, const DwgPoint3& p);
  void point(int code, const DwgPoint2& p, double z);
  // Starts a record (group 0); the handle names it in messages.
  void record(std::string_view type, std::uint64_t handle = 0);

  std::size_t size() const { return tags_.size(); }
  const Tag& operator[](std::size_t i) const { return tags_[i]; }
  std::string_view textOf(const Tag& t) const { return {texts_.data() + t.text.begin, t.text.length}; }
  // Appends the tags [begin, end) of another list (texts included).
  void append(const DwgTagList& other, std::size_t begin, std::size_t end);
  // Puts the tags [begin, end) of another list here without copying them: a source replaying this list
  // replays them in their place. The other list must outlive the replay and stay as it is.
  void link(const DwgTagList& other, std::size_t begin, std::size_t end);
  // Sets the value of the integer tag i (a value the reader works out once every entity is read).
  void setInteger(std::size_t i, long long value) { tags_[i].integer = value; }
  // Drops the tags from begin on (a record that could not be finished).
  void truncate(std::size_t begin);
  // The handle of the record that holds tag i, 0 when it has none.
  std::uint64_t handleAt(std::size_t i) const;

 private:
  // Mapped pages: a drawing's groups grow without being copied, and the largest lists take huge pages.
  platform::PageArray<Tag> tags_;
  platform::PageArray<char> texts_;
  std::vector<std::pair<std::size_t, std::uint64_t>> records_;  // first tag, handle
  // Linked ranges of other lists, each before the own tag at its place.
  struct Link {
    std::size_t at;
    const DwgTagList* list;
    std::size_t begin, end;
  };
  std::vector<Link> links_;
  friend class DwgTagSource;
};

// Replays a tag list, with the ranges linked into it, as if read from a DXF file; positions count the tags
// replayed, placed by their record's handle.
class DwgTagSource final : public TagSource {
 public:
  DwgTagSource(const DwgTagList& tags, long long fileSize);
  bool next(RawTag& tag) override;
  bool failed() const override { return false; }
  const std::string& error() const override { return error_; }
  std::string location() const override { return place(position()); }
  long long position() const override { return static_cast<long long>(replayed_ == 0 ? 0 : replayed_ - 1); }
  std::string place(long long position) const override;
  bool hasMoreInput() override { return segment_ < segments_.size(); }
  bool grew() const override { return false; }
  long long fileSize() const override { return fileSize_; }

 private:
  // The ranges replayed in order: own tags and linked ones, each with the position of its first tag.
  struct Segment {
    const DwgTagList* list;
    std::size_t begin, end;
    std::size_t firstPosition;
  };
  std::vector<Segment> segments_;
  std::size_t segment_ = 0, next_ = 0;  // the next tag: segments_[segment_].list's tag next_
  std::size_t replayed_ = 0;
  long long fileSize_;
  std::string error_;
};

std::string dwgHex(std::uint64_t value);

}  // namespace headless
