// Viewports: keyed by their centre; compared on their window, view and clipping. A viewport has no fade of
// its own: its brightness and contrast stand for the fade value and the fade's lower limit.
#include "comparers/CVkAcDbViewport.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// "%.2f,%.2f" of the view centre (display coordinates, not moved by the load transform).
std::string viewCenter(const platform::Entity& e, const platform::Matrix3d&) {
  const platform::Point3d c = e.point(Accessor::viewCenter);
  return platform::fmt("%.2f,%.2f", c.x, c.y);
}

const DetailProperty kDetails[] = {
    {"绘图单位的视口实体窗口高度不一样,", capture::real2<Accessor::viewportHeight>},          // height
    {"绘图单位的视口实体窗口宽度不一样,", capture::real2<Accessor::viewportWidth>},           // width
    {"视图的ID号不一样,", capture::int1<Accessor::viewportNumber>},                           // number
    {"褪色值不一样,", capture::real2<Accessor::viewportBrightness>},                          // brightness
    {"高度不一样,", capture::real2<Accessor::viewHeight>},                                    // viewHeight
    {"视野中心不一样,", viewCenter},                                                          // viewCenter
    {"扭转角度不一样,", capture::real2<Accessor::twistAngle>},                                // twistAngle
    {"在视口的镜头长度不一样,", capture::real2<Accessor::lensLength>},                        // lensLength
    {"前裁剪面是当前打开的视图中不一样,", capture::bit<Accessor::viewportStatusFlags, 2>},   // isFrontClipOn
    {"后裁剪面是当前打开的视图中不一样,", capture::bit<Accessor::viewportStatusFlags, 4>},   // isBackClipOn
    {"褪色下限不一样,", capture::real2<Accessor::viewportContrast>},                          // contrast
    {"捕捉角度不一样,", capture::real2<Accessor::snapAngle>},                                 // snapAngle
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

}  // namespace

CVkAcDbViewport::CVkAcDbViewport() : CVkDetailedEntity(kTraits) {}
