// Pairing by key: one to one, many with one key (equal pairs first), unpaired and excluded entities,
// empty keys; the clamped sort; and the ranges with their numbering and the move of deleted records.
#include <gtest/gtest.h>

#include <random>

#include "engine/DiffRange.h"
#include "engine/Pairing.h"
#include "support/TestSupport.h"

namespace {

// A comparer with chosen texts: its key, its colour (the one property that can differ) and its extents.
class FakeComparer : public CVkAcadEntityBase {
 public:
  FakeComparer(CReadContext& context, std::string key, std::string color, std::string name, platform::Extents3d ext)
      : key_(std::move(key)), color_(std::move(color)), name_(name + " "), ext_(ext) {
    setContexts(&context, nullptr);
    // An empty key stays unset, as with comparers that never key their entity.
    if (!key_.empty()) setKeyFrom(key_);
  }
  void appendDifferences(const CVkAcadEntityBase& other, std::string& out) override {
    out += name_;
    if (static_cast<const FakeComparer&>(other).color_ != color_) out += "颜色不相同,";
  }
  std::string_view description() const override { return name_; }
  const std::string& key() const { return key_; }
  const platform::Extents3d& ext() const { return ext_; }

 private:
  std::string key_, color_, name_;
  platform::Extents3d ext_;
};

struct PairingFixture : ::testing::Test {
  CComparisonState& state = CComparisonState::instance();
  CReadContext context{"fake"};
  void SetUp() override {
    vktest::quietConsole();
    state.Prepare();
    state.source = std::make_unique<CDrawingRecord>();
    state.destination = std::make_unique<CDrawingRecord>();
  }
  void TearDown() override { state.Prepare(); }
  FakeComparer* add(KeyedComparers& map, const std::string& key, const std::string& color, const std::string& name,
                    double x = 0, double y = 0) {
    auto c = std::make_unique<FakeComparer>(context, key, color, name, platform::Extents3d({x, y, 0}, {x + 1, y + 1, 0}));
    FakeComparer* raw = c.get();
    // The description of added and deleted records comes from the placed extents of the comparer; fakes
    // keep theirs in ext(), which the records of changed pairs carry.
    addByKey(map, std::move(c));
    sortByKey(map);
    return raw;
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> out;
    for (const auto& r : state.differences) out.push_back(r->text + "#" + std::to_string(r->kind));
    std::sort(out.begin(), out.end());
    return out;
  }
};

}  // namespace

TEST_F(PairingFixture, OneToOneEqualAndChanged) {
  add(state.sourceMap(), "k1", "1", "a");
  add(state.destinationMap(), "k1", "1", "a");
  add(state.sourceMap(), "k2", "1", "b");
  add(state.destinationMap(), "k2", "2", "b");
  EXPECT_EQ(PairAndCompare(state), 1u);
  EXPECT_EQ(texts(), (std::vector<std::string>{"b 颜色不相同,#1"}));
  const CDiffType& record = *state.differences[0];
  EXPECT_EQ(record.messages(), (std::vector<std::string_view>{"颜色不相同"}));
  EXPECT_EQ(record.range, 1);
  EXPECT_EQ(record.member, 1);
}

TEST(DiffRecordMessages, CommasInsideBlockContentsDoNotSplit) {
  CDiffType record;
  record.text = "块参照图元 块内[直线图元 颜色不相同,圆图元 新增,]属性[文字图元 删除,]比例因子不相同,";
  record.descriptionLength = static_cast<std::uint32_t>(std::string("块参照图元 ").size());
  EXPECT_EQ(record.messages(), (std::vector<std::string_view>{"块内[直线图元 颜色不相同,圆图元 新增,]",
                                                               "属性[文字图元 删除,]", "比例因子不相同"}));
  // A description longer than the text (a record built by hand) leaves no messages rather than reading past it.
  record.descriptionLength = 1000;
  EXPECT_TRUE(record.messages().empty());
}

TEST_F(PairingFixture, TwoIdenticalSourcesOneDestinationLeaveOneDeleted) {
  add(state.sourceMap(), "k", "1", "first");
  add(state.sourceMap(), "k", "1", "second");
  add(state.destinationMap(), "k", "1", "dest");
  EXPECT_EQ(PairAndCompare(state), 1u);
  // The destination pairs with the first source in map order; the second is deleted.
  EXPECT_EQ(texts(), (std::vector<std::string>{"second 删除,#3"}));
}

TEST_F(PairingFixture, EqualPairsFirstWhateverTheirOrder) {
  add(state.sourceMap(), "k", "red", "s-red");
  add(state.sourceMap(), "k", "blue", "s-blue");
  add(state.destinationMap(), "k", "green", "d-green");
  add(state.destinationMap(), "k", "red", "d-red");
  EXPECT_EQ(PairAndCompare(state), 1u);
  // d-red pairs with s-red although d-green comes first; then d-green with what is left.
  EXPECT_EQ(texts(), (std::vector<std::string>{"d-green 颜色不相同,#1"}));
}

TEST_F(PairingFixture, UnpairedExcludedAndEmptyKeys) {
  add(state.sourceMap(), "only-src", "1", "gone");
  add(state.destinationMap(), "only-dst", "1", "new");
  add(state.sourceMap(), "x", "1", "hidden")->excluded = 1;
  add(state.destinationMap(), "y", "1", "hidden-too")->excluded = 1;
  // An empty destination key is never compared, even with an equal source under the empty key.
  add(state.sourceMap(), "", "1", "src-empty");
  add(state.destinationMap(), "", "1", "dst-empty");
  EXPECT_EQ(PairAndCompare(state), 4u);
  EXPECT_EQ(texts(), (std::vector<std::string>{"dst-empty 新增,#2", "gone 删除,#3", "new 新增,#2", "src-empty 删除,#3"}));
}

TEST(SortRecords, ClampedReferencePointAndTies) {
  auto rec = [](double x0, double y0, double x1, double y1, const char* t) {
    auto r = std::make_unique<CDiffType>();
    r->extents = {x0, y0, 0, x1, y1, 0};
    r->text = t;
    return r;
  };
  // In the first quadrant the minimum is clamped to 0: (10..12) sorts by 6, (4..6) by 3 and (5..5) by 2.5.
  std::vector<std::unique_ptr<CDiffType>> records;
  records.push_back(rec(10, 0, 12, 1, "a"));
  records.push_back(rec(4, 0, 6, 1, "b"));
  records.push_back(rec(5, 0, 5, 1, "c"));
  records.push_back(rec(-4, 5, -2, 7, "d"));  // x: -4 .. 0 clamps the maximum: -2
  records.push_back(rec(-4, 1, -2, 3, "e"));  // same x as d, smaller y
  records.push_back(rec(5, 0, 5, 1, "f"));    // same point as c: keeps its place after c
  SortRecords(records);
  std::string order;
  for (const auto& r : records) order += r->text;
  EXPECT_EQ(order, "edcfba");
  EXPECT_EQ(SortReferencePoint(*records[0]), platform::Point3d(-2, 1.5, 0));
}

namespace {

std::vector<std::unique_ptr<CDiffType>> boxes(const std::vector<std::array<double, 4>>& b, int kind = kDiffAdded) {
  std::vector<std::unique_ptr<CDiffType>> out;
  for (std::size_t i = 0; i < b.size(); ++i) {
    auto r = std::make_unique<CDiffType>();
    r->extents = {b[i][0], b[i][1], 0, b[i][2], b[i][3], 0};
    r->text = "r" + std::to_string(i);
    r->kind = kind;
    out.push_back(std::move(r));
  }
  return out;
}

// The ranges as the plain procedure forms them: scan all free records from the start after every join.
std::vector<std::pair<int, std::size_t>> naiveRanges(const std::vector<std::unique_ptr<CDiffType>>& records) {
  std::vector<std::pair<int, std::size_t>> out;  // (range, record) in joining order
  std::vector<bool> member(records.size());
  int range = 0;
  for (std::size_t s = 0; s < records.size(); ++s) {
    if (member[s]) continue;
    ++range;
    member[s] = true;
    out.emplace_back(range, s);
    auto box = records[s]->extents;
    for (bool grew = true; grew;) {
      grew = false;
      for (std::size_t i = 0; i < records.size(); ++i) {
        if (member[i] || !BoxesOverlap(box, records[i]->extents)) continue;
        member[i] = true;
        out.emplace_back(range, i);
        for (int k = 0; k < 3; ++k) box[k] = std::min(box[k], records[i]->extents[k]);
        for (int k = 3; k < 6; ++k) box[k] = std::max(box[k], records[i]->extents[k]);
        grew = true;
        break;
      }
    }
  }
  return out;
}

}  // namespace

TEST(DiffRanges, ChainsJoinAndMembersAreNumberedFromTwo) {
  // a touches b, b touches c, a does not touch c: one range. d stands apart.
  auto records = boxes({{0, 0, 1, 1}, {1, 0, 2, 1}, {2, 0, 3, 1}, {10, 10, 11, 11}});
  CDiffRange ranges(&records);
  ranges.Build({}, {});
  ASSERT_EQ(ranges.ranges.size(), 2u);
  EXPECT_EQ(ranges.ranges[0].label, "范围1");
  EXPECT_EQ(ranges.ranges[0].extents[3], 3.0);
  ASSERT_EQ(ranges.members.size(), 4u);
  EXPECT_EQ(ranges.members[0].label, "r0,1,1");
  EXPECT_EQ(ranges.members[1].label, "r1,1,2");
  EXPECT_EQ(ranges.members[2].label, "r2,1,3");
  EXPECT_EQ(ranges.members[3].label, "r3,2,1");
  EXPECT_EQ(*ranges.ranges[1].summary, "范围2,1");
}

TEST(DiffRanges, DeletedRecordsMoveByTheOffsetDifference) {
  auto records = boxes({{0, 0, 1, 1}});
  auto deleted = boxes({{100, 100, 101, 101}}, kDiffDeleted);
  records.push_back(std::move(deleted[0]));
  CDiffRange ranges(&records);
  ranges.Build({}, {});
  EXPECT_EQ(ranges.ranges.size(), 2u);  // equal offsets: no move
  ranges.Build({100, 100, 0}, {0.5, 0.5, 0});  // destination minus source: (-99.5, -99.5)
  ASSERT_EQ(ranges.ranges.size(), 1u);
  EXPECT_EQ(ranges.members[1].extents[0], 0.5);
}

TEST(DiffRanges, SameRangesAndOrderAsThePlainProcedure) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> pos(0, 100), size(0, 6);
  for (int round = 0; round < 20; ++round) {
    std::vector<std::array<double, 4>> b;
    for (int i = 0; i < 300; ++i) {
      const double x = pos(rng), y = pos(rng);
      b.push_back({x, y, x + size(rng), y + size(rng)});
    }
    auto records = boxes(b);
    CDiffRange ranges(&records);
    ranges.Build({}, {});
    std::vector<std::pair<int, std::size_t>> got;
    for (const auto& m : ranges.members) got.emplace_back(m.range, m.record);
    ASSERT_EQ(got, naiveRanges(records)) << "round " << round;
  }
}
