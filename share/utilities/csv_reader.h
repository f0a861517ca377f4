// CSVReader gives single cells of a file of comma-separated values, addressed by a letter for the row and a number for
// the column: GetStringFromCell('B', 3) is the third field of the second line.
//
// The text is UTF-8; CR LF and LF end a line. A cell is what stands between two commas, blanks and quotes included; it
// may be empty. Each call reads the file anew from its start, so that it sees what others wrote meanwhile, and takes
// time in proportion to what stands ahead of the end of the row. A file that can't be read and a row or column that is
// not there give an empty text, and 0. So does a cell of more than a megabyte. What follows a NUL in a line is not
// seen. Nothing throws, and any thread may call.
//
// Rows are 'A' or 'a' for the first line and so on, and the characters behind 'Z' go on: '[' is line 27.
#pragma once

#include <string>
#include <vector>

#include "companions/geometry/transforms.h"
#include "framework/text.h"

class KVSHARE_API CSVReader {
 public:
  // By a product path (platform/paths.h), which is not looked at before the first call.
  explicit CSVReader(const CString& fileName) : m_FileName(fileName) {}

  CString GetStringFromCell(char row, int column) const;
  // The number that the text begins with (platform/numbers.h), 0 for none.
  double GetDoubleFromCell(char row, int column) const;
  int GetIntFromCell(char row, int column) const;

  // The numbers of column and the two behind it. A direction that is none is (0, 0, 0).
  FRPosition GetPositionFromCell(char row, int column) const;
  FRVector GetVectorFromCell(char row, int column) const;
  FRUnitVector GetUnitVectorFromCell(char row, int column) const;

  // The cell is the top left corner of a block of four rows of three numbers: the rows of the affine part and, as the
  // fourth, the translation. Scaling and flags are those of a default transform.
  FRTransf GetTransformFromCell(char row, int column) const;

 private:
  // The cells of a row from a column on, as bytes.
  std::vector<std::string> GetCells(char row, LONGLONG column, int count) const;

  CString m_FileName;
};
