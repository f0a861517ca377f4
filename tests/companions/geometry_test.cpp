// The geometry companion: the row-vector convention, transforms, tolerances and boxes; and numbers that no model has:
// NaN, infinities, the limits of double.
#include <algorithm>
#include <limits>
#include <random>
#include <type_traits>

#include "companions/geometry/boxes.h"
#include "companions/geometry/transforms.h"
#include "tests/geometry_print.h"
#include "tests/scratch.h"

namespace {

using kvtest::ExpectNear;

static_assert(std::is_trivially_copyable_v<FRVector> && sizeof(FRVector) == 3 * sizeof(double));
static_assert(std::is_trivially_copyable_v<FRUnitVector> && sizeof(FRUnitVector) == 3 * sizeof(double));

TEST(Geometry, EqualityIsWithinTheToleranceThatIsInForce) {
  const FRPosition origin;
  EXPECT_EQ(origin, FRPosition(0.9e-6, 0, 0));
  EXPECT_FALSE(origin == FRPosition(0.9e-6, 0.9e-6, 0));
  RESABS = 1e-3;
  EXPECT_EQ(origin, FRPosition(0.9e-6, 0.9e-6, 0));
  RESABS = 1e-6;
  EXPECT_FALSE(FRXAxis == FRUnitVector(1, 1e-9, 0));
  EXPECT_TRUE(FRVector(1, 0, 0) == FRVector(1, 1e-9, 0));
}

TEST(Geometry, ParallelGivesTheSense) {
  const std::tuple<FRVector, FRVector, int> rows[] = {
      {{1, 2, 3}, {2, 4, 6}, 1},     {{1, 2, 3}, {-2, -4, -6}, -1}, {{1, 0, 0}, {1, 1e-9, 0}, 0},
      {{1, 0, 0}, {1, 1e-11, 0}, 1}, {{0, 0, 0}, {1, 0, 0}, 0},     {{1e-5, 0, 0}, {1e5, 0, 0}, 1},
  };
  for (const auto& [a, b, wanted] : rows)
    EXPECT_EQ(parallel(a, b), wanted) << testing::PrintToString(a) << " and " << testing::PrintToString(b);
}

TEST(Geometry, MatrixRowsAreTheImagesOfTheAxes) {
  FRMatrix matrix({1, 2, 3}, {4, 5, 6}, {7, 8, 9});
  EXPECT_EQ(matrix.element(0, 2), 3.0);
  EXPECT_EQ(matrix.transpose().element(0, 2), 7.0);
  EXPECT_EQ(FRVector(1, 0, 0) * matrix, FRVector(1, 2, 3));
  EXPECT_EQ(FRVector(1, 10, 100) * matrix, FRVector(741, 852, 963));
  matrix.set_element(0, 2, -3);
  EXPECT_EQ((matrix * GetScalingMatrix(2)).element(0, 2), -6.0);
}

TEST(Geometry, LeftFactorActsFirst) {
  const FRTransf turn = GetRotateTransf(PI_2, FRZAxis);
  const FRTransf move = GetTranslateTransf({10, 0, 0});
  ExpectNear(FRPosition(1, 0, 0) * (move * turn), {0, 11, 0}, 1e-14);
  ExpectNear(FRPosition(1, 0, 0) * (move * GetScaleTransf(2)), {22, 0, 0}, 0);
  EXPECT_EQ(FRXAxis * (turn * move * GetScaleTransf(7)), FRYAxis);
}

TEST(Geometry, ProductsOfRandomTransformsAssociateAndInvert) {
  std::mt19937 random(kvtest::PrintedSeed());
  std::uniform_real_distribution<double> number(-10, 10);
  const auto transform = [&] {
    FRMatrix shear;
    shear.set_element(0, 1, number(random) / 20);
    return GetRotateTransf(number(random), {number(random), number(random), 11}) *
           FRTransf(shear, FRVector(), 1, 0, 0, 1) * GetScaleTransf(0.1 + std::abs(number(random))) *
           GetTranslateTransf({number(random), number(random), number(random)});
  };
  for (int round = 0; round < 200; ++round) {
    const FRTransf a = transform(), b = transform();
    const FRPosition p(number(random), number(random), number(random));
    ExpectNear(p * (a * b), (p * a) * b, 1e-9);
    ExpectNear(p * a * a.inverse(), p, 1e-9);
  }
}

TEST(Geometry, FlagsCombineInProducts) {
  const FRTransf mirror(FRMatrix({-1, 0, 0}, {0, 1, 0}, {0, 0, 1}), FRVector(), 1, 0, 1, 0);
  EXPECT_EQ(mirror.get_reflect_flag(), 1);
  EXPECT_EQ((mirror * mirror).get_reflect_flag(), 0);
  EXPECT_EQ((mirror * GetRotateTransf(1, FRXAxis)).get_rotate_flag(), 1);
}

TEST(Geometry, PlaneTransformTakesNormalToZAndPositionToOrigin) {
  const FRPosition position(3, -4, 5);
  const FRVector normals[] = {{0, 0, 1},     {0, 0, -1},        {1, 0, 0},   {1, 2, -3},
                              {1e-5, 0, -1}, {1e-8, -1e-8, -1}, {0, 1e-9, 1}};
  for (const FRVector& vector : normals) {
    SCOPED_TRACE(testing::PrintToString(vector));
    const FRUnitVector normal = normalise(vector);
    const FRTransf transform = get_transform_to_xy_plane(normal, position);
    ExpectNear(position * transform, FRPosition(), 1e-14);
    ExpectNear((position + normal) * transform, {0, 0, 1}, 1e-14);
    const FRMatrix square = transform.affine() * transform.affine().transpose();
    for (int i = 0; i < 9; ++i) EXPECT_NEAR(square.element(i / 3, i % 3), i / 3 == i % 3, 1e-14);
  }
  EXPECT_EQ(get_transform_to_xy_plane(FRZAxis, FRPosition()), FRTransf());
  EXPECT_EQ(FRPosition(1, 2, 3) * FRTransf(), FRPosition(1, 2, 3));
  EXPECT_EQ(get_transform_to_xy_plane(-FRZAxis, FRPosition()), GetRotateTransf(PI, FRYAxis));
}

TEST(Geometry, ProjectsOnPlane) {
  EXPECT_EQ(FRPosition(1, 2, 9).project_on_plane({0, 0, 5}, FRZAxis), FRPosition(1, 2, 5));
  EXPECT_EQ(FRPosition(1, 2, 9).project_on_plane({0, 0, 5}, FRUnitVector()), FRPosition(1, 2, 9));
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();

TEST(GeometryHostile, DirectionIsOfLengthOneOrNone) {
  const double root = std::sqrt(0.5);
  const std::pair<FRVector, FRVector> rows[] = {
      {{0, 3e-7, 4e-7}, {0, 0.6, 0.8}},
      {{kNaN, 1, 0}, {}},
      {{kInfinity, 0, 0}, {}},
      {{kLargest, 0, 0}, {1, 0, 0}},
      {{kLargest, 0, -kLargest}, {root, 0, -root}},
      {{1e-320, 0, 0}, {}},
      {{RESNOR, 0, 0}, {1, 0, 0}},
      {{RESNOR * 0.99, 0, 0}, {}},
  };
  for (const auto& [vector, wanted] : rows) {
    SCOPED_TRACE(testing::PrintToString(vector));
    ExpectNear(normalise(vector), wanted, 1e-15);
    ExpectNear(FRVector(vector).normalize(), wanted, 1e-15);
    EXPECT_EQ(parallel(vector, vector), wanted.len() > 0);
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
