// The headless host's command line and message boxes.
#include "platform/headless/console.h"

#include <algorithm>

#include "platform/host.h"

namespace headless {

Console& Console::instance() {
  static Console console;
  return console;
}

void Console::print(std::string_view text) {
  note(text);
  if (echo_) {
    std::fwrite(text.data(), 1, text.size(), echo_);
    std::fflush(echo_);
  }
}

void Console::note(std::string_view text) {
  transcript_.append(text);
  if (!text.empty()) atLineStart_ = text.back() == '\n';
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
  // On the terminal the box stands on a line of its own; the command line's transcript does not show it.
  if (echo_) {
    std::fprintf(echo_, "%s[%.*s] %.*s\n", atLineStart_ ? "" : "\n", static_cast<int>(title.size()), title.data(), static_cast<int>(text.size()),
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
  atLineStart_ = true;
  boxes_.clear();
  answers_.clear();
  progressLabels_.clear();
}

void Console::setProgressMeter(std::string_view label, int minPos, int maxPos) {
  progressLabel_ = std::string(label);
  progressLabels_.push_back(progressLabel_);
  progressMin_ = minPos;
  progressMax_ = maxPos;
  progressShown_ = -1;
  setProgressPosition(minPos);
}

void Console::setProgressPosition(int pos) {
  if (!progress_ || progressLabel_.empty()) return;
  const int span = progressMax_ - progressMin_;
  const int percent = span > 0 ? static_cast<int>(100LL * (pos - progressMin_) / span) : 100;
  if (percent == progressShown_) return;  // redraw only when the bar moves
  progressShown_ = percent;
  constexpr int kWidth = 30;
  const int filled = std::clamp(percent, 0, 100) * kWidth / 100;
  std::fprintf(progress_, "\r%s [%.*s%*s] %3d%%", progressLabel_.c_str(), filled, "##############################",
               kWidth - filled, "", std::clamp(percent, 0, 100));
  std::fflush(progress_);
  progressDrawn_ = true;
}

void Console::restoreStatusBar() {
  progressLabel_.clear();
  if (progress_ && progressDrawn_) {
    std::fputs("\r\033[K", progress_);
    std::fflush(progress_);
  }
  progressDrawn_ = false;
}

}  // namespace headless

namespace platform {

void printToCommandLine(std::string_view text) { headless::Console::instance().print(text); }

void setStatusBarProgressMeter(std::string_view label, int minPos, int maxPos) {
  headless::Console::instance().setProgressMeter(label, minPos, maxPos);
}
void setStatusBarProgressMeterPos(int pos) { headless::Console::instance().setProgressPosition(pos); }
void restoreStatusBar() { headless::Console::instance().restoreStatusBar(); }

int showMessageBox(std::string_view text, std::string_view title, unsigned style) {
  return headless::Console::instance().messageBox(text, title, style);
}

}  // namespace platform
