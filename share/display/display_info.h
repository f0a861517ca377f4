// QFDisplayInfo, what every drawing routine gets: it owns the drawing state, the transforms and the back end, and
// forwards each call to the back end.
//
//   QFDisplayInfo info(/*useOpenGL=*/0, window, worldToScreen);
//   info.SetColor(0x0000FF);  // red
//   info.SetUseInstTransf(1, GetTranslateTransf({0, 0, 10}));
//   info.DrawLine(from, to);
//
// The back end is OpenGL in the host's current context or GDI on the window; SetDisplay takes any other, such as a
// recording. A GDI display always exists too: it has the device context, the transform to the screen and the camera.
//
// Positions are in the model's unit. They go through the XY-to-model transform and then the instance transform, each
// while its flag is set. One thread at a time may use a display, that of the host's drawing; OpenGL also needs the
// host's context current on it.
#pragma once

#include "platform/interfaces.h"
#include "share/display/gdi_display.h"

class KVSHARE_API QFDisplayInfo {
 public:
  // Not 0 in useOpenGL chooses the OpenGL display. The last three arguments are ignored and kept for existing modules.
  QFDisplayInfo(int useOpenGL, HWND window, const FRTransf& worldToScreen, IUnknown* unused = nullptr,
                const CString& unusedText = CString(), const CString& unusedName = CString());
  // Deletes the back ends.
  ~QFDisplayInfo();
  QFDisplayInfo(const QFDisplayInfo&) = delete;
  QFDisplayInfo& operator=(const QFDisplayInfo&) = delete;

  // ---- the back end

  // 0 makes the GDI display the back end and deletes any other. Not 0 only stores the flag: it creates no back end.
  void SetOpenGLDisplay(int openGL);
  int IsOpenGLDisplay() const { return m_pDisplayData->IsOpenGLDisplay(); }
  // Takes ownership of a back end, gives it the state and deletes the former one; null makes the GDI display the back
  // end. The OpenGL flag stays.
  void SetDisplay(QFBaseDisplay* display);
  // The current back end and the state, owned by this object.
  QFBaseDisplay* GetDisplay() const { return m_pDisplay; }
  QFDisplayData* GetDisplayData() const { return m_pDisplayData.get(); }
  // Never null; without a window it has no context, and the caller may attach one.
  CDC* GetDC() { return m_pGDIDisplay->GetDC(); }

  // Lets the back end take over the state again; the result is the back end's.
  int InitialiseGraphics();
  int UninitialiseGraphics() { return m_pDisplay->UninitialiseGraphics(); }
  // As InitialiseGraphics; returns 1.
  int ResetOpenGLDisplayObj();

  // ---- state; a colour is 0x00BBGGRR

  DWORD GetColor() const { return m_pDisplayData->GetColor(); }
  DWORD GetFillColor() const { return m_pDisplayData->GetFillColor(); }
  int GetLineWidth() const { return m_pDisplayData->GetLineWidth(); }
  int GetIsTransparent() const { return m_pDisplayData->GetIsTransparent(); }
  int GetIsFill() const { return m_pDisplayData->GetIsFill(); }
  // These two do nothing while objects are highlighted; a new value calls InitialiseGraphics.
  void SetColor(DWORD color);
  void SetLineWidthWithInit(int width);
  // A new value calls InitialiseGraphics, also while objects are highlighted.
  void SetTransparent(int transparent);
  // These only store.
  void SetLineWidth(int width) { m_pDisplayData->SetLineWidth(width); }
  void SetFillColor(DWORD color) { m_pDisplayData->SetFillColor(color); }
  void SetIsFill(int fill) { m_pDisplayData->SetIsFill(fill); }
  // Does nothing while objects are highlighted. Stores a new value and gives it to the back end.
  void SetLineWidthOnlyByGLCall(int width);
  // The style belongs to the back end: another back end has its own. Not 0 for dashed lines.
  void SetLineStyle(int dashed) { m_pDisplay->SetLineStyle(dashed); }
  int GetLineStyle() const { return m_pDisplay->GetLineStyle(); }
  // Takes ownership.
  void SetFont(CFont* font) { m_pDisplayData->SetFont(font); }
  // Creates the font: see CFont::CreateFont.
  void SetFont(int height, int weight, int italic, int underline, const CString& face);
  // While the flag is set, objects are highlighted: they are drawn in the colour and width of the highlighting, which
  // they cannot change. Both return the flag.
  int SetDynamicHiLite(int highlight) { return m_bDynamicHiLite = highlight; }
  int GetIsDynamicHiLite() const { return m_bDynamicHiLite; }
  // Does nothing; kept for existing modules.
  void SetOpenGlLightStatus(int) {}

  // ---- transforms

  // Multiplies the instance transform by another one, applied after it, and sets the flag; if the product is the
  // identity, the flag becomes 0. With use 0 only the flag changes: the transform stays, and the next call multiplies
  // it.
  void SetUseInstTransf(int use, const FRTransf& transform);
  // Replaces the XY-to-model transform and sets the flag; the identity makes it 0.
  void SetUseXYToModelTransf(int use, const FRTransf& transform);
  FRTransf GetInstTransf() const { return m_Transforms.m_InstTransf; }
  // The transforms whose flags are set as one; the second also with the transform to the screen after them.
  FRTransf GetCombinedPreMultiplicationTransf() const;
  FRTransf GetCombinedModelToViewTransf() const;

  // ---- drawing; each returns 1

  int DrawLine(FRPosition from, FRPosition to);
  int DrawArrow(FRPosition from, FRPosition to);
  // The radii are not transformed.
  int DrawEllipse(FRPosition centre, double a, double b);
  int DrawPlaneEllipse(FRPosition centre, double a, double b);
  // These transform the caller's lists in place: don't draw a list twice.
  int DrawTriangle(CList<FRPosition>& points, CList<FRUnitVector>& normals);
  int DrawPolygon(CList<FRPosition>& points, CList<FRUnitVector>& normals);
  int DrawPolyline(CList<FRPosition>& points);
  // The mode is a primitive type of OpenGL.
  int DrawPolyline(CList<FRPosition>& points, unsigned mode);
  int DrawPolyline(std::vector<FRPosition>& points, unsigned mode);
  // Divides each point by the scale and transforms it while it is drawn; the list stays as it is. Null draws nothing.
  int DrawPolyline(AFR_Lin_List*& points, double& scale);
  int DrawText(FRPosition position, const CString& text);

  // ---- regions, shading, display lists: as the back end's operations

  void SetFillRegion(int on) { m_pDisplay->SetFillRegion(on); }
  int FillRegion() { return m_pDisplay->FillRegion(); }
  void SetRectClipRegion(const CRect* rect) { m_pDisplay->SetRectClipRegion(rect); }
  int ClipRegion() { return m_pDisplay->ClipRegion(); }
  void BeginShadedDisplay() { m_pDisplay->BeginShadedDisplay(); }
  void EndShadedDisplay() { m_pDisplay->EndShadedDisplay(); }
  QFDisplayList* GenerateDisplayList(LONGLONG count) { return m_pDisplay->GenerateDisplayList(count); }
  int BeginDisplayList(QFDisplayList* list) { return m_pDisplay->BeginDisplayList(list); }
  int EndDisplayList(QFDisplayList* list) { return m_pDisplay->EndDisplayList(list); }
  int RenderDisplayList(QFDisplayList* list, const FRPosition& position) {
    return m_pDisplay->RenderDisplayList(list, position);
  }

  // ---- the screen: always the GDI display's

  void SetCamera(QFCamera* camera) { m_pGDIDisplay->SetCamera(camera); }
  CPoint GetScreenPoint(const FRPosition& position) const { return m_pGDIDisplay->GetScreenPoint(position); }
  FRPosition GetWorldPointFromScreenPoint(const CPoint& pixel) const {
    return m_pGDIDisplay->GetWorldPointFromScreenPoint(pixel);
  }

 private:
  std::unique_ptr<QFDisplayData> m_pDisplayData;
  QFDisplayTransforms m_Transforms;
  std::unique_ptr<QFGDIDisplay> m_pGDIDisplay;
  std::unique_ptr<QFBaseDisplay> m_pOtherDisplay;  // null while the GDI display is the back end
  QFBaseDisplay* m_pDisplay;
  int m_bDynamicHiLite = 0;
};
