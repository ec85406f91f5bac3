// The pairing rules.
#include "comparers/PairingRules.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "comparers/RunBeside.h"

namespace {

bool handled(const CVkAcadEntityBase& e) { return e.excluded != 0 || e.matched == 1; }

// The comparers lie in the order they were loaded, not in key order: walks in key order fetch the comparers
// a few keys ahead while they work on these.
constexpr std::ptrdiff_t kAhead = 8;

// Asks for the cache lines of a comparer that a pair test reads.
void prefetchComparer(const CVkAcadEntityBase* comparer) {
  const char* at = reinterpret_cast<const char*>(comparer);
  for (std::size_t line = 0; line < sizeof(CVkAcadEntityBase) + 16; line += 64) __builtin_prefetch(at + line);
}

// Below this many destination entities a second thread saves little, and its heap arena costs a small
// comparison a noticeable share of its memory.
constexpr std::size_t kSplitFrom = 16384;

struct Pairing {
  std::vector<std::unique_ptr<CDiffType>>& records;

  // A pair by the one-to-one rule: both become matched; a differing record is kept with both entities.
  void pair(CVkAcadEntityBase& src, CVkAcadEntityBase& dst) {
    std::unique_ptr<CDiffType> record;
    if (compareWith(src, dst, record)) return;
    record->kind = kDiffChanged;
    record->sourceHandle = src.handle();
    record->sourceId = src.objectId();
    record->destinationHandle = dst.handle();
    record->destinationId = dst.objectId();
    records.push_back(std::move(record));
  }

  void unpaired(const KeyedComparers& map, int kind, const char* suffix) {
    for (auto at = map.begin(); at != map.end(); ++at) {
      if (map.end() - at > kAhead) __builtin_prefetch(&at[kAhead].comparer->matched);
      const CVkAcadEntityBase* e = at->comparer.get();
      if (handled(*e)) continue;
      auto record = std::make_unique<CDiffType>();
      record->text.assign(e->description()).append(suffix);
      record->descriptionLength = static_cast<std::uint32_t>(e->description().size());
      record->setExtents(e->placedExtents());
      record->kind = kind;
      (kind == kDiffAdded ? record->destinationHandle : record->sourceHandle) = e->handle();
      (kind == kDiffAdded ? record->destinationId : record->sourceId) = e->objectId();
      records.push_back(std::move(record));
    }
  }
};

// The sources of one key by digest, so that a destination finds the first source (in filing order) that it
// is alike to by a lookup: only sources with its digest can be alike to it.
class AlikeIndex {
 public:
  template <class It>
  void build(It begin, It end) {
    byCommon_.clear();
    byFull_.clear();
    for (auto s = begin; s != end; ++s) {
      CVkAcadEntityBase* e = s->comparer.get();
      const CVkAcadEntityBase::Digests digests = e->digests();
      byCommon_.push_back({digests.common, 0, e});
      byFull_.push_back({digests.full, 0, e});
    }
    prepare(byCommon_);
    prepare(byFull_);
  }

  // Pairs d with the first unhandled source alike to it, by the equality test; false when there is none.
  bool pairAlike(CVkAcadEntityBase& d) {
    const CVkAcadEntityBase::Digests digests = d.digests();
    return digests.ownTexts ? pairIn(byFull_, digests.full, d) : pairIn(byCommon_, digests.common, d);
  }

 private:
  struct Entry {
    std::uint64_t digest;
    std::uint32_t first;  // at the start of a run of one digest: where its unhandled entries may begin
    CVkAcadEntityBase* source;
  };

  static void prepare(std::vector<Entry>& entries) {
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.digest < b.digest; });
    for (std::size_t i = 0; i < entries.size(); ++i) entries[i].first = static_cast<std::uint32_t>(i);
  }

  static bool pairIn(std::vector<Entry>& entries, std::uint64_t digest, CVkAcadEntityBase& d) {
    const auto run = std::lower_bound(entries.begin(), entries.end(), digest,
                                      [](const Entry& e, std::uint64_t v) { return e.digest < v; });
    if (run == entries.end() || run->digest != digest) return false;
    // Handled entries at the front of the run are passed once; unlike ones (digests that collide) are tried.
    for (std::size_t i = run->first; i < entries.size() && entries[i].digest == digest; ++i) {
      CVkAcadEntityBase& s = *entries[i].source;
      if (handled(s)) {
        if (i == run->first) ++run->first;
        continue;
      }
      if (isSameAs(s, d)) return true;
    }
    return false;
  }

  std::vector<Entry> byCommon_;
  std::vector<Entry> byFull_;
};

}  // namespace

void addByKey(KeyedComparers& comparers, ComparerPtr comparer) {
  const std::uint64_t key = comparer->keyOrder();
  comparers.push_back({key, std::move(comparer)});
}

void sortByKey(KeyedComparers& comparers) {
  // A block's few comparers are sorted in place; a drawing's hundreds of thousands by their keys' digits,
  // twelve bits a pass from the lowest, which keeps the order of equal keys as a stable sort does and costs
  // a few passes over the collection instead of a merge sort's many.
  constexpr std::size_t kRadixFrom = 4096;
  if (comparers.size() < kRadixFrom) {
    std::stable_sort(comparers.begin(), comparers.end(),
                     [](const KeyedComparer& a, const KeyedComparer& b) { return a.key < b.key; });
    return;
  }
  constexpr unsigned kBits = 12;
  constexpr std::size_t kBuckets = std::size_t{1} << kBits;
  std::uint64_t highest = 0;
  for (const KeyedComparer& c : comparers) highest |= c.key;
  KeyedComparers other(comparers.size());
  std::vector<std::size_t> starts(kBuckets);
  for (unsigned shift = 0; shift < 64 && (highest >> shift) != 0; shift += kBits) {
    std::fill(starts.begin(), starts.end(), 0);
    for (const KeyedComparer& c : comparers) ++starts[(c.key >> shift) & (kBuckets - 1)];
    std::size_t at = 0;
    for (std::size_t& start : starts) at += std::exchange(start, at);
    for (KeyedComparer& c : comparers) other[starts[(c.key >> shift) & (kBuckets - 1)]++] = std::move(c);
    comparers.swap(other);
  }
}

namespace {

using Position = KeyedComparers::iterator;


// Pairs the entities of the keys in [dstFirst, dstLast) with those of the source in [srcFirst, srcLast),
// which holds every source entity of those keys.
void pairKeys(Position srcFirst, Position srcLast, Position dstFirst, Position dstLast, Pairing& p) {
  AlikeIndex alike;
  // Both collections are ordered by key: the source's range of each key is found by walking the source
  // alongside the destination instead of searching it.
  auto srcNext = srcFirst;
  for (auto node = dstFirst; node != dstLast;) {
    if (dstLast - node > kAhead) prefetchComparer(node[kAhead].comparer.get());
    if (srcLast - srcNext > kAhead) prefetchComparer(srcNext[kAhead].comparer.get());
    const std::uint64_t key = node->key;
    // Only destination entities are tested for an empty key: such an entity is never compared.
    if (key == 0 || handled(*node->comparer)) {
      ++node;
      continue;
    }
    auto dstBegin = node, dstEnd = node;
    while (dstBegin != dstFirst && std::prev(dstBegin)->key == key) --dstBegin;
    while (dstEnd != dstLast && dstEnd->key == key) ++dstEnd;
    while (srcNext != srcLast && srcNext->key < key) ++srcNext;
    const auto srcBegin = srcNext;
    auto srcEnd = srcBegin;
    while (srcEnd != srcLast && srcEnd->key == key) ++srcEnd;
    const bool oneSource = srcBegin != srcEnd && std::next(srcBegin) == srcEnd;
    const bool oneDestination = std::next(dstBegin) == dstEnd;
    if (oneSource && oneDestination) {
      p.pair(*srcBegin->comparer, *dstBegin->comparer);
    } else if (srcBegin != srcEnd) {
      // Alike pairs first, whatever their order in the collections; then what is left is paired in order.
      alike.build(srcBegin, srcEnd);
      for (auto d = dstBegin; d != dstEnd; ++d)
        if (!handled(*d->comparer)) alike.pairAlike(*d->comparer);
      auto s = srcBegin;
      for (auto d = dstBegin; d != dstEnd; ++d) {
        if (handled(*d->comparer)) continue;
        while (s != srcEnd && handled(*s->comparer)) ++s;
        if (s == srcEnd) break;
        p.pair(*s->comparer, *d->comparer);
      }
    }
    node = dstEnd;  // every entity of this key has been dealt with
  }
}

}  // namespace

void PairKeyedComparers(KeyedComparers& src, KeyedComparers& dst, std::vector<std::unique_ptr<CDiffType>>& records,
                        PairingThreads threads) {
  Pairing p{records};
  if (threads == PairingThreads::One || dst.size() < kSplitFrom) {
    pairKeys(src.begin(), src.end(), dst.begin(), dst.end(), p);
  } else {
    // The keys are split in two at a key boundary, and the upper half is paired on a thread of its own:
    // no entity takes part in both halves. Its records follow those of the lower half, as one walk of
    // the keys would give them.
    auto dstMiddle = dst.begin() + static_cast<std::ptrdiff_t>(dst.size() / 2);
    while (dstMiddle != dst.end() && std::prev(dstMiddle)->key == dstMiddle->key) ++dstMiddle;
    const auto srcMiddle = dstMiddle == dst.end() ? src.end()
                                                  : std::lower_bound(src.begin(), src.end(), dstMiddle->key,
                                                                     [](const KeyedComparer& e, std::uint64_t key) { return e.key < key; });
    std::vector<std::unique_ptr<CDiffType>> upperRecords;
    Pairing upper{upperRecords};
    auto upperDone = startBeside([&] { pairKeys(srcMiddle, src.end(), dstMiddle, dst.end(), upper); });
    pairKeys(src.begin(), srcMiddle, dst.begin(), dstMiddle, p);
    upperDone.get();
    records.insert(records.end(), std::make_move_iterator(upperRecords.begin()), std::make_move_iterator(upperRecords.end()));
  }
  p.unpaired(dst, kDiffAdded, "新增,");
  p.unpaired(src, kDiffDeleted, "删除,");
}
