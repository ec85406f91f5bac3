// Opening drawings in the host: the release check, opening documents, the automation call routine.
#include "ui/OpenDrawings.h"

#include <cstdio>
#include <cstdlib>

#include "platform/database.h"
#include "platform/documents.h"
#include "platform/files.h"
#include "platform/host.h"
#include "platform/text.h"
#include "ui/HostMenus.h"

namespace {

// Checks one file; false after the message when it is too new. A file that cannot be opened passes: it is
// not this check's to judge, and reading it next reports it as an invalid drawing with its name.
bool checkOne(const std::string& path, int newestRelease) {
  std::string head;
  if (!platform::readFileHead(path, 6, head)) return true;
  // The two bytes at offset 4, read as atoi reads them (leading blanks, a sign, leading digits).
  const std::string digits = head.size() > 4 ? head.substr(4, 2) : std::string();
  int release = std::atoi(digits.c_str());
  // Cuts the number to two digits, as for a buffer read without its terminator.
  while (release > 99) release = static_cast<int>(release * 0.1);
  if (release <= newestRelease) return true;
  platform::showMessageBox(platform::fmt("不能比较文件，因为它是使用更新版本的AutoCAD创建的。\n%s", path),
                           "Morvane比图工具", platform::kMbOk | platform::kMbIconInformation);
  return false;
}

}  // namespace

int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath, int newestRelease) {
  int result = 1;
  if (!checkOne(sourcePath, newestRelease)) result = 0;
  if (!checkOne(destinationPath, newestRelease)) result = 0;
  return result;
}

int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath) {
  return CheckDwgVersion(sourcePath, destinationPath, platform::newestReadableRelease());
}

// ---- Opening a drawing as a host document

bool OpenDrawingDocument(const std::string& path) {
  if (platform::isApplicationContext()) {
    if (platform::appContextOpenDocument(path) == platform::ErrorStatus::eOk) return true;
    // The fallback hands the file to the desktop shell. The headless host has none: no program is
    // associated with the file, which is what the shell would answer, so the open fails.
    return false;
  }
  platform::executeInApplicationContext([&] { platform::appContextOpenDocument(path); });
  return true;
}

// ---- Automation

namespace {

std::string& message() {
  static std::string text;
  return text;
}

// The documents collection of the host application.
class CDocumentsObject final : public CAutomationObject {
 public:
  HResult GetIDsOfNames(std::string_view name, long& dispId) override {
    static const char* const kNames[] = {"Count", "Item", "Open"};
    for (long i = 0; i < 3; ++i)
      if (platform::equalsIgnoreCase(name, kNames[i])) return dispId = i + 1, kSOk;
    return kDispEUnknownName;
  }
  HResult Invoke(long dispId, int flags, const DispatchParams& params, AutomationValue* result) override {
    const std::vector<platform::Document*> open = platform::documents();
    switch (dispId) {
      case 1:
        if (!(flags & kDispatchPropertyGet)) return kDispEMemberNotFound;
        if (result) *result = static_cast<long long>(open.size());
        return kSOk;
      case 2: {
        if (params.args.size() != 1) return kDispEBadParamCount;
        const long long* index = std::get_if<long long>(&params.args[0]);
        if (!index) return kDispETypeMismatch;
        if (*index < 0 || *index >= static_cast<long long>(open.size())) return kEFail;
        if (result) *result = open[static_cast<std::size_t>(*index)]->fileName();
        return kSOk;
      }
      case 3: {
        if (!(flags & kDispatchMethod)) return kDispEMemberNotFound;
        if (params.args.size() != 1) return kDispEBadParamCount;
        const std::string* path = std::get_if<std::string>(&params.args[0]);
        if (!path) return kDispETypeMismatch;
        if (!OpenDrawingDocument(*path)) return kEFail;
        if (result) *result = *path;
        return kSOk;
      }
      default:
        return kDispEMemberNotFound;
    }
  }
};

class CApplicationObject final : public CAutomationObject {
 public:
  HResult GetIDsOfNames(std::string_view name, long& dispId) override {
    if (platform::equalsIgnoreCase(name, "Documents")) dispId = 1;
    else if (platform::equalsIgnoreCase(name, "MenuGroups")) dispId = 2;
    else return kDispEUnknownName;
    return kSOk;
  }
  HResult Invoke(long dispId, int flags, const DispatchParams&, AutomationValue* result) override {
    if ((dispId != 1 && dispId != 2) || !(flags & kDispatchPropertyGet)) return kDispEMemberNotFound;
    if (result) *result = dispId == 1 ? static_cast<CAutomationObject*>(&documents_) : &HostMenuGroups();
    return kSOk;
  }

 private:
  CDocumentsObject documents_;
};

std::string hex8(long code) {
  char text[16];
  std::snprintf(text, sizeof text, "%08lx", static_cast<unsigned long>(static_cast<std::uint32_t>(code)));
  return text;
}

}  // namespace

const std::string& AutoWrapMessage() { return message(); }

HResult AutoWrap(int flags, AutomationValue* result, CAutomationObject* dispatch, std::string_view memberName,
                 std::vector<AutomationValue> arguments) {
  if (!dispatch) {
    platform::showMessageBox("NULL IDispatch passed to AutoWrap()", "Error", platform::kMbOk | platform::kMbIconError);
    std::_Exit(0);
  }
  long dispId = 0;
  HResult code = dispatch->GetIDsOfNames(memberName, dispId);
  if (code != kSOk) {
    message() = "IDispatch::GetIDsOfNames(\"" + std::string(memberName) + "\") failed w/err0x" + hex8(code);
    return code;
  }
  DispatchParams params;
  params.args.assign(arguments.rbegin(), arguments.rend());
  params.namedPropertyPut = (flags & kDispatchPropertyPut) != 0;
  code = dispatch->Invoke(dispId, flags, params, result);
  if (code != kSOk)
    message() = "IDispatch::Invoke(\"" + std::string(memberName) + "\"=" + hex8(dispId) + ") failed w/err 0x" + hex8(code);
  return code;
}

CAutomationObject& HostApplication() {
  static CApplicationObject application;
  return application;
}

bool OpenDrawingByAutomation(CAutomationObject& application, const std::string& path) {
  AutomationValue documents;
  if (AutoWrap(kDispatchPropertyGet, &documents, &application, "Documents") != kSOk) return false;
  CAutomationObject* const* collection = std::get_if<CAutomationObject*>(&documents);
  if (!collection || !*collection) return false;
  return AutoWrap(kDispatchMethod, nullptr, *collection, "Open", {path}) == kSOk;
}
