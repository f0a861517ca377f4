// Types of the platform's drawing calls.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

inline constexpr int LF_FACESIZE = 32;

// The description of a font. A height below 0 is the height of the characters, above 0 that of a line, in the units of
// the device context that the font is selected into; 0 is the default height. The face ends with a NUL.
struct LOGFONTW {
  LONG lfHeight;
  LONG lfWidth;
  LONG lfEscapement;   // tenths of degrees
  LONG lfOrientation;  // tenths of degrees
  LONG lfWeight;       // 400 normal, 700 bold; 0 the default
  BYTE lfItalic;
  BYTE lfUnderline;
  BYTE lfStrikeOut;
  BYTE lfCharSet;
  BYTE lfOutPrecision;
  BYTE lfClipPrecision;
  BYTE lfQuality;
  BYTE lfPitchAndFamily;
  WCHAR lfFaceName[LF_FACESIZE];
};

#endif
