// Subdivision meshes: keyed by their extents; compared on their counts and their vertices.
#include "comparers/CVkAcDbSubDMesh.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

const DetailProperty kDetails[] = {
    {"网格是水密的不一样,", capture::int1<Accessor::isWatertight>},                            // isWatertight
    {"网格面的数目不一样,", capture::int1<Accessor::numOfFaces>},                              // numOfFaces
    {"0级（基）网格顶点的个数不一样,", capture::int1<Accessor::numOfVertices>},                // numOfVertices
    {"当前级别（平滑）网格顶点的数目不一样,", capture::int1<Accessor::numOfSubDividedVertices>},  // numOfSubDividedVertices
    {"0级（基）网格边缘数不一样,", capture::int1<Accessor::numOfEdges>},                       // numOfEdges
    {"顶点位置不一样,", nullptr, capture::points2<Accessor::meshVertices>},                    // getVertices
};

const ComparerTraits kTraits{capture::extentsKey, kDetails};

}  // namespace

CVkAcDbSubDMesh::CVkAcDbSubDMesh() : CVkDetailedEntity(kTraits) {}
