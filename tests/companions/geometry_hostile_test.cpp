// The geometry companion with numbers that no model has: NaN, infinities, the limits of double.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "companions/geometry/boxes.h"
#include "companions/geometry/transforms.h"
#include "tests/geometry_print.h"

namespace {

using kvtest::ExpectNear;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();

TEST(GeometryHostile, DirectionIsOfLengthOneOrNone) {
  const double root = std::sqrt(0.5);
  const struct {
    FRVector vector, wanted;
  } rows[] = {
      {{0, 3e-7, 4e-7}, {0, 0.6, 0.8}},
      {{kNaN, 1, 0}, {}},
      {{kInfinity, 0, 0}, {}},
      {{kLargest, 0, 0}, {1, 0, 0}},
      {{kLargest, 0, -kLargest}, {root, 0, -root}},
      {{1e-320, 0, 0}, {}},
      {{RESNOR, 0, 0}, {1, 0, 0}},
      {{RESNOR * 0.99, 0, 0}, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.vector));
    ExpectNear(normalise(row.vector), row.wanted, 1e-15);
    ExpectNear(FRVector(row.vector).normalize(), row.wanted, 1e-15);
    EXPECT_EQ(parallel(row.vector, row.vector), row.wanted.len() > 0);
  }
}

TEST(GeometryHostile, NoToleranceLeavesZeroWithoutDirection) {
  const double former = RESNOR;
  for (const double tolerance : {0.0, -1.0, kNaN}) {
    RESNOR = tolerance;
    EXPECT_EQ(normalise(FRVector()).len(), 0.0) << tolerance;
    EXPECT_EQ(GetRotateTransf(1, FRVector()).affine().element(0, 0), 1.0) << tolerance;
  }
  RESNOR = former;
}

TEST(GeometryHostile, AxisWithoutDirectionGivesTheIdentity) {
  for (const FRVector& axis : {FRVector(), FRVector(kNaN, 0, 1), FRVector(0, kInfinity, 0), FRVector(1e-11, 0, 0)}) {
    EXPECT_EQ(GetRotateTransf(1, axis), FRTransf()) << testing::PrintToString(axis);
    EXPECT_EQ(get_transform_to_xy_plane(normalise(axis), {1, 2, 3}), GetTranslateTransf({-1, -2, -3}));
  }
  ExpectNear(FRPosition(1, 0, 0) * GetRotateTransf(PI_2, {0, 0, kLargest}), {0, 1, 0}, 1e-15);
}

TEST(GeometryHostile, WhatHasNoInverseGivesTheIdentity) {
  const FRVector x(1, 0, 0), y(0, 1, 0);
  const FRTransf rows[] = {
      FRTransf(FRMatrix(x, y, {0, 0, kNaN}), {}, 1, 0, 0, 0),
      FRTransf(FRMatrix(x, y, {1, 1, 0}), {1, 1, 1}, 1, 0, 0, 0),
      FRTransf(FRMatrix(), {kNaN, 0, 0}, 1, 0, 0, 0),
      FRTransf(FRMatrix(), {0, kInfinity, 0}, 1, 0, 0, 0),
      FRTransf(FRMatrix(), {1, 2, 3}, 0, 0, 0, 0),
      FRTransf(FRMatrix(x, x, {0, 0, 1}), {1, 1, 1}, 1, 0, 0, 1),
      FRTransf(FRMatrix(), {1, 2, 3}, kNaN, 0, 0, 0),
      FRTransf(FRMatrix(), {1, 2, 3}, 1e-310, 0, 0, 0),
  };
  for (const FRTransf& transform : rows) EXPECT_EQ(transform.inverse(), FRTransf()) << &transform - rows;
  const FRTransf thin(FRMatrix(x, y, {0, 0, 1e-9}), {1, 2, 3}, 1, 0, 0, 0);
  ExpectNear(FRPosition(5, 6, 7) * thin * thin.inverse(), {5, 6, 7}, 1e-6);
}

TEST(GeometryHostile, NumbersThatAreNotFiniteEqualNothing) {
  const FRTransf far = GetTranslateTransf({kInfinity, 0, 0});
  EXPECT_FALSE(FRPosition(kNaN, 0, 0) == FRPosition(kNaN, 0, 0));
  EXPECT_FALSE(far == far);
  EXPECT_FALSE(GetRotateTransf(kNaN, FRZAxis) == FRTransf());
}

TEST(GeometryHostile, NoNumberWidensABox) {
  const FRPosition points[] = {{kNaN, 2, 3}, {1, kNaN, 5}, {-1, 7, kNaN}};
  int order[] = {0, 1, 2};
  do {
    const FRPosition shuffled[] = {points[order[0]], points[order[1]], points[order[2]]};
    EXPECT_EQ(CreateBoxFromPoints(shuffled, 3).low(), FRPosition(-1, 2, 3));
    EXPECT_EQ(CreateBoxFromPoints(shuffled, 3).high(), FRPosition(1, 7, 5));
  } while (std::next_permutation(order, order + 3));
  const FRBox box({kNaN, 0, 4}, {5, kNaN, 1});
  EXPECT_EQ(box.low(), FRPosition(5, 0, 1));
  EXPECT_EQ(box.high(), FRPosition(5, 0, 4));
  EXPECT_EQ(box.y_range().end_pt(), 0.0);
  EXPECT_EQ(CreateBoxFromPoints(nullptr, 3).high(), FRPosition());
  EXPECT_EQ(CreateBoxFromPoints(points, -1).low(), FRPosition());
}

}  // namespace
