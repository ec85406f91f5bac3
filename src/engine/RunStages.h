// The stages every compare run shares: loading the settings, the space check, reading both drawings.
#pragma once

#include "engine/ComparisonState.h"

// Loads the settings from the INI file into the options the comparison runs with.
void LoadRunSettings(CComparisonState& state);
// Whether both drawings show the same kind of space (model space, or a layout).
bool SameSpace(const platform::Database& source, const platform::Database& destination);
// Reads the source and the destination record into their keyed collections, the destination beside the
// source; the host hears of the source's reading, then of the destination's. Documents open in the host
// stay locked meanwhile. What walking their blocks survived joins the state's warnings.
void ReadBothDrawings(CComparisonState& state);
