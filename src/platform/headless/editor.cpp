// The headless host's editor: point and corner prompts, temporary vectors, selecting every entity,
// entity visibility and the failure report of a module's call.
#include <cstdlib>

#include "platform/headless/host_session.h"
#include "platform/host.h"

namespace headless {

namespace {

// "x,y" or "x,y,z" (blanks around the numbers allowed); false for anything else.
bool parsePoint(std::string_view text, platform::Point3d& point) {
  double values[3] = {0.0, 0.0, 0.0};
  int count = 0;
  std::string rest(text);
  const char* p = rest.c_str();
  for (;;) {
    if (count == 3) return false;
    char* end = nullptr;
    values[count] = std::strtod(p, &end);
    if (end == p) return false;
    ++count;
    while (*end == ' ') ++end;
    if (*end == '\0') break;
    if (*end != ',') return false;
    p = end + 1;
  }
  if (count < 2) return false;
  point = {values[0], values[1], values[2]};
  return true;
}

}  // namespace

int HostSession::getPoint(const platform::Point3d* base, std::string_view prompt, platform::Point3d& result,
                          bool corner) {
  std::string shown(prompt);
  for (;;) {
    const Token token = readToken(shown);
    if (token.kind != Token::Kind::Text) return platform::RTCAN;
    if (token.text.empty()) return platform::RTNONE;
    std::string_view text = token.text;
    const bool relative = text.front() == '@';
    if (relative) text.remove_prefix(1);
    platform::Point3d point;
    if (relative && text.empty()) point = {0.0, 0.0, 0.0};
    if ((relative && text.empty()) || parsePoint(text, point)) {
      if (relative && base) point = {base->x + point.x, base->y + point.y, base->z + point.z};
      result = point;
      return platform::RTNORM;
    }
    platform::printToCommandLine(corner ? "需要点或对角点。\n" : "需要点。\n");
    shown = std::string(prompt);
  }
}

}  // namespace headless

namespace platform {

using headless::HostSession;

EditorReactor::~EditorReactor() = default;
void EditorReactor::commandWillStart(std::string_view) {}
void EditorReactor::commandEnded(std::string_view) {}
void EditorReactor::commandCancelled(std::string_view) {}

int getPoint(const Point3d* basePoint, std::string_view prompt, Point3d& result) {
  return HostSession::instance().getPoint(basePoint, prompt, result, false);
}

int getCorner(const Point3d& basePoint, std::string_view prompt, Point3d& result) {
  return HostSession::instance().getPoint(&basePoint, prompt, result, true);
}

int grDraw(const Point3d& from, const Point3d& to, int colorIndex, bool highlight) {
  headless::HeadlessDocument* document = HostSession::instance().current();
  if (!document) return RTERROR;
  document->view.vectors.push_back({from, to, colorIndex, highlight});
  return RTNORM;
}

int ssGet(std::string_view mode, std::vector<ObjectId>& ids) {
  ids.clear();
  if (mode != "X" && mode != "x") return RTREJ;
  headless::HeadlessDocument* document = HostSession::instance().current();
  if (!document) return RTERROR;
  const Database& db = document->database();
  for (ObjectId block : db.blockRecordIds()) {
    const BlockRecord record = db.blockRecord(block);
    if (record.objectId() != db.modelSpaceId() && !record.isLayout()) continue;
    for (ObjectId id : record.entityIds()) ids.push_back(id);
  }
  return ids.empty() ? RTERROR : RTNORM;
}

ErrorStatus setVisibility(Document* document, ObjectId id, bool visible) {
  HostSession& session = HostSession::instance();
  headless::HeadlessDocument* found = session.find(document);
  if (!found) return ErrorStatus::eInvalidInput;
  if (found->locks.empty() && session.inApplicationContext()) return ErrorStatus::eLockViolation;
  const ErrorStatus status = found->database().setVisibility(id, visible);
  if (status == ErrorStatus::eOk) found->markModified();
  return status;
}

void fail(std::string_view message) { printToCommandLine("\n; 错误: " + std::string(message) + "\n"); }

}  // namespace platform
