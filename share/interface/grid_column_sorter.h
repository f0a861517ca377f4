// QFGridColumnSorter: keeps how the user has arranged the columns of a table - their order and widths, which are
// hidden, the sorting - in a registry key, and offers the column menu.
//
// Columns are identified by their header text, with case; columns with the same text share one entry. The grid sorts
// its rows itself.
//
//   sorter.Init(&grid, HKEY_CURRENT_USER, kGridKey);
//   ... fill the grid ...
//   sorter.Load();
//   ... the user moves, hides, resizes, sorts; call StoreMoveCols after each column that was moved ...
//   sorter.Save(/*alreadyUpdated=*/0);
//
// The key has the DWORDs "SortOrder" and "SortedColumn", and a binary value for each header text: QFGridColumnInfo as
// three 32-bit little-endian integers. A registry failure is not reported: the grid keeps its arrangement. A value that
// is not binary or is longer counts as missing; what a shorter one lacks has its default. A position or width that the
// grid does not have changes nothing.
//
// User-interface thread only.
#pragma once

#include <map>
#include <vector>

#include "framework/rectangle.h"
#include "framework/text.h"
#include "platform/registry.h"

class CGXGridCore;

struct QFGridColumnInfo {
  LONG m_nIndex = -1;  // position of the column, from 1
  int m_bVisible = 1;
  LONG m_nWidth = -1;  // not above 0: the grid's width stays

  void SetValues(LONG index, int visible, LONG width) { *this = {index, visible, width}; }
  bool operator==(const QFGridColumnInfo&) const = default;
};

class KVSHARE_API QFGridColumnSorter {
 public:
  // The caller keeps the grid and the root key, which are used until the next Init.
  void Init(CGXGridCore* grid, HKEY root, const CString& key);
  void SetRegKey(const CString& key) { m_RegKey = key; }
  const CString& GetRegKey() const { return m_RegKey; }

  // Arranges the columns and sorts the rows by what is stored. The first call reads the registry; later calls repeat
  // what is known. A column whose stored place is above the number of columns stays where it is. The columns are placed
  // from left to right, so that the stored order comes back exactly. If the grid does not allow moving, only widths and
  // hidden columns are restored, by their places.
  void Load();
  // Stores the arrangement. With 0 it is taken from the grid first.
  void Save(int alreadyUpdated);

  // The column menu of a click with the right button: hides columns, shows hidden ones, and saves. keepColumn is not
  // offered and stays hidden. Returns 1; 0 if no menu can be shown. The texts are in the language library.
  int OnRButtonClickedRowCol(LONG row, LONG col, UINT flags, CPoint point, const CString& keepColumn);
  // After a double click on a header has sorted the grid: takes the sorting from the grid. Returns 1.
  int OnLButtonDblClkRowCol(LONG row, LONG col, UINT flags, CPoint point);
  // After a column was moved: takes the arrangement from the grid.
  void StoreMoveCols();

  // The column with this header text; -1 if there is none. Before Load there is none.
  LONG GetColumnIndex(const CString& name) const;

  // The number that the cell's text begins with; 0 if there is none. The last one keeps the low 32 bits.
  void GetValueForRow(LONG row, const CString& column, double& value) const;
  void GetValueForRow(LONG row, const CString& column, LONG& value) const;
  void GetValueForRow(LONG row, const CString& column, DWORD& value) const;
  // 1 to 5 for the language's names of the kinds of barrel tools; unchanged for another text.
  void GetValueForRowBarrelToolType(LONG row, const CString& column, LONG& value) const;

  // Columns that the menu neither offers nor shows: one with this name, compared exactly, and those of a list, compared
  // without case. An empty name is none.
  void SetColNameToDisablePermanentlyInMillMachine(const CString& name) { m_MillHiddenColumn = name; }
  const CString& GetColNameToDisablePermanentlyInMillMachine() const { return m_MillHiddenColumn; }
  void AddPermanentlyHiddenColumn(const CString& name) { m_PermanentlyHidden.push_back(name); }

  const std::map<CString, QFGridColumnInfo>& GetColumns() const { return m_Columns; }
  int GetSortOrder() const { return m_nSortOrder; }
  int GetSortedColumn() const { return m_nSortedColumn; }

 private:
  void FillColumnInfo(HKEY key);
  void Arrange();
  void Sort();
  void UpdateIndices();
  void UpdateSortInfo();
  LONG LastColumn() const;
  CString NameOf(LONG column) const;
  CString CellOf(LONG row, const CString& column) const;
  bool IsPermanentlyHidden(const CString& name) const;
  bool StaysHidden(const CString& name) const {
    return !name.IsEmpty() && (name == m_MillHiddenColumn || IsPermanentlyHidden(name));
  }
  std::vector<LONG> HiddenColumns() const;
  void HideSelectedColumns(LONG clicked);
  void ShowAllColumns(const CString& keepColumn);

  CGXGridCore* m_pGrid = nullptr;
  int m_nSortOrder = -1;
  int m_nSortedColumn = -1;
  CString m_RegKey;
  HKEY m_RootKey = nullptr;
  std::map<CString, QFGridColumnInfo> m_Columns;
  LONG m_nColumnCount = 0;
  int m_bArranging = 0;
  CString m_MillHiddenColumn;
  std::vector<CString> m_PermanentlyHidden;
};
