// Tests of the benchmark drawing generator: clean reads, the counts it reports, determinism and revisions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <unistd.h>

#include "drawing_generator.h"
#include "platform/database.h"

namespace {

namespace fs = std::filesystem;

class GeneratorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Parameterised tests are named "Name/0": the folder takes the name with the slash replaced.
    std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::replace(name.begin(), name.end(), '/', '_');
    dir_ = fs::temp_directory_path() / ("vk_gen_test_" + std::to_string(::getpid()) + "_" + name);
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::string generate(const vkbench::GeneratorOptions& opt, const std::string& name, vkbench::GeneratorStats& stats) {
    const std::string path = (dir_ / name).string();
    std::string error;
    EXPECT_TRUE(vkbench::generateDrawing(opt, path, stats, error)) << error;
    return path;
  }

  static std::unique_ptr<platform::Database> read(const std::string& path) {
    platform::ReadReport report;
    auto db = platform::Database::read(path, report);
    EXPECT_TRUE(db) << report.error;
    for (const std::string& w : report.warnings) ADD_FAILURE() << "warning: " << w;
    return db;
  }

  static std::string contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  fs::path dir_;
};

// A comparable text of an entity and its attributes or vertices: every group but the entity names, which
// depend on where the entity sits in its database.
std::string fingerprint(const platform::Database& db, platform::ObjectId id) {
  std::string out;
  const auto add = [&](const platform::Entity& e) {
    for (const platform::ResBuf& r : e.entGet()) {
      if (r.type == platform::ResBuf::Type::Name) continue;
      out += std::to_string(r.code) + "=" + std::to_string(r.real) + "," + std::to_string(r.integer) + "," +
             std::to_string(r.point.x) + "," + std::to_string(r.point.y) + "," + std::to_string(r.point.z) + "," + r.text + ";";
    }
    out += "|";
  };
  const platform::Entity e = db.openEntity(id);
  add(e);
  for (platform::ObjectId sub : e.attributes()) add(db.openEntity(sub));
  for (platform::ObjectId sub : e.vertices()) add(db.openEntity(sub));
  return out;
}

class GeneratorVersionTest : public GeneratorTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(GeneratorVersionTest, DrawingReadsCleanlyAndHoldsWhatTheGeneratorCounted) {
  vkbench::GeneratorOptions opt;
  opt.entities = 3000;
  opt.seed = 11;
  opt.version = GetParam();
  vkbench::GeneratorStats stats;
  const std::string path = generate(opt, "drawing.dxf", stats);
  EXPECT_EQ(stats.entities, 3000u);
  EXPECT_EQ(stats.bytes, fs::file_size(path));
  const auto db = read(path);
  ASSERT_TRUE(db);
  EXPECT_EQ(db->version(), opt.version);
  EXPECT_EQ(db->codepage(), "ANSI_1252");
  EXPECT_EQ(db->tilemode(), 1);
  EXPECT_EQ(db->layers().size(), 20u);

  const platform::BlockRecord ms = db->blockRecord(db->modelSpaceId());
  std::map<std::string, std::uint64_t> byType;
  std::uint64_t subEntities = 0;
  std::set<std::string> layers;
  for (platform::ObjectId id : ms.entityIds()) {
    const platform::Entity e = db->openEntity(id);
    ++byType[std::string(e.dxfName())];
    layers.insert(std::string(e.layer()));
    subEntities += e.attributes().size() + e.vertices().size();
  }
  EXPECT_EQ(byType, stats.byType);
  EXPECT_EQ(subEntities, stats.subEntities);
  EXPECT_GE(layers.size(), 15u) << "the entities should spread over the layers";
  EXPECT_EQ(db->blockRecord(db->currentSpaceId()).entityCount(), 3000u);

  // Every block an insert names is defined, with its attribute definitions.
  for (const char* name : {"DOOR_900", "ROOM_TAG", "SECTION_MARK", "TREE"}) {
    const platform::BlockRecord b = db->blockRecord(name);
    ASSERT_TRUE(b) << name;
    EXPECT_GE(b.entityCount(), 1u) << name;
  }
  // The header extents hold every entity (texts aside, whose extents depend on their fonts).
  const platform::Extents3d header = db->extents();
  for (platform::ObjectId id : ms.entityIds()) {
    const platform::Entity e = db->openEntity(id);
    platform::Extents3d one;
    if (e.dxfName() == "TEXT" || e.dxfName() == "MTEXT" || e.dxfName() == "DIMENSION" || e.dxfName() == "INSERT") continue;
    if (e.getGeomExtents(one) != platform::ErrorStatus::eOk) continue;
    ASSERT_TRUE(header.min.x <= one.min.x && header.min.y <= one.min.y && one.max.x <= header.max.x &&
                one.max.y <= header.max.y)
        << e.dxfName() << " lies outside $EXTMIN/$EXTMAX";
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, GeneratorVersionTest, ::testing::Values("AC1009", "AC1015", "AC1032"));

TEST_F(GeneratorTest, SameSeedGivesTheSameFileAndAnotherSeedAnotherOne) {
  vkbench::GeneratorOptions opt;
  opt.entities = 1500;
  vkbench::GeneratorStats s1, s2, s3;
  const std::string a = generate(opt, "a.dxf", s1);
  const std::string b = generate(opt, "b.dxf", s2);
  opt.seed = 2;
  const std::string c = generate(opt, "c.dxf", s3);
  EXPECT_EQ(contents(a), contents(b));
  EXPECT_NE(contents(a), contents(c));
}

TEST_F(GeneratorTest, ModernDrawingsCarryHandlesAndOwnersAndR12DrawingsNeither) {
  vkbench::GeneratorOptions opt;
  opt.entities = 500;
  vkbench::GeneratorStats stats;
  const std::string modern = contents(generate(opt, "r2000.dxf", stats));
  EXPECT_NE(modern.find("\nBLOCK_RECORD\n"), std::string::npos);
  EXPECT_NE(modern.find("\n100\nAcDbEntity\n"), std::string::npos);
  // The first entity: its handle, then the model space record as its owner.
  const std::size_t first = modern.find("\nENTITIES\n");
  ASSERT_NE(first, std::string::npos);
  EXPECT_NE(modern.find("\n  5\n1000\n330\n", first), std::string::npos);

  const auto db = read((dir_ / "r2000.dxf").string());
  ASSERT_TRUE(db);
  const auto ids = db->blockRecord(db->modelSpaceId()).entityIds();
  ASSERT_EQ(ids.size(), 500u);
  for (std::size_t i = 0; i < ids.size(); ++i) ASSERT_EQ(db->openEntity(ids[i]).handle(), vkbench::entityHandle(i));

  opt.version = "AC1009";
  const std::string r12 = contents(generate(opt, "r12.dxf", stats));
  EXPECT_EQ(r12.find("BLOCK_RECORD"), std::string::npos);
  EXPECT_EQ(r12.find("\n100\n"), std::string::npos) << "R12 has no subclass markers";
  EXPECT_EQ(r12.find("\n  5\n"), std::string::npos) << "R12 drawings are written without handles";
  EXPECT_EQ(r12.find("\n330\n"), std::string::npos);
}

TEST_F(GeneratorTest, CrLfDrawingReadsLikeTheOther) {
  vkbench::GeneratorOptions opt;
  opt.entities = 800;
  vkbench::GeneratorStats lf, crlf;
  const auto a = read(generate(opt, "lf.dxf", lf));
  opt.crlf = true;
  const auto b = read(generate(opt, "crlf.dxf", crlf));
  ASSERT_TRUE(a && b);
  EXPECT_GT(crlf.bytes, lf.bytes);
  const auto ia = a->blockRecord(a->modelSpaceId()).entityIds(), ib = b->blockRecord(b->modelSpaceId()).entityIds();
  ASSERT_EQ(ia.size(), ib.size());
  for (std::size_t i = 0; i < ia.size(); ++i) ASSERT_EQ(fingerprint(*a, ia[i]), fingerprint(*b, ib[i]));
}

TEST_F(GeneratorTest, RevisionDiffersFromItsBaseExactlyWhereTheEditsSay) {
  vkbench::GeneratorOptions opt;
  opt.entities = 4000;
  opt.seed = 5;
  vkbench::GeneratorStats baseStats, revStats;
  const auto base = read(generate(opt, "base.dxf", baseStats));
  opt.revision = true;
  opt.baseSeed = 5;
  opt.seed = 77;
  opt.editFraction = 0.2;
  const auto rev = read(generate(opt, "rev.dxf", revStats));
  ASSERT_TRUE(base && rev);

  const std::uint64_t edited = revStats.moved + revStats.recoloured + revStats.retexted + revStats.reshaped + revStats.deleted;
  EXPECT_GT(edited, 4000u * 0.2 * 0.8);
  EXPECT_LT(edited, 4000u * 0.2 * 1.2);
  EXPECT_GT(revStats.moved, 0u);
  EXPECT_GT(revStats.recoloured, 0u);
  EXPECT_GT(revStats.retexted, 0u);
  EXPECT_GT(revStats.reshaped, 0u);
  EXPECT_GT(revStats.deleted, 0u);
  EXPECT_GT(revStats.added, 0u);
  EXPECT_EQ(revStats.entities, 4000 - revStats.deleted + revStats.added);

  std::map<platform::Handle, platform::ObjectId> inRev;
  for (platform::ObjectId id : rev->blockRecord(rev->modelSpaceId()).entityIds()) inRev[rev->openEntity(id).handle()] = id;
  std::uint64_t missing = 0, changed = 0, same = 0;
  for (platform::ObjectId id : base->blockRecord(base->modelSpaceId()).entityIds()) {
    auto it = inRev.find(base->openEntity(id).handle());
    if (it == inRev.end()) {
      ++missing;
      continue;
    }
    if (fingerprint(*base, id) == fingerprint(*rev, it->second)) ++same;
    else ++changed;
    inRev.erase(it);
  }
  EXPECT_EQ(missing, revStats.deleted);
  EXPECT_EQ(changed, revStats.moved + revStats.recoloured + revStats.retexted + revStats.reshaped);
  EXPECT_EQ(same, 4000 - edited);
  EXPECT_EQ(inRev.size(), revStats.added) << "entities with handles the base lacks are the added ones";
}

TEST_F(GeneratorTest, RevisionWithoutEditsIsTheBaseDrawing) {
  vkbench::GeneratorOptions opt;
  opt.entities = 1000;
  opt.seed = 3;
  vkbench::GeneratorStats s1, s2;
  const std::string base = generate(opt, "base.dxf", s1);
  opt.revision = true;
  opt.baseSeed = 3;
  opt.seed = 99;
  opt.editFraction = 0.0;
  const std::string rev = generate(opt, "rev.dxf", s2);
  EXPECT_EQ(contents(base), contents(rev));
}

TEST_F(GeneratorTest, SimpleMixAndItsRevisionHoldOnlyTheFivePlainKinds) {
  vkbench::GeneratorOptions opt;
  opt.entities = 3000;
  opt.mix = "simple";
  vkbench::GeneratorStats baseStats, revStats;
  const auto base = read(generate(opt, "base.dxf", baseStats));
  opt.revision = true;
  opt.baseSeed = opt.seed;
  opt.seed = 2;
  opt.editFraction = 0.2;
  const auto rev = read(generate(opt, "rev.dxf", revStats));
  ASSERT_TRUE(base && rev);
  const std::set<std::string> plain = {"ARC", "CIRCLE", "LINE", "LWPOLYLINE", "TEXT"};
  for (const auto* db : {base.get(), rev.get()}) {
    std::map<std::string, std::uint64_t> byType;
    std::set<std::string> layers;
    for (platform::ObjectId id : db->blockRecord(db->modelSpaceId()).entityIds()) {
      const platform::Entity e = db->openEntity(id);
      ++byType[std::string(e.dxfName())];
      layers.insert(std::string(e.layer()));
      EXPECT_TRUE(e.attributes().empty() && e.vertices().empty());
    }
    std::set<std::string> kinds;
    for (const auto& [kind, count] : byType) kinds.insert(kind);
    EXPECT_EQ(kinds, plain);
    EXPECT_EQ(byType, db == base.get() ? baseStats.byType : revStats.byType);
    EXPECT_GE(layers.size(), 15u);
  }
  EXPECT_EQ(baseStats.subEntities, 0u);
  EXPECT_GT(revStats.moved, 0u);
  EXPECT_GT(revStats.retexted, 0u);
  EXPECT_GT(revStats.deleted, 0u);
  EXPECT_GT(revStats.added, 0u);
  EXPECT_EQ(revStats.entities, 3000 - revStats.deleted + revStats.added);
}

TEST_F(GeneratorTest, RefusesWhatItCannotWrite) {
  vkbench::GeneratorOptions opt;
  vkbench::GeneratorStats stats;
  std::string error;
  opt.version = "AC1018";
  EXPECT_FALSE(vkbench::generateDrawing(opt, (dir_ / "x.dxf").string(), stats, error));
  EXPECT_NE(error.find("AC1018"), std::string::npos);
  opt.version = "AC1015";
  opt.mix = "plain";
  error.clear();
  EXPECT_FALSE(vkbench::generateDrawing(opt, (dir_ / "x.dxf").string(), stats, error));
  EXPECT_NE(error.find("plain"), std::string::npos);
  opt.mix = "full";
  opt.revision = true;
  opt.editFraction = 1.5;
  error.clear();
  EXPECT_FALSE(vkbench::generateDrawing(opt, (dir_ / "x.dxf").string(), stats, error));
  EXPECT_FALSE(error.empty());
  opt.revision = false;
  error.clear();
  EXPECT_FALSE(vkbench::generateDrawing(opt, (dir_ / "no-such-folder" / "x.dxf").string(), stats, error));
  EXPECT_NE(error.find("cannot create"), std::string::npos);
}

}  // namespace
