// The headless host's palette sets (tree order, drawing, choosing an item, the end of a session) and
// layers added to a drawing.
#include <gtest/gtest.h>

#include <vector>

#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "platform/headless/palettes.h"
#include "platform/palette.h"
#include "support/TestSupport.h"

namespace {

using headless::Palettes;

TEST(Palettes, ItemsKeepTreeOrderAndAreChosenByNumberOrLabel) {
  std::vector<platform::PaletteItemId> chosen;
  const platform::PaletteSetId set =
      platform::createPaletteSet("面板", [&](platform::PaletteItemId item) { chosen.push_back(item); });
  ASSERT_NE(set, 0u);
  const platform::PaletteItemId a = platform::insertPaletteItem(set, 0, "A");
  const platform::PaletteItemId b = platform::insertPaletteItem(set, 0, "B");
  // Children added later still follow their parent and its earlier children, grandchildren included.
  const platform::PaletteItemId a1 = platform::insertPaletteItem(set, a, "a1");
  platform::insertPaletteItem(set, a1, "a1x");
  platform::insertPaletteItem(set, a, "a2");
  platform::insertPaletteItem(set, b, "b1");
  EXPECT_EQ(platform::insertPaletteItem(set, 999999, "orphan"), 0u);
  EXPECT_EQ(platform::insertPaletteItem(set + 1000, 0, "nowhere"), 0u);
  const headless::PaletteSet* s = Palettes::instance().find(set);
  ASSERT_NE(s, nullptr);
  EXPECT_FALSE(s->visible);
  EXPECT_EQ(Palettes::render(*s),
            "面板\n  1   A\n      2   a1\n          3   a1x\n      4   a2\n  5   B\n      6   b1\n");

  EXPECT_EQ(Palettes::itemNamed(*s, "3"), s->items[2].id);
  EXPECT_EQ(Palettes::itemNamed(*s, "B"), b);
  EXPECT_EQ(Palettes::itemNamed(*s, "7"), std::nullopt);
  EXPECT_EQ(Palettes::itemNamed(*s, "0"), std::nullopt);
  EXPECT_EQ(Palettes::itemNamed(*s, "c"), std::nullopt);
  EXPECT_TRUE(Palettes::instance().activate(set, a1));
  EXPECT_FALSE(Palettes::instance().activate(set, 999999));
  EXPECT_EQ(chosen, std::vector<platform::PaletteItemId>{a1});

  // Only a set that shows is the command line's; the one shown last wins.
  EXPECT_EQ(Palettes::instance().shown(), nullptr);
  const platform::PaletteSetId other = platform::createPaletteSet("其他", nullptr);
  EXPECT_TRUE(platform::showPaletteSet(set, true));
  EXPECT_TRUE(platform::showPaletteSet(other, true));
  EXPECT_EQ(Palettes::instance().shown()->id, other);
  EXPECT_TRUE(platform::showPaletteSet(other, false));
  EXPECT_EQ(Palettes::instance().shown()->id, set);
  EXPECT_TRUE(Palettes::instance().activate(other, 0) == false);  // a set without the item

  EXPECT_TRUE(platform::deleteAllPaletteItems(set));
  EXPECT_EQ(Palettes::render(*Palettes::instance().find(set)), "面板\n  (空)\n");
  EXPECT_TRUE(platform::destroyPaletteSet(other));
  EXPECT_FALSE(platform::destroyPaletteSet(other));
  EXPECT_FALSE(platform::showPaletteSet(other, true));
  EXPECT_FALSE(platform::deleteAllPaletteItems(other));
  // The end of a session takes every set away.
  headless::HostSession::instance().shutdown();
  EXPECT_EQ(Palettes::instance().find(set), nullptr);
}

TEST(Palettes, TheCommandLineDrawsTheShownSetAndDoubleClicksAChoice) {
  headless::HostSession& host = headless::HostSession::instance();
  headless::Console& console = headless::Console::instance();
  host.shutdown();
  vktest::quietConsole();
  console.takeTranscript();
  host.execute("PALETTE\n");
  EXPECT_NE(console.takeTranscript().find("没有显示的选项板。"), std::string::npos);

  std::vector<platform::PaletteItemId> chosen;
  const platform::PaletteSetId set =
      platform::createPaletteSet("面板", [&](platform::PaletteItemId item) { chosen.push_back(item); });
  const platform::PaletteItemId item = platform::insertPaletteItem(set, 0, "带 空格 的条目");
  platform::showPaletteSet(set, true);
  host.execute("PALETTE\n\n");
  EXPECT_NE(console.takeTranscript().find("面板\n  1   带 空格 的条目\n"), std::string::npos);
  host.execute("PALETTE \"带 空格 的条目\"\nPALETTE 1\nPALETTE 2\n");
  EXPECT_NE(console.takeTranscript().find("选项板上没有这个条目：2"), std::string::npos);
  EXPECT_EQ(chosen, (std::vector<platform::PaletteItemId>{item, item}));
  host.execute("HELP\n");
  EXPECT_NE(console.takeTranscript().find("  PALETTE\n"), std::string::npos);
  host.shutdown();
}

TEST(Layers, AddedLayersAreFoundByNameAndIdAndBadOrTakenNamesAreRefused) {
  vktest::TempDir dir;
  auto db = vktest::readDxfText(dir, "a.dxf", vktest::dxfDrawing("0|LINE|8|0|10|0|20|0|30|0|11|1|21|1|31|0"));
  ASSERT_NE(db, nullptr);
  platform::LayerRecord record;
  record.name = "Marks";
  record.colorIndex = 30;
  platform::ObjectId id;
  ASSERT_EQ(db->addLayer(record, id), platform::ErrorStatus::eOk);
  ASSERT_FALSE(id.isNull());
  ASSERT_NE(db->layer(id), nullptr);
  EXPECT_EQ(db->layer(id)->name, "Marks");
  EXPECT_EQ(db->layer("MARKS")->colorIndex, 30);
  const std::size_t count = db->layers().size();
  for (const char* bad : {"", "marks", "a/b", "a*b", "a=b"}) {
    record.name = bad;
    EXPECT_EQ(db->addLayer(record, id), platform::ErrorStatus::eInvalidInput) << bad;
    EXPECT_TRUE(id.isNull()) << bad;
  }
  EXPECT_EQ(db->layers().size(), count);
}

}  // namespace
