// The HTML report of a comparison: both drawings side by side, the records' rectangles, the result tree and
// the stepping through the records, in one file that needs nothing else.
#pragma once

#include <string>

#include "engine/ResultSink.h"

namespace vkcompare {

// Text made safe to stand in HTML text or in a quoted attribute.
std::string HtmlEscape(std::string_view text);
// JSON text made safe to stand inside a <script> element: no "</" closes it early ("<\/"), no "<!--" keeps
// it from closing ("\u003c!--").
std::string ScriptSafeJson(std::string_view json);

// The whole page for the result the state holds; the drawings are drawn from the state's side databases when
// they are at hand (a run cut short by a throw may have none). `date` is shown in the header.
std::string HtmlReport(const CComparisonState& state, const std::string& date);

// The current time in UTC as "YYYY-MM-DD HH:MM:SS UTC".
std::string ReportDate();

// Makes the page while the run's drawings are at hand, for writing once the run is over.
class CHtmlOutput : public CResultSink {
 public:
  void publish(const CComparisonState& state) override {
    page = HtmlReport(state, ReportDate());
    published = true;
  }
  std::string page;
  bool published = false;
};

}  // namespace vkcompare
