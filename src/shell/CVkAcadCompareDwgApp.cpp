// The application object: its load and unload sequences, the drawing messages that define the LISP
// functions, and the message hook that keeps the two compared views in step.
#include "shell/CVkAcadCompareDwgApp.h"

#include <array>
#include <memory>

#include "engine/ComparisonState.h"
#include "platform/application.h"
#include "platform/documents.h"
#include "platform/files.h"
#include "platform/views.h"
#include "results/ViewMatching.h"
#include "shell/CVkAcadReactor.h"
#include "shell/CommandTable.h"
#include "shell/LispFunctions.h"
#include "shell/ToolbarHookIn.h"

namespace {

constexpr const char* kServiceName = "VkAcadCompareDwg";

using Slot = int (CAcRxArxApp::*)(void*);
// Slot order: message code 1 first, ..., code 16, then the null message.
constexpr std::array<Slot, 17> kSlots = {
    &CAcRxArxApp::On_kInitAppMsg,    &CAcRxArxApp::On_kUnloadAppMsg,    &CAcRxArxApp::On_kLoadDwgMsg,
    &CAcRxArxApp::On_kUnloadDwgMsg,  &CAcRxArxApp::On_kInvkSubrMsg,     &CAcRxArxApp::On_kCfgMsg,
    &CAcRxArxApp::On_kEndMsg,        &CAcRxArxApp::On_kQuitMsg,         &CAcRxArxApp::On_kSaveMsg,
    &CAcRxArxApp::On_kDependencyMsg, &CAcRxArxApp::On_kNoDependencyMsg, &CAcRxArxApp::On_kOleUnloadAppMsg,
    &CAcRxArxApp::On_kPreQuitMsg,    &CAcRxArxApp::On_kInitDialogMsg,   &CAcRxArxApp::On_kEndDialogMsg,
    &CAcRxArxApp::On_kSuspendMsg,    &CAcRxArxApp::On_kNullMsg,
};

platform::WindowId viewOf(const std::unique_ptr<CDrawingRecord>& record) {
  return record && record->document ? platform::documentWindow(static_cast<platform::Document*>(record->document))
                                    : 0;
}

// HK: a wheel turn on a compared view ends as a middle-button release, so that the release that follows
// every zoom or pan reaches the view matching; a release on a compared view that moved, while the views
// are kept in step, zooms the other drawing to it. Every other message passes on untouched. (The host
// passes each message on to the next hook itself once this one returns.)
void HK(int code, const platform::HostMessage& message) {
  if (code < 0 || message.window == 0) return;
  if (message.message != platform::kWmMouseWheel && message.message != platform::kWmMButtonUp) return;
  const CComparisonState& state = CComparisonState::instance();
  if (message.window != viewOf(state.source) && message.window != viewOf(state.destination)) return;
  if (message.message == platform::kWmMouseWheel) {
    platform::postMessage(message.window, platform::kWmMButtonUp);
    return;
  }
  CViewMatching& matching = CViewMatching::instance();
  if (state.viewSync && matching.ViewChanged(message.window)) matching.MatchViews(message.window);
}

}  // namespace

// ---- the base class

int CAcRxArxApp::On_kInitAppMsg(void*) {
  RegisterCommandTable();
  return platform::kRetOK;
}
int CAcRxArxApp::On_kUnloadAppMsg(void*) {
  RemoveCommandTable();
  return platform::kRetOK;
}
int CAcRxArxApp::On_kLoadDwgMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kUnloadDwgMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kInvkSubrMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kCfgMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kEndMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kQuitMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kSaveMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kDependencyMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kNoDependencyMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kOleUnloadAppMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kPreQuitMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kInitDialogMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kEndDialogMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kSuspendMsg(void*) { return platform::kRetOK; }
int CAcRxArxApp::On_kNullMsg(void*) { return platform::kRetOK; }

int CAcRxArxApp::SlotOf(int message) {
  if (message == platform::kNullMsg) return static_cast<int>(kSlots.size()) - 1;
  if (message >= 1 && message < static_cast<int>(kSlots.size())) return message - 1;
  return -1;
}

int CAcRxArxApp::Dispatch(int message, void* appId) {
  const int slot = SlotOf(message);
  return slot < 0 ? 0 : (this->*kSlots[static_cast<std::size_t>(slot)])(appId);
}

// ---- the module

CVkAcadCompareDwgApp& CVkAcadCompareDwgApp::instance() {
  static CVkAcadCompareDwgApp app;
  return app;
}

std::string ModuleFolderOf(const std::string& modulePath) {
  const std::size_t cut = modulePath.find_last_of(platform::kPathSeparator);
  return cut == std::string::npos ? std::string() : modulePath.substr(0, cut + 1);
}

std::string UpperFolderOf(const std::string& moduleFolder) {
  std::string_view upper = moduleFolder;
  for (int level = 0; level < 2; ++level) {
    const std::size_t cut = upper.find_last_of(platform::kPathSeparator);
    upper = upper.substr(0, cut == std::string_view::npos ? 0 : cut);
  }
  return std::string(upper);
}

int CVkAcadCompareDwgApp::On_kInitAppMsg(void* appId) {
  CAcRxArxApp::On_kInitAppMsg(appId);
  moduleFolder_ = ModuleFolderOf(platform::moduleFilePath());
  upperFolder_ = UpperFolderOf(moduleFolder_);
  CreateCompareToolbar();
  // The host's class tree is built by the host itself: its classes are known from the drawings it reads.
  hook_ = platform::setMessageHook(HK);
  platform::registerService(kServiceName);
  // The reactor attached itself when the module file was loaded. A host that let go of what the module had
  // registered at an earlier unload, while the file stayed loaded, gets it back here.
  ModuleReactor().Attach();
  return platform::kRetOK;
}

int CVkAcadCompareDwgApp::On_kUnloadAppMsg(void* appId) {
  if (hook_) platform::unhookMessageHook(hook_);
  hook_ = 0;
  CAcRxArxApp::On_kUnloadAppMsg(appId);
  if (auto* services = static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary")))
    services->remove(kServiceName);  // the service object goes with its entry
  RemoveCompareToolbar();
  return platform::kRetOK;
}

int CVkAcadCompareDwgApp::On_kLoadDwgMsg(void* appId) {
  CAcRxArxApp::On_kLoadDwgMsg(appId);
  return DefineLispFunctions();
}

int CVkAcadCompareDwgApp::On_kUnloadDwgMsg(void* appId) {
  CAcRxArxApp::On_kUnloadDwgMsg(appId);
  return UndefineLispFunctions();
}

int CVkAcadCompareDwgApp::On_kInvkSubrMsg(void*) { return InvokeLispFunction(); }
