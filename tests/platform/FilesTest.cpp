// Folder creation with its parents, environment expansion and the module path.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/environment.h"
#include "platform/files.h"
#include "support/TestSupport.h"

using namespace platform;
using vktest::ScopedEnv;
using vktest::TempDir;

TEST(CreateFolderPath, CreatesLevelByLevelAndAcceptsExisting) {
  TempDir dir;
  const std::string deep = dir.file("a/b/c");
  EXPECT_TRUE(CreateFolderPath(deep));
  EXPECT_EQ(fileKind(dir.file("a")), FileKind::Folder);
  EXPECT_EQ(fileKind(deep), FileKind::Folder);
  EXPECT_TRUE(CreateFolderPath(deep + "/"));  // a trailing separator is dropped
  EXPECT_TRUE(CreateFolderPath("/"));
}

TEST(CreateFolderPath, FileInTheWayStopsAndIsLeftAlone) {
  TempDir dir;
  vktest::writeFile(dir.file("f"), "data");
  EXPECT_FALSE(CreateFolderPath(dir.file("f")));
  EXPECT_FALSE(CreateFolderPath(dir.file("f/sub/deeper")));
  EXPECT_EQ(vktest::readFile(dir.file("f")), "data");
  EXPECT_EQ(fileKind(dir.file("f/sub")), FileKind::Missing);
}

TEST(Environment, AppDataFallsBackToXdgThenHome) {
  std::string out;
  {
    ScopedEnv a("APPDATA", "/tmp/appdata"), x("XDG_CONFIG_HOME", "/tmp/xdg");
    ASSERT_TRUE(expandEnvironmentStrings("%APPDATA%", out, 1024));
    EXPECT_EQ(out, "/tmp/appdata");
  }
  {
    ScopedEnv a("APPDATA", nullptr), x("XDG_CONFIG_HOME", "/tmp/xdg");
    ASSERT_TRUE(expandEnvironmentStrings("%APPDATA%/x", out, 1024));
    EXPECT_EQ(out, "/tmp/xdg/x");
  }
  {
    ScopedEnv a("APPDATA", nullptr), x("XDG_CONFIG_HOME", nullptr), h("HOME", "/home/u");
    ASSERT_TRUE(expandEnvironmentStrings("%APPDATA%", out, 1024));
    EXPECT_EQ(out, "/home/u/.config");
  }
  {
    ScopedEnv a("APPDATA", nullptr), x("XDG_CONFIG_HOME", nullptr), h("HOME", nullptr);
    EXPECT_FALSE(expandEnvironmentStrings("%APPDATA%", out, 1024));
  }
  ScopedEnv a("APPDATA", "/tmp/appdata");
  EXPECT_TRUE(expandEnvironmentStrings("%VK_SURELY_UNSET_NAME%", out, 1024));
  EXPECT_EQ(out, "%VK_SURELY_UNSET_NAME%");
  EXPECT_FALSE(expandEnvironmentStrings("%APPDATA%", out, 5));  // does not fit the buffer
}

TEST(Files, ModulePathNamesAnExistingFile) {
  const std::string path = moduleFilePath();
  ASSERT_FALSE(path.empty());
  EXPECT_EQ(fileKind(path), FileKind::File);
  EXPECT_EQ(fileNamePart("/a/b/c.dwg"), "c.dwg");
  EXPECT_EQ(parentPath("/a/b/c.dwg"), "/a/b");
  EXPECT_EQ(fileNamePart("c.dwg"), "c.dwg");
}
