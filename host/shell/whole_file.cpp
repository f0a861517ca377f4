#include "host/shell/whole_file.h"

#include <fmt/format.h>

#include <cstdio>
#include <vector>

#include "host/shell/failure.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace kestrova {

std::string ReadWholeFile(const std::string& file, std::size_t mostBytes) {
  std::FILE* const stream = _wfopen(ProductPathFromSystem(file).c_str(), _T("rb"));
  if (!stream) throw Failure(fmt::format("cannot read {}; check the name", file), {.file = file});
  std::string bytes;
  std::vector<char> piece(1 << 16);
  std::size_t count = 0;
  while (bytes.size() <= mostBytes && (count = std::fread(piece.data(), 1, piece.size(), stream)) > 0)
    bytes.append(piece.data(), count);
  const bool failed = std::ferror(stream) != 0;
  std::fclose(stream);
  if (failed) throw Failure(fmt::format("cannot read {}; check that it is a file", file), {.file = file});
  return bytes;
}

void WriteWholeFile(const std::string& file, std::string_view bytes) {
  if (const LONG status = WriteFileSafely(ProductPathFromSystem(file).c_str(), bytes))
    throw Failure(fmt::format("cannot write {}: {}", file, ErrorText(DWORD(status))), {.file = file});
}

void CheckTarget(const std::string& file, bool force) {
  if (!force && _waccess(ProductPathFromSystem(file).c_str(), 0) == 0)
    throw Failure(file + " exists; add --force to replace it", {.file = file});
}

}  // namespace kestrova
