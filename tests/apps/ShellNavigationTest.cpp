// vkcompare shell after a comparison of the bundled drawings: stepping through the differences, the result
// palette drawn and a record chosen in it, the differences-only view, the end of the comparison; and the
// open pair compared again with base points and an area.
#include <gtest/gtest.h>

#include <string>

#include "support/TestSupport.h"

namespace {

struct ShellNavigation : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override { vktest::isolateSettings(); }

  // The compare command answered as a user answers it: both names in the file dialog, then OK in it and in
  // the settings dialog; the script follows.
  vktest::ProgramRun compareThen(const std::string& script) {
    const std::string examples = vktest::dataDir() + "/../../examples/";
    vktest::writeFile(dir.file("script.txt"), "VkCompareFile\nset 101 " + examples + "door_rev_a.dxf\nset 102 " +
                                                  examples + "door_rev_b.dxf\nok\nok\n" + script);
    return vktest::runProgram("cd " + vktest::shellQuoted(dir.path()) + " && timeout 60 " +
                                  vktest::shellQuoted(VKCOMPARE_PATH) + " shell",
                              dir, dir.file("script.txt"));
  }
};

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

TEST_F(ShellNavigation, StepsReportTheDifferencesAndThePaletteLocatesAChosenRecord) {
  const vktest::ProgramRun s = compareThen("VkNextDiff\nVkNextDiff\nVkPrevDiff\nPALETTE\n\nPALETTE 3\nPALETTE 4\nQUIT\n");
  EXPECT_EQ(s.status, 0) << s.err;
  const std::string& out = s.out;
  ASSERT_NE(out.find("发现有(10)个实体不同。"), std::string::npos) << out;
  // The result's message box stands on a line of its own after the count of the destination's entities.
  EXPECT_NE(out.find("个\n[图纸比较结果] 发现有(10)个实体不同。"), std::string::npos) << out;
  const std::size_t first = out.find("\n定位到第1个不同点(共10不同点),差异:");
  const std::size_t second = out.find("\n定位到第2个不同点(共10不同点),差异:");
  const std::size_t back = out.find("\n定位到第1个不同点(共10不同点),差异:", second);
  ASSERT_NE(first, std::string::npos) << out;
  EXPECT_TRUE(first < second && second < back && back != std::string::npos) << out;
  // Every step zooms both drawings and draws the rectangle in the destination.
  EXPECT_GE(count(out, "命令: _VkDrawDiffRectDes\n"), 3u) << out;
  EXPECT_GE(count(out, "指定窗口的角点，输入比例因子 (nX 或 nXP)，或者\n[全部(A)/上一个(P)/窗口(W)/范围(E)] <实时>: W\n"), 6u);
  // The palette: ranges with their members below them. The third item is the second range, which locates
  // nothing; the fourth its member, the second record.
  const std::size_t tree = out.find("比图结果显示面板\n  1   范围1\n      2   直线图元 新增,,1,1\n  3   范围2\n");
  ASSERT_NE(tree, std::string::npos) << out;
  EXPECT_NE(out.find("\n  15  范围6\n      16  ", tree), std::string::npos) << out;
  const std::size_t range = out.find("命令: PALETTE 3", tree), member = out.find("命令: PALETTE 4", tree);
  ASSERT_NE(member, std::string::npos) << out;
  EXPECT_EQ(out.substr(range, member - range).find("定位到"), std::string::npos) << out;
  EXPECT_NE(out.find("\n定位到第2个不同点(共10不同点),差异:多行文字图元", member), std::string::npos) << out;
}

TEST_F(ShellNavigation, DifferencesOnlyRefusesGuardedCommandsUntilShownAgainAndTheEndEmptiesThePalette) {
  const vktest::ProgramRun s =
      compareThen("VkResultShow\nVKSetCompareArea\nVkResultShow\nVkEndCompare\nPALETTE\n\nVkNextDiff\nQUIT\n");
  EXPECT_EQ(s.status, 0) << s.err;
  const std::string& out = s.out;
  EXPECT_EQ(count(out, "命令: ShowDiff\n"), 2u) << out;
  EXPECT_NE(out.find("先还原所有实体,才能进行此操作"), std::string::npos) << out;
  EXPECT_GE(count(out, "命令: ShowAll\n"), 2u) << out;
  const std::size_t end = out.find("命令: VkEndCompare");
  ASSERT_NE(end, std::string::npos) << out;
  EXPECT_NE(out.find("比图结果显示面板\n  (空)\n", end), std::string::npos) << out;
  EXPECT_NE(out.find("非比图环境，请选择要比较的图纸", end), std::string::npos) << out;
}

}  // namespace

TEST_F(ShellNavigation, BasePointsAndAreaMakeAMovedCopyCompareEqual) {
  // Three lines, and a copy moved by (100, 50) with one more line far off.
  std::string original, moved;
  for (int i = 0; i < 3; ++i) {
    const auto line = [i](double dx, double dy) {
      return "0|LINE|8|0|10|" + std::to_string(dx) + "|20|" + std::to_string(dy + i * 5) + "|30|0|11|" +
             std::to_string(dx + 10) + "|21|" + std::to_string(dy + i * 5) + "|31|0|";
    };
    original += line(0, 0);
    moved += line(100, 50);
  }
  vktest::writeFile(dir.file("a.dxf"), vktest::dxfDrawing(original.substr(0, original.size() - 1)));
  vktest::writeFile(dir.file("b.dxf"), vktest::dxfDrawing(moved + "0|LINE|8|0|10|300|20|300|30|0|11|310|21|300|31|0"));
  vktest::writeFile(dir.file("script.txt"),
                    "VKOpenDwgFiles\nset 101 " + dir.file("a.dxf") + "\nset 102 " + dir.file("b.dxf") +
                        "\nok\n"
                        "VKSetCompareBasePt\n\n100,50\nVKUniversallyCompareFile\nok\n"
                        "VKSetCompareArea\n-1,-1\n11,11\n-1,-1\n11,11\nVKUniversallyCompareFile\nok\nQUIT\n");
  const vktest::ProgramRun s = vktest::runProgram(
      "cd " + vktest::shellQuoted(dir.path()) + " && timeout 60 " + vktest::shellQuoted(VKCOMPARE_PATH) + " shell",
      dir, dir.file("script.txt"));
  EXPECT_EQ(s.status, 0) << s.err;
  // The base points leave only the far line; the area then leaves it out too.
  const std::size_t based = s.out.find("[图纸比较结果] 发现有(1)个实体不同。请在左侧 比图结果显示面板 上双击，进行定位。");
  const std::size_t equal = s.out.find("[图纸比较结果] 文件完全相同\n", based);
  EXPECT_NE(based, std::string::npos) << s.out;
  EXPECT_NE(equal, std::string::npos) << s.out;
  EXPECT_NE(s.out.find("指定比较基点<原点>：100,50\n"), std::string::npos) << s.out;
}

TEST_F(ShellNavigation, LispCallComparesTheNamedDrawings) {
  const std::string examples = vktest::dataDir() + "/../../examples/";
  // LISP functions are defined in a drawing's document: one is open first.
  vktest::writeFile(dir.file("script.txt"), "OPEN " + vktest::dataDir() + "/two_entities.dxf\n(lsp_CompareFile \"" + examples + "door_rev_a.dxf\" \"" + examples +
                                                "door_rev_b.dxf\")\nok\nQUIT\n");
  const vktest::ProgramRun s = vktest::runProgram(
      "cd " + vktest::shellQuoted(dir.path()) + " && timeout 60 " + vktest::shellQuoted(VKCOMPARE_PATH) + " shell",
      dir, dir.file("script.txt"));
  EXPECT_EQ(s.status, 0) << s.err;
  // Both names given: no file dialog, straight to the comparison.
  EXPECT_EQ(s.out.find("Morvane比图文件选择"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("[图纸比较结果] 发现有(10)个实体不同。请使用工具条定位到详细差异位置。"), std::string::npos)
      << s.out;
}
