#include "share/display/gdi_display.h"

#include "share/display/internal/screen_points.h"

QFGDIDisplay::QFGDIDisplay(HWND, const FRTransf& worldToScreen) : m_Transf(worldToScreen) {}

QFGDIDisplay::~QFGDIDisplay() = default;

CPoint QFGDIDisplay::GetScreenPoint(const FRPosition& position) const {
  CPoint pixel;
  if (m_pCamera && m_pCamera->GetCameraProjectionType() == QFeCameraPerspective) {
    m_pCamera->GetScreenCoordinatePoint(position, pixel);
    return pixel;
  }
  const FRPosition moved = position * m_Transf;
  return {kvdisplay::Truncated(moved.x()), kvdisplay::Truncated(moved.y())};
}

FRPosition QFGDIDisplay::GetWorldPointFromScreenPoint(const CPoint& pixel) const {
  return FRPosition(pixel.x, pixel.y, 0) * m_Transf.inverse();
}
