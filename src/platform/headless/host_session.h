// The headless host's session: the one object that holds the loaded modules, the open documents with
// their views, the command table, LISP functions, editor reactors, hooks and the command line.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/application.h"
#include "platform/commands.h"
#include "platform/documents.h"
#include "platform/editor.h"
#include "platform/lisp.h"
#include "platform/views.h"
#include "platform/headless/line_input.h"

namespace headless {

struct Module;

// Typed or queued input not yet read, cut into tokens as the command line cuts what is typed.
struct Token {
  enum class Kind { Text, Cancel, End };
  Kind kind = Kind::End;
  std::string text;
};
class InputBuffer {
 public:
  bool empty() const { return pos_ >= text_.size(); }
  void append(std::string_view text, bool echo = true);
  // Puts text before what is still unread (a toolbar button's macro goes before the rest of the input).
  void prepend(std::string_view text);
  void clear();
  bool echo() const { return echo_; }
  // The next token: U+0003 is a cancel; a LISP expression runs to its closing parenthesis; anything else
  // ends at a line feed or (unless spaces are allowed) a blank, which is taken with it. nullopt when a
  // LISP expression is still open at the end of the text.
  std::optional<Token> take(bool spacesAllowed);
  // The rest of the current line, line end taken (what a line-reading dialog gets).
  std::string takeLine();

 private:
  std::string text_;
  std::size_t pos_ = 0;
  bool echo_ = true;
};

struct TempVector {
  platform::Point3d from, to;
  int colorIndex = 7;
  bool highlight = false;
};

// A document's view: its window on the screen and the drawing area it shows.
struct View {
  platform::WindowId window = 0;
  platform::ScreenRect rect;
  platform::Point3d center;
  double height = 1.0;
  std::vector<platform::ViewState> previous;  // for ZOOM P
  std::vector<TempVector> vectors;           // acedGrDraw's, until the next regeneration

  double aspect() const;
  platform::Extents3d extents() const;
};

struct LispFunction {
  std::string name;
  int code = 0;
  Module* owner = nullptr;
};

class HeadlessDocument final : public platform::Document {
 public:
  HeadlessDocument(std::unique_ptr<platform::Database> database, std::string path);
  const std::string& fileName() const override { return path_; }
  const std::string& docTitle() const override { return title_; }
  platform::Database& database() override { return *database_; }
  const platform::Database& database() const override { return *database_; }
  int dbmod() const override { return dbmod_; }
  void pushDbmod() override { dbmodStack_.push_back(dbmod_); }
  void popDbmod() override;
  platform::LockMode lockMode() const override;

  void markModified() { dbmod_ |= 1; }
  std::vector<platform::LockMode> locks;
  InputBuffer queue;  // strings sent to it
  View view;
  std::map<std::string, LispFunction> lisp;  // by upper-cased name

 private:
  std::unique_ptr<platform::Database> database_;
  std::string path_, title_;
  int dbmod_ = 0;
  std::vector<int> dbmodStack_;
};

struct Command {
  std::string group, globalName, localName;
  int flags = 0;
  platform::CommandFunction function;
  Module* owner = nullptr;  // null for the host's own
};

struct Module {
  std::string path;
  void* handle = nullptr;
  platform::EntryPoint entry = nullptr;
};

class HostSession {
 public:
  // The process's session; it lives until the process ends.
  static HostSession& instance();
  HostSession(const HostSession&) = delete;
  HostSession& operator=(const HostSession&) = delete;

  // ---- modules
  // Loads a module (dlopen), sends it the initialisation and then a drawing load for each open document.
  // Null with error set when it cannot be loaded or refuses the initialisation.
  Module* loadModule(const std::string& path, std::string& error);
  // Sends the drawing unloads and the unload, drops what the module left registered, and closes it.
  void unloadModule(Module* module);
  int sendAppMessage(Module& module, int message);
  const std::vector<std::unique_ptr<Module>>& modules() const { return modules_; }

  // ---- documents
  // Reads a drawing and opens it as the active document; the modules get their drawing load message.
  HeadlessDocument* openDocument(const std::string& path, std::string& error);
  // The modules get their drawing unload message, then the document goes.
  void closeDocument(HeadlessDocument* document);
  HeadlessDocument* current() const { return commandDoc_ ? commandDoc_ : active_; }
  HeadlessDocument* active() const { return active_; }
  void activate(HeadlessDocument* document);
  const std::vector<std::unique_ptr<HeadlessDocument>>& documentList() const { return documents_; }
  HeadlessDocument* find(const platform::Document* document) const;
  HeadlessDocument* byWindow(platform::WindowId window) const;
  bool inApplicationContext() const { return appContext_ > 0 || !running_; }
  void runInApplicationContext(const std::function<void()>& function);

  // ---- command line
  // Dialogs shown on the terminal read their answers from the command line's input too.
  void setInput(std::unique_ptr<LineInput> input);
  // The command line: runs commands until QUIT or the end of the input, then closes the documents and
  // unloads the modules.
  void runCommandLine();
  // Runs text as if typed on the command line, and whatever it queues, until it is used up (tests).
  void execute(std::string_view typed);
  // Text the command line reads next, before anything typed and not yet read (a pressed button's macro).
  void typeAhead(std::string_view text) { terminal_.prepend(text); }
  // Runs the strings queued to documents and the messages posted to windows.
  void runQueued();
  // The next answer for a prompt of the command that runs (or of the command line), the prompt shown.
  Token readToken(std::string_view prompt, bool spacesAllowed = false);
  // The next input line after a prompt (readInputLine).
  std::optional<std::string> readLine(std::string_view prompt);

  // ---- commands
  platform::ErrorStatus addCommand(std::string_view group, std::string_view globalName, std::string_view localName,
                                   int flags, platform::CommandFunction function);
  platform::ErrorStatus removeGroup(std::string_view group);
  // The command a typed name calls: local names, then global ones; "_NAME" names a global name.
  const Command* findCommand(std::string_view typed) const;
  const std::vector<Command>& commands() const { return commands_; }

  // ---- LISP
  int defun(std::string_view name, int code);
  int undef(std::string_view name, int code);
  int funCode() const { return invoking_ ? funCode_ : platform::RTERROR; }
  const std::vector<platform::LispValue>* args() const { return invoking_ && !args_.empty() ? &args_ : nullptr; }
  int setResult(platform::LispValue value);
  // Evaluates a typed call "(name arg ...)" and prints its value.
  void evaluateLisp(std::string_view expression);

  // ---- editor
  int getPoint(const platform::Point3d* base, std::string_view prompt, platform::Point3d& result, bool corner);
  platform::RxDictionary& registry() { return *registry_; }
  // Tells the editor reactors about a command, each reactor guarded on its own.
  enum class CommandEvent { WillStart, Ended, Cancelled };
  void notifyCommand(CommandEvent event, std::string_view globalName);

  // ---- views
  void zoomWindow(HeadlessDocument& document, platform::Point3d a, platform::Point3d b);
  bool zoomExtents(HeadlessDocument& document);
  void zoomScale(HeadlessDocument& document, double factor);
  void pan(HeadlessDocument& document, double dx, double dy);
  void regen(HeadlessDocument& document) { document.view.vectors.clear(); }
  bool tile(std::string_view leftTitle, std::string_view rightTitle);
  std::uint64_t addHook(platform::MessageHook hook);
  bool removeHook(std::uint64_t handle);
  bool post(const platform::HostMessage& message);
  // The messages a turn of the mouse wheel over a document's view brings (notches > 0 zoom in), and those of
  // a drag with the middle button that moves the view by (dx, dy) drawing units.
  void wheel(HeadlessDocument& document, int notches);
  void middleButtonPan(HeadlessDocument& document, double dx, double dy);
  // Retrieves and handles every posted message.
  void pumpMessages();

  // ---- the host's properties
  // The newest drawing release its reader reads (characters 5 and 6 of a DWG version code).
  int release() const { return release_; }
  void setRelease(int release) { release_ = release; }
  // Closes every document and unloads every module (the end of a session; tests start afresh with it).
  void shutdown();

  // The module whose code runs now (registrations are put down to it); null for the host's own.
  Module* actingModule() const { return acting_; }

 private:
  HostSession();
  // The command that runs, and whether a cancel (or the end of the input) has ended it.
  struct Running {
    bool cancelled = false;
  };
  struct Hook {
    std::uint64_t handle;
    platform::MessageHook function;
    Module* owner;
  };

  void addHostCommands();
  Token nextToken(std::string_view prompt, bool spacesAllowed);
  // The next token of what was typed, reading on while a LISP expression is open.
  Token takeTyped(bool spacesAllowed);
  void dispatch(const Token& token);
  void runCommand(const Command& command);
  void runLoop(bool stopWhenTyped);
  void runQueueOf(HeadlessDocument* document);
  void deliver(const platform::HostMessage& message);
  void dropOwnedBy(Module* module);
  std::string showPrompt(std::string_view prompt) const;
  void echoToken(const std::string& shownPrompt, const Token& token, bool echo);

  std::vector<std::unique_ptr<Module>> modules_;
  std::vector<std::unique_ptr<HeadlessDocument>> documents_;
  HeadlessDocument* active_ = nullptr;
  HeadlessDocument* commandDoc_ = nullptr;
  int appContext_ = 0;
  std::vector<Command> commands_;
  Running* running_ = nullptr;
  std::unique_ptr<LineInput> input_;
  InputBuffer terminal_;
  bool quit_ = false;
  Module* acting_ = nullptr;
  // LISP call in progress
  bool invoking_ = false;
  int funCode_ = 0;
  std::vector<platform::LispValue> args_;
  platform::LispValue result_;
  // registry and editor
  std::unique_ptr<platform::RxDictionary> registry_;
  platform::Editor* editor_ = nullptr;
  // hooks and posted messages
  std::vector<Hook> hooks_;
  std::uint64_t nextHook_ = 1;
  std::deque<platform::HostMessage> posted_;
  bool pumping_ = false;
  platform::WindowId nextWindow_ = 1;
  std::map<std::string, std::string> variables_;
  int release_ = 32;
  friend void hostCommandSetvar(HostSession&);
};

}  // namespace headless
