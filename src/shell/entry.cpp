// The module's entry point: the host's application messages go to the application object's slots.
#include <string>

#include "platform/application.h"
#include "platform/boundary.h"
#include "platform/editor.h"
#include "platform/host.h"
#include "shell/CVkAcadCompareDwgApp.h"
#include "shell/exports.h"

extern "C" int acrxEntryPoint(int message, void* appId) {
  // What a handler throws ends here: the host hears a refusal (a failed call for a LISP function), the
  // command line the reason.
  const int failure =
      message == platform::kInvkSubrMsg ? static_cast<int>(platform::RTERROR) : static_cast<int>(platform::kRetError);
  return RunGuarded(
      failure, [&] { return CVkAcadCompareDwgApp::instance().Dispatch(message, appId); },
      [&](const char* reason) {
        platform::printToCommandLine("\nVkAcadCompareDwg: message " + std::to_string(message) + ": " + reason + "\n");
      });
}
