// The comparer text pool: one byte buffer, an offset table and a cache of recent texts by hash.
#include "comparers/TextPool.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// Texts longer than this are rarely repeated and are not looked up.
constexpr std::size_t kCachedLength = 48;
// A table that stays in the processor's cache: a lookup costs a hash and one comparison.
constexpr std::size_t kRecentSlots = 1 << 13;

// A hash of eight bytes at a time; texts are short, so the tail is read byte by byte.
std::size_t slotOf(std::string_view text) {
  std::uint64_t h = text.size() * 0x9E3779B97F4A7C15ull;
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, 8);
    h = (h ^ word) * 0xFF51AFD7ED558CCDull;
    h ^= h >> 32;
  }
  for (; i < text.size(); ++i) h = (h ^ static_cast<unsigned char>(text[i])) * 0x100000001B3ull;
  h ^= h >> 29;
  return static_cast<std::size_t>(h) & (kRecentSlots - 1);
}

}  // namespace

CTextPool::CTextPool() : recent_(kRecentSlots, kEmpty) {
  // Id 0 is the empty text: it starts and ends at 0.
  starts_.push_back(0);
  starts_.push_back(0);
}

void CTextPool::reserve(std::size_t bytes, std::size_t texts) {
  bytes_.reserve(bytes);
  starts_.reserve(texts + 2);
  runs_.reserve(texts);
}

CTextPool::Id CTextPool::intern(std::string_view text) {
  if (text.empty()) return kEmpty;
  const bool cached = text.size() <= kCachedLength;
  const std::size_t slot = cached ? slotOf(text) : 0;
  if (cached && recent_[slot] != kEmpty && equal(view(recent_[slot]), text)) return recent_[slot];
  const Id id = add(text);
  if (cached) recent_[slot] = id;
  return id;
}

CTextPool::Id CTextPool::add(std::string_view text) {
  if (text.empty()) return kEmpty;
  if (bytes_.size() + text.size() > std::numeric_limits<std::uint32_t>::max() ||
      starts_.size() >= std::numeric_limits<Id>::max())
    throw std::length_error("more comparer texts than one drawing can hold");
  bytes_.append(text.data(), text.size());
  const auto id = static_cast<Id>(starts_.size() - 1);
  starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  return id;
}
