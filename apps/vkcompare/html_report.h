// The HTML report of a comparison: both drawings side by side, the records' rectangles, the result tree and
// the stepping through the records, in one file that needs nothing else.
#pragma once

#include <string>
#include <vector>

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

// One line of a folder comparison's index page: a drawing's relative path, its summary, and the report of
// the pair, relative to the index ("" when the drawing is only in one folder).
struct IndexEntry {
  std::string relative;
  std::string summary;
  std::string report;
  std::string outcome;  // "identical", "different", "trouble", "deleted", "added"
};
// The index page of the reports of two folders' pairs, a line an entry in the order given.
std::string FolderIndexPage(const std::string& sourceFolder, const std::string& destinationFolder,
                            const std::vector<IndexEntry>& entries, const std::string& total, const std::string& date);

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
