// The cache's rule. Device, number, size and both times identify a file's state. They distinguish it from every later
// state only if the file had been unchanged for some time when it was read, because file systems count time in steps:
// another change within the same step leaves the times unchanged. Until then, each call compares the bytes, which is
// still far faster than parsing the lines again.
#include "platform/linux/profile_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/profile.h"

namespace kvprofile {

namespace {

constexpr std::size_t kMostFiles = 16;
constexpr std::size_t kMostKeptBytes = 2 * kMostBytes;
constexpr std::int64_t kSecond = 1'000'000'000;
// Larger than the kernel's time step (at most 10 ms) and than that of a file system with whole seconds (at most 2 s).
constexpr std::int64_t kFineStep = 30'000'000;
constexpr std::int64_t kCoarseStep = 21 * kSecond / 10;
constexpr std::chrono::seconds kLockWait(kProfileLockSeconds);
constexpr std::chrono::microseconds kLockPause(200);

std::int64_t Nanoseconds(const timespec& time) { return time.tv_sec * kSecond + time.tv_nsec; }

struct Stamp {
  explicit Stamp(const struct stat& facts)
      : device(facts.st_dev),
        number(facts.st_ino),
        size(facts.st_size),
        changed(Nanoseconds(facts.st_mtim)),
        touched(Nanoseconds(facts.st_ctim)) {}
  bool operator==(const Stamp&) const = default;

  // True if every change after that moment changes the stamp.
  bool IsSettledAt(std::int64_t moment) const {
    const bool whole_seconds = changed % kSecond == 0 || touched % kSecond == 0;
    return std::max(changed, touched) + (whole_seconds ? kCoarseStep : kFineStep) < moment;
  }

  dev_t device;
  ino_t number;
  off_t size;
  std::int64_t changed;
  std::int64_t touched;
};

struct CachedFile {
  std::string path;
  Stamp stamp;
  bool settled;
  std::shared_ptr<const Profile> profile;
};

// The most recently used file is the last one.
struct Cache {
  std::mutex mutex;
  std::vector<CachedFile> files;
};

Cache& TheCache() {
  static Cache& cache = *new Cache;  // never destroyed: files may be read while the process ends
  return cache;
}

// Returns the cached profile for the path, or null; `settled` says whether it is still valid for the stamp.
std::shared_ptr<const Profile> FindCached(const std::string& path, const Stamp& stamp, bool& settled) {
  Cache& cache = TheCache();
  const std::lock_guard lock(cache.mutex);
  const auto found =
      std::find_if(cache.files.rbegin(), cache.files.rend(), [&](const CachedFile& kept) { return kept.path == path; });
  if (found == cache.files.rend()) return nullptr;
  settled = found->settled && found->stamp == stamp;
  std::shared_ptr<const Profile> profile = found->profile;
  if (found != cache.files.rbegin()) std::rotate(found.base() - 1, found.base(), cache.files.end());
  return profile;
}

void Keep(CachedFile kept) {
  Cache& cache = TheCache();
  const std::lock_guard lock(cache.mutex);
  std::erase_if(cache.files, [&](const CachedFile& old) { return old.path == kept.path; });
  cache.files.push_back(std::move(kept));
  std::size_t bytes = 0;
  std::size_t files = 0;
  for (auto i = cache.files.rbegin(); i != cache.files.rend(); ++i, ++files) {
    bytes += i->profile->Size();
    if (files < kMostFiles && (files == 0 || bytes <= kMostKeptBytes)) continue;
    cache.files.erase(cache.files.begin(), i.base());
    break;
  }
}

std::int64_t Now() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);  // the clock of file times
  return Nanoseconds(now);
}

// An open file; number is -1, with errno, on failure.
class Descriptor {
 public:
  explicit Descriptor(const char* path) : number(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  const int number;
};

// Reads all bytes of an open file, which may be more than expected.
int ReadAll(int descriptor, std::size_t expected, std::string& bytes) {
  std::size_t have = 0;
  for (;;) {
    // One byte more than expected, so that the end is found without another call.
    bytes.resize(std::max(expected + 1, have + have / 2));
    const ssize_t got = read(descriptor, bytes.data() + have, bytes.size() - have);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    have += std::size_t(got);
    if (got == 0) break;
    if (have > kMostBytes) return EFBIG;
    if (have < bytes.size()) continue;
    expected = have;
  }
  bytes.resize(have);
  return 0;
}

}  // namespace

int Read(const std::string& path, std::shared_ptr<const Profile>& profile) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return errno;
  bool settled = false;
  profile = FindCached(path, Stamp(facts), settled);
  if (settled) return 0;

  if (!S_ISREG(facts.st_mode)) return EACCES;  // a pipe could block forever
  const Descriptor file(path.c_str());
  if (file.number < 0) return errno;
  if (fstat(file.number, &facts) != 0) return errno;
  if (!S_ISREG(facts.st_mode)) return EACCES;
  if (std::size_t(facts.st_size) > kMostBytes) return EFBIG;
  const std::int64_t moment = Now();
  std::string bytes;
  if (const int code = ReadAll(file.number, std::size_t(facts.st_size), bytes)) return code;
  if (!profile || !profile->HasBytes(bytes)) profile = Profile::FromBytes(std::move(bytes));
  if (!profile) return ENOTSUP;
  const Stamp stamp(facts);
  Keep({path, stamp, stamp.IsSettledAt(moment), profile});
  return 0;
}

void ForgetAll() {
  Cache& cache = TheCache();
  const std::lock_guard lock(cache.mutex);
  cache.files.clear();
}

FolderLock::~FolderLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

int FolderLock::Lock(const std::string& folder) {
  descriptor_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor_ < 0) return errno;
  const auto end = std::chrono::steady_clock::now() + kLockWait;
  while (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return 0;
    if (std::chrono::steady_clock::now() > end) return EBUSY;
    std::this_thread::sleep_for(kLockPause);
  }
  return 0;
}

}  // namespace kvprofile
