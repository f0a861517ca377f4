// ODBC's own headers, adapted to the platform's types. Only for companions/database: a module needs no ODBC.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// The driver manager's headers define types of the same names with other meanings, unless this macro says that they
// exist already. The headers then expect all of these types.
#define ALREADY_HAVE_WINDOWS_TYPE
#define FAR
#define CALLBACK
#define SQL_API
using CHAR = char;
using UCHAR = unsigned char;
using SCHAR = signed char;
using SQLSCHAR = SCHAR;
using SDWORD = int;
using UDWORD = unsigned int;
using SWORD = short;
using UWORD = unsigned short;
using SLONG = long;
using SSHORT = short;
using ULONG = unsigned long;
using USHORT = unsigned short;
using SDOUBLE = double;
using LDOUBLE = double;
using SFLOAT = float;
using PTR = void*;
using RETCODE = short;
using HWND = void*;
using SQLHWND = void*;

#endif

#include <odbcinst.h>
#include <sql.h>
#include <sqlext.h>

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
