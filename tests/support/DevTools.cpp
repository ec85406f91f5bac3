// The DevTools pipe client of the page tests: starting chromium with its two descriptors, commands and answers,
// input events.
#include "support/DevTools.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

extern char** environ;

namespace vktest {

namespace {

using Json = nlohmann::json;

// How long one answer may take: far beyond what any healthy browser needs, so that only a hung one fails.
constexpr int kAnswerMilliseconds = 120000;

}  // namespace

std::string chromiumPath() {
  for (const char* path : {"/usr/bin/chromium", "/usr/bin/chromium-browser"})
    if (std::filesystem::exists(path)) return path;
  return "";
}

Browser::Browser(const std::string& executable, const std::string& profileDir, int width, int height) {
  int toBrowser[2], fromBrowser[2];
  if (pipe2(toBrowser, O_CLOEXEC) != 0) {
    error_ = "pipe failed";
    return;
  }
  if (pipe2(fromBrowser, O_CLOEXEC) != 0) {
    close(toBrowser[0]);
    close(toBrowser[1]);
    error_ = "pipe failed";
    return;
  }
  // Ends that would already sit on descriptor 3 or 4 are moved away: a spawn's dup2 onto itself might keep them
  // closed on exec.
  for (int* end : {&toBrowser[0], &toBrowser[1], &fromBrowser[0], &fromBrowser[1]}) {
    if (*end > 4) continue;
    const int moved = fcntl(*end, F_DUPFD_CLOEXEC, 10);
    if (moved < 0) continue;
    close(*end);
    *end = moved;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, toBrowser[0], 3);
  posix_spawn_file_actions_adddup2(&actions, fromBrowser[1], 4);
  const std::vector<std::string> args = {executable,
                                         "--headless",
                                         "--disable-gpu",
                                         "--no-sandbox",
                                         "--no-first-run",
                                         "--hide-scrollbars",
                                         "--force-device-scale-factor=1",
                                         "--remote-debugging-pipe",
                                         "--user-data-dir=" + profileDir,
                                         "--window-size=" + std::to_string(width) + "," + std::to_string(height),
                                         "about:blank"};
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  const int spawned = posix_spawn(&pid_, executable.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(toBrowser[0]);
  close(fromBrowser[1]);
  commands_ = toBrowser[1];
  answers_ = fromBrowser[0];
  if (spawned != 0) {
    pid_ = -1;
    error_ = "cannot start " + executable;
    return;
  }
  // The page the browser opened with: attached to in flat mode, its commands then carry the session.
  const Json targets = call("Target.getTargets", Json::object(), false);
  if (!ok()) return;
  Json page;
  for (const Json& t : targets.value("targetInfos", Json::array()))
    if (t.value("type", "") == "page") page = t["targetId"];
  if (page.is_null()) {
    const Json created = call("Target.createTarget", {{"url", "about:blank"}}, false);
    if (created.is_object()) page = created.value("targetId", Json());
  }
  if (page.is_string()) {
    const Json attached = call("Target.attachToTarget", {{"targetId", page}, {"flatten", true}}, false);
    if (attached.is_object()) session_ = attached.value("sessionId", "");
  }
  if (ok() && session_.empty()) error_ = "no page to attach to";
  if (ok()) call("Page.enable");
}

Browser::~Browser() {
  if (pid_ > 0) {
    if (commands_ >= 0) send({{"id", next_++}, {"method", "Browser.close"}});
    // The browser ends on its own once asked; one that does not is stopped.
    int status = 0;
    bool ended = false;
    for (int i = 0; i < 100 && !ended; ++i) {
      ended = waitpid(pid_, &status, WNOHANG) == pid_;
      if (!ended) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (!ended) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
    }
  }
  if (commands_ >= 0) close(commands_);
  if (answers_ >= 0) close(answers_);
}

bool Browser::send(const Json& message) {
  std::string text = message.dump();
  text += '\0';
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t n = write(commands_, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error_ = "the browser stopped listening";
      return false;
    }
    done += static_cast<std::size_t>(n);
  }
  return true;
}

Json Browser::receive(int id) {
  for (;;) {
    // Whole messages first; events and other answers are passed over.
    for (std::size_t end = pending_.find('\0'); end != std::string::npos; end = pending_.find('\0')) {
      Json message = Json::parse(pending_.substr(0, end), nullptr, false);
      pending_.erase(0, end + 1);
      if (!message.is_object() || message.value("id", -1) != id) continue;
      if (message.contains("error")) {
        error_ = message["error"].dump();
        return nullptr;
      }
      return message.value("result", Json::object());
    }
    pollfd p{answers_, POLLIN, 0};
    const int ready = poll(&p, 1, kAnswerMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) {
      error_ = "no answer from the browser";
      return nullptr;
    }
    char buffer[65536];
    const ssize_t n = read(answers_, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error_ = "the browser closed its pipe";
      return nullptr;
    }
    pending_.append(buffer, static_cast<std::size_t>(n));
  }
}

Json Browser::call(const std::string& method, const Json& params, bool toPage) {
  if (!ok() || pid_ <= 0) return nullptr;
  const int id = next_++;
  Json message = {{"id", id}, {"method", method}, {"params", params}};
  if (toPage) message["sessionId"] = session_;
  if (!send(message)) return nullptr;
  return receive(id);
}

Json Browser::evaluate(const std::string& expression) {
  const Json r = call("Runtime.evaluate", {{"expression", expression}, {"returnByValue", true}, {"awaitPromise", true}});
  if (!r.is_object()) return nullptr;
  if (r.contains("exceptionDetails")) {
    error_ = "script error: " + r["exceptionDetails"].dump();
    return nullptr;
  }
  return r["result"].value("value", Json());
}

bool Browser::open(const std::string& url, const std::string& readyExpression) {
  call("Page.navigate", {{"url", url}});
  return waitUntil(readyExpression);
}

bool Browser::waitUntil(const std::string& expression) {
  for (int i = 0; i < 2400 && ok(); ++i) {
    if (evaluate("!!(" + expression + ")") == true) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  if (ok()) error_ = "never true in the page: " + expression;
  return false;
}

void Browser::settle() {
  evaluate("new Promise(function(r){requestAnimationFrame(function(){requestAnimationFrame(function(){r(1);});});})");
}

void Browser::wheel(double x, double y, double deltaY) {
  call("Input.dispatchMouseEvent", {{"type", "mouseWheel"}, {"x", x}, {"y", y}, {"deltaX", 0}, {"deltaY", deltaY}});
}

void Browser::drag(double fromX, double fromY, double toX, double toY) {
  call("Input.dispatchMouseEvent",
       {{"type", "mousePressed"}, {"x", fromX}, {"y", fromY}, {"button", "left"}, {"buttons", 1}, {"clickCount", 1}});
  // A few moves on the way, as a hand would make them.
  for (int k = 1; k <= 4; ++k)
    call("Input.dispatchMouseEvent", {{"type", "mouseMoved"},
                                      {"x", fromX + (toX - fromX) * k / 4},
                                      {"y", fromY + (toY - fromY) * k / 4},
                                      {"button", "left"},
                                      {"buttons", 1}});
  call("Input.dispatchMouseEvent",
       {{"type", "mouseReleased"}, {"x", toX}, {"y", toY}, {"button", "left"}, {"buttons", 0}, {"clickCount", 1}});
}

void Browser::click(double x, double y) {
  for (const char* type : {"mousePressed", "mouseReleased"})
    call("Input.dispatchMouseEvent", {{"type", type}, {"x", x}, {"y", y}, {"button", "left"}, {"clickCount", 1}});
}

}  // namespace vktest
