// The editor reactor: keeps the list of drawings the comparison opened in order when one of them is
// closed or the host quits, and takes back the comparison's own changes to that drawing's DBMOD.
#pragma once

#include <string>
#include <string_view>

#include "platform/editor.h"

class CVkAcadReactor : public platform::EditorReactor {
 public:
  // With autoAttach the reactor attaches to the editor now and detaches when destroyed; the flag is
  // cleared when there is no editor.
  explicit CVkAcadReactor(bool autoAttach);
  ~CVkAcadReactor() override;
  CVkAcadReactor(const CVkAcadReactor&) = delete;
  CVkAcadReactor& operator=(const CVkAcadReactor&) = delete;

  void commandWillStart(std::string_view globalName) override;

  // Detaches first, then adds itself to the editor unless it is attached.
  virtual void Attach();
  virtual void Detach();
  virtual platform::Editor* Subject() const { return editor_; }
  virtual bool IsAttached() const { return attached_; }

  const std::string& LastSetvar() const { return lastSetvar_; }

 private:
  bool autoAttach_;
  std::string lastSetvar_;
  platform::Editor* editor_ = nullptr;
  bool attached_ = false;
};

// The module's one reactor: made when the module file is loaded, destroyed (and so detached) when it is
// unloaded.
CVkAcadReactor& ModuleReactor();
