// Vertices of 3D polylines: keyed by their position; compared on their type.
#include "comparers/CVkAcDb3dPolylineVertex.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

// The Z text: the position's Z, then the minimum and maximum Z of the load extents, as the line's.
void vertexKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
               KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // AcDb3dPolylineVertex::position
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
}

const DetailProperty kDetails[] = {
    {"类型不一样,", capture::int1<Accessor::vertexType>},  // AcDb3dPolylineVertex::vertexType
};

const ComparerTraits kTraits{vertexKey, kDetails};

}  // namespace

CVkAcDb3dPolylineVertex::CVkAcDb3dPolylineVertex() : CVkDetailedEntity(kTraits) {}
