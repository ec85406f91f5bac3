// In-memory storage of a drawing read by the headless host: every group of every record, with the
// common entity properties resolved once at reading time.
#pragma once

#include <cstddef>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/database.h"
#include "platform/headless/dxf_storage.h"
#include "platform/headless/dxf_tokenizer.h"

namespace platform {

// One stored group, in 12 bytes: a drawing holds millions. Texts live in the database's arena (UTF-8,
// decoded from the drawing's code page), which the reader keeps within 4 GB. The value is packed at 4
// bytes: read it by value, never bind a reference to it (std::min, std::clamp, push_back take references).
#pragma pack(push, 4)
struct StoredTag {
  std::int16_t code = 0;
  headless::TagType type = headless::TagType::Text;
  union {
    double real;
    long long integer;
    std::uint64_t textPlace;  // texts: the offset in the arena (low 32 bits) and the length (high 32 bits)
  };
  StoredTag() : real(0.0) {}

  std::uint32_t textOffset() const { return static_cast<std::uint32_t>(textPlace); }
  std::uint32_t textLength() const { return static_cast<std::uint32_t>(textPlace >> 32); }
  void setText(std::uint32_t offset, std::uint32_t length) {
    textPlace = offset | (static_cast<std::uint64_t>(length) << 32);
  }
};
#pragma pack(pop)
static_assert(sizeof(StoredTag) == 12);

// Hashes texts of any kind alike, so that a map keyed by strings is searched by a string_view as it is.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
};

inline constexpr std::uint32_t kNone = 0xFFFFFFFFu;

struct EntityRec {
  std::uint32_t tagBegin = 0;
  std::uint32_t tagCount = 0;
  Handle handle = 0;
  std::uint32_t dxfName = 0;    // index into names
  std::uint32_t block = 0;      // owning block record
  std::uint32_t layer = 0;      // index into layers
  std::uint32_t linetype = 0;   // index into names: "ByLayer", "ByBlock" or the linetype's table spelling
  std::uint32_t owner = kNone;  // owning entity (attributes, vertices), else kNone
  std::uint32_t subCount = 0;   // owned entities, stored right after this one
  std::int32_t line = 0;        // where the record starts in the file (line or byte offset), for messages
  double linetypeScale = 1.0;
  std::int16_t color = 256;
  std::int16_t lineWeight = -1;
  DbClass cls = DbClass::Entity;
  bool invisible = false;
  bool ownerByHandle = false;  // while reading: its owner handle (330) decides its space once all is read
};

struct BlockRec {
  std::string name;
  Handle handle = 0;
  std::string layoutName;  // non-empty for model space and paper-space layouts
  int tabOrder = 0;
  bool isLayout = false;
  bool isXref = false;
  bool isAnonymous = false;
  Point3d origin;
  std::uint32_t beginTagBegin = 0, beginTagCount = 0;  // the groups of its BLOCK record
  std::vector<std::uint32_t> entities;                 // top-level entities in drawing order
};

// Table entries other than layers and block records, and the records of the OBJECTS section.
struct ObjectRec {
  std::uint32_t type = 0;  // index into names: "DIMSTYLE", "STYLE", "LAYOUT", "IMAGEDEF", ...
  Handle handle = 0;
  std::uint32_t tagBegin = 0, tagCount = 0;
};

struct HeaderVar {
  std::string name;
  std::uint32_t tagBegin = 0, tagCount = 0;
};

// Work shared by every extents computation of one drawing: the boxes of blocks in their own coordinates,
// computed once, and the entities walked so far against the drawing's budget. Entities that show no block
// touch only the count, so their extents may be computed on several threads at once.
struct ExtentsWork {
  std::unordered_map<std::uint32_t, Extents3d> blockBoxes;
  std::atomic<std::size_t> visits = 0;
};

struct DatabaseData {
  std::string fileName;
  std::string format;
  std::string version;
  std::string codepage;
  int tilemode = 1;
  // Set by the DWG reader once it has decoded the drawing's header variables: without them a DWG's current
  // space is unknown. (A DXF drawing's come from its HEADER section, or are the host's defaults.)
  bool dwgHeaderDecoded = false;

  headless::PageArray<StoredTag> tags;
  headless::PageArray<char> arena;
  std::vector<std::string> names;
  std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> nameIndex;

  std::vector<HeaderVar> header;
  std::unordered_map<std::string, std::string> classes;  // DXF record name -> class name (CLASSES section)
  std::vector<LayerRecord> layerTable;
  std::unordered_map<std::string, std::uint32_t> layerIndex;  // upper-cased name -> layer
  std::vector<std::string> linetypeTable;
  std::vector<BlockRec> blocks;
  std::unordered_map<std::string, std::uint32_t> blockIndex;  // upper-cased name -> block record
  headless::PageArray<EntityRec> entities;
  std::vector<ObjectRec> objects;
  std::unordered_map<std::string, std::uint32_t> tableEntries;  // "TYPE" '\x1f' upper-cased name -> object
  headless::HandleMap byHandle;
  // The binary modeler data (SAB) of regions, solids, bodies and surfaces kept apart from their records (the
  // ACDSDATA section of DXF R2013 and later), by the entity's handle.
  std::unordered_map<Handle, std::string> modelerBinary;
  std::uint32_t modelSpace = 0;
  std::uint32_t paperSpace = 0;
  mutable ExtentsWork extentsWork;  // filled by extents computations, after reading
  std::uint64_t serial = 0;         // unique to this database once it is read; 0 while reading

  std::string_view text(const StoredTag& t) const { return {arena.data() + t.textOffset(), t.textLength()}; }
  std::string_view name(std::uint32_t i) const { return names[i]; }
  std::uint32_t intern(std::string_view s);

  const StoredTag* tagsOf(const EntityRec& e) const { return tags.data() + e.tagBegin; }
  const HeaderVar* headerVar(std::string_view name) const;
  // The first group with this code among [begin, begin + count), or null.
  const StoredTag* find(std::uint32_t begin, std::uint32_t count, int code) const;
  const ObjectRec* object(Handle handle) const;
  // The table entry (STYLE, DIMSTYLE, ...) of this type and name, the name compared without regard to case.
  const ObjectRec* tableEntry(std::string_view type, std::string_view name) const;
};

}  // namespace platform
