// The registry: a tree of keys in two hives. Each key has named, typed values. All processes of a user share the user's
// hive, all processes of the machine the machine's hive. A setting that was never written is absent, which differs from
// 0.
//
// Names. A path is relative to a handle; "\" separates its parts. A trailing "\" is ignored, a leading one is
// ERROR_BAD_PATHNAME. Names compare without case (platform/text.h) and keep the case of their creation. A key's name
// has 1 to 255 units, a value's name 0 to 16,383 (the empty name is the key's default value), a tree at most 512
// levels; beyond these limits a call returns ERROR_INVALID_PARAMETER. A null path or value name is the same as an empty
// one unless a call says otherwise.
//
// Handles. The two predefined handles are always open, with all rights. The calls that open a key return other handles,
// with the rights that the caller asked for; the caller closes them. Every call checks its handle: ERROR_INVALID_HANDLE
// if it is not open, ERROR_ACCESS_DENIED if it lacks a right, ERROR_KEY_DELETED if its key was deleted.
//
// Failure. Every call returns 0 (ERROR_SUCCESS) or a status code. After a failure the output arguments are unchanged
// unless the call says otherwise. Any call can return, besides its own codes: ERROR_INVALID_PARAMETER for a reserved
// argument that is not 0 or a required pointer that is null, ERROR_BADDB for a damaged hive file,
// ERROR_UNKNOWN_REVISION for one in the format of a later release, ERROR_ACCESS_DENIED and ERROR_PATH_NOT_FOUND for a
// folder or file that can't be used, ERROR_DISK_FULL, ERROR_REGISTRY_IO_FAILED, ERROR_NOT_ENOUGH_MEMORY, and ERROR_BUSY
// after half a minute in which others kept writing (platform/registry_files.h sets a shorter time).
//
// Sharing. Any thread of any number of processes may call. Each call does all of its work or nothing. When a call has
// returned, its change survives the death of the process, and every later call of any process sees it.
//
// Files. Each hive is one file, "user.hive" or "machine.hive", in the folder that the environment variable KV_REGISTRY
// names. Without the variable the user's hive is in $XDG_CONFIG_HOME/kestrova/registry (or below ~/.config), the
// machine's hive in /var/lib/kestrova/registry. Each use of a predefined handle reads the variable again. The first
// write creates folder and file; a hive without a file is empty. A hive whose file is read-only can be read; opening
// one of its keys for writing is ERROR_ACCESS_DENIED. If the file of a hive is removed or replaced, a running process
// still reads the old file until its next write. From then on it uses the new file, and handles of the old file's keys
// return ERROR_KEY_DELETED.
#pragma once

#include "platform/types.h"

#ifdef _WIN32

#include <ktmw32.h>

#ifndef ERROR_TRANSACTION_NOT_ACTIVE
#define ERROR_TRANSACTION_NOT_ACTIVE 6701L  // missing in headers of some compilers
#endif

#else

#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(std::uintptr_t{0x80000001}))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(std::uintptr_t{0x80000002}))

// Rights of a handle. Each call says which right it needs.
inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

// Types of values. The registry stores any number as a type and does not check the data.
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_OPTION_OPEN_LINK = 8;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

inline constexpr LONG ERROR_BAD_PATHNAME = 161;
inline constexpr LONG ERROR_BUSY = 170;
inline constexpr LONG ERROR_TRANSFER_TOO_LONG = 222;
inline constexpr LONG ERROR_NOACCESS = 998;
inline constexpr LONG ERROR_BADKEY = 1010;
inline constexpr LONG ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr LONG ERROR_TRANSACTION_NOT_ACTIVE = 6701;

// ---- Keys ----

// Opens an existing key; ERROR_FILE_NOT_FOUND if there is none. An empty path opens the handle's own key again. options
// is 0 or REG_OPTION_OPEN_LINK, which has no effect because there are no links. The caller closes *opened with
// RegCloseKey.
KVSHARE_API LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened);

// Opens a key; creates it and the keys above it if they are missing. *disposition (optional) is set to
// REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY. The rights of `key` don't matter. A null path is ERROR_BADKEY. A new
// key keeps className (optional). options must be REG_OPTION_NON_VOLATILE; security is ignored. The caller closes
// *opened with RegCloseKey.
KVSHARE_API LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options,
                                    REGSAM rights, SECURITY_ATTRIBUTES* security, PHKEY opened, DWORD* disposition);

// Closes a handle. A predefined handle stays open; the call returns 0.
KVSHARE_API LSTATUS RegCloseKey(HKEY key);

// Deletes a key with everything below it. With a null or empty path the handle's own key stays and becomes empty; this
// also needs KEY_SET_VALUE. Needs KEY_ENUMERATE_SUB_KEYS and KEY_QUERY_VALUE. With a handle of a transaction the call
// is part of that transaction.
KVSHARE_API LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path);

// Copies the name of sub-key number `index`, which counts from 0 in the order of the names without case;
// ERROR_NO_MORE_ITEMS after the last one. *nameUnits is the buffer's size in units including the terminator on entry,
// and the name's length without it on return. If the buffer is too small, the call returns ERROR_MORE_DATA and changes
// nothing. className and written (time of the last change) are optional. Needs KEY_ENUMERATE_SUB_KEYS.
//
// The numbers are those at the moment of the call. They change when sub-keys are created or deleted, so a walk during
// such a change can miss a key or return it twice. Each step of a walk upward takes the same time; a step back, or a
// step after a change to the hive, counts from the first sub-key.
KVSHARE_API LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved,
                                  LPWSTR className, DWORD* classUnits, FILETIME* written);

// ---- Values ----

// Reads a value; ERROR_FILE_NOT_FOUND if there is none. type, data and bytes are optional, but data needs bytes. *bytes
// is the buffer's size on entry and the data's size on return. With data null the call only reads type and size. If the
// buffer is too small, the call returns ERROR_MORE_DATA, sets type and size and leaves the buffer unchanged. Text is
// copied as it was stored, which can be without a terminator. Needs KEY_QUERY_VALUE.
KVSHARE_API LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes);

// Reads several values of a key into one buffer: sets the size, the address and the type of each. *bytes is the
// buffer's size on entry and the size of all data on return. If the buffer is too small, the call returns
// ERROR_MORE_DATA. ERROR_FILE_NOT_FOUND if one of the values is missing, ERROR_TRANSFER_TOO_LONG for more than 1 MiB.
// After a failure some values and the buffer may be changed. Outside a transaction another process may change the key
// between two of the values. Needs KEY_QUERY_VALUE.
struct VALENTW {
  LPWSTR ve_valuename;
  DWORD ve_valuelen;
  std::uintptr_t ve_valueptr;
  DWORD ve_type;
};
KVSHARE_API LSTATUS RegQueryMultipleValuesW(HKEY key, VALENTW* values, DWORD count, LPWSTR buffer, DWORD* bytes);

// Writes a value; creates it or replaces the old one. The bytes are stored as they are: the size of a text includes its
// terminator if the caller wants one stored. data may be null if bytes is 0, otherwise null is ERROR_NOACCESS. Needs
// KEY_SET_VALUE.
KVSHARE_API LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes);

// Deletes a value; ERROR_FILE_NOT_FOUND if there is none. Needs KEY_SET_VALUE.
KVSHARE_API LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name);

// Copies the name and data of value number `index`, which counts from 0 in the order of creation; ERROR_NO_MORE_ITEMS
// after the last one. The name works as in RegEnumKeyExW; type, data and bytes as in RegQueryValueExW. If only the data
// does not fit, the call returns ERROR_MORE_DATA with the name set. Walks behave as in RegEnumKeyExW. To empty a key,
// delete number 0 until there are no more items. Needs KEY_QUERY_VALUE.
KVSHARE_API LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved, DWORD* type,
                                  BYTE* data, DWORD* bytes);

// ---- Transactions ----
//
// Calls with a handle that was opened in a transaction are part of the transaction. Its other calls see their changes
// immediately; everybody else sees all of them after the commit, or none. A call without Transacted in its name looks
// up a path below such a handle outside the transaction. Until its first write a transaction reads one state of a hive,
// whatever others commit meanwhile. The first write, or the first key opened with a right to change it, locks the hive:
// other writers wait until the transaction ends. (A thread that writes outside its own transaction waits for itself,
// until ERROR_BUSY.) What a transaction has read before that moment may have changed. After the end of the transaction
// its key handles return ERROR_TRANSACTION_NOT_ACTIVE; close them. A transaction that writes to both hives commits them
// one after the other, not in one step. A transaction does not survive a fork.

// Begins a transaction; INVALID_HANDLE_VALUE on failure. All arguments may be 0 or null; they have no effect. The
// caller closes the handle with CloseHandle, which rolls back an uncommitted transaction.
KVSHARE_API HANDLE CreateTransaction(SECURITY_ATTRIBUTES* security, void* unitOfWork, DWORD options,
                                     DWORD isolationLevel, DWORD isolationFlags, DWORD timeout_ms, LPWSTR description);

// Ends a transaction. FALSE, with the reason in GetLastError, if the handle is not a transaction's, if the transaction
// has ended before, or if the commit failed; a hive whose commit failed is unchanged.
KVSHARE_API BOOL CommitTransaction(HANDLE transaction);

// As the calls without Transacted, within a transaction. Only for a system with HasRegistryTransactions (below).
// `extended` is null.
KVSHARE_API LSTATUS RegCreateKeyTransactedW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options,
                                            REGSAM rights, const SECURITY_ATTRIBUTES* security, PHKEY opened,
                                            DWORD* disposition, HANDLE transaction, void* extended);
KVSHARE_API LSTATUS RegOpenKeyTransactedW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened,
                                          HANDLE transaction, void* extended);
// Deletes a key with its values, within a transaction; the rights of `key` and `rights` don't matter.
// ERROR_FILE_NOT_FOUND if there is no such key, ERROR_ACCESS_DENIED for a key with sub-keys and for the hive itself. An
// empty path deletes the handle's own key; a null path is ERROR_INVALID_PARAMETER.
KVSHARE_API LSTATUS RegDeleteKeyTransactedW(HKEY key, LPCWSTR path, REGSAM rights, DWORD reserved, HANDLE transaction,
                                            void* extended);

#endif

// Whether the registry of this system has transactions. Any thread may call.
KVSHARE_API bool HasRegistryTransactions();
