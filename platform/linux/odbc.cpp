// The driver manager takes the encoding of narrow text from the locale of the connecting thread.
#include "platform/odbc.h"

#include <locale.h>

namespace {

constexpr int kMostValueBytes = 1000;  // the driver manager's limit

}  // namespace

SqlText SqlTextFromUtf8(std::string_view text) { return {text.begin(), text.end()}; }

std::string Utf8FromSqlText(SqlTextView text) { return {text.begin(), text.end()}; }

std::string RegisteredWithOdbc(const char* file, const std::string& section, const char* key) {
  char value[kMostValueBytes] = {};
  SQLGetPrivateProfileString(section.c_str(), key, "", value, sizeof value, file);
  return value;
}

Utf8Connections::Utf8Connections()
    : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)),
      before_(locale_ ? uselocale(static_cast<locale_t>(locale_)) : nullptr) {}

Utf8Connections::~Utf8Connections() {
  if (before_) uselocale(static_cast<locale_t>(before_));
  if (locale_) freelocale(static_cast<locale_t>(locale_));
}
