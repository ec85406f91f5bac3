// The pairing rules: the entities of two keyed collections matched by key and compared, unmatched ones
// recorded as added or deleted. Drawings use them, and so do block references for their contents.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "comparers/CVkAcadEntityBase.h"
#include "comparers/DiffRecord.h"

// Key text to comparer; entities sharing a key keep the order in which they were filed.
using EntityMap = std::multimap<std::string, std::unique_ptr<CVkAcadEntityBase>>;

// Pairs the two collections and appends their records, unsorted: changed pairs in the order the
// destination's keys are walked, then added entities, then deleted ones. The ids of each changed pair are
// appended to the id lists when they are given.
void PairEntityMaps(EntityMap& source, EntityMap& destination, std::vector<std::unique_ptr<CDiffType>>& records,
                    std::vector<platform::ObjectId>* sourceIds = nullptr,
                    std::vector<platform::ObjectId>* destinationIds = nullptr);
