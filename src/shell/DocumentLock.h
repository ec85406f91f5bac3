// A lock on the current document held for the length of a command's or a call's work.
#pragma once

#include "platform/documents.h"

class CCurrentDocumentLock {
 public:
  CCurrentDocumentLock() : document_(platform::curDocument()) {
    locked_ = document_ && platform::lockDocument(document_) == platform::ErrorStatus::eOk;
  }
  ~CCurrentDocumentLock() {
    if (locked_) platform::unlockDocument(document_);
  }
  CCurrentDocumentLock(const CCurrentDocumentLock&) = delete;
  CCurrentDocumentLock& operator=(const CCurrentDocumentLock&) = delete;

 private:
  platform::Document* document_;
  bool locked_ = false;
};
