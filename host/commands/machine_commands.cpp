// kestrova machine: exports, shows and checks the machine definitions of the simulator.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/machine/machine_tree.h"
#include "host/shell/failure.h"
#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/machine/machine.h"
#include "share/machine/machine_check.h"
#include "share/settings/settings_key.h"

namespace kestrova {
namespace {

constexpr LPCTSTR kMachinePathSetting = _T("SimulationMachinePath");

constexpr char kExportHelp[] = R"(
Writes KestrovaAPT.txt for the simulator beside the definition. If that fails, an old file stays as it was.

  kestrova machine export --type Mill Vertical850
)";

constexpr char kShowHelp[] = R"(
Shows channels, tool targets, stations, fixtures, shapes below their parents and shape lists, as the reader got them.

  kestrova machine show --type MillTurn TwinTurret12
  kestrova machine show --type MillTurn TwinTurret12 --json
)";

constexpr char kCheckHelp[] = R"(
Lists the faults that the reader ignores, as FILE:LINE:COLUMN: GRADE: TEXT. An error is something that is lost, replaced
or never exported. The exit code is 1 if there are errors.

  kestrova machine check --type Mill Trunnion500
)";

struct Options {
  std::string machines;
  std::string type;
  std::string name;
  bool json = false;

  // The folder of the machines as a product path with a backslash at the end.
  CString Folder() const {
    CString folder(ProductPathFromSystem(machines).c_str());
    if (folder.IsEmpty() || folder[folder.GetLength() - 1] != _T('\\')) folder += _T('\\');
    return folder;
  }
  VM_MACHINE_TYPE Type() const {
    VM_MACHINE_TYPE value = VM_MACHINE_MILL;
    ReadText(type, value);
    return value;
  }
  CString Definition() const {
    return Folder() + FromUtf8(type) + _T("\\") + FromUtf8(name) + _T("\\") + KVVMMachine::kDefinitionFile;
  }
};

std::string SystemPath(const CString& path) { return SystemPathFromProduct(path); }

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

// "FILE:LINE:COLUMN (byte N): REASON" or "cannot read FILE: REASON".
std::string ReadingFailure(const CString& file, const KVXMLFailure& failure) {
  const std::string path = SystemPath(file);
  switch (failure.kind) {
    case KVXMLFailure::Kind::kMalformed:
      return fmt::format("{}:{}:{} (byte {}): {}", path, failure.place.line, failure.place.column, failure.byte,
                         failure.reason);
    case KVXMLFailure::Kind::kMissing:
      return fmt::format("there is no machine definition {}; see --machines, --type and NAME", path);
    default: return fmt::format("cannot read {}: {}", path, failure.reason);
  }
}

void CheckName(const Options& options) {
  if (options.name.empty() || options.name.find_first_of("/\\") != std::string::npos || options.name == "." ||
      options.name == "..") {
    throw WrongUsage("NAME \"" + options.name + "\" is not the name of a machine's folder");
  }
}

void Load(const Options& options, KVVMMachine& machine) {
  CheckName(options);
  SetMachinePath(options.Folder());
  CString name = FromUtf8(options.name);
  if (machine.LoadMachine(options.Type(), name)) return;
  const MachineLoadFailure& failure = machine.GetLoadFailure();
  if (failure.kind == MachineLoadFailure::Kind::kDefinition) throw Failure(ReadingFailure(failure.file, failure.xml));
  throw Failure("the machine could not be loaded: no application settings");
}

void Export(const Options& options) {
  KVVMMachine machine;
  Load(options, machine);
  machine.ExportData();
  const MachineExportFailure& failure = machine.GetExportFailure();
  const std::string definition = SystemPath(options.Definition());
  switch (failure.kind) {
    case MachineExportFailure::Kind::kNone: break;
    case MachineExportFailure::Kind::kNoChannels:
      throw Failure(fmt::format("nothing to export: {} declares 0 channels (NUM of CHANNELS)", definition));
    case MachineExportFailure::Kind::kNoShapes:
      throw Failure(fmt::format("nothing to export: {} declares 0 shapes (NUM of SHAPES)", definition));
    case MachineExportFailure::Kind::kNotWritten: throw Failure(failure.reason);
  }
  fmt::print("{}\n{}\n", SystemPath(failure.file), MachineSummary(machine));
}

void Show(const Options& options) {
  KVVMMachine machine;
  Load(options, machine);
  fmt::print("{}", options.json ? MachineJson(machine).dump(2) + "\n" : MachineTree(machine));
}

std::string FindingsText(const std::string& file, const MachineCheckResult& result) {
  std::string text;
  for (const MachineFinding& finding : result.findings) {
    text += fmt::format("{}:{}:{}: {}: {}\n", file, finding.place.line, finding.place.column, TextOf(finding.grade),
                        finding.text);
  }
  if (result.findings.empty()) return fmt::format("{}: nothing found\n", file);
  return text + fmt::format("{} errors, {} warnings, {} notes{}\n", result.Count(MachineFindingGrade::kError),
                            result.Count(MachineFindingGrade::kWarning), result.Count(MachineFindingGrade::kNote),
                            result.more ? ", and more" : "");
}

std::string FindingsJson(const std::string& file, const MachineCheckResult& result) {
  nlohmann::ordered_json findings = nlohmann::ordered_json::array();
  for (const MachineFinding& finding : result.findings) {
    findings.push_back({{"line", finding.place.line},
                        {"column", finding.place.column},
                        {"grade", TextOf(finding.grade)},
                        {"text", finding.text}});
  }
  const nlohmann::ordered_json all = {{"file", file},
                                      {"errors", result.Count(MachineFindingGrade::kError)},
                                      {"warnings", result.Count(MachineFindingGrade::kWarning)},
                                      {"notes", result.Count(MachineFindingGrade::kNote)},
                                      {"more", result.more},
                                      {"findings", findings}};
  return all.dump(2) + "\n";
}

void Check(const Options& options) {
  CheckName(options);
  const CString definition = options.Definition();
  const MachineCheckResult result = CheckMachineFile(definition);
  if (result.failure.kind != KVXMLFailure::Kind::kNone) throw Failure(ReadingFailure(definition, result.failure));
  const std::string file = SystemPath(definition);
  fmt::print("{}", options.json ? FindingsJson(file, result) : FindingsText(file, result));
  if (result.Count(MachineFindingGrade::kError) > 0) throw FoundErrors();
}

CLI::App* AddCommand(CLI::App& group, const char* name, const char* what, const char* help, Options& options,
                     void (*run)(const Options&)) {
  CLI::App* command = group.add_subcommand(name, what);
  command->footer(help);
  command->add_option("--machines", options.machines, "The folder with the folders Mill, Turn and MillTurn")
      ->type_name("DIR")
      ->required();
  command->add_option("--type", options.type, "The kind of machine")
      ->check(CLI::IsMember({"Mill", "Turn", "MillTurn"}))
      ->required();
  command->add_option("NAME", options.name, "The machine's name, which is its folder's name")->required();
  command->callback([&options, run] { run(options); });
  return command;
}

}  // namespace

void AddMachineCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  AddCommand(group, "export", "Write the text file for the simulator", kExportHelp, options, Export);
  CLI::App* show = AddCommand(group, "show", "Show a machine as a tree", kShowHelp, options, Show);
  show->add_flag("--json", options.json, "As JSON");
  CLI::App* check = AddCommand(group, "check", "Find faults in a definition", kCheckHelp, options, Check);
  check->add_flag("--json", options.json, "As JSON");
}

}  // namespace kestrova
