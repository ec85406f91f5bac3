// The outputs vkcompare adds to a silent run: the result as a JSON document, and the records as a list.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine/ResultSink.h"

namespace vkcompare {

using Json = nlohmann::ordered_json;

// The name and version of the result document's layout; vkcompare-result.schema.json describes it.
inline constexpr const char* kResultSchema = "vkcompare-result/1";
inline constexpr const char* kFolderSchema = "vkcompare-folders/1";

// The words of a record kind: "changed", "added", "deleted" ("unknown" otherwise).
const char* KindName(int kind);
// A handle as the drawing writes it (upper-case hex), or null for the missing side (0).
Json HandleValue(unsigned long long handle);
// The exit status of a run's outcome: 0 identical, 1 differences, 2 trouble.
int ExitStatus(RunOutcome outcome);

// The records of each range, a list a range in the ranges' order: its members' record indexes, in member
// order. Members naming no range or no record are left out.
std::vector<std::vector<std::size_t>> RangeMembers(const CComparisonState& state);

// The result of the run the state holds: files, outcome, error, warnings, records (with their Locate
// windows) and ranges. Also right after a run cut short by a throw: then it reports trouble and the reason.
Json ResultDocument(const CComparisonState& state);

// JSON text, invalid UTF-8 replaced rather than refused.
std::string JsonText(const Json& document);
// Writes the document to a file, whole or not at all, or to stdout for "-"; false with a reason otherwise.
bool WriteJson(const std::string& path, const Json& document, std::string& error);

// Keeps the run's document for writing once the run is over.
class CJsonOutput : public CResultSink {
 public:
  void publish(const CComparisonState& state) override {
    document = ResultDocument(state);
    published = true;
  }
  Json document;
  bool published = false;
};

// One line of the list: kind, source and destination handles, text; in the kind's colour when asked.
std::string ListLine(int kind, const Json& sourceHandle, const Json& destinationHandle, const std::string& text,
                     bool colour);

// Prints the records one a line, as they are sorted, on the host's command line after the run's own lines.
class CListOutput : public CResultSink {
 public:
  explicit CListOutput(bool colour) : colour(colour) {}
  void publish(const CComparisonState& state) override;

 private:
  bool colour;
};

}  // namespace vkcompare
