// The LISP functions: their table, their definition per drawing and their calls.
#include "shell/LispFunctions.h"

#include <string>
#include <vector>

#include "engine/CompareRun.h"
#include "platform/documents.h"
#include "platform/editor.h"
#include "platform/host.h"
#include "platform/lisp.h"
#include "shell/DocumentLock.h"
#include "shell/exports.h"

namespace {

enum LispCode : int { kCompareFile = 0, kCompareFilesSilent = 1 };

struct LispFunctionEntry {
  int code;
  const char* name;
};
constexpr LispFunctionEntry kLispFunctions[] = {{kCompareFile, "lsp_CompareFile"},
                                                {kCompareFilesSilent, "lsp_CompareFiles_Silent"}};

std::string stringArgument(const std::vector<platform::LispValue>& args, std::size_t index) {
  return index < args.size() && args[index].restype == platform::kRtStr ? args[index].text : std::string();
}

int compare(int code) {
  const std::vector<platform::LispValue>* args = platform::getArgs();
  if (!args) return platform::RTINPUTTRUNCATED;
  const std::string source = stringArgument(*args, 0), destination = stringArgument(*args, 1);
  // One empty name is passed on: the run asks for that file.
  if (source.empty() && destination.empty()) {
    platform::printToCommandLine("文件名不能为空");
    return 1;
  }
  if (code == kCompareFile) {
    RunInteractiveCompare(source, destination);
  } else {
    platform::retInt(I_VkCompareFiles_Silent(source.c_str(), destination.c_str(), nullptr, nullptr, nullptr, nullptr,
                                             nullptr, nullptr));
  }
  return platform::RTNORM;
}

}  // namespace

int DefineLispFunctions() {
  for (const LispFunctionEntry& f : kLispFunctions)
    if (platform::defun(f.name, f.code) != platform::RTNORM) return platform::RTERROR;
  return platform::RTNORM;
}

int UndefineLispFunctions() {
  for (const LispFunctionEntry& f : kLispFunctions)
    if (platform::undef(f.name, f.code) != platform::RTNORM) return platform::RTERROR;
  return platform::RTNORM;
}

int InvokeLispFunction() {
  const int code = platform::getFunCode();
  if (code != kCompareFile && code != kCompareFilesSilent) {
    platform::fail("Received nonexistent function code.");
    return platform::RTERROR;
  }
  CCurrentDocumentLock lock;
  return compare(code);
}
