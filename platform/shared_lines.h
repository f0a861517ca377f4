// SharedLines: a text file of limited size in a folder of the user, to which threads and processes append lines.
//
// One writer at a time has the lock, a file beside it. A line is there completely or not at all, also if a writer is
// killed or the disk is full. When the file is full, it becomes the older file, in place of the one before. A line that
// was appended outlives its process, but maybe not a power failure. The calls use no memory of the process but the
// heap, so a child process that was forked may call them.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

// Calls return ERROR_SUCCESS or the status of the failure, ERROR_BUSY if another process had the lock for two seconds.
// Any thread may call.
class KVSHARE_API SharedLines {
 public:
  // The files are `name`.jsonl, `name`.old.jsonl and `name`.lock in the folder, a product path with a backslash at its
  // end. None of them, nor the folder, has to exist. Each has at most `mostBytes`. Without a folder Append fails.
  SharedLines(const Text& folder, TextView name, ULONGLONG mostBytes);

  // Appends text, which has no line end, and a line end. ERROR_FILE_TOO_LARGE if that is more than mostBytes.
  LONG Append(std::string_view text) const;
  // Reads the lines of the older file and of the file. Missing files are empty.
  LONG Read(std::string& lines) const;
  // Removes both files. Missing files are no failure.
  LONG Remove() const;

  // The file that Append writes, as a product path.
  const Text& File() const { return file_; }

 private:
  Text file_, older_, lock_;
  ULONGLONG most_;
};
