// The vkcompare command line, run as a program: exit statuses, what it says on stderr and the log it leaves.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "VkcompareFixture.h"
#include "support/TestSupport.h"

namespace {

using Result = vktest::ProgramRun;

TEST_F(VkcompareFixture, ExitStatusesSayIdenticalDifferentOrTrouble) {
  const Result same = run({data("two_entities.dxf"), data("two_entities.dxf")});
  EXPECT_EQ(same.status, 0) << same.err;
  EXPECT_NE(same.out.find("文件完全相同"), std::string::npos) << same.out;
  EXPECT_EQ(logs(), 0);

  const Result changed = run({data("two_entities.dxf"), data("two_entities_recoloured.dxf")});
  EXPECT_EQ(changed.status, 1) << changed.err;
  EXPECT_NE(changed.out.find("发现有(1)个实体不同"), std::string::npos) << changed.out;
  EXPECT_EQ(changed.err, "");
  EXPECT_EQ(logs(), 1);

  const Result missing = run({data("two_entities.dxf"), dir.file("nowhere.dxf")});
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.err.find(dir.file("nowhere.dxf") + ": cannot open the file: No such file"), std::string::npos)
      << missing.err;
  EXPECT_EQ(logs(), 1);  // trouble leaves no log
}

// What cannot be a drawing is refused before it is read, with the file and the reason, by both commands.
TEST_F(VkcompareFixture, RefusesWhatIsNoRegularFile) {
  const std::string fifo = dir.file("pipe.dxf");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const std::pair<std::string, std::string> cases[] = {
      {dir.path(), "not a regular file (a folder)"},
      {fifo, "not a regular file (a FIFO)"},
      {"/dev/zero", "not a regular file (a character device)"},
  };
  for (const auto& [path, reason] : cases) {
    for (bool asSource : {true, false}) {
      const Result r = asSource ? run({path, data("two_entities.dxf")}) : run({data("two_entities.dxf"), path});
      EXPECT_EQ(r.status, 2) << path;
      EXPECT_NE(r.err.find("vkcompare: " + path + ": " + reason), std::string::npos) << r.err;
    }
    const Result info = run({"info", path});
    EXPECT_EQ(info.status, 2) << path;
    EXPECT_NE(info.err.find(path + ": " + reason), std::string::npos) << info.err;
  }
  EXPECT_EQ(logs(), 0);
}

TEST_F(VkcompareFixture, TruncatedDrawingIsNamedWithItsLine) {
  const Result r = run({data("two_entities.dxf"), data("truncated.dxf")});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("vkcompare: " + data("truncated.dxf") + ": line "), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("the file ends inside a record"), std::string::npos) << r.err;
  const Result info = run({"info", "--json", data("truncated.dxf")});
  EXPECT_EQ(info.status, 2);
  EXPECT_EQ(info.out, "");
  EXPECT_NE(info.err.find(data("truncated.dxf") + ": line "), std::string::npos) << info.err;
}

// A DWG drawing is described as its DXF twin is; only the file and its format differ.
TEST_F(VkcompareFixture, InfoOnADwgDrawingMatchesItsDxfTwin) {
  const std::string base = vktest::corpusDir() + "/same_drawing/libredwg_sample_2018/libredwg_sample_2018";
  if (vktest::corpusDir().empty() || !std::filesystem::exists(base + ".dwg")) GTEST_SKIP() << "no corpus";
  const Result dwg = run({"info", "--json", base + ".dwg"}), dxf = run({"info", "--json", base + ".dxf"});
  ASSERT_EQ(dwg.status, 0) << dwg.err;
  ASSERT_EQ(dxf.status, 0) << dxf.err;
  EXPECT_NE(dwg.out.find("\"format\": \"dwg\""), std::string::npos) << dwg.out;
  EXPECT_NE(dwg.out.find("\"tilemode\": 1"), std::string::npos) << dwg.out;
  const auto rest = [](const std::string& json) { return json.substr(json.find("\"version\"")); };
  EXPECT_EQ(rest(dwg.out), rest(dxf.out));
}

// A DWG drawing compared with its DXF twin is the same drawing: no entity differs, its layers' colours and
// linetypes included (R2004 and R2018), nor its surfaces (their shapes, areas and how they were made).
TEST_F(VkcompareFixture, DwgDrawingsCompareIdenticalToTheirDxfTwins) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "no corpus";
  std::vector<std::pair<std::string, std::string>> twins;
  for (const char* twin : {"zcad_nonregular2/zcad_nonregular2", "libredwg_sample_2018/libredwg_sample_2018",
                           "acadsharp_dynblock_visibility/acadsharp_BLOCKVISIBILITYPARAMETER",
                           "acadsharp_hatch_pattern/acadsharp_hatch_pattern"})
    twins.emplace_back(std::string("same_drawing/") + twin + ".dxf", std::string("same_drawing/") + twin + ".dwg");
  twins.emplace_back("dxf/R2004/libredwg_2004_Surface.dxf", "dwg/R2004/libredwg_2004_Surface.dwg");
  for (const auto& [dxf, dwg] : twins) {
    const Result r = run({vktest::corpusDir() + "/" + dxf, vktest::corpusDir() + "/" + dwg});
    EXPECT_EQ(r.status, 0) << dwg << ": " << r.out << r.err;
    EXPECT_NE(r.out.find("文件完全相同"), std::string::npos) << dwg << ": " << r.out;
  }
}

// Equal tables are listed cell by cell, so a drawing with tables is never reported identical, not even to a
// copy of itself: the DWG of such a drawing (R2018 tables hold table content) gives its DXF twin the records
// the twin gives its copy, with no message on any cell.
TEST_F(VkcompareFixture, DwgTablesCompareToTheirDxfTwinAsTheTwinToItself) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "no corpus";
  const std::string base = vktest::corpusDir() + "/same_drawing/acadsharp_table/acadsharp_table_AC1032";
  const std::string copy = dir.file("copy.dxf");
  std::filesystem::copy_file(base + ".dxf", copy);
  const Result itself = run({base + ".dxf", copy});
  ASSERT_EQ(itself.status, 1) << itself.out << itself.err;
  const std::string fromCopy = records();
  EXPECT_NE(fromCopy.find("表格图元 第0行,第0列:第0行,第1列:"), std::string::npos) << fromCopy;
  const Result dwg = run({base + ".dxf", base + ".dwg"});
  ASSERT_EQ(dwg.status, 1) << dwg.out << dwg.err;
  EXPECT_EQ(records(), fromCopy);
}

// Revisions exchanged as DWG give the records the same revisions give as DXF (two dimensions added, two
// tables changed); another pair shows its added ellipses.
TEST_F(VkcompareFixture, DwgRevisionsReportWhatTheirDxfRevisionsReport) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "no corpus";
  const std::string pair = vktest::corpusDir() + "/pairs/acadsharp_sample_2025-02_vs_2025-04/";
  const Result dxf =
      run({pair + "rev_a_2025-02-08_sample_AC1032_ascii.dxf", pair + "rev_b_2025-04-11_sample_AC1032_ascii.dxf"});
  ASSERT_EQ(dxf.status, 1) << dxf.out << dxf.err;
  const std::string fromDxf = records();
  EXPECT_NE(fromDxf.find("尺寸标注图元 新增"), std::string::npos) << fromDxf;
  // R2004 tables store their cells as DXF lists them; R2013 ones hold table content the cells come from.
  for (const char* release : {"AC1018", "AC1027"}) {
    SCOPED_TRACE(release);
    const Result dwg = run({pair + "rev_a_2025-02-08_sample_" + release + ".dwg",
                            pair + "rev_b_2025-04-11_sample_" + release + ".dwg"});
    ASSERT_EQ(dwg.status, 1) << dwg.out << dwg.err;
    EXPECT_EQ(records(), fromDxf);
  }

  const std::string ellipses = vktest::corpusDir() + "/pairs/acadsharp_export_sample_ellipses/";
  const Result added = run({ellipses + "rev_a_export_sample.dwg", ellipses + "rev_b_export_sample.dwg"});
  ASSERT_EQ(added.status, 1) << added.out << added.err;
  const std::string log = records();
  std::size_t ellipsesAdded = 0;
  for (std::size_t at = log.find("椭圆图元 新增"); at != std::string::npos; at = log.find("椭圆图元 新增", at + 1))
    ++ellipsesAdded;
  EXPECT_EQ(ellipsesAdded, 4u) << log;
}

// A drawing larger than the memory the process may take: the run ends as trouble naming the file, no log.
TEST_F(VkcompareFixture, OutOfMemoryIsTroubleNamingTheFile) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the address sanitizer reserves more address space than the limit leaves";
#else
  const std::string huge = dir.file("huge.dxf");
  vktest::writeFile(huge, "  0\nSECTION\n");
  std::filesystem::resize_file(huge, std::uintmax_t{1} << 40);  // sparse: takes no room on disk
  const std::string limit = "ulimit -v 2000000 && ";
  for (bool asSource : {true, false}) {
    Result r = run({asSource ? huge : data("two_entities.dxf"), asSource ? data("two_entities.dxf") : huge}, limit);
    EXPECT_EQ(r.status, 2) << r.err;
    EXPECT_NE(r.err.find("vkcompare: " + huge + ": out of memory"), std::string::npos) << r.err;
    r = run({"info", huge}, limit);
    EXPECT_EQ(r.status, 2) << r.err;
    EXPECT_NE(r.err.find("vkcompare: " + huge + ": out of memory"), std::string::npos) << r.err;
  }
  EXPECT_EQ(logs(), 0);
#endif
}

TEST_F(VkcompareFixture, OptionsHelpAndVersion) {
  const Result unknown = run({"--fast", "a.dxf", "b.dxf"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.err.find("unknown option '--fast'"), std::string::npos) << unknown.err;
  EXPECT_NE(unknown.err.find("Usage: vkcompare"), std::string::npos);
  EXPECT_EQ(unknown.out, "");

  const Result none = run({});
  EXPECT_EQ(none.status, 2);
  EXPECT_NE(none.err.find("Usage: vkcompare"), std::string::npos);

  const Result one = run({data("two_entities.dxf")});
  EXPECT_EQ(one.status, 2);
  EXPECT_NE(one.err.find("give two drawings"), std::string::npos) << one.err;

  const Result help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.out.rfind("Usage: vkcompare", 0), 0u) << help.out;
  EXPECT_EQ(help.err, "");

  const Result version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("vkcompare (", 0), 0u) << version.out;
  EXPECT_EQ(version.out.back(), '\n');
}

}  // namespace
