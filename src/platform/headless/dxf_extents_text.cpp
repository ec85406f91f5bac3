// Extents of texts, attributes, multi-line texts, feature control frames and multileaders, widths estimated.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "platform/headless/dxf_extents_parts.h"
#include "platform/text.h"

namespace headless::extents {

using platform::DatabaseData;
using platform::Matrix3d;
using platform::Point3d;
using platform::StoredTag;
using platform::Vector3d;

namespace {

// Advance widths in units of the text height: Latin and most other scripts average about 0.6 in the usual
// fonts; CJK ideographs, kana, hangul and full-width forms fill a square.
constexpr double kNarrowWidth = 0.6;
constexpr double kWideWidth = 1.0;
// How far descenders (g, j, p, q, y) reach below the baseline, in units of the text height.
constexpr double kDescent = 0.3;
// Baseline to baseline distance of multi-line text at line spacing factor 1, in units of the text height.
constexpr double kLineSpacing = 5.0 / 3.0;
// A tab advances about four characters.
constexpr double kTabWidth = 4 * kNarrowWidth;

bool isWide(char32_t c) {
  return (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
         (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFF60) ||
         (c >= 0xFFE0 && c <= 0xFFE6) || (c >= 0x20000 && c <= 0x3FFFD);
}

double charWidth(char32_t c) {
  if (c == '\t') return kTabWidth;
  if (c < 0x20) return 0.0;
  return isWide(c) ? kWideWidth : kNarrowWidth;
}

// One UTF-8 code point from s at i (advanced past it); a stray byte counts as one character.
char32_t nextCodePoint(std::string_view s, std::size_t& i) {
  const auto b = static_cast<unsigned char>(s[i]);
  int extra = b >= 0xF0 ? 3 : b >= 0xE0 ? 2 : b >= 0xC0 ? 1 : 0;
  if (i + static_cast<std::size_t>(extra) >= s.size()) extra = 0;
  char32_t c = extra == 0 ? b : (b & (0x3F >> extra));
  for (int k = 1; k <= extra; ++k) c = (c << 6) | (static_cast<unsigned char>(s[i + static_cast<std::size_t>(k)]) & 0x3F);
  i += 1 + static_cast<std::size_t>(extra);
  return c;
}

bool hasDescender(char32_t c) {
  switch (c) {
    case 'g': case 'j': case 'p': case 'q': case 'y': case ',': case ';': case '(': case ')': case '[': case ']':
    case '{': case '}': case '|': case '_':
      return true;
    default:
      return false;
  }
}

// The width (in units of the height) of a text run with the %% control codes of the host's texts: %%d, %%c
// and %%p are one symbol, %%o, %%u and %%k switch over-, under- and strike-lining, %%nnn is one character.
struct RunMeasure {
  double width = 0.0;
  bool descends = false;
  bool visible = false;  // any character other than white space
  std::string* text = nullptr;  // when set, the characters shown are appended to it (UTF-8)
  void addChar(char32_t c) {
    if (text) platform::appendUtf8(*text, c);
    width += charWidth(c);
    descends = descends || hasDescender(c);
    visible = visible || !(c == ' ' || c == '\t' || c == 0x3000 || c == 0xA0 || c < 0x20);
  }
};

// Handles a %% code at s[i] ("%%" seen); returns true when it consumed one.
bool percentCode(std::string_view s, std::size_t& i, RunMeasure& m) {
  if (i + 2 >= s.size() || s[i] != '%' || s[i + 1] != '%') return false;
  const char k = static_cast<char>(s[i + 2] | 0x20);
  if (k == 'd' || k == 'c' || k == 'p') {
    // Degree, diameter and plus-minus: one narrow symbol each.
    m.addChar(k == 'd' ? U'\u00B0' : k == 'c' ? U'\u2300' : U'\u00B1');
    i += 3;
    return true;
  }
  if (k == 'o' || k == 'u' || k == 'k') {
    i += 3;
    return true;
  }
  if (s[i + 2] == '%') {
    m.addChar('%');
    i += 3;
    return true;
  }
  if (s[i + 2] >= '0' && s[i + 2] <= '9') {
    std::size_t j = i + 2;
    while (j < s.size() && j < i + 5 && s[j] >= '0' && s[j] <= '9') ++j;
    m.addChar('0');
    i = j;
    return true;
  }
  return false;
}

RunMeasure measureLine(std::string_view s, std::string* text = nullptr) {
  RunMeasure m;
  m.text = text;
  for (std::size_t i = 0; i < s.size();) {
    if (percentCode(s, i, m)) continue;
    m.addChar(nextCodePoint(s, i));
  }
  return m;
}

// The paragraphs of multi-line text content with their widths (in units of the height), formatting removed:
// \P, \X and \N (and ^J) end a paragraph, \S stacks a fraction (its wider part counts), \U+XXXX and \M+NXXXX
// are one character, and the property codes (\A \C \F \H \Q \T \W \p ... up to ';') and toggles show nothing.
// With `text`, the characters shown are appended to it, paragraphs ended by '\n'.
std::vector<RunMeasure> measureParagraphs(std::string_view s, std::string* text = nullptr) {
  std::vector<RunMeasure> out(1);
  out.back().text = text;
  const auto newParagraph = [&] {
    if (text) text->push_back('\n');
    out.emplace_back().text = text;
  };
  for (std::size_t i = 0; i < s.size();) {
    const char c = s[i];
    if (c == '{' || c == '}') {
      ++i;
      continue;
    }
    if (c == '^' && i + 1 < s.size()) {
      const char k = s[i + 1];
      // Control characters written with a caret: ^J breaks the line, ^I is a tab, "^ " a caret itself; the
      // others show nothing.
      if (k == 'J') newParagraph();
      else if (k == 'I') out.back().addChar('\t');
      else if (k == ' ') out.back().addChar('^');
      i += 2;
      continue;
    }
    if (c == '\n') {
      newParagraph();
      ++i;
      continue;
    }
    if (c != '\\' || i + 1 >= s.size()) {
      if (percentCode(s, i, out.back())) continue;
      out.back().addChar(nextCodePoint(s, i));
      continue;
    }
    const char k = s[i + 1];
    i += 2;
    switch (k) {
      case 'P': case 'X': case 'N':
        newParagraph();
        break;
      case '~':
        out.back().addChar(' ');
        break;
      case '\\': case '{': case '}':
        out.back().addChar(static_cast<unsigned char>(k));
        break;
      case 'U':
        if (i < s.size() && s[i] == '+') {
          const std::size_t end = std::min(s.size(), i + 5);
          const char32_t cp = static_cast<char32_t>(std::strtoul(std::string(s.substr(i + 1, end - i - 1)).c_str(), nullptr, 16));
          out.back().addChar(cp == 0 ? U'?' : cp);
          i = end;
        } else {
          out.back().addChar('U');
        }
        break;
      case 'M':
        // A double-byte character of an Asian code page: \M+N followed by four hex digits.
        i = std::min(s.size(), i + 6);
        out.back().addChar(0x4E00);
        break;
      case 'S': {
        const std::size_t end = std::min(s.find(';', i), s.size());
        const std::string_view stack = s.substr(i, end - i);
        const std::size_t split = stack.find_first_of("^/#");
        // Shown as plain text, a stacked fraction reads "top/bottom".
        const RunMeasure top = measureLine(stack.substr(0, split), text);
        if (text && split != std::string_view::npos) text->push_back('/');
        const RunMeasure bottom =
            split == std::string_view::npos ? RunMeasure() : measureLine(stack.substr(split + 1), text);
        out.back().width += std::max(top.width, bottom.width);
        out.back().visible = out.back().visible || top.visible || bottom.visible;
        i = end + 1;
        break;
      }
      case 'A': case 'C': case 'c': case 'F': case 'f': case 'H': case 'h': case 'Q': case 'q': case 'T': case 't':
      case 'W': case 'w': case 'p':
        i = std::min(s.find(';', i), s.size()) + 1;
        break;
      case 'L': case 'l': case 'O': case 'o': case 'K': case 'k':
        break;
      default:
        out.back().addChar(static_cast<unsigned char>(k));
        break;
    }
  }
  return out;
}

// The text height a style fixes (STYLE group 40), 0 when it fixes none or is missing.
double styleHeight(const DatabaseData& data, std::string_view style) {
  if (style.empty()) return 0.0;
  for (const platform::ObjectRec& o : data.objects) {
    if (data.name(o.type) != "STYLE") continue;
    const StoredTag* name = data.find(o.tagBegin, o.tagCount, 2);
    if (!name || !platform::equalsIgnoreCase(data.text(*name), style)) continue;
    const StoredTag* h = data.find(o.tagBegin, o.tagCount, 40);
    return h ? numberOf(*h) : 0.0;
  }
  return 0.0;
}

// A box in a text's own frame: x along the baseline, y up, both in drawing units.
struct LocalBox {
  double x0, x1, y0, y1;
};

// Adds a local box placed by `frame` (local -> the sink's frame).
void addLocalBox(BoxSink& sink, const Matrix3d& frame, const LocalBox& b) {
  BoxSink placed = sink.placed(frame);
  placed.add({b.x0, b.y0, 0});
  placed.add({b.x1, b.y0, 0});
  placed.add({b.x0, b.y1, 0});
  placed.add({b.x1, b.y1, 0});
}

}  // namespace

double estimateTextWidth(std::string_view text) { return measureLine(text).width; }

std::string plainText(std::string_view text) {
  std::string shown;
  measureLine(text, &shown);
  return shown;
}

std::string plainMText(std::string_view content) {
  std::string shown;
  measureParagraphs(content, &shown);
  return shown;
}

bool addText(const Groups& g, BoxSink& sink, platform::DbClass cls) {
  const Vector3d normal = g.normal();
  const Point3d first = g.point(10);
  double h = g.real(40);
  if (!(h > 0.0)) h = styleHeight(g.data(), g.text(7));
  // An attribute definition shows its tag; texts and attributes show their value.
  std::string_view content = g.text(1);
  if (cls == platform::DbClass::AttributeDefinition && !g.text(2).empty()) content = g.text(2);
  const RunMeasure run = measureLine(content);
  // Nothing shows without visible characters or height: the host has no extents for such a text.
  if (!(h > 0.0) || !isFinite(h) || !run.visible) return false;
  BoxSink ocs = sink.placed(platform::ocsToWcs(normal));
  const int horizontal = static_cast<int>(g.integer(72));
  // Attributes keep the vertical justification in 74 (their 73 is the field length).
  const int vertical = static_cast<int>(g.integer(cls == platform::DbClass::Text ? 73 : 74));
  const bool hasSecond = g.has(11);
  const Point3d second = g.point(11);
  double widthFactor = g.real(41, 1.0);
  if (!(widthFactor > 0.0) || !isFinite(widthFactor)) widthFactor = 1.0;
  double rotation = radians(g.real(50));
  const double oblique = radians(g.real(51));
  const long long generation = g.integer(71);

  double w = run.width * h * widthFactor;
  Point3d anchor = first;
  double x0 = 0.0, baseline = 0.0;
  if ((horizontal == 3 || horizontal == 5) && hasSecond && first.distanceTo(second) > 0.0) {
    // Aligned and fit text run from the first alignment point to the second along their line.
    w = std::hypot(second.x - first.x, second.y - first.y);
    rotation = std::atan2(second.y - first.y, second.x - first.x);
  } else if ((horizontal != 0 || vertical != 0) && hasSecond) {
    anchor = second;
    if (horizontal == 1 || horizontal == 4) x0 = -w / 2.0;
    else if (horizontal == 2) x0 = -w;
    if (horizontal == 4) baseline = -h / 2.0;  // "middle": centred on half the capital height
    else if (vertical == 1) baseline = kDescent * h;
    else if (vertical == 2) baseline = -h / 2.0;
    else if (vertical == 3) baseline = -h;
  }
  LocalBox box{x0, x0 + w, baseline - (run.descends ? kDescent * h : 0.0), baseline + h};
  // Backward text is mirrored about its anchor in x, upside-down text in y.
  if (generation & 2) box = {-box.x1, -box.x0, box.y0, box.y1};
  if (generation & 4) box = {box.x0, box.x1, -box.y1, -box.y0};
  Matrix3d shear;
  if (isFinite(oblique) && std::fabs(std::cos(oblique)) > 1e-6) shear(0, 1) = std::tan(oblique);
  const Matrix3d frame = Matrix3d::translation(anchor.asVector()) * Matrix3d::rotationZ(rotation) * shear;
  addLocalBox(ocs, frame, box);
  return true;
}

namespace {

// The box of multi-line text from its insertion point, direction and size, placed by its attachment point
// (1-9: top, middle, bottom rows of left, centre, right).
void addAttachedBox(BoxSink& sink, const Point3d& insertion, const Vector3d& xDir, const Vector3d& normal,
                    double width, double height, int attachment) {
  if (attachment < 1 || attachment > 9) attachment = 1;
  const int column = (attachment - 1) % 3, row = (attachment - 1) / 3;
  const double x0 = -width * column / 2.0;
  const double yTop = height * row / 2.0;
  Vector3d x = xDir.normal();
  const Vector3d n = normal.normal();
  if (x.length() == 0.0) x = platform::arbitraryAxisX(n);
  const Vector3d y = n.cross(x).normal();
  const Matrix3d frame = Matrix3d::fromAxes(insertion, x, y, n);
  addLocalBox(sink, frame, {x0, x0 + width, yTop - height, yTop});
}

struct TextSize {
  double width = 0.0, height = 0.0;
};

// The estimated size of multi-line content: paragraphs wrap at the reference width (0: no wrapping).
TextSize estimateBlockSize(std::string_view content, double h, double refWidth, double spacing) {
  const std::vector<RunMeasure> paragraphs = measureParagraphs(content);
  if (std::none_of(paragraphs.begin(), paragraphs.end(), [](const RunMeasure& p) { return p.visible; })) return {};
  double widest = 0.0;
  double lines = 0.0;
  for (const RunMeasure& p : paragraphs) {
    const double w = p.width * h;
    if (refWidth > 0.0 && w > refWidth) {
      lines += std::ceil(w / refWidth);
      widest = std::max(widest, refWidth);
    } else {
      lines += 1.0;
      widest = std::max(widest, w);
    }
  }
  if (!(spacing > 0.0) || !isFinite(spacing)) spacing = 1.0;
  return {widest, h + (std::max(lines, 1.0) - 1.0) * kLineSpacing * h * spacing};
}

Point3d xDirectionFromRotation(const Vector3d& normal, double rotationDegrees) {
  const double a = radians(rotationDegrees);
  return platform::ocsToWcs(Point3d(std::cos(a), std::sin(a), 0.0), normal);
}

bool addOneMText(const Groups& g, BoxSink& sink) {
  const GroupRange r = subclassRange(g, "AcDbMText");
  Point3d insertion;
  double h = 0.0, refWidth = 0.0, rotation = 0.0, spacing = 1.0;
  double rectWidth = 0.0, rectHeight = 0.0;
  int attachment = 1;
  Vector3d direction;
  bool hasDirection = false;
  std::string content;
  // Groups after "101 Embedded Object" describe the text's columns and extents with codes of their own.
  bool embedded = false;
  double embeddedWidth = 0.0, embeddedHeight = 0.0;
  for (std::uint32_t i = r.begin; i < r.end;) {
    const StoredTag& t = g.at(i);
    std::uint32_t next = i + 1;
    if (t.code == 101) {
      embedded = true;
    } else if (embedded) {
      if (t.code == 42) embeddedWidth = numberOf(t);
      else if (t.code == 43) embeddedHeight = numberOf(t);
    } else {
      switch (t.code) {
        case 10: insertion = pointAt(g, i, &next); break;
        case 11: direction = pointAt(g, i, &next).asVector(); hasDirection = true; break;
        case 40: h = numberOf(t); break;
        case 41: refWidth = numberOf(t); break;
        case 42: rectWidth = numberOf(t); break;
        case 43: rectHeight = numberOf(t); break;
        case 44: spacing = numberOf(t); break;
        case 50: rotation = numberOf(t); break;
        case 71: attachment = clampedInt(numberOf(t), 0, 10); break;
        case 1: case 3: content += g.textAt(i); break;
        default: break;
      }
    }
    i = next;
  }
  const Vector3d normal = g.normal();
  if (!(h > 0.0)) h = styleHeight(g.data(), g.text(7));
  if (!hasDirection || direction.length() == 0.0) direction = xDirectionFromRotation(normal, rotation).asVector();
  const std::vector<RunMeasure> paragraphs = measureParagraphs(content);
  if (std::none_of(paragraphs.begin(), paragraphs.end(), [](const RunMeasure& p) { return p.visible; })) return false;
  TextSize size;
  if (embeddedWidth > 0.0 && embeddedHeight > 0.0) size = {embeddedWidth, embeddedHeight};
  else if (rectWidth > 0.0 && rectHeight > 0.0) size = {rectWidth, rectHeight};
  else if (h > 0.0) size = estimateBlockSize(content, h, refWidth, spacing);
  if (!(size.width > 0.0) || !isFinite(size.width) || !isFinite(size.height)) return false;
  addAttachedBox(sink, insertion, direction, normal, size.width, size.height, attachment);
  return true;
}

}  // namespace

bool addMText(const Groups& g, BoxSink& sink) {
  bool any = addOneMText(g, sink);
  // Columns written as separate texts (R2000 to R2013) are named by handle in the first one's extension data.
  bool inColumns = false;
  const platform::DatabaseData& data = g.data();
  for (std::uint32_t i = g.ownCount(); i < g.size(); ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 1000) {
      if (g.textAt(i) == "ACAD_MTEXT_COLUMNS_BEGIN") inColumns = true;
      else if (g.textAt(i) == "ACAD_MTEXT_COLUMNS_END") break;
    } else if (inColumns && t.code == 1005) {
      const platform::ObjectId id = data.byHandle.find(parseHandle(g.textAt(i)));
      if (platform::idKind(id) != platform::IdKind::Entity) continue;
      const std::uint32_t part = platform::idIndex(id);
      if (part >= data.entities.size() || data.entities[part].cls != platform::DbClass::MText) continue;
      const Groups pg(data, data.entities[part]);
      if (pg.size() == 0 || &pg.at(0) == &g.at(0)) continue;
      any = addOneMText(pg, sink) || any;
    }
  }
  return any;
}

namespace {

// The dimension style's text height (DIMTXT) and overall scale (DIMSCALE) for a feature control frame: the
// entity's own overrides in its extension data, else its style's, else the host's defaults.
void dimTextSize(const Groups& g, double& dimtxt, double& dimscale) {
  // DIMTXT when neither the entity nor a style gives it: the host's default for imperial drawings.
  dimtxt = 0.18;
  dimscale = 1.0;
  const DatabaseData& data = g.data();
  const std::string_view style = g.text(3);
  for (const platform::ObjectRec& o : data.objects) {
    if (data.name(o.type) != "DIMSTYLE") continue;
    const StoredTag* name = data.find(o.tagBegin, o.tagCount, 2);
    if (!name || !platform::equalsIgnoreCase(data.text(*name), style.empty() ? "Standard" : style)) continue;
    if (const StoredTag* t = data.find(o.tagBegin, o.tagCount, 140)) dimtxt = numberOf(*t);
    if (const StoredTag* t = data.find(o.tagBegin, o.tagCount, 40)) dimscale = numberOf(*t);
    break;
  }
  // Overrides: 1000 DSTYLE { 1070 <variable code> <value group> ... }.
  bool inStyle = false;
  for (std::uint32_t i = g.ownCount(); i + 1 < g.size(); ++i) {
    const StoredTag& t = g.at(i);
    if (t.code == 1000 && g.textAt(i) == "DSTYLE") inStyle = true;
    if (!inStyle || t.code != 1070) continue;
    const StoredTag& value = g.at(i + 1);
    if (value.code != 1040) continue;
    if (t.integer == 140) dimtxt = numberOf(value);
    else if (t.integer == 40) dimscale = numberOf(value);
  }
  if (!(dimtxt > 0.0) || !isFinite(dimtxt)) dimtxt = 0.18;
  if (!(dimscale > 0.0) || !isFinite(dimscale)) dimscale = 1.0;
}

}  // namespace

bool addTolerance(const Groups& g, BoxSink& sink) {
  double dimtxt, dimscale;
  dimTextSize(g, dimtxt, dimscale);
  const double h = dimtxt * dimscale;
  // Rows are separated by ^J and cells by %%v; empty cells draw no frame. A row is about twice the text height
  // tall; a cell is as wide as its content plus a margin of the text height, and at least square.
  // Geometric symbols ({\Fgdt;c}) are about as wide as they are tall.
  std::string content(g.text(1));
  for (std::size_t p = content.find("{\\Fgdt;"); p != std::string::npos; p = content.find("{\\Fgdt;", p)) {
    const std::size_t close = content.find('}', p);
    if (close == std::string::npos) break;
    content.replace(p, close - p + 1, "\\U+4E00");
  }
  const double rowHeight = 2.0 * h;
  double widest = 0.0;
  int rows = 0;
  for (std::size_t start = 0; start <= content.size();) {
    std::size_t end = content.find("^J", start);
    if (end == std::string::npos) end = content.size();
    const std::string row = content.substr(start, end - start);
    double w = 0.0;
    for (std::size_t c = 0; c <= row.size();) {
      std::size_t next = row.find("%%v", c);
      if (next == std::string::npos) next = row.size();
      double cell = 0.0;
      for (const RunMeasure& m : measureParagraphs(std::string_view(row).substr(c, next - c))) cell += m.width;
      if (cell > 0.0) w += std::max(rowHeight, (cell + 1.0) * h);
      c = next + 3;
    }
    widest = std::max(widest, w);
    ++rows;
    start = end + 2;
  }
  if (!(widest > 0.0) || !isFinite(widest)) return false;
  const Vector3d normal = g.normal();
  Vector3d xDir = g.vector(11, {1, 0, 0});
  if (xDir.length() == 0.0) xDir = {1, 0, 0};
  // The insertion point is the left end of the middle of the first row.
  const Vector3d x = xDir.normal(), n = normal.normal();
  const Vector3d y = n.cross(x).normal();
  const Matrix3d frame = Matrix3d::fromAxes(g.point(10), x, y, n);
  addLocalBox(sink, frame, {0.0, widest, rowHeight / 2.0 - rows * rowHeight, rowHeight / 2.0});
  return true;
}

MLeaderShape readMLeader(const Groups& g) {
  // The context data (300 CONTEXT_DATA{ ... 301 }) holds the content and the leaders: its own points are the
  // content base point (10), the text location (12), the block location (15) and the origin of the leaders'
  // plane (110); LEADER{ } holds the landing point (10), the dog-leg's direction (11) and length (40) and the
  // ends of its breaks (12, 13), LEADER_LINE{ } the vertices (10) and the ends of its breaks (11, 12). Its other
  // triples are directions, normals or scales.
  enum class Level { Outside, Context, Leader, Line };
  Level level = Level::Outside;
  MLeaderShape shape;
  Point3d landing;
  Vector3d dogLeg;
  double dogLegLength = 0.0;
  std::size_t firstLine = 0;  // the first line of the leader being read
  for (std::uint32_t i = 0; i < g.ownCount();) {
    const StoredTag& t = g.at(i);
    std::uint32_t next = i + 1;
    if (t.code == 300 && g.textAt(i) == "CONTEXT_DATA{") {
      level = Level::Context;
    } else if (t.code == 302 && level == Level::Context) {
      level = Level::Leader;
      firstLine = shape.lines.size();
      dogLegLength = 0.0;
    } else if (t.code == 304 && level == Level::Leader && g.textAt(i) == "LEADER_LINE{") {
      level = Level::Line;
      shape.lines.emplace_back();
    } else if (t.code == 305 && level == Level::Line) {
      level = Level::Leader;
    } else if (t.code == 303 && level == Level::Leader) {
      // Each line of a leader runs on to its landing point, and the dog-leg from there.
      for (std::size_t k = firstLine; k < shape.lines.size(); ++k)
        if (!shape.lines[k].empty()) shape.lines[k].push_back(landing);
      if (dogLegLength > 0.0 && isFinite(dogLegLength) && dogLeg.length() > 0.0)
        shape.lines.push_back({landing, landing + dogLeg.normal() * dogLegLength});
      level = Level::Context;
    } else if (t.code == 301 && level == Level::Context) {
      level = Level::Outside;
    } else if (level == Level::Context) {
      switch (t.code) {
        case 10: case 15: case 110: shape.frame.push_back(pointAt(g, i, &next)); break;
        case 12:
          shape.textLocation = pointAt(g, i, &next);
          shape.frame.push_back(shape.textLocation);
          break;
        case 11: shape.textNormal = pointAt(g, i, &next).asVector(); break;
        case 13: shape.textDirection = pointAt(g, i, &next).asVector(); break;
        case 41: shape.textHeight = numberOf(t); break;
        case 43: shape.textWidth = numberOf(t); break;
        case 171: shape.attachment = clampedInt(numberOf(t), 0, 10); break;
        case 290: shape.hasText = t.integer != 0; break;
        case 304: shape.content = g.textAt(i); break;
        default: break;
      }
    } else if (level == Level::Leader && t.code == 11) {
      dogLeg = pointAt(g, i, &next).asVector();
    } else if (level == Level::Leader && t.code == 40) {
      dogLegLength = numberOf(t);
    } else if ((level == Level::Leader && (t.code == 10 || t.code == 12 || t.code == 13)) ||
               (level == Level::Line && (t.code == 10 || t.code == 11 || t.code == 12))) {
      const Point3d p = pointAt(g, i, &next);
      shape.frame.push_back(p);
      if (level == Level::Leader && t.code == 10) landing = p;
      if (level == Level::Line && t.code == 10) shape.lines.back().push_back(p);
    }
    i = next;
  }
  return shape;
}

bool addMLeader(const Groups& g, BoxSink& sink) {
  const MLeaderShape shape = readMLeader(g);
  for (const Point3d& p : shape.frame) sink.add(p);
  if (shape.hasText && shape.textHeight > 0.0 && isFinite(shape.textHeight) && !shape.content.empty()) {
    const TextSize size = estimateBlockSize(shape.content, shape.textHeight, shape.textWidth, 1.0);
    if (size.width > 0.0)
      addAttachedBox(sink, shape.textLocation, shape.textDirection,
                     shape.textNormal.length() > 0.0 ? shape.textNormal : Vector3d{0, 0, 1}, size.width, size.height,
                     shape.attachment);
  }
  return !shape.frame.empty();
}

}  // namespace headless::extents
