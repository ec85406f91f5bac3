// Storage of a read drawing's bulk: arrays kept in memory mappings of their own, and the map of handles.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/database.h"
#include "platform/pages.h"

namespace platform {

// Object ids carry the kind of record in their top byte and its index + 1 below.
enum class IdKind : std::uint8_t { Entity = 1, BlockRecord = 2, Layer = 3, Object = 4 };
constexpr ObjectId makeId(IdKind kind, std::uint32_t index) {
  return ObjectId{(static_cast<std::uint64_t>(kind) << 56) | (static_cast<std::uint64_t>(index) + 1)};
}
constexpr IdKind idKind(ObjectId id) { return static_cast<IdKind>(id.value >> 56); }
constexpr std::uint32_t idIndex(ObjectId id) { return static_cast<std::uint32_t>((id.value & ((1ULL << 56) - 1)) - 1); }

}  // namespace platform

namespace headless {

using platform::PageArray;

// The handle a DXF group writes in hexadecimal; 0 (no handle) for text that is not one or overflows 64 bits.
platform::Handle parseHandle(std::string_view hex);

// Object ids by handle. Table entries, block records and objects are added as they are read, into one
// array probed in line; the entities, the bulk, are indexed once all are read, as their handles sorted
// with their indices: 12 bytes an entity, filled in file order, where handles mostly ascend already.
class HandleMap {
 public:
  // The id of the record with this handle; a null id when there is none.
  platform::ObjectId find(platform::Handle handle) const;
  bool contains(platform::Handle handle) const { return !find(handle).isNull(); }
  // Adds a record that is no entity, unless its handle is taken (or is 0); true when it was added.
  bool emplace(platform::Handle handle, platform::ObjectId id);
  // The largest handle added by emplace, 0 when none was.
  platform::Handle largest() const { return largest_; }

  // Indexes the entities 0 to count - 1, where handleOf(i) is entity i's handle: each handle not taken yet
  // goes to the first entity that has it. Returns how many entities found their handle taken, and in
  // firstDuplicate the first of them.
  template <typename HandleOf>
  std::size_t indexEntities(std::uint32_t count, HandleOf&& handleOf, std::uint32_t& firstDuplicate);

 private:
#pragma pack(push, 4)
  struct EntityHandle {
    platform::Handle handle;
    std::uint32_t index;
  };
#pragma pack(pop)
  using Slot = std::pair<platform::Handle, platform::ObjectId>;

  std::size_t slotOf(platform::Handle handle) const;
  void rehash(std::size_t slots);
  const EntityHandle* findEntity(platform::Handle handle) const;
  platform::ObjectId findOther(platform::Handle handle) const;  // among the records that are no entities

  std::vector<Slot> slots_;  // handle 0: an empty slot
  std::size_t size_ = 0;
  platform::Handle largest_ = 0;
  PageArray<EntityHandle> entities_;  // by handle; one entry a handle
};

template <typename HandleOf>
std::size_t HandleMap::indexEntities(std::uint32_t count, HandleOf&& handleOf, std::uint32_t& firstDuplicate) {
  entities_.reserve(count);
  bool sorted = true;
  for (std::uint32_t i = 0; i < count; ++i) {
    const EntityHandle e{handleOf(i), i};
    sorted = sorted && (entities_.empty() || entities_.back().handle <= e.handle);
    entities_.push_back(e);
  }
  const auto byHandle = [](const EntityHandle& a, const EntityHandle& b) {
    return a.handle != b.handle ? a.handle < b.handle : a.index < b.index;
  };
  if (!sorted) std::sort(entities_.begin(), entities_.end(), byHandle);
  // Keep the first entity of each handle that no other record has taken.
  std::size_t duplicates = 0, kept = 0;
  firstDuplicate = count;
  for (std::size_t k = 0; k < entities_.size(); ++k) {
    const EntityHandle e = entities_[k];
    if ((kept > 0 && entities_[kept - 1].handle == e.handle) || !findOther(e.handle).isNull()) {
      ++duplicates;
      firstDuplicate = std::min(firstDuplicate, e.index);
      continue;
    }
    entities_[kept++] = e;
  }
  entities_.truncate(kept);
  entities_.shrink_to_fit();
  return duplicates;
}

}  // namespace headless
