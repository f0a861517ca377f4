// Reads any bytes as a file of comma-separated values. The first two bytes choose row and column. The cell must equal
// the result of a simple reader that has the whole text in memory.
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/temporary_file.h"
#include "platform/numbers.h"
#include "share/utilities/csv_reader.h"

namespace {

std::string_view Part(std::string_view text, char separator, int number, bool& ended) {
  ended = true;
  while (--number > 0 && ended) {
    const std::size_t end = text.find(separator);
    ended = end != text.npos;
    text = ended ? text.substr(end + 1) : "";
  }
  const std::size_t end = text.find(separator);
  ended = end != text.npos;
  return text.substr(0, end);
}

std::string_view Cell(std::string_view text, char row, int column) {
  bool ended = false;
  const int line = (row >= 'a' && row <= 'z' ? row - 32 : row) - 64;
  if (line < 1 || column < 1) return {};
  std::string_view whole = Part(text, '\n', line, ended);
  if (ended && whole.ends_with('\r')) whole.remove_suffix(1);
  return Part(whole.substr(0, whole.find('\0')), ',', column, ended);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2) return 0;
  const char row = char(bytes[0]);
  const int column = static_cast<signed char>(bytes[1]);
  std::string_view text(reinterpret_cast<const char*>(bytes) + 2, size - 2);
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const CSVReader reader{CString(WriteTemporaryFile(bytes + 2, size - 2))};
  const std::string_view cell = Cell(text, row, column);
  if (reader.GetStringFromCell(row, column) != FromUtf8(cell)) std::abort();
  if (reader.GetIntFromCell(row, column) != IntegerFromUtf8(cell)) std::abort();
  if (column == 127) return 0;
  const FRTransf transform = reader.GetTransformFromCell(row, column);
  const double z = NumberFromUtf8(Cell(text, char(row + 3), column + 2));
  if (transform.translation().z() != z && z == z) std::abort();
  return 0;
}
