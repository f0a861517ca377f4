// The decimal sign of the user's text: QFRegionalDecimal follows the C runtime's locale, in which a module may have set
// the numeric category; KVGetLocaleDecimalFormat follows the operating system's setting for the user.
//
// This library's own texts and files always have the point and need neither.
#pragma once

#include "framework/text.h"

// One reading of the C runtime's decimal sign, taken when the object is made. The reading and AtoF are for threads that
// don't change the process's locale meanwhile.
class KVSHARE_API QFRegionalDecimal {
 public:
  QFRegionalDecimal() { SetIsEnglishDecimal(); }
  virtual ~QFRegionalDecimal() = default;

  // 1 if the sign is the point, or none of one byte.
  int GetIsEnglishDecimal() const { return m_bIsEnglishDecimal; }
  // 1 if texts have to be changed between point and sign; the opposite of GetIsEnglishDecimal.
  int GetReplaceDecimal() const { return !m_bIsEnglishDecimal; }
  // The sign itself, the point to begin with.
  char GetRegionalDecimal() const { return m_cRegionalDecimal; }

  // Replaces every sign in the text by a point; does nothing if the sign is the point.
  void ToEnglishDecimal(CString& text) const;
  // The number at the beginning of the text by the C runtime's rules, 0.0 for none and for null. If the sign is not the
  // point, the first point in the caller's text is overwritten by the sign: that is required.
  double AtoF(char* text) const;

 protected:
  // Reads the sign off the runtime's own printing of 0.1.
  void SetIsEnglishDecimal();

 private:
  int m_bIsEnglishDecimal = 1;
  char m_cRegionalDecimal = '.';
};

// Replaces every point in the text by the user's decimal sign. A system that tells none leaves the text as it is.
KVSHARE_API void KVGetLocaleDecimalFormat(CString& text);
