// The host's editor: point prompts, temporary vectors, selection, entity visibility and editor reactors.
#pragma once

#include <string_view>
#include <vector>

#include "platform/application.h"
#include "platform/database.h"
#include "platform/geometry.h"

namespace platform {

class Document;

// Result codes of the editor's calls, with the host's values.
enum ResultCode : int {
  RTNONE = 5000,  // Enter with no input
  RTNORM = 5100,
  RTERROR = -5001,
  RTCAN = -5002,  // cancelled (U+0003, or the end of the input)
  RTREJ = -5003,  // a request the host refuses
  RTFAIL = -5004,
  RTKWORD = -5005,
  RTINPUTTRUNCATED = -5008,
};

// acedGetPoint: prints the prompt and reads a point typed as "x,y" or "x,y,z" ("@dx,dy" is relative to the
// base point when one is given). Enter gives RTNONE, a cancel RTCAN; anything else asks again.
int getPoint(const Point3d* basePoint, std::string_view prompt, Point3d& result);
// acedGetCorner: the opposite corner of a rectangle from the base point, read as getPoint does.
int getCorner(const Point3d& basePoint, std::string_view prompt, Point3d& result);

// acedGrDraw: a temporary vector in the current document's view, in a colour index, highlighted or not;
// it stays until the view is regenerated. RTERROR when no document is open.
int grDraw(const Point3d& from, const Point3d& to, int colorIndex, bool highlight);

// acedSSGet with a mode and no filter, followed by acedSSName and acdbGetObjectId for each member: the ids
// of the selected entities of the current document. Mode "X" selects every entity of the drawing's
// spaces (model space and layouts). RTNORM with at least one entity, RTERROR when nothing is selected,
// RTREJ for a mode the headless host cannot answer.
int ssGet(std::string_view mode, std::vector<ObjectId>& ids);
// AcDbEntity::setVisibility on an entity of a document opened for write: the document must be locked
// when called from the application context (eLockViolation otherwise); marks the document modified.
ErrorStatus setVisibility(Document* document, ObjectId id, bool visible);

// acdbFail: reports a failure of a module's call on the command line.
void fail(std::string_view message);

// AcEditorReactor: notifications of the editor, each given the command's global name.
class EditorReactor {
 public:
  virtual ~EditorReactor();
  virtual void commandWillStart(std::string_view globalName);
  virtual void commandEnded(std::string_view globalName);
  virtual void commandCancelled(std::string_view globalName);
};

// AcEditor: the object registered under "AcEditor" in sysRegistry(); reactors are notified in the order
// they were added.
class Editor : public RxObject {
 public:
  std::string_view isA() const override { return "AcEditor"; }
  // false when the reactor is already added (or, for removal, not there).
  virtual bool addReactor(EditorReactor* reactor) = 0;
  virtual bool removeReactor(EditorReactor* reactor) = 0;
};

}  // namespace platform
