// kestrova crash test: breaks on purpose, so that support sees whether a crash leaves its files.
#pragma once

namespace CLI {
class App;
}

namespace kestrova {

void AddCrashTest(CLI::App& group);

}  // namespace kestrova
