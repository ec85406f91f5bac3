// UTF conversions and the printf-exact formatter.
#include "platform/text.h"

#include <bit>
#include <charconv>
#include <cmath>

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

// Fixed-point formatting by exact integer arithmetic, several times faster than the general routine.
// The double is m * 2^q with a 53-bit integer m; for 2^-60 <= |v| and |v| * 10^d < 2^52 the product
// m * 10^d fits 128 bits and the shift by -q (at most 112) splits it exactly into the integer part and a
// remainder, so ties are recognised exactly. Zero, the commonest value of all, is written directly. Other
// values (and compilers without 128-bit integers) return false and take the general path.
bool appendFixedFast(std::string& out, double value, int decimals) {
#if defined(__SIZEOF_INT128__)
  __extension__ using u128 = unsigned __int128;
  static constexpr unsigned long long kScale[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
  const double a = std::fabs(value);
  unsigned long long n = 0;
  if (a != 0.0) {
    if (!(a >= 0x1p-60) || a * static_cast<double>(kScale[decimals]) >= 4503599627370496.0) return false;  // 2^52
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
  char buf[40];
  char* p = buf + sizeof buf;
  for (int i = 0; i < decimals; ++i) {
    *--p = static_cast<char>('0' + n % 10);
    n /= 10;
  }
  if (decimals > 0) *--p = '.';
  do {
    *--p = static_cast<char>('0' + n % 10);
    n /= 10;
  } while (n != 0);
  if (std::signbit(value)) *--p = '-';
  out.append(p, buf + sizeof buf);
  return true;
#else
  (void)out;
  (void)value;
  (void)decimals;
  return false;
#endif
}

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
  if (!std::isfinite(value)) {
    // printf spells these "inf", "-inf", "nan" and "-nan".
    if (std::isnan(value)) out += std::signbit(value) ? "-nan" : "nan";
    else out += value < 0 ? "-inf" : "inf";
    return;
  }
  if (decimals >= 0 && decimals <= 6 && appendFixedFast(out, value, decimals)) return;
  // std::to_chars with a precision is specified to give printf's result, and is exact (no double
  // rounding); the largest double needs 309 integer digits.
  char buf[352];
  const auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, decimals);
  out.append(buf, res.ptr);
}

void appendInt(std::string& out, long long value) {
  char buf[24];
  const auto res = std::to_chars(buf, buf + sizeof buf, value);
  out.append(buf, res.ptr);
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
  const FormatArg* arg = args.begin();
  const FormatArg* const end = args.end();
  std::size_t i = 0;
  while (i < pattern.size()) {
    const std::size_t pct = pattern.find('%', i);
    if (pct == std::string_view::npos) {
      out.append(pattern.substr(i));
      break;
    }
    out.append(pattern.substr(i, pct - i));
    i = pct + 1;
    if (i >= pattern.size()) {
      out += '%';
      break;
    }
    if (pattern[i] == '%') {
      out += '%';
      ++i;
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
        appendInt(out, a ? a->integer() : 0);
        break;
      case 'f':
      case 'F':
        appendFixed(out, a ? a->real() : 0.0, precision);
        break;
      case 's':
      case 'S':
        if (a) {
          if (a->kind() == FormatArg::Kind::Text) out.append(a->text());
          else if (a->kind() == FormatArg::Kind::Int) appendInt(out, a->integer());
          else appendFixed(out, a->real(), 6);
        }
        break;
      default:
        // Not a conversion this formatter knows: keep the text as written.
        out += '%';
        out += conv;
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
