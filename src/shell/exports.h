// The C functions the module exports to other modules of the host's process.
#pragma once

extern "C" {
// Deliberately does nothing; kept for callers that expect the export.
int I_VkCompareCurFile();
}
