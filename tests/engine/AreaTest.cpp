// The compare-area tests: the whole-drawing test and the entity-against-area rules at their tolerance.
#include <gtest/gtest.h>

#include "engine/DrawingRecord.h"

using platform::Extents3d;
using platform::Point3d;

TEST(WholeDrawing, EqualCornersWithinTheToleranceInEveryAxis) {
  EXPECT_TRUE(IsWholeDrawing({0, 0, 0}, {0, 0, 0}));
  EXPECT_TRUE(IsWholeDrawing({1, 1, 1}, {1.00005, 1, 1}));
  EXPECT_FALSE(IsWholeDrawing({1, 1, 1}, {1.0002, 1, 1}));
  EXPECT_FALSE(IsWholeDrawing({0, 0, 0}, {0, 0, 0.5}));  // z alone differs: an area, not the whole drawing
}

TEST(AreaTest, InsideCrossingTouchingPass) {
  const Point3d a1(0, 0, 0), a2(10, 10, 0);
  EXPECT_TRUE(PassesAreaTest(Extents3d({2, 2, 0}, {3, 3, 0}), a1, a2));      // inside
  EXPECT_TRUE(PassesAreaTest(Extents3d({8, 8, 0}, {12, 12, 0}), a1, a2));    // crosses the border
  EXPECT_TRUE(PassesAreaTest(Extents3d({10, 2, 0}, {12, 3, 0}), a1, a2));    // touches it
  EXPECT_TRUE(PassesAreaTest(Extents3d({-5, 2, 0}, {0, 3, 0}), a1, a2));     // touches the left side
  EXPECT_TRUE(PassesAreaTest(Extents3d({3, 3, 0}, {2, 2, 0}), {10, 10, 0}, {0, 0, 0}));  // corners in any order
  EXPECT_TRUE(PassesAreaTest(Extents3d({10.00005, 2, 0}, {12, 3, 0}), a1, a2));  // less than 0.0001 away
}

TEST(AreaTest, GapsAndSurroundingFramesFail) {
  const Point3d a1(0, 0, 0), a2(10, 10, 0);
  EXPECT_FALSE(PassesAreaTest(Extents3d({11, 2, 0}, {12, 3, 0}), a1, a2));
  EXPECT_FALSE(PassesAreaTest(Extents3d({10.0002, 2, 0}, {12, 3, 0}), a1, a2));
  // A gap of exactly the tolerance fails, as does a separation of exactly +0.0001 (an overlap that thin).
  EXPECT_FALSE(PassesAreaTest(Extents3d({0.0001, -3, 0}, {2, -2, 0}), {-10, -10, 0}, {0, 0, 0}));
  EXPECT_TRUE(PassesAreaTest(Extents3d({0.00009, -3, 0}, {2, -2, 0}), {-10, -10, 0}, {0, 0, 0}));
  EXPECT_FALSE(PassesAreaTest(Extents3d({-5, 2, 0}, {0.0001, 3, 0}), a1, a2));
  // A frame round the whole area with room on every side is not compared; one flush with a side is.
  EXPECT_FALSE(PassesAreaTest(Extents3d({-1, -1, 0}, {11, 11, 0}), a1, a2));
  EXPECT_TRUE(PassesAreaTest(Extents3d({0, -1, 0}, {11, 11, 0}), a1, a2));
  // Z plays no part.
  EXPECT_TRUE(PassesAreaTest(Extents3d({2, 2, 100}, {3, 3, 200}), a1, a2));
}
