// The table of commands, which main, the help and the completion read. CLI11's callback runs a command; a command that
// fails throws an exception of host/shell/failure.h.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kestrova {

// Candidates for the last of a command's words, for a command that completes more than its CLI11 options; see
// completion_commands.h.
using Candidates = std::vector<std::string> (*)(const std::vector<std::string>& words);

// Names of machines after `machine show`, `export` and `check`; none after other words.
std::vector<std::string> MachineCandidates(const std::vector<std::string>& words);
std::vector<std::string> RegistryCandidates(const std::vector<std::string>& words);
// Names of settings after `settings get`, `set` and `reset`; none after other words.
std::vector<std::string> SettingsCandidates(const std::vector<std::string>& words);

// Adds subcommands and options to the command's CLI11 application, which has its name, summary and example from the
// table.
void AddMachineCommands(CLI::App& group);
void AddDocumentCommands(CLI::App& group);
void AddJobCommands(CLI::App& group);
void AddPatternCommands(CLI::App& group);
void AddPictureCommands(CLI::App& group);
void AddFeedColorCommands(CLI::App& group);
void AddSettingsCommands(CLI::App& group);
void AddEnvironmentCommands(CLI::App& group);
void AddTechDatabaseCommands(CLI::App& group);
void AddRegistryCommands(CLI::App& group);
void AddIniCommands(CLI::App& group);
void AddLogCommands(CLI::App& group);
void AddAnalyticsCommands(CLI::App& group);
void AddCrashCommands(CLI::App& group);
void AddGridCommands(CLI::App& group);
void AddHelpCommands(CLI::App& group);
void AddMailCommands(CLI::App& group);
void AddMessageCommands(CLI::App& group);
void AddCompletionCommands(CLI::App& group);

struct Command {
  const char* name;
  const char* summary;
  void (*add)(CLI::App& group);
  const char* example;  // without the program's name
  Candidates candidates = nullptr;
};

// Every command, in the order of the help. A new command needs a declaration above and a row here.
inline constexpr Command kCommands[] = {
    {"machine", "Machine definitions: list, show, check, export, new, schema", AddMachineCommands,
     "machine show TwinTurret12", MachineCandidates},
    {"document", "Documents: new, show, dump, history, convert, verify, repair", AddDocumentCommands,
     "document new part.kvdoc --nodes 200"},
    {"job", "Background jobs: run", AddJobCommands, "job run part.kvdoc --jobs 4"},
    {"pattern", "Patterns of features: add, list, skip, order, rebuild", AddPatternCommands,
     "pattern add part.kvdoc 7 --kind circular --centre 50,50,0 --angle 360 --total --count 6 --force"},
    {"picture", "Pictures of toolpaths and machines; replay draws a recording", AddPictureCommands,
     "picture part.kvdoc --of toolpath --out part.png"},
    {"feedcolors", "Colours of toolpaths by feed rate: show, change, look up", AddFeedColorCommands,
     "feedcolors add --process mill 1200 '#FF8000'"},
    {"settings", "Settings: list, get, set, reset, export, import, diff", AddSettingsCommands,
     "settings list --changed", SettingsCandidates},
    {"env", "Start the environment and print every query; doctor finds faults", AddEnvironmentCommands, "env doctor"},
    {"techdb", "Technology databases: list, activate, test, tables, query", AddTechDatabaseCommands, "techdb test"},
    {"reg", "Registry values: query, add, delete, export, import", AddRegistryCommands,
     "reg add 'HKCU\\Software\\Zemlor\\Kestrova\\Kestrova 2024x64' /v Language /d Automatic /f", RegistryCandidates},
    {"ini", "INI files: list, get, set, remove", AddIniCommands, "ini set shopfloor.ini Tool Diameter 12.5"},
    {"log", "Logs of developers: on, off, show the slowest scopes, clear", AddLogCommands, "log show"},
    {"analytics", "Usage events on this computer: show, clear, off, on", AddAnalyticsCommands, "analytics show"},
    {"crash", "Crash reports and dumps: list, show, stack, clean, test", AddCrashCommands, "crash list"},
    {"grid", "Tables from tab-separated text: show, find", AddGridCommands, "grid show tools.tsv --sort Diameter:desc"},
    {"help", "Help pages: list, open", AddHelpCommands, "help list"},
    {"mail", "Mails with attachments in the user's mail program: send, check", AddMailCommands, "mail check"},
    {"message", "Messages to the user: list, show, answers", AddMessageCommands, "message list"},
    {"completion", "Print the completion script for bash, zsh or fish", AddCompletionCommands,
     "completion bash > kestrova.bash"},
};

}  // namespace kestrova
