// DWG dictionaries and extended records: the extension dictionaries of entities, as DXF writes them.
#include "platform/headless/dwg_dictionaries.h"

#include "platform/headless/dwg_entities.h"
#include "platform/headless/dxf_tokenizer.h"
#include "platform/text.h"

namespace headless {

namespace {

// The groups every object starts with in DXF: its record, handle, owner and subclass.
void objectStart(DwgTagList& out, std::string_view type, const DwgObjectReader& object, std::string_view subclass) {
  out.record(type, object.common.handle);
  out.handle(5, object.common.handle);
  out.handle(330, object.common.owner);
  out.text(100, subclass);
}

// Codes whose value is a point: three raw doubles in a record, three groups (code, +10, +20) in DXF.
bool isPointCode(int code) {
  return (code >= 10 && code <= 18) || (code >= 110 && code <= 112) || code == 210 || (code >= 1010 && code <= 1013);
}

// Reads one stored group of a record's data into out; false at the end of the data, at a code whose
// value has no known layout, or when the data ends inside the value (a group then may be half appended).
bool readRecordGroup(DwgBitReader& data, bool unicode, DwgTagList& out, std::string& text, std::string& buffer) {
  if (data.bitsLeft() < 16) return false;
  const int code = static_cast<std::uint16_t>(data.readRawShort());
  if (code > 1071) return false;  // past the codes DXF knows: not a layout we can follow
  const TagType type = tagTypeOf(code);
  if (isPointCode(code)) {
    out.point(code, data.readRaw3Doubles());
  } else if (code >= 280 && code <= 289) {  // one byte, though DXF counts them as shorts
    out.integer(code, data.readRawChar());
  } else {
    switch (type) {
      case TagType::Real: out.real(code, data.readRawDouble()); break;
      case TagType::Int16: out.integer(code, data.readRawShort()); break;
      case TagType::Int32: out.integer(code, data.readRawLong()); break;
      case TagType::Int64: {
        const auto low = static_cast<std::uint32_t>(data.readRawLong());
        const auto high = static_cast<std::uint32_t>(data.readRawLong());
        out.integer(code, static_cast<long long>(std::uint64_t(high) << 32 | low));
        break;
      }
      case TagType::Bool: out.integer(code, data.readRawChar()); break;
      case TagType::Handle: {
        const auto low = static_cast<std::uint32_t>(data.readRawLong());
        const auto high = static_cast<std::uint32_t>(data.readRawLong());
        out.handle(code, std::uint64_t(high) << 32 | low);
        break;
      }
      case TagType::Binary: {
        const int size = data.readRawChar();
        text.clear();
        for (int k = 0; k < size && !data.failed(); ++k) {
          const int byte = data.readRawChar();
          text += "0123456789ABCDEF"[byte >> 4];
          text += "0123456789ABCDEF"[byte & 15];
        }
        out.text(code, text);
        break;
      }
      case TagType::Text: {
        // Before R2007 a length, the code page and the bytes in it; after, a length and UTF-16 units.
        const int length = static_cast<std::uint16_t>(data.readRawShort());
        text.clear();
        if (!unicode) {
          data.readRawChar();
          for (int k = 0; k < length && !data.failed(); ++k) text += static_cast<char>(data.readRawChar());
        } else {
          char32_t high = 0;  // the first half of a surrogate pair
          for (int k = 0; k < length && !data.failed(); ++k) {
            const auto unit = static_cast<char32_t>(static_cast<std::uint16_t>(data.readRawShort()));
            if (unit >= 0xD800 && unit < 0xDC00) {
              high = unit;
              continue;
            }
            const char32_t c = high && unit >= 0xDC00 && unit < 0xE000 ? 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00) : unit;
            high = 0;
            if (c != 0) platform::appendUtf8(text, c);
          }
        }
        out.text(code, caretText(text, buffer));
        break;
      }
    }
  }
  return !data.failed();
}

}  // namespace

bool decodeDwgDictionary(DwgObjectReader& object, DwgTagList& out, std::vector<std::uint64_t>& entries,
                         std::string& scratch) {
  DwgBitReader& b = object.bits;
  const std::int32_t count = b.readBitLong();
  // Each entry has a name (at least its length) and a handle (at least a byte of the handle stream).
  if (count < 0 || std::size_t(count) > object.handles.bitsLeft() / 8) return false;
  int cloning = 1, hardOwner = 0;
  if (object.atLeast(DwgVersion::R2000)) {
    cloning = b.readBitShort();
    hardOwner = b.readRawChar();
  } else if (object.version() == DwgVersion::R14) {
    b.readRawChar();
  }
  const std::size_t start = out.size();
  const std::size_t firstEntry = entries.size();
  // The names are in the data, their handles in the handle stream after the common ones.
  object.readCommonHandles();
  objectStart(out, "DICTIONARY", object, "AcDbDictionary");
  if (hardOwner) out.integer(280, hardOwner);
  out.integer(281, cloning);
  for (std::int32_t k = 0; k < count && !object.failed(); ++k) {
    object.readText(scratch);
    out.text(3, scratch);
    const std::uint64_t entry = object.readHandle();
    out.handle(hardOwner ? 360 : 350, entry);
    entries.push_back(entry);
  }
  if (object.failed()) {
    out.truncate(start);
    entries.resize(firstEntry);
    return false;
  }
  return true;
}

bool decodeDwgXrecord(DwgObjectReader& object, DwgTagList& out, std::vector<std::uint8_t>& scratch) {
  DwgBitReader& b = object.bits;
  const std::int32_t size = b.readBitLong();
  if (size < 0 || std::size_t(size) > b.bitsLeft() / 8) return false;
  scratch.resize(std::size_t(size));
  for (std::uint8_t& byte : scratch) byte = b.readRawChar();
  const int cloning = object.atLeast(DwgVersion::R2000) ? b.readBitShort() : 1;
  object.readCommonHandles();
  if (object.failed()) return false;
  objectStart(out, "XRECORD", object, "AcDbXrecord");
  out.integer(280, cloning);
  DwgBitReader data(scratch, object.version());
  std::string text, buffer;
  const bool unicode = object.atLeast(DwgVersion::R2007);
  // Every group takes at least three bytes: the data bounds the walk. A group cut short is left out.
  std::size_t kept = out.size();
  while (readRecordGroup(data, unicode, out, text, buffer)) kept = out.size();
  out.truncate(kept);
  return true;
}

}  // namespace headless
