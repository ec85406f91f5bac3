// The entity types the DWG reader decodes: each turns an entity's own data into its DXF groups.
#pragma once

#include <numbers>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/headless/dwg_objects.h"

namespace headless {

class TextDecoder;

// What entity decoders need beyond the entity itself.
struct DwgDecodeContext {
  explicit DwgDecodeContext(const DwgNames& tableNames) : names(tableNames) {}
  const DwgNames& names;
  const DwgClass* objectClass = nullptr;  // the class of the entity being decoded, for types from 500 on
  int maintenanceVersion = 0;             // the drawing's maintenance release
  const TextDecoder* codePage = nullptr;  // the drawing's code page, for its texts before R2007
  std::string text;                       // reused for texts read
  std::string scratch;                    // reused for texts rewritten as DXF writes them
  // Set by a decoder that meets a form of its type not decoded yet ("multi-line ATTRIB"): the drawing is
  // then refused, naming it, as for a type not decoded at all.
  std::string notDecoded;
  // Light polylines' per-vertex arrays, reused from one polyline to the next.
  std::vector<double> bulges;
  std::vector<std::int32_t> vertexIds;
  std::vector<DwgPoint2> widths;  // start and end width of each vertex
  DwgTagList vertices;
  // Groups put together out of order (a hatch's paths with their source handles), and the places in a
  // decoder's output where a count of handles read later was left.
  DwgTagList spliced;
  std::vector<std::pair<std::size_t, std::int32_t>> slots;
  // Splines' points and knots as stored; the control points and knots worked out from fit data, and the
  // factors of that work.
  std::vector<DwgPoint3> points, controlPoints;
  std::vector<double> knots, fitKnots, factors;
  // Set by an entity that owns others (a polyline its vertices): their handles in order, or, with
  // ownedAreEnds, only the first and the last, the others found through the links between them.
  std::vector<std::uint64_t> owned;
  bool ownedAreEnds = false;
  // Set by a decoder that took in the extended data of this application as DXF writers do, leaving it out.
  std::string_view extendedDataTakenIn;
  DwgTagList extendedData;  // reused for the extended data a decoder reads
  // Leaders' hook line length under each dimension style (see dwgHookLengths).
  std::unordered_map<std::uint64_t, double> hookLengths;
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
struct DwgEntityEntry {
  std::uint16_t type;  // the fixed type number; 0 for a type known by its class's DXF name only
  DwgEntityType entity;
};
using DwgEntityFamily = std::span<const DwgEntityEntry>;

// The families of entity types, one file each; the registry (dwg_entities.cpp) lists them.
DwgEntityFamily dwgPlainEntities();       // lines, circles, texts, inserts and the other simple types
DwgEntityFamily dwgAreaEntities();        // hatches and multilines
DwgEntityFamily dwgOtherEntities();       // multileaders, shapes, images, underlays, lights, meshes, proxies
DwgEntityFamily dwgCurveEntities();       // old-style polylines and vertices, splines, helices, viewports
DwgEntityFamily dwgSolidEntities();       // regions, 3D solids, bodies and surfaces: modeler data
DwgEntityFamily dwgAnnotationEntities();  // multiline text, dimensions, leaders, tolerances
DwgEntityFamily dwgTableEntities();       // tables: their sizes and cells

// The fields of a multiline text from its insertion point to its background (R2018 drawings repeat some
// of them, with the columns, after these), as MTEXT entities and R2018 multi-line attributes store them.
struct DwgMTextData {
  DwgPoint3 insertion, extrusion{0, 0, 1}, xAxis{1, 0, 0};
  double rectWidth = 0, rectHeight = 0, textHeight = 0, extentsHeight = 0, extentsWidth = 0;
  int attachment = 1, direction = 1, spacingStyle = 1;
  double spacingFactor = 1;
  std::int32_t background = 0;
  double backgroundScale = 1.5;
  DwgColor backgroundColor;
  std::int32_t backgroundTransparency = 0;
};

// Reads the text of an R2018 multi-line attribute, which comes with entity data of its own (no handles of
// its own are read), into m and its text into context.text. False when damaged.
bool readDwgEmbeddedMText(DwgObjectReader& o, DwgMTextData& m, DwgDecodeContext& context);
// Its groups as DXF gives them after "101 Embedded Object".
void appendDwgEmbeddedMText(DwgObjectReader& o, DwgTagList& out, const DwgMTextData& m, DwgDecodeContext& context);

// The decoder of an entity type by DWG type number (and DXF name for classes); null when not decoded yet.
const DwgEntityType* findDwgEntityType(std::uint16_t type, std::string_view dxfName);

// The decoder of entities of classes no decoder knows, from applications this host does not have.
const DwgEntityType* dwgCustomEntityType();

// The graphics an entity stores for hosts that cannot draw it: their size (92, or 160 from R2010 on) and
// their bytes as binary groups (310). Nothing when the entity has none.
void appendDwgGraphics(DwgObjectReader& entity, DwgTagList& out, std::string& scratch);
// The bits [begin, end) of a stream as binary groups (code) of hex digits, 127 bytes a group as DXF writers cut
// them, a last byte cut short padded with zeros (what writers leave there is whatever their buffers held), then
// filler bytes 0xCC. The stream's own position stays; scratch is reused.
void dwgBinaryGroups(const DwgBitReader& stream, std::size_t begin, std::size_t end, int code, DwgTagList& out,
                     std::string& scratch, std::size_t filler = 0);
// The control points and knots DXF gives a cubic spline stored by its fit points and end tangents, the
// curve through the points (knotParameter: 0 chord lengths, 1 their square roots, 2 uniform). False when
// fit points repeat or there are fewer than 2. factors is scratch space.
bool dwgFitCubicSpline(std::span<const DwgPoint3> fitPoints, const DwgPoint3& startTangent,
                       const DwgPoint3& endTangent, int knotParameter, std::vector<DwgPoint3>& controlPoints,
                       std::vector<double>& knots, std::vector<double>& factors);

// What inserts and tables store first: insertion point, scale factors (from R2000 on a bit pair says which
// are 1 or equal), rotation, extrusion and whether attributes follow (from R2004 on with their count).
struct DwgInsertPart {
  DwgPoint3 at, scale{1, 1, 1}, extrusion;
  double rotation = 0;
  bool attributes = false;
  std::int32_t owned = 0;
};
// False when the attributes' count cannot be right.
bool readDwgInsertPart(DwgObjectReader& o, DwgInsertPart& part);
// Skips the handles of the attributes and their sequence end, found again through their owner.
void skipDwgAttributeHandles(DwgObjectReader& o, const DwgInsertPart& part);
// The part's groups from the subclass marker through the rotation (50), defaults left out.
void appendDwgInsertPart(DwgTagList& out, const DwgInsertPart& part, std::string_view marker,
                         std::string_view block);

// What the decoders share.
inline constexpr double kDwgDegrees = 180.0 / std::numbers::pi;
inline bool isDefaultExtrusion(const DwgPoint3& p) { return p.x == 0.0 && p.y == 0.0 && p.z == 1.0; }
// Group 210 unless the extrusion is the default (0,0,1), which DXF leaves out.
inline void extrusion(DwgTagList& out, const DwgPoint3& p) {
  if (!isDefaultExtrusion(p)) out.point(210, p);
}
// Whether a count read from the data can be right: items of at least minBits bits each, that many left.
inline bool countFits(std::int32_t count, std::size_t minBits, const DwgBitReader& b) {
  return count >= 0 && !b.failed() && std::size_t(count) <= b.bitsLeft() / minBits;
}
// A colour (CMC) and, from R2004 on, the names it may have (read into scratch and dropped).
inline DwgColor readColorAndNames(DwgObjectReader& o, std::string& scratch) {
  const DwgColor c = o.bits.readColor();
  if (c.hasName()) o.readText(scratch);
  if (c.hasBookName()) o.readText(scratch);
  return c;
}
// Group 39 unless the thickness is 0.
inline void thickness(DwgTagList& out, double t) {
  if (t != 0.0) out.real(39, t);
}

// A long text as DXF writes it: cut into pieces of 250 characters (code points of UTF-8 texts, bytes of
// code-page ones, a character of two bytes never split: codePage tells them), each but the last as group
// 3, the last, never empty unless the text is, as group 1; each piece then as caretText gives it.
void longText(DwgTagList& out, std::string_view text, bool utf8, const TextDecoder* codePage, std::string& buffer);

}  // namespace headless
