// The entity types the DWG reader decodes: each turns an entity's own data into its DXF groups.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/headless/dwg_objects.h"

namespace headless {

// What entity decoders need beyond the entity itself.
struct DwgDecodeContext {
  explicit DwgDecodeContext(const DwgNames& tableNames) : names(tableNames) {}
  const DwgNames& names;
  std::string text;  // reused for texts read
  // Set by a decoder that meets a form of its type not decoded yet ("multi-line ATTRIB"): the drawing is
  // then refused, naming it, as for a type not decoded at all.
  std::string notDecoded;
  // Light polylines' per-vertex arrays, reused from one polyline to the next.
  std::vector<double> bulges;
  std::vector<std::int32_t> vertexIds;
  std::vector<DwgPoint2> widths;  // start and end width of each vertex
  DwgTagList vertices;
  std::string_view nameOf(std::uint64_t handle) const {
    auto it = names.find(handle);
    return it == names.end() ? std::string_view() : std::string_view(it->second);
  }
};

// Reads the entity's data after the common part, then its common handles (readCommonHandles) and its own
// handles, appending its DXF groups from its first subclass marker on. False when the data is damaged.
using DwgEntityDecoder = bool (*)(DwgObjectReader& entity, DwgTagList& out, DwgDecodeContext& context);

struct DwgEntityType {
  const char* dxfName;
  DwgEntityDecoder decode;
};
// The decoder of an entity type by DWG type number (and DXF name for classes); null when not decoded yet.
const DwgEntityType* findDwgEntityType(std::uint16_t type, std::string_view dxfName);

}  // namespace headless
