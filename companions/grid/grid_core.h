// CGXGridCore: the model of the product's tables, without a window. A view shows it and forwards the user's actions.
//
// Rows and columns count from 1. Row 0 has the headers of the columns, column 0 those of the rows. A call with a row or
// column outside changes nothing and returns kOutside, an empty text, or the default value. Cells, styles, hidden
// states, widths and selected columns belong to their row and column and move with them.
//
// A cell may cover its neighbours to the right and below: they are neither shown nor found, and keep their texts. A
// call that would separate the cells of such a group (moving, inserting, removing, sorting a group of several rows)
// changes nothing and returns kWouldSplitCovered. Hiding is always possible; the group is shown in what is left.
//
// Memory is about four bytes and the text for each cell that has one. Limits: 10,000,000 rows, 10,000 columns. Calls
// raise only std::bad_alloc, and std::length_error for a column of more than 2^32 characters.
//
// One thread at a time uses a grid.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "companions/grid/grid_style.h"
#include "framework/text.h"

class CPoint;

inline constexpr LONG kMostGridRows = 10'000'000;
inline constexpr LONG kMostGridColumns = 10'000;
inline constexpr LONG kGridColumnWidth = 80;  // of a new column, in pixels
inline constexpr LONG kLargestGridColumnWidth = 32'767;

enum class GridResult {
  kDone,
  kOutside,            // no such row or column; for a paste: the text does not fit into the grid
  kWouldSplitCovered,  // it would separate a cell from the cells that it covers
  kAlreadyCovered,     // a cell of the range belongs to a group
  kMovingDisabled,     // EnableMoveColumns(false)
  kReadOnly,           // the style of a cell
  kNotValid,           // the style of a cell does not allow the text
  kTooLarge,           // more rows or columns than a grid has
  kBadKey,             // a sort key with an unknown type
  kBadExpression,      // a regular expression that is not valid
};

// In words, for a message; empty for kDone.
KVSHARE_API const char* GridReason(GridResult result);

// Both corners belong to the range.
struct GridRange {
  LONG top = 0, left = 0, bottom = 0, right = 0;
  bool operator==(const GridRange&) const = default;
};

// How a column is compared. kGridSortAutomatic: numbers, as numbers, before texts, by the rules of the user's language.
// A number is a whole text that ReadGridNumber accepts. In every case empty cells come last, in both directions, and
// rows that compare equal keep their order.
inline constexpr int kGridSortText = 1;    // also numbers as texts
inline constexpr int kGridSortNumber = 2;  // texts that are no numbers are equal, after the numbers
inline constexpr int kGridSortAutomatic = 4;

struct GridSortKey {
  LONG column = 0;
  int type = kGridSortAutomatic;
  int order = 1;  // 0: descending; any other value: ascending
};

struct GridSearch {
  CString what = {};
  bool whole_cell = false;
  bool match_case = false;
  bool regular_expression = false;
  bool in_selection = false;  // in selected cells and columns only
  bool backwards = false;
};

// A cell's place; row 0 if nothing was found.
struct GridCell {
  LONG row = 0, column = 0;
  bool operator==(const GridCell&) const = default;
};

class KVSHARE_API CGXGridCore {
 public:
  CGXGridCore();
  virtual ~CGXGridCore();
  CGXGridCore(const CGXGridCore&) = delete;
  CGXGridCore& operator=(const CGXGridCore&) = delete;

  // ---- rows and columns

  LONG GetRowCount() const;
  LONG GetColumnCount() const;
  // The new ones begin at the place, which may be one after the last. They are empty and shown.
  GridResult InsertRows(LONG row, LONG count);
  GridResult InsertColumns(LONG column, LONG count);
  // Removes them with their cells. The steps that Undo knows are forgotten.
  GridResult RemoveRows(LONG row, LONG count);
  GridResult RemoveColumns(LONG column, LONG count);

  // Moves one to a place; those between move by one.
  GridResult MoveRow(LONG from, LONG to);
  GridResult MoveColumn(LONG from, LONG to);
  // Whether columns can be moved; at first they can.
  bool IsMoveColumnsEnabled() const;
  void EnableMoveColumns(bool enable);

  bool IsRowHidden(LONG row) const;
  bool IsColumnHidden(LONG column) const;
  GridResult HideRow(LONG row, bool hide);
  GridResult HideColumn(LONG column, bool hide);
  // In pixels, above 0; a larger width than kLargestGridColumnWidth becomes that. 0 for a column outside.
  LONG GetColumnWidth(LONG column) const;
  GridResult SetColumnWidth(LONG column, LONG width);

  // ---- cells

  CString GetCellText(LONG row, LONG column) const;
  // The same without a copy; valid until the next change of the grid.
  TextView GetCellView(LONG row, LONG column) const;
  // As the cell's style shows it.
  CString GetDisplayText(LONG row, LONG column) const;
  // Fills a cell, without a step for Undo and without regard to the style.
  GridResult SetCellText(LONG row, LONG column, TextView text);
  // As a user does: kReadOnly or kNotValid if the style does not allow it; a step for Undo.
  GridResult EditCell(LONG row, LONG column, const CString& text);

  // Fields that the style does not set are inherited. An empty style removes the former one.
  void SetTableStyle(const GridStyle& style);
  GridResult SetColumnStyle(LONG column, const GridStyle& style);
  GridResult SetRowStyle(LONG row, const GridStyle& style);
  GridResult SetCellStyle(LONG row, LONG column, const GridStyle& style);
  // With everything that the cell inherits.
  GridStyle GetStyle(LONG row, LONG column) const;

  // The upper left cell covers the others of the range, which is in row 0 or below it, right of column 0.
  GridResult CoverCells(const GridRange& range);
  // Ends the group that the cell belongs to; does nothing if there is none.
  GridResult UncoverCells(LONG row, LONG column);
  // The group that the cell belongs to; the cell alone if there is none.
  GridRange GetCoveredRange(LONG row, LONG column) const;

  // ---- selection

  GridResult SelectColumn(LONG column, bool select);
  // In their order; column 0 may be among them.
  std::vector<LONG> GetSelectedColumns() const;
  // One range of cells, which stays at its place; sorting, inserting and removing clear it.
  GridResult SelectCells(const GridRange& range);
  // Zeros if no cells are selected.
  GridRange GetSelectedCells() const;
  void ClearSelection();

  // ---- sorting

  // Sorts all rows, by the first key and, where that is equal, by the next. The first key's column and direction are
  // then those of GetSortedColumn and GetSortDirection.
  GridResult SortRows(std::span<const GridSortKey> keys);
  // As a double click on the header: ascending, or descending if the grid is sorted by this column ascending.
  GridResult SortByHeader(LONG column);
  // -1 if the rows were never sorted, or the column is removed.
  LONG GetSortedColumn() const;
  // Of the last sort: 0 ascending, 1 descending. This is not the numbering of GridSortKey::order.
  int GetSortDirection() const;

  // ---- find and replace, in shown cells, row by row

  // The next cell after `after` (before it if backwards), around the end. An empty search finds nothing.
  GridResult Find(const GridSearch& search, GridCell after, GridCell& found) const;
  // All such cells, from the first to the last.
  GridResult FindAll(const GridSearch& search, std::vector<GridCell>& found) const;
  // Replaces in each cell that Find would find, as EditCell and one step for Undo. In a regular expression's
  // replacement $1 to $9 are the groups. Cells that may not be edited so are left alone. `changed` is the number of
  // changed cells.
  GridResult ReplaceAll(const GridSearch& search, const CString& by, LONG& changed);

  // ---- copy and paste

  // The shown cells of the range, as they are stored: TAB between cells, CR LF after each row, and quotes around a cell
  // with a TAB, a line end or a quote.
  CString CopyText(const GridRange& range) const;
  // The shown cells as a table of HTML, as they are displayed, with their groups.
  CString CopyHtml(const GridRange& range) const;
  // The reverse of CopyText, into the shown cells from this one on; one step for Undo. Nothing changes if a cell can't
  // be edited so.
  GridResult PasteText(LONG row, LONG column, const CString& text);

  // ---- undo of edits, replacements and pastes: the last 1,000 steps

  bool CanUndo() const;
  bool CanRedo() const;
  // Return false if there is no such step.
  bool Undo();
  bool Redo();

  // ---- for a view

  // Converts a point of the grid's window to the screen. False without a window.
  virtual bool ClientToScreen(CPoint& point) const;

 protected:
  // Called after MoveColumn has moved a column.
  virtual void OnColumnMoved() {}

 private:
  struct State;
  bool HasRow(LONG row) const;
  bool HasColumn(LONG column) const;
  GridRange VisiblePart(const GridRange& range) const;

  const std::unique_ptr<State> m_State;
};
