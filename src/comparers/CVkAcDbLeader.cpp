// Leaders: keyed by their first vertex (the arrow's point); compared on the arrow, hook line and spline
// flags, the vertex count and the last vertex.
#include "comparers/CVkAcDbLeader.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void leaderKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
               KeyTexts& out) {
  const std::vector<platform::Point3d> vertices = e.points(Accessor::leaderVertices);  // AcDbLeader::vertexAt
  const platform::Point3d first = load.transform(vertices.empty() ? platform::Point3d() : vertices.front());
  const platform::Point3d last = load.transform(vertices.empty() ? platform::Point3d() : vertices.back());
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), first.x, first.y);
  platform::fmtTo(out.zText, "%.2f,%.2f", first.z, last.z);
}

const DetailProperty kDetails[] = {
    {"使用箭头不一样,", capture::int1<Accessor::hasArrowHead>},                        // AcDbLeader::hasArrowHead
    {"HookLine的有无不一样,", capture::int1<Accessor::hasHookLine>},                   // AcDbLeader::hasHookLine
    {"样条拟合不一样,", capture::int1<Accessor::isSplined>},                           // AcDbLeader::isSplined
    {"顶点数不一样,", capture::pointCount<Accessor::leaderVertices>},                  // AcDbLeader::numVertices
    {"最后一个索引顶点不一样,", capture::lastPoint2Spaced<Accessor::leaderVertices>},  // AcDbLeader::lastVertex
};

const ComparerTraits kTraits{leaderKey, kDetails};

}  // namespace

CVkAcDbLeader::CVkAcDbLeader() : CVkDetailedEntity(kTraits) {}
