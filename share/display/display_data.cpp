#include "share/display/display_data.h"

#include "share/core/document_callbacks.h"
#include "share/settings/settings_key.h"

namespace {

constexpr int kMostLineWidth = 5;

int StoredLineWidth() {
  int width = 1;
  const QFSettingsKey* const settings = GetAppSettingsCB();
  const QFSettingsKey* const group = settings ? settings->GetKey(_T("Display")) : nullptr;
  if (group) group->GetValue(_T("LineWidth"), width);
  return width > kMostLineWidth ? 1 : width;
}

}  // namespace

QFDisplayData::QFDisplayData() : m_LineWidth(StoredLineWidth()) {}

QFDisplayData::~QFDisplayData() { SetFont(nullptr); }

void QFDisplayData::Copy(const QFDisplayData* other) {
  if (!other) return;
  m_bOpenGLDisplay = other->m_bOpenGLDisplay;
  m_Color = other->m_Color;
  m_ColorFill = other->m_ColorFill;
  m_LineWidth = other->m_LineWidth;
  m_bLineDashed = other->m_bLineDashed;
  m_bFill = other->m_bFill;
}

void QFDisplayData::SetFont(CFont* font) {
  if (font == m_pFont.get()) return;
  if (m_pFont) m_pFont->DeleteObject();
  m_pFont.reset(font);
}

QFDisplayTransforms::~QFDisplayTransforms() = default;
