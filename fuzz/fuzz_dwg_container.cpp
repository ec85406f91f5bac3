// libFuzzer harness: the DWG containers (every layout, chosen by the input's first bytes) and the walk
// over the object map.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/headless/dwg_container.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  headless::DwgSections sections;
  std::string error;
  if (!headless::readDwgContainer(std::vector<std::uint8_t>(data, data + size), "fuzz.dwg", sections, error)) return 0;
  const headless::DwgObjectWalk walk = headless::walkObjects(sections);
  // Every object the walk reports lies inside the objects it was read from.
  for (const headless::DwgObjectHeader& object : walk.objects)
    if (object.offset + object.dataOffset + object.size + 2 > sections.objects.size()) __builtin_trap();
  return 0;
}
