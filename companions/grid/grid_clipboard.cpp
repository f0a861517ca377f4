// Copy and paste of a grid's cells: tab-separated text, and HTML.
#include <algorithm>

#include "companions/grid/internal/grid_state.h"

namespace {

constexpr TextView kSpecial = _T("\t\r\n\"");

void AppendQuoted(Text& out, TextView cell) {
  if (cell.find_first_of(kSpecial) == cell.npos) {
    out += cell;
    return;
  }
  out += _T('"');
  for (const TCHAR unit : cell) {
    if (unit == _T('"')) out += unit;
    out += unit;
  }
  out += _T('"');
}

void AppendHtml(Text& out, TextView cell) {
  for (const TCHAR unit : cell) {
    switch (unit) {
      case _T('<'): out += _T("&lt;"); break;
      case _T('>'): out += _T("&gt;"); break;
      case _T('&'): out += _T("&amp;"); break;
      case _T('"'): out += _T("&quot;"); break;
      case _T('\n'): out += _T("<br>"); break;
      case _T('\r'): break;
      default: out += unit;
    }
  }
}

void AppendSpan(Text& out, LPCTSTR attribute, LONG count) {
  if (count <= 1) return;
  CString text;
  text.Format(_T(" %s=\"%d\""), attribute, int(count));
  out += text.View();
}

// Takes a cell from the text, up to a TAB, a line end or the end. A quote at its start encloses it.
Text TakeCell(TextView& text) {
  Text cell;
  if (text.starts_with(_T('"'))) {
    text.remove_prefix(1);
    while (!text.empty()) {
      const TCHAR unit = text.front();
      text.remove_prefix(1);
      if (unit == _T('"')) {
        if (!text.starts_with(_T('"'))) break;
        text.remove_prefix(1);
      }
      cell += unit;
    }
  }
  const std::size_t end = std::min(text.find_first_of(_T("\t\r\n")), text.size());
  cell.append(text.substr(0, end));
  text.remove_prefix(end);
  return cell;
}

using Rows = std::vector<std::vector<Text>>;

Rows RowsOf(TextView text) {
  Rows rows;
  while (!text.empty()) {
    rows.emplace_back();
    for (;;) {
      rows.back().push_back(TakeCell(text));
      if (!text.starts_with(_T('\t'))) break;
      text.remove_prefix(1);
    }
    if (text.starts_with(_T('\r'))) text.remove_prefix(1);
    if (text.starts_with(_T('\n'))) text.remove_prefix(1);
  }
  return rows;
}

// The shown rows or columns from first to last, at most `most`.
template <class IsHidden>
std::vector<LONG> Shown(LONG first, LONG last, IsHidden isHidden, std::size_t most = std::size_t(-1)) {
  std::vector<LONG> shown;
  for (LONG place = first; place <= last && shown.size() < most; ++place)
    if (!isHidden(place)) shown.push_back(place);
  return shown;
}

}  // namespace

GridRange CGXGridCore::VisiblePart(const GridRange& range) const {
  return {std::max<LONG>(range.top, 0), std::max<LONG>(range.left, 0), std::min(range.bottom, GetRowCount()),
          std::min(range.right, GetColumnCount())};
}

CString CGXGridCore::CopyText(const GridRange& range) const {
  const GridRange part = VisiblePart(range);
  const auto columns = Shown(part.left, part.right, [&](LONG column) { return IsColumnHidden(column); });
  Text out;
  for (const LONG row : Shown(part.top, part.bottom, [&](LONG place) { return IsRowHidden(place); })) {
    for (const LONG column : columns) {
      if (column != columns.front()) out += _T('\t');
      AppendQuoted(out, GetCellView(row, column));
    }
    out += _T("\r\n");
  }
  return CString(TextView(out));
}

CString CGXGridCore::CopyHtml(const GridRange& range) const {
  const GridRange part = VisiblePart(range);
  const auto rows = Shown(part.top, part.bottom, [&](LONG row) { return IsRowHidden(row); });
  const auto columns = Shown(part.left, part.right, [&](LONG column) { return IsColumnHidden(column); });
  const auto count = [](const std::vector<LONG>& shown, LONG first, LONG last) {
    return LONG(std::upper_bound(shown.begin(), shown.end(), last) -
                std::lower_bound(shown.begin(), shown.end(), first));
  };
  Text out = _T("<table>\n");
  for (const LONG row : rows) {
    out += _T("<tr>");
    for (const LONG column : columns) {
      // A group is written once, at its first shown cell within the range.
      const GridRange group = GetCoveredRange(row, column);
      const LONG firstRow = *std::lower_bound(rows.begin(), rows.end(), group.top);
      const LONG firstColumn = *std::lower_bound(columns.begin(), columns.end(), group.left);
      if (firstRow != row || firstColumn != column) continue;
      const LPCTSTR tag = row == 0 || column == 0 ? _T("th") : _T("td");
      out.append(_T("<")).append(tag);
      AppendSpan(out, _T("rowspan"), count(rows, row, group.bottom));
      AppendSpan(out, _T("colspan"), count(columns, column, group.right));
      out += _T('>');
      AppendHtml(out, GetDisplayText(group.top, group.left).View());
      out.append(_T("</")).append(tag).append(_T(">"));
    }
    out += _T("</tr>\n");
  }
  out += _T("</table>\n");
  return CString(TextView(out));
}

GridResult CGXGridCore::PasteText(LONG row, LONG column, const CString& text) {
  if (!HasRow(row) || !HasColumn(column)) return GridResult::kOutside;
  State& state = *m_State;
  const Rows cells = RowsOf(text.View());
  std::size_t widest = 0;
  for (const auto& line : cells) widest = std::max(widest, line.size());
  const auto rows = Shown(
      row, GetRowCount(), [&](LONG place) { return IsRowHidden(place); }, cells.size());
  const auto columns = Shown(
      column, GetColumnCount(), [&](LONG place) { return IsColumnHidden(place); }, widest);
  if (rows.size() < cells.size() || columns.size() < widest) return GridResult::kOutside;
  GridStep step;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    for (std::size_t k = 0; k < cells[i].size(); ++k) {
      const CString after{TextView(cells[i][k])};
      const GridStyle style = GetStyle(rows[i], columns[k]);
      if (style.read_only.value_or(false)) return GridResult::kReadOnly;
      if (!IsValidGridText(after, style)) return GridResult::kNotValid;
      step.push_back({state.rows.At(rows[i]), state.columns.At(columns[k]), GetCellText(rows[i], columns[k]), after});
    }
  }
  state.Apply(step, /*undo=*/false);
  if (!step.empty()) state.AddStep(std::move(step));
  return GridResult::kDone;
}
