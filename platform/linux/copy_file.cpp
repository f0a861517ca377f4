// CopyFileW, which writes through SafeFile.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/files.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/safe_file.h"

namespace {

struct Descriptor {
  const int number;
  ~Descriptor() {
    if (number >= 0) close(number);
  }
};

constexpr std::size_t kPiece = 256 * 1024;

// Returns false and sets the last status if the source cannot be read to its end. Failures of the target are in its
// status.
bool CopyBytes(int from, SafeFile& to) {
  const auto bytes = std::make_unique<char[]>(kPiece);
  for (;;) {
    const ssize_t got = read(from, bytes.get(), kPiece);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return FailWithErrno(errno);
    if (got == 0 || !to.Write(bytes.get(), std::size_t(got))) return true;
  }
}

}  // namespace

BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  const std::string source = SystemPathFromProduct(from);
  // O_NONBLOCK, because opening a pipe would wait for a writer. Only regular files have an end to copy to.
  const Descriptor in{open(source.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
  if (in.number < 0) return FailForPath(errno, source);
  struct stat facts;
  if (fstat(in.number, &facts) != 0) return FailWithErrno(errno);
  if (!S_ISREG(facts.st_mode)) return FailWithStatus(ERROR_ACCESS_DENIED);
  SafeFile out(to);
  const std::string& target = out.SystemPath();  // computed once, because looking up a new name reads the whole folder
  struct stat old;
  if (stat(target.c_str(), &old) == 0) {
    if (failIfExists) return FailWithStatus(ERROR_FILE_EXISTS);
    if (old.st_dev == facts.st_dev && old.st_ino == facts.st_ino) return FailWithStatus(ERROR_SHARING_VIOLATION);
  }
  if (!CopyBytes(in.number, out)) return FALSE;
  if (!out.Commit()) return FailWithStatus(out.FirstError());
  // The content is complete. File systems without permissions or times refuse these two calls.
  const timespec times[] = {{0, UTIME_OMIT}, facts.st_mtim};
  utimensat(AT_FDCWD, target.c_str(), times, 0);
  chmod(target.c_str(), facts.st_mode & 0777);
  return TRUE;
}
