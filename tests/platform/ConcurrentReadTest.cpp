// Reading two drawings on two threads at once: each reads exactly as it does alone.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>

#include "platform/database.h"
#include "support/TestSupport.h"

using namespace platform;
using vktest::dxfDrawing;
using vktest::TempDir;

namespace {

// Everything a read gives: the report, the drawing's identity, and every entity of model space with its
// properties and its whole group list.
std::string describe(const std::string& path) {
  ReadReport report;
  const auto db = Database::read(path, report);
  std::string out = "error: " + report.error + "\n";
  for (const std::string& w : report.warnings) out += "warning: " + w + "\n";
  if (!db) return out;
  out += std::string(db->version()) + " " + std::string(db->codepage()) + "\n";
  char number[64];
  for (ObjectId id : db->blockRecord(db->modelSpaceId()).entityIds()) {
    const Entity e = db->openEntity(id);
    out += std::string(e.dxfName()) + " " + std::to_string(e.handle()) + " " + std::string(e.layer()) + " " +
           std::string(e.linetype()) + " " + std::to_string(e.colorIndex()) + " " + std::string(className(e.dbClass())) +
           ":";
    for (const ResBuf& r : e.entGet()) {
      std::snprintf(number, sizeof number, " %d=%a,%lld,%a,%a,%a,%llu", r.code, r.real, r.integer, r.point.x, r.point.y,
                    r.point.z, static_cast<unsigned long long>(r.id.value));
      out += number;
      out += "'" + r.text + "'";
    }
    out += "\n";
  }
  return out;
}

// Entities that take every path of reading: texts decoded from a code page and from escapes, values too
// small or too large for a double, counts that claim more than their record holds, layers and linetypes
// of several spellings.
std::string entities(int count, bool r12) {
  std::string s;
  for (int i = 0; i < count; ++i) {
    const std::string n = std::to_string(i);
    const std::string layer = "|8|" + std::string(i % 3 == 0 ? "Walls" : i % 3 == 1 ? "walls" : "Doors");
    const std::string handle = r12 ? "" : "|5|" + std::to_string(100 + i);
    switch (i % 5) {
      case 0: s += "|0|LINE" + handle + layer + "|6|DASHED|10|" + n + ".25|20|1e-400|30|0|11|-" + n + "|21|2.5e3|31|0"; break;
      case 1: s += "|0|CIRCLE" + handle + layer + "|62|" + std::to_string(i % 255 + 1) + "|10|" + n + "|20|1|30|0|40|0.5"; break;
      case 2:
        s += "|0|TEXT" + handle + layer + "|10|0|20|0|30|0|40|2.5|1|" +
             (r12 ? "\x93\xfa\x96\x7b \\M+18140 " : "\xc4\xe0\xed\xed\xfb\xe5 \\U+2300 ") + n;
        break;
      case 3: s += "|0|LINE" + handle + layer + "|10|1e999|20|0|30|0|11|1|21|1|31|0"; break;
      default:
        s += r12 ? "|0|POINT" + layer + "|10|" + n + "|20|-0.0|30|0"
                 : "|0|LWPOLYLINE" + handle + layer + "|100|AcDbEntity|100|AcDbPolyline|90|4|70|0|10|0|20|0|10|" + n +
                       "|20|1";
        break;
    }
  }
  return s.substr(1);
}

TEST(ConcurrentRead, TwoDrawingsReadOnTwoThreadsReadAsEachAlone) {
  TempDir dir;
  const std::string a = dir.file("a.dxf"), b = dir.file("b.dxf");
  vktest::writeFile(a, dxfDrawing(entities(4000, false), "AC1015", "9|$DWGCODEPAGE|3|ANSI_1251"));
  vktest::writeFile(b, dxfDrawing(entities(4000, true), "AC1009", "9|$DWGCODEPAGE|3|ANSI_932"));
  const std::string aloneA = describe(a), aloneB = describe(b);
  // The drawings hold what the reading paths above make of them.
  EXPECT_NE(aloneA.find("\xd0\x94\xd0\xb0\xd0\xbd\xd0\xbd\xd1\x8b\xd0\xb5 \xe2\x8c\x80 2"), std::string::npos);
  EXPECT_NE(aloneB.find("\xe6\x97\xa5\xe6\x9c\xac \xe3\x80\x80 2"), std::string::npos);
  EXPECT_NE(aloneA.find("warning: "), std::string::npos);
  EXPECT_NE(aloneA, aloneB);
  for (int round = 0; round < 4; ++round) {
    std::string togetherA, togetherB;
    std::thread first([&] { togetherA = describe(a); });
    std::thread second([&] { togetherB = describe(b); });
    first.join();
    second.join();
    EXPECT_EQ(togetherA, aloneA) << "round " << round;
    EXPECT_EQ(togetherB, aloneB) << "round " << round;
  }
}

}  // namespace
