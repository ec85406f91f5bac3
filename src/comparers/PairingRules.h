// The pairing rules: the entities of two keyed collections matched by key and compared, unmatched ones
// recorded as added or deleted. Drawings use them, and so do block references for their contents.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "comparers/CVkAcadEntityBase.h"
#include "comparers/DiffRecord.h"
#include "platform/pages.h"

// A comparer with the order number of its key text.
struct KeyedComparer {
  std::uint64_t key = 0;
  ComparerPtr comparer;
};
// A drawing's (or a block's) comparers in key order; entities sharing a key keep the order in which they
// were added.
using KeyedComparers = std::vector<KeyedComparer, platform::PageAllocator<KeyedComparer>>;

// Appends a comparer under its key; the collection is in key order again once sortByKey has run.
void addByKey(KeyedComparers& comparers, ComparerPtr comparer);
void sortByKey(KeyedComparers& comparers);

// Pairs the two collections (each in key order) and appends their records, unsorted: changed pairs in the
// order the destination's keys are walked, then added entities, then deleted ones. Each record names the
// entities it stands for.
// With two threads, large collections are paired in two halves of their keys at once; the records are the
// same either way. The comparers of a drawing must then be free of state they share (block contents are
// paired by the thread that pairs their reference).
enum class PairingThreads { One, Two };
void PairKeyedComparers(KeyedComparers& source, KeyedComparers& destination, std::vector<std::unique_ptr<CDiffType>>& records,
                        PairingThreads threads = PairingThreads::One);
