// The C functions the module exports to other modules of the host's process.
#pragma once

#include "engine/ResultSink.h"

extern "C" {

// The entry point the host calls with its application messages (platform/application.h).
int acrxEntryPoint(int message, void* appId);

// Deliberately does nothing; kept for callers that expect the export.
int I_VkCompareCurFile();

// The interactive comparison of two drawing files (UTF-8 paths); the six points are accepted and not used.
// Returns -1 after printing "文件名不能为空" when both names are empty, else 0 after the run.
int I_VkCompareFile(const char* sourcePath, const char* destinationPath, double* point1, double* point2,
                    double* point3, double* point4, double* point5, double* point6);

// The silent comparison of two drawing files (UTF-8 paths). The six points (area corners and base points,
// three doubles each) are accepted and not used. Returns 1 after printing "文件名不能为空" when both names
// are empty; else 0 when differences were found (and logged), 1 otherwise. Nothing it meets is thrown out
// of it: a run that fails so ends as trouble, its reason (naming both files) on the command line and in
// VkLastSilentError.
int I_VkCompareFiles_Silent(const char* sourcePath, const char* destinationPath, double* point1, double* point2,
                            double* point3, double* point4, double* point5, double* point6);

// Shows the toolbar "Morvane图纸比较" when the value is 1 and hides it for any other value.
void I_VkVisbleTooBar(int& visible);

// For the command line of the headless host: how the last silent run ended (0 identical, 1 differences,
// 2 trouble, 3 nothing to compare), the reader's detailed error of that run ("" when none), the log it
// wrote ("" when none) and whether the log could be written; and the folder later logs go to.
int VkLastSilentOutcome();
const char* VkLastSilentError();
// The warnings of reading the last silent run's drawings: how many, and each by its index ("" past the end).
int VkLastSilentWarningCount();
const char* VkLastSilentWarning(int index);
const char* VkLastLogPath();
int VkLastLogWritten();
// Null or "" gives logs back to the module's own rule (beside its installation).
void VkSetLogFolder(const char* folder);
}

// I_VkCompareFiles_Silent with further outputs, for front ends linked with the module: each output is
// published at the end of the run, unless the run was cut short by a throw (then the state holds the reason).
int CompareFilesSilent(const char* sourcePath, const char* destinationPath, ResultSinks outputs = {});
