// Shell completion: what may follow the words typed so far, read off the application's own commands and options, and
// the script that hooks it into bash.
#pragma once

namespace CLI {
class App;
}

namespace kestrova {

// Adds the hidden command that the script of `completion bash` calls. It gives the candidates for the last word, which
// may be empty, after the words ahead of it (without the program's name): values of an option that names its choices,
// options, or subcommands; behind a command whose row in kCommands has candidates of its own, what these are if there
// are any. None if the shell should offer files.
void AddCompletionWords(CLI::App& app);

}  // namespace kestrova
