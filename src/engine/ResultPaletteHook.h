// The result palette as the runs see it: emptied when a run starts, filled and shown when the run has its
// result. The presentation that implements it registers itself; without one (the silent front end) the
// runs have no palette to tell.
#pragma once

#include "engine/ComparisonState.h"

class CResultPaletteHook {
 public:
  virtual ~CResultPaletteHook() = default;
  // Drops every item of the tree and every entry.
  virtual void Clear() = 0;
  // Builds the tree of ranges and their members from the state's records and names; answers the index the
  // run keeps in the state (never 0, which stands for an empty palette).
  virtual int Fill(const CComparisonState& state) = 0;
  virtual void Show() = 0;
};

// The palette the runs use; null for none.
void SetResultPalette(CResultPaletteHook* palette);
CResultPaletteHook* ResultPalette();

// The palette steps of a run, each nothing without a palette.
void ClearResultPalette();
// Fills and shows the palette and keeps its index in the state.
void FillResultPalette(CComparisonState& state);
