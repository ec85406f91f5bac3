// Zoom windows and rectangles of difference records.
#include "results/Locate.h"

#include "platform/text.h"

namespace {

double framed(double size) { return size < 5.0 ? 10.0 : size; }

bool knownKind(int kind) { return kind == kDiffChanged || kind == kDiffAdded || kind == kDiffDeleted; }

DrawingWindow widened(const CDiffType& record, const platform::Point3d& offset, double dw, double dh) {
  if (!knownKind(record.kind)) return {-dw, -dh, dw, dh};
  const auto& e = record.extents;
  return {e[0] + offset.x - dw, e[1] + offset.y - dh, e[3] + offset.x + dw, e[4] + offset.y + dh};
}

}  // namespace

RecordSize FramedSize(const CDiffType& record) {
  const auto& e = record.extents;
  return {framed(e[3] - e[0]), framed(e[4] - e[1])};
}

LocateWindows ComputeLocateWindows(const CDiffType& record, const platform::Point3d& sourceOffset,
                                   const platform::Point3d& destinationOffset) {
  const RecordSize size = FramedSize(record);
  const double dw = size.width * 2.6 * 0.5, dh = size.height * 2.6 * 0.5;
  return {widened(record, sourceOffset, dw, dh), widened(record, destinationOffset, dw, dh)};
}

std::string ZoomWindowCommand(const DrawingWindow& w) {
  return platform::fmt("\x03ZOOM\nW\n%.2f,%.2f\n%.2f,%.2f\n", w.minX, w.minY, w.maxX, w.maxY);
}

DrawingWindow DifferenceRectangle(const CDiffType& record, const platform::Point3d& offset) {
  const RecordSize size = FramedSize(record);
  // The factor is the double nearest to 1.1 - 1.0, as the margin has always been computed.
  const double mx = size.width * 0.10000000000000009 * 0.5, my = size.height * 0.10000000000000009 * 0.5;
  const auto& e = record.extents;
  return {e[0] + offset.x - mx, e[1] + offset.y - my, e[3] + offset.x + mx, e[4] + offset.y + my};
}

int RectangleColour(int kind) {
  switch (kind) {
    case kDiffChanged: return 3;
    case kDiffAdded: return 1;
    case kDiffDeleted: return 2;
    default: return 0;
  }
}
