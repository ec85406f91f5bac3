// The DXF reader: sections, tables, blocks, entities with their attributes and vertices, objects; then the
// links between them (spaces, layouts, handles) are resolved once the whole file has been read.
#include "platform/headless/dxf_reader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstring>
#include <memory>
#include <optional>

#include "platform/headless/codepage.h"
#include "platform/headless/dxf_counts.h"
#include "platform/headless/dxf_tokenizer.h"
#include "platform/headless/modeler_data.h"
#include "platform/text.h"

namespace headless {

using namespace platform;

namespace {

// Warnings of one kind are reported once, with how often they occurred and where first.
class WarningCounter {
 public:
  void add(const std::string& key, const std::string& text) {
    auto it = std::find_if(items_.begin(), items_.end(), [&](const Item& i) { return i.key == key; });
    if (it == items_.end()) items_.push_back({key, text, 1});
    else ++it->count;
  }
  void flush(std::vector<std::string>& out) const {
    for (const Item& i : items_)
      out.push_back(i.count == 1 ? i.text : i.text + " (" + std::to_string(i.count) + " times; the first is shown)");
  }

 private:
  struct Item {
    std::string key, text;
    int count;
  };
  std::vector<Item> items_;
};

// Record names are upper-case words of letters, digits and underscores ("LINE", "3DFACE", "ACAD_TABLE").
bool looksLikeRecordName(std::string_view name) {
  bool letter = false;
  for (char c : name) {
    if (c >= 'A' && c <= 'Z') letter = true;
    else if (!(c >= '0' && c <= '9') && c != '_') return false;
  }
  return letter;
}

// ASCII without backslashes reads as itself in every encoding: no code page or escape changes it.
bool isPlainText(std::string_view s) {
  unsigned char seen = 0;
  bool backslash = false;
  for (char c : s) {
    seen |= static_cast<unsigned char>(c);
    backslash |= c == '\\';
  }
  return seen < 0x80 && !backslash;
}

// Groups whose texts repeat from record to record (subclass markers, layer, linetype and style names,
// owner and other pointers, application names): each spelling is stored once and shared.
bool repeatsText(int code) {
  return (code >= 2 && code <= 8 && code != 5) || code == 100 || code == 102 || code == 1001 ||
         (code >= 330 && code <= 369) || (code >= 390 && code <= 399);
}

// A text's length and its first and last eight bytes: for texts of up to 16 bytes, all of them. Names,
// markers and handles mostly are that short, so they are hashed and told apart without a call.
struct TextKey {
  std::uint64_t head = 0, tail = 0;
  std::size_t size = 0;

  TextKey() = default;
  explicit TextKey(std::string_view s) : size(s.size()) {
    if (s.size() >= 8) {
      std::memcpy(&head, s.data(), 8);
      std::memcpy(&tail, s.data() + s.size() - 8, 8);
    } else {
      for (char c : s) head = head << 8 | static_cast<unsigned char>(c);
    }
  }
  std::size_t slot(std::size_t slots) const {
    const std::uint64_t h = (head * 0x9E3779B97F4A7C15ULL) ^ (tail * 0xC2B2AE3D27D4EB4FULL) ^ size;
    return static_cast<std::size_t>((h ^ h >> 29) % slots);
  }
  // Whether text, whose key this is, equals stored, whose key is other.
  bool same(const TextKey& other, std::string_view text, const char* stored) const {
    return head == other.head && tail == other.tail && size == other.size &&
           (size <= 16 || std::memcmp(text.data() + 8, stored + 8, size - 16) == 0);
  }
};

class DxfReader {
 public:
  DxfReader(TagSource& tok, DatabaseData& db, ReadReport& report)
      : tok_(tok), dxf_(dynamic_cast<DxfTokenizer*>(&tok)), db_(db), report_(report) {}

  bool run();

 private:
  // Tag stream with one tag of look-ahead; every group read passes here, so it is kept in its callers.
  [[gnu::always_inline]] bool next() {
    if (pushed_) {
      pushed_ = false;
      return true;
    }
    for (;;) {
      // A DXF file's tags, the bulk of all reading, are read without the indirection of a tag source.
      if (!(dxf_ ? dxf_->next(cur_) : tok_.next(cur_))) return false;
      // A damaged group is dropped whole: its record keeps the groups around it, never a neighbour's value
      // in its place, and is kept or dropped by the rules for the groups that remain.
      if (cur_.damage != RawTag::Damage::None) {
        warn(cur_.damage == RawTag::Damage::Code ? "damaged-code" : "damaged-value",
             std::string(cur_.damageText) + "; the group is dropped");
        continue;
      }
      if (cur_.code != 999) return true;  // comments are skipped
    }
  }
  void pushBack() { pushed_ = true; }
  bool isStructure(std::string_view name) const { return cur_.code == 0 && cur_.text == name; }
  bool fail(const std::string& what) {
    if (tok_.failed()) report_.error = tok_.error();
    else report_.error = db_.fileName + ": " + tok_.location() + ": " + what;
    return false;
  }
  bool failAtEnd(const std::string& where) {
    if (tok_.failed()) return fail("");
    return fail("the file ends " + where);
  }
  void warn(const std::string& key, const std::string& what) {
    warnings_.add(key, db_.fileName + ": " + tok_.location() + ": " + what);
  }
  int location() const { return static_cast<int>(tok_.position()); }
  std::string place(long long position) const { return tok_.place(position); }
  std::string encodingName() const {
    const std::string codepage = db_.codepage.empty() ? "ANSI_1252" : db_.codepage;
    switch (decoder_ ? decoder_->encoding() : decoderKind_.encoding) {
      case TextEncoding::Utf8: return "UTF-8";
      case TextEncoding::CodePage: return "in code page " + codepage;
      case TextEncoding::Utf8OrCodePage: break;
    }
    return "UTF-8 or in code page " + codepage;
  }

  // Stores the current tag; texts are decoded to UTF-8. False (with the error set) when the drawing holds
  // more groups or text than the storage can index.
  bool store();
  // Puts the text into the arena (or finds it there, for groups whose texts repeat) and points t at it.
  bool storeText(StoredTag& t, std::string_view text);
  void setDecoder();

  bool readHeader();
  bool readClasses();
  bool readTables();
  bool readTable();
  bool readBlocks();
  bool readEntities(std::uint32_t block, const char* section);
  bool readObjects();
  bool skipSection(std::string_view name);
  bool readModelerData();
  // Reads the groups of one record after its 0 tag, up to the next 0 tag (left for the caller).
  bool readRecordTags(std::uint32_t& begin, std::uint32_t& count, const char* where) {
    return readTags(begin, count, where, [] { return false; });
  }
  // The same, where `take` may keep the current group elsewhere (true) rather than have it stored.
  template <typename Take>
  bool readTags(std::uint32_t& begin, std::uint32_t& count, const char* where, Take&& take);
  // The same for an entity, except that the handle (5) and owner (330) of its common part, before its first
  // subclass marker or extension data, go to e.handle and owner rather than into the groups when they name
  // a handle: every entity has them, and nothing reads them as groups. Others of those codes are stored.
  bool readEntityTags(EntityRec& e, Handle& owner, const char* where);

  void finishEntity(EntityRec& e);
  // The names index of a record's type; the types met so far are remembered by their key.
  std::uint32_t internRecordName(std::string_view type);
  // The layer, or linetype, a stored text names: each text stored is remembered by its place.
  std::uint32_t layerOf(const StoredTag* t);
  std::uint32_t linetypeOf(const StoredTag* t);
  std::uint32_t layerFor(std::string_view name);
  std::uint32_t findOrAddLayer(std::string_view name);
  std::uint32_t linetypeFor(std::string_view name);
  std::uint32_t blockFor(std::string_view name);
  void linkMTextColumns();
  void finish();

  TagSource& tok_;
  DxfTokenizer* dxf_;  // the same source when it is a DXF file
  DatabaseData& db_;
  ReadReport& report_;
  RawTag cur_;
  bool pushed_ = false;
  // Made when first needed: most texts are plain ASCII, which every encoding reads alike. The header
  // names the release and the code page one after the other, and ends: a decoder the same as the one
  // there is kept.
  std::unique_ptr<TextDecoder> decoder_;
  struct DecoderKind {
    std::string iconvName;
    bool unknownCodepage = false;
    TextEncoding encoding = TextEncoding::Utf8OrCodePage;
    bool operator==(const DecoderKind&) const = default;
  };
  DecoderKind decoderKind_;
  TextDecoder& decoder() {
    if (!decoder_) decoder_ = std::make_unique<TextDecoder>(db_.codepage, decoderKind_.encoding);
    return *decoder_;
  }
  std::string scratch_;
  WarningCounter warnings_;
  std::unordered_map<std::string, std::uint32_t> linetypeIndex_;  // upper-cased name -> names index
  // The owner handles (330) of the ENTITIES section's entities that name one, in drawing order, each with
  // how many entities in a row name it: mostly one run, the model space.
  std::vector<std::pair<Handle, std::uint32_t>> ownerRuns_;
  int unnamedBlocks_ = 0;
  std::string lastLayerName_, lastLinetypeName_;
  std::uint32_t lastLayer_ = kNone, lastLinetype_ = kNone;
  bool sawHeader_ = false;
  long long recordLine_ = 0;        // where the record being read begins
  long long textWarnedAt_ = -1;     // the record whose texts were last warned of
  // Texts that repeat, by a hash of their bytes: the last one stored under each slot.
  struct SharedText {
    TextKey key;
    std::uint32_t offset = 0;
  };
  // Texts are placed by 32-bit offsets.
  static constexpr std::size_t kMaxArena = 0xFFFFFFFFu;
  static constexpr std::size_t kSharedSlots = 1024;
  std::array<SharedText, kSharedSlots> shared_{};
  // What is known of each DXF name (by names index), once asked: its class when the name alone decides it,
  // and whether its records state counts to check.
  static constexpr std::int16_t kUnknownClass = -1;
  static constexpr std::int16_t kClassFromGroups = -2;
  std::vector<std::int16_t> classByName_;
  std::vector<std::int8_t> countsByName_;
  struct KnownName {
    TextKey key;
    std::uint32_t index = kNone;
  };
  std::array<KnownName, 64> recordNames_{};
  struct KnownText {
    std::uint64_t place = 0;  // StoredTag::textPlace of a text met, 0 for none (an empty text at 0)
    std::uint32_t index = 0;
  };
  std::array<KnownText, 64> layerTexts_{}, linetypeTexts_{};
};

std::uint32_t DxfReader::internRecordName(std::string_view type) {
  const TextKey key(type);
  KnownName& known = recordNames_[key.slot(recordNames_.size())];
  if (known.index != kNone && key.same(known.key, type, db_.names[known.index].data())) return known.index;
  known = {key, db_.intern(type)};
  return known.index;
}

std::uint32_t DxfReader::layerOf(const StoredTag* t) {
  if (!t || t->textLength() == 0) return layerFor("0");
  KnownText& known = layerTexts_[(t->textPlace ^ t->textPlace >> 32) % layerTexts_.size()];
  if (known.place != t->textPlace) known = {t->textPlace, layerFor(db_.text(*t))};
  return known.index;
}

std::uint32_t DxfReader::linetypeOf(const StoredTag* t) {
  if (!t || t->textLength() == 0) return linetypeFor("ByLayer");
  KnownText& known = linetypeTexts_[(t->textPlace ^ t->textPlace >> 32) % linetypeTexts_.size()];
  if (known.place != t->textPlace) known = {t->textPlace, linetypeFor(db_.text(*t))};
  return known.index;
}

bool DxfReader::store() {
  if (db_.tags.size() >= kNone) return fail("the drawing holds more groups than can be read (" + std::to_string(kNone) + ")");
  StoredTag t;
  t.code = static_cast<std::int16_t>(cur_.code);
  t.type = cur_.type;
  switch (cur_.type) {
    case TagType::Text: {
      if (isPlainText(cur_.text)) {
        if (!storeText(t, cur_.text)) return false;
        break;
      }
      scratch_.clear();
      if (decoder().decode(cur_.text, scratch_) > 0 && textWarnedAt_ != recordLine_) {
        // One warning per record, at the record's line.
        textWarnedAt_ = recordLine_;
        warnings_.add("encoding", db_.fileName + ": " + place(recordLine_) +
                                      ": a text holds bytes that are not valid " + encodingName() +
                                      ", or an escape that names no character; they read as U+FFFD");
      }
      if (!storeText(t, scratch_)) return false;
      break;
    }
    case TagType::Handle:
    case TagType::Binary:
      if (!storeText(t, cur_.text)) return false;
      break;
    case TagType::Real:
      t.real = cur_.real;
      break;
    default:
      t.integer = cur_.integer;
      break;
  }
  db_.tags.push_back(t);
  return true;
}

bool DxfReader::storeText(StoredTag& t, std::string_view text) {
  if (repeatsText(t.code) && text.size() <= 64) {
    const TextKey key(text);
    SharedText& slot = shared_[key.slot(kSharedSlots)];
    if (key.same(slot.key, text, db_.arena.data() + slot.offset)) {
      t.setText(slot.offset, static_cast<std::uint32_t>(text.size()));
      return true;
    }
    slot = {key, static_cast<std::uint32_t>(db_.arena.size())};
  }
  if (text.size() > kMaxArena - db_.arena.size())
    return fail("the drawing holds more text than can be read (" + std::to_string(kMaxArena >> 20) + " MB)");
  t.setText(static_cast<std::uint32_t>(db_.arena.size()), static_cast<std::uint32_t>(text.size()));
  db_.arena.append(text.data(), text.size());
  return true;
}

void DxfReader::setDecoder() {
  // R2007 (AC1021) and later store UTF-8 whatever the code page says.
  const TextEncoding encoding = db_.version.empty()        ? TextEncoding::Utf8OrCodePage
                                : db_.version >= "AC1021" ? TextEncoding::Utf8
                                                          : TextEncoding::CodePage;
  // Decoders of the same code page's converter, as well known, and of the same encoding are alike.
  DecoderKind kind{iconvNameOf(db_.codepage), false, encoding};
  kind.unknownCodepage = kind.iconvName.empty() && !db_.codepage.empty();
  if (!decoder_ || !(kind == decoderKind_)) {
    decoderKind_ = kind;
    decoder_ = std::make_unique<TextDecoder>(db_.codepage, encoding);
  }
  if (!db_.codepage.empty() && !decoder_->knownCodepage())
    warn("codepage", "unknown code page '" + db_.codepage + "': texts are read as ANSI_1252");
}

bool DxfReader::run() {
  bool sawEof = false;
  long long stray = 0;
  std::string strayAt;
  while (next()) {
    if (isStructure("EOF")) {
      sawEof = true;
      break;
    }
    if (!isStructure("SECTION")) {
      // Groups outside any section are skipped up to the next section.
      if (stray++ == 0) strayAt = tok_.location();
      continue;
    }
    if (!next()) return failAtEnd("after 0/SECTION, before the section's name (group 2)");
    if (cur_.code != 2) return fail("expected the section's name (group 2) after 0/SECTION");
    const std::string name = platform::toUpperAscii(cur_.text);
    bool ok;
    if (name == "HEADER") ok = sawHeader_ = readHeader();
    else if (name == "CLASSES") ok = readClasses();
    else if (name == "TABLES") ok = readTables();
    else if (name == "BLOCKS") ok = readBlocks();
    else if (name == "ENTITIES") ok = readEntities(kNone, "ENTITIES");
    else if (name == "OBJECTS") ok = readObjects();
    else if (name == "ACDSDATA") ok = readModelerData();
    else ok = skipSection(name);
    if (!ok) return false;
  }
  if (tok_.failed()) return fail("");
  if (!sawHeader_)
    warnings_.add("noheader", db_.fileName + ": the drawing has no HEADER section: its release and code page are "
                                             "not known, so texts are read as UTF-8, else as ANSI_1252");
  if (stray > 0)
    warnings_.add("stray", db_.fileName + ": " + strayAt + ": " + std::to_string(stray) +
                                " groups outside any section were skipped");
  if (tok_.grew())
    warnings_.add("grew", db_.fileName + ": the file grew while it was read; only its first " +
                              std::to_string(tok_.fileSize()) + " bytes were read");
  if (!sawEof) {
    warnings_.add("eof", db_.fileName + ": the file ends without 0/EOF");
  } else if (tok_.hasMoreInput()) {
    warnings_.add("trailing", db_.fileName + ": " + tok_.location() + ": data after 0/EOF was ignored");
  }
  finish();
  warnings_.flush(report_.warnings);
  return true;
}

bool DxfReader::skipSection(std::string_view name) {
  while (next())
    if (isStructure("ENDSEC")) return true;
  return failAtEnd("inside section " + std::string(name) + ": expected 0/ENDSEC");
}

// A handle as DXF writes it: upper-case hexadecimal.
std::string handleText(Handle h) {
  char buf[20];
  const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, h, 16);
  std::string out(buf, ec == std::errc() ? end : buf);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

// The data-storage section: schemas, then records. A record of modeler data names its entity (320) and holds
// the SAB bytes as binary chunks (310) after its "ASM_Data" item (2); other records (thumbnails) are passed over.
bool DxfReader::readModelerData() {
  Handle owner = 0;
  std::string* target = nullptr;
  const auto hexDigit = [](char c) {
    return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
  };
  while (next()) {
    if (cur_.code == 0) {
      if (isStructure("ENDSEC")) {
        // Data that cannot be read are named now, not left to show as a shape without extents.
        std::string error;
        for (const auto& [handle, bytes] : db_.modelerBinary) {
          modeler::Model model;
          if (!model.readSab(bytes, &error))
            warn("modeler", "the modeler data of entity " + handleText(handle) + " cannot be read (" + error +
                                "); the entity has no shape");
        }
        return true;
      }
      owner = 0;
      target = nullptr;
      continue;
    }
    if (cur_.code == 320) {
      owner = parseHandle(cur_.text);
      target = nullptr;
    } else if (cur_.code == 2) {
      target = nullptr;
      if (owner && cur_.text == "ASM_Data") {
        target = &db_.modelerBinary[owner];
        target->clear();
      }
    } else if (cur_.code == 310 && target) {
      const std::string_view hex = cur_.text;
      for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        const int hi = hexDigit(hex[i]), lo = hexDigit(hex[i + 1]);
        if (hi < 0 || lo < 0 || hex.size() % 2 != 0) {
          // Damaged: the entity keeps no data rather than wrong data.
          warn("modeler", "the modeler data of entity " + handleText(owner) +
                              " hold a chunk that is not hexadecimal; the entity has no shape");
          db_.modelerBinary.erase(owner);
          target = nullptr;
          break;
        }
        target->push_back(static_cast<char>(hi * 16 + lo));
      }
    }
  }
  return failAtEnd("inside section ACDSDATA: expected 0/ENDSEC");
}

bool DxfReader::readHeader() {
  HeaderVar* var = nullptr;
  while (next()) {
    if (cur_.code == 0) {
      if (isStructure("ENDSEC")) {
        setDecoder();
        return true;
      }
      return fail("expected 0/ENDSEC or a header variable (group 9) in section HEADER, found 0/" +
                  std::string(cur_.text));
    }
    if (cur_.code == 9) {
      recordLine_ = tok_.position();
      db_.header.push_back({std::string(cur_.text), static_cast<std::uint32_t>(db_.tags.size()), 0});
      var = &db_.header.back();
      continue;
    }
    if (!var) {
      warn("header-orphan", "a header value without its variable name (group 9) was skipped");
      continue;
    }
    if (!store()) return false;
    ++var->tagCount;
    if (var->name == "$ACADVER" && cur_.type == TagType::Text) {
      db_.version = std::string(cur_.text);
      setDecoder();
    } else if (var->name == "$DWGCODEPAGE" && cur_.type == TagType::Text) {
      db_.codepage = std::string(cur_.text);
      setDecoder();
    } else if (var->name == "$TILEMODE" && isIntegral(cur_.type)) {
      db_.tilemode = static_cast<int>(cur_.integer);
    }
  }
  return failAtEnd("inside section HEADER: expected 0/ENDSEC");
}

bool DxfReader::readClasses() {
  while (next()) {
    if (isStructure("ENDSEC")) return true;
    if (!isStructure("CLASS")) {
      if (cur_.code == 0) return fail("expected 0/CLASS or 0/ENDSEC in section CLASSES");
      continue;
    }
    std::string record, cls;
    while (next()) {
      if (cur_.code == 0) {
        pushBack();
        break;
      }
      if (cur_.code == 1) record = std::string(cur_.text);
      else if (cur_.code == 2) cls = std::string(cur_.text);
    }
    if (!record.empty()) {
      db_.classes[record] = cls;
      classByName_.clear();  // a name's class may come from this section
    }
  }
  return failAtEnd("inside section CLASSES: expected 0/ENDSEC");
}

template <typename Take>
bool DxfReader::readTags(std::uint32_t& begin, std::uint32_t& count, const char* where, Take&& take) {
  begin = static_cast<std::uint32_t>(db_.tags.size());
  recordLine_ = tok_.position();
  while (next()) {
    if (cur_.code == 0) {
      pushBack();
      count = static_cast<std::uint32_t>(db_.tags.size()) - begin;
      return true;
    }
    if (!take() && !store()) return false;
  }
  return failAtEnd(std::string("inside a record of section ") + where + ": expected the next record (group 0)");
}

bool DxfReader::readEntityTags(EntityRec& e, Handle& owner, const char* where) {
  bool common = true;
  bool sawHandle = false, sawOwner = false;
  int depth = 0;
  // Taken are the first of each code outside application groups, as finishEntity and the owner lookup would
  // find them among the stored groups.
  const auto takeFirst = [&](bool& saw, Handle& into) {
    if (depth > 0 || saw) return false;
    saw = true;
    const Handle h = parseHandle(cur_.text);
    if (h) into = h;
    return h != 0;
  };
  return readTags(e.tagBegin, e.tagCount, where, [&] {
    if (!common) return false;
    switch (cur_.code) {
      case 100:
      case 1001: common = false; return false;
      case 102:
        // A text the decoder would change could read otherwise once stored: the stored groups decide.
        if (isPlainText(cur_.text)) depth += cur_.text.starts_with("{") ? 1 : -1;
        else common = false;
        return false;
      case 5: return takeFirst(sawHandle, e.handle);
      case 330: return takeFirst(sawOwner, owner);
      default: return false;
    }
  });
}

bool DxfReader::readTables() {
  while (next()) {
    if (isStructure("ENDSEC")) return true;
    if (isStructure("TABLE")) {
      if (!readTable()) return false;
      continue;
    }
    return fail("expected 0/TABLE or 0/ENDSEC in section TABLES, found group " + std::to_string(cur_.code));
  }
  return failAtEnd("inside section TABLES: expected 0/ENDSEC");
}

bool DxfReader::readTable() {
  // The table's own groups: its name (2), handle, owner, entry count.
  std::string tableName;
  while (next()) {
    if (cur_.code == 0) break;
    if (cur_.code == 2 && tableName.empty()) tableName = platform::toUpperAscii(cur_.text);
  }
  if (tok_.failed()) return fail("");
  if (cur_.code != 0) return failAtEnd("inside a TABLE: expected 0/ENDTAB");
  pushBack();
  while (next()) {
    if (isStructure("ENDTAB")) return true;
    if (isStructure("ENDSEC")) {
      warn("endtab", "table " + tableName + " has no 0/ENDTAB");
      pushBack();
      return true;
    }
    if (cur_.code != 0) return fail("expected a table entry (group 0) in table " + tableName);
    const std::string type(cur_.text);
    const int line = location();
    std::uint32_t begin, count;
    if (!readRecordTags(begin, count, "TABLES")) return false;
    const StoredTag* nameTag = db_.find(begin, count, 2);
    const std::string name = nameTag ? std::string(db_.text(*nameTag)) : std::string();
    const StoredTag* handleTag = db_.find(begin, count, type == "DIMSTYLE" ? 105 : 5);
    if (!handleTag && type == "DIMSTYLE") handleTag = db_.find(begin, count, 5);
    const Handle handle = handleTag ? parseHandle(db_.text(*handleTag)) : 0;
    if (name.empty() && (type == "LAYER" || type == "LTYPE" || type == "BLOCK_RECORD")) {
      warnings_.add("noname-" + type, db_.fileName + ": " + place(line) + ": a " + type +
                                          " entry without a name was skipped");
      continue;
    }
    if (type == "LAYER") {
      const std::uint32_t li = layerFor(name);
      LayerRecord& layer = db_.layerTable[li];
      if (const StoredTag* t = db_.find(begin, count, 62)) {
        layer.isOff = t->integer < 0;
        layer.colorIndex = static_cast<int>(t->integer < 0 ? -t->integer : t->integer);
      }
      if (const StoredTag* t = db_.find(begin, count, 6)) layer.linetype = std::string(db_.name(linetypeFor(db_.text(*t))));
      if (const StoredTag* t = db_.find(begin, count, 370)) layer.lineWeight = static_cast<int>(t->integer);
      if (const StoredTag* t = db_.find(begin, count, 70)) {
        layer.isFrozen = (t->integer & 1) != 0;
        layer.isLocked = (t->integer & 4) != 0;
      }
      if (handle) db_.byHandle.emplace(handle, layer.id);
    } else if (type == "LTYPE") {
      linetypeFor(name);
      db_.linetypeTable.push_back(name);
    } else if (type == "BLOCK_RECORD") {
      const std::uint32_t bi = blockFor(name);
      db_.blocks[bi].handle = handle;
      if (handle) db_.byHandle.emplace(handle, makeId(IdKind::BlockRecord, bi));
    } else {
      ObjectRec o;
      o.type = db_.intern(type);
      o.handle = handle;
      o.tagBegin = begin;
      o.tagCount = count;
      db_.objects.push_back(o);
      const auto index = static_cast<std::uint32_t>(db_.objects.size() - 1);
      if (handle) db_.byHandle.emplace(handle, makeId(IdKind::Object, index));
      // The first entry of a name is the one the table answers with.
      db_.tableEntries.emplace(type + '\x1f' + platform::toUpperAscii(name), index);
    }
  }
  return failAtEnd("inside table " + tableName + ": expected 0/ENDTAB");
}

bool DxfReader::readBlocks() {
  while (next()) {
    if (isStructure("ENDSEC")) return true;
    if (!isStructure("BLOCK")) return fail("expected 0/BLOCK or 0/ENDSEC in section BLOCKS, found group " +
                                           std::to_string(cur_.code) + " '" + std::string(cur_.text) + "'");
    std::uint32_t begin, count;
    if (!readRecordTags(begin, count, "BLOCKS")) return false;
    const StoredTag* nameTag = db_.find(begin, count, 2);
    if (!nameTag) nameTag = db_.find(begin, count, 3);
    std::string name = nameTag ? std::string(db_.text(*nameTag)) : std::string();
    if (name.empty()) {
      warn("block-noname", "a block without a name (group 2) was read under a made-up name");
      name = "*UNNAMED" + std::to_string(++unnamedBlocks_);
    }
    const std::uint32_t bi = blockFor(name);
    BlockRec& b = db_.blocks[bi];
    b.beginTagBegin = begin;
    b.beginTagCount = count;
    if (const StoredTag* t = db_.find(begin, count, 70)) {
      b.isXref = (t->integer & 4) != 0;
      b.isAnonymous = (t->integer & 1) != 0;
    }
    if (const StoredTag* x = db_.find(begin, count, 10)) {
      const StoredTag* y = db_.find(begin, count, 20);
      const StoredTag* z = db_.find(begin, count, 30);
      b.origin = {x->real, y ? y->real : 0.0, z ? z->real : 0.0};
    }
    if (b.handle == 0) {
      // Without a BLOCK_RECORD table (R12) the block's own handle names it.
      if (const StoredTag* h = db_.find(begin, count, 5)) {
        const Handle handle = parseHandle(db_.text(*h));
        if (handle && !db_.byHandle.contains(handle)) {
          b.handle = handle;
          db_.byHandle.emplace(handle, makeId(IdKind::BlockRecord, bi));
        }
      }
    }
    if (!readEntities(bi, "BLOCKS")) return false;
  }
  return failAtEnd("inside section BLOCKS: expected 0/ENDSEC");
}

// Reads entities until 0/ENDSEC (the ENTITIES section) or 0/ENDBLK (a block), which it consumes.
bool DxfReader::readEntities(std::uint32_t block, const char* section) {
  const bool inBlock = block != kNone;
  std::uint32_t sequenceOwner = kNone;  // an INSERT or POLYLINE whose attributes or vertices follow
  while (next()) {
    if (cur_.code != 0) return fail(std::string("expected an entity (group 0) in section ") + section + ", found group " +
                                    std::to_string(cur_.code));
    if (isStructure(inBlock ? "ENDBLK" : "ENDSEC")) {
      if (inBlock) {
        std::uint32_t b, c;
        if (!readRecordTags(b, c, section)) return false;
      }
      return true;
    }
    if (inBlock && isStructure("ENDSEC")) {
      warn("endblk", "block " + db_.blocks[block].name + " has no 0/ENDBLK");
      pushBack();
      return true;
    }
    if (!inBlock && isStructure("ENDBLK")) return fail("0/ENDBLK outside a block in section ENTITIES");
    // The type is taken in before the record's groups are read: they may refill the tokenizer's buffer.
    const std::string type(cur_.text);
    if (type == "SEQEND") {
      std::uint32_t b, c;
      if (!readRecordTags(b, c, section)) return false;
      if (sequenceOwner == kNone) warn("seqend", "0/SEQEND without a POLYLINE or INSERT before it was skipped");
      sequenceOwner = kNone;
      continue;
    }
    if (!looksLikeRecordName(type))
      warn("badname", "a record named '" + type.substr(0, 40) +
                          "' is no entity type: a group before it is probably damaged; it is read as an unknown entity");
    EntityRec e;
    e.dxfName = internRecordName(type);
    e.line = location();
    const bool isAttrib = type == "ATTRIB";
    const bool isVertex = type == "VERTEX";
    Handle owner = 0;
    if (!readEntityTags(e, owner, section)) return false;
    const std::uint32_t index = static_cast<std::uint32_t>(db_.entities.size());
    if (isAttrib || isVertex) {
      const bool fits = sequenceOwner != kNone &&
                        (isAttrib ? db_.name(db_.entities[sequenceOwner].dxfName) == "INSERT"
                                  : db_.name(db_.entities[sequenceOwner].dxfName) == "POLYLINE");
      if (!fits) {
        warn(isAttrib ? "orphan-attrib" : "orphan-vertex",
             std::string(isAttrib ? "an ATTRIB" : "a VERTEX") + " that follows no " +
                 (isAttrib ? "INSERT" : "POLYLINE") + " was skipped");
        continue;
      }
      e.owner = sequenceOwner;
      ++db_.entities[sequenceOwner].subCount;
    } else {
      sequenceOwner = (type == "INSERT" || type == "POLYLINE") ? index : kNone;
    }
    e.block = inBlock ? block : db_.modelSpace;
    finishEntity(e);
    db_.entities.push_back(e);
    if (!inBlock && e.owner == kNone) {
      const StoredTag* tags = db_.tagsOf(e);
      bool paper = false;
      int depth = 0;
      for (std::uint32_t i = 0; i < e.tagCount; ++i) {
        const StoredTag& t = tags[i];
        if (t.code == 102) depth += db_.text(t).starts_with("{") ? 1 : -1;
        else if (t.code == 330 && depth <= 0 && owner == 0) owner = parseHandle(db_.text(t));
        else if (t.code == 67) paper = t.integer == 1;
      }
      db_.entities.back().block = paper ? db_.paperSpace : db_.modelSpace;
      if (owner) {
        db_.entities.back().ownerByHandle = true;
        if (!ownerRuns_.empty() && ownerRuns_.back().first == owner) ++ownerRuns_.back().second;
        else ownerRuns_.emplace_back(owner, 1);
      }
    }
  }
  return failAtEnd(std::string("inside section ") + section + (inBlock ? ": expected 0/ENDBLK" : ": expected 0/ENDSEC"));
}

bool DxfReader::readObjects() {
  while (next()) {
    if (isStructure("ENDSEC")) return true;
    if (cur_.code != 0) return fail("expected an object (group 0) in section OBJECTS");
    ObjectRec o;
    o.type = db_.intern(cur_.text);
    if (!readRecordTags(o.tagBegin, o.tagCount, "OBJECTS")) return false;
    if (const StoredTag* h = db_.find(o.tagBegin, o.tagCount, 5)) o.handle = parseHandle(db_.text(*h));
    db_.objects.push_back(o);
    if (o.handle) db_.byHandle.emplace(o.handle, makeId(IdKind::Object, static_cast<std::uint32_t>(db_.objects.size() - 1)));
  }
  return failAtEnd("inside section OBJECTS: expected 0/ENDSEC");
}

void DxfReader::finishEntity(EntityRec& e) {
  const StoredTag* tags = db_.tagsOf(e);
  const StoredTag* layerName = nullptr;
  const StoredTag* linetype = nullptr;
  int depth = 0;
  bool sawXdata = false;
  for (std::uint32_t i = 0; i < e.tagCount; ++i) {
    const StoredTag& t = tags[i];
    if (t.code == 1001) sawXdata = true;
    if (sawXdata) continue;  // extension data can repeat codes with other meanings
    if (t.code == 102) {
      depth += db_.text(t).starts_with("{") ? 1 : -1;
      continue;
    }
    if (depth > 0) continue;
    switch (t.code) {
      case 5:
        if (!e.handle) {
          e.handle = parseHandle(db_.text(t));
          if (!e.handle) warn("badhandle", "an entity with an empty or invalid handle (group 5) was given a new one");
        }
        break;
      case 8: layerName = &t; break;
      case 6: linetype = &t; break;
      case 62: e.color = static_cast<std::int16_t>(t.integer); break;
      case 48: e.linetypeScale = t.real; break;
      case 370: e.lineWeight = static_cast<std::int16_t>(t.integer); break;
      case 60: e.invisible = t.integer == 1; break;
      default: break;
    }
  }
  e.layer = layerOf(layerName);
  e.linetype = linetypeOf(linetype);
  if (classByName_.size() <= e.dxfName) classByName_.resize(db_.names.size(), kUnknownClass);
  std::int16_t& known = classByName_[e.dxfName];
  if (known == kUnknownClass)
    known = classDependsOnGroups(db_.name(e.dxfName)) ? kClassFromGroups : static_cast<std::int16_t>(classifyEntity(db_, e));
  e.cls = known == kClassFromGroups ? classifyEntity(db_, e) : static_cast<DbClass>(known);
  if (e.cls == DbClass::Circle || e.cls == DbClass::Arc) {
    const StoredTag* radius = db_.find(e.tagBegin, e.tagCount, 40);
    if (radius && !(radius->real > 0.0))
      warn("radius", "a circle or arc with a radius of 0 or less is read as written");
  }
  if (countsByName_.size() <= e.dxfName) countsByName_.resize(db_.names.size(), -1);
  std::int8_t& counts = countsByName_[e.dxfName];
  if (counts < 0) counts = statesCounts(db_.name(e.dxfName)) ? 1 : 0;
  if (counts)
    checkCounts(db_, e, [&](const std::string& key, const std::string& text) {
      warnings_.add(key, db_.fileName + ": " + place(e.line) + ": " + text);
    });
}

std::uint32_t DxfReader::layerFor(std::string_view name) {
  // Entities mostly follow others of their layer: the last answer is kept.
  if (lastLayer_ != kNone && name == lastLayerName_) return lastLayer_;
  const std::uint32_t index = findOrAddLayer(name);
  lastLayerName_.assign(name);
  lastLayer_ = index;
  return index;
}

std::uint32_t DxfReader::findOrAddLayer(std::string_view name) {
  const std::string key = platform::toUpperAscii(name);
  if (auto it = db_.layerIndex.find(key); it != db_.layerIndex.end()) return it->second;
  // A layer that the table lacks is created with the defaults, as the host does on reading.
  const auto index = static_cast<std::uint32_t>(db_.layerTable.size());
  LayerRecord layer;
  layer.id = makeId(IdKind::Layer, index);
  layer.name = std::string(name);
  db_.layerTable.push_back(layer);
  db_.layerIndex.emplace(key, index);
  return index;
}

std::uint32_t DxfReader::linetypeFor(std::string_view name) {
  if (lastLinetype_ != kNone && name == lastLinetypeName_) return lastLinetype_;
  const std::string key = platform::toUpperAscii(name);
  if (auto it = linetypeIndex_.find(key); it != linetypeIndex_.end()) {
    lastLinetypeName_.assign(name);
    lastLinetype_ = it->second;
    return it->second;
  }
  // The two logical linetypes have one spelling in the host, whatever the file wrote.
  std::string_view spelled = name;
  if (key == "BYLAYER") spelled = "ByLayer";
  else if (key == "BYBLOCK") spelled = "ByBlock";
  const std::uint32_t index = db_.intern(spelled);
  linetypeIndex_.emplace(key, index);
  lastLinetypeName_.assign(name);
  lastLinetype_ = index;
  return index;
}

std::uint32_t DxfReader::blockFor(std::string_view name) {
  std::string key = platform::toUpperAscii(name);
  // R12 files spell the two space blocks with a dollar sign.
  if (key == "$MODEL_SPACE") key = "*MODEL_SPACE";
  else if (key == "$PAPER_SPACE") key = "*PAPER_SPACE";
  if (auto it = db_.blockIndex.find(key); it != db_.blockIndex.end()) return it->second;
  const auto index = static_cast<std::uint32_t>(db_.blocks.size());
  BlockRec b;
  b.name = std::string(name);
  b.isAnonymous = !name.empty() && name.front() == '*' && key != "*MODEL_SPACE" && !key.starts_with("*PAPER_SPACE");
  db_.blocks.push_back(std::move(b));
  db_.blockIndex.emplace(key, index);
  return index;
}

// Multi-column text of R2000 to R2013 files is written as one MTEXT per column; the first names the others
// in its extension data ("ACAD_MTEXT_COLUMNS_BEGIN", count, handles). The host reads them as one entity, so
// the other columns become parts of the first instead of entities of their own.
void DxfReader::linkMTextColumns() {
  const std::uint32_t mtext = db_.intern("MTEXT");
  for (std::uint32_t i = 0; i < db_.entities.size(); ++i) {
    const EntityRec& e = db_.entities[i];
    if (e.dxfName != mtext || e.owner != kNone) continue;
    const StoredTag* tags = db_.tagsOf(e);
    bool inColumns = false;
    for (std::uint32_t k = 0; k < e.tagCount; ++k) {
      const StoredTag& t = tags[k];
      if (t.code == 1000) {
        const std::string_view v = db_.text(t);
        if (v == "ACAD_MTEXT_COLUMNS_BEGIN") inColumns = true;
        else if (v == "ACAD_MTEXT_COLUMNS_END") break;
      } else if (inColumns && t.code == 1005) {
        const ObjectId id = db_.byHandle.find(parseHandle(db_.text(t)));
        if (idKind(id) != IdKind::Entity) continue;
        EntityRec& part = db_.entities[idIndex(id)];
        if (idIndex(id) != i && part.dxfName == mtext && part.owner == kNone) part.owner = i;
      }
    }
  }
}

void DxfReader::finish() {
  // Layouts: each LAYOUT object names its block record (the 330 group of its AcDbLayout part).
  for (const ObjectRec& o : db_.objects) {
    if (db_.name(o.type) != "LAYOUT") continue;
    const StoredTag* tags = db_.tags.data() + o.tagBegin;
    bool inLayout = false;
    std::string name;
    int tab = 0;
    Handle record = 0;
    for (std::uint32_t i = 0; i < o.tagCount; ++i) {
      const StoredTag& t = tags[i];
      if (t.code == 100) inLayout = db_.text(t) == "AcDbLayout";
      else if (t.code == 1) name = std::string(db_.text(t));
      else if (t.code == 71) tab = static_cast<int>(t.integer);
      else if (t.code == 330 && inLayout) record = parseHandle(db_.text(t));
    }
    const ObjectId id = db_.byHandle.find(record);
    if (idKind(id) != IdKind::BlockRecord) {
      warnings_.add("layout-link", db_.fileName + ": layout '" + name + "' names a block record that does not exist");
      continue;
    }
    BlockRec& b = db_.blocks[idIndex(id)];
    b.isLayout = true;
    b.layoutName = name;
    b.tabOrder = tab;
  }
  for (std::uint32_t i = 0; i < db_.blocks.size(); ++i) {
    BlockRec& b = db_.blocks[i];
    const std::string key = platform::toUpperAscii(b.name);
    if (key == "*MODEL_SPACE" || key.starts_with("*PAPER_SPACE")) {
      b.isLayout = true;
      b.isAnonymous = false;
      if (b.layoutName.empty()) b.layoutName = key == "*MODEL_SPACE" ? "Model" : (key == "*PAPER_SPACE" ? "Layout1" : b.name.substr(1));
    }
  }
  // Entities of the ENTITIES section belong to the space their owner handle names, else to the one
  // their paper-space flag gives.
  auto run = ownerRuns_.begin();
  std::uint32_t leftInRun = run != ownerRuns_.end() ? run->second : 0;
  for (EntityRec& e : db_.entities) {
    if (!e.ownerByHandle) continue;
    e.ownerByHandle = false;
    if (leftInRun == 0) leftInRun = (++run)->second;
    --leftInRun;
    const ObjectId id = db_.byHandle.find(run->first);
    if (idKind(id) == IdKind::BlockRecord && db_.blocks[idIndex(id)].isLayout) {
      e.block = idIndex(id);
    } else if (id.isNull()) {
      warnings_.add("owner", db_.fileName + ": " + place(e.line) +
                                 ": an entity names an owner that does not exist; its space flag places it");
    }
  }
  // Handles: entities without one get fresh handles above every handle in the drawing.
  Handle maxHandle = db_.byHandle.largest();
  for (const EntityRec& e : db_.entities) maxHandle = std::max(maxHandle, e.handle);
  for (EntityRec& e : db_.entities)
    if (e.handle == 0) e.handle = ++maxHandle;
  std::uint32_t firstDuplicate = 0;
  const std::size_t duplicates = db_.byHandle.indexEntities(
      static_cast<std::uint32_t>(db_.entities.size()), [&](std::uint32_t i) { return db_.entities[i].handle; },
      firstDuplicate);
  if (duplicates > 0)
    report_.warnings.push_back(db_.fileName + ": " + place(db_.entities[firstDuplicate].line) + ": " +
                               std::to_string(duplicates) + " entities repeat a handle already used; each keeps its place");
  linkMTextColumns();
  std::vector<std::uint32_t> perBlock(db_.blocks.size());
  for (const EntityRec& e : db_.entities)
    if (e.owner == kNone) ++perBlock[e.block];
  for (std::uint32_t b = 0; b < db_.blocks.size(); ++b) db_.blocks[b].entities.reserve(perBlock[b]);
  for (std::uint32_t i = 0; i < db_.entities.size(); ++i) {
    EntityRec& e = db_.entities[i];
    if (e.owner == kNone) db_.blocks[e.block].entities.push_back(i);
    else e.block = db_.entities[e.owner].block;  // attributes and vertices live where their owner does
  }
}

}  // namespace

bool readTagStream(TagSource& source, DatabaseData& data, ReadReport& report) {
  // The two spaces exist in every drawing, even one without tables or blocks.
  data.blocks.clear();
  for (const char* space : {"*Model_Space", "*Paper_Space"}) {
    BlockRec b;
    b.name = space;
    b.isLayout = true;
    data.blockIndex.emplace(platform::toUpperAscii(space), static_cast<std::uint32_t>(data.blocks.size()));
    data.blocks.push_back(std::move(b));
  }
  data.modelSpace = 0;
  data.paperSpace = 1;
  // Layer "0" always exists.
  LayerRecord zero;
  zero.id = makeId(IdKind::Layer, 0);
  zero.name = "0";
  data.layerTable.push_back(zero);
  data.layerIndex.emplace("0", 0);
  DxfReader reader(source, data, report);
  if (!reader.run()) return false;
  data.tags.shrink_to_fit();
  data.entities.shrink_to_fit();
  data.arena.shrink_to_fit();
  return true;
}

bool readDxf(const std::string& path, DatabaseData& data, ReadReport& report) {
  std::string error;
  auto tok = DxfTokenizer::open(path, error);
  if (!tok) {
    report.error = error;
    return false;
  }
  data.fileName = path;
  data.format = tok->isBinary() ? "dxf-binary" : "dxf-ascii";
  // Reserving by the file's size spares most remapping as the storage fills: a group takes about 12 to 16
  // bytes of ASCII DXF, an entity about 100 to 300, and the texts, each repeating one stored once, about a
  // twentieth of the file. Reserved pages cost no memory until they are filled; what is left at the end is
  // given back. Past a gigabyte the storage grows as it is filled.
  if (const long long size = std::min(tok->fileSize(), 1LL << 30); size > 0) {
    data.tags.reserve(static_cast<std::size_t>(size / 12));
    data.entities.reserve(static_cast<std::size_t>(size / 100));
    data.arena.reserve(static_cast<std::size_t>(size / 16));
  }
  return readTagStream(*tok, data, report);
}

}  // namespace headless
