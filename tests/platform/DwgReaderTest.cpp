// DWG drawings read against their DXF twins of the corpus: the same entities in the same spaces, with the
// same group values; and entity types not decoded yet are refused by name.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include "platform/database.h"
#include "platform/headless/dwg_reader.h"
#include "platform/headless/dxf_reader.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;
using platform::DatabaseData;

std::string corpusFile(const std::string& relative) {
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty() || !fs::exists(fs::path(corpus) / relative)) return {};
  return (fs::path(corpus) / relative).string();
}

// Entity counts by DXF name: of each layout by its name, and of the other blocks as a sorted list (writers
// number anonymous blocks as they like).
std::pair<std::map<std::string, std::map<std::string, int>>, std::multiset<std::map<std::string, int>>> countsOf(
    const DatabaseData& db) {
  std::map<std::string, std::map<std::string, int>> layouts;
  std::multiset<std::map<std::string, int>> blocks;
  for (const platform::BlockRec& b : db.blocks) {
    std::map<std::string, int> counts;
    for (std::uint32_t i : b.entities) ++counts[std::string(db.name(db.entities[i].dxfName))];
    if (b.isLayout) layouts[b.name] = counts;
    else blocks.insert(counts);
  }
  return {layouts, blocks};
}

TEST(DwgReader, EntitiesMatchTheirDxfTwins) {
  const char* twins[] = {"same_drawing/libredwg_sample_2018/libredwg_sample_2018",
                         "same_drawing/zcad_nonregular2/zcad_nonregular2",
                         "same_drawing/acadsharp_dynblock_visibility/acadsharp_BLOCKVISIBILITYPARAMETER"};
  for (const char* twin : twins) {
    const std::string dwg = corpusFile(std::string(twin) + ".dwg"), dxf = corpusFile(std::string(twin) + ".dxf");
    if (dwg.empty() || dxf.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
    SCOPED_TRACE(twin);
    DatabaseData a, b;
    platform::ReadReport ra, rb;
    ASSERT_TRUE(headless::readDwg(dwg, a, ra)) << ra.error;
    ASSERT_TRUE(headless::readDxf(dxf, b, rb)) << rb.error;
    EXPECT_EQ(countsOf(a), countsOf(b));
    EXPECT_EQ(a.layerTable.size(), b.layerTable.size());
    // Every group of these codes the DXF twin has, the DWG entity of the same handle has with the same value.
    std::map<platform::Handle, std::uint32_t> byHandle;
    for (std::uint32_t i = 0; i < b.entities.size(); ++i) byHandle[b.entities[i].handle] = i;
    int compared = 0;
    for (std::uint32_t i = 0; i < a.entities.size(); ++i) {
      const platform::EntityRec& e = a.entities[i];
      auto it = byHandle.find(e.handle);
      ASSERT_NE(it, byHandle.end()) << "handle " << std::hex << e.handle;
      const platform::EntityRec& t = b.entities[it->second];
      EXPECT_EQ(e.layer, t.layer);
      EXPECT_EQ(e.color, t.color);
      EXPECT_EQ(a.name(e.linetype), b.name(t.linetype));
      EXPECT_EQ(e.cls, t.cls);
      for (int code : {10, 20, 30, 11, 21, 31, 40, 41, 42, 50, 51, 1, 7, 72, 90, 70}) {
        const platform::StoredTag* want = b.find(t.tagBegin, t.tagCount, code);
        if (!want) continue;
        const platform::StoredTag* got = a.find(e.tagBegin, e.tagCount, code);
        ASSERT_NE(got, nullptr) << "code " << code << " of handle " << std::hex << e.handle;
        if (want->type == headless::TagType::Real)
          EXPECT_NEAR(got->real, want->real, 1e-9 * std::max(1.0, std::abs(want->real))) << "code " << code;
        else if (want->type == headless::TagType::Text)
          EXPECT_EQ(a.text(*got), b.text(*want)) << "code " << code;
        else
          EXPECT_EQ(got->integer, want->integer) << "code " << code;
        ++compared;
      }
    }
    EXPECT_GT(compared, 0);
  }
}

TEST(DwgReader, EntityTypesNotDecodedAreRefusedByNameAndHandle) {
  const std::string dwg = corpusFile("same_drawing/libredwg_r14_Leader/libredwg_r14_Leader.dwg");
  if (dwg.empty()) GTEST_SKIP() << "the corpus is not beside this checkout";
  platform::ReadReport report;
  EXPECT_EQ(platform::Database::read(dwg, report), nullptr);
  EXPECT_NE(report.error.find(dwg + ": the DWG reader cannot decode "), std::string::npos) << report.error;
  EXPECT_NE(report.error.find(" entities yet (handle "), std::string::npos) << report.error;
}

}  // namespace
