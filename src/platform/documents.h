// The host's document manager: one document per open drawing, locking, the application context and
// command strings queued to a document.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"

namespace platform {

// Document lock modes, with the host's values.
enum class LockMode : int { kNone = 0x0, kAutoWrite = 0x1, kNotLocked = 0x2, kWrite = 0x4, kRead = 0x20, kXWrite = 0x40 };

// An open drawing of the host (AcApDocument). It owns its database.
class Document {
 public:
  virtual ~Document();
  // The full path it was opened from, and the title its window shows (the file's name).
  virtual const std::string& fileName() const = 0;
  virtual const std::string& docTitle() const = 0;
  virtual Database& database() = 0;
  virtual const Database& database() const = 0;
  // DBMOD: the document's modification bits (0 unchanged); push keeps the value, pop brings back the one
  // pushed last (no effect when nothing was pushed).
  virtual int dbmod() const = 0;
  virtual void pushDbmod() = 0;
  virtual void popDbmod() = 0;
  // The strongest lock held on it (kNotLocked when none).
  virtual LockMode lockMode() const = 0;
};

// curDocument: the document whose command (or queued string) runs, else the active document; null when no
// document is open.
Document* curDocument();
// mdiActiveDocument: the document the user works in.
Document* mdiActiveDocument();
// newAcApDocumentIterator: the open documents in the order they were opened.
std::vector<Document*> documents();
// setCurDocument with activation: makes the document the active one.
ErrorStatus activateDocument(Document* document);

// lockDocument / unlockDocument: locks nest; eLockViolation when unlocking what is not locked.
ErrorStatus lockDocument(Document* document, LockMode mode = LockMode::kWrite);
ErrorStatus unlockDocument(Document* document);

// isApplicationContext: true outside every document's command (and inside session commands).
bool isApplicationContext();
// executeInApplicationContext: runs the function in the application context and returns when it is done.
void executeInApplicationContext(const std::function<void()>& function);
// appContextOpenDocument: opens a drawing as a new document and makes it active; eInvalidContext outside
// the application context, eFileAccessErr when the file cannot be read (the reason is printed).
ErrorStatus appContextOpenDocument(std::string_view path);

// sendStringToExecute: queues text to a document as if typed there. The host runs queued text in order
// once the document's command in progress, if any, asks for input or ends: U+0003 cancels the command that
// runs, a line feed or a blank ends a command name or an answer. With echo the text shows on the command
// line; with activate the document becomes the active one.
ErrorStatus sendStringToExecute(Document* document, std::string_view text, bool activate = true,
                                bool wrapUpInactiveDoc = false, bool echo = true);

}  // namespace platform
