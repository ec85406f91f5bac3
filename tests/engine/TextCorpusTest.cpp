// The annotation comparers on the shared corpus: every text, dimension, leader, tolerance and table equals
// itself (a table lists its cells and nothing more), and a copy with one property changed reports exactly
// that property's message.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "comparers/ComparerFactory.h"
#include "platform/text.h"
#include "support/TestSupport.h"

namespace {

bool isAnnotation(std::string_view dxfName) {
  for (std::string_view n : {"TEXT", "MTEXT", "ATTRIB", "ATTDEF", "DIMENSION", "LEADER", "TOLERANCE", "ACAD_TABLE"})
    if (n == dxfName) return true;
  return false;
}

// A drawing with a comparer for every annotation entity of every block record and every attribute, in
// storage order (so two readings of one file line up).
struct Annotations {
  std::unique_ptr<platform::Database> db;
  std::unique_ptr<CLayerContext> layers;
  std::unique_ptr<CReadContext> context;
  std::vector<ComparerPtr> comparers;
};

Annotations loadAnnotations(const std::string& path, const CompareOptions& options) {
  Annotations a;
  platform::ReadReport report;
  a.db = platform::Database::read(path, report);
  if (!a.db) return a;
  a.layers = std::make_unique<CLayerContext>(*a.db);
  a.context = std::make_unique<CReadContext>(*a.db, path);
  a.context->use(a.layers.get(), &options);
  auto add = [&](platform::ObjectId id) {
    const platform::Entity e = a.db->openEntity(id);
    if (isAnnotation(e.dxfName()))
      a.comparers.push_back(createComparer(e, platform::Matrix3d(), a.context.get(), nullptr));
  };
  for (platform::ObjectId record : a.db->blockRecordIds())
    for (platform::ObjectId id : a.db->blockRecord(record).entityIds()) {
      add(id);
      for (platform::ObjectId attribute : a.db->openEntity(id).attributes()) add(attribute);
    }
  return a;
}

// The record texts of every pair that differs, "destination.compare(source)".
std::vector<std::string> differences(const Annotations& source, const Annotations& destination) {
  std::vector<std::string> out;
  if (source.comparers.size() != destination.comparers.size()) return {"different entity counts"};
  static const std::regex kCellListing("第[0-9]+行,第[0-9]+列:");
  for (std::size_t i = 0; i < source.comparers.size(); ++i) {
    CVkAcadEntityBase& d = *destination.comparers[i];
    std::string text = d.compare(*source.comparers[i])->text;
    if (d.dxfName() == "ACAD_TABLE") text = std::regex_replace(text, kCellListing, "");
    if (text != d.description()) out.push_back(text);
  }
  return out;
}

// One property to change: in the first record of a type, the first group with this code before any
// embedded object or extension data gets a new value.
struct Edit {
  const char* type;
  int code;
  const char* message;
};

// The DXF text with that group's value changed (texts get a "~" appended, reals grow by 1, integers become
// 0, or 1 when they were 0), or "" when the drawing has no such group.
std::string editedCopy(const std::string& dxf, const Edit& edit) {
  std::vector<std::pair<std::size_t, std::size_t>> lines;  // begin, end of each line without its line break
  for (std::size_t at = 0; at < dxf.size();) {
    std::size_t end = dxf.find('\n', at);
    if (end == std::string::npos) end = dxf.size();
    lines.emplace_back(at, end > at && dxf[end - 1] == '\r' ? end - 1 : end);
    at = end + 1;
  }
  auto line = [&](std::size_t i) {
    std::string_view v(dxf.data() + lines[i].first, lines[i].second - lines[i].first);
    while (!v.empty() && v.front() == ' ') v.remove_prefix(1);
    while (!v.empty() && v.back() == ' ') v.remove_suffix(1);
    return v;
  };
  bool inRecord = false;
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    const std::string_view code = line(i);
    if (code == "0") {
      if (inRecord) return {};
      inRecord = line(i + 1) == edit.type;
      continue;
    }
    if (!inRecord) continue;
    if (code == "101" || code == "1001") return {};
    if (code != std::to_string(edit.code)) continue;
    const std::string_view value = line(i + 1);
    // An empty text has no extents: filling it changes its Z text too, so the next record is edited instead.
    if (value.empty()) {
      inRecord = false;
      continue;
    }
    std::string replacement;
    if (edit.code >= 10 && edit.code < 60) replacement = std::to_string(std::stod(std::string(value)) + 1.0);
    else if (edit.code >= 60 && edit.code < 100) replacement = value == "0" ? "1" : "0";
    else replacement = std::string(value) + "~";
    std::string out = dxf;
    out.replace(lines[i + 1].first, lines[i + 1].second - lines[i + 1].first, replacement);
    return out;
  }
  return {};
}

struct TextCorpusFixture : ::testing::Test {
  CompareOptions all;
  void SetUp() override {
    if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  }
};

}  // namespace

TEST_F(TextCorpusFixture, EveryAnnotationEqualsItself) {
  std::size_t compared = 0;
  for (const std::string& path : vktest::corpusDxfFiles()) {
    const Annotations a = loadAnnotations(path, all);
    const Annotations b = loadAnnotations(path, all);
    if (!a.db) continue;  // unreadable drawings are the reader's tests' business
    compared += a.comparers.size();
    for (const std::string& d : differences(a, b)) ADD_FAILURE() << path << " compared with itself: " << d;
  }
  EXPECT_GT(compared, 0u);
}

TEST_F(TextCorpusFixture, OneChangedPropertyGivesExactlyItsMessage) {
  static constexpr Edit kEdits[] = {
      {"TEXT", 1, "文本信息不一样,"},
      {"TEXT", 40, "高度不一样,"},
      {"MTEXT", 1, "文本内容不一样,"},
      {"ATTDEF", 3, "提示不一样,"},
      {"DIMENSION", 1, "用户提供尺寸标注的文本字符串不一样,"},
      {"DIMENSION", 71, "附着点值不一样,"},
      {"LEADER", 71, "使用箭头不一样,"},
      {"TOLERANCE", 1, "文本不一样,"},
  };
  vktest::TempDir dir;
  std::size_t edits = 0;
  for (const std::string& path : vktest::corpusDxfFiles()) {
    const std::string dxf = vktest::readFile(path);
    if (dxf.starts_with("AutoCAD Binary DXF")) continue;
    const Annotations original = loadAnnotations(path, all);
    if (!original.db) continue;
    for (const Edit& edit : kEdits) {
      const std::string copy = editedCopy(dxf, edit);
      if (copy.empty()) continue;
      const std::string file = dir.file("edited.dxf");
      vktest::writeFile(file, copy);
      const std::vector<std::string> found = differences(original, loadAnnotations(file, all));
      ++edits;
      ASSERT_EQ(found.size(), 1u) << path << ": group " << edit.code << " of the first " << edit.type;
      EXPECT_EQ(found[0], std::string(typeDisplayName(edit.type)) + edit.message) << path;
    }
  }
  EXPECT_GT(edits, 0u);
}
