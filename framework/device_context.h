// CDC: a device context, something to draw on. CImageDC: one on an image in memory.
//
// The operations have the names and results of the platform's calls, which platform/drawing.h describes; without a
// context they fail. Coordinates are pixels, x to the right, y down; a colour is 0x00BBGGRR. A context belongs to one
// thread.
#pragma once

#include <memory>

#include "framework/font.h"
#include "framework/rectangle.h"

class KVSHARE_API CDC : public CObject {
  DECLARE_DYNAMIC(CDC)

  // No context until Attach.
  CDC() = default;
  // Deletes the context: detach one that GetDC returned before, and give it back with ReleaseDC.
  ~CDC() override;

  // Takes over a context; FALSE for null and if there is one already.
  BOOL Attach(HDC dc);
  // Gives the context up without deleting it; null without one.
  HDC Detach();
  HDC GetSafeHdc() const { return m_hDC; }

  // Selects an object and returns the former one; null on failure. An object that belongs to the context itself, such
  // as its first pen, comes as an object that lives as long as this one or until the next such object of its class.
  CPen* SelectObject(CPen* pen);
  CBrush* SelectObject(CBrush* brush);
  CFont* SelectObject(CFont* font);

  // Returns the former position; (0, 0) without a context.
  CPoint MoveTo(int x, int y);
  BOOL LineTo(int x, int y) { return ::LineTo(m_hDC, x, y); }
  BOOL Ellipse(const RECT* rect) { return ::Ellipse(m_hDC, rect->left, rect->top, rect->right, rect->bottom); }
  BOOL Polygon(const POINT* points, int count) { return ::Polygon(m_hDC, points, count); }
  // FALSE for null.
  BOOL FillRgn(CRgn* region, CBrush* brush);
  // Null lifts the restriction.
  int SelectClipRgn(CRgn* region);

  int SetBkMode(int mode) { return ::SetBkMode(m_hDC, mode); }
  COLORREF SetTextColor(COLORREF color) { return ::SetTextColor(m_hDC, color); }
  BOOL TextOut(int x, int y, const CString& text);
  // The size of a line of text in the selected font; (0, 0) on failure.
  SIZE GetTextExtent(const CString& text) const;

  HDC m_hDC = nullptr;

 private:
  template <class Object>
  Object* Select(Object* object, std::unique_ptr<Object>& own);

  // Objects for handles that no other object holds.
  std::unique_ptr<CPen> m_pOwnPen;
  std::unique_ptr<CBrush> m_pOwnBrush;
  std::unique_ptr<CFont> m_pOwnFont;
};

// An image of 0x00RRGGBB pixels, rows from the top; the high byte is not used.
class KVSHARE_API CImageDC : public CDC {
  DECLARE_DYNAMIC(CImageDC)

  CImageDC() = default;
  // Deletes the image.
  ~CImageDC() override;

  // Makes an image filled with a colour; replaces an earlier one. FALSE, without an image, if the platform makes none:
  // the size is 0 or too large, or there are no device contexts.
  BOOL Create(int width, int height, COLORREF background);
  // All rows, after what was drawn up to now; null without an image. Valid until the next Create.
  DWORD* GetPixels() const;
  int GetWidth() const { return m_Width; }
  int GetHeight() const { return m_Height; }

 private:
  void Delete();

  HBITMAP m_hBitmap = nullptr;
  HGDIOBJ m_hFirstBitmap = nullptr;
  DWORD* m_pPixels = nullptr;
  int m_Width = 0;
  int m_Height = 0;
};
