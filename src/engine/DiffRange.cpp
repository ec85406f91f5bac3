// Range forming. A range opens at the first free record and repeatedly takes the first free record (in
// record order) that overlaps the range's growing box, until none does. A bounding-volume tree over the
// records finds the records a box reaches, so each record is looked at a few times, not once per step.
#include "engine/DiffRange.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <queue>

#include "platform/text.h"

bool BoxesOverlap(const std::array<double, 6>& a, const std::array<double, 6>& b) {
  for (int axis = 0; axis < 2; ++axis) {
    const double centres = std::fabs((a[axis] + a[axis + 3]) - (b[axis] + b[axis + 3]));
    const double widths = (a[axis + 3] - a[axis]) + (b[axis + 3] - b[axis]);
    if (centres > widths) return false;
  }
  return true;
}

namespace {

using Box = std::array<double, 6>;

Box unite(const Box& a, const Box& b) {
  return {std::min(a[0], b[0]), std::min(a[1], b[1]), std::min(a[2], b[2]),
          std::max(a[3], b[3]), std::max(a[4], b[4]), std::max(a[5], b[5])};
}

// Boxes of records in a tree; records are taken out once found, and emptied subtrees are skipped.
class BoxTree {
 public:
  explicit BoxTree(const std::vector<Box>& boxes) : boxes_(boxes), order_(boxes.size()), alive_(boxes.size(), 1) {
    for (std::size_t i = 0; i < order_.size(); ++i) order_[i] = i;
    leafOf_.assign(boxes.size(), kNoNode);
    if (!boxes.empty()) build(0, order_.size());
  }

  // Calls found(i) for every remaining record whose box overlaps query, and takes it out.
  void takeOverlapping(const Box& query, const std::function<void(std::size_t)>& found) {
    if (!nodes_.empty()) take(0, query, found);
  }
  void takeOut(std::size_t record) {
    if (alive_[record]) {
      alive_[record] = 0;
      for (std::size_t n = leafOf_[record]; n != kNoNode; n = nodes_[n].parent) --nodes_[n].alive;
    }
  }

 private:
  static constexpr std::size_t kLeafSize = 8;
  static constexpr std::size_t kNoNode = static_cast<std::size_t>(-1);
  struct Node {
    Box box;
    std::size_t begin, end;  // range of order_
    std::size_t left = kNoNode, right = kNoNode, parent = kNoNode;
    std::size_t alive;
  };

  std::size_t build(std::size_t begin, std::size_t end, std::size_t parent = kNoNode) {
    Box box = boxes_[order_[begin]];
    for (std::size_t i = begin + 1; i < end; ++i) box = unite(box, boxes_[order_[i]]);
    const std::size_t index = nodes_.size();
    nodes_.push_back({box, begin, end, kNoNode, kNoNode, parent, end - begin});
    if (end - begin <= kLeafSize) {
      for (std::size_t i = begin; i < end; ++i) leafOf_[order_[i]] = index;
      return index;
    }
    const int axis = (box[3] - box[0]) >= (box[4] - box[1]) ? 0 : 1;
    const std::size_t mid = begin + (end - begin) / 2;
    std::nth_element(order_.begin() + static_cast<std::ptrdiff_t>(begin), order_.begin() + static_cast<std::ptrdiff_t>(mid),
                     order_.begin() + static_cast<std::ptrdiff_t>(end), [this, axis](std::size_t a, std::size_t b) {
                       return boxes_[a][axis] + boxes_[a][axis + 3] < boxes_[b][axis] + boxes_[b][axis + 3];
                     });
    const std::size_t left = build(begin, mid, index);
    const std::size_t right = build(mid, end, index);
    nodes_[index].left = left;
    nodes_[index].right = right;
    return index;
  }

  void take(std::size_t n, const Box& query, const std::function<void(std::size_t)>& found) {
    if (nodes_[n].alive == 0 || !BoxesOverlap(nodes_[n].box, query)) return;
    if (nodes_[n].left == kNoNode) {
      for (std::size_t i = nodes_[n].begin; i < nodes_[n].end; ++i) {
        const std::size_t r = order_[i];
        if (alive_[r] && BoxesOverlap(boxes_[r], query)) {
          takeOut(r);
          found(r);
        }
      }
      return;
    }
    take(nodes_[n].left, query, found);
    take(nodes_[n].right, query, found);
  }

  const std::vector<Box>& boxes_;
  std::vector<std::size_t> order_;
  std::vector<char> alive_;
  std::vector<Node> nodes_;
  std::vector<std::size_t> leafOf_;
};

}  // namespace

void CDiffRange::Build(const platform::Point3d& sourceOffset, const platform::Point3d& destinationOffset) {
  Clear();
  const std::size_t n = records->size();
  std::vector<Box> boxes(n);
  const double dx = destinationOffset.x - sourceOffset.x, dy = destinationOffset.y - sourceOffset.y;
  for (std::size_t i = 0; i < n; ++i) {
    const CDiffType& r = *(*records)[i];
    boxes[i] = r.extents;
    if (r.kind == kDiffDeleted) {
      boxes[i][0] += dx;
      boxes[i][3] += dx;
      boxes[i][1] += dy;
      boxes[i][4] += dy;
    }
  }
  BoxTree tree(boxes);
  std::vector<char> member(n, 0);
  members.reserve(n);
  const auto addMember = [&](std::size_t record, int range, int number) {
    CRangeMember m;
    m.label = platform::fmt("%s,%d,%d", (*records)[record]->text, range, number);
    m.labelCopy = std::make_unique<std::string>(m.label);
    m.kind = (*records)[record]->kind;
    m.extents = boxes[record];
    m.record = record;
    m.range = range;
    m.number = number;
    members.push_back(std::move(m));
    (*records)[record]->range = range;
    (*records)[record]->member = number;
    member[record] = 1;
  };
  int rangeNumber = 0;
  for (std::size_t seed = 0; seed < n; ++seed) {
    if (member[seed]) continue;
    ++rangeNumber;
    tree.takeOut(seed);
    Box box = boxes[seed];
    addMember(seed, rangeNumber, 1);
    // Records that overlap the range's box, smallest record index first; the box only grows, so a
    // record once found stays a candidate.
    std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> candidates;
    const auto found = [&candidates](std::size_t r) { candidates.push(r); };
    tree.takeOverlapping(box, found);
    int number = 1;
    while (!candidates.empty()) {
      const std::size_t next = candidates.top();
      candidates.pop();
      addMember(next, rangeNumber, ++number);  // joining members are numbered from 2
      const Box grown = unite(box, boxes[next]);
      if (grown != box) {
        box = grown;
        tree.takeOverlapping(box, found);
      }
    }
    CRangeEntry entry;
    entry.label = platform::fmt("范围%d", rangeNumber);
    entry.summary = std::make_unique<std::string>(platform::fmt("%s,%d", entry.label, number));
    entry.extents = box;
    ranges.push_back(std::move(entry));
  }
}

void CDiffRange::fillResultTree(CResultTreeSink& sink) const {
  std::size_t m = 0;
  for (std::size_t r = 0; r < ranges.size(); ++r) {
    sink.addRange(ranges[r].label, ranges[r].extents);
    for (; m < members.size() && members[m].range == static_cast<int>(r + 1); ++m)
      sink.addMember(members[m].label, members[m].kind, members[m].extents);
  }
}
