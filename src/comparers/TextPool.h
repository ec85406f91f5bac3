// The texts of one drawing's comparers in one buffer, each named by a 32-bit id.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pages.h"

// Comparers capture hundreds of thousands of short texts, many of them repeated ("0.00", layer names,
// "ByBlock") and many unique (coordinates). Texts are appended to one buffer and a comparer keeps ids; a
// small cache of recent texts lets a repeated text reuse its id, without the cost of indexing every unique
// one. Equal ids are equal texts; unequal ids may still be equal texts. A pool belongs to one drawing and
// is used by one thread at a time.
class CTextPool {
 public:
  using Id = std::uint32_t;
  static constexpr Id kEmpty = 0;  // the empty text, in every pool

  CTextPool();
  CTextPool(const CTextPool&) = delete;
  CTextPool& operator=(const CTextPool&) = delete;

  // An id for the text: the id of an equal text the cache remembers, else a new one. Throws
  // std::length_error past 4 GB of texts.
  Id intern(std::string_view text);
  // A new id for a text that is unlikely to be repeated (a key of coordinates), without the cache.
  Id add(std::string_view text);
  std::string_view view(Id id) const { return {bytes_.data() + starts_[id], starts_[id + 1] - starts_[id]}; }
  // Whether two texts are equal: the pool's texts are short, and comparing them word by word in place
  // costs less than a call to the library's comparison.
  static bool equal(std::string_view a, std::string_view b) {
    const std::size_t n = a.size();
    if (n != b.size()) return false;
    const char* x = a.data();
    const char* y = b.data();
    if (n >= 8) {
      if (n > 16) return std::memcmp(x, y, n) == 0;
      return load<std::uint64_t>(x) == load<std::uint64_t>(y) && load<std::uint64_t>(x + n - 8) == load<std::uint64_t>(y + n - 8);
    }
    if (n >= 4) return load<std::uint32_t>(x) == load<std::uint32_t>(y) && load<std::uint32_t>(x + n - 4) == load<std::uint32_t>(y + n - 4);
    for (std::size_t i = 0; i < n; ++i)
      if (x[i] != y[i]) return false;
    return true;
  }

  // Runs of ids (a comparer's detail texts and lists): the run's first position and its length.
  struct Run {
    std::uint32_t begin = 0;
    std::uint32_t size = 0;
  };
  // Opens a run at the end of the id store; ids pushed until closeRun() belong to it.
  std::uint32_t openRun() const { return static_cast<std::uint32_t>(runs_.size()); }
  void push(Id id) { runs_.push_back(id); }
  Run closeRun(std::uint32_t begin) const { return {begin, static_cast<std::uint32_t>(runs_.size()) - begin}; }
  const Id* run(Run r) const { return runs_.data() + r.begin; }

  // Room for what a drawing is expected to hold. Capacity that is never written costs address space only.
  void reserve(std::size_t bytes, std::size_t texts);

 private:
  template <class Word>
  static Word load(const char* at) {
    Word w;
    std::memcpy(&w, at, sizeof w);
    return w;
  }

  // The bulk is kept in pages of its own: a large drawing's texts take tens of megabytes.
  platform::PageArray<char> bytes_;
  platform::PageArray<std::uint32_t> starts_;  // text i is bytes_[starts_[i], starts_[i + 1])
  // The last text added with a hash: its id (kEmpty: none), its length and its first bytes.
  struct Recent {
    Id id = kEmpty;
    std::uint32_t size = 0;
    char head[24];
  };
  std::vector<Recent> recent_;
  platform::PageArray<Id> runs_;
};
