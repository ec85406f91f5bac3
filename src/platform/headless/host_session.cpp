// The headless host's session: modules and their application messages, the system registry with the
// editor and the services, the host's release, and the end of a session.
#include "platform/headless/host_session.h"

#include <dlfcn.h>

#include <algorithm>

#include "platform/boundary.h"
#include "platform/headless/dialogs.h"
#include "platform/headless/menu_bar.h"
#include "platform/headless/palettes.h"
#include "platform/host.h"
#include "platform/text.h"

namespace headless {

class ServiceObject final : public platform::RxObject {
 public:
  std::string_view isA() const override { return "AcRxService"; }
};

namespace {

class Dictionary final : public platform::RxDictionary {
 public:
  platform::RxObject* at(std::string_view name) const override {
    auto it = entries_.find(std::string(name));
    return it == entries_.end() ? nullptr : it->second.get();
  }
  bool atPut(std::string_view name, std::unique_ptr<platform::RxObject> object) override {
    if (!object) return false;
    return entries_.emplace(std::string(name), std::move(object)).second;
  }
  std::unique_ptr<platform::RxObject> remove(std::string_view name) override {
    auto it = entries_.find(std::string(name));
    if (it == entries_.end()) return nullptr;
    std::unique_ptr<platform::RxObject> object = std::move(it->second);
    entries_.erase(it);
    return object;
  }

 private:
  std::map<std::string, std::unique_ptr<platform::RxObject>> entries_;
};

// The editor: its reactors, each with the module that added it.
class HostEditor final : public platform::Editor {
 public:
  explicit HostEditor(HostSession& session) : session_(session) {}
  bool addReactor(platform::EditorReactor* reactor) override {
    if (!reactor || std::ranges::any_of(reactors_, [&](const auto& r) { return r.first == reactor; })) return false;
    reactors_.emplace_back(reactor, session_.actingModule());
    return true;
  }
  bool removeReactor(platform::EditorReactor* reactor) override {
    return std::erase_if(reactors_, [&](const auto& r) { return r.first == reactor; }) > 0;
  }
  void dropOwnedBy(Module* module) {
    std::erase_if(reactors_, [&](const auto& r) { return r.second == module; });
  }
  std::vector<std::pair<platform::EditorReactor*, Module*>> reactors_;

 private:
  HostSession& session_;
};

std::string moduleName(const Module& module) {
  const std::size_t slash = module.path.find_last_of('/');
  return slash == std::string::npos ? module.path : module.path.substr(slash + 1);
}

}  // namespace

void HostSession::setInput(std::unique_ptr<LineInput> input) {
  input_ = std::move(input);
  Dialogs::instance().setTerminalInput(input_ ? LineSource([](std::string_view prompt) { return readInputLine(prompt); })
                                              : LineSource());
}

HostSession& HostSession::instance() {
  // Never destroyed: modules still loaded when the process ends reach it from their own destructors.
  static HostSession* session = new HostSession();
  return *session;
}

HostSession::HostSession() : registry_(std::make_unique<Dictionary>()) {
  auto editor = std::make_unique<HostEditor>(*this);
  editor_ = editor.get();
  registry_->atPut("AcEditor", std::move(editor));
  registry_->atPut("ServiceDictionary", std::make_unique<Dictionary>());
  addHostCommands();
}

// ---- modules

int HostSession::sendAppMessage(Module& module, int message) {
  Module* const before = acting_;
  acting_ = &module;
  const int result = RunGuarded(static_cast<int>(platform::kRetError), [&] { return module.entry(message, &module); },
                                [&](const char* reason) {
                                  platform::printToCommandLine("\n模块 " + moduleName(module) + " 处理消息 " +
                                                               std::to_string(message) + " 时出错：" + reason + "\n");
                                });
  acting_ = before;
  return result;
}

Module* HostSession::loadModule(const std::string& path, std::string& error) {
  auto module = std::make_unique<Module>();
  module->path = path;
  Module* const before = acting_;
  acting_ = module.get();  // what its static objects register at load is its own
  module->handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  acting_ = before;
  if (!module->handle) {
    const char* why = ::dlerror();
    error = why ? why : path + ": cannot be loaded";
    return nullptr;
  }
  if (std::ranges::any_of(modules_, [&](const auto& m) { return m->handle == module->handle; })) {
    error = path + ": the module is loaded already";
    ::dlclose(module->handle);
    return nullptr;
  }
  module->entry = reinterpret_cast<platform::EntryPoint>(::dlsym(module->handle, "acrxEntryPoint"));
  if (!module->entry) {
    error = path + ": no acrxEntryPoint";
    dropOwnedBy(module.get());
    ::dlclose(module->handle);
    return nullptr;
  }
  Module* const loaded = module.get();
  modules_.push_back(std::move(module));
  if (sendAppMessage(*loaded, platform::kInitAppMsg) != platform::kRetOK) {
    error = path + ": the module refused to initialise";
    dropOwnedBy(loaded);
    ::dlclose(loaded->handle);
    std::erase_if(modules_, [&](const auto& m) { return m.get() == loaded; });
    return nullptr;
  }
  for (const auto& document : documents_) {
    HeadlessDocument* const before_doc = commandDoc_;
    commandDoc_ = document.get();
    sendAppMessage(*loaded, platform::kLoadDwgMsg);
    commandDoc_ = before_doc;
  }
  return loaded;
}

void HostSession::unloadModule(Module* module) {
  auto it = std::ranges::find_if(modules_, [&](const auto& m) { return m.get() == module; });
  if (it == modules_.end()) return;
  for (const auto& document : documents_) {
    HeadlessDocument* const before = commandDoc_;
    commandDoc_ = document.get();
    sendAppMessage(*module, platform::kUnloadDwgMsg);
    commandDoc_ = before;
  }
  sendAppMessage(*module, platform::kUnloadAppMsg);
  // Whatever the module left registered would call into code that is about to go.
  dropOwnedBy(module);
  Module* const before = acting_;
  acting_ = module;
  ::dlclose(module->handle);
  acting_ = before;
  modules_.erase(std::ranges::find_if(modules_, [&](const auto& m) { return m.get() == module; }));
}

void HostSession::dropOwnedBy(Module* module) {
  std::erase_if(commands_, [&](const Command& c) { return c.owner == module; });
  for (const auto& document : documents_)
    std::erase_if(document->lisp, [&](const auto& f) { return f.second.owner == module; });
  std::erase_if(hooks_, [&](const Hook& h) { return h.owner == module; });
  static_cast<HostEditor*>(editor_)->dropOwnedBy(module);
  Palettes::instance().dropOwnedBy(module);
}

void HostSession::notifyCommand(CommandEvent event, std::string_view globalName) {
  // A reactor may remove itself (or another) while being notified: walk a copy, skip the removed.
  auto& reactors = static_cast<HostEditor*>(editor_)->reactors_;
  const auto snapshot = reactors;
  for (const auto& entry : snapshot) {
    if (std::ranges::find(reactors, entry) == reactors.end()) continue;
    platform::EditorReactor* const reactor = entry.first;
    Module* const before = acting_;
    acting_ = entry.second;
    RunGuarded(
        false,
        [&] {
          switch (event) {
            case CommandEvent::WillStart: reactor->commandWillStart(globalName); break;
            case CommandEvent::Ended: reactor->commandEnded(globalName); break;
            case CommandEvent::Cancelled: reactor->commandCancelled(globalName); break;
          }
          return true;
        },
        [&](const char* reason) {
          platform::printToCommandLine("\n编辑器反应器在命令 " + std::string(globalName) + " 中出错：" + reason + "\n");
        });
    acting_ = before;
  }
}

void HostSession::shutdown() {
  while (!documents_.empty()) closeDocument(documents_.back().get());
  while (!modules_.empty()) unloadModule(modules_.back().get());
  Palettes::instance().reset();
  terminal_.clear();
  posted_.clear();
  MenuBar::instance().reset();
  quit_ = false;
}

}  // namespace headless

namespace platform {

RxObject::~RxObject() = default;

RxDictionary& sysRegistry() { return headless::HostSession::instance().registry(); }

RxObject* registerService(std::string_view serviceName) {
  auto* services = static_cast<RxDictionary*>(sysRegistry().at("ServiceDictionary"));
  if (RxObject* existing = services->at(serviceName)) return existing;
  services->atPut(serviceName, std::make_unique<headless::ServiceObject>());
  return services->at(serviceName);
}

int newestReadableRelease() { return headless::HostSession::instance().release(); }

}  // namespace platform
