// Reading modeler data into records: SAT text split into names and fields, SAB decoded tag by tag into the same.
#include "platform/headless/modeler_data.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

namespace headless::modeler {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isInteger(std::string_view s) {
  std::size_t i = (!s.empty() && (s[0] == '-' || s[0] == '+')) ? 1 : 0;
  if (i >= s.size()) return false;
  for (; i < s.size(); ++i)
    if (!isDigit(s[i])) return false;
  return true;
}

// Where a token starting at `pos` ends. "@N text" is a counted string: one token even with spaces in it.
std::size_t tokenEnd(std::string_view text, std::size_t pos) {
  std::size_t end = pos;
  while (end < text.size() && !isSpace(text[end])) ++end;
  const std::string_view token = text.substr(pos, end - pos);
  if (token.size() > 1 && token[0] == '@' && isInteger(token.substr(1)) && token[1] != '-') {
    std::size_t len = 0;
    const auto [p, ec] = std::from_chars(token.data() + 1, token.data() + token.size(), len);
    if (ec != std::errc()) len = text.size();  // too large: the rest of the text
    (void)p;
    end = std::min(text.size(), end + 1 + std::min(len, text.size()));
  }
  return end;
}

}  // namespace

std::optional<double> number(std::string_view s) {
  if (s.empty() || s[0] == '$') return std::nullopt;
  if (s[0] == '+') s.remove_prefix(1);
  double v = 0.0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || !(v - v == 0.0)) return std::nullopt;
  return v;
}

long pointer(std::string_view s) {
  if (s.size() < 2 || s[0] != '$') return -1;
  long v = -1;
  const auto [end, ec] = std::from_chars(s.data() + 1, s.data() + s.size(), v);
  return ec == std::errc() && end == s.data() + s.size() && v >= 0 ? v : -1;
}

bool isReversed(std::string_view f) { return f == "reversed" || f == "1" || f == "F"; }

// ---- SAT ----

bool Model::readSat(std::string text) {
  text_ = std::move(text);
  return parseRecords();
}

bool Model::parseRecords() {
  records_.clear();
  fields_.clear();
  version_ = 0;
  const std::string_view text = text_;
  // The header: a line of counts led by the version, then (from version 2) a line naming the product and a
  // line of tolerances. All of them start with a number (or a counted string), where records start with
  // their name.
  std::size_t pos = text.find_first_not_of(" \t\r\n");
  if (pos == std::string_view::npos) return false;
  for (int line = 0; line < 3 && pos < text.size(); ++line) {
    if (line > 0 && !isDigit(text[pos]) && text[pos] != '@') break;
    const std::size_t end = std::min(text.find('\n', pos), text.size());
    if (line == 0) {
      int v = 0;
      std::from_chars(text.data() + pos, text.data() + end, v);
      version_ = v;
    }
    pos = end == text.size() ? end : end + 1;
  }
  // Fields are gathered into fields_ as they come; a record's are the run since its name.
  Record cur;
  bool started = false;
  while (pos < text.size()) {
    while (pos < text.size() && isSpace(text[pos])) ++pos;
    if (pos >= text.size()) break;
    const std::size_t end = tokenEnd(text, pos);
    const std::string_view token = text.substr(pos, end - pos);
    pos = end;
    if (!started) {
      if (token.starts_with("End-of-")) break;
      // With sequence numbers switched on, each record starts with "-N".
      if (token.size() > 1 && token[0] == '-' && isInteger(token)) continue;
      if (token == "#") continue;
      cur = Record{token, static_cast<std::uint32_t>(fields_.size()), 0, 0};
      started = true;
      continue;
    }
    if (token != "#") {
      fields_.push_back(token);
      continue;
    }
    cur.count = static_cast<std::uint32_t>(fields_.size()) - cur.first;
    // The entity header: the attribute pointer; from version 7 a history number and one more pointer after
    // it ("body $-1 -1 $-1 $2 ...").
    const auto f = fields(cur);
    std::uint32_t k = 0;
    if (k < f.size() && f[k].starts_with('$')) ++k;
    if (version_ >= 700 && k < f.size() && !f[k].starts_with('$')) {
      ++k;
      if (k < f.size() && f[k].starts_with('$')) ++k;
    }
    cur.head = k;
    records_.push_back(cur);
    started = false;
  }
  return !records_.empty();
}

const Record* Model::at(long index) const {
  return index >= 0 && static_cast<std::size_t>(index) < records_.size() ? &records_[static_cast<std::size_t>(index)]
                                                                          : nullptr;
}

const Record* Model::follow(std::string_view field, std::string_view type) const {
  const Record* r = at(pointer(field));
  return r && r->name == type ? r : nullptr;
}

const Record* Model::first(std::string_view type) const {
  for (const Record& r : records_)
    if (r.name == type) return &r;
  return nullptr;
}

namespace {

// How many numbers lead the data of the geometry records whose layout is known: old versions write the flags
// that follow as numbers too ("0" where later ones write "forward_v" or a flag), which are no part of the shape.
std::size_t geometryNumbers(std::string_view name) {
  static constexpr std::pair<std::string_view, std::size_t> kKnown[] = {
      {"point", 3},          {"straight-curve", 6}, {"ellipse-curve", 10}, {"plane-surface", 9},
      {"cone-surface", 10},  {"sphere-surface", 10}, {"torus-surface", 11}, {"transform", 13},
  };
  for (const auto& [n, count] : kKnown)
    if (n == name) return count;
  return std::numeric_limits<std::size_t>::max();
}

}  // namespace

std::string Model::shape() const {
  std::string out;
  char buf[40];
  for (const Record& r : records_) {
    if (r.name == "asmheader" || r.name.ends_with("attrib")) continue;
    out += r.name;
    std::size_t left = geometryNumbers(r.name);
    for (std::string_view f : data(r)) {
      const auto v = number(f);
      if (!v || left-- == 0) break;
      // Ten digits, and nothing below 1e-9 (far under the modeler's own resolution of 1e-6): text and binary
      // of one version agree on all seventeen, but versions compute axes a little differently (R14 and R2000
      // data of one line differ in the twelfth digit, or give 1e-15 for 0).
      const double x = std::fabs(*v) < 1e-9 ? 0.0 : *v;
      const int n = std::snprintf(buf, sizeof buf, " %.10g", x);
      out.append(buf, static_cast<std::size_t>(std::clamp(n, 0, static_cast<int>(sizeof buf) - 1)));
    }
    out += '\n';
  }
  return out;
}

// ---- SAB ----

namespace {

// The tags that lead each value of SAB data.
enum SabTag : std::uint8_t {
  kChar = 2, kShort = 3, kLong = 4, kFloat = 5, kDouble = 6,
  kString8 = 7, kString16 = 8, kString32 = 9,  // the length in one, two or four bytes
  kFalse = 10, kTrue = 11, kPointer = 12,
  kName = 13, kNamePart = 14,  // a word ending a (compound) name, a word the name continues after with '-'
  kOpen = 15, kClose = 16, kEnd = 17,
  kPosition = 19, kVector = 20, kEnum = 21, kVector2 = 22, kLong64 = 23,  // an integer in eight bytes
};

class SabReader {
 public:
  explicit SabReader(std::string_view bytes) : b_(bytes) {}
  std::size_t left() const { return b_.size() - pos_; }
  std::size_t position() const { return pos_; }
  bool atEnd() const { return pos_ >= b_.size(); }
  bool startsWith(std::string_view s) const { return b_.substr(pos_).starts_with(s); }
  bool byte(std::uint8_t& v) {
    if (left() < 1) return false;
    v = static_cast<std::uint8_t>(b_[pos_++]);
    return true;
  }
  template <typename T>
  bool raw(T& v) {
    if (left() < sizeof(T)) return false;
    std::memcpy(&v, b_.data() + pos_, sizeof(T));  // little-endian, as the data are written
    pos_ += sizeof(T);
    return true;
  }
  bool bytes(std::size_t n, std::string_view& out) {
    if (left() < n) return false;
    out = b_.substr(pos_, n);
    pos_ += n;
    return true;
  }

 private:
  std::string_view b_;
  std::size_t pos_ = 0;
};

void appendNumber(std::string& out, double v) {
  char buf[32];
  const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, ec == std::errc() ? static_cast<std::size_t>(end - buf) : 0);
}

void appendInteger(std::string& out, long long v) {
  char buf[24];
  const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, ec == std::errc() ? static_cast<std::size_t>(end - buf) : 0);
}

// A string as SAT writes it: a bare word when it reads as one, else counted ("@12 223.0.1.1930").
void appendString(std::string& out, std::string_view s) {
  const bool word = !s.empty() && ((s[0] >= 'a' && s[0] <= 'z') || (s[0] >= 'A' && s[0] <= 'Z')) &&
                    std::all_of(s.begin(), s.end(), [](char c) {
                      return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '_' || c == '-' ||
                             c == '.';
                    });
  if (!word) {
    out += '@';
    appendInteger(out, static_cast<long long>(s.size()));
    out += ' ';
  }
  // Line breaks inside would split the record's line; they are not part of any shape.
  for (char c : s) out += (c == '\n' || c == '\r') ? ' ' : c;
}

bool fail(std::string* error, const char* what) {
  if (error) *error = what;
  return false;
}

}  // namespace

bool Model::readSab(std::string_view bytes, std::string* error, std::size_t* used) {
  records_.clear();
  fields_.clear();
  text_.clear();
  if (used) *used = 0;
  static constexpr std::string_view kMagic = "ACIS BinaryFile";
  if (!bytes.starts_with(kMagic)) return fail(error, "not SAB data (no \"ACIS BinaryFile\")");
  SabReader in(bytes.substr(kMagic.size()));
  std::int32_t head[4] = {};  // version, records, bodies, flags
  for (std::int32_t& v : head)
    if (!in.raw(v)) return fail(error, "SAB data end inside their header");
  std::string& out = text_;
  // Every value takes at least one byte and yields a few characters of text.
  out.reserve(std::min<std::size_t>(bytes.size() * 4, std::size_t{1} << 26));
  for (int i = 0; i < 4; ++i) {
    appendInteger(out, head[i]);
    out += i < 3 ? ' ' : '\n';
  }
  // The header goes on with the product, the modeler and the date, then the units and tolerances.
  for (int line = 0; line < 2; ++line) {
    for (int i = 0; i < 3; ++i) {
      std::uint8_t tag = 0;
      if (!in.byte(tag)) return fail(error, "SAB data end inside their header");
      if (line == 0) {
        std::uint8_t n8 = 0;
        std::uint16_t n16 = 0;
        std::uint32_t n = 0;
        if (tag == kString8 && in.byte(n8)) n = n8;
        else if (tag == kString16 && in.raw(n16)) n = n16;
        else if (tag != kString32 || !in.raw(n)) return fail(error, "SAB header: expected a string");
        std::string_view s;
        if (!in.bytes(n, s)) return fail(error, "SAB header: a string runs past the data");
        appendInteger(out, static_cast<long long>(s.size()));
        out += ' ';
        for (char c : s) out += (c == '\n' || c == '\r') ? ' ' : c;
      } else {
        double v = 0.0;
        if (tag != kDouble || !in.raw(v)) return fail(error, "SAB header: expected a number");
        appendNumber(out, v);
      }
      out += i < 2 ? ' ' : '\n';
    }
  }
  // The records: a name (parts joined by '-'), values, then the end tag. The data end with the record
  // "End-of-ACIS-data" (or "-ASM-"), which has no end tag, or with that text unencoded.
  bool inRecord = false;
  bool joining = false;  // the last value was a name part
  bool sawEnd = false;
  std::size_t values = 0;
  while (!in.atEnd()) {
    if (!inRecord && in.startsWith("End-of-")) {
      // The closing record written as plain text: "End-of-ACIS-data" or "End-of-ASM-data".
      std::string_view rest;
      in.bytes(std::min<std::size_t>(in.left(), 16), rest);
      const std::size_t data = rest.find("data");
      if (used) *used = kMagic.size() + in.position() - rest.size() + (data == std::string_view::npos ? rest.size() : data + 4);
      sawEnd = true;
      break;
    }
    std::uint8_t tag = 0;
    in.byte(tag);
    if (++values > bytes.size()) return fail(error, "SAB data: too many values");  // each value takes a byte
    if (!inRecord && !joining && tag != kName && tag != kNamePart) return fail(error, "SAB data: a record without a name");
    if (!joining && inRecord) out += ' ';
    const bool part = tag == kNamePart;
    switch (tag) {
      case kChar: {
        std::uint8_t v = 0;
        if (!in.byte(v)) return fail(error, "SAB data end inside a value");
        appendInteger(out, static_cast<std::int8_t>(v));
        break;
      }
      case kShort: {
        std::int16_t v = 0;
        if (!in.raw(v)) return fail(error, "SAB data end inside a value");
        appendInteger(out, v);
        break;
      }
      case kLong:
      case kEnum: {
        std::int32_t v = 0;
        if (!in.raw(v)) return fail(error, "SAB data end inside a value");
        appendInteger(out, v);
        break;
      }
      case kLong64: {
        std::int64_t v = 0;
        if (!in.raw(v)) return fail(error, "SAB data end inside a value");
        appendInteger(out, v);
        break;
      }
      case kFloat: {
        float v = 0;
        if (!in.raw(v)) return fail(error, "SAB data end inside a value");
        appendNumber(out, v);
        break;
      }
      case kDouble: {
        double v = 0;
        if (!in.raw(v)) return fail(error, "SAB data end inside a value");
        appendNumber(out, v);
        break;
      }
      case kPosition:
      case kVector:
      case kVector2: {
        const int n = tag == kVector2 ? 2 : 3;
        for (int i = 0; i < n; ++i) {
          double v = 0;
          if (!in.raw(v)) return fail(error, "SAB data end inside a value");
          if (i > 0) out += ' ';
          appendNumber(out, v);
        }
        break;
      }
      case kString8:
      case kString16:
      case kString32:
      case kName:
      case kNamePart: {
        std::uint8_t n8 = 0;
        std::uint16_t n16 = 0;
        std::uint32_t n = 0;
        const bool ok = tag == kString16 ? in.raw(n16) : tag == kString32 ? in.raw(n) : in.byte(n8);
        if (!ok) return fail(error, "SAB data end inside a string's length");
        n = tag == kString16 ? n16 : tag == kString32 ? n : n8;
        std::string_view s;
        if (!in.bytes(n, s)) return fail(error, "SAB data: a string runs past the data");
        if (tag == kName || tag == kNamePart) {
          if (!inRecord && !joining && s == "End") {
            // The closing record may come encoded too: "End" "of" "ACIS" "data" as name parts.
            sawEnd = true;
            break;
          }
          for (char c : s) out += (isSpace(c) || c == '#') ? '_' : c;
          if (part) out += '-';
        } else {
          appendString(out, s);
        }
        inRecord = true;
        break;
      }
      case kFalse: out += 'F'; break;
      case kTrue: out += 'T'; break;
      case kPointer: {
        std::int32_t v = 0;
        if (!in.raw(v)) return fail(error, "SAB data end inside a pointer");
        out += '$';
        appendInteger(out, v);
        break;
      }
      case kOpen: out += '{'; break;
      case kClose: out += '}'; break;
      case kEnd:
        out += "#\n";
        inRecord = false;
        break;
      default: return fail(error, "SAB data: a value of unknown type");
    }
    if (sawEnd) break;
    joining = part;
  }
  if (sawEnd && used && *used == 0) {
    // The encoded closing record: "End" "of" "ACIS" as name parts, then "data".
    for (int i = 0; i < 3; ++i) {
      std::uint8_t tag = 0, n = 0;
      std::string_view s;
      if (!in.byte(tag) || !in.byte(n) || !in.bytes(n, s)) break;
    }
    *used = kMagic.size() + in.position();
  }
  if (inRecord) return fail(error, "SAB data end inside a record");
  if (!sawEnd) return fail(error, "SAB data end without their closing record");
  out += "End-of-ACIS-data\n";
  if (!parseRecords()) return fail(error, "SAB data hold no record");
  return true;
}

// ---- from an entity ----

std::string satText(const Groups& g) {
  std::string text;
  bool any = false;
  for (std::uint32_t i = 0; i < g.ownCount(); ++i) {
    const int code = g.at(i).code;
    if (code != 1 && code != 3) continue;
    // Group 1 starts a line of the SAT text; group 3 continues a line longer than a group can hold.
    if (code == 1 && any) text += '\n';
    text += g.textAt(i);
    any = true;
  }
  // Plain SAT starts with its version number. Otherwise the text is stored with the character transform of
  // R2000-R2004 files: every printable character c (33..126) written as 159 - c, which is its own inverse.
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  if (!isDigit(text[first]))
    for (char& c : text) {
      const int u = static_cast<unsigned char>(c);
      if (u >= 33 && u <= 126) c = static_cast<char>(159 - u);
    }
  return text;
}

bool readEntity(const platform::DatabaseData& data, std::uint32_t entityIndex, Model& out) {
  if (entityIndex >= data.entities.size()) return false;
  const platform::EntityRec& e = data.entities[entityIndex];
  std::string sat = satText(Groups(data, e));
  if (!sat.empty()) return out.readSat(std::move(sat));
  const auto it = data.modelerBinary.find(e.handle);
  return it != data.modelerBinary.end() && out.readSab(it->second);
}

}  // namespace headless::modeler
