// A test fixture: the product's module loaded into a fresh headless host session, with the comparison
// state reset around each test and commands typed on the command line.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "engine/ComparisonState.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"

struct LoadedModule : ::testing::Test {
  headless::HostSession& host = headless::HostSession::instance();
  headless::Console& console = headless::Console::instance();
  CComparisonState& state = CComparisonState::instance();
  headless::Module* module = nullptr;

  // settingsFolder: where the module keeps its settings for this suite (APPDATA).
  void load(const std::string& settingsFolder) {
    host.shutdown();
    console.setEcho(nullptr);
    console.reset();
    const std::string folder = ::testing::TempDir() + settingsFolder;
    std::filesystem::create_directories(folder);
    ::setenv("APPDATA", folder.c_str(), 1);
    resetState();
    std::string error;
    module = host.loadModule(VK_MODULE_PATH, error);
    ASSERT_NE(module, nullptr) << error;
  }
  void TearDown() override {
    resetState();
    host.shutdown();
    console.reset();
  }
  void resetState() {
    state.ReleaseDrawings();
    state.Prepare();
    state.openedDrawings.clear();
    state.compareEnded = state.entitiesHidden = state.viewSync = state.allRectangles = state.resultReady = 0;
    state.sourceOffset = state.destinationOffset = {};
  }
  std::string type(std::string_view text) {
    console.takeTranscript();
    host.execute(text);
    return console.takeTranscript();
  }
};
