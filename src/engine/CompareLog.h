// The comparison log: every difference record of a run written to an INI file beside the installation.
#pragma once

#include <string>

// The folder the log goes to. At first use it is the parent of the folder that holds the module file;
// a front end may set another.
std::string& LogFolder();
// That first folder: the parent of the folder that holds the module file.
std::string DefaultLogFolder();

// Writes the first count records of the comparison state under section "差异内容", keys "差异0", "差异1", ...,
// then prints the file's path on the command line. Returns the path; written tells whether the file
// could be written (the command line is not told either way).
std::string WriteCompareLog(const std::string& sourcePath, const std::string& destinationPath, int count,
                            bool* written = nullptr);
