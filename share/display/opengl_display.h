// QFOpenGLDisplay draws on top of the host's scene: in the OpenGL context that is current on the calling thread, with
// the matrices that the host has set. QFOpenGlDisplayList keeps a drawing in OpenGL's display lists.
//
// A drawing is InitialiseGraphics, the primitives, UninitialiseGraphics. Afterwards depth writes, lighting and the clip
// planes are as the host had them, blending is off if this display switched it on, and the colour is the host's with an
// alpha of 1 (0.5 after a transparent drawing). Line width, material and point size stay as they were drawn last.
//
// Lines and points are drawn without lighting. Without a current context OpenGL ignores the calls. Errors of OpenGL are
// not looked at, except while lists are made.
//
// The first text makes the lists 1000 to 1254, one for each character below 255, from the data's font on the data's
// device context; all later texts use them, also with another font. The host must not use these lists. Without a device
// context no text shows; QFDisplayInfo::GetDC gives the context to which one can be attached.
#pragma once

#include "share/display/display.h"

// A drawing in as many OpenGL lists as its estimate needs: the first holds 250 primitives, each other one 251.
class KVSHARE_API QFOpenGlDisplayList : public QFDisplayList {
 public:
  QFOpenGlDisplayList() = default;
  // Runs Delete.
  ~QFOpenGlDisplayList() override;

  // Makes count / 250 + 1 lists, in whole numbers, in place of the former ones. 1, or 0 if OpenGL makes none.
  int Initialise(LONGLONG count);
  // Opens the first list, also of a drawing that is made again. 1.
  int Begin() override;
  // Closes the open list. 1.
  int End() override;
  // Gives the lists back to OpenGL. 1.
  int Delete() override;
  // Draws all lists. 0 without lists.
  int Render(const FRPosition& position) override;
  // To be called before each primitive: opens the next list if the current one is full. 1 if it did; 0 if not, without
  // lists, and after the last list, when no list is open and the primitives are drawn directly.
  int Tick();

 private:
  LONGLONG m_Count = 0;
  UINT m_FirstList = 0;
  int m_BatchSize = 250;
  int m_CallsInBatch = 0;
  int m_CurrentList = 0;
};

class KVSHARE_API QFOpenGLDisplay : public QFBaseDisplay {
 public:
  // Reads "UseHardwareRendering" of the group "Display" of the application settings: with 1, the default, the depth
  // buffer is cleared once before the first primitive, so that the drawing is on top of the host's model; with any
  // other number it is hidden by the model. Reads the switches "OpenGLDrawText" and "EnableAdvanceOpenGLOptions".
  QFOpenGLDisplay();
  ~QFOpenGLDisplay() override;

  int InitialiseGraphics() override;
  int UninitialiseGraphics() override;

  void DrawLine(const FRPosition& from, const FRPosition& to) override;
  // A line with a cone at its end, a third as long as the line.
  void DrawArrow(const FRPosition& from, const FRPosition& to) override;
  // A sphere. Its radius is half of the larger one of a and b; with a scale of the camera other than 0 it is the larger
  // one divided by the scale, so that the size on the screen stays the same.
  void DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf& camera) override;
  // A round point with the diameter a in pixels.
  void DrawPlaneEllipse(const FRPosition& centre, double a, double b) override;
  // Nothing for more than three points, also for a polygon; kept for existing modules. With normals it is lit; without
  // it is drawn from both sides.
  void DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override;
  void DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) override;
  // Nothing for less than two points.
  using QFBaseDisplay::DrawPolyline;
  void DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) override;
  void DrawPolyline(const std::vector<FRPosition>& points, unsigned mode) override;
  void DrawPolyline(const CList<FRPosition>& points, unsigned mode) override;
  void DrawPolyline(const CList<FRPosition>& points) override;
  // Nothing if "OpenGLDrawText" is 0.
  void DrawText(const FRPosition& position, const CString& text) override;

  void SetLineWidthOnlyByGLCall(int width) override;
  void SetLineStyle(int dashed) override;
  int GetDisplayType() const override { return 2; }
  // Between them the drawing is hidden by the host's model. After EndShadedDisplay the setting applies again, and with
  // 1 the next primitive clears the depth buffer.
  void BeginShadedDisplay() override;
  void EndShadedDisplay() override;

  // Null if OpenGL makes no lists. A list must be deleted while the context is current.
  QFDisplayList* GenerateDisplayList(LONGLONG count) override;
  // 1; 0 for null and while another list is open, which then stays open.
  int BeginDisplayList(QFDisplayList* list) override;
  // 1; 0 if no list or another one than this is open. Null ends the open list.
  int EndDisplayList(QFDisplayList* list) override;
  // 0 for null.
  int RenderDisplayList(QFDisplayList* list, const FRPosition& position) override;

 private:
  class Unlit;

  void SetRenderMode(int mode);
  void SetHostColor() const;
  void Prepare();
  void DrawTriangles(unsigned mode, const CList<FRPosition>& points, const CList<FRUnitVector>& normals);

  BYTE m_bSavedLighting = 0;
  BYTE m_bSavedDepthMask = 0;
  float m_SavedColor[4] = {};
  BYTE m_SavedClipPlanes[6] = {};
  BYTE m_bFontListsBuilt = 0;
  BYTE m_bDrawText = 1;
  BYTE m_bDepthCleared = 0;
  int m_RenderMode = 1;
  BYTE m_bAdvanceOptions = 0;
  BYTE m_bBlending = 0;  // switched on by this display
  QFDisplayList* m_pActiveList = nullptr;
  QFOpenGlDisplayList* m_pBatches = nullptr;  // the active list, unless it is of a module's class
};
