// The command line kestrova: runs one command as a main module of the library.
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

// For an unknown command the parser only reports that a command is missing.
void RefuseUnknownCommand(const CLI::App& app) {
  std::string path = "kestrova";
  const CLI::App* at = &app;
  for (auto chosen = at->get_subcommands(); !chosen.empty(); chosen = at->get_subcommands()) {
    at = chosen.front();
    path += ' ' + at->get_name();
  }
  const std::vector<std::string> words = at->remaining();
  if (at->get_require_subcommand_min() == 0 || words.empty() || words.front().starts_with('-')) return;
  throw kestrova::WrongUsage(words.front() + " is not a command of " + path + "; " + path +
                             " --help lists the commands");
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
             "Exit codes: 0 done; 1 the answer is no, or the command failed; 2 wrong usage.\n"
             "KV_REGISTRY names the registry's folder.");
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
    // Output that a full disk does not take may fail only here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
      return Fail("the output is incomplete; check whether the disk is full", 1);
    return exitCode;
  } catch (const kestrova::WrongUsage& error) {
    return Fail(error.what(), 2);
  } catch (const kestrova::FoundErrors&) {
    return 1;
  } catch (const std::exception& error) {
    return Fail(error.what(), 1);
  } catch (...) {
    return Fail("unknown error", 1);
  }
}
