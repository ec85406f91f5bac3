// vkcompare FOLDER_A FOLDER_B: the drawings of two folders paired by relative path, each pair compared by a
// child process of vkcompare (the comparison state is one per process), as many at once as there are cores.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "engine/ComparisonState.h"
#include "html_report.h"
#include "platform/files.h"
#include "results.h"

namespace vkcompare {

namespace fs = std::filesystem;

namespace {

bool isDrawing(const fs::path& path) {
  std::string ext = path.extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext == ".dwg" || ext == ".dxf";
}

// The drawings below a folder by their relative paths ('/' between names), sorted; false with the reason
// when the folder cannot be walked.
bool drawingsUnder(const std::string& root, std::vector<std::string>& out, std::string& error) {
  std::error_code ec;
  fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, ec), end;
  for (; !ec && it != end; it.increment(ec)) {
    std::error_code kindError;
    if (!it->is_regular_file(kindError) || !isDrawing(it->path())) continue;
    out.push_back(it->path().lexically_relative(root).generic_string());
  }
  if (ec) {
    error = root + ": " + ec.message();
    return false;
  }
  std::sort(out.begin(), out.end());
  return true;
}

// A temporary folder of this run, removed with what it holds.
struct WorkFolder {
  std::string path;
  WorkFolder() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/vkcompare-XXXXXX";
    if (::mkdtemp(pattern.data())) path = pattern;
  }
  ~WorkFolder() {
    std::error_code ec;
    if (!path.empty()) fs::remove_all(path, ec);
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
};

struct Pair {
  std::string relative;
  std::string source, destination;
  std::string jsonPath, outputPath;
  std::string htmlPath;  // its report page, "" for none
  int status = 2;     // the child's exit status; 2 when it did not exit
  std::string ended;  // how it ended when it did not exit normally
  Json document;
};

// Starts `vkcompare --log-dir LOGS --json PAIR.json SOURCE DESTINATION` with its output in a file.
pid_t start(const Pair& pair, const std::string& logFolder) {
  std::vector<std::string> args = {"vkcompare", "--log-dir", logFolder, "--json", pair.jsonPath};
  if (!pair.htmlPath.empty()) args.insert(args.end(), {"--html", pair.htmlPath});
  args.insert(args.end(), {pair.source, pair.destination});
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  const int out = ::open(pair.outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const int in = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (out < 0 || in < 0) {
    if (out >= 0) ::close(out);
    if (in >= 0) ::close(in);
    return -1;
  }
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::dup2(in, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    ::execv("/proc/self/exe", argv.data());
    ::_exit(127);
  }
  ::close(out);
  ::close(in);
  return pid;
}

// The child's last "vkcompare: " line, the reason it gave for ending in trouble.
std::string lastReason(const std::string& outputPath) {
  std::string text, reason;
  platform::readWholeFile(outputPath, text);
  const std::string prefix = "vkcompare: ";
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = text.find('\n', at);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(at, end - at);
    if (line.rfind(prefix, 0) == 0 && line.rfind(prefix + "warning:", 0) != 0) reason = line.substr(prefix.size());
    at = end + 1;
  }
  return reason;
}

// The pair's document as its child wrote it; one reporting trouble when it wrote none that reads.
void collect(Pair& pair) {
  std::string text;
  if (platform::readWholeFile(pair.jsonPath, text)) {
    pair.document = Json::parse(text, nullptr, false);
    if (pair.document.is_object()) return;
  }
  // This process ran no comparison: its state gives the document of a run that never got going.
  pair.document = ResultDocument(CComparisonState::instance());
  pair.document["source"] = pair.source;
  pair.document["destination"] = pair.destination;
  std::string reason = lastReason(pair.outputPath);
  if (!pair.ended.empty()) reason = pair.ended + (reason.empty() ? "" : " (" + reason + ")");
  pair.document["error"] = reason.empty() ? "the comparison wrote no result" : reason;
  pair.status = 2;
}

// How the pairs shared the machine: the most compared at once, and the time the children used against the
// time the whole took (their ratio is the cores kept busy).
struct Workload {
  std::size_t mostAtOnce = 0;
  double cpuSeconds = 0.0;
  double wallSeconds = 0.0;
};

double seconds(const timeval& t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; }

// Runs every pair, at most `jobs` at once.
Workload runAll(std::vector<Pair>& pairs, const std::string& logRoot, unsigned jobs) {
  Workload workload;
  const auto began = std::chrono::steady_clock::now();
  std::map<pid_t, std::size_t> running;
  std::size_t next = 0;
  while (next < pairs.size() || !running.empty()) {
    while (next < pairs.size() && running.size() < jobs) {
      Pair& pair = pairs[next];
      // Each pair's log goes to the folder of its relative path below the log folder.
      const std::string logFolder = (fs::path(logRoot) / fs::path(pair.relative).parent_path()).string();
      platform::CreateFolderPath(logFolder);
      const pid_t pid = start(pair, logFolder);
      if (pid < 0) pair.ended = "could not be started: " + platform::systemErrorText(errno);
      else running[pid] = next;
      ++next;
    }
    workload.mostAtOnce = std::max(workload.mostAtOnce, running.size());
    if (running.empty()) continue;
    int status = 0;
    rusage used{};
    const pid_t pid = ::wait4(-1, &status, 0, &used);
    if (pid < 0) {
      if (errno == EINTR) continue;
      break;
    }
    const auto found = running.find(pid);
    if (found == running.end()) continue;
    Pair& pair = pairs[found->second];
    running.erase(found);
    workload.cpuSeconds += seconds(used.ru_utime) + seconds(used.ru_stime);
    if (WIFEXITED(status)) {
      pair.status = WEXITSTATUS(status);
      if (pair.status > 2) pair.ended = "ended with exit status " + std::to_string(pair.status);
    } else if (WIFSIGNALED(status)) {
      pair.ended = "killed by signal " + std::to_string(WTERMSIG(status));
    }
  }
  workload.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
  return workload;
}

}  // namespace

int runFolders(const std::string& sourceFolder, const std::string& destinationFolder, const Outputs& outputs) {
  std::vector<std::string> inSource, inDestination;
  std::string error;
  if (!drawingsUnder(sourceFolder, inSource, error) || !drawingsUnder(destinationFolder, inDestination, error)) {
    std::fprintf(stderr, "vkcompare: %s\n", error.c_str());
    return 2;
  }
  WorkFolder work;
  if (work.path.empty()) {
    std::fprintf(stderr, "vkcompare: no temporary folder for the results of the pairs: %s\n",
                 platform::systemErrorText(errno).c_str());
    return 2;
  }
  std::vector<Pair> pairs;
  std::vector<std::string> onlySource, onlyDestination;
  std::set_difference(inSource.begin(), inSource.end(), inDestination.begin(), inDestination.end(),
                      std::back_inserter(onlySource));
  std::set_difference(inDestination.begin(), inDestination.end(), inSource.begin(), inSource.end(),
                      std::back_inserter(onlyDestination));
  std::vector<std::string> shared;
  std::set_intersection(inSource.begin(), inSource.end(), inDestination.begin(), inDestination.end(),
                        std::back_inserter(shared));
  for (const std::string& relative : shared) {
    Pair pair;
    pair.relative = relative;
    pair.source = (fs::path(sourceFolder) / relative).string();
    pair.destination = (fs::path(destinationFolder) / relative).string();
    const std::string stem = work.path + "/" + std::to_string(pairs.size());
    pair.jsonPath = stem + ".json";
    pair.outputPath = stem + ".out";
    // Each pair's report mirrors its relative path below the report folder.
    if (!outputs.htmlPath.empty()) {
      pair.htmlPath = (fs::path(outputs.htmlPath) / (relative + ".html")).string();
      platform::CreateFolderPath(fs::path(pair.htmlPath).parent_path().string());
    }
    pairs.push_back(std::move(pair));
  }

  const unsigned jobs = outputs.jobs ? outputs.jobs : std::max(1u, std::thread::hardware_concurrency());
  const Workload workload = runAll(pairs, outputs.logFolder.empty() ? currentFolder() : outputs.logFolder, jobs);

  // What the pairs say, in the order of their paths; the drawings only in one folder among them.
  int identical = 0, different = 0, trouble = 0;
  std::map<std::string, std::string> lines;  // relative path -> its line (and its records)
  std::map<std::string, IndexEntry> index;   // relative path -> its line of the index page
  // With the JSON on standard output, the lines go to stderr.
  std::FILE* const text = outputs.jsonPath == "-" ? stderr : stdout;
  const bool colour = ::isatty(::fileno(text)) != 0;
  for (Pair& pair : pairs) {
    collect(pair);
    const Json& doc = pair.document;
    std::string line;
    char head[64];
    if (pair.status == 0) {
      ++identical;
      std::snprintf(head, sizeof head, "%-10s ", "identical");
      line = head + pair.relative + "\n";
    } else if (pair.status == 1) {
      ++different;
      std::snprintf(head, sizeof head, "%-10s ", "different");
      const int count = doc.value("count", 0);
      line = head + pair.relative + ": " + std::to_string(count) + (count == 1 ? " record\n" : " records\n");
      if (outputs.list)
        for (const Json& r : doc.value("records", Json::array()))
          line += "  " + ListLine(r.value("kind_number", 0), r.value("source_handle", Json()),
                                  r.value("destination_handle", Json()), r.value("text", std::string()), colour);
    } else {
      ++trouble;
      std::snprintf(head, sizeof head, "%-10s ", "trouble");
      const Json reason = doc.value("error", Json());
      line = head + pair.relative + ": " + (reason.is_string() ? reason.get<std::string>() : "the comparison failed") + "\n";
    }
    lines[pair.relative] = line;
    const std::string outcome = pair.status == 0 ? "identical" : pair.status == 1 ? "different" : "trouble";
    const std::string summary = line.substr(0, line.find('\n')).substr(11);
    const bool written = !pair.htmlPath.empty() && fs::exists(pair.htmlPath);
    index[pair.relative] = {pair.relative, summary, written ? pair.relative + ".html" : "", outcome};
  }
  for (const std::string& relative : onlySource) {
    lines[relative] = "deleted    " + relative + ": only in " + sourceFolder + "\n";
    index[relative] = {relative, "only in " + sourceFolder, "", "deleted"};
  }
  for (const std::string& relative : onlyDestination) {
    lines[relative] = "added      " + relative + ": only in " + destinationFolder + "\n";
    index[relative] = {relative, "only in " + destinationFolder, "", "added"};
  }
  for (const auto& [relative, line] : lines) std::fputs(line.c_str(), text);
  char total[512];
  std::snprintf(total, sizeof total, "%zu pairs: %d identical, %d different, %d could not be compared; %zu only in %s, %zu only in %s",
                pairs.size(), identical, different, trouble, onlySource.size(), sourceFolder.c_str(),
                onlyDestination.size(), destinationFolder.c_str());
  std::fprintf(text, "%s\n", total);
  std::fflush(text);

  int status = trouble ? 2 : different || !onlySource.empty() || !onlyDestination.empty() ? 1 : 0;
  if (!outputs.htmlPath.empty()) {
    std::vector<IndexEntry> entries;
    for (auto& [relative, entry] : index) entries.push_back(std::move(entry));
    platform::CreateFolderPath(outputs.htmlPath);
    std::string reason;
    const std::string page = FolderIndexPage(sourceFolder, destinationFolder, entries, total, ReportDate());
    if (!platform::writeWholeFile((fs::path(outputs.htmlPath) / "index.html").string(), page, &reason)) {
      std::fprintf(stderr, "vkcompare: %s\n", reason.c_str());
      status = 2;
    }
  }
  if (!outputs.jsonPath.empty()) {
    Json all = Json::array();
    for (Pair& pair : pairs) {
      Json entry = {{"path", pair.relative}};
      entry.update(pair.document);
      all.push_back(std::move(entry));
    }
    const Json document = {{"schema", kFolderSchema},
                           {"source", sourceFolder},
                           {"destination", destinationFolder},
                           {"exit_status", status},
                           {"pairs", std::move(all)},
                           {"only_in_source", onlySource},
                           {"only_in_destination", onlyDestination},
                           {"workload", {{"jobs", jobs},
                                         {"most_at_once", workload.mostAtOnce},
                                         {"cpu_seconds", workload.cpuSeconds},
                                         {"wall_seconds", workload.wallSeconds}}}};
    std::string reason;
    if (!WriteJson(outputs.jsonPath, document, reason)) {
      std::fprintf(stderr, "vkcompare: %s\n", reason.c_str());
      return 2;
    }
  }
  return status;
}

}  // namespace vkcompare
