// The headless host's SVG renderer: the entities of a block record drawn as the host shows them, temporary
// vectors, colours of the host's colour index.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/headless/host_session.h"

namespace headless {

// The colour index's RGB value (0xRRGGBB) on the host's dark background: 7 is white; ByBlock (0) and ByLayer
// (256), which only an entity resolves, and values out of range are white too.
std::uint32_t aciColor(int index);

// Appends "#rrggbb".
void appendRgb(std::string& out, std::uint32_t rgb);

// Appends text escaped for XML character data and attribute values: markup characters as references, control
// characters XML cannot hold dropped, malformed UTF-8 as U+FFFD.
void appendXmlText(std::string& out, std::string_view text);

struct SvgLimits {
  // Entities visited at most, nested ones included (0: a share growing with the drawing's size).
  std::size_t visits = 0;
  // Block references nested deeper than this are not drawn.
  std::size_t depth = 64;
};

// Appends an SVG group of the entities of block record `block` (model space, a layout or a block) as the host
// shows them; `extents` grows by what is drawn. False when `block` names no block record.
bool renderBlockSvg(const platform::Database& db, std::uint32_t block, std::string& out, platform::Extents3d& extents,
                    const SvgLimits& limits = {});

// Appends a group of temporary vectors in their colours, in drawing coordinates like the drawing's group.
void renderVectorsSvg(const std::vector<TempVector>& vectors, std::string& out);

}  // namespace headless
