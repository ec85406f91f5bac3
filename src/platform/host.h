// User-facing services of the host: the command line and message boxes.
#pragma once

#include <string_view>

namespace platform {

// Message box styles and answers, with the host's values.
enum MessageBoxStyle : unsigned {
  kMbOk = 0x0,
  kMbOkCancel = 0x1,
  kMbYesNo = 0x4,
  kMbIconError = 0x10,
  kMbIconQuestion = 0x20,
  kMbIconWarning = 0x30,
  kMbIconInformation = 0x40,
};
enum MessageBoxAnswer : int { kIdOk = 1, kIdCancel = 2, kIdYes = 6, kIdNo = 7 };

// The status bar's progress meter: a label and a range, then positions within it; restoring the status
// bar removes the meter.
void setStatusBarProgressMeter(std::string_view label, int minPos, int maxPos);
void setStatusBarProgressMeterPos(int pos);
void restoreStatusBar();

// Prints text on the host's command line (acutPrintf): the text is printed as given, line breaks included.
void printToCommandLine(std::string_view text);
// Shows a modal message box owned by the host's main window; returns the button chosen.
int showMessageBox(std::string_view text, std::string_view title, unsigned style);

}  // namespace platform
