// Opening drawings in the host: the release check that refuses drawings newer than the host reads.
#pragma once

#include <string>

// Returns 1 when both files may be compared, 0 when one of them (or both: each gets its own message box)
// was written by a release newer than the host reads (platform::newestReadableRelease()).
int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath);
// The same against a given newest release number.
int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath, int newestRelease);
