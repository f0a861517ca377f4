// AppendFile, implemented with a file descriptor.
#include "platform/append_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/errors.h"
#include "platform/linux/drives.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/paths.h"

namespace {

constexpr int kFlags = O_WRONLY | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;  // a pipe must not block

int OpenOrCreate(LPCWSTR path) {
  const int existing = open(SystemPathAsWritten(path).c_str(), kFlags);
  if (existing >= 0) return existing;
  EnsureDriveFolder(path);
  const std::string system = SystemPathFromProduct(path);
  const int refusal = RefusalToWrite(system);
  if (refusal == 0) return open(system.c_str(), kFlags | O_CREAT, 0666);
  errno = refusal;
  return -1;
}

}  // namespace

bool AppendFile::Open(LPCWSTR path) {
  Close();
  if (!path || !*path) return FailWithStatus(ERROR_PATH_NOT_FOUND);
  const int descriptor = OpenOrCreate(path);
  if (descriptor < 0) return FailWithErrno(errno);
  file_ = descriptor;
  struct stat facts = {};
  if (fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode) && AttributesOf(facts) == FILE_ATTRIBUTE_NORMAL)
    return true;
  Close();
  return FailWithStatus(ERROR_ACCESS_DENIED);
}

bool AppendFile::Write(std::string_view bytes) {
  if (!IsOpen()) return FailWithStatus(ERROR_INVALID_HANDLE);
  const ssize_t written = write(int(file_), bytes.data(), bytes.size());
  if (written < 0) return FailWithErrno(errno);
  return std::size_t(written) == bytes.size() || FailWithErrno(ENOSPC);
}

void AppendFile::Close() {
  if (IsOpen()) close(int(std::exchange(file_, kNone)));
}
