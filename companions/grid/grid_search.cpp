// Find and replace in the shown cells of a grid.
#include <algorithm>
#include <optional>

#include "companions/grid/internal/grid_state.h"
#include "platform/regular_expression.h"
#include "platform/text.h"

namespace {

Text Upper(TextView text) {
  Text upper(text);
  CharUpperBuffW(upper.data(), DWORD(upper.size()));
  return upper;
}

// Finds and replaces the text of a search.
class Matcher {
 public:
  explicit Matcher(const GridSearch& search) : search_(search), what_(Fold(search.what.View())) {
    if (search.regular_expression) expression_.emplace(search.what.View(), search.match_case);
  }
  bool IsValid() const { return !expression_ || expression_->IsValid(); }
  bool Matches(TextView text) const {
    if (expression_) return expression_->Matches(text, search_.whole_cell);
    const Text folded = Fold(text);
    return search_.whole_cell ? folded == what_ : folded.find(what_) != folded.npos;
  }
  Text Replaced(TextView text, TextView by) const {
    if (expression_) return expression_->Replaced(text, by);
    if (search_.whole_cell) return Text(by);
    const Text folded = Fold(text);  // as long as the text
    Text result;
    std::size_t from = 0;
    for (std::size_t at = folded.find(what_); at != folded.npos; at = folded.find(what_, from)) {
      result.append(text.substr(from, at - from)).append(by);
      from = at + what_.size();
    }
    return result.append(text.substr(from));
  }

 private:
  Text Fold(TextView text) const { return search_.match_case ? Text(text) : Upper(text); }

  const GridSearch& search_;
  const Text what_;
  std::optional<RegularExpression> expression_;
};

// The shown cells that a search goes through, numbered row by row.
class Places {
 public:
  Places(const CGXGridCore& grid, bool inSelection) : grid_(grid) {
    for (LONG row = 1; row <= grid.GetRowCount(); ++row)
      if (!grid.IsRowHidden(row)) rows_.push_back(row);
    for (LONG column = 1; column <= grid.GetColumnCount(); ++column)
      if (!grid.IsColumnHidden(column)) columns_.push_back(column);
    if (!inSelection) return;
    selected_columns_ = grid.GetSelectedColumns();
    cells_ = grid.GetSelectedCells();
    in_selection_ = true;
  }
  std::size_t Count() const { return rows_.size() * columns_.size(); }
  GridCell At(std::size_t index) const { return {rows_[index / columns_.size()], columns_[index % columns_.size()]}; }
  // The first cell that is not before the given one.
  std::size_t NotBefore(const GridCell& cell) const {
    const auto row = std::lower_bound(rows_.begin(), rows_.end(), cell.row);
    const std::size_t start = std::size_t(row - rows_.begin()) * columns_.size();
    if (row == rows_.end() || *row != cell.row) return start;
    return start + std::size_t(std::lower_bound(columns_.begin(), columns_.end(), cell.column) - columns_.begin());
  }
  // Whether the cell is searched: selected, and not covered by another one.
  bool Has(const GridCell& cell) const {
    const GridRange group = grid_.GetCoveredRange(cell.row, cell.column);
    if (group.top != cell.row || group.left != cell.column) return false;
    if (!in_selection_) return true;
    const bool inCells = cells_.top > 0 && cell.row >= cells_.top && cell.row <= cells_.bottom &&
                         cell.column >= cells_.left && cell.column <= cells_.right;
    return inCells || std::binary_search(selected_columns_.begin(), selected_columns_.end(), cell.column);
  }

 private:
  const CGXGridCore& grid_;
  std::vector<LONG> rows_, columns_, selected_columns_;
  GridRange cells_;
  bool in_selection_ = false;
};

}  // namespace

GridResult CGXGridCore::Find(const GridSearch& search, GridCell after, GridCell& found) const {
  found = {};
  const Matcher matcher(search);
  if (!matcher.IsValid()) return GridResult::kBadExpression;
  const Places places(*this, search.in_selection);
  const std::size_t count = places.Count();
  if (search.what.IsEmpty() || count == 0) return GridResult::kDone;
  const std::size_t start = places.NotBefore(after);
  const bool onStart = start < count && places.At(start) == after;
  for (std::size_t step = 0; step < count; ++step) {
    const std::size_t forward = start + step + (onStart ? 1 : 0);
    const std::size_t index = (search.backwards ? start + 2 * count - 1 - step : forward) % count;
    const GridCell cell = places.At(index);
    if (!places.Has(cell) || !matcher.Matches(GetCellView(cell.row, cell.column))) continue;
    found = cell;
    break;
  }
  return GridResult::kDone;
}

GridResult CGXGridCore::FindAll(const GridSearch& search, std::vector<GridCell>& found) const {
  found.clear();
  const Matcher matcher(search);
  if (!matcher.IsValid()) return GridResult::kBadExpression;
  const Places places(*this, search.in_selection);
  for (std::size_t index = 0; index < places.Count() && !search.what.IsEmpty(); ++index) {
    const GridCell cell = places.At(index);
    if (places.Has(cell) && matcher.Matches(GetCellView(cell.row, cell.column))) found.push_back(cell);
  }
  return GridResult::kDone;
}

GridResult CGXGridCore::ReplaceAll(const GridSearch& search, const CString& by, LONG& changed) {
  changed = 0;
  const Matcher matcher(search);
  if (!matcher.IsValid()) return GridResult::kBadExpression;
  State& state = *m_State;
  std::vector<GridCell> cells;
  FindAll(search, cells);
  GridStep step;
  for (const GridCell& cell : cells) {
    const TextView text = GetCellView(cell.row, cell.column);
    const CString after{TextView(matcher.Replaced(text, by.View()))};
    const GridStyle style = GetStyle(cell.row, cell.column);
    if (style.read_only.value_or(false) || !IsValidGridText(after, style) || after.View() == text) continue;
    step.push_back({state.rows.At(cell.row), state.columns.At(cell.column), CString(text), after});
  }
  changed = LONG(step.size());
  state.Apply(step, /*undo=*/false);
  if (!step.empty()) state.AddStep(std::move(step));
  return GridResult::kDone;
}
