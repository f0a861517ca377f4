// TemporaryFile and SafeCompoundFile. The old file's rights are kept.
#include "platform/temporary_file.h"

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <utility>
#include <vector>

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/process.h"
#include "platform/safe_compound_file.h"
#include "platform/utf8.h"

namespace {

constexpr std::size_t kMostWritten = 1024 * 1024;  // by one call
// How long a replacement is tried while another program reads the target without sharing its deletion, as virus
// scanners and indexers do for a moment.
constexpr DWORD kPatience_ms = 1000;
constexpr DWORD kBetween_ms = 20;

// The process that writes a file has it open, so a file that can be opened alone belongs to a process that has died.

ULONGLONG Milliseconds(const FILETIME& time) {
  constexpr ULONGLONG kUnits = 10'000;
  return (ULONGLONG(time.dwHighDateTime) << 32 | time.dwLowDateTime) / kUnits;
}

ULONGLONG Now() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return Milliseconds(now);
}

// The number is at least the time of its process's start, so that no name is that of an earlier process's file.
Text NumberOf(int attempt) {
  static std::atomic<ULONGLONG> serial = Now();
  if (attempt <= TemporaryFile::kSharedNumbers) return std::to_wstring(attempt);
  return std::to_wstring(GetCurrentProcessId()) + L'-' + std::to_wstring(serial.fetch_add(1));
}

Text BesideOf(const Text& target) { return target.substr(0, target.rfind(L'\\') + 1 + TemporaryFile::kMostOfName); }

Text NameOf(const Text& beside, int attempt) { return beside + L'~' + NumberOf(attempt) + L".tmp"; }

// Removes a temporary file without a writer. False if there is no such file.
bool RemoveIfDead(const Text& path) {
  const HANDLE file = CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() != ERROR_FILE_NOT_FOUND;
  CloseHandle(file);
  return true;
}

// The writer in the name of a file beyond the shared numbers, "...~1234-13376000000000.tmp"; process 0 for
// another name.
struct Writer {
  DWORD process;
  ULONGLONG serial;
};

Writer WriterOf(const Text& name) {
  const std::size_t at = name.rfind(L'~') + 1;
  if (at == 0) return {};
  LPWSTR end = nullptr;
  const DWORD process = std::wcstoul(name.c_str() + at, &end, 10);
  if (*end != L'-') return {};
  const ULONGLONG serial = std::wcstoull(end + 1, &end, 10);
  return std::wcscmp(end, L".tmp") == 0 ? Writer{process, serial} : Writer{};
}

// A process that was started later than the file was named has got the number of the writer. One that has ended exists
// as long as another has it open.
bool IsDead(const Writer& writer) {
  const HANDLE process = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, writer.process);
  if (!process) return GetLastError() == ERROR_INVALID_PARAMETER;
  FILETIME start, end, kernel, user;
  const bool later = GetProcessTimes(process, &start, &end, &kernel, &user) && Milliseconds(start) > writer.serial;
  const bool ended = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
  CloseHandle(process);
  return later || ended;
}

// A process can end between the closing of its file and the replacement. These files have names of that process.
void RemoveClosedFilesOfDead(const Text& beside) {
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((beside + L"~*-*.tmp").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    const Writer writer = WriterOf(found.cFileName);
    if (writer.process != 0 && IsDead(writer))
      RemoveIfDead(beside.substr(0, beside.rfind(L'\\') + 1) + found.cFileName);
  } while (FindNextFileW(search, &found));
  FindClose(search);
}

// ---- targets

// The full path, for a link that of the file it leads to. Empty on failure.
Text TargetOf(LPCWSTR path) {
  Text full(32768, 0);  // the longest path
  full.resize(GetFullPathNameW(path, DWORD(full.size()), full.data(), nullptr));
  const DWORD attributes = GetFileAttributesW(full.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return full;
  const HANDLE file = CreateFileW(full.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return full;
  Text target(32768, 0);
  target.resize(GetFinalPathNameByHandleW(file, target.data(), DWORD(target.size()), FILE_NAME_NORMALIZED));
  CloseHandle(file);
  return target.empty() ? full : target;
}

// Why the target can't be replaced; ERROR_SUCCESS if it can.
DWORD RefusalToReplace(const Text& target) {
  if (target.starts_with(L"\\\\.\\")) return ERROR_ACCESS_DENIED;  // a device
  const DWORD attributes = GetFileAttributesW(target.c_str());
  const bool refused =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY));
  return refused ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

bool IsBusy(DWORD status) {
  return status == ERROR_SHARING_VIOLATION || status == ERROR_ACCESS_DENIED || status == ERROR_USER_MAPPED_FILE;
}

// Gives the file the rights of the target, if there is one. Without the right to do so it keeps those of its folder.
void CopyRights(const Text& target, const Text& file) {
  DWORD bytes = 0;
  GetFileSecurityW(target.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &bytes);
  std::vector<BYTE> rights(bytes);
  if (bytes > 0 && GetFileSecurityW(target.c_str(), DACL_SECURITY_INFORMATION, rights.data(), bytes, &bytes))
    SetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, rights.data());
}

// Gives the file the target's name, once. ReplaceFileW takes several steps, between which no file has the name.
DWORD ReplaceOnce(const Text& file, const Text& target) {
  constexpr DWORD kInOneStep = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  return MoveFileExW(file.c_str(), target.c_str(), kInOneStep) ? ERROR_SUCCESS : GetLastError();
}

DWORD Replace(const Text& file, const Text& target) {
  const ULONGLONG end = GetTickCount64() + kPatience_ms;
  CopyRights(target, file);
  for (;;) {
    const DWORD status = ReplaceOnce(file, target);
    if (!IsBusy(status) || GetTickCount64() >= end) return status;
    Sleep(kBetween_ms);
  }
}

}  // namespace

struct TemporaryFile::State {
  std::string system_path;
  Text target;
  Text beside;  // the start of the files' paths
  Text path;    // empty if there is nothing to remove
  HANDLE file = INVALID_HANDLE_VALUE;
  bool replaced = false;

  bool IsOpen() const { return file != INVALID_HANDLE_VALUE; }
  Text Name(int number) const { return NameOf(beside, number); }

  // Creates a file and opens it in such a way that it can be renamed while it is open.
  DWORD Open() {
    if (target.empty()) return ERROR_INVALID_NAME;
    if (const DWORD refusal = RefusalToReplace(target)) return refusal;
    beside = BesideOf(target);
    int number = 1;
    for (; number <= kTries && !IsOpen(); ++number) {
      Text tried = Name(number);
      if (number <= kSharedNumbers) RemoveIfDead(tried);
      file = CreateFileW(tried.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                         CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
      const DWORD code = IsOpen() ? DWORD(ERROR_SUCCESS) : GetLastError();
      if (IsOpen()) path = std::move(tried);  // takes no memory: the file would stay
      // A file that is just being removed denies access.
      if (!IsOpen() && code != ERROR_FILE_EXISTS && code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION)
        return code;
    }
    if (!IsOpen()) return ERROR_ACCESS_DENIED;
    while (number <= kSharedNumbers && RemoveIfDead(Name(number))) ++number;
    RemoveClosedFilesOfDead(beside);
    return ERROR_SUCCESS;
  }

  // Closes the file, because the system replaces by closed files only. Another process would now take it for that of a
  // dead one, so it gets a name that is only this process's before.
  DWORD Close() {
    Text own = Name(kSharedNumbers + 1);
    if (!MoveFileExW(path.c_str(), own.c_str(), 0)) return GetLastError();
    path = std::move(own);
    return CloseHandle(std::exchange(file, INVALID_HANDLE_VALUE)) ? DWORD(ERROR_SUCCESS) : GetLastError();
  }
};

TemporaryFile::TemporaryFile() : state_(std::make_unique<State>()) {}

TemporaryFile::~TemporaryFile() { Drop(); }

LONG TemporaryFile::Open(LPCWSTR path) {
  state_->target = TargetOf(path);
  state_->system_path = Utf8FromWide(state_->target);
  return LONG(state_->Open());
}

bool TemporaryFile::IsOpen() const { return state_->IsOpen(); }

LONG TemporaryFile::Write(const char* bytes, std::size_t count, std::size_t& written) {
  DWORD done = 0;
  if (!WriteFile(state_->file, bytes, DWORD(std::min(count, kMostWritten)), &done, nullptr))
    return LONG(GetLastError());
  written = done;
  return ERROR_SUCCESS;
}

LONG TemporaryFile::Replace() {
  if (!FlushFileBuffers(state_->file)) return LONG(GetLastError());
  if (const DWORD status = state_->Close()) return LONG(status);
  if (const DWORD status = ::Replace(state_->path, state_->target)) return LONG(status);
  state_->path.clear();
  state_->replaced = true;
  return ERROR_SUCCESS;
}

bool TemporaryFile::IsReplaced() const { return state_->replaced; }

// Removes the file before it is closed, so that no other process takes it in between.
void TemporaryFile::Drop() {
  if (!state_->path.empty()) DeleteFileW(state_->path.c_str());
  state_->path.clear();
  if (IsOpen()) CloseHandle(std::exchange(state_->file, INVALID_HANDLE_VALUE));
}

const std::string& TemporaryFile::Target() const { return state_->system_path; }

// ---- compound files

SafeCompoundFile::SafeCompoundFile(LPCWSTR target) : target_(TargetOf(target)), path_(target_) {
  // The system's call refuses such a target with its own words.
  if (target_.empty() || RefusalToReplace(target_) != ERROR_SUCCESS) return;
  const Text beside = BesideOf(target_);
  RemoveClosedFilesOfDead(beside);
  path_ = NameOf(beside, TemporaryFile::kSharedNumbers + 1);
}

SafeCompoundFile::~SafeCompoundFile() {
  if (path_ != target_) DeleteFileW(path_.c_str());
}

LONG SafeCompoundFile::Replace() {
  if (path_ == target_) return ERROR_SUCCESS;
  const DWORD status = ::Replace(path_, target_);
  if (status == ERROR_SUCCESS) path_ = target_;
  return LONG(status);
}
