// What a comparison looks at: the excluded property codes and the reference switches, handed to every comparer.
#pragma once

#include <algorithm>
#include <vector>

// Property codes are DXF group codes naming a class of properties; 2000 stands for all type-specific ones.
enum PropertyCode : int {
  kCodeLinetype = 6,
  kCodeTextStyle = 7,
  kCodeLayer = 8,
  kCodeZ = 30,
  kCodeColor = 62,
  kCodeLineweight = 370,
  kCodeDetails = 2000,
};

struct CompareOptions {
  // Codes whose comparison is switched off, in the order the settings store lists them.
  std::vector<int> excludedCodes;
  // Block references and external references take part (the factory's row for block references).
  bool compareBlockReferences = true;
  bool compareExternalReferences = true;

  // The settings test: is the property class (or DXF group) with this code compared?
  bool isCompared(int code) const {
    return std::find(excludedCodes.begin(), excludedCodes.end(), code) == excludedCodes.end();
  }
};
