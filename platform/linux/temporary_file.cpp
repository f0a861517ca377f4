// TemporaryFile, implemented with file descriptors.
#include "platform/temporary_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include "platform/errors.h"
#include "platform/linux/drives.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/utf8.h"
#include "platform/paths.h"

namespace {

// A file without a lock belongs to a process that has died. Locks work between containers too, process numbers don't.

std::string NumberOf(int attempt) {
  static std::atomic<unsigned> serial = 0;
  if (attempt <= TemporaryFile::kSharedNumbers) return std::to_string(attempt);
  return std::to_string(getpid()) + '-' + std::to_string(serial.fetch_add(1, std::memory_order_relaxed));
}

// Locks a file and checks that nobody has removed it before. True also where the file system has no locks.
bool Lock(int descriptor) {
  struct stat facts;
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  return fstat(descriptor, &facts) == 0 && facts.st_nlink > 0;
}

// Removes a temporary file without a writer. False if there is no such file.
bool RemoveIfDead(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return errno != ENOENT;
  struct stat opened, named;
  if (fstat(descriptor, &opened) == 0 && S_ISREG(opened.st_mode) && opened.st_uid == geteuid() &&
      flock(descriptor, LOCK_EX | LOCK_NB) == 0 && lstat(path.c_str(), &named) == 0 && named.st_ino == opened.st_ino &&
      named.st_dev == opened.st_dev)
    unlink(path.c_str());
  close(descriptor);
  return true;
}

}  // namespace

// Links to files that do not exist yet are resolved as far as possible.
std::string PathBehindLinks(const std::string& path) {
  struct stat facts;
  if (lstat(path.c_str(), &facts) == 0 && !S_ISLNK(facts.st_mode)) return path;  // links in its folders don't m
  char resolved[PATH_MAX];
  if (realpath(path.c_str(), resolved)) return resolved;
  const ssize_t length = readlink(path.c_str(), resolved, sizeof resolved);
  if (length <= 0 || std::size_t(length) == sizeof resolved) return path;
  const std::string target(resolved, std::size_t(length));
  return target.front() == '/' ? target : FolderOf(path) + '/' + target;
}

struct TemporaryFile::State {
  std::string target;
  std::string path;  // empty if there is nothing to remove
  int descriptor = -1;
  int lock = -1;  // the same file; keeps its lock when the descriptor is closed
  bool replaced = false;

  LONG StatusOf(int code) const {
    if (code == 0) return ERROR_SUCCESS;
    FailForPath(code, target);
    return LONG(GetLastError());
  }

  // Creates a file with its lock. Returns 0 or errno.
  int Create(const std::string& beside) {
    const auto name = [&](int number) { return beside + '~' + NumberOf(number) + ".tmp"; };
    int number = 1;
    for (; number <= kTries && descriptor < 0; ++number) {
      std::string tried = name(number);
      for (const bool again : {false, true}) {
        descriptor = open(tried.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0 || errno != EEXIST || again) break;
        RemoveIfDead(tried);
      }
      if (descriptor < 0 && errno != EEXIST) return errno;
      if (descriptor >= 0 && !Lock(descriptor)) close(std::exchange(descriptor, -1));
      if (descriptor >= 0) path = std::move(tried);  // copying could fail, and the file would stay
    }
    while (number <= kSharedNumbers && RemoveIfDead(name(number))) ++number;
    return descriptor < 0 ? EEXIST : 0;
  }

  // Creates the file with the permissions of the target. Returns 0 or errno.
  int Open() {
    if (const int refusal = RefusalToWrite(target)) return refusal;
    struct stat old;
    const bool there = stat(target.c_str(), &old) == 0;
    if (there && !S_ISREG(old.st_mode)) return EACCES;  // would remove it for all programs
    if (const int code = Create(target.substr(0, target.rfind('/') + 1 + kMostOfName))) return code;
    if (!there) return 0;
    // Only a privileged user can change the owner, or set a group to which the user does not belong; others keep their
    // own.
    if (fchown(descriptor, old.st_uid, old.st_gid) != 0 && errno != EPERM) return errno;
    return fchmod(descriptor, old.st_mode & 07777) == 0 ? 0 : errno;
  }

  // Returns 0 or errno.
  int Replace() {
    if (fsync(descriptor) != 0) return errno;
    // Some file systems report a failed write only on close.
    lock = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (lock < 0) return errno;
    if (close(std::exchange(descriptor, -1)) != 0) return errno;
    const std::string folder = FolderOf(target);  // an exception after the renaming would be taken for a failure
    if (rename(path.c_str(), target.c_str()) != 0) return errno;
    path.clear();
    replaced = true;
    const int flushed = FlushFolder(folder);
    if (flushed != EACCES) return flushed;
    return syncfs(lock) == 0 ? 0 : errno;  // a folder that must not be read
  }
};

TemporaryFile::TemporaryFile() : state_(std::make_unique<State>()) {}

TemporaryFile::~TemporaryFile() { Drop(); }

LONG TemporaryFile::Open(LPCWSTR path) {
  EnsureDriveFolder(path);
  state_->target = PathBehindLinks(SystemPathFromProduct(path));
  return state_->StatusOf(state_->Open());
}

bool TemporaryFile::IsOpen() const { return state_->descriptor >= 0; }

LONG TemporaryFile::Write(const char* bytes, std::size_t count, std::size_t& written) {
  ssize_t result;
  do {
    result = write(state_->descriptor, bytes, count);
  } while (result < 0 && errno == EINTR);
  if (result < 0) return state_->StatusOf(errno);
  written = std::size_t(result);
  return ERROR_SUCCESS;
}

LONG TemporaryFile::Replace() {
  const LONG status = state_->StatusOf(state_->Replace());
  if (status == ERROR_SUCCESS) Drop();
  return status;
}

bool TemporaryFile::IsReplaced() const { return state_->replaced; }

void TemporaryFile::Drop() {
  if (!state_->path.empty()) unlink(state_->path.c_str());  // before the lock is gone
  state_->path.clear();
  for (int* open : {&state_->descriptor, &state_->lock})
    if (const int number = std::exchange(*open, -1); number >= 0) close(number);
}

const std::string& TemporaryFile::Target() const { return state_->target; }
