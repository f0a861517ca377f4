#include "companions/grid/grid_core.h"

#include <algorithm>

#include "companions/grid/internal/grid_state.h"
#include "framework/rectangle.h"

namespace {

constexpr std::size_t kMostSteps = 1000;

bool IsBetween(LONG value, LONG first, LONG last) { return value >= first && value <= last; }

}  // namespace

const char* GridReason(GridResult result) {
  switch (result) {
    case GridResult::kDone: return "";
    case GridResult::kOutside: return "it is outside the table";
    case GridResult::kWouldSplitCovered: return "it would separate a cell from the cells that it covers";
    case GridResult::kAlreadyCovered: return "one of the cells is covered already";
    case GridResult::kMovingDisabled: return "the columns of this table can't be moved";
    case GridResult::kReadOnly: return "a cell is read-only";
    case GridResult::kNotValid: return "a cell does not allow this text";
    case GridResult::kTooLarge: return "a table has at most 10,000,000 rows and 10,000 columns";
    case GridResult::kBadKey: return "the type of a sort key is unknown";
    case GridResult::kBadExpression: return "the regular expression is not valid";
  }
  return "";
}

CGXGridCore::CGXGridCore() : m_State(std::make_unique<State>()) {}
CGXGridCore::~CGXGridCore() = default;

bool CGXGridCore::HasRow(LONG row) const { return IsBetween(row, 0, m_State->rows.Count()); }
bool CGXGridCore::HasColumn(LONG column) const { return IsBetween(column, 0, m_State->columns.Count()); }
bool CGXGridCore::ClientToScreen(CPoint&) const { return false; }

// ---- rows and columns

LONG CGXGridCore::GetRowCount() const { return m_State->rows.Count(); }
LONG CGXGridCore::GetColumnCount() const { return m_State->columns.Count(); }

GridResult CGXGridCore::InsertRows(LONG row, LONG count) {
  State& state = *m_State;
  if (!IsBetween(row, 1, state.rows.Count() + 1) || count < 0) return GridResult::kOutside;
  if (count > kMostGridRows - state.rows.Count()) return GridResult::kTooLarge;
  if (state.covers.SplitByRow(row)) return GridResult::kWouldSplitCovered;
  state.rows.Insert(row, count);
  state.selected = {};
  return GridResult::kDone;
}

GridResult CGXGridCore::InsertColumns(LONG column, LONG count) {
  State& state = *m_State;
  if (!IsBetween(column, 1, state.columns.Count() + 1) || count < 0) return GridResult::kOutside;
  if (count > kMostGridColumns - state.columns.Count()) return GridResult::kTooLarge;
  if (state.covers.SplitByColumn(column)) return GridResult::kWouldSplitCovered;
  for (const GridAxis::Number number : state.columns.Insert(column, count))
    if (number >= state.data.size()) state.data.resize(std::size_t(number) + 1);
  state.selected = {};
  return GridResult::kDone;
}

GridResult CGXGridCore::RemoveRows(LONG row, LONG count) {
  State& state = *m_State;
  if (row < 1 || count < 0 || row > state.rows.Count() + 1 || count > state.rows.Count() + 1 - row)
    return GridResult::kOutside;
  if (count == 0) return GridResult::kDone;
  const LONG last = row + count - 1;
  if (state.covers.PartlyInRows(row, last)) return GridResult::kWouldSplitCovered;
  state.covers.RemoveIn({row, 0, last, state.columns.Count()});
  for (LONG place = row; place <= last; ++place) {
    const GridAxis::Number number = state.rows.At(place);
    for (GridColumn& column : state.data) column.texts.Set(number, {});
    state.row_styles.erase(number);
  }
  std::vector<bool> removed;
  for (LONG place = row; place <= last; ++place) {
    const GridAxis::Number number = state.rows.At(place);
    if (number >= removed.size()) removed.resize(std::size_t(number) + 1);
    removed[number] = true;
  }
  std::erase_if(state.cell_styles, [&](const auto& entry) {
    const auto number = std::size_t(entry.first >> 32);
    return number < removed.size() && removed[number];
  });
  state.rows.Remove(row, count);
  state.selected = {};
  state.ForgetSteps();
  return GridResult::kDone;
}

GridResult CGXGridCore::RemoveColumns(LONG column, LONG count) {
  State& state = *m_State;
  if (column < 1 || count < 0 || column > state.columns.Count() + 1 || count > state.columns.Count() + 1 - column)
    return GridResult::kOutside;
  if (count == 0) return GridResult::kDone;
  const LONG last = column + count - 1;
  if (state.covers.PartlyInColumns(column, last)) return GridResult::kWouldSplitCovered;
  state.covers.RemoveIn({0, column, state.rows.Count(), last});
  for (LONG place = column; place <= last; ++place) {
    const GridAxis::Number number = state.columns.At(place);
    state.data[number] = {};
    state.column_styles.erase(number);
    std::erase_if(state.cell_styles, [&](const auto& entry) { return GridAxis::Number(entry.first) == number; });
    if (state.sorted_column == number) state.sorted_column.reset();
  }
  state.columns.Remove(column, count);
  state.selected = {};
  state.ForgetSteps();
  return GridResult::kDone;
}

GridResult CGXGridCore::MoveRow(LONG from, LONG to) {
  State& state = *m_State;
  if (!IsBetween(from, 1, state.rows.Count()) || !IsBetween(to, 1, state.rows.Count())) return GridResult::kOutside;
  if (state.covers.SplitByRowMove(from, to)) return GridResult::kWouldSplitCovered;
  state.rows.Move(from, to);
  return GridResult::kDone;
}

GridResult CGXGridCore::MoveColumn(LONG from, LONG to) {
  State& state = *m_State;
  if (!IsBetween(from, 1, state.columns.Count()) || !IsBetween(to, 1, state.columns.Count()))
    return GridResult::kOutside;
  if (!state.moving_enabled) return GridResult::kMovingDisabled;
  if (state.covers.SplitByColumnMove(from, to)) return GridResult::kWouldSplitCovered;
  state.columns.Move(from, to);
  OnColumnMoved();
  return GridResult::kDone;
}

bool CGXGridCore::IsMoveColumnsEnabled() const { return m_State->moving_enabled; }
void CGXGridCore::EnableMoveColumns(bool enable) { m_State->moving_enabled = enable; }

bool CGXGridCore::IsRowHidden(LONG row) const { return HasRow(row) && m_State->rows.IsHidden(m_State->rows.At(row)); }
bool CGXGridCore::IsColumnHidden(LONG column) const {
  return HasColumn(column) && m_State->columns.IsHidden(m_State->columns.At(column));
}

GridResult CGXGridCore::HideRow(LONG row, bool hide) {
  if (!HasRow(row)) return GridResult::kOutside;
  m_State->rows.Hide(m_State->rows.At(row), hide);
  return GridResult::kDone;
}

GridResult CGXGridCore::HideColumn(LONG column, bool hide) {
  if (!HasColumn(column)) return GridResult::kOutside;
  m_State->columns.Hide(m_State->columns.At(column), hide);
  return GridResult::kDone;
}

LONG CGXGridCore::GetColumnWidth(LONG column) const {
  return HasColumn(column) ? m_State->data[m_State->columns.At(column)].width : 0;
}

GridResult CGXGridCore::SetColumnWidth(LONG column, LONG width) {
  if (!HasColumn(column) || width <= 0) return GridResult::kOutside;
  m_State->data[m_State->columns.At(column)].width = std::min(width, kLargestGridColumnWidth);
  return GridResult::kDone;
}

// ---- cells

TextView CGXGridCore::GetCellView(LONG row, LONG column) const {
  return HasRow(row) && HasColumn(column) ? m_State->TextAt(row, column) : TextView();
}

CString CGXGridCore::GetCellText(LONG row, LONG column) const { return CString(GetCellView(row, column)); }

CString CGXGridCore::GetDisplayText(LONG row, LONG column) const {
  return GridDisplayText(GetCellText(row, column), GetStyle(row, column));
}

GridResult CGXGridCore::SetCellText(LONG row, LONG column, TextView text) {
  if (!HasRow(row) || !HasColumn(column)) return GridResult::kOutside;
  m_State->TextsAt(column).Set(m_State->rows.At(row), text);
  return GridResult::kDone;
}

GridResult CGXGridCore::EditCell(LONG row, LONG column, const CString& text) {
  if (!HasRow(row) || !HasColumn(column)) return GridResult::kOutside;
  const GridStyle style = GetStyle(row, column);
  if (style.read_only.value_or(false)) return GridResult::kReadOnly;
  if (!IsValidGridText(text, style)) return GridResult::kNotValid;
  const GridStep step = {{m_State->rows.At(row), m_State->columns.At(column), GetCellText(row, column), text}};
  m_State->Apply(step, /*undo=*/false);
  m_State->AddStep(step);
  return GridResult::kDone;
}

GridResult CGXGridCore::CoverCells(const GridRange& range) {
  const bool inside = IsBetween(range.top, 0, range.bottom) && IsBetween(range.left, 1, range.right) &&
                      HasRow(range.bottom) && HasColumn(range.right) && (range.top > 0 || range.bottom == 0);
  if (!inside) return GridResult::kOutside;
  if (range.top == range.bottom && range.left == range.right) return GridResult::kDone;
  return m_State->covers.Add(range) ? GridResult::kDone : GridResult::kAlreadyCovered;
}

GridResult CGXGridCore::UncoverCells(LONG row, LONG column) {
  if (!HasRow(row) || !HasColumn(column)) return GridResult::kOutside;
  m_State->covers.Remove(row, column);
  return GridResult::kDone;
}

GridRange CGXGridCore::GetCoveredRange(LONG row, LONG column) const {
  return HasRow(row) && HasColumn(column) ? m_State->covers.At(row, column) : GridRange{row, column, row, column};
}

// ---- styles

std::uint32_t CGXGridCore::State::NumberOf(const GridStyle& style) {
  if (style == GridStyle()) return 0;
  const auto found = std::find(styles.begin(), styles.end(), style);
  const auto number = std::uint32_t(found - styles.begin()) + 1;
  if (found == styles.end()) styles.push_back(style);
  return number;
}

void CGXGridCore::SetTableStyle(const GridStyle& style) { m_State->table_style = style; }

GridResult CGXGridCore::SetColumnStyle(LONG column, const GridStyle& style) {
  if (!HasColumn(column)) return GridResult::kOutside;
  m_State->column_styles[m_State->columns.At(column)] = m_State->NumberOf(style);
  return GridResult::kDone;
}

GridResult CGXGridCore::SetRowStyle(LONG row, const GridStyle& style) {
  if (!HasRow(row)) return GridResult::kOutside;
  m_State->row_styles[m_State->rows.At(row)] = m_State->NumberOf(style);
  return GridResult::kDone;
}

GridResult CGXGridCore::SetCellStyle(LONG row, LONG column, const GridStyle& style) {
  if (!HasRow(row) || !HasColumn(column)) return GridResult::kOutside;
  m_State->cell_styles[State::Key(m_State->rows.At(row), m_State->columns.At(column))] = m_State->NumberOf(style);
  return GridResult::kDone;
}

GridStyle CGXGridCore::GetStyle(LONG row, LONG column) const {
  GridStyle style;
  if (!HasRow(row) || !HasColumn(column)) return style;
  const State& state = *m_State;
  const GridAxis::Number row_number = state.rows.At(row), column_number = state.columns.At(column);
  const auto inherit = [&](const auto& styles, auto key) {
    const auto found = styles.find(key);
    if (found != styles.end() && found->second > 0) style.Inherit(state.styles[found->second - 1]);
  };
  inherit(state.cell_styles, State::Key(row_number, column_number));
  inherit(state.row_styles, row_number);
  inherit(state.column_styles, column_number);
  style.Inherit(state.table_style);
  return style;
}

// ---- selection

GridResult CGXGridCore::SelectColumn(LONG column, bool select) {
  if (!HasColumn(column)) return GridResult::kOutside;
  m_State->data[m_State->columns.At(column)].selected = select;
  return GridResult::kDone;
}

std::vector<LONG> CGXGridCore::GetSelectedColumns() const {
  std::vector<LONG> selected;
  for (LONG column = 0; column <= GetColumnCount(); ++column)
    if (m_State->data[m_State->columns.At(column)].selected) selected.push_back(column);
  return selected;
}

GridResult CGXGridCore::SelectCells(const GridRange& range) {
  if (!IsBetween(range.top, 0, range.bottom) || !IsBetween(range.left, 0, range.right)) return GridResult::kOutside;
  if (!HasRow(range.bottom) || !HasColumn(range.right)) return GridResult::kOutside;
  m_State->selected = range;
  return GridResult::kDone;
}

GridRange CGXGridCore::GetSelectedCells() const { return m_State->selected; }

void CGXGridCore::ClearSelection() {
  m_State->selected = {};
  for (GridColumn& column : m_State->data) column.selected = false;
}

// ---- undo

void CGXGridCore::State::Apply(const GridStep& step, bool undo) {
  // Backwards for undo: a step may change a cell twice.
  for (std::size_t i = 0; i < step.size(); ++i) {
    const GridEdit& edit = undo ? step[step.size() - 1 - i] : step[i];
    data[edit.column].texts.Set(edit.row, (undo ? edit.before : edit.after).View());
  }
}

void CGXGridCore::State::AddStep(GridStep step) {
  steps.resize(done);
  steps.push_back(std::move(step));
  if (steps.size() > kMostSteps) steps.pop_front();
  done = steps.size();
}

void CGXGridCore::State::ForgetSteps() {
  steps.clear();
  done = 0;
}

bool CGXGridCore::CanUndo() const { return m_State->done > 0; }
bool CGXGridCore::CanRedo() const { return m_State->done < m_State->steps.size(); }

bool CGXGridCore::Undo() {
  if (!CanUndo()) return false;
  m_State->Apply(m_State->steps[--m_State->done], /*undo=*/true);
  return true;
}

bool CGXGridCore::Redo() {
  if (!CanRedo()) return false;
  m_State->Apply(m_State->steps[m_State->done++], /*undo=*/false);
  return true;
}
