// Shell completion: what may follow the words typed so far, read off the application's own commands and options, and
// the script that hooks it into bash.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace kestrova {

// The candidates for the last word, which may be empty, after the words ahead of it (without the program's name):
// values of an option that names its choices, options, or subcommands. Empty if the shell should offer files.
std::vector<std::string> Complete(const CLI::App& app, const std::vector<std::string>& words);

// Adds `completion bash`, which prints the script, and the hidden command that the script calls.
void AddCompletionCommands(CLI::App& app);

}  // namespace kestrova
