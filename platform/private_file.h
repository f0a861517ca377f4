// PrivateFile: an open file that only its user can read, with a lock against other processes and threads. The system's
// part of SharedLines. Not public.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/types.h"

// Calls return ERROR_SUCCESS or the status of the failure. Paths are product paths. One thread at a time may use an
// object.
class PrivateFile {
 public:
  PrivateFile() = default;
  ~PrivateFile() { Close(); }
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  // Opens a file for reading and writing. With create, a missing file is created, and so are its folders. Fails for
  // links, folders, devices and pipes. The object must not be open.
  LONG Open(const Text& path, bool create);
  // Waits at most so long until no other object has the lock of this file: ERROR_BUSY. A process that ends releases it.
  LONG Lock(int most_ms);
  LONG GetSize(ULONGLONG& bytes) const;
  // Fills the text; shortens it at the end of the file.
  LONG Read(ULONGLONG from, std::string& text) const;
  LONG Write(ULONGLONG at, std::string_view text);
  LONG SetSize(ULONGLONG bytes);
  // Releases the lock and closes the file.
  void Close();

  // No object may have the file open. Rename replaces `to`.
  static LONG Rename(const Text& from, const Text& to);
  static LONG Remove(const Text& path);

 private:
  static constexpr std::intptr_t kNone = -1;
  std::intptr_t file_ = kNone;  // the system's handle
  bool locked_ = false;
};
