// The host's class tree.
#include "platform/dbclass.h"

namespace platform {

namespace {
struct ClassRow {
  DbClass parent;
  std::string_view name;
};
constexpr ClassRow kClasses[] = {
#define VK_DB_CLASS_ROW(cls, parent, name) {DbClass::parent, name},
    VK_DB_CLASSES(VK_DB_CLASS_ROW)
#undef VK_DB_CLASS_ROW
};
}  // namespace

DbClass parentClass(DbClass cls) { return kClasses[static_cast<int>(cls)].parent; }

bool isKindOf(DbClass cls, DbClass base) {
  for (;;) {
    if (cls == base) return true;
    const DbClass parent = parentClass(cls);
    if (parent == cls) return false;
    cls = parent;
  }
}

std::string_view className(DbClass cls) { return kClasses[static_cast<int>(cls)].name; }

}  // namespace platform
