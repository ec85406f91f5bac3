// The compare area and base-point prompts.
#include "shell/ComparePrompts.h"

#include <algorithm>

#include "platform/documents.h"
#include "platform/editor.h"

namespace {

void makeCurrent(const CDrawingRecord& record) {
  if (record.document) platform::activateDocument(static_cast<platform::Document*>(record.document));
}

}  // namespace

void AskCompareArea(CDrawingRecord& record) {
  makeCurrent(record);
  for (;;) {
    platform::Point3d first;
    if (platform::getPoint(nullptr, kAreaFirstPrompt, first) != platform::RTNORM) {
      record.areaCorner1 = platform::Point3d();
      record.areaCorner2 = platform::Point3d();
      return;
    }
    platform::Point3d second;
    if (platform::getCorner(first, kAreaCornerPrompt, second) != platform::RTNORM) return;
    // A rectangle of no size would mean the whole drawing: ask for one again.
    if (IsWholeDrawing(first, second)) continue;
    record.areaCorner1 = {std::min(first.x, second.x), std::min(first.y, second.y), std::min(first.z, second.z)};
    record.areaCorner2 = {std::max(first.x, second.x), std::max(first.y, second.y), std::max(first.z, second.z)};
    return;
  }
}

void AskBasePoint(CDrawingRecord& record) {
  makeCurrent(record);
  platform::Point3d point;
  record.basePoint = platform::getPoint(nullptr, kBasePointPrompt, point) == platform::RTNORM ? point : platform::Point3d();
}
