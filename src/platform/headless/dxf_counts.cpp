// Counts written in entity records, checked against the groups the records hold.
#include "platform/headless/dxf_counts.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "platform/headless/dxf_groups.h"

namespace headless {

namespace {

// A count group of an entity's subclass and the groups it counts there (with a second count group, the
// product of both counts them, as rows times columns count a table's cells).
struct CountRule {
  std::string_view dxfName, subclass;
  int count, times, counted;
  const char* what;
  // The counted groups may be kept in an object of the entity's extension dictionary instead (tables of
  // R2010 and later keep their rows, columns and cells in a TABLECONTENT object): a record that links one
  // and holds none of the groups is not checked.
  bool mayLiveElsewhere = false;
};

constexpr CountRule kRules[] = {
    {"LWPOLYLINE", "AcDbPolyline", 90, 0, 10, "vertices"},
    {"SPLINE", "AcDbSpline", 72, 0, 40, "knots"},
    {"SPLINE", "AcDbSpline", 73, 0, 10, "control points"},
    {"SPLINE", "AcDbSpline", 74, 0, 11, "fit points"},
    {"ACAD_TABLE", "AcDbTable", 91, 0, 141, "row heights", true},
    {"ACAD_TABLE", "AcDbTable", 92, 0, 142, "column widths", true},
    {"ACAD_TABLE", "AcDbTable", 91, 92, 171, "cells", true},
    {"HATCH", "AcDbHatch", 91, 0, 92, "boundary paths"},
    {"MPOLYGON", "AcDbMPolygon", 91, 0, 92, "boundary paths"},
    {"MLINE", "AcDbMline", 72, 0, 11, "vertices"},
    {"LEADER", "AcDbLeader", 76, 0, 10, "vertices"},
    {"MESH", "AcDbSubDMesh", 92, 0, 10, "vertices"},
};

struct Tally {
  long long count = -1, times = -1;  // -1 until the group is met
  long long present = 0;
};

// Counts beyond this are taken as this, so that the product of two stays exact.
constexpr long long kLargestCount = 1LL << 31;
long long countOf(const platform::StoredTag& t) {
  const long long count = t.integer;  // a copy: the stored value is packed, no reference may bind to it
  return std::clamp(count, 0LL, kLargestCount);
}

}  // namespace

bool statesCounts(std::string_view dxfName) {
  return std::any_of(std::begin(kRules), std::end(kRules), [&](const CountRule& r) { return r.dxfName == dxfName; });
}

void checkCounts(const platform::DatabaseData& data, const platform::EntityRec& e,
                 const std::function<void(const std::string& key, const std::string& text)>& warn) {
  const std::string_view dxfName = data.name(e.dxfName);
  // Most entities (lines, circles, texts) state no count: they are done without a look at their groups.
  if (!statesCounts(dxfName)) return;
  const Groups g(data, e);
  bool linksDictionary = false;
  for (std::uint32_t i = 0; i < g.ownCount() && !linksDictionary; ++i)
    linksDictionary = g.at(i).code == 102 && g.textAt(i) == "{ACAD_XDICTIONARY";
  for (const CountRule& rule : kRules) {
    if (rule.dxfName != dxfName) continue;
    // Records without subclass markers (R12) hold every group in one part.
    Tally tally;
    std::string_view seen;  // the last subclass compared with the rule's, and whether it is the rule's
    bool inRule = true;
    g.visitOwn([&](std::uint32_t i, std::string_view subclass) {
      if (subclass.data() != seen.data() || subclass.size() != seen.size()) {
        seen = subclass;
        inRule = subclass.empty() || subclass == rule.subclass;
      }
      if (!inRule) return true;
      const platform::StoredTag& t = g.at(i);
      if (t.code == rule.counted) ++tally.present;
      else if (!isIntegral(t.type)) return true;
      else if (t.code == rule.count && tally.count < 0) tally.count = countOf(t);
      else if (rule.times && t.code == rule.times && tally.times < 0) tally.times = countOf(t);
      return true;
    });
    if (tally.count < 0 || (rule.times && tally.times < 0)) continue;
    const long long claimed = rule.times ? tally.count * tally.times : tally.count;
    if (claimed <= tally.present || (rule.mayLiveElsewhere && linksDictionary && tally.present == 0)) continue;
    char entity[96];
    std::snprintf(entity, sizeof entity, "%s %llX: ", std::string(dxfName).c_str(),
                  static_cast<unsigned long long>(e.handle));
    const std::string says = rule.times ? "groups " + std::to_string(rule.count) + " and " + std::to_string(rule.times) +
                                              " say " + std::to_string(tally.count) + " x " + std::to_string(tally.times)
                                        : "group " + std::to_string(rule.count) + " says " + std::to_string(claimed);
    warn("count-" + std::string(dxfName) + "-" + std::to_string(rule.counted),
         entity + says + " " + rule.what + ", the record holds " + std::to_string(tally.present) +
             "; those present are read");
  }
}

}  // namespace headless
