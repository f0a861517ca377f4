// `kestrova env`: where the product lies and what is in force.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "host/commands.h"
#include "host/main_module.h"
#include "share/env/app_env.h"

namespace {

void PrintEnvironment() {
  kestrova::StartMainModule();
  const CKVEnvApp& env = *AppEnv();
  const struct {
    const char* name;
    CString value;
  } rows[] = {
      {"install folder", env.GetKVDrive() + env.GetKVPath()},
      {"language folder", env.GetKVDefDataRelPath()},
      {"resource library", env.GetKVResourceDllPath()},
      {"help folder", env.GetKVHelpPath()},
      {"user", env.GetUserNameW()},
      {"date", env.GetCurrentDate() + _T(" ") + env.GetTickCount()},
  };
  for (const auto& row : rows) fmt::print("{:<18}{}\n", row.name, ToUtf8(row.value));
  fmt::print("{:<18}{}\n", "debug", env.IsKVDebugEnabled());
  fmt::print("{:<18}{}\n", "init result", int(env.GetEnvAPPInitResult()));
}

}  // namespace

void kestrova::AddEnvironmentCommands(CLI::App& app) {
  app.add_subcommand("env", "Start the environment and print where things lie; missing switches get their defaults")
      ->callback(PrintEnvironment);
}
