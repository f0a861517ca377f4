// The folders that stand for drives.
#pragma once

#include <string>

#include "platform/types.h"

// The system folder of a drive, without a slash at its end. It need not exist.
std::string DriveFolder(char letter);
// That of the drive that a product path begins with; empty if it has none.
std::string DriveFolderOf(LPCWSTR path);
// SystemPathFromProduct for a path that may be taken as it is written: nothing is looked up without case.
std::string SystemPathAsWritten(LPCWSTR path);
