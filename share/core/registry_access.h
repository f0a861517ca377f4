// Direct access to single registry values, for code that needs no settings tree.
//
// A path is relative to the given hive or open key; the caller keeps the handle. Each call opens and closes the
// registry key: don't call it in a loop. Any thread may call. No call throws or reports an error; a missing value gives
// the result stated at the call.
#pragma once

#include "framework/text.h"
#include "platform/registry.h"

// Read a value of at most four bytes as a 32-bit integer. The result is 1, not 0, if the key or value is missing,
// longer or can't be read. This is kept for existing modules, to which a missing switch means "on". To distinguish a
// missing value from a stored 1, pass found: it is set to 1 if the value was read, else to 0. found may be null.
KVSHARE_API int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name);
KVSHARE_API int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int* found);

// Writes a 32-bit integer. Creates the key if it is missing. Does nothing if the key can't be opened for writing.
KVSHARE_API void SetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int value);

// A text of at most 999 characters. Empty if it is missing or longer.
KVSHARE_API CString GetRegSettingStringValue(HKEY hive, const CString& path, const CString& name);

// Writes a text; its data has no terminator. 1 if written. Creates no key: 0 if the key is missing.
KVSHARE_API int SetRegistryValueForString(HKEY hive, const CString& path, const CString& name, const CString& value);

// Deletes a value. Does nothing if the key or value is missing.
KVSHARE_API void RegSettingDeleteValue(HKEY hive, const CString& path, const CString& name);

// 1 if Access of that office version is installed: the 32-bit edition if is32Bit is 1, else the 64-bit edition.
KVSHARE_API int CheckAccessVersionInstalled(int officeVersion, int is32Bit);

// The install folder, with fileName appended, of the first installed program with that display name, compared without
// case. is32Bit 1: searches the list of 32-bit programs. Empty if there is no such program. Texts of more than 2,047
// characters count as missing.
KVSHARE_API CString GetAppInstallPathFromReg(const CString& displayName, int is32Bit, const CString& fileName);
