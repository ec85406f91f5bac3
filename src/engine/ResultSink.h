// The outputs of a comparison: each reads the run's one result (records, ranges, outcome) from the state.
#pragma once

#include <span>

#include "engine/ComparisonState.h"

class CResultSink {
 public:
  virtual ~CResultSink() = default;
  // Called once at the end of a run, whatever its outcome, while both drawings are still at hand (their
  // comparers are not: they are freed meanwhile): the records are sorted and grouped into ranges, and the
  // state's outcome, error and warnings are final.
  virtual void publish(const CComparisonState& state) = 0;
};

using ResultSinks = std::span<CResultSink* const>;
