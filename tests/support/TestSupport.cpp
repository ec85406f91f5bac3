// Helpers shared by the test suites.
#include "support/TestSupport.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "engine/CompareLog.h"
#include "engine/DrawingRecord.h"
#include "platform/headless/console.h"
#include "platform/text.h"
#include "ui/CompareConfigFile.h"

namespace vktest {

TempDir::TempDir() {
  std::string templ = (std::filesystem::temp_directory_path() / "vktest_XXXXXX").string();
  if (!::mkdtemp(templ.data())) throw std::runtime_error("cannot make a temporary folder");
  path_ = templ;
}

TempDir::~TempDir() {
  std::error_code ec;
  // Restore write permission so that read-only fixtures can be removed.
  for (auto it = std::filesystem::recursive_directory_iterator(path_, ec);
       it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
    std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all, std::filesystem::perm_options::add, ec);
  std::filesystem::remove_all(path_, ec);
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  if (const char* old = std::getenv(name)) {
    had_ = true;
    old_ = old;
  }
  if (value) ::setenv(name, value, 1);
  else ::unsetenv(name);
}

ScopedEnv::~ScopedEnv() {
  if (had_) ::setenv(name_.c_str(), old_.c_str(), 1);
  else ::unsetenv(name_.c_str());
}

std::string shellQuoted(const std::string& word) {
  std::string q = "'";
  for (char c : word) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

ProgramRun runProgram(const std::string& commandLine, const TempDir& dir, const std::string& input) {
  const std::string out = dir.file("out.txt"), err = dir.file("err.txt");
  const int raw = std::system((commandLine + " <" + shellQuoted(input) + " >" + shellQuoted(out) + " 2>" +
                               shellQuoted(err)).c_str());
  ProgramRun r;
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  r.out = readFile(out);
  r.err = readFile(err);
  std::filesystem::remove(out);
  std::filesystem::remove(err);
  return r;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void writeFile(const std::string& path, std::string_view contents) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
}

std::string corpusDir() {
  const char* env = std::getenv("VK_CORPUS");
  const std::string dir = env && *env ? env : VK_CORPUS_DIR;
  return std::filesystem::is_directory(dir) ? dir : std::string();
}

std::string dataDir() { return VK_TEST_DATA_DIR; }

std::string corpusFile(std::string_view relative) {
  const std::string corpus = corpusDir();
  if (corpus.empty()) return {};
  const std::filesystem::path path = std::filesystem::path(corpus) / relative;
  return std::filesystem::exists(path) ? path.string() : std::string();
}

std::unique_ptr<headless::DwgSections> corpusDwgSections(std::string_view relative) {
  const std::string path = corpusFile(relative);
  if (path.empty()) return nullptr;
  auto sections = std::make_unique<headless::DwgSections>();
  std::string error;
  if (headless::readDwgContainer(path, *sections, error)) return sections;
  ADD_FAILURE() << path << ": " << error;
  return nullptr;
}

const std::string& isolateSettings() {
  static TempDir* dir = [] {
    auto* d = new TempDir();  // lives for the whole process: the settings store keeps its path
    ::setenv("APPDATA", d->path().c_str(), 1);
    return d;
  }();
  return dir->path();
}

std::vector<std::string> corpusDxfFiles(std::string_view under, bool withMalformed) {
  std::vector<std::string> out;
  const std::string root = corpusDir();
  if (root.empty() || !std::filesystem::is_directory(root + std::string(under))) return out;
  for (const auto& e : std::filesystem::recursive_directory_iterator(root + std::string(under))) {
    const std::string p = e.path().string();
    if (e.is_regular_file() && platform::equalsIgnoreCase(e.path().extension().string(), ".dxf") &&
        (withMalformed || p.find("/malformed/") == std::string::npos))
      out.push_back(p);
  }
  std::sort(out.begin(), out.end());
  return out;
}

void prepareSilentRuns(const std::string& logFolder) {
  isolateSettings();
  quietConsole();
  LogFolder() = logFolder;
  ExcludedLayers().clear();
  CCompareConfigFile& s = CCompareConfigFile::instance();
  s.SetCompareFlags(1, 1, 1, 1, 1, 1, 1);
  s.SetExterEntity(1);
  s.SetLayerScope(kLayerScopeAll);
  s.WriteSettings();
}

void quietConsole() {
  headless::Console::instance().setEcho(nullptr);
  headless::Console::instance().setProgressStream(nullptr);
  headless::Console::instance().reset();
}

std::string dxfFromPairs(std::string_view pairs) {
  std::string out;
  out.reserve(pairs.size() + 16);
  for (char c : pairs) out += c == '|' ? '\n' : c;
  if (!out.empty() && out.back() != '\n') out += '\n';
  return out;
}

std::string dxfDrawing(std::string_view entities, std::string_view version, std::string_view header,
                       std::string_view tables, std::string_view blocks) {
  std::string s = "0|SECTION|2|HEADER|9|$ACADVER|1|" + std::string(version);
  if (!header.empty()) s += "|" + std::string(header);
  s += "|0|ENDSEC";
  if (!tables.empty()) s += "|0|SECTION|2|TABLES|" + std::string(tables) + "|0|ENDSEC";
  if (!blocks.empty()) s += "|0|SECTION|2|BLOCKS|" + std::string(blocks) + "|0|ENDSEC";
  s += "|0|SECTION|2|ENTITIES";
  if (!entities.empty()) s += "|" + std::string(entities);
  s += "|0|ENDSEC|0|EOF";
  return dxfFromPairs(s);
}

std::string nestedBlocksDrawing(int depth, int references) {
  const auto inserts = [&](int block) {
    std::string s;
    for (int i = 0; i < references; ++i)
      s += "|0|INSERT|8|0|2|N" + std::to_string(block) + "|10|" + std::to_string(i) + "|20|0|30|0";
    return s.substr(1);
  };
  std::string blocks;
  for (int k = 0; k < depth; ++k)
    blocks += "|0|BLOCK|8|0|2|N" + std::to_string(k) + "|70|0|10|0|20|0|30|0|3|N" + std::to_string(k) + "|" +
              (k + 1 < depth ? inserts(k + 1) : std::string("0|LINE|8|0|10|0|20|0|30|0|11|1|21|0|31|0")) +
              "|0|ENDBLK|8|0";
  return dxfDrawing(inserts(0), "AC1015", "", "", blocks.substr(1));
}

std::unique_ptr<platform::Database> readDxfText(const TempDir& dir, std::string_view name, std::string_view dxf,
                                                platform::ReadReport* report) {
  const std::string path = dir.file(name);
  writeFile(path, dxf);
  platform::ReadReport local;
  platform::ReadReport& r = report ? *report : local;
  auto db = platform::Database::read(path, r);
  EXPECT_TRUE(db) << r.error;
  return db;
}

std::vector<platform::Entity> modelEntities(const platform::Database& db) {
  std::vector<platform::Entity> out;
  for (platform::ObjectId id : db.blockRecord(db.modelSpaceId()).entityIds()) out.push_back(db.openEntity(id));
  return out;
}

}  // namespace vktest
