// The R2004 container, also used by R2010, R2013 and R2018: encrypted file header, page map, section map
// and compressed, encrypted-header data pages.
#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platform/headless/dwg_compression.h"
#include "platform/headless/dwg_container_parts.h"

namespace headless::dwg {

namespace {

constexpr std::size_t kFileHeaderAt = 0x80, kFileHeaderBytes = 0x6C;
constexpr std::size_t kFirstPageAt = 0x100;
constexpr std::size_t kSystemPageHeaderBytes = 0x14, kDataPageHeaderBytes = 0x20;
constexpr std::uint32_t kPageMapType = 0x41630E3B, kSectionMapType = 0x4163003B, kDataPageType = 0x4163043B;
constexpr std::size_t kSectionDescriptionBytes = 0x60, kSectionPageBytes = 0x10;

// The file header is XORed with a byte sequence from a linear congruential generator seeded with 1.
constexpr std::array<std::uint8_t, kFileHeaderBytes> makeHeaderMask() {
  std::array<std::uint8_t, kFileHeaderBytes> mask{};
  std::uint32_t seed = 1;
  for (auto& byte : mask) {
    seed = seed * 0x343FD + 0x269EC3;
    byte = static_cast<std::uint8_t>(seed >> 16);
  }
  return mask;
}
constexpr auto kHeaderMask = makeHeaderMask();

struct FileHeader {
  std::uint64_t secondHeaderAt = 0;
  std::uint32_t pageMapId = 0;
  std::uint64_t pageMapAt = 0;
  std::uint32_t sectionMapId = 0;
};

// Decrypts and checks a copy of the file header; false when it is not one.
bool decodeFileHeader(std::span<const std::uint8_t> stored, FileHeader& header) {
  if (stored.size() < kFileHeaderBytes) return false;
  std::array<std::uint8_t, kFileHeaderBytes> plain{};
  for (std::size_t i = 0; i < kFileHeaderBytes; ++i) plain[i] = stored[i] ^ kHeaderMask[i];
  if (std::memcmp(plain.data(), "AcFssFcAJMB", 12) != 0) return false;
  // The CRC covers the whole header with its own field as zero.
  const std::uint32_t crc = le32(plain.data() + 0x68);
  std::memset(plain.data() + 0x68, 0, 4);
  if (dwgCrc32(0, plain) != crc) return false;
  header.secondHeaderAt = le64(plain.data() + 0x34);
  header.pageMapId = le32(plain.data() + 0x50);
  header.pageMapAt = le64(plain.data() + 0x54) + kFirstPageAt;
  header.sectionMapId = le32(plain.data() + 0x5C);
  return true;
}

struct Page {
  std::int32_t number;
  std::uint64_t at;
  std::uint32_t size;
};

const Page* findPage(const std::vector<Page>& pages, std::int64_t number) {
  auto it = std::lower_bound(pages.begin(), pages.end(), number, [](const Page& p, std::int64_t n) { return p.number < n; });
  return it != pages.end() && it->number == number ? &*it : nullptr;
}

class R2004Reader {
 public:
  explicit R2004Reader(ReadContext& context) : context_(context), file_(context.file) {}

  bool read(std::string& error);

 private:
  std::span<const std::uint8_t> systemPage(std::uint64_t at, std::uint32_t type, std::string_view name, std::string& error);
  bool readPageMap(std::string& error);
  bool readSections(std::span<const std::uint8_t> map, std::string& error);
  void readDataPage(SectionAssembler& section, std::string_view sectionName, std::uint32_t sectionId,
                    bool compressed, std::uint32_t maxPageBytes, const std::uint8_t* entry);

  ReadContext& context_;
  std::span<const std::uint8_t> file_;
  FileHeader header_;
  std::vector<Page> pages_;
  std::vector<std::uint8_t> pageBuffer_;  // the last page of a section, reused
};

// A page of the page map or the section map: a plain header, then its compressed data.
std::span<const std::uint8_t> R2004Reader::systemPage(std::uint64_t at, std::uint32_t type, std::string_view name,
                                                      std::string& error) {
  const std::string where = std::string(name) + " at " + hex(at);
  if (!context_.inFile(at, kSystemPageHeaderBytes)) {
    error = context_.message(where, "lies past the end of the file (" + std::to_string(file_.size()) + " bytes)");
    return {};
  }
  const std::uint8_t* head = file_.data() + at;
  if (le32(head) != type) {
    error = context_.message(where, "is not one: its page type is " + hex(le32(head)));
    return {};
  }
  const std::uint32_t plainSize = le32(head + 4), storedSize = le32(head + 8), compression = le32(head + 12);
  if (!context_.inFile(at + kSystemPageHeaderBytes, storedSize)) {
    error = context_.message(where, "claims " + std::to_string(storedSize) + " bytes, more than the file holds");
    return {};
  }
  const auto stored = file_.subspan(static_cast<std::size_t>(at + kSystemPageHeaderBytes), storedSize);
  std::array<std::uint8_t, kSystemPageHeaderBytes> plainHead{};
  std::memcpy(plainHead.data(), head, plainHead.size());
  std::memset(plainHead.data() + 16, 0, 4);
  if (r2004PageChecksum(r2004PageChecksum(0, plainHead), stored) != le32(head + 16))
    context_.warn(where, "fails its checksum");
  const std::span<std::uint8_t> plain = context_.allocate(plainSize);
  if (plain.size() != plainSize) {
    error = context_.message(where, "claims " + std::to_string(plainSize) + " bytes once decompressed, more than a file of " +
                                        std::to_string(file_.size()) + " bytes can hold");
    return {};
  }
  if (compression != 2) {
    const std::size_t count = std::min<std::size_t>(stored.size(), plain.size());
    std::memcpy(plain.data(), stored.data(), count);
    return plain.first(count);
  }
  const DwgDecompressed result = decompressR2004(stored, plain);
  if (result.error) context_.warn(where, std::string("cannot be decompressed whole: ") + result.error);
  else if (result.written != plain.size())
    context_.warn(where, "decompresses to " + std::to_string(result.written) + " bytes instead of " + std::to_string(plainSize));
  return plain.first(result.written);
}

bool R2004Reader::readPageMap(std::string& error) {
  const auto map = systemPage(header_.pageMapAt, kPageMapType, "the page map", error);
  if (!error.empty()) return false;
  // Entries of a page number and size; pages follow each other from 0x100. A negative number marks a
  // gap, which carries four more words.
  std::uint64_t at = kFirstPageAt;
  pages_.reserve(map.size() / 8);
  for (std::size_t i = 0; i + 8 <= map.size();) {
    const auto number = static_cast<std::int32_t>(le32(map.data() + i));
    const std::uint32_t size = le32(map.data() + i + 4);
    i += number < 0 ? 24 : 8;
    if (number >= 0) pages_.push_back({number, at, size});
    at += size;
  }
  std::stable_sort(pages_.begin(), pages_.end(), [](const Page& a, const Page& b) { return a.number < b.number; });
  return true;
}

void R2004Reader::readDataPage(SectionAssembler& section, std::string_view sectionName, std::uint32_t sectionId,
                               bool compressed, std::uint32_t maxPageBytes, const std::uint8_t* entry) {
  const std::uint32_t number = le32(entry), storedSize = le32(entry + 4);
  const std::uint64_t startOffset = le64(entry + 8);
  const std::string name = "page " + std::to_string(number);
  const std::string where = name + " of section " + std::string(sectionName);
  const Page* page = findPage(pages_, number);
  if (!page) return context_.warn(where, "is not in the page map; its bytes are left as zeros");
  if (!context_.inFile(page->at, kDataPageHeaderBytes + std::uint64_t(storedSize)))
    return context_.warn(where + " at " + hex(page->at),
                         "runs past the end of the file (" + std::to_string(file_.size()) + " bytes); its bytes are left as zeros");
  // The page header is XORed with a mask made from the page's address.
  std::array<std::uint8_t, kDataPageHeaderBytes> head{};
  const std::uint32_t mask = 0x4164536B ^ static_cast<std::uint32_t>(page->at);
  for (std::size_t i = 0; i < head.size(); i += 4) {
    const std::uint32_t word = le32(file_.data() + page->at + i) ^ mask;
    for (std::size_t b = 0; b < 4; ++b) head[i + b] = static_cast<std::uint8_t>(word >> (8 * b));
  }
  if (le32(head.data()) != kDataPageType || le32(head.data() + 4) != sectionId)
    return context_.warn(where + " at " + hex(page->at), "has the header of another page; its bytes are left as zeros");
  if (le32(head.data() + 8) != storedSize || le32(head.data() + 16) != startOffset)
    context_.warn(where, "has a header that disagrees with the section map on its size or place; the map is followed");
  const auto stored = file_.subspan(static_cast<std::size_t>(page->at + kDataPageHeaderBytes), storedSize);
  // The data checksum covers the stored bytes; the header's covers the header with its own field as zero,
  // seeded with the data checksum.
  const std::uint32_t dataChecksum = r2004PageChecksum(0, stored);
  const std::uint32_t headerChecksum = le32(head.data() + 0x18);
  std::memset(head.data() + 0x18, 0, 4);
  if (dataChecksum != le32(head.data() + 0x1C) || r2004PageChecksum(dataChecksum, head) != headerChecksum)
    context_.warn(where, "fails its checksum");
  const auto window = section.window(startOffset, compressed ? maxPageBytes : storedSize, name);
  if (window.empty()) return;
  if (!compressed) {
    const std::size_t count = std::min(window.size(), stored.size());
    std::memcpy(window.data(), stored.data(), count);
    return section.wrote(startOffset, count);
  }
  // Pages decompress to their full size even at the end of a section; a last page that is cut by the
  // section's end decompresses into the page buffer first.
  // What it writes past the section counts against the read's budget like the sections themselves.
  std::span<std::uint8_t> target = window;
  if (window.size() < maxPageBytes) {
    if (maxPageBytes > context_.budgetLeft())
      return context_.warn(where, "would decompress past what a file of " + std::to_string(file_.size()) +
                                      " bytes can hold; its bytes are left as zeros");
    pageBuffer_.resize(maxPageBytes);
    target = pageBuffer_;
  }
  const DwgDecompressed result = decompressR2004(stored, target);
  if (result.error)
    context_.warn(where, std::string("cannot be decompressed whole: ") + result.error + "; " +
                             std::to_string(result.written) + " bytes are kept");
  const std::size_t kept = std::min(result.written, window.size());
  if (target.data() != window.data()) {
    std::memcpy(window.data(), target.data(), kept);
    context_.spend(result.written - kept);
  }
  section.wrote(startOffset, kept);
}

bool R2004Reader::readSections(std::span<const std::uint8_t> map, std::string& error) {
  constexpr std::size_t kMapHeader = 20;
  if (map.size() < kMapHeader) {
    error = context_.message("the section map", "is too short to hold its header");
    return false;
  }
  const std::uint32_t count = le32(map.data());
  if (count > (map.size() - kMapHeader) / kSectionDescriptionBytes) {
    error = context_.message("the section map", "lists " + std::to_string(count) + " sections, more than it holds");
    return false;
  }
  std::size_t at = kMapHeader;
  for (std::uint32_t s = 0; s < count; ++s) {
    if (map.size() - at < kSectionDescriptionBytes) {
      context_.warn("the section map", "ends inside the description of its section " + std::to_string(s) + "; the map ends there");
      break;
    }
    const std::uint8_t* description = map.data() + at;
    at += kSectionDescriptionBytes;
    const std::uint64_t size = le64(description);
    const std::uint32_t pageCount = le32(description + 8), maxPageBytes = le32(description + 12);
    const bool compressed = le32(description + 20) == 2;
    const std::uint32_t id = le32(description + 24), encrypted = le32(description + 28);
    const char* nameBytes = reinterpret_cast<const char*>(description + 32);
    const std::string name(nameBytes, strnlen(nameBytes, 64));
    const std::string where = "section " + name;
    if (pageCount > (map.size() - at) / kSectionPageBytes) {
      context_.warn(where, "lists " + std::to_string(pageCount) + " pages, more than the section map holds; the map ends there");
      break;
    }
    const std::uint8_t* entries = map.data() + at;
    at += pageCount * kSectionPageBytes;
    if (name.empty()) continue;
    if (encrypted == 1) {
      context_.warn(where, "is encrypted (the drawing is protected by a password) and cannot be read");
      continue;
    }
    if (compressed && maxPageBytes > context_.budgetLeft()) {
      context_.warn(where, "has pages of " + std::to_string(maxPageBytes) + " bytes, more than a file of " +
                               std::to_string(file_.size()) + " bytes can hold; it is left out");
      continue;
    }
    const std::span<std::uint8_t> buffer = context_.allocateSection(name, size);
    if (buffer.size() != size) continue;
    SectionAssembler assembler(context_, name, buffer);
    for (std::uint32_t p = 0; p < pageCount; ++p)
      readDataPage(assembler, name, id, compressed, maxPageBytes, entries + p * kSectionPageBytes);
    context_.out.sections.push_back({name, assembler.finish()});
  }
  return true;
}

bool R2004Reader::read(std::string& error) {
  if (!context_.readCommonHeader(kFirstPageAt, error)) return false;
  // The header is repeated at the end of the file, where it is the last thing written.
  const bool firstIsSound = decodeFileHeader(file_.subspan(kFileHeaderAt, kFileHeaderBytes), header_);
  if (!firstIsSound) {
    if (!decodeFileHeader(file_.last(kFileHeaderBytes), header_)) {
      error = context_.message("file header at 0x80", "is damaged, and so is its copy at the end of the file");
      return false;
    }
    context_.warn("file header at 0x80", "is damaged; its copy at the end of the file is used");
  } else if (!context_.inFile(header_.secondHeaderAt, kFileHeaderBytes)) {
    const std::uint64_t missing = header_.secondHeaderAt + kFileHeaderBytes - file_.size();
    context_.warn("the file", "ends " + std::to_string(missing) + " bytes before the copy of its file header at " +
                                  hex(header_.secondHeaderAt) + " does (was it cut short?)");
  }
  if (!readPageMap(error)) return false;
  const Page* sectionMapPage = findPage(pages_, header_.sectionMapId);
  if (!sectionMapPage) {
    error = context_.message("the section map", "(page " + std::to_string(header_.sectionMapId) + ") is not in the page map");
    return false;
  }
  const auto map = systemPage(sectionMapPage->at, kSectionMapType, "the section map", error);
  return error.empty() && readSections(map, error);
}

}  // namespace

bool readR2004Container(ReadContext& context, std::string& error) { return R2004Reader(context).read(error); }

}  // namespace headless::dwg
