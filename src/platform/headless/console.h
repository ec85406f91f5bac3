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
  // Keeps text in the transcript without echoing it (what a line editor has already shown on the terminal).
  void note(std::string_view text);
  // Whether the last text printed or noted ended a line (true before anything was printed).
  bool atLineStart() const { return atLineStart_; }
  // The command-line text printed since the last call, which empties it.
  std::string takeTranscript();
  const std::string& transcript() const { return transcript_; }

  int messageBox(std::string_view text, std::string_view title, unsigned style);
  std::vector<MessageBoxEvent> takeMessageBoxes();
  const std::vector<MessageBoxEvent>& messageBoxes() const { return boxes_; }
  // Answers for the next message boxes, in order; without one a box is answered with its first button.
  void scriptMessageBoxAnswer(int answer) { answers_.push_back(answer); }

  // The status bar's progress meter, drawn as a bar on the progress stream when one is set.
  void setProgressMeter(std::string_view label, int minPos, int maxPos);
  void setProgressPosition(int pos);
  void restoreStatusBar();
  // Where the progress bar is drawn (nullptr: nowhere, the default).
  void setProgressStream(std::FILE* stream) { progress_ = stream; }
  const std::string& progressLabel() const { return progressLabel_; }
  // Every label the meter was shown with, in order (tests read it).
  const std::vector<std::string>& progressLabels() const { return progressLabels_; }

  // Where printed text and message boxes are echoed; nullptr keeps them silent.
  void setEcho(std::FILE* stream) { echo_ = stream; }
  std::FILE* echo() const { return echo_; }
  // Forgets the transcript, the recorded message boxes and pending answers.
  void reset();

 private:
  Console() = default;
  std::string transcript_;
  bool atLineStart_ = true;
  std::vector<MessageBoxEvent> boxes_;
  std::deque<int> answers_;
  std::FILE* echo_ = stdout;
  std::FILE* progress_ = nullptr;
  std::string progressLabel_;
  std::vector<std::string> progressLabels_;
  int progressMin_ = 0, progressMax_ = 0, progressShown_ = -1;
  bool progressDrawn_ = false;
};

}  // namespace headless
