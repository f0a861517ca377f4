// kestrova crash: the files that a crash leaves.
#include <CLI/CLI.hpp>

#include "host/commands/commands.h"
#include "host/crash/crash_list.h"
#include "host/crash/crash_show.h"
#include "host/crash/crash_stack.h"
#include "host/crash/crash_test_command.h"

namespace kestrova {

void AddCrashCommands(CLI::App& group) {
  group.require_subcommand(1);
  AddCrashList(group);
  AddCrashShow(group);
  AddCrashStack(group);
  AddCrashClean(group);
  AddCrashTest(group);
}

}  // namespace kestrova
