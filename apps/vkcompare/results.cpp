// The result document and the list of records, read from the comparison state.
#include "results.h"

#include <cstdio>

#include "platform/files.h"
#include "platform/headless/console.h"
#include "results/Locate.h"

namespace vkcompare {

namespace {

Json point(double x, double y) { return Json::array({x, y}); }

Json box(const std::array<double, 6>& e) {
  return {{"min", Json::array({e[0], e[1], e[2]})}, {"max", Json::array({e[3], e[4], e[5]})}};
}

Json window(const DrawingWindow& w) { return {{"min", point(w.minX, w.minY)}, {"max", point(w.maxX, w.maxY)}}; }

Json offset(const platform::Point3d& p) { return Json::array({p.x, p.y, p.z}); }

const char* outcomeName(RunOutcome outcome) {
  switch (outcome) {
    case RunOutcome::Identical: return "identical";
    case RunOutcome::Different: return "different";
    case RunOutcome::NothingToCompare: return "nothing_to_compare";
    case RunOutcome::None:
    case RunOutcome::Trouble: break;
  }
  return "trouble";
}

// The colours of the kinds' rectangles on a terminal: changed green, added red, deleted yellow.
const char* colourOf(int kind) {
  switch (kind) {
    case kDiffChanged: return "\x1b[32m";
    case kDiffAdded: return "\x1b[31m";
    case kDiffDeleted: return "\x1b[33m";
    default: return "";
  }
}

}  // namespace

std::vector<std::vector<std::size_t>> RangeMembers(const CComparisonState& state) {
  std::vector<std::vector<std::size_t>> members(state.ranges.ranges.size());
  for (const CRangeMember& m : state.ranges.members)
    if (m.range >= 1 && static_cast<std::size_t>(m.range) <= members.size() && m.record < state.differences.size())
      members[static_cast<std::size_t>(m.range - 1)].push_back(m.record);
  return members;
}

const char* KindName(int kind) {
  switch (kind) {
    case kDiffChanged: return "changed";
    case kDiffAdded: return "added";
    case kDiffDeleted: return "deleted";
    default: return "unknown";
  }
}

Json HandleValue(unsigned long long handle) {
  if (!handle) return nullptr;
  char text[24];
  std::snprintf(text, sizeof text, "%llX", handle);
  return text;
}

int ExitStatus(RunOutcome outcome) {
  switch (outcome) {
    case RunOutcome::Identical: return 0;
    case RunOutcome::Different: return 1;
    default: return 2;
  }
}

Json ResultDocument(const CComparisonState& state) {
  Json records = Json::array();
  const auto& differences = state.differences;
  for (std::size_t i = 0; i < differences.size(); ++i) {
    const CDiffType& r = *differences[i];
    Json messages = Json::array();
    for (std::string_view m : r.messages()) messages.push_back(std::string(m));
    const LocateWindows windows = ComputeLocateWindows(r, state.sourceOffset, state.destinationOffset);
    records.push_back({{"index", i},
                       {"kind", KindName(r.kind)},
                       {"kind_number", r.kind},
                       {"text", r.text},
                       {"description", r.text.substr(0, std::min<std::size_t>(r.descriptionLength, r.text.size()))},
                       {"messages", std::move(messages)},
                       {"source_handle", HandleValue(r.sourceHandle)},
                       {"destination_handle", HandleValue(r.destinationHandle)},
                       {"extents", box(r.extents)},
                       {"range", r.range},
                       {"member", r.member},
                       {"locate", {{"source", window(windows.source)}, {"destination", window(windows.destination)}}}});
  }
  Json ranges = Json::array();
  const std::vector<std::vector<std::size_t>> members = RangeMembers(state);
  for (std::size_t i = 0; i < state.ranges.ranges.size(); ++i) {
    const CRangeEntry& r = state.ranges.ranges[i];
    ranges.push_back({{"number", i + 1}, {"label", r.label}, {"members", members[i]}, {"extents", box(r.extents)}});
  }
  Json document = {
      {"schema", kResultSchema},
      {"source", state.sourceFileName},
      {"destination", state.destinationFileName},
      {"outcome", outcomeName(state.lastOutcome)},
      {"exit_status", ExitStatus(state.lastOutcome)},
      {"count", differences.size()},
      {"error", state.lastError.empty() ? Json(nullptr) : Json(state.lastError)},
      {"warnings", state.lastWarnings},
      {"log", state.lastLogWritten ? Json(state.lastLogPath) : Json(nullptr)},
      {"offsets", {{"source", offset(state.sourceOffset)}, {"destination", offset(state.destinationOffset)}}},
      {"records", std::move(records)},
      {"ranges", std::move(ranges)},
  };
  return document;
}

std::string JsonText(const Json& document) {
  return document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

bool WriteJson(const std::string& path, const Json& document, std::string& error) {
  const std::string text = JsonText(document);
  if (path == "-") {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return true;
    error = "the JSON could not be written to standard output";
    return false;
  }
  return platform::writeWholeFile(path, text, &error);
}

std::string ListLine(int kind, const Json& sourceHandle, const Json& destinationHandle, const std::string& text,
                     bool colour) {
  const auto handle = [](const Json& h) { return h.is_string() ? h.get<std::string>() : std::string("-"); };
  char head[80];
  std::snprintf(head, sizeof head, "%-7s %8s %8s  ", KindName(kind), handle(sourceHandle).c_str(),
                handle(destinationHandle).c_str());
  std::string line = head + text;
  if (colour && *colourOf(kind)) line = colourOf(kind) + line + "\x1b[0m";
  return line + "\n";
}

void CListOutput::publish(const CComparisonState& state) {
  headless::Console& console = headless::Console::instance();
  if (!console.atLineStart()) console.print("\n");
  for (const auto& r : state.differences)
    console.print(ListLine(r->kind, HandleValue(r->sourceHandle), HandleValue(r->destinationHandle), r->text, colour));
}

}  // namespace vkcompare
