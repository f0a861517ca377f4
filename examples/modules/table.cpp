// A table: rows, sorting, and an arrangement of its columns that is kept.
#include <kvshare/kvshare.h>

#include <cstdio>

// begin fill
void Fill(CGXGridCore& grid) {
  constexpr LPCTSTR kCells[][3] = {
      {_T("Tool"), _T("Diameter"), _T("Note")},  // row 0 has the headers
      {_T("End mill"), _T("6"), _T("carbide")},
      {_T("Drill"), _T("8.5"), _T("")},
      {_T("Face mill"), _T("50"), _T("inserts")},
  };
  grid.InsertColumns(1, 3);
  grid.InsertRows(1, 3);
  for (LONG row = 0; row <= 3; ++row)
    for (LONG column = 1; column <= 3; ++column) grid.SetCellText(row, column, kCells[row][column - 1]);
}
// end fill

void Print(const char* title, const CGXGridCore& grid) {
  std::printf("%s\n", title);
  for (LONG row = 0; row <= grid.GetRowCount(); ++row) {
    const char* between = "  ";
    for (LONG column = 1; column <= grid.GetColumnCount(); ++column) {
      if (grid.IsColumnHidden(column)) continue;
      std::printf("%s%s", between, ToUtf8(grid.GetCellText(row, column)).c_str());
      between = ", ";
    }
    std::printf("\n");
  }
}

// begin main
constexpr LPCTSTR kKey = _T("Software\\Zemlor\\Kestrova\\Samples\\Tools");

int main() {
  InitShareDll();
  {
    CGXGridCore grid;
    Fill(grid);
    QFGridColumnSorter sorter;
    sorter.Init(&grid, HKEY_CURRENT_USER, kKey);
    sorter.Load();  // nothing is stored at the first time
    grid.SortByHeader(2);
    sorter.OnLButtonDblClkRowCol(0, 2, 0, {});  // as after a double click of the user
    grid.MoveColumn(2, 1);
    grid.HideColumn(3, true);
    sorter.Save(/*alreadyUpdated=*/0);
    Print("arranged", grid);
  }
  CGXGridCore grid;
  Fill(grid);
  QFGridColumnSorter sorter;
  sorter.Init(&grid, HKEY_CURRENT_USER, kKey);
  sorter.Load();
  Print("the next time", grid);
  if (const GridResult result = grid.SortByHeader(9); result != GridResult::kDone)
    std::printf("column 9: %s\n", GridReason(result));
}
// end main
