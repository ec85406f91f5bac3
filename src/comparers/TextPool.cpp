// The comparer text pool: one byte buffer, an offset table and a cache of recent texts by hash.
#include "comparers/TextPool.h"

#include <limits>
#include <stdexcept>

namespace {

// Texts longer than this are rarely repeated and are not looked up.
constexpr std::size_t kCachedLength = 48;
// A table that stays in the processor's cache: a lookup costs a hash and one comparison.
constexpr std::size_t kRecentSlots = 1 << 13;

std::size_t slotOf(std::string_view text) {
  std::uint64_t h = 14695981039346656037ull;
  for (const unsigned char c : text) h = (h ^ c) * 1099511628211ull;
  return static_cast<std::size_t>(h ^ (h >> 32)) & (kRecentSlots - 1);
}

}  // namespace

CTextPool::CTextPool() : starts_{0, 0}, recent_(kRecentSlots, kEmpty) {}

CTextPool::Id CTextPool::intern(std::string_view text) {
  if (text.empty()) return kEmpty;
  const bool cached = text.size() <= kCachedLength;
  const std::size_t slot = cached ? slotOf(text) : 0;
  if (cached && recent_[slot] != kEmpty && view(recent_[slot]) == text) return recent_[slot];
  if (bytes_.size() + text.size() > std::numeric_limits<std::uint32_t>::max() ||
      starts_.size() >= std::numeric_limits<Id>::max())
    throw std::length_error("more comparer texts than one drawing can hold");
  bytes_.append(text);
  const auto id = static_cast<Id>(starts_.size() - 1);
  starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  if (cached) recent_[slot] = id;
  return id;
}
