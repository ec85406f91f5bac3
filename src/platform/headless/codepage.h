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

class TextDecoder {
 public:
  // utf8: the drawing stores UTF-8 (R2007 and later); codepage: its $DWGCODEPAGE, used for older
  // drawings and for bytes that are not valid UTF-8.
  TextDecoder(std::string_view codepage, bool utf8);
  ~TextDecoder();
  TextDecoder(const TextDecoder&) = delete;
  TextDecoder& operator=(const TextDecoder&) = delete;

  // Appends the text as UTF-8. Bytes that the code page cannot map become U+FFFD.
  void decode(std::string_view raw, std::string& out);
  bool knownCodepage() const { return known_; }

 private:
  void decodeBytes(std::string_view raw, std::string& out);
  void decodeMultiByte(std::string_view raw, std::string& out, void* cd);
  void decodeMif(int page, unsigned bytes, std::string& out);

  bool utf8_;
  bool known_ = true;
  bool singleByte_ = true;
  std::array<char32_t, 256> table_{};  // single-byte code pages: byte to code point
  void* iconv_ = nullptr;              // multi-byte code pages
  std::array<void*, 6> mif_{};         // "\M+n" pages 1 to 5, opened on first use
};

}  // namespace headless
