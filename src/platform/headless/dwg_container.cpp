// The DWG container: release detection, the R13-R15 layout, the framed sections and the object map.
#include "platform/headless/dwg_container.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "platform/headless/dwg_container_parts.h"

namespace headless {

using dwg::le16;
using dwg::le32;

namespace {

struct Release {
  const char* signature;
  const char* name;
};
// Releases before R13 stored drawings in a layout of their own, which this reader does not take.
constexpr Release kOldReleases[] = {
    {"MC0.0", "R1.0"},    {"AC1.2", "R1.2"},    {"AC1.40", "R1.40"}, {"AC1.50", "R2.05"},
    {"AC2.10", "R2.10"},  {"AC2.21", "R2.21"},  {"AC2.22", "R2.22"}, {"AC1001", "R2.22"},
    {"AC1002", "R2.50"},  {"AC1003", "R2.60"},  {"AC1004", "R9"},    {"AC1006", "R10"},
    {"AC1009", "R11/R12"}, {"AC1010", "R13 pre-release"}, {"AC1011", "R13 pre-release"},
};

struct KnownRelease {
  const char* signature;
  DwgVersion version;
};
constexpr KnownRelease kReleases[] = {
    {"AC1012", DwgVersion::R13},   {"AC1014", DwgVersion::R14},   {"AC1015", DwgVersion::R2000},
    {"AC1018", DwgVersion::R2004}, {"AC1021", DwgVersion::R2007}, {"AC1024", DwgVersion::R2010},
    {"AC1027", DwgVersion::R2013}, {"AC1032", DwgVersion::R2018},
};

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view prefix) {
  return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

const KnownRelease* knownRelease(std::span<const std::uint8_t> bytes) {
  for (const KnownRelease& r : kReleases)
    if (startsWith(bytes, r.signature)) return &r;
  return nullptr;
}

// The first bytes as printable text, for messages about what a file is not.
std::string printable(std::span<const std::uint8_t> bytes, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < std::min(count, bytes.size()); ++i)
    text += (bytes[i] >= 0x20 && bytes[i] < 0x7F) ? static_cast<char>(bytes[i]) : '?';
  return text;
}

// The $DWGCODEPAGE names of the file header's code page numbers.
constexpr const char* kCodepageNames[] = {
    "",          "ASCII",     "ISO8859-1", "ISO8859-2", "ISO8859-3", "ISO8859-4", "ISO8859-5", "ISO8859-6",
    "ISO8859-7", "ISO8859-8", "ISO8859-9", "DOS437",    "DOS850",    "DOS852",    "DOS855",    "DOS857",
    "DOS860",    "DOS861",    "DOS863",    "DOS864",    "DOS865",    "DOS869",    "DOS932",    "MACINTOSH",
    "BIG5",      "KSC5601",   "JOHAB",     "DOS866",    "ANSI_1250", "ANSI_1251", "ANSI_1252", "GB2312",
    "ANSI_1253", "ANSI_1254", "ANSI_1255", "ANSI_1256", "ANSI_1257", "ANSI_874",  "ANSI_932",  "ANSI_936",
    "ANSI_949",  "ANSI_950",  "ANSI_1361", "ANSI_1200", "ANSI_1258",
};

// The sentinels that open the framed sections; the closing ones are their complements.
constexpr std::array<std::uint8_t, 16> kHeaderSentinel = {0xCF, 0x7B, 0x1F, 0x23, 0xFD, 0xDE, 0x38, 0xA9,
                                                          0x5F, 0x7C, 0x68, 0xB8, 0x4E, 0x6D, 0x33, 0x5F};
constexpr std::array<std::uint8_t, 16> kClassesSentinel = {0x8D, 0xA1, 0xC4, 0xB8, 0xC4, 0xA9, 0xF8, 0xC5,
                                                           0xC0, 0xDC, 0xF4, 0x5F, 0xE7, 0xCF, 0xB6, 0x8A};
constexpr std::array<std::uint8_t, 16> kFileHeaderEndSentinel = {0x95, 0xA0, 0x4E, 0x28, 0x99, 0x82, 0x1A, 0xE5,
                                                                 0x5E, 0x41, 0xE0, 0x5F, 0x9D, 0x3A, 0x4D, 0x00};

bool matchesSentinel(std::span<const std::uint8_t> bytes, const std::array<std::uint8_t, 16>& sentinel,
                     bool complement) {
  if (bytes.size() < 16) return false;
  for (std::size_t i = 0; i < 16; ++i)
    if (bytes[i] != (complement ? static_cast<std::uint8_t>(~sentinel[i]) : sentinel[i])) return false;
  return true;
}

// A section framed as sentinel, size, data, CRC and closing sentinel: checks the frame and returns the
// data. From R2010 a second size word may follow the size (always from R2018, and in R2010 and R2013
// files of maintenance releases above 3); when the CRC disagrees with the release's rule, the other
// reading is tried, as the file knows best.
std::span<const std::uint8_t> framedData(dwg::ReadContext& context, const DwgSection& section,
                                         const std::array<std::uint8_t, 16>& sentinel) {
  const std::string where = "section " + section.name;
  const auto bytes = section.data;
  if (bytes.size() < 20 + 2) {
    context.warn(where, "is too short (" + std::to_string(bytes.size()) + " bytes) to hold its data");
    return {};
  }
  if (!matchesSentinel(bytes, sentinel, false)) context.warn(where, "does not start with its sentinel");
  const std::uint64_t size = le32(bytes.data() + 16);
  const DwgSections& out = context.out;
  const bool highWordByRule = out.version >= DwgVersion::R2018 ||
                              (out.version >= DwgVersion::R2010 && out.maintenanceVersion > 3);
  auto crcMatches = [&](std::size_t sizeWords) {
    const std::uint64_t end = 16 + 4 * sizeWords + size;
    return end + 2 <= bytes.size() &&
           dwgCrc8(0xC0C1, bytes.subspan(16, static_cast<std::size_t>(end - 16))) == le16(bytes.data() + end);
  };
  std::size_t sizeWords = highWordByRule ? 2 : 1;
  if (out.version >= DwgVersion::R2010 && !crcMatches(sizeWords) && crcMatches(3 - sizeWords)) sizeWords = 3 - sizeWords;
  const std::size_t begin = 16 + 4 * sizeWords;
  if (size > bytes.size() - begin) {
    context.warn(where, "says it holds " + std::to_string(size) + " bytes but only " +
                            std::to_string(bytes.size() - begin) + " are there; its CRC cannot be checked");
    return bytes.subspan(begin);
  }
  const auto data = bytes.subspan(begin, static_cast<std::size_t>(size));
  const std::size_t end = begin + data.size();
  if (!crcMatches(sizeWords)) context.warn(where, "fails its CRC");
  else if (!matchesSentinel(bytes.subspan(end + 2), sentinel, true))
    context.warn(where, "does not end with its sentinel");
  return data;
}

// The names the R13-R15 section records are given, after the sections that replaced them in R2004.
std::string recordName(unsigned number) {
  constexpr const char* names[] = {"AcDb:Header", "AcDb:Classes", "AcDb:Handles", "AcDb:ObjFreeSpace",
                                   "AcDb:Template"};
  return number < std::size(names) ? names[number] : "record " + std::to_string(number);
}

// Keeps the first warning of a kind whole and counts the rest, so a file damaged everywhere gives a
// readable list.
class WarningTally {
 public:
  explicit WarningTally(std::string what) : what_(std::move(what)) {}
  void add(const std::string& first) {
    if (count_++ == 0) first_ = first;
  }
  void flush(std::vector<std::string>& warnings) const {
    if (count_ == 0) return;
    warnings.push_back(count_ == 1 ? first_
                                   : first_ + " (" + std::to_string(count_) + " " + what_ + "; the first is shown)");
  }

 private:
  std::string what_;
  std::string first_;
  std::size_t count_ = 0;
};

}  // namespace

namespace dwg {

std::string hex(std::uint64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
  return text;
}

ReadContext::ReadContext(std::span<const std::uint8_t> bytes, DwgSections& sections)
    : file(bytes), out(sections), budget_((std::uint64_t(16) << 20) + std::uint64_t(bytes.size()) * 100) {}

std::string ReadContext::message(std::string_view where, std::string_view what) const {
  std::string text = out.fileName;
  text += ": ";
  text += where;
  text += ' ';
  text += what;
  return text;
}

void ReadContext::warn(std::string_view where, std::string_view what) { out.warnings.push_back(message(where, what)); }

bool ReadContext::readCommonHeader(std::size_t minimumSize, std::string& error) {
  if (file.size() < minimumSize) {
    error = message("file header", "is cut short: the file has only " + std::to_string(file.size()) + " bytes");
    return false;
  }
  out.maintenanceVersion = file[0x0B];
  out.codepage = le16(file.data() + 0x13);
  return true;
}

std::span<std::uint8_t> ReadContext::allocateSection(std::string_view name, std::uint64_t size) {
  const std::span<std::uint8_t> buffer = allocate(size);
  if (buffer.size() != size)
    warn("section " + std::string(name), "claims " + std::to_string(size) + " bytes, more than a file of " +
                                              std::to_string(file.size()) + " bytes can hold; it is left out");
  return buffer;
}

std::span<std::uint8_t> ReadContext::allocate(std::uint64_t bytes) {
  if (bytes > budget_) return {};
  budget_ -= bytes;
  auto& buffer = out.buffers.emplace_back(new std::uint8_t[bytes]);
  return {buffer.get(), static_cast<std::size_t>(bytes)};
}

std::span<std::uint8_t> SectionAssembler::window(std::uint64_t offset, std::uint64_t maxBytes, std::string_view page) {
  const std::string where = std::string(page) + " of section " + name_;
  if (offset < end_) {
    context_.warn(where, "starts at " + hex(offset) + ", inside the page before it; it is left out");
    return {};
  }
  if (offset >= buffer_.size()) {
    context_.warn(where, "starts at " + hex(offset) + ", past the section's " + std::to_string(buffer_.size()) +
                             " bytes; it is left out");
    return {};
  }
  std::fill(buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin() + static_cast<std::ptrdiff_t>(offset), 0);
  end_ = offset;
  const std::uint64_t room = buffer_.size() - offset;
  return buffer_.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(std::min(room, maxBytes)));
}

std::span<const std::uint8_t> SectionAssembler::finish() {
  std::fill(buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.end(), 0);
  end_ = buffer_.size();
  return buffer_;
}

std::uint32_t r2004PageChecksum(std::uint32_t seed, std::span<const std::uint8_t> data) {
  std::uint32_t sum1 = seed & 0xFFFF, sum2 = seed >> 16;
  for (std::size_t at = 0; at < data.size();) {
    const std::size_t chunk = std::min<std::size_t>(0x15B0, data.size() - at);
    for (std::size_t i = 0; i < chunk; ++i) {
      sum1 += data[at + i];
      sum2 += sum1;
    }
    at += chunk;
    sum1 %= 0xFFF1;
    sum2 %= 0xFFF1;
  }
  return (sum2 << 16) | (sum1 & 0xFFFF);
}

std::uint32_t r2007PageChecksum(std::span<const std::uint8_t> data) {
  const std::uint64_t seed = (std::uint64_t(data.size())) * 0x343FD + 0x269EC3;
  std::uint32_t sum1 = seed & 0xFFFF, sum2 = (seed >> 16) & 0xFFFF;
  // Bytes are summed in pairs, the pairs of each group of eight from the last to the first; a shorter
  // tail has an order of its own.
  constexpr std::uint8_t kGroupOrder[8] = {6, 7, 4, 5, 2, 3, 0, 1};
  constexpr std::uint8_t kTailOrder[8][7] = {{},
                                             {0},
                                             {0, 1},
                                             {0, 1, 2},
                                             {2, 3, 0, 1},
                                             {2, 3, 0, 1, 4},
                                             {2, 3, 0, 1, 4, 5},
                                             {2, 3, 0, 1, 4, 5, 6}};
  auto add = [&](std::uint8_t byte) {
    sum1 += byte;
    sum2 += sum1;
  };
  for (std::size_t at = 0; at < data.size();) {
    const std::size_t chunk = std::min<std::size_t>(0x15B0, data.size() - at);
    const std::uint8_t* p = data.data() + at;
    for (std::size_t group = 0; group < chunk / 8; ++group, p += 8)
      for (std::uint8_t i : kGroupOrder) add(p[i]);
    const std::size_t tail = chunk & 7;
    for (std::size_t i = 0; i < tail; ++i) add(p[kTailOrder[tail][i]]);
    at += chunk;
    sum1 %= 0xFFF1;
    sum2 %= 0xFFF1;
  }
  return (sum2 << 16) | (sum1 & 0xFFFF);
}

bool readR13Container(ReadContext& context, std::string& error) {
  const auto file = context.file;
  DwgSections& out = context.out;
  constexpr std::size_t kRecords = 0x19, kRecordBytes = 9;
  if (!context.readCommonHeader(kRecords + 2, error)) return false;
  const std::uint32_t count = le32(file.data() + 0x15);
  if (count > (file.size() - kRecords - 2) / kRecordBytes) {
    error = context.message("file header", "lists " + std::to_string(count) + " section records, more than the file holds");
    return false;
  }
  const std::size_t crcAt = kRecords + count * kRecordBytes;
  // The header's CRC is XORed with a constant that depends on the number of records.
  constexpr std::uint16_t kCrcMasks[] = {0, 0, 0, 0xA598, 0x8101, 0x3CC4, 0x8461};
  if (count < std::size(kCrcMasks) && count >= 3) {
    const std::uint16_t crc = dwgCrc8(0, file.first(crcAt)) ^ kCrcMasks[count];
    if (crc != le16(file.data() + crcAt)) context.warn("file header", "fails its CRC");
  }
  if (!matchesSentinel(file.subspan(crcAt + 2), kFileHeaderEndSentinel, false))
    context.warn("file header", "does not end with its sentinel");
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint8_t* record = file.data() + kRecords + i * kRecordBytes;
    const std::uint64_t offset = le32(record + 1), size = le32(record + 5);
    DwgSection section{recordName(record[0]), {}};
    if (size == 0) continue;
    if (!context.inFile(offset, size)) {
      context.warn("section " + section.name,
                   "at " + hex(offset) + " with " + std::to_string(size) + " bytes runs past the end of the file (" +
                       std::to_string(file.size()) + " bytes)");
      if (offset >= file.size()) continue;
      section.data = file.subspan(static_cast<std::size_t>(offset));
    } else {
      section.data = file.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
    }
    out.sections.push_back(std::move(section));
  }
  // The object map of these releases holds absolute file offsets: objects are found in the whole file.
  out.objects = file;
  return true;
}

}  // namespace dwg

const DwgSection* DwgSections::section(std::string_view name) const {
  for (const DwgSection& s : sections)
    if (s.name == name) return &s;
  return nullptr;
}

std::string_view DwgSections::codepageName() const {
  return codepage >= 0 && codepage < static_cast<int>(std::size(kCodepageNames)) ? kCodepageNames[codepage] : "";
}

std::string dwgSignatureProblem(std::span<const std::uint8_t> firstBytes) {
  if (firstBytes.size() < 6) return "is too short to be a drawing (" + std::to_string(firstBytes.size()) + " bytes)";
  if (knownRelease(firstBytes)) return {};
  for (const Release& r : kOldReleases)
    if (startsWith(firstBytes, r.signature))
      return std::string("is a DWG drawing of release ") + r.name + " (" + r.signature +
             "), older than R13; only R13 and later DWG drawings are read";
  if (startsWith(firstBytes, "AC10") || startsWith(firstBytes, "AC1."))
    return "is a DWG drawing of a release this reader does not know (" + printable(firstBytes, 6) + ")";
  return "is not a DWG drawing (it starts with \"" + printable(firstBytes, 6) + "\")";
}

bool readDwgContainer(std::vector<std::uint8_t> bytes, std::string_view fileName, DwgSections& out, std::string& error) {
  out = DwgSections();
  out.fileName = std::string(fileName);
  error.clear();
  if (std::string problem = dwgSignatureProblem(bytes); !problem.empty()) {
    error = out.fileName + ": " + problem;
    return false;
  }
  out.fileBytes = std::move(bytes);
  const std::span<const std::uint8_t> file(out.fileBytes);
  out.version = knownRelease(file)->version;
  out.versionString = printable(file, 6);
  dwg::ReadContext context(file, out);
  bool read = false;
  if (out.version <= DwgVersion::R2000) read = dwg::readR13Container(context, error);
  else if (out.version == DwgVersion::R2007) read = dwg::readR2007Container(context, error);
  else read = dwg::readR2004Container(context, error);
  if (!read) return false;

  const DwgSection* handles = out.section("AcDb:Handles");
  if (!handles) {
    error = context.message("section AcDb:Handles", "(the object map) is missing");
    return false;
  }
  out.handles = handles->data;
  if (out.version >= DwgVersion::R2004) {
    const DwgSection* objects = out.section("AcDb:AcDbObjects");
    if (!objects) {
      error = context.message("section AcDb:AcDbObjects", "(the objects) is missing");
      return false;
    }
    out.objects = objects->data;
  }
  if (const DwgSection* header = out.section("AcDb:Header")) out.headerVariables = framedData(context, *header, kHeaderSentinel);
  else context.warn("section AcDb:Header", "(the header variables) is missing");
  if (const DwgSection* classes = out.section("AcDb:Classes")) out.classes = framedData(context, *classes, kClassesSentinel);
  else context.warn("section AcDb:Classes", "is missing");
  return true;
}

bool readDwgContainer(const std::string& path, DwgSections& out, std::string& error) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = in ? static_cast<std::streamoff>(in.tellg()) : -1;
  std::vector<std::uint8_t> bytes(size > 0 ? static_cast<std::size_t>(size) : 0);
  if (size < 0 || !in.seekg(0) || !in.read(reinterpret_cast<char*>(bytes.data()), size)) {
    out = DwgSections();
    error = path + ": cannot be read";
    return false;
  }
  return readDwgContainer(std::move(bytes), path, out, error);
}

std::vector<DwgObjectLocation> readObjectMap(const DwgSections& sections, std::vector<std::string>& warnings) {
  const auto map = sections.handles;
  std::vector<DwgObjectLocation> locations;
  // Entries take two to four bytes in real maps.
  locations.reserve(map.size() / 3);
  const std::string where = sections.fileName + ": object map ";
  std::size_t at = 0;
  while (at + 2 <= map.size()) {
    // Pages of at most about 2 KB: a big-endian size that counts itself, the entries, then a big-endian
    // CRC. An empty page (size 2) ends the map. Handles and offsets start again from zero on every page.
    const std::size_t size = (std::size_t(map[at]) << 8) | map[at + 1];
    if (size == 2) return locations;
    if (size < 2 || at + size + 2 > map.size()) {
      warnings.push_back(where + "page at " + dwg::hex(at) + " says it holds " + std::to_string(size) +
                         " bytes, more than the map has left; the map ends there");
      return locations;
    }
    const auto page = map.subspan(at, size);
    const std::uint16_t stored = static_cast<std::uint16_t>((map[at + size] << 8) | map[at + size + 1]);
    if (dwgCrc8(0xC0C1, page) != stored) warnings.push_back(where + "page at " + dwg::hex(at) + " fails its CRC");
    DwgBitReader reader(page, sections.version);
    reader.setBitPosition(16);
    std::uint64_t handle = 0;
    std::int64_t offset = 0;
    while (reader.bitPosition() < reader.bitSize()) {
      handle += reader.readUnsignedModularChar();
      const std::int64_t delta = reader.readModularChar();
      if (reader.failed() || __builtin_add_overflow(offset, delta, &offset) || offset < 0) {
        warnings.push_back(where + "page at " + dwg::hex(at) + " has an entry that cannot be read; the rest of the page is left out");
        break;
      }
      locations.push_back({handle, static_cast<std::uint64_t>(offset)});
    }
    at += size + 2;
  }
  warnings.push_back(where + "ends without its closing empty page");
  return locations;
}

DwgObjectWalk walkObjects(const DwgSections& sections) {
  DwgObjectWalk walk;
  const std::vector<DwgObjectLocation> map = readObjectMap(sections, walk.warnings);
  walk.objects.reserve(map.size());
  const auto objects = sections.objects;
  const bool handleStreamSize = sections.version >= DwgVersion::R2010;
  const std::string where = sections.fileName + ": object ";
  WarningTally outside("objects"), unreadable("objects"), badCrc("objects");
  // Objects of a sound file do not overlap, so the CRCs together cover the section about once. A map
  // whose objects cover it many times over would cost its size squared: the walk stops instead.
  std::uint64_t checkBudget = 4 * std::uint64_t(objects.size()) + (1u << 20);
  for (const DwgObjectLocation& location : map) {
    auto name = [&] { return where + "handle " + dwg::hex(location.handle) + " at " + dwg::hex(location.offset); };
    if (location.offset >= objects.size()) {
      outside.add(name() + " lies past the end of the objects (" + std::to_string(objects.size()) + " bytes)");
      continue;
    }
    DwgBitReader reader(objects, sections.version);
    reader.setBitPosition(static_cast<std::size_t>(location.offset) * 8);
    DwgObjectHeader object;
    object.handle = location.handle;
    object.offset = location.offset;
    object.size = reader.readModularShort();
    if (handleStreamSize) object.handleStreamBits = reader.readUnsignedModularChar();
    const std::size_t dataBegin = reader.bytePosition();
    object.dataOffset = static_cast<std::uint32_t>(dataBegin - location.offset);
    object.type = reader.readObjectType();
    if (reader.failed() || object.size == 0 || object.size > objects.size() - dataBegin ||
        objects.size() - dataBegin - object.size < 2) {
      unreadable.add(name() + " has a size (" + std::to_string(object.size) + " bytes) that does not fit in the objects");
      continue;
    }
    const std::size_t crcAt = dataBegin + object.size;
    if (crcAt - location.offset > checkBudget) {
      walk.warnings.push_back(name() + " and the objects before it overlap, covering the objects many times over; the walk stops there");
      break;
    }
    checkBudget -= crcAt - location.offset;
    const auto covered = objects.subspan(static_cast<std::size_t>(location.offset), crcAt - static_cast<std::size_t>(location.offset));
    object.crcMatches = dwgCrc8(0xC0C1, covered) == le16(objects.data() + crcAt);
    if (!object.crcMatches) badCrc.add(name() + " fails its CRC");
    walk.objects.push_back(object);
  }
  outside.flush(walk.warnings);
  unreadable.flush(walk.warnings);
  badCrc.flush(walk.warnings);
  return walk;
}

}  // namespace headless
