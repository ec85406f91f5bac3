// The R2007 container: a Reed-Solomon coded file header, page map and section map, and data pages with
// their own compression.
#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platform/headless/dwg_compression.h"
#include "platform/headless/dwg_container_parts.h"
#include "platform/headless/dwg_reed_solomon.h"

namespace headless::dwg {

namespace {

constexpr std::size_t kFileHeaderAt = 0x80, kFileHeaderBytes = 0x400;
constexpr std::size_t kFileHeaderWords = 3;
constexpr std::size_t kPagesAt = 0x480;  // page offsets count from here
constexpr std::size_t kHeaderFieldsBytes = 0x110;
constexpr std::size_t kSectionRecordBytes = 64, kSectionPageBytes = 56;

// The fields of the decoded file header this reader needs.
struct FileHeader {
  std::uint64_t fileSize = 0;
  std::uint64_t pageMapFactor = 0, pageMapOffset = 0, pageMapStored = 0, pageMapSize = 0;
  std::uint64_t sectionMapId = 0, sectionMapStored = 0, sectionMapSize = 0, sectionMapFactor = 0;
};

struct Page {
  std::int64_t id;
  std::uint64_t offset, size;
};

class R2007Reader {
 public:
  explicit R2007Reader(ReadContext& context) : context_(context), file_(context.file) {}
  bool read(std::string& error);

 private:
  bool decodeFileHeader(std::span<const std::uint8_t> stored, std::string& problem);
  std::span<const std::uint8_t> systemPage(std::uint64_t offset, std::uint64_t storedSize, std::uint64_t size,
                                           std::uint64_t factor, std::string_view name, std::string& error);
  bool readPageMap(std::string& error);
  const Page* findPage(std::int64_t id) const;
  bool readSections(std::span<const std::uint8_t> map);
  void readDataPage(SectionAssembler& section, std::string_view sectionName, std::uint64_t encoding,
                    const std::uint8_t* entry);

  ReadContext& context_;
  std::span<const std::uint8_t> file_;
  FileHeader header_;
  std::vector<Page> pages_;
  std::vector<std::uint8_t> scratch_;  // de-interleaved page data, reused by every page
};

// The header's 0x400 bytes: three interleaved code words, whose data holds a short preamble and the
// (usually compressed) header fields.
bool R2007Reader::decodeFileHeader(std::span<const std::uint8_t> stored, std::string& problem) {
  std::array<std::uint8_t, kFileHeaderWords * kRsSystemDataBytes> words{};
  const DwgRsDecoded decoded = decodeSystemWords(stored.first(kFileHeaderWords * kRsWordBytes), kFileHeaderWords, words);
  if (decoded.damagedWords > 0) {
    problem = "has more errors than its error correction can mend";
    return false;
  }
  if (decoded.correctedBytes > 0)
    context_.warn("file header", "had " + std::to_string(decoded.correctedBytes) + " damaged bytes, mended by its error correction");
  constexpr std::size_t kPreamble = 0x20;
  const auto storedSize = static_cast<std::int32_t>(le32(words.data() + 0x18));
  std::array<std::uint8_t, kHeaderFieldsBytes> fields{};
  const std::size_t room = words.size() - kPreamble;
  // A negative size means the fields are stored as they are.
  const std::uint64_t magnitude = storedSize < 0 ? 0 - std::uint64_t(std::int64_t(storedSize)) : std::uint64_t(storedSize);
  if (magnitude > room) {
    problem = "says its fields take " + std::to_string(magnitude) + " bytes, more than it holds";
    return false;
  }
  const auto data = std::span<const std::uint8_t>(words).subspan(kPreamble, static_cast<std::size_t>(magnitude));
  if (storedSize < 0) std::memcpy(fields.data(), data.data(), std::min(data.size(), fields.size()));
  else if (const DwgDecompressed result = decompressR2007(data, fields); result.error) {
    problem = std::string("cannot be decompressed: ") + result.error;
    return false;
  }
  header_.fileSize = le64(fields.data() + 0x08);
  header_.pageMapFactor = le64(fields.data() + 0x18);
  header_.pageMapOffset = le64(fields.data() + 0x38);
  header_.pageMapStored = le64(fields.data() + 0x50);
  header_.pageMapSize = le64(fields.data() + 0x58);
  header_.sectionMapStored = le64(fields.data() + 0xB0);
  header_.sectionMapId = le64(fields.data() + 0xC0);
  header_.sectionMapSize = le64(fields.data() + 0xC8);
  header_.sectionMapFactor = le64(fields.data() + 0xD8);
  return true;
}

// A page of the page map or the section map: its (usually compressed) data, padded to whole 8 bytes and
// repeated factor times, coded in interleaved words.
std::span<const std::uint8_t> R2007Reader::systemPage(std::uint64_t offset, std::uint64_t storedSize, std::uint64_t size,
                                                      std::uint64_t factor, std::string_view name, std::string& error) {
  const std::string where = std::string(name) + " at " + hex(kPagesAt + offset);
  // Every quantity is checked against the file before it is multiplied.
  if (storedSize > file_.size() || factor == 0 || factor > file_.size()) {
    error = context_.message(where, "has sizes no file of " + std::to_string(file_.size()) + " bytes can hold");
    return {};
  }
  const std::uint64_t padded = ((storedSize + 7) & ~std::uint64_t(7)) * factor;
  const std::uint64_t words = (padded + kRsSystemDataBytes - 1) / kRsSystemDataBytes;
  if (offset > file_.size() || !context_.inFile(kPagesAt + offset, words * kRsWordBytes)) {
    error = context_.message(where, "runs past the end of the file (" + std::to_string(file_.size()) + " bytes)");
    return {};
  }
  scratch_.resize(static_cast<std::size_t>(words * kRsSystemDataBytes));
  const DwgRsDecoded decoded = decodeSystemWords(
      file_.subspan(static_cast<std::size_t>(kPagesAt + offset), static_cast<std::size_t>(words * kRsWordBytes)),
      static_cast<std::size_t>(words), scratch_);
  if (decoded.damagedWords > 0)
    context_.warn(where, "has " + std::to_string(decoded.damagedWords) + " code words its error correction cannot mend");
  const std::span<std::uint8_t> plain = context_.allocate(size);
  if (plain.size() != size) {
    error = context_.message(where, "claims " + std::to_string(size) + " bytes, more than a file of " +
                                        std::to_string(file_.size()) + " bytes can hold");
    return {};
  }
  const auto stored = std::span<const std::uint8_t>(scratch_).first(static_cast<std::size_t>(storedSize));
  if (storedSize >= size) {
    std::memcpy(plain.data(), stored.data(), plain.size());
    return plain;
  }
  const DwgDecompressed result = decompressR2007(stored, plain);
  if (result.error) context_.warn(where, std::string("cannot be decompressed whole: ") + result.error);
  else if (result.written != plain.size())
    context_.warn(where, "decompresses to " + std::to_string(result.written) + " bytes instead of " + std::to_string(size));
  return plain.first(result.written);
}

bool R2007Reader::readPageMap(std::string& error) {
  const auto map = systemPage(header_.pageMapOffset, header_.pageMapStored, header_.pageMapSize, header_.pageMapFactor,
                              "the page map", error);
  if (!error.empty()) return false;
  // Pairs of a size and a page id; pages follow each other. Negative ids are free space.
  std::uint64_t offset = 0;
  pages_.reserve(map.size() / 16);
  for (std::size_t i = 0; i + 16 <= map.size(); i += 16) {
    const std::uint64_t size = le64(map.data() + i);
    const auto id = static_cast<std::int64_t>(le64(map.data() + i + 8));
    if (id > 0) pages_.push_back({id, offset, size});
    if (size > file_.size()) break;  // every later page would lie past the end
    offset += size;
  }
  std::stable_sort(pages_.begin(), pages_.end(), [](const Page& a, const Page& b) { return a.id < b.id; });
  return true;
}

const Page* R2007Reader::findPage(std::int64_t id) const {
  auto it = std::lower_bound(pages_.begin(), pages_.end(), id, [](const Page& p, std::int64_t n) { return p.id < n; });
  return it != pages_.end() && it->id == id ? &*it : nullptr;
}

void R2007Reader::readDataPage(SectionAssembler& section, std::string_view sectionName, std::uint64_t encoding,
                               const std::uint8_t* entry) {
  const std::uint64_t offset = le64(entry), id = le64(entry + 16), size = le64(entry + 24), storedSize = le64(entry + 32);
  const auto checksum = static_cast<std::uint32_t>(le64(entry + 40));
  const std::string name = "page " + std::to_string(id);
  const std::string where = name + " of section " + std::string(sectionName);
  const Page* page = findPage(static_cast<std::int64_t>(id));
  if (!page) return context_.warn(where, "is not in the page map; its bytes are left as zeros");
  const std::uint64_t at = kPagesAt + page->offset;
  std::span<const std::uint8_t> stored;
  if (storedSize > page->size || !context_.inFile(at, page->size)) {
    return context_.warn(where + " at " + hex(at), "runs past its page or the end of the file; its bytes are left as zeros");
  } else if (encoding == 4) {
    // Interleaved code words of 251 data bytes, for the page's bytes padded to whole 8 bytes.
    const std::uint64_t words = (((storedSize + 7) & ~std::uint64_t(7)) + kRsPageDataBytes - 1) / kRsPageDataBytes;
    if (words * kRsWordBytes > page->size)
      return context_.warn(where + " at " + hex(at), "holds fewer code words than its data needs; its bytes are left as zeros");
    scratch_.resize(static_cast<std::size_t>(words * kRsPageDataBytes));
    deinterleaveWords(file_.subspan(static_cast<std::size_t>(at), static_cast<std::size_t>(words * kRsWordBytes)),
                      static_cast<std::size_t>(words), kRsPageDataBytes, scratch_);
    stored = std::span<const std::uint8_t>(scratch_).first(static_cast<std::size_t>(storedSize));
  } else {
    stored = file_.subspan(static_cast<std::size_t>(at), static_cast<std::size_t>(storedSize));
  }
  const auto window = section.window(offset, size, name);
  if (window.empty()) return;
  std::size_t written = 0;
  if (storedSize >= size) {
    written = std::min(window.size(), stored.size());
    std::memcpy(window.data(), stored.data(), written);
  } else {
    const DwgDecompressed result = decompressR2007(stored, window);
    written = result.written;
    if (result.error)
      context_.warn(where, std::string("cannot be decompressed whole: ") + result.error + "; " + std::to_string(written) +
                               " bytes are kept");
  }
  section.wrote(offset, written);
  if (written == size && r2007PageChecksum(window.first(written)) != checksum) context_.warn(where, "fails its checksum");
}

bool R2007Reader::readSections(std::span<const std::uint8_t> map) {
  for (std::size_t at = 0; at + kSectionRecordBytes <= map.size();) {
    const std::uint8_t* record = map.data() + at;
    const std::uint64_t size = le64(record), encrypted = le64(record + 16), nameBytes = le64(record + 32);
    const std::uint64_t encoding = le64(record + 48), pageCount = le64(record + 56);
    at += kSectionRecordBytes;
    if (nameBytes > map.size() - at) {
      context_.warn("the section map", "has a section name longer than the map; the map ends there");
      break;
    }
    // The name is UTF-16 with a terminating zero; every name the format uses is ASCII.
    std::string name;
    for (std::size_t i = 0; i + 1 < nameBytes; i += 2) {
      const std::uint16_t unit = le16(map.data() + at + i);
      if (unit == 0) break;
      name += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    at += static_cast<std::size_t>(nameBytes);
    const std::string where = "section " + name;
    if (pageCount > (map.size() - at) / kSectionPageBytes) {
      context_.warn(where, "lists " + std::to_string(pageCount) + " pages, more than the section map holds; the map ends there");
      break;
    }
    const std::uint8_t* entries = map.data() + at;
    at += static_cast<std::size_t>(pageCount) * kSectionPageBytes;
    if (name.empty()) continue;
    if (encrypted == 1) {
      context_.warn(where, "is encrypted (the drawing is protected by a password) and cannot be read");
      continue;
    }
    if (encoding != 1 && encoding != 4) context_.warn(where, "has an unknown encoding " + std::to_string(encoding) + "; it is read as plain");
    const std::span<std::uint8_t> buffer = context_.allocateSection(name, size);
    if (buffer.size() != size) continue;
    SectionAssembler assembler(context_, name, buffer);
    for (std::uint64_t p = 0; p < pageCount; ++p) readDataPage(assembler, name, encoding, entries + p * kSectionPageBytes);
    context_.out.sections.push_back({name, assembler.finish()});
  }
  return true;
}

bool R2007Reader::read(std::string& error) {
  if (!context_.readCommonHeader(kPagesAt, error)) return false;
  // A copy of the header closes the file; it stands in when the first one cannot be decoded.
  std::string problem;
  if (!decodeFileHeader(file_.subspan(kFileHeaderAt, kFileHeaderBytes), problem)) {
    std::string copyProblem;
    if (file_.size() < kPagesAt + kFileHeaderBytes || !decodeFileHeader(file_.last(kFileHeaderBytes), copyProblem)) {
      error = context_.message("file header at 0x80", problem + ", and its copy at the end of the file cannot be used either");
      return false;
    }
    context_.warn("file header at 0x80", problem + "; its copy at the end of the file is used");
  }
  if (header_.fileSize > file_.size())
    context_.warn("the file", "ends " + std::to_string(header_.fileSize - file_.size()) +
                                  " bytes before the size its header gives (was it cut short?)");
  if (!readPageMap(error)) return false;
  const Page* sectionMapPage = findPage(static_cast<std::int64_t>(header_.sectionMapId));
  if (!sectionMapPage) {
    error = context_.message("the section map", "(page " + std::to_string(header_.sectionMapId) + ") is not in the page map");
    return false;
  }
  const auto map = systemPage(sectionMapPage->offset, header_.sectionMapStored, header_.sectionMapSize,
                              header_.sectionMapFactor, "the section map", error);
  return error.empty() && readSections(map);
}

}  // namespace

bool readR2007Container(ReadContext& context, std::string& error) { return R2007Reader(context).read(error); }

}  // namespace headless::dwg
