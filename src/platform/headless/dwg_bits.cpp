// Bit-level reading of DWG data: the packed value types and the checksums.
#include "platform/headless/dwg_bits.h"

#include <array>
#include <bit>
#include <cstring>

namespace headless {

namespace {

bool atLeast(DwgVersion version, DwgVersion release) { return version >= release; }

// Lookup tables of the two reflected CRCs, built at compile time from their polynomials.
template <typename Word, Word polynomial>
constexpr std::array<Word, 256> reflectedCrcTable() {
  std::array<Word, 256> table{};
  for (unsigned i = 0; i < 256; ++i) {
    Word value = static_cast<Word>(i);
    for (int bit = 0; bit < 8; ++bit) value = (value & 1) ? static_cast<Word>((value >> 1) ^ polynomial) : value >> 1;
    table[i] = value;
  }
  return table;
}
constexpr auto kCrc16Table = reflectedCrcTable<std::uint16_t, 0xA001>();
// The same CRC four bytes at a time ("slicing"): row k gives the effect of a byte followed by k zero bytes.
constexpr std::array<std::array<std::uint16_t, 256>, 4> crc16Slices() {
  std::array<std::array<std::uint16_t, 256>, 4> rows{};
  rows[0] = kCrc16Table;
  for (std::size_t k = 1; k < 4; ++k)
    for (unsigned i = 0; i < 256; ++i)
      rows[k][i] = static_cast<std::uint16_t>((rows[k - 1][i] >> 8) ^ kCrc16Table[rows[k - 1][i] & 0xFF]);
  return rows;
}
constexpr auto kCrc16Slices = crc16Slices();
constexpr auto kCrc32Table = reflectedCrcTable<std::uint32_t, 0xEDB88320u>();

}  // namespace

bool DwgBitReader::take(std::size_t bits) {
  if (failed_ || bits > bitSize() - bit_) {
    fail();
    return false;
  }
  return true;
}

void DwgBitReader::setBitPosition(std::size_t bit) {
  if (bit > bitSize()) {
    fail();
    return;
  }
  bit_ = bit;
}

void DwgBitReader::alignToByte() {
  const std::size_t aligned = (bit_ + 7) & ~std::size_t(7);
  bit_ = aligned <= bitSize() ? aligned : bitSize();
}

std::uint8_t DwgBitReader::readBitTriplet() {
  std::uint8_t value = 0;
  for (int i = 0; i < 3; ++i) {
    const bool bit = readBit();
    value = static_cast<std::uint8_t>((value << 1) | bit);
    if (!bit) break;
  }
  return value;
}

std::int16_t DwgBitReader::readRawShort() { return static_cast<std::int16_t>(readRawBytes(2)); }
std::int32_t DwgBitReader::readRawLong() { return static_cast<std::int32_t>(readRawBytes(4)); }
double DwgBitReader::readRawDouble() { return std::bit_cast<double>(readRawBytes(8)); }

std::int16_t DwgBitReader::readBitShort() {
  switch (readBitPair()) {
    case 0: return readRawShort();
    case 1: return readRawChar();
    case 2: return 0;
    default: return 256;
  }
}

std::int32_t DwgBitReader::readBitLong() {
  switch (readBitPair()) {
    case 0: return readRawLong();
    case 1: return readRawChar();
    case 2: return 0;
    default: fail(); return 0;
  }
}

// The byte count is three plain bits, not a bit triplet: REQUIREDVERSIONS, 0 in every R2013+ header
// variables section seen, takes three bits before the variables that follow it.
std::uint64_t DwgBitReader::readBitLongLong() {
  int count = 0;
  for (int i = 0; i < 3; ++i) count = count << 1 | (readBit() ? 1 : 0);
  return readRawBytes(count);
}

double DwgBitReader::readBitDouble() {
  switch (readBitPair()) {
    case 0: return readRawDouble();
    case 1: return 1.0;
    case 2: return 0.0;
    default: fail(); return 0.0;
  }
}

double DwgBitReader::readDoubleWithDefault(double defaultValue) {
  std::uint64_t bits = std::bit_cast<std::uint64_t>(defaultValue);
  switch (readBitPair()) {
    case 0: return defaultValue;
    case 1:  // the low four bytes are replaced
      bits = (bits & 0xFFFFFFFF00000000ull) | readRawBytes(4);
      break;
    case 2: {  // bytes 4 and 5 first, then the low four bytes
      const std::uint64_t middle = readRawBytes(2);
      const std::uint64_t low = readRawBytes(4);
      bits = (bits & 0xFFFF000000000000ull) | (middle << 32) | low;
      break;
    }
    default: return readRawDouble();
  }
  return failed_ ? 0.0 : std::bit_cast<double>(bits);
}

std::uint64_t DwgBitReader::readUnsignedModularChar() {
  std::uint64_t value = 0;
  for (int shift = 0; shift < 64; shift += 7) {
    const std::uint8_t byte = readRawChar();
    value |= std::uint64_t(byte & 0x7F) << shift;
    if (!(byte & 0x80)) return failed_ ? 0 : value;
  }
  fail();  // more groups than 64 bits hold
  return 0;
}

std::int64_t DwgBitReader::readModularChar() {
  std::uint64_t value = 0;
  for (int shift = 0; shift < 64; shift += 7) {
    const std::uint8_t byte = readRawChar();
    if (failed_) return 0;
    if (byte & 0x80) {
      value |= std::uint64_t(byte & 0x7F) << shift;
      continue;
    }
    value |= std::uint64_t(byte & 0x3F) << shift;
    // Negated in unsigned arithmetic: the conversion back is exact even for the most negative value.
    return static_cast<std::int64_t>((byte & 0x40) ? 0 - value : value);
  }
  fail();
  return 0;
}

std::uint32_t DwgBitReader::readModularShort() {
  std::uint64_t value = 0;
  for (int shift = 0; shift < 32; shift += 15) {
    const auto word = static_cast<std::uint16_t>(readRawBytes(2));
    value |= std::uint64_t(word & 0x7FFF) << shift;
    if (!(word & 0x8000)) {
      if (failed_ || value > 0xFFFFFFFFu) break;
      return static_cast<std::uint32_t>(value);
    }
  }
  fail();
  return 0;
}

DwgHandleRef DwgBitReader::readHandle(std::uint64_t referenceHandle) {
  const std::uint8_t first = readRawChar();
  DwgHandleRef ref;
  ref.code = first >> 4;
  const int length = first & 0x0F;
  if (length > 8) {
    fail();
    return {};
  }
  // The handle's bytes come most significant first.
  std::uint64_t value = 0;
  for (int i = 0; i < length; ++i) value = (value << 8) | readRawChar();
  if (failed_) return {};
  switch (ref.code) {
    case 0x6: ref.handle = referenceHandle + 1; break;
    case 0x8: ref.handle = referenceHandle - 1; break;
    case 0xA: ref.handle = referenceHandle + value; break;
    case 0xC: ref.handle = referenceHandle - value; break;
    default: ref.handle = value; break;
  }
  return ref;
}

void DwgBitReader::readText(std::string& out) {
  const auto length = static_cast<std::uint16_t>(readBitShort());
  out.clear();
  if (!take(std::size_t(length) * 8)) return;
  out.resize(length);
  if ((bit_ & 7) == 0) {
    if (length > 0) std::memcpy(out.data(), data_.data() + bit_ / 8, length);
    bit_ += std::size_t(length) * 8;
    return;
  }
  for (char& c : out) c = static_cast<char>(readRawChar());
}

void DwgBitReader::readUnicodeText(std::u16string& out) {
  const auto length = static_cast<std::uint16_t>(readBitShort());
  out.clear();
  if (!take(std::size_t(length) * 16)) return;
  out.resize(length);
  for (char16_t& c : out) c = static_cast<char16_t>(readRawBytes(2));
}

DwgColor DwgBitReader::readColor() {
  DwgColor color;
  color.index = readBitShort();
  if (atLeast(version_, DwgVersion::R2004)) {
    color.rgb = static_cast<std::uint32_t>(readBitLong());
    color.flags = readRawChar();
    // From R2004 on the index is left 0 and the colour's method rides in the top byte of the value: by
    // layer, by block, or an index in the low byte. A true colour (0xC2) keeps what index was written.
    if (color.index == 0) {
      switch (color.rgb >> 24) {
        case 0xC0: color.index = 256; break;
        case 0xC1: color.index = 0; break;
        case 0xC3: color.index = static_cast<std::int16_t>(color.rgb & 0xFF); break;
        default: break;
      }
    }
  }
  return color;
}

DwgEntityColor DwgBitReader::readEntityColor() {
  DwgEntityColor color;
  const auto number = static_cast<std::uint16_t>(readBitShort());
  if (!atLeast(version_, DwgVersion::R2004)) {
    color.index = static_cast<std::int16_t>(number);
    return color;
  }
  // The RGB value (none when the colour is a reference), then the transparency: an R2018 drawing's true
  // colours match its DXF twin's read in this order.
  color.index = static_cast<std::int16_t>(number & 0x1FF);
  color.hasRgb = (number & 0x8000) != 0;
  color.hasColorReference = (number & 0x4000) != 0;
  color.hasTransparency = (number & 0x2000) != 0;
  color.hasName = (number & 0x4100) == 0x4100;
  color.hasBookName = (number & 0x4200) == 0x4200;
  if (color.hasRgb && !color.hasColorReference) color.rgb = static_cast<std::uint32_t>(readBitLong());
  if (color.hasTransparency) color.transparency = static_cast<std::uint32_t>(readBitLong());
  return color;
}

DwgPoint3 DwgBitReader::readExtrusion() {
  if (atLeast(version_, DwgVersion::R2000) && readBit()) return {0, 0, 1};
  return read3BitDoubles();
}

double DwgBitReader::readThickness() {
  if (atLeast(version_, DwgVersion::R2000) && readBit()) return 0.0;
  return readBitDouble();
}

std::uint16_t DwgBitReader::readObjectType() {
  if (!atLeast(version_, DwgVersion::R2010)) return static_cast<std::uint16_t>(readBitShort());
  switch (readBitPair()) {
    case 0: return readRawChar();
    case 1: return static_cast<std::uint16_t>(readRawChar() + 0x1F0);
    default: return static_cast<std::uint16_t>(readRawShort());
  }
}

// The elements of a braced list are read in order, left to right.
DwgPoint2 DwgBitReader::readRaw2Doubles() { return {readRawDouble(), readRawDouble()}; }

DwgPoint2 DwgBitReader::read2DoublesWithDefault(const DwgPoint2& defaults) {
  return {readDoubleWithDefault(defaults.x), readDoubleWithDefault(defaults.y)};
}

DwgPoint3 DwgBitReader::read3BitDoubles() { return {readBitDouble(), readBitDouble(), readBitDouble()}; }

DwgPoint3 DwgBitReader::read3DoublesWithDefault(const DwgPoint3& defaults) {
  return {readDoubleWithDefault(defaults.x), readDoubleWithDefault(defaults.y), readDoubleWithDefault(defaults.z)};
}

DwgPoint3 DwgBitReader::readRaw3Doubles() { return {readRawDouble(), readRawDouble(), readRawDouble()}; }

bool findStringStream(std::span<const std::uint8_t> data, std::size_t dataBeginBit, std::size_t endBit,
                      DwgStringStream& stream) {
  stream = {};
  DwgBitReader reader(data, DwgVersion::R2007);
  if (endBit < dataBeginBit + 1 || endBit > reader.bitSize()) return false;
  reader.setBitPosition(endBit - 1);
  if (!reader.readBit()) return true;  // no texts
  // The size (in bits) is a short before the flag; with its top bit set, a second short before it holds
  // the bits above the first fifteen.
  if (endBit < dataBeginBit + 17) return false;
  std::size_t sizePosition = endBit - 17;
  reader.setBitPosition(sizePosition);
  std::uint64_t size = static_cast<std::uint16_t>(reader.readRawShort());
  if (size & 0x8000) {
    if (sizePosition < dataBeginBit + 16) return false;
    sizePosition -= 16;
    reader.setBitPosition(sizePosition);
    const auto high = static_cast<std::uint16_t>(reader.readRawShort());
    size = (size & 0x7FFF) | (std::uint64_t(high) << 15);
  }
  if (reader.failed() || size > sizePosition - dataBeginBit) return false;
  stream.present = true;
  stream.beginBit = sizePosition - size;
  stream.endBit = sizePosition;
  return true;
}

std::uint16_t dwgCrc8(std::uint16_t seed, std::span<const std::uint8_t> data) {
  std::uint16_t crc = seed;
  std::size_t i = 0;
  // Objects' CRCs cover every byte of the drawing's objects: four bytes a step.
  for (; i + 4 <= data.size(); i += 4) {
    const unsigned low = (crc ^ data[i]) & 0xFF, high = ((crc >> 8) ^ data[i + 1]) & 0xFF;
    crc = static_cast<std::uint16_t>(kCrc16Slices[3][low] ^ kCrc16Slices[2][high] ^ kCrc16Slices[1][data[i + 2]] ^
                                     kCrc16Slices[0][data[i + 3]]);
  }
  for (; i < data.size(); ++i) crc = static_cast<std::uint16_t>((crc >> 8) ^ kCrc16Table[(crc ^ data[i]) & 0xFF]);
  return crc;
}

std::uint32_t dwgCrc32(std::uint32_t seed, std::span<const std::uint8_t> data) {
  std::uint32_t inverted = ~seed;
  for (std::uint8_t byte : data) inverted = (inverted >> 8) ^ kCrc32Table[(inverted ^ byte) & 0xFF];
  return ~inverted;
}

}  // namespace headless
