// Lights: keyed by their position; compared on name, target and type. The factory makes one for every light
// but keeps the custom-entity comparer instead, which decides the messages a light yields.
#include "comparers/CVkAcDbLight.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// "%%.2f,%.2f" of the target: the doubled percent sign prints itself, so the text is "%.2f," followed by
// the target's x.
std::string target(const platform::Entity& e, const platform::Matrix3d& load) {
  const platform::Point3d t = load.transform(e.point(Accessor::lightTargetLocation));
  return platform::fmt("%%.2f,%.2f", t.x, t.y);
}

const DetailProperty kDetails[] = {
    {"光对象的名称不一样,", capture::text<Accessor::lightName>},  // AcDbLight::name
    {"光目标位置的位置不一样,", target},                          // AcDbLight::targetLocation
    {"光对象的类型不一样,", capture::int1<Accessor::lightType>},  // AcDbLight::lightType
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

}  // namespace

CVkAcDbLight::CVkAcDbLight() : CVkDetailedEntity(kTraits) {}
