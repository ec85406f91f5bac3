// Lines: keyed by their end points in canonical order, so either drawing direction gives one key;
// compared on thickness and normal.
#include "comparers/CVkAcDbLine.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

void lineKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  platform::Point3d a = load.transform(e.point(Accessor::startPoint));  // AcDbLine::startPoint
  platform::Point3d b = load.transform(e.point(Accessor::endPoint));    // AcDbLine::endPoint
  orderCanonically(a, b);
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f", self.dxfName(), a.x, a.y, b.x, b.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f", a.z, b.z, out.minZ, out.maxZ);
}

const DetailProperty kDetails[] = {
    {"厚度不一样,", capture::real2<Accessor::thickness>},   // AcDbLine::thickness
    {"法向量不一样,", capture::vector3<Accessor::normal>},  // AcDbLine::normal
};

const ComparerTraits kTraits{lineKey, kDetails};

}  // namespace

CVkAcDbLine::CVkAcDbLine() : CVkDetailedEntity(kTraits) {}
