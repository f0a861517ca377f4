// The decimal sign of the C runtime and of the user's system settings.
#include "share/utilities/regional_decimal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/locale.h"

void QFRegionalDecimal::SetIsEnglishDecimal() {
  m_cRegionalDecimal = '.';
  m_bIsEnglishDecimal = 1;
  char printed[16] = {};
  const int length = std::snprintf(printed, sizeof printed, "%1.1f", 0.1);
  if (length != 3 || printed[0] != '0') return;
  m_cRegionalDecimal = printed[1];
  m_bIsEnglishDecimal = m_cRegionalDecimal == '.';
}

void QFRegionalDecimal::ToEnglishDecimal(CString& text) const {
  if (!m_bIsEnglishDecimal) text.Replace(TCHAR(BYTE(m_cRegionalDecimal)), _T('.'));
}

double QFRegionalDecimal::AtoF(char* text) const {
  if (!text) return 0.0;
  char* const point = m_bIsEnglishDecimal ? nullptr : std::strchr(text, '.');
  if (point) *point = m_cRegionalDecimal;
  return std::atof(text);
}

void KVGetLocaleDecimalFormat(CString& text) {
  TCHAR sign[8] = {};
  if (GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, sign, 8) > 0) text.Replace(_T("."), sign);
}
