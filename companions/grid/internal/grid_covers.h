// The groups of covered cells of a grid. A group is known by the numbers of its upper left cell, and the numbers of its
// rows and columns are always at neighbouring places, so that moves need no change here.
#pragma once

#include <map>
#include <vector>

#include "companions/grid/grid_core.h"
#include "companions/grid/internal/grid_axis.h"

class GridCovers {
 public:
  GridCovers(const GridAxis& rows, const GridAxis& columns) : rows_(rows), columns_(columns) {}

  // The range of the group at the place; the cell alone without one.
  GridRange At(LONG row, LONG column) const;
  // False if a cell of the range belongs to a group.
  bool Add(const GridRange& range);
  void Remove(LONG row, LONG column);

  bool IsEmpty() const { return groups_.empty(); }
  // Whether moving a column or row, or inserting before a place, separates a group.
  bool SplitByColumnMove(LONG from, LONG to) const;
  bool SplitByRowMove(LONG from, LONG to) const;
  bool SplitByColumn(LONG place) const;
  bool SplitByRow(LONG place) const;
  // Whether a group is partly in these rows or columns.
  bool PartlyInColumns(LONG first, LONG last) const;
  bool PartlyInRows(LONG first, LONG last) const;
  bool HasSeveralRows() const { return several_rows_ > 0; }
  // Removes the groups in rows or columns that will be removed.
  void RemoveIn(const GridRange& range);

 private:
  struct Group {
    GridAxis::Number row, column;
    LONG rows, columns;
  };
  GridRange RangeOf(const Group& group) const;
  template <class Predicate>
  bool Any(Predicate predicate) const;

  const GridAxis& rows_;
  const GridAxis& columns_;
  // By the number of each row that a group has, so that a cell finds its group fast.
  std::multimap<GridAxis::Number, Group> groups_;
  std::size_t several_rows_ = 0;  // groups of more than one row
};
