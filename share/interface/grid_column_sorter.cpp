#include "share/interface/grid_column_sorter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstring>
#include <string>
#include <utility>

#include "companions/grid/grid_core.h"
#include "framework/popup_menu.h"
#include "platform/numbers.h"
#include "share/core/registry_key_handle.h"

namespace {

constexpr LPCTSTR kSortOrder = _T("SortOrder");
constexpr LPCTSTR kSortedColumn = _T("SortedColumn");

constexpr UINT kHideColumn = 1025;
constexpr UINT kShowAll = 1026;
constexpr UINT kShowFirst = 1027;  // of the hidden columns

constexpr UINT kHideColumnText = 58164;
constexpr UINT kShowColumnText = 58165;
constexpr UINT kShowAllText = 2569;
constexpr UINT kFirstBarrelText = 65432;
constexpr UINT kBarrelText = 65493;
constexpr LONG kBarrelKinds = 5;

constexpr std::size_t kFields = 3;
static_assert(std::endian::native == std::endian::little, "the stored integers are little-endian");

using Fields = std::array<std::int32_t, kFields>;

CString TextOf(UINT id) {
  CString text;
  text.LoadString(id);
  return text;
}

// False if the value is missing, not binary or too long.
bool ReadInfo(HKEY key, const CString& name, QFGridColumnInfo& info) {
  Fields fields = {info.m_nIndex, info.m_bVisible, info.m_nWidth};
  BYTE bytes[sizeof fields] = {};
  DWORD type = REG_NONE, size = sizeof bytes;
  if (RegQueryValueExW(key, name, nullptr, &type, bytes, &size) != ERROR_SUCCESS || type != REG_BINARY) return false;
  std::memcpy(fields.data(), bytes, size - size % sizeof fields[0]);  // whole fields only
  info.SetValues(fields[0], fields[1], fields[2]);
  return true;
}

void WriteInfo(HKEY key, const CString& name, const QFGridColumnInfo& info) {
  const Fields fields = {info.m_nIndex, info.m_bVisible, info.m_nWidth};
  RegSetValueExW(key, name, 0, REG_BINARY, reinterpret_cast<const BYTE*>(fields.data()), sizeof fields);
}

// Leaves the value unchanged if it is missing or no DWORD.
void ReadNumberOf(HKEY key, LPCTSTR name, int& value) {
  DWORD number = 0, type = REG_NONE, size = sizeof number;
  const LSTATUS status = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
  if (status == ERROR_SUCCESS && type == REG_DWORD && size == sizeof number) value = int(number);
}

void WriteNumber(HKEY key, LPCTSTR name, int value) {
  const auto number = DWORD(value);
  RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
}

}  // namespace

// ---- the arrangement

void QFGridColumnSorter::Init(CGXGridCore* grid, HKEY root, const CString& key) {
  m_pGrid = grid;
  m_RootKey = root;
  m_RegKey = key;
}

void QFGridColumnSorter::Load() {
  if (!m_pGrid) return;
  if (m_Columns.empty()) {
    m_nColumnCount = m_pGrid->GetColumnCount();
    RegistryKeyHandle key;
    RegOpenKeyExW(m_RootKey, m_RegKey, 0, KEY_READ, key.Receive());
    FillColumnInfo(key);
  }
  Arrange();
  Sort();
}

// A null key: it could not be opened.
void QFGridColumnSorter::FillColumnInfo(HKEY key) {
  for (LONG column = 1; column <= LastColumn(); ++column) {
    const CString name = NameOf(column);
    QFGridColumnInfo info;
    const bool stored = key && ReadInfo(key, name, info);
    if (stored && info.m_nIndex > m_nColumnCount) {  // its place does not exist
      m_Columns.erase(name);
      continue;
    }
    if (!stored) info.SetValues(column, !m_pGrid->IsColumnHidden(column), m_pGrid->GetColumnWidth(column));
    m_Columns[name] = info;
  }
  if (key) {
    ReadNumberOf(key, kSortOrder, m_nSortOrder);
    ReadNumberOf(key, kSortedColumn, m_nSortedColumn);
  } else {
    UpdateSortInfo();
  }
}

void QFGridColumnSorter::Arrange() {
  m_bArranging = 1;
  std::vector<std::pair<LONG, CString>> places;
  for (const auto& [name, info] : m_Columns)
    if (info.m_nIndex >= 1) places.emplace_back(info.m_nIndex, name);
  std::sort(places.begin(), places.end());
  for (const auto& [target, name] : places) {
    const QFGridColumnInfo& info = m_Columns[name];
    const LONG current = GetColumnIndex(name);
    if (m_pGrid->IsMoveColumnsEnabled() && current != -1 && current != target) m_pGrid->MoveColumn(current, target);
    if (info.m_nWidth > 0) m_pGrid->SetColumnWidth(target, info.m_nWidth);
    m_pGrid->HideColumn(target, !info.m_bVisible);
  }
  m_bArranging = 0;
}

void QFGridColumnSorter::Sort() {
  if (m_nSortedColumn == -1) return;
  const GridSortKey key = {m_nSortedColumn, kGridSortAutomatic, m_nSortOrder};
  m_pGrid->SortRows({&key, 1});
}

void QFGridColumnSorter::Save(int alreadyUpdated) {
  if (!m_pGrid) return;
  if (!alreadyUpdated) {
    UpdateIndices();
    UpdateSortInfo();
  }
  RegistryKeyHandle key;
  const LSTATUS status = RegCreateKeyExW(m_RootKey, m_RegKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                         nullptr, key.Receive(), nullptr);
  if (status != ERROR_SUCCESS) return;
  WriteNumber(key, kSortOrder, m_nSortOrder);
  WriteNumber(key, kSortedColumn, m_nSortedColumn);
  for (const auto& [name, info] : m_Columns) WriteInfo(key, name, info);
}

void QFGridColumnSorter::UpdateIndices() {
  for (LONG column = 1; column <= LastColumn(); ++column)
    m_Columns[NameOf(column)].SetValues(column, !m_pGrid->IsColumnHidden(column), m_pGrid->GetColumnWidth(column));
}

void QFGridColumnSorter::UpdateSortInfo() {
  m_nSortedColumn = m_pGrid->GetSortedColumn();
  m_nSortOrder = m_pGrid->GetSortDirection() == 0 ? 1 : 0;  // the grid's two numberings are opposite
}

int QFGridColumnSorter::OnLButtonDblClkRowCol(LONG, LONG, UINT, CPoint) {
  if (m_pGrid) UpdateSortInfo();
  return 1;
}

void QFGridColumnSorter::StoreMoveCols() {
  if (m_pGrid && !m_bArranging) UpdateIndices();
}

// ---- the column menu

bool QFGridColumnSorter::IsPermanentlyHidden(const CString& name) const {
  return !name.IsEmpty() && std::any_of(m_PermanentlyHidden.begin(), m_PermanentlyHidden.end(),
                                        [&](const CString& hidden) { return name.CompareNoCase(hidden) == 0; });
}

std::vector<LONG> QFGridColumnSorter::HiddenColumns() const {
  std::vector<LONG> hidden;
  for (LONG column = 1; column <= m_pGrid->GetColumnCount(); ++column)
    if (m_pGrid->IsColumnHidden(column)) hidden.push_back(column);
  return hidden;
}

int QFGridColumnSorter::OnRButtonClickedRowCol(LONG, LONG col, UINT, CPoint point, const CString& keepColumn) {
  PopupMenus* const menus = GetPopupMenus();
  if (!m_pGrid || !menus || !m_pGrid->ClientToScreen(point)) return 0;
  std::vector<PopupMenuItem> items;
  if (col > 0) items.push_back({.command = kHideColumn, .text = TextOf(kHideColumnText)});
  std::vector<LONG> hidden = HiddenColumns();
  const auto isKept = [&](const CString& name) { return !keepColumn.IsEmpty() && name == keepColumn; };
  if (hidden.size() == 1 && isKept(NameOf(hidden[0]))) hidden.clear();
  std::map<UINT, CString> offered;
  if (!hidden.empty()) {
    PopupMenuItem show = {.text = TextOf(kShowColumnText), .opens_submenu = true};
    for (std::size_t i = 0; i < hidden.size(); ++i) {
      const CString name = NameOf(hidden[i]);
      if (isKept(name) || IsPermanentlyHidden(name)) continue;
      show.submenu.push_back({.command = kShowFirst + UINT(i), .text = name});
      offered[kShowFirst + UINT(i)] = name;
    }
    items.push_back(std::move(show));
    items.push_back({.command = kShowAll, .text = TextOf(kShowAllText)});
  }
  const UINT command = menus->Track(items, point);
  if (command == kHideColumn) HideSelectedColumns(col);
  if (command == kShowAll) ShowAllColumns(keepColumn);
  if (const auto name = offered.find(command); name != offered.end() && !StaysHidden(name->second))
    m_pGrid->HideColumn(GetColumnIndex(name->second), false);
  Save(/*alreadyUpdated=*/0);
  return 1;
}

void QFGridColumnSorter::HideSelectedColumns(LONG clicked) {
  for (const LONG column : m_pGrid->GetSelectedColumns())
    if (column != 0) m_pGrid->HideColumn(column, true);
  if (clicked != 0) m_pGrid->HideColumn(clicked, true);
}

void QFGridColumnSorter::ShowAllColumns(const CString& keepColumn) {
  for (const LONG column : HiddenColumns()) m_pGrid->HideColumn(column, StaysHidden(NameOf(column)));
  if (!keepColumn.IsEmpty()) m_pGrid->HideColumn(GetColumnIndex(keepColumn), true);
}

// ---- columns and cells by name

LONG QFGridColumnSorter::LastColumn() const { return std::min(m_nColumnCount, m_pGrid->GetColumnCount()); }

CString QFGridColumnSorter::NameOf(LONG column) const { return m_pGrid->GetCellText(0, column); }

LONG QFGridColumnSorter::GetColumnIndex(const CString& name) const {
  if (!m_pGrid) return -1;
  for (LONG column = 1; column <= LastColumn(); ++column)
    if (m_pGrid->GetCellView(0, column) == name.View()) return column;
  return -1;
}

CString QFGridColumnSorter::CellOf(LONG row, const CString& column) const {
  const LONG index = GetColumnIndex(column);
  return index > 0 ? m_pGrid->GetCellText(row, index) : CString();
}

void QFGridColumnSorter::GetValueForRow(LONG row, const CString& column, double& value) const {
  value = NumberFromUtf8(ToUtf8(CellOf(row, column)));
}

void QFGridColumnSorter::GetValueForRow(LONG row, const CString& column, LONG& value) const {
  value = IntegerFromUtf8(ToUtf8(CellOf(row, column)));
}

void QFGridColumnSorter::GetValueForRow(LONG row, const CString& column, DWORD& value) const {
  const std::string text = ToUtf8(CellOf(row, column).TrimLeft());
  const std::size_t sign = text.starts_with('+') ? 1 : 0;
  LONGLONG number = 0;
  std::from_chars(text.data() + sign, text.data() + text.size(), number);
  value = DWORD(number);
}

void QFGridColumnSorter::GetValueForRowBarrelToolType(LONG row, const CString& column, LONG& value) const {
  const CString text = CellOf(row, column);
  const CString barrel = _T(" ") + TextOf(kBarrelText);
  for (LONG kind = 0; kind < kBarrelKinds; ++kind)
    if (text == TextOf(kFirstBarrelText + UINT(kind)) + barrel) value = kind + 1;
}
