// The host's SVGOUT command and view rendering: what a document's view shows written to an SVG file.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/editor.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "platform/render.h"
#include "platform/views.h"

namespace {

using headless::HostSession;

std::string readAll(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::size_t count(const std::string& text, std::string_view what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) ++n;
  return n;
}

struct SvgOutFixture : ::testing::Test {
  HostSession& host = HostSession::instance();
  headless::Console& console = headless::Console::instance();
  std::filesystem::path dir;

  void SetUp() override {
    host.shutdown();
    host.setInput(nullptr);
    console.setEcho(nullptr);
    console.reset();
    dir = std::filesystem::temp_directory_path() / ("vk-svgout-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
  }
  void TearDown() override {
    host.shutdown();
    console.reset();
    std::filesystem::remove_all(dir);
  }
  headless::HeadlessDocument* open(const std::string& name) {
    std::string error;
    headless::HeadlessDocument* d = host.openDocument(std::string(VK_TEST_DATA_DIR) + "/" + name, error);
    EXPECT_NE(d, nullptr) << error;
    return d;
  }
  std::string type(std::string_view text) {
    console.takeTranscript();
    host.execute(text);
    return console.takeTranscript();
  }
};

TEST_F(SvgOutFixture, WritesTheViewWithItsVectorsUntilRegeneration) {
  headless::HeadlessDocument* d = open("two_entities.dxf");
  ASSERT_NE(d, nullptr);
  EXPECT_NE(type("HELP\n").find("  SVGOUT\n"), std::string::npos);
  ASSERT_EQ(platform::grDraw({1, 2, 0}, {3, 4, 0}, 1, false), platform::RTNORM);

  const std::filesystem::path file = dir / "view.svg";
  EXPECT_NE(type("SVGOUT " + file.string() + "\n").find(file.string()), std::string::npos);
  const std::string svg = readAll(file);
  // The view's area (0,0 to 10,7.5 centred in a 16:9 window) framed in SVG's y-down coordinates.
  const platform::Extents3d area = platform::viewExtents(platform::documentWindow(d));
  EXPECT_DOUBLE_EQ(area.max.y, 7.5);
  EXPECT_NE(svg.find("viewBox=\""), std::string::npos);
  EXPECT_NE(svg.find(" -7.5 "), std::string::npos);
  EXPECT_NE(svg.find("fill=\"#212830\""), std::string::npos);
  // The line and the circle, then the temporary vector in red, on top.
  const std::size_t line = svg.find("d=\"M0 0L10 0\""), circle = svg.find("A2.5 2.5"),
                    vector = svg.find("d=\"M1 2L3 4\" stroke=\"#ff0000\"");
  ASSERT_NE(line, std::string::npos);
  ASSERT_NE(circle, std::string::npos);
  ASSERT_NE(vector, std::string::npos);
  EXPECT_LT(line, vector);
  EXPECT_LT(circle, vector);
  EXPECT_EQ(count(svg, "<g"), count(svg, "</g>"));
  EXPECT_EQ(count(svg, "<svg"), 1u);
  EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");

  type("REGEN\n");
  type("SVGOUT \"" + file.string() + "\"\n");
  EXPECT_EQ(readAll(file).find("M1 2L3 4"), std::string::npos);
}

TEST_F(SvgOutFixture, RefusesWithoutADocumentAndKeepsOldFilesOnFailure) {
  EXPECT_NE(type("SVGOUT x.svg\n").find("没有打开的图形。"), std::string::npos);
  std::string out;
  EXPECT_FALSE(platform::renderViewSvg(12345, out));
  EXPECT_TRUE(out.empty());

  open("two_entities.dxf");
  // A folder stands where the file would go: nothing is written and the command says why.
  const std::filesystem::path folder = dir / "taken.svg";
  std::filesystem::create_directories(folder);
  EXPECT_NE(type("SVGOUT " + folder.string() + "\n").find("无法写入 SVG 文件"), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  // An answer left empty writes nothing.
  type("SVGOUT\n\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), std::filesystem::directory_iterator()), 1);
}

}  // namespace
