// The factory table and its last rule.
#include "comparers/ComparerFactory.h"

#include "comparers/CVkAcDb3PointAngularDimension.h"
#include "comparers/CVkAcDbAlignedDimension.h"
#include "comparers/CVkAcDbAttribute.h"
#include "comparers/CVkAcDbAttributeDefinition.h"
#include "comparers/CVkAcDbDiametricDimension.h"
#include "comparers/CVkAcDbDimension.h"
#include "comparers/CVkAcDbFcf.h"
#include "comparers/CVkAcDbLeader.h"
#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkAcDbMText.h"
#include "comparers/CVkAcDbOrdinateDimension.h"
#include "comparers/CVkAcDbRadialDimension.h"
#include "comparers/CVkAcDbTable.h"
#include "comparers/CVkAcDbText.h"
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
    {3, DbClass::Arc, "CVkAcDbArc", FactoryRule::Class, nullptr},
    {4, DbClass::AttributeDefinition, "CVkAcDbAttributeDefinition", FactoryRule::Class,
     make<CVkAcDbAttributeDefinition>},
    {5, DbClass::Attribute, "CVkAcDbAttribute", FactoryRule::Class, make<CVkAcDbAttribute>},
    {6, DbClass::Body, "CVkAcDbBody", FactoryRule::Class, nullptr},
    {7, DbClass::Circle, "CVkAcDbCircle", FactoryRule::Class, nullptr},
    {8, DbClass::Dimension, "CVkAcDbDimension", FactoryRule::Class, make<CVkAcDbDimension>},
    {9, DbClass::AlignedDimension, "CVkAcDbAlignedDimension", FactoryRule::Class, make<CVkAcDbAlignedDimension>},
    {10, DbClass::RadialDimension, "CVkAcDbRadialDimension", FactoryRule::Class, make<CVkAcDbRadialDimension>},
    {11, DbClass::DiametricDimension, "CVkAcDbDiametricDimension", FactoryRule::Class, make<CVkAcDbDiametricDimension>},
    {12, DbClass::ThreePointAngularDimension, "CVkAcDb3PointAngularDimension", FactoryRule::Class,
     make<CVkAcDb3PointAngularDimension>},
    {13, DbClass::OrdinateDimension, "CVkAcDbOrdinateDimension", FactoryRule::Class, make<CVkAcDbOrdinateDimension>},
    {14, DbClass::Ellipse, "CVkAcDbEllipse", FactoryRule::Class, nullptr},
    {15, DbClass::Hatch, "CVkAcDbHatch", FactoryRule::Class, nullptr},
    {16, DbClass::Helix, "CVkAcDbHelix", FactoryRule::Class, nullptr},
    {17, DbClass::RasterImage, "CVkAcDbRasterImage", FactoryRule::Class, nullptr},
    {18, DbClass::Leader, "CVkAcDbLeader", FactoryRule::Class, make<CVkAcDbLeader>},
    {19, DbClass::Line, "CVkAcDbLine", FactoryRule::Class, make<CVkAcDbLine>},
    {20, DbClass::Polyline, "CVkAcDbPolyline", FactoryRule::Class, nullptr},
    {21, DbClass::Mline, "CVkAcDbMline", FactoryRule::Class, nullptr},
    {22, DbClass::MText, "CVkAcDbMText", FactoryRule::Class, make<CVkAcDbMText>},
    {23, DbClass::OleFrame, "CVkAcDbOleFrame", FactoryRule::Class, nullptr},
    {24, DbClass::Ole2Frame, "CVkAcDbOle2Frame", FactoryRule::Class, nullptr},
    {25, DbClass::Point, "CVkAcDbPoint", FactoryRule::Class, nullptr},
    {26, DbClass::Polyline2d, "CVkAcDb2dPolyline", FactoryRule::Class, nullptr},
    {27, DbClass::Ray, "CVkAcDbRay", FactoryRule::Class, nullptr},
    {28, DbClass::Section, "CVkAcDbSection", FactoryRule::Class, nullptr},
    {29, DbClass::Shape, "CVkAcDbShape", FactoryRule::Class, nullptr},
    {30, DbClass::Spline, "CVkAcDbSpline", FactoryRule::Class, nullptr},
    {31, DbClass::SubDMesh, "CVkAcDbSubDMesh", FactoryRule::Class, nullptr},
    {32, DbClass::Surface, "CVkAcDbExtrudedSurface, CVkAcDbLoftedSurface, CVkAcDbRevolvedSurface, CVkAcDbSweptSurface, "
                           "CVkAcDbPlaneSurface", FactoryRule::Surface, nullptr},
    {33, DbClass::Text, "CVkAcDbText", FactoryRule::Class, make<CVkAcDbText>},
    {34, DbClass::Fcf, "CVkAcDbFcf", FactoryRule::Class, make<CVkAcDbFcf>},
    {35, DbClass::UnderlayReference, "CVkAcDbUnderlayReference", FactoryRule::Class, nullptr},
    {36, DbClass::Vertex2d, "CVkAcDb2dVertex", FactoryRule::Class, nullptr},
    {37, DbClass::Polyline3dVertex, "CVkAcDb3dPolylineVertex", FactoryRule::Class, nullptr},
    {38, DbClass::Viewport, "CVkAcDbViewport", FactoryRule::Class, nullptr},
    {39, DbClass::Xline, "CVkAcDbXline", FactoryRule::Class, nullptr},
    {40, DbClass::Table, "CVkAcDbTable", FactoryRule::Class, make<CVkAcDbTable>},
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
