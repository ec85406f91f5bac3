// Matrices, extents and the arbitrary-axis rule.
#include <gtest/gtest.h>

#include <cmath>

#include "platform/geometry.h"

using namespace platform;

namespace {
void expectNear(const Point3d& a, const Point3d& b) {
  EXPECT_NEAR(a.x, b.x, 1e-12);
  EXPECT_NEAR(a.y, b.y, 1e-12);
  EXPECT_NEAR(a.z, b.z, 1e-12);
}
}  // namespace

TEST(Matrix, ProductAppliesRightOperandFirst) {
  const Matrix3d base = Matrix3d::translation({-10, -20, -30});
  const Matrix3d place = Matrix3d::rotationZ(M_PI / 2);
  // base * place: first rotate, then move.
  expectNear((base * place).transform(Point3d(1, 0, 0)), Point3d(-10, -19, -30));
  expectNear((place * base).transform(Point3d(1, 0, 0)), Point3d(20, -9, -30));
  EXPECT_EQ(Matrix3d::translation({1, 2, 3}).transform(Vector3d(1, 1, 1)), Vector3d(1, 1, 1));
}

TEST(Extents, EmptyAddAndTransform) {
  Extents3d e;
  EXPECT_TRUE(e.isEmpty());
  e.addPoint({1, 2, 3});
  EXPECT_FALSE(e.isEmpty());
  EXPECT_EQ(e.min, e.max);  // a single point is a valid box of zero size
  e.addPoint({-1, 5, 0});
  EXPECT_EQ(e.min, Point3d(-1, 2, 0));
  EXPECT_EQ(e.max, Point3d(1, 5, 3));
  // A rotation by 90 degrees keeps the box of all eight corners.
  const Extents3d r = Extents3d({0, 0, 0}, {2, 1, 0}).transformed(Matrix3d::rotationZ(M_PI / 2));
  expectNear(r.min, {-1, 0, 0});
  expectNear(r.max, {0, 2, 0});
  Extents3d empty;
  empty.transformBy(Matrix3d::translation({1, 1, 1}));
  EXPECT_TRUE(empty.isEmpty());
}

TEST(ArbitraryAxis, KnownNormals) {
  // The world Z normal is the identity.
  EXPECT_TRUE(ocsToWcs(Vector3d(0, 0, 1)).isIdentity());
  // The mirrored normal turns the X axis round: Wy x (0, 0, -1) = (-1, 0, 0).
  expectNear(ocsToWcs(Point3d(1, 2, 3), {0, 0, -1}), Point3d(-1, 2, -3));
  // A normal along world X: not near Z, so Ax = Wz x N = (0, 1, 0) and Ay = N x Ax = (0, 0, 1).
  expectNear(ocsToWcs(Point3d(1, 2, 3), {1, 0, 0}), Point3d(3, 1, 2));
  // Just inside the 1/64 threshold the world Y axis is used.
  const Vector3d nearZ = Vector3d(0.015, 0, 1).normal();
  const Vector3d ax = arbitraryAxisX(nearZ);
  EXPECT_NEAR(ax.dot(nearZ), 0.0, 1e-12);
  EXPECT_GT(ax.x, 0.99);
  // A non-unit normal is normalised first.
  expectNear(ocsToWcs(Point3d(1, 2, 3), {0, 0, 5}), Point3d(1, 2, 3));
}
