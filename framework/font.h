// CFont: a font for device contexts. It is a description; a device context chooses the nearest font of the system when
// the CFont is selected into it. One thread at a time may use a font.
#pragma once

#include "framework/object.h"
#include "platform/drawing.h"

class KVSHARE_API CFont : public CObject {
 public:
  // No font until CreateFont.
  CFont() = default;
  ~CFont() override;

  // Describes the font, with the fields of LOGFONTW in their order; replaces an earlier description. A null face means
  // any; one longer than 31 units is cut off. Always TRUE.
  BOOL CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic, BYTE underline,
                  BYTE strikeOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision, BYTE quality,
                  BYTE pitchAndFamily, LPCTSTR face);
  // Forgets the description. FALSE if there is none.
  BOOL DeleteObject();
  // Copies the description. FALSE, and no change, if there is none.
  BOOL GetLogFont(LOGFONTW* font) const;

 private:
  LOGFONTW m_logFont = {};
  bool m_created = false;
};
