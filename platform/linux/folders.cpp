// Folder searches, which read the whole directory at their start.
#include "platform/folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <vector>

#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/handle_table.h"
#include "platform/linux/name_pattern.h"
#include "platform/linux/utf8.h"
#include "platform/text.h"

namespace {

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

struct Entry {
  std::u16string upper;
  std::string name;
};

std::u16string UpperName(std::u16string name) {
  CharUpperBuffW(name.data(), DWORD(name.size()));
  return name;
}

// The name in the product's form; empty if it cannot be expressed.
std::u16string ProductName(std::string_view name) {
  std::u16string wide = WideFromSystem(name);
  return wide.size() < MAX_PATH && wide.find(u'\\') == wide.npos ? std::move(wide) : std::u16string();
}

// Returns false if the entry no longer exists.
bool GetFacts(int folder, const std::string& name, WIN32_FIND_DATAW& facts) {
  struct stat own;
  if (fstatat(folder, name.c_str(), &own, AT_SYMLINK_NOFOLLOW) != 0) return false;
  const bool is_link = S_ISLNK(own.st_mode);
  struct stat target = own;
  if (is_link && fstatat(folder, name.c_str(), &target, 0) != 0) {
    target = own;
    target.st_size = 0;
  }
  const WIN32_FILE_ATTRIBUTE_DATA found = FactsOf(target);
  facts = {found.dwFileAttributes,
           found.ftCreationTime,
           found.ftLastAccessTime,
           found.ftLastWriteTime,
           found.nFileSizeHigh,
           found.nFileSizeLow,
           0,
           0,
           {},
           {}};
  if (is_link) {
    if (facts.dwFileAttributes == FILE_ATTRIBUTE_NORMAL) facts.dwFileAttributes = 0;  // never combined
    facts.dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    facts.dwReserved0 = IO_REPARSE_TAG_SYMLINK;
  }
  const std::u16string wide = WideFromSystem(name);
  wide.copy(facts.cFileName, MAX_PATH - 1);
  return true;
}

class Search : public HandleObject {
 public:
  explicit Search(Folder folder) : folder_(std::move(folder)) {}

  // Collects the matching names in order. Returns an errno if the folder cannot be read.
  int Collect(const NamePattern& pattern) {
    for (;;) {
      errno = 0;
      const dirent* entry = readdir(folder_.get());
      if (!entry) break;
      std::u16string upper = UpperName(ProductName(entry->d_name));
      if (!upper.empty() && pattern.Matches(upper)) entries_.push_back({std::move(upper), entry->d_name});
    }
    if (errno != 0) return errno;
    std::sort(entries_.begin(), entries_.end(),
              [](const Entry& a, const Entry& b) { return a.upper != b.upper ? a.upper < b.upper : a.name < b.name; });
    return 0;
  }

  bool Next(WIN32_FIND_DATAW& facts) {
    while (next_ < entries_.size()) {
      if (GetFacts(dirfd(folder_.get()), entries_[next_++].name, facts)) return true;
    }
    return false;
  }

 private:
  Folder folder_;
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
};

HANDLE Failed(LONG status) {
  SetLastError(DWORD(status));
  return INVALID_HANDLE_VALUE;
}

HANDLE FailedForFolder(int code) {
  if (code == ENOENT) return Failed(ERROR_PATH_NOT_FOUND);
  return Failed(code == ENOTDIR ? ERROR_DIRECTORY : StatusFromErrno(code));
}

HANDLE FindOne(LPCWSTR path, WIN32_FIND_DATAW& facts) {
  const std::string system = SystemPathFromProduct(path);
  const std::string name = system.substr(system.rfind('/') + 1);
  const int folder = open(FolderOf(system).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_PATH);
  if (folder < 0) return FailedForFolder(errno);
  errno = 0;
  const bool found = !ProductName(name).empty() && GetFacts(folder, name, facts);
  const int code = errno;
  close(folder);
  if (found) return AddHandle(std::make_shared<Search>(Folder(nullptr, closedir)));  // a search without further entries
  return Failed(code == ENAMETOOLONG || code == EACCES ? StatusFromErrno(code) : ERROR_FILE_NOT_FOUND);
}

}  // namespace

HANDLE FindFirstFileW(LPCWSTR path, LPWIN32_FIND_DATAW facts) {
  const std::u16string_view whole = path ? path : u"";
  if (whole.empty()) return Failed(ERROR_PATH_NOT_FOUND);
  const std::size_t name = whole.find_last_of(u"\\/:") + 1;
  const std::u16string_view pattern = whole.substr(name);
  const std::u16string folder(whole.substr(0, name));
  if (pattern.empty()) return Failed(ERROR_FILE_NOT_FOUND);
  if (NamePattern::IsPattern(folder.starts_with(u"\\\\?\\") ? folder.substr(4) : folder))
    return Failed(ERROR_INVALID_NAME);
  if (!NamePattern::IsPattern(pattern)) return FindOne(path, *facts);
  Folder stream(opendir(folder.empty() ? "." : SystemPathFromProduct(folder.c_str()).c_str()), closedir);
  if (!stream) return FailedForFolder(errno);
  auto search = std::make_shared<Search>(std::move(stream));
  if (const int code = search->Collect(NamePattern(UpperName(std::u16string(pattern))))) return FailedForFolder(code);
  return search->Next(*facts) ? AddHandle(std::move(search)) : Failed(ERROR_FILE_NOT_FOUND);
}

BOOL FindNextFileW(HANDLE handle, LPWIN32_FIND_DATAW facts) {
  const auto search = FindHandle<Search>(handle);
  if (!search) return FALSE;
  return search->Next(*facts) || FailWithStatus(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE handle) { return FindHandle<Search>(handle) ? CloseHandle(handle) : FALSE; }
