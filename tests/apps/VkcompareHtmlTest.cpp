// vkcompare --html, run as a program: the page's markup and data, what a drawing's text can and cannot do to
// it, and the page in a headless browser (skipped where there is none): loading, stepping, the views' windows.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "VkcompareFixture.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr const char* kInjected = "<script>window.__pwned=1</script>";

std::size_t occurrences(const std::string& text, const std::string& what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) ++n;
  return n;
}

// The data the page's script reads, parsed back: the "<\/" the page writes for "</" read as JSON reads it.
Json pageData(const std::string& page) {
  const std::string open = "<script type=\"application/json\" id=\"vk-data\">";
  const std::size_t begin = page.find(open);
  if (begin == std::string::npos) return nullptr;
  const std::size_t end = page.find("</script>", begin);
  if (end == std::string::npos) return nullptr;
  return Json::parse(page.substr(begin + open.size(), end - begin - open.size()), nullptr, false);
}

// The viewBox of the view with this id in a page or a dumped DOM, as a window: min x, min y, max x, max y.
std::vector<double> viewWindow(const std::string& dom, const std::string& id) {
  std::smatch m;
  const std::regex svg("<svg id=\"" + id + "\"[^>]*viewBox=\"([^\"]*)\"");
  if (!std::regex_search(dom, m, svg)) return {};
  std::istringstream in(m[1].str());
  double x = 0, y = 0, w = 0, h = 0;
  if (!(in >> x >> y >> w >> h)) return {};
  return {x, -y - h, x + w, -y};
}

std::vector<double> windowOf(const Json& w) {
  return {w["min"][0].get<double>(), w["min"][1].get<double>(), w["max"][0].get<double>(), w["max"][1].get<double>()};
}

::testing::AssertionResult sameWindow(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != 4 || b.size() != 4) return ::testing::AssertionFailure() << "no window";
  for (int i = 0; i < 4; ++i)
    if (std::fabs(a[i] - b[i]) > 1e-6 * std::max(1.0, std::fabs(b[i])))
      return ::testing::AssertionFailure() << "corner " << i << ": " << a[i] << " against " << b[i];
  return ::testing::AssertionSuccess();
}

// The browser the page is tried in, "" when the machine has none.
std::string browser() {
  for (const char* path : {"/usr/bin/chromium", "/usr/bin/chromium-browser"})
    if (fs::exists(path)) return path;
  return "";
}

struct VkcompareHtml : VkcompareFixture {
  std::string example(const char* name) const { return vktest::dataDir() + "/../../examples/" + name; }

  // The DOM of the page after its script ran, opened at the fragment.
  std::string dom(const std::string& page, const std::string& fragment) {
    const std::string cmd = vktest::shellQuoted(browser()) + " --headless --no-sandbox --disable-gpu --no-first-run" +
                            " --user-data-dir=" + vktest::shellQuoted(dir.file("profile")) +
                            " --virtual-time-budget=5000 --dump-dom " +
                            vktest::shellQuoted("file://" + page + fragment) + " 2>/dev/null";
    return vktest::runProgram("timeout 120 " + cmd, dir).out;
  }

  // Writes a drawing of a line as a.dxf, and one of the same line and a text of this value under this
  // relative path.
  void textDrawings(const std::string& value, const std::string& path) {
    const std::string line = "0|LINE|5|100|8|0|10|0|20|0|30|0|11|10|21|0|31|0";
    vktest::writeFile(dir.file("a.dxf"), vktest::dxfDrawing(line));
    fs::create_directories(fs::path(dir.file(path)).parent_path());
    vktest::writeFile(dir.file(path), vktest::dxfDrawing(line + "|0|TEXT|5|101|8|0|10|0|20|5|30|0|40|2.5|1|" + value));
  }
};

TEST_F(VkcompareHtml, ReportOfTheExamplesHoldsBothDrawingsAndEveryRecord) {
  const auto r = run({"--html", "report.html", "--json", "result.json", example("door_rev_a.dxf"),
                      example("door_rev_b.dxf")});
  ASSERT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find("发现有(10)个实体不同"), std::string::npos) << r.out;  // the run prints what it always did
  const std::string page = vktest::readFile(dir.file("report.html"));
  const Json result = Json::parse(vktest::readFile(dir.file("result.json")));
  const Json data = pageData(page);
  ASSERT_TRUE(data.is_object()) << "the page's data does not parse";

  // The data is the JSON output's result: the same records, texts and windows, in the same order.
  ASSERT_EQ(data["result"]["records"].size(), 10u);
  EXPECT_EQ(data["result"]["records"], result["records"]);
  EXPECT_EQ(data["result"]["ranges"], result["ranges"]);
  EXPECT_EQ(data["count_text"], "发现有(10)个实体不同。");
  EXPECT_NE(page.find("<span class=\"count\" id=\"count\">发现有(10)个实体不同。</span>"), std::string::npos);

  // The tree lists each record once, by its index and text; each record has one rectangle, in the
  // destination view unless deleted, in its kind's colour.
  for (const Json& rec : result["records"]) {
    const std::string i = std::to_string(rec["index"].get<int>());
    EXPECT_EQ(occurrences(page, "data-i=\"" + i + "\""), 1u) << i;
    EXPECT_EQ(occurrences(page, "<rect id=\"r" + i + "\""), 1u) << i;
  }
  EXPECT_EQ(occurrences(page, "<li class=\"m k"), 10u);
  const std::size_t destinationView = page.find("<svg id=\"svgD\"");
  ASSERT_NE(destinationView, std::string::npos);
  ASSERT_NE(page.find("<svg id=\"svgS\""), std::string::npos);
  for (const Json& rec : result["records"]) {
    const std::size_t at = page.find("<rect id=\"r" + std::to_string(rec["index"].get<int>()) + "\"");
    const std::string kind = rec["kind"];
    EXPECT_EQ(at > destinationView, kind != "deleted") << rec["text"];
    const std::string colour = kind == "changed" ? "#00ff00" : kind == "added" ? "#ff0000" : "#ffff00";
    EXPECT_EQ(page.substr(at, page.find("/>", at) - at).find("stroke=\"" + colour + "\"") != std::string::npos, true)
        << rec["text"];
  }
  // Every named entity's group carries its handle, so that the page can show the differences only.
  for (const Json& rec : result["records"]) {
    for (const char* side : {"source_handle", "destination_handle"}) {
      if (!rec[side].is_string()) continue;
      EXPECT_NE(page.find("<g data-h=\"" + rec[side].get<std::string>() + "\">"), std::string::npos) << rec["text"];
    }
  }
  // Nothing is fetched from elsewhere.
  EXPECT_EQ(page.find("src="), std::string::npos);
  EXPECT_EQ(page.find("href="), std::string::npos);
  EXPECT_EQ(page.find("@import"), std::string::npos);
}

TEST_F(VkcompareHtml, StatusFollowsTheRunAndAnUnwritableReportGivesTwo) {
  const std::string a = vktest::dataDir() + "/two_entities.dxf";
  auto r = run({"--html", "same.html", a, a});
  EXPECT_EQ(r.status, 0) << r.err;
  const std::string same = vktest::readFile(dir.file("same.html"));
  EXPECT_NE(same.find("id=\"count\">文件完全相同<"), std::string::npos);
  EXPECT_EQ(pageData(same)["result"]["records"].size(), 0u);

  r = run({"--html", dir.file("no/such/folder/report.html"), a, vktest::dataDir() + "/two_entities_recoloured.dxf"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("no/such/folder/report.html"), std::string::npos) << r.err;
  EXPECT_FALSE(fs::exists(dir.file("no")));

  // A run that fails still reports, with its reason.
  r = run({"--html", "missing.html", a, dir.file("missing.dxf")});
  EXPECT_EQ(r.status, 2);
  const std::string missing = vktest::readFile(dir.file("missing.html"));
  EXPECT_NE(missing.find("比较失败"), std::string::npos);

}

TEST_F(VkcompareHtml, FoldersGetAReportAPairAndAnIndex) {
  const std::string a = vktest::readFile(vktest::dataDir() + "/two_entities.dxf");
  fs::create_directories(dir.file("A/sub"));
  fs::create_directories(dir.file("B/sub"));
  vktest::writeFile(dir.file("A/sub/edited <1>.dxf"), a);
  vktest::writeFile(dir.file("B/sub/edited <1>.dxf"), vktest::readFile(vktest::dataDir() + "/two_entities_recoloured.dxf"));
  vktest::writeFile(dir.file("A/same.dxf"), a);
  vktest::writeFile(dir.file("B/same.dxf"), a);
  vktest::writeFile(dir.file("A/gone.dxf"), a);
  auto r = run({"--html", "out", "A", "B"});
  EXPECT_EQ(r.status, 1) << r.err;

  // Each pair's report at its relative path; the index links them with their summaries, in path order.
  const std::string edited = vktest::readFile(dir.file("out/sub/edited <1>.dxf.html"));
  EXPECT_EQ(pageData(edited)["result"]["records"].size(), 1u);
  EXPECT_EQ(pageData(vktest::readFile(dir.file("out/same.dxf.html")))["result"]["records"].size(), 0u);
  EXPECT_FALSE(fs::exists(dir.file("out/gone.dxf.html")));
  const std::string index = vktest::readFile(dir.file("out/index.html"));
  const std::size_t gone = index.find("<td>deleted</td><td>gone.dxf</td><td>only in A</td>");
  const std::size_t same = index.find("<td>identical</td><td><a href=\"same.dxf.html\">same.dxf</a></td>");
  const std::size_t sub = index.find("<td>different</td><td><a href=\"sub/edited%20%3C1%3E.dxf.html\">sub/edited &lt;1&gt;.dxf</a>"
                                     "</td><td>sub/edited &lt;1&gt;.dxf: 1 record</td>");
  ASSERT_NE(gone, std::string::npos) << index;
  ASSERT_NE(same, std::string::npos) << index;
  ASSERT_NE(sub, std::string::npos) << index;
  EXPECT_TRUE(gone < same && same < sub);
  EXPECT_NE(index.find("2 pairs: 1 identical, 1 different"), std::string::npos);

  // An index that cannot be written is trouble.
  r = run({"--html", "A/same.dxf/out", "A", "B"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("A/same.dxf/out/index.html"), std::string::npos) << r.err;
}

TEST_F(VkcompareHtml, DrawingTextsAndFileNamesStayText) {
  // The destination's path ends the data's script element and opens a comment, were it written as it is.
  const std::string destination = "<!--x'&\"<i</script>b.dxf";
  textDrawings(std::string(kInjected) + "\"'&<!--", destination);
  const auto r = run({"--html", "report.html", "a.dxf", destination});
  ASSERT_EQ(r.status, 1) << r.err;
  const std::string page = vktest::readFile(dir.file("report.html"));
  // The page's own three scripts are the only elements a text could have opened or closed.
  EXPECT_EQ(occurrences(page, "</script>"), 3u);
  EXPECT_EQ(occurrences(page, "<!--"), 0u);
  EXPECT_NE(page.find(">&lt;script&gt;window.__pwned=1&lt;/script&gt;&quot;&apos;&amp;&lt;!--<"), std::string::npos);
  EXPECT_NE(page.find("id=\"destination-name\">&lt;!--x&apos;&amp;&quot;&lt;i&lt;/script&gt;b.dxf<"), std::string::npos);
  const Json data = pageData(page);
  ASSERT_TRUE(data.is_object());
  ASSERT_EQ(data["result"]["records"].size(), 1u);
  EXPECT_NE(data["result"]["destination"].get<std::string>().find(destination), std::string::npos);

  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const std::string shown = dom(dir.file("report.html"), "#next=1");
  EXPECT_NE(shown.find("data-ready=\"1\""), std::string::npos) << shown.substr(0, 2000);
  EXPECT_NE(shown.find("data-current=\"0\""), std::string::npos);
  // Had the text become markup, the browser would hold a script element of it (written with its own end tag).
  EXPECT_EQ(shown.find(kInjected), std::string::npos);
  EXPECT_NE(shown.find("&lt;script&gt;window.__pwned=1&lt;/script&gt;"), std::string::npos);
  EXPECT_NE(shown.find("<pre id=\"errors\" hidden=\"\"></pre>"), std::string::npos);
}

TEST_F(VkcompareHtml, BrowserStepsAsTheNavigatorAndZoomsBothViews) {
  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const auto r = run({"--html", "report.html", "--json", "result.json", example("door_rev_a.dxf"),
                      example("door_rev_b.dxf")});
  ASSERT_EQ(r.status, 1) << r.err;
  const Json records = Json::parse(vktest::readFile(dir.file("result.json")))["records"];
  ASSERT_EQ(records.size(), 10u);

  // Three steps from the start reach the third record; both views show its windows; the script ran cleanly.
  std::string shown = dom(dir.file("report.html"), "#next=3");
  ASSERT_NE(shown.find("data-ready=\"1\""), std::string::npos) << shown.substr(0, 3000);
  EXPECT_NE(shown.find("<pre id=\"errors\" hidden=\"\"></pre>"), std::string::npos);
  EXPECT_NE(shown.find("data-current=\"2\""), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "svgS"), windowOf(records[2]["locate"]["source"])));
  EXPECT_TRUE(sameWindow(viewWindow(shown, "svgD"), windowOf(records[2]["locate"]["destination"])));
  EXPECT_NE(shown.find("class=\"m k" + std::to_string(records[2]["kind_number"].get<int>()) + " cur\" data-i=\"2\""),
            std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\"></span>"), std::string::npos);
  for (const Json& rec : records) EXPECT_NE(shown.find(rec["text"].get<std::string>()), std::string::npos) << rec["text"];

  // No wrap: stepping past the last record stays on it and says so.
  shown = dom(dir.file("report.html"), "#next=12");
  EXPECT_NE(shown.find("data-current=\"9\""), std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\">已到最后一个不同点(共10不同点)</span>"), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "svgD"), windowOf(records[9]["locate"]["destination"])));

  // The keys: the first step back also reaches the first record; one more back stays and says so.
  shown = dom(dir.file("report.html"), "#keys=p");
  EXPECT_NE(shown.find("data-current=\"0\""), std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\"></span>"), std::string::npos);
  shown = dom(dir.file("report.html"), "#keys=nnnpp");
  EXPECT_NE(shown.find("data-current=\"0\""), std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\"></span>"), std::string::npos);
  shown = dom(dir.file("report.html"), "#keys=np");
  EXPECT_NE(shown.find("data-current=\"0\""), std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\">已到第一个不同点(共10不同点)</span>"), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "svgS"), windowOf(records[0]["locate"]["source"])));
  // A link to a record locates it.
  shown = dom(dir.file("report.html"), "#record=7");
  EXPECT_NE(shown.find("data-current=\"7\""), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "svgD"), windowOf(records[7]["locate"]["destination"])));
}

}  // namespace
