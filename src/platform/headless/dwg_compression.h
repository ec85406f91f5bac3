// The two LZ77-style compressions of DWG pages: the R2004 one (also R2010 and later) and the R2007 one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace headless {

// How much a page decompressed to, and why it stopped early (nullptr when the data ended normally).
struct DwgDecompressed {
  std::size_t written = 0;
  const char* error = nullptr;
};

// Decompress into out, which bounds the result: data that would write past it, read past the input or
// refer back before the start of out stops with an error, keeping what was written. Nothing is
// allocated, so one buffer serves every page.
DwgDecompressed decompressR2004(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);
DwgDecompressed decompressR2007(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

}  // namespace headless
