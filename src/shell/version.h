// The system's name and version, shown by the command line.
#pragma once

inline constexpr const char* kProductName = "VkAcadCompareDwg";
inline constexpr const char* kProductVersion = "0.1.0";
