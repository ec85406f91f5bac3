// Pairing of the comparison state's two collections, and the ordering of the records.
#include "engine/Pairing.h"

#include <algorithm>

#include "comparers/PairingRules.h"
#include "platform/host.h"

platform::Point3d SortReferencePoint(const CDiffType& r) {
  const double minX = std::min(r.extents[0], 0.0), minY = std::min(r.extents[1], 0.0);
  const double maxX = std::max(r.extents[3], 0.0), maxY = std::max(r.extents[4], 0.0);
  return {minX + (maxX - minX) * 0.5, minY + (maxY - minY) * 0.5, 0.0};
}

void SortRecords(std::vector<std::unique_ptr<CDiffType>>& records) {
  struct Keyed {
    platform::Point3d p;
    std::unique_ptr<CDiffType> r;
  };
  std::vector<Keyed> keyed;
  keyed.reserve(records.size());
  for (auto& r : records) keyed.push_back({SortReferencePoint(*r), std::move(r)});
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const Keyed& a, const Keyed& b) { return a.p.x < b.p.x || (a.p.x == b.p.x && a.p.y < b.p.y); });
  for (std::size_t i = 0; i < records.size(); ++i) records[i] = std::move(keyed[i].r);
}

unsigned PairAndCompare(CComparisonState& state) {
  KeyedComparers& src = state.sourceMap();
  KeyedComparers& dst = state.destinationMap();
  // The meter only flashes its label: the position is never advanced here.
  platform::setStatusBarProgressMeter("3/3 实体比较", 0, static_cast<int>(src.size() + dst.size()));
  platform::restoreStatusBar();
  PairKeyedComparers(src, dst, state.differences, PairingThreads::Two);
  SortRecords(state.differences);
  state.ranges.Build(state.sourceOffset, state.destinationOffset);
  platform::restoreStatusBar();
  return static_cast<unsigned>(state.differences.size());
}
