// vkcompare's further outputs, run as a program: the JSON document (checked against the schema file), the
// list of records, folder comparisons and the git diff driver.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "VkcompareFixture.h"
#include "engine/CompareRun.h"
#include "results/Locate.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Result = vktest::ProgramRun;

// The first place where a value breaks the schema, "" when it keeps it. Knows the parts of JSON Schema the
// result schema uses: $ref into the same file, type (one name or a list), enum, required, properties,
// items, minimum, minItems, maxItems and pattern.
std::string violation(const Json& value, const Json& schema, const Json& root, const std::string& at) {
  if (schema.contains("$ref")) {
    const std::string ref = schema["$ref"];
    return violation(value, root.at(Json::json_pointer(ref.substr(1))), root, at);
  }
  if (schema.contains("type")) {
    const auto is = [&value](const std::string& type) {
      return type == "object"    ? value.is_object()
             : type == "array"   ? value.is_array()
             : type == "string"  ? value.is_string()
             : type == "integer" ? value.is_number_integer()
             : type == "number"  ? value.is_number()
             : type == "boolean" ? value.is_boolean()
             : type == "null"    ? value.is_null()
                                 : false;
    };
    const Json types = schema["type"].is_array() ? schema["type"] : Json::array({schema["type"]});
    bool any = false;
    for (const Json& t : types) any = any || is(t.get<std::string>());
    if (!any) return at + ": not of type " + types.dump();
  }
  if (schema.contains("enum") && std::find(schema["enum"].begin(), schema["enum"].end(), value) == schema["enum"].end())
    return at + ": " + value.dump() + " is none of " + schema["enum"].dump();
  if (value.is_object()) {
    for (const Json& name : schema.value("required", Json::array()))
      if (!value.contains(name.get<std::string>())) return at + ": lacks " + name.get<std::string>();
    const Json properties = schema.value("properties", Json::object());
    for (const auto& [name, sub] : properties.items())
      if (value.contains(name))
        if (std::string v = violation(value[name], sub, root, at + "/" + name); !v.empty()) return v;
  }
  if (value.is_array()) {
    if (schema.contains("minItems") && value.size() < schema["minItems"].get<std::size_t>()) return at + ": too short";
    if (schema.contains("maxItems") && value.size() > schema["maxItems"].get<std::size_t>()) return at + ": too long";
    if (schema.contains("items"))
      for (std::size_t i = 0; i < value.size(); ++i)
        if (std::string v = violation(value[i], schema["items"], root, at + "/" + std::to_string(i)); !v.empty()) return v;
  }
  if (value.is_number() && schema.contains("minimum") && value.get<double>() < schema["minimum"].get<double>())
    return at + ": below the minimum";
  if (value.is_string() && schema.contains("pattern") &&
      !std::regex_search(value.get<std::string>(), std::regex(schema["pattern"].get<std::string>())))
    return at + ": " + value.dump() + " does not match " + schema["pattern"].get<std::string>();
  return "";
}

const Json& resultSchema() {
  static const Json schema = Json::parse(vktest::readFile(VK_RESULT_SCHEMA));
  return schema;
}

std::string schemaViolation(const Json& document) { return violation(document, resultSchema(), resultSchema(), ""); }

// The checker itself refuses what the schema refuses.
TEST(ResultSchema, CheckerFindsMissingFieldsAndWrongTypes) {
  const Json good = {{"schema", "vkcompare-result/1"}, {"source", "a"}, {"destination", "b"},
                     {"outcome", "trouble"}, {"exit_status", 2}, {"count", 0}, {"error", "x"}, {"warnings", Json::array()},
                     {"log", nullptr}, {"offsets", {{"source", {0, 0, 0}}, {"destination", {0, 0, 0}}}},
                     {"records", Json::array()}, {"ranges", Json::array()}};
  EXPECT_EQ(schemaViolation(good), "");
  Json bad = good;
  bad.erase("ranges");
  EXPECT_EQ(schemaViolation(bad), ": lacks ranges");
  bad = good;
  bad["count"] = "0";
  EXPECT_NE(schemaViolation(bad), "");
  bad = good;
  bad["offsets"]["source"] = {0, 0};
  EXPECT_EQ(schemaViolation(bad), "/offsets/source: too short");
  bad = good;
  bad["records"] = Json::array({{{"index", 0}, {"kind", "moved"}}});
  EXPECT_NE(schemaViolation(bad).find("lacks"), std::string::npos);
}

struct OutputsFixture : VkcompareFixture {
  std::string example(const char* name) const { return vktest::dataDir() + "/../../examples/" + name; }
  Json readJson(const std::string& path) {
    const std::string text = vktest::readFile(path);
    return Json::parse(text, nullptr, false);
  }
};

// Keeps the Locate windows of a run's records, in their sorted order.
struct WindowsSink : CResultSink {
  std::vector<LocateWindows> windows;
  void publish(const CComparisonState& state) override {
    for (const auto& r : state.differences)
      windows.push_back(ComputeLocateWindows(*r, state.sourceOffset, state.destinationOffset));
  }
};

Json windowJson(const DrawingWindow& w) { return {{"min", {w.minX, w.minY}}, {"max", {w.maxX, w.maxY}}}; }

TEST_F(OutputsFixture, JsonOfTheExamplesHoldsEveryRecordInOrder) {
  // The same run in this process gives the windows Locate zooms to.
  vktest::prepareSilentRuns(dir.path());
  WindowsSink sink;
  CResultSink* const sinks[] = {&sink};
  RunSilentCompare(example("door_rev_a.dxf"), example("door_rev_b.dxf"), sinks);
  ASSERT_EQ(sink.windows.size(), 10u);
  fs::remove_all(dir.path());
  fs::create_directory(dir.path());

  const Result r = run({"--json", "result.json", example("door_rev_a.dxf"), example("door_rev_b.dxf")});
  ASSERT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find("发现有(10)个实体不同"), std::string::npos) << r.out;  // the run prints what it always did
  EXPECT_EQ(logs(), 1);
  const Json doc = readJson(dir.file("result.json"));
  ASSERT_TRUE(doc.is_object());
  EXPECT_EQ(schemaViolation(doc), "");
  EXPECT_EQ(doc["schema"], "vkcompare-result/1");
  EXPECT_EQ(doc["outcome"], "different");
  EXPECT_EQ(doc["exit_status"], 1);
  EXPECT_EQ(doc["count"], 10);
  EXPECT_EQ(doc["source"], example("door_rev_a.dxf"));
  EXPECT_TRUE(doc["error"].is_null());
  EXPECT_TRUE(doc["log"].is_string());
  const Json& records = doc["records"];
  ASSERT_EQ(records.size(), 10u);
  std::map<std::string, int> kinds;
  for (std::size_t i = 0; i < records.size(); ++i) {
    const Json& rec = records[i];
    SCOPED_TRACE(rec.dump());
    EXPECT_EQ(rec["index"], i);
    const std::string kind = rec["kind"], text = rec["text"];
    ++kinds[kind];
    EXPECT_EQ(rec["kind_number"], kind == "changed" ? 1 : kind == "added" ? 2 : 3);
    EXPECT_EQ(text.rfind(rec["description"].get<std::string>(), 0), 0u);
    ASSERT_FALSE(rec["messages"].empty());
    // An added or deleted record says so; a changed one names what differs, and has both entities.
    if (kind == "added") {
      EXPECT_EQ(rec["messages"], Json::array({"新增"}));
    } else if (kind == "deleted") {
      EXPECT_EQ(rec["messages"], Json::array({"删除"}));
    }
    EXPECT_EQ(rec["source_handle"].is_string(), kind != "added");
    EXPECT_EQ(rec["destination_handle"].is_string(), kind != "deleted");
    std::string joined;
    for (const Json& m : rec["messages"]) joined += m.get<std::string>() + ",";
    EXPECT_EQ(rec["description"].get<std::string>() + joined, text);
    EXPECT_EQ(rec["locate"]["source"], windowJson(sink.windows[i].source));
    EXPECT_EQ(rec["locate"]["destination"], windowJson(sink.windows[i].destination));
  }
  EXPECT_GT(kinds["changed"], 0);
  EXPECT_GT(kinds["added"], 0);
  EXPECT_GT(kinds["deleted"], 0);
  // Every record is a member of the range it names, at its number, and of no other.
  std::vector<int> seen(records.size(), 0);
  for (const Json& range : doc["ranges"]) {
    const Json& members = range["members"];
    for (std::size_t m = 0; m < members.size(); ++m) {
      const std::size_t index = members[m];
      ASSERT_LT(index, records.size());
      ++seen[index];
      EXPECT_EQ(records[index]["range"], range["number"]);
      EXPECT_EQ(records[index]["member"], m + 1);
    }
  }
  EXPECT_EQ(seen, std::vector<int>(records.size(), 1));
}

TEST_F(OutputsFixture, JsonOfARefusedRunCarriesTheError) {
  const Result r = run({"--json", "-", data("two_entities.dxf"), dir.file("nowhere.dxf")});
  EXPECT_EQ(r.status, 2);
  // On stdout the document alone: the run's lines went to stderr.
  const Json doc = Json::parse(r.out, nullptr, false);
  ASSERT_TRUE(doc.is_object()) << r.out;
  EXPECT_EQ(schemaViolation(doc), "");
  EXPECT_EQ(doc["outcome"], "trouble");
  EXPECT_EQ(doc["exit_status"], 2);
  EXPECT_NE(doc["error"].get<std::string>().find(dir.file("nowhere.dxf") + ": cannot open the file"), std::string::npos);
  EXPECT_TRUE(doc["records"].empty());
  EXPECT_NE(r.err.find("目标图形文件无效"), std::string::npos) << r.err;

  // A document that cannot be written is trouble, and leaves nothing behind.
  const Result unwritable = run({"--json", dir.file("no/such/folder.json"), data("two_entities.dxf"),
                                 data("two_entities_recoloured.dxf")});
  EXPECT_EQ(unwritable.status, 2);
  EXPECT_NE(unwritable.err.find("no/such/folder.json"), std::string::npos) << unwritable.err;
  EXPECT_FALSE(fs::exists(dir.file("no")));

  const Result html = run({data("two_entities.dxf"), data("two_entities.dxf"), "--html"});
  EXPECT_EQ(html.status, 2);
  EXPECT_NE(html.err.find("--html needs a value"), std::string::npos) << html.err;
  const Result dangling = run({data("two_entities.dxf"), data("two_entities.dxf"), "--json"});
  EXPECT_EQ(dangling.status, 2);
  EXPECT_NE(dangling.err.find("--json needs a value"), std::string::npos) << dangling.err;
  for (const char* jobs : {"0", "-1", "2x", "", "999"}) {
    const Result bad = run({"--jobs", jobs, data("two_entities.dxf"), data("two_entities.dxf")});
    EXPECT_EQ(bad.status, 2) << jobs;
    EXPECT_NE(bad.err.find("--jobs wants a number from 1 to 256, not '" + std::string(jobs) + "'"), std::string::npos)
        << bad.err;
  }
}

TEST_F(OutputsFixture, ListPrintsOneLineARecordAfterTheRunsOwnLines) {
  const Result one = run({"--list", data("two_entities.dxf"), data("two_entities_recoloured.dxf")});
  ASSERT_EQ(one.status, 1) << one.err;
  const std::string tail = one.out.substr(one.out.find("发现有(1)个实体不同"));
  EXPECT_NE(tail.find("\nchanged "), std::string::npos) << one.out;
  EXPECT_NE(tail.find("颜色不相同,\n"), std::string::npos) << one.out;
  EXPECT_EQ(one.out.find('\x1b'), std::string::npos);  // not a terminal: no colours

  // The examples: one line per record, in the document's order, with its kind, handles and text.
  const Result listed = run({"--list", "--json", "r.json", example("door_rev_a.dxf"), example("door_rev_b.dxf")});
  ASSERT_EQ(listed.status, 1);
  const Json doc = readJson(dir.file("r.json"));
  std::string expected;
  for (const Json& rec : doc["records"]) {
    const auto handle = [](const Json& h) { return h.is_string() ? h.get<std::string>() : std::string("-"); };
    char head[80];
    std::snprintf(head, sizeof head, "%-7s %8s %8s  ", rec["kind"].get<std::string>().c_str(),
                  handle(rec["source_handle"]).c_str(), handle(rec["destination_handle"]).c_str());
    expected += head + rec["text"].get<std::string>() + "\n";
  }
  ASSERT_EQ(doc["records"].size(), 10u);
  EXPECT_NE(listed.out.find("发现有(10)个实体不同。请使用工具条定位到详细差异位置。\n" + expected), std::string::npos)
      << listed.out;

  // On a terminal each line takes its kind's rectangle colour: changed green, added red, deleted yellow.
  if (std::system("script -qec true /dev/null > /dev/null 2>&1") != 0) GTEST_SKIP() << "no script(1) for a terminal";
  const std::string inner = vktest::shellQuoted(VKCOMPARE_PATH) + " --list " + vktest::shellQuoted(example("door_rev_a.dxf")) +
                            " " + vktest::shellQuoted(example("door_rev_b.dxf"));
  const Result terminal = vktest::runProgram(
      "cd " + vktest::shellQuoted(dir.path()) + " && script -qec " + vktest::shellQuoted(inner) + " /dev/null", dir);
  for (const Json& rec : doc["records"]) {
    const std::string kind = rec["kind"];
    const std::string colour = kind == "changed" ? "\x1b[32m" : kind == "added" ? "\x1b[31m" : "\x1b[33m";
    EXPECT_NE(terminal.out.find(colour + kind), std::string::npos) << kind << ": " << terminal.out;
  }
}

// Two folders of drawings: the source and a copy with one drawing edited, one removed and one added.
struct FoldersFixture : OutputsFixture {
  std::string a = dir.file("a"), b = dir.file("b"), logs = dir.file("logs");
  void copy(const std::string& from, const std::string& to) {
    fs::create_directories(fs::path(to).parent_path());
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
  }
  void SetUp() override {
    OutputsFixture::SetUp();
    for (const std::string& root : {a, b}) {
      copy(data("two_entities.dxf"), root + "/plain.dxf");
      copy(example("door_rev_a.dxf"), root + "/doors/door.DXF");
      copy(example("door_rev_a.dxf"), root + "/doors/edited.dxf");
      vktest::writeFile(root + "/notes.txt", "not a drawing");
    }
    copy(example("door_rev_b.dxf"), b + "/doors/edited.dxf");
    copy(data("two_entities.dxf"), a + "/removed.dxf");
    copy(data("two_entities.dxf"), b + "/deep/er/added.dxf");
  }
};

TEST_F(FoldersFixture, ReportsTheEditedRemovedAndAddedDrawings) {
  const Result r = run({"--log-dir", logs, "--json", "all.json", a, b});
  EXPECT_EQ(r.status, 1) << r.out << r.err;
  EXPECT_EQ(r.out,
            "added      deep/er/added.dxf: only in " + b + "\n"
            "identical  doors/door.DXF\n"
            "different  doors/edited.dxf: 10 records\n"
            "identical  plain.dxf\n"
            "deleted    removed.dxf: only in " + a + "\n"
            "3 pairs: 2 identical, 1 different, 0 could not be compared; 1 only in " + a + ", 1 only in " + b + "\n");
  // The differing pair's log, in the folder of its path.
  int written = 0;
  for (const auto& e : fs::recursive_directory_iterator(logs)) {
    written += e.is_regular_file();
    EXPECT_EQ(e.is_regular_file() ? e.path().parent_path() : fs::path(logs + "/doors"), fs::path(logs + "/doors"));
  }
  EXPECT_EQ(written, 1);

  const Json doc = readJson(dir.file("all.json"));
  ASSERT_TRUE(doc.is_object());
  EXPECT_EQ(doc["schema"], "vkcompare-folders/1");
  EXPECT_EQ(doc["exit_status"], 1);
  EXPECT_EQ(doc["only_in_source"], Json::array({"removed.dxf"}));
  EXPECT_EQ(doc["only_in_destination"], Json::array({"deep/er/added.dxf"}));
  ASSERT_EQ(doc["pairs"].size(), 3u);
  const char* paths[] = {"doors/door.DXF", "doors/edited.dxf", "plain.dxf"};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(doc["pairs"][i]["path"], paths[i]);
    EXPECT_EQ(schemaViolation(doc["pairs"][i]), "");
  }
  EXPECT_EQ(doc["pairs"][1]["count"], 10);
  EXPECT_EQ(doc["pairs"][1]["destination"], b + "/doors/edited.dxf");

  // With the records listed under their pair.
  const Result listed = run({"--log-dir", logs, "--list", a, b});
  EXPECT_EQ(listed.status, 1);
  const std::size_t at = listed.out.find("different  doors/edited.dxf: 10 records\n");
  ASSERT_NE(at, std::string::npos) << listed.out;
  std::size_t line = at;
  for (int i = 0; i < 10; ++i) {
    line = listed.out.find('\n', line) + 1;
    EXPECT_TRUE(listed.out.compare(line, 10, "  changed ") == 0 || listed.out.compare(line, 10, "  added   ") == 0 ||
                listed.out.compare(line, 10, "  deleted ") == 0)
        << listed.out.substr(line, 40);
  }
  EXPECT_EQ(listed.out.compare(listed.out.find('\n', line) + 1, 21, "identical  plain.dxf\n"), 0) << listed.out;
}

TEST_F(FoldersFixture, ExitStatusSaysIdenticalDifferentOrTrouble) {
  fs::remove(a + "/removed.dxf");
  fs::remove_all(b + "/deep");
  copy(example("door_rev_a.dxf"), b + "/doors/edited.dxf");
  Result r = run({"--log-dir", logs, a, b});
  EXPECT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_NE(r.out.find("3 pairs: 3 identical, 0 different, 0 could not be compared; 0 only in"), std::string::npos)
      << r.out;

  // A pair that cannot be compared is named with its reason; the others are still compared.
  copy(data("truncated.dxf"), b + "/plain.dxf");
  copy(example("door_rev_b.dxf"), b + "/doors/edited.dxf");
  r = run({"--log-dir", logs, "--json", "all.json", a, b});
  EXPECT_EQ(r.status, 2) << r.out << r.err;
  EXPECT_NE(r.out.find("different  doors/edited.dxf: 10 records\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("trouble    plain.dxf: " + b + "/plain.dxf: line "), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("3 pairs: 1 identical, 1 different, 1 could not be compared"), std::string::npos) << r.out;
  const Json doc = readJson(dir.file("all.json"));
  ASSERT_EQ(doc["pairs"].size(), 3u);
  EXPECT_EQ(doc["pairs"][2]["outcome"], "trouble");
  EXPECT_EQ(schemaViolation(doc["pairs"][2]), "");
}

// The shared corpus's DXF folder against a copy with drawings edited, removed and added: the report differs
// from that of an untouched copy in exactly those.
TEST_F(OutputsFixture, CorpusFolderAgainstAnEditedCopy) {
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty() || !fs::is_directory(corpus + "/dxf")) GTEST_SKIP() << "no corpus";
  const std::string a = corpus + "/dxf", copy = dir.file("copy"), edited = dir.file("edited");
  fs::copy(a, copy, fs::copy_options::recursive);
  fs::copy(a, edited, fs::copy_options::recursive);
  // The baseline one pair at a time, the edited copy on every core: the way they run changes nothing of what
  // they report.
  const Result baseline = run({"--jobs", "1", "--json", dir.file("baseline.json"), "--log-dir", dir.file("logs"), a, copy});
  ASSERT_NE(baseline.status, -1) << baseline.err;
  const std::string changed[] = {"R2000/zcad_entities.dxf", "R2018/ezdxf_colors.dxf"};
  const std::string removed[] = {"R12/ezdxf_Leica_Disto_S910.dxf", "R2013/ezdxf_groups.dxf"};
  fs::copy_file(a + "/R2000/libredwg_2000_entities-2d.dxf", edited + "/" + changed[0], fs::copy_options::overwrite_existing);
  fs::copy_file(a + "/R2018/ezdxf_3dface.dxf", edited + "/" + changed[1], fs::copy_options::overwrite_existing);
  for (const std::string& r : removed) fs::remove(edited + "/" + r);
  fs::create_directories(edited + "/new");
  fs::copy_file(example("door_rev_a.dxf"), edited + "/new/door.dxf");
  const Result r = run({"--json", dir.file("edited.json"), "--log-dir", dir.file("logs"), a, edited});
  EXPECT_GE(r.status, 1) << r.err;
  const Json serial = readJson(dir.file("baseline.json")), parallel = readJson(dir.file("edited.json"));
  ASSERT_TRUE(serial.is_object() && parallel.is_object());
  EXPECT_EQ(serial["workload"]["jobs"], 1);
  EXPECT_EQ(serial["workload"]["most_at_once"], 1);
  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  EXPECT_EQ(parallel["workload"]["jobs"], cores);
  EXPECT_EQ(parallel["workload"]["most_at_once"], std::min<std::size_t>(cores, parallel["pairs"].size()));
  EXPECT_GT(parallel["workload"]["cpu_seconds"].get<double>(), 0.0);

  // Line by line, keyed by path: what the baseline said, and what the edited copy must say instead.
  const auto lines = [](const std::string& out) {
    std::map<std::string, std::string> byPath;
    std::size_t at = 0;
    for (std::size_t end; (end = out.find('\n', at)) != std::string::npos; at = end + 1) {
      const std::string line = out.substr(at, end - at);
      if (line.size() > 11 && line[10] == ' ') byPath[line.substr(11, line.find(':') - 11)] = line.substr(0, 10);
    }
    return byPath;
  };
  std::map<std::string, std::string> expected = lines(baseline.out);
  ASSERT_EQ(expected.size(), 47u) << baseline.out;
  for (const std::string& c : changed) {
    EXPECT_EQ(expected[c], "identical ") << c;
    expected[c] = "different ";
  }
  for (const std::string& c : removed) expected[c] = "deleted   ";
  expected["new/door.dxf"] = "added     ";
  EXPECT_EQ(lines(r.out), expected) << r.out;
}

// Every DXF and DWG pair of the corpus gives a document that keeps the schema.
TEST_F(OutputsFixture, CorpusPairsGiveDocumentsOfTheSchema) {
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty() || !fs::is_directory(corpus + "/pairs")) GTEST_SKIP() << "no corpus";
  int checked = 0;
  for (const auto& folder : fs::directory_iterator(corpus + "/pairs")) {
    if (!folder.is_directory()) continue;
    for (const char* ext : {".dxf", ".dwg"}) {
      // The revisions sort as the first half against the second, release by release.
      std::vector<std::string> files;
      for (const auto& f : fs::directory_iterator(folder.path()))
        if (f.path().extension() == ext) files.push_back(f.path().string());
      std::sort(files.begin(), files.end());
      const std::size_t half = files.size() / 2;
      for (std::size_t i = 0; i < half; ++i) {
        SCOPED_TRACE(files[i] + " against " + files[i + half]);
        const Result r = run({"--log-dir", dir.file("logs"), "--json", "pair.json", files[i], files[i + half]});
        const Json doc = readJson(dir.file("pair.json"));
        ASSERT_TRUE(doc.is_object()) << r.err;
        EXPECT_EQ(schemaViolation(doc), "");
        EXPECT_EQ(doc["exit_status"], r.status);
        EXPECT_EQ(doc["count"], doc["records"].size());
        EXPECT_EQ(doc["error"].is_null(), r.status != 2) << r.err;
        ++checked;
      }
    }
  }
  EXPECT_GE(checked, 10);
}

// git diff through the driver: a changed drawing lists its records; a new and a deleted one say so.
TEST_F(OutputsFixture, GitDiffShowsRecordsThroughTheDriver) {
  if (std::system("git --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no git";
  const std::string repo = dir.file("repo");
  fs::create_directory(repo);
  const std::string git = "cd " + vktest::shellQuoted(repo) +
                          " && git -c user.name=t -c user.email=t@t -c diff.vkcompare.command=" +
                          vktest::shellQuoted(std::string(VKCOMPARE_PATH) + " git-diff") + " ";
  const auto sh = [&](const std::string& command) { return vktest::runProgram(git + command, dir); };
  fs::copy_file(data("two_entities.dxf"), repo + "/part.dxf");
  fs::copy_file(data("two_entities.dxf"), repo + "/gone.DXF");
  vktest::writeFile(repo + "/.gitattributes", "*.dxf diff=vkcompare\n*.DXF diff=vkcompare\n");
  ASSERT_EQ(std::system(("cd " + vktest::shellQuoted(repo) + " && git init -q .").c_str()), 0);
  ASSERT_EQ(sh("add . && " + git + "commit -q -m first").status, 0);

  fs::copy_file(data("two_entities_recoloured.dxf"), repo + "/part.dxf", fs::copy_options::overwrite_existing);
  fs::remove(repo + "/gone.DXF");
  fs::copy_file(example("door_rev_a.dxf"), repo + "/new.dxf");
  ASSERT_EQ(sh("add -A").status, 0);
  const Result diff = sh("diff --cached");
  EXPECT_EQ(diff.status, 0) << diff.err;
  EXPECT_NE(diff.out.find("diff --vkcompare a/part.dxf b/part.dxf\n--- a/part.dxf ("), std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("\nchanged "), std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("颜色不相同,\n1 record: 1 changed, 0 added, 0 deleted\n"), std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("--- /dev/null\n+++ b/new.dxf ("), std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("new drawing: "), std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("--- a/gone.DXF (") , std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("+++ /dev/null\n"), std::string::npos) << diff.out;
  EXPECT_NE(diff.out.find("deleted drawing: 2 entities in its current space\n"), std::string::npos) << diff.out;
  // The comparison's log stays out of the working tree.
  const Result status = sh("status --porcelain --untracked-files=all");
  EXPECT_EQ(status.out.find(".ini"), std::string::npos) << status.out;

  // A drawing git holds that cannot be read is a line of the diff, not a stop.
  fs::copy_file(data("truncated.dxf"), repo + "/part.dxf", fs::copy_options::overwrite_existing);
  const Result broken = sh("diff");
  EXPECT_EQ(broken.status, 0) << broken.err;
  EXPECT_NE(broken.out.find("the drawings could not be compared: "), std::string::npos) << broken.out;

  // Called by hand with the wrong arguments, the driver says how it is called.
  const Result wrong = run({"git-diff", "a", "b"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_NE(wrong.err.find("usage: vkcompare git-diff PATH"), std::string::npos) << wrong.err;
}

}  // namespace
