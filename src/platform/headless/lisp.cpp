// The headless host's LISP: functions that modules define per document, and typed calls of them.
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "platform/host.h"
#include "platform/text.h"

namespace headless {

namespace {

// Reads the call "(name arg ...)": literal strings, integers, reals, nil and T.
bool parseCall(std::string_view text, std::string& name, std::vector<platform::LispValue>& args, std::string& error) {
  std::size_t i = 0;
  const auto skipBlanks = [&] {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n')) ++i;
  };
  const auto atom = [&] {
    const std::size_t start = i;
    while (i < text.size() && text[i] != ' ' && text[i] != '\t' && text[i] != '\n' && text[i] != ')' &&
           text[i] != '(' && text[i] != '"')
      ++i;
    return std::string(text.substr(start, i - start));
  };
  skipBlanks();
  if (i >= text.size() || text[i] != '(') {
    error = "输入错误";
    return false;
  }
  ++i;
  skipBlanks();
  name = atom();
  if (name.empty()) {
    error = "错误的函数：" + std::string(text);
    return false;
  }
  for (;;) {
    skipBlanks();
    if (i >= text.size()) {
      error = "输入中缺少右括号";
      return false;
    }
    const char c = text[i];
    if (c == ')') {
      ++i;
      break;
    }
    platform::LispValue value;
    if (c == '"') {
      ++i;
      std::string s;
      while (i < text.size() && text[i] != '"') {
        char ch = text[i++];
        if (ch == '\\' && i < text.size()) {
          ch = text[i++];
          if (ch == 'n') ch = '\n';
          else if (ch == 't') ch = '\t';
        }
        s += ch;
      }
      if (i >= text.size()) {
        error = "字符串缺少结束引号";
        return false;
      }
      ++i;
      value.restype = platform::kRtStr;
      value.text = std::move(s);
    } else if (c == '(') {
      error = "只能以字面值作为参数：" + std::string(text);
      return false;
    } else {
      const std::string word = atom();
      char* end = nullptr;
      const long long integer = std::strtoll(word.c_str(), &end, 10);
      if (platform::equalsIgnoreCase(word, "nil")) {
        value.restype = platform::kRtNil;
      } else if (platform::equalsIgnoreCase(word, "T")) {
        value.restype = platform::kRtT;
      } else if (!word.empty() && *end == '\0') {
        value.restype = integer >= -32768 && integer <= 32767 ? platform::kRtShort : platform::kRtLong;
        value.integer = integer;
      } else {
        const double real = std::strtod(word.c_str(), &end);
        if (word.empty() || *end != '\0' || !std::isfinite(real)) {
          error = "错误的参数类型：" + word;
          return false;
        }
        value.restype = platform::kRtReal;
        value.real = real;
      }
    }
    args.push_back(std::move(value));
  }
  skipBlanks();
  if (i != text.size()) {
    error = "输入错误：" + std::string(text.substr(i));
    return false;
  }
  return true;
}

// The value (or the error) of a call goes on a line of its own, as the command line shows it.
void printLine(const std::string& text) {
  platform::printToCommandLine((Console::instance().atLineStart() ? "" : "\n") + text + "\n");
}

std::string show(const platform::LispValue& v) {
  switch (v.restype) {
    case platform::kRtStr: return "\"" + v.text + "\"";
    case platform::kRtShort:
    case platform::kRtLong: return std::to_string(v.integer);
    case platform::kRtReal: {
      char buffer[64];
      std::snprintf(buffer, sizeof buffer, "%.6g", v.real);
      return buffer;
    }
    case platform::kRtT: return "T";
    case platform::kRtVoid: return "";
    default: return "nil";
  }
}

}  // namespace

int HostSession::defun(std::string_view name, int code) {
  HeadlessDocument* const document = current();
  if (!document || name.empty()) return platform::RTERROR;
  document->lisp[platform::toUpperAscii(name)] = {std::string(name), code, acting_};
  return platform::RTNORM;
}

int HostSession::undef(std::string_view name, int code) {
  HeadlessDocument* const document = current();
  if (!document) return platform::RTERROR;
  auto it = document->lisp.find(platform::toUpperAscii(name));
  if (it == document->lisp.end() || it->second.code != code) return platform::RTERROR;
  document->lisp.erase(it);
  return platform::RTNORM;
}

int HostSession::setResult(platform::LispValue value) {
  if (!invoking_) return platform::RTERROR;
  result_ = std::move(value);
  return platform::RTNORM;
}

void HostSession::evaluateLisp(std::string_view expression) {
  std::string name, error;
  std::vector<platform::LispValue> args;
  if (!parseCall(expression, name, args, error)) {
    printLine("; 错误: " + error);
    return;
  }
  HeadlessDocument* const document = current();
  const LispFunction* found = nullptr;
  if (document) {
    const auto it = document->lisp.find(platform::toUpperAscii(name));
    if (it != document->lisp.end() && it->second.owner) found = &it->second;
  }
  if (!found) {
    printLine("; 错误: 无函数定义: " + platform::toUpperAscii(name));
    return;
  }
  const LispFunction function = *found;
  // A call inside a call (a function that evaluates) keeps the outer call's state.
  const bool outerInvoking = invoking_;
  const int outerCode = funCode_;
  std::vector<platform::LispValue> outerArgs = std::move(args_);
  platform::LispValue outerResult = std::move(result_);
  invoking_ = true;
  funCode_ = function.code;
  args_ = std::move(args);
  result_ = platform::LispValue{};
  const int answer = sendAppMessage(*function.owner, platform::kInvkSubrMsg);
  const platform::LispValue result = result_;
  invoking_ = outerInvoking;
  funCode_ = outerCode;
  args_ = std::move(outerArgs);
  result_ = std::move(outerResult);
  // A function fails with a negative result code (RTERROR, RTCAN, ...) or when its module refuses the call.
  if (answer < 0 || answer == platform::kRetError)
    printLine("; 错误: 函数 " + function.name + " 调用失败");
  else if (const std::string value = show(result); !value.empty())
    printLine(value);
}

}  // namespace headless

namespace platform {

using headless::HostSession;

int defun(std::string_view name, int funCode) { return HostSession::instance().defun(name, funCode); }
int undef(std::string_view name, int funCode) { return HostSession::instance().undef(name, funCode); }
int getFunCode() { return HostSession::instance().funCode(); }
const std::vector<LispValue>* getArgs() { return HostSession::instance().args(); }

int retStr(std::string_view text) {
  LispValue v;
  v.restype = kRtStr;
  v.text = std::string(text);
  return HostSession::instance().setResult(std::move(v));
}
int retInt(long long value) {
  LispValue v;
  v.restype = value >= -32768 && value <= 32767 ? kRtShort : kRtLong;
  v.integer = value;
  return HostSession::instance().setResult(std::move(v));
}
int retReal(double value) {
  LispValue v;
  v.restype = kRtReal;
  v.real = value;
  return HostSession::instance().setResult(std::move(v));
}
int retNil() { return HostSession::instance().setResult(LispValue{}); }
int retT() {
  LispValue v;
  v.restype = kRtT;
  return HostSession::instance().setResult(std::move(v));
}
int retVoid() {
  LispValue v;
  v.restype = kRtVoid;
  return HostSession::instance().setResult(std::move(v));
}

}  // namespace platform
