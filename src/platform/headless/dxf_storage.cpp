// Memory mappings for the arrays of a read drawing, and the map of handles.
#include "platform/headless/dxf_storage.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#ifdef VK_STORAGE_POISONED
#include <sanitizer/asan_interface.h>
#endif

namespace headless {

#ifdef VK_STORAGE_FROM_HEAP

namespace {
// The heap's own copying and freeing must not meet the marks of unused memory.
void unpoison([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#ifdef VK_STORAGE_POISONED
  __asan_unpoison_memory_region(block, bytes);
#endif
}
}  // namespace

std::size_t blockSize(std::size_t bytes) { return bytes; }

void* allocateBlock(std::size_t bytes) {
  void* block = std::malloc(bytes);
  if (!block) throw std::bad_alloc();
  return block;
}

void* resizeBlock(void* block, std::size_t oldBytes, std::size_t newBytes) {
  if (newBytes == 0) {
    releaseBlock(block, oldBytes);
    return nullptr;
  }
  unpoison(block, oldBytes);
  void* moved = std::realloc(block, newBytes);
  if (!moved) throw std::bad_alloc();
  return moved;
}

void releaseBlock(void* block, std::size_t bytes) {
  if (!block) return;
  unpoison(block, bytes);
  std::free(block);
}

#ifdef VK_STORAGE_POISONED
void markUnused(const void* begin, const void* end) {
  if (begin < end) __asan_poison_memory_region(begin, static_cast<const char*>(end) - static_cast<const char*>(begin));
}

void markUsed(const void* begin, const void* end) {
  if (begin < end)
    __asan_unpoison_memory_region(begin, static_cast<const char*>(end) - static_cast<const char*>(begin));
}
#endif

#else

namespace {

// Mappings of this size and more are backed by huge pages where the system offers them: one page fault
// then fills two megabytes instead of four kilobytes. Smaller ones would round up too much of a small
// drawing's storage.
constexpr std::size_t kHugePagesFrom = std::size_t{8} << 20;

void adviseHugePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  if (bytes >= kHugePagesFrom) ::madvise(block, bytes, MADV_HUGEPAGE);  // advice only: failure is harmless
#endif
}

}  // namespace

std::size_t blockSize(std::size_t bytes) {
  static const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  if (bytes > std::numeric_limits<std::size_t>::max() - page) throw std::bad_alloc();
  return (bytes + page - 1) / page * page;
}

void* allocateBlock(std::size_t bytes) {
  void* block = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (block == MAP_FAILED) throw std::bad_alloc();
  adviseHugePages(block, bytes);
  return block;
}

void* resizeBlock(void* block, std::size_t oldBytes, std::size_t newBytes) {
  if (newBytes == 0) {
    releaseBlock(block, oldBytes);
    return nullptr;
  }
#ifdef MREMAP_MAYMOVE
  void* moved = ::mremap(block, oldBytes, newBytes, MREMAP_MAYMOVE);
  if (moved == MAP_FAILED) throw std::bad_alloc();
  if (newBytes > oldBytes) adviseHugePages(moved, newBytes);
  return moved;
#else
  void* moved = allocateBlock(newBytes);
  std::memcpy(moved, block, std::min(oldBytes, newBytes));
  releaseBlock(block, oldBytes);
  return moved;
#endif
}

void releaseBlock(void* block, std::size_t bytes) {
  if (block) ::munmap(block, bytes);
}

#endif

// ---- HandleMap ----

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
