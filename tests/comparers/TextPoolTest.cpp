// The comparer text pool, the comparer store and the number that orders key texts.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkAcadEntityBase.h"
#include "comparers/ReadContext.h"
#include "comparers/TextPool.h"

TEST(TextPool, TextsSurviveTheBufferGrowingAndRepeatsShareIds) {
  CTextPool pool;
  EXPECT_EQ(pool.intern(""), CTextPool::kEmpty);
  EXPECT_EQ(pool.view(CTextPool::kEmpty), "");
  std::vector<std::pair<CTextPool::Id, std::string>> kept;
  for (int i = 0; i < 100000; ++i) {
    std::string text = std::to_string(i * 7919) + (i % 3 ? ",0.00" : std::string(60, 'x'));
    kept.emplace_back(i % 2 ? pool.intern(text) : pool.add(text), std::move(text));
  }
  for (const auto& [id, text] : kept) ASSERT_EQ(pool.view(id), text);
  // A text seen just before is found again; one added without the cache still reads back.
  const CTextPool::Id a = pool.intern("0.00,0.00,1.00");
  EXPECT_EQ(pool.intern("0.00,0.00,1.00"), a);
  EXPECT_NE(pool.add("0.00,0.00,1.00"), a);
}

TEST(ComparerStore, PlacesAlignedObjectsApartAcrossBlocks) {
  CComparerStore store;
  struct Placed {
    unsigned char* at;
    std::size_t bytes;
    unsigned char mark;
  };
  std::vector<Placed> placed;
  std::mt19937 rng(7);
  // Far more than the first block holds, with some objects larger than it, so that blocks are added.
  for (int i = 0; i < 20000; ++i) {
    const std::size_t bytes = i % 997 == 0 ? (std::size_t{1} << 17) : 1 + rng() % 300;
    const std::size_t alignment = std::size_t{1} << (rng() % 5);  // 1 to 16
    auto* at = static_cast<unsigned char*>(store.allocate(bytes, alignment));
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(at) % alignment, 0u);
    const auto mark = static_cast<unsigned char>(i);
    std::memset(at, mark, bytes);
    placed.push_back({at, bytes, mark});
  }
  // Writing any object left every other intact: no two overlap.
  for (const Placed& p : placed)
    for (std::size_t b = 0; b < p.bytes; b += 37) ASSERT_EQ(p.at[b], p.mark);
  EXPECT_GT(store.capacity(), std::size_t{20000} * 150);
}

TEST(ComparerStore, ComparersLiveInTheirContextsStoreOrOnTheHeap) {
  CReadContext context("a drawing", 1000);
  {
    ComparerPtr stored = makeComparer<CVkAcDbLine>(&context);
    ComparerPtr onHeap = makeComparer<CVkAcDbLine>(nullptr);
    ComparerPtr fromUniquePtr = std::make_unique<CVkAcDbLine>();
    ASSERT_TRUE(stored && onHeap && fromUniquePtr);
    // Each is destroyed its own way as it goes out of scope; a heap delete of stored memory, or none of heap
    // memory, is what the sanitizer build would report.
  }
  EXPECT_GE(context.comparers().capacity(), CReadContext::kComparerBytesPerEntity * 1000)
      << "the first block is sized for the drawing";
}

TEST(TextPool, EqualTellsTextsApartAtEveryLengthAndPlace) {
  for (std::size_t n = 0; n <= 40; ++n) {
    std::string a(n, 'a');
    for (std::size_t i = 0; i < n; ++i) a[i] = static_cast<char>('a' + i % 26);
    ASSERT_TRUE(CTextPool::equal(a, std::string(a)));
    ASSERT_FALSE(CTextPool::equal(a, a + "x"));
    for (std::size_t i = 0; i < n; ++i) {
      std::string b = a;
      b[i] = '#';
      ASSERT_FALSE(CTextPool::equal(a, b)) << "length " << n << ", differing at " << i;
    }
  }
}

TEST(TextPool, RunsHoldTheirIdsInOrder) {
  CTextPool pool;
  const std::uint32_t first = pool.openRun();
  pool.push(pool.intern("a"));
  pool.push(pool.intern("b"));
  const CTextPool::Run one = pool.closeRun(first);
  const std::uint32_t second = pool.openRun();
  pool.push(pool.intern("c"));
  const CTextPool::Run two = pool.closeRun(second);
  ASSERT_EQ(one.size, 2u);
  ASSERT_EQ(two.size, 1u);
  EXPECT_EQ(pool.view(pool.run(one)[1]), "b");
  EXPECT_EQ(pool.view(pool.run(two)[0]), "c");
}

// Key texts "0,<digest>" are filed in the order of the texts; the number stands in for the text.
TEST(KeyOrder, NumbersCompareAsTheKeyTextsDo) {
  std::vector<std::uint32_t> digests = {0, 1, 9, 10, 11, 19, 99, 100, 101, 999999999, 1000000000, 2147483647};
  std::mt19937 random(5);
  for (int i = 0; i < 2000; ++i) digests.push_back(static_cast<std::uint32_t>(random() & 0x7FFFFFFF) >> (random() % 31));
  for (std::uint32_t a : digests)
    for (std::uint32_t b : {digests[static_cast<std::size_t>(a) % digests.size()], a / 10, a + 1}) {
      const std::string ta = "0," + std::to_string(a), tb = "0," + std::to_string(b);
      ASSERT_EQ(keyOrderOf(a) < keyOrderOf(b), ta < tb) << ta << " " << tb;
      ASSERT_EQ(keyOrderOf(a) == keyOrderOf(b), ta == tb) << ta << " " << tb;
    }
  // The empty key comes before every other.
  EXPECT_GT(keyOrderOf(0), 0u);
  EXPECT_EQ(keyDigest("LINE,0.00,0.00,1.00,0.00"), std::to_string(keyDigestValue("LINE,0.00,0.00,1.00,0.00")));
}
