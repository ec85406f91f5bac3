// Typed accessors of arcs, circles, ellipses, rays, construction lines, points, polylines and their vertices, splines, helices, multilines.
#pragma once

// X(accessor name, kind): see accessors.h. Points are WCS, angles radians. Lists (Points, Reals) answer
// every element at once, in the entity's order, where the host asks one index at a time.
#define VK_ACCESSORS_CURVES(X)                                                             \
  /* arcs, circles and ellipses */                                                         \
  X(center, Point)                                                                         \
  X(radius, Real)                                                                          \
  X(startAngle, Real)                                                                      \
  X(endAngle, Real)                                                                        \
  X(majorAxis, Vector)                                                                     \
  X(minorAxis, Vector)                                                                     \
  X(radiusRatio, Real)                                                                     \
  X(getArea, Real)                                                                         \
  /* rays and construction lines */                                                        \
  X(basePoint, Point)                                                                      \
  X(secondPoint, Point)                                                                    \
  X(unitDir, Vector)                                                                       \
  /* points */                                                                             \
  X(ecsRotation, Real)                                                                     \
  X(getPlane, Integer) /* the planarity getPlane reports: 0 none, 1 planar, 2 linear */    \
  /* lightweight polylines */                                                              \
  X(numVerts, Integer)                                                                     \
  X(getPoint2dAt, Points) /* OCS x and y, z 0 */                                           \
  X(getPointAt, Points)                                                                    \
  X(isClosed, Integer)                                                                     \
  X(isOnlyLines, Integer)                                                                  \
  X(hasWidth, Integer)                                                                     \
  /* 2D polylines and their vertices, 3D polyline vertices */                              \
  X(polyType, Integer)                                                                     \
  X(defaultStartWidth, Real)                                                               \
  X(defaultEndWidth, Real)                                                                 \
  X(isLinetypeGenerationOn, Integer)                                                       \
  X(startWidth, Real)                                                                      \
  X(endWidth, Real)                                                                        \
  X(bulge, Real)                                                                           \
  X(isTangentUsed, Integer)                                                                \
  X(tangent, Real)                                                                         \
  X(vertexIdentifier, Integer)                                                             \
  X(vertexType, Integer)                                                                   \
  /* splines */                                                                            \
  X(degree, Integer)                                                                       \
  X(fitTolerance, Real)                                                                    \
  X(knots, Reals)                                                                          \
  X(numControlPoints, Integer)                                                             \
  X(numFitPoints, Integer)                                                                 \
  X(controlPoints, Points)                                                                 \
  X(fitPoints, Points)                                                                     \
  /* helices */                                                                            \
  X(axisPoint, Point)                                                                      \
  X(axisVector, Vector)                                                                    \
  X(height, Real)                                                                          \
  X(baseRadius, Real)                                                                      \
  X(topRadius, Real)                                                                       \
  X(turns, Real)                                                                           \
  X(turnHeight, Real)                                                                      \
  X(turnSlope, Real)                                                                       \
  X(totalLength, Real)                                                                     \
  /* multilines */                                                                         \
  X(scale, Real)                                                                           \
  X(vertexAt, Points)
