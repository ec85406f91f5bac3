// vkcompare shell run as a program: a script on standard input opens, zooms, switches and closes
// documents, and the session ends cleanly on QUIT or at the end of the script.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace {

using Session = vktest::ProgramRun;
using vktest::shellQuoted;

struct ShellFixture : ::testing::Test {
  vktest::TempDir dir;
  void SetUp() override { vktest::isolateSettings(); }

  // Runs "vkcompare shell ARGS" in the test's folder with the script on standard input.
  Session run(const std::vector<std::string>& args, const std::string& script) {
    vktest::writeFile(dir.file("script.txt"), script);
    std::string cmd = "cd " + shellQuoted(dir.path()) + " && timeout 60 " + shellQuoted(VKCOMPARE_PATH) + " shell";
    for (const std::string& a : args) cmd += " " + shellQuoted(a);
    return vktest::runProgram(cmd, dir, dir.file("script.txt"));
  }
  static std::string data(const char* name) { return vktest::dataDir() + "/" + name; }
};

TEST_F(ShellFixture, AScriptRunsHostCommandsOnTheTwoDrawingsAndQuits) {
  const Session s = run({data("two_entities.dxf"), data("two_entities_recoloured.dxf")},
                        "ZOOM W 0,0 10,10\nSETVAR VIEWSIZE\nDOCUMENT\n\nDOCUMENT 1\n(no_such_function)\n"
                        "CLOSE\nQUIT\nZOOM E\n");
  EXPECT_EQ(s.status, 0) << s.err;
  EXPECT_EQ(s.err, "");
  // Each line is echoed after its prompt, so the output reads as the session did.
  EXPECT_NE(s.out.find("命令: ZOOM W 0,0 10,10\n"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("指定第一个角点: 0,0\n指定对角点: 10,10\n"), std::string::npos) << s.out;
  // Tiled side by side, the view is as high as the window is wide: 10 across in a window 8 by 9.
  EXPECT_NE(s.out.find("VIEWSIZE = 11.2500 (只读)\n"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("  2  two_entities_recoloured.dxf  " + data("two_entities_recoloured.dxf") + "  (当前)\n"),
            std::string::npos)
      << s.out;
  EXPECT_NE(s.out.find("当前文档：two_entities.dxf\n"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("; 错误: 无函数定义: NO_SUCH_FUNCTION\n"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("命令: QUIT\n"), std::string::npos) << s.out;
  EXPECT_EQ(s.out.find("ZOOM E"), std::string::npos) << s.out;  // nothing is read after QUIT
}

TEST_F(ShellFixture, TheEndOfTheInputEndsTheSessionAndBadDrawingsAreRefused) {
  const Session ended = run({}, "OPEN " + data("two_entities.dxf") + "\nZOOM E\n");
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_NE(ended.out.find("输入要打开的图形文件名: " + data("two_entities.dxf")), std::string::npos) << ended.out;
  EXPECT_TRUE(ended.out.ends_with("命令: \n")) << ended.out;

  const Session bad = run({data("two_entities.dxf"), data("truncated.dxf")}, "QUIT\n");
  EXPECT_EQ(bad.status, 2);
  EXPECT_NE(bad.err.find(data("truncated.dxf") + ": line "), std::string::npos) << bad.err;
  EXPECT_EQ(run({data("two_entities.dxf")}, "").status, 0);
  EXPECT_EQ(run({"--release", "x"}, "").status, 2);
}

// Real drawings of the shared corpus, one DWG and one DXF revision of the same drawing.
TEST_F(ShellFixture, CorpusDrawingsOpenAsDocuments) {
  const std::string pair = vktest::corpusDir() + "/pairs/acadsharp_sample_2025-02_vs_2025-04/";
  if (vktest::corpusDir().empty() || !std::filesystem::exists(pair)) GTEST_SKIP() << "no corpus";
  const Session s = run({pair + "rev_a_2025-02-08_sample_AC1018.dwg", pair + "rev_b_2025-04-11_sample_AC1032_ascii.dxf"},
                        "DOCUMENT\n\nZOOM E\nSETVAR DBMOD\nCLOSE\nCLOSE\nDOCUMENT\n\nQUIT\n");
  EXPECT_EQ(s.status, 0) << s.err;
  EXPECT_NE(s.out.find("  1  rev_a_2025-02-08_sample_AC1018.dwg"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("  2  rev_b_2025-04-11_sample_AC1032_ascii.dxf"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("DBMOD = 0 (只读)"), std::string::npos) << s.out;
  EXPECT_NE(s.out.find("命令: DOCUMENT\n没有打开的图形。\n"), std::string::npos) << s.out;
}

}  // namespace

#ifdef VK_HAVE_LIBEDIT
namespace {

// A session on a terminal: the program runs on a pseudo-terminal, each line is typed once its prompt shows.
class Terminal {
 public:
  explicit Terminal(const std::vector<std::string>& args) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_ = ::forkpty(&fd_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
      ::execv(argv[0], argv.data());
      ::_exit(127);
    }
  }
  ~Terminal() {
    if (pid_ > 0 && !exited_) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
    if (fd_ >= 0) ::close(fd_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Reads until the text shows after what was read before (false after 20 s or at the end).
  bool waitFor(const std::string& text) {
    for (int waited = 0; waited < 200; ++waited) {
      if (seen_.find(text, from_) != std::string::npos) {
        from_ = seen_.find(text, from_) + text.size();
        return true;
      }
      pollfd p{fd_, POLLIN, 0};
      if (::poll(&p, 1, 100) > 0) {
        char buffer[4096];
        const ssize_t n = ::read(fd_, buffer, sizeof buffer);
        if (n <= 0) return false;
        seen_.append(buffer, static_cast<std::size_t>(n));
      }
    }
    return false;
  }
  void type(const std::string& keys) { ASSERT_EQ(::write(fd_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size())); }
  int exitStatus() {
    int raw = 0;
    waitFor("\x04");  // drains what is left until the terminal closes
    ::waitpid(pid_, &raw, 0);
    exited_ = true;
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  }
  const std::string& seen() const { return seen_; }

 private:
  int fd_ = -1;
  pid_t pid_ = -1;
  bool exited_ = false;
  std::string seen_;
  std::size_t from_ = 0;
};

TEST(ShellOnATerminal, CtrlCCancelsThePromptAndHistoryRecallsALine) {
  Terminal t({VKCOMPARE_PATH, "shell", vktest::dataDir() + "/two_entities.dxf"});
  ASSERT_TRUE(t.waitFor("命令: ")) << t.seen();
  t.type("ZOOM\r");
  ASSERT_TRUE(t.waitFor("<实时>: ")) << t.seen();
  t.type("\x03");
  ASSERT_TRUE(t.waitFor("*取消*")) << t.seen();
  ASSERT_TRUE(t.waitFor("命令: ")) << t.seen();
  t.type("SETVAR VIEWSIZE\r");
  ASSERT_TRUE(t.waitFor("VIEWSIZE = 7.5000 (只读)")) << t.seen();
  ASSERT_TRUE(t.waitFor("命令: ")) << t.seen();
  t.type("\x1b[A\r");  // the line before, from the history
  ASSERT_TRUE(t.waitFor("VIEWSIZE = 7.5000 (只读)")) << t.seen();
  ASSERT_TRUE(t.waitFor("命令: ")) << t.seen();
  t.type("QUIT\r");
  EXPECT_EQ(t.exitStatus(), 0) << t.seen();
}

}  // namespace
#endif
