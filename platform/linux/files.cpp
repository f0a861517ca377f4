// Files and folders, implemented with POSIX calls. file_handles.cpp has the calls with handles.
#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <random>

#include "platform/linux/drives.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/file_system.h"
#include "platform/linux/file_times.h"
#include "platform/linux/utf8.h"
#include "platform/text.h"

namespace {

constexpr mode_t kWriteBits = 0222;

bool IsReadOnly(const struct stat& facts) { return S_ISREG(facts.st_mode) && (facts.st_mode & kWriteBits) == 0; }

// Returns 0 if the file may be removed or replaced, else the errno. Folders are refused: other calls handle them.
int RefusalToRemove(const std::string& path) {
  struct stat facts;
  if (lstat(path.c_str(), &facts) != 0) return errno;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  return IsReadOnly(facts) ? EACCES : 0;
}

int RemoveFile(const std::string& path) {
  if (const int refusal = RefusalToRemove(path)) return refusal;
  return unlink(path.c_str()) == 0 ? 0 : errno;
}

// The result of a C library call for an errno code.
int CResult(int code) {
  if (code == 0) return 0;
  errno = code;
  return -1;
}

}  // namespace

// ---- what other sources of this folder share

void EnsureDriveFolder(LPCWSTR path) {
  const std::string folder = DriveFolderOf(path);
  if (folder.empty() || access(folder.c_str(), F_OK) == 0) return;
  for (std::size_t slash = 0; slash != std::string::npos;) {
    slash = folder.find('/', slash + 1);
    mkdir(folder.substr(0, slash).c_str(), 0777);  // if this fails, the caller's own call fails too
  }
}

bool FailForPath(int code, const std::string& path) {
  // A missing folder has another status than a missing file; no path at all counts as one.
  if (code == ENOENT && (path.empty() || access(FolderOf(path).c_str(), F_OK) != 0))
    return FailWithStatus(ERROR_PATH_NOT_FOUND);
  return code == EILSEQ || (code == ENOENT && !CanBeNew(path)) ? FailWithStatus(ERROR_INVALID_NAME)
                                                               : FailWithErrno(code);
}

std::string FolderOf(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t slash = end == std::string::npos ? 0 : path.rfind('/', end);
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

int FlushFolder(const std::string& folder) {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  // Some file systems cannot flush a folder and return EINVAL; nothing better is possible there.
  const int code = fsync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
  close(descriptor);
  return code;
}

int RefusalToWrite(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) return CanBeNew(path) ? 0 : EILSEQ;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  return IsReadOnly(facts) ? EACCES : 0;
}

bool CanBeNew(const std::string& path) { return path.find_first_of("*?\"<>|", path.rfind('/') + 1) == path.npos; }

DWORD AttributesOf(const struct stat& facts) {
  if (S_ISDIR(facts.st_mode)) return FILE_ATTRIBUTE_DIRECTORY;
  return IsReadOnly(facts) ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL;
}

WIN32_FILE_ATTRIBUTE_DATA FactsOf(const struct stat& facts) {
  const ULONGLONG size = S_ISDIR(facts.st_mode) ? 0 : ULONGLONG(facts.st_size);
  return {AttributesOf(facts),       FileTimeOf(facts.st_ctim), FileTimeOf(facts.st_atim),
          FileTimeOf(facts.st_mtim), DWORD(size >> 32),         DWORD(size)};
}

// ---- attributes and access

DWORD GetFileAttributesW(LPCWSTR path) {
  const std::string system = SystemPathFromProduct(path);
  struct stat facts;
  if (stat(system.c_str(), &facts) != 0) {
    FailForPath(errno, system);
    return INVALID_FILE_ATTRIBUTES;
  }
  return AttributesOf(facts);
}

BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS, void* facts) {
  const std::string system = SystemPathFromProduct(path);
  struct stat found;
  if (stat(system.c_str(), &found) != 0) return FailForPath(errno, system);
  *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(facts) = FactsOf(found);
  return TRUE;
}

int _waccess(LPCWSTR path, int mode) {
  if ((mode & ~6) != 0) return CResult(EINVAL);
  const int asked = (mode & 2 ? W_OK : 0) | (mode & 4 ? R_OK : 0);
  const auto refused = [asked](const std::string& name) {
    return faccessat(AT_FDCWD, name.c_str(), asked, AT_EACCESS) != 0;
  };
  std::string system = SystemPathAsWritten(path);  // most paths exist as written
  if (refused(system)) {
    const int code = errno;
    std::string found = SystemPathFromProduct(path);
    if (found == system) return CResult(code);
    system = std::move(found);
    if (refused(system)) return -1;
  }
  const int refusal = mode & 2 ? RefusalToWrite(system) : 0;
  return CResult(refusal == EISDIR ? 0 : refusal);
}

int _wchmod(LPCWSTR path, int mode) {
  const std::string system = SystemPathFromProduct(path);
  struct stat facts;
  if (stat(system.c_str(), &facts) != 0) return -1;
  if (S_ISDIR(facts.st_mode)) return 0;  // write permission of a folder says nothing about its files
  const mode_t bits = facts.st_mode & 07777;
  return chmod(system.c_str(), mode & _S_IWRITE ? bits | S_IWUSR : bits & ~kWriteBits);
}

// ---- folders

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES) {
  EnsureDriveFolder(path);
  const std::string system = SystemPathFromProduct(path);
  if (access(system.c_str(), F_OK) != 0 && !CanBeNew(system)) return FailWithStatus(ERROR_INVALID_NAME);
  return mkdir(system.c_str(), 0777) == 0 || FailForPath(errno, system);
}

BOOL RemoveDirectoryW(LPCWSTR path) {
  std::string system = SystemPathFromProduct(path);
  while (system.size() > 1 && system.back() == '/') system.pop_back();  // a slash at the end would follow a link
  struct stat own;
  struct stat target;
  const bool is_link = lstat(system.c_str(), &own) == 0 && S_ISLNK(own.st_mode) && stat(system.c_str(), &target) == 0 &&
                       S_ISDIR(target.st_mode);
  if ((is_link ? unlink(system.c_str()) : rmdir(system.c_str())) == 0) return TRUE;
  const int code = errno;
  const bool is_other = code == ENOTDIR && access(system.c_str(), F_OK) == 0;
  return is_other ? FailWithStatus(ERROR_DIRECTORY) : FailForPath(code, system);
}

// ---- whole files

BOOL DeleteFileW(LPCWSTR path) {
  const std::string system = SystemPathFromProduct(path);
  const int code = RemoveFile(system);
  return code == 0 || FailForPath(code, system);
}

UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR buffer) {
  std::u16string path = folder ? folder : u"";
  if (path.size() > MAX_PATH - 14) return UINT(FailWithStatus(ERROR_BUFFER_OVERFLOW));
  const DWORD attributes = GetFileAttributesW(folder);
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
    return UINT(FailWithStatus(ERROR_DIRECTORY));
  if (path.back() != u'\\' && path.back() != u'/') path += u'\\';
  path += std::u16string_view(prefix ? prefix : u"").substr(0, 3);
  static std::atomic<UINT> next = std::random_device()();
  for (int tries = 0; tries < 0x10000; ++tries) {
    const UINT number = unique != 0 ? unique & 0xFFFF : next++ & 0xFFFF;
    if (number == 0 && unique == 0) continue;
    char digits[8];
    std::snprintf(digits, sizeof digits, "%x", number);
    const std::u16string name = path + WideFromUtf8(digits) + u".tmp";
    CopyToBuffer(name, buffer, MAX_PATH);
    if (unique != 0) return unique;
    const int descriptor =
        open(SystemPathFromProduct(name.c_str()).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor >= 0) {
      close(descriptor);
      return number;
    }
    if (errno != EEXIST) return UINT(FailWithErrno(errno));
  }
  return UINT(FailWithStatus(ERROR_FILE_EXISTS));
}

// ---- the C library's streams

namespace {

// The C library's mode for a mode of the platform; empty for an invalid one.
std::string StreamMode(LPCWSTR mode) {
  const std::u16string_view text = mode ? mode : u"";
  const std::u16string_view letters = text.substr(0, text.find(u','));
  const std::size_t kind = letters.find_first_not_of(u' ');
  if (kind == letters.npos || std::u16string_view(u"rwa").find(letters[kind]) == letters.npos) return {};
  std::string result(1, char(letters[kind]));
  bool update = false;
  bool exclusive = false;
  for (const char16_t letter : letters.substr(kind + 1)) {
    if (std::u16string_view(u"+btxNSRcn ").find(letter) == letters.npos) return {};
    update |= letter == u'+';
    exclusive |= letter == u'x';
  }
  if (exclusive && result != "w") return {};
  return result + (update ? "+" : "") + (exclusive ? "x" : "") + "e";
}

// The mark at the start of a new file for the encoding in the mode; empty without one.
const char* MarkOf(LPCWSTR mode) {
  const std::u16string_view text = mode;
  const std::size_t name = text.find(u"ccs=");
  if (name == text.npos) return "";
  const std::u16string_view encoding = text.substr(name + 4, text.find_last_not_of(u' ') - name - 3);
  const auto is = [encoding](std::u16string_view other) {
    const int units = int(encoding.size());
    return CompareStringOrdinal(encoding.data(), units, other.data(), int(other.size()), TRUE) == CSTR_EQUAL;
  };
  if (is(u"UTF-16LE") || is(u"UNICODE")) return "\xFF\xFE";
  return is(u"UTF-8") ? "\xEF\xBB\xBF" : "";
}

}  // namespace

FILE* _wfopen(LPCWSTR path, LPCWSTR mode) {
  const std::string letters = StreamMode(mode);
  if (letters.empty()) {
    errno = EINVAL;
    return nullptr;
  }
  const bool writes = letters.front() != 'r' || letters.find('+') != std::string::npos;
  if (letters.front() != 'r') EnsureDriveFolder(path);
  const std::string system = SystemPathFromProduct(path);
  const int refusal = writes ? RefusalToWrite(system) : 0;
  if (refusal == EILSEQ || (refusal != 0 && letters.find('x') == std::string::npos)) {
    errno = refusal == EILSEQ ? EINVAL : refusal;
    return nullptr;
  }
  FILE* file = std::fopen(system.c_str(), letters.c_str());
  if (!file) return nullptr;
  struct stat facts = {};
  const bool known = fstat(fileno(file), &facts) == 0;
  int failure = 0;
  // Refuse a folder here: the C library would open it and fail only on reading.
  if (!writes && known && S_ISDIR(facts.st_mode)) failure = EACCES;
  if (writes && known && facts.st_size == 0 && (std::fputs(MarkOf(mode), file) < 0 || std::fflush(file) != 0))
    failure = errno;
  if (failure == 0) return file;
  std::fclose(file);
  errno = failure;
  return nullptr;
}
