// The comparer text pool: one byte buffer, an offset table and a cache of recent texts by hash.
#include "comparers/TextPool.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// Texts longer than this are rarely repeated and are not looked up.
constexpr std::size_t kCachedLength = 48;
// A table that stays in the processor's cache: a lookup costs a hash and one comparison.
constexpr std::size_t kRecentSlots = 1 << 11;

std::uint64_t mix(std::uint64_t h, std::uint64_t word) {
  h = (h ^ word) * 0xFF51AFD7ED558CCDull;
  return h ^ (h >> 32);
}

}  // namespace

CTextPool::CTextPool() : recent_(kRecentSlots) {
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
  if (text.size() > kCachedLength) return add(text);
  // The head of the text, padded with zeros, is hashed a word at a time and compared in the slot itself, so
  // that most texts are found without reading the pool; a longer text's tail is hashed a byte at a time and
  // compared in the pool.
  Recent probe{};
  probe.size = static_cast<std::uint32_t>(text.size());
  std::memcpy(probe.head, text.data(), std::min(text.size(), sizeof probe.head));
  std::uint64_t h = text.size() * 0x9E3779B97F4A7C15ull;
  for (std::size_t i = 0; i < sizeof probe.head; i += 8) h = mix(h, load<std::uint64_t>(probe.head + i));
  for (std::size_t i = sizeof probe.head; i < text.size(); ++i)
    h = (h ^ static_cast<unsigned char>(text[i])) * 0x100000001B3ull;
  h ^= h >> 29;
  Recent& slot = recent_[static_cast<std::size_t>(h) & (kRecentSlots - 1)];
  if (slot.id != kEmpty && slot.size == probe.size && std::memcmp(slot.head, probe.head, sizeof probe.head) == 0 &&
      (text.size() <= sizeof probe.head ||
       equal(view(slot.id).substr(sizeof probe.head), text.substr(sizeof probe.head))))
    return slot.id;
  probe.id = add(text);
  slot = probe;
  return probe.id;
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
