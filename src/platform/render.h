// Drawings as pictures: a database's current space and what a document's view shows, rendered to SVG.
#pragma once

#include <string>

#include "platform/database.h"
#include "platform/views.h"

namespace platform {

// The background the host shows drawings on; colour 7 is drawn white on it.
inline constexpr const char* kDrawingBackground = "#212830";

// Appends to `out` one SVG group (<g>) of what the current space of `db` shows, as the host shows it. The group
// is in drawing coordinates and flips y itself (drawing y up, SVG y down), so that a picture of the drawing box
// `extents` has the viewBox (extents.min.x, -extents.max.y, width, height). `extents` is the box of what was
// drawn (empty when nothing was).
void renderSpaceSvg(const Database& db, std::string& out, Extents3d& extents);

// Appends to `out` a whole SVG document of what the view of a document window shows: the drawing area of the
// view on the host's background, the size of the window, with the view's temporary vectors on top. False (and
// nothing appended) when no open document has this window.
bool renderViewSvg(WindowId window, std::string& out);

}  // namespace platform
