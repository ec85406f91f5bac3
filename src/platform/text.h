// Text primitives: UTF-8/UTF-16 conversion and the printf-exact formatter behind every property text.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace platform {

// A running 64-bit FNV-1a digest of bytes: equal for equal bytes, and cheap to take of long texts.
class Fnv1a {
 public:
  void add(std::string_view bytes) {
    for (const unsigned char c : bytes) h_ = (h_ ^ c) * 1099511628211ull;
  }
  std::uint64_t value() const { return h_; }

 private:
  std::uint64_t h_ = 14695981039346656037ull;
};

// Strings are UTF-8 inside the system; the host's strings are UTF-16, so digests and buffer limits
// count UTF-16 code units. Malformed UTF-8 bytes convert to U+FFFD.
std::u16string utf8ToUtf16(std::string_view utf8);
std::string utf16ToUtf8(std::u16string_view utf16);
// Appends the code point as UTF-8 (U+FFFD for values that are not scalar values).
void appendUtf8(std::string& out, char32_t codePoint);
// Cuts a UTF-8 text to at most maxUnits UTF-16 code units without splitting a character.
std::string truncateUtf16Units(std::string_view utf8, std::size_t maxUnits);

// Appends exactly what printf gives for "%.<decimals>f" (C rounding, "-0.00" for negative zero).
void appendFixed(std::string& out, double value, int decimals);
// Appends exactly what printf gives for "%d" / "%lld".
void appendInt(std::string& out, long long value);

// One argument of format(); holds a number or a view of a text (the text must outlive the call).
class FormatArg {
 public:
  enum class Kind : std::uint8_t { Int, Real, Text };
  FormatArg(int v) : kind_(Kind::Int), i_(v) {}
  FormatArg(long v) : kind_(Kind::Int), i_(v) {}
  FormatArg(long long v) : kind_(Kind::Int), i_(v) {}
  FormatArg(unsigned v) : kind_(Kind::Int), i_(v) {}
  FormatArg(unsigned long v) : kind_(Kind::Int), i_(static_cast<long long>(v)) {}
  FormatArg(unsigned long long v) : kind_(Kind::Int), i_(static_cast<long long>(v)) {}
  FormatArg(double v) : kind_(Kind::Real), d_(v) {}
  FormatArg(const char* v) : kind_(Kind::Text), s_(v) {}
  FormatArg(std::string_view v) : kind_(Kind::Text), s_(v) {}
  FormatArg(const std::string& v) : kind_(Kind::Text), s_(v) {}

  Kind kind() const { return kind_; }
  long long integer() const;
  double real() const;
  std::string_view text() const { return kind_ == Kind::Text ? s_ : std::string_view(); }

 private:
  Kind kind_;
  long long i_ = 0;
  double d_ = 0.0;
  std::string_view s_;
};

// A printf work-alike for the conversions the system's texts use: "%s", "%d", "%f", "%.Nf" and "%%".
// Arguments left over are ignored and missing ones format as empty or zero, as a careful printf would;
// a number given for "%s" or a text for a number conversion formats as its value/zero.
void formatTo(std::string& out, std::string_view pattern, std::initializer_list<FormatArg> args);
std::string format(std::string_view pattern, std::initializer_list<FormatArg> args);

template <typename... Args>
std::string fmt(std::string_view pattern, const Args&... args) {
  return format(pattern, {FormatArg(args)...});
}
// fmt appended to a text that already exists, so that a buffer reused for many texts allocates once.
template <typename... Args>
void fmtTo(std::string& out, std::string_view pattern, const Args&... args) {
  formatTo(out, pattern, {FormatArg(args)...});
}

// ASCII-only case folding, used for names the host compares without regard to case.
bool equalsIgnoreCase(std::string_view a, std::string_view b);
std::string toUpperAscii(std::string_view s);

}  // namespace platform
