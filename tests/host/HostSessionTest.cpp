// The headless host driven as a user drives it: a test module loaded into it, documents opened, commands
// typed and queued, prompts answered and cancelled, LISP calls, reactors, the hook and the views.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/application.h"
#include "platform/documents.h"
#include "platform/editor.h"
#include "platform/headless/console.h"
#include "platform/headless/dialogs.h"
#include "platform/headless/host_session.h"
#include "platform/host.h"
#include "platform/lisp.h"
#include "platform/render.h"
#include "platform/views.h"

namespace {

using headless::HostSession;

const std::string kData = VK_TEST_DATA_DIR;

struct HostFixture : ::testing::Test {
  HostSession& host = HostSession::instance();
  headless::Console& console = headless::Console::instance();
  headless::Module* module = nullptr;

  void SetUp() override {
    host.shutdown();
    host.setInput(nullptr);
    console.setEcho(nullptr);
    console.reset();
    std::string error;
    module = host.loadModule(VK_TEST_MODULE_PATH, error);
    ASSERT_NE(module, nullptr) << error;
    // The tests' own reference keeps the module's journal readable after the host has unloaded it.
    keep = ::dlopen(VK_TEST_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(keep, nullptr);
    EXPECT_EQ(journal(), "init\n");
  }
  void TearDown() override {
    host.shutdown();
    console.reset();
    if (keep) ::dlclose(keep);
  }
  // What the module wrote down since the last call.
  std::string journal() {
    const auto read = reinterpret_cast<const char* (*)()>(::dlsym(keep, "vkTestModuleLog"));
    const auto clear = reinterpret_cast<void (*)()>(::dlsym(keep, "vkTestModuleClearLog"));
    std::string text = read();
    clear();
    return text;
  }
  void* keep = nullptr;
  headless::HeadlessDocument* open(const std::string& name) {
    std::string error;
    headless::HeadlessDocument* d = host.openDocument(kData + "/" + name, error);
    EXPECT_NE(d, nullptr) << error;
    return d;
  }
  // Types the text on the command line and returns what the command line showed meanwhile.
  std::string type(std::string_view text) {
    console.takeTranscript();
    host.execute(text);
    return console.takeTranscript();
  }
};

TEST_F(HostFixture, ModuleGetsItsMessagesForEveryDocument) {
  headless::HeadlessDocument* a = open("two_entities.dxf");
  headless::HeadlessDocument* b = open("two_entities_recoloured.dxf");
  EXPECT_EQ(journal(), "load-dwg two_entities.dxf\nload-dwg two_entities_recoloured.dxf\n");
  EXPECT_EQ(platform::documents(), (std::vector<platform::Document*>{a, b}));
  EXPECT_EQ(platform::mdiActiveDocument(), b);

  type("CLOSE\n");
  EXPECT_EQ(journal(), "will-start CLOSE in two_entities_recoloured.dxf\nunload-dwg two_entities_recoloured.dxf\n");
  EXPECT_EQ(platform::documents(), (std::vector<platform::Document*>{a}));
  EXPECT_EQ(platform::curDocument(), a);

  // Unloading: a drawing unload for the document still open, then the unload; the module's service goes.
  ASSERT_NE(static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary"))->at("VkTestModule"),
            nullptr);
  host.unloadModule(module);
  EXPECT_EQ(journal(), "unload-dwg two_entities.dxf\nunload\n");
  EXPECT_EQ(static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary"))->at("VkTestModule"),
            nullptr);
  EXPECT_TRUE(host.modules().empty());
  EXPECT_EQ(host.findCommand("TestPoint"), nullptr);
}

TEST_F(HostFixture, ModulesThatCannotBeLoadedAreRefusedWithTheirReason) {
  std::string error;
  EXPECT_EQ(host.loadModule(kData + "/no_such_module.so", error), nullptr);
  EXPECT_NE(error.find("no_such_module.so"), std::string::npos);
  EXPECT_EQ(host.loadModule(VK_TEST_MODULE_PATH, error), nullptr);
  EXPECT_NE(error.find("loaded already"), std::string::npos);
  EXPECT_EQ(host.modules().size(), 1u);
  // A message the module throws on is reported with the module and refused; the module stays.
  EXPECT_EQ(host.sendAppMessage(*module, platform::kCfgMsg), platform::kRetError);
  EXPECT_NE(console.takeTranscript().find("模块 libvk_test_module.so 处理消息 6 时出错：no configuration"),
            std::string::npos);
  EXPECT_NE(host.findCommand("TestPoint"), nullptr);
}

TEST_F(HostFixture, TypedCommandsAreFoundByLocalOrGlobalNameInAnyCase) {
  open("two_entities.dxf");
  journal();
  type("testpoint 1,2\n_TESTPOINT 3,4,5\n");
  EXPECT_EQ(journal(), "will-start TestPoint in two_entities.dxf\npoint 5100 1,2,0\n"
                       "will-start TestPoint in two_entities.dxf\npoint 5100 3,4,5\n");
  EXPECT_NE(type("NoSuchThing\n").find("未知命令“NOSUCHTHING”"), std::string::npos);
  // A second registration of a name in the group is refused; a removed group's commands are gone.
  EXPECT_EQ(platform::addCommand("VKTEST", "TestPoint", "TestPoint", platform::kCmdModal, [] {}),
            platform::ErrorStatus::eInvalidInput);
  EXPECT_EQ(platform::removeGroup("ACAD_MAIN"), platform::ErrorStatus::eInvalidInput);
  EXPECT_EQ(platform::removeGroup("vktest"), platform::ErrorStatus::eOk);
  EXPECT_EQ(host.findCommand("TestPoint"), nullptr);
  EXPECT_NE(host.findCommand("zoom"), nullptr);
}

TEST_F(HostFixture, PointPromptsAnswerAsTheHostDoes) {
  open("two_entities.dxf");
  journal();
  const std::string shown = type("TestPoint\n\nTestPoint\nnonsense\n7,8\nTestCorner 1,1 @2,3\n");
  EXPECT_EQ(journal(), "will-start TestPoint in two_entities.dxf\npoint 5000\n"
                       "will-start TestPoint in two_entities.dxf\npoint 5100 7,8,0\n"
                       "will-start TestCorner in two_entities.dxf\ncorner 5100 3,4,0\n");
  EXPECT_NE(shown.find("需要点。"), std::string::npos);
  // The prompt's leading line break does not leave an empty line after the echoed command.
  EXPECT_NE(shown.find("命令: TestPoint\n指定点: nonsense\n需要点。\n指定点: 7,8\n"), std::string::npos) << shown;
  // The end of the input cancels a waiting prompt.
  type("TestPoint\n");
  EXPECT_EQ(journal(), "will-start TestPoint in two_entities.dxf\npoint -5002\ncancelled TestPoint\n");
}

TEST_F(HostFixture, QueuedStringsRunInOrderAndU0003CancelsTheWaitingPrompt) {
  headless::HeadlessDocument* a = open("two_entities.dxf");
  headless::HeadlessDocument* b = open("two_entities_recoloured.dxf");
  journal();
  ASSERT_EQ(platform::sendStringToExecute(a, "TestPoint\n1,1\n\x03TestPoint\n\x03" "TestPoint 2,2\n", false),
            platform::ErrorStatus::eOk);
  host.runQueued();
  EXPECT_EQ(journal(), "will-start TestPoint in two_entities.dxf\npoint 5100 1,1,0\n"
                       "will-start TestPoint in two_entities.dxf\npoint -5002\ncancelled TestPoint\n"
                       "will-start TestPoint in two_entities.dxf\npoint 5100 2,2,0\n");
  EXPECT_EQ(platform::mdiActiveDocument(), b);  // not activated
  EXPECT_EQ(platform::curDocument(), b);        // the queue ran in its own document

  // A string a command queues to its own document runs after it; a cancel typed in a prompt ends it.
  type("TestQueue\n");
  EXPECT_EQ(journal(), "will-start TestQueue in two_entities_recoloured.dxf\nqueued\n"
                       "will-start TestPoint in two_entities_recoloured.dxf\npoint 5100 3,4,0\n");
  EXPECT_NE(type("TestPoint\n\x03\n").find("*取消*"), std::string::npos);
  EXPECT_EQ(journal(), "will-start TestPoint in two_entities_recoloured.dxf\npoint -5002\ncancelled TestPoint\n");
  EXPECT_EQ(platform::sendStringToExecute(nullptr, "ZOOM\n"), platform::ErrorStatus::eInvalidInput);
}

TEST_F(HostFixture, WhatACommandThrowsIsReportedAndTheHostCarriesOn) {
  open("two_entities.dxf");
  journal();
  const std::string shown = type("TestThrow\nTestReactorThrows\nTestPoint 1,1\n");
  EXPECT_NE(shown.find("命令 TestThrow 出错，已取消：boom\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("编辑器反应器在命令 TestReactorThrows 中出错：reactor gave up\n"), std::string::npos) << shown;
  EXPECT_EQ(journal(), "will-start TestThrow in two_entities.dxf\ncancelled TestThrow\n"
                       "will-start TestReactorThrows in two_entities.dxf\nran TestReactorThrows\n"
                       "will-start TestPoint in two_entities.dxf\npoint 5100 1,1,0\n");
}

TEST_F(HostFixture, LispCallsReachTheModuleAndPrintTheirValue) {
  open("two_entities.dxf");
  journal();
  EXPECT_EQ(type("(test_echo \"a b\" \"c\" 7)\n"), "命令: (test_echo \"a b\" \"c\" 7)\n\"5005:a b|5005:c|5003:7\"\n");
  EXPECT_EQ(journal(), "invoke 0 args 3\n");
  // Values as the host types them: reals, nil, T, long integers, strings with escapes.
  EXPECT_NE(type("(test_echo 1.5 nil T 70000 -3 \"q\\\"x\")\n")
                .find("\"5001:1.500000|5019:0|5021:0|5010:70000|5003:-3|5005:q\"x\""),
            std::string::npos);
  EXPECT_NE(type("(test_echo (test_echo))\n").find("; 错误: 只能以字面值作为参数"), std::string::npos);
  EXPECT_NE(type("(test_echo 1e999)\n").find("; 错误: 错误的参数类型：1e999"), std::string::npos);
  // An expression ends at its closing parenthesis; what follows is the next input.
  EXPECT_NE(type("(test_echo) 5\n").find("\"\"\n命令: 5\n未知命令“5”"), std::string::npos);
  journal();
  EXPECT_NE(type("(TEST_ECHO)\n").find("\n\"\"\n"), std::string::npos);
  EXPECT_EQ(journal(), "invoke 0 args 0\n");
  EXPECT_NE(type("(test_fail \"x\")\n").find("; 错误: 函数 test_fail 调用失败"), std::string::npos);
  EXPECT_NE(type("(test_throw)\n").find("lisp gave up"), std::string::npos);
  EXPECT_NE(type("(nothing_here 1)\n").find("; 错误: 无函数定义: NOTHING_HERE"), std::string::npos);
  // An expression runs on over lines until it closes; an unclosed string is an error, not a crash.
  EXPECT_NE(type("(test_echo\n\"z\")\n").find("\"5005:z\""), std::string::npos);
  EXPECT_NE(type("(test_echo \"open\n").find(""), std::string::npos);
  journal();
  EXPECT_EQ(platform::getFunCode(), platform::RTERROR);
  EXPECT_EQ(platform::getArgs(), nullptr);
  EXPECT_EQ(platform::retInt(1), platform::RTERROR);
  // Closing the document takes its functions with it.
  type("CLOSE\n");
  open("two_entities.dxf");
  type("CLOSE\n");
  EXPECT_NE(type("(test_echo)\n").find("无函数定义"), std::string::npos);
}

TEST_F(HostFixture, ReactorsSeeEveryCommandStartIncludingTheHostsOwn) {
  open("two_entities.dxf");
  open("two_entities_recoloured.dxf");
  journal();
  host.setInput(headless::scriptInput("ZOOM E\nSETVAR CMDECHO 0\nCLOSE\nQUIT\nTestPoint\n"));
  host.runCommandLine();
  const std::string text = journal();
  EXPECT_NE(text.find("will-start ZOOM in two_entities_recoloured.dxf\n"
                      "will-start SETVAR in two_entities_recoloured.dxf\n"
                      "will-start CLOSE in two_entities_recoloured.dxf\n"
                      "unload-dwg two_entities_recoloured.dxf\n"
                      "will-start QUIT in two_entities.dxf\n"
                      "unload-dwg two_entities.dxf\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("TestPoint"), std::string::npos);  // nothing runs after QUIT
  EXPECT_TRUE(host.documentList().empty());
  EXPECT_TRUE(host.modules().empty());
  module = nullptr;
}

TEST_F(HostFixture, DocumentsKeepTheirDbmodLocksAndContext) {
  headless::HeadlessDocument* d = open("two_entities.dxf");
  journal();
  EXPECT_EQ(d->dbmod(), 0);
  d->pushDbmod();
  type("TestShowAll\n");
  EXPECT_EQ(journal(), "will-start TestShowAll in two_entities.dxf\nshowall 5100 2\n");
  EXPECT_EQ(d->dbmod(), 1);
  d->popDbmod();
  EXPECT_EQ(d->dbmod(), 0);
  d->popDbmod();  // nothing pushed: no effect
  EXPECT_EQ(d->dbmod(), 0);

  // In the application context a change needs a lock.
  EXPECT_TRUE(platform::isApplicationContext());
  std::vector<platform::ObjectId> ids;
  ASSERT_EQ(platform::ssGet("X", ids), platform::RTNORM);
  EXPECT_EQ(platform::setVisibility(d, ids[0], false), platform::ErrorStatus::eLockViolation);
  EXPECT_EQ(platform::unlockDocument(d), platform::ErrorStatus::eLockViolation);
  ASSERT_EQ(platform::lockDocument(d), platform::ErrorStatus::eOk);
  EXPECT_EQ(d->lockMode(), platform::LockMode::kWrite);
  EXPECT_EQ(platform::setVisibility(d, ids[0], false), platform::ErrorStatus::eOk);
  EXPECT_FALSE(d->database().openEntity(ids[0]).isVisible());
  EXPECT_EQ(platform::unlockDocument(d), platform::ErrorStatus::eOk);
  EXPECT_EQ(d->lockMode(), platform::LockMode::kNotLocked);
  EXPECT_EQ(platform::ssGet("W", ids), platform::RTREJ);

  type("TestSession\nTestDocumentContext\n");
  EXPECT_EQ(journal(), "will-start TestSession in two_entities.dxf\nsession app=1 lock=1\n"
                       "will-start TestDocumentContext in two_entities.dxf\ndocument app=0 open=7\n");
}

TEST_F(HostFixture, OpeningThroughTheHostAndTheApplicationContext) {
  const std::string shown = type("OPEN " + kData + "/two_entities.dxf\nOPEN " + kData + "/truncated.dxf\n");
  ASSERT_EQ(host.documentList().size(), 1u);
  EXPECT_NE(shown.find("无法打开图形：" + kData + "/truncated.dxf"), std::string::npos) << shown;
  EXPECT_EQ(platform::appContextOpenDocument(kData + "/two_entities_recoloured.dxf"), platform::ErrorStatus::eOk);
  EXPECT_EQ(platform::curDocument()->docTitle(), "two_entities_recoloured.dxf");
  EXPECT_EQ(platform::appContextOpenDocument(kData + "/none.dxf"), platform::ErrorStatus::eFileAccessErr);
  bool ran = false;
  platform::executeInApplicationContext([&] { ran = platform::isApplicationContext(); });
  EXPECT_TRUE(ran);
  // DOCUMENT makes another document the active one, by number or title.
  type("DOCUMENT 1\n");
  EXPECT_EQ(platform::mdiActiveDocument()->docTitle(), "two_entities.dxf");
  type("DOCUMENT two_entities_recoloured.dxf\n");
  EXPECT_EQ(platform::mdiActiveDocument()->docTitle(), "two_entities_recoloured.dxf");
  EXPECT_NE(type("DOCUMENT\n\n").find("  1  two_entities.dxf"), std::string::npos);
}

TEST_F(HostFixture, MessageBoxesAreRecordedAndAnsweredFromTheScript) {
  open("two_entities.dxf");
  journal();
  console.scriptMessageBoxAnswer(platform::kIdCancel);
  type("TestBox\n");
  EXPECT_EQ(journal(), "will-start TestBox in two_entities.dxf\nbox 2\n");
  const auto boxes = console.takeMessageBoxes();
  ASSERT_EQ(boxes.size(), 1u);
  EXPECT_EQ(boxes[0].text, "已到最后一个不同点(共1不同点)");
  EXPECT_EQ(boxes[0].title, "Morvane比图工具");
}

TEST_F(HostFixture, ZoomChangesTheViewAndRegenerationDropsTemporaryVectors) {
  headless::HeadlessDocument* d = open("two_entities.dxf");
  const platform::WindowId w = platform::documentWindow(d);
  // Opened zoomed to its extents: 0,0 to 10,7.5 in a 16:9 window.
  platform::Extents3d e = platform::viewExtents(w);
  EXPECT_DOUBLE_EQ(e.min.y, 0.0);
  EXPECT_DOUBLE_EQ(e.max.y, 7.5);
  EXPECT_DOUBLE_EQ((e.min.x + e.max.x) / 2, 5.0);

  type("TestDraw\n");
  EXPECT_EQ(d->view.vectors.size(), 2u);
  const platform::ViewState before = platform::viewState(w);
  type("ZOOM W -13.00,-13.00 13.00,13.00\n");
  EXPECT_TRUE(platform::viewChanged(before, platform::viewState(w)));
  e = platform::viewExtents(w);
  EXPECT_DOUBLE_EQ(e.min.y, -13.0);
  EXPECT_DOUBLE_EQ(e.max.y, 13.0);
  EXPECT_DOUBLE_EQ(e.min.x, -13.0 * 16 / 9);
  EXPECT_TRUE(d->view.vectors.empty());
  // The window corners given at once, a scale, the previous view and the extents again.
  type("ZOOM 0,0 9,9\n");
  EXPECT_DOUBLE_EQ(platform::viewState(w).height, 9.0);
  type("ZOOM 2X\n");
  EXPECT_DOUBLE_EQ(platform::viewState(w).height, 4.5);
  type("ZOOM P\n");
  EXPECT_DOUBLE_EQ(platform::viewState(w).height, 9.0);
  type("ZOOM E\nPAN 0,0 1,0\n");
  EXPECT_DOUBLE_EQ(platform::viewState(w).center.x, 4.0);
  EXPECT_FALSE(platform::viewChanged(platform::viewState(w), platform::viewState(w)));
}

TEST_F(HostFixture, ViewEventsPassThroughTheModulesHookAndWindowsTile) {
  headless::HeadlessDocument* a = open("two_entities.dxf");
  headless::HeadlessDocument* b = open("two_entities_recoloured.dxf");
  journal();
  // A wheel zoom: the hook sees the wheel, posts a button release, and sees the view changed by then.
  const double height = b->view.height;
  host.wheel(*b, 1);
  EXPECT_EQ(journal(), "hook wheel\nhook mbuttonup changed\n");
  EXPECT_DOUBLE_EQ(b->view.height, height / 1.25);
  host.middleButtonPan(*b, 0.0, 0.0);
  EXPECT_EQ(journal(), "hook mbuttonup same\n");
  host.middleButtonPan(*a, 2.0, 0.0);
  EXPECT_EQ(journal(), "hook mbuttonup changed\n");

  EXPECT_TRUE(platform::tileSideBySide("two_entities.dxf", "two_entities_recoloured.dxf"));
  EXPECT_EQ(platform::getWindowRect(platform::findDocumentWindow("two_entities.dxf")), (platform::ScreenRect{0, 0, 800, 900}));
  EXPECT_EQ(platform::getWindowRect(platform::documentWindow(b)), (platform::ScreenRect{800, 0, 1600, 900}));
  EXPECT_EQ(platform::windowTitle(platform::documentWindow(a)), "two_entities.dxf");
  EXPECT_EQ(platform::windowDocument(platform::documentWindow(a)), a);
  EXPECT_FALSE(platform::tileSideBySide("two_entities.dxf", "elsewhere.dxf"));
  EXPECT_FALSE(platform::postMessage(0, platform::kWmMButtonUp));
}

TEST_F(HostFixture, TheReleaseIsAPropertyOfTheHost) {
  EXPECT_EQ(platform::newestReadableRelease(), 32);
  host.setRelease(24);
  EXPECT_EQ(platform::newestReadableRelease(), 24);
  host.setRelease(32);
}

TEST_F(HostFixture, DialogsReadTheirAnswersFromTheCommandLinesInput) {
  headless::Dialogs::instance().reset();
  host.setInput(headless::scriptInput("TestDialog\nset 101 new name\ncheck 102\nbogus\nok\nTestDialog\n"));
  host.runCommandLine();
  // A wrong answer is explained and asked again; the end of the input cancels the dialog waiting for one.
  const std::string text = journal();
  const std::size_t first = text.find("dialog 1 new name 1\n");
  EXPECT_NE(first, std::string::npos) << text << console.transcript();
  EXPECT_NE(text.find("dialog 2  0\n", first), std::string::npos) << text;
  EXPECT_NE(console.transcript().find("\"bogus\" is no command"), std::string::npos);
  const auto dialogs = headless::Dialogs::instance().takeDialogs();
  ASSERT_EQ(dialogs.size(), 2u);
  EXPECT_EQ(dialogs[0].result, 1);
  host.setInput(nullptr);
  EXPECT_FALSE(headless::Dialogs::instance().terminalConnected());
}

TEST_F(HostFixture, LineInputGivesTheRestOfATypedLineThenTheNextLine) {
  host.setInput(headless::scriptInput("second line\n"));
  std::optional<std::string> line = headless::readInputLine("回答: ");
  ASSERT_TRUE(line);
  EXPECT_EQ(*line, "second line");
  EXPECT_EQ(console.takeTranscript(), "回答: second line\n");
  EXPECT_FALSE(headless::readInputLine("回答: "));
}

TEST(InputBuffer, CutsInputAsTheCommandLineDoes) {
  headless::InputBuffer in;
  in.append("ZOOM W 0,0  \x03(f \"a b\" (g \")\"))\nrest of line\n(open \"x");
  const auto text = [&](bool spaces = false) {
    std::optional<headless::Token> t = in.take(spaces);
    return !t ? std::string("<open>") : t->kind == headless::Token::Kind::Cancel ? std::string("<cancel>") : t->text;
  };
  EXPECT_EQ(text(), "ZOOM");
  EXPECT_EQ(text(), "W");
  EXPECT_EQ(text(), "0,0");
  EXPECT_EQ(text(), "");  // the second blank is an Enter
  EXPECT_EQ(text(), "<cancel>");
  EXPECT_EQ(text(), "(f \"a b\" (g \")\"))");
  EXPECT_EQ(text(true), "rest of line");
  EXPECT_EQ(text(), "<open>");
  EXPECT_EQ(in.takeLine(), "(open \"x");
  EXPECT_TRUE(in.empty());
}

TEST_F(HostFixture, HostCommandsRefuseWhatTheyCannotUse) {
  EXPECT_NE(type("ZOOM E\n").find("没有打开的图形。"), std::string::npos);
  open("two_entities.dxf");
  EXPECT_NE(type("ZOOM Q\n").find("无效的选项关键字。"), std::string::npos);
  EXPECT_NE(type("ZOOM -2X\n").find("需要正数。"), std::string::npos);
  EXPECT_NE(type("SETVAR NOSUCHVAR\n").find("未知变量名。"), std::string::npos);
  EXPECT_NE(type("SETVAR OSMODE x\n").find("需要整数。"), std::string::npos);
  EXPECT_NE(type("SETVAR OSMODE 7\nSETVAR OSMODE\n\n").find("输入 OSMODE 的新值 <7>: "), std::string::npos);
  EXPECT_NE(type("DOCUMENT 9\n").find("没有这个文档：9"), std::string::npos);
  EXPECT_NE(type("HELP\n").find("  TestPoint  (VKTEST)\n"), std::string::npos);
}

// The product's own module: its service, and the silent comparison called from the command line.
TEST(ProductModule, LoadsRunsTheSilentLispFunctionAndUnloadsCleanly) {
  HostSession& host = HostSession::instance();
  host.shutdown();
  headless::Console::instance().setEcho(nullptr);
  headless::Console::instance().reset();
  const std::string folder = ::testing::TempDir() + "vk_host_module";
  std::filesystem::create_directories(folder);
  ::setenv("APPDATA", folder.c_str(), 1);
  std::string error;
  headless::Module* module = host.loadModule(VK_MODULE_PATH, error);
  ASSERT_NE(module, nullptr) << error;
  const auto setLogFolder = reinterpret_cast<void (*)(const char*)>(::dlsym(module->handle, "VkSetLogFolder"));
  ASSERT_NE(setLogFolder, nullptr);
  setLogFolder(folder.c_str());
  auto* services = static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary"));
  EXPECT_NE(services->at("VkAcadCompareDwg"), nullptr);
  std::string opened;
  ASSERT_NE(host.openDocument(kData + "/two_entities.dxf", opened), nullptr) << opened;
  host.execute("(lsp_CompareFiles_Silent \"" + kData + "/two_entities.dxf\" \"" + kData +
               "/two_entities_recoloured.dxf\")\n");
  const std::string shown = headless::Console::instance().takeTranscript();
  EXPECT_NE(shown.find("发现有(1)个实体不同"), std::string::npos) << shown;
  EXPECT_NE(shown.find("\n0\n"), std::string::npos) << shown;  // differences found
  // The module's release check asks the host: a DWG of R2018 is too new for a host that reads up to R2010.
  const std::string newer = folder + "/newer.dwg";
  {
    std::FILE* f = std::fopen(newer.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fputs("AC1032 and nothing a reader would take", f);
    std::fclose(f);
  }
  host.setRelease(24);
  host.execute("(lsp_CompareFiles_Silent \"" + newer + "\" \"" + newer + "\")\n");
  host.setRelease(32);
  EXPECT_NE(headless::Console::instance().takeTranscript().find("文件不合法，退出比图"), std::string::npos);
  const auto boxes = headless::Console::instance().takeMessageBoxes();
  ASSERT_FALSE(boxes.empty());
  EXPECT_NE(boxes[0].text.find("不能比较文件，因为它是使用更新版本的AutoCAD创建的。"), std::string::npos);
  // Without arguments the function fails, as a call with a short argument list does.
  host.execute("(lsp_CompareFiles_Silent)\n");
  EXPECT_NE(headless::Console::instance().takeTranscript().find("; 错误: 函数 lsp_CompareFiles_Silent 调用失败"),
            std::string::npos);
  host.shutdown();
  EXPECT_EQ(services->at("VkAcadCompareDwg"), nullptr);
}

// ---- views rendered to SVG ----

// A fresh folder of the test's own, removed with what is in it.
struct TempFolder {
  std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("vk-host-svg-" + std::to_string(::getpid()));
  TempFolder() { std::filesystem::create_directories(path); }
  ~TempFolder() { std::filesystem::remove_all(path); }
};

std::string readWholeFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::size_t occurrences(const std::string& text, std::string_view what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) ++n;
  return n;
}

TEST_F(HostFixture, SvgOutWritesTheViewWithItsVectorsUntilRegeneration) {
  const TempFolder dir;
  headless::HeadlessDocument* d = open("two_entities.dxf");
  ASSERT_NE(d, nullptr);
  EXPECT_NE(type("HELP\n").find("  SVGOUT\n"), std::string::npos);
  ASSERT_EQ(platform::grDraw({1, 2, 0}, {3, 4, 0}, 1, false), platform::RTNORM);

  const std::filesystem::path file = dir.path / "view.svg";
  EXPECT_NE(type("SVGOUT " + file.string() + "\n").find(file.string()), std::string::npos);
  const std::string svg = readWholeFile(file);
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
  EXPECT_EQ(occurrences(svg, "<g"), occurrences(svg, "</g>"));
  EXPECT_EQ(occurrences(svg, "<svg"), 1u);
  EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");

  type("REGEN\n");
  type("SVGOUT \"" + file.string() + "\"\n");
  EXPECT_EQ(readWholeFile(file).find("M1 2L3 4"), std::string::npos);
}

TEST_F(HostFixture, SvgOutRefusesWithoutADocumentAndKeepsOldFilesOnFailure) {
  const TempFolder dir;
  EXPECT_NE(type("SVGOUT x.svg\n").find("没有打开的图形。"), std::string::npos);
  std::string out;
  EXPECT_FALSE(platform::renderViewSvg(12345, out));
  EXPECT_TRUE(out.empty());

  open("two_entities.dxf");
  // A folder stands where the file would go: nothing is written and the command says why.
  const std::filesystem::path folder = dir.path / "taken.svg";
  std::filesystem::create_directories(folder);
  EXPECT_NE(type("SVGOUT " + folder.string() + "\n").find("无法写入 SVG 文件"), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  // An answer left empty writes nothing.
  type("SVGOUT\n\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), std::filesystem::directory_iterator()), 1);
}

}  // namespace
