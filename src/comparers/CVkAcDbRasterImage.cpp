// Raster images and wipeouts: keyed by their insertion point; compared on their orientation, their file and
// their clip boundary.
#include "comparers/CVkAcDbRasterImage.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

// "%.2f, %.2f" (with a blank) of a vector's x and y.
template <Accessor A>
std::string vectorWithBlank(const platform::Entity& e, const platform::Matrix3d&) {
  const platform::Vector3d v = e.vector(A);
  return platform::fmt("%.2f, %.2f", v.x, v.y);
}

const DetailProperty kDetails[] = {
    {"图像的X轴不一样,", vectorWithBlank<Accessor::imageUVector>},            // getOrientation: u
    {"ucorner矢量不一样,", vectorWithBlank<Accessor::imageVVector>},          // getOrientation: v
    {"文件名不一样,", capture::text<Accessor::imageFileName>},                 // the image definition's file
    {"顶点位置不一样,", nullptr, capture::rawPoints2<Accessor::clipBoundary>},  // clipBoundary, in pixels
};

const ComparerTraits kTraits{capture::positionKey, kDetails};

}  // namespace

CVkAcDbRasterImage::CVkAcDbRasterImage() : CVkDetailedEntity(kTraits) {}
