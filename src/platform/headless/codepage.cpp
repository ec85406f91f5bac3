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

bool isValidUtf8(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size()) {
    const auto b = static_cast<unsigned char>(s[i]);
    int extra;
    if (b < 0x80) { ++i; continue; }
    if ((b & 0xE0) == 0xC0 && b >= 0xC2) extra = 1;
    else if ((b & 0xF0) == 0xE0) extra = 2;
    else if ((b & 0xF8) == 0xF0 && b <= 0xF4) extra = 3;
    else return false;
    if (i + extra >= s.size()) return false;
    for (int k = 1; k <= extra; ++k)
      if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return false;
    i += extra + 1;
  }
  return true;
}

bool isAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

// Converts with iconv to UTF-8, replacing each unconvertible byte by U+FFFD.
void iconvToUtf8(iconv_t cd, std::string_view raw, std::string& out) {
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
      ++in;
      --inLeft;
      iconv(cd, nullptr, nullptr, nullptr, nullptr);
    }
  }
}

}  // namespace

std::string iconvNameOf(std::string_view dwgCodepage) {
  for (const auto& cp : kCodepages)
    if (platform::equalsIgnoreCase(cp.dwg, dwgCodepage)) return cp.iconv;
  return {};
}

TextDecoder::TextDecoder(std::string_view codepage, bool utf8) : utf8_(utf8) {
  std::string name = iconvNameOf(codepage);
  if (name.empty()) {
    known_ = codepage.empty();
    name = "CP1252";  // the host's default code page
  }
  if (name == "UTF-8") {
    utf8_ = true;
    name = "CP1252";
  }
  const iconv_t cd = iconv_open("UTF-8", name.c_str());
  if (cd == kNoIconv) {
    known_ = false;
    for (int b = 0; b < 256; ++b) table_[b] = b < 0x80 ? static_cast<char32_t>(b) : kReplacement;
    return;
  }
  // A code page is single-byte when every byte converts on its own.
  singleByte_ = true;
  for (int b = 0; b < 256 && singleByte_; ++b) {
    char in[1] = {static_cast<char>(b)};
    char outBuf[8];
    char* ip = in;
    char* op = outBuf;
    std::size_t il = 1, ol = sizeof outBuf;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    if (iconv(cd, &ip, &il, &op, &ol) == static_cast<std::size_t>(-1)) {
      if (errno == EINVAL && b >= 0x80) singleByte_ = false;  // a lead byte of a longer sequence
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

void TextDecoder::decodeBytes(std::string_view raw, std::string& out) {
  if (isAscii(raw)) {
    out.append(raw);
    return;
  }
  if (utf8_ && isValidUtf8(raw)) {
    out.append(raw);
    return;
  }
  // Older drawings, and bytes of a UTF-8 drawing that are not UTF-8, are read in the drawing's code page.
  if (iconv_) {
    decodeMultiByte(raw, out, iconv_);
    return;
  }
  for (char c : raw) platform::appendUtf8(out, table_[static_cast<unsigned char>(c)]);
}

void TextDecoder::decodeMultiByte(std::string_view raw, std::string& out, void* cd) {
  iconvToUtf8(static_cast<iconv_t>(cd), raw, out);
}

void TextDecoder::decodeMif(int page, unsigned bytes, std::string& out) {
  if (!mif_[page]) {
    const iconv_t cd = iconv_open("UTF-8", kMifPages[page]);
    if (cd == kNoIconv) {
      platform::appendUtf8(out, kReplacement);
      return;
    }
    mif_[page] = cd;
  }
  // Four hex digits give a double-byte character, or a single byte when the first byte is zero.
  const char pair[2] = {static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)};
  const std::string_view chars = (bytes >> 8) ? std::string_view(pair, 2) : std::string_view(pair + 1, 1);
  decodeMultiByte(chars, out, mif_[page]);
}

void TextDecoder::decode(std::string_view raw, std::string& out) {
  std::size_t start = 0;
  std::size_t i = raw.find('\\');
  if (i == std::string_view::npos) {
    decodeBytes(raw, out);
    return;
  }
  while (i != std::string_view::npos && i + 2 < raw.size()) {
    const char kind = raw[i + 1];
    if ((kind == 'U' || kind == 'u') && raw[i + 2] == '+') {
      const long cp = hexValue(raw, i + 3, 4);
      if (cp >= 0) {
        decodeBytes(raw.substr(start, i - start), out);
        // A UTF-16 surrogate pair is written as two escapes.
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 14 <= raw.size() && raw.substr(i + 7, 3) == "\\U+") {
          const long lo = hexValue(raw, i + 10, 4);
          if (lo >= 0xDC00 && lo <= 0xDFFF) {
            platform::appendUtf8(out, static_cast<char32_t>(0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00)));
            start = i + 14;
            i = raw.find('\\', start);
            continue;
          }
        }
        platform::appendUtf8(out, static_cast<char32_t>(cp));
        start = i + 7;
        i = raw.find('\\', start);
        continue;
      }
    } else if ((kind == 'M' || kind == 'm') && raw[i + 2] == '+' && i + 3 < raw.size()) {
      const int page = raw[i + 3] - '0';
      const long bytes = hexValue(raw, i + 4, 4);
      if (page >= 1 && page <= 5 && bytes >= 0) {
        decodeBytes(raw.substr(start, i - start), out);
        decodeMif(page, static_cast<unsigned>(bytes), out);
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
  decodeBytes(raw.substr(start), out);
}

}  // namespace headless
