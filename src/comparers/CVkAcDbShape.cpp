// Shapes: keyed by their position; compared on the shape and how it is drawn. The shape's number lives in
// its shape file, which the drawing does not carry: its text stays empty and the name is compared instead.
#include "comparers/CVkAcDbShape.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"名称不一样,", capture::text<Accessor::shapeName>},              // AcDbShape::name
    {"形状高度不一样,", capture::real2<Accessor::shapeSize>},         // AcDbShape::size
    {"旋转角不一样,", capture::real2<Accessor::shapeRotation>},       // AcDbShape::rotation
    {"宽度因子不一样,", capture::real2<Accessor::shapeWidthFactor>},  // AcDbShape::widthFactor
    {"形状的倾斜角不一样,", capture::real2<Accessor::shapeOblique>},  // AcDbShape::oblique
    {"厚度不一样,", capture::real2<Accessor::thickness>},             // AcDbShape::thickness
    {"形状的数目不一样,", capture::unreadable},                       // AcDbShape::shapeNumber
    {"法向量不一样,", capture::vector3<Accessor::normal>},            // AcDbShape::normal
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

}  // namespace

CVkAcDbShape::CVkAcDbShape() : CVkDetailedEntity(kTraits) {}
