// What the readers of the three DWG container layouts share: the read's context, its budgets and messages.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "platform/headless/dwg_container.h"

namespace headless::dwg {

// Little-endian fields of a byte buffer; the caller has checked the bounds.
inline std::uint16_t le16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }
inline std::uint32_t le32(const std::uint8_t* p) {
  return std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) | (std::uint32_t(p[3]) << 24);
}
inline std::uint64_t le64(const std::uint8_t* p) { return le32(p) | (std::uint64_t(le32(p + 4)) << 32); }

std::string hex(std::uint64_t value);  // "0x1A2B"

// One read of a container: the file, where the sections go, and how many decompressed bytes it may still
// allocate. Real drawings decompress to a few times their size; the budget keeps a file that claims
// gigabytes from getting them.
class ReadContext {
 public:
  ReadContext(std::span<const std::uint8_t> file, DwgSections& out);

  std::span<const std::uint8_t> file;
  DwgSections& out;

  // "<file>: <where>: <what>"
  std::string message(std::string_view where, std::string_view what) const;
  void warn(std::string_view where, std::string_view what);
  // Whether count bytes from offset lie inside the file.
  bool inFile(std::uint64_t offset, std::uint64_t count) const {
    return offset <= file.size() && count <= file.size() - offset;
  }
  // Checks the file holds the first bytes of its layout's header and takes the fields every layout has
  // there: the maintenance release and the code page.
  bool readCommonHeader(std::size_t minimumSize, std::string& error);
  // The buffer of a section of size bytes; empty, with a warning, when the budget cannot pay for it.
  std::span<std::uint8_t> allocateSection(std::string_view name, std::uint64_t size);
  // A buffer owned by the sections, not cleared; empty (with nothing allocated) when the budget is spent.
  std::span<std::uint8_t> allocate(std::uint64_t bytes);
  std::uint64_t budgetLeft() const { return budget_; }
  // Counts decompression work that lands outside the allocated sections.
  void spend(std::uint64_t bytes) { budget_ -= std::min(bytes, budget_); }

 private:
  std::uint64_t budget_;
};

// Joins the pages of one section in its buffer. Pages come in increasing order and never overlap; a
// page that would go back or lie outside the section is left out with a warning, which bounds the work
// a section can cost to its size. What no page writes (pages of zeros are not stored) is cleared.
class SectionAssembler {
 public:
  SectionAssembler(ReadContext& context, std::string_view name, std::span<std::uint8_t> buffer)
      : context_(context), name_(name), buffer_(buffer) {}
  // Where a page starting at offset may write (at most maxBytes); empty when the page must be left out.
  std::span<std::uint8_t> window(std::uint64_t offset, std::uint64_t maxBytes, std::string_view page);
  void wrote(std::uint64_t offset, std::size_t bytes) { end_ = offset + bytes; }
  // Clears the rest of the section after its last page; returns the section.
  std::span<const std::uint8_t> finish();

 private:
  ReadContext& context_;
  std::string name_;
  std::span<std::uint8_t> buffer_;
  std::uint64_t end_ = 0;
};

// The page checksums: R2004 system and data pages (seeded), and R2007 data pages.
std::uint32_t r2004PageChecksum(std::uint32_t seed, std::span<const std::uint8_t> data);
std::uint32_t r2007PageChecksum(std::span<const std::uint8_t> data);

// The layouts. Each fills out's version-independent fields and its sections; false with error set when
// the sections cannot be found.
bool readR13Container(ReadContext& context, std::string& error);
bool readR2004Container(ReadContext& context, std::string& error);
bool readR2007Container(ReadContext& context, std::string& error);

}  // namespace headless::dwg
