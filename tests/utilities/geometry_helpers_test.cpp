// Frames, components of transforms, boxes and angles, compared with computations by hand.
#include "share/utilities/geometry_helpers.h"

#include <limits>

#include "tests/geometry_print.h"
#include "tests/random_geometry.h"

namespace {

using kvtest::ExpectNear;
using kvtest::TurnByHand;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Dot(const FRVector& a, const FRVector& b) { return a.x() * b.x() + a.y() * b.y() + a.z() * b.z(); }

using XYFrames = kvtest::RandomGeometry;
using Components = kvtest::RandomGeometry;
using Angles = kvtest::RandomGeometry;

// ---- frames

TEST_F(XYFrames, XDirectionFrameGivesCoordinatesAlongItsAxes) {
  for (int round = 0; round < 500; ++round) {
    const FRUnitVector normal = Direction(), x = normalise(normal * Direction());
    const FRPosition origin(Number(-9, 9), Number(-9, 9), Number(-9, 9));
    const FRPosition p(Number(-9, 9), Number(-9, 9), Number(-9, 9));
    const FRVector from = p - origin;
    // Y is Z x X, with Z the normal or its opposite.
    const FRVector y = FRVector(normal) * x;
    ExpectNear(p * GetXYTransform(normal, origin, x), {Dot(from, x), -Dot(from, y), -Dot(from, normal)}, 1e-7);
    ExpectNear(p * GetTransformToTurnXY(normal, origin, x), {Dot(from, x), Dot(from, y), Dot(from, normal)}, 1e-7);
  }
}

TEST_F(XYFrames, AngleFrameIsMoveThenTiltThenTurnAboutMinusZ) {
  for (int round = 0; round < 500; ++round) {
    const FRUnitVector normal = Direction();
    const double angle = Number(-7, 7);
    const FRPosition origin(Number(-9, 9), Number(-9, 9), Number(-9, 9));
    const FRPosition p(Number(-9, 9), Number(-9, 9), Number(-9, 9));
    const FRVector across(-normal.y(), normal.x(), 0);  // -normal x Z
    const FRUnitVector axis = normalise(across);
    FRPosition wanted = FRPosition() + (p - origin);
    wanted = TurnByHand(wanted, axis, std::acos(-normal.z()));
    wanted = TurnByHand(wanted, {0, 0, -1}, angle);
    ExpectNear(p * GetXYTransform(normal, origin, angle), wanted, 1e-7);
  }
}

TEST(XYFrameAlongTheAxes, HalfTurnsAreAboutYAndZ) {
  const FRPosition origin(10, 20, 30), p(11, 22, 33);  // (1, 2, 3) from the origin
  const FRUnitVector x = FRXAxis, z = FRZAxis;
  const std::tuple<const char*, FRTransf, FRPosition> rows[] = {
      {"down, quarter turn about -Z", GetXYTransform(-z, origin, PI_2), {2, -1, 3}},
      {"up: half turn about Y", GetXYTransform(z, origin, 0.0), {-1, 2, -3}},
      {"down, -X to X: half turn about Z", GetXYTransform(-z, origin, -x), {-1, -2, 3}},
      {"up, X to X: half turns about Y and Z", GetXYTransform(z, origin, x), {1, -2, -3}},
      {"no normal, no X direction", GetXYTransform(FRUnitVector(), origin, FRUnitVector()), {1, 2, 3}},
      {"turning, down: half turn about Y", GetTransformToTurnXY(-z, origin, -x), {-1, 2, -3}},
  };
  for (const auto& [what, transform, wanted] : rows) {
    SCOPED_TRACE(what);
    ExpectNear(p * transform, wanted, 1e-14);
  }
}

// An X direction that is almost opposite to the X axis must keep its half turn.
TEST(XYFrameAlongTheAxes, DirectionsNearAnAxisCountAsIt) {
  for (const double off : {1e-9, 1e-5}) {
    SCOPED_TRACE(off);
    ExpectNear(FRPosition(1, 2, 3) * GetXYTransform(-FRZAxis, {}, FRUnitVector(-1, off, 0)), {-1, -2, 3}, 3 * off);
    // Here the common perpendicular would be Y, and the half turn would flip the plane.
    ExpectNear(FRPosition(1, 2, 3) * GetXYTransform(-FRZAxis, {}, FRUnitVector(-1, 0, off)), {-1, -2, 3}, 1e-14);
    // Near the half turn about Y, the tilt is about the common perpendicular, here X.
    ExpectNear(FRPosition(1, 2, 3) * GetXYTransform(FRUnitVector(0, off, 1), {}, FRXAxis), {1, -2, -3}, 4 * off);
  }
  const FRPosition far(0, 1000, 0);
  EXPECT_EQ((far * GetXYTransform(FRUnitVector(0, 1e-5, -1), {}, FRXAxis)).z(), 0.0);
  EXPECT_EQ((far * GetTransformToTurnXY(FRUnitVector(0, 4e-5, 1), {}, FRXAxis)).z(), 0.0);
  EXPECT_NE((far * GetXYTransform(FRUnitVector(0, 4e-5, -1), {}, FRXAxis)).z(), 0.0);
}

// ---- components of transforms

TEST_F(Components, AxisAndAngleComeBack) {
  const double angles[] = {1e-9, 1e-7, 1e-4, 0.5, 1.5707, 2.0, 2.1, 3, PI - 1e-4, PI - 1e-7, PI - 1e-9};
  for (int round = 0; round < 300; ++round) {
    const FRUnitVector axis = Direction();
    const double angle = round % 2 ? angles[round / 2 % std::size(angles)] : Number(0.001, 3.14);
    const auto row = [&](const FRPosition& p) { return TurnByHand(p, axis, angle) - FRPosition(); };
    const FRTransf transform(FRMatrix(row({1, 0, 0}), row({0, 1, 0}), row({0, 0, 1})), {4, 5, 6}, 7, 1, 0, 0);
    FRUnitVector gotAxis;
    double gotAngle = -1;
    FRVector gotMove;
    EXPECT_EQ(ExtractTransformComponents(transform, gotAxis, gotAngle, gotMove), 1);
    EXPECT_NEAR(gotAngle, angle, 1e-14);
    ExpectNear(gotAxis, axis, angle < 1e-6 ? 1e-6 : 1e-12);
    EXPECT_EQ(gotMove, FRVector(4, 5, 6));
    ExpectNear(FRPosition(1, 2, 3) * GetRotateTransf(gotAngle, gotAxis), TurnByHand({1, 2, 3}, axis, angle), 1e-14);
  }
}

TEST_F(Components, HalfTurnsHaveOneOfTheirTwoAxes) {
  for (int round = 0; round < 200; ++round) {
    const FRUnitVector axis = Direction();
    const FRTransf transform = GetRotateTransf(PI - round % 3 * 3e-11, axis);
    FRUnitVector got;
    double angle = -1;
    FRVector move;
    EXPECT_EQ(ExtractTransformComponents(transform, got, angle, move), 1);
    EXPECT_NEAR(angle, PI, RESNOR);
    EXPECT_NEAR(std::abs(Dot(got, axis)), 1, 1e-14);
    EXPECT_NEAR(std::abs(Dot(GetRotationAxisForPIRotation(transform.affine()), axis)), 1, 1e-14);
  }
}

TEST(ComponentsOfMatrices, AreThoseOfRotationsAndOfFlips) {
  const FRUnitVector none;
  const FRVector move(1, 2, 3);
  const auto transform = [&](const FRMatrix& matrix) { return FRTransf(matrix, move, 1, 0, 0, 0); };
  const auto diagonal = [&](double x, double y, double z) {
    return transform(FRMatrix({x, 0, 0}, {0, y, 0}, {0, 0, z}));
  };
  const std::tuple<const char*, FRTransf, int, FRUnitVector, double> rows[] = {
      {"identity", diagonal(1, 1, 1), 1, none, 0},
      {"x and z flipped", diagonal(-1, 1, -1), 1, FRYAxis, PI},
      {"y and z flipped", diagonal(1, -1, -1), 1, FRXAxis, PI},
      {"flipped and stretched", diagonal(-2, -3, 5), 1, FRZAxis, PI},
      {"one flipped is a mirror", diagonal(-1, 1, 1), 0, none, 0},
      {"no number", diagonal(1, kNaN, 1), 0, none, 0},
      {"the other way", transform(FRMatrix({0, -1, 0}, {1, 0, 0}, {0, 0, 1})), 1, -FRZAxis, PI_2},
      {"too small", transform(FRMatrix({1, 5e-11, 0}, {-5e-11, 1, 0}, {0, 0, 1})), 1, none, 0},
  };
  for (const auto& [what, given, result, wantedAxis, wantedAngle] : rows) {
    SCOPED_TRACE(what);
    FRUnitVector axis(1, 2, 3);
    double angle = -1;
    FRVector gotMove;
    EXPECT_EQ(ExtractTransformComponents(given, axis, angle, gotMove), result);
    ExpectNear(axis, wantedAxis, 1e-15);
    EXPECT_NEAR(angle, wantedAngle, 1e-15);
    EXPECT_EQ(gotMove, move);
  }
  EXPECT_EQ(GetRotationAxisForPIRotation(diagonal(-1, -1, -1).affine()).len(), 0.0);
}

TEST(ComponentsOfMatrices, PureRotationIsWithinTheTolerance) {
  const FRVector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  const std::tuple<const char*, FRMatrix, int> rows[] = {
      {"axes in turn", FRMatrix(y, z, x), 1},
      {"axes swapped", FRMatrix(y, x, z), 0},
      {"first row too long", FRMatrix({1.000002, 0, 0}, y, z), 0},
      {"last row just fits", FRMatrix(x, y, {0, 0, 1.0000009}), 1},
      {"first and third lean", FRMatrix(x, y, {2e-6, 0, 1}), 0},
      {"second and third lean", FRMatrix(x, y, {0, 2e-6, 1}), 0},
  };
  for (const auto& [what, matrix, wanted] : rows) EXPECT_EQ(IsPureRotationMatrix(matrix), wanted) << what;
}

// ---- boxes

TEST(BoxHelpers, BoxOfTheTransformedBox) {
  FRBox result;
  TransformBox(FRBox({1, 2, 3}, {4, 6, 8}), GetRotateTransf(PI_2, FRZAxis) * GetTranslateTransf({0, 0, 10}), result);
  ExpectNear(result.low(), {-6, 1, 13}, 1e-14);
  ExpectNear(result.high(), {-2, 4, 18}, 1e-14);
  FRBox cube({-1, -1, -1}, {1, 1, 1});
  TransformBox(cube, GetRotateTransf(PI / 4, FRZAxis), cube);
  ExpectNear(cube.high(), {std::sqrt(2), std::sqrt(2), 1}, 1e-15);
}

TEST(BoxHelpers, BoundingBoxHasHalfTheSizeAndTheMarginOnEachSide) {
  const double size[] = {2, 4, 6};
  const FRBox box = CreateBoundingBox(size, {10, 20, 30}, 0.5);
  EXPECT_EQ(box.low(), FRPosition(8.5, 17.5, 26.5));
  EXPECT_EQ(box.high(), FRPosition(11.5, 22.5, 33.5));
  EXPECT_EQ(CreateBoundingBox(nullptr, {1, 2, 3}, 1).high(), FRPosition(2, 3, 4));
}

// ---- directions and angles

TEST(Angle, IsSeenAlongThePlanesNormal) {
  const FRUnitVector x = FRXAxis, y = FRYAxis, z = FRZAxis, none;
  const std::tuple<const char*, FRUnitVector, FRUnitVector, FRUnitVector, double> rows[] = {
      {"as they are", x, y, none, PI_2},
      {"against the normal", x, y, -z, 0},
      {"opposite", x, -x, -z, PI},
      {"lifted, as they are", FRUnitVector(1, 0, 1), FRUnitVector(0, 1, 1), none, PI / 3},
      {"along the normal", z, x, z, PI_2},
  };
  for (const auto& [what, a, b, plane, wanted] : rows) EXPECT_NEAR(CalculateAngle(a, b, plane), wanted, 1e-7) << what;
}

TEST_F(Angles, AngleOfRandomTurns) {
  for (int round = 0; round < 300; ++round) {
    const FRUnitVector plane = Direction(), a = normalise(plane * Direction());
    const double angle = Number(0.01, 3.13);
    const FRVector to = TurnByHand(FRPosition() + a, plane, angle) - FRPosition();
    const FRVector lifted(to.x() + plane.x() * 3, to.y() + plane.y() * 3, to.z() + plane.z() * 3);
    EXPECT_NEAR(CalculateAngle(a, normalise(lifted), plane), angle, 1e-9);
    EXPECT_NEAR(CalculateAngle(normalise(lifted), a, plane), PI_2 - angle, 1e-9);
  }
}

TEST(Projection, LiesInThePlaneAndIsADirectionOrZero) {
  ExpectNear(project_uv_on_plane(FRUnitVector(3, 4, 12), FRZAxis), {0.6, 0.8, 0}, 1e-15);
  EXPECT_EQ(project_uv_on_plane(FRUnitVector(), FRZAxis).len(), 0.0);
  EXPECT_EQ(project_uv_on_plane(FRZAxis, -FRZAxis).len(), 0.0);
  EXPECT_EQ(project_uv_on_plane(FRXAxis, FRUnitVector()), FRXAxis);
}

TEST(Perpendicular, DividesByTheLastComponentThatIsThere) {
  const FRUnitVector rows[][2] = {{FRUnitVector(1, 2, 4), FRUnitVector(1, 1, -0.75)},
                                  {FRUnitVector(3, 1, 0), FRUnitVector(1, -3, 1)},
                                  {FRUnitVector(-1, 0, 0), FRUnitVector(0, 1, 1)},
                                  {FRUnitVector(1, 0, 1e-7), FRUnitVector(-1e-7, 1, 1)}};
  for (const auto& [a, wanted] : rows) {
    FRUnitVector b, c;
    EXPECT_EQ(GetPerpendicularVector(a, &b, &c), 1);
    ExpectNear(b, wanted, 1e-15);
    ExpectNear(c, normalise(a * wanted), 1e-15);
  }
  FRUnitVector a(1, 2, 4), c;
  EXPECT_EQ(GetPerpendicularVector(a, &a, &c), 1);
  ExpectNear(a * c, FRUnitVector(1, 2, 4), 1e-15);  // b x c is the former a
  c = FRYAxis;
  FRUnitVector b;
  EXPECT_EQ(GetPerpendicularVector(FRUnitVector(), &b, &c), 0);
  EXPECT_EQ(GetPerpendicularVector(FRXAxis, nullptr, &c), 0);
  EXPECT_EQ(GetPerpendicularVector(FRXAxis, &b, nullptr), 0);
  EXPECT_EQ(c, FRYAxis) << "zero or a missing result leaves the second alone";
}

}  // namespace
