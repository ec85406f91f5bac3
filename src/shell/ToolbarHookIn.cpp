// The toolbar's place in the shell. The toolbar itself is not in this build yet: showing it refuses.
#include "shell/ToolbarHookIn.h"

#include "platform/host.h"

void CreateCompareToolbar(const std::string&) {}

void RemoveCompareToolbar() {}

void ShowCompareToolbar(bool visible) {
  platform::printToCommandLine(std::string("\n") + (visible ? "showing" : "hiding") + " the toolbar " + kToolbarName +
                               ": not available yet in this build\n");
}
