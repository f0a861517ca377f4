// kestrova grid: shows and searches a file of tab-separated text in the product's table, and keeps its arrangement in
// the registry as the product's dialogs do.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "companions/grid/grid_core.h"
#include "host/commands/commands.h"
#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "host/shell/whole_file.h"
#include "platform/registry.h"
#include "share/interface/grid_column_sorter.h"

namespace kestrova {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostBytes = std::size_t{1} << 30;
constexpr char kHelp[] =
    "The file has a TAB between cells; its first line has the headers. Columns are named by their headers.\n"
    "Sorting puts numbers before texts and empty cells last; equal rows keep their order.";

struct Options {
  std::string file, key, what, replace;
  std::vector<std::string> sort, hide, move, width;
  bool save = false, html = false, json = false;
  bool whole = false, match_case = false, expression = false;
};

CString TextOf(const char* what, const std::string& argument) {
  RequireUtf8(what, argument);
  return FromUtf8(argument);
}

std::pair<std::string, std::string> SplitAt(const std::string& text, char mark) {
  const std::size_t at = text.rfind(mark);
  return at == text.npos ? std::pair(text, std::string()) : std::pair(text.substr(0, at), text.substr(at + 1));
}

// ---- the table of a file

void Check(GridResult result, const std::string& what) {
  if (result != GridResult::kDone) throw Failure(fmt::format("{}: {}", what, GridReason(result)));
}

// The number of lines, and of cells in the longest one, before quotes are read: never too small.
void MakeRoom(CGXGridCore& grid, std::string_view bytes, const std::string& file) {
  LONGLONG rows = 0, widest = 0;
  for (std::size_t start = 0; start < bytes.size(); ++rows) {
    const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
    widest = std::max<LONGLONG>(widest,
                                1 + std::count(bytes.begin() + LONGLONG(start), bytes.begin() + LONGLONG(end), '\t'));
    start = end + 1;
  }
  if (rows > kMostGridRows || widest > kMostGridColumns) Check(GridResult::kTooLarge, file);
  grid.InsertColumns(1, LONG(widest));
  grid.InsertRows(1, std::max<LONG>(LONG(rows) - 1, 0));
}

void Fill(CGXGridCore& grid, const std::string& file) {
  const std::string bytes = ReadWholeFile(file, kMostBytes);
  if (bytes.size() > kMostBytes) throw Failure(fmt::format("{} is larger than 1 GiB", file), {.file = file});
  RequireUtf8(file, bytes);
  MakeRoom(grid, bytes, file);
  if (grid.GetColumnCount() > 0) Check(grid.PasteText(0, 1, FromUtf8(bytes)), file);
}

LONG ColumnOf(const CGXGridCore& grid, const std::string& name) {
  for (LONG column = 1; column <= grid.GetColumnCount(); ++column)
    if (ToUtf8(grid.GetCellView(0, column)) == name) return column;
  throw NotFound(fmt::format("the table has no column \"{}\"", name));
}

// The number after "COLUMN=".
LONG NumberOf(const std::string& text, const std::string& argument) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || number < 1)
    throw WrongUsage(fmt::format("{}: write COLUMN=NUMBER, with a number from 1", argument));
  return number;
}

void ArrangeAsAsked(CGXGridCore& grid, const Options& options) {
  for (const std::string& argument : options.move) {
    const auto [name, place] = SplitAt(argument, '=');
    Check(grid.MoveColumn(ColumnOf(grid, name), NumberOf(place, argument)), "cannot move " + name);
  }
  for (const std::string& argument : options.width) {
    const auto [name, width] = SplitAt(argument, '=');
    Check(grid.SetColumnWidth(ColumnOf(grid, name), NumberOf(width, argument)), "cannot resize " + name);
  }
  for (const std::string& name : options.hide) grid.HideColumn(ColumnOf(grid, name), true);
  std::vector<GridSortKey> keys;
  for (const std::string& argument : options.sort) {
    const auto [name, order] = SplitAt(argument, ':');
    const bool descending = order == "desc";
    keys.push_back({ColumnOf(grid, descending ? name : argument), kGridSortAutomatic, descending ? 0 : 1});
  }
  Check(grid.SortRows(keys), "cannot sort");
}

// ---- output

Json ColumnsJson(const CGXGridCore& grid) {
  Json columns = Json::array();
  for (LONG column = 1; column <= grid.GetColumnCount(); ++column) {
    columns.push_back({{"name", ToUtf8(grid.GetCellText(0, column))},
                       {"width", grid.GetColumnWidth(column)},
                       {"hidden", grid.IsColumnHidden(column)}});
  }
  return columns;
}

void PrintTableJson(const CGXGridCore& grid) {
  const LONG sorted = grid.GetSortedColumn();
  JsonPrinter json;
  json.Add("columns", ColumnsJson(grid));
  json.Add("sortedBy", sorted > 0 ? Json(ToUtf8(grid.GetCellText(0, sorted))) : Json());
  json.Add("descending", sorted > 0 && grid.GetSortDirection() != 0);
  json.Open("rows", '[');
  for (LONG row = 1; row <= grid.GetRowCount(); ++row) {
    Json cells = Json::array();
    for (LONG column = 1; column <= grid.GetColumnCount(); ++column)
      cells.push_back(ToUtf8(grid.GetCellView(row, column)));
    json.Add({}, cells);
  }
  json.Close();
  json.Close();
}

void PrintTable(const CGXGridCore& grid) {
  std::vector<TextTable::Column> titles;
  std::vector<LONG> shown;
  for (LONG column = 1; column <= grid.GetColumnCount(); ++column) {
    if (grid.IsColumnHidden(column)) continue;
    shown.push_back(column);
    titles.push_back({ToUtf8(grid.GetCellText(0, column)), /*right=*/false});
  }
  if (shown.empty()) return;
  TextTable table(std::move(titles));
  for (LONG row = 1; row <= grid.GetRowCount(); ++row) {
    std::vector<std::string> cells;
    for (const LONG column : shown) cells.push_back(ToUtf8(grid.GetDisplayText(row, column)));
    table.Add(std::move(cells));
  }
  PrintLines(table.Text());
}

void Show(const Options& options) {
  if (options.save && options.key.empty()) throw WrongUsage("--save needs --key");
  CGXGridCore grid;
  Fill(grid, options.file);
  QFGridColumnSorter sorter;
  sorter.Init(&grid, HKEY_CURRENT_USER, TextOf("key", options.key));
  if (!options.key.empty()) sorter.Load();
  ArrangeAsAsked(grid, options);
  if (options.save) {
    sorter.Save(/*alreadyUpdated=*/0);
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, sorter.GetRegKey(), 0, KEY_READ, &key) != ERROR_SUCCESS)
      throw Failure(
          fmt::format("cannot write HKCU\\{} to the registry; kestrova env doctor shows its files", options.key));
    RegCloseKey(key);
  }
  if (options.json) return PrintTableJson(grid);
  if (options.html) {
    PrintRaw(ToUtf8(grid.CopyHtml({0, 1, grid.GetRowCount(), grid.GetColumnCount()})));
  } else {
    PrintTable(grid);
  }
}

void Find(const Options& options) {
  CGXGridCore grid;
  Fill(grid, options.file);
  const GridSearch search = {.what = TextOf("text", options.what),
                             .whole_cell = options.whole,
                             .match_case = options.match_case,
                             .regular_expression = options.expression};
  std::vector<GridCell> cells;
  if (grid.FindAll(search, cells) != GridResult::kDone)
    throw WrongUsage(fmt::format("{}: {}", options.what, GridReason(GridResult::kBadExpression)));
  Json list = Json::array();
  for (const auto& [row, column] : cells) {
    const std::string name = ToUtf8(grid.GetCellText(0, column)), text = ToUtf8(grid.GetCellText(row, column));
    if (options.json) {
      list.push_back({{"row", row}, {"column", name}, {"text", text}});
    } else {
      Print("{}, {}: {}\n", row, name, text);
    }
  }
  if (options.json) PrintJson({{"cells", list}});
  if (cells.empty()) throw FoundErrors();
}

}  // namespace

void AddGridCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kHelp);
  const auto add = [&](const char* name, const char* what, const std::string& examples, void (*run)(const Options&)) {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(std::string(kHelp) + "\nExamples:\n" + examples);
    command->add_option("FILE", options.file, "A file of tab-separated text")->required();
    command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return command;
  };
  CLI::App* show = add("show", "Print a table: sorted, with columns moved or hidden",
                       "  kestrova grid show tools.tsv --sort Diameter:desc --hide Comment\n"
                       "  kestrova grid show tools.tsv --move Diameter=1 --key 'Software\\Tables\\Tools' --save\n"
                       "  kestrova grid show tools.tsv --html > tools.html",
                       Show);
  const auto list = [&](const char* name, std::vector<std::string>& values, const char* what) {
    show->add_option(name, values, what)->allow_extra_args(false);
  };
  list("--sort", options.sort, "COLUMN or COLUMN:desc; several keys by several options");
  list("--hide", options.hide, "COLUMN: hide it; several by several options");
  list("--move", options.move, "COLUMN=PLACE: move it to a place from 1");
  list("--width", options.width, "COLUMN=PIXELS: its width");
  show->add_option("--key", options.key, "Start with the arrangement of this registry key below HKCU");
  show->add_flag("--save", options.save, "Store the arrangement in the key");
  show->add_flag("--html", options.html, "As a table of HTML");
  CLI::App* find = add("find", "Print the cells with a text; exit code 1 if there is none",
                       "  kestrova grid find tools.tsv mill\n"
                       "  kestrova grid find tools.tsv '^[0-9]+$' --regex",
                       Find);
  find->add_option("TEXT", options.what, "The text, or a regular expression")->required();
  find->add_flag("--whole", options.whole, "The whole cell");
  find->add_flag("--case", options.match_case, "Distinguish upper and lower case");
  find->add_flag("--regex", options.expression, "The text is a regular expression");
}

}  // namespace kestrova
