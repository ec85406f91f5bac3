// The shared module's own translation unit; its code comes whole from the core and the headless host.
#include "shell/version.h"

extern "C" const char* VkAcadCompareDwgVersion() { return kProductVersion; }
