// vkcompare --html, run as a program: the page's markup and data, what a drawing's text can and cannot do to
// it, and the page in a headless browser (skipped where there is none): loading, stepping, the views' windows
// under the wheel and dragging, showing the differences only.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "VkcompareFixture.h"
#include "support/DevTools.h"
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

// The data the page's script reads, parsed back: the "<\/" the page writes for "</" read as JSON reads it;
// "vk-data" the result, "vk-list-s" and "vk-list-d" the two drawings' display lists.
Json pageData(const std::string& page, const std::string& id = "vk-data") {
  const std::string open = "<script type=\"application/json\" id=\"" + id + "\">";
  const std::size_t begin = page.find(open);
  if (begin == std::string::npos) return nullptr;
  const std::size_t end = page.find("</script>", begin);
  if (end == std::string::npos) return nullptr;
  return Json::parse(page.substr(begin + open.size(), end - begin - open.size()), nullptr, false);
}

// A window as the page keeps it on a view (data-window): min x, min y, max x, max y.
std::vector<double> parseWindow(const std::string& text) {
  std::istringstream in(text);
  std::vector<double> w(4);
  for (double& v : w)
    if (!(in >> v)) return {};
  return w;
}

// The window of the view with this id in a dumped DOM.
std::vector<double> viewWindow(const std::string& dom, const std::string& id) {
  std::smatch m;
  const std::regex canvas("<canvas id=\"" + id + "\"[^>]*data-window=\"([^\"]*)\"");
  if (!std::regex_search(dom, m, canvas)) return {};
  return parseWindow(m[1].str());
}

std::vector<double> moved(const std::vector<double>& w, double dx, double dy) {
  return {w[0] + dx, w[1] + dy, w[2] + dx, w[3] + dy};
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

std::string browser() { return vktest::chromiumPath(); }

constexpr const char* kReady = "document.body && document.body.getAttribute('data-ready') === '1'";

struct VkcompareHtml : VkcompareFixture {
  std::string example(const char* name) const { return vktest::dataDir() + "/../../examples/" + name; }
  // Compares the examples, writing report.html and result.json in the test's folder.
  vktest::ProgramRun examplesReport() {
    return run({"--html", "report.html", "--json", "result.json", example("door_rev_a.dxf"), example("door_rev_b.dxf")});
  }

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
  const auto r = examplesReport();
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
  }
  EXPECT_EQ(occurrences(page, "<li class=\"m k"), 10u);
  EXPECT_NE(page.find("<canvas id=\"viewS\""), std::string::npos);
  EXPECT_NE(page.find("<canvas id=\"viewD\""), std::string::npos);
  ASSERT_EQ(data["rectangles"].size(), 10u);
  for (const Json& rec : result["records"]) {
    const int index = rec["index"].get<int>();
    const std::string kind = rec["kind"];
    const std::string colour = kind == "changed" ? "#00ff00" : kind == "added" ? "#ff0000" : "#ffff00";
    std::size_t found = 0;
    for (const Json& r : data["rectangles"]) {
      if (r[0] != index) continue;
      ++found;
      EXPECT_EQ(r[1], kind == "deleted" ? "s" : "d") << rec["text"];
      EXPECT_EQ(r[2], colour) << rec["text"];
    }
    EXPECT_EQ(found, 1u) << rec["text"];
  }
  // Every named entity is in its drawing's display list by its handle, so that the page can show the
  // differences only.
  const Json lists[2] = {pageData(page, "vk-list-s"), pageData(page, "vk-list-d")};
  for (const Json& rec : result["records"]) {
    for (int side = 0; side < 2; ++side) {
      const Json& handle = rec[side == 0 ? "source_handle" : "destination_handle"];
      if (!handle.is_string()) continue;
      const Json& handles = lists[side]["handles"];
      EXPECT_NE(std::find(handles.begin(), handles.end(), handle), handles.end()) << rec["text"];
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
  // The page's own five scripts (one holding each drawing) are the only elements a text could have opened or
  // closed.
  EXPECT_EQ(occurrences(page, "</script>"), 5u);
  EXPECT_EQ(occurrences(page, "<!--"), 0u);
  // The drawing's text is only in the destination's display list, its markup characters escaped.
  const std::string escaped = "\\u003cscript\\u003ewindow.__pwned=1\\u003c/script\\u003e";
  EXPECT_NE(page.find(escaped + "\\\"'\\u0026\\u003c!--"), std::string::npos);
  EXPECT_NE(page.find("id=\"destination-name\">&lt;!--x&apos;&amp;&quot;&lt;i&lt;/script&gt;b.dxf<"), std::string::npos);
  const Json data = pageData(page);
  ASSERT_TRUE(data.is_object());
  ASSERT_EQ(data["result"]["records"].size(), 1u);
  EXPECT_NE(data["result"]["destination"].get<std::string>().find(destination), std::string::npos);
  // The destination's text is in its display list as it is, for the canvas to draw as text.
  const Json list = pageData(page, "vk-list-d");
  ASSERT_TRUE(list.is_object());
  EXPECT_EQ(list["texts"], Json::array({std::string(kInjected) + "\"'&<!--"}));

  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const std::string shown = dom(dir.file("report.html"), "#next=1");
  EXPECT_NE(shown.find("data-ready=\"1\""), std::string::npos) << shown.substr(0, 2000);
  EXPECT_NE(shown.find("data-current=\"0\""), std::string::npos);
  // Had the text become markup, the browser would hold a script element of it (written with its own end tag).
  EXPECT_EQ(shown.find(kInjected), std::string::npos);
  EXPECT_NE(shown.find(escaped), std::string::npos);
  EXPECT_NE(shown.find("<pre id=\"errors\" hidden=\"\"></pre>"), std::string::npos);
}

TEST_F(VkcompareHtml, BrowserStepsAsTheNavigatorAndZoomsBothViews) {
  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const auto r = examplesReport();
  ASSERT_EQ(r.status, 1) << r.err;
  const Json records = Json::parse(vktest::readFile(dir.file("result.json")))["records"];
  ASSERT_EQ(records.size(), 10u);

  // Three steps from the start reach the third record; both views show its windows; the script ran cleanly.
  std::string shown = dom(dir.file("report.html"), "#next=3");
  ASSERT_NE(shown.find("data-ready=\"1\""), std::string::npos) << shown.substr(0, 3000);
  EXPECT_NE(shown.find("<pre id=\"errors\" hidden=\"\"></pre>"), std::string::npos);
  EXPECT_NE(shown.find("data-current=\"2\""), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "viewS"), windowOf(records[2]["locate"]["source"])));
  EXPECT_TRUE(sameWindow(viewWindow(shown, "viewD"), windowOf(records[2]["locate"]["destination"])));
  EXPECT_NE(shown.find("class=\"m k" + std::to_string(records[2]["kind_number"].get<int>()) + " cur\" data-i=\"2\""),
            std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\"></span>"), std::string::npos);
  for (const Json& rec : records) EXPECT_NE(shown.find(rec["text"].get<std::string>()), std::string::npos) << rec["text"];

  // No wrap: stepping past the last record stays on it and says so.
  shown = dom(dir.file("report.html"), "#next=12");
  EXPECT_NE(shown.find("data-current=\"9\""), std::string::npos);
  EXPECT_NE(shown.find("<span id=\"msg\">已到最后一个不同点(共10不同点)</span>"), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "viewD"), windowOf(records[9]["locate"]["destination"])));

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
  EXPECT_TRUE(sameWindow(viewWindow(shown, "viewS"), windowOf(records[0]["locate"]["source"])));
  // A link to a record locates it.
  shown = dom(dir.file("report.html"), "#record=7");
  EXPECT_NE(shown.find("data-current=\"7\""), std::string::npos);
  EXPECT_TRUE(sameWindow(viewWindow(shown, "viewD"), windowOf(records[7]["locate"]["destination"])));
}


// ---- real input, through the DevTools protocol ----

// A page of the examples' report open in a browser, with what the tests read of it.
struct OpenReport {
  vktest::Browser browser;
  explicit OpenReport(const std::string& profile) : browser(browser_path(), profile, 1400, 900) {}
  static std::string browser_path() { return vktest::chromiumPath(); }

  std::vector<double> window(const char* id) {
    const Json w = browser.evaluate(std::string("document.getElementById('") + id + "').getAttribute('data-window')");
    return w.is_string() ? parseWindow(w.get<std::string>()) : std::vector<double>{};
  }
  // The view's place in the page and its canvas's size (CSS pixels, which are the canvas's pixels here): left,
  // top, width, height.
  std::vector<double> box(const char* id) {
    const Json b = browser.evaluate(std::string("(function(){var c=document.getElementById('") + id +
                                    "'),b=c.getBoundingClientRect();return [b.left,b.top,c.width,c.height];})()");
    return b.is_array() ? b.get<std::vector<double>>() : std::vector<double>(4, 0.0);
  }
  // Pixels of a view's canvas that differ from the drawing background, in the 5 x 5 square about (x, y).
  int inked(const char* id, int x, int y) {
    const Json n = browser.evaluate(
        std::string("(function(){var d=document.getElementById('") + id + "').getContext('2d').getImageData(" +
        std::to_string(x - 2) + "," + std::to_string(y - 2) +
        ",5,5).data,n=0;for(var i=0;i<d.length;i+=4)if(d[i]!==0x21||d[i+1]!==0x28||d[i+2]!==0x30)n++;return n;})()");
    return n.is_number() ? n.get<int>() : -1;
  }
};

// Where a drawing point lies on a view showing `w` in a box of this size: the window fits the box, centred.
struct Placement {
  double scale, cx, cy, width, height;
  Placement(const std::vector<double>& w, const std::vector<double>& box)
      : scale(std::min(box[2] / (w[2] - w[0]), box[3] / (w[3] - w[1]))),
        cx((w[0] + w[2]) / 2),
        cy((w[1] + w[3]) / 2),
        width(box[2]),
        height(box[3]) {}
  double px(double x) const { return width / 2 + (x - cx) * scale; }
  double py(double y) const { return height / 2 - (y - cy) * scale; }
  double x(double px) const { return cx + (px - width / 2) / scale; }
  double y(double py) const { return cy - (py - height / 2) / scale; }
};

TEST_F(VkcompareHtml, BrowserWheelAndDragKeepBothViewsOnTheSameWindow) {
  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const auto r = examplesReport();
  ASSERT_EQ(r.status, 1) << r.err;
  // The views' windows differ by the drawings' offsets (the base points; a run of vkcompare has them at 0).
  const Json offsets = Json::parse(vktest::readFile(dir.file("result.json")))["offsets"];
  const double dx = offsets["destination"][0].get<double>() - offsets["source"][0].get<double>();
  const double dy = offsets["destination"][1].get<double>() - offsets["source"][1].get<double>();

  OpenReport page(dir.file("profile"));
  ASSERT_TRUE(page.browser.ok()) << page.browser.error();
  ASSERT_TRUE(page.browser.open("file://" + dir.file("report.html"), kReady)) << page.browser.error();
  const std::vector<double> start = page.window("viewS"), box = page.box("viewS");
  ASSERT_EQ(start.size(), 4u);
  EXPECT_TRUE(sameWindow(page.window("viewD"), moved(start, dx, dy)));

  // The wheel turned forward over the source view zooms in about the pointer: the drawing point under it stays.
  // (The pointer is put on a whole pixel of the page, as a mouse puts it.)
  const double px = std::round(box[0] + box[2] * 0.3) - box[0], py = std::round(box[1] + box[3] * 0.6) - box[1];
  const Placement before(start, box);
  page.browser.wheel(box[0] + px, box[1] + py, -120);
  page.browser.settle();
  const std::vector<double> zoomed = page.window("viewS");
  ASSERT_EQ(zoomed.size(), 4u);
  EXPECT_NEAR(zoomed[2] - zoomed[0], 0.8 * (start[2] - start[0]), 1e-9 * (start[2] - start[0]));
  const Placement after(zoomed, box);
  EXPECT_NEAR(after.x(px), before.x(px), 1e-6 * (start[2] - start[0]));
  EXPECT_NEAR(after.y(py), before.y(py), 1e-6 * (start[2] - start[0]));
  EXPECT_TRUE(sameWindow(page.window("viewD"), moved(zoomed, dx, dy)));

  // Dragging the destination view right and down by (60, 30) pixels moves what it shows with the pointer;
  // the source view follows.
  const std::vector<double> dbox = page.box("viewD");
  page.browser.drag(dbox[0] + 200, dbox[1] + 200, dbox[0] + 260, dbox[1] + 230);
  page.browser.settle();
  const std::vector<double> panned = page.window("viewD");
  EXPECT_TRUE(sameWindow(panned, moved(zoomed, dx - 60 / after.scale, dy + 30 / after.scale)));
  EXPECT_TRUE(sameWindow(page.window("viewS"), moved(panned, -dx, -dy)));
  EXPECT_EQ(page.browser.evaluate("window.__errors.length"), 0) << page.browser.evaluate("window.__errors").dump();
  EXPECT_TRUE(page.browser.ok()) << page.browser.error();
}

TEST_F(VkcompareHtml, BrowserShowsOnlyTheDifferencesWhenSwitched) {
  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const auto r = examplesReport();
  ASSERT_EQ(r.status, 1) << r.err;
  const std::string html = vktest::readFile(dir.file("report.html"));
  const Json data = pageData(html), list = pageData(html, "vk-list-s");
  ASSERT_TRUE(list.is_object());
  std::set<std::string> named;
  for (const Json& rec : data["result"]["records"])
    if (rec["source_handle"].is_string()) named.insert(rec["source_handle"].get<std::string>());

  OpenReport page(dir.file("profile"));
  ASSERT_TRUE(page.browser.ok()) << page.browser.error();
  ASSERT_TRUE(page.browser.open("file://" + dir.file("report.html"), kReady)) << page.browser.error();

  // The primitives read as the page reads them: entities and starts counted up, boxes from corners and sizes.
  std::vector<double> prims = list["prims"];
  const std::vector<double> geom = list["geom"];
  double entity = 0, start = 0;
  for (std::size_t j = 0; j + 9 <= prims.size(); j += 9) {
    entity = prims[j + 1] += entity;
    const double count = prims[j + 4];
    prims[j + 4] = start;
    start += count;
    prims[j + 7] += prims[j + 5];
    prims[j + 8] += prims[j + 6];
  }
  const double ox = list["origin"][0], oy = list["origin"][1];
  // A pixel of the source view on the first straight segment of a line named by a record (or by none), `gap`
  // pixels from every other entity's boxes and from every rectangle; empty when there is none.
  const auto pick = [&](bool wantNamed, double gap) -> std::vector<double> {
    const Placement view(page.window("viewS"), page.box("viewS"));
    const double clearance = gap / view.scale;
    const auto clear = [&](double x, double y, std::size_t self) {
      for (std::size_t j = 0; j + 9 <= prims.size(); j += 9)
        if (prims[j + 1] != prims[self + 1] && x > prims[j + 5] - clearance && x < prims[j + 7] + clearance &&
            y > prims[j + 6] - clearance && y < prims[j + 8] + clearance)
          return false;
      for (const Json& rc : data["rectangles"])
        if (rc[1] == "s" && x + ox > rc[3].get<double>() - clearance && x + ox < rc[5].get<double>() + clearance &&
            y + oy > rc[4].get<double>() - clearance && y + oy < rc[6].get<double>() + clearance)
          return false;
      return true;
    };
    for (std::size_t j = 0; j + 9 <= prims.size(); j += 9) {
      const auto g = static_cast<std::size_t>(prims[j + 4]);
      if (prims[j] != 0 || g + 6 > geom.size() || geom[g] != 0 || geom[g + 3] != 1) continue;
      if ((named.count(list["handles"][static_cast<std::size_t>(prims[j + 1])].get<std::string>()) > 0) != wantNamed)
        continue;
      for (double t = 0.05; t < 1; t += 0.05) {
        const double x = prims[j + 5] + geom[g + 1] + t * (geom[g + 4] - geom[g + 1]);
        const double y = prims[j + 6] + geom[g + 2] + t * (geom[g + 5] - geom[g + 2]);
        const double px = view.px(x + ox), py = view.py(y + oy);
        if (px > 3 && py > 3 && px < view.width - 3 && py < view.height - 3 && clear(x, y, j)) return {px, py};
      }
    }
    return {};
  };
  // At full extent the differing lines lie within a pixel of others: the wheel zooms in on one first.
  const std::vector<double> box = page.box("viewS"), onto = pick(true, 0);
  ASSERT_FALSE(onto.empty());
  for (int turn = 0; turn < 8; ++turn) page.browser.wheel(std::round(box[0] + onto[0]), std::round(box[1] + onto[1]), -120);
  // While the wheel turns, the view shows its picture scaled; it is drawn anew once the wheel rests.
  ASSERT_TRUE(page.browser.waitUntil("!document.getElementById('viewS').hasAttribute('data-scaled')"))
      << page.browser.error();
  page.browser.settle();
  const std::vector<double> plain = pick(false, 3), differing = pick(true, 3);
  ASSERT_FALSE(plain.empty()) << "no line of an unchanged entity stands alone in the source view";
  ASSERT_FALSE(differing.empty()) << "no line of a differing entity stands alone in the source view";
  const auto at = [](double v) { return static_cast<int>(std::floor(v)); };
  EXPECT_GT(page.inked("viewS", at(plain[0]), at(plain[1])), 0);
  EXPECT_GT(page.inked("viewS", at(differing[0]), at(differing[1])), 0);

  // A click on the switch: the unchanged entity is gone, the differing one stays; a second click brings it back.
  const Json toggle = page.browser.evaluate(
      "(function(){var b=document.getElementById('only').getBoundingClientRect();return [b.left+b.width/2,b.top+b.height/2];})()");
  ASSERT_TRUE(toggle.is_array());
  page.browser.click(toggle[0], toggle[1]);
  page.browser.settle();
  EXPECT_EQ(page.browser.evaluate("document.getElementById('only').checked"), true);
  EXPECT_EQ(page.inked("viewS", at(plain[0]), at(plain[1])), 0);
  EXPECT_GT(page.inked("viewS", at(differing[0]), at(differing[1])), 0);
  page.browser.click(toggle[0], toggle[1]);
  page.browser.settle();
  EXPECT_GT(page.inked("viewS", at(plain[0]), at(plain[1])), 0);
  EXPECT_TRUE(page.browser.ok()) << page.browser.error();
}

}  // namespace

// A drawing whose blocks nest past the walk's budget is drawn in part, and the view's title says so; a whole
// drawing's title is its file name alone.
TEST_F(VkcompareHtml, BrowserSaysWhenADrawingIsDrawnInPart) {
  if (browser().empty()) GTEST_SKIP() << "no chromium on this machine";
  const std::string nested = vktest::dataDir() + "/hostile/nested_blocks_7_deep.dxf";
  ASSERT_NE(run({"--html", "report.html", nested, example("door_rev_a.dxf")}).status, -1);
  const std::string shown = dom(dir.file("report.html"), "");
  ASSERT_NE(shown.find("data-ready=\"1\""), std::string::npos) << shown.substr(0, 3000);
  EXPECT_NE(shown.find("nested_blocks_7_deep.dxf（图元过多，只画出了一部分）</h2>"), std::string::npos);
  EXPECT_NE(shown.find("door_rev_a.dxf</h2>"), std::string::npos);
}
