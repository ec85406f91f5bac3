// Curves of real drawings through the whole silent run: a copy of a corpus drawing in which one property
// of one curve was edited in the DXF text reports that curve alone, with that property's messages.
#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "engine/CompareLog.h"
#include "engine/CompareRun.h"
#include "engine/ComparisonState.h"
#include "platform/headless/console.h"
#include "support/TestSupport.h"
#include "ui/CompareConfigFile.h"

namespace {

std::string_view trimmed(std::string_view s) {
  while (!s.empty() && (s.back() == '\r' || s.back() == ' ')) s.remove_suffix(1);
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  return s;
}

// An ASCII DXF drawing as lines, edited in place: every line keeps its own line ending.
class DxfText {
 public:
  explicit DxfText(const std::string& text) {
    std::size_t at = 0;
    while (at < text.size()) {
      const std::size_t end = text.find('\n', at);
      lines_.push_back(text.substr(at, end == std::string::npos ? std::string::npos : end - at));
      at = end == std::string::npos ? text.size() : end + 1;
    }
  }
  std::string str() const {
    std::string out;
    for (const std::string& l : lines_) out += l + '\n';
    return out;
  }
  // The code line of the n-th record of this type in the ENTITIES section, or npos.
  std::size_t entity(std::string_view type, int n) const {
    bool inEntities = false;
    for (std::size_t i = 0; i + 1 < lines_.size(); i += 2) {
      if (code(i) == 2 && value(i) == "ENTITIES") inEntities = true;
      if (code(i) == 0 && value(i) == "ENDSEC") inEntities = false;
      if (inEntities && code(i) == 0 && value(i) == type && n-- == 0) return i;
    }
    return std::string::npos;
  }
  // The code line of the k-th group with this code in the record at `record` (after a subclass marker
  // when one is named), or npos.
  std::size_t group(std::size_t record, int wanted, int k = 0, std::string_view subclass = "") const {
    bool inside = subclass.empty();
    for (std::size_t i = record + 2; i + 1 < lines_.size() && code(i) != 0; i += 2) {
      if (code(i) == 100) inside = subclass.empty() || value(i) == subclass;
      else if (inside && code(i) == wanted && k-- == 0) return i;
    }
    return std::string::npos;
  }
  double number(std::size_t codeLine) const { return std::stod(std::string(value(codeLine))); }
  void set(std::size_t codeLine, const std::string& v) { lines_[codeLine + 1] = v + ending(codeLine + 1); }
  // Adds a group right after the record's layer (8).
  void addAfterLayer(std::size_t record, int c, const std::string& v) {
    const std::size_t layer = group(record, 8);
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(layer) + 2,
                  {std::to_string(c) + ending(layer), v + ending(layer)});
  }

 private:
  int code(std::size_t i) const { return std::stoi(std::string(trimmed(lines_[i]))); }
  std::string_view value(std::size_t i) const { return trimmed(lines_[i + 1]); }
  std::string ending(std::size_t i) const { return lines_[i].ends_with('\r') ? "\r" : ""; }
  std::vector<std::string> lines_;
};

struct Edit {
  const char* file;  // under the corpus folder
  const char* type;
  int nth;
  void (*edit)(DxfText&, std::size_t record);
  const char* expected;  // the one difference record's text after its range
};

const Edit kEdits[] = {
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "ARC", 0,
     [](DxfText& t, std::size_t r) { t.set(t.group(r, 51), "200.0"); }, "弧线图元 端点角度不一样,"},
    // An ellipse's end parameter shapes its area too.
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "ELLIPSE", 0,
     [](DxfText& t, std::size_t r) { t.set(t.group(r, 42), "3.0"); }, "椭圆图元 端点角不一样,面积不一样,"},
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "LWPOLYLINE", 0,
     [](DxfText& t, std::size_t r) {
       const std::size_t x = t.group(r, 10, 2);
       t.set(x, std::to_string(t.number(x) + 1));
     },
     "多段线图元 第0个顶点位置不一样,"},
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "SPLINE", 0,
     [](DxfText& t, std::size_t r) {
       const std::size_t y = t.group(r, 20, 2);
       t.set(y, std::to_string(t.number(y) + 1));
     },
     "样条曲线图元 第2个顶点位置不一样,"},
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "POINT", 0,
     [](DxfText& t, std::size_t r) { t.addAfterLayer(r, 39, "2.5"); }, "点图元 厚度不一样,"},
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "MLINE", 0,
     [](DxfText& t, std::size_t r) { t.set(t.group(r, 40), "35.0"); }, "多段线图元 比例不一样,"},
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "RAY", 0,
     [](DxfText& t, std::size_t r) { t.set(t.group(r, 11), "0.0"); }, "射线图元 单位矢量方向不一样,"},
    {"same_drawing/libredwg_example/libredwg_example_2000.dxf", "XLINE", 0,
     [](DxfText& t, std::size_t r) { t.set(t.group(r, 11), "0.0"); }, "代理实体图元单位矢量方向不一样,"},
    {"same_drawing/libredwg_sample_2018/libredwg_sample_2018.dxf", "CIRCLE", 0,
     [](DxfText& t, std::size_t r) { t.addAfterLayer(r, 39, "1.0"); }, "圆图元 厚度不一样,"},
    {"same_drawing/acadsharp_sample_rev_2025-04/acadsharp_sample_AC1009_ascii.dxf", "POLYLINE", 0,
     [](DxfText& t, std::size_t r) { t.addAfterLayer(r, 40, "0.5"); }, "多段线图元 折线段开始宽度值不一样,"},
    // The helix's stored radius is its top radius, on which its length depends.
    {"dxf/R2007/libredwg_2007_Helix.dxf", "HELIX", 0,
     [](DxfText& t, std::size_t r) { t.set(t.group(r, 40, 0, "AcDbHelix"), "8.0"); },
     "螺旋线图元 顶部半径不一样,总长度不一样,"},
};

struct CurvesCorpusFixture : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override {
    if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
    vktest::prepareSilentRuns(dir.path());
  }
};

// The texts of the log's difference records after their range, tables left out (their cells are always
// listed).
std::vector<std::string> loggedDifferences(const std::string& log) {
  std::vector<std::string> out;
  const std::string text = vktest::readFile(log);
  constexpr std::string_view kAfterRange = " ------";
  for (std::size_t at = text.find("\n差异"); at != std::string::npos; at = text.find("\n差异", at + 1)) {
    const std::size_t end = text.find('\n', at + 1);
    const std::string line(trimmed(std::string_view(text).substr(at + 1, end - at - 1)));
    const std::size_t body = line.find(kAfterRange);
    if (body == std::string::npos) continue;
    const std::string record = line.substr(body + kAfterRange.size());
    if (!record.starts_with("表格图元 ")) out.push_back(record);
  }
  return out;
}

}  // namespace

TEST_F(CurvesCorpusFixture, OneEditedCurveIsTheOneDifference) {
  for (const Edit& e : kEdits) {
    SCOPED_TRACE(std::string(e.file) + " " + e.type);
    const std::string original = vktest::corpusDir() + "/" + e.file;
    DxfText text(vktest::readFile(original));
    const std::size_t record = text.entity(e.type, e.nth);
    ASSERT_NE(record, std::string::npos);
    e.edit(text, record);
    const std::string copy = dir.file("edited.dxf");
    vktest::writeFile(copy, text.str());

    RunSilentCompare(original, copy);
    headless::Console::instance().reset();
    ASSERT_EQ(CComparisonState::instance().lastOutcome, RunOutcome::Different) << CComparisonState::instance().lastError;
    EXPECT_EQ(loggedDifferences(CComparisonState::instance().lastLogPath), std::vector<std::string>{e.expected});
  }
}
