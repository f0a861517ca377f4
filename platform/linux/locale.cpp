// Languages, date and time pictures, and other locale data, implemented with ICU.
#include "platform/locale.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include "platform/linux/errno_status.h"
#include "platform/linux/utf8.h"

namespace {

constexpr LANGID kAmericanEnglish = 0x0409;

// ICU's name of the locale that the environment sets for a category.
std::string UserLocale(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* value = std::getenv(variable);
    if (!value || !*value) continue;
    const std::string name = value;
    if (name == "C" || name == "POSIX" || name.starts_with("C.")) break;
    char canonical[ULOC_FULLNAME_CAPACITY] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_canonicalize(value, canonical, sizeof canonical, &status);
    if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) break;
    return canonical;
  }
  return "en_US";
}

std::string LocaleName(LCID locale, const char* category) {
  char name[ULOC_FULLNAME_CAPACITY] = {};
  UErrorCode status = U_ZERO_ERROR;
  if (locale != LOCALE_USER_DEFAULT && locale != 0) uloc_getLocaleForLCID(locale, name, sizeof name, &status);
  return U_SUCCESS(status) && name[0] ? name : UserLocale(category);
}

SYSTEMTIME LocalTime() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  return {WORD(local.tm_year + 1900), WORD(local.tm_mon + 1), WORD(local.tm_wday), WORD(local.tm_mday),
          WORD(local.tm_hour),        WORD(local.tm_min),     WORD(local.tm_sec),  WORD(now.tv_nsec / 1'000'000)};
}

// Copies a text and its terminator to the caller by the rules of these calls.
int CopyText(std::u16string_view text, LPWSTR buffer, int units) {
  const int needed = int(text.size()) + 1;
  if (units == 0) return needed;
  if (units < needed || !buffer) return FailWithStatus(ERROR_INSUFFICIENT_BUFFER);
  CopyToBuffer(text, buffer, DWORD(units));
  return needed;
}

// ---- names of months, days and the like

// Loaded with the first name: most pictures need only digits, and loading takes a thousand times as long.
class Names {
 public:
  explicit Names(LCID locale) : locale_(locale) {}
  // The entry at the index of a table; empty without data.
  std::u16string Get(UDateFormatSymbolType table, int index) const {
    UErrorCode status = U_ZERO_ERROR;
    UChar text[128];
    if (!format_) {
      const std::string name = LocaleName(locale_, "LC_TIME");
      format_.reset(udat_open(UDAT_DEFAULT, UDAT_DEFAULT, name.c_str(), nullptr, 0, nullptr, 0, &status));
    }
    if (!format_ || U_FAILURE(status)) return {};
    const int length = udat_getSymbols(format_.get(), table, index, text, 128, &status);
    return U_SUCCESS(status) ? std::u16string(text, std::size_t(length)) : std::u16string();
  }

 private:
  struct Close {
    void operator()(UDateFormat* format) const { udat_close(format); }
  };
  LCID locale_;
  mutable std::unique_ptr<UDateFormat, Close> format_;
};

std::u16string Digits(int value, int width) {
  std::string text = std::to_string(value);
  if (int(text.size()) < width) text.insert(0, std::size_t(width) - text.size(), '0');
  return {text.begin(), text.end()};
}

// ---- pictures

// Copies the picture; for each run of one of the given letters calls write(letter, length).
template <class Write>
std::u16string ExpandPicture(std::u16string_view picture, std::u16string_view letters, Write write) {
  std::u16string out;
  bool quoted = false;
  for (std::size_t at = 0; at < picture.size();) {
    const char16_t unit = picture[at];
    if (unit == u'\'') {
      const bool doubled = quoted && at + 1 < picture.size() && picture[at + 1] == u'\'';
      if (doubled) out += unit;
      quoted = doubled || !quoted;
      at += doubled ? 2 : 1;
    } else if (quoted || letters.find(unit) == letters.npos) {
      out += unit;
      ++at;
    } else {
      const std::size_t end = std::min(picture.find_first_not_of(unit, at), picture.size());
      out += write(unit, int(end - at));
      at = end;
    }
  }
  return out;
}

// True if the picture shows the day as a number; the month's name is then in the genitive in languages that have one.
bool ShowsDay(std::u16string_view picture) {
  bool shows = false;
  ExpandPicture(picture, u"d", [&](char16_t, int length) {
    shows |= length <= 2;
    return std::u16string();
  });
  return shows;
}

bool IsDate(const SYSTEMTIME& date) {
  using namespace std::chrono;
  return date.wYear >= 1601 && date.wYear <= 30827 &&
         year_month_day(year(date.wYear), month(date.wMonth), day(date.wDay)).ok();
}

int DayOfWeek(const SYSTEMTIME& date) {
  using namespace std::chrono;
  return int(weekday(sys_days(year(date.wYear) / month(date.wMonth) / day(date.wDay))).c_encoding());
}

std::u16string DateText(const SYSTEMTIME& date, std::u16string_view picture, const Names& names) {
  const bool genitive = ShowsDay(picture);
  return ExpandPicture(picture, u"dMyg", [&](char16_t letter, int length) -> std::u16string {
    switch (letter) {
      case u'd':
        if (length <= 2) return Digits(date.wDay, length);
        return names.Get(length == 3 ? UDAT_SHORT_WEEKDAYS : UDAT_WEEKDAYS, DayOfWeek(date) + 1);
      case u'M':
        if (length <= 2) return Digits(date.wMonth, length);
        if (length == 3) return names.Get(genitive ? UDAT_SHORT_MONTHS : UDAT_STANDALONE_SHORT_MONTHS, date.wMonth - 1);
        return names.Get(genitive ? UDAT_MONTHS : UDAT_STANDALONE_MONTHS, date.wMonth - 1);
      case u'y': return length <= 2 ? Digits(date.wYear % 100, length) : Digits(date.wYear, 4);
      default: return names.Get(UDAT_ERAS, 1);
    }
  });
}

std::u16string TimeText(const SYSTEMTIME& time, std::u16string_view picture, const Names& names) {
  return ExpandPicture(picture, u"hHmst", [&](char16_t letter, int length) -> std::u16string {
    const int width = std::min(length, 2);
    switch (letter) {
      case u'h': return Digits((time.wHour + 11) % 12 + 1, width);
      case u'H': return Digits(time.wHour, width);
      case u'm': return Digits(time.wMinute, width);
      case u's': return Digits(time.wSecond, width);
      default: {
        const std::u16string mark = names.Get(UDAT_AM_PMS, time.wHour >= 12);
        return length == 1 ? mark.substr(0, 1) : mark;
      }
    }
  });
}

}  // namespace

// ---- the user's language

LANGID GetUserDefaultLangID() {
  const std::string locale = UserLocale("LC_MESSAGES");
  LCID id = uloc_getLCID(locale.c_str());
  if (SUBLANGID(LANGID(id)) == 0) {
    char likely[ULOC_FULLNAME_CAPACITY] = {};
    char language[ULOC_LANG_CAPACITY] = {};
    char country[ULOC_COUNTRY_CAPACITY] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_addLikelySubtags(locale.c_str(), likely, sizeof likely, &status);
    uloc_getLanguage(likely, language, sizeof language, &status);
    uloc_getCountry(likely, country, sizeof country, &status);
    if (U_SUCCESS(status)) id = uloc_getLCID((std::string(language) + '_' + country).c_str());
  }
  const auto result = LANGID(id);
  return PRIMARYLANGID(result) == 0 ? kAmericanEnglish : result;
}

// ---- time

int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* date, LPCWSTR picture, LPWSTR buffer, int units) {
  SYSTEMTIME now;
  if (!date) now = LocalTime();
  const SYSTEMTIME& shown = date ? *date : now;
  if (flags != 0) return FailWithStatus(ERROR_INVALID_FLAGS);
  if (!picture || units < 0 || !IsDate(shown)) return FailWithStatus(ERROR_INVALID_PARAMETER);
  return CopyText(DateText(shown, picture, Names(locale)), buffer, units);
}

int GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* time, LPCWSTR picture, LPWSTR buffer, int units) {
  SYSTEMTIME now;
  if (!time) now = LocalTime();
  const SYSTEMTIME& shown = time ? *time : now;
  const bool valid = shown.wHour < 24 && shown.wMinute < 60 && shown.wSecond < 60;
  if (flags != 0) return FailWithStatus(ERROR_INVALID_FLAGS);
  if (!picture || units < 0 || !valid) return FailWithStatus(ERROR_INVALID_PARAMETER);
  return CopyText(TimeText(shown, picture, Names(locale)), buffer, units);
}

// ---- facts

int GetLocaleInfoW(LCID locale, DWORD kind, LPWSTR buffer, int units) {
  if (kind != LOCALE_SDECIMAL) return FailWithStatus(ERROR_INVALID_FLAGS);
  UErrorCode status = U_ZERO_ERROR;
  const std::string name = LocaleName(locale, "LC_NUMERIC");
  const std::unique_ptr<UNumberFormat, void (*)(UNumberFormat*)> format(
      unum_open(UNUM_DECIMAL, nullptr, 0, name.c_str(), nullptr, &status),
      [](UNumberFormat* opened) { unum_close(opened); });
  UChar text[16];
  const int length =
      U_SUCCESS(status) ? unum_getSymbol(format.get(), UNUM_DECIMAL_SEPARATOR_SYMBOL, text, 16, &status) : 0;
  if (U_FAILURE(status)) return FailWithStatus(ERROR_INVALID_PARAMETER);
  return CopyText({text, std::size_t(length)}, buffer, units);
}
