// The command line kestrova: starts the library as a product's main module does, runs one command, closes it again.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "host/commands/commands.h"
#include "host/commands/completion_commands.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/text_table.h"

namespace {

// The parser says of a wrong word in a command's place only that the command is missing.
void RefuseUnknownCommand(const CLI::App& app) {
  std::string path = "kestrova";
  const CLI::App* at = &app;
  for (auto chosen = at->get_subcommands(); !chosen.empty(); chosen = at->get_subcommands()) {
    at = chosen.front();
    path += ' ' + at->get_name();
  }
  const std::vector<std::string> words = at->remaining();
  if (at->get_require_subcommand_min() == 0 || words.empty() || words.front().starts_with('-')) return;
  throw kestrova::WrongUsage(words.front() + " is no command of " + path + "; " + path + " --help lists them");
}

int Run(int argc, char** argv) {
  CLI::App app{"kestrova: the command line of the KVSHAREu shared library"};
  app.set_version_flag("--version", "kestrova " KV_VERSION);
  app.require_subcommand(1);
  const kestrova::MainModuleScope module;
  std::string footer = "Examples:\n";
  for (const kestrova::Command& command : kestrova::kCommands) {
    const std::string example = std::string("  kestrova ") + command.example + '\n';
    footer += example;
    CLI::App* group = app.add_subcommand(command.name, command.summary);
    group->footer("Example:\n" + example);
    command.add(*group);
  }
  app.footer(footer +
             "Exit codes: 0 done, 1 refused or failed, 2 wrong usage. KV_REGISTRY names the registry's folder.");
  kestrova::AddCompletionWords(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::RequiredError& error) {
    RefuseUnknownCommand(app);
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return 0;
}

int Fail(std::string reason, int exitCode) {
  kestrova::BlankControls(reason);
  std::fprintf(stderr, "kestrova: %s\n", reason.c_str());
  return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const int exitCode = Run(argc, argv);
    // What a full disk has not taken may show only now.
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
      return Fail("the output was not written whole; is the disk full?", 1);
    return exitCode;
  } catch (const kestrova::WrongUsage& error) {
    return Fail(error.what(), 2);
  } catch (const kestrova::FoundErrors&) {
    return 1;
  } catch (const std::exception& error) {
    return Fail(error.what(), 1);
  } catch (...) {
    return Fail("an error without a reason", 1);
  }
}
