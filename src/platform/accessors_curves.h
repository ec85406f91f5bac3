// Typed accessors of arcs, circles, ellipses, rays, construction lines, points, polylines and their vertices, splines, helices, multilines.
#pragma once

// X(accessor name, kind): see accessors.h.
#define VK_ACCESSORS_CURVES(X)
