// TemporaryFile, the system's part of SafeFile: a new file beside a target that it replaces in one step. Not public.
//
// The temporary files of a target have the numbers 1, 2 and so on in their names; beyond kSharedNumbers a number is
// made of the process and a serial. A process that writes a file keeps it from others until the file has its final
// name. So the next writer of the target finds the files of processes that have died, and removes them.
#pragma once

#include <memory>
#include <string>

#include "platform/types.h"

// Calls return ERROR_SUCCESS or the status of the failure. After a failure only Drop may follow.
class TemporaryFile {
 public:
  static constexpr int kTries = 100;
  static constexpr int kSharedNumbers = 16;  // more than one file has writers at a time
  static constexpr std::size_t kMostOfName =
      200;  // of the target's name in the temporary file's, which must not be too long

  TemporaryFile();
  // Drops the file.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // Creates the file; it gets the permissions of the target. The path is a product path that is not empty.
  LONG Open(LPCWSTR path);
  bool IsOpen() const;
  // Writes at least one byte and sets written to the number of bytes.
  LONG Write(const char* bytes, std::size_t count, std::size_t& written);
  // Writes the file to the disk and makes it the target. It may fail with the target replaced.
  LONG Replace();
  bool IsReplaced() const;
  // Closes and removes the file, unless it has become the target.
  void Drop();

  // The target's system path.
  const std::string& Target() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};
