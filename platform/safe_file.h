// SafeFile, the one way to write a file that matters: beside, flushed, renamed.
//
// The bytes go to a temporary file in the target's folder. Commit brings them to the disk and then gives the file its
// name in one step, so that at every moment, also after a crash or a power cut, the name stands for the whole old file
// or the whole new one. A new file over an old one keeps its rights, and a link to a file stays a link. A read-only
// target is refused, and so is a folder, a device or a pipe. A process that is killed on the way can leave a file named
// like the target, a tilde, a number and ".tmp" behind it, which nobody reads. One object is used by one thread at a
// time.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/types.h"

class KVSHARE_API SafeFile {
 public:
  // Starts writing a file by its product path (platform/paths.h). A failure shows in Status and in every later call.
  explicit SafeFile(LPCWSTR path);
  // Without Commit before: removes what was written and leaves the target as it was.
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Appends bytes. False if this or an earlier call failed; small pieces are collected, so a full disk may show later.
  bool Write(const void* bytes, std::size_t count);
  bool Write(std::string_view bytes) { return Write(bytes.data(), bytes.size()); }

  // Ends the writing and puts the file in its place. False, with the target untouched and nothing left beside it, if
  // this or an earlier call failed; if only bringing the new name to the disk failed, false comes with the file in
  // place. Afterwards Write and Commit give false.
  bool Commit();

  // The file that is to be written, in the system's form (platform/paths.h) and behind any link; for the platform's own
  // sources.
  const std::string& SystemPath() const;
  // ERROR_SUCCESS, or the status of the first failure.
  LONG Status() const;
  // The first failure as one line in UTF-8, "cannot write PATH: the disk is full"; empty if there was none.
  std::string Reason() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Hears how far the SafeFiles of its thread have got, from its making to its end: of a long save, which may lie below
// calls that tell nothing (a compound file's Commit). The innermost one is told.
class KVSHARE_API SafeFileProgress {
 public:
  // bytes: how many the file that is being written has so far. Told now and then; must not raise.
  using Tell = void (*)(ULONGLONG bytes);

  explicit SafeFileProgress(Tell tell);
  ~SafeFileProgress();
  SafeFileProgress(const SafeFileProgress&) = delete;
  SafeFileProgress& operator=(const SafeFileProgress&) = delete;

 private:
  Tell m_outer;
};

// The whole of a small file at once; gives the status, ERROR_SUCCESS if the file stands.
KVSHARE_API LONG WriteFileSafely(LPCWSTR path, std::string_view bytes);
