// The fixture of the tests that run the vkcompare program: a folder of its own, isolated settings.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace vktest {

struct VkcompareFixture : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override { vktest::isolateSettings(); }

  // Runs vkcompare in the test's folder with the arguments (each quoted), stdin closed, after the shell
  // command prefix.
  ProgramRun run(const std::vector<std::string>& args, const std::string& prefix = "") {
    std::string cmd = prefix + "cd " + shellQuoted(dir.path()) + " && timeout 60 " + shellQuoted(VKCOMPARE_PATH);
    for (const std::string& a : args) cmd += " " + shellQuoted(a);
    return vktest::runProgram(cmd, dir);
  }
  std::string data(const char* name) const { return vktest::dataDir() + "/" + name; }
  // The records of the one log in the test's folder, without its first line; the log is then removed.
  std::string records() {
    std::string text;
    for (const auto& e : std::filesystem::directory_iterator(dir.path()))
      if (e.path().extension() == ".ini") {
        text = vktest::readFile(e.path().string());
        std::filesystem::remove(e.path());
      }
    return text.substr(std::min(text.size(), text.find('\n')));
  }
  int logs() const {
    int n = 0;
    for (const auto& e : std::filesystem::directory_iterator(dir.path())) n += e.path().extension() == ".ini";
    return n;
  }
};

}  // namespace vktest

using vktest::VkcompareFixture;
