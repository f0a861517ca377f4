// Finds a driver's library and adapts a connection string of the product to it.
#pragma once

#include "companions/database/connection_strings.h"

namespace kvdatabase {

// While one exists, the driver manager finds data sources of the system only, in the whole process. Otherwise it would
// read the user's file of data sources, and create it.
class SystemSources {
 public:
  SystemSources();
  ~SystemSources();
  SystemSources(const SystemSources&) = delete;
  SystemSources& operator=(const SystemSources&) = delete;

 private:
  unsigned short before_;
};

// The connection string for the driver manager: file paths in the system's form, further keys that a driver needs, and
// the path of the driver's library if the driver is registered only in this library's own odbcinst.ini. For a DSN,
// which needs a SystemSources, also its driver. Throws CDaoException for a driver or data source that is not registered
// and for a missing file.
CString ForDriverManager(const ConnectionPieces& connection);

}  // namespace kvdatabase
