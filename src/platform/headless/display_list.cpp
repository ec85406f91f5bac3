// A drawing's display list for a page's canvas: what the walk of the drawing draws, as flat arrays of numbers
// with a box a primitive and the texts in one table, written as JSON.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/headless/drawing_walk.h"
#include "platform/headless/dxf_extents_parts.h"
#include "platform/headless/svg_render.h"
#include "platform/render.h"

namespace headless {

namespace {

using platform::Extents3d;
using platform::Matrix3d;
using platform::Point3d;

// The kinds of primitive and the operations of an outline, as the page's script reads them.
enum Kind { kStroke = 0, kSolid = 1, kLight = 2, kDot = 3, kText = 4 };
enum Op { kMove = 0, kLine = 1, kArc = 2, kClose = 3 };

// A JSON string that can stand inside a <script> element: markup characters as escapes, malformed UTF-8 as U+FFFD.
void appendJsonText(std::string& out, std::string_view text) {
  out += '"';
  for (std::size_t i = 0; i < text.size();) {
    const auto b = static_cast<unsigned char>(text[i]);
    if (b >= 0x80) {
      const std::size_t length = utf8SequenceAt(text, i);
      if (length) out.append(text.substr(i, length));
      else out += "\xEF\xBF\xBD";
      i += length ? length : 1;
      continue;
    }
    if (b == '"' || b == '\\') {
      out += '\\';
      out += static_cast<char>(b);
    } else if (b < 0x20 || b == '<' || b == '>' || b == '&') {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", b);
      out += escape;
    } else {
      out += static_cast<char>(b);
    }
    ++i;
  }
  out += '"';
}

class DisplayListSink final : public PrimitiveSink {
 public:
  void beginEntity(std::uint64_t handle) override {
    handle_ = handle;
    entityStart_ = primitiveCount_;
  }
  void endEntity() override {
    // An entity that drew nothing takes no number.
    if (primitiveCount_ > entityStart_) ++entities_;
  }

  void beginPath() override { start(); }
  void moveTo(const Point3d& p) override {
    op(kMove);
    xy(p);
    current_ = p;
  }
  void lineTo(const Point3d& p) override {
    op(kLine);
    xy(p);
    current_ = p;
  }
  void arcTo(const Point3d& centre, double radius, bool ccw, const Point3d& to) override {
    op(kArc);
    xy(centre);
    number(radius);
    number(std::atan2(current_.y - centre.y, current_.x - centre.x));
    number(std::atan2(to.y - centre.y, to.x - centre.x));
    number(ccw ? 1 : 0);
    // The whole circle bounds the arc.
    grow({centre.x - radius, centre.y - radius, 0.0});
    grow({centre.x + radius, centre.y + radius, 0.0});
    grow(to);
    current_ = to;
  }
  void closePath() override { op(kClose); }
  void dropPath() override { drop(); }
  void endPath(const Paint& paint) override {
    const int kind = paint.dot ? kDot : paint.fill == Fill::Solid ? kSolid : paint.fill == Fill::Light ? kLight : kStroke;
    primitive(kind, paint.color, paint.width);
  }

  void text(const TextRun& run) override {
    start();
    const Matrix3d& f = run.frame;
    const Point3d o = origin({f(0, 3), f(1, 3), 0.0});
    // The frame as a canvas transform of a text frame whose y runs down.
    for (double v : {f(0, 0), f(1, 0), -f(0, 1), -f(1, 1), f(0, 3) - o.x, f(1, 3) - o.y}) number(v);
    number(run.height);
    number(run.anchor);
    number(run.fitLength);
    number(static_cast<double>(run.lines.size()));
    for (const TextLine& line : run.lines) {
      number(line.y);
      number(static_cast<double>(texts_.size()));
      texts_.emplace_back(line.text);
      // The line's box as the extents code estimates its width.
      const double width =
          run.fitLength > 0.0 ? run.fitLength : extents::estimateTextWidth(line.text) * run.height;
      const double left = run.anchor == 1 ? -width / 2.0 : run.anchor == 2 ? -width : 0.0;
      for (double x : {left, left + width})
        for (double y : {line.y - run.height, line.y + 0.3 * run.height}) grow(f.transform(Point3d(x, -y, 0.0)));
    }
    primitive(kText, run.color, 0.0);
  }

  // The JSON object of the list.
  void write(std::string& out, bool complete) const {
    out += "{\"origin\":[";
    appendNumber(out, origin_.x);
    out += ',';
    appendNumber(out, origin_.y);
    out += "],\"complete\":";
    out += complete ? "true" : "false";
    out += ",\"colors\":[";
    for (std::size_t i = 0; i < colours_.size(); ++i) {
      if (i) out += ',';
      out += '"';
      appendRgb(out, colours_[i]);
      out += '"';
    }
    out += "],\"handles\":[";
    out += handles_;
    out += "],\"prims\":[";
    out += primitives_;
    out += "],\"geom\":[";
    out += geometry_;
    out += "],\"texts\":[";
    for (std::size_t i = 0; i < texts_.size(); ++i) {
      if (i) out += ',';
      appendJsonText(out, texts_[i]);
    }
    out += "]}";
  }

 private:
  // Coordinates are kept relative to a corner near the first point drawn, where a canvas's single-precision
  // arithmetic holds them well even for drawings far from the origin.
  const Point3d& origin(const Point3d& p) {
    if (!hasOrigin_ && extents::isFinite(p.x) && extents::isFinite(p.y)) {
      origin_ = {std::floor(p.x), std::floor(p.y), 0.0};
      hasOrigin_ = true;
    }
    return origin_;
  }
  void grow(const Point3d& p) {
    if (extents::isFinite(p.x) && extents::isFinite(p.y)) box_.addPoint({p.x, p.y, 0.0});
  }

  void start() {
    box_ = Extents3d();
    startByte_ = geometry_.size();
    startNumber_ = numbers_;
  }
  void drop() {
    geometry_.resize(startByte_);
    numbers_ = startNumber_;
  }
  void op(Op o) { number(o); }
  void xy(const Point3d& p) {
    const Point3d& o = origin(p);
    number(p.x - o.x);
    number(p.y - o.y);
    grow(p);
  }
  void number(double v) {
    if (numbers_++) geometry_ += ',';
    appendNumber(geometry_, v);
  }

  // Closes the primitive begun last: kind, entity, colour, width, where its geometry starts, box (relative).
  void primitive(int kind, std::uint32_t colour, double width) {
    if (box_.isEmpty()) {
      drop();
      return;
    }
    if (primitiveCount_ == entityStart_) {
      // The entity's first primitive gives it its number.
      if (!handles_.empty()) handles_ += ',';
      char text[24];
      std::snprintf(text, sizeof text, "\"%llX\"", static_cast<unsigned long long>(handle_));
      handles_ += text;
    }
    auto [at, added] = colourIndex_.try_emplace(colour, colours_.size());
    if (added) colours_.push_back(colour);
    if (!primitives_.empty()) primitives_ += ',';
    const double values[] = {static_cast<double>(kind),
                             static_cast<double>(entities_),
                             static_cast<double>(at->second),
                             width,
                             static_cast<double>(startNumber_),
                             box_.min.x - origin_.x,
                             box_.min.y - origin_.y,
                             box_.max.x - origin_.x,
                             box_.max.y - origin_.y};
    for (std::size_t i = 0; i < std::size(values); ++i) {
      if (i) primitives_ += ',';
      appendNumber(primitives_, values[i]);
    }
    ++primitiveCount_;
  }

  Point3d origin_;
  bool hasOrigin_ = false;
  std::string geometry_, primitives_, handles_;
  std::vector<std::string> texts_;
  std::vector<std::uint32_t> colours_;
  std::unordered_map<std::uint32_t, std::size_t> colourIndex_;
  Extents3d box_;
  Point3d current_;
  std::uint64_t handle_ = 0;
  std::size_t entityStart_ = 0, entities_ = 0, primitiveCount_ = 0;
  std::size_t numbers_ = 0, startByte_ = 0, startNumber_ = 0;
};

}  // namespace

}  // namespace headless

namespace platform {

void renderSpaceDisplayList(const Database& db, std::string& out, Extents3d& extents) {
  extents = Extents3d();
  headless::DisplayListSink sink;
  const bool complete = headless::walkBlock(db, idIndex(db.currentSpaceId()), sink, extents);
  sink.write(out, complete);
}

}  // namespace platform
