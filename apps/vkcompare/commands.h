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
// vkcompare SOURCE DESTINATION: the silent comparison; logFolder "" means the current folder.
int runCompare(const std::string& source, const std::string& destination, const std::string& logFolder);

}  // namespace vkcompare
