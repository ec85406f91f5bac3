// Opening drawings in the host: the release check that refuses drawings newer than the host reads.
#pragma once

#include <string>

// The newest release number the host reads: characters 5 and 6 of a DWG file's version code.
inline constexpr int kNewestReadableRelease = 24;

// Returns 1 when both files may be compared, 0 when one of them (or both: each gets its own message box)
// was written by a newer release.
int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath);
