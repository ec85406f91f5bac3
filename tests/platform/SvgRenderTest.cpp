// Drawings rendered to SVG by the headless host: colours, visibility, texts, curves, blocks and the corpus.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/headless/dxf_storage.h"
#include "platform/headless/svg_render.h"
#include "platform/render.h"
#include "support/TestSupport.h"

using namespace platform;

namespace {

// One element of a parsed SVG text: its name, attributes and the character data directly inside it, unescaped.
struct Element {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;
  std::string attr(const std::string& key) const {
    auto it = attributes.find(key);
    return it == attributes.end() ? std::string() : it->second;
  }
};

// A small XML reader, strict about what the renderer must get right: tags nest and close, attribute values are
// quoted, '<' and '&' appear only as markup or known references. Comments and the declaration are skipped.
class Xml {
 public:
  explicit Xml(std::string_view s) : s_(s) {}

  // The elements in document order; an empty error when the text is well-formed.
  std::vector<Element> parse(std::string& error) {
    std::vector<Element> all;
    std::vector<std::size_t> open;
    while (i_ < s_.size() && error.empty()) {
      if (s_[i_] != '<') {
        const std::string text = characters(error);
        if (!open.empty()) all[open.back()].text += text;
        else if (text.find_first_not_of(" \n") != std::string::npos) error = "text outside the root";
        continue;
      }
      if (s_.substr(i_, 4) == "<!--") {
        const std::size_t end = s_.find("-->", i_);
        if (end == std::string_view::npos) error = "open comment";
        i_ = end + 3;
        continue;
      }
      if (s_.substr(i_, 2) == "<?") {
        i_ = s_.find("?>", i_) + 2;
        continue;
      }
      if (s_.substr(i_, 2) == "</") {
        const std::size_t end = s_.find('>', i_);
        const std::string name(s_.substr(i_ + 2, end - i_ - 2));
        if (open.empty() || all[open.back()].name != name) error = "unbalanced </" + name + ">";
        else open.pop_back();
        i_ = end + 1;
        continue;
      }
      ++i_;
      Element e;
      e.name = word();
      if (e.name.empty()) error = "a tag without a name";
      while (error.empty()) {
        skipBlanks();
        if (i_ >= s_.size()) {
          error = "open tag";
          break;
        }
        if (s_.substr(i_, 2) == "/>") {
          i_ += 2;
          all.push_back(e);
          break;
        }
        if (s_[i_] == '>') {
          ++i_;
          open.push_back(all.size());
          all.push_back(e);
          break;
        }
        const std::string key = word();
        if (key.empty() || i_ + 1 >= s_.size() || s_[i_] != '=' || s_[i_ + 1] != '"') {
          error = "a bad attribute in <" + e.name + ">";
          break;
        }
        i_ += 2;
        const std::size_t close = s_.find('"', i_);
        if (close == std::string_view::npos) {
          error = "an open attribute value";
          break;
        }
        Xml value(s_.substr(i_, close - i_));
        const std::string v = value.characters(error);
        if (!e.attributes.emplace(key, v).second) error = "attribute " + key + " twice";
        i_ = close + 1;
      }
    }
    if (error.empty() && !open.empty()) error = "<" + all[open.back()].name + "> not closed";
    return all;
  }

 private:
  std::string word() {
    const std::size_t begin = i_;
    while (i_ < s_.size() && (std::isalnum(static_cast<unsigned char>(s_[i_])) || s_[i_] == '-' || s_[i_] == ':'))
      ++i_;
    return std::string(s_.substr(begin, i_ - begin));
  }
  void skipBlanks() {
    while (i_ < s_.size() && (s_[i_] == ' ' || s_[i_] == '\n')) ++i_;
  }
  std::string characters(std::string& error) {
    std::string out;
    while (i_ < s_.size() && s_[i_] != '<') {
      if (s_[i_] != '&') {
        if (s_[i_] == '>' || (static_cast<unsigned char>(s_[i_]) < 0x20 && s_[i_] != '\n' && s_[i_] != '\t'))
          error = "a raw markup or control character";
        out += s_[i_++];
        continue;
      }
      static const std::pair<std::string_view, char> kKnown[] = {
          {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}};
      bool known = false;
      for (const auto& [reference, c] : kKnown)
        if (s_.substr(i_, reference.size()) == reference) {
          out += c;
          i_ += reference.size();
          known = true;
          break;
        }
      if (!known) {
        error = "an unknown reference";
        ++i_;
      }
    }
    return out;
  }
  std::string_view s_;
  std::size_t i_ = 0;
};

struct Rendering {
  std::string svg;
  Extents3d extents;
  std::vector<Element> elements;
  // The path data of every path, in drawing order.
  std::vector<std::string> paths() const {
    std::vector<std::string> out;
    for (const Element& e : elements)
      if (e.name == "path") out.push_back(e.attr("d"));
    return out;
  }
  std::vector<const Element*> named(const std::string& name) const {
    std::vector<const Element*> out;
    for (const Element& e : elements)
      if (e.name == name) out.push_back(&e);
    return out;
  }
};

// The current space of a database rendered and parsed back; fails the test when the SVG is not well-formed.
Rendering render(const Database& db, const headless::SvgLimits& limits = {}) {
  Rendering r;
  EXPECT_TRUE(headless::renderBlockSvg(db, idIndex(db.currentSpaceId()), r.svg, r.extents, limits));
  std::string error;
  r.elements = Xml(r.svg).parse(error);
  EXPECT_EQ(error, "") << r.svg.substr(0, 2000);
  return r;
}

// Texts of R2007 and later drawings are UTF-8.
Rendering renderDxf(std::string_view entities, std::string_view tables = "", std::string_view blocks = "") {
  vktest::TempDir dir;
  auto db = vktest::readDxfText(dir, "d.dxf", vktest::dxfDrawing(entities, "AC1021", "", tables, blocks));
  if (!db) return {};
  return render(*db);
}

constexpr std::string_view kLayers =
    "0|TABLE|2|LAYER|0|LAYER|2|0|62|7|70|0|0|LAYER|2|Red|62|1|70|0|0|LAYER|2|Green|62|3|70|0"
    "|0|LAYER|2|Frozen|62|2|70|1|0|LAYER|2|Off|62|-4|70|0|0|ENDTAB";

// ---- colours and visibility ----

TEST(SvgRender, ColoursResolveThroughLayersBlocksAndTrueColours) {
  const std::string blocks =
      "0|BLOCK|2|B|70|0|10|0|20|0|30|0"
      "|0|LINE|8|Red|62|0|10|0|20|0|30|0|11|1|21|0|31|0"        // ByBlock: the reference's colour
      "|0|LINE|8|0|10|0|20|1|30|0|11|1|21|1|31|0"               // layer 0, ByLayer: the reference's layer
      "|0|LINE|8|Red|10|0|20|2|30|0|11|1|21|2|31|0|0|ENDBLK"    // its own layer
      "|0|BLOCK|2|OUTER|70|0|10|0|20|0|30|0|0|INSERT|8|Red|62|0|2|B|10|0|20|0|30|0|0|ENDBLK";
  const Rendering r = renderDxf(
      "0|LINE|8|Red|10|0|20|0|30|0|11|10|21|0|31|0"
      "|0|LINE|8|Red|62|5|10|0|20|5|30|0|11|10|21|5|31|0"
      "|0|LINE|8|0|420|1193046|10|0|20|6|30|0|11|1|21|6|31|0"
      "|0|LINE|8|0|62|0|10|0|20|7|30|0|11|1|21|7|31|0"
      "|0|INSERT|8|Green|62|6|2|B|10|100|20|0|30|0"
      "|0|INSERT|8|Green|2|B|10|200|20|0|30|0"
      "|0|INSERT|8|Green|62|4|2|OUTER|10|300|20|0|30|0",
      kLayers, blocks);
  std::map<std::string, std::string> strokeOf;
  for (const Element* p : r.named("path")) strokeOf[p->attr("d")] = p->attr("stroke");
  EXPECT_EQ(strokeOf["M0 0L10 0"], "#ff0000");   // ByLayer on a layer of colour 1
  EXPECT_EQ(strokeOf["M0 5L10 5"], "#0000ff");   // its own colour 5
  EXPECT_EQ(strokeOf["M0 6L1 6"], "#123456");    // a true colour wins
  EXPECT_EQ(strokeOf["M0 7L1 7"], "#ffffff");    // ByBlock outside any block: white
  EXPECT_EQ(strokeOf["M100 0L101 0"], "#ff00ff");  // ByBlock takes the reference's colour 6
  EXPECT_EQ(strokeOf["M100 1L101 1"], "#00ff00");  // layer 0 takes the reference's layer Green
  EXPECT_EQ(strokeOf["M100 2L101 2"], "#ff0000");
  EXPECT_EQ(strokeOf["M200 0L201 0"], "#00ff00");  // a ByLayer reference passes its layer's colour on
  EXPECT_EQ(strokeOf["M300 0L301 0"], "#00ffff");  // through a ByBlock reference nested in one of colour 4
  for (const Element* p : r.named("path")) EXPECT_EQ(p->attr("vector-effect"), "non-scaling-stroke");
}

TEST(SvgRender, FrozenOffAndInvisibleEntitiesAreNotDrawn) {
  const std::string blocks =
      "0|BLOCK|2|B|70|0|10|0|20|0|30|0|0|LINE|8|Frozen|10|0|20|0|30|0|11|1|21|0|31|0"
      "|0|LINE|8|0|10|0|20|1|30|0|11|1|21|1|31|0|0|ENDBLK";
  const Rendering r = renderDxf(
      "0|LINE|8|Frozen|10|0|20|0|30|0|11|1|21|0|31|0"
      "|0|LINE|8|Off|10|0|20|1|30|0|11|1|21|1|31|0"
      "|0|LINE|8|Red|60|1|10|0|20|2|30|0|11|1|21|2|31|0"
      "|0|INSERT|8|Frozen|2|B|10|50|20|0|30|0"
      "|0|INSERT|8|Red|2|B|10|100|20|0|30|0"
      "|0|INSERT|8|Off|2|B|10|150|20|0|30|0"
      "|0|INSERT|8|Off|2|C|10|150|20|0|30|0"
      "|0|LINE|8|Red|10|0|20|3|30|0|11|1|21|3|31|0",
      kLayers,
      std::string(blocks) + "|0|BLOCK|2|C|70|0|10|0|20|0|30|0|0|LINE|8|Red|10|0|20|9|30|0|11|1|21|9|31|0|0|ENDBLK");
  const std::vector<std::string> drawn = r.paths();
  // The line on layer 0 inside the block is drawn on the reference's layer; the frozen one is not. A reference
  // on a layer that is off still shows what its block draws on layers that are on.
  EXPECT_EQ(drawn, (std::vector<std::string>{"M100 1L101 1", "M150 9L151 9", "M0 3L1 3"}));
  EXPECT_EQ(r.extents.min.x, 0.0);
  EXPECT_EQ(r.extents.max.x, 151.0);
}

// ---- texts ----

TEST(SvgRender, TextsAreEscapedPlainAndPlaced) {
  const Rendering r = renderDxf(
      "0|TEXT|8|0|10|1|20|2|30|0|40|2.5|1|<script>alert(1)</script> & \"q\"|50|90"
      "|0|TEXT|8|0|10|0|20|0|30|0|11|5|21|5|31|0|40|1|1|%%c20 %%p0.1|72|1|73|2"
      "|0|MTEXT|8|0|10|0|20|10|30|0|40|2|71|5|1|{\\H1.5x;\\C1;图纸}\\P第二行 \\S1/2;\\Pend"
      "|0|ATTDEF|8|0|10|0|20|0|30|0|40|1|1|value|2|TAG|3|prompt|70|0",
      kLayers);
  EXPECT_EQ(r.svg.find("<script"), std::string::npos);
  const std::vector<const Element*> texts = r.named("text");
  ASSERT_EQ(texts.size(), 4u);
  EXPECT_EQ(texts[0]->text, "<script>alert(1)</script> & \"q\"");
  // Rotated 90 degrees about (1, 2), un-flipped: x along drawing y, glyph y down along drawing -x.
  EXPECT_EQ(texts[0]->attr("transform"), "matrix(0 1 1 0 1 2)");
  EXPECT_EQ(texts[0]->attr("font-size"), "2.5");
  EXPECT_EQ(texts[0]->attr("fill"), "#ffffff");
  EXPECT_NE(r.svg.find("Noto Sans CJK SC"), std::string::npos);
  // Centred on its alignment point, the baseline half the height below it.
  EXPECT_EQ(texts[1]->text, "\u230020 \u00B10.1");
  EXPECT_EQ(texts[1]->attr("transform"), "matrix(1 0 0 -1 5 5)");
  EXPECT_EQ(texts[1]->attr("text-anchor"), "middle");
  EXPECT_EQ(texts[1]->attr("y"), "0.5");
  // Multi-line text: codes stripped, one line per paragraph, attached at its middle centre.
  const std::vector<const Element*> spans = r.named("tspan");
  ASSERT_EQ(spans.size(), 3u);
  EXPECT_EQ(spans[0]->text, "图纸");
  EXPECT_EQ(spans[1]->text, "第二行 1/2");
  EXPECT_EQ(spans[2]->text, "end");
  EXPECT_EQ(texts[2]->attr("text-anchor"), "middle");
  // Three lines of height 2, 10/3 apart: the block is 2 + 20/3 high, the first baseline 2 - (2 + 20/3) / 2 down.
  EXPECT_NEAR(std::stod(spans[0]->attr("y")), 2.0 - (2.0 + 20.0 / 3.0) / 2.0, 1e-9);
  EXPECT_NEAR(std::stod(spans[1]->attr("y")) - std::stod(spans[0]->attr("y")), 10.0 / 3.0, 1e-9);
  // An attribute definition in a space shows its tag.
  EXPECT_EQ(texts[3]->text, "TAG");
  EXPECT_FALSE(r.extents.isEmpty());
}

TEST(SvgRender, AttributesShowThroughTheirReference) {
  const std::string blocks =
      "0|BLOCK|2|A|70|2|10|0|20|0|30|0"
      "|0|ATTDEF|8|0|10|0|20|0|30|0|40|1|1|v|2|ASKED|3|p|70|0"
      "|0|ATTDEF|8|0|10|0|20|1|30|0|40|1|1|fixed|2|CONST|3|p|70|2|0|ENDBLK";
  const Rendering r = renderDxf(
      "0|INSERT|8|Green|62|1|66|1|2|A|10|10|20|0|30|0"
      "|0|ATTRIB|8|0|62|0|10|10|20|0|30|0|40|1|1|shown|2|ASKED|70|0"
      "|0|ATTRIB|8|0|10|10|20|2|30|0|40|1|1|hidden|2|OTHER|70|1"
      "|0|SEQEND|8|0",
      kLayers, blocks);
  std::vector<std::string> texts, fills;
  for (const Element* t : r.named("text")) {
    texts.push_back(t->text);
    fills.push_back(t->attr("fill"));
  }
  // The constant definition shows its tag; the other shows through the attribute, in the reference's colour.
  EXPECT_EQ(texts, (std::vector<std::string>{"CONST", "shown"}));
  EXPECT_EQ(fills, (std::vector<std::string>{"#00ff00", "#ff0000"}));
}

// Each entity of the space is a group with its handle; what a reference shows of its block is not.
TEST(SvgRender, EntitiesOfTheSpaceCarryTheirHandles) {
  const Rendering r = renderDxf("0|LINE|5|1A|8|0|10|0|20|0|30|0|11|1|21|0|31|0|0|INSERT|5|2B|8|0|2|B|10|5|20|0|30|0",
                                "", "0|BLOCK|2|B|70|0|10|0|20|0|30|0|0|CIRCLE|5|3C|8|0|10|0|20|0|30|0|40|1|0|ENDBLK");
  std::vector<std::string> handles;
  for (const Element* g : r.named("g"))
    if (!g->attr("data-h").empty()) handles.push_back(g->attr("data-h"));
  EXPECT_EQ(handles, (std::vector<std::string>{"1A", "2B"}));
  EXPECT_EQ(r.paths().size(), 2u);  // the line, and the circle through the reference
}

TEST(SvgRender, XmlTextDropsWhatXmlCannotHold) {
  std::string out;
  headless::appendXmlText(out, std::string("a\x01<b>\xFF\xC3\xA9\xE5\x9B", 11));
  EXPECT_EQ(out, "a&lt;b&gt;\xEF\xBF\xBD\xC3\xA9\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(SvgRender, MultilineTextWrapsAtItsWidth) {
  // Latin characters are taken as 0.6 of the height wide, CJK ones as 1: 6 of height 1 fill a width of 3.6.
  const Rendering r = renderDxf(
      "0|MTEXT|8|0|10|0|20|0|30|0|40|1|41|3.7|71|1|1|abc de fghijklm\\P一二三四五"
      "|0|MTEXT|8|0|10|0|20|0|30|0|40|1|41|0|71|7|1|no width no wrap at all",
      kLayers);
  std::vector<std::string> lines;
  for (const Element* e : r.named("tspan")) lines.push_back(e->text);
  EXPECT_EQ(lines,
            (std::vector<std::string>{"abc de", "fghijk", "lm", "一二三", "四五", "no width no wrap at all"}));
  // Attached at the bottom left, a single line stands on the insertion point; at the top left the first line
  // hangs a height below it.
  EXPECT_EQ(r.named("tspan").back()->attr("y"), "0");
  EXPECT_EQ(r.named("tspan").front()->attr("y"), "1");
}

TEST(SvgRender, RaysRunFarWithoutWideningTheExtents) {
  const Rendering r = renderDxf(
      "0|LINE|8|0|10|0|20|0|30|0|11|10|21|0|31|0"
      "|0|RAY|8|0|100|AcDbRay|10|1|20|1|30|0|11|0|21|1|31|0"
      "|0|XLINE|8|0|100|AcDbXline|10|1|20|1|30|0|11|1|21|0|31|0",
      kLayers);
  // A hundred times the drawing's size, at least 10^4.
  EXPECT_EQ(r.paths(), (std::vector<std::string>{"M0 0L10 0", "M1 1L1 10001", "M-9999 1L10001 1"}));
  EXPECT_EQ(r.extents.max.x, 10.0);
  EXPECT_EQ(r.extents.max.y, 0.0);
}

TEST(SvgRender, MeshesDrawTheirVisibleEdges) {
  const Rendering r = renderDxf(
      // A polyface mesh of two triangles sharing an edge, hidden on the second one.
      "0|POLYLINE|8|0|66|1|10|0|20|0|30|0|70|64|71|4|72|2"
      "|0|VERTEX|8|0|10|0|20|0|30|0|70|192|0|VERTEX|8|0|10|1|20|0|30|0|70|192"
      "|0|VERTEX|8|0|10|1|20|1|30|0|70|192|0|VERTEX|8|0|10|0|20|1|30|0|70|192"
      "|0|VERTEX|8|0|10|0|20|0|30|0|70|128|71|1|72|2|73|3"
      "|0|VERTEX|8|0|10|0|20|0|30|0|70|128|71|3|72|4|73|-1|0|SEQEND|8|0"
      // A polygon mesh of 2 by 2 vertices.
      "|0|POLYLINE|8|0|66|1|10|0|20|0|30|0|70|16|71|2|72|2"
      "|0|VERTEX|8|0|10|5|20|0|30|0|70|64|0|VERTEX|8|0|10|6|20|0|30|0|70|64"
      "|0|VERTEX|8|0|10|5|20|1|30|0|70|64|0|VERTEX|8|0|10|6|20|1|30|0|70|64|0|SEQEND|8|0",
      kLayers);
  const std::vector<std::string> d = r.paths();
  EXPECT_EQ(d, (std::vector<std::string>{"M0 0L1 0L1 1L0 0M1 1L0 1L0 0",
                                         "M5 0L6 0M5 1L6 1M5 0L5 1M6 0L6 1"}));
}

TEST(SvgRender, MultileadersDrawTheirLeadersAndText) {
  const Rendering r = renderDxf(
      "0|MULTILEADER|8|Red|100|AcDbEntity|100|AcDbMLeader|300|CONTEXT_DATA{|40|1|10|4|20|4|30|0|41|1|290|1|304|A\\PB|"
      "11|0|21|0|31|1|12|4|22|5|32|0|13|1|23|0|33|0|171|1|110|4|120|4|130|0|111|1|121|0|131|0|"
      "302|LEADER{|10|4|20|4|30|0|11|1|21|0|31|0|40|0.5|304|LEADER_LINE{|10|0|20|0|30|0|10|2|20|1|30|0|305|}|303|}|"
      "301|}|10|1|20|1|30|1",
      kLayers);
  const std::vector<std::string> d = r.paths();
  // The leader line runs through its vertices to the landing point; the dog-leg goes on along its direction.
  EXPECT_EQ(d, (std::vector<std::string>{"M0 0L2 1L4 4", "M4 4L4.5 4"}));
  const std::vector<const Element*> spans = r.named("tspan");
  ASSERT_EQ(spans.size(), 2u);
  EXPECT_EQ(spans[0]->text, "A");
  EXPECT_EQ(spans[1]->text, "B");
  EXPECT_EQ(r.named("text")[0]->attr("transform"), "matrix(1 0 0 -1 4 5)");
  EXPECT_EQ(r.named("text")[0]->attr("fill"), "#ff0000");
}

// ---- curves ----

TEST(SvgRender, ArcsSweepTheWayTheyTurn) {
  const std::string blocks = "0|BLOCK|2|Q|70|0|10|0|20|0|30|0|0|ARC|8|0|10|0|20|0|30|0|40|10|50|0|51|90|0|ENDBLK";
  const Rendering r = renderDxf(
      "0|ARC|8|0|10|0|20|0|30|0|40|10|50|0|51|90"
      "|0|ARC|8|0|10|0|20|0|30|0|40|10|50|0|51|90|210|0|220|0|230|-1"
      "|0|CIRCLE|8|0|10|0|20|0|30|0|40|1"
      "|0|INSERT|8|0|2|Q|10|0|20|0|30|0|41|-1"
      "|0|LWPOLYLINE|8|0|100|AcDbPolyline|90|3|70|0|10|0|20|0|42|-1|10|2|20|0|10|4|20|0",
      kLayers, blocks);
  const std::vector<std::string> d = r.paths();
  ASSERT_EQ(d.size(), 5u);
  // A quarter counter-clockwise from (10, 0) to (0, 10); seen from below, the same arc runs clockwise to (-10, 0).
  EXPECT_EQ(d[0], "M10 0A10 10 0 0 1 0 10");
  EXPECT_EQ(d[1], "M-10 0A10 10 0 0 0 0 10");
  // A whole circle in two halves.
  EXPECT_EQ(d[2], "M1 0A1 1 0 0 1 -1 0A1 1 0 0 1 1 0");
  // Mirrored by its reference the quarter runs clockwise.
  EXPECT_EQ(d[3], "M-10 0A10 10 0 0 0 0 10");
  // A clockwise bulge of a half circle from (0, 0) to (2, 0), then straight on.
  EXPECT_EQ(d[4], "M0 0A1 1 0 0 0 2 0L4 0");
}

TEST(SvgRender, FilledAndFramedEntities) {
  const Rendering r = renderDxf(
      "0|SOLID|8|Red|10|0|20|0|30|0|11|1|21|0|31|0|12|0|22|1|32|0|13|1|23|1|33|0"
      "|0|HATCH|8|0|100|AcDbHatch|10|0|20|0|30|0|2|SOLID|70|1|71|0|91|1|92|2|72|0|73|1|93|3"
      "|10|0|20|0|10|4|20|0|10|4|20|4|97|0|75|0|76|1|98|0"
      "|0|HATCH|8|0|100|AcDbHatch|10|0|20|0|30|0|2|ANSI31|70|0|71|0|91|1|92|1|93|2"
      "|72|1|10|0|20|0|11|3|21|0|72|1|10|3|20|0|11|0|21|3|97|0|75|0|76|1|98|0"
      "|0|3DFACE|8|0|10|0|20|0|30|0|11|1|21|0|31|0|12|1|22|1|32|0|13|0|23|1|33|0|70|2"
      "|0|POINT|8|0|10|7|20|8|30|0",
      kLayers);
  const std::vector<const Element*> p = r.named("path");
  ASSERT_EQ(p.size(), 5u);
  EXPECT_EQ(p[0]->attr("d"), "M0 0L1 0L1 1L0 1Z");  // corners 1, 2, 4, 3
  EXPECT_EQ(p[0]->attr("fill"), "#ff0000");
  EXPECT_EQ(p[1]->attr("d"), "M0 0L4 0L4 4L0 0Z");
  EXPECT_EQ(p[1]->attr("fill-opacity"), "");
  EXPECT_EQ(p[2]->attr("fill-opacity"), "0.3");  // a pattern shows as a light fill
  EXPECT_EQ(p[2]->attr("d"), "M0 0L3 0L0 3Z");
  EXPECT_EQ(p[3]->attr("d"), "M0 0L1 0M1 1L0 1L0 0");  // the second edge is invisible
  EXPECT_EQ(p[4]->attr("d"), "M7 8h0");
  EXPECT_EQ(p[4]->attr("vector-effect"), "non-scaling-stroke");
}

TEST(SvgRender, PolylinesKeepTheirWidthsInDrawingUnits) {
  const Rendering r = renderDxf(
      "0|LWPOLYLINE|8|0|100|AcDbPolyline|90|2|70|0|43|0.5|10|0|20|0|10|3|20|0"
      "|0|LWPOLYLINE|8|0|100|AcDbPolyline|90|3|70|0|10|0|20|0|40|0|41|2|10|4|20|0|10|6|20|0"
      "|0|POLYLINE|8|0|66|1|10|0|20|0|30|0|40|1|41|1|70|0"
      "|0|VERTEX|8|0|10|0|20|5|30|0|0|VERTEX|8|0|10|5|20|5|30|0|0|SEQEND|8|0",
      kLayers);
  const std::vector<const Element*> p = r.named("path");
  ASSERT_EQ(p.size(), 4u);
  EXPECT_EQ(p[0]->attr("d"), "M0 0L3 0");
  EXPECT_EQ(p[0]->attr("stroke-width"), "0.5");
  EXPECT_EQ(p[0]->attr("vector-effect"), "");  // the width scales with the drawing
  // An arrow: the first segment widens from 0 to 2 (a filled outline), the second has no width.
  EXPECT_EQ(p[1]->attr("d"), "M0 0L4 1L4 -1L0 0Z");
  EXPECT_EQ(p[1]->attr("fill"), "#ffffff");
  EXPECT_EQ(p[2]->attr("d"), "M4 0L6 0");
  EXPECT_EQ(p[2]->attr("vector-effect"), "non-scaling-stroke");
  // A 2D polyline's default width.
  EXPECT_EQ(p[3]->attr("d"), "M0 5L5 5");
  EXPECT_EQ(p[3]->attr("stroke-width"), "1");
}

// ---- blocks ----

TEST(SvgRender, NestingIsBoundedByCyclesDepthAndBudget) {
  vktest::TempDir dir;
  // A block that refers to itself is drawn once around the cycle.
  auto cyclic = vktest::readDxfText(
      dir, "c.dxf",
      vktest::dxfDrawing("0|INSERT|8|0|2|SELF|10|0|20|0|30|0", "AC1015", "", "",
                         "0|BLOCK|2|SELF|70|0|10|0|20|0|30|0|0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0"
                         "|0|INSERT|8|0|2|SELF|10|5|20|0|30|0|0|ENDBLK"));
  ASSERT_TRUE(cyclic);
  EXPECT_EQ(render(*cyclic).named("path").size(), 1u);
  // 4^8 lines through nested references: the budget stops the walk and says so.
  auto nested = vktest::readDxfText(dir, "n.dxf", vktest::nestedBlocksDrawing(8, 4));
  ASSERT_TRUE(nested);
  const Rendering r = render(*nested, {1000, 64});
  EXPECT_LE(r.named("path").size(), 1000u);
  EXPECT_GT(r.named("path").size(), 100u);
  EXPECT_NE(r.svg.find("work budget"), std::string::npos);
  const Rendering shallow = render(*nested, {0, 3});
  EXPECT_TRUE(shallow.named("path").empty());
}

TEST(SvgRender, MultipleInsertsRepeatTheirBlockOverTheGrid) {
  const std::string blocks =
      "0|BLOCK|2|B|70|0|10|0|20|0|30|0|0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0|0|ENDBLK"
      "|0|BLOCK|2|EMPTY|70|0|10|0|20|0|30|0|0|ENDBLK";
  const Rendering r = renderDxf(
      "0|INSERT|8|0|2|B|10|0|20|0|30|0|41|2|42|2|70|2|71|2|44|10|45|20"
      "|0|INSERT|8|0|2|EMPTY|10|0|20|0|30|0|70|30000|71|30000|44|1|45|1",
      kLayers, blocks);
  const std::vector<std::string> d = r.paths();
  // Cells are spaced in drawing units whatever the scale; a grid of nothing ends within the budget.
  EXPECT_EQ(d, (std::vector<std::string>{"M0 0L2 0", "M10 0L12 0", "M0 20L2 20", "M10 20L12 20"}));
}

TEST(SvgRender, ViewDocumentFramesTheViewAndDrawsVectorsOnTop) {
  std::string out;
  headless::renderVectorsSvg({{{0, 0, 0}, {3, 4, 0}, 1, false}, {{1, 1, 0}, {2, 2, 0}, 3, true}}, out);
  std::string error;
  const std::vector<Element> e = Xml(out).parse(error);
  EXPECT_EQ(error, "");
  ASSERT_EQ(e.size(), 3u);
  EXPECT_EQ(e[1].attr("d"), "M0 0L3 4");
  EXPECT_EQ(e[1].attr("stroke"), "#ff0000");
  EXPECT_EQ(e[2].attr("stroke"), "#00ff00");
  EXPECT_NE(e[2].attr("stroke-dasharray"), "");  // highlighted
  EXPECT_EQ(headless::aciColor(7), 0xFFFFFFu);
  EXPECT_EQ(headless::aciColor(250), 0x333333u);
  EXPECT_EQ(headless::aciColor(10), 0xFF0000u);
  EXPECT_EQ(headless::aciColor(30), 0xFF7F00u);
}

// ---- real drawings ----

TEST(SvgRender, ExamplesRenderAsTheirGroups) {
  for (const char* name : {"door_rev_a.dxf", "door_rev_b.dxf"}) {
    SCOPED_TRACE(name);
    ReadReport report;
    auto db = Database::read(vktest::dataDir() + "/../../examples/" + name, report);
    ASSERT_TRUE(db) << report.error;
    Extents3d out;
    std::string fragment;
    renderSpaceSvg(*db, fragment, out);
    const Rendering r = render(*db);
    EXPECT_EQ(fragment, r.svg);
    EXPECT_GT(r.named("path").size(), 5u);
    EXPECT_FALSE(r.named("text").empty());
    EXPECT_FALSE(out.isEmpty());
  }
}

TEST(SvgRender, EveryCorpusDrawingRendersWellFormed) {
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty()) GTEST_SKIP() << "no drawing corpus";
  int rendered = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    std::string ext = entry.path().extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!entry.is_regular_file() || (ext != ".dxf" && ext != ".dwg")) continue;
    const std::string path = entry.path().string();
    SCOPED_TRACE(path);
    ReadReport report;
    auto db = Database::read(path, report);
    if (!db) continue;  // the reader's own tests answer for drawings it refuses
    const Rendering r = render(*db);
    // One drawing group; every other group is an entity's, tagged with its handle.
    const auto groups = r.named("g");
    if (std::count_if(groups.begin(), groups.end(), [](const Element* g) { return g->attr("data-h").empty(); }) != 1)
      ADD_FAILURE() << "no drawing group";
    ++rendered;
  }
  EXPECT_GT(rendered, 100);
}

}  // namespace
