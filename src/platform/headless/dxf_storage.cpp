// The map of handles of a read drawing, and the reading of handles as DXF writes them.
#include "platform/headless/dxf_storage.h"

namespace headless {

platform::Handle parseHandle(std::string_view hex) {
  platform::Handle h = 0;
  for (char c : hex) {
    int d;
    if (c >= '0' && c <= '9') d = c - '0';
    else if (c >= 'a' && c <= 'f') d = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F') d = c - 'A' + 10;
    else return 0;
    if (h >> 60) return 0;  // longer than 64 bits: not a handle
    h = h * 16 + static_cast<platform::Handle>(d);
  }
  return h;
}

std::size_t HandleMap::slotOf(platform::Handle handle) const {
  // Handles often run in steps of 1 or 16: a multiplicative mix spreads them, and its high bits pick the
  // slot by a multiplication rather than a division.
  __extension__ using u128 = unsigned __int128;
  const std::uint64_t mixed = handle * 0x9E3779B97F4A7C15ULL;
  return static_cast<std::size_t>((static_cast<u128>(mixed) * slots_.size()) >> 64);
}

platform::ObjectId HandleMap::find(platform::Handle handle) const {
  if (handle == 0) return {};
  if (const platform::ObjectId other = findOther(handle); !other.isNull()) return other;
  const EntityHandle* e = findEntity(handle);
  return e ? platform::makeId(platform::IdKind::Entity, e->index) : platform::ObjectId{};
}

platform::ObjectId HandleMap::findOther(platform::Handle handle) const {
  if (slots_.empty()) return {};
  for (std::size_t i = slotOf(handle);;) {
    const Slot& slot = slots_[i];
    if (slot.first == handle) return slot.second;
    if (slot.first == 0) return {};
    if (++i == slots_.size()) i = 0;
  }
}

const HandleMap::EntityHandle* HandleMap::findEntity(platform::Handle handle) const {
  const EntityHandle* it = std::lower_bound(entities_.begin(), entities_.end(), handle,
                                            [](const EntityHandle& e, platform::Handle h) { return e.handle < h; });
  return it != entities_.end() && it->handle == handle ? it : nullptr;
}

bool HandleMap::emplace(platform::Handle handle, platform::ObjectId id) {
  if (handle == 0 || findEntity(handle)) return false;
  // At most seven slots in ten are used, so that a probe meets an empty slot soon.
  if ((size_ + 1) * 10 > slots_.size() * 7) rehash(std::max<std::size_t>(size_ * 3, 64));
  for (std::size_t i = slotOf(handle);;) {
    Slot& slot = slots_[i];
    if (slot.first == handle) return false;
    if (slot.first == 0) {
      slot = {handle, id};
      ++size_;
      largest_ = std::max(largest_, handle);
      return true;
    }
    if (++i == slots_.size()) i = 0;
  }
}

void HandleMap::rehash(std::size_t slots) {
  std::vector<Slot> old(slots);
  old.swap(slots_);
  for (const Slot& slot : old) {
    if (slot.first == 0) continue;
    std::size_t i = slotOf(slot.first);
    while (slots_[i].first != 0)
      if (++i == slots_.size()) i = 0;
    slots_[i] = slot;
  }
}

}  // namespace headless
