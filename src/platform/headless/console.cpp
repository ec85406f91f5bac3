// The headless host's command line and message boxes.
#include "platform/headless/console.h"

#include "platform/host.h"

namespace headless {

Console& Console::instance() {
  static Console console;
  return console;
}

void Console::print(std::string_view text) {
  transcript_.append(text);
  if (echo_) {
    std::fwrite(text.data(), 1, text.size(), echo_);
    std::fflush(echo_);
  }
}

std::string Console::takeTranscript() {
  std::string out;
  out.swap(transcript_);
  return out;
}

int Console::messageBox(std::string_view text, std::string_view title, unsigned style) {
  int answer;
  if (!answers_.empty()) {
    answer = answers_.front();
    answers_.pop_front();
  } else {
    answer = (style & 0xF) == platform::kMbYesNo ? platform::kIdYes : platform::kIdOk;
  }
  boxes_.push_back({std::string(text), std::string(title), style, answer});
  if (echo_) {
    std::fprintf(echo_, "[%.*s] %.*s\n", static_cast<int>(title.size()), title.data(), static_cast<int>(text.size()),
                 text.data());
    std::fflush(echo_);
  }
  return answer;
}

std::vector<MessageBoxEvent> Console::takeMessageBoxes() {
  std::vector<MessageBoxEvent> out;
  out.swap(boxes_);
  return out;
}

void Console::reset() {
  transcript_.clear();
  boxes_.clear();
  answers_.clear();
}

}  // namespace headless

namespace platform {

void printToCommandLine(std::string_view text) { headless::Console::instance().print(text); }

int showMessageBox(std::string_view text, std::string_view title, unsigned style) {
  return headless::Console::instance().messageBox(text, title, style);
}

}  // namespace platform
