// vkcompare SOURCE DESTINATION: the silent comparison through the module, with exit statuses for scripts
// (0 identical, 1 differences, 2 trouble), and the JSON document and the list of records when asked.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "commands.h"
#include "engine/ComparisonState.h"
#include "html_report.h"
#include "platform/boundary.h"
#include "platform/files.h"
#include "platform/headless/console.h"
#include "results.h"
#include "shell/exports.h"

namespace vkcompare {

namespace {

int compareFiles(const std::string& source, const std::string& destination, const Outputs& outputs) {
  // With the JSON on standard output, what the run prints goes to stderr, so that stdout is the document.
  std::FILE* const text = outputs.jsonPath == "-" ? stderr : stdout;
  headless::Console& console = headless::Console::instance();
  console.setEcho(text);
  // The progress bar goes to the terminal only; redirected output stays clean.
  console.setProgressStream(::isatty(STDERR_FILENO) ? stderr : nullptr);
  // The module's own rule puts logs beside its installation, which need not be writable for a user of
  // the command line; its logs go to the folder it is run in unless told otherwise.
  VkSetLogFolder(outputs.logFolder.empty() ? currentFolder().c_str() : outputs.logFolder.c_str());

  CJsonOutput json;
  CHtmlOutput html;
  CListOutput list(::isatty(::fileno(text)) != 0);
  std::vector<CResultSink*> sinks;
  if (!outputs.jsonPath.empty()) sinks.push_back(&json);
  if (outputs.list) sinks.push_back(&list);
  if (!outputs.htmlPath.empty()) sinks.push_back(&html);
  CompareFilesSilent(source.c_str(), destination.c_str(), sinks);
  if (!console.transcript().empty() && console.transcript().back() != '\n') std::fputc('\n', text);
  std::fflush(text);

  const int outcome = VkLastSilentOutcome();
  for (int i = 0; i < VkLastSilentWarningCount(); ++i) std::fprintf(stderr, "vkcompare: warning: %s\n", VkLastSilentWarning(i));
  const std::string error = VkLastSilentError();
  if (!error.empty()) std::fprintf(stderr, "vkcompare: %s\n", error.c_str());
  if (outcome == 1 && !VkLastLogWritten())
    std::fprintf(stderr, "vkcompare: warning: the log could not be written to %s\n", VkLastLogPath());
  int status = outcome == 0 ? 0 : outcome == 1 ? 1 : 2;
  if (outcome == 3) std::fprintf(stderr, "vkcompare: the source drawing's current space has no entities to compare\n");

  if (!outputs.jsonPath.empty()) {
    // A run cut short by a throw published nothing; the state then holds its reason.
    const Json document = json.published ? json.document : ResultDocument(CComparisonState::instance());
    std::string reason;
    if (!WriteJson(outputs.jsonPath, document, reason)) {
      std::fprintf(stderr, "vkcompare: %s\n", reason.c_str());
      status = 2;
    }
  }
  if (!outputs.htmlPath.empty()) {
    const std::string page = html.published ? html.page : HtmlReport(CComparisonState::instance(), ReportDate());
    std::string reason;
    if (!platform::writeWholeFile(outputs.htmlPath, page, &reason)) {
      std::fprintf(stderr, "vkcompare: %s\n", reason.c_str());
      status = 2;
    }
  }
  return status;
}

}  // namespace

std::string currentFolder() {
  std::vector<char> buf(4096);
  if (::getcwd(buf.data(), buf.size())) return buf.data();
  return ".";
}

int runCompare(const std::string& source, const std::string& destination, const Outputs& outputs) {
  return RunGuarded(
      2, [&] { return compareFiles(source, destination, outputs); },
      [&](const char* reason) {
        std::fprintf(stderr, "vkcompare: %s against %s: %s\n", source.c_str(), destination.c_str(), reason);
      });
}

}  // namespace vkcompare
