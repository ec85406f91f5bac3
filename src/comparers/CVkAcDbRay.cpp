// Rays: keyed by their base point; compared on their direction.
#include "comparers/CVkAcDbRay.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

// The Z text follows the line's: the Z of the two points that draw the ray, then the minimum and maximum
// Z of its load extents.
void rayKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Point3d base = load.transform(e.point(Accessor::basePoint));      // AcDbRay::basePoint
  const platform::Point3d second = load.transform(e.point(Accessor::secondPoint));  // AcDbRay::secondPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), base.x, base.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f", base.z, second.z, out.minZ, out.maxZ);
}

const DetailProperty kDetails[] = {
    {"单位矢量方向不一样,", capture::vector2<Accessor::unitDir>},  // AcDbRay::unitDir
};

const ComparerTraits kTraits{rayKey, kDetails};

}  // namespace

CVkAcDbRay::CVkAcDbRay() : CVkDetailedEntity(kTraits) {}
