// The process-wide comparison state.
#include "engine/ComparisonState.h"

#include "comparers/RunBeside.h"

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
  // Each side's comparers go before the database they read; the two sides are freed at once, as a large
  // drawing's hundreds of thousands of comparers and pages of groups take a while.
  auto releaseDestination = startBeside([this] {
    destination.reset();
    sideDestination.reset();
  });
  source.reset();
  sideSource.reset();
  releaseDestination.get();
}
