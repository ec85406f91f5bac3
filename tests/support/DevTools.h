// A headless chromium driven over the DevTools protocol on a pipe, for tests that give a page real input.
#pragma once

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>

namespace vktest {

// The browser the tests open pages in, "" when the machine has none.
std::string chromiumPath();

// One chromium process with one page, spoken to with --remote-debugging-pipe: JSON messages ended by NUL, sent on
// its descriptor 3 and answered on its descriptor 4. Every wait is bounded; what goes wrong is kept in error().
class Browser {
 public:
  // Starts the browser with a window of this size and its profile in `profileDir`.
  Browser(const std::string& executable, const std::string& profileDir, int width, int height);
  ~Browser();
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  bool ok() const { return error_.empty(); }
  const std::string& error() const { return error_; }

  // Sends a command to the page (or, with toPage false, to the browser) and returns its answer's "result";
  // null after an error, which error() then tells.
  nlohmann::json call(const std::string& method, const nlohmann::json& params = nlohmann::json::object(),
                      bool toPage = true);
  // Opens the address in the page, and waits until the expression is true there.
  bool open(const std::string& url, const std::string& readyExpression);
  // Waits until the expression is true in the page (a bound far beyond need keeps a broken page from hanging).
  bool waitUntil(const std::string& expression);
  // The value of a script expression in the page; a promise is awaited.
  nlohmann::json evaluate(const std::string& expression);
  // Waits until the page has drawn two more frames: whatever input asked for is then on its canvases.
  void settle();

  // Real input at a point of the page (CSS pixels from its top left corner).
  void wheel(double x, double y, double deltaY);
  void drag(double fromX, double fromY, double toX, double toY);
  void click(double x, double y);

 private:
  bool send(const nlohmann::json& message);
  nlohmann::json receive(int id);

  pid_t pid_ = -1;
  int commands_ = -1;  // our end of the browser's descriptor 3
  int answers_ = -1;   // our end of its descriptor 4
  int next_ = 1;
  std::string session_;
  std::string pending_;
  std::string error_;
};

}  // namespace vktest
