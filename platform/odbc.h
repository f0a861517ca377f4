// ODBC's own headers, made to go with the platform's types. For companions/database alone: a module needs no ODBC.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

// The driver manager's headers bring types of the same names with other meanings, unless they are told that these are
// there. Then they take the rest of theirs for given as well.
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

// While it lives, a connection that this thread opens takes narrow texts for UTF-8 from then on where the driver has
// only wide ones, whatever the process's locale says.
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
