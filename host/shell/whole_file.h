// Files that a command reads or writes as a whole, by the system's path.
#pragma once

#include <string>
#include <string_view>

namespace kestrova {

// The file's bytes, of a longer file the first mostBytes + 1, which is enough to refuse it. Throws Failure if it can't
// be read.
std::string ReadWholeFile(const std::string& file, std::size_t mostBytes);

// Writes beside and renames. Throws Failure, with an old file as it was, if that fails.
void WriteWholeFile(const std::string& file, std::string_view bytes);

// Throws Failure if the file exists, unless force says that it may be replaced.
void CheckTarget(const std::string& file, bool force);

}  // namespace kestrova
