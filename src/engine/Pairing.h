// Pairing: the entities of both drawings matched by key and compared, unmatched ones recorded as added or
// deleted, and the records sorted by position.
#pragma once

#include <memory>
#include <vector>

#include "comparers/DiffRecord.h"
#include "engine/ComparisonState.h"

// Pairs the two entity maps of the state, fills its sorted difference records, groups them into ranges
// with the state's offsets, and returns the number of records.
unsigned PairAndCompare(CComparisonState& state);

// The reference point by which records are ordered: the centre of the record's box after its minimum is
// clamped to at most 0 and its maximum to at least 0 (x, y).
platform::Point3d SortReferencePoint(const CDiffType& record);
// Sorts records ascending by x and then y of their reference points; equal points keep their order.
void SortRecords(std::vector<std::unique_ptr<CDiffType>>& records);
