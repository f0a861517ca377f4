// SafeFile, implemented with the system's replacement of a file, which keeps the old file's rights.
#include "platform/safe_file.h"

#include <atomic>
#include <utility>

#include "platform/errors.h"
#include "platform/windows/utf8.h"

namespace {

constexpr std::size_t kCollected = 64 * 1024;
constexpr int kTries = 100;
constexpr int kSharedNumbers = 16;           // more than one file has writers at a time
constexpr std::size_t kMostNameUnits = 200;  // units of the target's name that the temporary file's name uses
// How long a replacement is tried while another program reads the target without sharing its deletion, as virus
// scanners and indexers do for a moment.
constexpr DWORD kPatience_ms = 1000;
constexpr DWORD kBetween_ms = 20;

thread_local constinit SafeFileProgress::Report t_report = nullptr;

// ---- temporary files
//
// The temporary files of a target have the numbers 1, 2 and so on; beyond kSharedNumbers a number is made of the
// process and a serial. The process that writes a file has it open until the file has its final name, so a file that
// can be opened alone belongs to a process that has died.

Text NumberOf(int attempt) {
  static std::atomic<unsigned> serial = 0;
  if (attempt <= kSharedNumbers) return std::to_wstring(attempt);
  return std::to_wstring(GetCurrentProcessId()) + L'-' + std::to_wstring(serial.fetch_add(1));
}

// Removes a temporary file without a writer. False if there is no such file.
bool RemoveIfDead(const Text& path) {
  const HANDLE file = CreateFileW(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() != ERROR_FILE_NOT_FOUND;
  CloseHandle(file);
  return true;
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
  return status == ERROR_SHARING_VIOLATION || status == ERROR_ACCESS_DENIED ||
         status == ERROR_UNABLE_TO_REMOVE_REPLACED || status == ERROR_UNABLE_TO_MOVE_REPLACEMENT ||
         status == ERROR_USER_MAPPED_FILE;
}

// Gives the file the target's name, once. A status of its own tells that the target is missing.
DWORD ReplaceOnce(const Text& file, const Text& target) {
  if (ReplaceFileW(target.c_str(), file.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr))
    return ERROR_SUCCESS;
  const DWORD status = GetLastError();
  const bool missing = status == ERROR_FILE_NOT_FOUND || status == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2;
  if (!missing) return status;
  return MoveFileExW(file.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH) ? ERROR_SUCCESS : GetLastError();
}

DWORD Replace(const Text& file, const Text& target) {
  const ULONGLONG end = GetTickCount64() + kPatience_ms;
  for (;;) {
    const DWORD status = ReplaceOnce(file, target);
    const bool appeared = status == ERROR_ALREADY_EXISTS || status == ERROR_FILE_EXISTS;
    if ((!IsBusy(status) && !appeared) || GetTickCount64() >= end) return status;
    Sleep(kBetween_ms);
  }
}

}  // namespace

struct SafeFile::State {
  std::string product_path;  // for messages
  std::string system_path;
  Text target;
  Text beside;     // the start of the temporary files' paths
  Text temporary;  // empty if there is nothing to remove
  std::string collected;
  ULONGLONG put = 0;  // bytes
  HANDLE file = INVALID_HANDLE_VALUE;
  bool replaced = false;
  LONG status = ERROR_SUCCESS;

  ~State() { Drop(); }

  bool IsOpen() const { return file != INVALID_HANDLE_VALUE; }
  Text Name(int number) const { return beside + L'~' + NumberOf(number) + L".tmp"; }

  bool Fail(DWORD code) {
    status = LONG(code);
    SetLastError(code);
    Drop();
    return false;
  }

  // Removes the temporary file and closes it.
  void Drop() {
    if (!temporary.empty()) DeleteFileW(temporary.c_str());
    if (IsOpen()) CloseHandle(std::exchange(file, INVALID_HANDLE_VALUE));
    temporary.clear();
    collected.clear();
  }

  // Closes the file, because the system replaces by closed files only. Another process would now take it for that of a
  // dead one, so it gets a name that is only this process's before.
  bool Close() {
    const Text own = Name(kSharedNumbers + 1);
    if (!MoveFileExW(temporary.c_str(), own.c_str(), 0)) return Fail(GetLastError());
    temporary = own;
    return CloseHandle(std::exchange(file, INVALID_HANDLE_VALUE)) || Fail(GetLastError());
  }

  // Creates a temporary file and opens it in such a way that it can be renamed while it is open.
  bool Open() {
    if (const DWORD refusal = RefusalToReplace(target)) return Fail(refusal);
    // The target's name is cut, because a name of the greatest length leaves no room for the suffix.
    beside = target.substr(0, target.rfind(L'\\') + 1 + kMostNameUnits);
    int number = 1;
    for (; number <= kTries && !IsOpen(); ++number) {
      const Text name = Name(number);
      if (number <= kSharedNumbers) RemoveIfDead(name);
      file = CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                         CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
      const DWORD code = IsOpen() ? DWORD(ERROR_SUCCESS) : GetLastError();
      if (IsOpen()) temporary = name;
      // A file that is just being removed denies access.
      if (!IsOpen() && code != ERROR_FILE_EXISTS && code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION)
        return Fail(code);
    }
    if (!IsOpen()) return Fail(ERROR_ACCESS_DENIED);
    while (number <= kSharedNumbers && RemoveIfDead(Name(number))) ++number;
    return true;
  }

  bool Put(const char* bytes, std::size_t count) {
    while (count > 0) {
      DWORD written = 0;
      const DWORD piece = count < kCollected * 16 ? DWORD(count) : DWORD(kCollected * 16);
      if (!WriteFile(file, bytes, piece, &written, nullptr)) return Fail(GetLastError());
      bytes += written;
      count -= written;
      put += written;
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
  state_->product_path = Utf8FromWide(path);
  state_->target = TargetOf(path);
  state_->system_path = Utf8FromWide(state_->target);
  if (state_->target.empty()) {
    state_->Fail(ERROR_INVALID_NAME);
  } else {
    state_->Open();
  }
}

SafeFile::~SafeFile() = default;

bool SafeFile::Write(const void* bytes, std::size_t count) {
  State& state = *state_;
  if (!state.IsOpen()) return false;
  const char* source = static_cast<const char*>(bytes);
  if (state.collected.size() + count > kCollected && !state.PutCollected()) return false;
  if (count > kCollected) return state.Put(source, count);
  state.collected.append(source, count);
  return true;
}

bool SafeFile::Commit() {
  State& state = *state_;
  if (!state.IsOpen() || !state.PutCollected()) return false;
  if (!FlushFileBuffers(state.file)) return state.Fail(GetLastError());
  if (!state.Close()) return false;
  if (const DWORD status = Replace(state.temporary, state.target)) return state.Fail(status);
  state.temporary.clear();
  state.replaced = true;
  state.Drop();
  return true;
}

bool SafeFile::IsReplaced() const { return state_->replaced; }

const std::string& SafeFile::SystemPath() const { return state_->system_path; }

LONG SafeFile::FirstError() const { return state_->status; }

std::string SafeFile::Reason() const {
  if (state_->status == ERROR_SUCCESS) return {};
  return "cannot write " + state_->product_path + ": " + ErrorText(DWORD(state_->status));
}

SafeFileProgress::SafeFileProgress(Report report) : m_outer(std::exchange(t_report, report)) {}

SafeFileProgress::~SafeFileProgress() { t_report = m_outer; }

LONG WriteFileSafely(LPCWSTR path, std::string_view bytes) {
  SafeFile file(path);
  file.Write(bytes);
  if (file.Commit()) return ERROR_SUCCESS;
  const LONG status = file.FirstError();
  SetLastError(DWORD(status));
  return status;
}
