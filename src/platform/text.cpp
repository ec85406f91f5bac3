// UTF conversions and the printf-exact formatter.
#include "platform/text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence at s[i]; advances i. Invalid or overlong sequences give U+FFFD.
char32_t decodeUtf8(std::string_view s, std::size_t& i) {
  const auto b0 = static_cast<unsigned char>(s[i++]);
  if (b0 < 0x80) return b0;
  int extra;
  char32_t cp;
  if ((b0 & 0xE0) == 0xC0) { extra = 1; cp = b0 & 0x1F; }
  else if ((b0 & 0xF0) == 0xE0) { extra = 2; cp = b0 & 0x0F; }
  else if ((b0 & 0xF8) == 0xF0) { extra = 3; cp = b0 & 0x07; }
  else return kReplacement;
  if (i + extra > s.size()) { i = s.size(); return kReplacement; }
  for (int k = 0; k < extra; ++k) {
    const auto b = static_cast<unsigned char>(s[i]);
    if ((b & 0xC0) != 0x80) return kReplacement;
    cp = (cp << 6) | (b & 0x3F);
    ++i;
  }
  static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
  if (cp < kMin[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kReplacement;
  return cp;
}

// Room writeFixedFast needs: the integer part stays below 2^52 (16 digits), with sign, point and 6 places.
constexpr std::size_t kFastFixedRoom = 32;
static_assert(16 + 1 + 1 + 6 <= kFastFixedRoom);

// Two decimal digits at a time, "00" to "99".
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes n's decimal digits so that they end just before end; returns where they begin.
char* writeDigitsBefore(char* end, unsigned long long n) {
  while (n >= 100) {
    end -= 2;
    const char* pair = kDigitPairs + (n % 100) * 2;
    end[0] = pair[0];
    end[1] = pair[1];
    n /= 100;
  }
  if (n >= 10) {
    end -= 2;
    end[0] = kDigitPairs[n * 2];
    end[1] = kDigitPairs[n * 2 + 1];
  } else {
    *--end = static_cast<char>('0' + n);
  }
  return end;
}

// Fixed-point formatting by exact integer arithmetic, several times faster than the general routine.
// The double is m * 2^q with a 53-bit integer m; for 2^-60 <= |v| and |v| * 10^d < 2^52 the product
// m * 10^d fits 128 bits and the shift by -q (at most 112) splits it exactly into the integer part and a
// remainder, so ties are recognised exactly. Zero, the commonest value of all, is written directly. Other
// values (and compilers without 128-bit integers) give null and take the general path.
// Writes at p, which has kFastFixedRoom bytes of room, and returns the end.
char* writeFixedFast(char* p, double value, int decimals) {
#if defined(__SIZEOF_INT128__)
  __extension__ using u128 = unsigned __int128;
  static constexpr unsigned long long kScale[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
  const double a = std::fabs(value);
  unsigned long long n = 0;
  if (a != 0.0) {
    if (!(a >= 0x1p-60) || a * static_cast<double>(kScale[decimals]) >= 4503599627370496.0) return nullptr;  // 2^52
    // a is normal here: m is its 52 stored bits with the implicit leading one, a = m * 2^-shift.
    const auto bits = std::bit_cast<unsigned long long>(a);
    const unsigned long long m = (bits & ((1ULL << 52) - 1)) | (1ULL << 52);
    const int shift = 1075 - static_cast<int>(bits >> 52);
    const u128 product = static_cast<u128>(m) * kScale[decimals];
    if (shift <= 0) {
      n = static_cast<unsigned long long>(product << -shift);
    } else {
      n = static_cast<unsigned long long>(product >> shift);
      const u128 rem = product & ((static_cast<u128>(1) << shift) - 1);
      const u128 half = static_cast<u128>(1) << (shift - 1);
      if (rem > half || (rem == half && (n & 1))) ++n;  // round half to even, as printf on an exact tie
    }
  }
  // The text is built right-aligned at the middle of the buffer and copied out whole, kFastFixedRoom bytes
  // at once: a copy of fixed size costs two moves where one of the text's own length costs a call.
  char digits[2 * kFastFixedRoom];
  char* const end = digits + kFastFixedRoom;
  char* first = end;
  if (decimals > 0) {
    unsigned long long places = n % kScale[decimals];
    n /= kScale[decimals];
    int left = decimals;
    for (; left >= 2; left -= 2) {
      first -= 2;
      std::memcpy(first, kDigitPairs + (places % 100) * 2, 2);
      places /= 100;
    }
    if (left == 1) *--first = static_cast<char>('0' + places);
    *--first = '.';
  }
  first = writeDigitsBefore(first, n);
  if (std::signbit(value)) *--first = '-';
  std::memcpy(p, first, kFastFixedRoom);
  return p + (end - first);
#else
  (void)p;
  (void)value;
  (void)decimals;
  return nullptr;
#endif
}

// Room writeFixed needs: std::to_chars writes the largest double with 309 integer digits.
constexpr std::size_t kFixedRoom = 352;
constexpr int kMostPlaces = 30;

// Writes exactly what printf gives for "%.<decimals>f" at p (kFixedRoom bytes of room); returns the end.
char* writeFixed(char* p, double value, int decimals) {
  if (!std::isfinite(value)) {
    // printf spells these "inf", "-inf", "nan" and "-nan".
    const std::string_view word = std::isnan(value) ? (std::signbit(value) ? "-nan" : "nan") : (value < 0 ? "-inf" : "inf");
    std::memcpy(p, word.data(), word.size());
    return p + word.size();
  }
  // Places beyond what any text here asks for are not written, so that the room always suffices.
  decimals = std::clamp(decimals, 0, kMostPlaces);
  if (decimals <= 6)
    if (char* end = writeFixedFast(p, value, decimals)) return end;
  // std::to_chars with a precision is specified to give printf's result, and is exact (no double rounding).
  return std::to_chars(p, p + kFixedRoom, value, std::chars_format::fixed, decimals).ptr;
}

// Room an integer needs: 19 digits and a sign.
constexpr std::size_t kIntRoom = 24;

char* writeInt(char* p, long long value) { return std::to_chars(p, p + kIntRoom, value).ptr; }

// The formatter's output: collected on the stack and handed to the string in few appends, so that a text
// costs one capacity check rather than one per piece.
class FormatBuffer {
 public:
  explicit FormatBuffer(std::string& out) : out_(out) {}
  ~FormatBuffer() { flush(); }
  FormatBuffer(const FormatBuffer&) = delete;
  FormatBuffer& operator=(const FormatBuffer&) = delete;

  void put(char c) {
    if (at_ == end()) flush();
    *at_++ = c;
  }
  void put(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(end() - at_)) {
      flush();
      if (text.size() > sizeof buf_) {
        out_.append(text);
        return;
      }
    }
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }
  // Room for a writer that needs at most `room` bytes; it returns its end to done().
  char* reserve(std::size_t room) {
    if (room > static_cast<std::size_t>(end() - at_)) flush();
    return at_;
  }
  void done(char* end) { at_ = end; }

 private:
  char* end() { return buf_ + sizeof buf_; }
  void flush() {
    out_.append(buf_, static_cast<std::size_t>(at_ - buf_));
    at_ = buf_;
  }
  std::string& out_;
  char buf_[512];
  char* at_ = buf_;
};

}  // namespace

void appendUtf8(std::string& out, char32_t cp) {
  if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = kReplacement;
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

std::u16string utf8ToUtf16(std::string_view s) {
  std::u16string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    const char32_t cp = decodeUtf8(s, i);
    if (cp >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
  }
  return out;
}

std::string utf16ToUtf8(std::u16string_view s) {
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size(); ++i) {
    char32_t cp = s[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (s[i + 1] - 0xDC00);
      ++i;
    }
    appendUtf8(out, cp);
  }
  return out;
}

std::string truncateUtf16Units(std::string_view s, std::size_t maxUnits) {
  std::size_t units = 0;
  std::size_t i = 0;
  while (i < s.size()) {
    std::size_t next = i;
    const char32_t cp = decodeUtf8(s, next);
    const std::size_t need = cp >= 0x10000 ? 2 : 1;
    if (units + need > maxUnits) break;
    units += need;
    i = next;
  }
  return std::string(s.substr(0, i));
}

void appendFixed(std::string& out, double value, int decimals) {
  char buf[kFixedRoom];
  out.append(buf, writeFixed(buf, value, decimals));
}

void appendInt(std::string& out, long long value) {
  char buf[kIntRoom];
  out.append(buf, writeInt(buf, value));
}

long long FormatArg::integer() const {
  switch (kind_) {
    case Kind::Int: return i_;
    case Kind::Real: return std::isfinite(d_) ? static_cast<long long>(d_) : 0;
    case Kind::Text: return 0;
  }
  return 0;
}

double FormatArg::real() const {
  switch (kind_) {
    case Kind::Int: return static_cast<double>(i_);
    case Kind::Real: return d_;
    case Kind::Text: return 0.0;
  }
  return 0.0;
}

void formatTo(std::string& out, std::string_view pattern, std::initializer_list<FormatArg> args) {
  FormatBuffer to(out);
  const FormatArg* arg = args.begin();
  const FormatArg* const end = args.end();
  const auto fixed = [&](double value, int decimals) { to.done(writeFixed(to.reserve(kFixedRoom), value, decimals)); };
  const auto integer = [&](long long value) { to.done(writeInt(to.reserve(kIntRoom), value)); };
  std::size_t i = 0;
  while (i < pattern.size()) {
    const char c = pattern[i++];
    if (c != '%') {
      to.put(c);
      continue;
    }
    if (i >= pattern.size()) {
      to.put('%');
      break;
    }
    if (pattern[i] == '%') {
      to.put('%');
      ++i;
      continue;
    }
    // The commonest conversions, "%.2f" and its kin with one digit of places, are read at once.
    if (pattern[i] == '.' && i + 2 < pattern.size() && pattern[i + 2] == 'f' &&
        static_cast<unsigned>(pattern[i + 1] - '0') <= 9) {
      const FormatArg* a = arg != end ? arg++ : nullptr;
      fixed(a ? a->real() : 0.0, pattern[i + 1] - '0');
      i += 3;
      continue;
    }
    int precision = 6;
    if (pattern[i] == '.') {
      ++i;
      precision = 0;
      while (i < pattern.size() && pattern[i] >= '0' && pattern[i] <= '9') precision = precision * 10 + (pattern[i++] - '0');
    }
    // Length modifiers carry no meaning here: every integer argument is already 64 bits wide.
    while (i < pattern.size() && (pattern[i] == 'l' || pattern[i] == 'h' || pattern[i] == 'I')) ++i;
    if (i >= pattern.size()) break;
    const char conv = pattern[i++];
    const FormatArg* a = arg != end ? arg++ : nullptr;
    switch (conv) {
      case 'd':
      case 'i':
      case 'u':
        integer(a ? a->integer() : 0);
        break;
      case 'f':
      case 'F':
        fixed(a ? a->real() : 0.0, precision);
        break;
      case 's':
      case 'S':
        if (a) {
          if (a->kind() == FormatArg::Kind::Text) to.put(a->text());
          else if (a->kind() == FormatArg::Kind::Int) integer(a->integer());
          else fixed(a->real(), 6);
        }
        break;
      default:
        // Not a conversion this formatter knows: keep the text as written.
        to.put('%');
        to.put(conv);
        break;
    }
  }
}

std::string format(std::string_view pattern, std::initializer_list<FormatArg> args) {
  // No reservation: most results are short enough to stay inside the string itself.
  std::string out;
  formatTo(out, pattern, args);
  return out;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'a' && x <= 'z') x = static_cast<char>(x - 32);
    if (y >= 'a' && y <= 'z') y = static_cast<char>(y - 32);
    if (x != y) return false;
  }
  return true;
}

std::string toUpperAscii(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return out;
}

}  // namespace platform
