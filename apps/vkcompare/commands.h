// The subcommands of vkcompare.
#pragma once

#include <string>

namespace vkcompare {

// vkcompare info [--json] FILE: what a drawing holds, before comparing it.
int runInfo(int argc, char** argv);
// vkcompare shell [--module PATH] [--release N] [SOURCE DESTINATION]: the host's command line.
int runShell(int argc, char** argv);
// vkcompare comparers: which comparer class each entity class gets.
int runComparers();

// What a comparison writes besides what the run prints and logs.
struct Outputs {
  std::string logFolder;  // "" means the current folder
  std::string jsonPath;   // "" none, "-" standard output
  bool list = false;      // the records on standard output, one a line
  std::string htmlPath;   // "" none: the HTML report
  unsigned jobs = 0;      // folders: the most pairs compared at once; 0 for as many as there are cores
};

// vkcompare SOURCE DESTINATION: the silent comparison.
int runCompare(const std::string& source, const std::string& destination, const Outputs& outputs);
// vkcompare DIR_A DIR_B: the drawings of two folders paired by relative path, compared in child processes.
int runFolders(const std::string& sourceFolder, const std::string& destinationFolder, const Outputs& outputs);
// vkcompare git-diff PATH OLD-FILE OLD-HEX OLD-MODE NEW-FILE NEW-HEX NEW-MODE: git's external diff driver.
int runGitDiff(int argc, char** argv);

// The folder the program runs in.
std::string currentFolder();

}  // namespace vkcompare
