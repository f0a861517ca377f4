#include "share/display/gdi_display.h"

#include <algorithm>
#include <limits>

#include "share/display/internal/screen_points.h"

namespace {

constexpr int kTextRight = 2, kTextUp = 5;  // pixels from the position of a text

// A sum within LONG.
LONG Sum(LONG a, LONGLONG b) {
  return LONG(std::clamp<LONGLONG>(a + b, std::numeric_limits<LONG>::min(), std::numeric_limits<LONG>::max()));
}

}  // namespace

QFGDIDisplay::QFGDIDisplay(HWND window, const FRTransf& worldToScreen) : m_Window(window), m_Transf(worldToScreen) {
  if (window) m_DC.Attach(::GetDC(window));
}

// ReleaseDC refuses a context that a caller has attached; it stays the caller's.
QFGDIDisplay::~QFGDIDisplay() {
  QFGDIDisplay::UninitialiseGraphics();
  if (m_pDisplayData && m_pDisplayData->GetDC() == &m_DC) m_pDisplayData->SetDC(nullptr);
  const HDC context = m_DC.Detach();
  if (m_Window && context) ::ReleaseDC(m_Window, context);
}

// ---- state

int QFGDIDisplay::InitialiseGraphics() {
  if (!DrawsLines() || !m_DC.m_hDC || m_pOldPen) return 0;
  const int width = m_pDisplayData->GetLineWidth();
  const COLORREF color = m_pDisplayData->GetColor();
  m_pPen = std::make_unique<CPen>(PS_SOLID, width, color);
  m_pDashPen = std::make_unique<CPen>(PS_DOT, 1, color);  // a dotted pen has its pattern only with this width
  m_pBrush = std::make_unique<CBrush>(m_pDisplayData->GetFillColor());
  m_pRegion = std::make_unique<CRgn>();
  m_pOldPen = m_DC.SelectObject(m_bLineDashed ? m_pDashPen.get() : m_pPen.get());
  m_pOldBrush = m_DC.SelectObject(m_pBrush.get());
  if (m_pDisplayData->GetFont() && !m_pOldFont) m_pOldFont = m_DC.SelectObject(m_pDisplayData->GetFont());
  if (m_pOldPen) m_bInitialised = 1;
  return 1;
}

int QFGDIDisplay::UninitialiseGraphics() {
  if (m_DC.m_hDC && m_pOldPen) {
    m_DC.SelectObject(m_pOldPen);
    m_DC.SelectObject(m_pOldBrush);
    m_bInitialised = 0;
  }
  m_pOldPen = nullptr;
  m_pOldBrush = nullptr;
  m_pPen.reset();
  m_pDashPen.reset();
  m_pBrush.reset();
  m_pRegion.reset();
  m_FillPoints.clear();
  return 0;
}

void QFGDIDisplay::SetLineStyle(int dashed) {
  QFBaseDisplay::SetLineStyle(dashed);
  if (m_bInitialised) m_DC.SelectObject(dashed ? m_pDashPen.get() : m_pPen.get());
}

// ---- from positions to pixels

bool QFGDIDisplay::HasPerspective() const {
  return m_pCamera && m_pCamera->GetCameraProjectionType() == QFeCameraPerspective;
}

CPoint QFGDIDisplay::Moved(const FRPosition& position) const {
  const FRPosition moved = position * m_Transf;
  return {kvdisplay::Truncated(moved.x()), kvdisplay::Truncated(moved.y())};
}

bool QFGDIDisplay::MapPoint(const FRPosition& position, CPoint& pixel) const {
  if (HasPerspective()) return m_pCamera->GetScreenCoordinatePoint(position, pixel) != 0;
  pixel = Moved(position);
  return true;
}

CPoint QFGDIDisplay::GetScreenPoint(const FRPosition& position) const {
  CPoint pixel;
  MapPoint(position, pixel);
  return pixel;
}

FRPosition QFGDIDisplay::GetWorldPointFromScreenPoint(const CPoint& pixel) const {
  return FRPosition(pixel.x, pixel.y, 0) * m_Transf.inverse();
}

// ---- primitives

void QFGDIDisplay::DrawLine(const FRPosition& from, const FRPosition& to) {
  CPoint start, end;
  bool shown = true;
  if (HasPerspective()) {
    shown = m_pCamera->GetScreenCoordinateLine(from, to, /*clip=*/1, start, end) != 0;
  } else {
    start = Moved(from);
    end = Moved(to);
  }
  if (shown && DrawsLines()) {
    m_DC.MoveTo(start.x, start.y);
    m_DC.LineTo(end.x, end.y);
  }
  AddFillPoint(start);
}

void QFGDIDisplay::DrawAround(const FRPosition& centre, double a, double b) {
  CPoint middle;
  if (!MapPoint(centre, middle)) return;
  const LONGLONG half_width = kvdisplay::Truncated(a), half_height = kvdisplay::Truncated(b);
  CRect rect(Sum(middle.x, -half_width), Sum(middle.y, half_height), Sum(middle.x, half_width),
             Sum(middle.y, -half_height));
  rect.NormalizeRect();
  m_DC.Ellipse(&rect);
}

void QFGDIDisplay::DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf&) {
  DrawAround(centre, a, b);
}

void QFGDIDisplay::DrawPlaneEllipse(const FRPosition& centre, double a, double b) { DrawAround(centre, a, b); }

void QFGDIDisplay::DrawCorners(const CList<FRPosition>& points) {
  std::vector<POINT> pixels;
  for (POSITION at = points.GetHeadPosition(); at;) pixels.push_back(Moved(points.GetNext(at)));
  m_DC.Polygon(pixels.data(), int(pixels.size()));
}

void QFGDIDisplay::DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>&) { DrawCorners(points); }

void QFGDIDisplay::DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>&) { DrawCorners(points); }

void QFGDIDisplay::DrawPolyline(const CList<FRPosition>& points) {
  if (points.GetCount() < 2) return;
  const bool draws = DrawsLines();
  POSITION at = points.GetHeadPosition();
  CPoint last = Moved(points.GetNext(at));
  if (draws) m_DC.MoveTo(last.x, last.y);
  while (at) {
    const CPoint next = Moved(points.GetNext(at));
    if (draws) m_DC.LineTo(next.x, next.y);
    AddFillPoint(last);
    last = next;
  }
}

void QFGDIDisplay::DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) {
  if (!points) return;
  const bool draws = DrawsLines();
  bool first = true;
  CPoint last;
  for (const FRPosition& point : *points) {
    const CPoint next = Moved(transforms.Apply(point / scale));
    if (first) {
      if (draws) m_DC.MoveTo(next.x, next.y);
    } else {
      if (draws) m_DC.LineTo(next.x, next.y);
      AddFillPoint(last);
    }
    first = false;
    last = next;
  }
}

void QFGDIDisplay::DrawText(const FRPosition& position, const CString& text) {
  if (!m_pDisplayData) return;
  const int mode = m_DC.SetBkMode(TRANSPARENT);
  CFont* const font = m_pDisplayData->GetFont() ? m_DC.SelectObject(m_pDisplayData->GetFont()) : nullptr;
  const COLORREF color = m_DC.SetTextColor(m_pDisplayData->GetColor());
  const CPoint pixel = GetScreenPoint(position);
  m_DC.TextOut(Sum(pixel.x, kTextRight), Sum(pixel.y, -kTextUp), text);
  m_DC.SetTextColor(color);
  m_DC.SetBkMode(mode);
  if (font) m_DC.SelectObject(font);
}

// ---- regions

void QFGDIDisplay::AddFillPoint(const CPoint& pixel) {
  if (m_bFillRegion) m_FillPoints.push_back(pixel);
}

void QFGDIDisplay::SetFillRegion(int on) {
  m_bFillRegion = on;
  m_FillPoints.clear();
}

int QFGDIDisplay::FillRegion() {
  if (!m_bFillRegion || m_FillPoints.empty()) return 0;
  if (!m_pRegion) m_pRegion = std::make_unique<CRgn>();
  m_pRegion->DeleteObject();
  m_pRegion->CreatePolygonRgn(m_FillPoints.data(), int(m_FillPoints.size()), ALTERNATE);
  m_FillPoints.clear();
  if (!m_pBrush && m_pDisplayData) m_pBrush = std::make_unique<CBrush>(m_pDisplayData->GetFillColor());
  return m_DC.FillRgn(m_pRegion.get(), m_pBrush.get()) != 0;
}

void QFGDIDisplay::SetRectClipRegion(const CRect* rect) {
  if (!rect) return;
  m_bClipRect = 1;
  m_ClipRect = *rect;
}

int QFGDIDisplay::ClipRegion() {
  if (!m_bClipRect) return 0;
  CRgn region;
  region.CreateRectRgn(m_ClipRect.left, m_ClipRect.top, m_ClipRect.right, m_ClipRect.bottom);
  return m_DC.m_hDC && region.m_hObject && m_DC.SelectClipRgn(&region) != 0;
}
