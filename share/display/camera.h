// QFCamera maps world positions to pixels of a window. The host describes its view with a camera if the view has
// perspective; QFDisplayInfo::SetCamera gives it to the display.
//
//   QFCamera camera;
//   if (camera.SetCameraDetails(eye, target, up, fovX, fovY, distance, nearPlane, farPlane, QFeCameraPerspective,
//                               window, worldToScreen)) info.SetCamera(&camera);
//
// Lengths are in the model's unit, angles in radians; pixels count to the right and down. A camera belongs to one
// display: it has no lock. Nothing fails, and an invalid camera is not refused: its pixels are computed from what is
// stored, and a coordinate that no LONG can hold becomes the nearest LONG.
#pragma once

#include "companions/geometry/transforms.h"
#include "framework/rectangle.h"

enum QFeCameraStatus : int {
  QFeCameraValid = 0,
  QFeCameraInvalid = 2,
};

// Any other number projects in parallel.
enum QFeCameraProjectionType : int {
  QFeCameraParallel = 0,
  QFeCameraPerspective = 1,
};

class KVSHARE_API QFCamera {
 public:
  // Everything 0 and the status invalid.
  QFCamera() = default;

  // Stores all values and checks them: 1 and the status valid, or 0 and the status invalid. The values stay stored in
  // both cases.
  //
  // position: the eye. target: what it looks at; another position. up: not along the view. fov...: the full angles of
  // view, at least RESNOR. viewDistance: of the projection plane, at least RESNOR. nearPlane, farPlane: along the view,
  // at least 0 and near before far, each within RESABS. rect: the window's pixels. A NaN among the numbers is refused.
  int SetCameraDetails(const FRPosition& position, const FRPosition& target, const FRUnitVector& up,
                       double fovHorizontal, double fovVertical, double viewDistance, double nearPlane, double farPlane,
                       QFeCameraProjectionType type, const CRect& rect, const FRTransf& worldToScreen);

  QFeCameraStatus GetCameraStatus() const { return m_Status; }
  void SetCameraStatus(QFeCameraStatus status) { m_Status = status; }
  QFeCameraProjectionType GetCameraProjectionType() const { return m_ProjectionType; }
  FRTransf GetWorldToScreenTransform() const { return m_WorldToScreen; }
  // The translation by the position, then the rotation whose matrix has the columns up x d, d and d x (up x d), with d
  // the direction of view. Of the last valid details; the identity before.
  FRTransf GetCameraToWorldTransform() const { return m_CameraToWorld; }

  // The pixel of a position, also if it is not visible. 1 if it lies between the near and the far plane and inside the
  // view; a position on a plane or on the border of the view, within RESABS, is not visible: 0.
  int GetScreenCoordinatePoint(const FRPosition& position, POINT& out) const;
  // The pixels of a line. With clip not 0 the line is cut at the near and far planes and at the border of the view; 0
  // if nothing is left, and the pixels are then those of the line as far as it was cut. With clip 0 always 1.
  int GetScreenCoordinateLine(const FRPosition& from, const FRPosition& to, int clip, POINT& outFrom,
                              POINT& outTo) const;

 private:
  // x to the right, y into the screen, z upward, from the eye. After Project, x and z go from -1 to 1 across the view.
  struct ViewPoint {
    double x, y, z;
  };

  QFeCameraStatus Check() const;
  ViewPoint ToView(const FRPosition& position) const;
  ViewPoint Project(const ViewPoint& point) const;
  POINT ToPixels(const ViewPoint& point) const;
  bool ClipToPlanes(ViewPoint& a, ViewPoint& b) const;

  QFeCameraStatus m_Status = QFeCameraInvalid;
  FRPosition m_Position;
  FRPosition m_Target;
  FRUnitVector m_Up;
  double m_FovHorizontal = 0;
  double m_FovVertical = 0;
  double m_ViewDistance = 0;
  double m_NearPlane = 0;
  double m_FarPlane = 0;
  QFeCameraProjectionType m_ProjectionType = QFeCameraParallel;
  CRect m_ScreenRect;
  FRTransf m_WorldToScreen;
  FRTransf m_CameraToWorld;
};
