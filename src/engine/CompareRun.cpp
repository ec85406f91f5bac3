// The silent compare run.
#include "engine/CompareRun.h"

#include "engine/CompareLog.h"
#include "engine/ComparisonState.h"
#include "engine/Pairing.h"
#include "platform/boundary.h"
#include "platform/host.h"
#include "platform/text.h"
#include "ui/CompareConfigFile.h"
#include "ui/OpenDrawings.h"

namespace {

// Reads one side database; the reader's detailed error is kept for front ends.
std::unique_ptr<platform::Database> readSide(const std::string& path, CComparisonState& state) {
  platform::ReadReport report;
  // A drawing too large for the memory left is refused like any drawing that cannot be read.
  auto db = RunGuarded(
      std::unique_ptr<platform::Database>(), [&] { return platform::Database::read(path, report); },
      [&](const char* reason) { report.error = path + ": " + reason; });
  if (!db && state.lastError.empty()) state.lastError = report.error;
  state.lastWarnings.insert(state.lastWarnings.end(), report.warnings.begin(), report.warnings.end());
  return db;
}

// Reads one drawing into its record; what walking its blocks survived joins the reader's warnings.
void readRecord(CDrawingRecord& record, int mode, CComparisonState& state) {
  ReadDrawing(record, mode, state.options);
  const auto& warnings = record.readContext->warnings();
  state.lastWarnings.insert(state.lastWarnings.end(), warnings.begin(), warnings.end());
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
  state.sideSource = readSide(sourcePath, state);
  state.sideDestination = state.sideSource ? readSide(destinationPath, state) : nullptr;

  int result = 1;
  if (!state.sideSource) {
    platform::printToCommandLine("源图形文件无效,退出比图");
  } else if (!state.sideDestination) {
    platform::printToCommandLine("目标图形文件无效，退出比图");
  } else if ((state.sideSource->tilemode() == 1) != (state.sideDestination->tilemode() == 1)) {
    platform::restoreStatusBar();
    platform::printToCommandLine("两个文件的当前空间不同，不能进行比较,退出比图");
    state.lastError = "the source shows " + std::string(state.sideSource->tilemode() == 1 ? "model space" : "a layout") +
                      ", the destination " + (state.sideDestination->tilemode() == 1 ? "model space" : "a layout");
  } else {
    CCompareConfigFile& settings = CCompareConfigFile::instance();
    settings.ReadSettings();
    state.options = settings.Options();
    state.viewMatchingActive = 1;
    platform::setStatusBarProgressMeter("正在准备读取源文件：", 0, 100);
    platform::restoreStatusBar();
    state.source = CDrawingRecord::fromDatabase(*state.sideSource);
    readRecord(*state.source, kReadSource, state);
    platform::setStatusBarProgressMeter("正在准备读取目标文件：", 0, 100);
    platform::restoreStatusBar();
    state.destination = CDrawingRecord::fromDatabase(*state.sideDestination);
    readRecord(*state.destination, kReadDestination, state);

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
  state.EndOnFailure();
  state.Prepare();
  return result;
}
