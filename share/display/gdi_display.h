// QFGDIDisplay keeps the transform from the world to the screen and the camera of a QFDisplayInfo. Every QFDisplayInfo
// has one, also if another back end draws.
//
// Not implemented: drawing on the device context of the window. There is no device context, so InitialiseGraphics
// returns 0 and nothing is drawn.
#pragma once

#include "share/display/camera.h"
#include "share/display/display.h"

class KVSHARE_API QFGDIDisplay : public QFBaseDisplay {
 public:
  // The window is not used.
  QFGDIDisplay(HWND window, const FRTransf& worldToScreen);
  ~QFGDIDisplay() override;

  int GetDisplayType() const override { return 1; }

  // Null: there is no device context.
  CDC* GetDC() { return nullptr; }
  const FRTransf& GetTransf() const { return m_Transf; }
  // The camera is not owned and must live as long as it is set. Null takes it away.
  void SetCamera(QFCamera* camera) { m_pCamera = camera; }

  // The pixel of a position: by the camera if it has perspective, otherwise by the transform, cut toward zero.
  CPoint GetScreenPoint(const FRPosition& position) const;
  // The position that the transform moves to the pixel, with z 0 on the screen. The camera does not count.
  FRPosition GetWorldPointFromScreenPoint(const CPoint& pixel) const;

 private:
  FRTransf m_Transf;
  QFCamera* m_pCamera = nullptr;
};
