#include "host/commands/usage_errors.h"

#include <CLI/CLI.hpp>

#include "host/shell/failure.h"
#include "host/shell/nearest_names.h"

namespace kestrova {
namespace {

std::vector<std::string> CommandsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    if (!command->get_group().empty()) names.push_back(command->get_name());
  return names;
}

std::vector<std::string> OptionsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options())
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

[[noreturn]] void RefuseWord(const CLI::App& app, const std::string& path, const std::string& word) {
  const std::string remedy = path + " --help lists the ";
  if (word.starts_with('-')) {
    const std::string option = word.substr(0, word.find('='));
    throw WrongUsage(option + " is not an option of " + path + NearestOr(OptionsOf(app), option, remedy + "options"));
  }
  const std::vector<std::string> commands = CommandsOf(app);
  if (!commands.empty())
    throw WrongUsage(word + " is not a command of " + path + NearestOr(commands, word, remedy + "commands"));
  throw WrongUsage(word + " is unexpected; see " + path + " --help");
}

}  // namespace

void RefuseCommandLine(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App* at = &app;
  std::string path = "kestrova";
  for (;;) {
    const std::vector<std::string> words = at->remaining();
    if (!words.empty()) RefuseWord(*at, path, words.front());
    const auto chosen = at->get_subcommands();
    if (chosen.empty()) break;
    at = chosen.front();
    path += ' ' + at->get_name();
  }
  if (at->get_require_subcommand_min() > 0)
    throw WrongUsage("a command is missing; " + path + " --help lists the commands");
  throw WrongUsage(std::string(error.what()) + "; see " + path + " --help");
}

}  // namespace kestrova
