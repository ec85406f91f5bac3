// The headless host's SVG renderer: the entities of a block record drawn as the host shows them, temporary
// vectors, colours of the host's colour index, and the text helpers the other pictures share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/database.h"
#include "platform/headless/drawing_walk.h"
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

// The length of the well-formed UTF-8 sequence at byte i of `text` (1 for ASCII), 0 when it is not one (a stray
// byte, a surrogate, a non-character, an overlong or cut-off sequence).
std::size_t utf8SequenceAt(std::string_view text, std::size_t i);

// Appends a number with ten significant digits, plenty for a picture; what is not finite is written as 0.
void appendNumber(std::string& out, double v);

using SvgLimits = WalkLimits;

// Appends an SVG group of the entities of block record `block` (model space, a layout or a block) as the host
// shows them; `extents` grows by what is drawn. False when `block` names no block record.
bool renderBlockSvg(const platform::Database& db, std::uint32_t block, std::string& out, platform::Extents3d& extents,
                    const SvgLimits& limits = {});

// Appends a group of temporary vectors in their colours, in drawing coordinates like the drawing's group.
void renderVectorsSvg(const std::vector<TempVector>& vectors, std::string& out);

}  // namespace headless
