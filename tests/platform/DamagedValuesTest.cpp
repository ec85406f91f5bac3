// Damaged values in drawings: numbers that do not fit, group codes out of range, texts not valid in their
// encoding, and very long texts. Each is dropped or replaced with a warning at its line, never misread.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "platform/database.h"
#include "support/TestSupport.h"

using namespace platform;
using vktest::dxfDrawing;
using vktest::modelEntities;
using vktest::readDxfText;
using vktest::TempDir;

namespace {

std::string allWarnings(const ReadReport& report) {
  std::string all;
  for (const auto& w : report.warnings) all += w + "\n";
  return all;
}

std::string textOf(const Entity& e, int code = 1) {
  for (const ResBuf& r : e.entGet())
    if (r.code == code) return r.text;
  return "<none>";
}

// The number of the first line that is exactly `text`, counting from 1.
int lineOf(const std::string& dxf, std::string_view text) {
  int line = 1;
  std::size_t start = 0;
  for (std::size_t nl; (nl = dxf.find('\n', start)) != std::string::npos; start = nl + 1, ++line)
    if (std::string_view(dxf).substr(start, nl - start) == text) return line;
  return -1;
}

}  // namespace

TEST(DamagedValues, NumbersThatDoNotFitAreDroppedWithTheirLine) {
  TempDir dir;
  // Each damaged value sits where a neighbour's value could leak into it: y after a sound y, a colour after
  // a sound colour.
  const std::string dxf = dxfDrawing(
      "0|LINE|8|0|10|5|20|5|11|1|21|1|"
      "0|LINE|8|0|10|5|20|1e400|11|1|21|1|"
      "0|LINE|8|0|10|nan|20|2|11|inf|21|-inf|"
      "0|LINE|8|0|62|3|10|0|20|1e-400|11|1|21|1|"
      "0|CIRCLE|8|0|62|99999|10|0|20|0|40|1|"
      "0|CIRCLE|8|0|62|1e300|10|0|20|0|40|2|"
      "0|CIRCLE|8|0|90|99999999999999999999|10|0|20|0|40|3");
  ReadReport report;
  auto db = readDxfText(dir, "numbers.dxf", dxf, &report);
  ASSERT_TRUE(db);
  const auto e = modelEntities(*db);
  ASSERT_EQ(e.size(), 7u) << "records with a damaged group are kept";
  EXPECT_EQ(e[1].point(Accessor::startPoint), Point3d(5, 0, 0)) << "the damaged y is missing, not the 5 before it";
  EXPECT_EQ(e[2].point(Accessor::startPoint), Point3d(0, 0, 0)) << "a point without its x is the default point";
  EXPECT_EQ(e[2].point(Accessor::endPoint), Point3d(0, 0, 0));
  EXPECT_EQ(e[3].point(Accessor::startPoint), Point3d(0, 0, 0)) << "a value too small to hold is zero, and sound";
  EXPECT_EQ(e[4].colorIndex(), 256) << "a colour that does not fit is dropped: ByLayer";
  EXPECT_EQ(e[5].colorIndex(), 256);
  const std::string all = allWarnings(report);
  EXPECT_NE(all.find("line " + std::to_string(lineOf(dxf, "1e400") - 1) + ": the real number '1e400' of group code 20 is out of range; the group is dropped"),
            std::string::npos) << all;
  EXPECT_NE(all.find("(7 times; the first is shown)"), std::string::npos) << all;
  EXPECT_EQ(all.find("1e-400"), std::string::npos) << all;
}

TEST(DamagedValues, NumbersBeyondADoubleAreToldTooSmallFromTooLargeByTheirDigits) {
  TempDir dir;
  // Written with leading zeros, fractions and exponents of every sign: the power of ten of the first
  // significant digit decides, not the exponent alone.
  const char* tiny[] = {"1e-400", "-1e-400", "123.5e-326", "0.0000012e-318", "-000.001E-322", "2e-324"};
  const char* huge[] = {"1e400", "-1e400", "0.001e312", "00012.5e308", "1000000e303", "-0.1E310"};
  std::string entities;
  for (const char* v : tiny) entities += std::string("0|POINT|8|0|10|") + v + "|20|7|";
  for (const char* v : huge) entities += std::string("0|POINT|8|0|10|3|20|") + v + "|";
  ReadReport report;
  auto db = readDxfText(dir, "extremes.dxf", dxfDrawing(entities.substr(0, entities.size() - 1)), &report);
  ASSERT_TRUE(db);
  const auto e = modelEntities(*db);
  ASSERT_EQ(e.size(), 12u);
  for (std::size_t i = 0; i < 6; ++i) {
    const Point3d p = e[i].point(Accessor::position);
    EXPECT_EQ(p, Point3d(0, 7, 0)) << tiny[i] << " reads as zero";
    EXPECT_EQ(std::signbit(p.x), tiny[i][0] == '-') << tiny[i] << " keeps its sign";
  }
  for (std::size_t i = 0; i < 6; ++i)
    EXPECT_EQ(e[6 + i].point(Accessor::position), Point3d(3, 0, 0)) << huge[i] << " is dropped";
  const std::string all = allWarnings(report);
  EXPECT_NE(all.find("the real number '1e400' of group code 20 is out of range; the group is dropped (6 times"),
            std::string::npos) << all;
}

TEST(DamagedValues, GroupCodesOutOfRangeAreDroppedWholeNotCutToSixteenBits) {
  TempDir dir;
  // 65546 cut to 16 bits would be 10, the x of the line's start.
  const std::string dxf = dxfDrawing("0|LINE|8|0|65546|7|10|1|20|2|1072|x|-6|y|11|3|21|4|123456789012|z|40|1");
  ReadReport report;
  auto db = readDxfText(dir, "codes.dxf", dxf, &report);
  ASSERT_TRUE(db);
  const auto e = modelEntities(*db);
  ASSERT_EQ(e.size(), 1u);
  EXPECT_EQ(e[0].point(Accessor::startPoint), Point3d(1, 2, 0));
  EXPECT_EQ(e[0].point(Accessor::endPoint), Point3d(3, 4, 0));
  for (const ResBuf& r : e[0].entGet()) EXPECT_TRUE(r.code >= -5 && r.code <= 1071) << r.code;
  const std::string all = allWarnings(report);
  EXPECT_NE(all.find("line " + std::to_string(lineOf(dxf, "65546")) +
                     ": group code 65546 is outside the valid range -5 to 1071; the group is dropped (4 times"),
            std::string::npos) << all;
}

TEST(DamagedValues, TextsNotValidInTheirEncodingBecomeReplacementCharacters) {
  TempDir dir;
  // R2007 and later store UTF-8: a stray GBK byte pair, an overlong slash, an encoded surrogate, and escapes
  // that name no character (a lone surrogate, NUL).
  const std::string dxf = dxfDrawing(
      "0|TEXT|8|0|1|a\xD6\xD0z|0|TEXT|8|0|1|\xC0\xAF|0|TEXT|8|0|1|\xED\xA0\x80|"
      "0|TEXT|8|0|1|\\U+D800x\\U+0000|0|TEXT|8|0|1|\xE4\xB8\xAD\\U+D83D\\U+DE00",
      "AC1021");
  ReadReport report;
  auto db = readDxfText(dir, "utf8.dxf", dxf, &report);
  ASSERT_TRUE(db);
  const auto e = modelEntities(*db);
  ASSERT_EQ(e.size(), 5u);
  const std::string r = "\xEF\xBF\xBD";
  EXPECT_EQ(textOf(e[0]), "a" + r + r + "z");
  EXPECT_EQ(textOf(e[1]), r + r);
  EXPECT_EQ(textOf(e[2]), r + r + r);
  EXPECT_EQ(textOf(e[3]), r + "x" + r);
  EXPECT_EQ(textOf(e[4]), "中\xF0\x9F\x98\x80") << "sound UTF-8 and a surrogate pair of escapes";
  const std::string all = allWarnings(report);
  EXPECT_NE(all.find(": a text holds bytes that are not valid UTF-8, or an escape that names no character; they read "
                     "as U+FFFD (4 times"),
            std::string::npos) << all;
  // Before R2007 the code page rules: a GBK lead byte without its trail byte.
  ReadReport gbkReport;
  auto gbk = readDxfText(dir, "gbk.dxf", dxfDrawing("0|TEXT|8|0|1|\xD6\xD0\xD6", "AC1015", "9|$DWGCODEPAGE|3|ANSI_936"),
                         &gbkReport);
  ASSERT_TRUE(gbk);
  EXPECT_EQ(textOf(modelEntities(*gbk)[0]), "中" + r);
  EXPECT_NE(allWarnings(gbkReport).find("not valid in code page ANSI_936"), std::string::npos) << allWarnings(gbkReport);
}

TEST(DamagedValues, AMultiMegabyteTextReadsWhole) {
  TempDir dir;
  // Eight megabytes in one value, with escapes and invalid bytes spread through it: read whole, at a cost
  // that grows with its length (a quadratic reader would not finish this test).
  std::string big;
  for (int i = 0; i < (1 << 20); ++i) big += i % 64 == 0 ? "\\U+4E2D\xFF" : "abcdefg";
  const std::string dxf = dxfDrawing("0|MTEXT|8|0|10|0|20|0|40|1|1|" + big, "AC1021");
  ReadReport report;
  auto db = readDxfText(dir, "big.dxf", dxf, &report);
  ASSERT_TRUE(db);
  const std::string text = textOf(modelEntities(*db)[0]);
  EXPECT_EQ(text.size(), big.size() - (1 << 14) * (7 + 1) + (1 << 14) * (3 + 3));
  EXPECT_EQ(report.warnings.size(), 1u) << allWarnings(report);
}
