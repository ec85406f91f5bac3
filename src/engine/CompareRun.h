// Compare runs: the ways into a comparison. The silent run reads both files from disk, compares them,
// reports on the command line and writes the log; the interactive run, open-only and compare-the-open-pair
// work on documents open in the host.
#pragma once

#include <string>

#include "engine/ResultSink.h"

// Returns 0 when at least one difference was found (and logged), 1 in every other case. The log and the
// command line get the result, then every further output given.
int RunSilentCompare(const std::string& sourcePath, const std::string& destinationPath, ResultSinks outputs = {});

// The interactive run: both drawings as open host documents (the file selection dialog asks for a name that
// is empty), checked, compared, the outcome in message boxes.
void RunInteractiveCompare(const std::string& sourcePath, const std::string& destinationPath);
// The first half of the interactive run: dialog, open, tile, checks; no comparison.
void RunOpenOnly();
// Compares the two drawings already in the comparison state with the current area and base points.
void RunCompareOpenPair();
