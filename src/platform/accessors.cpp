// Names and kinds of the typed entity accessors.
#include "platform/accessors.h"

namespace platform {

namespace {
struct AccessorRow {
  const char* name;
  AccessorKind kind;
};
constexpr AccessorRow kAccessors[] = {
#define VK_ACCESSOR_ROW(name, kind) {#name, AccessorKind::kind},
    VK_ACCESSORS(VK_ACCESSOR_ROW)
#undef VK_ACCESSOR_ROW
};
}  // namespace

AccessorKind accessorKind(Accessor a) { return kAccessors[static_cast<int>(a)].kind; }
const char* accessorName(Accessor a) { return kAccessors[static_cast<int>(a)].name; }

}  // namespace platform
