// Pairing of the two keyed collections, and the ordering of the records.
#include "engine/Pairing.h"

#include <algorithm>

#include "platform/host.h"

namespace {

bool handled(const CVkAcadEntityBase& e) { return e.excluded != 0 || e.matched == 1; }

void keepDifference(CComparisonState& state, std::unique_ptr<CDiffType> record, const CVkAcadEntityBase& src,
                    const CVkAcadEntityBase& dst) {
  record->kind = kDiffChanged;
  state.differences.push_back(std::move(record));
  state.sourceIds.push_back(src.objectId());
  state.destinationIds.push_back(dst.objectId());
}

void pairOne(CComparisonState& state, CVkAcadEntityBase& src, CVkAcadEntityBase& dst) {
  std::unique_ptr<CDiffType> record;
  if (!compareWith(src, dst, record)) keepDifference(state, std::move(record), src, dst);
}

void recordUnpaired(CComparisonState& state, const EntityMap& map, int kind, const char* suffix) {
  for (const auto& [key, e] : map) {
    if (handled(*e)) continue;
    auto record = std::make_unique<CDiffType>();
    record->text = e->description() + suffix;
    record->setExtents(e->placedExtents());
    record->kind = kind;
    state.differences.push_back(std::move(record));
  }
}

}  // namespace

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
  EntityMap& src = state.sourceMap();
  EntityMap& dst = state.destinationMap();
  // The meter only flashes its label: the position is never advanced here.
  platform::setStatusBarProgressMeter("3/3 实体比较", 0, static_cast<int>(src.size() + dst.size()));
  platform::restoreStatusBar();

  for (auto node = dst.begin(); node != dst.end();) {
    const std::string& key = node->first;
    if (key.empty() || handled(*node->second)) {
      ++node;
      continue;
    }
    const auto [srcBegin, srcEnd] = src.equal_range(key);
    const auto [dstBegin, dstEnd] = dst.equal_range(key);
    const bool oneSource = srcBegin != srcEnd && std::next(srcBegin) == srcEnd;
    const bool oneDestination = std::next(dstBegin) == dstEnd;
    if (oneSource && oneDestination) {
      pairOne(state, *srcBegin->second, *dstBegin->second);
    } else if (srcBegin != srcEnd) {
      // Equal pairs first, whatever their order; then what is left is paired in order.
      for (auto d = dstBegin; d != dstEnd; ++d) {
        if (handled(*d->second)) continue;
        for (auto s = srcBegin; s != srcEnd; ++s)
          if (!handled(*s->second) && isSameAs(*s->second, *d->second)) break;
      }
      for (auto d = dstBegin; d != dstEnd; ++d) {
        if (handled(*d->second)) continue;
        for (auto s = srcBegin; s != srcEnd; ++s) {
          if (handled(*s->second)) continue;
          pairOne(state, *s->second, *d->second);
          break;
        }
      }
    }
    node = dstEnd;  // every node of this key has been dealt with
  }
  recordUnpaired(state, dst, kDiffAdded, "新增,");
  recordUnpaired(state, src, kDiffDeleted, "删除,");
  SortRecords(state.differences);
  platform::restoreStatusBar();
  return static_cast<unsigned>(state.differences.size());
}
