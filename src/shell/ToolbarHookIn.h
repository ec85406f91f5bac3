// Where the shell meets the module's toolbar "Morvane图纸比较": made at load, removed at unload, shown and
// hidden by Showcc, Hidecc and I_VkVisbleTooBar.
#pragma once

#include "ui/CompareToolbar.h"

inline constexpr const char* kToolbarName = kCompareToolbarName;

// The load makes the toolbar with CreateCompareToolbar() (ui/CompareToolbar.h): in the host's menu group
// "Acad", its pictures in the folder "ToosBmp" of the settings store's data folder, not below the module
// folder, where a user may not write. The unload removes it again.
void RemoveCompareToolbar();
// Shows or hides it; without a toolbar, says so on the command line.
void ShowCompareToolbar(bool visible);
