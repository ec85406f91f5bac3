// The walk of a drawing as the host shows it: each entity's outlines and texts resolved (colours, blocks,
// visibility, widths, budgets) and handed to a sink.
#include "platform/headless/drawing_walk.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/headless/dxf_extents_parts.h"
#include "platform/headless/svg_render.h"
#include "platform/text.h"

namespace headless {

using platform::DbClass;
using platform::Extents3d;
using platform::Matrix3d;
using platform::Point3d;
using platform::Vector3d;
using platform::kNone;

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr double kPi = extents::kPi;
constexpr double kTwoPi = extents::kTwoPi;

// Appends the lines of one paragraph wrapped at `width` (drawing units; 0 or less: not wrapped) for characters
// of height h, widths estimated as the extents code estimates them: lines break after blanks and after wide (CJK)
// characters, and within a word only when it is wider than the line.
void wrapLine(std::string_view text, double h, double width, std::vector<std::string_view>& lines) {
  if (!(width > 0.0)) {
    lines.push_back(text);
    return;
  }
  std::size_t lineStart = 0, breakAt = std::string_view::npos;
  double used = 0.0, usedAtBreak = 0.0;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = std::min<std::size_t>(lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1,
                                                     text.size() - i);
    const std::string_view character = text.substr(i, length);
    const double advance = extents::estimateTextWidth(character) * h;
    if (used + advance > width && i > lineStart && character != " ") {
      const bool atBreak = breakAt != std::string_view::npos;
      const std::size_t cut = atBreak ? breakAt : i;
      std::string_view line = text.substr(lineStart, cut - lineStart);
      while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
      lines.push_back(line);
      used = atBreak ? used - usedAtBreak : 0.0;
      lineStart = cut;
      breakAt = std::string_view::npos;
    }
    used += advance;
    i += length;
    if (character == " " || advance >= h * 0.99) {
      breakAt = i;
      usedAtBreak = used;
    }
  }
  lines.push_back(text.substr(lineStart));
}

// Hands what a box sink traces to the primitive sink as an outline: points continue it, arcs become circular arcs
// (circular ones) or short chords (elliptic ones), loops close.
class PathTracer final : public extents::Tracer {
 public:
  explicit PathTracer(PrimitiveSink& out) : out_(out) {}
  void reset() {
    open_ = false;
    any_ = false;
    lifted_ = false;
  }
  bool any() const { return any_; }

  void point(const Point3d& p) override { to(p); }

  void arc(const Point3d& c, const Vector3d& u, const Vector3d& v, double start, double sweep, bool backward) override {
    // Quarter turns give the axes' ends exactly, not a cosine of 1e-16.
    const auto snapped = [](double x) { return std::fabs(x) < 1e-15 ? 0.0 : x; };
    const auto at = [&](double t) { return c + u * snapped(std::cos(t)) + v * snapped(std::sin(t)); };
    sweep = std::min(sweep, kTwoPi);
    const double from = backward ? start + sweep : start;
    const double dir = backward ? -1.0 : 1.0;
    to(at(from));
    const double ru = std::hypot(u.x, u.y), rv = std::hypot(v.x, v.y);
    const double cross = u.x * v.y - u.y * v.x;
    const bool circular =
        ru > 0.0 && std::fabs(ru - rv) <= 1e-9 * ru && std::fabs(u.x * v.x + u.y * v.y) <= 1e-9 * ru * ru;
    if (circular) {
      // Increasing parameter turns counter-clockwise in the drawing when u x v points up; the drawing's group
      // keeps drawing coordinates, where SVG's positive sweep is counter-clockwise.
      const bool ccw = (cross > 0.0) == !backward;
      const int halves = sweep > kPi + 1e-12 ? 2 : 1;
      for (int h = 1; h <= halves; ++h) {
        const double t = from + dir * sweep * h / halves;
        const Point3d p = at(t);
        out_.arcTo(c, ru, ccw, p);
        current_ = p;
      }
      return;
    }
    // An ellipse seen in the plane: chords of at most 5 degrees of parameter.
    const int steps = std::max(2, static_cast<int>(std::ceil(sweep / (kPi / 36.0))));
    for (int k = 1; k <= steps; ++k) to(at(from + dir * sweep * k / steps));
  }

  void endLoop() override {
    lifted_ = false;
    if (!open_) return;
    out_.closePath();
    open_ = false;
  }
  // Lifts the pen: the next point starts a new outline, the one drawn so far left open; a pen put down where it
  // was lifted draws on.
  void lift() {
    open_ = false;
    lifted_ = true;
  }

 private:
  void to(const Point3d& p) {
    const bool resumed = lifted_ && any_ && p.x == current_.x && p.y == current_.y;
    lifted_ = false;
    if (!open_ && resumed) {
      open_ = true;
      return;
    }
    if (!open_) {
      out_.moveTo(p);
      open_ = true;
      any_ = true;
    } else if (p.x == current_.x && p.y == current_.y) {
      return;
    } else {
      out_.lineTo(p);
    }
    current_ = p;
  }

  PrimitiveSink& out_;
  bool open_ = false;
  bool any_ = false;
  bool lifted_ = false;
  Point3d current_;
};

// What an entity inside a block reference takes from the reference: the colour ByBlock stands for, and the
// layer its entities on layer "0" are drawn with.
struct Inherited {
  std::uint32_t color = kWhite;
  std::uint32_t layer = kNone;
};

class Renderer {
 public:
  Renderer(const platform::Database& db, PrimitiveSink& out, Extents3d& extents, const WalkLimits& limits)
      : db_(db), data_(db.data()), out_(out), extents_(extents), limits_(limits), tracer_(out) {
    if (limits_.visits == 0) limits_.visits = std::max<std::size_t>(2000000, 64 * data_.entities.size());
    const auto& layers = data_.layerTable;
    for (std::size_t i = 0; i < layers.size(); ++i)
      if (platform::equalsIgnoreCase(layers[i].name, "0")) layerZero_ = static_cast<std::uint32_t>(i);
  }

  void drawBlock(std::uint32_t block, const Matrix3d& m, const Inherited& inherited, bool inReference) {
    if (block >= data_.blocks.size()) return;
    if (std::find(stack_.begin(), stack_.end(), block) != stack_.end() || stack_.size() >= limits_.depth) return;
    stack_.push_back(block);
    // What each entity of the walked block itself draws is told apart, so that a picture can name it.
    const bool topLevel = stack_.size() == 1;
    for (std::uint32_t index : data_.blocks[block].entities) {
      if (visits_ >= limits_.visits) break;
      if (topLevel) out_.beginEntity(data_.entities[index].handle);
      entity(index, m, inherited, inReference);
      if (topLevel) out_.endEntity();
    }
    stack_.pop_back();
  }

  bool budgetSpent() const { return visits_ >= limits_.visits; }

 private:
  const platform::LayerRecord* layerOf(std::uint32_t layer) const {
    return layer < data_.layerTable.size() ? &data_.layerTable[layer] : nullptr;
  }

  std::uint32_t colorOf(const platform::EntityRec& e, const Groups& g, std::uint32_t layer,
                        const Inherited& inherited) const {
    if (const platform::StoredTag* trueColor = g.find(420))
      return static_cast<std::uint32_t>(platform::saturatingInteger(extents::numberOf(*trueColor)) & 0xFFFFFF);
    if (e.color == 0) return inherited.color;
    if (e.color == 256 || e.color < 0) {
      const platform::LayerRecord* l = layerOf(layer);
      // A layer that is off keeps its colour negated.
      const int index = l ? l->colorIndex : 7;
      return aciColor(index < 0 && index > -256 ? -index : index);
    }
    return aciColor(e.color);
  }

  void entity(std::uint32_t index, const Matrix3d& m, const Inherited& inherited, bool inReference) {
    ++visits_;
    const platform::EntityRec& e = data_.entities[index];
    if (e.invisible) return;
    // Attribute definitions of a block show through the references' attributes, unless constant.
    const Groups g(data_, e);
    if (e.cls == DbClass::AttributeDefinition && inReference && (g.integer(70) & 2) == 0) return;
    std::uint32_t layer = e.layer;
    if (layer == layerZero_ && inherited.layer != kNone) layer = inherited.layer;
    // A frozen layer hides all a reference shows; an off one only what is drawn on it (a reference's entities on
    // layer "0" among them), so references on it are walked.
    const bool throughBlock =
        platform::isKindOf(e.cls, DbClass::BlockReference) || platform::isKindOf(e.cls, DbClass::Dimension);
    if (const platform::LayerRecord* l = layerOf(layer); l && (l->isFrozen || (l->isOff && !throughBlock))) return;
    const std::uint32_t color = colorOf(e, g, layer, inherited);
    const platform::Entity entity = db_.openEntity(platform::makeId(platform::IdKind::Entity, index));
    const Inherited mine{color, layer};
    switch (e.cls) {
      case DbClass::Line: {
        Stroke s = begin(m);
        s.sink.add(entity.point(platform::Accessor::startPoint));
        s.sink.add(entity.point(platform::Accessor::endPoint));
        end(s, color);
        return;
      }
      case DbClass::Ray:
      case DbClass::Xline:
        endless(entity, m, color);
        return;
      case DbClass::Point: {
        Stroke s = begin(m);
        s.sink.add(entity.point(platform::Accessor::position));
        end(s, Paint{color, Fill::None, 0.0, true});
        return;
      }
      case DbClass::Circle:
      case DbClass::Arc: {
        Stroke s = begin(m);
        extents::addArcEntity(g, s.sink, e.cls == DbClass::Circle);
        end(s, color);
        return;
      }
      case DbClass::Ellipse: {
        Stroke s = begin(m);
        extents::addEllipse(g, s.sink);
        end(s, color);
        return;
      }
      case DbClass::Spline:
      case DbClass::Helix: {
        Stroke s = begin(m);
        extents::addSpline(g, s.sink);
        end(s, color);
        return;
      }
      case DbClass::Polyline:
      case DbClass::Polyline2d:
        widePolyline(g, index, m, color);
        return;
      case DbClass::Polyline3d: {
        Stroke s = begin(m);
        extents::addPolyline(data_, index, s.sink);
        // A 3D polyline's points come without its closing segment.
        if (g.integer(70) & 1) tracer_.endLoop();
        end(s, color);
        return;
      }
      case DbClass::PolyFaceMesh:
      case DbClass::PolygonMesh:
        mesh(index, m, color);
        return;
      case DbClass::Leader: {
        Stroke s = begin(m);
        for (const Point3d& p : entity.points(platform::Accessor::leaderVertices)) s.sink.add(p);
        end(s, color);
        return;
      }
      case DbClass::Solid:
      case DbClass::Trace: {
        // Corners 1, 2, 3, 4 make the outline 1, 2, 4, 3.
        const std::vector<Point3d> c = entity.points(platform::Accessor::cornerPoints);
        if (c.size() < 3) return;
        Stroke s = begin(m);
        for (std::size_t i : {0, 1, 3, 2})
          if (i < c.size()) s.sink.add(c[i]);
        tracer_.endLoop();
        end(s, color, Fill::Solid);
        return;
      }
      case DbClass::Face: {
        const std::vector<Point3d> c = entity.points(platform::Accessor::cornerPoints);
        if (c.size() < 3) return;
        const long long hidden = entity.integer(platform::Accessor::invisibleEdgeFlags);
        Stroke s = begin(m);
        face(s, c, hidden);
        end(s, color);
        return;
      }
      case DbClass::Hatch:
      case DbClass::MPolygon: {
        Stroke s = begin(m);
        extents::addHatch(g, s.sink, e.cls == DbClass::MPolygon);
        end(s, color, hatchFill(entity));
        return;
      }
      case DbClass::Image:
      case DbClass::RasterImage:
      case DbClass::Wipeout: {
        const Point3d p = entity.point(platform::Accessor::position);
        const Vector3d u = entity.vector(platform::Accessor::imageUVector);
        const Vector3d v = entity.vector(platform::Accessor::imageVVector);
        Stroke s = begin(m);
        for (const Point3d& q : {p, p + u, p + u + v, p + v}) s.sink.add(q);
        tracer_.endLoop();
        end(s, color);
        return;
      }
      case DbClass::Text:
      case DbClass::Attribute:
      case DbClass::AttributeDefinition:
        text(entity, g, m, color);
        return;
      case DbClass::MText:
        mtext(entity, g, m, color);
        return;
      case DbClass::MLeader:
        mleader(g, m, color);
        return;
      case DbClass::BlockReference:
      case DbClass::MInsertBlock:
      case DbClass::Table:
        reference(entity, index, m, mine);
        return;
      default:
        if (platform::isKindOf(e.cls, DbClass::Dimension)) dimension(g, m, mine);
        return;
    }
  }

  // ---- outlines ----

  // One entity's outline being traced: the box sink collects its box and traces it into the primitive sink.
  struct Stroke {
    extents::BoxSink sink;
  };

  Stroke begin(const Matrix3d& m) {
    tracer_.reset();
    out_.beginPath();
    return Stroke{extents::BoxSink(scratch_, &tracer_).placed(m)};
  }

  void end(Stroke& s, std::uint32_t color, Fill fill = Fill::None) { end(s, Paint{color, fill}); }

  // Ends the outline; one that traced nothing is dropped.
  void end(Stroke&, const Paint& paint) {
    if (!tracer_.any()) {
      out_.dropPath();
      scratch_ = Extents3d();
      return;
    }
    out_.endPath(paint);
    extents_.addExtents(scratch_);
    scratch_ = Extents3d();
  }

  // A polyline drawn with a width keeps it in drawing units; thin ones are a pixel wide at every zoom (0).
  static double placedWidth(double width, const Matrix3d& m) {
    if (!(width > 0.0) || !extents::isFinite(width)) return 0.0;
    const double scale = m.transform(Vector3d(1, 0, 0)).length();
    return width * (scale > 0.0 ? scale : 1.0);
  }

  // A vertex of a lightweight or 2D polyline, in the polyline's plane, with the widths and bulge of the segment
  // that starts at it.
  struct WideVertex {
    Point3d p;
    double startWidth = 0.0, endWidth = 0.0, bulge = 0.0;
  };

  // Lightweight and 2D polylines. One of a single width is one path stroked that wide (or a pixel wide without
  // width); one whose width changes is drawn a segment at a time.
  void widePolyline(const Groups& g, std::uint32_t index, const Matrix3d& m, std::uint32_t color) {
    const platform::EntityRec& e = data_.entities[index];
    const bool lightweight = e.cls == DbClass::Polyline;
    std::vector<WideVertex> vertices;
    double elevation = 0.0;
    const bool closed = (g.integer(70) & 1) != 0;
    if (lightweight) {
      const extents::GroupRange r = extents::subclassRange(g, "AcDbPolyline");
      double constant = 0.0;
      for (std::uint32_t i = r.begin; i < r.end; ++i) {
        const int code = g.at(i).code;
        const double value = extents::numberOf(g.at(i));
        if (code == 38) elevation = value;
        else if (code == 43) constant = value;
        else if (code == 10) vertices.push_back({extents::pointAt(g, i), -1.0, -1.0, 0.0});
        else if (vertices.empty()) continue;
        else if (code == 40) vertices.back().startWidth = value;
        else if (code == 41) vertices.back().endWidth = value;
        else if (code == 42) vertices.back().bulge = value;
      }
      for (WideVertex& v : vertices) {
        if (v.startWidth < 0.0) v.startWidth = constant;
        if (v.endWidth < 0.0) v.endWidth = constant;
      }
    } else {
      elevation = g.point(10).z;
      const double start = g.real(40), end = g.real(41);
      const std::size_t last = std::min<std::size_t>(std::size_t{index} + 1 + e.subCount, data_.entities.size());
      for (std::size_t i = std::size_t{index} + 1; i < last; ++i) {
        const Groups v(data_, data_.entities[i]);
        if (data_.entities[i].cls != DbClass::Vertex2d || (v.integer(70) & 16)) continue;  // spline frame points
        vertices.push_back({v.point(10), v.real(40, start), v.real(41, end), v.real(42)});
      }
    }
    if (vertices.empty()) return;
    for (WideVertex& v : vertices) v.p.z = elevation;
    const Matrix3d placement = m * platform::ocsToWcs(g.normal());
    const double width = vertices[0].startWidth;
    const bool uniform = std::all_of(vertices.begin(), vertices.end(), [&](const WideVertex& v) {
      return v.startWidth == width && v.endWidth == width;
    });
    if (uniform || vertices.size() < 2) {
      Stroke s = begin(m);
      if (lightweight) extents::addLwPolyline(g, s.sink);
      else extents::addPolyline(data_, index, s.sink);
      end(s, Paint{color, Fill::None, placedWidth(width, m)});
      return;
    }
    const std::size_t n = vertices.size();
    for (std::size_t i = 0; i < (closed ? n : n - 1); ++i) {
      const WideVertex& a = vertices[i];
      const Point3d& b = vertices[(i + 1) % n].p;
      const double dx = b.x - a.p.x, dy = b.y - a.p.y, length = std::hypot(dx, dy);
      Stroke s = begin(placement);
      if (a.bulge == 0.0 && length > 0.0 && (a.startWidth > 0.0 || a.endWidth > 0.0)) {
        // A straight segment tapers from its start width to its end width: a filled quadrilateral.
        const Vector3d half{-dy / length / 2.0, dx / length / 2.0, 0.0};
        for (const Point3d& q : {a.p + half * a.startWidth, b + half * a.endWidth, b - half * a.endWidth,
                                 a.p - half * a.startWidth})
          s.sink.add(q);
        tracer_.endLoop();
        end(s, color, Fill::Solid);
      } else {
        // An arc keeps its mean width.
        extents::addBulgeSegment(s.sink, a.p, b, a.bulge);
        end(s, Paint{color, Fill::None, placedWidth((a.startWidth + a.endWidth) / 2.0, placement)});
      }
    }
  }

  // Polyface meshes: the visible edges of their faces; polygon meshes: the lines of their grid of vertices.
  void mesh(std::uint32_t index, const Matrix3d& m, std::uint32_t color) {
    const platform::EntityRec& e = data_.entities[index];
    const Groups g(data_, e);
    const std::size_t last = std::min<std::size_t>(std::size_t{index} + 1 + e.subCount, data_.entities.size());
    std::vector<Point3d> points;
    Stroke s = begin(m);
    const auto edge = [&](long long from, long long to) {
      // Face records number their vertices from 1; a negative number hides the edge that starts there.
      constexpr long long kLimit = 1LL << 40;
      if (from <= 0 || to == 0 || from > kLimit || to > kLimit || to < -kLimit) return;
      const auto a = static_cast<std::size_t>(from) - 1, b = static_cast<std::size_t>(to < 0 ? -to : to) - 1;
      if (a >= points.size() || b >= points.size()) return;
      tracer_.lift();
      s.sink.add(points[a]);
      s.sink.add(points[b]);
    };
    for (std::size_t i = std::size_t{index} + 1; i < last; ++i) {
      const Groups v(data_, data_.entities[i]);
      const long long flags = v.integer(70);
      if (flags & 64) {
        points.push_back(v.point(10));
      } else if ((flags & 128) && e.cls == DbClass::PolyFaceMesh) {
        long long corners[4];
        int n = 0;
        for (int code : {71, 72, 73, 74})
          if (const long long k = v.integer(code); k != 0) corners[n++] = k;
        for (int k = 0; k < n && n > 1; ++k) edge(corners[k], corners[(k + 1) % n]);
      }
    }
    if (e.cls == DbClass::PolygonMesh) {
      const long long flags = g.integer(70);
      const auto count = static_cast<long long>(points.size());
      const long long rows = std::clamp(g.integer(71), 0LL, count), columns = std::clamp(g.integer(72), 0LL, count);
      if (rows * columns <= count) {
        const auto at = [&](long long r, long long c) { return points[static_cast<std::size_t>(r * columns + c)]; };
        for (long long r = 0; r < rows; ++r) {
          tracer_.lift();
          for (long long c = 0; c < columns; ++c) s.sink.add(at(r, c));
          if ((flags & 32) && columns > 2) s.sink.add(at(r, 0));
        }
        for (long long c = 0; c < columns; ++c) {
          tracer_.lift();
          for (long long r = 0; r < rows; ++r) s.sink.add(at(r, c));
          if ((flags & 1) && rows > 2) s.sink.add(at(0, c));
        }
      }
    }
    end(s, color);
  }

  Fill hatchFill(const platform::Entity& hatch) const {
    if (hatch.integer(platform::Accessor::hatchObjectType) == 1) return Fill::Light;  // gradient
    return platform::equalsIgnoreCase(hatch.text(platform::Accessor::patternName), "SOLID") ? Fill::Solid
                                                                                              : Fill::Light;
  }

  // A 3D face's edges, those flagged invisible left out.
  void face(Stroke& s, const std::vector<Point3d>& c, long long hidden) {
    const std::size_t n = c.size();
    s.sink.add(c[0]);
    for (std::size_t i = 0; i < n; ++i) {
      const Point3d& next = c[(i + 1) % n];
      if (i < 4 && (hidden & (1LL << i))) tracer_.lift();
      s.sink.add(next);
    }
    if (hidden == 0) tracer_.endLoop();
  }

  // ---- texts ----

  // The box of a text as the extents code estimates it, placed like the text.
  void addTextBox(const Groups& g, const Matrix3d& m, DbClass cls) {
    Extents3d box;
    extents::BoxSink sink = extents::BoxSink(box).placed(m);
    if (cls == DbClass::MText) extents::addMText(g, sink);
    else extents::addText(g, sink, cls);
    extents_.addExtents(box);
  }

  void text(const platform::Entity& t, const Groups& g, const Matrix3d& m, std::uint32_t color) {
    using platform::Accessor;
    const double h = t.real(Accessor::textHeight);
    if (t.dbClass() == DbClass::Attribute && (g.integer(70) & 1)) return;  // an invisible attribute
    // An attribute definition shows its tag.
    const std::string shown = extents::plainText(
        t.dbClass() == DbClass::AttributeDefinition ? t.text(Accessor::tag) : t.text(Accessor::textString));
    if (!(h > 0.0) || shown.empty()) return;
    const int horizontal = static_cast<int>(t.integer(Accessor::horizontalMode));
    const int vertical = static_cast<int>(t.integer(Accessor::verticalMode));
    const Point3d first = t.point(Accessor::position), second = t.point(Accessor::alignmentPoint);
    const Vector3d normal = t.vector(Accessor::normal);
    double rotation = t.real(Accessor::textRotation);
    const bool aligned = (horizontal == 3 || horizontal == 5) && first.distanceTo(second) > 0.0;
    double length = 0.0;
    Point3d anchor = first;
    if (aligned) {
      const Matrix3d toOcs = platform::ocsToWcs(normal);
      // The baseline's direction, seen in the text's own plane.
      const Vector3d d = second - first;
      const Vector3d ax = toOcs.transform(Vector3d(1, 0, 0)), ay = toOcs.transform(Vector3d(0, 1, 0));
      rotation = std::atan2(d.dot(ay), d.dot(ax));
      length = d.length();
    } else if (horizontal != 0 || vertical != 0) {
      anchor = second;
    }
    double widthFactor = t.real(Accessor::textWidthFactor);
    if (!(widthFactor > 0.0) || aligned) widthFactor = 1.0;
    const long long generation = g.integer(71);
    Matrix3d local = platform::ocsToWcs(normal) * Matrix3d::rotationZ(rotation);
    local = Matrix3d::translation(anchor.asVector()) * local;
    const double oblique = t.real(Accessor::textOblique);
    Matrix3d shape =
        Matrix3d::scaling((generation & 2) ? -widthFactor : widthFactor, (generation & 4) ? -1.0 : 1.0, 1.0);
    if (extents::isFinite(oblique) && std::fabs(std::cos(oblique)) > 1e-6) shape(0, 1) = std::tan(oblique);
    TextRun run;
    run.frame = m * local * shape;
    run.height = h;
    run.color = color;
    run.anchor = aligned ? 0 : (horizontal == 1 || horizontal == 4) ? 1 : horizontal == 2 ? 2 : 0;
    run.fitLength = aligned ? length : 0.0;
    // The baseline below the anchor (y runs down in the text's frame as it is written).
    double baseline = 0.0;
    if (!aligned) {
      if (horizontal == 4 || vertical == 2) baseline = h / 2.0;
      else if (vertical == 1) baseline = -0.3 * h;
      else if (vertical == 3) baseline = h;
    }
    run.lines.push_back({baseline, shown});
    out_.text(run);
    addTextBox(g, m, t.dbClass());
  }

  // Where a paragraph of multi-line text is placed: its insertion point, direction and plane, the height of its
  // characters, the width it wraps at (0: none), its attachment point (1 to 9) and line spacing factor.
  struct TextBlock {
    Point3d insertion;
    Vector3d direction, normal;
    double height = 0.0, width = 0.0, spacing = 1.0;
    int attachment = 1;
  };

  // Draws the lines of `shown` (paragraphs ended by '\n') as one text run; false when nothing shows.
  bool drawTextBlock(std::string_view shown, TextBlock b, const Matrix3d& m, std::uint32_t color) {
    const double h = b.height;
    if (!(h > 0.0) || !extents::isFinite(h) || shown.find_first_not_of(" \n") == std::string::npos) return false;
    const Vector3d normal = b.normal.length() > 0.0 ? b.normal.normal() : Vector3d(0, 0, 1);
    Vector3d x = b.direction.normal();
    if (x.length() == 0.0) x = platform::arbitraryAxisX(normal);
    const Vector3d y = normal.cross(x).normal();
    if (b.attachment < 1 || b.attachment > 9) b.attachment = 1;
    const int column = (b.attachment - 1) % 3, row = (b.attachment - 1) / 3;
    if (!(b.spacing > 0.0)) b.spacing = 1.0;
    const double step = 5.0 / 3.0 * h * b.spacing;
    // Paragraphs wrap at the reference width.
    lines_.clear();
    for (std::size_t begin = 0; begin <= shown.size();) {
      std::size_t stop = shown.find('\n', begin);
      if (stop == std::string::npos) stop = shown.size();
      wrapLine(shown.substr(begin, stop - begin), h, b.width, lines_);
      begin = stop + 1;
    }
    const double total = h + static_cast<double>(lines_.size() - 1) * step;
    // The first baseline below the insertion point: top rows hang from it, middle ones centre on it.
    const double first = h - total * row / 2.0;
    TextRun run;
    run.frame = m * Matrix3d::fromAxes(b.insertion, x, y, normal);
    run.height = h;
    run.color = color;
    run.anchor = column;
    run.block = true;
    for (std::size_t line = 0; line < lines_.size(); ++line)
      run.lines.push_back({first + static_cast<double>(line) * step, lines_[line]});
    out_.text(run);
    return true;
  }

  void mtext(const platform::Entity& t, const Groups& g, const Matrix3d& m, std::uint32_t color) {
    using platform::Accessor;
    const TextBlock b{t.point(Accessor::position),     t.vector(Accessor::direction),
                      t.vector(Accessor::normal),      t.real(Accessor::textHeight),
                      t.real(Accessor::mtextWidth),    t.real(Accessor::lineSpacingFactor),
                      static_cast<int>(g.integer(71, 1))};
    if (drawTextBlock(extents::plainMText(t.text(Accessor::contents)), b, m, color)) addTextBox(g, m, DbClass::MText);
  }

  // Rays and construction lines run on for ever: drawn far beyond the drawing, and left out of its extents.
  void endless(const platform::Entity& line, const Matrix3d& m, std::uint32_t color) {
    if (reach_ == 0.0) {
      const Extents3d all = db_.extents();
      const double size = all.isEmpty() ? 0.0 : all.max.distanceTo(all.min);
      reach_ = std::max(1e4, extents::isFinite(size) ? 100.0 * size : 0.0);
    }
    const Point3d base = line.point(platform::Accessor::basePoint);
    const Vector3d along = line.vector(platform::Accessor::unitDir) * reach_;
    Stroke s = begin(m);
    s.sink.add(line.dbClass() == DbClass::Ray ? base : base - along);
    s.sink.add(base + along);
    const Extents3d kept = extents_;
    end(s, color);
    extents_ = kept;
  }

  // Multileaders: their leader lines and dog-legs, and their text.
  void mleader(const Groups& g, const Matrix3d& m, std::uint32_t color) {
    const extents::MLeaderShape shape = extents::readMLeader(g);
    for (const std::vector<Point3d>& line : shape.lines) {
      Stroke s = begin(m);
      for (const Point3d& p : line) s.sink.add(p);
      end(s, color);
    }
    if (shape.hasText)
      drawTextBlock(extents::plainMText(shape.content),
                    {shape.textLocation, shape.textDirection, shape.textNormal, shape.textHeight, shape.textWidth, 1.0,
                     shape.attachment},
                    m, color);
    Extents3d box;
    extents::BoxSink sink = extents::BoxSink(box).placed(m);
    extents::addMLeader(g, sink);
    extents_.addExtents(box);
  }

  // ---- blocks ----

  void reference(const platform::Entity& r, std::uint32_t index, const Matrix3d& m, const Inherited& mine) {
    const platform::BlockRecord record = db_.blockRecord(r.blockTableRecord());
    if (record && record.entityCount() > 0) {
      const std::uint32_t block = platform::idIndex(record.objectId());
      const Matrix3d placed = m * r.blockTransform();
      int columns = 1, rows = 1;
      double dx = 0.0, dy = 0.0;
      if (r.dbClass() == DbClass::MInsertBlock) {
        const Groups g(data_, data_.entities[index]);
        // A multiple insert repeats its block over a grid spaced in the reference's rotated, unscaled frame.
        const Vector3d scale = r.vector(platform::Accessor::blockScaleFactors);
        columns = extents::clampedInt(g.real(70, 1.0), 1, 1 << 20);
        rows = extents::clampedInt(g.real(71, 1.0), 1, 1 << 20);
        dx = scale.x != 0.0 ? g.real(44) / scale.x : 0.0;
        dy = scale.y != 0.0 ? g.real(45) / scale.y : 0.0;
      }
      // Each cell counts against the budget, so that a grid of an empty block ends too.
      for (int row = 0; row < rows && !budgetSpent(); ++row)
        for (int c = 0; c < columns && !budgetSpent(); ++c, ++visits_)
          drawBlock(block, placed * Matrix3d::translation({c * dx, row * dy, 0.0}), mine, true);
    }
    // The reference's attributes are stored after it, in drawing coordinates of the reference's own frame.
    const platform::EntityRec& e = data_.entities[index];
    for (std::uint32_t i = 1; i <= e.subCount && index + i < data_.entities.size(); ++i)
      if (data_.entities[index + i].cls == DbClass::Attribute) entity(index + i, m, mine, false);
  }

  // Dimensions show their anonymous block, whose entities are in the dimension's plane.
  void dimension(const Groups& g, const Matrix3d& m, const Inherited& mine) {
    const platform::BlockRecord record = db_.blockRecord(g.text(2));
    if (!record) return;
    drawBlock(platform::idIndex(record.objectId()),
          m * platform::ocsToWcs(g.normal()) * Matrix3d::translation(-record.origin().asVector()), mine, true);
  }

  const platform::Database& db_;
  const platform::DatabaseData& data_;
  PrimitiveSink& out_;
  Extents3d& extents_;
  WalkLimits limits_;
  PathTracer tracer_;
  Extents3d scratch_;
  std::vector<std::string_view> lines_;
  double reach_ = 0.0;  // how far rays and construction lines are drawn, once a drawing has one
  std::vector<std::uint32_t> stack_;
  std::size_t visits_ = 0;
  std::uint32_t layerZero_ = kNone;
};

}  // namespace

bool walkBlock(const platform::Database& db, std::uint32_t block, PrimitiveSink& sink, Extents3d& extents,
               const WalkLimits& limits) {
  Renderer renderer(db, sink, extents, limits);
  renderer.drawBlock(block, Matrix3d(), Inherited(), false);
  return !renderer.budgetSpent();
}

}  // namespace headless
