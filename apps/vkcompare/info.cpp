// vkcompare info: the version, code page, spaces, layers, blocks and entity counts of a drawing.
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "commands.h"
#include "platform/database.h"
#include "platform/boundary.h"
#include "results.h"

namespace vkcompare {

namespace {

struct Space {
  std::string name;
  std::string layout;
  std::map<std::string, long> counts;  // DXF name -> top-level entities
  long total = 0;
};

struct DrawingInfo {
  long layers = 0;
  long blocks = 0;
  long namedBlocks = 0;
  long entities = 0;
  std::string currentSpace;
  std::vector<Space> spaces;
};

DrawingInfo collect(const platform::Database& db) {
  DrawingInfo info;
  info.layers = static_cast<long>(db.layers().size());
  info.currentSpace = std::string(db.blockRecord(db.currentSpaceId()).name());
  std::vector<std::pair<int, Space>> spaces;
  for (platform::ObjectId id : db.blockRecordIds()) {
    const platform::BlockRecord b = db.blockRecord(id);
    if (!b.isLayout()) {
      ++info.blocks;
      if (!b.isAnonymous()) ++info.namedBlocks;
      continue;
    }
    Space s;
    s.name = std::string(b.name());
    s.layout = std::string(b.layoutName());
    for (platform::ObjectId eid : b.entityIds()) {
      ++s.counts[std::string(db.openEntity(eid).dxfName())];
      ++s.total;
    }
    info.entities += s.total;
    // Model space first, then the paper spaces by name.
    const int rank = id == db.modelSpaceId() ? 0 : 1;
    spaces.emplace_back(rank, std::move(s));
  }
  std::stable_sort(spaces.begin(), spaces.end(), [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first < b.first : a.second.name < b.second.name;
  });
  for (auto& [rank, s] : spaces) info.spaces.push_back(std::move(s));
  return info;
}

std::string toJson(const platform::Database& db, const DrawingInfo& info, const platform::ReadReport& report) {
  Json spaces = Json::object();
  for (const Space& s : info.spaces) {
    Json counts = Json::object();
    for (const auto& [name, count] : s.counts) counts[name] = count;
    spaces[s.name] = std::move(counts);
  }
  const Json document = {
      {"file", db.fileName()},
      {"format", std::string(db.format())},
      {"version", std::string(db.version())},
      {"codepage", std::string(db.codepage())},
      {"tilemode", db.tilemode()},
      {"current_space", info.currentSpace},
      {"layers", info.layers},
      {"blocks", info.blocks},
      {"named_blocks", info.namedBlocks},
      {"entities", info.entities},
      {"spaces", std::move(spaces)},
      {"warnings", report.warnings},
  };
  return JsonText(document);
}

void printTable(const platform::Database& db, const DrawingInfo& info) {
  std::printf("File:           %s\n", db.fileName().c_str());
  std::printf("Format:         %.*s, version %.*s\n", static_cast<int>(db.format().size()), db.format().data(),
              static_cast<int>(db.version().size()), db.version().empty() ? "unknown" : db.version().data());
  std::printf("Code page:      %.*s\n", static_cast<int>(db.codepage().size()),
              db.codepage().empty() ? "(not given)" : db.codepage().data());
  std::printf("Current space:  %s (TILEMODE %d)\n", info.currentSpace.c_str(), db.tilemode());
  std::printf("Layers:         %ld\n", info.layers);
  std::printf("Blocks:         %ld (%ld named)\n", info.blocks, info.namedBlocks);
  std::printf("Entities:       %ld in %zu spaces\n", info.entities, info.spaces.size());
  for (const Space& s : info.spaces) {
    std::printf("\n  %s (layout \"%s\"): %ld\n", s.name.c_str(), s.layout.c_str(), s.total);
    for (const auto& [name, count] : s.counts) std::printf("    %-24s %6ld\n", name.c_str(), count);
  }
}

}  // namespace

int runInfo(int argc, char** argv) {
  bool json = false;
  std::string file;
  for (int i = 0; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--json") json = true;
    else if (!arg.empty() && arg[0] == '-') {
      std::fprintf(stderr, "vkcompare info: unknown option '%s'\n", arg.c_str());
      return 2;
    } else if (file.empty()) file = arg;
    else {
      std::fprintf(stderr, "vkcompare info: one drawing at a time ('%s' is one too many)\n", arg.c_str());
      return 2;
    }
  }
  if (file.empty()) {
    std::fprintf(stderr, "usage: vkcompare info [--json] FILE\n");
    return 2;
  }
  return RunGuarded(
      2,
      [&] {
        platform::ReadReport report;
        const auto db = platform::Database::read(file, report);
        if (!db) {
          std::fprintf(stderr, "vkcompare: %s\n", report.error.c_str());
          return 2;
        }
        const DrawingInfo info = collect(*db);
        if (json) {
          std::fputs(toJson(*db, info, report).c_str(), stdout);
        } else {
          for (const std::string& w : report.warnings) std::fprintf(stderr, "vkcompare: warning: %s\n", w.c_str());
          printTable(*db, info);
        }
        return 0;
      },
      [&](const char* reason) { std::fprintf(stderr, "vkcompare: %s: %s\n", file.c_str(), reason); });
}

}  // namespace vkcompare
