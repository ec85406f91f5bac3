// The pairing rules.
#include "comparers/PairingRules.h"

namespace {

bool handled(const CVkAcadEntityBase& e) { return e.excluded != 0 || e.matched == 1; }

struct Pairing {
  std::vector<std::unique_ptr<CDiffType>>& records;
  std::vector<platform::ObjectId>* sourceIds;
  std::vector<platform::ObjectId>* destinationIds;

  // A pair by the one-to-one rule: both become matched; a differing record is kept with both ids.
  void pair(CVkAcadEntityBase& src, CVkAcadEntityBase& dst) {
    std::unique_ptr<CDiffType> record;
    if (compareWith(src, dst, record)) return;
    record->kind = kDiffChanged;
    records.push_back(std::move(record));
    if (sourceIds) sourceIds->push_back(src.objectId());
    if (destinationIds) destinationIds->push_back(dst.objectId());
  }

  void unpaired(const EntityMap& map, int kind, const char* suffix) {
    for (const auto& [key, e] : map) {
      if (handled(*e)) continue;
      auto record = std::make_unique<CDiffType>();
      record->text.assign(e->description()).append(suffix);
      record->setExtents(e->placedExtents());
      record->kind = kind;
      records.push_back(std::move(record));
    }
  }
};

}  // namespace

void PairEntityMaps(EntityMap& src, EntityMap& dst, std::vector<std::unique_ptr<CDiffType>>& records,
                    std::vector<platform::ObjectId>* sourceIds, std::vector<platform::ObjectId>* destinationIds) {
  Pairing p{records, sourceIds, destinationIds};
  // Both collections are ordered by key: the source's range of each key is found by walking the source
  // alongside the destination instead of searching it.
  auto srcNext = src.begin();
  for (auto node = dst.begin(); node != dst.end();) {
    const std::string& key = node->first;
    // Only destination entities are tested for an empty key: such an entity is never compared.
    if (key.empty() || handled(*node->second)) {
      ++node;
      continue;
    }
    auto dstBegin = node, dstEnd = node;
    while (dstBegin != dst.begin() && std::prev(dstBegin)->first == key) --dstBegin;
    while (dstEnd != dst.end() && dstEnd->first == key) ++dstEnd;
    while (srcNext != src.end() && srcNext->first < key) ++srcNext;
    const auto srcBegin = srcNext;
    auto srcEnd = srcBegin;
    while (srcEnd != src.end() && srcEnd->first == key) ++srcEnd;
    const bool oneSource = srcBegin != srcEnd && std::next(srcBegin) == srcEnd;
    const bool oneDestination = std::next(dstBegin) == dstEnd;
    if (oneSource && oneDestination) {
      p.pair(*srcBegin->second, *dstBegin->second);
    } else if (srcBegin != srcEnd) {
      // Equal pairs first, whatever their order in the collections; then what is left is paired in order.
      for (auto d = dstBegin; d != dstEnd; ++d) {
        if (handled(*d->second)) continue;
        for (auto s = srcBegin; s != srcEnd; ++s)
          if (!handled(*s->second) && isSameAs(*s->second, *d->second)) break;
      }
      for (auto d = dstBegin; d != dstEnd; ++d) {
        if (handled(*d->second)) continue;
        for (auto s = srcBegin; s != srcEnd; ++s) {
          if (handled(*s->second)) continue;
          p.pair(*s->second, *d->second);
          break;
        }
      }
    }
    node = dstEnd;  // every entity of this key has been dealt with
  }
  p.unpaired(dst, kDiffAdded, "新增,");
  p.unpaired(src, kDiffDeleted, "删除,");
}
