// Reading the data store of R2013+ drawings: its segment index, its data index and the data records of its
// data segments, keeping the records that hold SAB.
#include "platform/headless/dwg_datastore.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <span>

namespace headless {

namespace {

// A little-endian byte stream over the section; reads outside it fail and yield 0.
class Bytes {
 public:
  explicit Bytes(std::span<const std::uint8_t> data) : data_(data) {}
  bool seek(std::uint64_t pos) {
    if (pos > data_.size()) return ok_ = false;
    pos_ = static_cast<std::size_t>(pos);
    return true;
  }
  std::size_t position() const { return pos_; }
  std::size_t size() const { return data_.size(); }
  bool ok() const { return ok_; }
  template <typename T>
  T read() {
    T v{};
    if (data_.size() - pos_ < sizeof(T)) {
      ok_ = false;
      pos_ = data_.size();
      return v;
    }
    std::memcpy(&v, data_.data() + pos_, sizeof(T));
    pos_ += sizeof(T);
    return v;
  }
  std::string_view view(std::size_t n) const {
    return {reinterpret_cast<const char*>(data_.data()) + pos_, std::min(n, data_.size() - pos_)};
  }

 private:
  std::span<const std::uint8_t> data_;
  std::size_t pos_ = 0;
  bool ok_ = true;
};

// Every file segment starts with a header of this size: signature, name, index, sizes and offsets.
constexpr std::size_t kSegmentHeader = 48;
// Where in that header the offset of a data segment's records is.
constexpr std::size_t kObjectAlignment = 36;
// The size word of a data record that refers to blob pages instead of holding the bytes.
constexpr std::uint32_t kBlobReference = 0xbb106bb1;

}  // namespace

std::vector<std::pair<std::uint64_t, std::string>> readDwgModelerData(const DwgSections& sections,
                                                                      std::vector<std::string>& warnings) {
  std::vector<std::pair<std::uint64_t, std::string>> out;
  const DwgSection* section = sections.section("AcDb:AcDsPrototype_1b");
  if (!section) return out;
  Bytes in(section->data);
  const auto damaged = [&](const char* what) {
    warnings.push_back(sections.fileName + ": section AcDb:AcDsPrototype_1b: " + what +
                       "; the modeler data of its solids and regions are not read");
    out.clear();
    return out;
  };
  // The file header.
  in.read<std::uint32_t>();  // signature
  in.read<std::int32_t>();   // header size
  in.read<std::int32_t>();
  in.read<std::int32_t>();  // version
  in.read<std::int32_t>();
  in.read<std::int32_t>();  // revision
  const std::uint32_t segmentIndexAt = in.read<std::uint32_t>();
  in.read<std::int32_t>();
  const std::uint32_t segmentCount = in.read<std::uint32_t>();
  in.read<std::int32_t>();  // the schema index's segment
  const std::uint32_t dataIndexSegment = in.read<std::uint32_t>();
  if (!in.ok()) return damaged("its header is cut short");
  // The segment index: where each segment starts.
  if (!in.seek(std::uint64_t{segmentIndexAt} + kSegmentHeader) || segmentCount > in.size() / 12)
    return damaged("its segment index lies outside it");
  std::vector<std::uint64_t> segmentAt(segmentCount);
  for (std::uint64_t& at : segmentAt) {
    at = in.read<std::uint64_t>();
    in.read<std::uint32_t>();  // size
  }
  if (!in.ok() || dataIndexSegment >= segmentCount) return damaged("its segment index is damaged");
  // The data index: for each record, its segment and where its header is in it.
  if (!in.seek(segmentAt[dataIndexSegment] + kSegmentHeader)) return damaged("its data index lies outside it");
  const std::uint32_t entries = in.read<std::uint32_t>();
  in.read<std::uint32_t>();
  if (entries > in.size() / 12) return damaged("its data index counts more entries than it can hold");
  std::map<std::uint32_t, std::vector<std::uint32_t>> bySegment;  // segment -> local offsets of headers
  for (std::uint32_t i = 0; i < entries; ++i) {
    const std::uint32_t segment = in.read<std::uint32_t>(), local = in.read<std::uint32_t>();
    in.read<std::uint32_t>();  // schema
    if (segment != 0) bySegment[segment].push_back(local);
  }
  if (!in.ok()) return damaged("its data index is cut short");
  std::size_t inBlobs = 0;
  for (const auto& [segment, locals] : bySegment) {
    if (segment >= segmentCount) return damaged("a record names a segment that does not exist");
    const std::uint64_t start = segmentAt[segment];
    // The records start where the segment header's data alignment says (in units of 16 bytes).
    if (!in.seek(start + kObjectAlignment)) return damaged("a data segment lies outside it");
    const std::uint64_t dataStart = start + (std::uint64_t{in.read<std::uint32_t>()} << 4);
    // The record headers (placed after the segment header): size, a number, the handle and where the record
    // is from the records' start.
    std::vector<std::pair<std::uint64_t, std::uint32_t>> records;
    for (std::uint32_t local : locals) {
      if (!in.seek(start + kSegmentHeader + local)) return damaged("a record header lies outside it");
      in.read<std::uint32_t>();
      in.read<std::uint32_t>();
      const std::uint64_t handle = in.read<std::uint64_t>();
      const std::uint32_t offset = in.read<std::uint32_t>();
      records.emplace_back(handle, offset);
    }
    if (!in.ok()) return damaged("a record header is cut short");
    for (const auto& [handle, offset] : records) {
      if (!in.seek(dataStart + offset)) return damaged("a record lies outside it");
      const std::uint32_t size = in.read<std::uint32_t>();
      if (!in.ok()) return damaged("a record is cut short");
      if (size == kBlobReference) {  // kept in blob pages: not read yet
        ++inBlobs;
        continue;
      }
      if (size > in.size() - in.position()) return damaged("a record says it is larger than what is left");
      const std::string_view bytes = in.view(size);
      if (bytes.starts_with("ACIS BinaryFile")) out.emplace_back(handle, std::string(bytes));
    }
  }
  if (inBlobs > 0)
    warnings.push_back(sections.fileName + ": section AcDb:AcDsPrototype_1b: the modeler data of " +
                       std::to_string(inBlobs) + (inBlobs == 1 ? " object is" : " objects are") +
                       " kept in blob pages, which are not read yet; such solids and regions show no shape");
  return out;
}

}  // namespace headless
