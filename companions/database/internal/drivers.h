// Finds a driver's library and adapts a connection string of the product to it.
#pragma once

#include "companions/database/connection_strings.h"

namespace kvdatabase {

// The connection string for the driver manager: file paths in the system's form, further keys that a driver needs, and
// the path of the driver's library if the driver is registered only in this library's own odbcinst.ini. Throws
// CDaoException for a driver that is not registered, for a missing file and for a key that is not allowed.
CString ForDriverManager(const ConnectionPieces& connection);

}  // namespace kvdatabase
