// kestrova crash show: explains a crash report or a minidump.
#pragma once

namespace CLI {
class App;
}

namespace kestrova {

void AddCrashShow(CLI::App& group);

}  // namespace kestrova
