// Accessors of text, multiline text, attributes, dimensions, leaders, tolerances, tables, answered from the stored groups.
#include "platform/headless/accessor_table.h"

namespace headless {

std::span<const AccessorImpl> textAccessors() {
  static const std::vector<AccessorImpl> table = {};
  return table;
}

}  // namespace headless
