// OLE2 frames: keyed by their two corners; compared on the object's type and size. A DXF frame is two
// corners of an upright rectangle, so its rotation is 0; the object's own size (behind the scales) and the
// aspect lock live inside the OLE data, which is not read: those texts stay empty.
#include "comparers/CVkAcDbOle2Frame.h"

#include <cmath>

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

void frameKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  const platform::Point3d a = load.transform(e.point(Accessor::oleUpperLeft));   // upper left corner
  const platform::Point3d b = load.transform(e.point(Accessor::oleLowerRight));  // lower right corner
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), a.x, a.y, a.z, b.x, b.y, b.z);
  platform::fmtTo(out.zText, "%.2f,%.2f", a.z, b.z);
}

std::string rotation(const platform::Entity&, const platform::Matrix3d&) { return platform::fmt("%.2f", 0.0); }

std::string width(const platform::Entity& e, const platform::Matrix3d&) {
  return platform::fmt("%.2f", std::fabs(e.point(Accessor::oleLowerRight).x - e.point(Accessor::oleUpperLeft).x));
}

std::string height(const platform::Entity& e, const platform::Matrix3d&) {
  return platform::fmt("%.2f", std::fabs(e.point(Accessor::oleUpperLeft).y - e.point(Accessor::oleLowerRight).y));
}

const DetailProperty kDetails[] = {
    {"对象类型不一样,", capture::int1<Accessor::oleObjectType>},  // AcDbOle2Frame::getType
    {"旋转角不一样,", rotation},                                   // AcDbOle2Frame::rotation
    {"OLE对象的实际宽度坐标不一样,", width},                       // AcDbOle2Frame::wcsWidth
    {"OLE对象的实际高度坐标不一样,", height},                      // AcDbOle2Frame::wcsHeight
    {"表的宽度不一样,", capture::unreadable},                      // AcDbOle2Frame::scaleWidth
    {"表的高度不一样,", capture::unreadable},                      // AcDbOle2Frame::scaleHeight
    {"锁定纵横比不一样,", capture::unreadable},                    // AcDbOle2Frame::lockAspect
};

const ComparerTraits kTraits{frameKey, kDetails};

}  // namespace

CVkAcDbOle2Frame::CVkAcDbOle2Frame() : CVkDetailedEntity(kTraits) {}
