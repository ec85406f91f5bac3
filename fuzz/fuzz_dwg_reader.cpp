// libFuzzer harness: the decoding of a DWG drawing's header variables, tables, blocks and entities, and
// the records the DXF reader builds from them.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/headless/dwg_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  platform::DatabaseData db;
  platform::ReadReport report;
  if (!headless::readDwg(std::vector<std::uint8_t>(data, data + size), "fuzz.dwg", db, report)) {
    // A refusal always says why.
    if (report.error.empty()) __builtin_trap();
    return 0;
  }
  // Every record's groups lie within the groups read.
  for (const platform::EntityRec& e : db.entities)
    if (std::size_t(e.tagBegin) + e.tagCount > db.tags.size()) __builtin_trap();
  return 0;
}
