// A drawing's display list for a page's canvas: what the walk of the drawing draws, as flat arrays of numbers
// with a box a primitive and the texts in one table, written as JSON.
#include <algorithm>
#include <charconv>
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

// Numbers of the list: `digits` significant ones, what is not finite as 0.
void appendShort(std::string& out, double v, int digits) {
  if (!extents::isFinite(v) || v == 0.0) v = 0.0;
  char buffer[32];
  const auto r = std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::general, digits);
  out.append(buffer, r.ptr);
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
    plain(kMove);
    xy(p);
    current_ = p;
  }
  void lineTo(const Point3d& p) override {
    plain(kLine);
    xy(p);
    current_ = p;
  }
  void arcTo(const Point3d& centre, double radius, bool ccw, const Point3d& to) override {
    plain(kArc);
    xy(centre);
    const double from = std::atan2(current_.y - centre.y, current_.x - centre.x);
    const double until = std::atan2(to.y - centre.y, to.x - centre.x);
    pending_.push_back({radius, Value::Size});
    pending_.push_back({from, Value::Angle});
    pending_.push_back({until, Value::Angle});
    plain(ccw ? 1 : 0);
    // The arc's box, counter-clockwise from `low`, as the extents code bounds an arc.
    const double low = ccw ? from : until;
    double sweep = (ccw ? until : from) - low;
    while (sweep < 0.0) sweep += extents::kTwoPi;
    extents::BoxSink(box_).addArc({centre.x, centre.y, 0.0}, {radius, 0.0, 0.0}, {0.0, radius, 0.0}, low, sweep);
    current_ = to;
  }
  void closePath() override { plain(kClose); }
  void dropPath() override { pending_.clear(); }
  void endPath(const Paint& paint) override {
    const int kind = paint.dot ? kDot : paint.fill == Fill::Solid ? kSolid : paint.fill == Fill::Light ? kLight : kStroke;
    primitive(kind, paint.color, paint.width);
  }

  void text(const TextRun& run) override {
    start();
    const Matrix3d& f = run.frame;
    // The frame as a canvas transform of a text frame whose y runs down.
    for (double v : {f(0, 0), f(1, 0), -f(0, 1), -f(1, 1)}) pending_.push_back({v, Value::Size});
    xy({f(0, 3), f(1, 3), 0.0});
    pending_.push_back({run.height, Value::Size});
    plain(run.anchor);
    pending_.push_back({run.fitLength, Value::Size});
    plain(static_cast<double>(run.lines.size()));
    for (const TextLine& line : run.lines) {
      pending_.push_back({line.y, Value::Size});
      plain(static_cast<double>(texts_.size()));
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
  // What a number of an outline or a text is: a coordinate (kept relative to the primitive's corner), a length
  // or factor, an angle, or a plain small number (operations, flags, counts, indexes).
  enum class Value : char { X, Y, Size, Angle, Plain };

  void start() {
    box_ = Extents3d();
    pending_.clear();
  }
  void plain(double v) { pending_.push_back({v, Value::Plain}); }
  void xy(const Point3d& p) {
    pending_.push_back({p.x, Value::X});
    pending_.push_back({p.y, Value::Y});
    grow(p);
  }
  void grow(const Point3d& p) {
    if (extents::isFinite(p.x) && extents::isFinite(p.y)) box_.addPoint({p.x, p.y, 0.0});
  }

  // Writes the primitive begun last: kind, entity (counted from the previous primitive's), colour, width, how
  // many numbers of geometry it has, its corner (relative to the origin) and its size. Its geometry's
  // coordinates are relative to its corner, where seven digits are plenty at any zoom.
  void primitive(int kind, std::uint32_t colour, double width) {
    if (box_.isEmpty()) {
      pending_.clear();
      return;
    }
    if (!hasOrigin_) {
      // The first corner's neighbourhood, where a canvas's single-precision arithmetic holds coordinates well
      // even for drawings far from the drawing's origin.
      origin_ = {std::floor(box_.min.x), std::floor(box_.min.y), 0.0};
      hasOrigin_ = true;
    }
    const double entity = static_cast<double>(entities_);
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
    const double corner[2] = {box_.min.x - origin_.x, box_.min.y - origin_.y};
    const double head[] = {static_cast<double>(kind), entity - lastEntity_, static_cast<double>(at->second), width,
                           static_cast<double>(pending_.size())};
    for (double v : head) {
      appendShort(primitives_, v, 7);
      primitives_ += ',';
    }
    appendNumber(primitives_, corner[0]);
    primitives_ += ',';
    appendNumber(primitives_, corner[1]);
    primitives_ += ',';
    appendShort(primitives_, box_.max.x - box_.min.x, 7);
    primitives_ += ',';
    appendShort(primitives_, box_.max.y - box_.min.y, 7);
    for (const auto& [v, what] : pending_) {
      if (!geometry_.empty()) geometry_ += ',';
      switch (what) {
        case Value::X: appendShort(geometry_, v - box_.min.x, 7); break;
        case Value::Y: appendShort(geometry_, v - box_.min.y, 7); break;
        case Value::Angle: appendShort(geometry_, v, 9); break;
        default: appendShort(geometry_, v, 7); break;
      }
    }
    pending_.clear();
    lastEntity_ = entity;
    ++primitiveCount_;
  }

  Point3d origin_;
  bool hasOrigin_ = false;
  std::string geometry_, primitives_, handles_;
  std::vector<std::pair<double, Value>> pending_;
  std::vector<std::string> texts_;
  std::vector<std::uint32_t> colours_;
  std::unordered_map<std::uint32_t, std::size_t> colourIndex_;
  Extents3d box_;
  Point3d current_;
  std::uint64_t handle_ = 0;
  std::size_t entityStart_ = 0, entities_ = 0, primitiveCount_ = 0;
  double lastEntity_ = 0.0;
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
