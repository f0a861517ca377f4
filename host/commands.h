// The commands of the command line, one registration call a group. Each adds its subcommands to the application and
// runs them from CLI11's callback; a command that fails throws Failure.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kestrova {

// The command was refused or failed: main prints the message as one line on stderr and ends with exit code 1.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line was wrong in a way that only the command itself could see: one line on stderr, exit code 2.
class WrongUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A command whose finding is its answer (exit code 1) without a line on stderr, such as a check that found errors.
class FoundErrors {};

void AddRegistryCommands(CLI::App& app);
// What may stand in the place of the last word behind `reg`; see host/completion.h.
std::vector<std::string> RegistryCandidates(const std::vector<std::string>& words);
void AddSettingsCommands(CLI::App& app);
// Names of settings behind `settings get`, `set` and `reset`; nothing elsewhere.
std::vector<std::string> SettingsCandidates(const std::vector<std::string>& words);
void AddMachineCommands(CLI::App& app);
void AddEnvironmentCommands(CLI::App& app);
void AddDocumentCommands(CLI::App& app);
void AddJobCommands(CLI::App& app);
void AddFeedColorCommands(CLI::App& app);
void AddIniCommands(CLI::App& app);
void AddTechDatabaseCommands(CLI::App& app);

}  // namespace kestrova
