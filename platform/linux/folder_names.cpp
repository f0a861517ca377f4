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

#include "platform/linux/registry_names.h"
#include "platform/linux/utf8.h"
#include "platform/text.h"

namespace {

// ---- reading a folder

bool IsLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char character) { return static_cast<signed char>(character) < 0; });
}

// A name to be compared without case with many others, most of which differ at a glance.
class CaselessName {
 public:
  explicit CaselessName(std::string_view name) : name_(name), is_ascii_(IsAscii(name)), wide_(WideFromUtf8(name)) {}

  bool Equals(std::string_view other) const {
    if (is_ascii_ && IsAscii(other)) {
      const auto same = [](char a, char b) { return a == b || ((a ^ b) == 0x20 && IsLetter(a)); };
      return std::equal(name_.begin(), name_.end(), other.begin(), other.end(), same);
    }
    return _wcsicmp(WideFromUtf8(other).c_str(), wide_.c_str()) == 0;
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

constexpr std::size_t kLarge = 100;  // names; reading fewer costs no more than asking what has changed
constexpr std::size_t kMostNames = 1'000'000;
constexpr std::size_t kMostFolders = 16;
constexpr std::uint32_t kComesOrGoes = IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM;

// Which folder it is, whatever way leads there.
struct Identity {
  dev_t device = 0;
  ino_t number = 0;
  bool operator==(const Identity&) const = default;
};

struct Names {
  Identity folder;
  int watch = -1;
  std::unordered_map<std::string, std::set<std::string>> by_key;  // without case

  static std::string KeyOf(std::string_view name) {
    std::string key;
    kvregistry::AppendFolded(key, WideFromUtf8(name));
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

// File systems that nobody changes but through this system's kernel, which so can tell of every change.
bool IsOfThisMachine(int folder) {
  constexpr std::uint32_t kKinds[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC,    F2FS_SUPER_MAGIC,
                                      TMPFS_MAGIC,      RAMFS_MAGIC,     OVERLAYFS_SUPER_MAGIC};
  struct statfs about;
  if (fstatfs(folder, &about) != 0) return false;
  return std::find(std::begin(kKinds), std::end(kKinds), std::uint32_t(about.f_type)) != std::end(kKinds);
}

class Memory {
 public:
  std::mutex mutex;

  // What the folder's name is, if the folder is remembered: none if it isn't.
  std::optional<std::string> Find(const Identity& folder, std::string_view wanted) {
    TakeNews();
    const auto found = FindFolder(folder);
    if (found == all_.end()) return std::nullopt;
    all_.splice(all_.begin(), all_, found);
    return found->Find(wanted);
  }

  // Whether a large folder was searched before; notes it.
  bool IsSearchedAgain(const Identity& folder) { return std::exchange(last_large_, folder) == folder; }

  // Remembers the names of an open folder, if the system can tell what becomes of them.
  void Remember(const Identity& folder, int descriptor) {
    if (FindFolder(folder) != all_.end()) return;  // by another thread meanwhile
    if (news_ < 0) news_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (news_ < 0 || !IsOfThisMachine(descriptor)) return;
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    Names names;
    names.folder = folder;
    names.watch = inotify_add_watch(news_, path.c_str(), kComesOrGoes | IN_ONLYDIR);
    if (names.watch < 0) return;
    // Read from the watch's beginning on: what changes meanwhile is told once more, which does no harm.
    const Folder listing(fdopendir(openat(descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), closedir);
    std::size_t count = 0;
    if (listing) ForEachName(listing, [&](std::string_view name) { names.Add(name), ++count; });
    all_.push_front(std::move(names));
    if (!listing || count > kMostNames) Forget(all_.begin());
    while (all_.size() > kMostFolders) Forget(std::prev(all_.end()));
  }

  // In a child process: the news are the parent's.
  void Abandon() {
    if (news_ >= 0) close(news_);
    news_ = -1;
    all_.clear();
  }

 private:
  std::list<Names>::iterator FindFolder(const Identity& folder) {
    return std::find_if(all_.begin(), all_.end(), [&](const Names& names) { return names.folder == folder; });
  }

  void Forget(std::list<Names>::iterator names) {
    inotify_rm_watch(news_, names->watch);
    all_.erase(names);
  }

  // Everything that has come or gone up to now.
  void TakeNews() {
    alignas(inotify_event) std::array<char, 16 * 1024> buffer;
    while (!all_.empty()) {
      const ssize_t size = read(news_, buffer.data(), buffer.size());
      if (size <= 0) return;
      inotify_event event;
      for (std::size_t at = 0; at < std::size_t(size); at += sizeof event + event.len) {
        std::memcpy(&event, buffer.data() + at, sizeof event);
        Take(event, event.len ? buffer.data() + at + sizeof event : "");
      }
    }
  }

  void Take(const inotify_event& event, std::string_view name) {
    if (event.mask & IN_Q_OVERFLOW) return Abandon();  // some were lost
    const auto names =
        std::find_if(all_.begin(), all_.end(), [&](const Names& each) { return each.watch == event.wd; });
    if (names == all_.end()) return;
    if (event.mask & (IN_CREATE | IN_MOVED_TO)) names->Add(name);
    if (event.mask & (IN_DELETE | IN_MOVED_FROM)) names->Remove(name);
    if (event.mask & (IN_IGNORED | IN_UNMOUNT)) all_.erase(names);  // the folder is gone
  }

  int news_ = -1;
  std::list<Names> all_;  // the one searched last ahead
  Identity last_large_;
};

// Never destroyed: files are looked for up to the end of the process.
Memory& Remembered() {
  static Memory* const memory = [] {
    pthread_atfork([] { Remembered().mutex.lock(); }, [] { Remembered().mutex.unlock(); },
                   [] {
                     Remembered().Abandon();
                     Remembered().mutex.unlock();
                   });
    return new Memory;
  }();
  return *memory;
}

}  // namespace

std::string FindNameWithoutCase(const std::string& folder, std::string_view wanted) {
  const char* const path = folder.empty() ? "." : folder.c_str();
  struct stat facts;
  if (stat(path, &facts) != 0) return {};
  Identity identity{facts.st_dev, facts.st_ino};
  Memory& memory = Remembered();
  {
    const std::lock_guard lock(memory.mutex);
    if (const auto known = memory.Find(identity, wanted)) return *known;
  }
  const Folder listing(opendir(path), closedir);
  if (!listing) return {};
  const CaselessName name_wanted(wanted);
  std::string found;
  std::size_t count = 0;
  ForEachName(listing, [&](std::string_view name) {
    ++count;
    if (name_wanted.Equals(name) && (found.empty() || name < found)) found = name;
  });
  if (count < kLarge || fstat(dirfd(listing.get()), &facts) != 0) return found;
  identity = {facts.st_dev, facts.st_ino};
  const std::lock_guard lock(memory.mutex);
  if (memory.IsSearchedAgain(identity)) memory.Remember(identity, dirfd(listing.get()));
  return found;
}
