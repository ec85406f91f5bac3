// Many entities on one key: the pairing finds the same pairs as trying every source for every destination.
#include <gtest/gtest.h>

#include <random>

#include "comparers/ComparerTestSupport.h"
#include "comparers/PairingRules.h"

namespace {

struct Outcome {
  std::vector<std::pair<platform::ObjectId, platform::ObjectId>> changed;  // source, destination
  std::size_t added = 0;
  std::size_t deleted = 0;
  bool operator==(const Outcome&) const = default;
};

// The rule of one key, pair by pair: each destination in turn takes the first unpaired source alike to it;
// then the destinations left take the sources left, in order.
Outcome pairOneByOne(std::vector<ComparerPtr>& src,
                     std::vector<ComparerPtr>& dst) {
  std::vector<bool> srcUsed(src.size()), dstUsed(dst.size());
  for (std::size_t d = 0; d < dst.size(); ++d)
    for (std::size_t s = 0; s < src.size(); ++s)
      if (!srcUsed[s] && dst[d]->compare(*src[s])->text == dst[d]->description()) {
        srcUsed[s] = dstUsed[d] = true;
        break;
      }
  Outcome out;
  std::size_t s = 0;
  for (std::size_t d = 0; d < dst.size(); ++d) {
    if (dstUsed[d]) continue;
    while (s < src.size() && srcUsed[s]) ++s;
    if (s == src.size()) break;
    if (dst[d]->compare(*src[s])->text != dst[d]->description()) out.changed.emplace_back(src[s]->objectId(), dst[d]->objectId());
    srcUsed[s] = dstUsed[d] = true;
  }
  for (bool used : dstUsed) out.added += used ? 0 : 1;
  for (bool used : srcUsed) out.deleted += used ? 0 : 1;
  return out;
}

Outcome pairMaps(std::vector<ComparerPtr>& src,
                 std::vector<ComparerPtr>& dst) {
  KeyedComparers srcMap, dstMap;
  for (auto& c : src) addByKey(srcMap, std::move(c));
  for (auto& c : dst) addByKey(dstMap, std::move(c));
  sortByKey(srcMap);
  sortByKey(dstMap);
  std::vector<std::unique_ptr<CDiffType>> records;
  PairKeyedComparers(srcMap, dstMap, records);
  Outcome out;
  for (const auto& r : records) {
    if (r->kind == kDiffChanged) out.changed.emplace_back(r->sourceId, r->destinationId);
    out.added += r->kind == kDiffAdded ? 1 : 0;
    out.deleted += r->kind == kDiffDeleted ? 1 : 0;
  }
  return out;
}

// count entities stacked on one key: lines with one of three thicknesses and two colours, or references
// of block B at one point with one of two colours.
std::string stack(std::mt19937& random, int count, bool inserts) {
  std::string out;
  for (int i = 0; i < count; ++i) {
    const std::string color = std::to_string(1 + random() % 2);
    if (!out.empty()) out += '|';
    out += inserts ? "0|INSERT|8|0|62|" + color + "|2|B|10|5|20|5|30|0"
                   : "0|LINE|8|0|62|" + color + "|39|" + std::to_string(random() % 3) + "|10|0|20|0|30|0|11|9|21|0|31|0";
  }
  return out;
}

struct StackCase {
  bool inserts;
  const char* sourceBlock;
  const char* destinationBlock;
};

class StackedPairing : public ::testing::TestWithParam<StackCase> {};

TEST_P(StackedPairing, SameOutcomeAsTryingEverySource) {
  const StackCase c = GetParam();
  vktest::TempDir dir;
  CompareOptions all;
  std::mt19937 random(7);
  const auto blocks = [](const char* line) {
    return std::string("0|BLOCK|8|0|2|B|70|0|10|0|20|0|30|0|3|B|") + line + "|0|ENDBLK|8|0";
  };
  for (int round = 0; round < 4; ++round) {
    const std::string srcDxf = vktest::dxfDrawing(stack(random, 120, c.inserts), "AC1015", "", "", blocks(c.sourceBlock));
    const std::string dstDxf = vktest::dxfDrawing(stack(random, 100, c.inserts), "AC1015", "", "", blocks(c.destinationBlock));
    auto a1 = vktest::loadComparers(dir, "a1.dxf", srcDxf, all), b1 = vktest::loadComparers(dir, "b1.dxf", dstDxf, all);
    auto a2 = vktest::loadComparers(dir, "a2.dxf", srcDxf, all), b2 = vktest::loadComparers(dir, "b2.dxf", dstDxf, all);
    ASSERT_EQ(a1.comparers.size(), 120u);
    ASSERT_EQ(b1.comparers.size(), 100u);
    const Outcome expected = pairOneByOne(a1.comparers, b1.comparers);
    const Outcome got = pairMaps(a2.comparers, b2.comparers);
    EXPECT_EQ(got, expected) << "round " << round;
    EXPECT_EQ(got.deleted, 20u + got.added);
  }
}

INSTANTIATE_TEST_SUITE_P(Stacks, StackedPairing,
                         ::testing::Values(StackCase{false, "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0",
                                                     "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0"},
                                           StackCase{true, "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0",
                                                     "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0"},
                                           StackCase{true, "0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0",
                                                     "0|LINE|8|0|62|3|10|0|20|0|30|0|11|1|21|0|31|0"}));

}  // namespace
