// Input lines of the headless host: standard input with a line editor on a terminal, plain lines from a
// script or a pipe, each shown after its prompt on the command line.
#include "platform/headless/line_input.h"

#include <langinfo.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "platform/headless/console.h"

#ifdef VK_HAVE_LIBEDIT
#include <editline/readline.h>
#endif

namespace headless {

LineInput::~LineInput() = default;

namespace {

// What a line looks like on the command line: a cancel character is shown as ^C.
std::string shown(const std::string& line) {
  std::string out;
  for (char c : line) out += c == '\x03' ? std::string("^C") : std::string(1, c);
  return out;
}

class ScriptInput final : public LineInput {
 public:
  explicit ScriptInput(std::string script) : script_(std::move(script)) {}
  std::optional<std::string> readLine(std::string_view prompt) override {
    if (pos_ >= script_.size()) return std::nullopt;
    std::size_t end = script_.find('\n', pos_);
    if (end == std::string::npos) end = script_.size();
    std::string line = script_.substr(pos_, end - pos_);
    pos_ = end + 1;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    Console::instance().print(std::string(prompt) + shown(line) + "\n");
    return line;
  }

 private:
  std::string script_;
  std::size_t pos_ = 0;
};

// Lines of a pipe or a file on standard input, echoed so that the output reads as a session.
class StreamInput final : public LineInput {
 public:
  std::optional<std::string> readLine(std::string_view prompt) override {
    Console::instance().print(prompt);
    std::string line;
    if (!std::getline(std::cin, line)) {
      if (!Console::instance().atLineStart()) Console::instance().print("\n");
      return std::nullopt;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    Console::instance().print(shown(line) + "\n");
    return line;
  }
};

#ifdef VK_HAVE_LIBEDIT
volatile std::sig_atomic_t interrupted = 0;
extern "C" void onInterrupt(int) { interrupted = 1; }

// The line editor's reading of a key: it waits in short steps, so that an interrupt that came before the
// editor was ready to be interrupted still ends the line at once (as the end of the input, told apart by
// the flag).
extern "C" int readKey(FILE* in) {
  const int fd = ::fileno(in);
  for (;;) {
    if (interrupted) return EOF;
    pollfd p{fd, POLLIN, 0};
    const int ready = ::poll(&p, 1, 100);
    if (ready < 0 && errno != EINTR) return EOF;
    if (ready <= 0) continue;
    unsigned char c = 0;
    const ssize_t n = ::read(fd, &c, 1);
    if (n == 1) return c;
    if (n == 0 || errno != EINTR) return EOF;
  }
}

// While a line is read, Ctrl-C interrupts the reading instead of ending the program.
class InterruptScope {
 public:
  InterruptScope() {
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no restart: the read returns
    ::sigaction(SIGINT, &action, &previous_);
    interrupted = 0;
  }
  ~InterruptScope() { ::sigaction(SIGINT, &previous_, nullptr); }
  InterruptScope(const InterruptScope&) = delete;
  InterruptScope& operator=(const InterruptScope&) = delete;

 private:
  struct sigaction previous_ {};
};

// A terminal: the line editor shows the prompt's last line and the typing; the transcript keeps both.
// Ctrl-C gives a line holding U+0003, which cancels the command waiting for input.
class EditorInput final : public LineInput {
 public:
  EditorInput() {
    // The line editor works in wide characters: the prompts and what is typed are UTF-8, whatever the
    // environment's locale says.
    const char* locale = std::setlocale(LC_CTYPE, "");
    if (!locale || std::string_view(::nl_langinfo(CODESET)) != "UTF-8") std::setlocale(LC_CTYPE, "C.UTF-8");
    // Before the editor is first set up: it takes its key reader from here then.
    rl_getc_function = readKey;
    using_history();
  }
  std::optional<std::string> readLine(std::string_view prompt) override {
    InterruptScope scope;
    Console& console = Console::instance();
    const std::size_t lastLine = prompt.rfind('\n');
    std::string tail(prompt);
    if (lastLine != std::string_view::npos) {
      console.print(prompt.substr(0, lastLine + 1));
      tail = std::string(prompt.substr(lastLine + 1));
    }
    std::fflush(stdout);
    char* raw = ::readline(tail.c_str());
    if (!raw && interrupted) {
      console.print("^C\n");
      return std::string(1, '\x03');
    }
    if (!raw) {
      console.print("\n");
      return std::nullopt;
    }
    std::string line(raw);
    std::free(raw);
    if (!line.empty()) add_history(line.c_str());
    console.note(tail + shown(line) + "\n");
    return line;
  }
};
#endif

}  // namespace

std::unique_ptr<LineInput> standardInput() {
#ifdef VK_HAVE_LIBEDIT
  if (::isatty(STDIN_FILENO) && ::isatty(STDOUT_FILENO)) return std::make_unique<EditorInput>();
#endif
  return std::make_unique<StreamInput>();
}

std::unique_ptr<LineInput> scriptInput(std::string script) { return std::make_unique<ScriptInput>(std::move(script)); }

}  // namespace headless
