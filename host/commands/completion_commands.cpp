#include "host/commands/completion_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

#include "host/commands/commands.h"
#include "host/shell/output.h"

namespace kestrova {

namespace {

constexpr char kHelp[] = R"(
Prints the script; it asks kestrova itself for the words. Load it from your shell's start file, or write it where your
shell looks for completions:

  bash  ~/.local/share/bash-completion/completions/kestrova
  zsh   a file _kestrova in a folder of $fpath
  fish  ~/.config/fish/completions/kestrova.fish

Examples:
  kestrova completion bash > kestrova.bash
  kestrova completion zsh > _kestrova
  kestrova completion fish > kestrova.fish
)";

// Each script offers what the hidden command prints for the typed words, or files if it prints nothing.
struct Shell {
  const char* name;
  const char* script;
};

constexpr Shell kShells[] = {
    {"bash", R"(# Completion of kestrova for bash; source it, or put it into share/bash-completion/completions.
_kestrova() {
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" complete-words "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _kestrova kestrova
)"},
    {"zsh", R"(#compdef kestrova
# Completion of kestrova for zsh; source it after compinit, or put it as _kestrova into a folder of $fpath.
_kestrova() {
  local -a candidates
  candidates=("${(@f)$("${(Q)words[1]}" complete-words "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
  if [[ -n "${candidates[1]}" ]]; then
    compadd -a candidates
  else
    _files
  fi
}
if [[ "${funcstack[1]}" == _kestrova ]]; then
  _kestrova "$@"
else
  compdef _kestrova kestrova
fi
)"},
    {"fish", R"(# Completion of kestrova for fish; source it, or put it into ~/.config/fish/completions.
function __kestrova_candidates
  set -l typed (commandline -opc)
  set -l word (commandline -ct)
  set -l candidates ($typed[1] complete-words $typed[2..-1] "$word" 2>/dev/null)
  if test (count $candidates) -gt 0
    printf '%s\n' $candidates
  else
    __fish_complete_path "$word"
  end
end
complete -c kestrova -f -a '(__kestrova_candidates)'
)"},
};

constexpr char kHiddenCommand[] = "complete-words";

// The choices of an option: its type is then {a,b,c}.
std::vector<std::string> Choices(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{');
  const std::size_t close = type.find('}', open);
  if (open == std::string::npos || close == std::string::npos) return {};
  return CLI::detail::split(type.substr(open + 1, close - open - 1), ',');
}

const CLI::Option* FindOption(const CLI::App& app, const std::string& word) {
  return word.size() > 1 && word[0] == '-' ? app.get_option_no_throw(word) : nullptr;
}

// The innermost subcommand that the words name. Skips values of options.
const CLI::App* Descend(const CLI::App& app, const std::vector<std::string>& words) {
  const CLI::App* at = &app;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const CLI::Option* option = FindOption(*at, words[i]);
    if (option && option->get_items_expected_max() > 0) {
      ++i;
      continue;
    }
    const auto commands = at->get_subcommands([&](const CLI::App* command) { return command->get_name() == words[i]; });
    if (!commands.empty()) at = commands.front();
  }
  return at;
}

// Candidates from the application's commands and options.
std::vector<std::string> Following(const CLI::App& app, const std::vector<std::string>& words) {
  const std::string& last = words.back();
  const CLI::App* at = Descend(app, words);
  const CLI::Option* before = words.size() > 1 ? FindOption(*at, words[words.size() - 2]) : nullptr;

  std::vector<std::string> candidates;
  if (before && before->get_items_expected_max() > 0) {
    candidates = Choices(*before);
  } else if (last.starts_with('-')) {
    for (const CLI::Option* option : at->get_options()) {
      for (const std::string& name : option->get_lnames()) candidates.push_back("--" + name);
    }
  } else {
    for (const CLI::App* command : at->get_subcommands([](const CLI::App*) { return true; })) {
      if (!command->get_group().empty()) candidates.push_back(command->get_name());
    }
    for (const CLI::Option* option : at->get_options()) {
      if (!option->get_positional()) continue;
      for (const std::string& choice : Choices(*option)) candidates.push_back(choice);
    }
  }
  return candidates;
}

}  // namespace

void AddCompletionCommands(CLI::App& group) {
  static std::string shell;
  std::vector<std::string> names;
  for (const Shell& known : kShells) names.emplace_back(known.name);
  group.footer(kHelp);
  group.add_option("SHELL", shell, "The shell")->required()->check(CLI::IsMember(names));
  group.callback([] {
    for (const Shell& known : kShells)
      if (shell == known.name) PrintRaw(known.script);
  });
}

void AddCompletionWords(CLI::App& app) {
  CLI::App* hidden = app.add_subcommand(kHiddenCommand, "")->group("");
  hidden->prefix_command();
  hidden->callback([&app, hidden] {
    std::vector<std::string> words = hidden->remaining();
    if (words.empty()) words.emplace_back();
    std::vector<std::string> candidates;
    for (const Command& command : kCommands) {
      if (command.candidates && words.size() > 1 && words.front() == command.name)
        candidates = command.candidates({words.begin() + 1, words.end()});
    }
    if (candidates.empty()) candidates = Following(app, words);
    std::sort(candidates.begin(), candidates.end());
    for (const std::string& candidate : candidates) {
      if (candidate.starts_with(words.back())) Print("{}\n", candidate);
    }
  });
}

}  // namespace kestrova
