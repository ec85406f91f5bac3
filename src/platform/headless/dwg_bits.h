// Bit-level reading of DWG data: the packed value types of R13 and later drawings, and their checksums.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

namespace headless {

// The DWG releases this reader knows, in file order. The numbers are the year of the release that
// introduced each layout; R13 and R14 come before R2000.
enum class DwgVersion : std::uint8_t { R13, R14, R2000, R2004, R2007, R2010, R2013, R2018 };

// A handle reference as stored: its code (ownership kind, or how an offset applies) and the handle it
// names, already resolved against the reference handle for the relative codes 6, 8, A and C.
struct DwgHandleRef {
  std::uint8_t code = 0;
  std::uint64_t handle = 0;
};

struct DwgPoint2 {
  double x = 0, y = 0;
};
struct DwgPoint3 {
  double x = 0, y = 0, z = 0;
};

// A colour of a table record or object (CMC). Before R2004 only the index is stored. From R2004 on the
// flags say whether a colour name (1) and a book name (2) follow as texts; the caller reads those from
// the stream that holds the object's texts.
struct DwgColor {
  std::int16_t index = 0;
  std::uint32_t rgb = 0;
  std::uint8_t flags = 0;
  bool hasName() const { return (flags & 1) != 0; }
  bool hasBookName() const { return (flags & 2) != 0; }
};

// An entity's colour (ENC, R2004 and later; before that it is a CMC index). A reference to a colour
// object, when present, is in the entity's handle stream; the names, when present, are texts the caller
// reads.
struct DwgEntityColor {
  std::int16_t index = 0;
  std::uint32_t rgb = 0;
  std::uint32_t transparency = 0;
  bool hasRgb = false;
  bool hasColorReference = false;
  bool hasTransparency = false;
  bool hasName = false;
  bool hasBookName = false;
};

// Reads the packed values of one buffer from a bit position, most significant bit of each byte first.
// Never reads outside its buffer: a read that would sets a failure flag that stays set, moves the position
// to the end and returns zero (or an empty text); a value the format cannot hold (a bit double coded 3)
// does the same. Callers check failed() once after reading a whole object.
class DwgBitReader {
 public:
  DwgBitReader() = default;
  DwgBitReader(std::span<const std::uint8_t> data, DwgVersion version) : data_(data), version_(version) {}

  DwgVersion version() const { return version_; }
  bool failed() const { return failed_; }
  // Marks the data as unreadable, as a read past the end does (for checks made by the caller).
  void fail() {
    failed_ = true;
    bit_ = bitSize();
  }
  std::size_t bitPosition() const { return bit_; }
  std::size_t bitSize() const { return data_.size() * 8; }
  std::size_t bitsLeft() const { return bitSize() - bit_; }
  // Positions past the end fail.
  void setBitPosition(std::size_t bit);
  // Moves to the next byte boundary (nothing when already on one).
  void alignToByte();
  std::size_t bytePosition() const { return bit_ / 8; }

  bool readBit() { return static_cast<bool>(readBits(1)); }             // B
  std::uint8_t readBitPair() { return static_cast<std::uint8_t>(readBits(2)); }  // BB
  std::uint8_t readBitTriplet();        // 3B: 1 to 3 bits, ended by a zero bit
  std::int16_t readBitShort();          // BS
  std::int32_t readBitLong();           // BL
  std::uint64_t readBitLongLong();      // BLL: a 3-bit byte count and that many bytes
  double readBitDouble();               // BD
  double readDoubleWithDefault(double defaultValue);  // DD
  std::uint8_t readRawChar() { return static_cast<std::uint8_t>(readBits(8)); }  // RC
  std::int16_t readRawShort();          // RS
  std::int32_t readRawLong();           // RL
  double readRawDouble();               // RD
  // MC: 7 bits a byte, low groups first; the last byte's 0x40 bit is the sign in the signed form.
  std::int64_t readModularChar();
  std::uint64_t readUnsignedModularChar();
  // MS: 15 bits a little-endian short, low groups first (object sizes).
  std::uint32_t readModularShort();
  // H: relative codes 6, 8, A and C resolve against referenceHandle (the handle of the object being read).
  DwgHandleRef readHandle(std::uint64_t referenceHandle = 0);
  // T: a bit-short length and that many 8-bit characters, in the drawing's code page. out is reused, so
  // a caller that keeps one string allocates only when a text is longer than any before it.
  void readText(std::string& out);
  // TU: a bit-short length and that many UTF-16 code units.
  void readUnicodeText(std::u16string& out);
  DwgColor readColor();               // CMC
  DwgEntityColor readEntityColor();   // ENC (R2004+; a CMC index before)
  DwgPoint3 readExtrusion();          // BE: R2000+ one bit for (0,0,1)
  double readThickness();             // BT: R2000+ one bit for 0
  std::uint16_t readObjectType();     // OT: R2010+ a bit pair and 1 or 2 bytes; a bit short before
  DwgPoint2 readRaw2Doubles();        // 2RD
  DwgPoint2 read2DoublesWithDefault(const DwgPoint2& defaults);  // 2DD
  DwgPoint3 read3BitDoubles();        // 3BD
  DwgPoint3 read3DoublesWithDefault(const DwgPoint3& defaults);  // 3DD
  DwgPoint3 readRaw3Doubles();        // 3RD

 private:
  bool take(std::size_t bits);
  // The next count (1 to 57) bits as a number, the first read the highest; 0 and failed past the end.
  std::uint64_t readBits(unsigned count) {
    if (failed_ || count > bitSize() - bit_) {
      fail();
      return 0;
    }
    const std::size_t byte = bit_ >> 3;
    std::uint64_t window;
    if (byte + 8 <= data_.size()) {
      std::memcpy(&window, data_.data() + byte, 8);
      if constexpr (std::endian::native == std::endian::little) window = byteSwap(window);
    } else {
      window = 0;
      for (std::size_t i = 0; i < 8; ++i) window = window << 8 | (byte + i < data_.size() ? data_[byte + i] : 0);
    }
    const std::uint64_t value = (window << (bit_ & 7)) >> (64 - count);
    bit_ += count;
    return value;
  }
  static std::uint64_t byteSwap(std::uint64_t v) { return __builtin_bswap64(v); }
  // count (0 to 8) bytes in little-endian order, at any bit position.
  std::uint64_t readRawBytes(int count) {
    if (count <= 0) return 0;
    if (count > 7) {
      const std::uint64_t low = readRawBytes(4);
      return low | readRawBytes(count - 4) << 32;
    }
    const std::uint64_t big = readBits(static_cast<unsigned>(count) * 8);
    // The bytes came first-highest; little-endian puts the first lowest.
    return byteSwap(big) >> (64 - 8 * count);
  }

  std::span<const std::uint8_t> data_;
  std::size_t bit_ = 0;
  DwgVersion version_ = DwgVersion::R2000;
  bool failed_ = false;
};

// Where an R2007+ object's texts are. They sit just before endBit, the end of its data (the start of its
// handle stream), flagged by the bit before endBit and sized by one or two shorts before that flag.
struct DwgStringStream {
  bool present = false;
  std::size_t beginBit = 0;
  std::size_t endBit = 0;
};
// Fails (present stays false, ok false) when the sizes point outside [dataBeginBit, endBit).
bool findStringStream(std::span<const std::uint8_t> data, std::size_t dataBeginBit, std::size_t endBit,
                      DwgStringStream& stream);

// The 16-bit check value the format calls CRC8 (objects, sections, the R13-R15 file header). Objects and
// sections start from 0xC0C1.
std::uint16_t dwgCrc8(std::uint16_t seed, std::span<const std::uint8_t> data);
// The CRC-32 of the R2004+ file header (the common reflected 0xEDB88320 one).
std::uint32_t dwgCrc32(std::uint32_t seed, std::span<const std::uint8_t> data);

}  // namespace headless
