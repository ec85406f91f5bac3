// The headless host's command processor: input cut into tokens, the command table, the command line's
// loop, strings queued to documents, and the boundary around every command.
#include <algorithm>

#include "platform/boundary.h"
#include "platform/headless/console.h"
#include "platform/headless/host_session.h"
#include "platform/host.h"
#include "platform/text.h"

namespace headless {

namespace {
constexpr char kCancel = '\x03';
// On a line of its own, as the host shows it after output that did not end its line.
constexpr const char* kCommandPrompt = "\n命令: ";
constexpr const char* kCancelled = "*取消*";
}  // namespace

// ---- input buffers

void InputBuffer::append(std::string_view text, bool echo) {
  if (empty()) clear();
  for (char c : text)
    if (c != '\r') text_ += c;
  echo_ = echo;
}

void InputBuffer::prepend(std::string_view text) {
  std::string joined;
  for (char c : text)
    if (c != '\r') joined += c;
  joined.append(text_, pos_);
  text_ = std::move(joined);
  pos_ = 0;
}

void InputBuffer::clear() {
  text_.clear();
  pos_ = 0;
}

std::optional<Token> InputBuffer::take(bool spacesAllowed) {
  if (empty()) return Token{};
  if (text_[pos_] == kCancel) {
    ++pos_;
    return Token{Token::Kind::Cancel, {}};
  }
  std::size_t end = pos_;
  if (text_[pos_] == '(' && !spacesAllowed) {
    // A LISP expression: to the parenthesis that closes it, strings and their escapes skipped.
    int depth = 0;
    bool inString = false;
    for (; end < text_.size(); ++end) {
      const char c = text_[end];
      if (inString) {
        if (c == '\\' && end + 1 < text_.size()) ++end;
        else if (c == '"') inString = false;
      } else if (c == '"') {
        inString = true;
      } else if (c == '(') {
        ++depth;
      } else if (c == ')' && --depth == 0) {
        ++end;
        break;
      }
    }
    if (depth > 0 || inString) return std::nullopt;
  } else {
    while (end < text_.size() && text_[end] != '\n' && text_[end] != kCancel && (spacesAllowed || text_[end] != ' '))
      ++end;
  }
  Token token{Token::Kind::Text, text_.substr(pos_, end - pos_)};
  pos_ = end;
  if (pos_ < text_.size() && (text_[pos_] == '\n' || text_[pos_] == ' ')) ++pos_;
  return token;
}

std::string InputBuffer::takeLine() {
  const std::size_t end = std::min(text_.find('\n', pos_), text_.size());
  std::string line = text_.substr(pos_, end - pos_);
  pos_ = std::min(end + 1, text_.size());
  return line;
}

// ---- the command table

platform::ErrorStatus HostSession::addCommand(std::string_view group, std::string_view globalName,
                                              std::string_view localName, int flags,
                                              platform::CommandFunction function) {
  if (group.empty() || globalName.empty() || localName.empty() || !function) return platform::ErrorStatus::eInvalidInput;
  for (const Command& c : commands_)
    if (platform::equalsIgnoreCase(c.group, group) &&
        (platform::equalsIgnoreCase(c.globalName, globalName) || platform::equalsIgnoreCase(c.localName, localName)))
      return platform::ErrorStatus::eInvalidInput;
  commands_.push_back(
      {std::string(group), std::string(globalName), std::string(localName), flags, std::move(function), acting_});
  return platform::ErrorStatus::eOk;
}

platform::ErrorStatus HostSession::removeGroup(std::string_view group) {
  // The host's own commands are no group a module can remove.
  const auto removed = std::erase_if(commands_, [&](const Command& c) {
    return c.owner != nullptr && platform::equalsIgnoreCase(c.group, group);
  });
  return removed > 0 ? platform::ErrorStatus::eOk : platform::ErrorStatus::eInvalidInput;
}

const Command* HostSession::findCommand(std::string_view typed) const {
  // Commands registered last come first, so a module's command shadows a host command of the same name.
  const auto byName = [&](std::string_view name, bool global) -> const Command* {
    for (auto it = commands_.rbegin(); it != commands_.rend(); ++it)
      if (platform::equalsIgnoreCase(global ? it->globalName : it->localName, name)) return &*it;
    return nullptr;
  };
  if (!typed.empty() && typed.front() == '_') {
    if (const Command* c = byName(typed.substr(1), true)) return c;
    return byName(typed, true);  // a global name registered with its underscore
  }
  if (const Command* c = byName(typed, false)) return c;
  return byName(typed, true);
}

// ---- reading input

std::string HostSession::showPrompt(std::string_view prompt) const {
  // A prompt that starts a new line does not leave an empty one behind a line already ended.
  if (!prompt.empty() && prompt.front() == '\n' && Console::instance().atLineStart()) prompt.remove_prefix(1);
  return std::string(prompt);
}

void HostSession::echoToken(const std::string& shownPrompt, const Token& token, bool echo) {
  if (!echo) return;
  std::string line = shownPrompt;
  line += token.kind == Token::Kind::Cancel ? std::string(kCancelled) : token.text;
  platform::printToCommandLine(line + "\n");
}

Token HostSession::readToken(std::string_view prompt, bool spacesAllowed) {
  if (running_ && running_->cancelled) return Token{Token::Kind::Cancel, {}};
  Token token = nextToken(prompt, spacesAllowed);
  // A cancel, or the end of the input, ends the command that asked.
  if (token.kind != Token::Kind::Text && running_) running_->cancelled = true;
  return token;
}

Token HostSession::nextToken(std::string_view prompt, bool spacesAllowed) {
  const std::string shown = showPrompt(prompt);
  Token token;
  HeadlessDocument* const document = current();
  if (document && !document->queue.empty()) {
    // Text sent to the document answers first; an unfinished expression there is dropped.
    std::optional<Token> t = document->queue.take(spacesAllowed);
    if (!t) {
      document->queue.clear();
      t = Token{Token::Kind::Cancel, {}};
    }
    token = *t;
    echoToken(shown, token, document->queue.echo());
  } else if (!terminal_.empty()) {
    token = takeTyped(spacesAllowed);
    if (token.kind != Token::Kind::End) echoToken(shown, token, true);
  } else {
    std::optional<std::string> line = input_ ? input_->readLine(shown) : std::nullopt;
    if (!line) return Token{};
    // A line that only cancels (Ctrl-C on a terminal) is no Enter besides.
    terminal_.append(*line == "\x03" ? *line : *line + "\n");
    token = takeTyped(spacesAllowed);
    // The input has shown the line; a cancel typed in it is said in words.
    if (token.kind == Token::Kind::Cancel) platform::printToCommandLine(std::string(kCancelled) + "\n");
  }
  return token;
}

Token HostSession::takeTyped(bool spacesAllowed) {
  std::optional<Token> token = terminal_.take(spacesAllowed);
  while (!token) {
    // An open LISP expression goes on on the next line.
    std::optional<std::string> more = input_ ? input_->readLine("(_> ") : std::nullopt;
    if (!more) {
      terminal_.clear();
      return Token{};
    }
    terminal_.append(*more + "\n");
    token = terminal_.take(spacesAllowed);
  }
  return *token;
}

std::optional<std::string> HostSession::readLine(std::string_view prompt) {
  const std::string shown = showPrompt(prompt);
  if (!terminal_.empty()) {
    std::string line = terminal_.takeLine();
    platform::printToCommandLine(shown + line + "\n");
    return line;
  }
  return input_ ? input_->readLine(shown) : std::nullopt;
}

std::optional<std::string> readInputLine(std::string_view prompt) { return HostSession::instance().readLine(prompt); }

// ---- running commands

void HostSession::runCommand(const Command& command) {
  // The table may change while the command runs (it may register or remove commands): keep a copy.
  const Command copy = command;
  Running running;
  Running* const outer = running_;
  running_ = &running;
  Module* const before = acting_;
  acting_ = copy.owner;
  notifyCommand(CommandEvent::WillStart, copy.globalName);
  HeadlessDocument* const document = current();
  const bool session = (copy.flags & platform::kCmdSession) != 0;
  // A document command has its document locked for it; a session command locks what it needs itself.
  if (!session && document) document->locks.push_back(platform::LockMode::kAutoWrite);
  if (session) ++appContext_;
  RunGuarded(
      false,
      [&] {
        copy.function();
        return true;
      },
      [&](const char* reason) {
        running.cancelled = true;
        platform::printToCommandLine("\n命令 " + copy.localName + " 出错，已取消：" + reason + "\n");
      });
  if (session) --appContext_;
  if (!session && find(document) && !document->locks.empty()) document->locks.pop_back();
  acting_ = before;
  running_ = outer;
  notifyCommand(running.cancelled ? CommandEvent::Cancelled : CommandEvent::Ended, copy.globalName);
}

void HostSession::dispatch(const Token& token) {
  if (token.kind != Token::Kind::Text || token.text.empty()) return;
  if (token.text.front() == '(') {
    evaluateLisp(token.text);
    return;
  }
  const Command* command = findCommand(token.text);
  if (!command) {
    platform::printToCommandLine("未知命令“" + platform::toUpperAscii(token.text) + "”。按 F1 查看帮助。\n");
    return;
  }
  runCommand(*command);
}

void HostSession::runQueueOf(HeadlessDocument* document) {
  HeadlessDocument* const before = commandDoc_;
  commandDoc_ = document;
  while (!quit_ && find(document) && !document->queue.empty()) dispatch(readToken(kCommandPrompt));
  commandDoc_ = find(before) ? before : nullptr;
}

void HostSession::runQueued() {
  bool progress = true;
  while (progress && !quit_) {
    progress = false;
    pumpMessages();
    // The active document's strings first, then the others' in the order the documents were opened.
    std::vector<HeadlessDocument*> order;
    if (active_) order.push_back(active_);
    for (const auto& d : documents_)
      if (d.get() != active_) order.push_back(d.get());
    for (HeadlessDocument* d : order)
      if (find(d) && !d->queue.empty()) {
        runQueueOf(d);
        progress = true;
      }
  }
}

void HostSession::runLoop(bool stopWhenTyped) {
  while (!quit_) {
    runQueued();
    if (quit_ || (stopWhenTyped && terminal_.empty())) break;
    const Token token = readToken(kCommandPrompt);
    if (token.kind == Token::Kind::End) break;
    dispatch(token);
  }
}

void HostSession::execute(std::string_view typed) {
  terminal_.append(typed);
  runLoop(true);
}

void HostSession::runCommandLine() {
  runLoop(false);
  shutdown();
}

}  // namespace headless

namespace platform {

ErrorStatus addCommand(std::string_view group, std::string_view globalName, std::string_view localName, int flags,
                       CommandFunction function) {
  return headless::HostSession::instance().addCommand(group, globalName, localName, flags, std::move(function));
}

ErrorStatus removeGroup(std::string_view group) { return headless::HostSession::instance().removeGroup(group); }

}  // namespace platform
