// QFDisplayData, the drawing state that the back ends share, and QFDisplayTransforms, the transforms of one drawing.
// One thread at a time may use them; there is no lock.
#pragma once

#include <memory>

#include "companions/geometry/transforms.h"
#include "framework/device_context.h"

// A colour is 0x00BBGGRR. Flags are 0 or not 0.
class KVSHARE_API QFDisplayData {
 public:
  // The line width is the value "LineWidth" of the group "Display" of the application settings; 1 if there is none or
  // it is above 5. All other numbers are 0. There is no font and no device context.
  QFDisplayData();
  // Deletes the font.
  ~QFDisplayData();
  QFDisplayData(const QFDisplayData&) = delete;
  QFDisplayData& operator=(const QFDisplayData&) = delete;

  // Copies the OpenGL flag, both colours, the line width, the dashed and the fill flag. It does not copy the
  // transparent flag, the font and the device context: these belong to one display. Does nothing for null.
  void Copy(const QFDisplayData* other);

  DWORD GetColor() const { return m_Color; }
  void SetColor(DWORD color) { m_Color = color; }
  DWORD GetFillColor() const { return m_ColorFill; }
  void SetFillColor(DWORD color) { m_ColorFill = color; }
  // In pixels. Below 1 the GDI display draws no lines, and a recording keeps none.
  int GetLineWidth() const { return m_LineWidth; }
  void SetLineWidth(int width) { m_LineWidth = width; }
  int GetIsLineDashed() const { return m_bLineDashed; }
  void SetIsLineDashed(int dashed) { m_bLineDashed = dashed; }
  int GetIsTransparent() const { return m_bTransparent; }
  void SetIsTransparent(int transparent) { m_bTransparent = transparent; }
  // Set it before a shape with an area is drawn.
  int GetIsFill() const { return m_bFill; }
  void SetIsFill(int fill) { m_bFill = fill; }
  int IsOpenGLDisplay() const { return m_bOpenGLDisplay; }
  void SetOpenGLDisplay(int openGL) { m_bOpenGLDisplay = openGL; }

  // The font of texts; null for the device context's own. SetFont takes ownership and deletes the former font.
  CFont* GetFont() const { return m_pFont.get(); }
  void SetFont(CFont* font);
  // The GDI display's, not owned; null without a GDI display. It has no handle if there is no window.
  CDC* GetDC() const { return m_pDC; }
  void SetDC(CDC* dc) { m_pDC = dc; }

 private:
  DWORD m_Color = 0;
  DWORD m_ColorFill = 0;
  int m_bOpenGLDisplay = 0;
  int m_bLineDashed = 0;
  int m_bTransparent = 0;
  int m_LineWidth = 1;
  int m_bFill = 0;
  std::unique_ptr<CFont> m_pFont;
  CDC* m_pDC = nullptr;
};

// A transform counts only while its flag is not 0.
class KVSHARE_API QFDisplayTransforms {
 public:
  virtual ~QFDisplayTransforms();

  // The position or direction after the XY-to-model transform and then the instance transform.
  template <class Value>
  Value Apply(Value value) const {
    if (m_bUseXYToModelTransf) value *= m_XYToModelTransf;
    if (m_bUseInstTransf) value *= m_InstTransf;
    return value;
  }

  int m_bUseInstTransf = 0;
  FRTransf m_InstTransf;
  int m_bUseXYToModelTransf = 0;
  FRTransf m_XYToModelTransf;
};
