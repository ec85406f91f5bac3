// The subcommands of vkcompare.
#pragma once

namespace vkcompare {

// vkcompare info [--json] FILE: what a drawing holds, before comparing it.
int runInfo(int argc, char** argv);

}  // namespace vkcompare
