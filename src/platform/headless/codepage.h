// Decoding of drawing texts to UTF-8: the drawing's code page, UTF-8 for R2007 and later, and the
// "\U+XXXX" and "\M+nXXXX" escapes.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace headless {

// The iconv name of a $DWGCODEPAGE value ("ANSI_936" -> "GBK"); empty when unknown.
std::string iconvNameOf(std::string_view dwgCodepage);

// How a drawing stores its texts: in its code page (before R2007), in UTF-8 (R2007 and later), or, when
// its release is not known, in UTF-8 where the bytes are valid UTF-8 and in its code page elsewhere.
enum class TextEncoding { CodePage, Utf8, Utf8OrCodePage };

class TextDecoder {
 public:
  // codepage: the drawing's $DWGCODEPAGE; "UTF-8" and "UTF8" make any drawing's texts UTF-8.
  TextDecoder(std::string_view codepage, TextEncoding encoding);
  ~TextDecoder();
  TextDecoder(const TextDecoder&) = delete;
  TextDecoder& operator=(const TextDecoder&) = delete;

  // Appends the text as UTF-8. Bytes that are not valid in the drawing's encoding, and escapes that name
  // no character, become U+FFFD; returns how many did.
  std::size_t decode(std::string_view raw, std::string& out);
  bool knownCodepage() const { return known_; }
  TextEncoding encoding() const { return encoding_; }
  // Whether the byte starts a character of two or more bytes in the code page (GBK, Big5, Shift-JIS).
  bool isLeadByte(unsigned char byte) const { return leadBytes_[byte]; }

 private:
  std::size_t decodeBytes(std::string_view raw, std::string& out);
  std::size_t decodeMif(int page, unsigned bytes, std::string& out);

  TextEncoding encoding_;
  bool known_ = true;
  bool singleByte_ = true;
  std::array<char32_t, 256> table_{};  // single-byte code pages: byte to code point
  std::array<bool, 256> leadBytes_{};
  void* iconv_ = nullptr;              // multi-byte code pages
  std::array<void*, 6> mif_{};         // "\M+n" pages 1 to 5, opened on first use
};

}  // namespace headless
