// The command line kestrova: starts the library as a product's main module does, runs one command, closes it again.
#include <cstdio>

#include "host/commands.h"
#include "host/completion.h"
#include "host/main_module.h"

int main(int argc, char** argv) {
  CLI::App app{"kestrova: the command line of the KVSHAREu shared library"};
  app.set_version_flag("--version", "kestrova " KV_VERSION);
  app.require_subcommand(1);
  const kestrova::MainModuleScope module;
  kestrova::AddRegistryCommands(app);
  kestrova::AddEnvironmentCommands(app);
  kestrova::AddMachineCommands(app);
  kestrova::AddCompletionCommands(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const kestrova::WrongUsage& error) {
    std::fprintf(stderr, "kestrova: %s\n", error.what());
    return 2;
  } catch (const kestrova::FoundErrors&) {
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kestrova: %s\n", error.what());
    return 1;
  }
  return 0;
}
