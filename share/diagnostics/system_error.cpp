#include "share/diagnostics/system_error.h"

#include <cstdio>

#include "platform/errors.h"
#include "platform/locale.h"
#include "share/diagnostics/outcome.h"

int ShowError() {
  constexpr DWORD kMostUnits = 1024;
  const DWORD status = GetLastError();
  if (status == DWORD(ERROR_SUCCESS)) {
    std::fputs("No errors to report\n", stdout);
    return 0;
  }
  TCHAR text[kMostUnits];
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, status,
                                      GetUserDefaultLangID(), text, kMostUnits, nullptr);
  // A status without a text still has its number.
  const CString shown = length > 0 ? CString(text, int(length)) : FromUtf8(ErrorText(status));
  Outcome(0, SEVERITY_INFORMATION, 0, Outcome::kNoHelp, nullptr, /*productSpecific=*/1).Display(shown);
  return 1;
}
