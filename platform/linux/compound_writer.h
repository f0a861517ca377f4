// Writes a tree of storages as a compound file, sequentially.
#pragma once

#include "platform/storage.h"

struct StorageNode;

// Writes the complete file, or leaves the old one. Returns STG_E_MEDIUMFULL for a full disk or a file that is too large
// for the format, the failure of reading a stream, or another STG_E_ code. The path is a product path.
HRESULT WriteCompoundFile(LPCWSTR path, const StorageNode& root);

// The STG_E_ code for a platform status.
HRESULT StorageCodeOf(LONG status);
