// SafeFile: writes a file completely or not at all. Use it for every file that matters.
//
// The bytes go to a temporary file in the target's folder. Commit writes it to the disk and renames it to the target in
// one step, so that at every moment, also after a crash or power failure, the target is the complete old or the
// complete new file. A new file keeps the old file's permissions, and a link stays a link. A read-only target is
// refused, and so are folders, devices and pipes. The temporary file is named like the target plus a tilde, a number
// and ".tmp"; the next SafeFile for the target removes those of processes that have died. One thread at a time may use
// an object.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/types.h"

class KVSHARE_API SafeFile {
 public:
  // Starts writing a file; the path is a product path (platform/paths.h). Status and every later call report a failure.
  explicit SafeFile(LPCWSTR path);
  // Without Commit: removes the temporary file and leaves the target unchanged.
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Appends bytes. Returns false if this or an earlier call failed. Small pieces are buffered, so a full disk may be
  // reported by a later call.
  bool Write(const void* bytes, std::size_t count);
  bool Write(std::string_view bytes) { return Write(bytes.data(), bytes.size()); }

  // Finishes the file and gives it the target's name. If this or an earlier call failed, returns false, leaves the
  // target unchanged and removes the temporary file. If only writing the new name to the disk failed, returns false
  // with the new file in place: see IsReplaced. After Commit, Write and Commit return false.
  bool Commit();
  // Whether the target has the new content. If Commit has returned false, the old content may come back after a power
  // failure.
  bool IsReplaced() const;

  // The target as a system path (platform/paths.h), with links resolved. Only for the platform's own sources.
  const std::string& SystemPath() const;
  // The status of the first failure, or ERROR_SUCCESS.
  LONG FirstError() const;
  // The first failure as one line in UTF-8, "cannot write PATH: the disk is full"; for a replaced target "PATH is
  // written, but ..."; empty without a failure. PATH is the system's path.
  std::string Reason() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Reports the progress of the SafeFiles of its thread while it exists, also for files that are written inside other
// calls (a compound file's Commit). If several exist, only the innermost one is called.
class KVSHARE_API SafeFileProgress {
 public:
  // bytes: the number of bytes written to the current file so far. Called from time to time; must not raise.
  using Report = void (*)(ULONGLONG bytes);

  explicit SafeFileProgress(Report report);
  ~SafeFileProgress();
  SafeFileProgress(const SafeFileProgress&) = delete;
  SafeFileProgress& operator=(const SafeFileProgress&) = delete;

 private:
  Report m_outer;
};

// The status of WriteFileSafely for a file that has the new content, whose old content may come back after a power
// failure (SafeFile::IsReplaced). It is the platform's status for data that a delayed write has lost.
inline constexpr LONG kWrittenButNotFlushed = 596;

// Writes a small file with one call. Returns ERROR_SUCCESS or the status of the failure, which is then the last status
// too.
KVSHARE_API LONG WriteFileSafely(LPCWSTR path, std::string_view bytes);
