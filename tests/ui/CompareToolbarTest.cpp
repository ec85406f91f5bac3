// The toolbar "Morvane图纸比较" made on the headless host's menu groups: its buttons, its BMP pictures read
// back, a second start-up, a host without the group "Acad", the automation objects' refusals.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

#include "platform/files.h"
#include "platform/headless/host_session.h"
#include "platform/menus.h"
#include "support/TestSupport.h"
#include "ui/CompareToolbar.h"
#include "ui/HostMenus.h"

using vktest::TempDir;

namespace {

std::uint32_t le32(const std::string& b, std::size_t at) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(b[at])) |
         static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 1])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 2])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 3])) << 24;
}
unsigned le16(const std::string& b, std::size_t at) {
  return static_cast<unsigned>(static_cast<unsigned char>(b[at])) |
         static_cast<unsigned>(static_cast<unsigned char>(b[at + 1])) << 8;
}

struct ToolbarFixture : ::testing::Test {
  TempDir dir;
  std::string data;
  void SetUp() override {
    headless::HostSession::instance().shutdown();
    data = dir.file("data");
    std::filesystem::create_directories(data + "/ToosBmp");
  }
  void TearDown() override { headless::HostSession::instance().shutdown(); }

  // The toolbars named "Morvane图纸比较" in the group "Acad".
  static std::vector<platform::ToolbarInfo> compareToolbars() {
    std::vector<platform::ToolbarInfo> found;
    for (platform::ToolbarId id : platform::toolbars("Acad"))
      if (platform::toolbarInfo(id)->name == kCompareToolbarName) found.push_back(*platform::toolbarInfo(id));
    return found;
  }
};

}  // namespace

TEST_F(ToolbarFixture, EightButtonsWithTheirTextsMacrosAndPictures) {
  ASSERT_EQ(CreateCompareToolbar(HostApplication(), data), 1);
  const auto found = compareToolbars();
  ASSERT_EQ(found.size(), 1u);
  const platform::ToolbarInfo& toolbar = found[0];
  EXPECT_TRUE(toolbar.visible);
  ASSERT_EQ(toolbar.buttons.size(), 8u);
  const std::string expected[8][3] = {
      {"打开文件", "打开要比较的两个文件。", "\x03_VKOpenDwgFiles "},
      {"选区域", "选择比较区域。", "\x03_VKSetCompareArea "},
      {"设基点", "设置比较基点。", "\x03_VKSetCompareBasePt "},
      {"比较", "根据区域、基点进行比较。", "\x03_VKUniversallyCompareFile "},
      {"比图设置", "设置图纸比较的参数。", "\x03_VkCompareSet "},
      {"结果显示", "正常显示/显示差异。", "\x03_VkResultShow "},
      {"显示所有差异范围", "始终显示/不显示所有差异范围。", "\x03_VkShowAllDiffRect "},
      {"结束比图", "结束比图。", "\x03_VkEndCompare "},
  };
  const char* files[8] = {"OpenFileS", "SetComArea", "SetComBase", "CompareFile",
                          "Setting",   "ResultShow", "AllDiffShow", "EndCompare"};
  for (std::size_t i = 0; i < 8; ++i) {
    const platform::ToolbarButton& b = toolbar.buttons[i];
    EXPECT_EQ(b.name, expected[i][0]);
    EXPECT_EQ(b.helpString, expected[i][1]);
    EXPECT_EQ(b.macro, expected[i][2]);
    const std::string path = data + "/ToosBmp/" + files[i] + ".bmp";
    EXPECT_EQ(b.smallBitmap, path);
    EXPECT_EQ(b.largeBitmap, path);
    EXPECT_EQ(platform::fileKind(path), platform::FileKind::File) << path;
  }
}

TEST_F(ToolbarFixture, EachPictureIsAValidBmpOfItsOwn) {
  std::set<std::string> distinct;
  for (const CompareToolbarButton& row : CompareToolbarButtons()) {
    const std::string path = dir.file(row.bitmapFile);
    ASSERT_TRUE(WriteBitmapFile(row.resourceId, path)) << row.bitmapFile;
    const std::string b = vktest::readFile(path);
    ASSERT_GE(b.size(), 54u);
    EXPECT_EQ(b.substr(0, 2), "BM");
    EXPECT_EQ(le32(b, 2), b.size()) << "the file size in the header";
    EXPECT_EQ(le32(b, 10), 54u) << "the pixels follow the two headers";
    EXPECT_EQ(le32(b, 14), 40u);
    const std::uint32_t width = le32(b, 18), height = le32(b, 22);
    EXPECT_EQ(width, 16u);
    EXPECT_EQ(height, 16u);
    EXPECT_EQ(le16(b, 26), 1u);
    EXPECT_EQ(le16(b, 28), 24u);
    EXPECT_EQ(le32(b, 30), 0u);
    const std::uint32_t rowBytes = (width * 3 + 3) / 4 * 4;
    EXPECT_EQ(le32(b, 34), rowBytes * height);
    EXPECT_EQ(b.size(), 54u + rowBytes * height);
    // A picture, not a blank: more than the background colour in it, and unlike every other button's.
    std::set<std::string> colours;
    for (std::size_t p = 54; p + 3 <= b.size(); p += 3) colours.insert(b.substr(p, 3));
    EXPECT_GE(colours.size(), 2u) << row.bitmapFile;
    distinct.insert(b);
  }
  EXPECT_EQ(distinct.size(), 8u);
  EXPECT_FALSE(LoadBitmapResource(999).has_value());
  EXPECT_FALSE(WriteBitmapFile(999, dir.file("none.bmp")));
  EXPECT_EQ(platform::fileKind(dir.file("none.bmp")), platform::FileKind::Missing);
}

TEST_F(ToolbarFixture, AnOddWidthPadsEveryRowToFourBytes) {
  BitmapResource bitmap{3, 2, {0x112233, 0x445566, 0x778899, 0xAABBCC, 0xDDEEFF, 0x010203}};
  const std::string b = BmpFileBytes(bitmap);
  ASSERT_EQ(b.size(), 54u + 2 * 12);
  EXPECT_EQ(le32(b, 34), 24u);
  // The bottom row comes first, each pixel blue, green, red, then three bytes of padding.
  EXPECT_EQ(b.substr(54, 12), std::string("\xCC\xBB\xAA\xFF\xEE\xDD\x03\x02\x01\0\0\0", 12));
  EXPECT_EQ(b.substr(66, 3), "\x33\x22\x11");
}

TEST_F(ToolbarFixture, ASecondStartUpAddsNoButtonsAndWritesNoPictures) {
  ASSERT_EQ(CreateCompareToolbar(HostApplication(), data), 1);
  // The user moved a button away and a picture went missing: both stay as they are.
  const platform::ToolbarId id = compareToolbars().at(0).id;
  platform::addToolbarButton(id, 0, "mine", "", "LINE ");
  std::filesystem::remove(data + "/ToosBmp/Setting.bmp");
  EXPECT_EQ(CreateCompareToolbar(HostApplication(), data), 1);
  const auto found = compareToolbars();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].buttons.size(), 9u);
  EXPECT_EQ(found[0].buttons[0].name, "mine");
  EXPECT_EQ(platform::fileKind(data + "/ToosBmp/Setting.bmp"), platform::FileKind::Missing);
}

TEST_F(ToolbarFixture, NoGroupAcadNoToolbar) {
  ASSERT_TRUE(platform::unloadMenuGroup("Acad"));
  ASSERT_TRUE(platform::loadMenuGroup("Custom"));
  EXPECT_EQ(CreateCompareToolbar(HostApplication(), data), 0);
  EXPECT_TRUE(platform::toolbars("Custom").empty());
  EXPECT_FALSE(SetCompareToolbarVisible(HostApplication(), true));
  EXPECT_FALSE(DeleteCompareToolbar(HostApplication()));
  // The group's name must match exactly: a group spelt "ACAD" is not taken.
  ASSERT_TRUE(platform::loadMenuGroup("ACAD"));
  EXPECT_EQ(CreateCompareToolbar(HostApplication(), data), 0);
  EXPECT_FALSE(std::filesystem::exists(data + "/ToosBmp/OpenFileS.bmp"));
}

TEST_F(ToolbarFixture, WithoutAPictureFolderTheButtonsKeepTheHostsPictures) {
  std::filesystem::remove_all(data + "/ToosBmp");
  ASSERT_EQ(CreateCompareToolbar(HostApplication(), data), 1);
  const auto found = compareToolbars();
  ASSERT_EQ(found.size(), 1u);
  ASSERT_EQ(found[0].buttons.size(), 8u);
  for (const platform::ToolbarButton& b : found[0].buttons) {
    EXPECT_TRUE(b.smallBitmap.empty()) << b.name;
    EXPECT_EQ(b.macro.front(), '\x03');
  }
  // No data folder at all: nothing is written anywhere, not beside the process either.
  ASSERT_TRUE(DeleteCompareToolbar(HostApplication()));
  ASSERT_EQ(CreateCompareToolbar(HostApplication(), ""), 1);
  EXPECT_TRUE(compareToolbars().at(0).buttons.at(0).smallBitmap.empty());
  EXPECT_FALSE(std::filesystem::exists("ToosBmp"));
}

TEST_F(ToolbarFixture, VisibilityAndRemovalFindTheToolbarByName) {
  ASSERT_EQ(CreateCompareToolbar(HostApplication(), data), 1);
  const platform::ToolbarId id = compareToolbars().at(0).id;
  ASSERT_TRUE(SetCompareToolbarVisible(HostApplication(), false));
  EXPECT_FALSE(platform::toolbarInfo(id)->visible);
  ASSERT_TRUE(SetCompareToolbarVisible(HostApplication(), true));
  EXPECT_TRUE(platform::toolbarInfo(id)->visible);
  ASSERT_TRUE(DeleteCompareToolbar(HostApplication()));
  EXPECT_FALSE(platform::toolbarInfo(id).has_value());
  EXPECT_FALSE(SetCompareToolbarVisible(HostApplication(), true));
}

TEST_F(ToolbarFixture, AutomationObjectsCheckTheirArgumentsAndOutliveNothing) {
  AutomationValue value;
  ASSERT_EQ(AutoWrap(kDispatchPropertyGet, &value, &HostApplication(), "MenuGroups"), kSOk);
  CAutomationObject* groups = std::get<CAutomationObject*>(value);
  ASSERT_EQ(AutoWrap(kDispatchMethod, &value, groups, "Item", {std::string("acad")}), kSOk);
  CAutomationObject* group = std::get<CAutomationObject*>(value);
  EXPECT_EQ(AutoWrap(kDispatchMethod, &value, groups, "Item", {5LL}), kEFail);
  ASSERT_EQ(AutoWrap(kDispatchPropertyGet, &value, group, "Toolbars"), kSOk);
  CAutomationObject* toolbars = std::get<CAutomationObject*>(value);
  EXPECT_EQ(AutoWrap(kDispatchMethod, &value, toolbars, "Add", {7LL}), kDispETypeMismatch);
  EXPECT_EQ(AutoWrap(kDispatchMethod, &value, toolbars, "Add", {std::string()}), kEFail);
  ASSERT_EQ(AutoWrap(kDispatchMethod, &value, toolbars, "Add", {std::string("T")}), kSOk);
  CAutomationObject* toolbar = std::get<CAutomationObject*>(value);
  EXPECT_EQ(AutoWrap(kDispatchMethod, &value, toolbar, "AddToolbarButton", {0LL, std::string("a")}),
            kDispEBadParamCount);
  EXPECT_EQ(AutoWrap(kDispatchMethod, &value, toolbar, "AddToolbarButton",
                     {-1LL, std::string("a"), std::string(""), std::string("")}),
            kEFail);
  // Index 100 appends; index 0 goes in front.
  for (auto [index, name] : {std::pair{100LL, "second"}, std::pair{0LL, "first"}})
    ASSERT_EQ(AutoWrap(kDispatchMethod, &value, toolbar, "AddToolbarButton",
                       {index, std::string(name), std::string("tip"), std::string("^C^CLINE ")}),
              kSOk);
  CAutomationObject* item = std::get<CAutomationObject*>(value);
  ASSERT_EQ(AutoWrap(kDispatchMethod, &value, toolbar, "Item", {1LL}), kSOk);
  ASSERT_EQ(AutoWrap(kDispatchPropertyGet, &value, std::get<CAutomationObject*>(value), "Name"), kSOk);
  EXPECT_EQ(std::get<std::string>(value), "second");
  EXPECT_EQ(AutoWrap(kDispatchMethod, nullptr, item, "SetBitmaps", {std::string("a.bmp")}), kDispEBadParamCount);
  EXPECT_EQ(AutoWrap(kDispatchMethod, nullptr, item, "Nonsense"), kDispEUnknownName);
  EXPECT_NE(AutoWrapMessage().find("Nonsense"), std::string::npos);
  // Once the toolbar is deleted, its objects and its items answer with a failure, not with stale values.
  ASSERT_EQ(AutoWrap(kDispatchMethod, nullptr, toolbar, "Delete"), kSOk);
  EXPECT_EQ(AutoWrap(kDispatchPropertyGet, &value, toolbar, "Name"), kEFail);
  EXPECT_EQ(AutoWrap(kDispatchPropertyGet, &value, item, "Name"), kEFail);
  ASSERT_TRUE(platform::unloadMenuGroup("Acad"));
  EXPECT_EQ(AutoWrap(kDispatchPropertyGet, &value, toolbars, "Count"), kEFail);
  EXPECT_EQ(AutoWrap(kDispatchPropertyGet, &value, group, "Name"), kEFail);
}
