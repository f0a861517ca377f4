// Raw access to single registry values, for code that needs no settings tree.
//
// A path is relative to the hive or key handed in, which stays the caller's. Each call opens and closes its own key,
// may be made on any thread, and is a registry read: not for inner loops. Nothing is reported and nothing throws. What
// is missing gives the result told at the call.
#pragma once

#include "framework/text.h"
#include "platform/registry.h"

// Read four bytes. A missing key or value gives 1, not 0: that is required. found receives 1 if there was one, else 0;
// it may be null.
KVSHARE_API int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name);
KVSHARE_API int GetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int* found);

// Writes a 32-bit integer, creating the key if it does not exist. A key that exists but may not be written is left
// alone.
KVSHARE_API void SetRegSettingDwordValue(HKEY hive, const CString& path, const CString& name, int value);

// A text of at most 999 characters; empty if it is missing or longer.
KVSHARE_API CString GetRegSettingStringValue(HKEY hive, const CString& path, const CString& name);

// Writes a text, without a terminator in its data. 1 if written; creates no key: a missing one gives 0.
KVSHARE_API int SetRegistryValueForString(HKEY hive, const CString& path, const CString& name, const CString& value);

KVSHARE_API void RegSettingDeleteValue(HKEY hive, const CString& path, const CString& name);

// 1 if that version of the office database is installed, in its 32-bit edition if is32Bit is 1.
KVSHARE_API int CheckAccessVersionInstalled(int officeVersion, int is32Bit);

// The install folder, with fileName appended, of the installed program with that display name, compared without case;
// in the list of 32-bit programs if is32Bit is 1. The first match counts; none gives an empty text. Names and values of
// more than 2,047 characters are passed over.
KVSHARE_API CString GetAppInstallPathFromReg(const CString& displayName, int is32Bit, const CString& fileName);
