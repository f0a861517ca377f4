// The command line kestrova: runs one command as a main module of the library.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/commands/completion_commands.h"
#include "host/commands/usage_errors.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/console.h"
#include "platform/errors.h"
#include "platform/registry_files.h"
#include "share/diagnostics/analytics_log.h"

namespace {

constexpr int kMostWait_ms = 30'000;  // for other writers of the registry, in the whole command

// The names of the chosen commands, "env doctor".
std::string CommandOf(const CLI::App& app) {
  std::string names;
  for (const CLI::App* at = &app; !at->get_subcommands().empty();) {
    at = at->get_subcommands().front();
    names += (names.empty() ? "" : " ") + at->get_name();
  }
  return names;
}

int Run(int argc, char** argv) {
  CLI::App app{"kestrova: the command line of the KVSHAREu shared library"};
  app.set_version_flag("-V,--version", "kestrova " KV_VERSION);
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // a path can begin with a slash on every system
  if (const LSTATUS status = UseRegistryOfEnvironment(); status != ERROR_SUCCESS)
    throw kestrova::Failure(std::string("cannot use the registry that KV_REGISTRY names: ") + ErrorText(DWORD(status)));
  const RegistryWaitLimit limit(kMostWait_ms);
  const kestrova::MainModuleScope module;
  std::string footer = "Examples:\n";
  for (const kestrova::Command& command : kestrova::kCommands) {
    const std::string example = std::string("  kestrova ") + command.example + '\n';
    footer += example;
    CLI::App* group = app.add_subcommand(command.name, command.summary);
    group->footer("Example:\n" + example);
    command.add(*group);
  }
  app.footer(
      footer +
      "Exit codes: 0 done; 1 the answer is no (findings, differences, not found, a job that failed, a repair that\n"
      "lost nodes); 2 wrong usage; 3 could not be done (a missing file, damage, missing rights, a full disk).\n"
      "KV_REGISTRY names the registry's folder.");
  kestrova::AddCompletionWords(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    std::ostringstream text;
    const int exitCode = app.exit(help, text, text);
    kestrova::PrintRaw(text.str());
    return exitCode;
  } catch (const CLI::ParseError& error) {
    kestrova::RefuseCommandLine(app, error);
  }
  QFAnalyticsLogMgr::AddCommandEvent(_T("kestrova"), FromUtf8(CommandOf(app)));
  return 0;
}

// An error may come before the options are parsed, so the words are looked at.
bool AsksForJson(int argc, char** argv) {
  const auto words = std::span(argv, std::size_t(argc)).subspan(std::size_t(std::min(argc, 1)));
  const auto end = std::find(words.begin(), words.end(), std::string_view("--"));
  return std::find(words.begin(), end, std::string_view("--json")) != end;
}

// Reports a failure, with --json also as an object on stdout. Returns the exit code.
int Fail(const std::string& reason, int exitCode, bool asJson, const kestrova::FilePlace& place = {}) {
  if (asJson) {
    nlohmann::ordered_json error = {{"code", exitCode}, {"message", reason}};
    if (!place.file.empty()) error["file"] = place.file;
    if (place.line > 0) error["line"] = place.line;
    if (place.column > 0) error["column"] = place.column;
    kestrova::PrintJson({{"error", error}});
  }
  kestrova::PrintNote(reason);
  return exitCode;
}

int RunAndReport(int argc, char** argv) {
  const bool json = AsksForJson(argc, argv);
  try {
    return Run(argc, argv);
  } catch (const kestrova::WrongUsage& error) {
    return Fail(error.what(), 2, json);
  } catch (const kestrova::Failure& failure) {
    return Fail(failure.what(), failure.ExitCode(), json, failure.Place());
  } catch (const kestrova::FoundErrors&) {
    return 1;
  } catch (const std::bad_alloc&) {
    return Fail("not enough memory", 3, json);
  } catch (const std::exception& error) {
    return Fail(error.what(), 3, json);
  } catch (...) {
    return Fail("unknown error", 3, json);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    UseUtf8Streams();
    std::vector<std::string> words = Utf8Arguments(argc, argv);
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    const int exitCode = RunAndReport(int(arguments.size()), arguments.data());
    // Output that a full disk does not take may fail only here.
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return exitCode;
    return Fail("the output is incomplete; check whether the disk is full", 3, /*asJson=*/false);
  } catch (...) {
    kestrova::PrintOutOfMemory();
    return 3;
  }
}
