// CSVReader reads single cells of a file of comma-separated values by row letter and column number:
// GetStringFromCell('B', 3) is the third field of the second line.
//
// The text is UTF-8, with or without a mark; CR LF and LF end a line. A cell is the text between two commas, with
// blanks and quotes; it may be empty. Each call reads the file again from its start to the end of the row, so it sees
// changes by others. A file that cannot be read, a missing row or column, and a cell of more than 1 MiB give an empty
// text or 0. The rest of a line after a NUL is lost. Only missing memory throws, and any thread may call.
//
// Row 'A' or 'a' is the first line, and so on; the characters after 'Z' continue: '[' is line 27. Column 1 is the
// first.
#pragma once

#include <string>
#include <vector>

#include "companions/geometry/transforms.h"
#include "framework/text.h"

class KVSHARE_API CSVReader {
 public:
  // Takes a product path (platform/paths.h); the first read opens the file.
  explicit CSVReader(const CString& fileName) : m_FileName(fileName) {}

  CString GetStringFromCell(char row, int column) const;
  // The number at the beginning of the text (platform/numbers.h), 0 without one.
  double GetDoubleFromCell(char row, int column) const;
  int GetIntFromCell(char row, int column) const;

  // The numbers of the column and the two columns after it. A direction of length 0 is (0, 0, 0).
  FRPosition GetPositionFromCell(char row, int column) const;
  FRVector GetVectorFromCell(char row, int column) const;
  FRUnitVector GetUnitVectorFromCell(char row, int column) const;

  // The cell is the top left corner of a block of four rows of three numbers: three rows of the affine part, then the
  // translation. Scaling and flags are those of a default transform.
  FRTransf GetTransformFromCell(char row, int column) const;

 private:
  // count cells of a row from a column on, as bytes.
  std::vector<std::string> GetCells(char row, LONGLONG column, int count) const;

  CString m_FileName;
};
