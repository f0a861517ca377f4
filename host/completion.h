// Shell completion: what may follow the words typed so far, read off the application's own commands and options, and
// the script that hooks it into bash.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

namespace kestrova {

// What may stand in the place of the last of a command's words, for a command that reads them by a grammar of its own.
using Candidates = std::vector<std::string> (*)(const std::vector<std::string>& words);

// Adds `completion bash`, which prints the script, and the hidden command that the script calls. It gives the
// candidates for the last word, which may be empty, after the words ahead of it (without the program's name): values of
// an option that names its choices, options, or subcommands; behind a command named in `own`, what that gives if it is
// anything. None if the shell should offer files.
void AddCompletionCommands(CLI::App& app, const std::map<std::string, Candidates>& own);

}  // namespace kestrova
