// The registry: a tree of keys in two hives, each key with named, typed values, shared by all processes of a user (or
// of the machine). A setting is absent until somebody writes it, and absent differs from 0.
//
// Names. A path is relative to a handle, its parts divided by "\"; a trailing one doesn't count, a leading one gives
// ERROR_BAD_PATHNAME. Names compare without case and keep the case that they were made with. A key's name has 1 to 255
// units, a value's 0 to 16,383 (the empty one is the key's default value), a tree at most 512 levels; beyond that a
// call gives ERROR_INVALID_PARAMETER. A null path or value name counts as empty where a call doesn't say otherwise.
//
// Handles. The two predefined handles are always open, with all rights. Others come from an opening call, carry the
// rights asked for, and are closed by their owner. Every call checks its handle: ERROR_INVALID_HANDLE for one that is
// not open, ERROR_ACCESS_DENIED for a right it lacks, ERROR_KEY_DELETED once somebody has deleted its key.
//
// Failure. Every call returns 0 (ERROR_SUCCESS) or a status code; output arguments are then untouched unless the call
// says otherwise. Beyond the codes told at each call, any call may give: ERROR_INVALID_PARAMETER for a reserved
// argument that isn't 0 or a required pointer that is null, ERROR_BADDB for a damaged hive file, ERROR_DISK_FULL,
// ERROR_REGISTRY_IO_FAILED, ERROR_NOT_ENOUGH_MEMORY, and ERROR_BUSY after half a minute in which others kept writing.
//
// Sharing. Any thread of any number of processes may call at once; each call is all or nothing. What a call has
// returned from survives the death of the process, and every later call of any process sees it.
//
// Where it lies. Each hive is one file, "user.hive" and "machine.hive", in the folder that the environment variable
// KV_REGISTRY names; without it, the user's hive is in $XDG_CONFIG_HOME/kestrova/registry (or below ~/.config), the
// machine's in /var/lib/kestrova/registry. The variable is looked at anew on each use of a predefined handle. Folder
// and file are made by the first write, never by reading: a hive without a file is an empty hive. A hive whose file may
// not be written can be read; opening one of its keys for writing gives ERROR_ACCESS_DENIED. A hive whose file is
// removed or replaced under a running process is read on as it was until the process writes to it; from then on the new
// one counts, and handles of the old one's keys give ERROR_KEY_DELETED.
#pragma once

#include "platform/types.h"

#ifndef _WIN32

#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(std::uintptr_t{0x80000001}))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(std::uintptr_t{0x80000002}))

// Rights. What a right is needed for stands at each call. MAXIMUM_ALLOWED asks for all that the hive's file allows; the
// generic rights count as KEY_READ, KEY_WRITE, KEY_READ and KEY_ALL_ACCESS; KEY_WOW64_... are accepted, but there is
// only one view (both together: ERROR_INVALID_PARAMETER).
inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

// Types of values. The store keeps any number and gives it back; it never looks into the data.
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
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

inline constexpr LONG ERROR_BAD_PATHNAME = 161;
inline constexpr LONG ERROR_BUSY = 170;
inline constexpr LONG ERROR_BADKEY = 1010;
inline constexpr LONG ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr LONG ERROR_TRANSACTION_NOT_ACTIVE = 6701;

// ---- Keys ----

// Opens an existing key; ERROR_FILE_NOT_FOUND if there is none. An empty path opens the handle's own key anew. options
// is 0. The caller closes *opened with RegCloseKey.
KVSHARE_API LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened);

// Opens a key, making it and the keys above it if they are missing; *disposition (optional) tells which. The rights of
// `key` don't matter. A null path gives ERROR_BADKEY. className (optional) is kept with a new key; options has to be
// REG_OPTION_NON_VOLATILE; security is ignored. The caller closes *opened.
KVSHARE_API LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options,
                                    REGSAM rights, SECURITY_ATTRIBUTES* security, PHKEY opened, DWORD* disposition);

// Closes a handle; a predefined one stays open and gives 0.
KVSHARE_API LSTATUS RegCloseKey(HKEY key);

// Deletes a key with all that is below it. With a null or empty path the handle's own key stays, emptied, and the
// handle needs KEY_SET_VALUE as well. Needs KEY_ENUMERATE_SUB_KEYS and KEY_QUERY_VALUE. Through a handle of a
// transaction it works within that.
KVSHARE_API LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path);

// Gives the sub-key number index, from 0, in the order of the names without case; ERROR_NO_MORE_ITEMS behind the last.
// *nameUnits is the buffer's size in units with the terminator on entry and the name's length without it on return; too
// small a buffer gives ERROR_MORE_DATA and changes nothing. The class and the time are optional. Needs
// KEY_ENUMERATE_SUB_KEYS. Numbers are those of the moment of the call: they move when sub-keys come or go, so a walk
// during a change may miss one or give one twice. In a walk upward each step costs the same, whatever the number;
// counting from the first sub-key is needed only after a change to the hive, and for a step back.
KVSHARE_API LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved,
                                  LPWSTR className, DWORD* classUnits, FILETIME* written);

// ---- Values ----

// Reads a value; ERROR_FILE_NOT_FOUND if there is none. type, data and bytes are optional, but data needs bytes. *bytes
// is the buffer's size on entry and the data's on return: with data null the call only asks (status 0), with too small
// a buffer the status is ERROR_MORE_DATA, type and size are filled in and the buffer is untouched. Text comes as
// stored, perhaps without a terminator. Needs KEY_QUERY_VALUE.
KVSHARE_API LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes);

// Writes a value, new or in the place of the old one. The bytes are stored as they are: the caller counts the
// terminator of a text. data may be null if bytes is 0. Needs KEY_SET_VALUE.
KVSHARE_API LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes);

// Deletes a value; ERROR_FILE_NOT_FOUND if there is none. Needs KEY_SET_VALUE.
KVSHARE_API LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name);

// Gives the value number index, from 0, in the order in which the values were made; ERROR_NO_MORE_ITEMS behind the
// last. The name works as in RegEnumKeyExW, type, data and bytes as in RegQueryValueExW; with ERROR_MORE_DATA for the
// data the name is filled in. Walks are as in RegEnumKeyExW. Needs KEY_QUERY_VALUE. Deleting number 0 until there are
// no more empties a key.
KVSHARE_API LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* nameUnits, DWORD* reserved, DWORD* type,
                                  BYTE* data, DWORD* bytes);

// ---- Transactions ----
//
// What is done through handles that were opened in a transaction becomes visible to others on commit, all at once, or
// not at all; through such a handle it is seen at once. A path below such a handle given to a call without Transacted
// in its name is looked up outside the transaction. The first write locks the hive: writers outside wait until the
// transaction ends (a thread that writes outside its own transaction waits for itself, until ERROR_BUSY). After the end
// of the transaction its key handles give ERROR_TRANSACTION_NOT_ACTIVE and only wait to be closed. Writing to both
// hives in one transaction commits one behind the other. A transaction doesn't live through a fork.

// Begins a transaction; INVALID_HANDLE_VALUE on failure. All arguments may be 0 or null; none has an effect. The caller
// closes the handle with CloseHandle, which rolls back what is not committed.
KVSHARE_API HANDLE CreateTransaction(SECURITY_ATTRIBUTES* security, void* unitOfWork, DWORD options,
                                     DWORD isolationLevel, DWORD isolationFlags, DWORD timeout_ms, LPWSTR description);

// End a transaction. FALSE, with the reason in GetLastError, if the handle is none or has ended, or if the commit
// failed; in the last case nothing of the hive that failed was changed.
KVSHARE_API BOOL CommitTransaction(HANDLE transaction);

// As the calls without Transacted, within a transaction. `extended` is null.
KVSHARE_API LSTATUS RegCreateKeyTransactedW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options,
                                            REGSAM rights, const SECURITY_ATTRIBUTES* security, PHKEY opened,
                                            DWORD* disposition, HANDLE transaction, void* extended);
KVSHARE_API LSTATUS RegOpenKeyTransactedW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened,
                                          HANDLE transaction, void* extended);
KVSHARE_API LSTATUS RegDeleteKeyTransactedW(HKEY key, LPCWSTR path, REGSAM rights, DWORD reserved, HANDLE transaction,
                                            void* extended);

#endif
