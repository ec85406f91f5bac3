// 2D polylines: keyed by vertex count and their two leading vertices in canonical order; compared on type,
// default widths, thickness, elevation, linetype generation and every vertex.
#include "comparers/CVkAcDb2dPolyline.h"

#include "comparers/CapturesCurves.h"

namespace {

using platform::Accessor;

// The vertices' WCS positions, in order, read from the polyline's vertex records.
std::vector<platform::Point3d> vertexPositions(const platform::Entity& e) {
  std::vector<platform::Point3d> out;
  for (platform::ObjectId id : e.vertices())                                  // AcDb2dPolyline::vertexIterator
    out.push_back(e.database().openEntity(id).point(Accessor::position));  // AcDb2dPolyline::vertexPosition
  return out;
}

void polylineKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
                 KeyTexts& out) {
  capture::pointListKey(vertexPositions(e), load, self, out);
}

// Every vertex as "%.2f,%.2f,%.2f,%.2f": its point after the load transform and the bulge of the segment
// it starts, the two things that place the polyline's course at that vertex.
std::vector<std::string> vertexTexts(const platform::Entity& e, const platform::Matrix3d& load) {
  std::vector<std::string> out;
  for (platform::ObjectId id : e.vertices()) {
    const platform::Entity v = e.database().openEntity(id);
    const platform::Point3d p = load.transform(v.point(Accessor::position));  // AcDb2dPolyline::vertexPosition
    out.push_back(platform::fmt("%.2f,%.2f,%.2f,%.2f", p.x, p.y, p.z, v.real(Accessor::bulge)));  // AcDb2dVertex::bulge
  }
  return out;
}

const DetailProperty kDetails[] = {
    {"类型不一样,", capture::int1<Accessor::polyType>},                             // AcDb2dPolyline::polyType
    {"折线段开始宽度值不一样,", capture::real2<Accessor::defaultStartWidth>},       // AcDb2dPolyline::defaultStartWidth
    {"折线段结束宽度值不一样,", capture::real2<Accessor::defaultEndWidth>},         // AcDb2dPolyline::defaultEndWidth
    {"厚度不一样,", capture::real2<Accessor::thickness>},                           // AcDb2dPolyline::thickness
    {"折线标高不一样,", capture::real2<Accessor::elevation>},                       // AcDb2dPolyline::elevation
    {"生成线型的情况不一样,", capture::int1<Accessor::isLinetypeGenerationOn>},     // AcDb2dPolyline::isLinetypeGenerationOn
    {"顶点位置不一样,", nullptr, vertexTexts},                                      // AcDb2dPolyline::vertexPosition
};

const ComparerTraits kTraits{polylineKey, kDetails};

}  // namespace

CVkAcDb2dPolyline::CVkAcDb2dPolyline() : CVkDetailedEntity(kTraits) {}
