// kestrova settings: the application's and a document's settings, listed, changed, exported and compared.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <optional>
#include <set>

#include "framework/ob_list.h"
#include "host/commands/commands.h"
#include "host/document/document_file.h"
#include "host/document/open_document.h"
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
The application's settings lie in the registry, those of a document in its file, which --document names. A name that
stands in several groups means the one that programs find, declared last; GROUP/NAME names one of a group. Changing a
document saves it.

  kestrova settings list --changed
  kestrova settings set Display/LineWidth 3
  kestrova settings set Feature "#00FF80" --document part.kvdoc
  kestrova settings export mine.json)";

constexpr char kListHelp[] = R"(
Shows every value in the order of declaration. Without --document, --tree document shows what a new document has.

  kestrova settings list
  kestrova settings list --tree document --document part.kvdoc --changed --json)";

constexpr char kGetHelp[] = R"(
  kestrova settings get LineWidth
  kestrova settings get Oper_Filter3/DiaTo --json)";

constexpr char kSetHelp[] = R"(
VALUE is a number; a text; a colour as #RRGGBB; a point as x,y; a rect as left,top,right,bottom; a time in seconds since
1970; an int array as numbers with commas. Behind -- it may begin with a minus.

  kestrova settings set ThreadNum 8
  kestrova settings set ToolBarLocation -- -20,143)";

constexpr char kResetHelp[] = R"(
Gives a value its default again: it is taken out of the registry.

  kestrova settings reset LineWidth)";

constexpr char kExportHelp[] = R"(
Writes what list --json prints into FILE.

  kestrova settings export mine.json
  kestrova settings export colours.json --document part.kvdoc)";

constexpr char kImportHelp[] = R"(
Takes over the values that FILE holds, in the form that export writes; values may be missing there. Everything is
checked first: one wrong value, and nothing is changed.

  kestrova settings import mine.json)";

constexpr char kDiffHelp[] = R"(
Shows the values that differ from those in FILE, which export wrote. Ends with 1 if there are any.

  kestrova settings diff mine.json)";

// What the command line said.
struct Given {
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

  // Opens the tree that was asked for: the application's unless a document is named.
  Tree(const Given& given, For use) : file_(given.document) {
    const bool isDocument = given.tree.empty() ? !file_.empty() : given.tree == kDocument;
    if (!isDocument && !file_.empty()) throw WrongUsage("--document doesn't go with --tree application");
    name_ = isDocument ? kDocument : kApplication;
    // A new document's settings lie nowhere.
    if (isDocument && file_.empty() && use == For::kChanging)
      throw WrongUsage("the document is missing: add --document FILE");
    (isDocument && use == For::kReading ? UseLibrary : StartMainModule)();
    if (!file_.empty()) document_.emplace(file_);
    if (isDocument) {
      defaults_ = std::make_unique<QFDocSettings>();
      tree_ = document_ ? &document_->document->Settings() : &fresh_.emplace();
    } else {
      defaults_ = std::make_unique<QFAppSettings>();
      CArray<int, int> buttons;  // the tree itself begins with what is stored
      QFToolbarSettings::GetDefaultButtons(buttons);
      defaults_->SetValue(_T("ToolbarButtons"), buttons);
      tree_ = GetAppSettingsCB();
    }
    values_ = ValuesOf(*tree_, *defaults_);
  }

  const char* Name() const { return name_; }
  std::vector<TreeValue>& Values() { return values_; }

  // Saves what has been changed: all of it or, with Failure, nothing. What `reset` names leaves the registry.
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
  // Writes all values of that name as saving the tree does: head first, so that of a name that is declared twice the
  // first declaration stays.
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

// ---- what is shown

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

void List(const Given& given) {
  Tree tree(given, Tree::For::kReading);
  if (given.json) return Print(AllOf(tree, given.changed));
  const QFSettingsKey* group = nullptr;
  for (const TreeValue& row : tree.Values()) {
    if (given.changed && !IsChanged(row)) continue;
    if (std::exchange(group, row.owner) != row.owner) fmt::print("{}  {}  {}\n", row.key, row.group, row.path);
    fmt::print("  {:<40} {}\n", row.name, LineOf(row));
  }
}

void Get(const Given& given) {
  Tree tree(given, Tree::For::kReading);
  const TreeValue& row = FindValue(tree.Values(), given.name);
  if (given.json) return Print(RowOf(row));
  fmt::print("{} = {}\n", row.FullName(), LineOf(row));
}

// ---- changes

// What becomes of a change to a name that is declared twice.
void TellOfDuplicate(Tree& tree, const TreeValue& row) {
  for (const TreeValue& first : tree.Values()) {
    if (first.owner != row.owner || first.name != row.name || first.number != 0) continue;
    if (row.number == 0) return;
    fmt::print("{} is declared twice: the registry keeps the first one's value, {}, so that the change does not last\n",
               row.FullName(), TextOf(*first.value, DataOf(*first.value)));
    return;
  }
}

void Change(const Given& given, bool reset) {
  Tree tree(given, Tree::For::kChanging);
  TreeValue& row = FindValue(tree.Values(), given.name);
  const Json data = reset ? row.defaultData : DataFromText(*row.value, given.value);
  if (!Takes(*row.value, data))
    throw Failure(fmt::format("{} takes {}, not \"{}\"", row.FullName(), WantedBy(*row.value), given.value));
  const std::string before = TextOf(*row.value, DataOf(*row.value));
  SetData(*row.value, data);
  tree.Save({&row}, reset);
  fmt::print("{}: {} -> {}\n", row.FullName(), before, TextOf(*row.value, data));
  if (!reset) TellOfDuplicate(tree, row);
}

void Set(const Given& given) { Change(given, /*reset=*/false); }
void Reset(const Given& given) { Change(given, /*reset=*/true); }

// ---- files

void Export(const Given& given) {
  CheckTarget(given.file, given.force);
  Tree tree(given, Tree::For::kReading);
  WriteWholeFile(given.file,
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
    if (bytes.size() > kMostImportBytes) Refuse("it is too long");
    Json json;
    try {
      json = Json::parse(bytes);
    } catch (const Json::parse_error& error) {
      Refuse(fmt::format("byte {}: it is no JSON", error.byte));
    } catch (const Json::out_of_range&) {
      Refuse("a number in it is larger than any setting takes");
    }
    const auto name = json.is_object() ? json.find("tree") : json.end();
    const auto rows = json.is_object() ? json.find("values") : json.end();
    if (!json.is_object() || name == json.end() || !name->is_string() || rows == json.end() || !rows->is_array())
      Refuse("it is no export of settings: \"tree\" and \"values\" are missing");
    if (*name != tree.Name())
      Refuse(fmt::format("it holds {} settings, not {} ones; see --tree and --document", name->get<std::string>(),
                         tree.Name()));
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
    // The second row of a name is for its second declaration.
    const int number = seen_[{group, path, name}]++;
    TreeValue* found = nullptr;
    for (TreeValue& value : tree_.Values()) {
      if (value.name == name && value.group == group && value.path == path && value.number == number) found = &value;
    }
    if (!found && number > 0)
      Refuse(fmt::format("value {}: {} {} stands there too often", values_.size(), group, name));
    try {
      if (!found) found = &FindValue(tree_.Values(), group + '/' + name);
    } catch (const Failure& failure) {
      Refuse(fmt::format("value {}: {}", values_.size(), failure.what()));
    }
    if (found->path != path)
      Refuse(fmt::format("value {}: {} {} lies in {}, not {}", values_.size(), group, name, found->path, path));
    const auto data = row.find("value");
    if (Text(row, "type") != TypeOf(*found->value))
      Refuse(fmt::format("value {}: {} is of the type {}", values_.size(), found->FullName(), TypeOf(*found->value)));
    if (data == row.end() || !Takes(*found->value, *data))
      Refuse(fmt::format("value {}: {} takes {}", values_.size(), found->FullName(), WantedBy(*found->value)));
    values_.push_back({found, *data});
  }

  const std::string& file_;
  Tree& tree_;
  std::vector<FileValue> values_;
  std::map<std::tuple<std::string, std::string, std::string>, int> seen_;
};

void Import(const Given& given) {
  Tree tree(given, Tree::For::kChanging);
  const SettingsFile file(given.file, tree);
  std::vector<TreeValue*> changed;
  for (const FileValue& value : file.Values()) {
    if (DataOf(*value.row->value) == value.data) continue;
    SetData(*value.row->value, value.data);
    changed.push_back(value.row);
  }
  if (!changed.empty()) tree.Save(changed, /*reset=*/false);
  fmt::print("{} of {} values changed\n", changed.size(), file.Values().size());
  for (const TreeValue* row : changed) TellOfDuplicate(tree, *row);
}

void Diff(const Given& given) {
  Tree tree(given, Tree::For::kReading);
  const SettingsFile file(given.file, tree);
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
    if (!given.json)
      fmt::print("{}: {}, in the file {}\n", row.FullName(), TextOf(*row.value, data), TextOf(*row.value, value.data));
  }
  if (given.json) Print({{"tree", tree.Name()}, {"differences", rows}});
  if (!rows.empty()) throw FoundErrors();
}

// ---- the command line

struct CommandForm {
  const char* name;
  const char* what;
  const char* help;
  void (*run)(const Given& given);
};

constexpr CommandForm kForms[] = {
    {"list", "Show the values", kListHelp, List},
    {"get", "Show one value", kGetHelp, Get},
    {"set", "Change a value", kSetHelp, Set},
    {"reset", "Give a value its default again", kResetHelp, Reset},
    {"export", "Write all values into a file", kExportHelp, Export},
    {"import", "Take over the values of a file", kImportHelp, Import},
    {"diff", "Compare with a file", kDiffHelp, Diff},
};

}  // namespace

void AddSettingsCommands(CLI::App& group) {
  static Given given;
  group.require_subcommand(1);
  group.footer(kGroupHelp);
  for (const CommandForm& form : kForms) {
    CLI::App& command = *group.add_subcommand(form.name, form.what);
    command.footer(form.help);
    command.add_option("--tree", given.tree, "Whose settings; a document's if --document is given")
        ->check(CLI::IsMember({kApplication, kDocument}));
    command.add_option("--document", given.document, "The document's file");
    const bool named = form.run == Get || form.run == Set || form.run == Reset;
    if (named) command.add_option("NAME", given.name, "The value's name, or GROUP/NAME")->required();
    if (form.run == Set) command.add_option("VALUE", given.value, "What it is to be")->required();
    if (!named && form.run != List) command.add_option("FILE", given.file, "The file")->required();
    if (form.run == List) command.add_flag("--changed", given.changed, "Only what differs from its default");
    if (form.run == Export) command.add_flag("--force", given.force, "Replace a file that exists");
    if (form.run == List || form.run == Get || form.run == Diff) command.add_flag("--json", given.json, "As JSON");
    command.callback([run = form.run] { run(given); });
  }
}

std::vector<std::string> SettingsCandidates(const std::vector<std::string>& words) {
  static const std::set<std::string> kNamed = {"get", "set", "reset"}, kWithValue = {"--tree", "--document"};
  if (words.size() < 2 || !kNamed.contains(words.front()) || words.back().starts_with('-')) return {};
  bool isDocument = false;
  std::size_t at = 1;
  for (; at + 1 < words.size() && kWithValue.contains(words[at]); at += 2)
    isDocument = isDocument || words[at] == "--document" || words[at + 1] == kDocument;
  if (at + 1 != words.size()) return {};  // the name stands there already, or an option's value is missing
  // Building the application's tree for the first time writes into the registry, which a completion doesn't.
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
    if (row.name.find(' ') == std::string::npos) names.insert(row.name);  // the shell would take it apart
  }
  return {names.begin(), names.end()};
}

}  // namespace kestrova
