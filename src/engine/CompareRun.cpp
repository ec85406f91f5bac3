// The silent compare run.
#include "engine/CompareRun.h"

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

int RunSilentCompare(const std::string& sourcePath, const std::string& destinationPath) {
  CComparisonState& state = CComparisonState::instance();
  state.Prepare();
  state.lastOutcome = RunOutcome::Trouble;
  state.lastError.clear();
  state.lastWarnings.clear();
  state.lastLogPath.clear();
  state.lastLogWritten = false;

  if (CheckDwgVersion(sourcePath, destinationPath) == 0) {
    platform::printToCommandLine("文件不合法，退出比图");
    state.lastError = "a drawing was written by a newer release than can be compared";
    return 1;
  }
  state.sourceFileName = sourcePath;
  state.destinationFileName = destinationPath;
  // The destination is read beside the source; what it gives counts only when the source could be read.
  auto readDestination = startBeside([&] { return readSide(destinationPath); });
  SideRead source = readSide(sourcePath);
  SideRead destination = readDestination.get();
  state.sideSource = takeSide(std::move(source), state);
  state.sideDestination = state.sideSource ? takeSide(std::move(destination), state) : nullptr;

  int result = 1;
  if (!state.sideSource) {
    platform::printToCommandLine("源图形文件无效,退出比图");
  } else if (!state.sideDestination) {
    platform::printToCommandLine("目标图形文件无效，退出比图");
  } else if (!SameSpace(*state.sideSource, *state.sideDestination)) {
    platform::restoreStatusBar();
    platform::printToCommandLine("两个文件的当前空间不同，不能进行比较,退出比图");
    state.lastError = "the source shows " + std::string(state.sideSource->tilemode() == 1 ? "model space" : "a layout") +
                      ", the destination " + (state.sideDestination->tilemode() == 1 ? "model space" : "a layout");
  } else {
    LoadRunSettings(state);
    state.viewMatchingActive = 1;
    platform::setStatusBarProgressMeter("正在准备读取源文件：", 0, 100);
    platform::restoreStatusBar();
    state.source = CDrawingRecord::fromDatabase(*state.sideSource);
    state.destination = CDrawingRecord::fromDatabase(*state.sideDestination);
    ReadBothDrawings(state);

    if (state.source->entityCount == 0) {
      platform::printToCommandLine("原图无可比较实体");
      state.lastOutcome = RunOutcome::NothingToCompare;
    } else {
      const unsigned n = PairAndCompare(state);
      // The full stop after the line break is the program's own.
      std::string text = "\n文件完全相同\n。";
      state.lastOutcome = RunOutcome::Identical;
      if (n >= 1) {
        text = platform::fmt("发现有(%d)个实体不同。请使用工具条定位到详细差异位置。", n);
        state.lastLogPath = WriteCompareLog(sourcePath, destinationPath, static_cast<int>(n), &state.lastLogWritten);
        state.lastOutcome = RunOutcome::Different;
        result = 0;
      }
      platform::printToCommandLine(text);
    }
  }
  state.ReleaseDrawings();
  state.Prepare();
  return result;
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
  const std::vector<platform::ObjectId> sourceIds = PrepareReading(source);
  const std::vector<platform::ObjectId> destinationIds = PrepareReading(destination);
  auto collectDestination =
      startBeside([&] { CollectComparers(destination, destinationIds, state.options, false); });
  AnnounceReading(source, kReadSource);
  CollectComparers(source, sourceIds, state.options, true);
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
