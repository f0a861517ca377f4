#include "host/commands/completion_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "host/commands/commands.h"

namespace kestrova {

namespace {

constexpr char kBashScript[] =
    R"(# Completion of kestrova for bash; source it, or put it into share/bash-completion/completions.
_kestrova() {
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" complete-words "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _kestrova kestrova
)";

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
  group.add_option("shell", shell, "The shell")->required()->check(CLI::IsMember({"bash"}));
  group.callback([] { std::fputs(kBashScript, stdout); });
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
      if (candidate.starts_with(words.back())) std::printf("%s\n", candidate.c_str());
    }
  });
}

}  // namespace kestrova
