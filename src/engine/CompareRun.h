// Compare runs: the ways into a comparison. The silent run reads both files from disk, compares them,
// reports on the command line and writes the log.
#pragma once

#include <string>

// Returns 0 when at least one difference was found (and logged), 1 in every other case.
int RunSilentCompare(const std::string& sourcePath, const std::string& destinationPath);
