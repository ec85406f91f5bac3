// Ranges: sorted difference records grouped into numbered ranges of boxes that lie on or next to one another.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "comparers/DiffRecord.h"
#include "platform/geometry.h"

struct CRangeMember {
  std::string label;                       // "%s,%d,%d": record text, range number, member number
  std::unique_ptr<std::string> labelCopy;  // the copy the result tree keeps with its item
  int kind = 0;
  std::array<double, 6> extents{};         // deleted records already moved into destination coordinates
  std::size_t record = 0;                  // index of the record in the sorted list
  int range = 0;
  int number = 0;
};

struct CRangeEntry {
  std::string label;                      // "范围%d"
  std::unique_ptr<std::string> summary;   // "%s,%d": the label and the number of members
  std::array<double, 6> extents{};        // the union of its members
};

class CDiffRange {
 public:
  explicit CDiffRange(const std::vector<std::unique_ptr<CDiffType>>* records) : records(records) {}
  virtual ~CDiffRange() = default;
  // Adds every range and, below it, its members to the result tree.
  virtual void fillResultTree(CResultTreeSink& sink) const;

  // Forms the ranges of the sorted records and tells each record its range and member number. A deleted
  // record lies in source coordinates: it is moved by the destination offset minus the source offset (x, y)
  // before it is placed.
  void Build(const platform::Point3d& sourceOffset, const platform::Point3d& destinationOffset);

  void Clear() {
    members.clear();
    ranges.clear();
  }

  const std::vector<std::unique_ptr<CDiffType>>* records;
  std::vector<CRangeMember> members;
  std::vector<CRangeEntry> ranges;
};

// Two boxes overlap when, in x and in y alike, the distance of their centres (as sums min + max) is not
// greater than the sum of their widths; touching boxes overlap and z is ignored.
bool BoxesOverlap(const std::array<double, 6>& a, const std::array<double, 6>& b);
