// The process-wide comparison state.
#include "engine/ComparisonState.h"

CComparisonState& CComparisonState::instance() {
  static CComparisonState state;
  return state;
}

void CComparisonState::Prepare() {
  ++resultSerial;
  ranges.Clear();
  differences.clear();
  // The comparers go with their drawing records; the records before the databases they read.
  source.reset();
  destination.reset();
}

void CComparisonState::ReleaseDrawings() {
  source.reset();
  destination.reset();
  sideSource.reset();
  sideDestination.reset();
}
