// Arrays and blocks in memory mapped from the system rather than taken from the heap, for a drawing's bulk.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

namespace platform {

// Memory for PageArray and other large stores (pages.cpp of the host). Sizes are whole pages, except in sanitizer builds, where the
// memory comes from the heap at the size asked: AddressSanitizer then sees every access past it, and
// ThreadSanitizer, which does not follow remapped pages, sees the memory change hands.
// allocateBlock and resizeBlock throw std::bad_alloc when the system refuses.
std::size_t blockSize(std::size_t bytes);
// Blocks below this size come from the heap: a mapping costs two system calls and a page fault, which
// the many short lists of a small drawing would pay over and over.
inline constexpr std::size_t kMappedFrom = std::size_t{256} << 10;
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

// A vector of trivially copyable values whose storage, once past a few hundred kilobytes, is mapped from
// the system, not taken from the heap: it grows, and shrinks to fit, by remapping its pages without copying
// them, and gives them back to the system when destroyed. A large read so leaves neither outgrown copies nor freed blocks in the heap, and
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

// An allocator for standard containers whose arrays, once they are large enough to be mapped, are mapped
// as PageArray's are; smaller ones come from the heap at their size.
template <typename T>
struct PageAllocator {
  using value_type = T;
  PageAllocator() = default;
  template <typename U>
  PageAllocator(const PageAllocator<U>&) {}

  T* allocate(std::size_t n) { return static_cast<T*>(allocateBlock(bytesFor(n))); }
  void deallocate(T* p, std::size_t n) { releaseBlock(p, bytesFor(n)); }
  friend bool operator==(const PageAllocator&, const PageAllocator&) { return true; }

 private:
  // Small arrays come from the heap at their size; mapped ones take whole pages.
  static std::size_t bytesFor(std::size_t n) {
    static_assert(alignof(T) <= alignof(std::max_align_t));
    if (n > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
    const std::size_t bytes = std::max<std::size_t>(n * sizeof(T), 1);
    return bytes < kMappedFrom ? bytes : blockSize(bytes);
  }
};

}  // namespace platform
