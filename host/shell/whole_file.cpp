#include "host/shell/whole_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

#include "framework/text.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace kestrova {

namespace {

// Reads up to one byte more than mostBytes. False if reading fails.
bool ReadAll(std::FILE* stream, std::size_t mostBytes, std::string& bytes) {
  std::vector<char> piece(1 << 16);
  std::size_t count = 0;
  while (bytes.size() <= mostBytes && (count = std::fread(piece.data(), 1, piece.size(), stream)) > 0)
    bytes.append(piece.data(), count);
  return std::ferror(stream) == 0;
}

// Why _wfopen has failed to open a file for reading.
std::string OpenFailure(LPCTSTR path) {
  const int code = errno;
  const DWORD attributes = GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return ErrorText(GetLastError());
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return "it is a folder";
  return code == EACCES ? ErrorText(ERROR_ACCESS_DENIED) : std::generic_category().message(code);
}

}  // namespace

std::string ReadWholeFile(const std::string& file, std::size_t mostBytes) {
  std::string bytes;
  if (file == kStandardStream) {
    if (!ReadAll(stdin, mostBytes, bytes)) throw Failure("cannot read the standard input");
    return bytes;
  }
  const CString path(ProductPathFromSystem(file).c_str());
  std::FILE* const stream = _wfopen(path, _T("rb"));
  if (!stream) throw Failure(fmt::format("cannot read {}: {}", file, OpenFailure(path)), {.file = file});
  const bool read = ReadAll(stream, mostBytes, bytes);
  std::fclose(stream);
  if (!read) throw Failure(fmt::format("cannot read {}; check that it is a file", file), {.file = file});
  return bytes;
}

void WriteWholeFile(const std::string& file, std::string_view bytes) {
  if (file == kStandardStream) return PrintRaw(bytes);
  SafeFile out(ProductPathFromSystem(file).c_str());
  out.Write(bytes);
  if (!out.Commit()) ThrowNotWritten(file, out.FirstError(), out.IsReplaced());
}

void ThrowNotWritten(const std::string& file, LONG status, bool replaced) {
  throw Failure(
      replaced ? WrittenButNotFlushed(file) : fmt::format("cannot write {}: {}", file, ErrorText(DWORD(status))),
      {.file = file});
}

std::string WrittenButNotFlushed(const std::string& file) {
  return file + " is written, but the disk has failed: after a power failure it may be the old file again";
}

void CheckTarget(const std::string& file, bool force) {
  if (!force && file != kStandardStream && _waccess(ProductPathFromSystem(file).c_str(), 0) == 0)
    throw Failure(file + " exists; add --force to replace it", {.file = file});
}

}  // namespace kestrova
