// The system folders that represent drives.
#pragma once

#include <string>

#include "platform/types.h"

// The system folder of a drive, without a slash at its end. It may not exist.
std::string DriveFolder(char letter);
// The folder of the drive at the start of a product path; empty without a drive.
std::string DriveFolderOf(LPCWSTR path);
// As SystemPathFromProduct, but without the search for other cases: the path is taken as written.
std::string SystemPathAsWritten(LPCWSTR path);
