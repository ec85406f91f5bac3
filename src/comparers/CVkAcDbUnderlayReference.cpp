// Underlays: keyed by their insertion point; compared on rotation, clipping and display settings. The
// contrast and fade limits are the host's constants for every underlay; the layers of the underlaid file
// are not read, so the layer count's text stays empty.
#include "comparers/CVkAcDbUnderlayReference.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// The host's bounds of an underlay's contrast (20 to 100) and fade (0 to 80).
std::string contrastLower(const platform::Entity&, const platform::Matrix3d&) { return "20"; }
std::string contrastUpper(const platform::Entity&, const platform::Matrix3d&) { return "100"; }
std::string fadeLower(const platform::Entity&, const platform::Matrix3d&) { return "0"; }
std::string fadeUpper(const platform::Entity&, const platform::Matrix3d&) { return "80"; }

const DetailProperty kDetails[] = {
    {"旋转角不一样,", capture::real2<Accessor::underlayRotation>},                         // rotation
    {"使用剪辑边界不一样,", capture::bit<Accessor::underlayFlags, 1>},                     // isClipped
    {"底层的对比值不一样,", capture::int1<Accessor::underlayContrast>},                     // contrast
    {"褪色值不一样,", capture::int1<Accessor::underlayFade>},                               // fade
    {"显示底层内容不一样,", capture::bit<Accessor::underlayFlags, 2>},                     // isOn
    {"显示inmonochrome底层内容不一样,", capture::bit<Accessor::underlayFlags, 4>},         // isMonochrome
    {"底层内容调整为当前背景色不一样,", capture::bit<Accessor::underlayFlags, 8>},         // isAdjustedForBackground
    {"底层信息数量不一样,", capture::unreadable},                                           // underlayLayerCount
    {"对比下限不一样,", contrastLower},                                                     // contrastLowerLimit
    {"对比上限不一样,", contrastUpper},                                                     // contrastUpperLimit
    {"褪色下限不一样,", fadeLower},                                                         // fadeLowerLimit
    {"褪色上限不一样,", fadeUpper},                                                         // fadeUpperLimit
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

}  // namespace

CVkAcDbUnderlayReference::CVkAcDbUnderlayReference() : CVkDetailedEntity(kTraits) {}
