// The DWG bit reader on hand-made bit sequences: every value type, relative handles, reads past the end,
// the string stream's location and the checksums.
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "platform/headless/dwg_bits.h"

using namespace headless;

namespace {

// Bits written as text ("01 00000011 ..."; spaces ignored), packed most significant bit first and padded
// with zeros to whole bytes.
class Bits {
 public:
  Bits& operator<<(std::string_view text) {
    for (char c : text)
      if (c == '0' || c == '1') push(c == '1');
    return *this;
  }
  Bits& byte(std::uint8_t value) {
    for (int i = 7; i >= 0; --i) push((value >> i) & 1);
    return *this;
  }
  Bits& bytes(std::uint64_t value, int count) {  // little-endian
    for (int i = 0; i < count; ++i) byte(static_cast<std::uint8_t>(value >> (8 * i)));
    return *this;
  }
  const std::vector<std::uint8_t>& data() const { return data_; }
  DwgBitReader reader(DwgVersion version = DwgVersion::R2000) const { return DwgBitReader(data_, version); }

 private:
  void push(bool bit) {
    if (count_ % 8 == 0) data_.push_back(0);
    if (bit) data_.back() |= static_cast<std::uint8_t>(0x80 >> (count_ % 8));
    ++count_;
  }
  std::vector<std::uint8_t> data_;
  std::size_t count_ = 0;
};

}  // namespace

TEST(DwgBitReader, BitShortsLongsAndDoublesUseTheirTwoBitCodes) {
  Bits b;
  // The five shorts 257, 0, 256, 15, 0 packed as the format's own example shows them.
  b << "00 00000001 00000001 10 11 01 00001111 10";
  b << "00";
  b.bytes(0xFFFFFFFF, 4);  // BL -1 as a full long
  b << "01 11111111 10";   // BL 255, BL 0
  b << "01 10 00";
  b.bytes(std::bit_cast<std::uint64_t>(-2.5), 8);  // BD 1.0, 0.0, -2.5
  DwgBitReader r = b.reader();
  EXPECT_EQ(r.readBitShort(), 257);
  EXPECT_EQ(r.readBitShort(), 0);
  EXPECT_EQ(r.readBitShort(), 256);
  EXPECT_EQ(r.readBitShort(), 15);
  EXPECT_EQ(r.readBitShort(), 0);
  EXPECT_EQ(r.readBitLong(), -1);
  EXPECT_EQ(r.readBitLong(), 255);
  EXPECT_EQ(r.readBitLong(), 0);
  EXPECT_EQ(r.readBitDouble(), 1.0);
  EXPECT_EQ(r.readBitDouble(), 0.0);
  EXPECT_EQ(r.readBitDouble(), -2.5);
  EXPECT_FALSE(r.failed());
}

TEST(DwgBitReader, CodesTheFormatNeverUsesFailTheRead) {
  Bits code3;
  code3 << "11 000000";
  DwgBitReader longCode = code3.reader();
  EXPECT_EQ(longCode.readBitLong(), 0);
  EXPECT_TRUE(longCode.failed());
  DwgBitReader doubleCode = code3.reader();
  EXPECT_EQ(doubleCode.readBitDouble(), 0.0);
  EXPECT_TRUE(doubleCode.failed());
}

TEST(DwgBitReader, SmallCodesAndRawValuesOffByteBoundaries) {
  Bits b;
  b << "1 10 110 0 111";  // B, BB, 3B 6, 3B 0, 3B 7
  b << "010";              // BLL of 2 bytes: the count is three bits
  b.bytes(0x1234, 2);
  b.byte(0xAB).bytes(0xBEEF, 2).bytes(0x80000000u, 4).bytes(std::bit_cast<std::uint64_t>(3.25), 8);
  DwgBitReader r = b.reader();
  EXPECT_TRUE(r.readBit());
  EXPECT_EQ(r.readBitPair(), 2);
  EXPECT_EQ(r.readBitTriplet(), 6);
  EXPECT_EQ(r.readBitTriplet(), 0);
  EXPECT_EQ(r.readBitTriplet(), 7);
  EXPECT_EQ(r.readBitLongLong(), 0x1234u);
  EXPECT_EQ(r.readRawChar(), 0xAB);
  EXPECT_EQ(r.readRawShort(), static_cast<std::int16_t>(0xBEEF));
  EXPECT_EQ(r.readRawLong(), std::int32_t(-2147483647 - 1));
  EXPECT_EQ(r.readRawDouble(), 3.25);
  EXPECT_FALSE(r.failed());
}

TEST(DwgBitReader, DoublesWithDefaultPatchTheDefaultsBytes) {
  const double def = 10.0;
  const auto defBits = std::bit_cast<std::uint64_t>(def);
  Bits b;
  b << "00";                   // the default itself
  b << "01";
  b.bytes(0x11223344, 4);      // low four bytes replaced
  b << "10";
  b.bytes(0x5566, 2).bytes(0x778899AA, 4);  // bytes 4-5, then 0-3
  b << "11";
  b.bytes(std::bit_cast<std::uint64_t>(-1.5), 8);
  DwgBitReader r = b.reader();
  EXPECT_EQ(r.readDoubleWithDefault(def), def);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(r.readDoubleWithDefault(def)), (defBits & 0xFFFFFFFF00000000ull) | 0x11223344);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(r.readDoubleWithDefault(def)),
            (defBits & 0xFFFF000000000000ull) | 0x5566778899AAull);
  EXPECT_EQ(r.readDoubleWithDefault(def), -1.5);
  EXPECT_FALSE(r.failed());
}

TEST(DwgBitReader, ModularCharsAndShortsAsTheFormatDescribesThem) {
  Bits b;
  b.byte(0x82).byte(0x24);                          // 4610
  b.byte(0xE9).byte(0x97).byte(0xE6).byte(0x35);   // 112823273
  b.byte(0x85).byte(0x4B);                          // -1413: the last byte's 0x40 bit is the sign
  b.byte(0x85).byte(0x4B);                          // 9605 when read unsigned
  b.bytes(0xF431, 2).bytes(0x008D, 2);              // MS 4650033
  DwgBitReader r = b.reader();
  EXPECT_EQ(r.readModularChar(), 4610);
  EXPECT_EQ(r.readModularChar(), 112823273);
  EXPECT_EQ(r.readModularChar(), -1413);
  EXPECT_EQ(r.readUnsignedModularChar(), 9605u);
  EXPECT_EQ(r.readModularShort(), 4650033u);
  EXPECT_FALSE(r.failed());

  // Eleven continuation bytes hold more than 64 bits: damaged, not wrapped around.
  Bits tooLong;
  for (int i = 0; i < 11; ++i) tooLong.byte(0xFF);
  tooLong.byte(0x01);
  DwgBitReader l = tooLong.reader();
  EXPECT_EQ(l.readUnsignedModularChar(), 0u);
  EXPECT_TRUE(l.failed());
}

TEST(DwgBitReader, HandlesResolveRelativeCodesAgainstTheReference) {
  Bits b;
  b.byte(0x52).byte(0x05).byte(0xE7);  // 5.2.05E7: hard pointer to 5E7
  b.byte(0x60);                        // 6.0: reference + 1
  b.byte(0x80);                        // 8.0: reference - 1
  b.byte(0xA1).byte(0x10);             // A.1.10: reference + 0x10
  b.byte(0xC1).byte(0x10);             // C.1.10: reference - 0x10
  b.byte(0x40);                        // 4.0: the null handle
  DwgBitReader r = b.reader();
  const DwgHandleRef hard = r.readHandle(0x100);
  EXPECT_EQ(hard.code, 5);
  EXPECT_EQ(hard.handle, 0x5E7u);
  EXPECT_EQ(r.readHandle(0x100).handle, 0x101u);
  EXPECT_EQ(r.readHandle(0x100).handle, 0xFFu);
  EXPECT_EQ(r.readHandle(0x100).handle, 0x110u);
  const DwgHandleRef back = r.readHandle(0x100);
  EXPECT_EQ(back.code, 0xC);
  EXPECT_EQ(back.handle, 0xF0u);
  EXPECT_EQ(r.readHandle(0x100).handle, 0u);
  EXPECT_FALSE(r.failed());

  Bits nineBytes;
  nineBytes.byte(0x59);  // nine handle bytes do not fit 64 bits
  DwgBitReader tooLong = nineBytes.reader();
  tooLong.readHandle();
  EXPECT_TRUE(tooLong.failed());
}

TEST(DwgBitReader, TextsReuseTheCallersStringAndStayInBounds) {
  Bits b;
  b << "1";  // off the byte boundary on purpose
  b << "01";
  b.byte(3) << "";
  for (char c : std::string("abc")) b.byte(static_cast<std::uint8_t>(c));
  b << "01";
  b.byte(2).bytes(0x4E2D, 2).bytes(0x0041, 2);  // TU: U+4E2D, 'A'
  b << "01";
  b.byte(200);  // a text of 200 bytes where a few bits are left
  DwgBitReader r = b.reader();
  r.readBit();
  std::string text = "previous content";
  r.readText(text);
  EXPECT_EQ(text, "abc");
  std::u16string wide;
  r.readUnicodeText(wide);
  EXPECT_EQ(wide, u"\u4E2DA");
  EXPECT_FALSE(r.failed());
  r.readText(text);
  EXPECT_TRUE(text.empty());
  EXPECT_TRUE(r.failed());
}

TEST(DwgBitReader, VersionDependentTypes) {
  // BE and BT: one bit stands for the usual value from R2000 on; R13-R14 always store them.
  Bits shortcut;
  shortcut << "1 1";
  DwgBitReader r2000 = shortcut.reader(DwgVersion::R2000);
  const DwgPoint3 e = r2000.readExtrusion();
  EXPECT_EQ(e.z, 1.0);
  EXPECT_EQ(r2000.readThickness(), 0.0);
  Bits full;
  full << "10 10 01 01";  // 3BD (0,0,1) and BD 1.0
  DwgBitReader r14 = full.reader(DwgVersion::R14);
  EXPECT_EQ(r14.readExtrusion().z, 1.0);
  EXPECT_EQ(r14.readThickness(), 1.0);
  EXPECT_FALSE(r14.failed());

  // OT: R2010 adds a bit pair and one or two bytes; before, it is a bit short.
  Bits type;
  type << "00";
  type.byte(0x13);
  type << "01";
  type.byte(0x02);
  type << "10";
  type.bytes(0x0301, 2);
  DwgBitReader r2010 = type.reader(DwgVersion::R2010);
  EXPECT_EQ(r2010.readObjectType(), 0x13);
  EXPECT_EQ(r2010.readObjectType(), 0x1F2);
  EXPECT_EQ(r2010.readObjectType(), 0x301);
  Bits bitShort;
  bitShort << "01 00010011";
  DwgBitReader r2007 = bitShort.reader(DwgVersion::R2007);
  EXPECT_EQ(r2007.readObjectType(), 0x13);

  // CMC gains an RGB value and name flags in R2004; ENC carries its extras by flags.
  Bits color;
  color << "01";
  color.byte(7);
  color << "00";
  color.bytes(0xC2FF8000u, 4);
  color.byte(3);
  color << "00";
  color.bytes(0xA005, 2);  // ENC: RGB, then transparency
  color << "00";
  color.bytes(0xC2112233u, 4);
  color << "00";
  color.bytes(0x020000FFu, 4);
  DwgBitReader r2004 = color.reader(DwgVersion::R2004);
  const DwgColor cmc = r2004.readColor();
  EXPECT_EQ(cmc.index, 7);
  EXPECT_EQ(cmc.rgb, 0xC2FF8000u);
  EXPECT_TRUE(cmc.hasName());
  EXPECT_TRUE(cmc.hasBookName());
  const DwgEntityColor enc = r2004.readEntityColor();
  EXPECT_EQ(enc.index, 5);
  EXPECT_TRUE(enc.hasRgb);
  EXPECT_FALSE(enc.hasColorReference);
  EXPECT_EQ(enc.rgb, 0xC2112233u);
  EXPECT_EQ(enc.transparency, 0x020000FFu);
  EXPECT_FALSE(r2004.failed());
  Bits index;
  index << "01 00000111";
  DwgBitReader old = index.reader(DwgVersion::R2000);
  EXPECT_EQ(old.readEntityColor().index, 7);
  EXPECT_FALSE(old.failed());
}

TEST(DwgBitReader, PointsAndDefaultsCombine) {
  Bits b;
  b.bytes(std::bit_cast<std::uint64_t>(1.5), 8).bytes(std::bit_cast<std::uint64_t>(-2.0), 8);  // 2RD
  b << "10 01 00";
  b.bytes(std::bit_cast<std::uint64_t>(7.0), 8);  // 3BD (0, 1, 7)
  b << "00 00 00";                               // 3DD equal to its defaults
  DwgBitReader r = b.reader();
  const DwgPoint2 p = r.readRaw2Doubles();
  EXPECT_EQ(p.x, 1.5);
  EXPECT_EQ(p.y, -2.0);
  const DwgPoint3 q = r.read3BitDoubles();
  EXPECT_EQ(q.y, 1.0);
  EXPECT_EQ(q.z, 7.0);
  const DwgPoint3 d = r.read3DoublesWithDefault({4, 5, 6});
  EXPECT_EQ(d.x, 4.0);
  EXPECT_EQ(d.z, 6.0);
  EXPECT_FALSE(r.failed());
}

// Raw values read whole words at a time away from the end and byte by byte near it: at every bit offset,
// up to the last bit, both give what the bits say.
TEST(DwgBitReader, RawValuesAgreeAtEveryOffsetUpToTheEnd) {
  std::vector<std::uint8_t> data(40);
  std::uint32_t state = 12345;
  for (std::uint8_t& b : data) b = static_cast<std::uint8_t>((state = state * 1103515245u + 12345u) >> 24);
  auto bitAt = [&](std::size_t i) { return (data[i / 8] >> (7 - i % 8)) & 1; };
  auto expectBytes = [&](std::size_t at, int count) {  // little-endian bytes starting at bit `at`
    std::uint64_t value = 0;
    for (int k = 0; k < count; ++k) {
      std::uint64_t byte = 0;
      for (int i = 0; i < 8; ++i) byte = byte << 1 | bitAt(at + 8 * k + i);
      value |= byte << (8 * k);
    }
    return value;
  };
  for (std::size_t at = 0; at + 8 <= data.size() * 8; ++at) {
    SCOPED_TRACE(testing::Message() << "bit " << at);
    const std::size_t room = data.size() * 8 - at;
    DwgBitReader r(data, DwgVersion::R2000);
    r.setBitPosition(at);
    if (room >= 64) {
      EXPECT_EQ(std::bit_cast<std::uint64_t>(r.readRawDouble()), expectBytes(at, 8));
    } else if (room >= 32) {
      EXPECT_EQ(static_cast<std::uint32_t>(r.readRawLong()), expectBytes(at, 4));
    } else if (room >= 16) {
      EXPECT_EQ(static_cast<std::uint16_t>(r.readRawShort()), expectBytes(at, 2));
    } else {
      EXPECT_EQ(r.readRawChar(), expectBytes(at, 1));
      EXPECT_EQ(r.readBitPair(), room >= 10 ? (bitAt(at + 8) << 1 | bitAt(at + 9)) : 0);
    }
    EXPECT_EQ(r.failed(), room < 10);
  }
}

TEST(DwgBitReader, ReadingPastTheEndFailsOnceAndForAll) {
  const std::vector<std::uint8_t> one = {0xFF};
  DwgBitReader r(one, DwgVersion::R2018);
  EXPECT_EQ(r.readRawShort(), 0);
  EXPECT_TRUE(r.failed());
  EXPECT_EQ(r.bitPosition(), r.bitSize()) << "a failed read moves to the end";
  // Everything after a failure is zero, even what would fit.
  EXPECT_FALSE(r.readBit());
  r.setBitPosition(0);
  EXPECT_EQ(r.readRawChar(), 0);
  EXPECT_TRUE(r.failed());

  DwgBitReader empty(std::span<const std::uint8_t>(), DwgVersion::R13);
  EXPECT_EQ(empty.readBitDouble(), 0.0);
  EXPECT_EQ(empty.readHandle(5).handle, 0u);
  EXPECT_TRUE(empty.failed());
  DwgBitReader beyond(one, DwgVersion::R13);
  beyond.setBitPosition(9);
  EXPECT_TRUE(beyond.failed());
}

TEST(DwgStringStream, IsFoundFromTheEndOfTheData) {
  // Data: 8 bits of something, a 24-bit text area, its size 24 as a raw short, then the flag bit.
  Bits b;
  b.byte(0xAA);
  b.byte('x').byte('y').byte('z');
  b.bytes(24, 2);
  b << "1";
  const std::size_t endBit = 8 + 24 + 16 + 1;
  DwgStringStream stream;
  ASSERT_TRUE(findStringStream(b.data(), 0, endBit, stream));
  EXPECT_TRUE(stream.present);
  EXPECT_EQ(stream.beginBit, 8u);
  EXPECT_EQ(stream.endBit, 32u);

  Bits absent;
  absent.byte(0xAA) << "0";
  ASSERT_TRUE(findStringStream(absent.data(), 0, 9, stream));
  EXPECT_FALSE(stream.present);

  // A size larger than the data before it is damage.
  Bits lying;
  lying.bytes(0x0400, 2) << "1";
  EXPECT_FALSE(findStringStream(lying.data(), 0, 17, stream));
  EXPECT_FALSE(findStringStream(lying.data(), 0, 1000, stream));
}

TEST(DwgChecksums, MatchTheirStandardCheckValues) {
  const std::string digits = "123456789";
  const std::span<const std::uint8_t> data(reinterpret_cast<const std::uint8_t*>(digits.data()), digits.size());
  EXPECT_EQ(dwgCrc8(0, data), 0xBB3D);
  EXPECT_EQ(dwgCrc32(0, data), 0xCBF43926u);
  // Checks accumulate: running over two halves equals running over the whole.
  EXPECT_EQ(dwgCrc8(dwgCrc8(0xC0C1, data.first(4)), data.subspan(4)), dwgCrc8(0xC0C1, data));
  EXPECT_EQ(dwgCrc32(dwgCrc32(0, data.first(4)), data.subspan(4)), dwgCrc32(0, data));
}
