// The module's entry point: the host's application messages, with the service name and the silent LISP
// function; the commands come with the application object.
#include <string>
#include <vector>

#include "platform/application.h"
#include "platform/documents.h"
#include "platform/editor.h"
#include "platform/lisp.h"
#include "shell/exports.h"

namespace {

constexpr const char* kServiceName = "VkAcadCompareDwg";

struct LispFunctionEntry {
  const char* name;
  int code;
};
// Codes as the function table numbers them; lsp_CompareFile (code 0) comes with the interactive run.
constexpr LispFunctionEntry kLispFunctions[] = {{"lsp_CompareFiles_Silent", 1}};

std::string stringArgument(const std::vector<platform::LispValue>& args, std::size_t index) {
  return index < args.size() && args[index].restype == platform::kRtStr ? args[index].text : std::string();
}

int compareFilesSilent() {
  const std::vector<platform::LispValue>* args = platform::getArgs();
  if (!args) return platform::RTINPUTTRUNCATED;
  platform::Document* document = platform::curDocument();
  const bool locked = document && platform::lockDocument(document) == platform::ErrorStatus::eOk;
  const std::string source = stringArgument(*args, 0), destination = stringArgument(*args, 1);
  const int result = I_VkCompareFiles_Silent(source.c_str(), destination.c_str(), nullptr, nullptr, nullptr, nullptr,
                                             nullptr, nullptr);
  if (locked) platform::unlockDocument(document);
  platform::retInt(result);
  return platform::RTNORM;
}

int defineFunctions() {
  for (const LispFunctionEntry& f : kLispFunctions)
    if (platform::defun(f.name, f.code) != platform::RTNORM) return platform::RTERROR;
  return platform::RTNORM;
}

int undefineFunctions() {
  for (const LispFunctionEntry& f : kLispFunctions)
    if (platform::undef(f.name, f.code) != platform::RTNORM) return platform::RTERROR;
  return platform::RTNORM;
}

int invokeFunction() {
  switch (platform::getFunCode()) {
    case 1: return compareFilesSilent();
    default:
      platform::fail("Received nonexistent function code.");
      return platform::RTERROR;
  }
}

}  // namespace

extern "C" int acrxEntryPoint(int message, void*) {
  switch (message) {
    case platform::kInitAppMsg:
      platform::registerService(kServiceName);
      return platform::kRetOK;
    case platform::kUnloadAppMsg: {
      if (auto* services = static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary")))
        services->remove(kServiceName);
      return platform::kRetOK;
    }
    case platform::kLoadDwgMsg: return defineFunctions();
    case platform::kUnloadDwgMsg: return undefineFunctions();
    case platform::kInvkSubrMsg: return invokeFunction();
    default: return platform::kRetOK;
  }
}
