// The factory table and its last rule.
#include "comparers/ComparerFactory.h"

#include <array>
#include <vector>

#include "comparers/CVkAcDb2dPolyline.h"
#include "comparers/CVkAcDb2dVertex.h"
#include "comparers/CVkAcDb3PointAngularDimension.h"
#include "comparers/CVkAcDb3dPolylineVertex.h"
#include "comparers/CVkAcDb3dSolid.h"
#include "comparers/CVkAcDbAlignedDimension.h"
#include "comparers/CVkAcDbArc.h"
#include "comparers/CVkAcDbAttribute.h"
#include "comparers/CVkAcDbAttributeDefinition.h"
#include "comparers/CVkAcDbBlockReference.h"
#include "comparers/CVkAcDbBody.h"
#include "comparers/CVkAcDbCircle.h"
#include "comparers/CVkAcDbDiametricDimension.h"
#include "comparers/CVkAcDbDimension.h"
#include "comparers/CVkAcDbEllipse.h"
#include "comparers/CVkAcDbExtrudedSurface.h"
#include "comparers/CVkAcDbFace.h"
#include "comparers/CVkAcDbFcf.h"
#include "comparers/CVkAcDbHatch.h"
#include "comparers/CVkAcDbHelix.h"
#include "comparers/CVkAcDbLeader.h"
#include "comparers/CVkAcDbLight.h"
#include "comparers/CVkAcDbLine.h"
#include "comparers/CVkAcDbLoftedSurface.h"
#include "comparers/CVkAcDbMText.h"
#include "comparers/CVkAcDbMline.h"
#include "comparers/CVkAcDbOle2Frame.h"
#include "comparers/CVkAcDbOleFrame.h"
#include "comparers/CVkAcDbOrdinateDimension.h"
#include "comparers/CVkAcDbPlaneSurface.h"
#include "comparers/CVkAcDbPoint.h"
#include "comparers/CVkAcDbPolyline.h"
#include "comparers/CVkAcDbRadialDimension.h"
#include "comparers/CVkAcDbRasterImage.h"
#include "comparers/CVkAcDbRay.h"
#include "comparers/CVkAcDbRegion.h"
#include "comparers/CVkAcDbRevolvedSurface.h"
#include "comparers/CVkAcDbSection.h"
#include "comparers/CVkAcDbShape.h"
#include "comparers/CVkAcDbSolidOrTrace.h"
#include "comparers/CVkAcDbSpline.h"
#include "comparers/CVkAcDbSubDMesh.h"
#include "comparers/CVkAcDbSweptSurface.h"
#include "comparers/CVkAcDbTable.h"
#include "comparers/CVkAcDbText.h"
#include "comparers/CVkAcDbUnderlayReference.h"
#include "comparers/CVkAcDbViewport.h"
#include "comparers/CVkAcDbXline.h"
#include "comparers/CVkCustomEntity.h"

namespace {

using platform::DbClass;

template <typename T>
ComparerPtr make(CReadContext* context) {
  return makeComparer<T>(context);
}

// The order is deliberate and kept with its consequences: every dimension is caught by row 8, an OLE2
// frame by row 23 and a wipeout by row 17; attributes come before text, the helix before the spline and
// the table before the block reference.
constexpr FactoryRow kRows[] = {
    {1, DbClass::Face, "CVkAcDbFace", FactoryRule::Class, make<CVkAcDbFace>},
    {2, DbClass::Solid3d, "CVkAcDb3dSolid", FactoryRule::Class, make<CVkAcDb3dSolid>},
    {3, DbClass::Arc, "CVkAcDbArc", FactoryRule::Class, make<CVkAcDbArc>},
    {4, DbClass::AttributeDefinition, "CVkAcDbAttributeDefinition", FactoryRule::Class,
     make<CVkAcDbAttributeDefinition>},
    {5, DbClass::Attribute, "CVkAcDbAttribute", FactoryRule::Class, make<CVkAcDbAttribute>},
    {6, DbClass::Body, "CVkAcDbBody", FactoryRule::Class, make<CVkAcDbBody>},
    {7, DbClass::Circle, "CVkAcDbCircle", FactoryRule::Class, make<CVkAcDbCircle>},
    {8, DbClass::Dimension, "CVkAcDbDimension", FactoryRule::Class, make<CVkAcDbDimension>},
    {9, DbClass::AlignedDimension, "CVkAcDbAlignedDimension", FactoryRule::Class, make<CVkAcDbAlignedDimension>},
    {10, DbClass::RadialDimension, "CVkAcDbRadialDimension", FactoryRule::Class, make<CVkAcDbRadialDimension>},
    {11, DbClass::DiametricDimension, "CVkAcDbDiametricDimension", FactoryRule::Class, make<CVkAcDbDiametricDimension>},
    {12, DbClass::ThreePointAngularDimension, "CVkAcDb3PointAngularDimension", FactoryRule::Class,
     make<CVkAcDb3PointAngularDimension>},
    {13, DbClass::OrdinateDimension, "CVkAcDbOrdinateDimension", FactoryRule::Class, make<CVkAcDbOrdinateDimension>},
    {14, DbClass::Ellipse, "CVkAcDbEllipse", FactoryRule::Class, make<CVkAcDbEllipse>},
    {15, DbClass::Hatch, "CVkAcDbHatch", FactoryRule::Class, make<CVkAcDbHatch>},
    {16, DbClass::Helix, "CVkAcDbHelix", FactoryRule::Class, make<CVkAcDbHelix>},
    {17, DbClass::RasterImage, "CVkAcDbRasterImage", FactoryRule::Class, make<CVkAcDbRasterImage>},
    {18, DbClass::Leader, "CVkAcDbLeader", FactoryRule::Class, make<CVkAcDbLeader>},
    {19, DbClass::Line, "CVkAcDbLine", FactoryRule::Class, make<CVkAcDbLine>},
    {20, DbClass::Polyline, "CVkAcDbPolyline", FactoryRule::Class, make<CVkAcDbPolyline>},
    {21, DbClass::Mline, "CVkAcDbMline", FactoryRule::Class, make<CVkAcDbMline>},
    {22, DbClass::MText, "CVkAcDbMText", FactoryRule::Class, make<CVkAcDbMText>},
    {23, DbClass::OleFrame, "CVkAcDbOleFrame", FactoryRule::Class, make<CVkAcDbOleFrame>},
    {24, DbClass::Ole2Frame, "CVkAcDbOle2Frame", FactoryRule::Class, make<CVkAcDbOle2Frame>},
    {25, DbClass::Point, "CVkAcDbPoint", FactoryRule::Class, make<CVkAcDbPoint>},
    {26, DbClass::Polyline2d, "CVkAcDb2dPolyline", FactoryRule::Class, make<CVkAcDb2dPolyline>},
    {27, DbClass::Ray, "CVkAcDbRay", FactoryRule::Class, make<CVkAcDbRay>},
    {28, DbClass::Section, "CVkAcDbSection", FactoryRule::Class, make<CVkAcDbSection>},
    {29, DbClass::Shape, "CVkAcDbShape", FactoryRule::Class, make<CVkAcDbShape>},
    {30, DbClass::Spline, "CVkAcDbSpline", FactoryRule::Class, make<CVkAcDbSpline>},
    {31, DbClass::SubDMesh, "CVkAcDbSubDMesh", FactoryRule::Class, make<CVkAcDbSubDMesh>},
    // The surface row picks the comparer of the surface's kind; its make only marks it as built.
    {32, DbClass::Surface, "CVkAcDbExtrudedSurface, CVkAcDbLoftedSurface, CVkAcDbRevolvedSurface, CVkAcDbSweptSurface, "
                           "CVkAcDbPlaneSurface", FactoryRule::Surface, make<CVkAcDbExtrudedSurface>},
    {33, DbClass::Text, "CVkAcDbText", FactoryRule::Class, make<CVkAcDbText>},
    {34, DbClass::Fcf, "CVkAcDbFcf", FactoryRule::Class, make<CVkAcDbFcf>},
    {35, DbClass::UnderlayReference, "CVkAcDbUnderlayReference", FactoryRule::Class, make<CVkAcDbUnderlayReference>},
    {36, DbClass::Vertex2d, "CVkAcDb2dVertex", FactoryRule::Class, make<CVkAcDb2dVertex>},
    {37, DbClass::Polyline3dVertex, "CVkAcDb3dPolylineVertex", FactoryRule::Class, make<CVkAcDb3dPolylineVertex>},
    {38, DbClass::Viewport, "CVkAcDbViewport", FactoryRule::Class, make<CVkAcDbViewport>},
    {39, DbClass::Xline, "CVkAcDbXline", FactoryRule::Class, make<CVkAcDbXline>},
    {40, DbClass::Table, "CVkAcDbTable", FactoryRule::Class, make<CVkAcDbTable>},
    {41, DbClass::BlockReference, "CVkAcDbBlockReference", FactoryRule::BlockReference, make<CVkAcDbBlockReference>},
};

// The last rule, by DXF name.
ComparerPtr byDxfName(std::string_view name, CReadContext* context) {
  // A light comparer is made and deliberately dropped: lights are compared as custom entities.
  if (name == "LIGHT") (void)std::make_unique<CVkAcDbLight>();
  if (name == "REGION") return make<CVkAcDbRegion>(context);
  if (name != "SOLID" && name != "TRACE") return make<CVkCustomEntity>(context);
  return make<CVkAcDbSolidOrTrace>(context);
}

// Row 32: the comparer of the surface's kind; a surface of another kind takes no part (null).
ComparerPtr surfaceComparer(const platform::Entity& entity, CReadContext* context) {
  if (entity.isKindOf(DbClass::ExtrudedSurface)) return make<CVkAcDbExtrudedSurface>(context);
  if (entity.isKindOf(DbClass::LoftedSurface)) return make<CVkAcDbLoftedSurface>(context);
  if (entity.isKindOf(DbClass::RevolvedSurface)) return make<CVkAcDbRevolvedSurface>(context);
  if (entity.isKindOf(DbClass::SweptSurface)) return make<CVkAcDbSweptSurface>(context);
  if (entity.isKindOf(DbClass::PlaneSurface)) return make<CVkAcDbPlaneSurface>(context);
  return nullptr;
}

enum class BlockDecision { Compare, Skip, FallThrough };

// Row 41: with both reference settings off a block reference goes on to the last rule; otherwise it takes
// part only when block references are compared, and an external reference only when those are too. A
// reference whose block cannot be found takes no part.
BlockDecision blockReferenceDecision(const platform::Entity& entity, const CompareOptions& options) {
  if (!options.compareBlockReferences && !options.compareExternalReferences) return BlockDecision::FallThrough;
  const platform::BlockRecord block = entity.database().blockRecord(entity.blockTableRecord());
  if (!block) return BlockDecision::Skip;
  if ((block.isFromExternalReference() && !options.compareExternalReferences) || !options.compareBlockReferences)
    return BlockDecision::Skip;
  return BlockDecision::Compare;
}

// The rows that can take an entity of each class, in their order: whether a row applies depends only on the
// entity's class, so the kind-of tests are made once per class rather than once per entity.
#define VK_COUNT_CLASS(cls, parent, name) +1
constexpr std::size_t kClassCount = 0 VK_DB_CLASSES(VK_COUNT_CLASS);
#undef VK_COUNT_CLASS

const std::vector<const FactoryRow*>& rowsFor(DbClass cls) {
  static const std::array<std::vector<const FactoryRow*>, kClassCount> table = [] {
    std::array<std::vector<const FactoryRow*>, kClassCount> rows;
    for (std::size_t c = 0; c < kClassCount; ++c)
      for (const FactoryRow& row : kRows)
        if (row.make && platform::isKindOf(static_cast<DbClass>(c), row.cls)) rows[c].push_back(&row);
    return rows;
  }();
  return table[static_cast<std::size_t>(cls)];
}

}  // namespace

std::span<const FactoryRow> factoryRows() { return kRows; }

ComparerPtr createComparer(const platform::Entity& entity, const platform::Matrix3d& transform,
                           CReadContext* readerContext, const platform::Matrix3d* drawingTransform) {
  static const CompareOptions kAll;
  const CompareOptions* options = readerContext ? readerContext->options() : nullptr;
  ComparerPtr comparer;
  for (const FactoryRow* candidate : rowsFor(entity.dbClass())) {
    const FactoryRow& row = *candidate;
    if (row.rule == FactoryRule::Surface) {
      comparer = surfaceComparer(entity, readerContext);
      if (!comparer) return nullptr;
    } else if (row.rule == FactoryRule::BlockReference) {
      const BlockDecision decision = blockReferenceDecision(entity, options ? *options : kAll);
      if (decision == BlockDecision::Skip) return nullptr;
      if (decision == BlockDecision::FallThrough) continue;
      comparer = row.make(readerContext);
    } else {
      comparer = row.make(readerContext);
    }
    break;
  }
  if (!comparer) comparer = byDxfName(entity.dxfName(), readerContext);
  comparer->setContexts(readerContext, drawingTransform);
  comparer->load(entity, transform);
  return comparer;
}
