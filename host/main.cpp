// The command line kestrova: starts the library as a product's main module does, runs one command, closes it again.
#include <cstdio>

#include "host/commands.h"
#include "host/completion.h"
#include "host/main_module.h"

namespace {

int Run(int argc, char** argv) {
  CLI::App app{"kestrova: the command line of the KVSHAREu shared library"};
  app.set_version_flag("--version", "kestrova " KV_VERSION);
  app.require_subcommand(1);
  app.footer(
      "Examples:\n"
      "  kestrova machine show --machines examples/machines --type MillTurn TwinTurret12\n"
      "  kestrova machine check --machines examples/machines --type Mill Vertical850\n"
      "  kestrova machine export --machines examples/machines --type Mill Trunnion500\n"
      "  kestrova document new part.kvdoc --nodes 200\n"
      "  kestrova document verify part.kvdoc\n"
      "  kestrova job run part.kvdoc --jobs 4\n"
      "  kestrova feedcolors add --process mill 1200 '#FF8000'\n"
      "  kestrova env doctor\n"
      "  kestrova settings list --changed\n"
      "  kestrova techdb test\n"
      "  kestrova reg query HKCU\\Software\\Zemlor /s\n"
      "  kestrova ini get shopfloor.ini Tool Diameter\n"
      "  kestrova completion bash > /etc/bash_completion.d/kestrova\n"
      "Exit codes: 0 done, 1 refused or failed, 2 wrong usage. KV_REGISTRY names the registry's folder.");
  const kestrova::MainModuleScope module;
  kestrova::AddRegistryCommands(app);
  kestrova::AddEnvironmentCommands(app);
  kestrova::AddSettingsCommands(app);
  kestrova::AddMachineCommands(app);
  kestrova::AddDocumentCommands(app);
  kestrova::AddJobCommands(app);
  kestrova::AddFeedColorCommands(app);
  kestrova::AddIniCommands(app);
  kestrova::AddTechDatabaseCommands(app);
  kestrova::AddCompletionCommands(app,
                                  {{"reg", kestrova::RegistryCandidates}, {"settings", kestrova::SettingsCandidates}});
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  return 0;
}

int Fail(const char* reason, int exitCode) {
  std::fprintf(stderr, "kestrova: %s\n", reason);
  return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
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
