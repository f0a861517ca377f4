#include "host/shell/whole_file.h"

#include <fmt/format.h>

#include <cstdio>
#include <vector>

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

}  // namespace

std::string ReadWholeFile(const std::string& file, std::size_t mostBytes) {
  std::string bytes;
  if (file == kStandardStream) {
    if (!ReadAll(stdin, mostBytes, bytes)) throw Failure("cannot read the standard input");
    return bytes;
  }
  std::FILE* const stream = _wfopen(ProductPathFromSystem(file).c_str(), _T("rb"));
  if (!stream) throw Failure(fmt::format("cannot read {}; check the name", file), {.file = file});
  const bool read = ReadAll(stream, mostBytes, bytes);
  std::fclose(stream);
  if (!read) throw Failure(fmt::format("cannot read {}; check that it is a file", file), {.file = file});
  return bytes;
}

void WriteWholeFile(const std::string& file, std::string_view bytes) {
  if (file == kStandardStream) return PrintRaw(bytes);
  SafeFile out(ProductPathFromSystem(file).c_str());
  out.Write(bytes);
  if (out.Commit()) return;
  const char* const reason = ErrorText(DWORD(out.FirstError()));
  if (!out.IsReplaced()) throw Failure(fmt::format("cannot write {}: {}", file, reason), {.file = file});
  throw Failure(fmt::format("{} is written, but may be the old file again after a power failure: {}", file, reason),
                {.file = file});
}

void CheckTarget(const std::string& file, bool force) {
  if (!force && file != kStandardStream && _waccess(ProductPathFromSystem(file).c_str(), 0) == 0)
    throw Failure(file + " exists; add --force to replace it", {.file = file});
}

}  // namespace kestrova
