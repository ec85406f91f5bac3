// Helpers shared by the test suites: temporary folders, environment overrides, the corpus location.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/headless/dwg_container.h"

namespace vktest {

// A fresh folder under the system's temporary folder, removed with everything in it at destruction.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string file(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

// Sets (or, with nullptr, unsets) an environment variable for the scope, restoring it afterwards.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool had_ = false;
};

// A program run through /bin/sh: its exit status (-1 when it did not exit) and what it wrote.
struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};
// A word quoted for /bin/sh.
std::string shellQuoted(const std::string& word);
// Runs the command line with standard input from the file, its two outputs caught in files of dir.
ProgramRun runProgram(const std::string& commandLine, const TempDir& dir, const std::string& input = "/dev/null");

std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view contents);

// The shared corpus of real drawings ("" when absent: such tests skip), and the project's own fixtures.
std::string corpusDir();
std::string dataDir();
// The path of a file of the corpus by its path inside it ("same_drawing/x/x.dwg"); "" when it is absent.
std::string corpusFile(std::string_view relative);
// The sections of a DWG of the corpus; null when the corpus is absent, and when the drawing does not read
// (a test failure then).
std::unique_ptr<headless::DwgSections> corpusDwgSections(std::string_view relative);

// Points the process's settings file at a temporary folder of its own (once per process) and returns it,
// so that tests never read or write the user's settings. Call before the settings store is first used.
const std::string& isolateSettings();

// Silences the headless console and forgets what it recorded.
void quietConsole();

// The DXF files of the shared corpus below a subfolder ("/pairs"), sorted; the damaged ones under malformed/
// only when asked. Empty when the corpus is absent.
std::vector<std::string> corpusDxfFiles(std::string_view under = "", bool withMalformed = false);

// Prepares the process for silent runs: settings of its own with every property compared, no excluded
// layer, a quiet console, and the logs in logFolder.
void prepareSilentRuns(const std::string& logFolder);

// DXF text from groups written on one line, separated by '|': "0|LINE|8|0|10|1.0|..." (values keep their
// spaces; use this for small fixtures written in the tests).
std::string dxfFromPairs(std::string_view pairs);
// A whole drawing around entity groups: a header with $ACADVER (and extra header groups), optional
// tables and blocks (already in '|' form), and the entities.
std::string dxfDrawing(std::string_view entities, std::string_view version = "AC1015", std::string_view header = "",
                       std::string_view tables = "", std::string_view blocks = "");

// A drawing whose blocks nest depth levels deep with references per level: model space holds that many
// references of block N0, each block Nk as many of N(k+1) side by side, the last one a line; references to
// the power depth lines in all.
std::string nestedBlocksDrawing(int depth, int references);
// Writes DXF text to a file in dir and reads it with the headless database; fails the test when it cannot
// be read.
std::unique_ptr<platform::Database> readDxfText(const TempDir& dir, std::string_view name, std::string_view dxf,
                                                platform::ReadReport* report = nullptr);

// The entities of a drawing's model space, in drawing order.
std::vector<platform::Entity> modelEntities(const platform::Database& db);

}  // namespace vktest
