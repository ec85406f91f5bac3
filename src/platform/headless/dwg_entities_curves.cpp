// The DWG entities of curves built from parts and of paper-space views: old-style polylines and their
// vertices, splines and helices, and viewports.
#include "platform/headless/dwg_entities.h"

#include <algorithm>
#include <cmath>

namespace headless {

namespace {

// ---- old-style polylines and their vertices ----

// Reads what follows every POLYLINE's own data: the count of objects it owns (R2004+), the common handles,
// then the handles of its vertices into context.owned (listed from R2004 on; before, the first and the
// last, the reader following the vertices' links between them) and its sequence end's.
bool readPolylineHandles(DwgObjectReader& o, DwgDecodeContext& context) {
  std::int32_t count = 2;
  context.ownedAreEnds = !o.atLeast(DwgVersion::R2004);
  if (!context.ownedAreEnds) {
    count = o.bits.readBitLong();
    // Each handle takes at least a byte of the handle stream.
    if (count < 0 || std::size_t(count) > o.handles.bitsLeft() / 8) return false;
  }
  if (o.bits.failed()) return false;
  o.readCommonHandles();
  context.owned.clear();
  for (std::int32_t i = 0; i < count && !o.handles.failed(); ++i) context.owned.push_back(o.readHandle());
  o.readHandle();  // the sequence end, found again through its owner
  return !o.failed();
}

// What every POLYLINE starts with: its subclass, the vertices-follow flag and the elevation point.
void polylineStart(DwgTagList& out, const char* subclass, double elevation) {
  out.text(100, subclass);
  out.integer(66, 1);
  out.point(10, DwgPoint3{0, 0, elevation});
}

bool decodePolyline2d(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int flags = static_cast<std::uint16_t>(b.readBitShort());
  const int curveType = b.readBitShort();
  const double startWidth = b.readBitDouble();
  const double endWidth = b.readBitDouble();
  const double t = b.readThickness();
  const double elevation = b.readBitDouble();
  const DwgPoint3 e = b.readExtrusion();
  if (!readPolylineHandles(o, context)) return false;
  polylineStart(out, "AcDb2dPolyline", elevation);
  thickness(out, t);
  out.integer(70, flags);
  if (startWidth != 0.0) out.real(40, startWidth);
  if (endWidth != 0.0) out.real(41, endWidth);
  if (curveType != 0) out.integer(75, curveType);
  extrusion(out, e);
  return true;
}

bool decodePolyline3d(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int splined = b.readRawChar();
  const int closed = b.readRawChar();
  if (!readPolylineHandles(o, context)) return false;
  const int curveType = (splined & 1) ? 5 : (splined & 2) ? 6 : 0;
  polylineStart(out, "AcDb3dPolyline", 0.0);
  out.integer(70, 8 | ((closed & 1) ? 1 : 0) | (curveType ? 4 : 0));
  if (curveType != 0) out.integer(75, curveType);
  return true;
}

bool decodePolyfaceMesh(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int vertices = b.readBitShort();
  const int faces = b.readBitShort();
  if (!readPolylineHandles(o, context)) return false;
  polylineStart(out, "AcDbPolyFaceMesh", 0.0);
  out.integer(70, 64);
  out.integer(71, vertices);
  out.integer(72, faces);
  return true;
}

bool decodePolygonMesh(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const int flags = static_cast<std::uint16_t>(b.readBitShort());
  const int curveType = b.readBitShort();
  int counts[4];  // M and N vertex counts, M and N densities
  for (int& c : counts) c = b.readBitShort();
  if (!readPolylineHandles(o, context)) return false;
  polylineStart(out, "AcDbPolygonMesh", 0.0);
  out.integer(70, flags);
  out.integer(71, counts[0]);
  out.integer(72, counts[1]);
  if (counts[2] != 0) out.integer(73, counts[2]);
  if (counts[3] != 0) out.integer(74, counts[3]);
  if (curveType != 0) out.integer(75, curveType);
  return true;
}

bool decodeVertex2d(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  DwgBitReader& b = o.bits;
  const int flags = b.readRawChar();
  const DwgPoint3 p = b.read3BitDoubles();
  double startWidth = b.readBitDouble(), endWidth = startWidth;
  // A negative start width stands for equal start and end widths.
  if (startWidth < 0.0) startWidth = endWidth = -startWidth;
  else endWidth = b.readBitDouble();
  const double bulge = b.readBitDouble();
  const std::int32_t id = o.atLeast(DwgVersion::R2010) ? b.readBitLong() : 0;
  const double tangent = b.readBitDouble();
  o.readCommonHandles();
  out.text(100, "AcDbVertex");
  out.text(100, "AcDb2dVertex");
  out.point(10, p);
  if (startWidth != 0.0) out.real(40, startWidth);
  if (endWidth != 0.0) out.real(41, endWidth);
  if (bulge != 0.0) out.real(42, bulge);
  out.integer(70, flags);
  if ((flags & 2) || tangent != 0.0) out.real(50, tangent * kDwgDegrees);
  if (id != 0) out.integer(91, id);
  return true;
}

// The vertices of 3D polylines, polygon meshes and polyface meshes: flags and a point.
bool decodePointVertex(DwgObjectReader& o, DwgTagList& out, const char* subclass) {
  const int flags = o.bits.readRawChar();
  const DwgPoint3 p = o.bits.read3BitDoubles();
  o.readCommonHandles();
  out.text(100, "AcDbVertex");
  out.text(100, subclass);
  out.point(10, p);
  out.integer(70, flags);
  return true;
}
bool decodeVertex3d(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  return decodePointVertex(o, out, "AcDb3dPolylineVertex");
}
bool decodeMeshVertex(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  return decodePointVertex(o, out, "AcDbPolygonMeshVertex");
}
bool decodePolyfaceVertex(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  return decodePointVertex(o, out, "AcDbPolyFaceMeshVertex");
}

// A polyface mesh's face: up to four 1-based vertex indices, negative for an invisible edge.
bool decodeFaceRecord(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext&) {
  int corners[4];
  for (int& c : corners) c = o.bits.readBitShort();
  o.readCommonHandles();
  out.text(100, "AcDbFaceRecord");
  out.point(10, DwgPoint3{});
  out.integer(70, 128);
  // Writers give the first three always (0 for none), the fourth when there is one.
  for (int i = 0; i < 4; ++i)
    if (i < 3 || corners[i] != 0) out.integer(71 + i, corners[i]);
  return true;
}

// ---- splines and helices ----

bool isZero(const DwgPoint3& p) { return p.x == 0.0 && p.y == 0.0 && p.z == 0.0; }
DwgPoint3 minus(const DwgPoint3& a, const DwgPoint3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
DwgPoint3 cross(const DwgPoint3& a, const DwgPoint3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double dot(const DwgPoint3& a, const DwgPoint3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
double length(const DwgPoint3& a) { return std::sqrt(dot(a, a)); }

// The plane the points lie in, as DXF gives it (flag 8 and the normal 210; flag 16 as well when they lie
// on a line). A DWG spline does not store it.
struct SplinePlane {
  bool planar = false, linear = false;
  DwgPoint3 normal{0, 0, 1};
};
SplinePlane planeOf(std::span<const DwgPoint3> points) {
  SplinePlane plane;
  if (points.empty()) return plane;
  double size = 0;
  for (const DwgPoint3& p : points) size = std::max(size, length(minus(p, points[0])));
  const double tolerance = 1e-10 * std::max(1.0, size);
  // The first point away from the first, then the one farthest from the line through both.
  std::size_t far = 0;
  for (std::size_t i = 1; i < points.size() && !far; ++i)
    if (length(minus(points[i], points[0])) > tolerance) far = i;
  if (!far) return plane;
  const DwgPoint3 axis = minus(points[far], points[0]);
  DwgPoint3 normal;
  for (const DwgPoint3& p : points) {
    const DwgPoint3 n = cross(axis, minus(p, points[0]));
    if (length(n) > length(normal)) normal = n;
  }
  if (length(normal) <= tolerance * length(axis)) {
    plane.planar = plane.linear = true;
    return plane;
  }
  const double n = length(normal);
  normal = {normal.x / n, normal.y / n, normal.z / n};
  for (const DwgPoint3& p : points)
    if (std::abs(dot(normal, minus(p, points[0]))) > tolerance) return plane;
  // The normal points the way of +Z (or +Y, +X when it lies across those).
  const double sense = normal.z != 0.0 ? normal.z : normal.y != 0.0 ? normal.y : normal.x;
  if (sense < 0) normal = {-normal.x, -normal.y, -normal.z};
  plane.planar = true;
  plane.normal = {normal.x + 0.0, normal.y + 0.0, normal.z + 0.0};  // no negative zeros
  return plane;
}

}  // namespace

// The knots are the fit points' parameters (chord lengths, their square roots or steps of 1), clamped at
// the ends. The curve passes through the fit points; at an end with a tangent the control point next to
// it lies along that tangent, at an end without one the curve does not bend (its second derivative is 0).
// The control points between the ends solve a tridiagonal system, one row a control point from the
// second to the last but one.
bool dwgFitCubicSpline(std::span<const DwgPoint3> q, const DwgPoint3& t0, const DwgPoint3& t1, int knotParameter,
                       std::vector<DwgPoint3>& p, std::vector<double>& knots, std::vector<double>& factors) {
  if (q.size() < 2) return false;
  const std::size_t n = q.size() - 1;
  knots.assign(n + 7, 0.0);
  double u = 0;
  for (std::size_t k = 1; k <= n; ++k) {
    const double chord = length(minus(q[k], q[k - 1]));
    if (chord == 0.0) return false;
    u += knotParameter == 2 ? 1.0 : knotParameter == 1 ? std::sqrt(chord) : chord;
    if (k < n) knots[k + 3] = u;
  }
  for (std::size_t k = n + 3; k < n + 7; ++k) knots[k] = u;
  const auto along = [](const DwgPoint3& a, const DwgPoint3& t, double f) {
    return DwgPoint3{a.x + t.x * f, a.y + t.y * f, a.z + t.z * f};
  };
  p.assign(n + 3, DwgPoint3{});
  p[0] = q[0];
  p[n + 2] = q[n];
  // Row r (1 to n+1) reads sub P[r-1] + diagonal P[r] + super P[r+1] = rhs; P[0] and P[n+2] are known and
  // go to the right-hand side. Elimination keeps each row's super factor; P[r] holds its right-hand side.
  factors.assign(n + 2, 0.0);
  for (std::size_t r = 1; r <= n + 1; ++r) {
    double sub = 0, diagonal = 1, super = 0;
    DwgPoint3 rhs;
    if (r == 1 && !isZero(t0)) {
      rhs = along(q[0], t0, knots[4] / 3.0);
    } else if (r == n + 1 && !isZero(t1)) {
      rhs = along(q[n], t1, -(knots[n + 3] - knots[n + 2]) / 3.0);
    } else if (r == 1) {
      // No bend at the start: (P[2] - P[1]) / (U[5] - U[2]) = (P[1] - P[0]) / (U[4] - U[1]).
      const double before = 1.0 / knots[4], after = 1.0 / knots[5];
      diagonal = -(before + after);
      super = after;
      rhs = along(DwgPoint3{}, p[0], -before);
    } else if (r == n + 1) {
      const double before = 1.0 / (knots[n + 4] - knots[n + 1]), after = 1.0 / (knots[n + 5] - knots[n + 2]);
      sub = before;
      diagonal = -(before + after);
      rhs = along(DwgPoint3{}, p[n + 2], -after);
    } else {
      // Fit point r-1 sits on knot r+2, where three cubic basis functions are not 0.
      const std::size_t span = r + 2;
      double basis[4] = {1, 0, 0, 0}, left[4] = {}, right[4] = {};
      for (int j = 1; j <= 3; ++j) {
        left[j] = knots[span] - knots[span + 1 - j];
        right[j] = knots[span + j] - knots[span];
        double saved = 0;
        for (int i = 0; i < j; ++i) {
          const double temp = basis[i] / (right[i + 1] + left[j - i]);
          basis[i] = saved + right[i + 1] * temp;
          saved = left[j - i] * temp;
        }
        basis[j] = saved;
      }
      sub = basis[0];
      diagonal = basis[1];
      super = basis[2];
      rhs = q[r - 1];
    }
    const double pivot = diagonal - sub * factors[r - 1];
    if (!std::isfinite(pivot) || std::abs(pivot) < 1e-12) return false;
    rhs = along(rhs, p[r - 1], -sub);
    factors[r] = super / pivot;
    p[r] = DwgPoint3{rhs.x / pivot, rhs.y / pivot, rhs.z / pivot};
  }
  for (std::size_t r = n; r >= 1; --r) p[r] = along(p[r], p[r + 1], -factors[r]);
  return true;
}

namespace {

// Before R2013 a spline made by a later release keeps what those add in extended data of the application
// ACAD_SPLINE_DATA: pairs of a key and a value, the knot parameter's key 102. DXF writers take them in as
// a spline fitted by its knot parameter, and leave the extended data out. True when the spline has them.
bool readNewerSplineData(DwgObjectReader& o, DwgDecodeContext& context, std::int32_t& knotParameter) {
  constexpr std::string_view kApplication = "ACAD_SPLINE_DATA";
  constexpr int kKnotParameter = 102;
  if (o.common.eedEnd <= o.common.eedBegin + 16) return false;
  DwgTagList& data = context.extendedData;
  data.truncate(0);
  if (!appendDwgExtendedData(o, data, context.names, context.text)) return false;
  bool found = false;
  for (std::size_t i = 0; i < data.size(); ++i) {
    if (data[i].code == 1001) {
      if (found) break;
      found = data.textOf(data[i]) == kApplication;
    } else if (found && data[i].code == 1070 && data[i].integer == kKnotParameter && i + 1 < data.size() &&
               data[i + 1].code == 1070) {
      knotParameter = static_cast<std::int32_t>(data[i + 1].integer);
    }
  }
  if (found) context.extendedDataTakenIn = kApplication;
  return found;
}

// Reads a spline's data (SPLINE, and HELIX before its own fields) and appends its AcDbSpline groups.
bool readSpline(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  std::int32_t scenario = b.readBitLong();
  std::int32_t splineFlags = 0, knotParameter = 0;
  if (o.atLeast(DwgVersion::R2013)) {
    splineFlags = b.readBitLong();
    knotParameter = b.readBitLong();
    if (splineFlags & 1) scenario = 2;
    if (knotParameter == 15) scenario = 1;
  }
  bool newerData = o.atLeast(DwgVersion::R2013);
  if (!newerData && readNewerSplineData(o, context, knotParameter)) {
    newerData = true;
    splineFlags = 1 | 8;  // fitted, by its knot parameter
  }
  const std::int32_t degree = b.readBitLong();
  bool rational = false, closed = false, periodic = false, weighted = false;
  double knotTolerance = 0, controlTolerance = 0, fitTolerance = 0;
  DwgPoint3 startTangent, endTangent;
  std::int32_t knots = 0, controls = 0, fits = 0;
  if (scenario == 2) {
    fitTolerance = b.readBitDouble();
    startTangent = b.read3BitDoubles();
    endTangent = b.read3BitDoubles();
    fits = b.readBitLong();
  } else if (scenario == 1) {
    rational = b.readBit();
    closed = b.readBit();
    periodic = b.readBit();
    knotTolerance = b.readBitDouble();
    controlTolerance = b.readBitDouble();
    knots = b.readBitLong();
    controls = b.readBitLong();
    weighted = b.readBit();
  } else {
    return false;
  }
  // A knot takes at least 2 bits, a control point 6 (and 2 more with a weight), a fit point 6.
  const std::size_t left = b.bitsLeft();
  if (b.failed() || knots < 0 || controls < 0 || fits < 0 || std::size_t(knots) > left / 2 ||
      std::size_t(controls) > left / 6 || std::size_t(fits) > left / 6)
    return false;
  std::vector<DwgPoint3>& points = context.points;  // control points, then fit points
  std::vector<double>& values = context.knots;       // knots, then weights
  points.resize(static_cast<std::size_t>(controls + fits));
  values.resize(static_cast<std::size_t>(knots + (weighted ? controls : 0)));
  for (std::int32_t i = 0; i < knots; ++i) values[i] = b.readBitDouble();
  for (std::int32_t i = 0; i < controls; ++i) {
    points[i] = b.read3BitDoubles();
    if (weighted) values[knots + i] = b.readBitDouble();
  }
  for (std::int32_t i = 0; i < fits; ++i) points[controls + i] = b.read3BitDoubles();
  if (b.failed()) return false;
  // A spline stored by its fit data alone gets the control points and knots DXF gives it too, where they
  // follow from the data: a cubic through the points, not merely near them.
  std::span<const DwgPoint3> fitPoints(points.data() + controls, static_cast<std::size_t>(fits));
  std::span<const DwgPoint3> controlPoints(points.data(), static_cast<std::size_t>(controls));
  std::span<const double> knotValues(values.data(), static_cast<std::size_t>(knots));
  if (scenario == 2) {
    double extent = 0;
    for (const DwgPoint3& p : fitPoints) extent = std::max(extent, length(minus(p, fitPoints[0])));
    if (degree == 3 && fits >= 2 && fitTolerance <= 1e-9 * std::max(1.0, extent) &&
        dwgFitCubicSpline(fitPoints, startTangent, endTangent, knotParameter, context.controlPoints, context.fitKnots,
                         context.factors)) {
      controlPoints = context.controlPoints;
      knotValues = context.fitKnots;
    }
    // What DXF writers give a spline stored by its fit data.
    knotTolerance = 1e-9;
    controlTolerance = 1e-10;
  }
  const SplinePlane plane = planeOf(controlPoints.empty() ? fitPoints : controlPoints);
  out.text(100, "AcDbSpline");
  if (plane.planar) out.point(210, plane.normal);
  // The fit method (1024) and the knot parameter (32 chords, 64 their square roots, 128 uniform) come
  // from R2013 on (or from their extended data); a spline stored by fit data before then was fitted by
  // chords.
  int flags = (closed ? 1 : 0) | (periodic ? 2 : 0) | (rational ? 4 : 0) | (plane.planar ? 8 : 0) |
              (plane.linear ? 16 : 0);
  if (newerData) {
    if (splineFlags & 4) flags |= 1;
    if (splineFlags & 1) flags |= 1024;
    if ((splineFlags & 8) && knotParameter >= 0 && knotParameter <= 2) flags |= 32 << knotParameter;
  } else if (scenario == 2) {
    flags |= 1024 | 32;
  }
  out.integer(70, flags);
  out.integer(71, degree);
  out.integer(72, static_cast<long long>(knotValues.size()));
  out.integer(73, static_cast<long long>(controlPoints.size()));
  out.integer(74, fits);
  out.real(42, knotTolerance);
  out.real(43, controlTolerance);
  if (scenario == 2) out.real(44, fitTolerance);
  if (!isZero(startTangent)) out.point(12, startTangent);
  if (!isZero(endTangent)) out.point(13, endTangent);
  for (double k : knotValues) out.real(40, k);
  if (weighted)
    for (std::int32_t i = 0; i < controls; ++i) out.real(41, values[knots + i]);
  for (const DwgPoint3& p : controlPoints) out.point(10, p);
  for (const DwgPoint3& p : fitPoints) out.point(11, p);
  return true;
}

bool decodeSpline(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  if (!readSpline(o, out, context)) return false;
  o.readCommonHandles();
  return true;
}

bool decodeHelix(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  if (!readSpline(o, out, context)) return false;
  const std::int32_t major = b.readBitLong();
  const std::int32_t maintenance = b.readBitLong();
  const DwgPoint3 axisBase = b.read3BitDoubles();
  const DwgPoint3 start = b.read3BitDoubles();
  const DwgPoint3 axis = b.read3BitDoubles();
  const double radius = b.readBitDouble();
  const double turns = b.readBitDouble();
  const double turnHeight = b.readBitDouble();
  const bool handedness = b.readBit();
  const int constraint = b.readRawChar();
  o.readCommonHandles();
  out.text(100, "AcDbHelix");
  out.integer(90, major);
  out.integer(91, maintenance);
  out.point(10, axisBase);
  out.point(11, start);
  out.point(12, axis);
  out.real(40, radius);
  out.real(41, turns);
  out.real(42, turnHeight);
  out.integer(290, handedness ? 1 : 0);
  out.integer(280, constraint);
  return true;
}

// ---- viewports ----

// The fields of a viewport from R2000 on, in the order they are stored.
struct ViewportView {
  DwgPoint3 target, direction;
  double twist = 0, viewHeight = 0, lens = 0, frontClip = 0, backClip = 0, snapAngle = 0;
  DwgPoint2 viewCenter, snapBase, snapSpacing, gridSpacing;
  int circleZoom = 0, gridMajor = 0;
  std::int32_t frozenLayers = 0, status = 0;
  int renderMode = 0;
  bool ucsAtOrigin = false, ucsPerViewport = false;
  DwgPoint3 ucsOrigin, ucsX, ucsY;
  double ucsElevation = 0;
  int orthoType = 0, shadePlot = 0;
  bool defaultLights = false;
  int lightingType = 0;
  double brightness = 0, contrast = 0;
  DwgColor ambient;
};

void readViewportView(DwgObjectReader& o, ViewportView& v, std::string& styleSheet) {
  DwgBitReader& b = o.bits;
  v.target = b.read3BitDoubles();
  v.direction = b.read3BitDoubles();
  v.twist = b.readBitDouble();
  v.viewHeight = b.readBitDouble();
  v.lens = b.readBitDouble();
  v.frontClip = b.readBitDouble();
  v.backClip = b.readBitDouble();
  v.snapAngle = b.readBitDouble();
  v.viewCenter = b.readRaw2Doubles();
  v.snapBase = b.readRaw2Doubles();
  v.snapSpacing = b.readRaw2Doubles();
  v.gridSpacing = b.readRaw2Doubles();
  v.circleZoom = b.readBitShort();
  if (o.atLeast(DwgVersion::R2007)) v.gridMajor = b.readBitShort();
  v.frozenLayers = b.readBitLong();
  v.status = b.readBitLong();
  o.readText(styleSheet);
  v.renderMode = b.readRawChar();
  v.ucsAtOrigin = b.readBit();
  v.ucsPerViewport = b.readBit();
  v.ucsOrigin = b.read3BitDoubles();
  v.ucsX = b.read3BitDoubles();
  v.ucsY = b.read3BitDoubles();
  v.ucsElevation = b.readBitDouble();
  v.orthoType = b.readBitShort();
  if (o.atLeast(DwgVersion::R2004)) v.shadePlot = b.readBitShort();
  if (o.atLeast(DwgVersion::R2007)) {
    v.defaultLights = b.readBit();
    v.lightingType = b.readRawChar();
    v.brightness = b.readBitDouble();
    v.contrast = b.readBitDouble();
    v.ambient = b.readColor();
    if (v.ambient.hasName()) o.skipText();
    if (v.ambient.hasBookName()) o.skipText();
  }
}

// The viewport's status (68) and number (69) are the DXF writer's: 0 here, numbered by the reader for the
// viewports of the current layout.
bool decodeViewport(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context) {
  DwgBitReader& b = o.bits;
  const DwgPoint3 center = b.read3BitDoubles();
  const double width = b.readBitDouble();
  const double height = b.readBitDouble();
  const bool full = o.atLeast(DwgVersion::R2000);
  ViewportView v;
  if (full) readViewportView(o, v, context.text);
  // A frozen layer's handle takes at least a byte of the handle stream.
  if (b.failed() || v.frozenLayers < 0 || std::size_t(v.frozenLayers) > o.handles.bitsLeft() / 8) return false;
  o.readCommonHandles();
  out.text(100, "AcDbViewport");
  out.point(10, center);
  out.real(40, width);
  out.real(41, height);
  out.integer(68, 0);
  out.integer(69, 0);
  if (!full) {
    o.readHandle();  // the viewport entity header
    return true;
  }
  out.real(12, v.viewCenter.x);
  out.real(22, v.viewCenter.y);
  out.real(13, v.snapBase.x);
  out.real(23, v.snapBase.y);
  out.real(14, v.snapSpacing.x);
  out.real(24, v.snapSpacing.y);
  out.real(15, v.gridSpacing.x);
  out.real(25, v.gridSpacing.y);
  out.point(16, v.direction);
  out.point(17, v.target);
  out.real(42, v.lens);
  out.real(43, v.frontClip);
  out.real(44, v.backClip);
  out.real(45, v.viewHeight);
  out.real(50, v.snapAngle * kDwgDegrees);
  out.real(51, v.twist * kDwgDegrees);
  out.integer(72, v.circleZoom);
  for (std::int32_t i = 0; i < v.frozenLayers && !o.handles.failed(); ++i) out.handle(331, o.readHandle());
  out.integer(90, v.status);
  const std::uint64_t clip = o.readHandle();
  if (clip) out.handle(340, clip);
  out.text(1, context.text);
  out.integer(281, v.renderMode);
  out.integer(71, v.ucsPerViewport ? 1 : 0);
  out.integer(74, v.ucsAtOrigin ? 1 : 0);
  out.point(110, v.ucsOrigin);
  out.point(111, v.ucsX);
  out.point(112, v.ucsY);
  if (!o.atLeast(DwgVersion::R2004)) o.readHandle();  // the viewport entity header
  const std::uint64_t namedUcs = o.readHandle();
  const std::uint64_t baseUcs = o.readHandle();
  if (namedUcs) out.handle(345, namedUcs);
  if (baseUcs) out.handle(346, baseUcs);
  out.integer(79, v.orthoType);
  out.real(146, v.ucsElevation);
  if (o.atLeast(DwgVersion::R2004)) out.integer(170, v.shadePlot);
  if (!o.atLeast(DwgVersion::R2007)) return true;
  out.integer(61, v.gridMajor);
  const std::uint64_t background = o.readHandle();
  const std::uint64_t visualStyle = o.readHandle();
  const std::uint64_t shadePlot = o.readHandle();
  const std::uint64_t sun = o.readHandle();
  if (background) out.handle(332, background);
  if (shadePlot) out.handle(333, shadePlot);
  if (visualStyle) out.handle(348, visualStyle);
  out.integer(292, v.defaultLights ? 1 : 0);
  out.integer(282, v.lightingType);
  out.real(141, v.brightness);
  out.real(142, v.contrast);
  out.integer(63, v.ambient.index);
  if ((v.ambient.rgb >> 24) == 0xC2) out.integer(421, v.ambient.rgb & 0xFFFFFF);
  if (sun) out.handle(361, sun);
  return true;
}

constexpr DwgEntityEntry kTypes[] = {
    {10, {"VERTEX", decodeVertex2d}},       {11, {"VERTEX", decodeVertex3d}},
    {12, {"VERTEX", decodeMeshVertex}},     {13, {"VERTEX", decodePolyfaceVertex}},
    {14, {"VERTEX", decodeFaceRecord}},     {15, {"POLYLINE", decodePolyline2d}},
    {16, {"POLYLINE", decodePolyline3d}},   {29, {"POLYLINE", decodePolyfaceMesh}},
    {30, {"POLYLINE", decodePolygonMesh}},  {34, {"VIEWPORT", decodeViewport}},
    {36, {"SPLINE", decodeSpline}},         {0, {"HELIX", decodeHelix}},
};

}  // namespace

DwgEntityFamily dwgCurveEntities() { return kTypes; }

}  // namespace headless
