// The headless host's documents: open drawings with their DBMOD state and locks, the document manager's
// calls, and the application context.
#include <algorithm>

#include "platform/headless/host_session.h"
#include "platform/host.h"

namespace headless {

HeadlessDocument::HeadlessDocument(std::unique_ptr<platform::Database> database, std::string path)
    : database_(std::move(database)), path_(std::move(path)) {
  const std::size_t slash = path_.find_last_of('/');
  title_ = slash == std::string::npos ? path_ : path_.substr(slash + 1);
}

void HeadlessDocument::popDbmod() {
  if (dbmodStack_.empty()) return;
  dbmod_ = dbmodStack_.back();
  dbmodStack_.pop_back();
}

platform::LockMode HeadlessDocument::lockMode() const {
  if (locks.empty()) return platform::LockMode::kNotLocked;
  return *std::ranges::max_element(locks, {}, [](platform::LockMode m) { return static_cast<int>(m); });
}

HeadlessDocument* HostSession::openDocument(const std::string& path, std::string& error) {
  platform::ReadReport report;
  std::unique_ptr<platform::Database> database = platform::Database::read(path, report);
  if (!database) {
    error = report.error.empty() ? path + ": cannot be read" : report.error;
    return nullptr;
  }
  auto document = std::make_unique<HeadlessDocument>(std::move(database), path);
  HeadlessDocument* const opened = document.get();
  opened->view.window = nextWindow_++;
  // A new window fills the main window, as a maximised document window does.
  opened->view.rect = {0, 0, 1600, 900};
  documents_.push_back(std::move(document));
  if (!zoomExtents(*opened)) {
    opened->view.center = {6.0, 4.5, 0.0};  // the default limits, 0,0 to 12,9
    opened->view.height = 9.0;
  }
  opened->view.previous.clear();
  active_ = opened;
  HeadlessDocument* const before = commandDoc_;
  commandDoc_ = opened;
  for (const auto& module : modules_) sendAppMessage(*module, platform::kLoadDwgMsg);
  commandDoc_ = before;
  return opened;
}

void HostSession::closeDocument(HeadlessDocument* document) {
  if (!find(document)) return;
  HeadlessDocument* const before = commandDoc_;
  commandDoc_ = document;
  for (const auto& module : modules_) sendAppMessage(*module, platform::kUnloadDwgMsg);
  commandDoc_ = before == document ? nullptr : before;
  std::erase_if(posted_, [&](const platform::HostMessage& m) { return m.window == document->view.window; });
  std::erase_if(documents_, [&](const auto& d) { return d.get() == document; });
  if (active_ == document) active_ = documents_.empty() ? nullptr : documents_.back().get();
}

void HostSession::activate(HeadlessDocument* document) {
  if (find(document)) active_ = document;
}

HeadlessDocument* HostSession::find(const platform::Document* document) const {
  if (!document) return nullptr;
  for (const auto& d : documents_)
    if (d.get() == document) return d.get();
  return nullptr;
}

HeadlessDocument* HostSession::byWindow(platform::WindowId window) const {
  for (const auto& d : documents_)
    if (window != 0 && d->view.window == window) return d.get();
  return nullptr;
}

void HostSession::runInApplicationContext(const std::function<void()>& function) {
  ++appContext_;
  struct Leave {
    int& depth;
    ~Leave() { --depth; }
  } leave{appContext_};
  function();
}

}  // namespace headless

namespace platform {

using headless::HostSession;

Document::~Document() = default;

Document* curDocument() { return HostSession::instance().current(); }
Document* mdiActiveDocument() { return HostSession::instance().active(); }

std::vector<Document*> documents() {
  std::vector<Document*> out;
  for (const auto& d : HostSession::instance().documentList()) out.push_back(d.get());
  return out;
}

ErrorStatus activateDocument(Document* document) {
  HostSession& session = HostSession::instance();
  headless::HeadlessDocument* found = session.find(document);
  if (!found) return ErrorStatus::eInvalidInput;
  session.activate(found);
  return ErrorStatus::eOk;
}

ErrorStatus lockDocument(Document* document, LockMode mode) {
  headless::HeadlessDocument* found = HostSession::instance().find(document);
  if (!found || mode == LockMode::kNotLocked || mode == LockMode::kNone) return ErrorStatus::eInvalidInput;
  found->locks.push_back(mode);
  return ErrorStatus::eOk;
}

ErrorStatus unlockDocument(Document* document) {
  headless::HeadlessDocument* found = HostSession::instance().find(document);
  if (!found) return ErrorStatus::eInvalidInput;
  if (found->locks.empty()) return ErrorStatus::eLockViolation;
  found->locks.pop_back();
  return ErrorStatus::eOk;
}

bool isApplicationContext() { return HostSession::instance().inApplicationContext(); }

void executeInApplicationContext(const std::function<void()>& function) {
  HostSession::instance().runInApplicationContext(function);
}

ErrorStatus appContextOpenDocument(std::string_view path) {
  HostSession& session = HostSession::instance();
  if (!session.inApplicationContext()) return ErrorStatus::eInvalidContext;
  std::string error;
  if (!session.openDocument(std::string(path), error)) {
    printToCommandLine("\n无法打开图形：" + error + "\n");
    return ErrorStatus::eFileAccessErr;
  }
  return ErrorStatus::eOk;
}

ErrorStatus sendStringToExecute(Document* document, std::string_view text, bool activate, bool, bool echo) {
  HostSession& session = HostSession::instance();
  headless::HeadlessDocument* found = session.find(document);
  if (!found) return ErrorStatus::eInvalidInput;
  found->queue.append(text, echo);
  if (activate) session.activate(found);
  return ErrorStatus::eOk;
}

}  // namespace platform
