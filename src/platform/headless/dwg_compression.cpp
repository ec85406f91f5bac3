// Decompression of R2004 and R2007 DWG pages into caller-provided buffers.
#include "platform/headless/dwg_compression.h"

#include <array>
#include <cstring>

namespace headless {

namespace {

constexpr const char* kInputEnds = "the compressed data ends inside an instruction";
constexpr const char* kOutputFull = "the data decompresses to more bytes than the page holds";
constexpr const char* kBadReference = "a back-reference points before the start of the page";
constexpr const char* kBadOpcode = "an instruction code that is never used";

// Both formats read bytes and copy runs between the same two cursors; every step is bounds checked and
// the first failure sticks.
class Cursor {
 public:
  Cursor(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) : in_(in), out_(out) {}

  bool more() const { return !error_ && pos_ < in_.size(); }
  const char* error() const { return error_; }
  DwgDecompressed result() const { return {written_, error_}; }
  void stop(const char* why) {
    if (!error_) error_ = why;
  }

  std::uint8_t next() {
    if (error_ || pos_ >= in_.size()) {
      stop(kInputEnds);
      return 0;
    }
    return in_[pos_++];
  }
  std::uint8_t peek() const { return pos_ < in_.size() ? in_[pos_] : 0; }
  void skip(std::size_t count) {
    if (count > in_.size() - pos_) stop(kInputEnds);
    else pos_ += count;
  }

  // The literal bytes as they stand; the R2007 format reorders them, so it asks for the source first.
  const std::uint8_t* takeLiteral(std::size_t count) {
    if (error_) return nullptr;
    if (count > in_.size() - pos_) {
      stop(kInputEnds);
      return nullptr;
    }
    if (count > out_.size() - written_) {
      stop(kOutputFull);
      return nullptr;
    }
    const std::uint8_t* source = in_.data() + pos_;
    pos_ += count;
    return source;
  }
  std::uint8_t* outputAt() { return out_.data() + written_; }
  void wrote(std::size_t count) { written_ += count; }

  void copyLiteral(std::size_t count) {
    if (const std::uint8_t* source = takeLiteral(count)) {
      if (count > 0) std::memcpy(outputAt(), source, count);
      wrote(count);
    }
  }

  // Copies count bytes from distance bytes back; the runs may overlap what they write.
  void copyMatch(std::size_t distance, std::size_t count) {
    if (error_) return;
    if (distance == 0 || distance > written_) return stop(kBadReference);
    if (count > out_.size() - written_) return stop(kOutputFull);
    std::uint8_t* to = out_.data() + written_;
    const std::uint8_t* from = to - distance;
    if (distance >= count) std::memcpy(to, from, count);
    else
      for (std::size_t i = 0; i < count; ++i) to[i] = from[i];
    written_ += count;
  }

 private:
  std::span<const std::uint8_t> in_;
  std::span<std::uint8_t> out_;
  std::size_t pos_ = 0;
  std::size_t written_ = 0;
  const char* error_ = nullptr;
};

// ---- R2004 ----

// After a zero byte that opens a long count: zeros each add 255, and the first other byte is added and ends
// the count.
std::size_t r2004ExtendedCount(Cursor& c, std::size_t total) {
  for (;;) {
    const std::uint8_t b = c.next();
    if (c.error()) return 0;
    if (b != 0) return total + b;
    total += 0xFF;
  }
}

// A literal run's length: a small count plus 3, or a zero that opens a long count. A byte with any of
// its high four bits set is the next instruction instead, and the run is empty.
std::size_t r2004LiteralLength(Cursor& c) {
  const std::uint8_t first = c.peek();
  if (first & 0xF0 || !c.more()) return 0;
  c.next();
  return (first != 0 ? first : r2004ExtendedCount(c, 0x0F)) + 3u;
}

// A match length that does not fit its instruction byte.
std::size_t r2004LongCount(Cursor& c) {
  const std::uint8_t first = c.next();
  return first != 0 ? first : r2004ExtendedCount(c, 0xFF);
}

}  // namespace

DwgDecompressed decompressR2004(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
  Cursor c(in, out);
  c.copyLiteral(r2004LiteralLength(c));
  while (c.more()) {
    const std::uint8_t op = c.next();
    if (op == 0x11) break;  // the end of the data
    std::size_t count = 0, offset = 0, literal = 0;
    auto twoByteOffset = [&](std::size_t add) {
      const std::uint8_t low = c.next();
      const std::uint8_t high = c.next();
      offset = ((low >> 2) | (std::size_t(high) << 6)) + add;
      literal = low & 0x03;
    };
    if (op >= 0x40) {
      count = ((op & 0xF0) >> 4) - 1;
      const std::uint8_t op2 = c.next();
      offset = (std::size_t(op2) << 2) | ((op & 0x0C) >> 2);
      literal = op & 0x03;
    } else if (op >= 0x21) {
      count = op - 0x1Eu;
      twoByteOffset(0);
    } else if (op == 0x20) {
      count = r2004LongCount(c) + 0x21;
      twoByteOffset(0);
    } else if (op >= 0x12) {
      count = (op & 0x0F) + 2u;
      twoByteOffset(0x3FFF);
    } else if (op == 0x10) {
      count = r2004LongCount(c) + 9;
      twoByteOffset(0x3FFF);
    } else {
      c.stop(kBadOpcode);
      break;
    }
    c.copyMatch(offset + 1, count);
    c.copyLiteral(literal != 0 ? literal : r2004LiteralLength(c));
  }
  return c.result();
}

// ---- R2007 ----

namespace {

// Literal runs of the R2007 format are stored in a shuffled order. A run of n bytes (up to 32) is written
// as pieces, each piece a run of its own copied from an offset of the source; runs of 1 to 4 bytes are the
// base cases (2 and 3 reversed, 1 and 4 as they stand). Longer runs go 32 bytes at a time.
struct Piece {
  std::uint8_t size, offset;
};
constexpr std::array<std::array<Piece, 5>, 33> kLiteralPieces = {{
    {},
    {},
    {},
    {},
    {},
    {{{1, 4}, {4, 0}}},
    {{{1, 5}, {4, 1}, {1, 0}}},
    {{{2, 5}, {4, 1}, {1, 0}}},
    {{{4, 0}, {4, 4}}},
    {{{1, 8}, {8, 0}}},
    {{{1, 9}, {8, 1}, {1, 0}}},
    {{{2, 9}, {8, 1}, {1, 0}}},
    {{{4, 8}, {8, 0}}},
    {{{1, 12}, {4, 8}, {8, 0}}},
    {{{1, 13}, {4, 9}, {8, 1}, {1, 0}}},
    {{{2, 13}, {4, 9}, {8, 1}, {1, 0}}},
    {{{8, 8}, {8, 0}}},
    {{{8, 9}, {1, 8}, {8, 0}}},
    {{{1, 17}, {16, 1}, {1, 0}}},
    {{{3, 16}, {16, 0}}},
    {{{4, 16}, {16, 0}}},
    {{{1, 20}, {4, 16}, {16, 0}}},
    {{{2, 20}, {4, 16}, {16, 0}}},
    {{{3, 20}, {4, 16}, {16, 0}}},
    {{{8, 16}, {16, 0}}},
    {{{8, 17}, {1, 16}, {16, 0}}},
    {{{1, 25}, {8, 17}, {1, 16}, {16, 0}}},
    {{{2, 25}, {8, 17}, {1, 16}, {16, 0}}},
    {{{4, 24}, {8, 16}, {16, 0}}},
    {{{1, 28}, {4, 24}, {8, 16}, {16, 0}}},
    {{{2, 28}, {4, 24}, {8, 16}, {16, 0}}},
    {{{1, 30}, {4, 26}, {8, 18}, {16, 2}, {2, 0}}},
    {{{16, 16}, {16, 0}}},
}};

using LiteralOrder = std::array<std::array<std::uint8_t, 32>, 33>;

// For each run length, the source index of every output byte.
constexpr void fillOrder(LiteralOrder& order, std::size_t n) {
  auto& o = order[n];
  if (n <= 4) {
    for (std::size_t i = 0; i < n; ++i) o[i] = static_cast<std::uint8_t>((n == 2 || n == 3) ? n - 1 - i : i);
    return;
  }
  std::size_t at = 0;
  for (const Piece& p : kLiteralPieces[n]) {
    if (p.size == 0) break;
    for (std::size_t i = 0; i < p.size; ++i) o[at++] = static_cast<std::uint8_t>(p.offset + order[p.size][i]);
  }
}
constexpr LiteralOrder makeLiteralOrder() {
  LiteralOrder order{};
  // Pieces are always shorter than the run they build, so building in increasing length is enough.
  for (std::size_t n = 1; n <= 32; ++n) fillOrder(order, n);
  return order;
}
constexpr LiteralOrder kLiteralOrder = makeLiteralOrder();

void r2007CopyLiteral(Cursor& c, std::size_t count) {
  const std::uint8_t* source = c.takeLiteral(count);
  if (!source) return;
  std::uint8_t* to = c.outputAt();
  for (std::size_t done = 0; done < count;) {
    const std::size_t run = count - done >= 32 ? 32 : count - done;
    const auto& order = kLiteralOrder[run];
    for (std::size_t i = 0; i < run; ++i) to[done + i] = source[done + order[i]];
    done += run;
  }
  c.wrote(count);
}

std::size_t r2007LiteralLength(Cursor& c, std::uint8_t op) {
  std::size_t length = op + 8u;
  if (length != 0x17) return length;
  std::size_t more = c.next();
  length += more;
  if (more == 0xFF) {
    do {
      more = c.next();
      more |= std::size_t(c.next()) << 8;
      length += more;
    } while (more == 0xFFFF && !c.error());
  }
  return length;
}

// Reads a match (its length and distance back) and the byte that follows it, which holds the length of
// the next literal run in its low three bits.
void r2007Match(Cursor& c, std::uint8_t& op, std::size_t& distance, std::size_t& length) {
  switch (op >> 4) {
    case 0:
      length = (op & 0x0F) + 0x13u;
      distance = c.next();
      op = c.next();
      length += (op >> 3) & 0x10;
      distance += ((op & 0x78) << 5) + 1u;
      break;
    case 1:
      length = (op & 0x0F) + 3u;
      distance = c.next();
      op = c.next();
      distance += ((op & 0xF8) << 5) + 1u;
      break;
    case 2:
      distance = c.next();
      distance |= std::size_t(c.next()) << 8;
      length = op & 0x07;
      if ((op & 0x08) == 0) {
        op = c.next();
        length += op & 0xF8;
      } else {
        ++distance;
        length += std::size_t(c.next()) << 3;
        op = c.next();
        length += (std::size_t(op & 0xF8) << 8) + 0x100;
      }
      break;
    default:
      length = op >> 4;
      distance = op & 0x0F;
      op = c.next();
      distance += ((op & 0xF8) << 1) + 1u;
      break;
  }
}

}  // namespace

DwgDecompressed decompressR2007(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
  Cursor c(in, out);
  std::uint8_t op = c.next();
  std::size_t literal = 0;
  if ((op & 0xF0) == 0x20) {
    c.skip(2);
    literal = c.next() & 0x07;
  }
  while (c.more()) {
    if (literal == 0) literal = r2007LiteralLength(c, op);
    r2007CopyLiteral(c, literal);
    literal = 0;
    if (!c.more()) break;
    op = c.next();
    for (;;) {
      std::size_t distance = 0, length = 0;
      r2007Match(c, op, distance, length);
      c.copyMatch(distance, length);
      literal = op & 0x07;
      if (literal != 0 || !c.more()) break;
      op = c.next();
      if ((op >> 4) == 0) break;
      if ((op >> 4) == 0x0F) op &= 0x0F;
    }
  }
  return c.result();
}

}  // namespace headless
