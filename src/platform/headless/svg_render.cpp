// The headless host's SVG renderer: what the walk of a drawing draws written as SVG, views and their temporary
// vectors.
#include "platform/headless/svg_render.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "platform/headless/drawing_walk.h"
#include "platform/headless/dxf_extents_parts.h"
#include "platform/render.h"
#include "platform/text.h"

namespace headless {

using platform::Extents3d;
using platform::Matrix3d;
using platform::Point3d;

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;

// The colour index 10 to 249: 24 hues 15 degrees apart, each in five shades of value, full and pale.
constexpr std::uint32_t hueColor(int index) {
  const int hue = index / 10 - 1;
  const int shade = index % 10;
  constexpr int kValues[5] = {255, 189, 129, 104, 79};
  const double v = kValues[shade / 2];
  const double low = shade % 2 ? v * 2.0 / 3.0 : 0.0;
  const double degrees = hue * 15.0;
  const auto channel = [&](double offset) {
    // The channel of an RGB hue wheel: full within 60 degrees of its centre, falling to low over the next 60.
    double d = degrees - offset;
    while (d < -180.0) d += 360.0;
    while (d > 180.0) d -= 360.0;
    d = d < 0 ? -d : d;
    const double f = d <= 60.0 ? 1.0 : d >= 120.0 ? 0.0 : (120.0 - d) / 60.0;
    return static_cast<std::uint32_t>(low + (v - low) * f);
  };
  return (channel(0.0) << 16) | (channel(120.0) << 8) | channel(240.0);
}

constexpr std::array<std::uint32_t, 256> kAci = [] {
  std::array<std::uint32_t, 256> t{};
  constexpr std::uint32_t kFirst[10] = {kWhite,   0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF,
                                        0x0000FF, 0xFF00FF, kWhite,   0x808080, 0xC0C0C0};
  constexpr std::uint32_t kGreys[6] = {0x333333, 0x505050, 0x696969, 0x828282, 0xBEBEBE, 0xFFFFFF};
  for (int i = 0; i < 10; ++i) t[static_cast<std::size_t>(i)] = kFirst[i];
  for (int i = 10; i < 250; ++i) t[static_cast<std::size_t>(i)] = hueColor(i);
  for (int i = 250; i < 256; ++i) t[static_cast<std::size_t>(i)] = kGreys[i - 250];
  return t;
}();

void appendXY(std::string& out, const Point3d& p) {
  appendNumber(out, p.x);
  out += ' ';
  appendNumber(out, p.y);
}

// Writes the walk's outlines as paths and its texts as text elements, each entity of the space a group tagged
// with its handle, so that a page can find it.
class SvgSink final : public PrimitiveSink {
 public:
  explicit SvgSink(std::string& out) : out_(out) {}

  void beginEntity(std::uint64_t handle) override {
    char tag[40];
    std::snprintf(tag, sizeof tag, "<g data-h=\"%llX\">\n", static_cast<unsigned long long>(handle));
    out_ += tag;
  }
  void endEntity() override { out_ += "</g>\n"; }

  void beginPath() override {
    start_ = out_.size();
    out_ += "<path d=\"";
  }
  void moveTo(const Point3d& p) override {
    out_ += 'M';
    appendXY(out_, p);
  }
  void lineTo(const Point3d& p) override {
    out_ += 'L';
    appendXY(out_, p);
  }
  void arcTo(const Point3d&, double radius, bool ccw, const Point3d& to) override {
    // The drawing's group keeps drawing coordinates, where SVG's positive sweep is counter-clockwise.
    out_ += 'A';
    appendNumber(out_, radius);
    out_ += ' ';
    appendNumber(out_, radius);
    out_ += " 0 0 ";
    out_ += ccw ? '1' : '0';
    out_ += ' ';
    appendXY(out_, to);
  }
  void closePath() override { out_ += 'Z'; }
  void dropPath() override { out_.resize(start_); }

  void endPath(const Paint& paint) override {
    // A point is a dot three pixels wide at every zoom; thin strokes are a pixel wide at every zoom, wide ones
    // keep their width in drawing units.
    if (paint.dot) out_ += "h0";
    out_ += '"';
    if (paint.fill == Fill::None) {
      out_ += " stroke=\"";
      appendRgb(out_, paint.color);
      out_ += '"';
    } else {
      out_ += " fill=\"";
      appendRgb(out_, paint.color);
      out_ += paint.fill == Fill::Light ? "\" fill-opacity=\"0.3\" fill-rule=\"evenodd\"" : "\" fill-rule=\"evenodd\"";
    }
    if (paint.dot) {
      out_ += " stroke-width=\"3\" stroke-linecap=\"round\" vector-effect=\"non-scaling-stroke\"";
    } else if (paint.width > 0.0) {
      out_ += " stroke-width=\"";
      appendNumber(out_, paint.width);
      out_ += "\" stroke-linejoin=\"round\" stroke-linecap=\"round\"";
    } else {
      out_ += " vector-effect=\"non-scaling-stroke\"";
    }
    out_ += "/>\n";
  }

  void text(const TextRun& run) override {
    // The text's frame, un-flipped: the drawing's group flips y, and SVG text runs with y down.
    const Matrix3d& f = run.frame;
    out_ += "<text transform=\"matrix(";
    double values[6] = {f(0, 0), f(1, 0), -f(0, 1), -f(1, 1), f(0, 3), f(1, 3)};
    // Rotations by quarter turns leave cosines of 1e-17 that only lengthen the output.
    const double largest =
        std::max({std::fabs(values[0]), std::fabs(values[1]), std::fabs(values[2]), std::fabs(values[3])});
    for (int i = 0; i < 4; ++i)
      if (std::fabs(values[i]) < 1e-12 * largest) values[i] = 0.0;
    for (int i = 0; i < 6; ++i) {
      if (i) out_ += ' ';
      appendNumber(out_, values[i]);
    }
    out_ += ")\" font-size=\"";
    appendNumber(out_, run.height);
    out_ += "\" fill=\"";
    appendRgb(out_, run.color);
    out_ += '"';
    if (run.anchor == 1) out_ += " text-anchor=\"middle\"";
    else if (run.anchor == 2) out_ += " text-anchor=\"end\"";
    if (run.block) {
      out_ += '>';
      for (const TextLine& line : run.lines) {
        out_ += "<tspan x=\"0\" y=\"";
        appendNumber(out_, line.y);
        out_ += "\">";
        appendXmlText(out_, line.text);
        out_ += "</tspan>";
      }
    } else if (!run.lines.empty()) {
      if (run.lines[0].y != 0.0) {
        out_ += " y=\"";
        appendNumber(out_, run.lines[0].y);
        out_ += '"';
      }
      if (run.fitLength > 0.0) {
        out_ += " textLength=\"";
        appendNumber(out_, run.fitLength);
        out_ += "\" lengthAdjust=\"spacingAndGlyphs\"";
      }
      out_ += '>';
      appendXmlText(out_, run.lines[0].text);
    } else {
      out_ += '>';
    }
    out_ += "</text>\n";
  }

 private:
  std::string& out_;
  std::size_t start_ = 0;
};

}  // namespace

void appendNumber(std::string& out, double v) {
  if (!extents::isFinite(v)) v = 0.0;
  if (v == 0.0) v = 0.0;  // no "-0"
  char buffer[32];
  const auto r = std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::general, 10);
  out.append(buffer, r.ptr);
}

std::uint32_t aciColor(int index) {
  if (index < 1 || index > 255) return kWhite;
  return kAci[static_cast<std::size_t>(index)];
}

void appendRgb(std::string& out, std::uint32_t rgb) {
  static constexpr char kHex[] = "0123456789abcdef";
  out += '#';
  for (int shift = 20; shift >= 0; shift -= 4) out += kHex[(rgb >> shift) & 0xF];
}

void appendXmlText(std::string& out, std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto b = static_cast<unsigned char>(text[i]);
    if (b < 0x80) {
      switch (b) {
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '&': out += "&amp;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        default:
          if (b >= 0x20 || b == '\t' || b == '\n') out += static_cast<char>(b);
          break;
      }
      ++i;
      continue;
    }
    // A well-formed UTF-8 sequence is copied; anything else becomes U+FFFD.
    if (const std::size_t length = utf8SequenceAt(text, i)) {
      out.append(text.substr(i, length));
      i += length;
    } else {
      out += "\xEF\xBF\xBD";
      ++i;
    }
  }
}

std::size_t utf8SequenceAt(std::string_view text, std::size_t i) {
  if (i >= text.size()) return 0;
  const auto b = static_cast<unsigned char>(text[i]);
  if (b < 0x80) return 1;
  const int length = b >= 0xF0 && b <= 0xF4 ? 4 : b >= 0xE0 ? 3 : b >= 0xC2 && b < 0xE0 ? 2 : 0;
  bool ok = length > 0 && i + static_cast<std::size_t>(length) <= text.size();
  char32_t c = ok ? (b & (0x7F >> length)) : 0;
  for (int k = 1; ok && k < length; ++k) {
    const auto next = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
    ok = (next & 0xC0) == 0x80;
    c = (c << 6) | (next & 0x3F);
  }
  ok = ok && c >= (length == 2 ? 0x80u : length == 3 ? 0x800u : 0x10000u) && c <= 0x10FFFF &&
       !(c >= 0xD800 && c <= 0xDFFF) && c != 0xFFFE && c != 0xFFFF;
  return ok ? static_cast<std::size_t>(length) : 0;
}

bool renderBlockSvg(const platform::Database& db, std::uint32_t block, std::string& out, Extents3d& extents,
                    const SvgLimits& limits) {
  if (block >= db.data().blocks.size()) return false;
  // About what an entity takes, so that a large drawing's text grows a few times rather than a few dozen.
  out.reserve(out.size() + 128 * db.data().blocks[block].entities.size());
  out += "<g transform=\"scale(1,-1)\" fill=\"none\" font-family=\"";
  out += platform::kDrawingFontFamily;
  out += "\">\n";
  SvgSink sink(out);
  if (!walkBlock(db, block, sink, extents, limits)) out += "<!-- the drawing's work budget is spent: what remains is not drawn -->\n";
  out += "</g>\n";
  return true;
}

void renderVectorsSvg(const std::vector<TempVector>& vectors, std::string& out) {
  out += "<g transform=\"scale(1,-1)\" fill=\"none\">\n";
  for (const TempVector& v : vectors) {
    out += "<path d=\"M";
    appendXY(out, v.from);
    out += 'L';
    appendXY(out, v.to);
    out += "\" stroke=\"";
    appendRgb(out, aciColor(v.colorIndex));
    out += v.highlight ? "\" stroke-dasharray=\"6 3\"" : "\"";
    out += " vector-effect=\"non-scaling-stroke\"/>\n";
  }
  out += "</g>\n";
}

}  // namespace headless

namespace platform {

void renderSpaceSvg(const Database& db, std::string& out, Extents3d& extents) {
  extents = Extents3d();
  headless::renderBlockSvg(db, idIndex(db.currentSpaceId()), out, extents);
}

bool renderViewSvg(WindowId window, std::string& out) {
  const headless::HeadlessDocument* document = headless::HostSession::instance().byWindow(window);
  if (!document) return false;
  const headless::View& view = document->view;
  const Extents3d area = view.extents();
  const double width = area.max.x - area.min.x, height = area.max.y - area.min.y;
  const int pixelsWide = std::max(1, view.rect.right - view.rect.left);
  const int pixelsHigh = std::max(1, view.rect.bottom - view.rect.top);
  out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"";
  appendInt(out, pixelsWide);
  out += "\" height=\"";
  appendInt(out, pixelsHigh);
  out += "\" viewBox=\"";
  std::string box;
  headless::appendXY(box, {area.min.x, -area.max.y, 0.0});
  box += ' ';
  headless::appendXY(box, {width, height, 0.0});
  out += box;
  out += "\">\n<title>";
  headless::appendXmlText(out, document->docTitle());
  out += "</title>\n<rect x=\"";
  headless::appendNumber(out, area.min.x);
  out += "\" y=\"";
  headless::appendNumber(out, -area.max.y);
  out += "\" width=\"";
  headless::appendNumber(out, width);
  out += "\" height=\"";
  headless::appendNumber(out, height);
  out += "\" fill=\"";
  out += kDrawingBackground;
  out += "\"/>\n";
  Extents3d drawn;
  renderSpaceSvg(document->database(), out, drawn);
  headless::renderVectorsSvg(view.vectors, out);
  out += "</svg>\n";
  return true;
}

}  // namespace platform