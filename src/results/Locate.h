// Where a difference record is shown: the zoom windows of both drawings and the rectangle that frames it.
#pragma once

#include <string>

#include "comparers/DiffRecord.h"
#include "platform/geometry.h"

// An axis-aligned window in drawing coordinates (x, y).
struct DrawingWindow {
  double minX = 0, minY = 0, maxX = 0, maxY = 0;
  bool operator==(const DrawingWindow&) const = default;
};

struct LocateWindows {
  DrawingWindow source;
  DrawingWindow destination;
};

struct RecordSize {
  double width = 0, height = 0;
};

// The record's size for framing: its width and height, each taken as 10.0 when below 5.0.
RecordSize FramedSize(const CDiffType& record);

// The windows both drawings zoom to: the record's extents plus each drawing's offset, with each side 1.3
// framed sizes beyond the record. A record of an unknown kind is placed at the origin in both.
LocateWindows ComputeLocateWindows(const CDiffType& record, const platform::Point3d& sourceOffset,
                                   const platform::Point3d& destinationOffset);

// The command text that zooms a drawing to a window: a cancel, then ZOOM Window with two decimals.
std::string ZoomWindowCommand(const DrawingWindow& window);

// The rectangle that frames a record in a drawing: its extents plus the offset, with a margin of a
// twentieth of the framed size on each side.
DrawingWindow DifferenceRectangle(const CDiffType& record, const platform::Point3d& offset);

// The colour index of a record's rectangle: changed 3, added 1, deleted 2; 0 (nothing drawn) otherwise.
int RectangleColour(int kind);
