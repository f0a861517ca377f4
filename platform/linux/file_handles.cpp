// Open files, implemented with file descriptors.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "platform/files.h"
#include "platform/linux/drives.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/handle_table.h"

namespace {

class File : public HandleObject {
 public:
  File(int given, DWORD access_rights) : descriptor(given), access(access_rights) {}
  ~File() override { close(descriptor); }

  const int descriptor;
  const DWORD access;
};

// The handle's file; null, and the last status is set, if the handle is invalid or was opened without that right.
std::shared_ptr<File> FindFile(HANDLE handle, DWORD right) {
  auto file = FindHandle<File>(handle);
  if (!file || (file->access & right) != 0) return file;
  SetLastError(ERROR_ACCESS_DENIED);
  return nullptr;
}

// The open() flags for a disposition; -1 for an invalid one.
int FlagsOf(DWORD disposition) {
  switch (disposition) {
    case CREATE_NEW: return O_CREAT | O_EXCL;
    case CREATE_ALWAYS: return O_CREAT | O_TRUNC;
    case OPEN_EXISTING: return 0;
    case OPEN_ALWAYS: return O_CREAT;
    default: return -1;
  }
}

int AccessOf(DWORD access) {
  if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
  return access & GENERIC_READ ? O_RDWR : O_WRONLY;
}

HANDLE Failed(LONG status) {
  SetLastError(DWORD(status));
  return INVALID_HANDLE_VALUE;
}

// Creates the handle of an open file; fails for a folder.
HANDLE NewFileHandle(int descriptor, DWORD access) {
  auto file = std::make_shared<File>(descriptor, access);
  struct stat facts;
  if (fstat(descriptor, &facts) == 0 && S_ISDIR(facts.st_mode)) return Failed(ERROR_ACCESS_DENIED);
  return AddHandle(std::move(file));
}

}  // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD flags,
                   HANDLE templateFile) {
  const int how = FlagsOf(disposition);
  if (!path || !*path) return Failed(ERROR_PATH_NOT_FOUND);
  if (how < 0 || templateFile) return Failed(ERROR_INVALID_PARAMETER);
  if (how & O_CREAT) EnsureDriveFolder(path);
  const bool reads = how == 0 && (access & GENERIC_WRITE) == 0;
  const int options = (flags & FILE_FLAG_WRITE_THROUGH ? O_DSYNC : 0) | O_CLOEXEC | O_NOCTTY;
  std::string system = SystemPathAsWritten(path);  // most files exist as written
  int descriptor = reads ? open(system.c_str(), O_RDONLY | options) : -1;
  if (descriptor >= 0) return NewFileHandle(descriptor, access);
  system = SystemPathFromProduct(path);
  const bool existed = (how & O_CREAT) != 0 && ::access(system.c_str(), F_OK) == 0;
  if (existed && disposition == CREATE_NEW) return Failed(ERROR_FILE_EXISTS);
  // A read-only file must not be emptied, even if it is opened for reading only.
  const bool writes = (access & GENERIC_WRITE) != 0 || (how & O_TRUNC) != 0;
  const int refusal = writes || (how & O_CREAT) != 0 ? RefusalToWrite(system) : 0;
  if (refusal == EILSEQ) return Failed(ERROR_INVALID_NAME);
  if (writes && refusal != 0) return Failed(ERROR_ACCESS_DENIED);
  descriptor = open(system.c_str(), AccessOf(access) | how | options, 0666);
  if (descriptor < 0) {
    if (errno == EEXIST) return Failed(ERROR_FILE_EXISTS);
    FailForPath(errno, system);
    return INVALID_HANDLE_VALUE;
  }
  const HANDLE file = NewFileHandle(descriptor, access);
  if (file != INVALID_HANDLE_VALUE && (disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS))
    SetLastError(existed ? ERROR_ALREADY_EXISTS : 0);
  return file;
}

BOOL ReadFile(HANDLE handle, void* target, DWORD bytes, LPDWORD read, LPOVERLAPPED) {
  if (read) *read = 0;
  const auto file = FindFile(handle, GENERIC_READ);
  if (!file) return FALSE;
  DWORD done = 0;
  while (done < bytes) {
    const ssize_t got = ::read(file->descriptor, static_cast<char*>(target) + done, bytes - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return FailWithErrno(errno);
    if (got == 0) break;
    done += DWORD(got);
    if (read) *read = done;
  }
  return TRUE;
}

BOOL WriteFile(HANDLE handle, const void* source, DWORD bytes, LPDWORD written, LPOVERLAPPED) {
  *written = 0;
  const auto file = FindFile(handle, GENERIC_WRITE);
  if (!file) return FALSE;
  while (*written < bytes) {
    const ssize_t put = write(file->descriptor, static_cast<const char*>(source) + *written, bytes - *written);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return FailWithErrno(errno);
    *written += DWORD(put);
  }
  return TRUE;
}

BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD from) {
  const auto file = FindHandle<File>(handle);
  if (!file) return FALSE;
  if (from > FILE_END) return FailWithStatus(ERROR_INVALID_PARAMETER);
  const int whence = from == FILE_BEGIN ? SEEK_SET : from == FILE_CURRENT ? SEEK_CUR : SEEK_END;
  const off_t at = lseek(file->descriptor, distance.QuadPart, whence);
  if (at < 0) return errno == EINVAL ? FailWithStatus(ERROR_NEGATIVE_SEEK) : FailWithErrno(errno);
  if (position) position->QuadPart = at;
  return TRUE;
}

BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size) {
  const auto file = FindHandle<File>(handle);
  if (!file) return FALSE;
  struct stat facts;
  if (fstat(file->descriptor, &facts) != 0) return FailWithErrno(errno);
  size->QuadPart = facts.st_size;
  return TRUE;
}

BOOL SetEndOfFile(HANDLE handle) {
  const auto file = FindFile(handle, GENERIC_WRITE);
  if (!file) return FALSE;
  const off_t at = lseek(file->descriptor, 0, SEEK_CUR);
  if (at < 0 || ftruncate(file->descriptor, at) != 0)
    return errno == EINVAL ? FailWithStatus(ERROR_ACCESS_DENIED) : FailWithErrno(errno);
  return TRUE;
}

BOOL FlushFileBuffers(HANDLE handle) {
  const auto file = FindFile(handle, GENERIC_WRITE);
  if (!file) return FALSE;
  return fsync(file->descriptor) == 0 || FailWithErrno(errno);
}
