// Reed-Solomon decoding of R2007 system pages (Berlekamp-Massey, Chien search, Forney) and de-interleaving.
#include "platform/headless/dwg_reed_solomon.h"

#include <array>

namespace headless {

namespace {

constexpr std::size_t kParity = kRsWordBytes - kRsSystemDataBytes;

// GF(256) built on x^8 + x^6 + x^5 + x^3 + 1, the field of the system pages' code.
struct Field {
  std::array<std::uint8_t, 512> exp{};
  std::array<int, 256> log{};
  constexpr Field() {
    unsigned x = 1;
    for (int i = 0; i < 255; ++i) {
      exp[i] = static_cast<std::uint8_t>(x);
      log[x] = i;
      x <<= 1;
      if (x & 0x100) x ^= 0x169;
    }
    for (int i = 255; i < 512; ++i) exp[i] = exp[i - 255];
  }
  constexpr std::uint8_t mul(std::uint8_t a, std::uint8_t b) const {
    return (a == 0 || b == 0) ? 0 : exp[log[a] + log[b]];
  }
  constexpr std::uint8_t div(std::uint8_t a, std::uint8_t b) const {
    return a == 0 ? 0 : exp[log[a] + 255 - log[b]];
  }
  // alpha to the power n, for any n >= 0.
  constexpr std::uint8_t power(std::size_t n) const { return exp[n % 255]; }
};
constexpr Field kField;

using Word = std::array<std::uint8_t, kRsWordBytes>;  // coefficient of x^i at [i]

// The word as a polynomial: parity bytes are the lowest powers, data bytes above them.
void toPolynomial(const std::uint8_t* stored, Word& word) {
  for (std::size_t i = 0; i < kParity; ++i) word[i] = stored[kRsSystemDataBytes + i];
  for (std::size_t i = 0; i < kRsSystemDataBytes; ++i) word[kParity + i] = stored[i];
}

std::uint8_t evaluate(const Word& word, std::size_t rootPower) {
  std::uint8_t sum = 0;
  for (std::size_t i = kRsWordBytes; i-- > 0;) sum = static_cast<std::uint8_t>(kField.mul(sum, kField.power(rootPower)) ^ word[i]);
  return sum;
}

// Syndromes at alpha^1 .. alpha^16; all zero for an intact word.
bool syndromes(const Word& word, std::array<std::uint8_t, kParity>& s) {
  bool clean = true;
  for (std::size_t j = 0; j < kParity; ++j) {
    s[j] = evaluate(word, j + 1);
    clean = clean && s[j] == 0;
  }
  return clean;
}

// Mends the word in place; the number of bytes changed, or -1 when it has too many errors.
int correct(Word& word) {
  std::array<std::uint8_t, kParity> s{};
  if (syndromes(word, s)) return 0;
  // Berlekamp-Massey: the shortest error locator that generates the syndromes.
  std::array<std::uint8_t, kParity + 1> locator{1}, previous{1};
  std::size_t errors = 0, shift = 1;
  std::uint8_t lastDiscrepancy = 1;
  for (std::size_t n = 0; n < kParity; ++n) {
    std::uint8_t d = s[n];
    for (std::size_t i = 1; i <= errors; ++i) d ^= kField.mul(locator[i], s[n - i]);
    if (d == 0) {
      ++shift;
      continue;
    }
    const auto saved = locator;
    const std::uint8_t factor = kField.div(d, lastDiscrepancy);
    for (std::size_t i = 0; i + shift <= kParity; ++i) locator[i + shift] ^= kField.mul(factor, previous[i]);
    if (2 * errors <= n) {
      errors = n + 1 - errors;
      previous = saved;
      lastDiscrepancy = d;
      shift = 1;
    } else {
      ++shift;
    }
  }
  if (errors > kParity / 2) return -1;
  // Omega = S(x) * locator(x) mod x^16, for the error values.
  std::array<std::uint8_t, kParity> omega{};
  for (std::size_t i = 0; i < kParity; ++i)
    for (std::size_t j = 0; j <= i && j <= errors; ++j) omega[i] ^= kField.mul(s[i - j], locator[j]);
  // Chien search over every position, Forney for the value at each root found.
  std::size_t found = 0;
  Word mended = word;
  for (std::size_t position = 0; position < kRsWordBytes; ++position) {
    const std::uint8_t inverse = kField.power(255 - position);  // X^-1
    std::uint8_t value = 0, derivative = 0, omegaValue = 0;
    for (std::size_t i = errors + 1; i-- > 0;) {
      value = static_cast<std::uint8_t>(kField.mul(value, inverse) ^ locator[i]);
      if (i % 2 == 1) derivative = static_cast<std::uint8_t>(kField.mul(derivative, kField.mul(inverse, inverse)) ^ locator[i]);
    }
    if (value != 0) continue;
    for (std::size_t i = kParity; i-- > 0;) omegaValue = static_cast<std::uint8_t>(kField.mul(omegaValue, inverse) ^ omega[i]);
    if (derivative == 0) return -1;
    mended[position] ^= kField.div(omegaValue, derivative);
    ++found;
  }
  if (found != errors || !syndromes(mended, s)) return -1;
  word = mended;
  return static_cast<int>(found);
}

}  // namespace

DwgRsDecoded decodeSystemWords(std::span<const std::uint8_t> in, std::size_t blockCount, std::span<std::uint8_t> out) {
  DwgRsDecoded result;
  std::array<std::uint8_t, kRsWordBytes> stored{};
  Word word{};
  for (std::size_t b = 0; b < blockCount; ++b) {
    for (std::size_t i = 0; i < kRsWordBytes; ++i) stored[i] = in[i * blockCount + b];
    toPolynomial(stored.data(), word);
    const int mended = correct(word);
    if (mended < 0) ++result.damagedWords;
    else result.correctedBytes += static_cast<std::size_t>(mended);
    std::uint8_t* to = out.data() + b * kRsSystemDataBytes;
    for (std::size_t i = 0; i < kRsSystemDataBytes; ++i) to[i] = mended < 0 ? stored[i] : word[kParity + i];
  }
  return result;
}

void deinterleaveWords(std::span<const std::uint8_t> in, std::size_t blockCount, std::size_t dataBytes,
                       std::span<std::uint8_t> out) {
  for (std::size_t b = 0; b < blockCount; ++b)
    for (std::size_t i = 0; i < dataBytes; ++i) out[b * dataBytes + i] = in[i * blockCount + b];
}

}  // namespace headless
