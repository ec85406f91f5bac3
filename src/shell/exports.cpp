// The module's exported C functions.
#include "shell/exports.h"

#include <string>

#include "engine/CompareLog.h"
#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "platform/boundary.h"
#include "platform/host.h"
#include "shell/ToolbarHookIn.h"

extern "C" int I_VkCompareCurFile() { return 0; }

extern "C" int I_VkCompareFile(const char* sourcePath, const char* destinationPath, double*, double*, double*, double*,
                               double*, double*) {
  const std::string source = sourcePath ? sourcePath : "", destination = destinationPath ? destinationPath : "";
  return RunGuarded(
      -1,
      [&] {
        if (source.empty() && destination.empty()) {
          platform::printToCommandLine("文件名不能为空");
          return -1;
        }
        RunInteractiveCompare(source, destination);
        return 0;
      },
      [&](const char* reason) { platform::printToCommandLine(source + " against " + destination + ": " + reason); });
}

extern "C" void I_VkVisbleTooBar(int& visible) {
  RunGuarded(
      false,
      [&] {
        ShowCompareToolbar(visible == 1);
        return true;
      },
      [&](const char* reason) { platform::printToCommandLine(std::string(kToolbarName) + ": " + reason); });
}

extern "C" int I_VkCompareFiles_Silent(const char* sourcePath, const char* destinationPath, double*, double*, double*,
                                       double*, double*, double*) {
  return CompareFilesSilent(sourcePath, destinationPath);
}

int CompareFilesSilent(const char* sourcePath, const char* destinationPath, ResultSinks outputs) {
  const char* source = sourcePath ? sourcePath : "";
  const char* destination = destinationPath ? destinationPath : "";
  CComparisonState& state = CComparisonState::instance();
  // A run that throws is trouble: its drawings are let go and the reason kept for the front ends.
  return RunGuarded(
      1,
      [&] {
        if (!*source && !*destination) {
          platform::printToCommandLine("文件名不能为空");
          // Deliberately 1, not -1 as the interactive export answers.
          return 1;
        }
        return RunSilentCompare(source, destination, outputs);
      },
      [&](const char* reason) {
        state.ReleaseDrawings();
        state.Prepare();
        state.lastOutcome = RunOutcome::Trouble;
        state.lastError = std::string(source) + " against " + destination + ": " + reason;
        platform::printToCommandLine(state.lastError);
      });
}

extern "C" int VkLastSilentOutcome() {
  switch (CComparisonState::instance().lastOutcome) {
    case RunOutcome::Identical: return 0;
    case RunOutcome::Different: return 1;
    case RunOutcome::NothingToCompare: return 3;
    case RunOutcome::None:
    case RunOutcome::Trouble: return 2;
  }
  return 2;
}

extern "C" const char* VkLastSilentError() { return CComparisonState::instance().lastError.c_str(); }
extern "C" int VkLastSilentWarningCount() {
  return static_cast<int>(CComparisonState::instance().lastWarnings.size());
}
extern "C" const char* VkLastSilentWarning(int index) {
  const auto& w = CComparisonState::instance().lastWarnings;
  return index >= 0 && index < static_cast<int>(w.size()) ? w[static_cast<std::size_t>(index)].c_str() : "";
}
extern "C" const char* VkLastLogPath() { return CComparisonState::instance().lastLogPath.c_str(); }
extern "C" int VkLastLogWritten() { return CComparisonState::instance().lastLogWritten ? 1 : 0; }
extern "C" void VkSetLogFolder(const char* folder) {
  RunGuarded(
      false,
      [&] {
        LogFolder() = folder && *folder ? std::string(folder) : DefaultLogFolder();
        return true;
      },
      [&](const char* reason) { platform::printToCommandLine(std::string(folder ? folder : "") + ": " + reason); });
}
