// The runs on documents open in the host. Until they are written they refuse on the command line, naming
// themselves, rather than pretend to compare.
#include "engine/CompareRun.h"
#include "platform/host.h"

namespace {

void refuse(const char* run) {
  platform::printToCommandLine(std::string("\n") + run + ": not available yet in this build\n");
}

}  // namespace

void RunInteractiveCompare(const std::string&, const std::string&) { refuse("the interactive comparison"); }
void RunOpenOnly() { refuse("opening drawings for comparison"); }
void RunCompareOpenPair() { refuse("comparing the open drawings"); }
