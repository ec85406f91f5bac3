// The factory table and its last rule.
#include "comparers/ComparerFactory.h"

#include "comparers/CVkAcDb2dPolyline.h"
#include "comparers/CVkAcDb2dVertex.h"
#include "comparers/CVkAcDb3dPolylineVertex.h"
#include "comparers/CVkAcDbArc.h"
#include "comparers/CVkAcDbCircle.h"
#include "comparers/CVkAcDbEllipse.h"
#include "comparers/CVkAcDbHelix.h"
#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkAcDbMline.h"
#include "comparers/CVkAcDbPoint.h"
#include "comparers/CVkAcDbPolyline.h"
#include "comparers/CVkAcDbRay.h"
#include "comparers/CVkAcDbSpline.h"
#include "comparers/CVkAcDbXline.h"
#include "comparers/CVkCustomEntity.h"

namespace {

using platform::DbClass;

template <typename T>
std::unique_ptr<CVkAcadEntityBase> make() {
  return std::make_unique<T>();
}

// The order is deliberate and kept with its consequences: every dimension is caught by row 8, an OLE2
// frame by row 23 and a wipeout by row 17; attributes come before text, the helix before the spline and
// the table before the block reference.
constexpr FactoryRow kRows[] = {
    {1, DbClass::Face, "CVkAcDbFace", FactoryRule::Class, nullptr},
    {2, DbClass::Solid3d, "CVkAcDb3dSolid", FactoryRule::Class, nullptr},
    {3, DbClass::Arc, "CVkAcDbArc", FactoryRule::Class, make<CVkAcDbArc>},
    {4, DbClass::AttributeDefinition, "CVkAcDbAttributeDefinition", FactoryRule::Class, nullptr},
    {5, DbClass::Attribute, "CVkAcDbAttribute", FactoryRule::Class, nullptr},
    {6, DbClass::Body, "CVkAcDbBody", FactoryRule::Class, nullptr},
    {7, DbClass::Circle, "CVkAcDbCircle", FactoryRule::Class, make<CVkAcDbCircle>},
    {8, DbClass::Dimension, "CVkAcDbDimension", FactoryRule::Class, nullptr},
    {9, DbClass::AlignedDimension, "CVkAcDbAlignedDimension", FactoryRule::Class, nullptr},
    {10, DbClass::RadialDimension, "CVkAcDbRadialDimension", FactoryRule::Class, nullptr},
    {11, DbClass::DiametricDimension, "CVkAcDbDiametricDimension", FactoryRule::Class, nullptr},
    {12, DbClass::ThreePointAngularDimension, "CVkAcDb3PointAngularDimension", FactoryRule::Class, nullptr},
    {13, DbClass::OrdinateDimension, "CVkAcDbOrdinateDimension", FactoryRule::Class, nullptr},
    {14, DbClass::Ellipse, "CVkAcDbEllipse", FactoryRule::Class, make<CVkAcDbEllipse>},
    {15, DbClass::Hatch, "CVkAcDbHatch", FactoryRule::Class, nullptr},
    {16, DbClass::Helix, "CVkAcDbHelix", FactoryRule::Class, make<CVkAcDbHelix>},
    {17, DbClass::RasterImage, "CVkAcDbRasterImage", FactoryRule::Class, nullptr},
    {18, DbClass::Leader, "CVkAcDbLeader", FactoryRule::Class, nullptr},
    {19, DbClass::Line, "CVkAcDbLine", FactoryRule::Class, make<CVkAcDbLine>},
    {20, DbClass::Polyline, "CVkAcDbPolyline", FactoryRule::Class, make<CVkAcDbPolyline>},
    {21, DbClass::Mline, "CVkAcDbMline", FactoryRule::Class, make<CVkAcDbMline>},
    {22, DbClass::MText, "CVkAcDbMText", FactoryRule::Class, nullptr},
    {23, DbClass::OleFrame, "CVkAcDbOleFrame", FactoryRule::Class, nullptr},
    {24, DbClass::Ole2Frame, "CVkAcDbOle2Frame", FactoryRule::Class, nullptr},
    {25, DbClass::Point, "CVkAcDbPoint", FactoryRule::Class, make<CVkAcDbPoint>},
    {26, DbClass::Polyline2d, "CVkAcDb2dPolyline", FactoryRule::Class, make<CVkAcDb2dPolyline>},
    {27, DbClass::Ray, "CVkAcDbRay", FactoryRule::Class, make<CVkAcDbRay>},
    {28, DbClass::Section, "CVkAcDbSection", FactoryRule::Class, nullptr},
    {29, DbClass::Shape, "CVkAcDbShape", FactoryRule::Class, nullptr},
    {30, DbClass::Spline, "CVkAcDbSpline", FactoryRule::Class, make<CVkAcDbSpline>},
    {31, DbClass::SubDMesh, "CVkAcDbSubDMesh", FactoryRule::Class, nullptr},
    {32, DbClass::Surface, "CVkAcDbExtrudedSurface, CVkAcDbLoftedSurface, CVkAcDbRevolvedSurface, CVkAcDbSweptSurface, "
                           "CVkAcDbPlaneSurface", FactoryRule::Surface, nullptr},
    {33, DbClass::Text, "CVkAcDbText", FactoryRule::Class, nullptr},
    {34, DbClass::Fcf, "CVkAcDbFcf", FactoryRule::Class, nullptr},
    {35, DbClass::UnderlayReference, "CVkAcDbUnderlayReference", FactoryRule::Class, nullptr},
    {36, DbClass::Vertex2d, "CVkAcDb2dVertex", FactoryRule::Class, make<CVkAcDb2dVertex>},
    {37, DbClass::Polyline3dVertex, "CVkAcDb3dPolylineVertex", FactoryRule::Class, make<CVkAcDb3dPolylineVertex>},
    {38, DbClass::Viewport, "CVkAcDbViewport", FactoryRule::Class, nullptr},
    {39, DbClass::Xline, "CVkAcDbXline", FactoryRule::Class, make<CVkAcDbXline>},
    {40, DbClass::Table, "CVkAcDbTable", FactoryRule::Class, nullptr},
    {41, DbClass::BlockReference, "CVkAcDbBlockReference", FactoryRule::BlockReference, nullptr},
};

// The last rule, by DXF name.
std::unique_ptr<CVkAcadEntityBase> byDxfName(std::string_view) { return std::make_unique<CVkCustomEntity>(); }

}  // namespace

std::span<const FactoryRow> factoryRows() { return kRows; }

std::unique_ptr<CVkAcadEntityBase> createComparer(const platform::Entity& entity, const platform::Matrix3d& transform,
                                                  const void* readerContext, const CLayerContext* layerContext,
                                                  const platform::Matrix3d* drawingTransform,
                                                  const CompareOptions* options) {
  std::unique_ptr<CVkAcadEntityBase> comparer;
  for (const FactoryRow& row : kRows) {
    if (!row.make || !entity.isKindOf(row.cls)) continue;
    comparer = row.make();
    break;
  }
  if (!comparer) comparer = byDxfName(entity.dxfName());
  comparer->setContexts(readerContext, layerContext, drawingTransform, options);
  comparer->load(entity, transform);
  return comparer;
}
