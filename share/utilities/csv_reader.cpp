// Cells of a file of comma-separated values. Only the requested cells are kept in memory.
#include "share/utilities/csv_reader.h"

#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/files.h"
#include "platform/numbers.h"

namespace {

constexpr std::size_t kPiece = 64 * 1024;
constexpr std::size_t kMostCellBytes = 1024 * 1024;
constexpr std::string_view kMark = "\xEF\xBB\xBF";

// The line number of a row's letter, from 1; less than 1 for a character that is no row.
int LineOf(char row) {
  const char upper = row >= 'a' && row <= 'z' ? char(row - 'a' + 'A') : row;
  return static_cast<signed char>(upper) - 64;
}

// Splits one line into cells; the line comes in pieces.
class LineSplitter {
 public:
  LineSplitter(LONGLONG first_column, int count) : first_(first_column), cells_(std::size_t(count)) {}

  // True if the rest of the line is not needed.
  bool IsDone() const { return hidden_ || column_ - first_ >= LONGLONG(cells_.size()); }

  void Append(std::string_view bytes) {
    for (const char c : bytes) {
      if (c == '\0') hidden_ = true;
      if (IsDone()) return;
      if (c == ',') {
        ++column_;
      } else if (column_ >= first_) {
        AppendToCell(c);
      }
    }
  }

  // Call it at the LF.
  void EndLine() {
    if (IsDone() || column_ < first_) return;
    std::string& last = cells_[std::size_t(column_ - first_)];
    if (last.ends_with('\r')) last.pop_back();
  }

  std::vector<std::string> Cells() {
    for (std::string& cell : cells_) {
      if (cell.size() > kMostCellBytes) cell.clear();
    }
    return std::move(cells_);
  }

 private:
  void AppendToCell(char c) {
    std::string& cell = cells_[std::size_t(column_ - first_)];
    if (cell.size() <= kMostCellBytes) cell += c;
  }

  const LONGLONG first_;
  std::vector<std::string> cells_;
  LONGLONG column_ = 1;
  bool hidden_ = false;  // after a NUL
};

}  // namespace

std::vector<std::string> CSVReader::GetCells(char row, LONGLONG column, int count) const {
  LineSplitter splitter(column, count);
  const std::unique_ptr<FILE, int (*)(FILE*)> file(_wfopen(m_FileName, _T("rb")), std::fclose);
  const int wanted = LineOf(row);
  if (!file || wanted < 1) return splitter.Cells();
  const auto piece = std::make_unique<char[]>(kPiece);
  int line = 1;
  for (bool first = true; const std::size_t got = std::fread(piece.get(), 1, kPiece, file.get()); first = false) {
    std::string_view rest(piece.get(), got);
    if (first && rest.starts_with(kMark)) rest.remove_prefix(kMark.size());
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      const bool line_ends = end < rest.size();
      if (line == wanted) {
        splitter.Append(rest.substr(0, end));
        if (line_ends) splitter.EndLine();
        if (line_ends || splitter.IsDone()) return splitter.Cells();
      }
      if (!line_ends) break;
      ++line;
      rest.remove_prefix(end + 1);
    }
  }
  return splitter.Cells();
}

CString CSVReader::GetStringFromCell(char row, int column) const { return FromUtf8(GetCells(row, column, 1)[0]); }

double CSVReader::GetDoubleFromCell(char row, int column) const { return NumberFromUtf8(GetCells(row, column, 1)[0]); }

int CSVReader::GetIntFromCell(char row, int column) const { return IntegerFromUtf8(GetCells(row, column, 1)[0]); }

FRVector CSVReader::GetVectorFromCell(char row, int column) const {
  const std::vector<std::string> cells = GetCells(row, column, 3);
  return {NumberFromUtf8(cells[0]), NumberFromUtf8(cells[1]), NumberFromUtf8(cells[2])};
}

FRPosition CSVReader::GetPositionFromCell(char row, int column) const {
  const FRVector vector = GetVectorFromCell(row, column);
  return {vector.x(), vector.y(), vector.z()};
}

FRUnitVector CSVReader::GetUnitVectorFromCell(char row, int column) const {
  const FRVector vector = GetVectorFromCell(row, column);
  return {vector.x(), vector.y(), vector.z()};
}

FRTransf CSVReader::GetTransformFromCell(char row, int column) const {
  FRTransf transform;
  transform.set_affine_part({GetVectorFromCell(row, column), GetVectorFromCell(char(row + 1), column),
                             GetVectorFromCell(char(row + 2), column)});
  transform.set_translation_part(GetVectorFromCell(char(row + 3), column));
  return transform;
}
