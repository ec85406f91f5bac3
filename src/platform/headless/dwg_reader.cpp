// The DWG reader: decodes the tables, blocks and entities of an R13+ drawing into groups in DXF order,
// which the DXF reader then builds its records from, as it does for a DXF file.
#include "platform/headless/dwg_reader.h"

#include <algorithm>
#include <span>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "platform/headless/codepage.h"
#include "platform/headless/dwg_datastore.h"
#include "platform/headless/dwg_dictionaries.h"
#include "platform/headless/dwg_entities.h"
#include "platform/headless/dwg_header.h"
#include "platform/headless/dwg_tables.h"
#include "platform/headless/dxf_reader.h"
#include "platform/text.h"

namespace headless {

using namespace platform;

namespace {

struct StagedEntity {
  std::uint64_t handle = 0;
  std::uint64_t owner = 0;  // the block header, or the entity it belongs to (attributes, vertices)
  std::size_t begin = 0, end = 0;
  std::uint64_t next = 0;  // the entity linked after it (R13-R2000): a block's chain, a polyline's vertices
  // The entities it owns in order, at ownedBegin in DwgReader::owned_: all of them, or (ownedAreEnds)
  // the first and the last.
  std::uint32_t ownedBegin = 0, ownedCount = 0;
  bool ownedAreEnds = false;
  bool sequenceEnd = false;
  bool viewport = false;
};

class DwgReader {
 public:
  DwgReader(DwgSections& sections, ReadReport& report) : s_(sections), report_(report) {}
  // Decodes the drawing into out, which links the reader's own lists: the reader outlives its replay.
  bool run(DwgTagList& out);
  bool headerDecoded() const { return headerDecoded_; }

 private:
  std::string_view typeName(std::uint16_t type) const {
    if (type >= 500) {
      const std::size_t i = type - 500u;
      return i < classes_.size() ? std::string_view(classes_[i].dxfName) : std::string_view();
    }
    return dwgFixedTypeName(type);
  }
  bool isEntity(std::uint16_t type) const {
    if (type >= 500) return type - 500u < classes_.size() && classes_[type - 500u].isEntity;
    return dwgFixedTypeIsEntity(type);
  }
  void damaged(const DwgObjectHeader& h, std::string_view type) {
    ++damagedCount_;
    if (damagedCount_ == 1)
      firstDamage_ = s_.fileName + ": object " + dwgHex(h.handle) + " (" + std::string(type) +
                     ") is damaged and was skipped";
  }
  void decodeTables();
  // The block header the block table names as paper space (0 when it cannot be read), and the place of
  // each of its other entries.
  std::uint64_t readBlockTable(std::unordered_map<std::uint64_t, int>& places);
  bool decodeEntities();
  void orderMembers(std::uint64_t owner, std::span<const std::uint64_t> listed, std::uint64_t first, std::uint64_t last,
                    std::vector<std::uint32_t>& members) const;
  void emitEntity(const StagedEntity& e, DwgTagList& out);
  void numberViewports(const std::vector<std::uint32_t>& members);
  void emitBlocks(DwgTagList& out);
  void emitHeader(DwgTagList& out);
  void emitModelerData(DwgTagList& out);
  // The entities' extension dictionaries and the extended records filed in them, for the OBJECTS section.
  void decodeExtensionDictionaries();

  DwgSections& s_;
  ReadReport& report_;
  std::vector<DwgClass> classes_;
  DwgObjectWalk walk_;
  DwgObjectReader object_;
  DwgNames names_;
  std::vector<DwgBlockHeader> blocks_;
  std::vector<DwgLayout> layouts_;
  DwgTagList tables_[6];  // LTYPE, LAYER, STYLE, APPID, DIMSTYLE, BLOCK_RECORD
  DwgTagList staged_;
  DwgTagList definitions_;  // IMAGEDEF and the underlay definitions, for the OBJECTS section
  DwgTagList extensions_;   // extension dictionaries and their records, for the OBJECTS section
  std::vector<std::uint64_t> extensionDictionaries_;  // as the entities name them
  std::vector<StagedEntity> entities_;
  std::vector<std::uint64_t> owned_;
  std::unordered_map<std::uint64_t, std::uint32_t> indexOf_;  // staged entities by handle, once all are staged
  std::unordered_map<std::uint64_t, std::vector<std::uint32_t>> byOwner_;
  std::unordered_map<std::uint64_t, std::uint64_t> blockEntityLayer_;  // BLOCK and ENDBLK entities' layers
  std::uint64_t modelSpace_ = 0, paperSpace_ = 0;
  std::size_t damagedCount_ = 0;
  std::string firstDamage_;
  bool headerDecoded_ = false;
};

constexpr const char* kTableTypes[] = {"LTYPE", "LAYER", "STYLE", "APPID", "DIMSTYLE"};

void DwgReader::decodeTables() {
  // Linetypes are named by layers, so they come first.
  for (int pass = 0; pass < 2; ++pass) {
    for (const DwgObjectHeader& h : walk_.objects) {
      const std::string_view type = typeName(h.type);
      int table = -1;
      for (int i = 0; i < 5; ++i)
        if (type == kTableTypes[i]) table = i;
      const bool other = type == "BLOCK_HEADER" || type == "LAYOUT";
      if ((pass == 0) != (table == 0 || other) || (table < 0 && !other)) continue;
      if (!object_.open(s_, h, false) ||
          !decodeDwgTableEntry(object_, type, tables_[table < 0 ? 5 : table], names_, blocks_, layouts_) ||
          object_.failed())
        damaged(h, type);
    }
  }
  // The definitions images and underlays name their files in, found through the entities' group 340.
  for (const DwgObjectHeader& h : walk_.objects) {
    const std::string_view type = typeName(h.type);
    const bool image = type == "IMAGEDEF";
    if (!image && type != "PDFDEFINITION" && type != "DWFDEFINITION" && type != "DGNDEFINITION") continue;
    if (!object_.open(s_, h, false)) continue;
    DwgBitReader& b = object_.bits;
    std::string file, page;
    std::int32_t version = 0;
    DwgPoint2 size, pixel;
    bool loaded = false;
    int units = 0;
    if (image) {
      version = b.readBitLong();
      size = b.readRaw2Doubles();
      object_.readText(file);
      loaded = b.readBit();
      units = b.readRawChar();
      pixel = b.readRaw2Doubles();
    } else {
      object_.readText(file);
      object_.readText(page);
    }
    object_.readCommonHandles();
    if (object_.failed()) {
      damaged(h, type);
      continue;
    }
    definitions_.record(type, h.handle);
    definitions_.handle(5, h.handle);
    definitions_.handle(330, object_.common.owner);
    if (image) {
      definitions_.text(100, "AcDbRasterImageDef");
      definitions_.integer(90, version);
      definitions_.text(1, file);
      definitions_.point(10, size, 0.0);
      definitions_.point(11, pixel, 0.0);
      definitions_.integer(280, loaded ? 1 : 0);
      definitions_.integer(281, units);
    } else {
      definitions_.text(100, "AcDbUnderlayDefinition");
      definitions_.text(1, file);
      definitions_.text(2, page);
    }
  }
  // Multiline styles are named by the multilines that use them; their name is their first field.
  for (const DwgObjectHeader& h : walk_.objects) {
    if (typeName(h.type) != "MLINESTYLE" || !object_.open(s_, h, false)) continue;
    std::string name;
    object_.readText(name);
    if (!object_.failed()) names_[h.handle] = std::move(name);
  }
  // Block headers may share a name (the second paper space, anonymous blocks stored as "*U"); they get
  // numbers as DXF writers give them: "*Paper_Space0"; an anonymous block its place in the block table
  // ("*D3" for the fourth entry), or where that is taken or unknown, the next free number ("*U1").
  // The current layout's block is the one the block table names as paper space; the blocks of other
  // layouts stored under the same name are numbered after it.
  std::unordered_map<std::string, int> seen;
  std::unordered_map<std::uint64_t, int> places;
  const std::uint64_t currentPaper = readBlockTable(places);
  for (const DwgBlockHeader& b : blocks_)
    if (b.handle == currentPaper && toUpperAscii(b.name) == "*PAPER_SPACE") {
      paperSpace_ = b.handle;
      seen["*PAPER_SPACE"] = 1;
    }
  for (DwgBlockHeader& b : blocks_) {
    if (b.handle == paperSpace_) continue;
    const std::string key = toUpperAscii(b.name);
    const bool bareAnonymous = key.size() == 2 && key[0] == '*';
    int& count = seen[key];
    if (auto place = places.find(b.handle); bareAnonymous && place != places.end()) {
      std::string name = b.name + std::to_string(place->second);
      if (!seen.contains(toUpperAscii(name))) {
        b.name = name;
        names_[b.handle] = name;
        ++seen[toUpperAscii(name)];
        ++count;
        continue;
      }
    }
    if (count > 0 || bareAnonymous) {
      const bool paper = key == "*PAPER_SPACE";
      std::string name;
      do name = b.name + std::to_string(paper ? count - 1 : count + 1);
      while (seen.contains(toUpperAscii(name)) && ++count < 1'000'000);
      b.name = name;
      names_[b.handle] = name;
      ++seen[toUpperAscii(name)];
    }
    ++count;
    if (key == "*MODEL_SPACE" && !modelSpace_) modelSpace_ = b.handle;
    else if (key == "*PAPER_SPACE" && !paperSpace_) paperSpace_ = b.handle;
  }
}

// The paper space block the block table (its control object) names; 0 when it cannot be read.
std::uint64_t DwgReader::readBlockTable(std::unordered_map<std::uint64_t, int>& places) {
  for (const DwgObjectHeader& h : walk_.objects) {
    if (typeName(h.type) != "BLOCK_CONTROL" || !object_.open(s_, h, false)) continue;
    const std::int32_t entries = object_.bits.readBitLong();
    // Each entry's handle takes at least a byte of the handle stream.
    if (entries < 0 || std::size_t(entries) > object_.handles.bitsLeft() / 8) return 0;
    object_.readCommonHandles();
    for (std::int32_t i = 0; i < entries && !object_.handles.failed(); ++i) places.emplace(object_.readHandle(), i);
    object_.readHandle();  // model space
    const std::uint64_t paper = object_.readHandle();
    if (object_.failed()) places.clear();
    return object_.failed() ? 0 : paper;
  }
  return 0;
}

bool DwgReader::decodeEntities() {
  std::string scratch;
  DwgDecodeContext context(names_);
  context.maintenanceVersion = s_.maintenanceVersion;
  const TextDecoder codePage(s_.codepageName(), TextEncoding::CodePage);
  context.codePage = &codePage;
  context.hookLengths = dwgHookLengths(tables_[4]);
  DwgTagList body;
  // The paper-space layouts' blocks, and the entities in them, whose own entities (a polyline's vertices)
  // are in paper space too.
  std::unordered_set<std::uint64_t> paper;
  for (const DwgBlockHeader& b : blocks_)
    if (b.layout && b.handle != modelSpace_) paper.insert(b.handle);
  for (const DwgObjectHeader& h : walk_.objects) {
    if (!isEntity(h.type)) continue;
    const std::string_view type = typeName(h.type);
    if (type == "BLOCK" || type == "ENDBLK") {
      if (object_.open(s_, h, true)) {
        object_.readCommonHandles();
        if (!object_.failed()) blockEntityLayer_[h.handle] = object_.common.layer;
      }
      continue;
    }
    const DwgEntityType* decoder = findDwgEntityType(h.type, type);
    context.objectClass = h.type >= 500 && h.type - 500u < classes_.size() ? &classes_[h.type - 500u] : nullptr;
    // The host's own classes are named AcDb...; the others belong to applications it does not have.
    if (!decoder && context.objectClass && !context.objectClass->cppName.starts_with("AcDb"))
      decoder = dwgCustomEntityType();
    auto refuse = [&](const std::string& what) {
      report_.error = s_.fileName + ": the DWG reader cannot decode " + what + " entities yet (handle " +
                      dwgHex(h.handle) + ")";
      return false;
    };
    if (!decoder) return refuse(type.empty() ? "type " + std::to_string(h.type) : std::string(type));
    body.truncate(0);
    context.owned.clear();
    context.extendedDataTakenIn = {};
    if (!object_.open(s_, h, true) || !decoder->decode(object_, body, context) || object_.failed()) {
      if (!context.notDecoded.empty()) return refuse(context.notDecoded);
      damaged(h, decoder->dxfName);
      continue;
    }
    const DwgCommon& c = object_.common;
    StagedEntity e;
    e.handle = c.handle;
    e.owner = c.entityMode == 2 ? modelSpace_ : c.entityMode == 1 ? paperSpace_ : c.owner;
    e.sequenceEnd = h.type == 6;
    e.viewport = h.type == 34;
    e.next = c.hasLinks ? c.next : c.handle + 1;
    e.ownedBegin = static_cast<std::uint32_t>(owned_.size());
    e.ownedCount = static_cast<std::uint32_t>(context.owned.size());
    e.ownedAreEnds = context.ownedAreEnds;
    owned_.insert(owned_.end(), context.owned.begin(), context.owned.end());
    e.begin = staged_.size();
    staged_.record(decoder->dxfName, c.handle);
    staged_.handle(5, c.handle);
    if (c.reactorCount > 0) {
      staged_.text(102, "{ACAD_REACTORS");
      for (std::uint32_t i = 0; i < std::min<std::size_t>(c.reactorCount, c.reactors.size()); ++i)
        staged_.handle(330, c.reactors[i]);
      staged_.text(102, "}");
    }
    if (c.xdictionary) {
      extensionDictionaries_.push_back(c.xdictionary);
      staged_.text(102, "{ACAD_XDICTIONARY");
      staged_.handle(360, c.xdictionary);
      staged_.text(102, "}");
    }
    staged_.handle(330, e.owner);
    staged_.text(100, "AcDbEntity");
    if (c.entityMode == 1 || (c.entityMode == 0 && paper.contains(c.owner))) {
      paper.insert(c.handle);
      staged_.integer(67, 1);
    }
    staged_.text(8, context.nameOf(c.layer));
    if (c.linetypeFlags == 1) staged_.text(6, "ByBlock");
    else if (c.linetypeFlags == 2) staged_.text(6, "Continuous");
    else if (c.linetypeFlags == 3) staged_.text(6, context.nameOf(c.linetype));
    if (c.color.index != 256) staged_.integer(62, c.color.index);
    if (c.color.hasRgb && !c.color.hasColorReference) staged_.integer(420, c.color.rgb & 0xFFFFFF);
    // A transparency by block or of its own; DXF leaves out the one by layer (method byte 0).
    if (c.color.hasTransparency && (c.color.transparency >> 24) != 0)
      staged_.integer(440, static_cast<std::int32_t>(c.color.transparency));
    if (c.lineWeight != -1) staged_.integer(370, c.lineWeight);
    if (c.linetypeScale != 1.0) staged_.real(48, c.linetypeScale);
    if (c.invisible & 1) staged_.integer(60, 1);
    // Proxy records carry their graphics in their own part.
    if (std::string_view(decoder->dxfName) != "ACAD_PROXY_ENTITY") appendDwgGraphics(object_, staged_, scratch);
    staged_.append(body, 0, body.size());
    if (c.eedEnd > c.eedBegin + 16 &&
        !appendDwgExtendedData(object_, staged_, names_, scratch, context.extendedDataTakenIn))
      report_.warnings.push_back(s_.fileName + ": object " + dwgHex(c.handle) +
                                 ": its extended data is damaged and was left out");
    e.end = staged_.size();
    byOwner_[e.owner].push_back(static_cast<std::uint32_t>(entities_.size()));
    entities_.push_back(e);
  }
  return true;
}

void DwgReader::decodeExtensionDictionaries() {
  if (extensionDictionaries_.empty()) return;
  std::unordered_map<std::uint64_t, const DwgObjectHeader*> objects;
  for (const DwgObjectHeader& h : walk_.objects) {
    const std::string_view type = typeName(h.type);
    if (type == "DICTIONARY" || type == "XRECORD") objects.emplace(h.handle, &h);
  }
  std::unordered_set<std::uint64_t> done;
  std::vector<std::uint64_t> entries;
  std::vector<std::uint8_t> bytes;
  std::string scratch;
  // A dictionary's entries are read once all dictionaries are: the records among them follow.
  for (std::uint64_t handle : extensionDictionaries_) {
    auto found = objects.find(handle);
    if (found == objects.end() || typeName(found->second->type) != "DICTIONARY" || !done.insert(handle).second) continue;
    if (!object_.open(s_, *found->second, false) || !decodeDwgDictionary(object_, extensions_, entries, scratch))
      damaged(*found->second, "DICTIONARY");
  }
  for (std::uint64_t handle : entries) {
    auto found = objects.find(handle);
    if (found == objects.end() || typeName(found->second->type) != "XRECORD" || !done.insert(handle).second) continue;
    if (!object_.open(s_, *found->second, false) || !decodeDwgXrecord(object_, extensions_, bytes))
      damaged(*found->second, "XRECORD");
  }
}

// Puts the entities of one owner in the order it gives: the handles it lists, or (before R2004) the links
// from its first entity on, up to its last where it names one, each step reaching a member not reached
// before. The members it does not reach follow by handle.
void DwgReader::orderMembers(std::uint64_t owner, std::span<const std::uint64_t> listed, std::uint64_t first,
                             std::uint64_t last, std::vector<std::uint32_t>& members) const {
  std::unordered_map<std::uint64_t, std::size_t> rank;
  for (std::size_t k = 0; k < listed.size(); ++k) rank.emplace(listed[k], k);
  for (std::uint64_t link = listed.empty() ? first : 0; link != 0 && rank.size() < members.size();) {
    auto found = indexOf_.find(link);
    if (found == indexOf_.end() || entities_[found->second].owner != owner || !rank.emplace(link, rank.size()).second ||
        link == last)
      break;
    link = entities_[found->second].next;
  }
  // Each member's place is looked up once: (rank, handle, entity).
  std::vector<std::tuple<std::size_t, std::uint64_t, std::uint32_t>> order;
  order.reserve(members.size());
  for (std::uint32_t i : members) {
    auto r = rank.find(entities_[i].handle);
    order.emplace_back(r == rank.end() ? rank.size() : r->second, entities_[i].handle, i);
  }
  std::sort(order.begin(), order.end());
  for (std::size_t k = 0; k < order.size(); ++k) members[k] = std::get<2>(order[k]);
}

void DwgReader::emitEntity(const StagedEntity& e, DwgTagList& out) {
  out.link(staged_, e.begin, e.end);
  auto it = byOwner_.find(e.handle);
  if (it == byOwner_.end()) return;
  // Attributes and vertices, then the sequence end.
  std::vector<std::uint32_t> members;
  for (std::uint32_t i : it->second)
    if (!entities_[i].sequenceEnd) members.push_back(i);
  if (e.ownedCount > 0) {
    const std::span<const std::uint64_t> owned(owned_.data() + e.ownedBegin, e.ownedCount);
    if (e.ownedAreEnds) orderMembers(e.handle, {}, owned.front(), owned.back(), members);
    else orderMembers(e.handle, owned, 0, 0, members);
  }
  for (std::uint32_t i : members) out.link(staged_, entities_[i].begin, entities_[i].end);
  for (std::uint32_t i : it->second)
    if (entities_[i].sequenceEnd) out.link(staged_, entities_[i].begin, entities_[i].end);
}

// The viewports of the current layout (the one paper space block) are numbered in drawing order from 1,
// their status (68) the same number while they are on; the others keep 0, as DXF writers leave them.
void DwgReader::numberViewports(const std::vector<std::uint32_t>& members) {
  constexpr long long kViewportOff = 0x20000;
  int number = 0;
  for (std::uint32_t i : members) {
    const StagedEntity& e = entities_[i];
    if (!e.viewport) continue;
    ++number;
    bool off = false;
    for (std::size_t k = e.begin; k < e.end; ++k) {
      const DwgTagList::Tag& t = staged_[k];
      if (t.code == 90 && t.type != TagType::Real) off = (t.integer & kViewportOff) != 0;
    }
    for (std::size_t k = e.begin; k < e.end; ++k) {
      const int code = staged_[k].code;
      if (code == 68) staged_.setInteger(k, off ? 0 : number);
      if (code == 69) staged_.setInteger(k, number);
      if (code == 69) break;
    }
  }
}

void DwgReader::emitBlocks(DwgTagList& out) {
  indexOf_.reserve(entities_.size());
  for (std::uint32_t i = 0; i < entities_.size(); ++i) indexOf_.emplace(entities_[i].handle, i);
  auto emitMembers = [&](const DwgBlockHeader& b) {
    auto it = byOwner_.find(b.handle);
    if (it == byOwner_.end()) return;
    std::vector<std::uint32_t> sorted = it->second;
    orderMembers(b.handle, b.entities, b.firstEntity, 0, sorted);
    if (b.handle == paperSpace_) numberViewports(sorted);
    for (std::uint32_t i : sorted) emitEntity(entities_[i], out);
  };
  auto layerOf = [&](std::uint64_t entity) {
    auto it = blockEntityLayer_.find(entity);
    auto name = it == blockEntityLayer_.end() ? names_.end() : names_.find(it->second);
    return name == names_.end() ? std::string_view("0") : std::string_view(name->second);
  };
  // The groups BLOCK and ENDBLK share: the record, its handle, its block record and its layer.
  auto blockMarker = [&](const char* type, std::uint64_t entity, const DwgBlockHeader& b, const char* subclass) {
    out.record(type, entity);
    out.handle(5, entity);
    out.handle(330, b.handle);
    out.text(100, "AcDbEntity");
    out.text(8, layerOf(entity));
    out.text(100, subclass);
  };
  out.record("SECTION");
  out.text(2, "BLOCKS");
  for (const DwgBlockHeader& b : blocks_) {
    blockMarker("BLOCK", b.blockEntity, b, "AcDbBlockBegin");
    out.text(2, b.name);
    out.integer(70, (b.anonymous ? 1 : 0) | (b.hasAttributes ? 2 : 0) | (b.xref ? 4 : 0) | (b.overlaid ? 8 : 0));
    out.point(10, b.base);
    out.text(3, b.name);
    out.text(1, b.xrefPath);
    if (b.handle != modelSpace_ && b.handle != paperSpace_) emitMembers(b);
    blockMarker("ENDBLK", b.endEntity, b, "AcDbBlockEnd");
  }
  out.record("ENDSEC");
  out.record("SECTION");
  out.text(2, "ENTITIES");
  for (const DwgBlockHeader& b : blocks_)
    if (b.handle == modelSpace_) emitMembers(b);
  for (const DwgBlockHeader& b : blocks_)
    if (b.handle == paperSpace_) emitMembers(b);
  out.record("ENDSEC");
}

void DwgReader::emitHeader(DwgTagList& out) {
  out.record("SECTION");
  out.text(2, "HEADER");
  out.text(9, "$ACADVER");
  out.text(1, s_.versionString);
  out.text(9, "$DWGCODEPAGE");
  out.text(3, s_.codepageName().empty() ? std::string_view("ANSI_1252") : s_.codepageName());
  DwgHeaderVariables h;
  std::string error;
  headerDecoded_ = readDwgHeaderVariables(s_, h, error);
  if (headerDecoded_) {
    const std::pair<const char*, const DwgPoint3*> points[] = {
        {"$INSBASE", &h.insbase},       {"$EXTMIN", &h.extmin},           {"$EXTMAX", &h.extmax},
        {"$PINSBASE", &h.paperInsbase}, {"$PEXTMIN", &h.paperExtmin},     {"$PEXTMAX", &h.paperExtmax}};
    for (const auto& [name, p] : points) {
      out.text(9, name);
      out.point(10, *p);
    }
    out.text(9, "$LTSCALE");
    out.real(40, h.ltscale);
    out.text(9, "$TILEMODE");
    out.integer(70, h.tilemode ? 1 : 0);
  } else {
    report_.warnings.push_back(error);
  }
  out.record("ENDSEC");
}

// The modeler data R2013 and later keep in their data store, as DXF keeps them: records of the ACDSDATA section
// naming their entity (320) and holding the SAB in binary chunks (310).
void DwgReader::emitModelerData(DwgTagList& out) {
  const auto data = readDwgModelerData(s_, report_.warnings);
  if (data.empty()) return;
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string hex;
  out.record("SECTION");
  out.text(2, "ACDSDATA");
  for (const auto& [handle, bytes] : data) {
    out.record("ACDSRECORD");
    out.handle(320, handle);
    out.text(2, "ASM_Data");
    out.integer(94, static_cast<long long>(bytes.size()));
    for (std::size_t i = 0; i < bytes.size(); i += 127) {
      hex.clear();
      for (std::size_t k = i; k < std::min(bytes.size(), i + 127); ++k) {
        hex += kHex[static_cast<unsigned char>(bytes[k]) >> 4];
        hex += kHex[static_cast<unsigned char>(bytes[k]) & 15];
      }
      out.text(310, hex);
    }
  }
  out.record("ENDSEC");
}

bool DwgReader::run(DwgTagList& out) {
  classes_ = readDwgClasses(s_, report_.warnings);
  walk_ = walkObjects(s_);
  decodeTables();
  if (!decodeEntities()) return false;
  decodeExtensionDictionaries();
  emitHeader(out);
  out.record("SECTION");
  out.text(2, "CLASSES");
  for (const DwgClass& c : classes_) {
    out.record("CLASS");
    out.text(1, c.dxfName);
    out.text(2, c.cppName);
    out.text(3, c.appName);
    out.integer(281, c.isEntity ? 1 : 0);
  }
  out.record("ENDSEC");
  out.record("SECTION");
  out.text(2, "TABLES");
  constexpr const char* kTableNames[] = {"LTYPE", "LAYER", "STYLE", "APPID", "DIMSTYLE", "BLOCK_RECORD"};
  for (const DwgBlockHeader& b : blocks_) {
    tables_[5].record("BLOCK_RECORD", b.handle);
    tables_[5].handle(5, b.handle);
    tables_[5].text(100, "AcDbSymbolTableRecord");
    tables_[5].text(100, "AcDbBlockTableRecord");
    tables_[5].text(2, b.name);
    if (b.layout) tables_[5].handle(340, b.layout);
  }
  for (int i = 0; i < 6; ++i) {
    out.record("TABLE");
    out.text(2, kTableNames[i]);
    out.link(tables_[i], 0, tables_[i].size());
    out.record("ENDTAB");
  }
  out.record("ENDSEC");
  emitBlocks(out);
  out.record("SECTION");
  out.text(2, "OBJECTS");
  for (const DwgLayout& l : layouts_) {
    const auto b = std::find_if(blocks_.begin(), blocks_.end(), [&](const DwgBlockHeader& x) { return x.layout == l.handle; });
    if (b == blocks_.end()) continue;
    out.record("LAYOUT", l.handle);
    out.handle(5, l.handle);
    out.text(100, "AcDbLayout");
    out.text(1, l.name);
    out.integer(71, l.tabOrder);
    out.handle(330, b->handle);
  }
  out.link(definitions_, 0, definitions_.size());
  out.link(extensions_, 0, extensions_.size());
  out.record("ENDSEC");
  emitModelerData(out);
  out.record("EOF");
  for (std::string& w : walk_.warnings) report_.warnings.push_back(std::move(w));
  if (damagedCount_ > 0)
    report_.warnings.push_back(damagedCount_ == 1 ? firstDamage_
                                                  : firstDamage_ + " (" + std::to_string(damagedCount_) +
                                                        " objects; the first is shown)");
  return true;
}

}  // namespace

namespace {

bool readDwgSections(DwgSections& sections, DatabaseData& data, ReadReport& report) {
  for (std::string& w : sections.warnings) report.warnings.push_back(std::move(w));
  DwgTagList tags;
  DwgReader reader(sections, report);
  if (!reader.run(tags)) return false;
  data.fileName = sections.fileName;
  data.format = "dwg";
  DwgTagSource source(tags, static_cast<long long>(sections.fileBytes.size()));
  if (!readTagStream(source, data, report)) return false;
  data.dwgHeaderDecoded = reader.headerDecoded();
  return true;
}

}  // namespace

bool readDwg(const std::string& path, DatabaseData& data, ReadReport& report) {
  DwgSections sections;
  if (!readDwgContainer(path, sections, report.error)) return false;
  return readDwgSections(sections, data, report);
}

bool readDwg(std::vector<std::uint8_t> bytes, std::string_view fileName, DatabaseData& data, ReadReport& report) {
  DwgSections sections;
  if (!readDwgContainer(std::move(bytes), fileName, sections, report.error)) return false;
  return readDwgSections(sections, data, report);
}

}  // namespace headless
