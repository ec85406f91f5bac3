// A small module for the host's tests: it registers commands, LISP functions, a reactor and a hook, and
// writes down every call the host makes into it, for the tests to read through vkTestModuleLog().
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/application.h"
#include "platform/commands.h"
#include "platform/dialog.h"
#include "platform/documents.h"
#include "platform/editor.h"
#include "platform/host.h"
#include "platform/lisp.h"
#include "platform/views.h"

namespace {

std::string& journal() {
  static std::string text;
  return text;
}
void note(const std::string& line) { journal() += line + "\n"; }

std::string title() {
  platform::Document* d = platform::curDocument();
  return d ? d->docTitle() : "-";
}

std::string coordinates(const platform::Point3d& p) {
  const auto n = [](double v) { return std::to_string(static_cast<long long>(v)); };
  return n(p.x) + "," + n(p.y) + "," + n(p.z);
}

// The reactor attaches itself when the module is loaded, as a module-wide object does.
class Reactor final : public platform::EditorReactor {
 public:
  Reactor() {
    platform::RxObject* found = platform::sysRegistry().at("AcEditor");
    if (found && found->isA() == "AcEditor") {
      editor_ = static_cast<platform::Editor*>(found);
      editor_->addReactor(this);
    }
  }
  ~Reactor() override {
    if (editor_) editor_->removeReactor(this);
  }
  void commandWillStart(std::string_view name) override {
    note("will-start " + std::string(name) + " in " + title());
    if (name == "TestReactorThrows") throw std::runtime_error("reactor gave up");
  }
  void commandCancelled(std::string_view name) override { note("cancelled " + std::string(name)); }

 private:
  platform::Editor* editor_ = nullptr;
};
Reactor reactor;

std::uint64_t hook = 0;
std::vector<std::pair<platform::WindowId, platform::ViewState>> seen;

void onMessage(int, const platform::HostMessage& m) {
  if (m.message == platform::kWmMouseWheel) {
    note("hook wheel");
    platform::postMessage(m.window, platform::kWmMButtonUp);
  } else if (m.message == platform::kWmMButtonUp) {
    const platform::ViewState now = platform::viewState(m.window);
    bool changed = true;
    for (auto& [window, state] : seen)
      if (window == m.window) {
        changed = platform::viewChanged(state, now);
        state = now;
      }
    note(std::string("hook mbuttonup ") + (changed ? "changed" : "same"));
  }
}

void registerCommands() {
  const auto add = [](const char* name, int flags, platform::CommandFunction f) {
    platform::addCommand("VKTEST", name, name, flags, std::move(f));
  };
  add("TestPoint", platform::kCmdModal, [] {
    platform::Point3d p;
    const int r = platform::getPoint(nullptr, "\n指定点: ", p);
    note("point " + std::to_string(r) + (r == platform::RTNORM ? " " + coordinates(p) : ""));
  });
  add("TestCorner", platform::kCmdModal, [] {
    platform::Point3d a, b;
    if (platform::getPoint(nullptr, "第一角点: ", a) != platform::RTNORM) return;
    const int r = platform::getCorner(a, "对角点: ", b);
    note("corner " + std::to_string(r) + " " + coordinates(b));
  });
  add("TestDialog", platform::kCmdModal, [] {
    platform::Dialog dialog("测试对话框");
    dialog.addEdit(101, "名称");
    dialog.addCheckBox(102, "选中");
    dialog.addButton(platform::kIdOkButton, "确定");
    dialog.addButton(platform::kIdCancelButton, "取消");
    const int result = dialog.doModal();
    note("dialog " + std::to_string(result) + " " + dialog.text(101) + " " + (dialog.checked(102) ? "1" : "0"));
  });
  add("TestThrow", platform::kCmdModal, [] { throw std::runtime_error("boom"); });
  add("TestReactorThrows", platform::kCmdModal, [] { note("ran TestReactorThrows"); });
  add("TestQueue", platform::kCmdModal, [] {
    platform::sendStringToExecute(platform::curDocument(), "TestPoint\n3,4\n", false, true, true);
    note("queued");
  });
  add("TestSession", platform::kCmdSession, [] {
    platform::Document* d = platform::curDocument();
    const bool app = platform::isApplicationContext();
    const bool locked = d && platform::lockDocument(d) == platform::ErrorStatus::eOk;
    note(std::string("session app=") + (app ? "1" : "0") + " lock=" + (locked ? "1" : "0"));
    if (locked) platform::unlockDocument(d);
  });
  add("TestDocumentContext", platform::kCmdModal, [] {
    note(std::string("document app=") + (platform::isApplicationContext() ? "1" : "0") + " open=" +
         std::to_string(static_cast<int>(platform::appContextOpenDocument("nowhere.dxf"))));
  });
  add("TestShowAll", platform::kCmdModal, [] {
    std::vector<platform::ObjectId> ids;
    const int r = platform::ssGet("X", ids);
    int shown = 0;
    for (platform::ObjectId id : ids)
      if (platform::setVisibility(platform::curDocument(), id, true) == platform::ErrorStatus::eOk) ++shown;
    note("showall " + std::to_string(r) + " " + std::to_string(shown));
  });
  add("TestBox", platform::kCmdModal, [] {
    note("box " + std::to_string(platform::showMessageBox("已到最后一个不同点(共1不同点)", "Morvane比图工具",
                                                          platform::kMbOk | platform::kMbIconInformation)));
  });
  add("TestDraw", platform::kCmdModal, [] {
    platform::grDraw({0, 0, 0}, {10, 0, 0}, 1, true);
    platform::grDraw({10, 0, 0}, {10, 10, 0}, 1, true);
  });
}

int invoke() {
  const int code = platform::getFunCode();
  const std::vector<platform::LispValue>* args = platform::getArgs();
  note("invoke " + std::to_string(code) + " args " + std::to_string(args ? args->size() : 0));
  switch (code) {
    case 0: {
      std::string joined;
      for (const platform::LispValue& v : args ? *args : std::vector<platform::LispValue>{}) {
        std::string value = v.restype == platform::kRtStr    ? v.text
                            : v.restype == platform::kRtReal ? std::to_string(v.real)
                                                             : std::to_string(v.integer);
        joined += (joined.empty() ? "" : "|") + std::to_string(v.restype) + ":" + value;
      }
      platform::retStr(joined);
      return platform::RTNORM;
    }
    case 1: return platform::RTERROR;
    case 2: throw std::runtime_error("lisp gave up");
    default: platform::fail("Received nonexistent function code."); return platform::RTERROR;
  }
}

}  // namespace

extern "C" const char* vkTestModuleLog() { return journal().c_str(); }
extern "C" void vkTestModuleClearLog() { journal().clear(); }

extern "C" int acrxEntryPoint(int message, void*) {
  switch (message) {
    case platform::kInitAppMsg:
      note("init");
      registerCommands();
      platform::registerService("VkTestModule");
      hook = platform::setMessageHook(onMessage);
      for (platform::Document* d : platform::documents())
        seen.emplace_back(platform::documentWindow(d), platform::viewState(platform::documentWindow(d)));
      return platform::kRetOK;
    case platform::kUnloadAppMsg:
      note("unload");
      platform::unhookMessageHook(hook);
      platform::removeGroup("VKTEST");
      static_cast<platform::RxDictionary*>(platform::sysRegistry().at("ServiceDictionary"))->remove("VkTestModule");
      return platform::kRetOK;
    case platform::kLoadDwgMsg: {
      note("load-dwg " + title());
      const platform::WindowId w = platform::documentWindow(platform::curDocument());
      seen.emplace_back(w, platform::viewState(w));
      platform::defun("test_echo", 0);
      platform::defun("test_fail", 1);
      platform::defun("test_throw", 2);
      return platform::RTNORM;
    }
    case platform::kUnloadDwgMsg:
      note("unload-dwg " + title());
      platform::undef("test_echo", 0);
      platform::undef("test_fail", 1);
      platform::undef("test_throw", 2);
      return platform::RTNORM;
    case platform::kInvkSubrMsg: return invoke();
    case platform::kCfgMsg: throw std::runtime_error("no configuration");
    default: return platform::kRetOK;
  }
}
