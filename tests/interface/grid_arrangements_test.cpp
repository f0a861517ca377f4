// Random changes of a grid's arrangement against a plain model.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "share/interface/grid_column_sorter.h"
#include "tests/interface/window_grid.h"
#include "tests/scratch.h"

namespace {

using kvtest::WindowGrid;

constexpr LPCTSTR kKey = _T("Software\\GridArrangements");

// Any sequence of moves, widths, hides and sorts comes back in a new grid with the columns in their first order.
TEST(RandomArrangements, ComeBack) {
  std::mt19937 random(kvtest::PrintedSeed());
  const auto any = [&](LONG first, LONG last) { return std::uniform_int_distribution<LONG>(first, last)(random); };
  const std::vector<const char*> names = {"h", "b", "g", "a", "d", "f", "c", "e"};
  const auto count = LONG(names.size());
  const auto fill = [&](CGXGridCore& grid) {
    for (LONG row = 1; row <= grid.GetRowCount(); ++row)
      for (LONG column = 1; column <= count; ++column)
        grid.SetCellText(row, column, CString(std::to_string(row * 7 * column % 11).c_str()).View());
  };
  struct Column {
    std::string name;
    LONG width = kGridColumnWidth;
    bool hidden = false;
  };
  for (int round = 0; round < 100; ++round) {
    std::vector<Column> model;
    for (const char* name : names) model.push_back({name});
    WindowGrid grid(names, 20);
    fill(grid);
    QFGridColumnSorter sorter;
    sorter.Init(&grid, HKEY_CURRENT_USER, kKey);
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    sorter.Load();
    for (int step = 0; step < 20; ++step) {
      const LONG a = any(1, count), b = any(1, count);
      Column& column = model[std::size_t(a - 1)];
      switch (any(0, 4)) {
        case 0:
        case 1: {
          EXPECT_EQ(grid.MoveColumn(a, b), GridResult::kDone);
          sorter.StoreMoveCols();
          const Column moved = column;
          model.erase(model.begin() + a - 1);
          model.insert(model.begin() + b - 1, moved);
          break;
        }
        case 2: grid.SetColumnWidth(a, column.width = any(1, 300)); break;
        case 3: grid.HideColumn(a, column.hidden = any(0, 1) == 1); break;
        default: grid.SortByHeader(a);
      }
    }
    sorter.Save(0);
    std::string expected;
    for (const Column& column : model) {
      const std::string name =
          column.name + (column.width == kGridColumnWidth ? "" : ":" + std::to_string(column.width));
      expected += (expected.empty() ? "" : " ") + (column.hidden ? "(" + name + ")" : name);
    }
    ASSERT_EQ(grid.Columns(), expected);
    WindowGrid next(names, 20);
    fill(next);
    QFGridColumnSorter loaded;
    loaded.Init(&next, HKEY_CURRENT_USER, kKey);
    loaded.Load();
    ASSERT_EQ(next.Columns(), expected);
    ASSERT_EQ(next.GetSortedColumn(), grid.GetSortedColumn());
    for (LONG row = 1; row <= 20 && grid.GetSortedColumn() > 0; ++row)
      ASSERT_EQ(next.GetCellText(row, grid.GetSortedColumn()), grid.GetCellText(row, grid.GetSortedColumn()));
  }
}

}  // namespace
