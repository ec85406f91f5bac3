// vkcompare comparers: the factory's rows in order, from the one list the factory itself reads.
#include <cstdio>

#include "commands.h"
#include "comparers/ComparerFactory.h"

namespace vkcompare {

int runComparers() {
  std::printf("%-5s  %-28s  %s\n", "Order", "Entity class", "Comparer");
  for (const FactoryRow& row : factoryRows()) {
    const std::string_view cls = platform::className(row.cls);
    std::printf("%5d  %-28.*s  %.*s%s\n", row.order, static_cast<int>(cls.size()), cls.data(),
                static_cast<int>(row.comparer.size()), row.comparer.data(),
                row.make || row.rule != FactoryRule::Class ? "" : "  (not built yet: such entities go to the last rule)");
  }
  std::printf("%5zu  %-28s  %s\n", factoryRows().size() + 1, "anything else",
              "by DXF name: CVkAcDbRegion for REGION, CVkAcDbSolidOrTrace for SOLID and TRACE, else CVkCustomEntity");
  return 0;
}

}  // namespace vkcompare
