// The headless host's accessor tables answer each accessor with the kind it is declared with: a comparer
// asking real() of an accessor implemented as an integer would silently read 0.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

#include "platform/headless/accessor_table.h"

using platform::AccessorKind;

TEST(AccessorTables, EveryImplementationServesItsDeclaredKind) {
  const std::span<const headless::AccessorImpl> families[] = {headless::commonAccessors(), headless::curveAccessors(),
                                                              headless::textAccessors(), headless::blockAccessors()};
  std::size_t checked = 0;
  for (auto family : families)
    for (const headless::AccessorImpl& impl : family) {
      const char* name = platform::accessorName(impl.accessor);
      const bool served[] = {impl.real != nullptr,   impl.integer != nullptr, impl.point != nullptr,
                             impl.vector != nullptr, impl.text != nullptr,    impl.points != nullptr,
                             impl.reals != nullptr,  impl.texts != nullptr};
      const auto kind = static_cast<std::size_t>(platform::accessorKind(impl.accessor));
      EXPECT_TRUE(served[kind]) << name << " is not implemented as the kind it is declared with";
      EXPECT_EQ(std::count(std::begin(served), std::end(served), true), 1) << name;
      ++checked;
    }
  EXPECT_GT(checked, 100u);
}
