#include "framework/font.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CFont, CGdiObject)

BOOL CFont::CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic, BYTE underline,
                       BYTE strikeOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision, BYTE quality,
                       BYTE pitchAndFamily, LPCTSTR face) {
  DeleteObject();
  m_logFont = {height,    width,   escapement,   orientation,   weight,  italic,         underline,
               strikeOut, charSet, outPrecision, clipPrecision, quality, pitchAndFamily, {}};
  const TextView name = TextView(face ? face : _T("")).substr(0, LF_FACESIZE - 1);
  std::copy(name.begin(), name.end(), m_logFont.lfFaceName);
  return Attach(::CreateFontIndirectW(&m_logFont));
}

BOOL CFont::GetLogFont(LOGFONTW* font) const {
  if (!m_hObject || !font) return FALSE;
  *font = m_logFont;
  return TRUE;
}
