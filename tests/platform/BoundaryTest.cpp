// The boundary guard: values pass through, every kind of exception becomes the failure value and a reason.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "platform/boundary.h"

namespace {

TEST(RunGuarded, ValuesPassAndExceptionsBecomeFailureWithReason) {
  std::string said;
  const auto report = [&](const char* reason) { said = reason; };
  EXPECT_EQ(RunGuarded(2, [] { return 1; }, report), 1);
  EXPECT_EQ(said, "");

  EXPECT_EQ(RunGuarded(2, []() -> int { throw std::bad_alloc(); }, report), 2);
  EXPECT_EQ(said, "out of memory");
  EXPECT_EQ(RunGuarded(2, []() -> int { throw std::length_error("vector::reserve"); }, report), 2);
  EXPECT_EQ(said, "vector::reserve");
  EXPECT_EQ(RunGuarded(2, []() -> int { throw 42; }, report), 2);
  EXPECT_EQ(said, "an unknown exception");

  // A report that cannot be made does not take the failure value with it.
  EXPECT_EQ(RunGuarded(2, []() -> int { throw std::bad_alloc(); }, [](const char*) { throw std::bad_alloc(); }), 2);
}

}  // namespace
