// Construction lines: keyed by their base point; compared on their direction.
#include "comparers/CVkAcDbXline.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

// The Z text: the Z of the base point and of the second point, then the Z of the direction.
void xlineKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
              KeyTexts& out) {
  const platform::Point3d base = load.transform(e.point(Accessor::basePoint));      // AcDbXline::basePoint
  const platform::Point3d second = load.transform(e.point(Accessor::secondPoint));  // AcDbXline::secondPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), base.x, base.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", base.z, second.z, e.vector(Accessor::unitDir).z);
}

const DetailProperty kDetails[] = {
    {"单位矢量方向不一样,", capture::vector3<Accessor::unitDir>},  // AcDbXline::unitDir
};

const ComparerTraits kTraits{xlineKey, kDetails};

}  // namespace

CVkAcDbXline::CVkAcDbXline() : CVkDetailedEntity(kTraits) {}
