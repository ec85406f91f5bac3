// The toolbar's place in the shell: removed at unload, shown and hidden on request.
#include "shell/ToolbarHookIn.h"

#include <string>

#include "platform/host.h"

void RemoveCompareToolbar() { DeleteCompareToolbar(HostApplication()); }

void ShowCompareToolbar(bool visible) {
  if (!SetCompareToolbarVisible(HostApplication(), visible))
    platform::printToCommandLine(std::string("\n没有工具栏“") + kToolbarName + "”。\n");
}
