// LISP functions that modules define for the host's LISP interpreter.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/geometry.h"

namespace platform {

// Types of LISP values (result buffers), with the host's codes.
enum RestType : int {
  kRtReal = 5001,
  kRtPoint = 5002,
  kRtShort = 5003,
  kRtStr = 5005,
  kRt3dPoint = 5009,
  kRtLong = 5010,
  kRtVoid = 5014,  // a call that answers nothing shows nothing
  kRtNil = 5019,
  kRtT = 5021,
};

struct LispValue {
  int restype = kRtNil;
  double real = 0.0;
  long long integer = 0;
  Point3d point;
  std::string text;
};

// acedDefun: defines a LISP function of the current document; a call of it reaches the defining module as
// the invoke-function message (kInvkSubrMsg) with the code given here. RTNORM, or RTERROR for an empty
// name or when no document is open.
int defun(std::string_view name, int funCode);
// acedUndef: removes it again (name and code must match); RTNORM or RTERROR.
int undef(std::string_view name, int funCode);
// acedGetFunCode: the code of the function being invoked; RTERROR outside a call.
int getFunCode();
// acedGetArgs: the arguments of the function being invoked; null when it was called without any.
const std::vector<LispValue>* getArgs();
// acedRetStr, acedRetInt, acedRetReal, acedRetNil, acedRetT, acedRetVoid: the value the call answers
// (nil when none is given; acedRetVoid shows nothing). RTNORM, or RTERROR outside a call.
int retStr(std::string_view text);
int retInt(long long value);
int retReal(double value);
int retNil();
int retT();
int retVoid();

}  // namespace platform
