// Modules of the host: the application messages of the entry point, the system registry and its services.
#pragma once

#include <memory>
#include <string_view>

namespace platform {

// The application messages the host sends to a module's entry point, with the host's codes.
enum AppMsgCode : int {
  kNullMsg = 0,
  kInitAppMsg = 1,
  kUnloadAppMsg = 2,
  kLoadDwgMsg = 3,
  kUnloadDwgMsg = 4,
  kInvkSubrMsg = 5,
  kCfgMsg = 6,
  kEndMsg = 7,
  kQuitMsg = 8,
  kSaveMsg = 9,
  kDependencyMsg = 10,
  kNoDependencyMsg = 11,
  kOleUnloadAppMsg = 12,
  kPreQuitMsg = 13,
  kInitDialogMsg = 14,
  kEndDialogMsg = 15,
  kSuspendMsg = 16,
};
// What an entry point answers: kRetOK, or kRetError to refuse (an init refused leaves the module unloaded).
enum AppRetCode : int { kRetOK = 0, kRetError = 3 };

// The entry point every module exports with C linkage as "acrxEntryPoint": the message and the module's
// application id (the host's handle of the module, the same for all messages to one module).
using EntryPoint = int (*)(int message, void* appId);

// An object of the host's run-time registry; isA() names its class ("AcEditor", "AcRxDictionary", ...).
class RxObject {
 public:
  virtual ~RxObject();
  virtual std::string_view isA() const = 0;
};

// A dictionary of named objects that owns what is put in it.
class RxDictionary : public RxObject {
 public:
  std::string_view isA() const override { return "AcRxDictionary"; }
  virtual RxObject* at(std::string_view name) const = 0;
  // Puts an object under a name; false (and the object is dropped) when the name is taken.
  virtual bool atPut(std::string_view name, std::unique_ptr<RxObject> object) = 0;
  // Takes the object out of the dictionary and hands it to the caller (null when absent).
  virtual std::unique_ptr<RxObject> remove(std::string_view name) = 0;
};

// acrxSysRegistry: the host's objects by name: "AcEditor" (the editor, see editor.h) and
// "ServiceDictionary" (the services modules register).
RxDictionary& sysRegistry();
// acrxRegisterService: puts a service object under the name in "ServiceDictionary" and returns it; the
// service already registered under that name when there is one.
RxObject* registerService(std::string_view serviceName);

}  // namespace platform
