// The comparison state: the one process-wide object that holds the two drawings of a comparison, their
// comparers, the difference records and the flags that carry between commands.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "comparers/CompareOptions.h"
#include "comparers/DiffRecord.h"
#include "engine/DiffRange.h"
#include "engine/DrawingRecord.h"
#include "platform/database.h"

// How the last silent run ended, for front ends that report more than the run's result code.
enum class RunOutcome { None, Identical, Different, NothingToCompare, Trouble };

class CComparisonState {
 public:
  static CComparisonState& instance();

  // The reset that every way in runs first: records, collections and drawing records are dropped.
  void Prepare();
  // Releases the drawing records and the side databases a run opened, whether it failed or finished.
  void ReleaseDrawings();

  KeyedComparers& sourceMap() { return source->entityMap; }
  KeyedComparers& destinationMap() { return destination->entityMap; }

  std::unique_ptr<CDrawingRecord> source;
  std::unique_ptr<CDrawingRecord> destination;
  // The result of the run: the records, sorted, each naming its entities and its range; and the ranges.
  // Every output reads these.
  std::vector<std::unique_ptr<CDiffType>> differences;
  CDiffRange ranges{&differences};
  // Counts the results: every prepare step starts a new one, so what refers to the records (navigation,
  // the palette's entries) can tell that they belong to an earlier result.
  std::uint64_t resultSerial = 0;
  int paletteIndex = 0;
  std::vector<std::string> openedDrawings;  // drawings the comparison opened in the host

  // Values kept between commands.
  std::string sourceFileName;
  std::string destinationFileName;
  std::string paletteSourceName;
  std::string paletteDestinationName;
  double sourceExtentsMin[3] = {0, 0, 0};
  double destinationExtentsMin[3] = {0, 0, 0};
  // Offsets added to a record's extents to place it in the source and destination drawings: their base
  // points, set when the drawings are read.
  platform::Point3d sourceOffset;
  platform::Point3d destinationOffset;

  // Process-wide flags of the commands.
  int resultReady = 0;
  int compareEnded = 0;
  int entitiesHidden = 0;
  int viewSync = 0;
  int allRectangles = 0;
  int viewMatchingActive = 0;

  // What the comparison looks at, loaded from the settings when a run prepares.
  CompareOptions options;

  // The side databases of the silent run, read from disk without opening them in the host.
  std::unique_ptr<platform::Database> sideSource;
  std::unique_ptr<platform::Database> sideDestination;

  // The last silent run: its outcome, the reader's detailed error, the log it wrote.
  RunOutcome lastOutcome = RunOutcome::None;
  std::string lastError;
  std::vector<std::string> lastWarnings;  // what the reader survived in either drawing
  std::string lastLogPath;
  bool lastLogWritten = false;

 private:
  CComparisonState() = default;
};
