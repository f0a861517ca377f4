// QFCamera: pixels from its formulas, borders and quirks, and 10^5 random cameras beside a model of matrices.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <limits>

#include "share/display/camera.h"
#include "tests/geometry_print.h"
#include "tests/random_geometry.h"

inline void PrintTo(const CPoint& p, std::ostream* out) { *out << '(' << p.x << ", " << p.y << ')'; }

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Details {
  FRPosition position = {0, 0, 0}, target = {0, 1, 0};
  FRUnitVector up = FRZAxis;
  double fovX = PI_2, fovZ = PI_2, distance = 1, nearPlane = 1, farPlane = 100;
  QFeCameraProjectionType type = QFeCameraPerspective;
  CRect rect = {0, 0, 200, 100};

  int Set(QFCamera& camera) const {
    return camera.SetCameraDetails(position, target, up, fovX, fovZ, distance, nearPlane, farPlane, type, rect,
                                   GetTranslateTransf({1, 2, 3}));
  }
};

TEST(Camera, RefusesAViewThatIsNone) {
  const Details valid;
  const auto with = [&](auto change) {
    Details details = valid;
    change(details);
    return details;
  };
  const std::pair<Details, int> rows[] = {
      {valid, 1},
      {with([](Details& d) {
         d.target = {1e-7, 0, 0};
       }),
       0},
      {with([](Details& d) { d.up = {}; }), 0},
      {with([](Details& d) { d.up = -FRYAxis; }), 0},
      {with([](Details& d) { d.fovX = 1e-11; }), 0},
      {with([](Details& d) { d.fovZ = kNaN; }), 0},
      {with([](Details& d) { d.distance = 0; }), 0},
      {with([](Details& d) { d.nearPlane = -1e-5; }), 0},
      {with([](Details& d) { d.nearPlane = -1e-7; }), 1},
      {with([](Details& d) { d.nearPlane = d.farPlane; }), 0},
  };
  for (const auto& [details, result] : rows) {
    QFCamera camera;
    EXPECT_EQ(camera.GetCameraStatus(), QFeCameraInvalid);
    EXPECT_EQ(details.Set(camera), result) << &details - &rows[0].first;
    EXPECT_EQ(camera.GetCameraStatus(), result ? QFeCameraValid : QFeCameraInvalid);
    EXPECT_EQ(camera.GetCameraProjectionType(), QFeCameraPerspective) << "stored in any case";
    EXPECT_EQ(camera.GetWorldToScreenTransform(), GetTranslateTransf({1, 2, 3}));
  }
  QFCamera camera;
  with([](Details& d) { d.position = {5, 0, 0}, d.target = {5, 0, -9}, d.up = FRXAxis; }).Set(camera);
  // up x d is the Y axis, d the negated Z axis, d x (up x d) the X axis: the columns of the rotation.
  kvtest::ExpectNear(FRPosition(1, 2, 3) * camera.GetCameraToWorldTransform(), {2, -3, 6}, 1e-12);
}

TEST(Camera, PixelsOfPointsAndLines) {
  QFCamera camera;
  Details().Set(camera);
  const struct {
    FRPosition point;
    int visible;
    CPoint pixel;
  } points[] = {
      {{1, 10, 2}, 1, {110, 40}},
      {{-1.234, 10, -2.99}, 1, {88, 64}},  // cut toward zero
      {{10, 10, 0}, 0, {200, 50}},         // on the border of the view
      {{9.99999, 10, 0}, 0, {199, 50}},    // within the tolerance of it
      {{9.9999, 10, 0}, 1, {199, 50}},
      {{0, 1, 0}, 0, {100, 50}},    // on the near plane
      {{0, 100, 0}, 0, {100, 50}},  // on the far plane
      {{5, 0, 3}, 0, {100, 50}},    // in the eye's plane: the centre
      {{1e300, 1, -1e300}, 0, {2147483647, 2147483647}},
      {{kNaN, 10, 0}, 0, {0, 0}},
  };
  for (const auto& row : points) {
    POINT pixel = {};
    EXPECT_EQ(camera.GetScreenCoordinatePoint(row.point, pixel), row.visible) << testing::PrintToString(row.point);
    EXPECT_EQ(CPoint(pixel), row.pixel) << testing::PrintToString(row.point);
  }
  const struct {
    FRPosition a, b;
    int clip, shown;
    CPoint pixelA, pixelB;
  } lines[] = {
      {{0, .5, 0}, {.2, .9, 0}, 1, 0, {100, 50}, {122, 50}},      // before the near plane
      {{0, 101, 0}, {20.2, 101, 0}, 1, 0, {100, 50}, {120, 50}},  // after the far plane
      {{0, 10, 0}, {20, 10, 0}, 1, 1, {100, 50}, {200, 50}},      // over the right border
      {{0, 10, -20}, {0, 10, 0}, 1, 1, {100, 100}, {100, 50}},    // over the lower border
      {{0, 10, 0}, {20, 10, 0}, 0, 1, {100, 50}, {300, 50}},      // the same, not clipped
      {{0, 0, 0}, {2, 4, 0}, 1, 1, {150, 50}, {150, 50}},         // through the near plane
      {{30, 150, 0}, {0, 50, 0}, 1, 1, {115, 50}, {100, 50}},     // through the far plane
      {{20, 10, 0}, {30, 10, 0}, 1, 0, {300, 50}, {400, 50}},     // right of the view
      {{15, 10, 5}, {5, 10, 15}, 1, 1, {200, 0}, {150, -25}},     // past the corner: not rejected
  };
  for (const auto& row : lines) {
    POINT a = {}, b = {};
    EXPECT_EQ(camera.GetScreenCoordinateLine(row.a, row.b, row.clip, a, b), row.shown) << &row - lines;
    EXPECT_EQ(CPoint(a), row.pixelA) << &row - lines;
    EXPECT_EQ(CPoint(b), row.pixelB) << &row - lines;
  }
  Details parallel;
  parallel.type = QFeCameraParallel;
  parallel.Set(camera);
  POINT pixel = {};
  EXPECT_EQ(camera.GetScreenCoordinatePoint({.5, 10, .25}, pixel), 1);
  EXPECT_EQ(CPoint(pixel), CPoint(150, 38));
}

using CameraModel = kvtest::RandomGeometry;

// The model builds one matrix from world to pixels for each camera, as graphics libraries do.
TEST_F(CameraModel, AgreesFor100000RandomCameras) {
  for (int i = 0; i < 100'000; ++i) {
    Details d;
    d.position = {Number(-50, 50), Number(-50, 50), Number(-50, 50)};
    d.up = Direction();
    const FRUnitVector view = Direction();
    if ((view * d.up).len() < 0.01) continue;
    d.target = d.position + FRVector(7 * view.x(), 7 * view.y(), 7 * view.z());
    d.fovX = Number(0.1, 3), d.fovZ = Number(0.1, 3), d.distance = Number(0.2, 2);
    d.nearPlane = Number(0, 5), d.farPlane = d.nearPlane + Number(1, 100);
    d.rect = {-40, 30, 1960, 1031};
    QFCamera camera;
    ASSERT_EQ(d.Set(camera), 1);

    const Eigen::Vector3d eye(d.position.x(), d.position.y(), d.position.z()), up(d.up.x(), d.up.y(), d.up.z());
    const Eigen::Vector3d back = -Eigen::Vector3d(view.x(), view.y(), view.z());
    Eigen::Matrix3d axes;
    axes << up.cross(back).normalized(), back.cross(up.cross(back)).normalized(), back;
    const Eigen::Affine3d look = Eigen::Affine3d(axes.transpose()) * Eigen::Translation3d(-eye);
    Eigen::Matrix4d frustum = Eigen::Matrix4d::Zero();
    frustum.diagonal() << d.distance / std::tan(d.fovX / 2), d.distance / std::tan(d.fovZ / 2), 1, 0;
    frustum(3, 2) = -1;
    const FRPosition p(Number(-100, 100), Number(-100, 100), Number(-100, 100));
    const Eigen::Vector3d seen = look * Eigen::Vector3d(p.x(), p.y(), p.z());
    const Eigen::Vector4d clip = frustum * seen.homogeneous();
    const double x = clip.x() / clip.w(), z = clip.y() / clip.w(), depth = clip.w();
    if (std::abs(depth) < 0.1) continue;

    POINT pixel = {};
    const int visible = camera.GetScreenCoordinatePoint(p, pixel);
    const double least = std::min({depth - d.nearPlane, d.farPlane - depth, 1 - std::abs(x), 1 - std::abs(z)});
    if (std::abs(least) > 1e-5) {
      EXPECT_EQ(visible, least > 0) << i;
    }
    EXPECT_NEAR(pixel.x, 960 + std::trunc(1000 * x),
                std::abs(x) * 1e-6 + (std::abs(std::remainder(1000 * x, 1)) < 1e-6));
    EXPECT_NEAR(pixel.y, 530 - std::trunc(500.5 * z),
                std::abs(z) * 1e-6 + (std::abs(std::remainder(500.5 * z, 1)) < 1e-6));
  }
}

}  // namespace
