// Drawings as pictures: a database's current space and what a document's view shows, rendered to SVG, and a
// space's display list for a page's canvas.
#pragma once

#include <string>

#include "platform/database.h"
#include "platform/views.h"

namespace platform {

// The background the host shows drawings on; colour 7 is drawn white on it.
inline constexpr const char* kDrawingBackground = "#212830";
// The fonts drawings' texts are shown in, as a CSS font family list: CJK first.
inline constexpr const char* kDrawingFontFamily =
    "'Noto Sans CJK SC','Source Han Sans SC','Microsoft YaHei',SimSun,'WenQuanYi Micro Hei',sans-serif";

// Appends to `out` one SVG group (<g>) of what the current space of `db` shows, as the host shows it. The group
// is in drawing coordinates and flips y itself (drawing y up, SVG y down), so that a picture of the drawing box
// `extents` has the viewBox (extents.min.x, -extents.max.y, width, height). `extents` is the box of what was
// drawn (empty when nothing was).
void renderSpaceSvg(const Database& db, std::string& out, Extents3d& extents);

// Appends to `out` a display list of what the current space of `db` shows, drawn by the same walk as the SVG
// group, for a page's script to draw on a canvas: one JSON object that can stand inside a <script> element.
//   origin    [x, y]: the primitives' corners are relative to it
//   complete  false when the drawing's work budget ran out (what remains is not drawn)
//   colors    the "#rrggbb" colours the primitives name by index
//   handles   the handles (hex) of the entities of the space that draw something, in drawing order
//   prims     9 numbers a primitive: kind (0 stroke, 1 solid fill, 2 light fill, 3 dot, 4 text); its entity's
//             index in handles, as a step from the previous primitive's (from 0 for the first); colour; stroke
//             width in drawing units (0: a pixel); how many numbers of geom are its own (they follow the
//             previous primitive's); its box: corner (min x, min y) and size (width, height)
//   geom      outlines as operations: 0 x y (move), 1 x y (line), 2 cx cy r a0 a1 ccw (circular arc from the
//             current point, angles in radians, ccw 1 when counter-clockwise in the drawing), 3 (close); a text
//             as a b c d e f (the canvas transform of its frame, y down), height, anchor (0 start, 1 middle,
//             2 end), fitted length (0: none), line count, then a line's baseline y and its index in texts.
//             Coordinates (x, y, cx, cy, e, f) are relative to the primitive's corner.
//   texts     the texts' lines
// `extents` is the box of what was drawn (empty when nothing was).
void renderSpaceDisplayList(const Database& db, std::string& out, Extents3d& extents);

// Appends to `out` a whole SVG document of what the view of a document window shows: the drawing area of the
// view on the host's background, the size of the window, with the view's temporary vectors on top. False (and
// nothing appended) when no open document has this window.
bool renderViewSvg(WindowId window, std::string& out);

}  // namespace platform
