// OLE frames: keyed by their extents; only the common properties are compared.
#include "comparers/CVkAcDbOleFrame.h"

#include "comparers/CapturesBlocks.h"

namespace {

const ComparerTraits kTraits{capture::extentsKey, {}};

}  // namespace

CVkAcDbOleFrame::CVkAcDbOleFrame() : CVkDetailedEntity(kTraits) {}
