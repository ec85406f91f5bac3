// The interning of comparer texts: one byte buffer, an offset table and an open-addressing index.
#include "comparers/TextPool.h"

#include <limits>
#include <stdexcept>

namespace {

// FNV-1a with a final mix, so that the low bits used for the slot spread well.
std::uint64_t hashText(std::string_view text) {
  std::uint64_t h = 14695981039346656037ull;
  for (const unsigned char c : text) h = (h ^ c) * 1099511628211ull;
  return h ^ (h >> 29);
}

constexpr std::size_t kInitialSlots = 1024;

}  // namespace

CTextPool::CTextPool() : starts_{0, 0}, slots_(kInitialSlots, kEmpty) {}

CTextPool::Id CTextPool::intern(std::string_view text) {
  if (text.empty()) return kEmpty;
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t i = hashText(text) & mask;; i = (i + 1) & mask) {
    const Id id = slots_[i];
    if (id == kEmpty) break;
    if (view(id) == text) return id;
  }
  if (bytes_.size() + text.size() > std::numeric_limits<std::uint32_t>::max() ||
      starts_.size() >= std::numeric_limits<Id>::max())
    throw std::length_error("more comparer texts than one drawing can hold");
  bytes_.append(text);
  const auto id = static_cast<Id>(starts_.size() - 1);
  starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  // At most half full, so that probes stay short.
  if (2 * size() > slots_.size()) {
    grow();
  } else {
    for (std::size_t i = hashText(text) & mask;; i = (i + 1) & mask)
      if (slots_[i] == kEmpty) {
        slots_[i] = id;
        break;
      }
  }
  return id;
}

void CTextPool::grow() {
  std::vector<Id> slots(slots_.size() * 2, kEmpty);
  const std::size_t mask = slots.size() - 1;
  for (Id id = 1; id < size(); ++id)
    for (std::size_t i = hashText(view(id)) & mask;; i = (i + 1) & mask)
      if (slots[i] == kEmpty) {
        slots[i] = id;
        break;
      }
  slots_.swap(slots);
}
