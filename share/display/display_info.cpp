#include "share/display/display_info.h"

#include "share/display/opengl_display.h"

namespace {

constexpr BYTE kPitchAndFamily = 32;

bool IsIdentity(const FRTransf& transform) { return transform == GetScaleTransf(1.0); }

template <class Value>
void TransformAll(CList<Value>& values, const QFDisplayTransforms& transforms) {
  if (!transforms.m_bUseInstTransf && !transforms.m_bUseXYToModelTransf) return;
  for (POSITION at = values.GetHeadPosition(); at;) {
    Value& value = values.GetNext(at);
    value = transforms.Apply(value);
  }
}

FRTransf After(const QFDisplayTransforms& transforms, FRTransf next) {
  if (transforms.m_bUseInstTransf) next = transforms.m_InstTransf * next;
  if (transforms.m_bUseXYToModelTransf) next = transforms.m_XYToModelTransf * next;
  return next;
}

}  // namespace

QFDisplayInfo::QFDisplayInfo(int useOpenGL, HWND window, const FRTransf& worldToScreen, IUnknown*, const CString&,
                             const CString&)
    : m_pDisplayData(std::make_unique<QFDisplayData>()),
      m_pGDIDisplay(std::make_unique<QFGDIDisplay>(window, worldToScreen)),
      m_pDisplay(m_pGDIDisplay.get()) {
  m_pDisplayData->SetOpenGLDisplay(useOpenGL);
  m_pGDIDisplay->SetDisplayData(m_pDisplayData.get());
  m_pDisplayData->SetDC(m_pGDIDisplay->GetDC());
  if (useOpenGL) SetDisplay(new QFOpenGLDisplay);
}

// The back ends may use the state while they end. The GDI display is the first to go unless it is the current one.
QFDisplayInfo::~QFDisplayInfo() {
  if (m_pOtherDisplay) m_pGDIDisplay.reset();
}

void QFDisplayInfo::SetOpenGLDisplay(int openGL) {
  m_pDisplayData->SetOpenGLDisplay(openGL);
  if (!openGL) SetDisplay(nullptr);
}

void QFDisplayInfo::SetDisplay(QFBaseDisplay* display) {
  if (display && display == m_pDisplay) return;
  if (display == m_pGDIDisplay.get()) display = nullptr;
  m_pOtherDisplay.reset(display);
  m_pDisplay = display ? display : m_pGDIDisplay.get();
  m_pDisplay->SetDisplayData(m_pDisplayData.get());
}

int QFDisplayInfo::InitialiseGraphics() {
  m_pDisplay->UninitialiseGraphics();
  return m_pDisplay->InitialiseGraphics();
}

int QFDisplayInfo::ResetOpenGLDisplayObj() {
  InitialiseGraphics();
  return 1;
}

// ---- state

void QFDisplayInfo::SetColor(DWORD color) {
  if (m_bDynamicHiLite || color == GetColor()) return;
  m_pDisplayData->SetColor(color);
  InitialiseGraphics();
}

void QFDisplayInfo::SetLineWidthWithInit(int width) {
  if (m_bDynamicHiLite || width == GetLineWidth()) return;
  m_pDisplayData->SetLineWidth(width);
  InitialiseGraphics();
}

void QFDisplayInfo::SetTransparent(int transparent) {
  if (transparent == GetIsTransparent()) return;
  m_pDisplayData->SetIsTransparent(transparent);
  InitialiseGraphics();
}

void QFDisplayInfo::SetLineWidthOnlyByGLCall(int width) {
  if (m_bDynamicHiLite || width == GetLineWidth()) return;
  m_pDisplayData->SetLineWidth(width);
  m_pDisplay->SetLineWidthOnlyByGLCall(width);
}

void QFDisplayInfo::SetFont(int height, int weight, int italic, int underline, const CString& face) {
  auto font = std::make_unique<CFont>();
  font->CreateFont(height, 0, 0, 0, weight, BYTE(italic), BYTE(underline), 0, 0, 0, 0, 0, kPitchAndFamily, face);
  SetFont(font.release());
}

// ---- transforms

void QFDisplayInfo::SetUseInstTransf(int use, const FRTransf& transform) {
  m_Transforms.m_bUseInstTransf = use;
  if (!use) return;
  m_Transforms.m_InstTransf *= transform;
  if (IsIdentity(m_Transforms.m_InstTransf)) m_Transforms.m_bUseInstTransf = 0;
}

void QFDisplayInfo::SetUseXYToModelTransf(int use, const FRTransf& transform) {
  m_Transforms.m_XYToModelTransf = transform;
  m_Transforms.m_bUseXYToModelTransf = IsIdentity(transform) ? 0 : use;
}

FRTransf QFDisplayInfo::GetCombinedPreMultiplicationTransf() const { return After(m_Transforms, FRTransf()); }

FRTransf QFDisplayInfo::GetCombinedModelToViewTransf() const { return After(m_Transforms, m_pGDIDisplay->GetTransf()); }

// ---- drawing

int QFDisplayInfo::DrawLine(FRPosition from, FRPosition to) {
  m_pDisplay->DrawLine(m_Transforms.Apply(from), m_Transforms.Apply(to));
  return 1;
}

int QFDisplayInfo::DrawArrow(FRPosition from, FRPosition to) {
  m_pDisplay->DrawArrow(m_Transforms.Apply(from), m_Transforms.Apply(to));
  return 1;
}

int QFDisplayInfo::DrawEllipse(FRPosition centre, double a, double b) {
  m_pDisplay->DrawEllipse(m_Transforms.Apply(centre), a, b, m_pGDIDisplay->GetTransf());
  return 1;
}

int QFDisplayInfo::DrawPlaneEllipse(FRPosition centre, double a, double b) {
  m_pDisplay->DrawPlaneEllipse(m_Transforms.Apply(centre), a, b);
  return 1;
}

int QFDisplayInfo::DrawTriangle(CList<FRPosition>& points, CList<FRUnitVector>& normals) {
  TransformAll(points, m_Transforms);
  TransformAll(normals, m_Transforms);
  m_pDisplay->DrawTriangle(points, normals);
  return 1;
}

int QFDisplayInfo::DrawPolygon(CList<FRPosition>& points, CList<FRUnitVector>& normals) {
  TransformAll(points, m_Transforms);
  TransformAll(normals, m_Transforms);
  m_pDisplay->DrawPolygon(points, normals);
  return 1;
}

int QFDisplayInfo::DrawPolyline(CList<FRPosition>& points) {
  TransformAll(points, m_Transforms);
  m_pDisplay->DrawPolyline(points);
  return 1;
}

int QFDisplayInfo::DrawPolyline(CList<FRPosition>& points, unsigned mode) {
  TransformAll(points, m_Transforms);
  m_pDisplay->DrawPolyline(points, mode);
  return 1;
}

int QFDisplayInfo::DrawPolyline(std::vector<FRPosition>& points, unsigned mode) {
  if (m_Transforms.m_bUseInstTransf || m_Transforms.m_bUseXYToModelTransf)
    for (FRPosition& point : points) point = m_Transforms.Apply(point);
  m_pDisplay->DrawPolyline(points, mode);
  return 1;
}

int QFDisplayInfo::DrawPolyline(AFR_Lin_List*& points, double& scale) {
  if (points) m_pDisplay->DrawPolyline(points, scale, m_Transforms);
  return 1;
}

int QFDisplayInfo::DrawText(FRPosition position, const CString& text) {
  m_pDisplay->DrawText(m_Transforms.Apply(position), text);
  return 1;
}
