// The host's class tree of drawing entities, as far as the system tests classes (isKindOf).
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

// X-macro: class, parent class, the host's class name. Parents come before their children.
#define VK_DB_CLASSES(X)                                                   \
  X(Entity, Entity, "AcDbEntity")                                          \
  X(Curve, Entity, "AcDbCurve")                                            \
  X(Line, Curve, "AcDbLine")                                               \
  X(Arc, Curve, "AcDbArc")                                                 \
  X(Circle, Curve, "AcDbCircle")                                           \
  X(Ellipse, Curve, "AcDbEllipse")                                         \
  X(Spline, Curve, "AcDbSpline")                                           \
  X(Helix, Spline, "AcDbHelix")                                            \
  X(Polyline, Curve, "AcDbPolyline")                                       \
  X(Polyline2d, Curve, "AcDb2dPolyline")                                   \
  X(Polyline3d, Curve, "AcDb3dPolyline")                                   \
  X(Ray, Curve, "AcDbRay")                                                 \
  X(Xline, Curve, "AcDbXline")                                             \
  X(Leader, Curve, "AcDbLeader")                                           \
  X(PolyFaceMesh, Entity, "AcDbPolyFaceMesh")                              \
  X(PolygonMesh, Entity, "AcDbPolygonMesh")                                \
  X(Vertex, Entity, "AcDbVertex")                                          \
  X(Vertex2d, Vertex, "AcDb2dVertex")                                      \
  X(Polyline3dVertex, Vertex, "AcDb3dPolylineVertex")                      \
  X(PolyFaceMeshVertex, Vertex, "AcDbPolyFaceMeshVertex")                  \
  X(FaceRecord, Vertex, "AcDbFaceRecord")                                  \
  X(PolygonMeshVertex, Vertex, "AcDbPolygonMeshVertex")                    \
  X(SequenceEnd, Entity, "AcDbSequenceEnd")                                \
  X(Point, Entity, "AcDbPoint")                                            \
  X(Text, Entity, "AcDbText")                                              \
  X(AttributeDefinition, Text, "AcDbAttributeDefinition")                  \
  X(Attribute, Text, "AcDbAttribute")                                      \
  X(MText, Entity, "AcDbMText")                                            \
  X(Dimension, Entity, "AcDbDimension")                                    \
  X(AlignedDimension, Dimension, "AcDbAlignedDimension")                   \
  X(RotatedDimension, Dimension, "AcDbRotatedDimension")                   \
  X(RadialDimension, Dimension, "AcDbRadialDimension")                     \
  X(RadialDimensionLarge, Dimension, "AcDbRadialDimensionLarge")           \
  X(DiametricDimension, Dimension, "AcDbDiametricDimension")               \
  X(ThreePointAngularDimension, Dimension, "AcDb3PointAngularDimension")   \
  X(TwoLineAngularDimension, Dimension, "AcDb2LineAngularDimension")       \
  X(ArcDimension, Dimension, "AcDbArcDimension")                           \
  X(OrdinateDimension, Dimension, "AcDbOrdinateDimension")                 \
  X(MLeader, Entity, "AcDbMLeader")                                        \
  X(Fcf, Entity, "AcDbFcf")                                                \
  X(BlockReference, Entity, "AcDbBlockReference")                          \
  X(MInsertBlock, BlockReference, "AcDbMInsertBlock")                      \
  X(Table, BlockReference, "AcDbTable")                                    \
  X(Hatch, Entity, "AcDbHatch")                                            \
  X(MPolygon, Entity, "AcDbMPolygon")                                      \
  X(Face, Entity, "AcDbFace")                                              \
  X(Solid3d, Entity, "AcDb3dSolid")                                        \
  X(Body, Entity, "AcDbBody")                                              \
  X(Region, Entity, "AcDbRegion")                                          \
  X(Surface, Entity, "AcDbSurface")                                        \
  X(ExtrudedSurface, Surface, "AcDbExtrudedSurface")                       \
  X(LoftedSurface, Surface, "AcDbLoftedSurface")                           \
  X(RevolvedSurface, Surface, "AcDbRevolvedSurface")                       \
  X(SweptSurface, Surface, "AcDbSweptSurface")                             \
  X(PlaneSurface, Surface, "AcDbPlaneSurface")                             \
  X(NurbSurface, Surface, "AcDbNurbSurface")                               \
  X(SubDMesh, Entity, "AcDbSubDMesh")                                      \
  X(Solid, Entity, "AcDbSolid")                                            \
  X(Trace, Entity, "AcDbTrace")                                            \
  X(Shape, Entity, "AcDbShape")                                            \
  X(Light, Entity, "AcDbLight")                                            \
  X(Section, Entity, "AcDbSection")                                        \
  X(Image, Entity, "AcDbImage")                                            \
  X(RasterImage, Image, "AcDbRasterImage")                                 \
  X(Wipeout, RasterImage, "AcDbWipeout")                                   \
  X(Frame, Entity, "AcDbFrame")                                            \
  X(OleFrame, Frame, "AcDbOleFrame")                                       \
  X(Ole2Frame, OleFrame, "AcDbOle2Frame")                                  \
  X(UnderlayReference, Entity, "AcDbUnderlayReference")                    \
  X(DwfReference, UnderlayReference, "AcDbDwfReference")                   \
  X(DgnReference, UnderlayReference, "AcDbDgnReference")                   \
  X(PdfReference, UnderlayReference, "AcDbPdfReference")                   \
  X(Viewport, Entity, "AcDbViewport")                                      \
  X(Mline, Entity, "AcDbMline")                                            \
  X(ProxyEntity, Entity, "AcDbProxyEntity")

enum class DbClass : std::uint8_t {
#define VK_DB_CLASS_ENUM(cls, parent, name) cls,
  VK_DB_CLASSES(VK_DB_CLASS_ENUM)
#undef VK_DB_CLASS_ENUM
};

// The parent class (Entity is its own parent).
DbClass parentClass(DbClass cls);
// True when cls is base or derives from it.
bool isKindOf(DbClass cls, DbClass base);
// The host's class name, for example "AcDbLine".
std::string_view className(DbClass cls);

}  // namespace platform
