// libFuzzer harness: the DXF reader, then the group lists and extents of everything it read.
#include <cstddef>
#include <cstdint>

#include "FuzzInput.h"
#include "platform/database.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::InputFile input("vk-fuzz-reader");
  platform::ReadReport report;
  const auto db = platform::Database::read(input.write(data, size), report);
  if (!db) return 0;
  // Extents walk into blocks through references: the part of reading that nesting budgets guard.
  for (platform::ObjectId blockId : db->blockRecordIds())
    for (platform::ObjectId id : db->blockRecord(blockId).entityIds()) {
      const platform::Entity e = db->openEntity(id);
      if (!e) continue;
      (void)e.entGet();
      platform::Extents3d box;
      (void)e.getGeomExtents(box);
    }
  (void)db->extents();
  return 0;
}
