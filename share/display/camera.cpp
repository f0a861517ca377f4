#include "share/display/camera.h"

#include <utility>

#include "share/display/internal/screen_points.h"

namespace {

bool IsNearZero(double value) { return value > -RESABS && value < RESABS; }

// One direction of a clip plane: the coordinate across it, the two coordinates along it.
template <class Point>
struct Plane {
  double Point::*across;
  double Point::*along[2];
  double at;
  double sign;  // 1: what is above is cut; -1: what is below is cut
};

template <class Point>
double Outside(const Point& point, const Plane<Point>& plane) {
  return plane.sign * (point.*plane.across - plane.at);
}

// Moves the end that is outside the plane onto it if the other end is inside.
template <class Point>
void Cut(Point& a, Point& b, const Plane<Point>& plane) {
  const double outA = Outside(a, plane), outB = Outside(b, plane);
  const bool crosses = (outA > RESABS && outB < -RESABS) || (outB > RESABS && outA < -RESABS);
  if (!crosses) return;
  const double part = (plane.at - a.*plane.across) / (b.*plane.across - a.*plane.across);
  Point& outer = outA > 0 ? a : b;
  Point moved = outer;
  for (double Point::*along : plane.along) moved.*along = a.*along + part * (b.*along - a.*along);
  moved.*plane.across = plane.at;
  outer = moved;
}

// True if both ends are outside the plane or on it.
template <class Point>
bool AreBothOutside(const Point& a, const Point& b, const Plane<Point>& plane) {
  return Outside(a, plane) > -RESABS && Outside(b, plane) > -RESABS;
}

template <class Point>
bool ClipToSquare(Point& a, Point& b) {
  const Plane<Point> sides[] = {{&Point::x, {&Point::y, &Point::z}, 1, 1},
                                {&Point::x, {&Point::y, &Point::z}, -1, -1},
                                {&Point::z, {&Point::x, &Point::y}, 1, 1},
                                {&Point::z, {&Point::x, &Point::y}, -1, -1}};
  for (const auto& side : sides)
    if (AreBothOutside(a, b, side)) return false;
  for (const auto& side : sides) Cut(a, b, side);
  return true;
}

}  // namespace

int QFCamera::SetCameraDetails(const FRPosition& position, const FRPosition& target, const FRUnitVector& up,
                               double fovHorizontal, double fovVertical, double viewDistance, double nearPlane,
                               double farPlane, QFeCameraProjectionType type, const CRect& rect,
                               const FRTransf& worldToScreen) {
  m_Position = position;
  m_Target = target;
  m_Up = up;
  m_FovHorizontal = fovHorizontal;
  m_FovVertical = fovVertical;
  m_ViewDistance = viewDistance;
  m_NearPlane = nearPlane;
  m_FarPlane = farPlane;
  m_ProjectionType = type;
  m_ScreenRect = rect;
  m_WorldToScreen = worldToScreen;
  m_Status = Check();
  if (m_Status != QFeCameraValid) return 0;

  const FRUnitVector depth = normalise(m_Target - m_Position);
  const FRUnitVector right = normalise(m_Up * depth);
  const FRUnitVector upward = normalise(depth * right);
  const FRMatrix rows(right, depth, upward);
  m_CameraToWorld = GetTranslateTransf(m_Position - FRPosition()) *
                    FRTransf(rows.transpose(), FRVector(), 1, /*rotate_flag=*/1, 0, 0);
  return 1;
}

// Each test also fails for a NaN.
QFeCameraStatus QFCamera::Check() const {
  const double apart = m_Position.distance(m_Target);
  const FRUnitVector depth = normalise(m_Target - m_Position);
  const bool valid = apart > RESABS && m_Up.len() >= RESABS && (m_Up * depth).len() >= RESABS &&
                     m_FovHorizontal >= RESNOR && m_FovVertical >= RESNOR && m_ViewDistance >= RESNOR &&
                     m_NearPlane >= -RESABS && m_FarPlane >= -RESABS && m_NearPlane + RESABS <= m_FarPlane;
  return valid ? QFeCameraValid : QFeCameraInvalid;
}

QFCamera::ViewPoint QFCamera::ToView(const FRPosition& position) const {
  const FRVector from_eye = position - m_Position;
  const FRUnitVector depth = normalise(m_Target - m_Position);
  const FRUnitVector right = normalise(depth * m_Up);
  const FRUnitVector upward = normalise(right * depth);
  return {from_eye % right, from_eye % depth, from_eye % upward};
}

// A point in the eye's plane gets the centre of the view.
QFCamera::ViewPoint QFCamera::Project(const ViewPoint& point) const {
  double factor = m_ViewDistance;
  if (m_ProjectionType == QFeCameraPerspective) factor = IsNearZero(point.y) ? 0 : m_ViewDistance / point.y;
  return {factor * point.x / std::tan(m_FovHorizontal / 2), point.y, factor * point.z / std::tan(m_FovVertical / 2)};
}

POINT QFCamera::ToPixels(const ViewPoint& point) const {
  const LONGLONG left = m_ScreenRect.left, right = m_ScreenRect.right;
  const LONGLONG top = m_ScreenRect.top, bottom = m_ScreenRect.bottom;
  const double x = std::trunc(double(right - left) * point.x / 2.0);
  const double y = std::trunc(double(bottom - top) * point.z / 2.0);
  const LONGLONG middle = (left + right) / 2, centre = (top + bottom) / 2;  // cut to whole pixels
  return {kvdisplay::Truncated(double(middle) + x), kvdisplay::Truncated(double(centre) - y)};
}

int QFCamera::GetScreenCoordinatePoint(const FRPosition& position, POINT& out) const {
  const ViewPoint view = ToView(position);
  const ViewPoint seen = Project(view);
  out = ToPixels(seen);
  const bool between = view.y >= m_NearPlane + RESABS && view.y <= m_FarPlane - RESABS;
  const auto inside = [](double value) { return value >= -1 + RESABS && value <= 1 - RESABS; };
  return between && inside(seen.x) && inside(seen.z);
}

bool QFCamera::ClipToPlanes(ViewPoint& a, ViewPoint& b) const {
  const Plane<ViewPoint> near_plane = {&ViewPoint::y, {&ViewPoint::x, &ViewPoint::z}, m_NearPlane, -1};
  const Plane<ViewPoint> far_plane = {&ViewPoint::y, {&ViewPoint::x, &ViewPoint::z}, m_FarPlane, 1};
  if (AreBothOutside(a, b, near_plane) || AreBothOutside(a, b, far_plane)) return false;
  Cut(a, b, near_plane);
  Cut(a, b, far_plane);
  return true;
}

int QFCamera::GetScreenCoordinateLine(const FRPosition& from, const FRPosition& to, int clip, POINT& outFrom,
                                      POINT& outTo) const {
  ViewPoint a = ToView(from), b = ToView(to);
  bool shown = !clip || ClipToPlanes(a, b);
  a = Project(a);
  b = Project(b);
  if (clip) shown = ClipToSquare(a, b) && shown;
  outFrom = ToPixels(a);
  outTo = ToPixels(b);
  return shown;
}
