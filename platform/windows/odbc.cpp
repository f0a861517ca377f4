// The wide calls do not depend on a locale.
#include "platform/odbc.h"

#include "platform/utf8.h"

namespace {

constexpr int kMostValueUnits = 1000;

}  // namespace

SqlText SqlTextFromUtf8(std::string_view text) { return WideFromUtf8(text); }

std::string Utf8FromSqlText(SqlTextView text) { return Utf8FromWide(text); }

std::string RegisteredWithOdbc(const char* file, const std::string& section, const char* key) {
  WCHAR value[kMostValueUnits] = {};
  SQLGetPrivateProfileStringW(WideFromUtf8(section).c_str(), WideFromUtf8(key).c_str(), L"", value, kMostValueUnits,
                              WideFromUtf8(file).c_str());
  return Utf8FromWide(value);
}

Utf8Connections::Utf8Connections() : locale_(nullptr), before_(nullptr) {}

Utf8Connections::~Utf8Connections() = default;
