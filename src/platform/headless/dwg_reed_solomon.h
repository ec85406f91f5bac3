// The Reed-Solomon coding of R2007 pages: code words of 255 bytes, interleaved across a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace headless {

// A page of blockCount code words is stored interleaved: byte i of word b sits at i * blockCount + b.
// Each word holds dataBytes of data followed by its parity bytes.
constexpr std::size_t kRsWordBytes = 255;
constexpr std::size_t kRsSystemDataBytes = 239;  // system pages: 16 parity bytes, up to 8 errors mended
constexpr std::size_t kRsPageDataBytes = 251;    // data pages: 4 parity bytes

struct DwgRsDecoded {
  std::size_t correctedBytes = 0;
  std::size_t damagedWords = 0;  // words with more errors than the code can mend (their data kept as read)
};

// System pages: de-interleaves the words in (blockCount * 255 bytes), mends what errors it can and writes
// their data bytes one word after the other to out (blockCount * 239 bytes).
DwgRsDecoded decodeSystemWords(std::span<const std::uint8_t> in, std::size_t blockCount, std::span<std::uint8_t> out);

// Data pages: de-interleaves only, keeping the first dataBytes of each word (their pages carry checksums
// of their own).
void deinterleaveWords(std::span<const std::uint8_t> in, std::size_t blockCount, std::size_t dataBytes,
                       std::span<std::uint8_t> out);

}  // namespace headless
