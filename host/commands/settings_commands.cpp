// kestrova settings: lists, changes, exports and compares the settings of the application and of a document.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <optional>
#include <set>

#include "host/commands/commands.h"
#include "host/commands/settings_tree.h"
#include "host/settings/settings_file.h"
#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_keys.h"

namespace kestrova {
namespace {

constexpr char kGroupHelp[] = R"(
The registry stores the application's settings; a document's file, which --document names, stores the document's. If
several groups have a name, the one declared last is meant, which programs find too; GROUP/NAME names one group's value.
Three groups declare a name twice; a change sets both, because the registry has one value for them.
A change of a document's setting saves the document.

  kestrova settings list --changed
  kestrova settings set Display/LineWidth 3
  kestrova settings set Feature "#00FF80" --document part.kvdoc
  kestrova settings export mine.json)";

constexpr char kListHelp[] = R"(
Shows every value in the order of declaration. --tree document without --document shows the values of a new document.

  kestrova settings list
  kestrova settings list --tree document --document part.kvdoc --changed --json)";

constexpr char kGetHelp[] = R"(
  kestrova settings get LineWidth
  kestrova settings get LineWidth --value
  kestrova settings get Oper_Filter3/DiaTo --json)";

constexpr char kSetHelp[] = R"(
VALUE is a number, a text, a colour as #RRGGBB, a point as x,y, a rect as left,top,right,bottom, a time in seconds since
1970, or an int array as numbers with commas. Write -- before a VALUE that begins with a minus.

  kestrova settings set ThreadNum 8
  kestrova settings set ToolBarLocation -- -20,143)";

constexpr char kResetHelp[] = R"(
Sets a value to its default: removes it from the registry.

  kestrova settings reset LineWidth)";

constexpr char kExportHelp[] = R"(
Writes the output of list --json into FILE.

  kestrova settings export mine.json
  kestrova settings export colours.json --document part.kvdoc)";

constexpr char kImportHelp[] = R"(
Sets the values in FILE, which has the form of an export and may contain only some of the values. All values are checked
first; one wrong value, and nothing is changed.

  kestrova settings import mine.json)";

constexpr char kDiffHelp[] = R"(
Shows the values that differ from an export in FILE. The exit code is 1 if there are differences.

  kestrova settings diff mine.json)";

struct Options {
  std::string tree;
  std::string document;
  std::string name;
  std::string value;
  std::string file;
  bool changed = false;
  bool force = false;
  bool json = false;
  bool alone = false;
};

std::string LineOf(const TreeValue& row) {
  std::string line = TextOf(*row.value, DataOf(*row.value));
  if (IsChanged(row)) line += fmt::format("  (default {})", TextOf(*row.value, row.defaultData));
  return line;
}

SettingsTree Open(const Options& options, SettingsTree::For use) { return {options.tree, options.document, use}; }

void List(const Options& options) {
  SettingsTree tree = Open(options, SettingsTree::For::kShowing);
  if (options.json) return PrintJson(SettingsJson(tree.Values(), options.changed));
  const QFSettingsKey* group = nullptr;
  for (const TreeValue& row : tree.Values().all) {
    if (options.changed && !IsChanged(row)) continue;
    if (std::exchange(group, row.owner) != row.owner) Print("{}  {}  {}\n", row.key, row.group, row.path);
    Print("  {:<40} {}\n", row.name, LineOf(row));
  }
}

void Get(const Options& options) {
  if (options.json && options.alone) throw WrongUsage("--value cannot be combined with --json");
  SettingsTree tree = Open(options, SettingsTree::For::kShowing);
  const TreeValue& row = FindValue(tree.Values().all, options.name);
  if (options.json) return PrintJson(RowJson(row));
  if (options.alone) return PrintRaw(PlainTextOf(*row.value) + '\n');
  Print("{} = {}\n", row.FullName(), LineOf(row));
}

// ---- changes

void PrintChange(const Options& options, const TreeValue& row, const Json& before) {
  const Json data = DataOf(*row.value);
  if (!options.json)
    return Print("{}: {} -> {}\n", row.FullName(), TextOf(*row.value, before), TextOf(*row.value, data));
  Json json = RowJson(row);
  json["before"] = before;
  PrintJson(json);
}

void Set(const Options& options) {
  SettingsTree tree = Open(options, SettingsTree::For::kChanging);
  TreeValue& row = FindValue(tree.Values().all, options.name);
  RequireUtf8("VALUE", options.value);
  const Json data = DataFromText(*row.value, options.value);
  if (data.is_null() || !Takes(*row.value, data))
    throw WrongUsage(fmt::format("{} takes {}, not \"{}\"", row.FullName(), ExpectedBy(*row.value), options.value));
  const Json before = DataOf(*row.value);
  tree.Values().Set(row, data);
  tree.Save({{&row}});
  PrintChange(options, row, before);
}

void Reset(const Options& options) {
  SettingsTree tree = Open(options, SettingsTree::For::kChanging);
  TreeValue& row = FindValue(tree.Values().all, options.name);
  const Json before = DataOf(*row.value);
  SetData(*row.value, row.defaultData);
  tree.Save({{&row, /*to_default=*/true}});
  PrintChange(options, row, before);
}

// ---- files

void Export(const Options& options) {
  CheckTarget(options.file, options.force);
  SettingsTree tree = Open(options, SettingsTree::For::kComparing);
  const Json all = SettingsJson(tree.Values(), /*changedOnly=*/false);
  WriteWholeFile(options.file, all.dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
}

void Import(const Options& options) {
  SettingsTree tree = Open(options, SettingsTree::For::kChanging);
  const SettingsFile file(options.file, tree.Values());
  const std::vector<SettingChange> changes = file.SetAll();
  if (!changes.empty()) tree.Save(changes);
  if (options.json) return PrintJson({{"changed", changes.size()}, {"values", file.Values().size()}});
  Print("{} of {} values changed\n", changes.size(), file.Values().size());
}

void Diff(const Options& options) {
  SettingsTree tree = Open(options, SettingsTree::For::kComparing);
  const SettingsFile file(options.file, tree.Values());
  Json rows = Json::array();
  for (const SettingsFile::Value& value : file.Values()) {
    const TreeValue& row = *value.row;
    const Json data = DataOf(*row.value);
    if (data == value.data) continue;
    rows.push_back({{"group", row.group},
                    {"path", row.path},
                    {"name", row.name},
                    {"type", TypeOf(*row.value)},
                    {"value", data},
                    {"file", value.data}});
    if (!options.json)
      Print("{}: {}, in the file {}\n", row.FullName(), TextOf(*row.value, data), TextOf(*row.value, value.data));
  }
  const bool differs = !rows.empty();
  if (options.json) PrintJson({{"tree", tree.Values().Name()}, {"differences", std::move(rows)}});
  if (differs) throw FoundErrors();
}

// ---- the command line

struct CommandForm {
  const char* name;
  const char* what;
  const char* help;
  void (*run)(const Options& options);
};

constexpr CommandForm kForms[] = {
    {"list", "Show the values", kListHelp, List},
    {"get", "Show one value", kGetHelp, Get},
    {"set", "Change a value", kSetHelp, Set},
    {"reset", "Set a value to its default", kResetHelp, Reset},
    {"export", "Write all values into a file", kExportHelp, Export},
    {"import", "Set the values of a file", kImportHelp, Import},
    {"diff", "Compare with a file", kDiffHelp, Diff},
};

}  // namespace

void AddSettingsCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kGroupHelp);
  for (const CommandForm& form : kForms) {
    CLI::App& command = *group.add_subcommand(form.name, form.what);
    command.footer(form.help);
    command.add_option("--tree", options.tree, "Whose settings; the document's if there is --document")
        ->check(CLI::IsMember({kApplicationTree, kDocumentTree}));
    command.add_option("--document", options.document, "The document's file");
    const bool named = form.run == Get || form.run == Set || form.run == Reset;
    if (named) command.add_option("NAME", options.name, "The value's name, or GROUP/NAME")->required();
    if (form.run == Set) command.add_option("VALUE", options.value, "The new value")->required();
    if (!named && form.run != List)
      command.add_option("FILE", options.file, "The file; - is the standard input or output")->required();
    if (form.run == List) command.add_flag("--changed", options.changed, "Only values that differ from their default");
    if (form.run == Export) command.add_flag("--force", options.force, "Replace a file that exists");
    if (form.run == Get) command.add_flag("--value", options.alone, "The value alone, for scripts");
    if (form.run != Export) command.add_flag("--json", options.json, "As JSON");
    command.callback([run = form.run] { run(options); });
  }
}

std::vector<std::string> SettingsCandidates(const std::vector<std::string>& words) {
  static const std::set<std::string> kNamed = {"get", "set", "reset"}, kWithValue = {"--tree", "--document"};
  if (words.size() < 2 || !kNamed.contains(words.front()) || words.back().starts_with('-')) return {};
  bool isDocument = false;
  std::size_t at = 1;
  for (; at + 1 < words.size() && kWithValue.contains(words[at]); at += 2)
    isDocument = isDocument || words[at] == "--document" || words[at + 1] == kDocumentTree;
  if (at + 1 != words.size()) return {};  // the words already have a name, or an option has no value
  // The first QFAppSettings of a user writes the toolbar into the registry; a completion must not.
  const QFSettingsKey toolbar(CString(), CString(kProductRoot) + _T("Toolbar"));
  std::unique_ptr<QFSettingsKey> tree;
  if (isDocument) {
    tree = std::make_unique<QFDocSettings>();
  } else if (RegistryKeyHandle(toolbar.GetHandleToKey(/*create=*/0, /*readOnly=*/1))) {
    tree = std::make_unique<QFAppSettings>();
  } else {
    return {};
  }
  std::set<std::string> names;
  for (const TreeValue& row : ValuesOf(*tree, *tree)) {
    if (row.name.find(' ') == std::string::npos) names.insert(row.name);  // the shell would split it
  }
  return {names.begin(), names.end()};
}

}  // namespace kestrova
