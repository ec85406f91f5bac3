// Opening drawings in the host: the release check, opening a drawing as a document, automation calls.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Returns 1 when both files may be compared, 0 when one of them (or both: each gets its own message box)
// was written by a release newer than the host reads (platform::newestReadableRelease()).
int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath);
// The same against a given newest release number.
int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath, int newestRelease);

// Opens a drawing as a host document (it becomes the active one); returns success. Inside a document's
// command the opening runs in the application context.
bool OpenDrawingDocument(const std::string& path);

// ---- Automation
// The host's automation model on this platform is its own object model: CAutomationObject stands for
// IDispatch, a member is looked up by name (GetIDsOfNames) and invoked with its identifier and arguments
// (Invoke); result codes are HRESULT values.
using HResult = std::int32_t;
inline constexpr HResult kSOk = 0;
inline constexpr HResult kDispEUnknownName = static_cast<HResult>(0x80020006u);
inline constexpr HResult kDispEMemberNotFound = static_cast<HResult>(0x80020003u);
inline constexpr HResult kDispEBadParamCount = static_cast<HResult>(0x8002000Eu);
inline constexpr HResult kDispETypeMismatch = static_cast<HResult>(0x80020005u);
inline constexpr HResult kEFail = static_cast<HResult>(0x80004005u);

// Kinds of call, with the automation values.
enum AutomationFlags : int { kDispatchMethod = 1, kDispatchPropertyGet = 2, kDispatchPropertyPut = 4 };

class CAutomationObject;
// An automation value (VARIANT): nothing, a text, an integer or an object.
using AutomationValue = std::variant<std::monostate, std::string, long long, CAutomationObject*>;

// The arguments of a call (DISPPARAMS): in automation order, the last argument first; a property put
// names its one argument as the value put.
struct DispatchParams {
  std::vector<AutomationValue> args;
  bool namedPropertyPut = false;
};

class CAutomationObject {
 public:
  virtual ~CAutomationObject() = default;
  virtual HResult GetIDsOfNames(std::string_view name, long& dispId) = 0;
  virtual HResult Invoke(long dispId, int flags, const DispatchParams& params, AutomationValue* result) = 0;
};

// One automation call: member by name, arguments in their natural order. A missing object shows "NULL
// IDispatch passed to AutoWrap()" and ends the process at once with exit code 0. A failed look-up or call
// leaves its text in AutoWrapMessage() and returns the code.
HResult AutoWrap(int flags, AutomationValue* result, CAutomationObject* dispatch, std::string_view memberName,
                 std::vector<AutomationValue> arguments = {});
// The text of the last failed call.
const std::string& AutoWrapMessage();

// The host application's automation object: "Documents" (property) gives the documents collection with
// "Count" (property), "Item" (method, index from 0: the document's full name) and "Open" (method, a path).
// "MenuGroups" (property) gives the menu groups with their toolbars (ui/HostMenus.h).
CAutomationObject& HostApplication();
// Opens a drawing through automation: the application's "Documents", then its "Open" with the path.
bool OpenDrawingByAutomation(CAutomationObject& application, const std::string& path);
