// kestrova log: switches the developer logs on and off, and shows and deletes their files.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/logs/log_kinds.h"
#include "host/logs/log_reading.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "share/diagnostics/log_files.h"

namespace kestrova {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostScopes = 20;
constexpr int kMostLines = 1000;

constexpr char kHelp[] =
    "Logs of developers: times of scopes (plain; also one of deserialize, events, commands), data (turret, asmturn),\n"
    "inputs and outputs of functions (function), figures of memory (memory). They are files in the folder of "
    "support's\n"
    "instructions, C:\\KestrovaData\\LOG. A program that runs already must be started again.\n"
    "Examples:\n"
    "  kestrova log on --type events\n"
    "  kestrova log show --lines 5\n"
    "  kestrova log off";

struct Options {
  std::string type;
  int lines = 10;
  bool json = false;

  // Null without --type.
  const LogKind* Kind() const {
    for (const LogKind& kind : LogKinds())
      if (type == kind.name) return &kind;
    return nullptr;
  }
};

std::string Folder() { return SystemPathFromProduct(kLogFolder); }

Json SwitchesJson() {
  Json switches = Json::array();
  for (const LogKind& kind : LogKinds()) switches.push_back({{"type", kind.name}, {"on", IsOn(kind)}});
  return switches;
}

std::string SwitchedOn() {
  std::string names;
  for (const LogKind& kind : LogKinds())
    if (IsOn(kind)) names += (names.empty() ? "" : ", ") + std::string(kind.name);
  return names.empty() ? "nothing" : names;
}

void PrintSwitches(const Options& options) {
  if (options.json) return PrintJson({{"folder", Folder()}, {"types", SwitchesJson()}});
  Print("switched on: {}\nfolder: {}\n", SwitchedOn(), Folder());
}

// ---- the commands

void CreateFolder() {
  const Text folder = kLogFolder;
  for (std::size_t end = folder.find(_T('\\'), 3); end != folder.npos; end = folder.find(_T('\\'), end + 1))
    CreateDirectoryW(folder.substr(0, end).c_str(), nullptr);
  const DWORD attributes = GetFileAttributesW(kLogFolder);
  if (attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY) return;
  const std::string why = attributes == INVALID_FILE_ATTRIBUTES ? ErrorText(GetLastError()) : "a file has its name";
  throw Failure(fmt::format("cannot create the folder {}: {}", Folder(), why), {.file = Folder()});
}

void On(const Options& options) {
  CreateFolder();
  SwitchOn(options.Kind() ? *options.Kind() : LogKinds().front());
  PrintSwitches(options);
}

void Off(const Options& options) {
  for (const LogKind& kind : LogKinds())
    if (!options.Kind() || options.Kind() == &kind) SwitchOff(kind);
  PrintSwitches(options);
}

struct ShownFile {
  LogFile file;
  std::deque<std::string> last;
};

void PrintShown(const std::vector<ShownFile>& files, const ScopeTable& table) {
  TextTable rows({{"scope", false}, {"count", true}, {"total ms", true}, {"mean ms", true}, {"max ms", true}});
  const std::vector<ScopeTimes> slowest = table.Slowest(kMostScopes);
  for (const ScopeTimes& scope : slowest)
    rows.Add({scope.name, std::to_string(scope.count), std::to_string(scope.total_ms),
              fmt::format("{:.1f}", double(scope.total_ms) / double(scope.count)), std::to_string(scope.longest_ms)});
  if (!slowest.empty()) PrintLines("\n" + rows.Text());
  if (table.Uncounted() > 0) Print("({} lines of more scopes are not counted)\n", table.Uncounted());
  for (const ShownFile& shown : files) {
    Print("\n{} ({})\n", shown.file.system, Counted((long long)shown.file.bytes, "byte"));
    for (const std::string& line : shown.last) Print("  {}\n", line);
  }
}

Json ShownJson(const std::vector<ShownFile>& files, const ScopeTable& table) {
  Json all = {{"folder", Folder()}, {"types", SwitchesJson()}};
  Json& scopes = all["scopes"] = Json::array();
  for (const ScopeTimes& scope : table.Slowest(kMostScopes))
    scopes.push_back({{"name", scope.name},
                      {"count", scope.count},
                      {"totalMs", scope.total_ms},
                      {"meanMs", double(scope.total_ms) / double(scope.count)},
                      {"maxMs", scope.longest_ms}});
  all["uncountedLines"] = table.Uncounted();
  Json& list = all["files"] = Json::array();
  for (const ShownFile& shown : files)
    list.push_back({{"file", shown.file.system},
                    {"type", shown.file.kind->name},
                    {"bytes", shown.file.bytes},
                    {"lastLines", shown.last}});
  return all;
}

void Show(const Options& options) {
  std::vector<ShownFile> files;
  ScopeTable table;
  for (const LogFile& file : LogFiles(options.Kind()))
    files.push_back({file, ReadLog(file.path, std::size_t(options.lines), table)});
  if (options.json) return PrintJson(ShownJson(files, table));
  PrintSwitches(options);
  PrintShown(files, table);
}

void Clear(const Options& options) {
  Json removed = Json::array();
  for (const LogFile& file : LogFiles(options.Kind())) {
    if (!DeleteFileW(file.path))
      throw Failure(fmt::format("cannot delete {}: {}", file.system, ErrorText(GetLastError())), {.file = file.system});
    removed.push_back(file.system);
  }
  if (options.json) return PrintJson({{"removed", removed}});
  Print("{} deleted\n", Counted((long long)removed.size(), "file"));
}

}  // namespace

void AddLogCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  group.footer(kHelp);
  std::vector<std::string> names;
  for (const LogKind& kind : LogKinds()) names.emplace_back(kind.name);
  const auto add = [&](const char* name, const char* what, const char* type, void (*run)(const Options&)) {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(kHelp);
    command->add_option("--type", options.type, type)->check(CLI::IsMember(names));
    command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return command;
  };
  add("on", "Switch a log on and create the folder", "The log; plain without it", On);
  add("off", "Switch logs off", "Only this log", Off);
  add("show", "Show the slowest scopes and the last lines", "Only this log", Show)
      ->add_option("--lines", options.lines, "How many last lines of each file")
      ->check(CLI::Range(0, kMostLines))
      ->capture_default_str();
  add("clear", "Delete the files", "Only those of this log", Clear);
}

}  // namespace kestrova
