// The silent compare run.
#include "engine/CompareRun.h"
#include "engine/ResultPaletteHook.h"

#include "comparers/RunBeside.h"
#include "engine/CompareLog.h"
#include "engine/ComparisonState.h"
#include "engine/Pairing.h"
#include "engine/RunStages.h"
#include "platform/boundary.h"
#include "platform/host.h"
#include "platform/text.h"
#include "ui/CompareConfigFile.h"
#include "ui/OpenDrawings.h"

namespace {

// One drawing read from disk, with what the reader said of it.
struct SideRead {
  std::unique_ptr<platform::Database> database;
  platform::ReadReport report;
};

// Reads one side database. Touches nothing shared: the two drawings are read on two threads.
SideRead readSide(const std::string& path) {
  SideRead side;
  // A drawing too large for the memory left is refused like any drawing that cannot be read.
  side.database = RunGuarded(
      std::unique_ptr<platform::Database>(), [&] { return platform::Database::read(path, side.report); },
      [&](const char* reason) { side.report.error = path + ": " + reason; });
  return side;
}

// Keeps a side's database; the reader's detailed error is kept for front ends.
std::unique_ptr<platform::Database> takeSide(SideRead side, CComparisonState& state) {
  if (!side.database && state.lastError.empty()) state.lastError = side.report.error;
  state.lastWarnings.insert(state.lastWarnings.end(), side.report.warnings.begin(), side.report.warnings.end());
  return std::move(side.database);
}

}  // namespace

namespace {

// Stage check: both files must be of a release the host reads.
bool checkReleases(CComparisonState& state, const std::string& sourcePath, const std::string& destinationPath) {
  if (CheckDwgVersion(sourcePath, destinationPath) != 0) return true;
  platform::printToCommandLine("文件不合法，退出比图");
  state.lastError = "a drawing was written by a newer release than can be compared";
  return false;
}

// Stage read: both drawings from disk, the destination beside the source; what the destination gives counts
// only when the source could be read. False, after the refusal, when either cannot be read or they show
// different kinds of space.
bool readSides(CComparisonState& state, const std::string& sourcePath, const std::string& destinationPath) {
  auto readDestination = startBeside([&] { return readSide(destinationPath); });
  SideRead source = readSide(sourcePath);
  SideRead destination = readDestination.get();
  state.sideSource = takeSide(std::move(source), state);
  state.sideDestination = state.sideSource ? takeSide(std::move(destination), state) : nullptr;
  if (!state.sideSource) {
    platform::printToCommandLine("源图形文件无效,退出比图");
    return false;
  }
  if (!state.sideDestination) {
    platform::printToCommandLine("目标图形文件无效，退出比图");
    return false;
  }
  if (!SameSpace(*state.sideSource, *state.sideDestination)) {
    platform::restoreStatusBar();
    platform::printToCommandLine("两个文件的当前空间不同，不能进行比较,退出比图");
    state.lastError = "the source shows " + std::string(state.sideSource->tilemode() == 1 ? "model space" : "a layout") +
                      ", the destination " + (state.sideDestination->tilemode() == 1 ? "model space" : "a layout");
    return false;
  }
  return true;
}

// Stages collect, pair, sort and group: the comparers of both drawings, their records and ranges.
void compareSides(CComparisonState& state) {
  LoadRunSettings(state);
  state.viewMatchingActive = 1;
  ClearResultPalette();
  platform::setStatusBarProgressMeter("正在准备读取源文件：", 0, 100);
  platform::restoreStatusBar();
  state.source = CDrawingRecord::fromDatabase(*state.sideSource);
  state.destination = CDrawingRecord::fromDatabase(*state.sideDestination);
  ReadBothDrawings(state);
  if (state.source->entityCount == 0) {
    state.lastOutcome = RunOutcome::NothingToCompare;
    return;
  }
  state.lastOutcome = PairAndCompare(state) >= 1 ? RunOutcome::Different : RunOutcome::Identical;
}

// The log: written when there are differences; its path is printed on the command line.
class CLogOutput : public CResultSink {
 public:
  void publish(const CComparisonState& state) override {
    if (state.lastOutcome != RunOutcome::Different) return;
    path = WriteCompareLog(state.sourceFileName, state.destinationFileName,
                           static_cast<int>(state.differences.size()), &written);
  }
  std::string path;
  bool written = false;
};

// The command line: the outcome in one line. Refusals were printed by the stage that refused.
class CCommandLineOutput : public CResultSink {
 public:
  void publish(const CComparisonState& state) override {
    switch (state.lastOutcome) {
      case RunOutcome::NothingToCompare: platform::printToCommandLine("原图无可比较实体"); break;
      // The full stop after the line break is the program's own.
      case RunOutcome::Identical: platform::printToCommandLine("\n文件完全相同\n。"); break;
      case RunOutcome::Different:
        platform::printToCommandLine(platform::fmt("发现有(%d)个实体不同。请使用工具条定位到详细差异位置。",
                                                   static_cast<int>(state.differences.size())));
        break;
      case RunOutcome::None:
      case RunOutcome::Trouble: break;
    }
  }
};

}  // namespace

int RunSilentCompare(const std::string& sourcePath, const std::string& destinationPath, ResultSinks outputs) {
  CComparisonState& state = CComparisonState::instance();
  state.Prepare();
  state.compareEnded = 0;
  state.lastOutcome = RunOutcome::Trouble;
  state.lastError.clear();
  state.lastWarnings.clear();
  state.lastLogPath.clear();
  state.lastLogWritten = false;
  state.sourceFileName = sourcePath;
  state.destinationFileName = destinationPath;

  if (checkReleases(state, sourcePath, destinationPath) && readSides(state, sourcePath, destinationPath))
    compareSides(state);
  // The outputs need the records and the drawings, not the comparers: those go on a thread of their own
  // meanwhile.
  auto releaseComparers = startBeside([&state] {
    state.source.reset();
    state.destination.reset();
  });

  CLogOutput log;
  CCommandLineOutput commandLine;
  log.publish(state);
  state.lastLogPath = log.path;
  state.lastLogWritten = log.written;
  commandLine.publish(state);
  for (CResultSink* output : outputs) output->publish(state);

  releaseComparers.get();
  state.ReleaseDrawings();
  state.Prepare();
  return state.lastOutcome == RunOutcome::Different ? 0 : 1;
}

// Collects the comparers of both drawings, the destination's on a thread of its own; the host hears of the
// source's reading, then of the destination's, as if they were read one after the other. What walking
// their blocks survived joins the reader's warnings.
void ReadBothDrawings(CComparisonState& state) {
  CDrawingRecord& source = *state.source;
  CDrawingRecord& destination = *state.destination;
  // Documents open in the host stay locked while they are read.
  for (CDrawingRecord* record : {&source, &destination})
    if (record->document) platform::lockDocument(record->document, platform::LockMode::kWrite);
  PrepareReading(source);
  PrepareReading(destination);
  // Comparers see each drawing from its base point; a record's extents plus a drawing's base point give
  // its place in that drawing.
  state.sourceOffset = source.basePoint;
  state.destinationOffset = destination.basePoint;
  auto collectDestination =
      startBeside([&] { CollectComparers(destination, state.options, false); });
  AnnounceReading(source, kReadSource);
  CollectComparers(source, state.options, true);
  EndReading(source);
  platform::setStatusBarProgressMeter("正在准备读取目标文件：", 0, 100);
  platform::restoreStatusBar();
  AnnounceReading(destination, kReadDestination);
  collectDestination.get();
  EndReading(destination);
  for (const CDrawingRecord* record : {&source, &destination}) {
    if (!record->readContext) continue;  // a record without a database is not read
    const auto& warnings = record->readContext->warnings();
    state.lastWarnings.insert(state.lastWarnings.end(), warnings.begin(), warnings.end());
  }
  for (CDrawingRecord* record : {&source, &destination})
    if (record->document) platform::unlockDocument(record->document);
}

bool SameSpace(const platform::Database& source, const platform::Database& destination) {
  return (source.tilemode() == 1) == (destination.tilemode() == 1);
}

void LoadRunSettings(CComparisonState& state) {
  CCompareConfigFile& settings = CCompareConfigFile::instance();
  settings.ReadSettings();
  state.options = settings.Options();
}
