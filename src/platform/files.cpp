// Folder creation with its parents, and path splitting: the portable rules over the host's file primitives.
#include "platform/files.h"

namespace platform {

namespace {
// Windows paths start with a drive; elsewhere no name ends in a drive colon.
#ifdef _WIN32
constexpr bool kHasDrives = true;
#else
constexpr bool kHasDrives = false;
#endif
}  // namespace

bool CreateFolderPath(std::string path) {
  if (!path.empty() && path.back() == kPathSeparator) path.pop_back();
  if (path.empty()) return true;  // the root of the file system
  if (kHasDrives && path.back() == ':') return true;  // a bare drive
  switch (fileKind(path)) {
    case FileKind::Folder: return true;
    case FileKind::File: return false;  // a file of that name stays as it is
    case FileKind::Missing: break;
  }
  const std::size_t lastSep = path.rfind(kPathSeparator);
  const std::size_t lastColon = kHasDrives ? path.rfind(':') : std::string::npos;
  const bool hasParent = lastSep != std::string::npos && lastSep >= 1 &&
                         (lastColon == std::string::npos || lastSep > lastColon + 1);
  if (hasParent && !CreateFolderPath(path.substr(0, lastSep))) return false;
  return makeFolder(path);
}

std::string_view fileNamePart(std::string_view path) {
  const std::size_t sep = path.find_last_of(kPathSeparator == '/' ? "/" : "\\/");
  return sep == std::string_view::npos ? path : path.substr(sep + 1);
}

std::string_view parentPath(std::string_view path) {
  const std::size_t sep = path.find_last_of(kPathSeparator == '/' ? "/" : "\\/");
  return sep == std::string_view::npos ? std::string_view() : path.substr(0, sep);
}

std::string joinPath(const std::string& folder, std::string_view name) {
  std::string out = folder;
  out += kPathSeparator;
  out += name;
  return out;
}

}  // namespace platform
