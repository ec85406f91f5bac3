// The headless host's terminal: command-line transcript and message boxes, readable and scriptable by tests.
#pragma once

#include <cstdio>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace headless {

struct MessageBoxEvent {
  std::string text;
  std::string title;
  unsigned style = 0;
  int answer = 0;
};

// One terminal per process, as the host has one command line. Everything printed is kept in a transcript
// and echoed to a stream (stdout by default; none in tests that only read the transcript).
class Console {
 public:
  static Console& instance();

  void print(std::string_view text);
  // The command-line text printed since the last call, which empties it.
  std::string takeTranscript();
  const std::string& transcript() const { return transcript_; }

  int messageBox(std::string_view text, std::string_view title, unsigned style);
  std::vector<MessageBoxEvent> takeMessageBoxes();
  const std::vector<MessageBoxEvent>& messageBoxes() const { return boxes_; }
  // Answers for the next message boxes, in order; without one a box is answered with its first button.
  void scriptMessageBoxAnswer(int answer) { answers_.push_back(answer); }

  // Where printed text and message boxes are echoed; nullptr keeps them silent.
  void setEcho(std::FILE* stream) { echo_ = stream; }
  std::FILE* echo() const { return echo_; }
  // Forgets the transcript, the recorded message boxes and pending answers.
  void reset();

 private:
  Console() = default;
  std::string transcript_;
  std::vector<MessageBoxEvent> boxes_;
  std::deque<int> answers_;
  std::FILE* echo_ = stdout;
};

}  // namespace headless
