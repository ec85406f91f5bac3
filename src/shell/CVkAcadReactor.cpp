// The editor reactor and the module's instance of it.
#include "shell/CVkAcadReactor.h"

#include <algorithm>

#include "engine/ComparisonState.h"
#include "platform/application.h"
#include "platform/documents.h"

namespace {

platform::Editor* findEditor() {
  platform::RxObject* found = platform::sysRegistry().at("AcEditor");
  return found && found->isA() == "AcEditor" ? static_cast<platform::Editor*>(found) : nullptr;
}

// The comparison opened this drawing: it leaves the list, and its DBMOD goes back to what it was before
// the comparison's own changes.
void forgetOpenedDrawing() {
  platform::Document* document = platform::curDocument();
  if (!document) return;
  auto& opened = CComparisonState::instance().openedDrawings;
  const auto it = std::ranges::find(opened, document->fileName());
  if (it == opened.end()) return;
  opened.erase(it);
  document->popDbmod();
}

}  // namespace

CVkAcadReactor::CVkAcadReactor(bool autoAttach) : autoAttach_(autoAttach) {
  if (!autoAttach_) return;
  editor_ = findEditor();
  if (!editor_) {
    autoAttach_ = false;
    return;
  }
  Attach();
}

CVkAcadReactor::~CVkAcadReactor() {
  if (autoAttach_) Detach();
}

void CVkAcadReactor::Attach() {
  Detach();
  if (!editor_) editor_ = findEditor();
  if (editor_ && !attached_) attached_ = editor_->addReactor(this);
}

void CVkAcadReactor::Detach() {
  if (!attached_) return;
  if (editor_) editor_->removeReactor(this);
  attached_ = false;
}

void CVkAcadReactor::commandWillStart(std::string_view globalName) {
  if (globalName == "SETVAR") {
    lastSetvar_ = globalName;
  } else if (globalName == "CLOSE" || globalName == "QUIT") {
    // QUIT too takes the current drawing only; the other drawings stay in the list.
    forgetOpenedDrawing();
  }
}

namespace {
// Constructed when the module file is loaded, before any application message reaches the module.
CVkAcadReactor moduleReactor(true);
}  // namespace

CVkAcadReactor& ModuleReactor() { return moduleReactor; }
