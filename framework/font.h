// CFont: a font for device contexts. It is a description; a device context chooses the nearest font of the system when
// the CFont is selected into it. One thread at a time may use a font.
#pragma once

#include "framework/drawing_objects.h"

class KVSHARE_API CFont : public CGdiObject {
  DECLARE_DYNAMIC(CFont)

  // No font until CreateFont.
  CFont() = default;

  // Creates the font, with the fields of LOGFONTW in their order; replaces an earlier one. A null face means any; one
  // longer than 31 units is cut off. FALSE if the platform makes no handle; there is no font then.
  BOOL CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic, BYTE underline,
                  BYTE strikeOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision, BYTE quality,
                  BYTE pitchAndFamily, LPCTSTR face);
  // Copies the description. FALSE, and no change, if there is none.
  BOOL GetLogFont(LOGFONTW* font) const;

 private:
  LOGFONTW m_logFont = {};
};
