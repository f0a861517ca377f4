// AppendFile: a log file that threads and processes append to at the same time. The bytes of one call of Write stay
// together. Nothing waits for the disk; use SafeFile (platform/safe_file.h) for a file that matters.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/types.h"

// One thread at a time may use an object. Failures return false and set GetLastError.
class KVSHARE_API AppendFile {
 public:
  AppendFile() = default;
  ~AppendFile() { Close(); }
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;

  // Opens a file by its product path (platform/paths.h) and creates it if it is missing, but no folder. Fails for
  // anything but a file, and for a read-only file. Closes the former file.
  bool Open(LPCWSTR path);
  bool IsOpen() const { return file_ != kNone; }
  // Appends the bytes. Also false if the disk took only a part of them, or if no file is open.
  bool Write(std::string_view bytes);
  void Close();

 private:
  static constexpr std::intptr_t kNone = -1;
  std::intptr_t file_ = kNone;  // the system's handle
};
