// PrivateFile, implemented with a handle. The folder's rights keep other users out, and the lock is one byte far beyond
// the file's end, so that it keeps nobody from reading.
#include "platform/private_file.h"

#include <utility>

#include "platform/errors.h"

namespace {

constexpr DWORD kLockedAt = 0x7FFFFFFF;
constexpr DWORD kPause_ms = 1;

HANDLE HandleOf(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

LONG StatusOf(BOOL done) { return done ? ERROR_SUCCESS : LONG(GetLastError()); }

void CreateFoldersOf(const Text& path) {
  for (std::size_t end = path.find(L'\\', 3); end != path.npos; end = path.find(L'\\', end + 1))
    CreateDirectoryW(path.substr(0, end).c_str(), nullptr);  // if this fails, the caller's own call fails too
}

HANDLE OpenFileOf(const Text& path, bool create) {
  return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     nullptr, create ? OPEN_ALWAYS : OPEN_EXISTING,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

LONG MoveTo(HANDLE file, ULONGLONG position) {
  LARGE_INTEGER distance;
  distance.QuadPart = LONGLONG(position);
  return StatusOf(SetFilePointerEx(file, distance, nullptr, FILE_BEGIN));
}

}  // namespace

LONG PrivateFile::Open(const Text& path, bool create) {
  HANDLE file = OpenFileOf(path, create);
  if (file == INVALID_HANDLE_VALUE && create && GetLastError() == ERROR_PATH_NOT_FOUND) {
    CreateFoldersOf(path);
    file = OpenFileOf(path, create);
  }
  if (file == INVALID_HANDLE_VALUE) return LONG(GetLastError());
  file_ = reinterpret_cast<std::intptr_t>(file);
  BY_HANDLE_FILE_INFORMATION facts = {};
  if (GetFileInformationByHandle(file, &facts) && !(facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
    return ERROR_SUCCESS;
  Close();
  return ERROR_ACCESS_DENIED;
}

// A waiting LockFileEx can't end after a time.
LONG PrivateFile::Lock(int most_ms) {
  const ULONGLONG end = GetTickCount64() + ULONGLONG(most_ms);
  while (!LockFile(HandleOf(file_), kLockedAt, 0, 1, 0)) {
    const DWORD status = GetLastError();
    if (status != ERROR_LOCK_VIOLATION) return LONG(status);
    if (GetTickCount64() >= end) return ERROR_BUSY;
    Sleep(kPause_ms);
  }
  locked_ = true;
  return ERROR_SUCCESS;
}

LONG PrivateFile::GetSize(ULONGLONG& bytes) const {
  LARGE_INTEGER size = {};
  const LONG status = StatusOf(GetFileSizeEx(HandleOf(file_), &size));
  bytes = ULONGLONG(size.QuadPart);
  return status;
}

LONG PrivateFile::Read(ULONGLONG from, std::string& text) const {
  if (const LONG status = MoveTo(HandleOf(file_), from)) return status;
  DWORD done = 0;
  if (!ReadFile(HandleOf(file_), text.data(), DWORD(text.size()), &done, nullptr)) return LONG(GetLastError());
  text.resize(done);
  return ERROR_SUCCESS;
}

LONG PrivateFile::Write(ULONGLONG at, std::string_view text) {
  if (const LONG status = MoveTo(HandleOf(file_), at)) return status;
  DWORD done = 0;
  if (!WriteFile(HandleOf(file_), text.data(), DWORD(text.size()), &done, nullptr)) return LONG(GetLastError());
  return done == text.size() ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

LONG PrivateFile::SetSize(ULONGLONG bytes) {
  if (const LONG status = MoveTo(HandleOf(file_), bytes)) return status;
  return StatusOf(SetEndOfFile(HandleOf(file_)));
}

void PrivateFile::Close() {
  if (file_ == kNone) return;
  if (std::exchange(locked_, false)) UnlockFile(HandleOf(file_), kLockedAt, 0, 1, 0);
  CloseHandle(HandleOf(std::exchange(file_, kNone)));
}

LONG PrivateFile::Rename(const Text& from, const Text& to) {
  return StatusOf(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING));
}

LONG PrivateFile::Remove(const Text& path) { return StatusOf(DeleteFileW(path.c_str())); }
