// The module's exported C functions, called as another module calls them: through the shared library
// loaded at run time, with good, null and empty arguments.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/TestSupport.h"

namespace {

using CompareFiles = int (*)(const char*, const char*, double*, double*, double*, double*, double*, double*);
using IntOf = int (*)();
using TextOf = const char* (*)();
using WarningOf = const char* (*)(int);
using SetFolder = void (*)(const char*);

class Module {
 public:
  Module() : handle_(::dlopen(VK_MODULE_PATH, RTLD_NOW | RTLD_LOCAL)) {}
  ~Module() {
    if (handle_) ::dlclose(handle_);
  }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  explicit operator bool() const { return handle_ != nullptr; }
  template <class F>
  F get(const char* name) const {
    return reinterpret_cast<F>(::dlsym(handle_, name));
  }

 private:
  void* handle_;
};

struct ExportsFixture : ::testing::Test {
  vktest::TempDir dir;
  Module module;
  CompareFiles compare = nullptr;
  IntOf outcome = nullptr, logWritten = nullptr, warningCount = nullptr, compareCurrent = nullptr;
  TextOf error = nullptr, logPath = nullptr, version = nullptr;
  WarningOf warning = nullptr;
  SetFolder setLogFolder = nullptr;

  void SetUp() override {
    vktest::isolateSettings();
    ASSERT_TRUE(module) << ::dlerror();
    compare = module.get<CompareFiles>("I_VkCompareFiles_Silent");
    compareCurrent = module.get<IntOf>("I_VkCompareCurFile");
    outcome = module.get<IntOf>("VkLastSilentOutcome");
    error = module.get<TextOf>("VkLastSilentError");
    warningCount = module.get<IntOf>("VkLastSilentWarningCount");
    warning = module.get<WarningOf>("VkLastSilentWarning");
    logPath = module.get<TextOf>("VkLastLogPath");
    logWritten = module.get<IntOf>("VkLastLogWritten");
    setLogFolder = module.get<SetFolder>("VkSetLogFolder");
    version = module.get<TextOf>("VkAcadCompareDwgVersion");
    for (const void* f : {reinterpret_cast<const void*>(compare), reinterpret_cast<const void*>(compareCurrent),
                          reinterpret_cast<const void*>(outcome), reinterpret_cast<const void*>(error),
                          reinterpret_cast<const void*>(warningCount), reinterpret_cast<const void*>(warning),
                          reinterpret_cast<const void*>(logPath), reinterpret_cast<const void*>(logWritten),
                          reinterpret_cast<const void*>(setLogFolder), reinterpret_cast<const void*>(version)})
      ASSERT_NE(f, nullptr);
    setLogFolder(dir.path().c_str());
  }
  int run(const char* source, const char* destination) {
    return compare(source, destination, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  std::string data(const char* name) const { return vktest::dataDir() + "/" + name; }
};

TEST_F(ExportsFixture, SilentComparisonAnswersAndLog) {
  EXPECT_EQ(run(data("two_entities.dxf").c_str(), data("two_entities.dxf").c_str()), 1);
  EXPECT_EQ(outcome(), 0);
  EXPECT_STREQ(error(), "");
  EXPECT_STREQ(logPath(), "");

  double point[3] = {1, 2, 3};
  EXPECT_EQ(compare(data("two_entities.dxf").c_str(), data("two_entities_recoloured.dxf").c_str(), point, point, point,
                    point, point, point),
            0);
  EXPECT_EQ(outcome(), 1);
  EXPECT_EQ(logWritten(), 1);
  const std::string log = logPath();
  EXPECT_EQ(log.rfind(dir.path() + "/two_entities.dxf_two_entities_recoloured.dxf_", 0), 0u) << log;
  EXPECT_NE(vktest::readFile(log).find("颜色不相同"), std::string::npos);

  EXPECT_EQ(compareCurrent(), 0);
  EXPECT_NE(std::string(version()), "");
}

TEST_F(ExportsFixture, NullEmptyAndUnreadableArguments) {
  // Both names missing: the refusal of its own, before anything is read.
  EXPECT_EQ(run(nullptr, nullptr), 1);
  EXPECT_EQ(run("", ""), 1);
  EXPECT_EQ(run(nullptr, ""), 1);

  // One name missing: trouble, with the reader's reason.
  EXPECT_EQ(run(nullptr, data("two_entities.dxf").c_str()), 1);
  EXPECT_EQ(outcome(), 2);
  EXPECT_NE(std::string(error()).find("cannot open the file"), std::string::npos) << error();
  EXPECT_EQ(run(data("two_entities.dxf").c_str(), ""), 1);
  EXPECT_EQ(outcome(), 2);

  EXPECT_EQ(run(data("two_entities.dxf").c_str(), dir.path().c_str()), 1);
  EXPECT_EQ(outcome(), 2);
  EXPECT_EQ(std::string(error()), dir.path() + ": not a regular file (a folder)");

  EXPECT_EQ(run(data("truncated.dxf").c_str(), data("two_entities.dxf").c_str()), 1);
  EXPECT_EQ(outcome(), 2);
  EXPECT_EQ(std::string(error()).rfind(data("truncated.dxf") + ": line ", 0), 0u) << error();
  EXPECT_EQ(logWritten(), 0);

  EXPECT_STREQ(warning(-1), "");
  EXPECT_STREQ(warning(warningCount()), "");
  EXPECT_EQ(std::filesystem::is_empty(dir.path()), true);
}

// Null or "" gives the logs back to the module's folder rule; a later folder is used again.
TEST_F(ExportsFixture, LogFolderResetByNullOrEmpty) {
  for (const char* folder : {static_cast<const char*>(nullptr), ""}) {
    setLogFolder(folder);
    setLogFolder(dir.path().c_str());
    EXPECT_EQ(run(data("two_entities.dxf").c_str(), data("two_entities_recoloured.dxf").c_str()), 0);
    EXPECT_EQ(std::string(logPath()).rfind(dir.path() + "/", 0), 0u) << logPath();
  }
}

// The interactive export, the toolbar export and the entry point, found by name as another module finds them.
TEST_F(ExportsFixture, InteractiveToolbarAndEntryPointExports) {
  const auto compareFile = module.get<CompareFiles>("I_VkCompareFile");
  const auto toolbar = module.get<void (*)(int&)>("I_VkVisbleTooBar");
  const auto entry = module.get<int (*)(int, void*)>("acrxEntryPoint");
  ASSERT_NE(compareFile, nullptr);
  ASSERT_NE(toolbar, nullptr);
  ASSERT_NE(entry, nullptr);
  // Both names empty: -1 (the silent export answers 1 for the same refusal).
  EXPECT_EQ(compareFile("", "", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(compareFile(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(run("", ""), 1);
  // One name is enough to go on to the run; the points are accepted and not used.
  double point[3] = {1, 2, 3};
  EXPECT_EQ(compareFile(data("two_entities.dxf").c_str(), "", point, point, point, point, point, point), 0);
  for (int visible : {1, 2, 0}) toolbar(visible);
  // Messages without a slot answer 0, as do the messages the module leaves to the host.
  for (int message : {-1, 17, 99, 6, 16}) EXPECT_EQ(entry(message, nullptr), 0) << message;
}

}  // namespace
