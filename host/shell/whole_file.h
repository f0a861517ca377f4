// Files that a command reads or writes as a whole. A path is the system's; "-" is the standard input or output.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace kestrova {

inline constexpr char kStandardStream[] = "-";

// The file's bytes; of a longer file the first mostBytes + 1, so that the caller can refuse it. Throws Failure if the
// file cannot be read.
std::string ReadWholeFile(const std::string& file, std::size_t mostBytes);

// Writes a temporary file beside the target and renames it. On an error calls ThrowNotWritten.
void WriteWholeFile(const std::string& file, std::string_view bytes);
// Throws Failure for a SafeFile that could not be written. If it is not `replaced`, an old file stays as it was.
[[noreturn]] void ThrowNotWritten(const std::string& file, LONG status, bool replaced);

// What a command says of a file that has the new content although writing failed (platform/safe_file.h).
std::string WrittenButNotFlushed(const std::string& file);

// Throws Failure if the file exists and `force` is false.
void CheckTarget(const std::string& file, bool force);

}  // namespace kestrova
