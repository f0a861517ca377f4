#include "framework/device_context.h"

#include <algorithm>
#include <utility>

IMPLEMENT_DYNAMIC(CDC, CObject)
IMPLEMENT_DYNAMIC(CImageDC, CDC)

namespace {

// The handle belongs to the platform: it is neither deleted nor known as this object's.
template <class Object>
void Forget(std::unique_ptr<Object>& own) {
  if (own) own->m_hObject = nullptr;
  own.reset();
}

}  // namespace

CDC::~CDC() {
  if (m_hDC) ::DeleteDC(m_hDC);
  Forget(m_pOwnPen);
  Forget(m_pOwnBrush);
  Forget(m_pOwnFont);
}

BOOL CDC::Attach(HDC dc) {
  if (!dc || m_hDC) return FALSE;
  m_hDC = dc;
  return TRUE;
}

HDC CDC::Detach() { return std::exchange(m_hDC, nullptr); }

// ---- objects

template <class Object>
Object* CDC::Select(Object* object, std::unique_ptr<Object>& own) {
  const HGDIOBJ former = m_hDC && object ? ::SelectObject(m_hDC, object->m_hObject) : nullptr;
  if (!former) return nullptr;
  if (CGdiObject* const holder = CGdiObject::FromHandlePermanent(former)) return static_cast<Object*>(holder);
  if (own && own->m_hObject == former) return own.get();
  Forget(own);
  own = std::make_unique<Object>();
  own->m_hObject = former;
  return own.get();
}

CPen* CDC::SelectObject(CPen* pen) { return Select(pen, m_pOwnPen); }
CBrush* CDC::SelectObject(CBrush* brush) { return Select(brush, m_pOwnBrush); }
CFont* CDC::SelectObject(CFont* font) { return Select(font, m_pOwnFont); }

// ---- drawing

CPoint CDC::MoveTo(int x, int y) {
  CPoint former;
  ::MoveToEx(m_hDC, x, y, &former);
  return former;
}

BOOL CDC::FillRgn(CRgn* region, CBrush* brush) {
  if (!region || !brush) return FALSE;
  return ::FillRgn(m_hDC, static_cast<HRGN>(region->m_hObject), static_cast<HBRUSH>(brush->m_hObject));
}

int CDC::SelectClipRgn(CRgn* region) {
  return ::SelectClipRgn(m_hDC, region ? static_cast<HRGN>(region->m_hObject) : nullptr);
}

BOOL CDC::TextOut(int x, int y, const CString& text) {
  return ::TextOutW(m_hDC, x, y, text.GetString(), text.GetLength());
}

SIZE CDC::GetTextExtent(const CString& text) const {
  SIZE size = {};
  ::GetTextExtentPoint32W(m_hDC, text.GetString(), text.GetLength(), &size);
  return size;
}

// ---- images

CImageDC::~CImageDC() { Delete(); }

void CImageDC::Delete() {
  if (m_hFirstBitmap) ::SelectObject(m_hDC, m_hFirstBitmap);
  if (m_hBitmap) ::DeleteObject(m_hBitmap);
  if (m_hDC) ::DeleteDC(Detach());
  m_hFirstBitmap = nullptr;
  m_hBitmap = nullptr;
  m_pPixels = nullptr;
  m_Width = m_Height = 0;
}

BOOL CImageDC::Create(int width, int height, COLORREF background) {
  Delete();
  if (width <= 0 || height <= 0 || !Attach(::CreateCompatibleDC(nullptr))) return FALSE;
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = -height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  void* bits = nullptr;
  m_hBitmap = ::CreateDIBSection(m_hDC, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  m_hFirstBitmap = m_hBitmap ? ::SelectObject(m_hDC, m_hBitmap) : nullptr;
  if (!m_hFirstBitmap) {
    Delete();
    return FALSE;
  }
  m_pPixels = static_cast<DWORD*>(bits);
  m_Width = width;
  m_Height = height;
  const DWORD red = background & 0xFF, green = background & 0xFF00, blue = background >> 16 & 0xFF;
  std::fill_n(m_pPixels, std::size_t(width) * std::size_t(height), red << 16 | green | blue);
  return TRUE;
}

DWORD* CImageDC::GetPixels() const {
  ::GdiFlush();
  return m_pPixels;
}
