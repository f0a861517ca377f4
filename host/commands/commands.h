// The commands of the command line: how one ends that isn't done, and the table that main, help and completion read.
// A command runs from CLI11's callback; one that fails throws Failure.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kestrova {

// What may stand in the place of the last of a command's words, for a command that reads them by a grammar of its own;
// see host/completion.h.
using Candidates = std::vector<std::string> (*)(const std::vector<std::string>& words);

std::vector<std::string> RegistryCandidates(const std::vector<std::string>& words);
// Names of settings behind `settings get`, `set` and `reset`; nothing elsewhere.
std::vector<std::string> SettingsCandidates(const std::vector<std::string>& words);

// Each fills the command's own CLI11 application, whose name, summary and example the table gives.
void AddMachineCommands(CLI::App& group);
void AddDocumentCommands(CLI::App& group);
void AddJobCommands(CLI::App& group);
void AddFeedColorCommands(CLI::App& group);
void AddSettingsCommands(CLI::App& group);
void AddEnvironmentCommands(CLI::App& group);
void AddTechDatabaseCommands(CLI::App& group);
void AddRegistryCommands(CLI::App& group);
void AddIniCommands(CLI::App& group);
void AddCompletionCommands(CLI::App& group);

struct Command {
  const char* name;
  const char* summary;
  void (*add)(CLI::App& group);
  const char* example;  // without the program's name
  Candidates candidates = nullptr;
};

// Every command, in the order of the help. A new one is a declaration above and a row here.
inline constexpr Command kCommands[] = {
    {"machine", "Machine definitions: export, show, check", AddMachineCommands,
     "machine show --machines examples/machines --type MillTurn TwinTurret12"},
    {"document", "Documents: new, show, dump, history, convert, verify, repair", AddDocumentCommands,
     "document new part.kvdoc --nodes 200"},
    {"job", "Background jobs: run", AddJobCommands, "job run part.kvdoc --jobs 4"},
    {"feedcolors", "Colours of toolpaths by feed rate: show, change, look up", AddFeedColorCommands,
     "feedcolors add --process mill 1200 '#FF8000'"},
    {"settings", "Settings: list, get, set, reset, export, import, diff", AddSettingsCommands,
     "settings list --changed", SettingsCandidates},
    {"env", "Start the environment and print every query; doctor finds faults", AddEnvironmentCommands, "env doctor"},
    {"techdb", "The technology database: which is in force, and what is in it", AddTechDatabaseCommands, "techdb test"},
    {"reg", "Look at settings in the registry and change them", AddRegistryCommands,
     "reg query HKCU\\Software\\Zemlor /s", RegistryCandidates},
    {"ini", "INI files: list, get, set, remove", AddIniCommands, "ini get shopfloor.ini Tool Diameter"},
    {"completion", "Print the completion script for a shell", AddCompletionCommands,
     "completion bash > /etc/bash_completion.d/kestrova"},
};

}  // namespace kestrova
