// Zoom windows and rectangles: the framed size's threshold, the margins, offsets and unknown kinds.
#include <gtest/gtest.h>

#include "results/Locate.h"

namespace {

CDiffType record(int kind, double minX, double minY, double maxX, double maxY) {
  CDiffType r;
  r.kind = kind;
  r.extents = {minX, minY, 0, maxX, maxY, 0};
  return r;
}

}  // namespace

TEST(Locate, PointLikeRecordsZoomTo26UnitsAcrossAndSmallSizesCountAsTen) {
  const LocateWindows point = ComputeLocateWindows(record(kDiffChanged, 7, 8, 7, 8), {}, {});
  EXPECT_EQ(point.source, (DrawingWindow{-6, -5, 20, 21}));
  EXPECT_EQ(point.destination, point.source);
  // 4.99 wide is framed as 10 (margins of 13); 5.0 wide keeps 5.0 (margins of 6.5).
  EXPECT_DOUBLE_EQ(ComputeLocateWindows(record(kDiffAdded, 0, 0, 4.99, 5.0), {}, {}).source.minX, -13.0);
  const DrawingWindow five = ComputeLocateWindows(record(kDiffAdded, 0, 0, 5.0, 5.0), {}, {}).source;
  EXPECT_DOUBLE_EQ(five.minX, -6.5);
  EXPECT_DOUBLE_EQ(five.maxY, 11.5);
}

TEST(Locate, EachDrawingGetsItsOwnOffsetAndUnknownKindsSitAtTheOrigin) {
  const LocateWindows w = ComputeLocateWindows(record(kDiffDeleted, 0, 0, 100, 50), {10, 20, 0}, {-5, 0, 0});
  EXPECT_EQ(w.source, (DrawingWindow{10 - 130, 20 - 65, 110 + 130, 70 + 65}));
  EXPECT_EQ(w.destination, (DrawingWindow{-5 - 130, -65, 95 + 130, 50 + 65}));
  const LocateWindows unknown = ComputeLocateWindows(record(0, 1000, 1000, 1100, 1050), {10, 20, 0}, {});
  EXPECT_EQ(unknown.source, (DrawingWindow{-130, -65, 130, 65}));
  EXPECT_EQ(unknown.destination, unknown.source);
}

TEST(Locate, ZoomCommandAndRectangle) {
  EXPECT_EQ(ZoomWindowCommand({-6, -5.004, 20.126, 21}), "\x03ZOOM\nW\n-6.00,-5.00\n20.13,21.00\n");
  // Margins of a twentieth of the framed size on each side.
  const DrawingWindow r = DifferenceRectangle(record(kDiffChanged, 0, 0, 100, 2), {1, 1, 0});
  EXPECT_NEAR(r.minX, 1 - 5.0, 1e-12);
  EXPECT_NEAR(r.maxX, 101 + 5.0, 1e-12);
  EXPECT_NEAR(r.minY, 1 - 0.5, 1e-12);
  EXPECT_NEAR(r.maxY, 3 + 0.5, 1e-12);
  EXPECT_EQ(RectangleColour(kDiffChanged), 3);
  EXPECT_EQ(RectangleColour(kDiffAdded), 1);
  EXPECT_EQ(RectangleColour(kDiffDeleted), 2);
  EXPECT_EQ(RectangleColour(7), 0);
}
