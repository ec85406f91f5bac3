// Typed accessors of block references, hatches, solids, regions, bodies, surfaces, meshes, faces, traces, shapes, lights, sections, images, OLE frames, underlays, viewports, proxies.
#pragma once

// X(accessor name, kind): see accessors.h.
#define VK_ACCESSORS_BLOCKS(X)
