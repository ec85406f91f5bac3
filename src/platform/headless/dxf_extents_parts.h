// What the per-type extents code shares: the placing box collector, curve boxes and the per-type entry points.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/geometry.h"
#include "platform/headless/dxf_data.h"
#include "platform/headless/dxf_groups.h"

namespace headless::extents {

// Receives the geometry a sink is given, placed, in the order it comes: the outline of what is collected (a
// renderer draws curves through it). A point continues the outline; an arc runs from its start to its end, or
// the other way when `backward`; a loop ends where a closed boundary path ends.
class Tracer {
 public:
  virtual ~Tracer() = default;
  virtual void point(const platform::Point3d& p) = 0;
  virtual void arc(const platform::Point3d& centre, const platform::Vector3d& u, const platform::Vector3d& v,
                   double start, double sweep, bool backward) = 0;
  virtual void endLoop() = 0;
};

// Collects geometry into a WCS box. What it is given is first taken through its placement matrix: identity for
// an entity of a space, the accumulated block-reference transform for an entity inside a block. Points with a
// non-finite coordinate (before or after placement) are dropped, so a box never holds NaN or infinity.
class BoxSink {
 public:
  explicit BoxSink(platform::Extents3d& box, Tracer* tracer = nullptr) : box_(&box), tracer_(tracer) {}

  // A sink into the same box for geometry given in a frame that `inner` takes to this sink's frame.
  BoxSink placed(const platform::Matrix3d& inner) const;
  const platform::Matrix3d& matrix() const { return m_; }
  bool isEmpty() const { return box_->isEmpty(); }

  void add(const platform::Point3d& p);
  // Adds a point to the box only, not to the outline (a point the outline reaches along a curve).
  void addToBox(const platform::Point3d& p);
  // The elliptic arc centre + u cos t + v sin t for t from `start` over `sweep` radians (sweep >= 0; 2 pi or more
  // is the whole ellipse). Exact: placement keeps it an elliptic arc, whose extremes per axis are computed.
  // `backward` tells the tracer the outline runs from the end to the start.
  void addArc(const platform::Point3d& centre, const platform::Vector3d& u, const platform::Vector3d& v, double start,
              double sweep, bool backward = false);
  Tracer* tracer() const { return tracer_; }
  // The eight corners of a box.
  void addBox(const platform::Extents3d& e);

  // A sink with this one's placement into another box (to see what one part adds on its own).
  BoxSink into(platform::Extents3d& other) const { return BoxSink(&other, m_, identity_, tracer_); }
  // Adds a box that is already placed (as `into` collected it).
  void addPlaced(const platform::Extents3d& e) { box_->addExtents(e); }

 private:
  BoxSink(platform::Extents3d* box, const platform::Matrix3d& m, bool identity, Tracer* tracer)
      : box_(box), tracer_(tracer), m_(m), identity_(identity) {}
  platform::Extents3d* box_;
  Tracer* tracer_ = nullptr;
  platform::Matrix3d m_;
  bool identity_ = true;
};

inline bool isFinite(double v) { return v - v == 0.0; }
inline bool isFinite(const platform::Point3d& p) { return isFinite(p.x) && isFinite(p.y) && isFinite(p.z); }
inline bool isFinite(const platform::Vector3d& v) { return isFinite(v.x) && isFinite(v.y) && isFinite(v.z); }

constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 2.0 * kPi;
constexpr double degrees(double radians) { return radians * 180.0 / kPi; }
constexpr double radians(double degrees) { return degrees * kPi / 180.0; }

// The sweep from `start` to `end` counter-clockwise, in (0, 2 pi]; equal angles make the whole turn, as the host
// draws an arc whose ends meet as a full circle.
double ccwSweep(double start, double end);

// A polyline segment from a to b (same plane, given in the polyline's OCS) with a bulge: the tangent of a quarter
// of the included angle, positive counter-clockwise; 0 is a straight segment.
void addBulgeSegment(BoxSink& sink, const platform::Point3d& a, const platform::Point3d& b, double bulge);

// A vertex of a polyline or polyline boundary path with the bulge of the segment that starts at it.
struct BulgeVertex {
  platform::Point3d p;
  double bulge = 0.0;
};
// The segments between successive vertices, and from the last back to the first when closed.
void addBulgeChain(BoxSink& sink, const std::vector<BulgeVertex>& vertices, bool closed);

// A B-spline or NURBS curve as DXF stores it.
struct Nurbs {
  int degree = 3;
  std::vector<double> knots;
  std::vector<platform::Point3d> points;
  std::vector<double> weights;  // empty, or one per control point
};
// Adds a dense evaluation of the curve (de Boor). When the data do not make a valid curve (too few knots,
// decreasing knots, an odd degree), the control points are added instead: the curve stays in their hull.
void addNurbs(BoxSink& sink, const Nurbs& curve);

// ---- reading groups in order ----

// A stored number as an int within [lo, hi] (lo for NaN): counts and degrees from damaged files stay usable.
int clampedInt(double v, int lo, int hi);
// The numeric value of a group whatever its stored type.
double numberOf(const platform::StoredTag& t);
// The point whose x is group i (y and z from the next groups when their codes follow, else 0); `next` is set to
// the group after the point.
platform::Point3d pointAt(const Groups& g, std::uint32_t i, std::uint32_t* next = nullptr);
// The range [begin, end) of the groups that follow the subclass marker (100) `subclass` up to the next marker;
// the whole record when the marker is absent (R12 records have no markers).
struct GroupRange {
  std::uint32_t begin = 0, end = 0;
};
GroupRange subclassRange(const Groups& g, std::string_view subclass);

// ---- the per-type entry points; each adds what it finds to the sink and returns whether it found geometry ----

// State of one extents computation: blocks being walked (cycle guard and nesting depth) and the entities
// walked, against the computation's share of the work; the drawing's own work lives in data.extentsWork.
struct Context {
  const platform::DatabaseData& data;
  std::vector<std::uint32_t> blockStack;
  std::size_t visits = 0;
};

// Any entity: dispatches on its class.
bool addEntity(Context& ctx, std::uint32_t index, BoxSink& sink);

// Curves (dxf_extents_curves.cpp).
bool addArcEntity(const Groups& g, BoxSink& sink, bool isCircle);
bool addEllipse(const Groups& g, BoxSink& sink);
bool addSpline(const Groups& g, BoxSink& sink);
bool addLwPolyline(const Groups& g, BoxSink& sink);
bool addPolyline(const platform::DatabaseData& data, std::uint32_t index, BoxSink& sink);

// Texts (dxf_extents_text.cpp).
bool addText(const Groups& g, BoxSink& sink, platform::DbClass cls);
bool addMText(const Groups& g, BoxSink& sink);
bool addTolerance(const Groups& g, BoxSink& sink);
bool addMLeader(const Groups& g, BoxSink& sink);
// What a multileader shows, read from its context data.
struct MLeaderShape {
  // The lines to draw: each leader line's vertices on to its leader's landing point, and the dog-legs.
  std::vector<std::vector<platform::Point3d>> lines;
  // Every point that frames it: the content base point, the text and block locations, the leaders' plane origin,
  // the landing points, the leader vertices and the ends of breaks.
  std::vector<platform::Point3d> frame;
  bool hasText = false;
  platform::Point3d textLocation;
  platform::Vector3d textDirection{1, 0, 0};
  platform::Vector3d textNormal{0, 0, 1};
  double textHeight = 0.0, textWidth = 0.0;
  int attachment = 1;  // 1 to 9 as multiline text's
  std::string content;  // multiline text content, formatting codes and all
};
MLeaderShape readMLeader(const Groups& g);
// The estimated width of a one-line text in units of its height, formatting codes removed.
double estimateTextWidth(std::string_view text);
// What a one-line text shows: its %% codes resolved (degree, diameter, plus-minus symbols).
std::string plainText(std::string_view text);
// What multi-line text content shows: formatting codes removed, paragraphs ended by '\n', a stacked fraction as
// "top/bottom".
std::string plainMText(std::string_view content);

// Hatches and multi-polygons: their boundary paths (dxf_extents_hatch.cpp).
bool addHatch(const Groups& g, BoxSink& sink, bool isMPolygon);

// Proxy graphics of custom and proxy entities (dxf_extents_proxy.cpp).
bool addProxyGraphics(const Groups& g, BoxSink& sink);

// Modeler geometry: what the modeler data of a solid, region, body or surface show (dxf_extents_acis.cpp):
// points, and the boxes of the ellipses, spheres and tori they use.
bool addModelerGeometry(const platform::DatabaseData& data, std::uint32_t index, BoxSink& sink);

}  // namespace headless::extents
