// Angles, projections and perpendiculars, each against a computation by hand.
#include <gtest/gtest.h>

#include "share/utilities/geometry_helpers.h"
#include "tests/geometry_print.h"
#include "tests/random_geometry.h"

namespace {

using kvtest::ExpectNear;
using kvtest::TurnByHand;
using Angles = kvtest::RandomGeometry;

TEST(Angle, Cases) {
  const FRUnitVector x = FRXAxis, y = FRYAxis, z = FRZAxis, none;
  const struct {
    const char* what;
    FRUnitVector a, b, plane;
    double wanted;
  } rows[] = {
      {"as they are", x, y, none, PI_2},
      {"with the normal", x, y, z, PI_2},
      {"against the normal", x, y, -z, 0},
      {"against the normal, wide", FRUnitVector(-1, 1, 0), x, z, -PI / 4},
      {"against, as they are", FRUnitVector(-1, 1, 0), x, none, PI * 3 / 4},
      {"opposite", x, -x, -z, PI},
      {"same", x, x, -z, 0},
      {"lifted out of the plane", FRUnitVector(1, 0, 5), FRUnitVector(1, 1, -3), z, PI / 4},
      {"lifted, as they are", FRUnitVector(1, 0, 1), FRUnitVector(0, 1, 1), none, PI / 3},
      {"along the normal", z, x, z, PI_2},
  };
  for (const auto& row : rows) EXPECT_NEAR(CalculateAngle(row.a, row.b, row.plane), row.wanted, 1e-7) << row.what;
}

TEST_F(Angles, AngleOfRandomTurns) {
  for (int round = 0; round < 300; ++round) {
    const FRUnitVector plane = Direction();
    const FRUnitVector a = normalise(plane * Direction());
    const double angle = Number(0.01, 3.13);
    const FRVector to = TurnByHand(FRPosition() + a, plane, angle) - FRPosition();
    const FRVector lifted(to.x() + plane.x() * 3, to.y() + plane.y() * 3, to.z() + plane.z() * 3);
    EXPECT_NEAR(CalculateAngle(a, normalise(lifted), plane), angle, 1e-9);
    EXPECT_NEAR(CalculateAngle(normalise(lifted), a, plane), PI_2 - angle, 1e-9);
  }
}

TEST(Projection, OntoAPlane) {
  ExpectNear(project_uv_on_plane(FRUnitVector(3, 4, 12), FRZAxis), {0.6, 0.8, 0}, 1e-15);
  EXPECT_EQ(project_uv_on_plane(FRUnitVector(), FRZAxis).len(), 0.0);
  EXPECT_EQ(project_uv_on_plane(FRZAxis, -FRZAxis).len(), 0.0);
  EXPECT_EQ(project_uv_on_plane(FRXAxis, FRUnitVector()), FRXAxis);
}

TEST(Perpendicular, DividesByTheLastComponentThatIsThere) {
  const FRUnitVector rows[][2] = {
      {FRUnitVector(1, 2, 4), FRUnitVector(1, 1, -0.75)},    {FRUnitVector(0, 0, 1), FRUnitVector(1, 1, 0)},
      {FRUnitVector(3, 1, 0), FRUnitVector(1, -3, 1)},       {FRUnitVector(-1, 0, 0), FRUnitVector(0, 1, 1)},
      {FRUnitVector(1, 0, 1e-7), FRUnitVector(-1e-7, 1, 1)}, {FRUnitVector(3, 4, 4e-6), FRUnitVector(1, -0.750001, 1)},
  };
  for (const auto& [a, wanted] : rows) {
    FRUnitVector b, c;
    EXPECT_EQ(GetPerpendicularVector(a, &b, &c), 1);
    ExpectNear(b, wanted, 1e-15);
    ExpectNear(c, normalise(a * wanted), 1e-15);
  }
  FRUnitVector a(1, 2, 4), c;
  EXPECT_EQ(GetPerpendicularVector(a, &a, &c), 1);
  ExpectNear(a * c, FRUnitVector(1, 2, 4), 1e-15);  // b x c is what a was
}

TEST(Perpendicular, ZeroLeavesTheSecondAlone) {
  FRUnitVector b, c = FRYAxis;
  EXPECT_EQ(GetPerpendicularVector(FRUnitVector(), &b, &c), 0);
  EXPECT_EQ(c, FRYAxis);
  EXPECT_EQ(GetPerpendicularVector(FRXAxis, nullptr, &c), 0);
  EXPECT_EQ(GetPerpendicularVector(FRXAxis, &b, nullptr), 0);
  EXPECT_EQ(c, FRYAxis);
}

}  // namespace
