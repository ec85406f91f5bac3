// Helices: keyed by their start point; compared on start point, axis, height, radii, turns, turn height,
// turn slope and length.
#include "comparers/CVkAcDbHelix.h"

#include "comparers/Captures.h"

namespace {

using platform::Accessor;

// The Z text: the Z of the axis base point, the start and the end point after the load transform, then
// the axis direction's Z and the height.
void helixKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self,
              KeyTexts& out) {
  const platform::Point3d start = load.transform(e.point(Accessor::startPoint));  // AcDbHelix::startPoint
  const platform::Point3d end = load.transform(e.point(Accessor::endPoint));      // AcDbHelix::endPoint
  const platform::Point3d axis = load.transform(e.point(Accessor::axisPoint));    // AcDbHelix::axisPoint
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f", self.dxfName(), start.x, start.y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f,%.2f", axis.z, start.z, end.z,
                            e.vector(Accessor::axisVector).z,  // AcDbHelix::axisVector
                            e.real(Accessor::height));         // AcDbHelix::height
}

const DetailProperty kDetails[] = {
    {"起点不一样,", capture::point3<Accessor::startPoint>},         // AcDbHelix::startPoint
    {"向量不一样,", capture::vector3<Accessor::axisVector>},        // AcDbHelix::axisVector
    {"高度不一样,", capture::real2<Accessor::height>},              // AcDbHelix::height
    {"基半径不一样,", capture::real2<Accessor::baseRadius>},        // AcDbHelix::baseRadius
    {"顶部半径不一样,", capture::real2<Accessor::topRadius>},       // AcDbHelix::topRadius
    {"旋转数不一样,", capture::real2<Accessor::turns>},             // AcDbHelix::turns
    {"转弯高度不一样,", capture::real2<Accessor::turnHeight>},      // AcDbHelix::turnHeight
    {"转弯倾斜角不一样,", capture::real2<Accessor::turnSlope>},     // AcDbHelix::turnSlope
    {"总长度不一样,", capture::real2<Accessor::totalLength>},       // AcDbHelix::totalLength
};

const ComparerTraits kTraits{helixKey, kDetails};

}  // namespace

CVkAcDbHelix::CVkAcDbHelix() : CVkDetailedEntity(kTraits) {}
