// A space's display list for a page's canvas: the same walk as the SVG, and its numbers as the page reads them.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/headless/svg_render.h"
#include "platform/render.h"
#include "support/TestSupport.h"

using namespace platform;
using Json = nlohmann::json;

namespace {

// One primitive of a list as the page reads its nine numbers: its entity and where its numbers start counted up
// from the steps and counts, its box from its corner and size (relative to the list's origin).
struct Primitive {
  int kind = 0, entity = 0, colour = 0;
  double width = 0.0;
  std::size_t start = 0;
  double box[4] = {};
};

struct List {
  std::string text;
  Json json;
  Extents3d extents;
  std::vector<Primitive> primitives;
  std::vector<double> geometry;
  // The numbers of primitive i's geometry; its coordinates are relative to the corner of its box.
  std::vector<double> numbers(std::size_t i) const {
    const std::size_t end = i + 1 < primitives.size() ? primitives[i + 1].start : geometry.size();
    return {geometry.begin() + static_cast<std::ptrdiff_t>(primitives[i].start),
            geometry.begin() + static_cast<std::ptrdiff_t>(end)};
  }
  std::string colour(const Primitive& p) const { return json["colors"][static_cast<std::size_t>(p.colour)]; }
  std::string handle(const Primitive& p) const { return json["handles"][static_cast<std::size_t>(p.entity)]; }
};

List listOf(const Database& db) {
  List l;
  renderSpaceDisplayList(db, l.text, l.extents);
  l.json = Json::parse(l.text, nullptr, false);
  EXPECT_TRUE(l.json.is_object()) << l.text.substr(0, 2000);
  if (!l.json.is_object()) return l;
  l.geometry = l.json["geom"].get<std::vector<double>>();
  const std::vector<double> p = l.json["prims"].get<std::vector<double>>();
  EXPECT_EQ(p.size() % 9, 0u);
  int entity = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i + 9 <= p.size(); i += 9) {
    entity += static_cast<int>(p[i + 1]);
    EXPECT_GE(p[i + 1], 0.0);
    EXPECT_GT(p[i + 4], 0.0);  // every primitive has numbers
    EXPECT_GE(p[i + 7], 0.0);
    EXPECT_GE(p[i + 8], 0.0);
    Primitive q{static_cast<int>(p[i]), entity, static_cast<int>(p[i + 2]), p[i + 3], start,
                {p[i + 5], p[i + 6], p[i + 5] + p[i + 7], p[i + 6] + p[i + 8]}};
    start += static_cast<std::size_t>(p[i + 4]);
    EXPECT_LT(static_cast<std::size_t>(q.entity), l.json["handles"].size());
    EXPECT_LT(static_cast<std::size_t>(q.colour), l.json["colors"].size());
    l.primitives.push_back(q);
  }
  EXPECT_EQ(start, l.geometry.size());
  return l;
}

std::vector<std::string> svgHandlesThatDraw(const std::string& svg) {
  std::vector<std::string> out;
  const std::regex group("<g data-h=\"([0-9A-F]+)\">\n(</g>)?");
  for (auto it = std::sregex_iterator(svg.begin(), svg.end(), group); it != std::sregex_iterator(); ++it)
    if (!(*it)[2].matched) out.push_back((*it)[1]);
  return out;
}

std::size_t count(const std::string& text, const std::string& what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

TEST(DisplayList, DrawsWhatTheSvgDrawsForTheSameEntities) {
  for (const char* name : {"door_rev_a.dxf", "door_rev_b.dxf"}) {
    SCOPED_TRACE(name);
    ReadReport report;
    auto db = Database::read(vktest::dataDir() + "/../../examples/" + name, report);
    ASSERT_TRUE(db) << report.error;
    std::string svg;
    Extents3d svgExtents;
    renderSpaceSvg(*db, svg, svgExtents);
    const List l = listOf(*db);
    std::size_t outlines = 0, texts = 0;
    std::vector<std::string> handles;
    for (const Primitive& p : l.primitives) {
      (p.kind == 4 ? texts : outlines)++;
      if (handles.empty() || handles.back() != l.handle(p)) handles.push_back(l.handle(p));
    }
    // One primitive an SVG path or text, the entities in the same order, the same box drawn.
    EXPECT_EQ(outlines, count(svg, "<path "));
    EXPECT_EQ(texts, count(svg, "<text "));
    EXPECT_GT(texts, 0u);
    EXPECT_EQ(handles, svgHandlesThatDraw(svg));
    EXPECT_EQ(l.json["handles"].get<std::vector<std::string>>(), handles);
    EXPECT_EQ(l.extents.min.x, svgExtents.min.x);
    EXPECT_EQ(l.extents.max.y, svgExtents.max.y);
    EXPECT_EQ(l.json["complete"], true);
  }
}

TEST(DisplayList, OutlinesTextsAndPaintAsThePageReadsThem) {
  vktest::TempDir dir;
  const std::string layers =
      "0|TABLE|2|LAYER|0|LAYER|2|0|62|7|70|0|0|LAYER|2|Red|62|1|70|0|0|LAYER|2|Frozen|62|2|70|1|0|ENDTAB";
  auto db = vktest::readDxfText(
      dir, "d.dxf",
      vktest::dxfDrawing("0|LINE|5|A1|8|Red|10|1000.5|20|2000.25|30|0|11|1010.5|21|2000.25|31|0"
                         "|0|LINE|5|A2|8|Frozen|10|0|20|0|30|0|11|1|21|1|31|0"
                         "|0|CIRCLE|5|A3|8|0|62|3|10|1020|20|2000|30|0|40|5"
                         "|0|POINT|5|A4|8|0|10|1030|20|2001|30|0"
                         "|0|TEXT|5|A5|8|0|10|1040|20|2000|30|0|40|2|1|<b>&\"x\"</script>|50|90"
                         "|0|LWPOLYLINE|5|A6|8|0|90|2|70|0|43|0.5|10|1050|20|2000|10|1053|20|2000",
                         "AC1021", "", layers));
  ASSERT_TRUE(db);
  const List l = listOf(*db);
  ASSERT_EQ(l.primitives.size(), 5u);
  // Boxes are relative to a corner near the first one drawn; the frozen layer's line is not there.
  EXPECT_EQ(l.json["origin"], Json::array({1000, 2000}));
  EXPECT_EQ(l.json["handles"], Json::array({"A1", "A3", "A4", "A5", "A6"}));
  const Primitive& line = l.primitives[0];
  EXPECT_EQ(line.kind, 0);
  EXPECT_EQ(l.colour(line), "#ff0000");  // ByLayer on a layer of colour 1
  EXPECT_EQ(l.numbers(0), (std::vector<double>{0, 0, 0, 1, 10, 0}));
  EXPECT_EQ(std::vector<double>(line.box, line.box + 4), (std::vector<double>{0.5, 0.25, 10.5, 0.25}));

  // A circle: two half turns counter-clockwise about its centre, boxed by it.
  const Primitive& circle = l.primitives[1];
  EXPECT_EQ(l.colour(circle), "#00ff00");
  const std::vector<double> c = l.numbers(1);
  ASSERT_EQ(c.size(), 3u + 7u + 7u);
  EXPECT_EQ(c[0], 0);
  EXPECT_EQ(c[1], 10);
  EXPECT_EQ(c[2], 5);
  for (std::size_t at : {3u, 10u}) {
    EXPECT_EQ(c[at], 2);  // an arc
    EXPECT_EQ(c[at + 1], 5);
    EXPECT_EQ(c[at + 2], 5);
    EXPECT_EQ(c[at + 3], 5);
    EXPECT_EQ(c[at + 6], 1);  // counter-clockwise
  }
  EXPECT_NEAR(c[7], 0.0, 1e-12);        // from angle 0 ...
  EXPECT_NEAR(c[8], 3.14159265, 1e-6);  // ... to a half turn
  EXPECT_EQ(std::vector<double>(circle.box, circle.box + 4), (std::vector<double>{15, -5, 25, 5}));

  EXPECT_EQ(l.primitives[2].kind, 3);  // a point: a dot
  EXPECT_EQ(l.numbers(2), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(l.primitives[2].box[0], 30);
  EXPECT_EQ(l.primitives[2].box[1], 1);

  // A text: its frame as a canvas transform (rotated a quarter turn, y down), height, anchor, fit, one line.
  const Primitive& text = l.primitives[3];
  EXPECT_EQ(text.kind, 4);
  const std::vector<double> t = l.numbers(3);
  ASSERT_EQ(t.size(), 12u);
  EXPECT_NEAR(t[0], 0, 1e-12);
  EXPECT_NEAR(t[1], 1, 1e-12);
  EXPECT_NEAR(t[2], 1, 1e-12);
  EXPECT_NEAR(t[3], 0, 1e-12);
  // Its insertion point (40, 0) from the corner of its box.
  EXPECT_NEAR(t[4] + text.box[0], 40, 1e-9);
  EXPECT_NEAR(t[5] + text.box[1], 0, 1e-9);
  EXPECT_EQ(t[6], 2);   // height
  EXPECT_EQ(t[9], 1);   // one line
  EXPECT_EQ(t[10], 0);  // on the baseline
  EXPECT_EQ(l.json["texts"][static_cast<std::size_t>(t[11])], "<b>&\"x\"</script>");
  // Running up from its insertion point, the text's box lies left of x = 40 + 0.6 (its descent) and above y 0.
  EXPECT_LE(text.box[0], 40 - 1.9);
  EXPECT_LE(text.box[2], 40 + 0.61);
  EXPECT_GE(text.box[1], -1e-9);
  EXPECT_GT(text.box[3], 10);

  // A polyline of a constant width keeps it, in drawing units.
  EXPECT_EQ(l.primitives[4].kind, 0);
  EXPECT_EQ(l.primitives[4].width, 0.5);

  // The list can stand inside a script element: no markup character, whatever the drawing's texts hold.
  EXPECT_EQ(l.text.find('<'), std::string::npos);
  EXPECT_EQ(l.text.find('&'), std::string::npos);
  EXPECT_NE(l.text.find("\\u003cb\\u003e\\u0026\\\"x\\\"\\u003c/script\\u003e"), std::string::npos);
}

TEST(DisplayList, NothingDrawnIsAnEmptyListAndBadTextBecomesReplacementCharacters) {
  vktest::TempDir dir;
  auto empty = vktest::readDxfText(dir, "e.dxf", vktest::dxfDrawing(""));
  ASSERT_TRUE(empty);
  const List none = listOf(*empty);
  EXPECT_TRUE(none.primitives.empty());
  EXPECT_TRUE(none.json["handles"].empty());
  EXPECT_TRUE(none.extents.isEmpty());

  // A text of bytes that are not UTF-8 (an R2007 drawing's texts are read as UTF-8).
  auto bad = vktest::readDxfText(
      dir, "b.dxf", vktest::dxfDrawing("0|TEXT|5|B1|8|0|10|0|20|0|30|0|40|1|1|a\xff\xc3z\x01", "AC1021"));
  ASSERT_TRUE(bad);
  const List l = listOf(*bad);
  ASSERT_EQ(l.json["texts"].size(), 1u);
  EXPECT_EQ(l.json["texts"][0], "a\xEF\xBF\xBD\xEF\xBF\xBDz\x01");
}

}  // namespace
