// The registry of DWG entity decoders: every family's types, found by type number or class name.
#include "platform/headless/dwg_entities.h"

#include <array>

namespace headless {

namespace {

constexpr DwgEntityFamily (*kFamilies[])() = {
    dwgPlainEntities,
    dwgAreaEntities,
    dwgOtherEntities,
    dwgCurveEntities,
    dwgSolidEntities,
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

const DwgEntityType* findDwgEntityType(std::uint16_t type, std::string_view dxfName) {
  static const Registry registry;
  if (type < registry.byNumber.size()) return registry.byNumber[type];
  for (const DwgEntityType* t : registry.byName)
    if (dxfName == t->dxfName) return t;
  return nullptr;
}

}  // namespace headless
