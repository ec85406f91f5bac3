// The pictures of the toolbar's buttons, drawn as 16 by 16 pixel maps, and their BMP file form.
#include <string_view>

#include "platform/files.h"
#include "ui/CompareToolbar.h"

namespace {

constexpr int kSide = 16;

struct Picture {
  int resourceId;
  std::array<std::string_view, kSide> rows;
};

// One letter a pixel: '.' the toolbar's grey, k black, w white, d dark grey, b blue, r red, g green,
// y yellow.
std::uint32_t colourOf(char c) {
  switch (c) {
    case 'k': return 0x000000;
    case 'w': return 0xFFFFFF;
    case 'd': return 0x505050;
    case 'b': return 0x0040C0;
    case 'r': return 0xD00000;
    case 'g': return 0x00A000;
    case 'y': return 0xF0C800;
    default: return 0xC0C0C0;
  }
}

const std::array<Picture, 8> kPictures = {{
    // open the two files: a folder
    {118,
     {"................", "................", "................", ".kkkkk..........", "kyyyyyk.........",
      "kyyyyyykkkkkkkk.", "kyyyyyyyyyyyyyk.", "kyykkkkkkkkkkkkk", "kyykyyyyyyyyyyyk", "kykyyyyyyyyyyyk.",
      "kykyyyyyyyyyyyk.", "kkyyyyyyyyyyyk..", "kkyyyyyyyyyyyk..", "kkkkkkkkkkkkk...", "................",
      "................"}},
    // the compare area: a dashed frame round a point
    {120,
     {"................", ".bbb.bbb.bbb.bb.", ".b............b.", ".b............b.", "................",
      ".b............b.", ".b.....k......b.", "......kkk.......", ".b.....k......b.", ".b............b.",
      "................", ".b............b.", ".b............b.", ".bbb.bbb.bbb.bb.", "................",
      "................"}},
    // the base point: cross hairs and a ring
    {122,
     {".......k........", ".......k........", ".......k........", ".......k........", ".....rrrrr......",
      "....r..k..r.....", "....r..k..r.....", "kkkkrkkkkkrkkkk.", "....r..k..r.....", "....r..k..r.....",
      ".....rrrrr......", ".......k........", ".......k........", ".......k........", ".......k........",
      "................"}},
    // compare: two sheets and an arrow between them
    {108,
     {"................", "kkkkkk....kkkkkk", "kwwwwk....kwwwwk", "kwbbwk....kwrrwk", "kwwwwk....kwwwwk",
      "kwbbwk.k..kwbbwk", "kwwwwk.kk.kwwwwk", "kwbbwkkkkkkwbbwk", "kwwwwk.kk.kwwwwk", "kwbbwk.k..kwbbwk",
      "kwwwwk....kwwwwk", "kwbbwk....kwrrwk", "kwwwwk....kwwwwk", "kkkkkk....kkkkkk", "................",
      "................"}},
    // the settings: a gear
    {116,
     {"................", ".......dd.......", "...dd..dd..dd...", "...dddddddddd...", "....dddddddd....",
      "...ddd....ddd...", ".dddd......dddd.", ".ddd........ddd.", ".ddd........ddd.", ".dddd......dddd.",
      "...ddd....ddd...", "....dddddddd....", "...dddddddddd...", "...dd..dd..dd...", ".......dd.......",
      "................"}},
    // show the result: an eye
    {119,
     {"................", "................", "................", "................", ".....kkkkkk.....",
      "...kkwwwwwwkk...", "..kwwwwbbwwwwk..", ".kwwwwbbbbwwwwk.", ".kwwwwbbbbwwwwk.", "..kwwwwbbwwwwk..",
      "...kkwwwwwwkk...", ".....kkkkkk.....", "................", "................", "................",
      "................"}},
    // every difference's frame, in the colours of the three kinds
    {125,
     {"................", ".gggggg.........", ".g....g.........", ".g....g..rrrrrr.", ".g....g..r....r.",
      ".gggggg..r....r.", ".........r....r.", ".........rrrrrr.", "................", "...yyyyyyyy.....",
      "...y......y.....", "...y......y.....", "...y......y.....", "...yyyyyyyy.....", "................",
      "................"}},
    // end the comparison: a red cross
    {127,
     {"................", ".rr..........rr.", ".rrr........rrr.", "..rrr......rrr..", "...rrr....rrr...",
      "....rrr..rrr....", ".....rrrrrr.....", "......rrrr......", "......rrrr......", ".....rrrrrr.....",
      "....rrr..rrr....", "...rrr....rrr...", "..rrr......rrr..", ".rrr........rrr.", ".rr..........rr.",
      "................"}},
}};

void put16(std::string& out, unsigned v) {
  out += static_cast<char>(v & 0xFF);
  out += static_cast<char>((v >> 8) & 0xFF);
}
void put32(std::string& out, std::uint32_t v) {
  put16(out, v & 0xFFFF);
  put16(out, v >> 16);
}

}  // namespace

const std::array<CompareToolbarButton, 8>& CompareToolbarButtons() {
  static const std::array<CompareToolbarButton, 8> buttons = {{
      {"打开文件", "打开要比较的两个文件。", "\x03_VKOpenDwgFiles ", "OpenFileS.bmp", 118},
      {"选区域", "选择比较区域。", "\x03_VKSetCompareArea ", "SetComArea.bmp", 120},
      {"设基点", "设置比较基点。", "\x03_VKSetCompareBasePt ", "SetComBase.bmp", 122},
      {"比较", "根据区域、基点进行比较。", "\x03_VKUniversallyCompareFile ", "CompareFile.bmp", 108},
      {"比图设置", "设置图纸比较的参数。", "\x03_VkCompareSet ", "Setting.bmp", 116},
      {"结果显示", "正常显示/显示差异。", "\x03_VkResultShow ", "ResultShow.bmp", 119},
      {"显示所有差异范围", "始终显示/不显示所有差异范围。", "\x03_VkShowAllDiffRect ", "AllDiffShow.bmp", 125},
      {"结束比图", "结束比图。", "\x03_VkEndCompare ", "EndCompare.bmp", 127},
  }};
  return buttons;
}

std::optional<BitmapResource> LoadBitmapResource(int resourceId) {
  for (const Picture& picture : kPictures) {
    if (picture.resourceId != resourceId) continue;
    BitmapResource bitmap{kSide, kSide, {}};
    for (std::string_view row : picture.rows) {
      if (row.size() != kSide) return std::nullopt;  // a damaged picture is no picture
      for (char c : row) bitmap.pixels.push_back(colourOf(c));
    }
    return bitmap;
  }
  return std::nullopt;
}

std::string BmpFileBytes(const BitmapResource& bitmap) {
  constexpr std::uint32_t kFileHeader = 14, kInfoHeader = 40;
  const std::uint32_t rowBytes = (static_cast<std::uint32_t>(bitmap.width) * 3 + 3) / 4 * 4;
  const std::uint32_t imageBytes = rowBytes * static_cast<std::uint32_t>(bitmap.height);
  std::string out;
  out.reserve(kFileHeader + kInfoHeader + imageBytes);
  out += "BM";
  put32(out, kFileHeader + kInfoHeader + imageBytes);
  put32(out, 0);  // two reserved words
  put32(out, kFileHeader + kInfoHeader);
  put32(out, kInfoHeader);
  put32(out, static_cast<std::uint32_t>(bitmap.width));
  put32(out, static_cast<std::uint32_t>(bitmap.height));  // positive: rows from the bottom
  put16(out, 1);                                           // planes
  put16(out, 24);                                          // bits a pixel
  put32(out, 0);                                           // no compression
  put32(out, imageBytes);
  put32(out, 2835);  // 72 dots an inch, in dots a metre
  put32(out, 2835);
  put32(out, 0);  // no colour table
  put32(out, 0);
  for (int y = bitmap.height - 1; y >= 0; --y) {
    const std::size_t start = out.size();
    for (int x = 0; x < bitmap.width; ++x) {
      const std::uint32_t rgb = bitmap.pixels[static_cast<std::size_t>(y * bitmap.width + x)];
      out += static_cast<char>(rgb & 0xFF);  // blue, green, red
      out += static_cast<char>((rgb >> 8) & 0xFF);
      out += static_cast<char>((rgb >> 16) & 0xFF);
    }
    out.append(rowBytes - (out.size() - start), '\0');
  }
  return out;
}

bool WriteBitmapFile(int resourceId, const std::string& path) {
  const std::optional<BitmapResource> bitmap = LoadBitmapResource(resourceId);
  if (!bitmap) return false;
  const std::string bytes = BmpFileBytes(*bitmap);
  std::string existing;
  if (platform::fileKind(path) == platform::FileKind::File && platform::readWholeFile(path, existing) &&
      existing == bytes)
    return true;
  return platform::writeWholeFile(path, bytes);
}
