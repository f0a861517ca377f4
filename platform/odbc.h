// ODBC's own headers. platform/types.h adapts them to the platform's types. Only for companions/database: a module
// needs no ODBC.
#pragma once

#include "platform/types.h"

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
