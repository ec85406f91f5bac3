// The settings store: defaults, the layer-scope correction, IsShow kept apart, and the excluded codes.
#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/profile.h"
#include "support/TestSupport.h"
#include "ui/CompareConfigFile.h"

using vktest::ScopedEnv;
using vktest::TempDir;

namespace {

struct StoreFixture : ::testing::Test {
  TempDir dir;
  ScopedEnv env{"APPDATA", dir.path().c_str()};
};

}  // namespace

TEST_F(StoreFixture, ConstructionBuildsPathsAndFolders) {
  CCompareConfigFile store;
  EXPECT_EQ(store.DataFolder(), dir.path() + "/Morvane/VkAcadCompareDwg");
  EXPECT_EQ(store.IniPath(), dir.path() + "/Morvane/VkAcadCompareDwg/VkCompareDwgData.ini");
  EXPECT_EQ(platform::fileKind(store.DataFolder()), platform::FileKind::Folder);
  EXPECT_EQ(platform::fileKind(store.DataFolder() + "/ToosBmp"), platform::FileKind::Folder);
  EXPECT_EQ(platform::fileKind(store.IniPath()), platform::FileKind::Missing);  // nothing written yet
}

TEST_F(StoreFixture, WithoutFileEverythingIsOnAndPathsEmpty) {
  CCompareConfigFile store;
  store.SetCompareFlags(0, 0, 0, 0, 0, 0, 0);
  store.SetExterEntity(0);
  store.SetLayerScope(kLayerScopeChosen);
  store.ReadSettings();
  int l, c, lt, lw, ts, z, tv;
  store.GetCompareFlags(l, c, lt, lw, ts, z, tv);
  EXPECT_EQ((std::vector<int>{l, c, lt, lw, ts, z, tv}), (std::vector<int>{1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(store.GetExterEntity(), 1);
  EXPECT_EQ(store.GetLayerScope(), kLayerScopeAll);
  EXPECT_EQ(store.GetIsShow(), 1);
  store.ReadCompareFiles();
  EXPECT_EQ(store.SourceFile(), "");
  EXPECT_EQ(store.DestinationFile(), "");
  EXPECT_TRUE(store.ExcludedCodes().empty());
}

TEST_F(StoreFixture, OutOfRangeScopeIsCorrectedTo120) {
  CCompareConfigFile store;
  platform::writePrivateProfileString("CFGDATA", "AllorSectionLayer", "121", store.IniPath());
  store.ReadSettings();
  EXPECT_EQ(store.GetLayerScope(), kLayerScopeAll);
  platform::writePrivateProfileString("CFGDATA", "AllorSectionLayer", "122", store.IniPath());
  store.ReadSettings();
  EXPECT_EQ(store.GetLayerScope(), kLayerScopeChosen);
}

TEST_F(StoreFixture, WriteSettingsLeavesIsShowAndSetIsShowWritesAtOnce) {
  CCompareConfigFile store;
  store.SetIsShow(0);
  store.SetCompareFlags(0, 1, 0, 1, 0, 1, 0);
  store.WriteSettings();
  EXPECT_EQ(platform::getPrivateProfileInt("CFGDATA", "IsShow", 7, store.IniPath()), 0);
  // Another instance (a later start of the host) sees what was written.
  CCompareConfigFile later;
  later.ReadSettings();
  EXPECT_EQ(later.GetIsShow(), 0);
  int l, c, lt, lw, ts, z, tv;
  later.GetCompareFlags(l, c, lt, lw, ts, z, tv);
  EXPECT_EQ((std::vector<int>{l, c, lt, lw, ts, z, tv}), (std::vector<int>{0, 1, 0, 1, 0, 1, 0}));
  // GetIsShow reads the file afresh, not the field.
  platform::writePrivateProfileString("CFGDATA", "IsShow", "1", store.IniPath());
  EXPECT_EQ(store.GetIsShow(), 1);
}

TEST_F(StoreFixture, ExcludedCodesInTheirFixedOrder) {
  CCompareConfigFile store;
  store.SetCompareFlags(0, 0, 0, 0, 0, 0, 0);
  EXPECT_EQ(store.ExcludedCodes(), (std::vector<int>{8, 62, 6, 370, 30, 7, 2000}));
  store.SetCompareFlags(1, 0, 1, 1, 0, 1, 1);  // colour and text style off
  EXPECT_EQ(store.ExcludedCodes(), (std::vector<int>{62, 7}));
  const CompareOptions options = store.Options();
  EXPECT_FALSE(options.isCompared(62));
  EXPECT_TRUE(options.isCompared(8));
  EXPECT_TRUE(options.isCompared(40));  // any other group code is compared
  store.SetCompareFlags(1, 1, 1, 1, 1, 1, 5);  // any non-zero value counts as on
  EXPECT_TRUE(store.ExcludedCodes().empty());
}

TEST_F(StoreFixture, CompareFilesRoundTripAndCut) {
  CCompareConfigFile store;
  store.SetSourceFile("/drawings/源.dwg");
  store.SetDestinationFile(std::string(300, 'd'));
  store.WriteCompareFiles();
  CCompareConfigFile later;
  later.ReadCompareFiles();
  EXPECT_EQ(later.SourceFile(), "/drawings/源.dwg");
  EXPECT_EQ(later.DestinationFile(), std::string(259, 'd'));
}

TEST(CompareConfigFile, FileInTheWayOfTheDataFolderIsLeftAlone) {
  TempDir dir;
  ScopedEnv env("APPDATA", dir.path().c_str());
  vktest::writeFile(dir.file("Morvane"), "not a folder");
  CCompareConfigFile store;
  EXPECT_EQ(platform::fileKind(store.DataFolder()), platform::FileKind::Missing);
  EXPECT_EQ(vktest::readFile(dir.file("Morvane")), "not a folder");
  // Settings then fall back to their defaults and writes fail quietly.
  store.SetIsShow(0);
  EXPECT_EQ(store.GetIsShow(), 1);
}

TEST(CompareConfigFile, FailedExpansionLeavesPathsEmpty) {
  ScopedEnv a("APPDATA", nullptr), x("XDG_CONFIG_HOME", nullptr), h("HOME", nullptr);
  CCompareConfigFile store;
  EXPECT_EQ(store.DataFolder(), "");
  EXPECT_EQ(store.IniPath(), "");
  store.ReadSettings();
  EXPECT_EQ(store.GetLayerScope(), kLayerScopeAll);
}
