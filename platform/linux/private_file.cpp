// PrivateFile, implemented with a file descriptor and flock.
#include "platform/private_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

#include "platform/errors.h"
#include "platform/linux/drives.h"
#include "platform/linux/errno_status.h"
#include "platform/registry.h"

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr auto kFirstPause = std::chrono::microseconds(50);
constexpr auto kLongestPause = std::chrono::microseconds(2000);

LONG StatusOf(bool done) { return done ? ERROR_SUCCESS : StatusFromErrno(errno); }

void CreateFoldersOf(const std::string& path) {
  for (std::size_t slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1))
    mkdir(path.substr(0, slash).c_str(), 0700);  // if this fails, the caller's own call fails too
}

int OpenFile(const std::string& path, bool create) {
  constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;  // a pipe must not block
  return open(path.c_str(), create ? kFlags | O_CREAT : kFlags, 0600);
}

}  // namespace

LONG PrivateFile::Open(const Text& path, bool create) {
  const std::string system = SystemPathAsWritten(path.c_str());
  int descriptor = OpenFile(system, create);
  if (descriptor < 0 && create && errno == ENOENT) {
    CreateFoldersOf(system);
    descriptor = OpenFile(system, create);
  }
  if (descriptor < 0) return StatusFromErrno(errno);
  file_ = descriptor;
  struct stat facts = {};
  if (fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode)) return ERROR_SUCCESS;
  Close();
  return ERROR_ACCESS_DENIED;
}

// A waiting flock can't end after a time.
LONG PrivateFile::Lock(int most_ms) {
  const auto end = SteadyClock::now() + std::chrono::milliseconds(most_ms);
  for (auto pause = kFirstPause; flock(int(file_), LOCK_EX | LOCK_NB) != 0;
       pause = std::min(pause * 2, kLongestPause)) {
    if (errno != EWOULDBLOCK && errno != EINTR) return StatusFromErrno(errno);
    if (SteadyClock::now() >= end) return ERROR_BUSY;
    std::this_thread::sleep_for(pause);
  }
  locked_ = true;
  return ERROR_SUCCESS;
}

LONG PrivateFile::GetSize(ULONGLONG& bytes) const {
  struct stat facts = {};
  const LONG status = StatusOf(fstat(int(file_), &facts) == 0);
  bytes = ULONGLONG(facts.st_size);
  return status;
}

LONG PrivateFile::Read(ULONGLONG from, std::string& text) const {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t got = pread(int(file_), text.data() + done, text.size() - done, off_t(from + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return StatusFromErrno(errno);
    if (got == 0) break;
    done += std::size_t(got);
  }
  text.resize(done);
  return ERROR_SUCCESS;
}

LONG PrivateFile::Write(ULONGLONG at, std::string_view text) {
  while (!text.empty()) {
    const ssize_t put = pwrite(int(file_), text.data(), text.size(), off_t(at));
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return StatusFromErrno(errno);
    at += ULONGLONG(put);
    text.remove_prefix(std::size_t(put));
  }
  return ERROR_SUCCESS;
}

LONG PrivateFile::SetSize(ULONGLONG bytes) { return StatusOf(ftruncate(int(file_), off_t(bytes)) == 0); }

// A child process that was forked meanwhile has the same lock, which ends only when it is released.
void PrivateFile::Close() {
  if (file_ == kNone) return;
  if (std::exchange(locked_, false)) flock(int(file_), LOCK_UN);
  close(int(std::exchange(file_, kNone)));
}

LONG PrivateFile::Rename(const Text& from, const Text& to) {
  return StatusOf(std::rename(SystemPathAsWritten(from.c_str()).c_str(), SystemPathAsWritten(to.c_str()).c_str()) == 0);
}

LONG PrivateFile::Remove(const Text& path) { return StatusOf(unlink(SystemPathAsWritten(path.c_str()).c_str()) == 0); }
