// Code-page decoding through iconv, with a byte table for single-byte code pages.
#include "platform/headless/codepage.h"

#include <iconv.h>

#include <cstring>
#include <vector>

#include "platform/text.h"

namespace headless {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
const iconv_t kNoIconv = reinterpret_cast<iconv_t>(-1);

struct CodepageName {
  const char* dwg;
  const char* iconv;
};
constexpr CodepageName kCodepages[] = {
    {"ANSI_874", "CP874"},     {"ANSI_932", "CP932"},     {"ANSI_936", "GBK"},         {"ANSI_949", "CP949"},
    {"ANSI_950", "BIG5"},      {"ANSI_1250", "CP1250"},   {"ANSI_1251", "CP1251"},     {"ANSI_1252", "CP1252"},
    {"ANSI_1253", "CP1253"},   {"ANSI_1254", "CP1254"},   {"ANSI_1255", "CP1255"},     {"ANSI_1256", "CP1256"},
    {"ANSI_1257", "CP1257"},   {"ANSI_1258", "CP1258"},   {"DOS437", "CP437"},         {"DOS850", "CP850"},
    {"DOS852", "CP852"},       {"DOS855", "CP855"},       {"DOS857", "CP857"},         {"DOS860", "CP860"},
    {"DOS861", "CP861"},       {"DOS863", "CP863"},       {"DOS864", "CP864"},         {"DOS865", "CP865"},
    {"DOS869", "CP869"},       {"DOS932", "CP932"},       {"DOS936", "GBK"},           {"DOS949", "CP949"},
    {"DOS950", "BIG5"},        {"MACINTOSH", "MACINTOSH"}, {"BIG5", "BIG5"},           {"KSC5601", "CP949"},
    {"JOHAB", "JOHAB"},        {"GB2312", "GBK"},         {"ISO8859-1", "ISO-8859-1"}, {"ISO8859-2", "ISO-8859-2"},
    {"ISO8859-3", "ISO-8859-3"}, {"ISO8859-4", "ISO-8859-4"}, {"ISO8859-5", "ISO-8859-5"},
    {"ISO8859-6", "ISO-8859-6"}, {"ISO8859-7", "ISO-8859-7"}, {"ISO8859-8", "ISO-8859-8"},
    {"ISO8859-9", "ISO-8859-9"}, {"ASCII", "CP1252"},     {"UTF8", "UTF-8"},           {"UTF-8", "UTF-8"},
};

// The code pages of the "\M+n" escapes: 1 Japanese, 2 traditional Chinese, 3 Korean (Wansung),
// 4 Korean (Johab), 5 simplified Chinese.
constexpr const char* kMifPages[] = {nullptr, "CP932", "BIG5", "CP949", "JOHAB", "GBK"};

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Reads n hex digits at s[i]; -1 when they are not all hex digits.
long hexValue(std::string_view s, std::size_t i, int n) {
  if (i + n > s.size()) return -1;
  long v = 0;
  for (int k = 0; k < n; ++k) {
    const int d = hexDigit(s[i + k]);
    if (d < 0) return -1;
    v = v * 16 + d;
  }
  return v;
}

// The length of the well-formed UTF-8 sequence at s[i] (Unicode's table of well-formed byte sequences:
// no overlong forms, no surrogates, nothing past U+10FFFF), or 0 when the bytes there form none.
std::size_t utf8SequenceAt(std::string_view s, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(s[i + k]); };
  const unsigned char b = byte(0);
  if (b < 0x80) return 1;
  std::size_t n;
  unsigned char lo = 0x80, hi = 0xBF;  // the range of the second byte
  if (b >= 0xC2 && b <= 0xDF) n = 2;
  else if (b >= 0xE0 && b <= 0xEF) n = 3, lo = b == 0xE0 ? 0xA0 : 0x80, hi = b == 0xED ? 0x9F : 0xBF;
  else if (b >= 0xF0 && b <= 0xF4) n = 4, lo = b == 0xF0 ? 0x90 : 0x80, hi = b == 0xF4 ? 0x8F : 0xBF;
  else return 0;
  if (i + n > s.size() || byte(1) < lo || byte(1) > hi) return 0;
  for (std::size_t k = 2; k < n; ++k)
    if ((byte(k) & 0xC0) != 0x80) return 0;
  return n;
}

bool isWellFormedUtf8(std::string_view s) {
  for (std::size_t i = 0, n; i < s.size(); i += n)
    if ((n = utf8SequenceAt(s, i)) == 0) return false;
  return true;
}

// Copies UTF-8, each byte that begins no well-formed sequence replaced by U+FFFD; returns how many were.
std::size_t appendUtf8Replacing(std::string_view raw, std::string& out) {
  std::size_t replaced = 0;
  std::size_t run = 0;  // start of the well-formed bytes not yet copied
  for (std::size_t i = 0; i < raw.size();) {
    if (const std::size_t n = utf8SequenceAt(raw, i)) {
      i += n;
      continue;
    }
    out.append(raw.substr(run, i - run));
    platform::appendUtf8(out, kReplacement);
    ++replaced;
    run = ++i;
  }
  out.append(raw.substr(run));
  return replaced;
}

bool isAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

// Converts with iconv to UTF-8, replacing each unconvertible byte by U+FFFD; returns how many were.
std::size_t iconvToUtf8(iconv_t cd, std::string_view raw, std::string& out) {
  std::size_t replaced = 0;
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  std::vector<char> buf(raw.size() * 4 + 16);
  char* in = const_cast<char*>(raw.data());
  std::size_t inLeft = raw.size();
  while (inLeft > 0) {
    char* o = buf.data();
    std::size_t oLeft = buf.size();
    const std::size_t r = iconv(cd, &in, &inLeft, &o, &oLeft);
    out.append(buf.data(), o);
    if (r == static_cast<std::size_t>(-1)) {
      if (errno == E2BIG) continue;
      // An invalid or incomplete sequence: one byte becomes a replacement character.
      platform::appendUtf8(out, kReplacement);
      ++replaced;
      ++in;
      --inLeft;
      iconv(cd, nullptr, nullptr, nullptr, nullptr);
    }
  }
  return replaced;
}

}  // namespace

std::string iconvNameOf(std::string_view dwgCodepage) {
  for (const auto& cp : kCodepages)
    if (platform::equalsIgnoreCase(cp.dwg, dwgCodepage)) return cp.iconv;
  return {};
}

TextDecoder::TextDecoder(std::string_view codepage, TextEncoding encoding) : encoding_(encoding) {
  std::string name = iconvNameOf(codepage);
  if (name.empty()) {
    known_ = codepage.empty();
    name = "CP1252";  // the host's default code page
  }
  if (name == "UTF-8") {
    encoding_ = TextEncoding::Utf8;
    name = "CP1252";
  }
  const iconv_t cd = iconv_open("UTF-8", name.c_str());
  if (cd == kNoIconv) {
    known_ = false;
    for (int b = 0; b < 256; ++b) table_[b] = b < 0x80 ? static_cast<char32_t>(b) : kReplacement;
    return;
  }
  // A code page is single-byte when every byte converts on its own; the others have lead bytes.
  singleByte_ = true;
  for (int b = 0; b < 256; ++b) {
    char in[1] = {static_cast<char>(b)};
    char outBuf[8];
    char* ip = in;
    char* op = outBuf;
    std::size_t il = 1, ol = sizeof outBuf;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    if (iconv(cd, &ip, &il, &op, &ol) == static_cast<std::size_t>(-1)) {
      if (errno == EINVAL && b >= 0x80) {  // a lead byte of a longer sequence
        singleByte_ = false;
        leadBytes_[b] = true;
      }
      table_[b] = kReplacement;
      continue;
    }
    const std::u16string u = platform::utf8ToUtf16(std::string_view(outBuf, static_cast<std::size_t>(op - outBuf)));
    table_[b] = u.empty() ? kReplacement : u[0];
  }
  if (singleByte_) iconv_close(cd);
  else iconv_ = cd;
}

TextDecoder::~TextDecoder() {
  if (iconv_) iconv_close(static_cast<iconv_t>(iconv_));
  for (void* cd : mif_)
    if (cd) iconv_close(static_cast<iconv_t>(cd));
}

std::size_t TextDecoder::decodeBytes(std::string_view raw, std::string& out) {
  if (isAscii(raw)) {
    out.append(raw);
    return 0;
  }
  if (encoding_ == TextEncoding::Utf8) return appendUtf8Replacing(raw, out);
  if (encoding_ == TextEncoding::Utf8OrCodePage && isWellFormedUtf8(raw)) {
    out.append(raw);
    return 0;
  }
  if (iconv_) return iconvToUtf8(static_cast<iconv_t>(iconv_), raw, out);
  std::size_t replaced = 0;
  for (char c : raw) {
    const char32_t cp = table_[static_cast<unsigned char>(c)];
    replaced += cp == kReplacement;
    platform::appendUtf8(out, cp);
  }
  return replaced;
}

std::size_t TextDecoder::decodeMif(int page, unsigned bytes, std::string& out) {
  if (!mif_[page]) {
    const iconv_t cd = iconv_open("UTF-8", kMifPages[page]);
    if (cd == kNoIconv) {
      platform::appendUtf8(out, kReplacement);
      return 1;
    }
    mif_[page] = cd;
  }
  // Four hex digits give a double-byte character, or a single byte when the first byte is zero.
  const char pair[2] = {static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)};
  const std::string_view chars = (bytes >> 8) ? std::string_view(pair, 2) : std::string_view(pair + 1, 1);
  return iconvToUtf8(static_cast<iconv_t>(mif_[page]), chars, out);
}

std::size_t TextDecoder::decode(std::string_view raw, std::string& out) {
  std::size_t start = 0;
  std::size_t i = raw.find('\\');
  if (i == std::string_view::npos) return decodeBytes(raw, out);
  std::size_t replaced = 0;
  while (i != std::string_view::npos && i + 2 < raw.size()) {
    const char kind = raw[i + 1];
    if ((kind == 'U' || kind == 'u') && raw[i + 2] == '+') {
      long cp = hexValue(raw, i + 3, 4);
      if (cp >= 0) {
        replaced += decodeBytes(raw.substr(start, i - start), out);
        start = i + 7;
        // A UTF-16 surrogate pair is written as two escapes.
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 14 <= raw.size() && raw.substr(i + 7, 3) == "\\U+") {
          const long lo = hexValue(raw, i + 10, 4);
          if (lo >= 0xDC00 && lo <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00);
            start = i + 14;
          }
        }
        // A lone surrogate, or NUL, names no character a text can hold.
        if (cp == 0 || (cp >= 0xD800 && cp <= 0xDFFF)) {
          cp = kReplacement;
          ++replaced;
        }
        platform::appendUtf8(out, static_cast<char32_t>(cp));
        i = raw.find('\\', start);
        continue;
      }
    } else if ((kind == 'M' || kind == 'm') && raw[i + 2] == '+' && i + 3 < raw.size()) {
      const int page = raw[i + 3] - '0';
      const long bytes = hexValue(raw, i + 4, 4);
      if (page >= 1 && page <= 5 && bytes >= 0) {
        replaced += decodeBytes(raw.substr(start, i - start), out);
        replaced += decodeMif(page, static_cast<unsigned>(bytes), out);
        start = i + 8;
        i = raw.find('\\', start);
        continue;
      }
    } else if (kind == '\\') {
      // An escaped backslash stays as written, and cannot start an escape.
      i = raw.find('\\', i + 2);
      continue;
    }
    i = raw.find('\\', i + 1);
  }
  return replaced + decodeBytes(raw.substr(start), out);
}

}  // namespace headless
