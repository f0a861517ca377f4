// SafeFile collects small pieces for a TemporaryFile, keeps the first failure and reports progress.
#include "platform/safe_file.h"

#include <utility>

#include "platform/errors.h"
#include "platform/paths.h"
#include "platform/temporary_file.h"

namespace {

constexpr std::size_t kCollected = 64 * 1024;

thread_local constinit SafeFileProgress::Report t_report = nullptr;

}  // namespace

struct SafeFile::State {
  std::string shown;  // the path for messages
  std::string collected;
  TemporaryFile file;
  ULONGLONG put = 0;  // bytes
  LONG status = ERROR_SUCCESS;

  // Returns whether the status is a success. Keeps a failure and drops the file.
  bool Check(LONG result) {
    if (result == ERROR_SUCCESS) return true;
    file.Drop();
    collected.clear();
    status = result;
    SetLastError(DWORD(result));
    return false;
  }

  bool Put(const char* bytes, std::size_t count) {
    while (count > 0) {
      std::size_t written = 0;
      if (!Check(file.Write(bytes, count, written))) return false;
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
  const bool given = path && *path;
  if (given) state_->shown = SystemPathFromProduct(path);
  state_->Check(given ? state_->file.Open(path) : LONG(ERROR_PATH_NOT_FOUND));
}

SafeFile::~SafeFile() = default;

bool SafeFile::Write(const void* bytes, std::size_t count) {
  State& state = *state_;
  if (!state.file.IsOpen()) return false;
  const char* source = static_cast<const char*>(bytes);
  if (state.collected.size() + count > kCollected && !state.PutCollected()) return false;
  if (count > kCollected) return state.Put(source, count);
  state.collected.append(source, count);
  return true;
}

bool SafeFile::Commit() {
  State& state = *state_;
  return state.file.IsOpen() && state.PutCollected() && state.Check(state.file.Replace());
}

bool SafeFile::IsReplaced() const { return state_->file.IsReplaced(); }

const std::string& SafeFile::SystemPath() const { return state_->file.Target(); }

LONG SafeFile::FirstError() const { return state_->status; }

std::string SafeFile::Reason() const {
  if (state_->status == ERROR_SUCCESS) return {};
  const std::string text = ErrorText(DWORD(state_->status));
  if (!IsReplaced()) return "cannot write " + state_->shown + ": " + text;
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
