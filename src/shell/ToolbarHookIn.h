// Where the shell meets the module's toolbar "Morvane图纸比较": made at load, removed at unload, shown and
// hidden by Showcc, Hidecc and I_VkVisbleTooBar.
#pragma once

#include <string>

inline constexpr const char* kToolbarName = "Morvane图纸比较";

// Makes the toolbar, its bitmaps found below the module folder. There is no toolbar in this build yet:
// nothing is made.
void CreateCompareToolbar(const std::string& moduleFolder);
void RemoveCompareToolbar();
// Shows or hides it; without a toolbar, says so on the command line.
void ShowCompareToolbar(bool visible);
