// SafeFile, implemented with file descriptors.
#include "platform/safe_file.h"

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
#include "platform/paths.h"

namespace {

constexpr std::size_t kCollected = 64 * 1024;
constexpr int kTries = 100;
constexpr int kSharedNumbers = 16;           // more than one file has writers at a time
constexpr std::size_t kMostNameBytes = 200;  // bytes of the target's name that the temporary file's name uses

thread_local constinit SafeFileProgress::Report t_report = nullptr;

// ---- temporary files
//
// The temporary files of a target have the numbers 1, 2 and so on; beyond kSharedNumbers a number is made of the
// process and a serial. The process that writes a file holds its lock until the file has its final name, so a file
// without a lock belongs to a process that has died. Locks work between containers too, process numbers don't.

std::string NumberOf(int attempt) {
  static std::atomic<unsigned> serial = 0;
  if (attempt <= kSharedNumbers) return std::to_string(attempt);
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

struct SafeFile::State {
  std::string shown;  // the path for messages
  std::string target;
  std::string temporary;  // empty if there is nothing to remove
  std::string collected;
  ULONGLONG put = 0;  // bytes
  int descriptor = -1;
  int lock = -1;  // the same file; keeps its lock when the descriptor is closed
  bool replaced = false;
  LONG status = ERROR_SUCCESS;

  ~State() { Drop(); }

  bool Fail(int code) {
    FailForPath(code, target);
    status = LONG(GetLastError());
    Drop();
    return false;
  }

  // Closes and removes the temporary file, if it is this process's.
  void Drop() {
    const bool own = descriptor >= 0 || lock >= 0;
    if (own && !temporary.empty()) unlink(temporary.c_str());  // before the lock is gone
    for (int* open : {&descriptor, &lock})
      if (const int number = std::exchange(*open, -1); number >= 0) close(number);
    temporary.clear();
    collected.clear();
  }

  // Creates a temporary file with its lock; false with errno.
  bool OpenTemporary(const std::string& beside) {
    const auto name = [&](int number) { return beside + '~' + NumberOf(number) + ".tmp"; };
    int number = 1;
    for (; number <= kTries && descriptor < 0; ++number) {
      temporary = name(number);
      for (const bool again : {false, true}) {
        descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0 || errno != EEXIST || again) break;
        RemoveIfDead(temporary);
      }
      if (descriptor < 0 && errno != EEXIST) return false;
      if (descriptor >= 0 && !Lock(descriptor)) close(std::exchange(descriptor, -1));
    }
    if (descriptor < 0) errno = EEXIST;
    while (number <= kSharedNumbers && RemoveIfDead(name(number))) ++number;
    return descriptor >= 0;
  }

  // Creates the temporary file with the permissions of the file that it will replace.
  bool Open() {
    if (const int refusal = RefusalToWrite(target)) return Fail(refusal);
    struct stat old;
    const bool there = stat(target.c_str(), &old) == 0;
    if (there && !S_ISREG(old.st_mode)) return Fail(EACCES);  // would remove it for all programs
    // The target's name is cut, because a name of the greatest length leaves no room for the suffix.
    const std::string beside = target.substr(0, target.rfind('/') + 1 + kMostNameBytes);
    if (!OpenTemporary(beside)) {
      const int code = errno;
      temporary.clear();  // another process's file
      return Fail(code);
    }
    if (!there) return true;
    // Only a privileged user can change the owner, or set a group to which the user does not belong; others keep their
    // own.
    if (fchown(descriptor, old.st_uid, old.st_gid) != 0 && errno != EPERM) return Fail(errno);
    return fchmod(descriptor, old.st_mode & 07777) == 0 || Fail(errno);
  }

  bool Put(const char* bytes, std::size_t count) {
    while (count > 0) {
      const ssize_t written = write(descriptor, bytes, count);
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return Fail(errno);
      bytes += written;
      count -= std::size_t(written);
      put += ULONGLONG(written);
      if (t_report) t_report(put);
    }
    return true;
  }

  bool PutCollected() {
    const bool done = Put(collected.data(), collected.size());
    collected.clear();
    return done;
  }
};

SafeFile::SafeFile(LPCWSTR path) : state_(std::make_unique<State>()) {
  if (!path || !*path) {
    state_->status = ERROR_PATH_NOT_FOUND;
    return;
  }
  EnsureDriveFolder(path);
  state_->shown = SystemPathFromProduct(path);
  state_->target = PathBehindLinks(state_->shown);
  state_->Open();
}

SafeFile::~SafeFile() = default;

bool SafeFile::Write(const void* bytes, std::size_t count) {
  State& state = *state_;
  if (state.descriptor < 0) return false;
  const char* source = static_cast<const char*>(bytes);
  if (state.collected.size() + count > kCollected && !state.PutCollected()) return false;
  if (count > kCollected) return state.Put(source, count);
  state.collected.append(source, count);
  return true;
}

bool SafeFile::Commit() {
  State& state = *state_;
  if (state.descriptor < 0 || !state.PutCollected()) return false;
  if (fsync(state.descriptor) != 0) return state.Fail(errno);
  // Some file systems report a failed write only on close.
  state.lock = fcntl(state.descriptor, F_DUPFD_CLOEXEC, 0);
  if (state.lock < 0) return state.Fail(errno);
  if (close(std::exchange(state.descriptor, -1)) != 0) return state.Fail(errno);
  const std::string folder = FolderOf(state.target);  // an exception after the renaming would be taken for a failure
  if (rename(state.temporary.c_str(), state.target.c_str()) != 0) return state.Fail(errno);
  state.temporary.clear();
  state.replaced = true;
  int flushed = FlushFolder(folder);
  if (flushed == EACCES) flushed = syncfs(state.lock) == 0 ? 0 : errno;  // a folder that must not be read
  if (flushed != 0) return state.Fail(flushed);
  state.Drop();
  return true;
}

bool SafeFile::IsReplaced() const { return state_->replaced; }

const std::string& SafeFile::SystemPath() const { return state_->target; }

LONG SafeFile::FirstError() const { return state_->status; }

std::string SafeFile::Reason() const {
  if (state_->status == ERROR_SUCCESS) return {};
  const std::string text = ErrorText(DWORD(state_->status));
  if (!state_->replaced) return "cannot write " + state_->shown + ": " + text;
  return state_->shown + " is written, but may be the old file again after a power failure: " + text;
}

SafeFileProgress::SafeFileProgress(Report report) : m_outer(std::exchange(t_report, report)) {}

SafeFileProgress::~SafeFileProgress() { t_report = m_outer; }

LONG WriteFileSafely(LPCWSTR path, std::string_view bytes) {
  SafeFile file(path);
  file.Write(bytes);
  if (file.Commit()) return ERROR_SUCCESS;
  const LONG status = file.IsReplaced() ? kWrittenButNotFlushed : file.FirstError();
  SetLastError(DWORD(status));
  return status;
}
