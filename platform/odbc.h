// ODBC's own headers. platform/types.h adapts them to the platform's types. Only for companions/database: a module
// needs no ODBC.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

#include <odbcinst.h>
#include <sql.h>
#include <sqlext.h>

// The texts that are exchanged with the drivers. On Linux UTF-8, through the narrow calls: the packaged SQLite driver
// has only these, and the driver manager's conversion from wide texts loses all characters above U+FFFF. On Windows
// UTF-16, because narrow texts are in the system's code page there. The calls' names mean the right form on both.
#ifdef _WIN32
using SqlUnit = SQLWCHAR;
inline constexpr SQLSMALLINT kSqlUnits = SQL_C_WCHAR;
#else
using SqlUnit = SQLCHAR;
inline constexpr SQLSMALLINT kSqlUnits = SQL_C_CHAR;
#endif
using SqlText = std::basic_string<SqlUnit>;
using SqlTextView = std::basic_string_view<SqlUnit>;

SqlText SqlTextFromUtf8(std::string_view text);
std::string Utf8FromSqlText(SqlTextView text);

// A value of the driver manager's registrations: of drivers in "odbcinst.ini", of data sources in "odbc.ini". Empty
// without such a value.
std::string RegisteredWithOdbc(const char* file, const std::string& section, const char* key);

// While it exists, connections that this thread opens use UTF-8 for narrow text, also later, where the driver has only
// wide text. The process's locale then has no effect on them.
class Utf8Connections {
 public:
  Utf8Connections();
  ~Utf8Connections();
  Utf8Connections(const Utf8Connections&) = delete;
  Utf8Connections& operator=(const Utf8Connections&) = delete;

 private:
  void* locale_;
  void* before_;
};
