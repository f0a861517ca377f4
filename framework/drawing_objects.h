// CPen, CBrush and CRgn: what a device context (framework/device_context.h) draws with. CFont is in framework/font.h.
// Each object holds a handle of platform/drawing.h.
//
// An object owns its handle: the destructor deletes it. Select another object into the device context before that. The
// calls that create a handle return FALSE if the object has one already or the platform makes none; the constructors
// that create one leave the object without a handle then. One thread at a time may use an object.
#pragma once

#include "framework/object.h"
#include "platform/drawing.h"

class KVSHARE_API CGdiObject : public CObject {
  DECLARE_DYNAMIC(CGdiObject)

  CGdiObject() = default;
  ~CGdiObject() override;

  // Takes over a handle; FALSE for null and if there is one already.
  BOOL Attach(HGDIOBJ handle);
  // Gives the handle up without deleting it; null without one.
  HGDIOBJ Detach();
  HGDIOBJ GetSafeHandle() const { return m_hObject; }
  // Deletes the handle. FALSE if there is none.
  BOOL DeleteObject();
  // The object that holds the handle; null if there is none. Any thread may call.
  static CGdiObject* FromHandlePermanent(HGDIOBJ handle);

  HGDIOBJ m_hObject = nullptr;
};

// Styles and widths are those of the platform's CreatePen.
class KVSHARE_API CPen : public CGdiObject {
  DECLARE_DYNAMIC(CPen)

  CPen() = default;
  CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }
  BOOL CreatePen(int style, int width, COLORREF color);
};

class KVSHARE_API CBrush : public CGdiObject {
  DECLARE_DYNAMIC(CBrush)

  CBrush() = default;
  explicit CBrush(COLORREF color) { CreateSolidBrush(color); }
  BOOL CreateSolidBrush(COLORREF color);
};

class KVSHARE_API CRgn : public CGdiObject {
  DECLARE_DYNAMIC(CRgn)

  CRgn() = default;
  BOOL CreateRectRgn(int left, int top, int right, int bottom);
  BOOL CreatePolygonRgn(const POINT* points, int count, int mode);
};
