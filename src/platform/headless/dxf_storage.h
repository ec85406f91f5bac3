// Storage of a read drawing's bulk: arrays kept in memory mappings of their own, and the map of handles.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/database.h"

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

// Memory for PageArray (dxf_storage.cpp). Sizes are whole pages, except in sanitizer builds, where the
// memory comes from the heap at the size asked: AddressSanitizer then sees every access past it, and
// ThreadSanitizer, which does not follow remapped pages, sees the memory change hands.
// allocateBlock and resizeBlock throw std::bad_alloc when the system refuses.
std::size_t blockSize(std::size_t bytes);
void* allocateBlock(std::size_t bytes);
void* resizeBlock(void* block, std::size_t oldBytes, std::size_t newBytes);
void releaseBlock(void* block, std::size_t bytes);
#if defined(__SANITIZE_ADDRESS__)
#define VK_STORAGE_FROM_HEAP 1
#define VK_STORAGE_POISONED 1
#elif defined(__SANITIZE_THREAD__)
#define VK_STORAGE_FROM_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VK_STORAGE_FROM_HEAP 1
#define VK_STORAGE_POISONED 1
#elif __has_feature(thread_sanitizer)
#define VK_STORAGE_FROM_HEAP 1
#endif
#endif
// Marks [begin, end) of a block unused (AddressSanitizer builds: reading or writing it is reported) or used.
#ifdef VK_STORAGE_POISONED
void markUnused(const void* begin, const void* end);
void markUsed(const void* begin, const void* end);
#else
inline void markUnused(const void*, const void*) {}
inline void markUsed(const void*, const void*) {}
#endif

// A vector of trivially copyable values whose storage is mapped from the system, not taken from the heap:
// it grows, and shrinks to fit, by remapping its pages without copying them, and gives them back to the
// system when destroyed. A large read so leaves neither outgrown copies nor freed blocks in the heap, and
// the largest arrays are backed by huge pages, which spares most of the page faults of filling them.
template <typename T>
class PageArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  PageArray() = default;
  ~PageArray() { releaseBlock(data_, bytes_); }
  PageArray(const PageArray&) = delete;
  PageArray& operator=(const PageArray&) = delete;

  T* data() { return data_; }
  const T* data() const { return data_; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  std::size_t capacity() const { return capacity_; }
  T& operator[](std::size_t i) { return data_[i]; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  T* begin() { return data_; }
  T* end() { return data_ + size_; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + size_; }
  T& back() { return data_[size_ - 1]; }
  const T& back() const { return data_[size_ - 1]; }

  void reserve(std::size_t n) {
    if (n > capacity_) setCapacity(n);
  }
  void push_back(const T& value) {
    if (size_ == capacity_) grow(1);
    markUsed(data_ + size_, data_ + size_ + 1);
    data_[size_++] = value;
  }
  void append(const T* values, std::size_t n) {
    if (n == 0) return;
    if (capacity_ - size_ < n) grow(n);
    markUsed(data_ + size_, data_ + size_ + n);
    std::memcpy(data_ + size_, values, n * sizeof(T));
    size_ += n;
  }
  // Gives back the pages past the last value.
  void shrink_to_fit() { setCapacity(size_); }
  // Keeps the first n values.
  void truncate(std::size_t n) {
    if (n >= size_) return;
    size_ = n;
    markUnused(data_ + size_, reinterpret_cast<char*>(data_) + bytes_);
  }

 private:
  void grow(std::size_t more) {
    if (more > maxSize() - size_) throw std::bad_alloc();
    setCapacity(std::max(size_ + more, capacity_ + std::min(capacity_, maxSize() - capacity_)));
  }
  static constexpr std::size_t maxSize() { return std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T); }
  void setCapacity(std::size_t n) {
    if (n > maxSize()) throw std::bad_alloc();
    const std::size_t bytes = n == 0 ? 0 : blockSize(n * sizeof(T));
    if (bytes != bytes_) {
      void* block = bytes_ == 0 ? allocateBlock(bytes) : resizeBlock(data_, bytes_, bytes);
      data_ = static_cast<T*>(block);
      bytes_ = bytes;
    }
    capacity_ = bytes / sizeof(T);
    markUnused(data_ + size_, reinterpret_cast<char*>(data_) + bytes_);
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  std::size_t bytes_ = 0;  // of the block
};

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
