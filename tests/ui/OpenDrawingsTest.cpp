// The release check reads characters 5 and 6 of each file and refuses numbers above the newest release the
// host reads: 32 in the headless host, 24 in a host whose SDK stops at R2010.
#include <gtest/gtest.h>

#include "platform/database.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "support/TestSupport.h"
#include "ui/OpenDrawings.h"

using vktest::TempDir;

namespace {

struct VersionFixture : ::testing::Test {
  TempDir dir;
  void SetUp() override {
    headless::Console::instance().setEcho(nullptr);
    headless::Console::instance().reset();
  }
  std::string drawing(const std::string& name, const std::string& head) {
    vktest::writeFile(dir.file(name), head + std::string(20, '\0'));
    return dir.file(name);
  }
};

}  // namespace

TEST_F(VersionFixture, Release24PassesNewerFailWhereTheHostStopsAtR2010) {
  const std::string ok = drawing("r24.dwg", "AC1024");
  EXPECT_EQ(CheckDwgVersion(ok, ok, 24), 1);
  EXPECT_TRUE(headless::Console::instance().messageBoxes().empty());
  EXPECT_EQ(CheckDwgVersion(ok, drawing("r27.dwg", "AC1027"), 24), 0);
  const auto boxes = headless::Console::instance().takeMessageBoxes();
  ASSERT_EQ(boxes.size(), 1u);
  EXPECT_EQ(boxes[0].text, "不能比较文件，因为它是使用更新版本的AutoCAD创建的。\n" + dir.file("r27.dwg"));
}

TEST_F(VersionFixture, TheHeadlessHostReadsUpToR2018) {
  EXPECT_EQ(platform::newestReadableRelease(), 32);
  EXPECT_EQ(CheckDwgVersion(drawing("r32.dwg", "AC1032"), drawing("r27.dwg", "AC1027")), 1);
  EXPECT_TRUE(headless::Console::instance().messageBoxes().empty());
  EXPECT_EQ(CheckDwgVersion(drawing("r33.dwg", "AC1033"), drawing("r32b.dwg", "AC1032")), 0);
  EXPECT_EQ(headless::Console::instance().takeMessageBoxes().size(), 1u);
}

TEST_F(VersionFixture, EachTooNewFileGetsItsOwnMessage) {
  EXPECT_EQ(CheckDwgVersion(drawing("a.dwg", "AC1032"), drawing("b.dwg", "AC1027"), 24), 0);
  EXPECT_EQ(headless::Console::instance().takeMessageBoxes().size(), 2u);
}

TEST_F(VersionFixture, NonDigitsShortAndMissingFilesPass) {
  // A DXF file or anything without digits at offset 4 reads as 0.
  EXPECT_EQ(CheckDwgVersion(drawing("t.dxf", "  0\nSECTION"), drawing("n.dwg", "ACXXYY")), 1);
  EXPECT_EQ(CheckDwgVersion(drawing("s.dwg", "AC"), dir.file("absent.dwg")), 1);
  // Leading blanks and a sign are read as atoi reads them.
  EXPECT_EQ(CheckDwgVersion(drawing("b1.dwg", "AC10 9"), drawing("b2.dwg", "AC10-9")), 1);
  EXPECT_EQ(CheckDwgVersion(drawing("b3.dwg", "AC10 31"), drawing("b4.dwg", "AC1025"), 24), 0);
  EXPECT_EQ(headless::Console::instance().takeMessageBoxes().size(), 1u);
}

// Opening through the host's automation objects: the documents collection opens and counts; a member it
// lacks leaves the look-up's text; no object at all ends the process.
TEST(Automation, DocumentsOpenCountsAndReportsUnknownMembers) {
  headless::HostSession::instance().shutdown();
  EXPECT_TRUE(OpenDrawingByAutomation(HostApplication(), vktest::dataDir() + "/two_entities.dxf"));
  AutomationValue documents, count;
  ASSERT_EQ(AutoWrap(kDispatchPropertyGet, &documents, &HostApplication(), "Documents"), kSOk);
  CAutomationObject* collection = std::get<CAutomationObject*>(documents);
  ASSERT_EQ(AutoWrap(kDispatchPropertyGet, &count, collection, "Count"), kSOk);
  EXPECT_EQ(std::get<long long>(count), 1);
  EXPECT_EQ(AutoWrap(kDispatchMethod, nullptr, collection, "Close"), kDispEUnknownName);
  EXPECT_EQ(AutoWrapMessage(), "IDispatch::GetIDsOfNames(\"Close\") failed w/err0x80020006");
  EXPECT_EQ(AutoWrap(kDispatchMethod, nullptr, collection, "Open", {std::string("/no/such.dxf")}), kEFail);
  EXPECT_FALSE(OpenDrawingDocument("/no/such.dxf"));
  headless::HostSession::instance().shutdown();
  EXPECT_EXIT(AutoWrap(kDispatchMethod, nullptr, nullptr, "Open"), ::testing::ExitedWithCode(0), "");
}
