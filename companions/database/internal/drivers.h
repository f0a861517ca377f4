// Where a driver's library lies, and what a connection string of the product becomes for it.
#pragma once

#include "companions/database/connection_strings.h"

namespace kvdatabase {

// The string that goes to the driver manager: the driver by its library if only this library's own registration knows
// it, file paths as the system takes them, what a driver needs besides. Throws CDaoException for a driver that nobody
// registered, and for a file that is not there.
CString ForDriverManager(const ConnectionPieces& given);

}  // namespace kvdatabase
