// The registered result palette and the runs' steps on it.
#include "engine/ResultPaletteHook.h"

namespace {
CResultPaletteHook* registered = nullptr;
}

void SetResultPalette(CResultPaletteHook* palette) { registered = palette; }
CResultPaletteHook* ResultPalette() { return registered; }

void ClearResultPalette() {
  if (registered) registered->Clear();
}

void FillResultPalette(CComparisonState& state) {
  if (!registered) return;
  state.paletteIndex = registered->Fill(state);
  registered->Show();
}
