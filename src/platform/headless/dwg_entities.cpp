// The registry of DWG entity decoders: every family's types, found by type number or class name.
#include "platform/headless/dwg_entities.h"

#include <array>

#include "platform/headless/codepage.h"

namespace headless {

namespace {

constexpr DwgEntityFamily (*kFamilies[])() = {
    dwgPlainEntities,
    dwgAreaEntities,
    dwgOtherEntities,
    dwgCurveEntities,
    dwgSolidEntities,
    dwgAnnotationEntities,
    dwgTableEntities,
};

// The fixed types by number, the class types by name; built once.
struct Registry {
  std::array<const DwgEntityType*, 500> byNumber{};
  std::vector<const DwgEntityType*> byName;  // every type: R13 and R14 number some fixed types by class
  Registry() {
    for (auto family : kFamilies)
      for (const DwgEntityEntry& e : family()) {
        if (e.type > 0 && e.type < byNumber.size()) byNumber[e.type] = &e.entity;
        byName.push_back(&e.entity);
      }
  }
};

}  // namespace

void longText(DwgTagList& out, std::string_view text, bool utf8, const TextDecoder* codePage, std::string& buffer) {
  // The pieces are cut from the text as stored; each is then written as DXF writes texts.
  constexpr std::size_t kPiece = 250;
  std::string_view rest = text;
  while (rest.size() > kPiece) {
    std::size_t end = kPiece;
    if (utf8) {
      // 250 code points: a byte starts one unless it continues a sequence (10xxxxxx).
      end = 0;
      for (std::size_t points = 0; end < rest.size() && points < kPiece; ++points) {
        ++end;
        while (end < rest.size() && (static_cast<unsigned char>(rest[end]) & 0xC0) == 0x80) ++end;
      }
    } else if (codePage) {
      // 250 bytes, or 249 where the last would start a character of two.
      end = 0;
      while (end < kPiece) {
        const std::size_t next = end + (codePage->isLeadByte(static_cast<unsigned char>(rest[end])) ? 2 : 1);
        if (next > kPiece) break;
        end = next;
      }
    }
    if (end >= rest.size()) break;
    out.text(3, caretText(rest.substr(0, end), buffer));
    rest.remove_prefix(end);
  }
  out.text(1, caretText(rest, buffer));
}

const DwgEntityType* findDwgEntityType(std::uint16_t type, std::string_view dxfName) {
  static const Registry registry;
  if (type < registry.byNumber.size()) return registry.byNumber[type];
  for (const DwgEntityType* t : registry.byName)
    if (dxfName == t->dxfName) return t;
  return nullptr;
}

}  // namespace headless
