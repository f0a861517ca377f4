// The back end that does nothing.
#include "share/display/display.h"

QFDisplayList::~QFDisplayList() = default;
int QFDisplayList::Begin() { return 0; }
int QFDisplayList::End() { return 0; }
int QFDisplayList::Delete() { return 0; }
int QFDisplayList::Render(const FRPosition&) { return 0; }

QFBaseDisplay::~QFBaseDisplay() = default;
int QFBaseDisplay::InitialiseGraphics() { return 0; }
int QFBaseDisplay::UninitialiseGraphics() { return 0; }
void QFBaseDisplay::DrawLine(const FRPosition&, const FRPosition&) {}
void QFBaseDisplay::DrawArrow(const FRPosition&, const FRPosition&) {}
void QFBaseDisplay::DrawEllipse(const FRPosition&, double, double, const FRTransf&) {}
void QFBaseDisplay::DrawPlaneEllipse(const FRPosition&, double, double) {}
void QFBaseDisplay::DrawTriangle(const CList<FRPosition>&, const CList<FRUnitVector>&) {}
void QFBaseDisplay::DrawPolygon(const CList<FRPosition>&, const CList<FRUnitVector>&) {}
void QFBaseDisplay::DrawPolyline(AFR_Lin_List*&, double&, const QFDisplayTransforms&) {}
void QFBaseDisplay::DrawPolyline(AFR_Lin_List*&, double&, const QFDisplayTransforms&, int) {}
void QFBaseDisplay::DrawPolyline(const std::vector<FRPosition>&, unsigned) {}
void QFBaseDisplay::DrawPolyline(const CList<FRPosition>&, unsigned) {}
void QFBaseDisplay::DrawPolyline(const CList<FRPosition>&) {}
void QFBaseDisplay::DrawText(const FRPosition&, const CString&) {}
void QFBaseDisplay::SetLineWidthOnlyByGLCall(int) {}
void QFBaseDisplay::SetLineStyle(int dashed) { m_bLineDashed = dashed; }
int QFBaseDisplay::GetDisplayType() const { return 0; }
void QFBaseDisplay::SetFillRegion(int) {}
int QFBaseDisplay::FillRegion() { return 0; }
void QFBaseDisplay::SetRectClipRegion(const CRect*) {}
int QFBaseDisplay::ClipRegion() { return 0; }
void QFBaseDisplay::BeginShadedDisplay() {}
void QFBaseDisplay::EndShadedDisplay() {}
QFDisplayList* QFBaseDisplay::GenerateDisplayList(LONGLONG) { return nullptr; }
int QFBaseDisplay::BeginDisplayList(QFDisplayList*) { return 0; }
int QFBaseDisplay::EndDisplayList(QFDisplayList*) { return 0; }
int QFBaseDisplay::RenderDisplayList(QFDisplayList*, const FRPosition&) { return 0; }
void QFBaseDisplay::Reserved(int) {}
