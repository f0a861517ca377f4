// The grid's model: order and sorting against plain tables, groups of cells, styles, search, copy and paste, undo.
#include "companions/grid/grid_core.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "platform/process.h"
#include "tests/scratch.h"

namespace {

using Table = std::vector<std::vector<std::string>>;
using enum GridResult;

// Rows are separated by "|", cells by ",".
Table Split(const std::string& text) {
  Table rows;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line, '|');) {
    std::vector<std::string>& row = rows.emplace_back();
    std::istringstream cells(line + ",");
    for (std::string cell; std::getline(cells, cell, ',');) row.push_back(cell);
  }
  return rows;
}

void Fill(CGXGridCore& grid, const std::string& text) {
  const Table rows = Split(text);
  grid.InsertRows(1, LONG(rows.size()));
  grid.InsertColumns(1, LONG(rows.at(0).size()));
  for (LONG row = 1; row <= grid.GetRowCount(); ++row)
    for (LONG column = 1; column <= grid.GetColumnCount(); ++column)
      grid.SetCellText(row, column, FromUtf8(rows[std::size_t(row) - 1][std::size_t(column) - 1]).View());
}

std::string TextOf(const CGXGridCore& grid) {
  std::string text;
  for (LONG row = 1; row <= grid.GetRowCount(); ++row) {
    for (LONG column = 1; column <= grid.GetColumnCount(); ++column)
      text += (column > 1 ? "," : row > 1 ? "|" : "") + ToUtf8(grid.GetCellText(row, column));
  }
  return text;
}

TEST(Grid, SortsNumbersTextsAndEmptyCells) {
  const struct {
    const char *before, *after;
    int type = kGridSortAutomatic, order = 1;
  } rows[] = {
      {"10|9|-1e3|0.5| 7 |+8", "-1e3|0.5| 7 |+8|9|10"},
      {"b|10||a|9", "9|10|a|b|"},
      {"b|10||a|9", "b|a|10|9|", kGridSortAutomatic, 0},
      {"b|10||a|9", "10|9|a|b|", kGridSortText},
      {"b|10||a|9", "9|10|b|a|", kGridSortNumber},
      {"b|10||a|9", "10|9|b|a|", kGridSortNumber, 0},
      {"Z|\xC3\xA4|a|B|z", "a|\xC3\xA4|B|z|Z"},  // the language's rules, not the units'
      {"0.0,a|-0,b|0,c", "0.0,a|-0,b|0,c"},      // stable
      {"0.0,a|-0,b|1,c", "1,c|0.0,a|-0,b", kGridSortAutomatic, 0},
      {"inf|nan|0x1|1|-|1e999", "1|-|0x1|1e999|inf|nan"},
      {"1,5|1,4", "1,5|1,4"},
  };
  for (const auto& row : rows) {
    CGXGridCore grid;
    Fill(grid, row.before);
    const GridSortKey key = {1, row.type, row.order};
    EXPECT_EQ(grid.SortRows({&key, 1}), kDone);
    EXPECT_EQ(TextOf(grid), row.after);
  }
  CGXGridCore grid;
  Fill(grid, "b,2|a,2|b,1|a,1");
  const GridSortKey keys[] = {{1, kGridSortAutomatic, 0}, {2, kGridSortAutomatic, 1}};
  EXPECT_EQ(grid.SortRows(keys), kDone);
  EXPECT_EQ(TextOf(grid), "b,1|b,2|a,1|a,2");
  grid.MoveColumn(1, 2);
  EXPECT_EQ(grid.GetSortedColumn(), 2);
  EXPECT_EQ(grid.GetSortDirection(), 1);
  const GridSortKey bad[] = {{3}, {1, 3}};
  EXPECT_EQ(grid.SortRows({bad, 1}), kOutside);
  EXPECT_EQ(grid.SortRows({bad + 1, 1}), kBadKey);
}

TEST(Grid, RandomChangesFollowAPlainTable) {
  std::mt19937 random(kvtest::PrintedSeed());
  const auto any = [&](LONG first, LONG last) { return std::uniform_int_distribution<LONG>(first, last)(random); };
  for (int round = 0; round < 20; ++round) {
    CGXGridCore grid;
    Fill(grid, "1,2|3,4");
    Table model = {{"1", "2"}, {"3", "4"}};
    for (int step = 0; step < 60; ++step) {
      const LONG rows = grid.GetRowCount(), columns = grid.GetColumnCount();
      const LONG row = any(1, rows), to = any(1, rows), column = any(1, columns), to_column = any(1, columns);
      const auto at = model.begin() + row - 1;
      switch (any(0, 7)) {
        case 0:
        case 1: {  // texts that are long enough to move in memory
          const std::string text = std::string(any(0, 9) == 0 ? 70'000 : 0, 'x') + std::to_string(any(0, 99));
          grid.EditCell(row, column, text.c_str());
          model[std::size_t(row) - 1][std::size_t(column) - 1] = text;
          break;
        }
        case 2:
          grid.MoveRow(row, to);
          {
            auto moved = *at;
            model.erase(at);
            model.insert(model.begin() + to - 1, moved);
            break;
          }
        case 3:
          grid.MoveColumn(column, to_column);
          for (auto& line : model) {
            const std::string moved = line[std::size_t(column) - 1];
            line.erase(line.begin() + column - 1);
            line.insert(line.begin() + to_column - 1, moved);
          }
          break;
        case 4:
          if (rows > 6) break;
          grid.InsertRows(row, 2);
          model.insert(at, 2, std::vector<std::string>(std::size_t(columns)));
          break;
        case 5:
          if (columns > 6) break;
          grid.InsertColumns(column, 1);
          for (auto& line : model) line.insert(line.begin() + column - 1, std::string());
          break;
        case 6:
          if (rows < 2) break;
          grid.RemoveRows(row, 1);
          model.erase(at);
          break;
        default:
          if (columns < 2) break;
          grid.RemoveColumns(column, 1);
          for (auto& line : model) line.erase(line.begin() + column - 1);
      }
      std::string expected;
      for (const auto& line : model)
        for (std::size_t i = 0; i < line.size(); ++i)
          expected += (i > 0 ? "," : &line != model.data() ? "|" : "") + line[i];
      ASSERT_EQ(TextOf(grid), expected);
    }
  }
}

TEST(Grid, GroupsOfCellsStayTogether) {
  CGXGridCore grid;
  Fill(grid, "4,b,c,d|3,f,g,h|2,j,k,l|1,n,o,p");
  const GridSortKey key = {1};
  EXPECT_EQ(grid.CoverCells({1, 2, 1, 3}), kDone);
  EXPECT_EQ(grid.CoverCells({1, 3, 2, 4}), kAlreadyCovered);
  EXPECT_EQ(grid.CoverCells({0, 1, 1, 1}), kOutside);
  EXPECT_EQ(grid.MoveColumn(2, 4), kWouldSplitCovered);
  EXPECT_EQ(grid.MoveColumn(1, 2), kWouldSplitCovered);
  EXPECT_EQ(grid.MoveColumn(4, 3), kWouldSplitCovered);
  EXPECT_EQ(grid.InsertColumns(3, 1), kWouldSplitCovered);
  EXPECT_EQ(grid.RemoveColumns(3, 2), kWouldSplitCovered);
  EXPECT_EQ(grid.MoveColumn(1, 3), kDone);
  EXPECT_EQ(grid.GetCoveredRange(1, 2), (GridRange{1, 1, 1, 2}));
  EXPECT_EQ(grid.MoveColumn(3, 1), kDone);
  EXPECT_EQ(grid.SortRows({&key, 1}), kDone);
  EXPECT_EQ(grid.GetCoveredRange(4, 3), (GridRange{4, 2, 4, 3}));
  EXPECT_EQ(grid.CoverCells({1, 4, 2, 4}), kDone);
  EXPECT_EQ(grid.SortRows({&key, 1}), kWouldSplitCovered);
  EXPECT_EQ(grid.MoveRow(3, 2), kWouldSplitCovered);
  EXPECT_EQ(grid.MoveRow(3, 1), kDone);
  EXPECT_EQ(grid.GetCoveredRange(3, 4), (GridRange{2, 4, 3, 4}));
  EXPECT_EQ(grid.RemoveRows(2, 1), kWouldSplitCovered);
  EXPECT_EQ(grid.RemoveRows(2, 2), kDone);
  EXPECT_EQ(grid.SortRows({&key, 1}), kDone);
  grid.UncoverCells(2, 3);
  EXPECT_EQ(grid.GetCoveredRange(2, 2), (GridRange{2, 2, 2, 2}));
  EXPECT_EQ(grid.InsertRows(1, kMostGridRows), kTooLarge);
}

TEST(Grid, StylesAreInheritedAndGuardEdits) {
  CGXGridCore grid;
  Fill(grid, "12.5,x|,y");
  grid.SetTableStyle({.bold = true, .kind = GridCellKind::kText});
  grid.SetColumnStyle(1, {.kind = GridCellKind::kNumber, .factor = 1 / 25.4, .decimals = 3, .unit = _T("in")});
  grid.SetRowStyle(1, {.bold = false});
  grid.SetCellStyle(1, 2, {.bold = true, .read_only = true});
  EXPECT_EQ(grid.GetStyle(1, 1).bold, false);
  EXPECT_EQ(grid.GetStyle(1, 2).bold, true);
  EXPECT_EQ(grid.GetDisplayText(1, 1), _T("0.492 in"));
  EXPECT_EQ(grid.GetDisplayText(2, 1), _T(""));
  EXPECT_EQ(grid.EditCell(1, 1, _T("x")), kNotValid);
  EXPECT_EQ(grid.EditCell(1, 2, _T("x")), kReadOnly);
  EXPECT_EQ(grid.EditCell(9, 2, _T("x")), kOutside);
  grid.SetCellStyle(1, 2, {});
  EXPECT_EQ(grid.EditCell(1, 2, _T("z")), kDone);
  const struct {
    GridStyle style;
    const char* text;
    bool valid;
  } rows[] = {{{.kind = GridCellKind::kCheckBox}, "1", true},
              {{.kind = GridCellKind::kCheckBox}, "2", false},
              {{.kind = GridCellKind::kColor}, "#00ffA0", true},
              {{.kind = GridCellKind::kColor}, "#00ffA", false},
              {{.kind = GridCellKind::kList, .choices = _T("a\nbc")}, "bc", true},
              {{.kind = GridCellKind::kList, .choices = _T("a\nbc")}, "b", false},
              {{.kind = GridCellKind::kButton}, "", false},
              {{.kind = GridCellKind::kNumber}, "", true}};
  for (const auto& row : rows) EXPECT_EQ(IsValidGridText(row.text, row.style), row.valid) << row.text;
}

TEST(Grid, FindsReplacesAndUndoes) {
  CGXGridCore grid;
  Fill(grid, "Mill,mill 2,x|end mill,y,MILL|z,hidden mill,w");
  grid.CoverCells({2, 2, 2, 3});
  grid.HideColumn(2, true);
  const struct {
    GridSearch search;
    GridCell after, found;
  } rows[] = {
      {{.what = _T("mill")}, {1, 1}, {2, 1}},
      {{.what = _T("mill")}, {2, 1}, {1, 1}},  // around the end; 2,3 is covered
      {{.what = _T("mill"), .backwards = true}, {1, 1}, {2, 1}},
      {{.what = _T("mill"), .whole_cell = true}, {1, 1}, {1, 1}},
      {{.what = _T("mill"), .match_case = true}, {2, 1}, {2, 1}},
      {{.what = _T("^[a-z]$"), .regular_expression = true}, {0, 0}, {1, 3}},
      {{.what = _T("^[a-z]$"), .regular_expression = true, .in_selection = true}, {0, 0}, {3, 1}},
      {{.what = _T("mill 2")}, {1, 1}, {}},
      {{.what = _T("")}, {1, 1}, {}},
  };
  grid.SelectColumn(1, true);
  for (const auto& row : rows) {
    GridCell found;
    EXPECT_EQ(grid.Find(row.search, row.after, found), kDone);
    EXPECT_EQ(found, row.found) << ToUtf8(row.search.what);
  }
  GridCell found;
  EXPECT_EQ(grid.Find({.what = _T("("), .regular_expression = true}, {}, found), kBadExpression);

  LONG changed = 0;
  EXPECT_EQ(grid.ReplaceAll({.what = _T("(\\w)ILL"), .regular_expression = true}, _T("$1|"), changed), kDone);
  EXPECT_EQ(changed, 2);
  EXPECT_EQ(grid.GetCellText(2, 1), _T("end m|"));
  EXPECT_EQ(grid.ReplaceAll({.what = _T("Z"), .whole_cell = true}, _T("zz"), changed), kDone);
  const GridSortKey key = {1};
  EXPECT_EQ(grid.SortRows({&key, 1}), kDone);  // undo finds the cells again
  EXPECT_TRUE(grid.Undo() && grid.Undo());
  EXPECT_FALSE(grid.Undo());
  EXPECT_EQ(TextOf(grid), "end mill,y,MILL|Mill,mill 2,x|z,hidden mill,w");
  EXPECT_TRUE(grid.Redo());
  EXPECT_EQ(grid.GetCellText(1, 1), _T("end m|"));
  grid.EditCell(1, 1, _T("new"));
  EXPECT_FALSE(grid.CanRedo());
}

TEST(Grid, CopiesAndPastesTextAndHtml) {
  CGXGridCore grid;
  Fill(grid, "a<,b,c|d,e,f");
  grid.SetCellText(0, 1, _T("H"));
  grid.SetCellText(2, 3, _T("q\"\t"));
  grid.CoverCells({1, 1, 2, 2});
  grid.HideColumn(2, true);
  EXPECT_EQ(grid.CopyText({0, 1, 9, 9}), _T("H\t\r\na<\tc\r\nd\t\"q\"\"\t\"\r\n"));
  grid.HideColumn(2, false);
  EXPECT_EQ(
      grid.CopyHtml({0, 1, 2, 3}),
      _T("<table>\n<tr><th>H</th><th></th><th></th></tr>\n"
         "<tr><td rowspan=\"2\" colspan=\"2\">a&lt;</td><td>c</td></tr>\n<tr><td>q&quot;\t</td></tr>\n</table>\n"));
  EXPECT_EQ(grid.CopyHtml({2, 2, 2, 2}), _T("<table>\n<tr><td>a&lt;</td></tr>\n</table>\n"));
  const struct {
    LONG row, column;
    const char* text;
    GridResult result;
    const char* after;
  } rows[] = {
      {1, 1, "1\t2\r\n3\t\"4\"\"\t\"\n", kDone, "1,2,c|3,4\"\t,f"},
      {2, 3, "7", kDone, "a,b,c|d,e,7"},
      {2, 3, "7\t8", kOutside, "a,b,c|d,e,f"},
      {2, 1, "7\r8", kOutside, "a,b,c|d,e,f"},
      {1, 2, "7\t8\n9\tx", kNotValid, "a,b,c|d,e,f"},
      {1, 1, "\"open", kDone, "open,b,c|d,e,f"},
      {1, 1, "", kDone, "a,b,c|d,e,f"},
      {3, 1, "7", kOutside, "a,b,c|d,e,f"},
  };
  for (const auto& row : rows) {
    CGXGridCore target;
    Fill(target, "a,b,c|d,e,f");
    target.SetCellStyle(2, 3, {.kind = GridCellKind::kNumber});
    EXPECT_EQ(target.PasteText(row.row, row.column, row.text), row.result);
    EXPECT_EQ(TextOf(target), row.after);
  }
}

}  // namespace
