// A thread's last status, and the conversion of errno.
#include "platform/errors.h"

#include <cerrno>

#include "platform/linux/errno_status.h"

namespace {

thread_local DWORD t_last_status = 0;

struct Row {
  int code;
  LONG status;
};

constexpr Row kFromErrno[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},      {ENOTDIR, ERROR_PATH_NOT_FOUND},    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES}, {EACCES, ERROR_ACCESS_DENIED},      {EPERM, ERROR_ACCESS_DENIED},
    {EROFS, ERROR_ACCESS_DENIED},        {EISDIR, ERROR_ACCESS_DENIED},      {EIO, ERROR_IO_DEVICE},
    {EBADF, ERROR_INVALID_HANDLE},       {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},  {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EBUSY, ERROR_SHARING_VIOLATION},    {ETXTBSY, ERROR_SHARING_VIOLATION}, {ENOSYS, ERROR_NOT_SUPPORTED},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},   {EEXIST, ERROR_ALREADY_EXISTS},     {EINVAL, ERROR_INVALID_PARAMETER},
    {ESRCH, ERROR_INVALID_PARAMETER},    {EPIPE, ERROR_BROKEN_PIPE},         {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},           {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},   {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {EFBIG, ERROR_FILE_TOO_LARGE},       {ENOEXEC, ERROR_BAD_EXE_FORMAT},    {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
};

}  // namespace

DWORD GetLastError() { return t_last_status; }

void SetLastError(DWORD status) { t_last_status = status; }

LONG StatusFromErrno(int code) {
  for (const Row& row : kFromErrno)
    if (row.code == code) return row.status;
  return ERROR_GEN_FAILURE;
}

bool FailWithStatus(LONG status) {
  SetLastError(DWORD(status));
  return false;
}

bool FailWithErrno(int code) { return FailWithStatus(StatusFromErrno(code)); }
