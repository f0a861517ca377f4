// kestrova feedcolors: shows and changes the tables of colours by feed rate.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/registry/registry_reader.h"
#include "host/settings/feed_color_table.h"
#include "host/shell/color_text.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/console.h"
#include "platform/numbers.h"
#include "share/core/registry_key_handle.h"
#include "share/settings/feed_colors.h"
#include "share/settings/settings_transaction.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;
using Rows = std::vector<FeedColorRow>;

constexpr double kHighestFeed = 1e9;
constexpr int kStdout = 1;

constexpr char kHelp[] = R"(
Toolpaths are coloured by their feed. A row's colour is for feeds up to and including its threshold and above the
threshold of the row before. Feeds above all thresholds have no colour. Thresholds have two decimals.

  kestrova feedcolors show   --process mill
  kestrova feedcolors add    --process mill 1200 '#FF8000'
  kestrova feedcolors remove --process mill 1200
  kestrova feedcolors color  --process mill 950.5

A COLOR is #RRGGBB, or the number in the registry, 0xBBGGRR or decimal. An empty table gets a row up to 100000 in a
random colour, which stays when you add another row.
)";

struct Arguments {
  std::string process;
  std::string feed;
  std::string color;
  bool json = false;

  double Feed() const {
    double value = 0;
    const bool plain = feed.find_first_not_of("0123456789.") == std::string::npos && feed.find('.') == feed.rfind('.');
    if (!plain || !ReadNumber(feed, value) || value > kHighestFeed)
      throw WrongUsage("FEED \"" + feed + "\" is not a number from 0 to 1000000000, such as 120 or 99.5");
    return value;
  }
  unsigned long Color() const {
    const auto value = ColorFromText(color);
    if (value && *value <= kHighestColor) return *value;
    throw WrongUsage("COLOR \"" + color + "\" is neither #RRGGBB nor 0xBBGGRR; write it like '#FF8000'");
  }
};

// ---- the table in the registry

std::string KeyName(const QFSettingsKey& table) { return "HKCU\\" + ToUtf8(table.GetPath()); }

std::unique_ptr<QFFeedColorsSettings> RestoreTable(const Arguments& arguments) {
  std::unique_ptr<QFFeedColorsSettings> table;
  if (arguments.process == "mill") table = std::make_unique<QFMillFeedColorsSettings>();
  if (arguments.process == "turn") table = std::make_unique<QFTurnFeedColorsSettings>();
  if (arguments.process == "edm") table = std::make_unique<QFEdmFeedColorsSettings>();
  // Restoring a key that cannot be opened would look like an empty table.
  RegistryKeyHandle key;
  const CString path = table->GetPath();
  CheckStatus(CreateKeyIn(SettingsTransaction::Current(), HKEY_CURRENT_USER, path, KEY_ALL_ACCESS, key.Receive()),
              {HKEY_CURRENT_USER, path.GetString()});
  key.Close();
  table->RestoreValuesFromRegistry();
  return table;
}

Rows RowsOf(QFFeedColorsSettings& table) {
  Rows rows;
  FeedColorRow row;
  for (int more = table.GetFirstValue(row.up_to, row.color); more; more = table.GetNextValue(row.up_to, row.color))
    rows.push_back(row);
  return rows;
}

// Saves the rows in ascending order, as the next restore returns them. Of rows with the same text the first stays: a
// search finds that one, but the registry would keep the last.
void Save(QFFeedColorsSettings& table, Rows rows) {
  std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.up_to < b.up_to; });
  const auto alike = [](const auto& a, const auto& b) { return FeedText(a.up_to) == FeedText(b.up_to); };
  rows.erase(std::unique(rows.begin(), rows.end(), alike), rows.end());
  table.RemoveAll();
  for (auto row = rows.rbegin(); row != rows.rend(); ++row) table.AddValue(row->up_to, row->color);
  if (!table.SaveValuesToRegistry()) throw Failure("cannot write " + KeyName(table) + "; nothing was changed");
}

// Changes the rows of a table. Other writers wait from the reading to the writing, so that no row of theirs is lost.
std::unique_ptr<QFFeedColorsSettings> ChangeTable(
    const Arguments& arguments, const std::function<void(const QFFeedColorsSettings&, Rows&)>& change) {
  SettingsTransaction transaction(SettingsTransaction::For::kChanging);
  auto table = RestoreTable(arguments);
  Rows rows = RowsOf(*table);
  change(*table, rows);
  Save(*table, std::move(rows));
  CheckStatus(transaction.Commit(), {HKEY_CURRENT_USER, table->GetPath().GetString()});
  return table;
}

bool EraseRow(Rows& rows, double feed) {
  return std::erase_if(rows, [&](const FeedColorRow& row) { return FeedText(row.up_to) == FeedText(feed); }) > 0;
}

// ---- the commands

bool OnColorTerminal() {
  const char* none = std::getenv("NO_COLOR");
  return _isatty(kStdout) && (!none || !*none);
}

Json ColorJson(unsigned long color) {
  if (color == kNoFeedColor) return {{"rgb", nullptr}, {"value", nullptr}};
  return {{"rgb", ColorText(color)}, {"value", color}};
}

void PrintTable(const Arguments& arguments, QFFeedColorsSettings& table) {
  Json list = Json::array();
  for (const FeedColorRow& row : RowsOf(table)) {
    Json one = {{"upTo", row.up_to}};
    one.update(ColorJson(row.color));
    list.push_back(one);
  }
  PrintJson({{"process", arguments.process}, {"key", KeyName(table)}, {"rows", list}});
}

void Show(const Arguments& arguments) {
  const auto table = RestoreTable(arguments);
  if (arguments.json) return PrintTable(arguments, *table);
  PrintRaw(FeedColorsText(RowsOf(*table), OnColorTerminal()));
}

void Add(const Arguments& arguments) {
  const FeedColorRow added{arguments.Feed(), arguments.Color()};
  const auto table = ChangeTable(arguments, [&](const QFFeedColorsSettings&, Rows& rows) {
    EraseRow(rows, added.up_to);
    rows.push_back(added);
  });
  if (arguments.json) PrintTable(arguments, *table);
}

void Remove(const Arguments& arguments) {
  const double feed = arguments.Feed();
  const auto table = ChangeTable(arguments, [&](const QFFeedColorsSettings& before, Rows& rows) {
    std::string present;
    for (const FeedColorRow& row : rows) present += (present.empty() ? "" : ", ") + FeedText(row.up_to);
    if (!EraseRow(rows, feed))
      throw NotFound(fmt::format("{} has no row {}; it has {}", KeyName(before), FeedText(feed), present));
  });
  if (arguments.json) PrintTable(arguments, *table);
}

void Color(const Arguments& arguments) {
  const double feed = arguments.Feed();
  const unsigned long color = RestoreTable(arguments)->GetColorForFeed(feed);
  if (arguments.json) {
    Json found = {{"process", arguments.process}, {"feed", feed}};
    found.update(ColorJson(color));
    PrintJson(found);
  } else {
    PrintRaw((color == kNoFeedColor ? "none" : ColorPatch(color, OnColorTerminal())) + '\n');
  }
}

CLI::App* AddCommand(CLI::App& group, const char* name, const char* what, Arguments& arguments,
                     void (*run)(const Arguments&)) {
  CLI::App* command = group.add_subcommand(name, what);
  command->footer(kHelp);
  command->add_option("--process", arguments.process, "The table: mill, turn or edm")
      ->check(CLI::IsMember({"mill", "turn", "edm"}))
      ->required();
  command->callback([&arguments, run] { run(arguments); });
  return command;
}

}  // namespace

void AddFeedColorCommands(CLI::App& group) {
  static Arguments arguments;
  group.require_subcommand(1);
  group.footer(kHelp);
  CLI::App* show = AddCommand(group, "show", "Show the rows", arguments, Show);
  CLI::App* add = AddCommand(group, "add", "Add a row, or change its colour", arguments, Add);
  CLI::App* remove = AddCommand(group, "remove", "Remove a row", arguments, Remove);
  CLI::App* color = AddCommand(group, "color", "Show the colour of a feed", arguments, Color);
  for (CLI::App* command : {add, remove, color})
    command->add_option("FEED", arguments.feed, "The feed, in the units of the program")->required();
  add->add_option("COLOR", arguments.color, "#RRGGBB or 0xBBGGRR")->required();
  for (CLI::App* command : {show, add, remove, color}) command->add_flag("--json", arguments.json, "As JSON");
}

}  // namespace kestrova
