// Shell completion: candidates for the word that the user types, from the application's commands and options, and the
// scripts that add them to bash, zsh and fish.
#pragma once

namespace CLI {
class App;
}

namespace kestrova {

// Adds the hidden command that the scripts of `completion` call with the typed words (without the program's name).
// It prints the candidates for the last word, which may be empty: those of the command's row in kCommands; if there are
// none, the choices of the option before it, options, or subcommands. It prints nothing if the shell should offer
// files.
void AddCompletionWords(CLI::App& app);

}  // namespace kestrova
