// Environment-string expansion on POSIX, with the application-data folder mapped to the XDG config folder.
#include "platform/environment.h"

#include <cstdlib>

#include "platform/text.h"

namespace platform {

namespace {

bool lookup(std::string_view name, std::string& value) {
  const std::string key(name);
  if (equalsIgnoreCase(key, "APPDATA")) {
    if (const char* v = std::getenv("APPDATA"); v && *v) return value = v, true;
    if (const char* v = std::getenv("XDG_CONFIG_HOME"); v && *v) return value = v, true;
    if (const char* v = std::getenv("HOME"); v && *v) return value = std::string(v) + "/.config", true;
    return false;
  }
  if (const char* v = std::getenv(key.c_str())) return value = v, true;
  return false;
}

}  // namespace

bool expandEnvironmentStrings(std::string_view text, std::string& out, std::size_t bufferChars) {
  out.clear();
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t open = text.find('%', i);
    const std::size_t close = open == std::string_view::npos ? open : text.find('%', open + 1);
    if (close == std::string_view::npos) {
      out.append(text.substr(i));
      break;
    }
    out.append(text.substr(i, open - i));
    const std::string_view name = text.substr(open + 1, close - open - 1);
    std::string value;
    if (!name.empty() && lookup(name, value)) {
      out += value;
    } else if (!name.empty() && equalsIgnoreCase(name, "APPDATA")) {
      return false;  // no folder for application data can be found
    } else {
      out.append(text.substr(open, close - open + 1));
    }
    i = close + 1;
  }
  return utf8ToUtf16(out).size() + 1 <= bufferChars;
}

}  // namespace platform
