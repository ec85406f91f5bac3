// The release check of the two drawings of a comparison.
#include "ui/OpenDrawings.h"

#include <cstdlib>

#include "platform/database.h"
#include "platform/files.h"
#include "platform/host.h"
#include "platform/text.h"

namespace {

// Checks one file; false after the message when it is too new. A file that cannot be opened passes: it is
// not this check's to judge, and reading it next reports it as an invalid drawing with its name.
bool checkOne(const std::string& path, int newestRelease) {
  std::string head;
  if (!platform::readFileHead(path, 6, head)) return true;
  // The two bytes at offset 4, read as atoi reads them (leading blanks, a sign, leading digits).
  const std::string digits = head.size() > 4 ? head.substr(4, 2) : std::string();
  int release = std::atoi(digits.c_str());
  // Cuts the number to two digits, as for a buffer read without its terminator.
  while (release > 99) release = static_cast<int>(release * 0.1);
  if (release <= newestRelease) return true;
  platform::showMessageBox(platform::fmt("不能比较文件，因为它是使用更新版本的AutoCAD创建的。\n%s", path),
                           "Morvane比图工具", platform::kMbOk | platform::kMbIconInformation);
  return false;
}

}  // namespace

int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath, int newestRelease) {
  int result = 1;
  if (!checkOne(sourcePath, newestRelease)) result = 0;
  if (!checkOne(destinationPath, newestRelease)) result = 0;
  return result;
}

int CheckDwgVersion(const std::string& sourcePath, const std::string& destinationPath) {
  return CheckDwgVersion(sourcePath, destinationPath, platform::newestReadableRelease());
}
