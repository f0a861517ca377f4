// The decimal sign in the user's text. QFRegionalDecimal uses the C runtime's locale, whose numeric category a module
// may have set; KVGetLocaleDecimalFormat uses the operating system's setting of the user.
//
// Texts and files of this library always have a decimal point and need neither.
#pragma once

#include "framework/text.h"

// The C runtime's decimal sign, read by the constructor. Do not change the process's locale during the constructor or
// AtoF.
class KVSHARE_API QFRegionalDecimal {
 public:
  QFRegionalDecimal() { SetIsEnglishDecimal(); }
  virtual ~QFRegionalDecimal() = default;

  // 1 if the sign is a point, or if it has more than one byte.
  int GetIsEnglishDecimal() const { return m_bIsEnglishDecimal; }
  // 1 if points must be replaced by the sign; the opposite of GetIsEnglishDecimal.
  int GetReplaceDecimal() const { return !m_bIsEnglishDecimal; }
  // The sign; the point if GetIsEnglishDecimal is 1.
  char GetRegionalDecimal() const { return m_cRegionalDecimal; }

  // Replaces each sign in the text by a point.
  void ToEnglishDecimal(CString& text) const;
  // The number at the beginning of the text by the C runtime's rules; 0.0 without a number and for null. If the sign is
  // not the point, it replaces the first point in the caller's text by the sign; kept for existing modules.
  double AtoF(char* text) const;

 protected:
  // Reads the sign from 0.1 as the runtime prints it.
  void SetIsEnglishDecimal();

 private:
  int m_bIsEnglishDecimal = 1;
  char m_cRegionalDecimal = '.';
};

// Replaces each point in the text by the user's decimal sign. Does nothing if the system has no such setting.
KVSHARE_API void KVGetLocaleDecimalFormat(CString& text);
