// kestrova machine: lists, exports, shows and checks the machine definitions of the simulator, and begins new ones.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/machine/machine_failure.h"
#include "host/machine/machine_folder.h"
#include "host/machine/machine_skeleton.h"
#include "host/machine/machine_tree.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/nearest_names.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "share/machine/machine.h"
#include "share/machine/machine_check.h"
#include "share/machine/machine_schema.h"
#include "share/settings/settings_key.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr LPCTSTR kMachinePathSetting = _T("SimulationMachinePath");

constexpr char kGroupHelp[] = R"(
--machines names the folder with the folders Mill, Turn and MillTurn; by default it is the environment's folder of
machines. --type is needed only if machines of several types have the same name.

  kestrova machine list
  kestrova machine check Vertical850)";

constexpr char kListHelp[] = R"(
Lists the machines that have a definition, KestrovaAPT.xml.
JSON: {"folder", "machines": [{"type", "name", "file"}]}.

  kestrova machine list --json
)";

constexpr char kExportHelp[] = R"(
Writes KestrovaAPT.txt for the simulator beside the definition. If that fails, an old file stays as it was. A name with
a control character, such as a line end, would break the lines of the file and is refused.
JSON: {"file", "counts": {"channels", "stations", "fixtures", "shapes", "shapeLists"}}.

  kestrova machine export --type Mill Vertical850
)";

constexpr char kShowHelp[] = R"(
Shows channels, tool targets, stations, fixtures, shapes below their parents and shape lists, as the reader got them.

  kestrova machine show --type MillTurn TwinTurret12
  kestrova machine show --type MillTurn TwinTurret12 --json
)";

constexpr char kCheckHelp[] = R"(
Lists the faults that the reader ignores, as FILE:LINE:COLUMN: GRADE: TEXT. An error is something that is lost, replaced
or never exported, or that XML forbids. A note is something that the export file has no place for. The exit code is 1 if
there are errors.
--schema checks by the XML schema instead: names in capitals, required attributes, numbers and words. It is stricter
than the reader and has errors only. The schema is what `kestrova machine schema` prints.
JSON: {"file", "errors", "warnings", "notes", "more", "findings": [{"line", "column", "grade", "text"}]}.

  kestrova machine check --type Mill Trunnion500
  kestrova machine check --schema Trunnion500
)";

constexpr char kSchemaHelp[] = R"(
Prints the XML schema of definitions, by which an editor completes names and checks values. The installation has it as
kestrova-apt.xsd in the folder of machines, beside Mill, Turn and MillTurn.

  kestrova machine schema > kestrova-apt.xsd
)";

constexpr char kNewHelp[] = R"(
Writes the commented definition of a small machine, with its solids, to the folder of machines, and prints its path. The
check finds no fault in it. Missing folders are made; the schema is added to the folder of machines if it is not there.
A definition that exists stays as it is.

  kestrova machine new --type Mill --machines . MyMill
)";

struct Options {
  std::string machines;
  std::string type;
  std::string name;
  bool json = false;
  bool schema = false;
};

std::string SystemPath(const CString& path) { return SystemPathFromProduct(path); }

CString WithBackslash(CString folder) {
  if (folder.IsEmpty() || folder[folder.GetLength() - 1] != _T('\\')) folder += _T('\\');
  return folder;
}

// The folder of the machines as a product path with a backslash at the end.
CString FolderOf(const Options& options) {
  CString folder(ProductPathFromSystem(options.machines).c_str());
  if (options.machines.empty()) {
    StartMainModule();
    folder = AppEnv()->GetDefaultSimulationMachineFolderPath();
  }
  if (folder.IsEmpty()) throw Failure("the environment has no folder of machines; name one with --machines");
  folder = WithBackslash(folder);
  const DWORD attributes = GetFileAttributesW(folder);
  if (attributes == INVALID_FILE_ATTRIBUTES)
    throw Failure(
        fmt::format("cannot read the folder of machines {}: {}", SystemPath(folder), ErrorText(GetLastError())));
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY))
    throw Failure(fmt::format("{} is no folder; --machines needs the folder of the machines", SystemPath(folder)));
  return folder;
}

// ---- one machine

void CheckName(const std::string& name) {
  if (name.empty() || name.find_first_of("/\\") != std::string::npos || name == "." || name == "..")
    throw WrongUsage("NAME \"" + name + "\" is not the name of a machine's folder");
}

[[noreturn]] void RefuseUnknown(const Options& options, const CString& folder) {
  std::vector<std::string> names;
  for (const MachineEntry& machine : MachinesIn(folder)) names.push_back(machine.name);
  const std::string kind = options.type.empty() ? "machine" : options.type + " machine";
  throw NotFound(fmt::format("there is no {} {} in {}{}", kind, options.name, SystemPath(folder),
                             NearestOr(names, options.name, "kestrova machine list shows them")));
}

// The machine that the options name.
struct Chosen {
  CString folder;  // of all machines
  std::string type;
  std::string name;

  CString Definition() const { return DefinitionPath(folder, type, name); }
  VM_MACHINE_TYPE Type() const {
    VM_MACHINE_TYPE value = VM_MACHINE_MILL;
    ReadText(type, value);
    return value;
  }
};

Chosen Choose(const Options& options) {
  CheckName(options.name);
  const CString folder = FolderOf(options);
  std::vector<std::string> types;
  for (const std::string& type : MachineTypes()) {
    if (!options.type.empty() && type != options.type) continue;
    if (_waccess(DefinitionPath(folder, type, options.name), 0) == 0) types.push_back(type);
  }
  if (types.size() > 1)
    throw WrongUsage(
        fmt::format("{} machines are named {}; choose one with --type", fmt::join(types, " and "), options.name));
  if (types.empty()) RefuseUnknown(options, folder);
  return {folder, types.front(), options.name};
}

// ---- loading

// Application settings in memory, for a process without application settings.
QFSettingsKey* RunSettings() {
  static QFSettingsKey* const settings = [] {
    static QFSettingsKey tree;
    tree.AddValue(kMachinePathSetting, CString());
    return &tree;
  }();
  return settings;
}

void SetMachinePath(const CString& folder) {
  if (!GetAppSettingsCB()) {
    QFShareRegisterDocCBK(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, RunSettings, nullptr, nullptr,
                          nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  GetAppSettingsCB()->SetValue(kMachinePathSetting, folder);
}

void Load(const Chosen& chosen, KVVMMachine& machine) {
  SetMachinePath(chosen.folder);
  CString name = ProductName(chosen.name);
  if (machine.LoadMachine(chosen.Type(), name)) return;
  const MachineLoadFailure& failure = machine.GetLoadFailure();
  if (failure.kind == MachineLoadFailure::Kind::kDefinition)
    throw MachineFailure(SystemPath(failure.file), failure.xml);
  throw Failure("the machine could not be loaded: no application settings");
}

// ---- the commands

void List(const Options& options) {
  const CString folder = FolderOf(options);
  const std::vector<MachineEntry> machines = MachinesIn(folder, options.type);
  if (options.json) {
    Json rows = Json::array();
    for (const MachineEntry& machine : machines)
      rows.push_back({{"type", machine.type}, {"name", machine.name}, {"file", SystemPath(machine.definition)}});
    return PrintJson({{"folder", SystemPath(folder)}, {"machines", rows}});
  }
  if (machines.empty()) Print("no machines in {}\n", SystemPath(folder));
  for (const MachineEntry& machine : machines) Print("{:<9}{}\n", machine.type, machine.name);
}

void Export(const Options& options) {
  const Chosen chosen = Choose(options);
  KVVMMachine machine;
  Load(chosen, machine);
  const std::string definition = SystemPath(chosen.Definition());
  if (const std::string forged = FindForgedLine(machine); !forged.empty()) {
    throw Failure(
        fmt::format("{}: {}; nothing was exported, and kestrova machine check shows the place", definition, forged),
        {.file = definition});
  }
  machine.ExportData();
  const MachineExportFailure& failure = machine.GetExportFailure();
  switch (failure.kind) {
    case MachineExportFailure::Kind::kNone: break;
    case MachineExportFailure::Kind::kNoChannels:
      throw Failure(fmt::format("nothing to export: {} declares 0 channels (NUM of CHANNELS)", definition),
                    {.file = definition});
    case MachineExportFailure::Kind::kNoShapes:
      throw Failure(fmt::format("nothing to export: {} declares 0 shapes (NUM of SHAPES)", definition),
                    {.file = definition});
    case MachineExportFailure::Kind::kNotWritten: throw Failure(failure.reason, {.file = SystemPath(failure.file)});
  }
  if (!options.json) return Print("{}\n{}\n", SystemPath(failure.file), MachineSummary(machine));
  const MachineCounts counts = CountsOf(machine);
  PrintJson({{"file", SystemPath(failure.file)},
             {"counts",
              {{"channels", counts.channels},
               {"stations", counts.stations},
               {"fixtures", counts.fixtures},
               {"shapes", counts.shapes},
               {"shapeLists", counts.shapeLists}}}});
}

void Show(const Options& options) {
  KVVMMachine machine;
  Load(Choose(options), machine);
  options.json ? PrintMachineJson(machine) : PrintMachineTree(machine);
}

// A definition that is not well-formed has one finding.
MachineCheckResult CheckOf(const CString& definition, bool schema) {
  MachineCheckResult result = schema ? CheckMachineFileBySchema(definition) : CheckMachineFile(definition);
  if (result.failure.kind == KVXMLFailure::Kind::kNone) return result;
  if (result.failure.kind != KVXMLFailure::Kind::kMalformed)
    throw MachineFailure(SystemPath(definition), result.failure);
  result.findings.push_back({MachineFindingGrade::kError, result.failure.place,
                             fmt::format("{} (byte {}); nothing is read", result.failure.reason, result.failure.byte)});
  return result;
}

void PrintFindings(const std::string& file, const MachineCheckResult& result) {
  for (const MachineFinding& finding : result.findings)
    Print("{}:{}:{}: {}: {}\n", file, finding.place.line, finding.place.column, TextOf(finding.grade), finding.text);
  if (result.findings.empty()) return Print("{}: nothing found\n", file);
  Print("{}, {}, {}{}\n", Counted(result.Count(MachineFindingGrade::kError), "error"),
        Counted(result.Count(MachineFindingGrade::kWarning), "warning"),
        Counted(result.Count(MachineFindingGrade::kNote), "note"), result.more ? ", and more" : "");
}

void PrintFindingsJson(const std::string& file, const MachineCheckResult& result) {
  JsonPrinter json;
  json.Add("file", file);
  json.Add("errors", result.Count(MachineFindingGrade::kError));
  json.Add("warnings", result.Count(MachineFindingGrade::kWarning));
  json.Add("notes", result.Count(MachineFindingGrade::kNote));
  json.Add("more", result.more);
  json.Open("findings", '[');
  for (const MachineFinding& finding : result.findings) {
    json.Add({}, {{"line", finding.place.line},
                  {"column", finding.place.column},
                  {"grade", TextOf(finding.grade)},
                  {"text", finding.text}});
  }
  json.Close();
  json.Close();
}

void Check(const Options& options) {
  const CString definition = Choose(options).Definition();
  const MachineCheckResult result = CheckOf(definition, options.schema);
  const std::string file = SystemPath(definition);
  options.json ? PrintFindingsJson(file, result) : PrintFindings(file, result);
  if (result.Count(MachineFindingGrade::kError) > 0) throw FoundErrors();
}

// ---- a new machine

void Schema(const Options&) { PrintRaw(MachineSchema()); }

// Names that another system can't have, or that the product's paths change, are refused.
void CheckNewName(const std::string& name) {
  CheckName(name);
  if (name.find_first_of("<>:\"|?*") != std::string::npos || name.ends_with('.') || name.ends_with(' ') ||
      name != Harmless(name)) {
    throw WrongUsage(
        "NAME \"" + name +
        "\" has a character that a folder's name can't have on every system, or ends with a point or a blank");
  }
}

void MakeFolder(const CString& folder) {
  if (CreateDirectoryW(folder, nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) return;
  throw Failure(fmt::format("cannot make the folder {}: {}", SystemPath(folder), ErrorText(GetLastError())));
}

void New(const Options& options) {
  CheckNewName(options.name);
  if (options.type.empty()) throw WrongUsage("machine new needs --type Mill, Turn or MillTurn");
  const Chosen machine = {FolderOf(options), options.type, options.name};
  const CString definition = machine.Definition();
  const std::string file = SystemPath(definition);
  if (_waccess(definition, 0) == 0) throw Failure(file + " exists; choose another NAME", {.file = file});
  const CString types = machine.folder + ProductName(options.type);
  const CString folder = types + _T("\\") + ProductName(options.name);
  MakeFolder(types);
  MakeFolder(folder);
  const CString schema = machine.folder + FromUtf8(kMachineSchemaFile);
  if (_waccess(schema, 0) != 0) WriteWholeFile(SystemPath(schema), MachineSchema());
  for (const auto& [name, bytes] : SkeletonSolids(machine.Type())) {
    const CString solid = folder + _T("\\") + ProductName(name);
    if (_waccess(solid, 0) != 0) WriteWholeFile(SystemPath(solid), bytes);
  }
  WriteWholeFile(file, SkeletonDefinition(machine.Type()));
  Print("{}\n", file);
}

struct Verb {
  const char* name;
  const char* summary;
  const char* help;
  bool named;  // needs the name of a machine
  void (*run)(const Options&);
  bool answers = true;  // reads machines, and prints JSON
};

constexpr Verb kVerbs[] = {
    {"list", "List the machines", kListHelp, /*named=*/false, List},
    {"export", "Write the text file for the simulator", kExportHelp, /*named=*/true, Export},
    {"show", "Show a machine as a tree", kShowHelp, /*named=*/true, Show},
    {"check", "Find faults in a definition", kCheckHelp, /*named=*/true, Check},
    {"new", "Begin a definition with a small machine", kNewHelp, /*named=*/true, New, /*answers=*/false},
    {"schema", "Print the XML schema of definitions", kSchemaHelp, /*named=*/false, Schema, /*answers=*/false},
};

}  // namespace

void AddMachineCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kGroupHelp);
  for (const Verb& verb : kVerbs) {
    CLI::App* command = group.add_subcommand(verb.name, verb.summary);
    command->footer(verb.help);
    if (verb.answers || verb.named) {
      command->add_option("--machines", options.machines, "The folder with the folders Mill, Turn and MillTurn")
          ->type_name("DIR");
      command->add_option("--type", options.type, "The kind of machine")->check(CLI::IsMember(MachineTypes()));
    }
    if (verb.named) command->add_option("NAME", options.name, "The name of the machine's folder")->required();
    if (verb.run == Check) command->add_flag("--schema", options.schema, "Check by the XML schema");
    if (verb.answers) command->add_flag("--json", options.json, "As JSON");
    command->callback([&verb] { verb.run(options); });
  }
}

// A shell would split a name with one of these, or run a part of it: some put a candidate into the line as it is.
constexpr char kShellMarks[] = " \t\r\n;&|<>()$`\\\"'*?[]{}#~!=";

std::vector<std::string> MachineCandidates(const std::vector<std::string>& words) {
  const auto isNamed = [&](const Verb& verb) { return verb.named && verb.answers && words.front() == verb.name; };
  if (words.size() < 2 || std::ranges::none_of(kVerbs, isNamed) || words.back().starts_with('-')) return {};
  Options options;
  for (std::size_t at = 1; at + 1 < words.size(); ++at) {
    if (words[at] == "--json" || words[at] == "--schema") continue;
    std::string* value = words[at] == "--machines" ? &options.machines
                         : words[at] == "--type"   ? &options.type
                                                   : nullptr;
    if (!value || ++at + 1 >= words.size()) return {};  // there is a name already, or the value is being typed
    *value = words[at];
  }
  // A start of the environment writes into the registry, which a completion must not.
  CString folder(ProductPathFromSystem(options.machines).c_str());
  for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    if (folder.IsEmpty()) folder = GetRegSettingStringValue(hive, kVersionKey, kMachinePathSetting);
  }
  std::vector<std::string> names;
  if (folder.IsEmpty()) return names;
  for (MachineEntry& machine : MachinesIn(WithBackslash(folder), options.type)) {
    if (machine.name.find_first_of(kShellMarks) == std::string::npos) names.push_back(std::move(machine.name));
  }
  return names;
}

}  // namespace kestrova
