// QFGDIDisplay draws with pens and brushes on the device context of a window. Every QFDisplayInfo has one, also if
// another back end draws, because it keeps the device context, the transform from the world to the screen and the
// camera.
//
// Positions become pixels by the camera if it has perspective, otherwise by the transform; coordinates are cut toward
// zero, and one that no LONG can hold becomes the nearest LONG. Polygons, triangles and polylines never go by the
// camera; kept for existing modules. With a line width below 1 no lines are drawn. Without a device context nothing is
// drawn. An image is drawn on by attaching its context:
//
//   CImageDC image;
//   image.Create(1600, 1000, /*background=*/0xFFFFFF);
//   QFDisplayInfo info(/*useOpenGL=*/0, /*window=*/nullptr, worldToScreen);
//   info.GetDC()->Attach(image.GetSafeHdc());
//
// Such a context stays the caller's and must live longer than the display.
#pragma once

#include <vector>

#include "share/display/camera.h"
#include "share/display/display.h"

class KVSHARE_API QFGDIDisplay : public QFBaseDisplay {
 public:
  // A display without a device context, and with the transform of a default FRTransf.
  QFGDIDisplay() = default;
  // Gets the context of the window; without one, as for null, the display only maps positions.
  QFGDIDisplay(HWND window, const FRTransf& worldToScreen);
  // Restores the objects of the context and gives it back.
  ~QFGDIDisplay() override;

  // Selects a pen of the data's colour and width and a brush of its fill colour, which stay until UninitialiseGraphics;
  // the data's font, if it is the first one, stays for good. 1; 0 without a context, with a line width below 1, and if
  // this was done already. The dashed pen always has the width 1.
  int InitialiseGraphics() override;
  // Selects the former pen and brush. Always 0.
  int UninitialiseGraphics() override;

  // Not drawn if the camera does not see it. The start goes to the fill region in any case.
  void DrawLine(const FRPosition& from, const FRPosition& to) override;
  // a and b are half widths in pixels, cut to whole numbers. The transform is not used. Both draw the same.
  void DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf& camera) override;
  void DrawPlaneEllipse(const FRPosition& centre, double a, double b) override;
  // Normals are not used.
  void DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override;
  void DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override;
  // All points but the last one go to the fill region. The forms with a mode and of a vector draw nothing.
  using QFBaseDisplay::DrawPolyline;
  void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) override;
  void DrawPolyline(const CList<FRPosition>& points) override;
  // 2 pixels to the right of the position and 5 above it.
  void DrawText(const FRPosition& position, const CString& text) override;

  void SetLineStyle(int dashed) override;
  int GetDisplayType() const override { return 1; }

  // Not 0: the start points of lines are collected from now on. Both 0 and 1 forget the points collected before.
  void SetFillRegion(int on) override;
  // Fills the polygon of the collected points and forgets them. 0 without points, if they are not collected, and if
  // nothing can be filled; otherwise 1.
  int FillRegion() override;
  // Null changes nothing.
  void SetRectClipRegion(const CRect* rect) override;
  // Restricts drawing to the rectangle; it stays restricted. 0 without a rectangle or a context, otherwise 1.
  int ClipRegion() override;

  // Never null; without a window it has no context.
  CDC* GetDC() { return &m_DC; }
  const FRTransf& GetTransf() const { return m_Transf; }
  // The camera is not owned and must live as long as it is set. Null takes it away.
  void SetCamera(QFCamera* camera) { m_pCamera = camera; }

  // The pixel of a position, also if the camera does not see it.
  CPoint GetScreenPoint(const FRPosition& position) const;
  // The position that the transform moves to the pixel, with z 0 on the screen. The camera does not count.
  FRPosition GetWorldPointFromScreenPoint(const CPoint& pixel) const;

 private:
  bool HasPerspective() const;
  bool MapPoint(const FRPosition& position, CPoint& pixel) const;
  CPoint Moved(const FRPosition& position) const;
  bool DrawsLines() const { return m_pDisplayData && m_pDisplayData->GetLineWidth() >= 1; }
  void DrawAround(const FRPosition& centre, double a, double b);
  void DrawCorners(const CList<FRPosition>& points);
  void AddFillPoint(const CPoint& pixel);

  HWND m_Window = nullptr;
  CDC m_DC;
  FRTransf m_Transf;
  std::unique_ptr<CPen> m_pPen;
  std::unique_ptr<CPen> m_pDashPen;
  std::unique_ptr<CBrush> m_pBrush;
  CPen* m_pOldPen = nullptr;  // what the context had selected
  CBrush* m_pOldBrush = nullptr;
  CFont* m_pOldFont = nullptr;
  QFCamera* m_pCamera = nullptr;
  int m_bFillRegion = 0;
  std::unique_ptr<CRgn> m_pRegion;
  std::vector<POINT> m_FillPoints;
  int m_bClipRect = 0;
  CRect m_ClipRect;
};
