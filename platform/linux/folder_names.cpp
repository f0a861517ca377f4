#include "platform/linux/folder_names.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <pthread.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "platform/clock.h"
#include "platform/linux/registry_names.h"
#include "platform/linux/utf8.h"
#include "platform/text.h"

namespace {

// ---- reading a folder

bool IsLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char character) { return static_cast<signed char>(character) < 0; });
}

// A name for comparison without case with many others, most of which differ in an obvious way.
class CaselessName {
 public:
  explicit CaselessName(std::string_view name) : name_(name), is_ascii_(IsAscii(name)), wide_(WideFromSystem(name)) {}

  bool Equals(std::string_view other) const {
    if (is_ascii_ && IsAscii(other)) {
      const auto same = [](char a, char b) { return a == b || ((a ^ b) == 0x20 && IsLetter(a)); };
      return std::equal(name_.begin(), name_.end(), other.begin(), other.end(), same);
    }
    return CompareStringOrdinal(WideFromSystem(other).c_str(), -1, wide_.c_str(), -1, TRUE) == CSTR_EQUAL;
  }

 private:
  const std::string_view name_;
  const bool is_ascii_;
  const std::u16string wide_;
};

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

template <class Visit>
void ForEachName(const Folder& folder, Visit visit) {
  while (const dirent* entry = readdir(folder.get())) visit(std::string_view(entry->d_name));
}

// ---- folders that are remembered

constexpr std::size_t kLarge = 100;  // number of names; reading a smaller folder again and again costs little
constexpr time_t kSettled_s = 3;     // seconds after a change; the coarsest file times have steps of two seconds
constexpr std::size_t kMostNames = 200'000;
constexpr std::size_t kMostFolders = 16;
constexpr std::size_t kSearchesNoted = 4;
constexpr std::uint32_t kComesOrGoes = IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM;

// Identifies a folder independently of its path.
struct Identity {
  dev_t device = 0;
  ino_t number = 0;
  bool operator==(const Identity&) const = default;
};

// The time of a folder's last change. Each change of its names gives a new stamp.
struct Stamp {
  timespec written = {};
  timespec changed = {};

  explicit Stamp(const struct stat& facts) : written(facts.st_mtim), changed(facts.st_ctim) {}
  bool operator==(const Stamp& other) const { return Same(written, other.written) && Same(changed, other.changed); }
  // True if every later change will get a different stamp.
  bool IsSettled() const {
    const time_t now = CurrentClock().time();
    return written.tv_sec + kSettled_s < now && changed.tv_sec + kSettled_s < now;
  }

 private:
  static bool Same(const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }
};

struct Names {
  Identity folder;
  Stamp stamp;     // the stamp when the names were read; used without a watch
  int watch = -1;  // the system's watch for created and deleted names
  std::unordered_map<std::string, std::set<std::string>> by_key;  // keys without case

  static std::string KeyOf(std::string_view name) {
    std::string key;
    kvregistry::AppendFolded(key, WideFromSystem(name));
    return key;
  }
  void Add(std::string_view name) { by_key[KeyOf(name)].emplace(name); }
  void Remove(std::string_view name) {
    const auto found = by_key.find(KeyOf(name));
    if (found == by_key.end()) return;
    found->second.erase(std::string(name));
    if (found->second.empty()) by_key.erase(found);
  }
  std::string Find(std::string_view wanted) const {
    const auto found = by_key.find(KeyOf(wanted));
    return found == by_key.end() ? std::string() : *found->second.begin();
  }
};

// File systems that change only through this system's kernel, so that it can report every change.
bool IsOfThisMachine(int folder) {
  constexpr std::uint32_t kKinds[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC,    F2FS_SUPER_MAGIC,
                                      TMPFS_MAGIC,      RAMFS_MAGIC,     OVERLAYFS_SUPER_MAGIC};
  struct statfs about;
  if (fstatfs(folder, &about) != 0) return false;
  return std::find(std::begin(kKinds), std::end(kKinds), std::uint32_t(about.f_type)) != std::end(kKinds);
}

class FolderCache {
 public:
  std::mutex mutex;

  bool IsEmpty() const { return all_.empty(); }

  // The matching name, if the folder is cached; no value if it is not.
  std::optional<std::string> Find(const struct stat& folder, std::string_view wanted) {
    ApplyChanges();
    const auto found = FindFolder(IdentityOf(folder));
    if (found == all_.end()) return std::nullopt;
    if (found->watch < 0 && !(found->stamp == Stamp(folder))) {
      all_.erase(found);
      return std::nullopt;
    }
    all_.splice(all_.begin(), all_, found);
    return found->Find(wanted);
  }

  // Returns true if the folder was searched recently; remembers it.
  bool WasSearchedRecently(const Identity& folder) {
    if (std::find(searched_.begin(), searched_.end(), folder) != searched_.end()) return true;
    searched_[next_search_++ % kSearchesNoted] = folder;
    return false;
  }

  // Caches the names of an open folder if the system can report its changes.
  void Add(const struct stat& facts, int descriptor, bool is_large) {
    Names names{IdentityOf(facts), Stamp(facts), -1, {}};
    if (FindFolder(names.folder) != all_.end() || !IsOfThisMachine(descriptor)) return;
    if (!names.stamp.IsSettled()) {
      if (!is_large) return;
      names.watch = Watch(descriptor);
      if (names.watch < 0) return;
    }
    // A change while the names are read gives another stamp, or is reported again, which is harmless.
    const Folder listing(fdopendir(openat(descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), closedir);
    std::size_t count = 0;
    if (listing) ForEachName(listing, [&](std::string_view name) { names.Add(name), ++count; });
    all_.push_front(std::move(names));
    if (!listing || count > kMostNames) Forget(all_.begin());
    while (all_.size() > kMostFolders) Forget(std::prev(all_.end()));
  }

  // In a forked child: the watch descriptor belongs to the parent.
  void Abandon() {
    if (changes_ >= 0) close(changes_);
    changes_ = -1;
    all_.clear();
  }

  static Identity IdentityOf(const struct stat& facts) { return {facts.st_dev, facts.st_ino}; }

 private:
  std::list<Names>::iterator FindFolder(const Identity& folder) {
    return std::find_if(all_.begin(), all_.end(), [&](const Names& names) { return names.folder == folder; });
  }

  int Watch(int folder) {
    if (changes_ < 0) changes_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(folder);
    return changes_ < 0 ? -1 : inotify_add_watch(changes_, path.c_str(), kComesOrGoes | IN_ONLYDIR);
  }

  void Forget(std::list<Names>::iterator names) {
    if (names->watch >= 0) inotify_rm_watch(changes_, names->watch);
    all_.erase(names);
  }

  // Applies all changes that the system has reported so far.
  void ApplyChanges() {
    alignas(inotify_event) std::array<char, 16 * 1024> buffer;
    while (changes_ >= 0) {
      const ssize_t size = read(changes_, buffer.data(), buffer.size());
      if (size <= 0) return;
      inotify_event event;
      for (std::size_t at = 0; at < std::size_t(size); at += sizeof event + event.len) {
        std::memcpy(&event, buffer.data() + at, sizeof event);
        Apply(event, event.len ? buffer.data() + at + sizeof event : "");
      }
    }
  }

  void Apply(const inotify_event& event, std::string_view name) {
    if (event.mask & IN_Q_OVERFLOW) return Abandon();  // reports were lost
    const auto names =
        std::find_if(all_.begin(), all_.end(), [&](const Names& each) { return each.watch == event.wd; });
    if (names == all_.end()) return;
    if (event.mask & (IN_CREATE | IN_MOVED_TO)) names->Add(name);
    if (event.mask & (IN_DELETE | IN_MOVED_FROM)) names->Remove(name);
    if (event.mask & (IN_IGNORED | IN_UNMOUNT)) all_.erase(names);  // the folder was deleted or unmounted
  }

  int changes_ = -1;
  std::list<Names> all_;  // most recently searched first
  std::array<Identity, kSearchesNoted> searched_;
  std::size_t next_search_ = 0;
};

// Never destroyed, because paths are looked up until the process ends.
FolderCache& TheCache() {
  static FolderCache* const cache = [] {
    pthread_atfork([] { TheCache().mutex.lock(); }, [] { TheCache().mutex.unlock(); },
                   [] {
                     TheCache().Abandon();
                     TheCache().mutex.unlock();
                   });
    return new FolderCache;
  }();
  return *cache;
}

}  // namespace

std::string FindNameWithoutCase(const std::string& folder, std::string_view wanted) {
  const char* const path = folder.empty() ? "." : folder.c_str();
  FolderCache& cache = TheCache();
  struct stat facts;
  {
    const std::lock_guard lock(cache.mutex);
    if (!cache.IsEmpty()) {
      if (stat(path, &facts) != 0) return {};
      if (const auto known = cache.Find(facts, wanted)) return *known;
    }
  }
  const Folder listing(opendir(path), closedir);
  if (!listing) return {};
  const bool is_known = fstat(dirfd(listing.get()), &facts) == 0;  // the state before reading
  const CaselessName name_wanted(wanted);
  std::string found;
  std::size_t count = 0;
  ForEachName(listing, [&](std::string_view name) {
    ++count;
    if (name_wanted.Equals(name) && (found.empty() || name < found)) found = name;
  });
  const std::lock_guard lock(cache.mutex);
  if (is_known && cache.WasSearchedRecently(FolderCache::IdentityOf(facts)))
    cache.Add(facts, dirfd(listing.get()), count >= kLarge);
  return found;
}
