// Drawing on device contexts: of windows, and of images in memory.
//
// A handle is valid until it is deleted or released; a call with an invalid one fails. A device context and the objects
// that are selected into it belong to one thread at a time. Coordinates are pixels, x to the right, y down. Colours are
// 0x00BBGGRR. A new context has a black pen of width 1, a white brush, a default font, the background mode OPAQUE with
// a white background, and black text.
//
// On Linux the module libKVSHAREdesktop.so draws, on Qt. It is loaded from the folder of this library when the first
// device context is asked for. Without it there are no device contexts; pens, brushes, fonts and regions can be made.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// ---- types

struct HDC__;
struct HPEN__;
struct HBRUSH__;
struct HFONT__;
struct HRGN__;
struct HBITMAP__;
using HDC = HDC__*;
using HPEN = HPEN__*;
using HBRUSH = HBRUSH__*;
using HFONT = HFONT__*;
using HRGN = HRGN__*;
using HBITMAP = HBITMAP__*;
using HGDIOBJ = void*;  // any of the five objects

struct SIZE {
  LONG cx;
  LONG cy;
};

inline constexpr int LF_FACESIZE = 32;
inline constexpr BYTE NONANTIALIASED_QUALITY = 3;

// The description of a font. A height below 0 is the height of the characters, above 0 that of a line, in pixels; 0 is
// the default height. The face ends with a NUL; an empty one leaves the choice to the family in lfPitchAndFamily.
struct LOGFONTW {
  LONG lfHeight;
  LONG lfWidth;        // no effect on Linux
  LONG lfEscapement;   // tenths of degrees, counterclockwise
  LONG lfOrientation;  // tenths of degrees; no effect on Linux
  LONG lfWeight;       // 400 normal, 700 bold; 0 the default
  BYTE lfItalic;
  BYTE lfUnderline;
  BYTE lfStrikeOut;
  BYTE lfCharSet;
  BYTE lfOutPrecision;
  BYTE lfClipPrecision;
  BYTE lfQuality;  // NONANTIALIASED_QUALITY for pixels of one colour
  BYTE lfPitchAndFamily;
  WCHAR lfFaceName[LF_FACESIZE];
};

struct BITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth;
  LONG biHeight;  // below 0: the first row is the top one
  WORD biPlanes;
  WORD biBitCount;
  DWORD biCompression;
  DWORD biSizeImage;
  LONG biXPelsPerMeter;
  LONG biYPelsPerMeter;
  DWORD biClrUsed;
  DWORD biClrImportant;
};
struct RGBQUAD {
  BYTE rgbBlue;
  BYTE rgbGreen;
  BYTE rgbRed;
  BYTE rgbReserved;
};
struct BITMAPINFO {
  BITMAPINFOHEADER bmiHeader;
  RGBQUAD bmiColors[1];
};

// ---- device contexts

// The context of a window; null if there is none. ReleaseDC gives it back: 1, or 0 if it is not that window's.
//
// On Linux a window is the winId() of a widget of a host that uses Qt. The drawing lies over the widget's own until
// ReleaseDC, and the next paint event after it removes it. The widget may go first. A null window, elsewhere the whole
// screen, has no context.
KVSHARE_API HDC GetDC(HWND window);
KVSHARE_API int ReleaseDC(HWND window, HDC dc);
// A context for an image: it has one pixel until a bitmap is selected into it. Null on failure. DeleteDC ends it.
KVSHARE_API HDC CreateCompatibleDC(HDC dc);
KVSHARE_API BOOL DeleteDC(HDC dc);

// An image of 32 bits a pixel, 0x00RRGGBB; the high byte is not used. `bits` receives its memory, rows of biWidth
// pixels, which is zero at first and lives as long as the bitmap. Null on failure. On Linux only images of 32 bits from
// the top downwards (a negative height), of at most 2^28 pixels, without a section.
inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr DWORD BI_RGB = 0;
KVSHARE_API HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section,
                                     DWORD offset);
// Completes the drawing of the calling thread. Call it before reading the bits of an image.
KVSHARE_API BOOL GdiFlush();

// ---- objects

// A pen of width 0 has width 1; on Linux it has at most 4096. A dotted pen draws three pixels and leaves out three; if
// its width is above 1 it is solid. Other styles are not made on Linux: null.
inline constexpr int PS_SOLID = 0;
inline constexpr int PS_DOT = 2;
KVSHARE_API HPEN CreatePen(int style, int width, COLORREF color);
KVSHARE_API HBRUSH CreateSolidBrush(COLORREF color);
// Null for a null description. The context chooses the nearest font of the system.
KVSHARE_API HFONT CreateFontIndirectW(const LOGFONTW* font);

// The pixels from left and top up to, but not including, right and bottom; edges in the wrong order are exchanged.
KVSHARE_API HRGN CreateRectRgn(int left, int top, int right, int bottom);
// The pixels inside a polygon; its left and top edges belong to it, its right and bottom edges do not. With ALTERNATE
// the inside begins and ends at each edge. Other modes are not made on Linux: null.
inline constexpr int ALTERNATE = 1;
KVSHARE_API HRGN CreatePolygonRgn(const POINT* points, int count, int mode);

// Selects a pen, brush, font or bitmap and returns the former one; null on failure. A bitmap can be in one context at a
// time.
KVSHARE_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
// Ends an object; FALSE for an invalid handle. A context that has it selected keeps it until another one is selected.
KVSHARE_API BOOL DeleteObject(HGDIOBJ object);

// ---- lines and shapes

// Sets the position, (0, 0) at first, and gives the former one unless `former` is null.
KVSHARE_API BOOL MoveToEx(HDC dc, int x, int y, POINT* former);
// Draws from the position up to, but not including, the point, and moves the position there. Each step along the
// longer direction is one pixel; half-way between two pixels the upper or left one is drawn. The gaps of a dotted line
// get the background's colour unless the mode is TRANSPARENT. A line wider than 1 has round ends around both points.
KVSHARE_API BOOL LineTo(HDC dc, int x, int y);
// An ellipse that touches the edges of the rectangle, of which the right and the bottom one do not belong to it; filled
// with the brush, outlined with the pen.
KVSHARE_API BOOL Ellipse(HDC dc, int left, int top, int right, int bottom);
// Fills the polygon in the mode ALTERNATE and draws its closed outline. FALSE for less than two points.
KVSHARE_API BOOL Polygon(HDC dc, const POINT* points, int count);
KVSHARE_API BOOL FillRgn(HDC dc, HRGN region, HBRUSH brush);

// Restricts drawing to a copy of the region; null lifts the restriction. Returns the kind of the region, 0 on failure.
inline constexpr int NULLREGION = 1;
inline constexpr int SIMPLEREGION = 2;
inline constexpr int COMPLEXREGION = 3;
KVSHARE_API int SelectClipRgn(HDC dc, HRGN region);

// ---- text

inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
// Both return the former value; 0 and CLR_INVALID on failure. OPAQUE fills the background of texts and of the gaps of
// dotted lines.
KVSHARE_API int SetBkMode(HDC dc, int mode);
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;
KVSHARE_API COLORREF SetTextColor(HDC dc, COLORREF color);
// The point is the upper left corner of the text. The position stays.
KVSHARE_API BOOL TextOutW(HDC dc, int x, int y, LPCWSTR text, int length);
// The width and the height of a line of text in the context's font.
KVSHARE_API BOOL GetTextExtentPoint32W(HDC dc, LPCWSTR text, int length, SIZE* size);

#endif
