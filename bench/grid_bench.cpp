// The grid's model compared with a stable sort of extracted keys, with Qt's item model of the same cells, and the kept
// arrangement of columns with the same calls of the registry.
#include <malloc.h>

#include <QStandardItemModel>
#include <QString>
#include <algorithm>
#include <charconv>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "companions/grid/grid_core.h"
#include "platform/collation.h"
#include "platform/registry.h"
#include "share/interface/grid_column_sorter.h"

namespace {

constexpr LONG kColumns = 30;
constexpr LPCTSTR kKey = _T("Software\\GridBench");

using Cells = std::vector<Text>;

Text Wide(const std::string& text) { return {text.begin(), text.end()}; }

Cells Numbers(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  Cells cells;
  for (std::size_t i = 0; i < count; ++i)
    cells.push_back(Wide(std::to_string(random() % 100'000) + '.' + std::to_string(random() % 1000)));
  return cells;
}

Cells Names(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  const char* const kinds[] = {"End mill", "Ball nose", "drill", "Chamfer mill", "tap", "Reamer"};
  Cells cells;
  for (std::size_t i = 0; i < count; ++i)
    cells.push_back(Wide(std::string(kinds[random() % 6]) + ' ' + std::to_string(random() % 10'000)));
  return cells;
}

std::unique_ptr<CGXGridCore> GridOf(const Cells& cells, LONG columns) {
  auto grid = std::make_unique<CGXGridCore>();
  grid->InsertRows(1, LONG(cells.size()));
  grid->InsertColumns(1, columns);
  for (LONG column = 1; column <= columns; ++column)
    for (std::size_t row = 0; row < cells.size(); ++row) grid->SetCellText(LONG(row) + 1, column, cells[row]);
  return grid;
}

// ---- sorting

std::vector<std::pair<double, std::uint32_t>> NumberKeys(const Cells& cells) {
  std::vector<std::pair<double, std::uint32_t>> keys;
  keys.reserve(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string text(cells[i].begin(), cells[i].end());
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    keys.emplace_back(value, std::uint32_t(i));
  }
  return keys;
}

std::vector<std::pair<std::string, std::uint32_t>> TextKeys(const Cells& cells) {
  std::vector<std::pair<std::string, std::uint32_t>> keys;
  keys.reserve(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    char bytes[512];
    const int size = LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_SORTKEY, cells[i].data(), int(cells[i].size()),
                                   reinterpret_cast<LPTSTR>(bytes), sizeof bytes, nullptr, nullptr, 0);
    keys.emplace_back(std::string(bytes, std::size_t(size)), std::uint32_t(i));
  }
  return keys;
}

template <class Keys>
Keys Sorted(Keys keys) {
  std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  return keys;
}

// Sorts by two columns in turn, so that each sort begins with a random order.
template <class CellsOf, class KeysOf>
void BenchSort(kvbench::Table& table, const char* what, std::size_t count, CellsOf cellsOf, KeysOf keysOf) {
  const Cells cells = cellsOf(count, 1);
  const Cells others = cellsOf(count, 2);
  const auto grid = GridOf(cells, 2);
  for (std::size_t row = 0; row < count; ++row) grid->SetCellText(LONG(row) + 1, 2, others[row]);
  GridSortKey key = {1};
  const auto sort = [&] {
    kvbench::Keep(grid->SortRows({&key, 1}));
    key.column = 3 - key.column;
  };
  const auto keys = keysOf(cells);
  const std::string name = std::string("sort by ") + what;
  table.Pair({.name = name, .size = count, .peer = "std::stable_sort, with the extraction of its keys", .goal = 1.5},
             sort, [&] { return Sorted(keysOf(cells)); });
  table.Pair({.name = name, .size = count, .peer = "std::stable_sort of extracted keys", .goal = 1.5}, sort,
             [&] { return Sorted(keys); });
}

// ---- filling

std::unique_ptr<QStandardItemModel> ModelOf(const std::vector<QString>& cells) {
  auto model = std::make_unique<QStandardItemModel>(int(cells.size()), kColumns);
  for (int column = 0; column < kColumns; ++column)
    for (std::size_t row = 0; row < cells.size(); ++row) {
      // A copy with its own characters, as a program that reads a file makes them.
      model->setItem(int(row), column, new QStandardItem(QString(cells[row].constData(), cells[row].size())));
    }
  return model;
}

std::size_t Allocated() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void BenchFill(kvbench::Table& table, std::size_t rows) {
  const Cells cells = Names(rows, 1);
  std::vector<QString> texts;
  for (const Text& cell : cells) texts.push_back(QString::fromUtf16(cell.c_str()));
  table.Pair(
      {.name = "fill 30 columns", .size = rows, .peer = "QStandardItemModel", .goal = 1.0},
      [&] { return GridOf(cells, kColumns); }, [&] { return ModelOf(texts); }, 5);
  std::size_t before = Allocated();
  const auto grid = GridOf(cells, kColumns);
  const std::size_t ours = Allocated() - before;
  before = Allocated();
  const auto model = ModelOf(texts);
  const std::size_t theirs = Allocated() - before;
  const auto text = [](std::size_t bytes) { return std::to_string(bytes >> 10) + " KiB"; };
  kvbench::Table::Row({.name = "memory", .size = rows, .peer = "QStandardItemModel", .goal = 0.25}, text(ours),
                      text(theirs), double(ours) / double(theirs));
}

// ---- the registry

struct Info {
  std::int32_t fields[3];
};

void RawSave(const std::vector<CString>& names) {
  HKEY key = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
  const DWORD number = 1;
  for (LPCTSTR name : {_T("SortOrder"), _T("SortedColumn")})
    RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
  const Info info = {{1, 1, 80}};
  for (const CString& name : names)
    RegSetValueExW(key, name, 0, REG_BINARY, reinterpret_cast<const BYTE*>(&info), sizeof info);
  RegCloseKey(key);
}

int RawLoad(const std::vector<CString>& names) {
  HKEY key = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key);
  int sum = 0;
  for (const CString& name : names) {
    Info info = {};
    DWORD size = sizeof info, type = 0;
    RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&info), &size);
    sum += info.fields[0];
  }
  for (LPCTSTR name : {_T("SortOrder"), _T("SortedColumn")}) {
    DWORD number = 0, size = sizeof number, type = 0;
    RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
    sum += int(number);
  }
  RegCloseKey(key);
  return sum;
}

void BenchArrangement(kvbench::Table& table) {
  CGXGridCore grid;
  grid.InsertRows(1, 1);
  grid.InsertColumns(1, kColumns);
  std::vector<CString> names;
  for (LONG column = 1; column <= kColumns; ++column) {
    names.emplace_back(("Column " + std::to_string(column)).c_str());
    grid.SetCellText(0, column, names.back().View());
  }
  QFGridColumnSorter saved;
  saved.Init(&grid, HKEY_CURRENT_USER, kKey);
  saved.Load();
  table.Pair(
      {.name = "Save", .size = std::size_t(kColumns), .peer = "the same registry calls", .goal = 1.5},
      [&] { saved.Save(0); }, [&] { RawSave(names); });
  saved.Save(0);
  table.Pair(
      {.name = "Load", .size = std::size_t(kColumns), .peer = "the same registry calls", .goal = 1.5},
      [&] {
        QFGridColumnSorter sorter;
        sorter.Init(&grid, HKEY_CURRENT_USER, kKey);
        sorter.Load();
        return sorter.GetSortOrder();
      },
      [&] { return RawLoad(names); });
}

}  // namespace

int main() {
  kvbench::Table table("Grid");
  for (const std::size_t rows : {1'000, 10'000, 100'000}) {
    BenchSort(table, "number", rows, Numbers, NumberKeys);
    BenchSort(table, "text", rows, Names, TextKeys);
  }
  for (const std::size_t rows : {1'000, 10'000, 100'000}) BenchFill(table, rows);
  BenchArrangement(table);
}
