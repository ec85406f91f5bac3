// The host's line input: where the command line, its prompts and the terminal dialogs read their lines.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace headless {

// A source of input lines. Reading shows the prompt on the command line (the console's transcript) and
// leaves the line read there too, so that a transcript reads as the session did.
class LineInput {
 public:
  virtual ~LineInput();
  // The next line without its line end; nullopt at the end of the input.
  virtual std::optional<std::string> readLine(std::string_view prompt) = 0;
};

// Standard input: a line editor with history on a terminal (where the build has one), else plain lines
// echoed after their prompt.
std::unique_ptr<LineInput> standardInput();
// Lines of a script held in memory, each echoed after its prompt.
std::unique_ptr<LineInput> scriptInput(std::string script);

// Prints the prompt and returns the next line the host's command line would read (the rest of a line
// already typed, when a command left some), or nullopt at the end of the input. Terminal dialogs and other
// code that needs a typed answer call this.
std::optional<std::string> readInputLine(std::string_view prompt);

}  // namespace headless
