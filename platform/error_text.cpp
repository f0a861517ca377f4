// Short English texts for status codes.
#include "platform/errors.h"

#include <cstdio>

#include "platform/locale.h"
#include "platform/registry.h"
#include "platform/safe_file.h"

namespace {

struct Words {
  LONG status;
  const char* text;
};

constexpr Words kWords[] = {
    {ERROR_SUCCESS, "no error"},
    {ERROR_FILE_NOT_FOUND, "no such file"},
    {ERROR_PATH_NOT_FOUND, "the folder does not exist"},
    {ERROR_TOO_MANY_OPEN_FILES, "too many open files"},
    {ERROR_ACCESS_DENIED, "access denied"},
    {ERROR_INVALID_HANDLE, "the handle is not valid"},
    {ERROR_NOT_ENOUGH_MEMORY, "not enough memory"},
    {ERROR_INVALID_DATA, "the data is damaged"},
    {ERROR_NOT_SAME_DEVICE, "the two paths are on different devices"},
    {ERROR_NO_MORE_FILES, "there are no more files"},
    {ERROR_NOT_READY, "the device is not ready"},
    {ERROR_BAD_LENGTH, "a size is not valid"},
    {ERROR_WRITE_FAULT, "writing to the device failed"},
    {ERROR_READ_FAULT, "reading from the device failed"},
    {ERROR_GEN_FAILURE, "the device failed"},
    {ERROR_SHARING_VIOLATION, "the file is in use"},
    {ERROR_HANDLE_EOF, "the end of the file was reached"},
    {ERROR_NOT_SUPPORTED, "not supported here"},
    {ERROR_FILE_EXISTS, "the file exists already"},
    {ERROR_INVALID_PARAMETER, "an argument is not valid"},
    {ERROR_BROKEN_PIPE, "the other end was closed"},
    {ERROR_BUFFER_OVERFLOW, "the path is too long"},
    {ERROR_DISK_FULL, "the disk is full"},
    {ERROR_INSUFFICIENT_BUFFER, "the buffer is too small"},
    {ERROR_INVALID_NAME, "the name is not valid"},
    {ERROR_MOD_NOT_FOUND, "no such library"},
    {ERROR_NEGATIVE_SEEK, "a position before the file's start"},
    {ERROR_DIR_NOT_EMPTY, "the folder is not empty"},
    {ERROR_ALREADY_EXISTS, "it exists already"},
    {ERROR_BAD_EXE_FORMAT, "not a valid library or program"},
    {ERROR_FILENAME_EXCED_RANGE, "the name is too long"},
    {ERROR_FILE_TOO_LARGE, "the file is too large"},
    {ERROR_DIRECTORY, "the folder's name is not valid"},
    {ERROR_NO_UNICODE_TRANSLATION, "the file's encoding lacks a character of the text"},
    {ERROR_IO_DEVICE, "the disk failed while reading or writing"},
    {kWrittenButNotFlushed, "it is written, but may be the old file again after a power failure"},
    {ERROR_RESOURCE_DATA_NOT_FOUND, "the library has no resources"},
    {ERROR_RESOURCE_NAME_NOT_FOUND, "the library has no such resource"},
    {ERROR_CANT_RESOLVE_FILENAME, "the path's links form a circle"},
    {ERROR_ENVVAR_NOT_FOUND, "no such environment variable"},
    {ERROR_NOACCESS, "invalid access to memory"},
    {ERROR_INVALID_FLAGS, "a flag is not valid"},
    {ERROR_MORE_DATA, "there is more data than room"},
    {ERROR_NO_MORE_ITEMS, "there are no more items"},
    {ERROR_BAD_PATHNAME, "a key's path begins with a backslash"},
    {ERROR_BADKEY, "a key's name is missing"},
    {ERROR_KEY_DELETED, "the key was deleted meanwhile"},
    {ERROR_BADDB, "the registry's file is damaged"},
    {ERROR_UNKNOWN_REVISION, "the registry's file was written by a later release"},
    {ERROR_REGISTRY_IO_FAILED, "reading or writing the registry's file failed"},
    {ERROR_BUSY, "others kept writing to the registry"},
    {ERROR_TRANSACTION_NOT_ACTIVE, "the transaction has ended"},
};

}  // namespace

const char* ErrorText(DWORD status) {
  for (const Words& row : kWords)
    if (DWORD(row.status) == status) return row.text;
  thread_local char number[24];
  std::snprintf(number, sizeof number, "error %u", unsigned(status));
  return number;
}
