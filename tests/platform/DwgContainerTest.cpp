// DWG containers on the real drawings of the corpus, and on damaged copies of them made here: sections,
// the object map walk, agreement with the DXF twins, the decompressors and the error correction.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "platform/database.h"
#include "platform/headless/dwg_compression.h"
#include "platform/headless/dwg_container.h"
#include "platform/headless/dwg_reed_solomon.h"
#include "support/TestSupport.h"

using namespace headless;
namespace fs = std::filesystem;

namespace {

std::vector<std::uint8_t> fileBytes(const std::string& path) {
  const std::string text = vktest::readFile(path);
  return {text.begin(), text.end()};
}

std::string joined(const std::vector<std::string>& lines) {
  std::string all;
  for (const auto& line : lines) all += line + "\n";
  return all;
}

// Every DWG of the corpus, sorted, with the release its first six bytes name.
std::vector<std::string> corpusDwgFiles() {
  std::vector<std::string> files;
  const std::string corpus = vktest::corpusDir();
  if (corpus.empty()) return files;
  for (const auto& entry : fs::recursive_directory_iterator(corpus)) {
    std::string ext = entry.path().extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), ::tolower);
    if (entry.is_regular_file() && ext == ".dwg") files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool isR13OrLater(const std::string& path) {
  const auto bytes = fileBytes(path);
  return dwgSignatureProblem(std::span(bytes).first(std::min<std::size_t>(bytes.size(), 6))).empty();
}

std::string corpusFile(std::string_view relative) {
  const std::string corpus = vktest::corpusDir();
  return corpus.empty() ? "" : corpus + "/" + std::string(relative);
}

// One drawing of each container family, for the damage tests.
const char* const kFamilySamples[] = {
    "dwg/R14/acadsharp_sample_MLeader_AC1015.dwg",
    "dwg/R2000/libredwg_2000_entities-2d.dwg",
    "dwg/R2004/libredwg_2004_Arc.dwg",
    "dwg/R2007/qcad_din_a3_inch_landscape.dwg",
    "dwg/R2010/acadsharp_surfaces_2010.dwg",
    "dwg/R2018/librecad_large_radial.dwg",
};

// Reads damaged bytes: either a clear error naming the file, or sections the walk can go over. Returns
// whether it was read.
bool readsOrFailsCleanly(std::vector<std::uint8_t> bytes, const std::string& what) {
  DwgSections sections;
  std::string error;
  if (!readDwgContainer(std::move(bytes), "damaged.dwg", sections, error)) {
    EXPECT_EQ(error.rfind("damaged.dwg: ", 0), 0u) << what << ": " << error;
    return false;
  }
  const DwgObjectWalk walk = walkObjects(sections);
  for (const DwgObjectHeader& object : walk.objects) EXPECT_LT(object.offset, sections.objects.size()) << what;
  return true;
}

}  // namespace

TEST(DwgContainer, EveryR13OrLaterDrawingOfTheCorpusOpensWhole) {
  const auto files = corpusDwgFiles();
  if (files.empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  int opened = 0;
  for (const std::string& path : files) {
    if (!isR13OrLater(path)) continue;
    SCOPED_TRACE(path);
    DwgSections sections;
    std::string error;
    ASSERT_TRUE(readDwgContainer(path, sections, error)) << error;
    ++opened;
    EXPECT_EQ(joined(sections.warnings), "");
    EXPECT_FALSE(sections.headerVariables.empty());
    EXPECT_FALSE(sections.classes.empty());
    EXPECT_FALSE(sections.handles.empty());
    EXPECT_FALSE(sections.objects.empty());
    EXPECT_EQ(sections.versionString.substr(0, 4), "AC10");
    EXPECT_FALSE(sections.codepageName().empty()) << sections.codepage;
    if (sections.version >= DwgVersion::R2004) {
      for (const char* name : {"AcDb:Header", "AcDb:Classes", "AcDb:Handles", "AcDb:AcDbObjects", "AcDb:AuxHeader"})
        EXPECT_NE(sections.section(name), nullptr) << name;
      // The objects section opens with a word of 0x0DCA.
      EXPECT_EQ(sections.objects[0] | (sections.objects[1] << 8), 0x0DCA);
    }

    const DwgObjectWalk walk = walkObjects(sections);
    EXPECT_EQ(joined(walk.warnings), "");
    EXPECT_GT(walk.objects.size(), 50u);
    std::map<std::uint16_t, int> types;
    std::set<std::uint64_t> handles;
    for (const DwgObjectHeader& object : walk.objects) {
      EXPECT_TRUE(object.crcMatches) << std::hex << object.handle;
      EXPECT_TRUE(handles.insert(object.handle).second) << "handle listed twice: " << std::hex << object.handle;
      ++types[object.type];
      // Fixed types end at 82 (LAYOUT); classes are numbered from 500, and 498/499 are proxies.
      EXPECT_TRUE(object.type <= 82 || (object.type >= 498 && object.type < 1000)) << object.type;
    }
    // Every drawing has one block table, one layer table, and its named object dictionary.
    EXPECT_EQ(types[48], 1);
    EXPECT_EQ(types[50], 1);
    EXPECT_GE(types[42], 1);
  }
  EXPECT_GE(opened, 80);
}

TEST(DwgContainer, CodepagesAndReleasesAgreeWithTheCorpusManifest) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  const struct {
    const char* file;
    const char* version;
    const char* codepage;
  } expected[] = {
      {"dwg/R14/acadsharp_sample_MLeader_AC1015.dwg", "AC1014", "ANSI_1252"},  // named AC1015, but R14
      {"dwg/R2000/libredwg_2000_entities-2d.dwg", "AC1015", "ANSI_1250"},
      {"dwg/R2007/libredwg_2007_ATMOS-DC22S.dwg", "AC1021", "ANSI_1250"},
      {"dwg/R2010/libredwg_2010_gh209_1.dwg", "AC1024", "ANSI_1255"},
      {"chinese/cloudcad_cn_R2004.dwg", "AC1018", "ANSI_936"},
      {"chinese/librecad_t1.dwg", "AC1027", "ANSI_936"},
      {"chinese/cloudcad_cn_R2018.dwg", "AC1032", "ANSI_936"},
  };
  for (const auto& e : expected) {
    DwgSections sections;
    std::string error;
    ASSERT_TRUE(readDwgContainer(corpusFile(e.file), sections, error)) << error;
    EXPECT_EQ(sections.versionString, e.version) << e.file;
    EXPECT_EQ(sections.codepageName(), e.codepage) << e.file;
  }
}

TEST(DwgContainer, EntitiesOfTheDxfTwinsAreInTheObjectMap) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  vktest::quietConsole();
  // A drawing saved both ways keeps its handles: every entity of the DXF's model and paper space is an
  // object of the DWG. The DWG has more (table records, dictionaries the DXF writer left out).
  const std::pair<const char*, const char*> twins[] = {
      {"same_drawing/libredwg_example/libredwg_example_r14.dwg", "same_drawing/libredwg_example/libredwg_example_r14.dxf"},
      {"same_drawing/libredwg_example/libredwg_example_2000.dwg", "same_drawing/libredwg_example/libredwg_example_2000.dxf"},
      {"same_drawing/libredwg_example/libredwg_example_2007.dwg", "same_drawing/libredwg_example/libredwg_example_2007.dxf"},
      {"same_drawing/libredwg_example/libredwg_example_2013.dwg", "same_drawing/libredwg_example/libredwg_example_2013.dxf"},
      {"same_drawing/libredwg_r14_Leader/libredwg_r14_Leader.dwg", "same_drawing/libredwg_r14_Leader/libredwg_r14_Leader.dxf"},
      {"same_drawing/libredwg_sample_2018/libredwg_sample_2018.dwg", "same_drawing/libredwg_sample_2018/libredwg_sample_2018.dxf"},
      {"same_drawing/zcad_nonregular2/zcad_nonregular2.dwg", "same_drawing/zcad_nonregular2/zcad_nonregular2.dxf"},
      {"same_drawing/acadsharp_table/acadsharp_table_AC1032.dwg", "same_drawing/acadsharp_table/acadsharp_table_AC1032.dxf"},
      {"same_drawing/acadsharp_hatch_pattern/acadsharp_hatch_pattern.dwg",
       "same_drawing/acadsharp_hatch_pattern/acadsharp_hatch_pattern.dxf"},
      {"chinese/libredwg_gh109_1/libredwg_2013_gh109_1.dwg", "chinese/libredwg_gh109_1/libredwg_2013_gh109_1.dxf"},
  };
  for (const auto& [dwgFile, dxfFile] : twins) {
    SCOPED_TRACE(dwgFile);
    DwgSections sections;
    std::string error;
    ASSERT_TRUE(readDwgContainer(corpusFile(dwgFile), sections, error)) << error;
    std::set<std::uint64_t> dwgHandles;
    for (const DwgObjectHeader& object : walkObjects(sections).objects) dwgHandles.insert(object.handle);

    platform::ReadReport report;
    const auto dxf = platform::Database::read(corpusFile(dxfFile), report);
    ASSERT_TRUE(dxf) << report.error;
    std::size_t entities = 0, missing = 0;
    std::uint64_t firstMissing = 0;
    for (platform::ObjectId block : dxf->blockRecordIds()) {
      // Blocks the writers make up (dimension and table graphics) may get new handles in each save, so
      // only model and paper space are compared.
      if (!dxf->blockRecord(block).isLayout()) continue;
      for (platform::ObjectId id : dxf->blockRecord(block).entityIds()) {
        ++entities;
        const std::uint64_t handle = dxf->openEntity(id).handle();
        if (!dwgHandles.count(handle) && missing++ == 0) firstMissing = handle;
      }
    }
    EXPECT_GT(entities, 0u);
    EXPECT_EQ(missing, 0u) << "first missing entity handle " << std::hex << firstMissing;
    EXPECT_GT(dwgHandles.size(), entities);
  }
}

TEST(DwgContainer, DrawingsBeforeR13AndOtherFilesAreRefusedByName) {
  const auto problem = [](std::string_view start) {
    return dwgSignatureProblem(std::span(reinterpret_cast<const std::uint8_t*>(start.data()), start.size()));
  };
  EXPECT_NE(problem("AC1009\0\0").find("R11/R12 (AC1009), older than R13"), std::string::npos);
  EXPECT_NE(problem("AC1006").find("R10 (AC1006)"), std::string::npos);
  EXPECT_NE(problem("AC1.40").find("R1.40 (AC1.40)"), std::string::npos);
  EXPECT_NE(problem("AC1099").find("does not know (AC1099)"), std::string::npos);
  EXPECT_NE(problem("0\nSECTION").find("is not a DWG drawing"), std::string::npos);
  EXPECT_NE(problem("AC1").find("too short"), std::string::npos);
  EXPECT_EQ(problem("AC1032"), "");

  if (vktest::corpusDir().empty()) return;
  for (const char* file : {"dwg/R12/libredwg_r11_ACEB10.dwg", "dwg/legacy/libredwg_r1.4_entities.dwg",
                           "same_drawing/libredwg_r10_entities/libredwg_r10_entities.dwg"}) {
    DwgSections sections;
    std::string error;
    EXPECT_FALSE(readDwgContainer(corpusFile(file), sections, error));
    EXPECT_NE(error.find("older than R13"), std::string::npos) << error;
    // The database names the release too, instead of the message for drawings it cannot read yet.
    platform::ReadReport report;
    EXPECT_FALSE(platform::Database::read(corpusFile(file), report));
    EXPECT_NE(report.error.find("older than R13"), std::string::npos) << report.error;
  }
  // An R13+ drawing of decoded entity types reads, in the space its header variables name.
  platform::ReadReport report;
  const auto db = platform::Database::read(corpusFile("dwg/R2018/libredwg_2018_Arc.dwg"), report);
  ASSERT_NE(db, nullptr) << report.error;
  EXPECT_EQ(db->tilemode(), 1);
  EXPECT_EQ(db->blockRecord(db->currentSpaceId()).name(), "*Model_Space");
}

TEST(DwgContainer, TheTruncatedPairMemberIsTheWholeDrawing) {
  const std::string complete = corpusFile("pairs/cloudcad_truncated_dwg/a_complete.dwg");
  if (complete.empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  // b_truncated.dwg lacks the last 4 bytes of a_complete.dwg. Those bytes ("done") lie after the copy
  // of the file header that closes an R2018 drawing, so they are no part of it: b reads whole, without
  // warnings, and its sections are those of a. A cut that reached into the drawing would warn or fail
  // (see the damage tests below).
  DwgSections a, b;
  std::string error;
  ASSERT_TRUE(readDwgContainer(complete, a, error)) << error;
  ASSERT_TRUE(readDwgContainer(corpusFile("pairs/cloudcad_truncated_dwg/b_truncated.dwg"), b, error)) << error;
  EXPECT_EQ(joined(b.warnings), "");
  ASSERT_EQ(a.sections.size(), b.sections.size());
  for (std::size_t i = 0; i < a.sections.size(); ++i) {
    EXPECT_EQ(a.sections[i].name, b.sections[i].name);
    EXPECT_TRUE(std::ranges::equal(a.sections[i].data, b.sections[i].data)) << a.sections[i].name;
  }
  EXPECT_EQ(walkObjects(a).objects.size(), walkObjects(b).objects.size());
}

TEST(DwgContainer, TruncatedCopiesFailOrWarnNamingWhere) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  for (const char* sample : kFamilySamples) {
    SCOPED_TRACE(sample);
    const auto whole = fileBytes(corpusFile(sample));
    // Cuts in the file header, in the maps and all through the pages.
    std::vector<std::size_t> cuts = {0, 5, 6, 0x20, 0x80, 0xFF, 0x100, 0x47F, 0x480, 0x500};
    for (std::size_t i = 1; i < 40; ++i) cuts.push_back(whole.size() * i / 40);
    for (std::size_t cut : cuts) {
      if (cut >= whole.size()) continue;
      std::vector<std::uint8_t> part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
      DwgSections sections;
      std::string error;
      if (readDwgContainer(part, "cut.dwg", sections, error)) {
        // Whatever was lost is said: a cut drawing never reads as sound.
        const DwgObjectWalk walk = walkObjects(sections);
        EXPECT_FALSE(sections.warnings.empty() && walk.warnings.empty()) << "cut at " << cut;
      } else {
        EXPECT_EQ(error.rfind("cut.dwg: ", 0), 0u) << error;
      }
    }
  }
}

TEST(DwgContainer, FlippedBytesNeverCrashOrHang) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  std::uint32_t state = 12345;
  auto random = [&state] {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
  };
  const auto start = std::chrono::steady_clock::now();
  for (const char* sample : kFamilySamples) {
    const auto whole = fileBytes(corpusFile(sample));
    for (int round = 0; round < 60; ++round) {
      auto damaged = whole;
      // Early rounds hit the headers and maps, which every later byte depends on.
      const std::size_t span = round < 30 ? std::min<std::size_t>(damaged.size(), 0x600) : damaged.size();
      for (int flips = 0; flips < 1 + round % 5; ++flips) damaged[random() % span] ^= static_cast<std::uint8_t>(1 + random() % 255);
      readsOrFailsCleanly(std::move(damaged), std::string(sample) + " round " + std::to_string(round));
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(DwgContainer, LyingSizesAreCaughtBeforeAnythingIsAllocated) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  auto put32 = [](std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
  };
  DwgSections sections;
  std::string error;
  // R13-R15: a section record whose size runs past the end, and a count of records the file cannot hold.
  const auto r2000 = fileBytes(corpusFile("dwg/R2000/libredwg_2000_entities-2d.dwg"));
  auto bigRecord = r2000;
  put32(bigRecord, 0x15 + 4 + 9 * 1 + 5, 0x7FFFFFF0);  // the classes record's size
  ASSERT_TRUE(readDwgContainer(bigRecord, "big.dwg", sections, error)) << error;
  EXPECT_NE(joined(sections.warnings).find("section AcDb:Classes at"), std::string::npos) << joined(sections.warnings);
  EXPECT_NE(joined(sections.warnings).find("runs past the end of the file"), std::string::npos);
  auto manyRecords = r2000;
  put32(manyRecords, 0x15, 0x10000000);
  EXPECT_FALSE(readDwgContainer(manyRecords, "many.dwg", sections, error));
  EXPECT_NE(error.find("many.dwg: file header lists 268435456 section records"), std::string::npos) << error;

  // R2004: the page map that claims two gigabytes once decompressed. Its plain page header is found by
  // its type word on a 32-byte boundary.
  auto r2004 = fileBytes(corpusFile("dwg/R2004/libredwg_2004_Arc.dwg"));
  std::size_t pageMap = 0;
  for (std::size_t at = 0x100; at + 8 < r2004.size() && !pageMap; at += 0x20)
    if (r2004[at] == 0x3B && r2004[at + 1] == 0x0E && r2004[at + 2] == 0x63 && r2004[at + 3] == 0x41) pageMap = at;
  ASSERT_NE(pageMap, 0u);
  put32(r2004, pageMap + 4, 0x7FFFFFFF);
  EXPECT_FALSE(readDwgContainer(r2004, "huge.dwg", sections, error));
  EXPECT_NE(error.find("huge.dwg: the page map at " ), std::string::npos) << error;
  EXPECT_NE(error.find("more than a file of"), std::string::npos) << error;
}

TEST(DwgDecompression, R2004PagesOfARealFileAndTheirDamage) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  // The section map page of an R2004 file: a plain header (type, sizes) before its compressed bytes.
  const auto file = fileBytes(corpusFile("dwg/R2004/libredwg_2004_Leader.dwg"));
  std::size_t at = 0x100;
  while (at + 0x14 < file.size() && !(file[at] == 0x3B && file[at + 1] == 0x00 && file[at + 2] == 0x63 && file[at + 3] == 0x41))
    at += 0x20;
  ASSERT_LT(at + 0x14, file.size());
  auto word = [&](std::size_t offset) {
    return std::uint32_t(file[offset]) | (std::uint32_t(file[offset + 1]) << 8) | (std::uint32_t(file[offset + 2]) << 16) |
           (std::uint32_t(file[offset + 3]) << 24);
  };
  const std::uint32_t plainSize = word(at + 4), storedSize = word(at + 8);
  const std::span<const std::uint8_t> stored(file.data() + at + 0x14, storedSize);
  std::vector<std::uint8_t> out(plainSize);
  const DwgDecompressed whole = decompressR2004(stored, out);
  EXPECT_EQ(whole.error, nullptr);
  ASSERT_EQ(whole.written, plainSize);
  // It lists its sections (about a dozen), each description 0x60 bytes with its name at 0x20.
  const std::uint32_t count = out[0] | (out[1] << 8);
  ASSERT_GT(count, 5u);
  ASSERT_LT(count, 30u);
  bool objectsNamed = false;
  for (std::size_t s = 0, p = 20; s < count && p + 0x60 <= out.size(); ++s) {
    const char* name = reinterpret_cast<const char*>(out.data() + p + 0x20);
    objectsNamed |= std::string_view(name) == "AcDb:AcDbObjects";
    p += 0x60 + 16 * (out[p + 8] | (out[p + 9] << 8));
  }
  EXPECT_TRUE(objectsNamed);

  // Cut input, a smaller output and a damaged first byte each stop with an error inside the buffers.
  for (std::size_t cut = 0; cut < stored.size(); cut += 7) {
    std::vector<std::uint8_t> partial(plainSize, 0xEE);
    const DwgDecompressed r = decompressR2004(stored.first(cut), partial);
    EXPECT_LE(r.written, partial.size());
    EXPECT_TRUE(std::equal(partial.begin(), partial.begin() + static_cast<std::ptrdiff_t>(r.written), out.begin()));
  }
  std::vector<std::uint8_t> small(plainSize / 2);
  EXPECT_STREQ(decompressR2004(stored, small).error, "the data decompresses to more bytes than the page holds");
  // Four literal bytes, then a match from 17 bytes back, before the start of the page.
  const std::vector<std::uint8_t> before = {0x01, 'a', 'b', 'c', 'd', 0x40 | 0x10, 0x04, 0x11};
  std::vector<std::uint8_t> room(64);
  const DwgDecompressed r = decompressR2004(before, room);
  EXPECT_EQ(r.written, 4u);
  EXPECT_STREQ(r.error, "a back-reference points before the start of the page");
}

TEST(DwgDecompression, R2004MatchesMayOverlapWhatTheyWrite) {
  // Four literal bytes "abab"; 0x75 copies 6 bytes from 2 back (its offset bits say 1) and then one
  // literal byte; 0x11 ends the data.
  const std::vector<std::uint8_t> stream = {0x01, 'a', 'b', 'a', 'b', 0x75, 0x00, 'z', 0x11};
  std::vector<std::uint8_t> out(32);
  const DwgDecompressed r = decompressR2004(stream, out);
  EXPECT_EQ(r.error, nullptr);
  EXPECT_EQ(std::string(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(r.written)), "abababababz");
}

TEST(DwgDecompression, R2007FileHeaderOfARealFileAndItsErrorCorrection) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  const auto file = fileBytes(corpusFile("dwg/R2007/libredwg_2007_Point.dwg"));
  const std::span<const std::uint8_t> stored(file.data() + 0x80, 3 * kRsWordBytes);
  std::vector<std::uint8_t> words(3 * kRsSystemDataBytes);
  const DwgRsDecoded clean = decodeSystemWords(stored, 3, words);
  EXPECT_EQ(clean.correctedBytes, 0u);
  EXPECT_EQ(clean.damagedWords, 0u);
  // The preamble's size word, then the compressed fields: they decompress to 0x110 bytes that give the
  // header size (0x70) and the file's own size.
  const auto compressed = static_cast<std::size_t>(words[0x18] | (words[0x19] << 8));
  std::vector<std::uint8_t> fields(0x110);
  const DwgDecompressed r = decompressR2007(std::span(words).subspan(0x20, compressed), fields);
  EXPECT_EQ(r.error, nullptr);
  EXPECT_EQ(r.written, fields.size());
  EXPECT_EQ(fields[0], 0x70);
  EXPECT_EQ(fields[8] | (fields[9] << 8) | (fields[10] << 16), static_cast<int>(file.size()));

  // Eight damaged bytes a word are mended; nine are not, and the word's data is kept as read.
  auto damaged = std::vector<std::uint8_t>(stored.begin(), stored.end());
  for (std::size_t i = 0; i < 8; ++i) damaged[(i * 29) * 3 + 1] ^= 0x5A;  // word 1
  damaged[5 * 3] ^= 0xFF;                                                  // word 0
  std::vector<std::uint8_t> mended(words.size());
  const DwgRsDecoded fixed = decodeSystemWords(damaged, 3, mended);
  EXPECT_EQ(fixed.correctedBytes, 9u);
  EXPECT_EQ(fixed.damagedWords, 0u);
  EXPECT_EQ(mended, words);
  damaged[(8 * 29) * 3 + 1] ^= 0x33;
  EXPECT_EQ(decodeSystemWords(damaged, 3, mended).damagedWords, 1u);

  // A file whose header bytes are damaged within what the code mends still opens, saying so.
  auto file2 = file;
  file2[0x80 + 10] ^= 0x01;
  file2[0x80 + 400] ^= 0x80;
  DwgSections sections;
  std::string error;
  ASSERT_TRUE(readDwgContainer(file2, "mended.dwg", sections, error)) << error;
  EXPECT_NE(joined(sections.warnings).find("mended.dwg: file header had 2 damaged bytes, mended"), std::string::npos)
      << joined(sections.warnings);

  // Cut compressed input stops inside the buffers.
  for (std::size_t cut = 0; cut < compressed; ++cut) {
    std::vector<std::uint8_t> part(0x110);
    EXPECT_LE(decompressR2007(std::span(words).subspan(0x20, cut), part).written, part.size());
  }
}

TEST(DwgContainer, ReadingTheLargestDrawingsTakesMilliseconds) {
  if (vktest::corpusDir().empty()) GTEST_SKIP() << "the shared drawing corpus is not present";
  // zcad_regular.dwg decompresses to about 2 MB of objects, 20000 of them. The bound is generous: the
  // machines that run the tests are shared, and sanitizer builds are slower.
  const auto start = std::chrono::steady_clock::now();
  DwgSections sections;
  std::string error;
  ASSERT_TRUE(readDwgContainer(corpusFile("large/zcad_regular.dwg"), sections, error)) << error;
  const DwgObjectWalk walk = walkObjects(sections);
  EXPECT_GT(walk.objects.size(), 20000u);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(DwgObjectMap, PagesWithDamagedEntriesEndWithoutWrappingAround) {
  // A page of three entries: offsets 0x10, then two deltas of about 2^62 whose sum overflows; then the
  // closing page.
  std::vector<std::uint8_t> page = {0x00, 0x00, 0x01, 0x10};
  for (int entry = 0; entry < 2; ++entry)
    for (std::uint8_t b : {0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x3F}) page.push_back(b);
  page[1] = static_cast<std::uint8_t>(page.size());
  const std::uint16_t crc = dwgCrc8(0xC0C1, page);
  std::vector<std::uint8_t> map = page;
  map.push_back(static_cast<std::uint8_t>(crc >> 8));
  map.push_back(static_cast<std::uint8_t>(crc));
  for (std::uint8_t b : {0x00, 0x02, 0x00, 0x00}) map.push_back(b);
  DwgSections sections;
  sections.fileName = "map.dwg";
  sections.version = DwgVersion::R2004;
  sections.handles = map;
  std::vector<std::string> warnings;
  const auto locations = readObjectMap(sections, warnings);
  ASSERT_EQ(locations.size(), 2u);
  EXPECT_EQ(locations[0].handle, 1u);
  EXPECT_EQ(locations[0].offset, 0x10u);
  EXPECT_EQ(locations[1].handle, 2u);
  EXPECT_NE(joined(warnings).find("map.dwg: object map page at 0x0 has an entry that cannot be read"), std::string::npos)
      << joined(warnings);
}
