// The kept arrangement of a grid's columns: bytes in the registry, edge cases, the column menu.
#include "share/interface/grid_column_sorter.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "framework/popup_menu.h"
#include "share/env/app_env.h"
#include "tests/interface/window_grid.h"
#include "tests/registry_calls.h"

namespace {

using kvtest::WindowGrid;

constexpr LPCTSTR kKey = _T("Software\\GridTest");

class Sorter : public testing::Test {
 protected:
  Sorter() { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

  static void Put(const char* name, const std::vector<std::int32_t>& fields, DWORD type = REG_BINARY,
                  std::size_t cut = 0) {
    std::string bytes(reinterpret_cast<const char*>(fields.data()), fields.size() * 4 - cut);
    kvtest::Put(HKEY_CURRENT_USER, kKey, CString(name), {type, bytes});
  }
  static std::string Stored(const char* name) {
    HKEY key = nullptr;
    BYTE bytes[64] = {};
    DWORD type = 0, size = sizeof bytes;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key) != ERROR_SUCCESS) return "no key";
    const LSTATUS status = RegQueryValueExW(key, CString(name), nullptr, &type, bytes, &size);
    RegCloseKey(key);
    if (status != ERROR_SUCCESS) return "missing";
    CString text;
    text.Format(_T("%d:"), int(type));
    for (DWORD i = 0; i < size; ++i) text.AppendFormat(_T(" %02x"), unsigned(bytes[i]));
    return ToUtf8(text);
  }
  static QFGridColumnSorter For(CGXGridCore& grid) {
    QFGridColumnSorter sorter;
    sorter.Init(&grid, HKEY_CURRENT_USER, kKey);
    return sorter;
  }
};

TEST_F(Sorter, SavesTheExactBytes) {
  WindowGrid grid({"Tool", "D"}, 2);
  QFGridColumnSorter sorter = For(grid);
  sorter.Load();  // no key: as the grid is
  EXPECT_EQ(sorter.GetSortOrder(), 1);
  grid.HideColumn(2, true);
  grid.SetColumnWidth(1, 0x123);
  grid.SortByHeader(2);
  grid.SortByHeader(2);
  sorter.Save(0);
  EXPECT_EQ(Stored("SortOrder"), "4: 00 00 00 00");
  EXPECT_EQ(Stored("SortedColumn"), "4: 02 00 00 00");
  EXPECT_EQ(Stored("Tool"), "3: 01 00 00 00 01 00 00 00 23 01 00 00");
  EXPECT_EQ(Stored("D"), "3: 02 00 00 00 00 00 00 00 50 00 00 00");
  WindowGrid other({"Tool", "D"}, 2);
  other.SetCellText(1, 2, _T("9"));
  other.SetCellText(2, 2, _T("10"));
  QFGridColumnSorter loaded = For(other);
  loaded.Load();
  EXPECT_EQ(other.Columns(), "Tool:291 (D)");
  EXPECT_EQ(ToUtf8(other.GetCellText(1, 2)), "10");  // descending again
  EXPECT_EQ(other.GetSortDirection(), 1);
  loaded.SetRegKey(_T(""));
  EXPECT_EQ(loaded.GetRegKey(), _T(""));
}

TEST_F(Sorter, RestoresWhatTheGridHas) {
  const auto none = [] {};
  const struct {
    const char* what;
    std::function<void()> put;
    const char* columns;
    std::size_t known;  // entries of the map
    bool movable = true;
  } rows[] = {
      {"no key", none, "a b c", 3},
      {"a place above the count is forgotten",
       [] {
         Put("a", {12, 0, 50});
       },
       "a b c", 2},
      {"a column without a value keeps its place",
       [] {
         Put("c", {1, 1, -1});
       },
       "c b a", 3},
      {"hidden, with a width",
       [] {
         Put("b", {2, 0, 120});
       },
       "a (b:120) c", 3},
      {"a width of 0 is the grid's",
       [] {
         Put("b", {1, 1, 0});
       },
       "b a c", 3},
      {"without moving, by place",
       [] {
         Put("c", {1, 0, 120});
       },
       "(a:120) b c", 3, false},
      {"absurd places and widths",
       [] {
         Put("a", {-7, 0, 9}), Put("b", {0, 0, 9}), Put("c", {3, 1, 0x7FFFFFFF});
       },
       "a b c:32767", 3},
      {"a short value",
       [] {
         Put("b", {1, 0});
       },
       "(b) a c", 3},
      {"a cut field has its default",
       [] {
         Put("b", {1, 0, 50}, REG_BINARY, 1);
       },
       "(b) a c", 3},
      {"a long value",
       [] {
         Put("b", {1, 0, 50, 0});
       },
       "a b c", 3},
      {"a value of another type", [] { Put("b", {1}, REG_DWORD); }, "a b c", 3},
      {"an absurd sorting", [] { Put("SortedColumn", {99}, REG_DWORD); }, "a b c", 3},
  };
  for (const auto& row : rows) {
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    row.put();
    WindowGrid grid({"a", "b", "c"}, 1);
    grid.EnableMoveColumns(row.movable);
    QFGridColumnSorter sorter = For(grid);
    sorter.Load();
    EXPECT_EQ(grid.Columns(), row.columns) << row.what;
    EXPECT_EQ(sorter.GetColumns().size(), row.known) << row.what;
    EXPECT_EQ(grid.GetSortedColumn(), -1) << row.what;
  }
  WindowGrid repeated({"a", "a", ""});
  QFGridColumnSorter sorter = For(repeated);
  sorter.Load();
  EXPECT_EQ(sorter.GetColumns().size(), 2u);
  EXPECT_EQ(sorter.GetColumnIndex(_T("a")), 1);
  EXPECT_EQ(sorter.GetColumnIndex(_T("A")), -1);
}

TEST_F(Sorter, ReadsNumbersAndKindsOfBarrelTools) {
  InitShareDll();
  CloseAppEnv();
  InitAppEnv();
  WindowGrid grid({"n"}, 1);
  QFGridColumnSorter sorter = For(grid);
  sorter.Load();
  const struct {
    const char* text;
    double real;
    LONG whole;
    DWORD low;
    LONG barrel;
  } rows[] = {{" 12.5 mm", 12.5, 12, 12, 9},     {"x", 0, 0, 0, 9},
              {"-3", -3, -3, 0xFFFFFFFD, 9},     {"4294967298", 4294967298.0, 0x7FFFFFFF, 2, 9},
              {"Tangential Barrel", 0, 0, 0, 2}, {"tangential Barrel", 0, 0, 0, 9},
              {"Oval Barrel", 0, 0, 0, 5}};
  for (const auto& row : rows) {
    grid.SetCellText(1, 1, CString(row.text).View());
    double real = 1;
    LONG whole = 1, barrel = 9;
    DWORD low = 1;
    sorter.GetValueForRow(1, _T("n"), real);
    sorter.GetValueForRow(1, _T("n"), whole);
    sorter.GetValueForRow(1, _T("n"), low);
    sorter.GetValueForRowBarrelToolType(1, _T("n"), barrel);
    EXPECT_EQ(std::tuple(real, whole, low, barrel), std::tuple(row.real, row.whole, row.low, row.barrel)) << row.text;
  }
}

// Records the menu as text and chooses a command.
class ChosenMenu : public PopupMenus {
 public:
  explicit ChosenMenu(UINT command) : command_(command), former_(SetPopupMenus(this)) {}
  ~ChosenMenu() override { SetPopupMenus(former_); }
  UINT Track(const std::vector<PopupMenuItem>& items, const CPoint& at) override {
    text = std::to_string(at.x) + "," + std::to_string(at.y);
    Add(items);
    return command_;
  }
  std::string text;

 private:
  void Add(const std::vector<PopupMenuItem>& items) {
    for (const PopupMenuItem& item : items) {
      text += "|" + (item.opens_submenu ? "" : std::to_string(item.command) + " ") + ToUtf8(item.text);
      if (item.opens_submenu) text += ">";
      Add(item.submenu);
    }
  }
  UINT command_;
  PopupMenus* former_;
};

TEST_F(Sorter, MenuHidesAndShowsColumns) {
  InitShareDll();
  CloseAppEnv();
  InitAppEnv();
  const std::string hide = "|1025 Hide Column", show = "|Show Column>", all = "|1026 Show All Columns";
  const struct {
    const char* hidden;    // columns hidden before
    const char* selected;  // columns selected before
    LONG clicked;
    const char* keep;
    UINT command;
    std::string menu, columns;
  } rows[] = {
      {"", "", 2, "", 0, hide, "a b c d e"},
      {"", "", 0, "", 0, "", "a b c d e"},
      {"", "", 2, "", 1025, hide, "a (b) c d e"},
      {"", "ac", 2, "", 1025, hide, "(a) (b) (c) d e"},
      {"c", "", 1, "c", 0, hide, "a b (c) d e"},
      {"ac", "", 1, "c", 1027, hide + show + "|1027 a" + all, "a b (c) d e"},
      {"abcde", "", 0, "", 1030, show + "|1027 a|1028 b|1030 d" + all, "(a) (b) (c) (d) (e)"},
      {"abcde", "", 0, "", 1028, show + "|1027 a|1028 b|1030 d" + all, "(a) b (c) (d) (e)"},
      {"abcde", "", 0, "", 1026, show + "|1027 a|1028 b|1030 d" + all, "a b (c) (d) (e)"},
      {"b", "", 0, "a", 1026, show + "|1027 b" + all, "(a) b c d e"},
  };
  for (const auto& row : rows) {
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    WindowGrid grid({"a", "b", "c", "d", "e"});
    QFGridColumnSorter sorter = For(grid);
    if (std::string(row.hidden) == "abcde") {
      sorter.AddPermanentlyHiddenColumn(_T("C"));
      sorter.AddPermanentlyHiddenColumn(_T("e"));
      sorter.SetColNameToDisablePermanentlyInMillMachine(_T("d"));
    }
    sorter.Load();
    for (const char* c = row.hidden; *c; ++c) grid.HideColumn(*c - 'a' + 1, true);
    for (const char* c = row.selected; *c; ++c) grid.SelectColumn(*c - 'a' + 1, true);
    ChosenMenu menu(row.command);
    EXPECT_EQ(sorter.OnRButtonClickedRowCol(0, row.clicked, 0, CPoint(1, 2), CString(row.keep)), 1);
    EXPECT_EQ(menu.text, "101,202" + row.menu);
    EXPECT_EQ(grid.Columns(), row.columns) << row.menu;
    EXPECT_EQ(Stored("SortedColumn"), "4: ff ff ff ff");
  }
  WindowGrid grid({"a"});
  EXPECT_EQ(For(grid).OnRButtonClickedRowCol(0, 1, 0, CPoint(), CString()), 0) << "no menu";
}

}  // namespace
