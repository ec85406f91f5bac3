// Running work on a second thread where one can be started, else when its result is asked for.
#pragma once

#include <future>
#include <system_error>

// Starts work on a thread of its own; when the system refuses a thread, the work runs when its result is
// asked for, so that a comparison still ends, only slower.
template <class Work>
auto startBeside(const Work& work) {
  try {
    return std::async(std::launch::async, work);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, work);
  }
}
