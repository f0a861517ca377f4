// Reads any bytes as a plain text file, twice. The lines must equal those of a simple reader that has the whole text in
// memory.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/temporary_file.h"
#include "share/utilities/ascii_file_browse.h"

namespace {

// The text without a mark, and with its CR LF line ends changed to LF.
std::string Translated(std::string_view bytes) {
  std::string text;
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes.substr(i, 2) != "\r\n") text += bytes[i];
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  QFAsciFileBrowse file;
  file.SetFilePath(CString(WriteTemporaryFile(bytes, size)));
  if (file.GetFileSize() != size) std::abort();
  const std::string text = Translated({reinterpret_cast<const char*>(bytes), size});
  CString line;
  int read = file.GetFirstLine(line);
  for (int round = 0; round < 2; ++round) {
    for (std::string_view rest = text; !rest.empty(); read = file.GetNextLine(line)) {
      const std::size_t line_end = std::min(rest.find('\n'), rest.size() - 1) + 1;
      const std::string_view piece = rest.substr(0, std::min<std::size_t>(line_end, 254));
      if (!read || line != FromUtf8(piece.substr(0, piece.find_first_of(std::string_view("\t\n\0", 3))))) std::abort();
      rest.remove_prefix(piece.size());
    }
    if (read || !file.IsEndOfFile()) std::abort();
    read = file.GetFirstLine(line);
  }
  return 0;
}
