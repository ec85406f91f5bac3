// INI semantics of the private-profile functions, and their whole-or-nothing writes.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "platform/profile.h"
#include "support/TestSupport.h"

using namespace platform;
using vktest::readFile;
using vktest::TempDir;
using vktest::writeFile;

TEST(Profile, MissingFileSectionOrKeyGivesDefault) {
  TempDir dir;
  const std::string ini = dir.file("missing.ini");
  EXPECT_EQ(getPrivateProfileString("A", "k", "dflt", 260, ini), "dflt");
  EXPECT_EQ(getPrivateProfileInt("A", "k", 7, ini), 7);
  writeFile(ini, "[A]\nother=1\n");
  EXPECT_EQ(getPrivateProfileInt("A", "k", 7, ini), 7);
  EXPECT_EQ(getPrivateProfileInt("B", "other", 7, ini), 7);
}

TEST(Profile, NamesIgnoreCaseAndIntegersReadLeadingDigits) {
  TempDir dir;
  const std::string ini = dir.file("s.ini");
  writeFile(ini,
            "; comment\r\n[CfgData]\r\n  Layer = 12abc \r\nColor=abc\r\nZ=-3\r\nEmpty=\r\nQuoted=\"a b\"\r\n"
            "[Other]\r\nLayer=99\r\n");
  EXPECT_EQ(getPrivateProfileInt("CFGDATA", "layer", 1, ini), 12);
  EXPECT_EQ(getPrivateProfileInt("cfgdata", "COLOR", 1, ini), 0);  // not a number reads 0
  EXPECT_EQ(getPrivateProfileInt("CFGDATA", "Z", 1, ini), -3);
  EXPECT_EQ(getPrivateProfileInt("CFGDATA", "Empty", 5, ini), 5);  // an empty value gives the default
  EXPECT_EQ(getPrivateProfileString("CFGDATA", "Quoted", "", 260, ini), "a b");
  EXPECT_EQ(getPrivateProfileString("CFGDATA", "Layer", "", 260, ini), "12abc");
}

TEST(Profile, WriteReplacesInPlaceAppendsKeyAndSection) {
  TempDir dir;
  const std::string ini = dir.file("w.ini");
  writeFile(ini, "; keep me\n[A]\nx=1\ny=2\n\n[B]\nz=3\n");
  ASSERT_TRUE(writePrivateProfileString("a", "X", "10", ini));
  EXPECT_EQ(readFile(ini), "; keep me\n[A]\nx=10\ny=2\n\n[B]\nz=3\n");
  ASSERT_TRUE(writePrivateProfileString("A", "w", "4", ini));
  EXPECT_EQ(readFile(ini), "; keep me\n[A]\nx=10\ny=2\nw=4\n\n[B]\nz=3\n");
  ASSERT_TRUE(writePrivateProfileString("C", "v", "5", ini));
  EXPECT_EQ(readFile(ini), "; keep me\n[A]\nx=10\ny=2\nw=4\n\n[B]\nz=3\n\n[C]\nv=5\n");
  EXPECT_EQ(getPrivateProfileString("C", "v", "", 260, ini), "5");
}

TEST(Profile, BatchWriteEqualsOneWritePerKey) {
  TempDir dir;
  const std::string one = dir.file("one.ini"), batch = dir.file("batch.ini");
  const std::vector<std::pair<std::string, std::string>> entries = {
      {"差异0", "a"}, {"差异1", "b"}, {"差异0", "c"}, {"差异2", "line\nbreak"}};
  writeFile(one, "[差异内容]\n差异1=old\n差异5=keep\n");
  writeFile(batch, readFile(one));
  for (const auto& [k, v] : entries) ASSERT_TRUE(writePrivateProfileString("差异内容", k, v, one));
  ASSERT_TRUE(writePrivateProfileStrings("差异内容", entries, batch));
  EXPECT_EQ(readFile(one), readFile(batch));
  EXPECT_EQ(readFile(batch), "[差异内容]\n差异1=b\n差异5=keep\n差异0=c\n差异2=line break\n");
}

TEST(Profile, ValuesAreCutToTheBuffer) {
  TempDir dir;
  const std::string ini = dir.file("p.ini");
  ASSERT_TRUE(writePrivateProfileString("CMPFILE", "FileNameSrc", std::string(300, 'x'), ini));
  EXPECT_EQ(getPrivateProfileString("CMPFILE", "FileNameSrc", "", 260, ini), std::string(259, 'x'));
  ASSERT_TRUE(writePrivateProfileString("CMPFILE", "FileNameDes", std::string(300, 'x') + "图", ini));
  EXPECT_EQ(getPrivateProfileString("CMPFILE", "FileNameDes", "", 5, ini), "xxxx");
}

TEST(Profile, UnwritableFileOrFolderLeavesTheOldFileIntact) {
  TempDir dir;
  const std::string ini = dir.file("ro.ini");
  writeFile(ini, "[A]\nx=1\n");
  ::chmod(ini.c_str(), 0444);
  EXPECT_FALSE(writePrivateProfileString("A", "x", "2", ini));
  EXPECT_EQ(readFile(ini), "[A]\nx=1\n");
  EXPECT_FALSE(writePrivateProfileString("A", "x", "2", dir.file("no/such/folder.ini")));
}
