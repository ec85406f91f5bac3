// Memory for page-backed arrays and blocks: mappings with huge pages for large ones, the heap for small ones
// and in sanitizer builds.
#include "platform/pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstdint>
#include <cstring>
#include <limits>

#ifdef VK_STORAGE_POISONED
#include <sanitizer/asan_interface.h>
#endif

namespace platform {

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

// Mappings of at least a huge page are backed by huge pages where the system offers them: one page fault
// then fills two megabytes instead of four kilobytes, which on a virtual machine costs far less. Such
// mappings start on a huge page's boundary, so that all of their whole huge pages can be huge.
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kHugePagesFrom = kHugePage;

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

namespace {

void* heapBlock(std::size_t bytes) {
  void* block = std::malloc(bytes);
  if (!block) throw std::bad_alloc();
  return block;
}

void* mappedBlock(std::size_t bytes) {
  const std::size_t slack = bytes >= kHugePagesFrom ? kHugePage : 0;
  if (bytes > std::numeric_limits<std::size_t>::max() - slack) throw std::bad_alloc();
  void* mapped = ::mmap(nullptr, bytes + slack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  char* block = static_cast<char*>(mapped);
  if (slack != 0) {  // the pages before the boundary, and as many after the block, go back
    const std::size_t head = (kHugePage - reinterpret_cast<std::uintptr_t>(block) % kHugePage) % kHugePage;
    if (head != 0) ::munmap(block, head);
    if (slack != head) ::munmap(block + head + bytes, slack - head);
    block += head;
  }
  adviseHugePages(block, bytes);
  return block;
}

}  // namespace

void* allocateBlock(std::size_t bytes) { return bytes < kMappedFrom ? heapBlock(bytes) : mappedBlock(bytes); }

void* resizeBlock(void* block, std::size_t oldBytes, std::size_t newBytes) {
  if (newBytes == 0) {
    releaseBlock(block, oldBytes);
    return nullptr;
  }
  const bool wasMapped = oldBytes >= kMappedFrom, mapped = newBytes >= kMappedFrom;
  if (!wasMapped && !mapped) {
    void* moved = std::realloc(block, newBytes);
    if (!moved) throw std::bad_alloc();
    return moved;
  }
#ifdef MREMAP_MAYMOVE
  if (wasMapped && mapped) {
    // Grown or shrunk in place where it can be; else its pages move to a new mapping, on a huge page's
    // boundary when large enough.
    void* moved = ::mremap(block, oldBytes, newBytes, 0);
    if (moved == MAP_FAILED) {
      void* target = mappedBlock(newBytes);
      moved = ::mremap(block, oldBytes, newBytes, MREMAP_MAYMOVE | MREMAP_FIXED, target);
      if (moved == MAP_FAILED) {
        ::munmap(target, newBytes);
        throw std::bad_alloc();
      }
    }
    if (newBytes > oldBytes) adviseHugePages(moved, newBytes);
    return moved;
  }
#endif
  void* moved = allocateBlock(newBytes);
  std::memcpy(moved, block, std::min(oldBytes, newBytes));
  releaseBlock(block, oldBytes);
  return moved;
}

void releaseBlock(void* block, std::size_t bytes) {
  if (!block) return;
  if (bytes < kMappedFrom) std::free(block);
  else ::munmap(block, bytes);
}

#endif

}  // namespace platform
