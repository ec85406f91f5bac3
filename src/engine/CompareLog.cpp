// The comparison log.
#include "engine/CompareLog.h"

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

#include "engine/ComparisonState.h"
#include "platform/files.h"
#include "platform/host.h"
#include "platform/profile.h"
#include "platform/text.h"

std::string DefaultLogFolder() {
  return std::string(platform::parentPath(platform::parentPath(platform::moduleFilePath())));
}

std::string& LogFolder() {
  static std::string folder = DefaultLogFolder();
  return folder;
}

std::string WriteCompareLog(const std::string& sourcePath, const std::string& destinationPath, int count,
                            bool* written) {
  // The time in seconds goes through "%d": only its low 32 bits appear, as a signed number.
  const auto seconds = static_cast<long long>(std::time(nullptr));
  const auto low32 = static_cast<std::int32_t>(static_cast<std::uint32_t>(seconds));
  const std::string name = platform::fmt("%s_%s_%d.ini", platform::fileNamePart(sourcePath),
                                         platform::fileNamePart(destinationPath), low32);
  std::string path = LogFolder();
  path += platform::kPathSeparator;
  path += name;

  const auto& records = CComparisonState::instance().differences;
  std::vector<std::pair<std::string, std::string>> entries;
  entries.reserve(std::min(static_cast<std::size_t>(std::max(count, 0)), records.size()));
  for (int i = 0; i < count && i < static_cast<int>(records.size()); ++i) {
    const CDiffType& r = *records[static_cast<std::size_t>(i)];
    std::string value = platform::fmt("-----差异范围：Min = x:%f y:%f, Max = x:%f y:%f ------", r.extents[0],
                                      r.extents[1], r.extents[3], r.extents[4]);
    value += r.text;
    entries.emplace_back(platform::fmt("差异%d", i), std::move(value));
  }
  // One write for all keys: the same file as one write per key, written whole.
  const bool ok = entries.empty() || platform::writePrivateProfileStrings("差异内容", entries, path);
  if (written) *written = ok && !entries.empty();
  platform::printToCommandLine(platform::fmt("\n日志文件:%s\n", path));
  return path;
}
