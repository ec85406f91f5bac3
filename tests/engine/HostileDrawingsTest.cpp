// The drawings under tests/data/hostile (inputs that once crashed, hung or ran away with memory, most found
// by fuzzing): each is read and compared with itself and with a sound drawing, and says what is wrong with it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "shell/exports.h"
#include "support/TestSupport.h"

namespace {

std::vector<std::string> hostileDrawings() {
  std::vector<std::string> out;
  const std::filesystem::path dir = vktest::dataDir() + "/hostile";
  if (std::filesystem::is_directory(dir))
    for (const auto& e : std::filesystem::directory_iterator(dir))
      if (e.is_regular_file()) out.push_back(e.path().string());
  std::sort(out.begin(), out.end());
  return out;
}

// Runs one silent comparison; its outcome code (0 identical, 1 differences, 2 trouble, 3 nothing to compare).
int compare(const std::string& a, const std::string& b) {
  I_VkCompareFiles_Silent(a.c_str(), b.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  return VkLastSilentOutcome();
}

}  // namespace

TEST(HostileDrawings, EachEndsInAnOutcomeAndIsReportedAsDamaged) {
  vktest::TempDir logs;
  vktest::prepareSilentRuns(logs.path());
  const std::string sound = vktest::dataDir() + "/../../examples/door_rev_a.dxf";
  const auto files = hostileDrawings();
  ASSERT_FALSE(files.empty());
  for (const std::string& file : files) {
    SCOPED_TRACE(file);
    const int self = compare(file, file);
    EXPECT_TRUE(self >= 0 && self <= 3);
    // A damaged drawing is never read in silence: the reader's error or at least one warning names it.
    const bool named = std::string(VkLastSilentError()).find(file) != std::string::npos ||
                       (VkLastSilentWarningCount() > 0 && std::string(VkLastSilentWarning(0)).find(file) != std::string::npos);
    EXPECT_TRUE(named) << "error: " << VkLastSilentError();
    EXPECT_TRUE(compare(file, sound) >= 0);
    EXPECT_TRUE(compare(sound, file) >= 0);
  }
}
