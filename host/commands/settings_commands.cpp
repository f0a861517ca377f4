// kestrova settings: lists, changes, exports and compares the settings of the application and of a document.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <optional>
#include <set>

#include "framework/ob_list.h"
#include "host/commands/commands.h"
#include "host/document/document_file.h"
#include "host/document/open_document.h"
#include "host/module/main_module.h"
#include "host/settings/settings_values.h"
#include "host/shell/failure.h"
#include "host/shell/whole_file.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_keys.h"
#include "share/settings/application_settings.h"
#include "share/settings/document_settings.h"
#include "share/settings/registry_text.h"

namespace kestrova {
namespace {

constexpr char kApplication[] = "application";
constexpr char kDocument[] = "document";
constexpr std::size_t kMostImportBytes = 64 << 20;

constexpr char kGroupHelp[] = R"(
The registry stores the application's settings; a document's file, which --document names, stores the document's. If
several groups have a name, the one declared last is meant, which programs find too; GROUP/NAME names one group's value.
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
};

void Print(const Json& json) { fmt::print("{}\n", json.dump(2, ' ', false, Json::error_handler_t::replace)); }

// ---- the tree that a command works on

class Tree {
 public:
  enum class For { kReading, kChanging };

  // Opens the tree that the options name; by default the document's if there is a document, else the application's.
  Tree(const Options& options, For use) : file_(options.document) {
    const bool isDocument = options.tree.empty() ? !file_.empty() : options.tree == kDocument;
    if (!isDocument && !file_.empty()) throw WrongUsage("--document cannot be combined with --tree application");
    name_ = isDocument ? kDocument : kApplication;
    // The settings of a new document are not stored.
    if (isDocument && file_.empty() && use == For::kChanging)
      throw WrongUsage("the document is missing: add --document FILE");
    (isDocument && use == For::kReading ? UseLibrary : StartMainModule)();
    if (!file_.empty()) document_.emplace(file_);
    if (isDocument) {
      defaults_ = std::make_unique<QFDocSettings>();
      tree_ = document_ ? &document_->document->Settings() : &fresh_.emplace();
    } else {
      defaults_ = std::make_unique<QFAppSettings>();
      CArray<int, int> buttons;  // a new tree has the stored buttons, not the defaults
      QFToolbarSettings::GetDefaultButtons(buttons);
      defaults_->SetValue(_T("ToolbarButtons"), buttons);
      tree_ = GetAppSettingsCB();
    }
    values_ = ValuesOf(*tree_, *defaults_);
  }

  const char* Name() const { return name_; }
  std::vector<TreeValue>& Values() { return values_; }

  // Saves all changed values, or none and throws Failure. `reset` removes the values from the registry.
  void Save(const std::vector<TreeValue*>& changed, bool reset) {
    if (document_) {
      document_->document->FreezeIds(false);
      SaveDocument(*document_->document, file_);
      return;
    }
    std::vector<registry_text::Step> steps;
    std::set<std::pair<QFSettingsKey*, std::string>> done;
    for (const TreeValue* row : changed) {
      if (done.emplace(row->owner, row->name).second) AddSteps(*row, reset, steps);
    }
    registry_text::Error error;
    if (!registry_text::Apply(steps, error))
      throw Failure(fmt::format("{}; {}; nothing was changed", error.reason, error.remedy));
  }

 private:
  // Adds the steps for all values of that name, in the order in which the tree saves them. Of a name that is declared
  // twice the registry keeps the first declaration.
  static void AddSteps(const TreeValue& row, bool reset, std::vector<registry_text::Step>& steps) {
    using registry_text::Step;
    const registry_text::KeyName key{HKEY_CURRENT_USER, row.owner->GetPath().GetString()};
    if (reset && !RegistryKeyHandle(row.owner->GetHandleToKey(/*create=*/0, /*readOnly=*/1))) return;
    const CString name = row.value->GetName();
    steps.push_back({Step::Kind::kCreateKey, 0, key, {}, REG_NONE, {}});
    if (reset) {
      steps.push_back({Step::Kind::kDeleteValue, 0, key, name.GetString(), REG_NONE, {}});
      return;
    }
    for (POSITION at = row.owner->GetList().GetHeadPosition(); at;) {
      const auto* value = DYNAMIC_DOWNCAST(QFSettingsValue, row.owner->GetList().GetNext(at));
      if (!value || value->GetName() != name) continue;
      const StoredValue stored = value->ToStored();
      steps.push_back({Step::Kind::kSetValue, 0, key, name.GetString(), stored.type,
                       std::vector<BYTE>(stored.bytes.begin(), stored.bytes.end())});
    }
  }

  const char* name_;
  std::string file_;
  std::optional<OpenDocument> document_;
  std::optional<QFDocSettings> fresh_;
  std::unique_ptr<QFSettingsKey> defaults_;
  QFSettingsKey* tree_;
  std::vector<TreeValue> values_;
};

// ---- output

Json RowOf(const TreeValue& row) {
  return {{"group", row.group},          {"path", row.path},          {"name", row.name}, {"type", TypeOf(*row.value)},
          {"value", DataOf(*row.value)}, {"default", row.defaultData}};
}

bool IsChanged(const TreeValue& row) { return DataOf(*row.value) != row.defaultData; }

Json AllOf(Tree& tree, bool changedOnly) {
  Json rows = Json::array();
  for (const TreeValue& row : tree.Values()) {
    if (!changedOnly || IsChanged(row)) rows.push_back(RowOf(row));
  }
  return {{"tree", tree.Name()}, {"values", std::move(rows)}};
}

std::string LineOf(const TreeValue& row) {
  std::string line = TextOf(*row.value, DataOf(*row.value));
  if (IsChanged(row)) line += fmt::format("  (default {})", TextOf(*row.value, row.defaultData));
  return line;
}

void List(const Options& options) {
  Tree tree(options, Tree::For::kReading);
  if (options.json) return Print(AllOf(tree, options.changed));
  const QFSettingsKey* group = nullptr;
  for (const TreeValue& row : tree.Values()) {
    if (options.changed && !IsChanged(row)) continue;
    if (std::exchange(group, row.owner) != row.owner) fmt::print("{}  {}  {}\n", row.key, row.group, row.path);
    fmt::print("  {:<40} {}\n", row.name, LineOf(row));
  }
}

void Get(const Options& options) {
  Tree tree(options, Tree::For::kReading);
  const TreeValue& row = FindValue(tree.Values(), options.name);
  if (options.json) return Print(RowOf(row));
  fmt::print("{} = {}\n", row.FullName(), LineOf(row));
}

// ---- changes

// Tells the user that a changed value with a name that is declared twice does not last.
void PrintDuplicateNote(Tree& tree, const TreeValue& row) {
  for (const TreeValue& first : tree.Values()) {
    if (first.owner != row.owner || first.name != row.name || first.number != 0) continue;
    if (row.number == 0) return;
    fmt::print("{} is declared twice: the registry keeps the value of the first, {}; this change does not last\n",
               row.FullName(), TextOf(*first.value, DataOf(*first.value)));
    return;
  }
}

void Change(const Options& options, bool reset) {
  Tree tree(options, Tree::For::kChanging);
  TreeValue& row = FindValue(tree.Values(), options.name);
  const Json data = reset ? row.defaultData : DataFromText(*row.value, options.value);
  if (!Takes(*row.value, data))
    throw WrongUsage(fmt::format("{} takes {}, not \"{}\"", row.FullName(), ExpectedBy(*row.value), options.value));
  const std::string before = TextOf(*row.value, DataOf(*row.value));
  SetData(*row.value, data);
  tree.Save({&row}, reset);
  fmt::print("{}: {} -> {}\n", row.FullName(), before, TextOf(*row.value, data));
  if (!reset) PrintDuplicateNote(tree, row);
}

void Set(const Options& options) { Change(options, /*reset=*/false); }
void Reset(const Options& options) { Change(options, /*reset=*/true); }

// ---- files

void Export(const Options& options) {
  CheckTarget(options.file, options.force);
  Tree tree(options, Tree::For::kReading);
  WriteWholeFile(options.file,
                 AllOf(tree, /*changedOnly=*/false).dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
}

struct FileValue {
  TreeValue* row;
  Json data;
};

// Reads a file of settings for the tree. Throws Failure at the first thing in it that is wrong.
class SettingsFile {
 public:
  SettingsFile(const std::string& file, Tree& tree) : file_(file), tree_(tree) {
    const std::string bytes = ReadWholeFile(file, kMostImportBytes);
    if (bytes.size() > kMostImportBytes) Refuse(fmt::format("it is longer than {} MiB", kMostImportBytes >> 20));
    Json json;
    try {
      json = Json::parse(bytes);
    } catch (const Json::parse_error& error) {
      Refuse(fmt::format("byte {}: not valid JSON", error.byte));
    } catch (const Json::out_of_range&) {
      Refuse("a number is larger than any setting takes");
    }
    const auto name = json.is_object() ? json.find("tree") : json.end();
    const auto rows = json.is_object() ? json.find("values") : json.end();
    if (!json.is_object() || name == json.end() || !name->is_string() || rows == json.end() || !rows->is_array())
      Refuse("it is not an export of settings: \"tree\" and \"values\" are missing");
    if (*name != tree.Name())
      Refuse(fmt::format("it contains {} settings, not {} settings; see --tree and --document",
                         name->get<std::string>(), tree.Name()));
    for (const Json& row : *rows) Add(row);
  }

  const std::vector<FileValue>& Values() const { return values_; }

 private:
  [[noreturn]] void Refuse(const std::string& reason) const { throw Failure(fmt::format("{}: {}", file_, reason)); }

  std::string Text(const Json& row, const char* field) const {
    const auto found = row.is_object() ? row.find(field) : row.end();
    if (!row.is_object() || found == row.end() || !found->is_string())
      Refuse(fmt::format("value {} has no \"{}\"", values_.size(), field));
    return found->get<std::string>();
  }

  void Add(const Json& row) {
    const std::string group = Text(row, "group"), path = Text(row, "path"), name = Text(row, "name");
    // The second row of a name belongs to its second declaration.
    const int number = seen_[{group, path, name}]++;
    TreeValue* found = nullptr;
    for (TreeValue& value : tree_.Values()) {
      if (value.name == name && value.group == group && value.path == path && value.number == number) found = &value;
    }
    if (!found && number > 0) Refuse(fmt::format("value {}: {} {} is listed too often", values_.size(), group, name));
    try {
      if (!found) found = &FindValue(tree_.Values(), group + '/' + name);
    } catch (const Failure& failure) {
      Refuse(fmt::format("value {}: {}", values_.size(), failure.what()));
    }
    if (found->path != path)
      Refuse(fmt::format("value {}: {} {} is stored in {}, not in {}", values_.size(), group, name, found->path, path));
    const auto data = row.find("value");
    if (Text(row, "type") != TypeOf(*found->value))
      Refuse(fmt::format("value {}: {} has the type {}", values_.size(), found->FullName(), TypeOf(*found->value)));
    if (data == row.end() || !Takes(*found->value, *data))
      Refuse(fmt::format("value {}: {} takes {}", values_.size(), found->FullName(), ExpectedBy(*found->value)));
    values_.push_back({found, *data});
  }

  const std::string& file_;
  Tree& tree_;
  std::vector<FileValue> values_;
  std::map<std::tuple<std::string, std::string, std::string>, int> seen_;
};

void Import(const Options& options) {
  Tree tree(options, Tree::For::kChanging);
  const SettingsFile file(options.file, tree);
  std::vector<TreeValue*> changed;
  for (const FileValue& value : file.Values()) {
    if (DataOf(*value.row->value) == value.data) continue;
    SetData(*value.row->value, value.data);
    changed.push_back(value.row);
  }
  if (!changed.empty()) tree.Save(changed, /*reset=*/false);
  fmt::print("{} of {} values changed\n", changed.size(), file.Values().size());
  for (const TreeValue* row : changed) PrintDuplicateNote(tree, *row);
}

void Diff(const Options& options) {
  Tree tree(options, Tree::For::kReading);
  const SettingsFile file(options.file, tree);
  Json rows = Json::array();
  for (const FileValue& value : file.Values()) {
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
      fmt::print("{}: {}, in the file {}\n", row.FullName(), TextOf(*row.value, data), TextOf(*row.value, value.data));
  }
  if (options.json) Print({{"tree", tree.Name()}, {"differences", rows}});
  if (!rows.empty()) throw FoundErrors();
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
        ->check(CLI::IsMember({kApplication, kDocument}));
    command.add_option("--document", options.document, "The document's file");
    const bool named = form.run == Get || form.run == Set || form.run == Reset;
    if (named) command.add_option("NAME", options.name, "The value's name, or GROUP/NAME")->required();
    if (form.run == Set) command.add_option("VALUE", options.value, "The new value")->required();
    if (!named && form.run != List) command.add_option("FILE", options.file, "The file")->required();
    if (form.run == List) command.add_flag("--changed", options.changed, "Only values that differ from their default");
    if (form.run == Export) command.add_flag("--force", options.force, "Replace a file that exists");
    if (form.run == List || form.run == Get || form.run == Diff) command.add_flag("--json", options.json, "As JSON");
    command.callback([run = form.run] { run(options); });
  }
}

std::vector<std::string> SettingsCandidates(const std::vector<std::string>& words) {
  static const std::set<std::string> kNamed = {"get", "set", "reset"}, kWithValue = {"--tree", "--document"};
  if (words.size() < 2 || !kNamed.contains(words.front()) || words.back().starts_with('-')) return {};
  bool isDocument = false;
  std::size_t at = 1;
  for (; at + 1 < words.size() && kWithValue.contains(words[at]); at += 2)
    isDocument = isDocument || words[at] == "--document" || words[at + 1] == kDocument;
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
