// What a grid keeps: the columns' texts, the order of rows and columns, styles, groups, the selection, the undo steps.
#pragma once

#include <deque>
#include <optional>
#include <unordered_map>
#include <vector>

#include "companions/grid/grid_core.h"
#include "companions/grid/internal/grid_axis.h"
#include "companions/grid/internal/grid_covers.h"
#include "companions/grid/internal/grid_texts.h"

struct GridColumn {
  GridTexts texts;
  LONG width = kGridColumnWidth;
  bool selected = false;
};

// One change of a cell, by its numbers.
struct GridEdit {
  GridAxis::Number row, column;
  CString before, after;
};
using GridStep = std::vector<GridEdit>;

struct CGXGridCore::State {
  State() : covers(rows, columns), data(1) {}

  GridTexts& TextsAt(LONG column) { return data[columns.At(column)].texts; }
  const GridTexts& TextsAt(LONG column) const { return data[columns.At(column)].texts; }
  TextView TextAt(LONG row, LONG column) const { return TextsAt(column).Get(rows.At(row)); }
  static std::uint64_t Key(GridAxis::Number row, GridAxis::Number column) { return std::uint64_t{row} << 32 | column; }
  // The number of a style; 0 for an empty one.
  std::uint32_t NumberOf(const GridStyle& style);
  void AddStep(GridStep step);
  void Apply(const GridStep& step, bool undo);
  void ForgetSteps();

  GridAxis rows, columns;
  GridCovers covers;
  std::vector<GridColumn> data;  // by the column's number; 0: the headers of the rows
  bool moving_enabled = true;

  std::vector<GridStyle> styles;  // those in use; number n is styles[n - 1]
  GridStyle table_style;
  std::unordered_map<GridAxis::Number, std::uint32_t> row_styles, column_styles;
  std::unordered_map<std::uint64_t, std::uint32_t> cell_styles;

  GridRange selected;
  std::optional<GridAxis::Number> sorted_column;
  bool sorted_descending = false;

  std::deque<GridStep> steps;
  std::size_t done = 0;  // steps that Undo can take back; the others are for Redo
};
