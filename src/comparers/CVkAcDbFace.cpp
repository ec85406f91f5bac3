// 3D faces: keyed by their four corners; compared on the visibility of their edges.
#include "comparers/CVkAcDbFace.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

void faceKey(const platform::Entity& e, const platform::Matrix3d& load, const CVkAcadEntityBase& self, KeyTexts& out) {
  std::vector<platform::Point3d> c = e.points(Accessor::cornerPoints);  // getVertexAt 0..3
  c.resize(4);
  for (platform::Point3d& p : c) p = load.transform(p);
  platform::fmtTo(out.fullKey, "%s,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f", self.dxfName(), c[0].x, c[0].y, c[1].x, c[1].y,
                              c[2].x, c[2].y, c[3].x, c[3].y);
  platform::fmtTo(out.zText, "%.2f,%.2f,%.2f,%.2f", c[0].z, c[1].z, c[2].z, c[3].z);
}

// "%d,%d,%d,%d": 1 for each visible edge.
std::string edgeVisibility(const platform::Entity& e, const platform::Matrix3d&) {
  const long long invisible = e.integer(Accessor::invisibleEdgeFlags);
  auto visible = [invisible](int i) { return (invisible >> i) & 1 ? 0 : 1; };
  return platform::fmt("%d,%d,%d,%d", visible(0), visible(1), visible(2), visible(3));
}

const DetailProperty kDetails[] = {
    {"边缘的可见性不一样,", edgeVisibility},  // AcDbFace::isEdgeVisibleAt
};

const ComparerTraits kTraits{faceKey, kDetails};

}  // namespace

CVkAcDbFace::CVkAcDbFace() : CVkDetailedEntity(kTraits) {}
