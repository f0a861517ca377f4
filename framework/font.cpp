#include "framework/font.h"

#include <algorithm>

CFont::~CFont() = default;

BOOL CFont::CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic, BYTE underline,
                       BYTE strikeOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision, BYTE quality,
                       BYTE pitchAndFamily, LPCTSTR face) {
  m_logFont = {height,    width,   escapement,   orientation,   weight,  italic,         underline,
               strikeOut, charSet, outPrecision, clipPrecision, quality, pitchAndFamily, {}};
  const TextView name = TextView(face ? face : _T("")).substr(0, LF_FACESIZE - 1);
  std::copy(name.begin(), name.end(), m_logFont.lfFaceName);
  m_created = true;
  return TRUE;
}

BOOL CFont::DeleteObject() {
  const bool existed = m_created;
  m_created = false;
  return existed;
}

BOOL CFont::GetLogFont(LOGFONTW* font) const {
  if (!m_created || !font) return FALSE;
  *font = m_logFont;
  return TRUE;
}
