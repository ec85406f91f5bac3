// The formatter must give printf's exact output; UTF-16 conversion must count code units as the host does.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "platform/text.h"

using platform::fmt;

namespace {

std::string printf2(double v) {
  char buf[512];
  std::snprintf(buf, sizeof buf, "%.2f", v);
  return buf;
}
std::string printf6(double v) {
  char buf[512];
  std::snprintf(buf, sizeof buf, "%f", v);
  return buf;
}

void expectLikePrintf(double v) {
  EXPECT_EQ(fmt("%.2f", v), printf2(v)) << "value " << v;
  EXPECT_EQ(fmt("%f", v), printf6(v)) << "value " << v;
}

}  // namespace

TEST(Format, RealsMatchPrintfOnEdgeValues) {
  const std::vector<double> values = {
      0.0, -0.0, 0.005, -0.005, 0.015, 0.025, 0.125, 0.375, -0.125, 1.005, 1.015, 2.675, 1.004, 1.006,
      0.0049999999999999, -0.001, -0.004999, 0.5, 1.5, 2.5, -2.5, 1e-300, -1e-300, DBL_MIN, DBL_TRUE_MIN,
      1e15 + 0.125, 123456789.125, 9.995, 99.995, 999999.9999995, 0.0000005, 0.0000015, 0.0000025,
      1e21, 1e22, -1e300, DBL_MAX, -DBL_MAX, 4503599627370495.5, 9007199254740993.0, 3.14159265358979,
      // Around the smallest value the exact integer path takes, and ties of small binary fractions.
      0x1p-60, -0x1p-60, 0x1.fffffffffffffp-61, 0x1.0000000000001p-60, 0x1p-40, 0x1.8p-7, 0x1.8p-21, 0.4999999999999999};
  for (double v : values) expectLikePrintf(v);
}

TEST(Format, RealsMatchPrintfOnRandomValues) {
  std::mt19937_64 rng(20261122);
  std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-12, 18);
  for (int i = 0; i < 20000; ++i) {
    const double v = mantissa(rng) * std::pow(10.0, exponent(rng));
    expectLikePrintf(v);
    // Values on a grid of halves and thousandths exercise ties and near-ties of the two-decimal rounding.
    expectLikePrintf(std::round(v * 1000.0) / 1000.0);
    expectLikePrintf(std::round(v * 200.0) / 200.0 + 0.005);
    // Every number of places the exact path takes, and one past it.
    const int places = i % 8;
    char pattern[8], buf[512];
    std::snprintf(pattern, sizeof pattern, "%%.%df", places);
    std::snprintf(buf, sizeof buf, pattern, v);
    EXPECT_EQ(platform::format(pattern, {v}), buf) << "value " << v << " with " << places << " places";
  }
}

TEST(Format, LongTextsAndManyNumbersComeOutWhole) {
  // Texts and numbers past the formatter's working buffer.
  const std::string longText(3000, 'x');
  EXPECT_EQ(fmt("<%s>%d", longText, 7), "<" + longText + ">7");
  std::string expected;
  std::string out;
  for (int i = 0; i < 200; ++i) {
    platform::fmtTo(out, "%.3f;", i * 1.25);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.3f;", i * 1.25);
    expected += buf;
  }
  EXPECT_EQ(out, expected);
  EXPECT_EQ(fmt("%.40f", 0.5), "0.500000000000000000000000000000") << "places are capped at thirty";
}

TEST(Format, NegativeZeroAndSpecialValuesAsPrintf) {
  EXPECT_EQ(fmt("%.2f", -0.0), "-0.00");
  EXPECT_EQ(fmt("%.2f", -0.001), "-0.00");
  EXPECT_EQ(fmt("%.2f", INFINITY), printf2(INFINITY));
  EXPECT_EQ(fmt("%.2f", -INFINITY), printf2(-INFINITY));
  EXPECT_EQ(fmt("%f", NAN), printf6(NAN));
}

TEST(Format, IntegersAndMixedPatterns) {
  for (long long v : {0LL, 1LL, -1LL, 2147483647LL, -2147483648LL, 9223372036854775807LL}) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%lld", v);
    EXPECT_EQ(fmt("%d", v), buf);
  }
  EXPECT_EQ(fmt("%s,%.2f,%.2f,%.2f,%.2f", "LINE", 0.0, 1.005, 10.0, -5.125), "LINE,0.00,1.00,10.00,-5.12");
  EXPECT_EQ(fmt("%s,%d,%s", ",40,1.5", 70, "3"), ",40,1.5,70,3");
  EXPECT_EQ(fmt("范围%d", 3), "范围3");
  EXPECT_EQ(fmt("%.2f, %.2f", 1.0, 2.0), "1.00, 2.00");
  // A doubled percent sign is a literal one; the argument it does not consume goes to the next conversion.
  EXPECT_EQ(fmt("%%.2f,%.2f", 1.5, 2.5), "%.2f,1.50");
  EXPECT_EQ(fmt("-----差异范围：Min = x:%f y:%f, Max = x:%f y:%f ------", -1.0, 2.5, 3.0, 4.0),
            "-----差异范围：Min = x:-1.000000 y:2.500000, Max = x:3.000000 y:4.000000 ------");
}

TEST(Utf16, ConvertsAndCountsCodeUnits) {
  const std::string s = "A中\U0001F600";
  const std::u16string u = platform::utf8ToUtf16(s);
  ASSERT_EQ(u.size(), 4u);  // one, one, and a surrogate pair
  EXPECT_EQ(u[0], u'A');
  EXPECT_EQ(u[1], u'中');
  EXPECT_EQ(u[2], 0xD83D);
  EXPECT_EQ(u[3], 0xDE00);
  EXPECT_EQ(platform::utf16ToUtf8(u), s);
  EXPECT_EQ(platform::utf8ToUtf16("\xFF" "a"), u"\uFFFDa");
  // Cutting never splits a character: a surrogate pair either fits whole or not at all.
  EXPECT_EQ(platform::truncateUtf16Units(s, 3), "A中");
  EXPECT_EQ(platform::truncateUtf16Units(s, 4), s);
}
