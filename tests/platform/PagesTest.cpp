// Page-backed arrays and the allocator of standard containers: values survive growing past the heap, moving
// between mappings and shrinking, and large arrays start on a huge page's boundary.
#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <vector>

#include "platform/pages.h"

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

TEST(PageArray, ValuesSurviveGrowingMovingAndShrinking) {
  platform::PageArray<std::uint64_t> a;
  // From a few values on the heap to 24 MB of mappings, each growth a remap that may move the pages.
  const std::size_t n = 3u << 20;
  for (std::uint64_t i = 0; i < n; ++i) a.push_back(i * 7);
  ASSERT_EQ(a.size(), n);
#ifndef VK_STORAGE_FROM_HEAP
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(a.data()) % kHugePage, 0u);
#endif
  // A mapping made meanwhile may take the addresses after the first, which then moves to grow.
  platform::PageArray<std::uint64_t> b;
  b.reserve(kHugePage);
  b.push_back(1);
  for (std::uint64_t i = 0; i < n; ++i) a.push_back(n * 7 + i);
  a.truncate(n + 5);
  a.shrink_to_fit();
  ASSERT_EQ(a.size(), n + 5);
  bool same = true;
  for (std::uint64_t i = 0; i < n; ++i) same = same && a[i] == i * 7;
  for (std::uint64_t i = 0; i < 5; ++i) same = same && a[n + i] == n * 7 + i;
  EXPECT_TRUE(same);
  EXPECT_EQ(b[0], 1u);
}

TEST(PageAllocator, SmallAndLargeContainersKeepTheirValues) {
  using Values = std::vector<std::uint32_t, platform::PageAllocator<std::uint32_t>>;
  Values small{1, 2, 3};
  Values large(std::size_t{3} << 20);
  std::iota(large.begin(), large.end(), 0u);
#ifndef VK_STORAGE_FROM_HEAP
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large.data()) % kHugePage, 0u);
#endif
  Values copy = large;
  large.swap(small);
  ASSERT_EQ(small.size(), copy.size());
  EXPECT_EQ(small.back(), (3u << 20) - 1);
  EXPECT_EQ(large, (Values{1, 2, 3}));
  copy.resize(10);
  copy.shrink_to_fit();
  EXPECT_EQ(copy, (Values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

}  // namespace
