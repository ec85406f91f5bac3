// The boundary guard: whatever a call at an edge of the module or a front end throws ends there, as a
// reason handed to a report and the edge's failure value.
#pragma once

#include <exception>
#include <new>

// The reason of the exception being handled: "out of memory" for std::bad_alloc, the text of any other
// std::exception. Valid while the exception is handled; only to be called from a catch block.
inline const char* CurrentExceptionReason() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return "out of memory";
  } catch (const std::exception& e) {
    return e.what();
  } catch (...) {
    return "an unknown exception";
  }
}

// Returns what body returns; when it throws, calls report(reason) and returns failure instead. A report
// that throws in turn (short of memory to say what happened) is given up on, never let out.
template <class Result, class Body, class Report>
Result RunGuarded(Result failure, Body&& body, Report&& report) noexcept {
  try {
    return body();
  } catch (...) {
    try {
      report(CurrentExceptionReason());
    } catch (...) {
    }
    return failure;
  }
}
