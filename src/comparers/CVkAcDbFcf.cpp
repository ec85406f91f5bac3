// Geometric tolerances: keyed by their location; compared on their text, orientation and the three
// dimension variables that size the frame.
#include "comparers/CVkAcDbFcf.h"

#include "comparers/CapturesText.h"

namespace {

using platform::Accessor;

void fcfKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Point3d p = load.transform(e.point(Accessor::position));  // AcDbFcf::location
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), p.x, p.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f", p.z, out.minZ, out.maxZ);
}

const DetailProperty kDetails[] = {
    {"文本不一样,", capture::text<Accessor::toleranceText>},      // AcDbFcf::text
    {"边法向量不一样,", capture::vector3<Accessor::normal>},      // AcDbFcf::normal
    {"X矢量方向不一样,", capture::vector3<Accessor::direction>},  // AcDbFcf::direction
    {"DIMGAP不一样,", capture::real2<Accessor::dimgap>},          // AcDbFcf::dimgap
    {"DIMSCALE不一样,", capture::real2<Accessor::dimscale>},      // AcDbFcf::dimscale
    {"DIMTXT不一样,", capture::real2<Accessor::dimtxt>},          // AcDbFcf::dimtxt
};

const ComparerTraits kTraits{fcfKey, kDetails};

}  // namespace

CVkAcDbFcf::CVkAcDbFcf() : CVkDetailedEntity(kTraits) {}
