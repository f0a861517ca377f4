// Sort keys from ICU's collator of the user's language.
#include "platform/collation.h"

#include <unicode/ucol.h>

#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/linux/errno_status.h"

namespace {

struct Close {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};

const char* UserLocale() {
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (!value || !*value) continue;
    const std::string_view name = value;
    return name == "C" || name == "POSIX" || name.starts_with("C.") ? "en_US" : value;
  }
  return "en_US";
}

// Null without data.
const UCollator* Collator() {
  thread_local const std::unique_ptr<UCollator, Close> collator = [] {
    UErrorCode status = U_ZERO_ERROR;
    return std::unique_ptr<UCollator, Close>(ucol_open(UserLocale(), &status));
  }();
  return collator.get();
}

}  // namespace

int LCMapStringEx(LPCWSTR locale, DWORD flags, LPCWSTR text, int textUnits, LPWSTR buffer, int units, void*, void*,
                  std::intptr_t) {
  if (flags != LCMAP_SORTKEY) return FailWithStatus(ERROR_INVALID_FLAGS);
  if (locale || !text || textUnits < 1 || units < 0) return FailWithStatus(ERROR_INVALID_PARAMETER);
  const UCollator* const collator = Collator();
  if (!collator) return FailWithStatus(ERROR_NOT_SUPPORTED);
  const int bytes =
      ucol_getSortKey(collator, text, textUnits, units > 0 ? reinterpret_cast<BYTE*>(buffer) : nullptr, units);
  if (units > 0 && bytes > units) return FailWithStatus(ERROR_INSUFFICIENT_BUFFER);
  return bytes;
}
