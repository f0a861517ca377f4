// kestrova crash stack: prints the stacks of a minidump's threads.
#pragma once

namespace CLI {
class App;
}

namespace kestrova {

void AddCrashStack(CLI::App& group);

}  // namespace kestrova
