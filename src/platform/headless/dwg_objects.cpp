// The frame of every DWG object: its streams, the common object and entity data, texts, extended data,
// and the classes section that names the types numbered 500 and up.
#include "platform/headless/dwg_objects.h"

#include "platform/text.h"

namespace headless {

namespace {

constexpr const char* kFixedTypes[] = {
    "",          "TEXT",      "ATTRIB",    "ATTDEF",     "BLOCK",     "ENDBLK",    "SEQEND",    "INSERT",
    "MINSERT",   "",          "VERTEX",    "VERTEX",     "VERTEX",    "VERTEX",    "VERTEX",    "POLYLINE",
    "POLYLINE",  "ARC",       "CIRCLE",    "LINE",       "DIMENSION", "DIMENSION", "DIMENSION", "DIMENSION",
    "DIMENSION", "DIMENSION", "DIMENSION", "POINT",      "3DFACE",    "POLYLINE",  "POLYLINE",  "SOLID",
    "TRACE",     "SHAPE",     "VIEWPORT",  "ELLIPSE",    "SPLINE",    "REGION",    "3DSOLID",   "BODY",
    "RAY",       "XLINE",     "DICTIONARY", "OLEFRAME",  "MTEXT",     "LEADER",    "TOLERANCE", "MLINE",
    "BLOCK_CONTROL", "BLOCK_HEADER", "LAYER_CONTROL", "LAYER", "STYLE_CONTROL", "STYLE", "", "",
    "LTYPE_CONTROL", "LTYPE", "", "",                    "VIEW_CONTROL", "VIEW",   "UCS_CONTROL", "UCS",
    "VPORT_CONTROL", "VPORT", "APPID_CONTROL", "APPID",  "DIMSTYLE_CONTROL", "DIMSTYLE", "VX_CONTROL", "VX_TABLE_RECORD",
    "GROUP",     "MLINESTYLE", "OLE2FRAME", "DUMMY",     "LONG_TRANSACTION", "LWPOLYLINE", "HATCH", "XRECORD",
    "ACDBPLACEHOLDER", "VBA_PROJECT", "LAYOUT",
};

// DXF lineweights in hundredths of a millimetre, by the index an entity stores.
constexpr int kLineWeights[] = {0,  5,  9,  13, 15, 18, 20,  25,  30,  35,  40,  50,
                                53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

}  // namespace

std::string_view dwgFixedTypeName(std::uint16_t type) {
  if (type < std::size(kFixedTypes)) return kFixedTypes[type];
  if (type == 0x1F2) return "ACAD_PROXY_ENTITY";
  if (type == 0x1F3) return "ACAD_PROXY_OBJECT";
  return {};
}

bool dwgFixedTypeIsEntity(std::uint16_t type) {
  return (type >= 1 && type <= 41 && type != 9) || type == 44 || type == 45 || type == 46 || type == 47 ||
         type == 0x4A || type == 0x4D || type == 0x4E || type == 0x1F2;
}

int dwgLineWeight(int index) {
  if (index >= 0 && index < static_cast<int>(std::size(kLineWeights))) return kLineWeights[index];
  if (index == 29) return -1;
  if (index == 30) return -2;
  return -3;
}

std::vector<DwgClass> readDwgClasses(const DwgSections& sections, std::vector<std::string>& warnings) {
  std::vector<DwgClass> classes;
  if (sections.classes.empty()) return classes;
  const DwgVersion version = sections.version;
  DwgBitReader bits(sections.classes, version);
  DwgBitReader strings(sections.classes, version);
  std::size_t endBit = bits.bitSize();
  std::u16string wide;
  const bool unicode = version >= DwgVersion::R2007;
  if (unicode) {
    endBit = static_cast<std::uint32_t>(bits.readRawLong());
    DwgStringStream stream;
    if (endBit > bits.bitSize() || !findStringStream(sections.classes, 0, endBit, stream) || !stream.present) {
      warnings.push_back(sections.fileName + ": section AcDb:Classes: its texts cannot be found; the classes are not read");
      return classes;
    }
    strings.setBitPosition(stream.beginBit);
    endBit = stream.beginBit;
  }
  if (version >= DwgVersion::R2004) {
    bits.readBitShort();  // the largest class number
    bits.readRawChar();
    bits.readRawChar();
    bits.readBit();
  }
  auto text = [&](std::string& out) {
    if (unicode) {
      strings.readUnicodeText(wide);
      out = platform::utf16ToUtf8(wide);
    } else {
      bits.readText(out);
    }
    // Some writers count a terminating zero in the length.
    while (!out.empty() && out.back() == '\0') out.pop_back();
  };
  // A class takes at least 8 bytes; the end bits of the data hold only padding.
  while (!bits.failed() && bits.bitPosition() + 64 < endBit) {
    DwgClass c;
    c.number = bits.readBitShort();
    bits.readBitShort();  // proxy flags
    text(c.appName);
    text(c.cppName);
    text(c.dxfName);
    bits.readBit();  // was a zombie
    c.isEntity = bits.readBitShort() == 0x1F2;
    if (version >= DwgVersion::R2004) {
      // The count of instances, the release and maintenance version that made the class, two unknowns.
      // The versions are described as shorts, but other writers store them as longs, and the two forms
      // differ only for values past a byte, which the maker's own files never hold.
      bits.readBitLong();
      c.dwgVersion = bits.readBitLong();
      bits.readBitLong();
      bits.readBitLong();
      bits.readBitLong();
    }
    if (bits.failed() || strings.failed()) break;
    classes.push_back(std::move(c));
  }
  if (bits.failed() || strings.failed())
    warnings.push_back(sections.fileName + ": section AcDb:Classes is damaged after " +
                       std::to_string(classes.size()) + " classes; the others are not read");
  return classes;
}

bool DwgObjectReader::open(const DwgSections& sections, const DwgObjectHeader& header, bool entity) {
  const auto data = sections.objects.subspan(static_cast<std::size_t>(header.offset) + header.dataOffset, header.size);
  bits = DwgBitReader(data, sections.version);
  strings = DwgBitReader();
  handles = DwgBitReader();
  common = DwgCommon();
  xdictionaryMissing_ = false;
  plotstyleFlags_ = materialFlags_ = 0;
  fullStyle_ = faceStyle_ = edgeStyle_ = false;
  isEntity = entity;
  separateStrings_ = atLeast(DwgVersion::R2007);
  stringsBeginBit = stringsEndBit = 0;
  type = bits.readObjectType();
  dataEndBit = bits.bitSize();
  if (atLeast(DwgVersion::R2010)) {
    if (header.handleStreamBits > dataEndBit) return false;
    dataEndBit -= static_cast<std::size_t>(header.handleStreamBits);
  } else if (atLeast(DwgVersion::R2000)) {
    dataEndBit = static_cast<std::uint32_t>(bits.readRawLong());
  }
  common.handle = bits.readHandle().handle;
  if (!(entity ? readCommonEntity() : readCommonObject()) || bits.failed() || dataEndBit > bits.bitSize())
    return false;
  handles = DwgBitReader(data, sections.version);
  handles.setBitPosition(dataEndBit);
  if (separateStrings_) {
    DwgStringStream stream;
    if (!findStringStream(data, 0, dataEndBit, stream)) return false;
    strings = DwgBitReader(data.first(stream.present ? (stream.endBit + 7) / 8 : 0), sections.version);
    if (stream.present) strings.setBitPosition(stream.beginBit);
    stringsBeginBit = stream.present ? stream.beginBit : dataEndBit;
    stringsEndBit = stream.present ? stream.endBit : dataEndBit;
  }
  return !handles.failed() && !strings.failed();
}

bool DwgObjectReader::readCommonObject() {
  // Extended data: sizes, each followed by an application handle and that many bytes, up to a size of 0.
  common.eedBegin = bits.bitPosition();
  for (;;) {
    const auto size = static_cast<std::uint16_t>(bits.readBitShort());
    if (size == 0 || bits.failed()) break;
    bits.readHandle();
    if (std::size_t(size) * 8 > bits.bitsLeft()) return false;
    bits.setBitPosition(bits.bitPosition() + std::size_t(size) * 8);
  }
  common.eedEnd = bits.bitPosition();
  if (isEntity) {
    if (bits.readBit()) {  // a preview image
      const std::uint64_t size = atLeast(DwgVersion::R2010) ? bits.readBitLongLong()
                                                            : static_cast<std::uint32_t>(bits.readRawLong());
      if (size > bits.bitsLeft() / 8) return false;
      common.graphicsBegin = bits.bitPosition();
      common.graphicsSize = static_cast<std::size_t>(size);
      bits.setBitPosition(bits.bitPosition() + static_cast<std::size_t>(size) * 8);
    }
  }
  if (!atLeast(DwgVersion::R2000)) dataEndBit = static_cast<std::uint32_t>(bits.readRawLong());
  if (isEntity) common.entityMode = bits.readBitPair();
  const std::int32_t reactors = bits.readBitLong();
  // Each reactor takes at least a byte of the handle stream.
  if (reactors < 0 || static_cast<std::size_t>(reactors) > bits.bitSize() / 8) return false;
  common.reactorCount = static_cast<std::uint32_t>(reactors);
  if (atLeast(DwgVersion::R2004)) xdictionaryMissing_ = bits.readBit();
  if (atLeast(DwgVersion::R2013)) bits.readBit();  // data in the data store
  return !bits.failed();
}

bool DwgObjectReader::readCommonEntity() {
  if (!readCommonObject()) return false;
  bool byLayerLinetype = false;
  if (!atLeast(DwgVersion::R2000)) byLayerLinetype = bits.readBit();
  // Releases before R2004 link entities to their neighbours (the extended dictionary bit took its place).
  if (!atLeast(DwgVersion::R2004)) common.hasLinks = !bits.readBit();
  common.color = bits.readEntityColor();
  common.linetypeScale = bits.readBitDouble();
  if (atLeast(DwgVersion::R2000)) {
    common.linetypeFlags = bits.readBitPair();
    plotstyleFlags_ = bits.readBitPair();
  } else {
    common.linetypeFlags = byLayerLinetype ? 0 : 3;
  }
  if (atLeast(DwgVersion::R2007)) {
    materialFlags_ = bits.readBitPair();
    bits.readRawChar();  // shadows
  }
  if (atLeast(DwgVersion::R2010)) {
    fullStyle_ = bits.readBit();
    faceStyle_ = bits.readBit();
    edgeStyle_ = bits.readBit();
  }
  common.invisible = bits.readBitShort();
  if (atLeast(DwgVersion::R2000)) common.lineWeight = dwgLineWeight(bits.readRawChar());
  return !bits.failed();
}

void DwgObjectReader::readText(std::string& out) {
  if (!separateStrings_) {
    bits.readText(out);
    // Some writers count a terminating zero in the length.
    while (!out.empty() && out.back() == '\0') out.pop_back();
    return;
  }
  out.clear();
  if (strings.bitSize() == 0) return;  // an object without texts
  strings.readUnicodeText(wide_);
  for (std::size_t i = 0; i < wide_.size(); ++i) {
    char32_t c = wide_[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < wide_.size() && wide_[i + 1] >= 0xDC00 && wide_[i + 1] < 0xE000)
      c = 0x10000 + ((c - 0xD800) << 10) + (wide_[++i] - 0xDC00);
    if (c == 0 && i + 1 == wide_.size()) break;  // a terminating zero some writers count
    platform::appendUtf8(out, c);
  }
}

void DwgObjectReader::skipText() {
  if (!separateStrings_) {
    const auto length = static_cast<std::uint16_t>(bits.readBitShort());
    if (std::size_t(length) * 8 > bits.bitsLeft()) return bits.fail();
    bits.setBitPosition(bits.bitPosition() + std::size_t(length) * 8);
    return;
  }
  if (strings.bitSize() == 0) return;
  const auto length = static_cast<std::uint16_t>(strings.readBitShort());
  if (std::size_t(length) * 16 > strings.bitsLeft()) return strings.fail();
  strings.setBitPosition(strings.bitPosition() + std::size_t(length) * 16);
}

void DwgObjectReader::readCommonHandles() {
  if (isEntity && atLeast(DwgVersion::R2004)) {
    if (common.color.hasName) readText(common.colorName);
    if (common.color.hasBookName) readText(common.bookName);
  }
  if (!isEntity || common.entityMode == 0) common.owner = readHandle();
  for (std::uint32_t i = 0; i < common.reactorCount && !handles.failed(); ++i) {
    const std::uint64_t reactor = readHandle();
    if (i < common.reactors.size()) common.reactors[i] = reactor;
  }
  if (!xdictionaryMissing_) common.xdictionary = readHandle();
  if (!isEntity) return;
  if (!atLeast(DwgVersion::R2000)) {
    common.layer = readHandle();
    if (common.linetypeFlags == 3) common.linetype = readHandle();
  }
  if (common.hasLinks) {
    common.previous = readHandle();
    common.next = readHandle();
  }
  if (common.color.hasColorReference) common.colorHandle = readHandle();
  if (atLeast(DwgVersion::R2000)) {
    common.layer = readHandle();
    if (common.linetypeFlags == 3) common.linetype = readHandle();
  }
  if (materialFlags_ == 3) readHandle();
  if (plotstyleFlags_ == 3) readHandle();
  if (fullStyle_) readHandle();
  if (faceStyle_) readHandle();
  if (edgeStyle_) readHandle();
}

bool appendDwgExtendedData(DwgObjectReader& object, DwgTagList& out, const DwgNames& names, std::string& scratch,
                           std::string_view leaveOut) {
  DwgBitReader bits = object.bits;  // a copy: the object's own position stays where it is
  const std::size_t begin = out.size();
  bits.setBitPosition(object.common.eedBegin);
  const bool unicode = object.atLeast(DwgVersion::R2007);
  auto nameOf = [&](std::uint64_t handle) -> std::string_view {
    auto it = names.find(handle);
    return it == names.end() ? std::string_view() : std::string_view(it->second);
  };
  bool ok = true;
  while (ok && bits.bitPosition() < object.common.eedEnd) {
    const auto size = static_cast<std::uint16_t>(bits.readBitShort());
    if (size == 0) break;
    const std::uint64_t app = bits.readHandle().handle;
    const std::size_t end = bits.bitPosition() + std::size_t(size) * 8;
    if (end > object.common.eedEnd) {
      ok = false;
      break;
    }
    if (!leaveOut.empty() && nameOf(app) == leaveOut) {
      bits.setBitPosition(end);
      continue;
    }
    out.text(1001, nameOf(app));
    while (ok && bits.bitPosition() < end) {
      const std::uint8_t code = bits.readRawChar();
      switch (code) {
        case 0: {
          scratch.clear();
          if (unicode) {
            const int length = bits.readRawShort();
            for (int i = 0; i < length && !bits.failed(); ++i)
              platform::appendUtf8(scratch, static_cast<char16_t>(static_cast<std::uint16_t>(bits.readRawShort())));
          } else {
            const int length = bits.readRawChar();
            bits.readRawShort();  // the code page
            for (int i = 0; i < length && !bits.failed(); ++i) scratch += static_cast<char>(bits.readRawChar());
          }
          out.text(1000, scratch);
          break;
        }
        case 2: out.text(1002, bits.readRawChar() ? "}" : "{"); break;
        case 3:
        case 5: {
          // Eight bytes, the most significant first.
          std::uint64_t handle = 0;
          for (int i = 0; i < 8; ++i) handle = (handle << 8) | bits.readRawChar();
          if (code == 3) out.text(1003, nameOf(handle));
          else out.handle(1005, handle);
          break;
        }
        case 4: {
          const int length = bits.readRawChar();
          scratch.clear();
          for (int i = 0; i < length && !bits.failed(); ++i) {
            const std::uint8_t b = bits.readRawChar();
            scratch += "0123456789ABCDEF"[b >> 4];
            scratch += "0123456789ABCDEF"[b & 15];
          }
          out.text(1004, scratch);
          break;
        }
        case 10: case 11: case 12: case 13: {
          const DwgPoint3 p = bits.readRaw3Doubles();
          out.point(1000 + code, p);
          break;
        }
        case 40: case 41: case 42: out.real(1000 + code, bits.readRawDouble()); break;
        case 70: out.integer(1070, bits.readRawShort()); break;
        case 71: out.integer(1071, bits.readRawLong()); break;
        default: ok = false; break;
      }
      if (bits.failed() || bits.bitPosition() > end) ok = false;
    }
  }
  if (bits.failed()) ok = false;
  if (!ok) out.truncate(begin);
  return ok;
}

}  // namespace headless
