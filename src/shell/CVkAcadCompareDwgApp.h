// The module's application object: one handler per application message, in the host's slot order.
#pragma once

#include <string>

// What every module's application object does for the host (the host SDK's application class): its load
// registers the module's command table, its unload removes the command group again; every other message
// is answered "continue".
class CAcRxArxApp {
 public:
  virtual ~CAcRxArxApp() = default;

  // The slots, in the order the entry point dispatches to them: message code 1 to the first, 2 to the
  // second and so on; the null message (code 0) to the last.
  virtual int On_kInitAppMsg(void* appId);
  virtual int On_kUnloadAppMsg(void* appId);
  virtual int On_kLoadDwgMsg(void* appId);
  virtual int On_kUnloadDwgMsg(void* appId);
  virtual int On_kInvkSubrMsg(void* appId);
  virtual int On_kCfgMsg(void* appId);
  virtual int On_kEndMsg(void* appId);
  virtual int On_kQuitMsg(void* appId);
  virtual int On_kSaveMsg(void* appId);
  virtual int On_kDependencyMsg(void* appId);
  virtual int On_kNoDependencyMsg(void* appId);
  virtual int On_kOleUnloadAppMsg(void* appId);
  virtual int On_kPreQuitMsg(void* appId);
  virtual int On_kInitDialogMsg(void* appId);
  virtual int On_kEndDialogMsg(void* appId);
  virtual int On_kSuspendMsg(void* appId);
  virtual int On_kNullMsg(void* appId);

  // The slot a message code goes to (0 for the first), or -1 for a code the entry point answers with 0.
  static int SlotOf(int message);
  // Sends the message to its slot; a code without a slot answers 0.
  int Dispatch(int message, void* appId);
};

// The drawing-comparison module.
class CVkAcadCompareDwgApp : public CAcRxArxApp {
 public:
  static CVkAcadCompareDwgApp& instance();

  int On_kInitAppMsg(void* appId) override;
  int On_kUnloadAppMsg(void* appId) override;
  int On_kLoadDwgMsg(void* appId) override;
  int On_kUnloadDwgMsg(void* appId) override;
  int On_kInvkSubrMsg(void* appId) override;

  // The folder of the module file, with its closing separator, and the folder two levels up from the
  // module file (both found at load).
  const std::string& ModuleFolder() const { return moduleFolder_; }
  const std::string& UpperFolder() const { return upperFolder_; }
  // Whether the message hook is installed.
  bool HookInstalled() const { return hook_ != 0; }

 private:
  std::string moduleFolder_;
  std::string upperFolder_;
  unsigned long long hook_ = 0;
};

// The module folder and the folder two levels up, from the module file's full path: the path cut after
// its last separator, then the part before the last separator taken twice.
std::string ModuleFolderOf(const std::string& modulePath);
std::string UpperFolderOf(const std::string& moduleFolder);
