// DXF tag tokenizer for ASCII and binary files.
#include "platform/headless/dxf_tokenizer.h"

#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "platform/files.h"

namespace headless {

namespace {

constexpr char kBinarySentinel[] = "AutoCAD Binary DXF\r\n\x1a";  // followed by a NUL: 22 bytes in all
constexpr std::size_t kSentinelSize = 22;
constexpr std::size_t kChunk = 1 << 18;  // read the file 256 KB at a time, which stays in the cache

std::string_view trimSpacesSlow(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

// Values mostly have nothing to trim: that is told from their two ends.
inline std::string_view trimSpaces(std::string_view s) {
  if (!s.empty() && static_cast<unsigned char>(s.front()) > ' ' && static_cast<unsigned char>(s.back()) > ' ') return s;
  return trimSpacesSlow(s);
}

// The first line break in [p, end), or null. Lines are mostly a few bytes long: they are scanned eight
// bytes at a time, without a call, and long ones handed on to memchr.
inline const char* findLineBreak(const char* p, const char* end) {
  if constexpr (std::endian::native == std::endian::little) {
    for (int words = 0; words < 4 && end - p >= 8; ++words, p += 8) {
      std::uint64_t w;
      std::memcpy(&w, p, 8);
      const std::uint64_t x = w ^ 0x0A0A0A0A0A0A0A0AULL;  // a zero byte where w holds '\n'
      // The lowest flagged byte is the first zero byte; higher ones may be false alarms, never lower ones.
      const std::uint64_t zero = (x - 0x0101010101010101ULL) & ~x & 0x8080808080808080ULL;
      if (zero) return p + (std::countr_zero(zero) >> 3);
    }
  }
  return static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
}

std::string shown(std::string_view s) {
  constexpr std::size_t kMax = 40;
  std::string out(s.substr(0, kMax));
  if (s.size() > kMax) out += "...";
  return out;
}

// For a decimal number that from_chars read whole but found out of range: whether it is too small, and
// so reads as zero, rather than too large. Told from its digits and exponent, not by strtod, whose reading
// depends on the process's locale, which another thread may change.
bool tooSmall(const char* b, const char* e) {
  if (b != e && (*b == '-' || *b == '+')) ++b;
  long long lead = 0;  // the power of ten of the first significant digit, before the written exponent
  bool seen = false;   // a significant digit
  bool fraction = false;
  for (; b != e && *b != 'e' && *b != 'E'; ++b) {
    if (*b == '.') {
      fraction = true;
    } else if (seen) {
      if (!fraction) ++lead;
    } else if (*b != '0') {
      seen = true;
      if (fraction) --lead;
    } else if (fraction) {
      --lead;
    }
  }
  long long exponent = 0;
  if (b != e) {
    ++b;
    const bool negative = b != e && *b == '-';
    if (b != e && (*b == '-' || *b == '+')) ++b;
    for (; b != e; ++b) exponent = std::min(exponent * 10 + (*b - '0'), 1000000000LL);
    if (negative) exponent = -exponent;
  }
  return lead + exponent < 0;
}

// Reads a plain decimal ("-12.5", "0.0", "3", "25139.439313888317") of at most 19 significant digits and 27
// decimals, exactly as from_chars would; false for anything else (more digits, an exponent, a sign '+',
// damage) and for the rare text this cannot settle, which from_chars then reads.
//
// The digits D and the power of ten P = 10^d are exact integers. With at most 15 digits and 22 decimals both
// are exact doubles, so D / P rounded once is the double the text names. Writers mostly give all seventeen
// digits: then D and P are exact in the 64-bit significand of the x87 extended type, D / P is within half of
// its last place of the true quotient, and rounding that to a double gives the double the text names unless
// a midpoint between two doubles lies that close, which the eleven bits below the double's last place tell.
inline bool readPlainDecimal(std::string_view v, double& out) {
  static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const char* p = v.data();
  const char* const end = p + v.size();
  const bool negative = p != end && *p == '-';
  p += negative;
  std::uint64_t digits = 0;
  int decimals = 0, count = 0;
  bool point = false, any = false;
  for (; p != end; ++p) {
    const unsigned d = static_cast<unsigned char>(*p) - '0';
    if (d <= 9) {
      any = true;
      if (digits != 0 || d != 0) ++count;
      if (count > 19) return false;
      digits = digits * 10 + d;
      decimals += point;
    } else if (*p == '.' && !point) {
      point = true;
    } else {
      return false;
    }
  }
  if (!any || decimals > 27) return false;
  double value;
  if (count <= 15 && decimals <= 22) {
    value = static_cast<double>(digits) / kPowers[decimals];
  } else {
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
    static_assert(std::numeric_limits<long double>::digits == 64, "the x87 extended type");
    static constexpr auto kLongPowers = [] {
      std::array<long double, 28> powers{};
      long double p10 = 1.0L;
      for (long double& power : powers) {
        power = p10;
        p10 *= 10.0L;
      }
      return powers;
    }();
    const long double quotient = static_cast<long double>(digits) / kLongPowers[decimals];
    // The significand's eleven bits below a double's last place: 0x400 is a midpoint between two doubles.
    std::uint64_t significand;
    std::memcpy(&significand, &quotient, sizeof significand);
    const std::uint64_t below = significand & 0x7FF;
    if (below >= 0x3FF && below <= 0x401) return false;
    value = static_cast<double>(quotient);
#else
    return false;
#endif
  }
  out = negative ? -value : value;
  return true;
}

// The values an integer group of this type may hold. Writers put 16- and 32-bit values unsigned too.
struct IntegerRange {
  long long min, max;
};
IntegerRange rangeOf(TagType type) {
  switch (type) {
    case TagType::Int16:
    case TagType::Bool: return {-32768, 65535};
    case TagType::Int32: return {-2147483648LL, 4294967295LL};
    default: return {std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()};
  }
}

// The type of each valid group code, looked up for every group read.
constexpr TagType typeOfCode(int code) {
  if (code < 0) return TagType::Text;
  if (code <= 9) return TagType::Text;
  if (code <= 59) return TagType::Real;
  if (code <= 79) return TagType::Int16;
  if (code <= 99) return TagType::Int32;
  if (code == 105) return TagType::Handle;
  if (code < 110) return TagType::Text;
  if (code <= 149) return TagType::Real;
  if (code >= 160 && code <= 169) return TagType::Int64;
  if (code >= 170 && code <= 179) return TagType::Int16;
  if (code >= 210 && code <= 239) return TagType::Real;
  if (code >= 270 && code <= 289) return TagType::Int16;
  if (code >= 290 && code <= 299) return TagType::Bool;
  if (code >= 300 && code <= 309) return TagType::Text;
  if (code >= 310 && code <= 319) return TagType::Binary;
  if (code >= 320 && code <= 369) return TagType::Handle;
  if (code >= 370 && code <= 389) return TagType::Int16;
  if (code >= 390 && code <= 399) return TagType::Handle;
  if (code >= 400 && code <= 409) return TagType::Int16;
  if (code >= 410 && code <= 419) return TagType::Text;
  if (code >= 420 && code <= 429) return TagType::Int32;
  if (code >= 430 && code <= 439) return TagType::Text;
  if (code >= 440 && code <= 459) return TagType::Int32;
  if (code >= 460 && code <= 469) return TagType::Real;
  if (code >= 470 && code <= 479) return TagType::Text;
  if (code == 480 || code == 481) return TagType::Handle;
  if (code == 999) return TagType::Text;
  if (code >= 1000 && code <= 1003) return TagType::Text;
  if (code == 1004) return TagType::Binary;
  if (code == 1005) return TagType::Handle;
  if (code >= 1006 && code <= 1009) return TagType::Text;
  if (code >= 1010 && code <= 1059) return TagType::Real;
  if (code >= 1060 && code <= 1070) return TagType::Int16;
  if (code == 1071) return TagType::Int32;
  return TagType::Text;
}

constexpr auto kTagTypes = [] {
  std::array<TagType, kMaxGroupCode - kMinGroupCode + 1> types{};
  for (int code = kMinGroupCode; code <= kMaxGroupCode; ++code) types[code - kMinGroupCode] = typeOfCode(code);
  return types;
}();

}  // namespace

std::string_view caretText(std::string_view text, std::string& buffer) {
  bool plain = true;
  for (char c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == '^') plain = false;
  if (plain) return text;
  buffer.clear();
  for (char c : text) {
    if (c == '^') {
      buffer += "^ ";
    } else if (static_cast<unsigned char>(c) < 0x20) {
      buffer += '^';
      buffer += static_cast<char>(c + 0x40);
    } else {
      buffer += c;
    }
  }
  return buffer;
}

TagType tagTypeOf(int code) {
  return code >= kMinGroupCode && code <= kMaxGroupCode ? kTagTypes[code - kMinGroupCode] : TagType::Text;
}

std::unique_ptr<DxfTokenizer> DxfTokenizer::open(const std::string& path, std::string& error) {
  long long size = 0;
  const int fd = platform::openRegularFile(path, size, &error);
  if (fd < 0) return nullptr;
  std::FILE* f = ::fdopen(fd, "rb");
  if (!f) {
    error = path + ": cannot open the file: " + platform::systemErrorText(errno);
    ::close(fd);
    return nullptr;
  }
  char head[kSentinelSize + 2] = {};
  const std::size_t n = std::fread(head, 1, sizeof head, f);
  const bool binary = n >= kSentinelSize && std::memcmp(head, kBinarySentinel, kSentinelSize - 1) == 0 &&
                      head[kSentinelSize - 1] == '\0';
  std::rewind(f);
  auto t = std::unique_ptr<DxfTokenizer>(new DxfTokenizer(f, path, binary));
  t->fileSize_ = size;
  if (binary) {
    // R12 binary files write the first group code (0) as one byte, followed by "SECTION".
    t->twoByteCodes_ = !(n > kSentinelSize + 1 && head[kSentinelSize + 1] != '\0');
    t->fill(kSentinelSize);
    t->pos_ = kSentinelSize;
  }
  return t;
}

DxfTokenizer::DxfTokenizer(std::FILE* file, std::string path, bool binary)
    : file_(file), path_(std::move(path)), binary_(binary) {
  buf_.resize(kChunk);
}

DxfTokenizer::~DxfTokenizer() {
  if (file_) std::fclose(file_);
}

std::string DxfTokenizer::place(long long position) const {
  return (binary_ ? "byte offset " : "line ") + std::to_string(position);
}

std::string DxfTokenizer::location() const { return place(position()); }

bool DxfTokenizer::fail(const std::string& what) {
  if (error_.empty()) error_ = path_ + ": " + location() + ": " + what;
  return false;
}

bool DxfTokenizer::codeOutOfRange(RawTag& tag, std::string_view written) {
  tag.code = 999;  // a comment's code: never mistaken for a group the reader looks for
  return damaged(tag, RawTag::Damage::Code,
                 "group code " + std::string(written) + " is outside the valid range " + std::to_string(kMinGroupCode) +
                     " to " + std::to_string(kMaxGroupCode));
}

bool DxfTokenizer::damaged(RawTag& tag, RawTag::Damage kind, std::string what) {
  damage_ = std::move(what);
  tag.damage = kind;
  tag.damageText = damage_;
  return true;
}

// Makes at least `need` unread bytes available when the file has them; false at the end of the file.
bool DxfTokenizer::fill(std::size_t need) {
  if (end_ - pos_ >= need) return true;
  if (eof_) return false;
  if (pos_ > 0) {
    std::memmove(buf_.data(), buf_.data() + pos_, end_ - pos_);
    consumed_ += static_cast<long long>(pos_);
    end_ -= pos_;
    pos_ = 0;
  }
  while (end_ - pos_ < need && !eof_) {
    if (buf_.size() - end_ < kChunk / 2) buf_.resize(std::max(buf_.size() * 2, need + kChunk));
    // A file is read up to the size it had when it was opened: one that grows while it is read (a log
    // being written, a device) would otherwise never end.
    std::size_t room = buf_.size() - end_;
    if (fileSize_ >= 0) {
      const long long unread = fileSize_ - consumed_ - static_cast<long long>(end_);
      room = std::min(room, static_cast<std::size_t>(std::max(unread, 0LL)));
    }
    const std::size_t got = room > 0 ? std::fread(buf_.data() + end_, 1, room, file_) : 0;
    if (got == 0) {
      eof_ = true;
      grew_ = room == 0 && std::fgetc(file_) != EOF;
    }
    end_ += got;
  }
  return end_ - pos_ >= need;
}

bool DxfTokenizer::hasMoreInput() {
  if (binary_) return fill(1);
  // Trailing blank lines and spaces do not count.
  for (;;) {
    if (!fill(1)) return false;
    while (pos_ < end_) {
      const char c = buf_[pos_];
      if (c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != '\x1a' && c != '\0') return true;
      ++pos_;
    }
  }
}

inline bool DxfTokenizer::readLine(std::string_view& line) {
  const char* start = buf_.data() + pos_;
  if (const char* nl = findLineBreak(start, buf_.data() + end_)) {
    std::size_t len = static_cast<std::size_t>(nl - start);
    pos_ += len + 1;
    ++line_;
    if (len > 0 && start[len - 1] == '\r') --len;
    line = std::string_view(start, len);
    return true;
  }
  return readLineRefilling(line);
}

// A line that runs past the bytes in the buffer: the buffer is refilled, or grown, until it holds the line.
bool DxfTokenizer::readLineRefilling(std::string_view& line) {
  for (std::size_t scanned = end_ - pos_;;) {
    const char* start = buf_.data() + pos_;
    const void* nl = std::memchr(start + scanned, '\n', end_ - pos_ - scanned);
    if (nl) {
      const std::size_t len = static_cast<const char*>(nl) - start;
      line = std::string_view(start, len);
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      pos_ += len + 1;
      ++line_;
      return true;
    }
    scanned = end_ - pos_;
    if (!fill(scanned + 1)) {
      if (end_ == pos_) return false;
      // The last line of the file has no line break.
      line = std::string_view(buf_.data() + pos_, end_ - pos_);
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      pos_ = end_;
      ++line_;
      return true;
    }
  }
}

bool DxfTokenizer::next(RawTag& tag) {
  if (!error_.empty()) return false;
  return binary_ ? nextBinary(tag) : nextAscii(tag);
}

bool DxfTokenizer::nextAscii(RawTag& tag) {
  std::string_view codeLine;
  if (!readLine(codeLine)) return false;
  tagLine_ = line_;
  // The common form, a code of up to four digits right-aligned with spaces, is read here; anything else
  // (signs, tabs, trailing spaces, damage) takes the general path below.
  const char* digits = codeLine.data();
  const char* const codeEnd = digits + codeLine.size();
  while (digits != codeEnd && *digits == ' ') ++digits;
  if (digits != codeEnd && codeEnd - digits <= 4) {
    int quick = 0;
    for (const char* d = digits; d != codeEnd && quick >= 0; ++d) {
      const unsigned digit = static_cast<unsigned char>(*d) - '0';
      quick = digit > 9 ? -1 : quick * 10 + static_cast<int>(digit);
    }
    if (quick >= 0 && quick <= kMaxGroupCode) {
      std::string_view value;
      if (!readLine(value))
        return fail("the file ends after group code " + shown(std::string_view(digits, codeEnd - digits)) +
                    ", before its value");
      return takeValue(tag, quick, value);
    }
  }
  std::string_view c = trimSpaces(codeLine);
  if (c.empty()) {
    // Blank lines are tolerated where the file ends; elsewhere a group code is missing.
    if (!hasMoreInput()) return false;
    return fail("expected a group code (an integer), found an empty line");
  }
  // Group codes are short decimal integers: read by hand, the commonest work of the whole reader. Long
  // runs of digits saturate, so that they read as a code out of range rather than wrap into a valid one.
  long long code = 0;
  std::size_t k = 0;
  const bool negative = c[0] == '-';
  if (c[0] == '-' || c[0] == '+') ++k;
  if (k == c.size()) return fail("expected a group code (an integer), found '" + shown(c) + "'");
  for (; k < c.size(); ++k) {
    const unsigned digit = static_cast<unsigned char>(c[k]) - '0';
    if (digit > 9) return fail("expected a group code (an integer), found '" + shown(c) + "'");
    code = std::min(code * 10 + digit, 1000000LL);
  }
  if (negative) code = -code;
  std::string_view value;
  if (!readLine(value)) return fail("the file ends after group code " + shown(c) + ", before its value");
  tag.damage = RawTag::Damage::None;
  if (code < kMinGroupCode || code > kMaxGroupCode) {
    tag.type = TagType::Text;
    tag.text = value;
    return codeOutOfRange(tag, shown(c));
  }
  return takeValue(tag, static_cast<int>(code), value);
}

inline bool DxfTokenizer::takeValue(RawTag& tag, int code, std::string_view value) {
  tag.damage = RawTag::Damage::None;
  tag.code = code;
  tag.type = kTagTypes[code - kMinGroupCode];
  switch (tag.type) {
    case TagType::Text:
      tag.text = code == 0 ? trimSpaces(value) : value;
      return true;
    case TagType::Handle:
    case TagType::Binary:
      tag.text = trimSpaces(value);
      return true;
    case TagType::Real:
      if (readPlainDecimal(value, tag.real)) {
        tag.integer = 0;
        return true;
      }
      return parseReal(trimSpaces(value), tag);
    default: return parseInteger(trimSpaces(value), tag);
  }
}

bool DxfTokenizer::parseReal(std::string_view v, RawTag& tag) {
  const char* b = v.data() + (!v.empty() && v.front() == '+');
  const char* e = v.data() + v.size();
  tag.integer = 0;
  const auto r = std::from_chars(b, e, tag.real);
  if (r.ec == std::errc::result_out_of_range && r.ptr == e) {
    // from_chars leaves the value untouched here: a value too small reads as zero, of its sign.
    if (tooSmall(b, e)) {
      tag.real = *b == '-' ? -0.0 : 0.0;
      return true;
    }
    return damaged(tag, RawTag::Damage::Value,
                   "the real number '" + shown(v) + "' of group code " + std::to_string(tag.code) + " is out of range");
  }
  if (r.ec != std::errc() || r.ptr != e)
    return fail("expected a real number for group code " + std::to_string(tag.code) + ", found '" + shown(v) + "'");
  if (!std::isfinite(tag.real))
    return damaged(tag, RawTag::Damage::Value,
                   "group code " + std::to_string(tag.code) + " holds '" + shown(v) + "', not a finite number");
  return true;
}

bool DxfTokenizer::parseInteger(std::string_view v, RawTag& tag) {
  const char* b = v.data() + (!v.empty() && v.front() == '+');
  const char* e = v.data() + v.size();
  const IntegerRange range = rangeOf(tag.type);
  const auto outOfRange = [&] {
    return damaged(tag, RawTag::Damage::Value,
                   "the integer '" + shown(v) + "' does not fit group code " + std::to_string(tag.code) + " (" +
                       std::to_string(range.min) + " to " + std::to_string(range.max) + ")");
  };
  const auto r = std::from_chars(b, e, tag.integer);
  if (r.ptr == e && r.ec == std::errc::result_out_of_range) return outOfRange();
  if (r.ptr == e && r.ec == std::errc()) {
    if (tag.integer < range.min || tag.integer > range.max) return outOfRange();
    tag.real = static_cast<double>(tag.integer);
    return true;
  }
  // Some writers put integers as reals ("1.0"): the integral part is taken.
  double d = 0.0;
  const auto rd = std::from_chars(b, e, d);
  if (rd.ptr != e || (rd.ec != std::errc() && rd.ec != std::errc::result_out_of_range))
    return fail("expected an integer for group code " + std::to_string(tag.code) + ", found '" + shown(v) + "'");
  // The bounds are powers of two or their neighbours, exact as doubles; NaN fails both tests.
  if (rd.ec != std::errc() || !(d > static_cast<double>(range.min) - 1.0 && d < static_cast<double>(range.max) + 1.0) ||
      d >= 9.2e18 || d <= -9.2e18)
    return outOfRange();
  tag.integer = static_cast<long long>(d);
  tag.real = static_cast<double>(tag.integer);
  return true;
}

bool DxfTokenizer::nextBinary(RawTag& tag) {
  if (!fill(1)) return false;
  tagOffset_ = consumed_ + static_cast<long long>(pos_);
  const auto byte = [this](std::size_t i) { return static_cast<unsigned char>(buf_[pos_ + i]); };
  int code;
  if (twoByteCodes_) {
    if (!fill(2)) return fail("the file ends inside a group code");
    code = static_cast<std::int16_t>(byte(0) | (byte(1) << 8));
    pos_ += 2;
  } else if (byte(0) == 255) {
    if (!fill(3)) return fail("the file ends inside a group code");
    code = static_cast<std::int16_t>(byte(1) | (byte(2) << 8));
    pos_ += 3;
  } else {
    code = byte(0);
    pos_ += 1;
  }
  tag.code = code;
  tag.type = tagTypeOf(code);
  tag.damage = RawTag::Damage::None;
  const auto need = [this, code](std::size_t n) {
    return fill(n) || fail("the file ends inside the value of group code " + std::to_string(code));
  };
  const auto le = [&](std::size_t n) {
    unsigned long long v = 0;
    for (std::size_t i = 0; i < n; ++i) v |= static_cast<unsigned long long>(byte(i)) << (8 * i);
    pos_ += n;
    return v;
  };
  switch (tag.type) {
    case TagType::Real: {
      if (!need(8)) return false;
      const unsigned long long bits = le(8);
      std::memcpy(&tag.real, &bits, 8);
      tag.integer = 0;
      if (!std::isfinite(tag.real))
        return damaged(tag, RawTag::Damage::Value,
                       "group code " + std::to_string(code) + " holds a real that is not a finite number");
      return true;
    }
    case TagType::Int16:
      if (!need(2)) return false;
      tag.integer = static_cast<std::int16_t>(le(2));
      tag.real = static_cast<double>(tag.integer);
      return true;
    case TagType::Int32:
      if (!need(4)) return false;
      tag.integer = static_cast<std::int32_t>(le(4));
      tag.real = static_cast<double>(tag.integer);
      return true;
    case TagType::Int64:
      if (!need(8)) return false;
      tag.integer = static_cast<long long>(le(8));
      tag.real = static_cast<double>(tag.integer);
      return true;
    case TagType::Bool:
      if (!need(1)) return false;
      tag.integer = static_cast<long long>(le(1));
      tag.real = static_cast<double>(tag.integer);
      return true;
    case TagType::Binary: {
      if (!need(1)) return false;
      const std::size_t len = byte(0);
      if (!need(1 + len)) return false;
      static constexpr char kHex[] = "0123456789ABCDEF";
      binaryHex_.clear();
      for (std::size_t i = 0; i < len; ++i) {
        binaryHex_ += kHex[byte(1 + i) >> 4];
        binaryHex_ += kHex[byte(1 + i) & 15];
      }
      pos_ += 1 + len;
      tag.text = binaryHex_;
      return true;
    }
    default: {
      // A NUL-terminated text.
      for (std::size_t scanned = 0;;) {
        const void* z = std::memchr(buf_.data() + pos_ + scanned, '\0', end_ - pos_ - scanned);
        if (z) {
          const std::size_t len = static_cast<const char*>(z) - (buf_.data() + pos_);
          // Binary files keep control characters as they are; ASCII files, and so the database, as carets.
          tag.text = caretText(std::string_view(buf_.data() + pos_, len), caretBuffer_);
          pos_ += len + 1;
          if (code < kMinGroupCode || code > kMaxGroupCode) return codeOutOfRange(tag, std::to_string(code));
          return true;
        }
        scanned = end_ - pos_;
        if (!fill(scanned + 1)) return fail("the file ends inside the text of group code " + std::to_string(code));
      }
    }
  }
}

}  // namespace headless
