// Private-profile (INI) files for the headless host: UTF-8 text, names matched without regard to case,
// values replaced in place, and every write done whole through a temporary file.
#include "platform/profile.h"

#include <cstdlib>
#include <iterator>
#include <string>
#include <unordered_map>

#include "platform/files.h"
#include "platform/text.h"

namespace platform {

namespace {

std::string_view trim(std::string_view s) {
  const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; };
  while (!s.empty() && isSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && isSpace(s.back())) s.remove_suffix(1);
  return s;
}

std::string lowerAscii(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return out;
}

// One INI file as its lines, kept verbatim so that a write changes only what it must.
class IniText {
 public:
  explicit IniText(std::string_view content) {
    if (content.substr(0, 3) == "\xEF\xBB\xBF") {
      bom_ = true;
      content.remove_prefix(3);
    }
    if (content.find("\r\n") != std::string_view::npos) eol_ = "\r\n";
    std::size_t i = 0;
    while (i < content.size()) {
      std::size_t nl = content.find('\n', i);
      if (nl == std::string_view::npos) nl = content.size();
      std::string_view line = content.substr(i, nl - i);
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      lines_.emplace_back(line);
      i = nl + 1;
    }
  }

  // The section name of a "[name]" line, or nothing.
  static bool sectionName(std::string_view line, std::string_view& name) {
    line = trim(line);
    if (line.empty() || line.front() != '[') return false;
    const std::size_t close = line.find(']');
    name = trim(line.substr(1, close == std::string_view::npos ? std::string_view::npos : close - 1));
    return true;
  }

  // Key and value of a "key=value" line (comments starting with ';' are not keys).
  static bool keyValue(std::string_view line, std::string_view& key, std::string_view& value) {
    const std::string_view t = trim(line);
    if (t.empty() || t.front() == ';' || t.front() == '[') return false;
    const std::size_t eq = t.find('=');
    if (eq == std::string_view::npos) return false;
    key = trim(t.substr(0, eq));
    value = trim(t.substr(eq + 1));
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
      value = value.substr(1, value.size() - 2);
    return true;
  }

  bool find(std::string_view section, std::string_view key, std::string& value) const {
    bool inSection = false;
    for (const std::string& line : lines_) {
      std::string_view name, k, v;
      if (sectionName(line, name)) {
        inSection = equalsIgnoreCase(name, section);
      } else if (inSection && keyValue(line, k, v) && equalsIgnoreCase(k, key)) {
        value.assign(v);
        return true;
      }
    }
    return false;
  }

  // Applies key writes to the first section of that name, creating it at the end when missing.
  void write(std::string_view section, const std::vector<std::pair<std::string, std::string>>& entries) {
    std::size_t begin = lines_.size(), end = lines_.size();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      std::string_view name;
      if (!sectionName(lines_[i], name)) continue;
      if (begin != lines_.size()) {
        end = i;
        break;
      }
      if (equalsIgnoreCase(name, section)) begin = i;
    }
    if (begin == lines_.size()) {
      if (!lines_.empty() && !trim(lines_.back()).empty()) lines_.emplace_back();
      lines_.push_back("[" + std::string(section) + "]");
      begin = lines_.size() - 1;
      end = lines_.size();
    }
    std::unordered_map<std::string, std::size_t> keyLine;  // lower-cased key -> line index
    std::size_t lastKeyLine = begin;
    for (std::size_t i = begin + 1; i < end; ++i) {
      std::string_view k, v;
      if (!keyValue(lines_[i], k, v)) continue;
      keyLine.emplace(lowerAscii(k), i);
      lastKeyLine = i;
    }
    std::vector<std::string> appended;
    appended.reserve(entries.size());
    std::unordered_map<std::string, std::size_t> appendedIndex;
    for (const auto& [key, rawValue] : entries) {
      // A line break inside a value would split the entry; it is written as a blank.
      std::string brokenValue;
      if (rawValue.find_first_of("\r\n") != std::string::npos) {
        brokenValue = rawValue;
        for (char& c : brokenValue)
          if (c == '\n' || c == '\r') c = ' ';
      }
      const std::string& value = brokenValue.empty() ? rawValue : brokenValue;
      const std::string lk = lowerAscii(key);
      if (auto it = keyLine.find(lk); it != keyLine.end()) {
        std::string& line = lines_[it->second];
        const std::size_t eq = line.find('=');
        line = line.substr(0, eq + 1) + value;
      } else if (auto at = appendedIndex.find(lk); at != appendedIndex.end()) {
        appended[at->second] = key + "=" + value;
      } else {
        appendedIndex.emplace(lk, appended.size());
        appended.push_back(key + "=" + value);
      }
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(lastKeyLine + 1), std::make_move_iterator(appended.begin()),
                  std::make_move_iterator(appended.end()));
  }

  std::string text() const {
    std::string out;
    std::size_t size = 3;
    for (const std::string& line : lines_) size += line.size() + eol_.size();
    out.reserve(size);
    if (bom_) out += "\xEF\xBB\xBF";
    for (const std::string& line : lines_) {
      out += line;
      out += eol_;
    }
    return out;
  }

 private:
  std::vector<std::string> lines_;
  std::string eol_ = "\n";
  bool bom_ = false;
};

bool readValue(std::string_view section, std::string_view key, const std::string& path, std::string& value) {
  std::string content;
  if (!readWholeFile(path, content)) return false;
  return IniText(content).find(section, key, value);
}

}  // namespace

std::string getPrivateProfileString(std::string_view section, std::string_view key, std::string_view defaultValue,
                                    std::size_t bufferChars, const std::string& path) {
  std::string value;
  if (!readValue(section, key, path, value)) value.assign(defaultValue);
  return bufferChars == 0 ? std::string() : truncateUtf16Units(value, bufferChars - 1);
}

int getPrivateProfileInt(std::string_view section, std::string_view key, int defaultValue, const std::string& path) {
  std::string value;
  if (!readValue(section, key, path, value) || value.empty()) return defaultValue;
  std::size_t i = 0;
  bool negative = false;
  if (value[i] == '+' || value[i] == '-') negative = value[i++] == '-';
  long long n = 0;
  for (; i < value.size() && value[i] >= '0' && value[i] <= '9'; ++i) {
    n = n * 10 + (value[i] - '0');
    if (n > 0xFFFFFFFFLL) n = 0xFFFFFFFFLL;  // the host parses into 32 bits
  }
  const auto u = static_cast<unsigned>(n);
  return static_cast<int>(negative ? 0u - u : u);  // modular, as the host's 32-bit reader
}

bool writePrivateProfileStrings(std::string_view section,
                                const std::vector<std::pair<std::string, std::string>>& entries,
                                const std::string& path) {
  std::string content;
  if (fileKind(path) == FileKind::File && !readWholeFile(path, content)) return false;
  IniText ini(content);
  ini.write(section, entries);
  return writeWholeFile(path, ini.text());
}

bool writePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& path) {
  return writePrivateProfileStrings(section, {{std::string(key), std::string(value)}}, path);
}

}  // namespace platform
